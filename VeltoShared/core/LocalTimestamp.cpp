#include "VeltoShared/core/LocalTimestamp.h"

#include <array>
#include <ctime>

namespace velto {

std::string localTimestamp(Clock::WallTime time) {
    const auto seconds = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 64> text{};
    std::strftime(text.data(), text.size(), "%Y%m%d-%H%M%S", &local);
    return text.data();
}

} // namespace velto
