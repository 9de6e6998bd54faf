#include "VeltoApp/app/Application.h"

#include "VeltoApp/app/Helper.h"
#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/control/ControlServer.h"
#include "VeltoApp/control/LiveTargets.h"
#include "VeltoApp/drivers/DriverState.h"
#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/ProcessTaps.h"
#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/telephony/AX.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>

#include <boost/asio/signal_set.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <optional>

namespace velto {

namespace {

bool hasTerminal() {
    return FileDescriptor(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)).get() >= 0;
}

/// Whether the end of its terminal is to end this program: not one that was started by nohup.
bool endsWithTerminal() {
    struct sigaction present {};
    ::sigaction(SIGHUP, nullptr, &present);
    return present.sa_handler != SIG_IGN && hasTerminal();
}

/// SIGHUP asks for the keys to be read again. It comes, too, when the terminal goes in which this program was
/// started; then it ends the program as ever.
asio::awaitable<void> readKeysOnHangup(std::unique_ptr<asio::signal_set> hangups, bool endsWithIt) {
    for (;;) {
        co_await hangups->async_wait(asio::use_awaitable);
        if (endsWithIt && !hasTerminal()) {
            hangups->clear();
            ::raise(SIGHUP);
        }
        MainThread::post([] {
            Helper::log("keys: read again, as SIGHUP asks");
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
    const bool ends = endsWithTerminal();
    Background::spawn(
        readKeysOnHangup(std::make_unique<asio::signal_set>(Background::executor(), SIGHUP), ends));
    startControlServer();
}

int runHeadless(const std::function<void()>& prepare) {
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
