// Whether the application can place calls: Accessibility, microphone, audio driver.
#pragma once

#include "VeltoShared/core/Published.h"

#include <memory>

namespace velto {

/// Held by `std::shared_ptr`; main thread only.
class ReadinessState : public ObservableObject {
  public:
    static const std::shared_ptr<ReadinessState>& shared();

    Published<bool> axReady{*this, false};
    Published<bool> micReady{*this, false};    ///< not looked at yet: false
    Published<bool> driverReady{*this, false}; ///< not looked at yet: false
    bool didPromptAX = false;

    bool ready() const { return axReady() && micReady() && driverReady(); }
    void refresh();
};

} // namespace velto
