// Writes the server's script, starts it and waits for its socket.
#include "rehearsal/PrivateSoundServer.h"

#include "rehearsal/process/WhyNotStarted.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <fstream>
#include <system_error>

namespace velto::rehearsal {
namespace {

Failure failed(const std::string& what, int error = 0) {
    auto text = "sound server: " + what;
    if (error != 0)
        text += ": " + std::generic_category().message(error);
    return {kErrorTransport, text};
}

std::string nullSink(const std::string& name, const std::string& description) {
    // norewinds: otherwise a capture of the twin starts up to two seconds late.
    return "load-module module-null-sink sink_name=" + name +
           " rate=48000 channels=2 norewinds=1 sink_properties='device.description=\"" + description +
           "\"'\n";
}

std::string twin(const std::string& name, const std::string& sink, const std::string& description) {
    return "load-module module-remap-source source_name=" + name + " master=" + sink +
           ".monitor channels=2 source_properties='device.description=\"" + description + "\"'\n";
}

std::string script(const PrivateSoundServerOptions& options, const std::string& socket) {
    std::string text;
    const auto with = [&](const char* name) { return !options.without.contains(name); };
    const auto mute = [&](const char* name, const std::string& line) {
        if (with(name) && options.muted.contains(name))
            text += line + " 1\n";
    };
    const bool feed = with("VeltoVoice 2ch Feed");
    if (feed)
        text += nullSink("veltovoice_feed", "VeltoVoice 2ch Feed");
    if (with("VeltoVoice 2ch Mic"))
        text += feed ? twin("veltovoice_mic", "veltovoice_feed", "VeltoVoice 2ch Mic")
                     : "load-module module-null-source source_name=veltovoice_mic rate=48000 channels=2 "
                       "description='VeltoVoice 2ch Mic'\n";
    if (with("VeltoLoop 2ch"))
        text += nullSink("veltoloop", "VeltoLoop 2ch") + twin("veltoloop_in", "veltoloop", "VeltoLoop 2ch");
    if (with("Speaker"))
        text += nullSink("speaker", "Speaker") + "set-default-sink speaker\n";
    if (with("Microphone"))
        text += nullSink("microphone_line", "Microphone Line") +
                twin("microphone", "microphone_line", "Microphone") + "set-default-source microphone\n";
    mute("VeltoVoice 2ch Feed", "set-sink-mute veltovoice_feed");
    mute("VeltoVoice 2ch Mic", "set-source-mute veltovoice_mic");
    mute("VeltoLoop 2ch", "set-sink-mute veltoloop");
    mute("Speaker", "set-sink-mute speaker");
    mute("Microphone", "set-source-mute microphone");
    // Last, so that whoever reaches the socket finds every device.
    return text +
           "load-module module-native-protocol-unix auth-anonymous=1 auth-cookie-enabled=0 socket=" + socket +
           "\n";
}

bool accepts(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0)
        return false;
    const bool connected =
        ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(descriptor);
    return connected;
}

} // namespace

PrivateSoundServer::PrivateSoundServer(std::filesystem::path folder, PrivateSoundServerOptions options)
    : folder_(std::move(folder)), options_(std::move(options)) {}

PrivateSoundServer::~PrivateSoundServer() {
    stop();
}

Result<std::unique_ptr<PrivateSoundServer>> PrivateSoundServer::start(const std::filesystem::path& folder,
                                                                      PrivateSoundServerOptions options) {
    std::error_code error;
    const auto absolute = std::filesystem::absolute(folder, error);
    std::unique_ptr<PrivateSoundServer> server(new PrivateSoundServer(absolute, std::move(options)));
    if (server->socketPath().string().size() >= sizeof(sockaddr_un::sun_path))
        return failed("the path " + server->socketPath().string() + " is too long for a socket");
    if (auto launched = server->launch(); !launched)
        return launched.error();
    return server;
}

std::string PrivateSoundServer::address() const {
    return "unix:" + socketPath().string();
}

std::map<std::string, std::string> PrivateSoundServer::clientEnvironment() const {
    return {{"PULSE_SERVER", address()}, {"PULSE_COOKIE", folder_ / "cookie"}};
}

Result<> PrivateSoundServer::launch() {
    std::error_code error;
    for (const auto& folder : {folder_, folder_ / "home", folder_ / "state", folder_ / "pulse"}) {
        std::filesystem::create_directories(folder, error);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, error);
        if (error)
            return failed("cannot make " + folder.string(), error.value());
    }
    std::filesystem::remove(socketPath(), error);
    const auto scriptPath = folder_ / "velto.pa";
    if (std::ofstream file(scriptPath); !(file << script(options_, socketPath()) << std::flush))
        return failed("cannot write " + scriptPath.string());

    std::filesystem::remove(folder_ / "pulse.log", error);
    ChildProgram program;
    program.title = "the sound server (pulseaudio)";
    program.arguments = {"pulseaudio",
                         "-n",
                         "-F",
                         scriptPath,
                         "--daemonize=no",
                         "--use-pid-file=no",
                         "--realtime=no",
                         "--high-priority=no",
                         "--fail=yes",
                         "--exit-idle-time=-1",
                         "--log-level=info",
                         "--log-target=newfile:" + (folder_ / "pulse.log").string()};
    program.environment = {{"PATH", "/usr/local/bin:/usr/bin:/bin"},
                           {"LC_ALL", "C.UTF-8"},
                           {"XDG_RUNTIME_DIR", folder_},
                           {"HOME", folder_ / "home"},
                           {"PULSE_RUNTIME_PATH", folder_ / "pulse"},
                           {"PULSE_STATE_PATH", folder_ / "state"},
                           {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
                           {"DBUS_SYSTEM_BUS_ADDRESS", "disabled:"}};
    program.outputFile = folder_ / "pulse.out";
    program.errorFile = program.outputFile;
    if (auto process = ChildProcess::start(program))
        process_.emplace(std::move(*process));
    else
        return failed("cannot start a process");
    return waitUntilReady();
}

Result<> PrivateSoundServer::waitUntilReady() {
    using namespace std::chrono;
    const auto until = steady_clock::now() + options_.readyWithin;
    const auto said = [&] {
        // Until it has opened its log it writes to its standard error.
        const auto log = folder_ / "pulse.log";
        std::error_code error;
        return whyNotStarted(process_, std::filesystem::exists(log, error) ? log : folder_ / "pulse.out");
    };
    while (steady_clock::now() < until) {
        if (accepts(socketPath()))
            return {};
        if (process_->endsWithin(milliseconds(3))) {
            const auto failure = failed("pulseaudio did not start" + said());
            process_.reset();
            return failure;
        }
    }
    kill();
    return failed("pulseaudio was not ready after " + std::to_string(options_.readyWithin.count()) + " ms" +
                  said());
}

void PrivateSoundServer::kill() {
    if (process_)
        process_->kill();
    process_.reset();
}

Result<> PrivateSoundServer::restart() {
    stop();
    return launch();
}

Result<> PrivateSoundServer::restart(PrivateSoundServerOptions options) {
    options_ = std::move(options);
    return restart();
}

void PrivateSoundServer::stop() {
    if (!process_)
        return;
    process_->stop();
    process_.reset();
    std::error_code error;
    std::filesystem::remove(socketPath(), error);
}

} // namespace velto::rehearsal
