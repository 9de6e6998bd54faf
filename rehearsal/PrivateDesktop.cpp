// Starts the programs of a desktop session and waits until each of them answers.
#include "rehearsal/PrivateDesktop.h"

#include "VeltoPlatform/linux/Bus.h"
#include "rehearsal/process/WhyNotStarted.h"

#include <poll.h>

#include <functional>

namespace velto::rehearsal {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kToStart = 10s;
constexpr auto kToAnswer = 2s;

Failure failed(const std::string& what) {
    return {kErrorTransport, "private desktop: " + what};
}

/// Asks again until the answer is yes, the process has ended, or the time is over.
bool comesTrue(ChildProcess& process, const std::function<bool()>& isSo) {
    const auto deadline = Clock::now() + kToStart;
    while (Clock::now() < deadline) {
        if (isSo())
            return true;
        if (process.endsWithin(5ms))
            return false;
    }
    return false;
}

bool switchOnAccessibility(Bus& bus) {
    const auto request =
        bus.method("org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set");
    sd_bus_message_append(request.get(), "ssv", "org.a11y.Status", "IsEnabled", "b", 1);
    return static_cast<bool>(bus.call(request, kToAnswer));
}

bool hasOwner(Bus& bus, const char* name) {
    const auto request =
        bus.method("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetNameOwner");
    sd_bus_message_append(request.get(), "s", name);
    return static_cast<bool>(bus.call(request, kToAnswer));
}

} // namespace

PrivateDesktop::PrivateDesktop(std::filesystem::path folder, Environment environment,
                               PrivateDesktopOptions options)
    : folder_(std::move(folder)), environment_(std::move(environment)), options_(std::move(options)) {}

PrivateDesktop::~PrivateDesktop() {
    end();
}

Result<std::unique_ptr<PrivateDesktop>> PrivateDesktop::start(const std::filesystem::path& folder,
                                                              Environment environment,
                                                              const PrivateDesktopOptions& options) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    std::unique_ptr<PrivateDesktop> desktop(
        new PrivateDesktop(std::filesystem::absolute(folder, error), std::move(environment), options));
    if (auto launched = desktop->launch(); !launched)
        return launched.error();
    return desktop;
}

std::optional<ChildProcess> PrivateDesktop::launchProgram(const std::string& title,
                                                          std::vector<std::string> arguments,
                                                          std::string input) {
    ChildProgram program;
    program.title = title;
    program.errorFile = folder_ / (std::filesystem::path(arguments.front()).filename().string() + ".err");
    program.arguments = std::move(arguments);
    program.environment = environment_;
    program.input = std::move(input);
    // For what the bus starts on demand: settings stay in memory.
    program.environment["GSETTINGS_BACKEND"] = "memory";
    return ChildProcess::start(program);
}

Result<> PrivateDesktop::launch() {
    if (options_.display)
        if (auto launched = launchDisplay(); !launched)
            return launched;
    if (auto launched = launchBus(); !launched)
        return launched;
    if (options_.accessibility)
        if (auto launched = launchAccessibility(); !launched)
            return launched;
    return options_.keyring ? restartKeyring(true) : Result<>();
}

Result<> PrivateDesktop::launchDisplay() {
    displayServer_ = launchProgram("the display (Xvfb)", {"Xvfb", "-displayfd", "1", "-screen", "0",
                                                          options_.screen, "-nolisten", "tcp", "-noreset"});
    std::vector<std::string> lines;
    if (!displayServer_ ||
        !comesTrue(*displayServer_, [&] { return !(lines = displayServer_->readLines()).empty(); }))
        return failed("Xvfb did not start" + whyNotStarted(displayServer_, folder_ / "Xvfb.err"));
    display_ = ":" + lines.front();
    return {};
}

Result<> PrivateDesktop::launchBus() {
    const auto socket = folder_ / "bus";
    std::error_code error;
    std::filesystem::remove(socket, error);
    environment_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + socket.string();
    bus_ = launchProgram("the message bus (dbus-daemon)", {"dbus-daemon", "--session", "--nofork",
                                                           "--nopidfile", "--address=" + busAddress()});
    if (!bus_ || !comesTrue(*bus_, [&] { return Bus::open(busAddress(), kToAnswer) != nullptr; }))
        return failed("dbus-daemon did not start" + whyNotStarted(bus_, folder_ / "dbus-daemon.err"));
    return {};
}

Result<> PrivateDesktop::launchAccessibility() {
    accessibility_ = launchProgram("the accessibility bus (at-spi-bus-launcher)",
                                   {"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"});
    const auto connection = Bus::open(busAddress(), kToAnswer);
    if (!accessibility_ || !connection ||
        !comesTrue(*accessibility_, [&] { return hasOwner(*connection, "org.a11y.Bus"); }) ||
        !switchOnAccessibility(*connection))
        return failed("at-spi-bus-launcher did not start" +
                      whyNotStarted(accessibility_, folder_ / "at-spi-bus-launcher.err"));
    return {};
}

Result<> PrivateDesktop::restartKeyring(bool unlock) {
    if (keyring_)
        keyring_->stop();
    std::vector<std::string> arguments{"gnome-keyring-daemon", "--foreground", "--components=secrets"};
    if (unlock)
        arguments.emplace_back("--unlock");
    // A line end is a password like any other; without one no keyring is made.
    keyring_ = launchProgram("the keyring (gnome-keyring-daemon)", std::move(arguments), unlock ? "\n" : "");
    const auto connection = Bus::open(busAddress(), kToAnswer);
    if (!keyring_ || !connection ||
        !comesTrue(*keyring_, [&] { return hasOwner(*connection, "org.freedesktop.secrets"); }))
        return failed("gnome-keyring-daemon did not start" +
                      whyNotStarted(keyring_, folder_ / "gnome-keyring-daemon.err"));
    return {};
}

Result<> PrivateDesktop::restart() {
    end();
    return launch();
}

void PrivateDesktop::end() {
    for (auto* process : {&keyring_, &accessibility_, &bus_, &displayServer_}) {
        if (*process)
            (*process)->stop();
        process->reset();
    }
}

} // namespace velto::rehearsal
