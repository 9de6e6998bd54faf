// PulseAudio as a private sound server: one process, set up by a script.
#include "rehearsal/SoundPrograms.h"
#include "rehearsal/process/TextFile.h"

namespace velto::rehearsal {
namespace {

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

std::string script(const SoundDevices& devices, const std::string& socket) {
    std::string text;
    const auto mute = [&](const char* name, const std::string& line) {
        if (devices.has(name) && !devices.passes(name))
            text += line + " 1\n";
    };
    const bool feed = devices.has("VeltoVoice 2ch Feed");
    if (feed)
        text += nullSink("veltovoice_feed", "VeltoVoice 2ch Feed");
    if (devices.has("VeltoVoice 2ch Mic"))
        text += feed ? twin("veltovoice_mic", "veltovoice_feed", "VeltoVoice 2ch Mic")
                     : "load-module module-null-source source_name=veltovoice_mic rate=48000 channels=2 "
                       "description='VeltoVoice 2ch Mic'\n";
    if (devices.has("VeltoLoop 2ch"))
        text += nullSink("veltoloop", "VeltoLoop 2ch") + twin("veltoloop_in", "veltoloop", "VeltoLoop 2ch");
    if (devices.has("Speaker"))
        text += nullSink("speaker", "Speaker") + "set-default-sink speaker\n";
    if (devices.has("Microphone"))
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

} // namespace

Result<std::vector<SoundProgram>> pulseAudioPrograms(const SoundFolder& folder, const SoundDevices& devices) {
    const auto scriptPath = folder.root / "velto.pa";
    if (!writePrivateFile(scriptPath, script(devices, folder.clientSocket())))
        return Failure{kErrorTransport, "cannot write " + scriptPath.string()};
    SoundProgram server;
    server.socket = folder.clientSocket();
    server.log = folder.root / "pulseaudio.log";
    server.program.title = "the sound server (pulseaudio)";
    server.program.arguments = {"pulseaudio",
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
                                "--log-target=stderr"};
    server.program.environment = folder.environment();
    server.program.outputFile = server.program.errorFile = server.log;
    return std::vector{server};
}

} // namespace velto::rehearsal
