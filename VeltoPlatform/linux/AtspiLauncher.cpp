#include "VeltoPlatform/linux/AtspiLauncher.h"

#include "VeltoPlatform/linux/AtspiCalls.h"
#include "VeltoPlatform/linux/BusExchange.h"

#include <utility>

namespace velto {
namespace {

constexpr const char* kName = "org.a11y.Bus";
constexpr const char* kPath = "/org/a11y/bus";
constexpr const char* kStatus = "org.a11y.Status";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

} // namespace

AtspiLauncher::AtspiLauncher(std::string sessionAddress, std::shared_ptr<BusPatience> patience,
                             BusPool::Report report)
    : sessionAddress_(std::move(sessionAddress)), patience_(std::move(patience)), report_(std::move(report)),
      pool_(makePool()) {}

std::shared_ptr<BusPool> AtspiLauncher::makePool() const {
    return std::make_shared<BusPool>(sessionAddress_, "the session's message bus", patience_, report_);
}

BusPool::Lease AtspiLauncher::lease() {
    for (;;) {
        std::shared_ptr<BusPool> pool;
        bool fresh = false;
        {
            const std::scoped_lock lock(mutex_);
            if (pool_->gone()) {
                pool_ = makePool();
                fresh = true;
            }
            pool = pool_;
        }
        auto lease = pool->lease();
        if (lease || fresh || !pool->gone())
            return lease;
    }
}

BusReply AtspiLauncher::ask(const char* interface, const char* member,
                            const std::function<void(sd_bus_message*)>& fill, bool& silent) {
    const auto leased = lease();
    silent = false;
    if (!leased) {
        const std::scoped_lock lock(mutex_);
        silent = pool_->silent();
        return {};
    }
    const auto launcher = leased.pool().peer(kName, "the accessibility launcher");
    silent = launcher->silent;
    if (silent)
        return {};
    BusReply answer;
    BusExchange exchange(leased);
    const auto request = exchange.bus().method(kName, kPath, interface, member);
    fill(request.get());
    sd_bus_message_set_auto_start(request.get(), 0);
    exchange.ask(launcher, request, [&](BusReply reply) { answer = std::move(reply); });
    exchange.finish();
    silent = exchange.gaveUp(*launcher);
    return answer;
}

AtspiLauncher::Answer AtspiLauncher::isEnabled() {
    bool silent = false;
    const auto reply = ask(
        kProperties, "Get",
        [](sd_bus_message* request) { sd_bus_message_append(request, "ss", kStatus, "IsEnabled"); }, silent);
    if (silent)
        return Answer::silent;
    return AtspiCalls::truthProperty(reply).value_or(false) ? Answer::yes : Answer::no;
}

std::string AtspiLauncher::busAddress() {
    bool silent = false;
    return AtspiCalls::text(ask(
                                kName, "GetAddress", [](sd_bus_message*) {}, silent))
        .value_or("");
}

void AtspiLauncher::switchOn() {
    const auto leased = lease();
    if (!leased) {
        if (report_)
            report_("cannot be switched on: there is no session message bus");
        return;
    }
    auto& pool = leased.pool();
    const auto request = leased.bus().method(kName, kPath, kProperties, "Set");
    sd_bus_message_append(request.get(), "ssv", kStatus, "IsEnabled", "b", 1);
    const auto answered = [&pool](const BusReply& reply) {
        pool.note(reply ? "switched on; programs that were open before may have to be restarted"
                        : "could not be switched on: " + reply.error);
    };
    leased.bus().send(request, Bus::kUntilAnswered, answered);
}

} // namespace velto
