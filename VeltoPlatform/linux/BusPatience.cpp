#include "VeltoPlatform/linux/BusPatience.h"

#include <algorithm>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr BusPatience::Duration kInAll = 450ms;
constexpr BusPatience::Duration kLeast = 50ms;

} // namespace

BusPatience::Duration BusPatience::left() {
    const std::scoped_lock lock(mutex_);
    return std::max(kLeast, (kInAll - spent(std::this_thread::get_id(), Clock::now())) * 2 / 3);
}

void BusPatience::spend(Duration waited) {
    const std::scoped_lock lock(mutex_);
    const auto id = std::this_thread::get_id();
    const auto now = Clock::now();
    // The wait itself makes nothing good.
    const auto before = spent(id, now - waited);
    accounts_[id] = {.spent = std::min(kInAll, before + waited), .last = now};
}

BusPatience::Duration BusPatience::spent(std::thread::id id, Clock::time_point now) {
    const auto rest = [now](const Account& account) {
        return account.spent - std::chrono::duration_cast<Duration>(now - account.last);
    };
    std::erase_if(accounts_, [&](const auto& entry) { return rest(entry.second) <= Duration::zero(); });
    const auto account = accounts_.find(id);
    return account != accounts_.end() ? rest(account->second) : Duration::zero();
}

} // namespace velto
