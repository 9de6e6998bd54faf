// Starts a sound server's programs one after the other and waits until clients find every device.
#include "rehearsal/PrivateSoundServer.h"

#include "VeltoPlatform/linux/PulseHardware.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "rehearsal/process/WhyNotStarted.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <optional>
#include <ranges>
#include <system_error>
#include <thread>

namespace velto::rehearsal {
namespace {

using namespace std::chrono_literals;

Failure failed(const std::string& what, int error = 0) {
    auto text = "sound server: " + what;
    if (error != 0)
        text += ": " + std::generic_category().message(error);
    return {kErrorTransport, text};
}

bool accepts(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return socket &&
           ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

} // namespace

std::map<std::string, std::string> SoundFolder::environment() const {
    return {{"PATH", "/usr/local/bin:/usr/bin:/bin"},
            {"LC_ALL", "C.UTF-8"},
            {"XDG_RUNTIME_DIR", root},
            {"HOME", root / "home"},
            {"PULSE_RUNTIME_PATH", root / "pulse"},
            {"PULSE_STATE_PATH", root / "state"},
            {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
            {"DBUS_SYSTEM_BUS_ADDRESS", "disabled:"}};
}

PrivateSoundServer::PrivateSoundServer(SoundFolder folder, PrivateSoundServerOptions options)
    : folder_(std::move(folder)), options_(std::move(options)) {}

PrivateSoundServer::~PrivateSoundServer() {
    stop();
}

Result<std::unique_ptr<PrivateSoundServer>> PrivateSoundServer::start(const std::filesystem::path& folder,
                                                                      PrivateSoundServerOptions options) {
    std::error_code error;
    std::unique_ptr<PrivateSoundServer> server(
        new PrivateSoundServer({std::filesystem::absolute(folder, error)}, std::move(options)));
    if (const auto socket = server->folder_.clientSocket().string();
        socket.size() >= sizeof(sockaddr_un::sun_path))
        return failed("the path " + socket + " is too long for a socket");
    if (auto launched = server->launch(); !launched)
        return launched.error();
    return server;
}

std::string PrivateSoundServer::address() const {
    return "unix:" + folder_.clientSocket().string();
}

std::map<std::string, std::string> PrivateSoundServer::clientEnvironment() const {
    return {{"PULSE_SERVER", address()}, {"PULSE_COOKIE", folder_.root / "cookie"}};
}

Result<> PrivateSoundServer::launch() {
    std::error_code error;
    for (const auto& folder :
         {folder_.root, folder_.root / "home", folder_.root / "state", folder_.root / "pulse"}) {
        std::filesystem::create_directories(folder, error);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
        if (error)
            return failed("cannot make " + folder.string(), error.value());
    }
    const auto programs = options_.kind == SoundServerKind::pulseAudio
                              ? pulseAudioPrograms(folder_, options_.devices)
                              : pipeWirePrograms(folder_, options_.devices);
    if (!programs)
        return failed(programs.error().description);
    const auto until = std::chrono::steady_clock::now() + options_.readyWithin;
    Result<> launched;
    for (const auto& program : *programs)
        if (launched = launch(program, until); !launched)
            break;
    if (launched && options_.kind == SoundServerKind::pipeWire)
        launched = waitForDefaults(until);
    if (!launched)
        kill();
    return launched;
}

Result<> PrivateSoundServer::launch(const SoundProgram& program,
                                    std::chrono::steady_clock::time_point until) {
    std::error_code error;
    std::filesystem::remove(program.log, error);
    if (!program.socket.empty())
        std::filesystem::remove(program.socket, error);
    auto started = ChildProcess::start(program.program);
    if (!started)
        return failed("cannot start a process");
    processes_.push_back(std::move(*started));
    const auto& name = program.program.arguments.front();
    while (!program.socket.empty() && !accepts(program.socket)) {
        const bool ended = processes_.back().endsWithin(3ms);
        if (!ended && std::chrono::steady_clock::now() < until)
            continue;
        return failed(name +
                      (ended
                           ? " did not start"
                           : " was not ready after " + std::to_string(options_.readyWithin.count()) + " ms") +
                      whyNotStarted(processes_.back(), program.log));
    }
    return {};
}

/// The session manager chooses them once it knows all devices.
Result<> PrivateSoundServer::waitForDefaults(std::chrono::steady_clock::time_point until) {
    PulseHardware hardware(std::make_shared<PulseServer>([](const std::string&) {}, address()));
    const auto isDefault = [&](AudioDirection direction, const char* name) {
        return !options_.devices.has(name) ||
               hardware.deviceName(hardware.defaultDevice(direction).value_or(0)) == name;
    };
    while (!isDefault(AudioDirection::output, "Speaker") || !isDefault(AudioDirection::input, "Microphone")) {
        if (std::chrono::steady_clock::now() > until)
            return failed("wireplumber did not make the devices ready");
        std::this_thread::sleep_for(3ms);
    }
    return {};
}

void PrivateSoundServer::kill() {
    for (auto& process : processes_)
        process.kill();
    processes_.clear();
}

Result<> PrivateSoundServer::restart() {
    stop();
    return launch();
}

Result<> PrivateSoundServer::restart(SoundDevices devices) {
    options_.devices = std::move(devices);
    return restart();
}

void PrivateSoundServer::stop() {
    for (auto& process : std::views::reverse(processes_))
        process.stop();
    processes_.clear();
    std::error_code error;
    std::filesystem::remove(folder_.clientSocket(), error);
}

} // namespace velto::rehearsal
