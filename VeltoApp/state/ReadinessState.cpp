#include "VeltoApp/state/ReadinessState.h"

#include "VeltoShared/telephony/AX.h"

namespace velto {

const std::shared_ptr<ReadinessState>& ReadinessState::shared() {
    static const auto state = std::make_shared<ReadinessState>();
    return state;
}

void ReadinessState::refresh() {
    axReady.set(AX::trusted());
}

} // namespace velto
