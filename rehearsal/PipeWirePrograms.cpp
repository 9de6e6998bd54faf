// PipeWire as a private sound server: the daemon, its session manager and the server of PulseAudio's clients,
// each with a configuration of its own, so that the machine's neither adds devices nor takes any away.
#include "rehearsal/SoundPrograms.h"
#include "rehearsal/process/TextFile.h"

#include <system_error>

namespace velto::rehearsal {
namespace {

constexpr const char* managerData = "/usr/share/wireplumber";

struct Side {
    std::string name; ///< the server's own
    std::string description;
    int priority; ///< the highest one is the default device
};
constexpr int ordinary = 10;
constexpr int chosen = 5000;

std::string properties(const Side& side, const char* mediaClass) {
    return "node.name = " + side.name + " node.description = \"" + side.description +
           "\" media.class = " + mediaClass + " priority.session = " + std::to_string(side.priority);
}

/// What is played to the sink is recorded from the source.
std::string pair(const Side& sink, const Side& source) {
    return "  { name = libpipewire-module-loopback args = { audio.position = [ FL FR ]\n"
           "      capture.props = { " +
           properties(sink, "Audio/Sink") + " }\n      playback.props = { " +
           properties(source, "Audio/Source") + " } } }\n";
}

/// A sink that nobody hears, or a source of silence.
std::string alone(const Side& side, const char* mediaClass) {
    return "  { factory = adapter args = { factory.name = support.null-audio-sink audio.rate = 48000\n"
           "      audio.position = [ FL FR ] " +
           properties(side, mediaClass) + " } }\n";
}

struct Graph {
    std::string modules;
    std::string objects;

    void add(const SoundDevices& devices, const Side& sink, const Side& source) {
        if (devices.passes(sink.description) && devices.passes(source.description)) {
            modules += pair(sink, source);
            return;
        }
        if (devices.has(sink.description))
            objects += alone(sink, "Audio/Sink");
        if (devices.has(source.description))
            objects += alone(source, "Audio/Source/Virtual");
    }
};

std::string daemonConfiguration(const SoundDevices& devices) {
    Graph graph;
    graph.add(devices, {"veltovoice_feed", "VeltoVoice 2ch Feed", ordinary},
              {"veltovoice_mic", "VeltoVoice 2ch Mic", ordinary});
    graph.add(devices, {"veltoloop", "VeltoLoop 2ch", ordinary}, {"veltoloop_in", "VeltoLoop 2ch", ordinary});
    if (devices.has("Microphone"))
        graph.add(devices, {"microphone_line", "Microphone Line", ordinary},
                  {"microphone", "Microphone", chosen});
    if (devices.has("Speaker"))
        graph.objects += alone({"speaker", "Speaker", chosen - 1}, "Audio/Sink");
    return R"(context.properties = { core.daemon = true core.name = pipewire-0 default.clock.min-quantum = 16 }
context.spa-libs = { audio.convert.* = audioconvert/libspa-audioconvert support.* = support/libspa-support }
context.modules = [
  { name = libpipewire-module-protocol-native }
  { name = libpipewire-module-metadata }
  { name = libpipewire-module-spa-node-factory }
  { name = libpipewire-module-client-node }
  { name = libpipewire-module-client-device }
  { name = libpipewire-module-access }
  { name = libpipewire-module-adapter }
  { name = libpipewire-module-link-factory }
  { name = libpipewire-module-session-manager }
)" + graph.modules +
           R"(]
context.objects = [
  { factory = spa-node-factory args = { factory.name = support.node.driver node.name = Dummy-Driver
      node.group = pipewire.dummy priority.driver = 20000 } }
)" + graph.objects +
           "]\n";
}

std::string clientServerConfiguration(const std::filesystem::path& socket) {
    return R"(context.spa-libs = { audio.convert.* = audioconvert/libspa-audioconvert support.* = support/libspa-support }
context.modules = [
  { name = libpipewire-module-protocol-native }
  { name = libpipewire-module-client-node }
  { name = libpipewire-module-adapter }
  { name = libpipewire-module-metadata }
  { name = libpipewire-module-protocol-pulse args = { server.address = [ "unix:)" +
           socket.string() + "\" ] } }\n]\n";
}

constexpr const char* managerConfiguration =
    R"(context.properties = { wireplumber.script-engine = lua-scripting }
context.spa-libs = { audio.convert.* = audioconvert/libspa-audioconvert support.* = support/libspa-support }
context.modules = [
  { name = libpipewire-module-protocol-native }
  { name = libpipewire-module-client-node }
  { name = libpipewire-module-client-device }
  { name = libpipewire-module-adapter }
  { name = libpipewire-module-metadata }
  { name = libpipewire-module-session-manager }
]
wireplumber.components = [
  { name = libwireplumber-module-lua-scripting type = module }
  { name = main.lua type = config/lua }
  { name = policy.lua type = config/lua }
]
)";

/// No hardware, and nothing that needs a message bus or remembers the last run.
constexpr const char* managerChoices = R"(alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
default_access.properties["enable-flatpak-portal"] = false
device_defaults.properties["use-persistent-storage"] = false
)";

/// The session manager's own scripts, and our choices between its settings and their use (which is "90-…").
bool writeManagerFolder(const std::filesystem::path& folder) {
    std::error_code error;
    for (const std::string name : {"main.lua.d", "policy.lua.d"}) {
        std::filesystem::create_directories(folder / name, error);
        for (const auto& file :
             std::filesystem::directory_iterator(std::filesystem::path(managerData) / name, error)) {
            const auto link = folder / name / file.path().filename();
            std::filesystem::remove(link, error);
            std::filesystem::create_symlink(file.path(), link, error);
            if (error)
                return false;
        }
    }
    return writePrivateFile(folder / "main.lua.d" / "80-private.lua", managerChoices) &&
           writePrivateFile(folder / "wireplumber.conf", managerConfiguration);
}

} // namespace

Result<std::vector<SoundProgram>> pipeWirePrograms(const SoundFolder& folder, const SoundDevices& devices) {
    const auto configuration = folder.root / "pipewire";
    const auto manager = folder.root / "wireplumber";
    std::error_code error;
    if (!std::filesystem::is_directory(std::filesystem::path(managerData) / "main.lua.d", error))
        return Failure{kErrorTransport, "WirePlumber 0.4 is not installed"};
    std::filesystem::create_directories(configuration, error);
    if (!writePrivateFile(configuration / "pipewire.conf", daemonConfiguration(devices)) ||
        !writePrivateFile(configuration / "pipewire-pulse.conf",
                          clientServerConfiguration(folder.clientSocket())) ||
        !writeManagerFolder(manager))
        return Failure{kErrorTransport, "cannot write to " + folder.root.string()};
    auto environment = folder.environment();
    environment["PIPEWIRE_RUNTIME_DIR"] = folder.root;
    environment["PIPEWIRE_CONFIG_DIR"] = configuration;
    environment["WIREPLUMBER_CONFIG_DIR"] = manager;
    const auto program = [&](const std::string& name, const std::filesystem::path& socket) {
        SoundProgram one{{}, folder.root / (name + ".log"), socket};
        one.program.title = "the sound server (" + name + ")";
        one.program.arguments = {name};
        one.program.environment = environment;
        one.program.outputFile = one.program.errorFile = one.log;
        return one;
    };
    return std::vector{program("pipewire", folder.root / "pipewire-0"), program("wireplumber", {}),
                       program("pipewire-pulse", folder.clientSocket())};
}

} // namespace velto::rehearsal
