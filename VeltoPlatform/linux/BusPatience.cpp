#include "VeltoPlatform/linux/BusPatience.h"

#include <algorithm>

namespace velto::BusPatience {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr Duration kInAll = 450ms;
constexpr Duration kLeast = 5ms;
constexpr auto kRecovery = 1s;

struct Account {
    Duration spent{};
    Clock::time_point last{};
};

Account& account() {
    thread_local Account mine;
    if (Clock::now() - mine.last > kRecovery)
        mine.spent = {};
    return mine;
}

} // namespace

Duration left() {
    return std::max(kLeast, (kInAll - account().spent) * 2 / 3);
}

void spend(Duration waited) {
    auto& mine = account();
    mine.spent += waited;
    mine.last = Clock::now();
}

} // namespace velto::BusPatience
