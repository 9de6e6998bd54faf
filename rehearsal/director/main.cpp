// velto-rehearse: places one whole call without phone, key, screen or network.
#include "rehearsal/director/Director.h"
#include "rehearsal/scenario/ScenarioFile.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace {

using namespace velto::rehearsal;

int list(const std::filesystem::path& folder) {
    for (const auto& name : scenarioNames(folder)) {
        const auto scenario = loadScenario(name, folder);
        std::cout << name << ": " << (scenario ? scenario->about : "broken: " + scenario.error().message)
                  << '\n';
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::string name = "appointment";
    std::string folder = VELTO_SCENARIOS;
    std::string cut;
    bool listed = false;
    DirectorOptions options;
    CLI::App arguments("Rehearses one call: no phone, key, screen or network needed", "velto-rehearse");
    arguments.add_option("--scenario", name, "Name of a scenario, or a file")->capture_default_str();
    arguments.add_option("--scenarios", folder, "Folder of the scenarios")->capture_default_str();
    arguments.add_flag("--list", listed, "Name the scenarios and end");
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
    options.cut = cut == "uplink" ? Cut::uplink : cut == "loop" ? Cut::loop : Cut::nothing;
    std::error_code error;
    options.programs = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    return runGuarded({options.keepFolder},
                      [&](const GuardianLink& guardian) { return direct(options, guardian); });
}
