// velto-rehearse: places one whole call without phone, key, screen or network.
#include "VeltoPlatform/linux/InstallTree.h"
#include "rehearsal/director/Director.h"
#include "rehearsal/director/Requirements.h"
#include "rehearsal/process/TextFile.h"
#include "rehearsal/scenario/ScenarioFile.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace {

using namespace velto;
using namespace velto::rehearsal;

int list(const std::filesystem::path& folder) {
    for (const auto& name : scenarioNames(folder)) {
        const auto scenario = loadScenario(name, folder);
        std::cout << name << ": " << (scenario ? scenario->about : "broken: " + scenario.error().message)
                  << '\n';
    }
    return 0;
}

/// Empty when the file can be written, and is there then.
std::string whyNotWritable(const std::filesystem::path& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        return "not an ordinary file";
    if (!openPrivateFile(path))
        return std::generic_category().message(errno);
    return {};
}

} // namespace

int main(int argc, char** argv) {
    std::string name = "appointment";
    std::string folder = InstallTree::resources() / "scenarios";
    std::string cut;
    std::string provider(rawValue(VoiceProvider::gemini));
    std::string keys = "both";
    std::string wire;
    std::string sound = installedSoundServer() == SoundServerKind::pipeWire ? "pipewire" : "pulseaudio";
    bool listed = false;
    DirectorOptions options;
    CLI::App arguments("Rehearses one call: no phone, key, screen or network needed", "velto-rehearse");
    arguments.add_option("--scenario", name, "Name of a scenario, or a file")->capture_default_str();
    arguments.add_option("--scenarios", folder, "Folder of the scenarios")->capture_default_str();
    arguments.add_flag("--list", listed, "Name the scenarios and end");
    arguments.add_option("--provider", provider, "Whom the application is to use: gemini or openai")
        ->check(CLI::IsMember({"gemini", "openai"}))
        ->capture_default_str();
    arguments.add_option("--keys", keys, "Whose key is in the keyring: gemini, openai or both")
        ->check(CLI::IsMember({"gemini", "openai", "both"}))
        ->capture_default_str();
    arguments.add_option("--wire", wire, "File for what the application sends, without keys and audio");
    arguments.add_flag("--record", options.record, "Have the application record the call, and hear the file");
    auto* const tap = arguments.add_flag(
        "--tap", options.tap, "Have the application capture from the phone app itself, which is open before");
    arguments.add_flag("--mute", options.mute, "Have the application mute the phone app on this computer")
        ->needs(tap);
    arguments.add_flag("--windows", options.windows,
                       "Show the application and the phone app on this display");
    arguments.add_flag("--kill", options.kill,
                       "Kill the application in mid-call, start it again, and look at what it left behind");
    arguments.add_flag("--wait", options.wait,
                       "The call is yours: wait until somebody places it, as with veltoctl call");
    arguments.add_option("--sound", sound, "Which sound server to play on: pulseaudio or pipewire")
        ->check(CLI::IsMember({"pulseaudio", "pipewire"}))
        ->capture_default_str();
    arguments.add_option("--cut", cut, "Cut a wire: uplink (the feed device muted) or loop (no loop device)")
        ->check(CLI::IsMember({"uplink", "loop"}));
    arguments.add_flag("--keep", options.keepFolder, "Keep the private folder with logs and sockets");
    arguments.add_flag("--json", options.json, "Print one JSON object at the end");
    try {
        arguments.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return arguments.exit(error) == 0 ? 0 : 2;
    }
    if (listed)
        return list(folder);
    const auto scenario = loadScenario(name, folder);
    if (!scenario) {
        std::cerr << "velto-rehearse: " << scenario.error().message << '\n';
        return 2;
    }
    options.scenario = *scenario;
    const bool isName = name.find('/') == std::string::npos && !name.ends_with(".json");
    options.scenarioFile = std::filesystem::absolute(isName ? std::filesystem::path(folder) / (name + ".json")
                                                            : std::filesystem::path(name));
    options.provider = *voiceProvider(provider);
    for (const auto each : kAllVoiceProviders)
        if (keys == "both" || keys == rawValue(each))
            options.keys.insert(each);
    if (!wire.empty()) {
        options.wire = std::filesystem::absolute(wire);
        if (const auto reason = whyNotWritable(options.wire); !reason.empty()) {
            std::cerr << "velto-rehearse: cannot write " << options.wire.string() << ": " << reason << '\n';
            return 2;
        }
    }
    options.sound = sound == "pipewire" ? SoundServerKind::pipeWire : SoundServerKind::pulseAudio;
    options.cut = cut == "uplink" ? Cut::uplink : cut == "loop" ? Cut::loop : Cut::nothing;
    if (const auto missing = missingPrograms(options.sound); !missing.empty()) {
        std::cerr << "velto-rehearse: " << missing << '\n';
        return 2;
    }
    return runGuarded({options.keepFolder},
                      [&](const GuardianLink& guardian) { return direct(options, guardian); });
}
