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
constexpr const char* kNoAnswer = "the accessibility launcher does not answer";

} // namespace

AtspiLauncher::AtspiLauncher(std::string sessionAddress, std::shared_ptr<BusPatience> patience,
                             BusPool::Report report)
    : sessionAddress_(std::move(sessionAddress)), patience_(std::move(patience)), report_(std::move(report)),
      pool_(makePool()) {}

std::shared_ptr<BusPool> AtspiLauncher::makePool() const {
    return std::make_shared<BusPool>(sessionAddress_, "the session's message bus",
                                     BusPool::Probe{kPath, kName, "GetAddress"}, patience_, report_);
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

AtspiLauncher::Status AtspiLauncher::status() {
    Status status;
    const auto leased = lease();
    if (!leased) {
        const std::scoped_lock lock(mutex_);
        status.silent = pool_->silent();
        status.trouble =
            status.silent ? "the session's message bus does not answer" : "there is no session message bus";
        return status;
    }
    const auto launcher = leased.pool().peer(kName, "the accessibility launcher");
    status.silent = launcher->silent;
    if (status.silent) {
        status.trouble = kNoAnswer;
        return status;
    }
    BusExchange exchange(leased);
    const auto isEnabled = exchange.bus().method(kName, kPath, kProperties, "Get");
    sd_bus_message_append(isEnabled.get(), "ss", kStatus, "IsEnabled");
    const auto getAddress = exchange.bus().method(kName, kPath, kName, "GetAddress");
    for (const auto* request : {&isEnabled, &getAddress})
        sd_bus_message_set_auto_start(request->get(), 0);
    exchange.ask(launcher, isEnabled, [&](const BusReply& reply) {
        status.enabled = AtspiCalls::truthProperty(reply).value_or(false);
    });
    exchange.ask(launcher, getAddress,
                 [&](const BusReply& reply) { status.busAddress = AtspiCalls::text(reply).value_or(""); });
    exchange.finish();
    status.silent = exchange.gaveUp(*launcher);
    if (status.silent)
        status.trouble = kNoAnswer;
    else if (status.busAddress.empty())
        status.trouble = "no accessibility bus runs in this session";
    else if (!status.enabled)
        status.trouble = "accessibility is switched off";
    return status;
}

void AtspiLauncher::switchOn() {
    const auto leased = lease();
    if (!leased) {
        bool silent = false;
        {
            const std::scoped_lock lock(mutex_);
            silent = pool_->silent();
        }
        if (report_)
            report_(silent ? "cannot be switched on: the session's message bus does not answer"
                           : "cannot be switched on: there is no session message bus");
        return;
    }
    auto& pool = leased.pool();
    const auto request = leased.bus().method(kName, kPath, kProperties, "Set");
    sd_bus_message_append(request.get(), "ssv", kStatus, "IsEnabled", "b", 1);
    const auto answered = [&pool](const BusReply& reply) {
        pool.note(reply ? "switched on; programs that were open before may have to be restarted"
                        : "could not be switched on: " + reply.error);
    };
    if (!leased.bus().send(request, Bus::kUntilAnswered, answered))
        pool.note("could not be switched on: the session's message bus has gone");
}

} // namespace velto
