#include "VeltoPlatform/linux/BusPatience.h"

#include <algorithm>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr BusPatience::Duration kInAll = 450ms;
constexpr BusPatience::Duration kLeast = 50ms;
constexpr auto kRecovery = 1s;

} // namespace

BusPatience::Duration BusPatience::left() {
    const std::scoped_lock lock(mutex_);
    dropOld();
    const auto mine = accounts_.find(std::this_thread::get_id());
    const auto spent = mine != accounts_.end() ? mine->second.spent : Duration::zero();
    return std::max(kLeast, (kInAll - spent) * 2 / 3);
}

void BusPatience::spend(Duration waited) {
    const std::scoped_lock lock(mutex_);
    dropOld();
    auto& mine = accounts_[std::this_thread::get_id()];
    mine.spent += waited;
    mine.last = Clock::now();
}

void BusPatience::dropOld() {
    std::erase_if(accounts_,
                  [now = Clock::now()](const auto& entry) { return now - entry.second.last > kRecovery; });
}

} // namespace velto
