#include "VeltoApp/views/models/DiagnosticsModel.h"

#include "VeltoApp/drivers/DriverState.h"
#include "VeltoApp/views/models/Mirror.h"
#include "VeltoApp/views/models/Reveal.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Preferences.h"
#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "VeltoShared/audio/LoopbackProbe.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/Telephony.h"

#include <boost/algorithm/string/join.hpp>

namespace velto {
namespace {

const char* word(bool is) {
    return is ? "true" : "false";
}

asio::awaitable<std::string> checks() {
    const auto banner = AX::notificationCenterPID();
    const auto drivers = DriverState::installed();
    const auto source = DriverState::sourceDir();
    std::string lines;
    const auto line = [&](const char* what, const std::string& found) {
        lines.append(lines.empty() ? "" : "\n").append(what).append(": ").append(found);
    };
    line("app", AppPaths::resources().string());
    line("support", AppPaths::support().string());
    line("logs", AppPaths::logFile().string());
    line("recordings", AppPaths::recordings().string());
    line("accessibility trusted", word(AX::trusted()));
    line("NotificationCenter pid", banner ? std::to_string(*banner) : "not running");
    line("call active", word(Telephony::callActive()));
    line("HAL drivers", drivers.empty() ? "(none)" : boost::algorithm::join(drivers, ", "));
    line("driver source", source ? source->string() : "(not found)");
    line("default input", AudioRouting::defaultInputName());
    line("default output", AudioRouting::defaultOutputName());
    line("bridge routed", word(platform().preferences->boolean("bridgeActive")));
    co_return lines;
}

std::string described(const LoopbackProbe::Result& result) {
    return "rms=" + std::to_string(result.capturedRMS) + " peak=" + std::to_string(result.capturedPeak) +
           " frames=" + std::to_string(result.capturedFrames);
}

asio::awaitable<std::string> probes() {
    const std::string feed(AudioBridge::agentFeed);
    const std::string mic(AudioBridge::inputDevice);
    const std::string loop(AudioBridge::outputDevice);
    const auto uplink = LoopbackProbe::run(feed, mic, 2, 24'000);
    const auto downlink = LoopbackProbe::run(loop, loop, 2, 16'000);
    co_return "uplink (Feed→Mic) " + described(uplink) + "\ndownlink (Loop→Loop) " + described(downlink);
}

} // namespace

void DiagnosticsModel::runChecks() {
    start(checks());
}

void DiagnosticsModel::loopbackProbe() {
    start(probes());
}

void DiagnosticsModel::restoreDevices() {
    AudioBridge::restoreIfNeeded();
}

void DiagnosticsModel::revealLog() {
    reveal(AppPaths::logFile());
}

void DiagnosticsModel::start(asio::awaitable<std::string> job) {
    if (busy_)
        return;
    busy_ = true;
    busyChanged();
    MainThread::spawn(finish(this, std::move(job)));
}

asio::awaitable<void> DiagnosticsModel::finish(QPointer<DiagnosticsModel> self,
                                               asio::awaitable<std::string> job) {
    const auto report = co_await Blocking::run(std::move(job));
    if (!self)
        co_return;
    self->report_ = shown(report);
    self->busy_ = false;
    self->reportChanged();
    self->busyChanged();
}

} // namespace velto
