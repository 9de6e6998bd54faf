#include "VeltoApp/app/Application.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/control/ControlServer.h"
#include "VeltoApp/control/LiveTargets.h"
#include "VeltoApp/drivers/DriverState.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/ProcessTaps.h"
#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/telephony/AX.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <boost/asio/signal_set.hpp>

#include <unistd.h>

#include <csignal>
#include <iostream>
#include <memory>
#include <optional>

namespace velto {

namespace {

/// Not SIGHUP, which also comes when the terminal goes in which this program was started.
constexpr int kReadKeys = SIGUSR1;

asio::awaitable<void> readKeysWhenAsked(std::unique_ptr<asio::signal_set> requests) {
    for (;;) {
        co_await requests->async_wait(asio::use_awaitable);
        MainThread::post([] {
            Helper::log("keys: read again, as SIGUSR1 asks");
            AgentState::shared()->refreshKey();
        });
    }
}

} // namespace

void applicationDidFinishLaunching() {
    Helper::log("app launched pid=" + std::to_string(::getpid()) +
                " bundle=" + AppPaths::resources().string());
    Helper::log(std::string("accessibility trusted=") + (AX::trusted() ? "true" : "false"));
    if (AudioBridge::restoreIfNeeded())
        Helper::log("bridge: restored your default devices left from a previous session");
    if (platform().processTaps->sweep())
        Helper::log("tap: gave back the sound of an app that a previous session had muted");
    Helper::log(std::string("bridge: devices ") + (AudioBridge::installed() ? "installed" : "MISSING") +
                " — routing applied per call");
    Helper::log("driver source: " + DriverState::sourceDir().value_or("none").string());
    ReadinessState::shared()->refresh();
    // Before the control socket is there, by which others find this process.
    Background::spawn(
        readKeysWhenAsked(std::make_unique<asio::signal_set>(Background::executor(), kReadKeys)));
    startControlServer();
}

int runHeadless(const std::function<void()>& prepare) {
    // Its default devices and its socket are not to be taken from a Velto that may have a call up.
    if (ControlClient::somebodyListens()) {
        std::cerr << "velto: Velto is running already; veltoctl reaches it" << std::endl;
        return 1;
    }
    asio::io_context main{1};
    const auto guard = asio::make_work_guard(main);
    MainThread::install(main.get_executor());
    const BackgroundThreads background;
    std::optional<VeltoApp> application;
    if (prepare)
        MainThread::post(prepare);
    MainThread::post([&application] {
        application.emplace();
        applicationDidFinishLaunching();
    });
    main.run();
    return 0;
}

} // namespace velto
