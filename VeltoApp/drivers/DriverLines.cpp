#include "VeltoApp/drivers/DriverLines.h"

#include "VeltoPlatform/DriverPlace.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/ShellWord.h"

namespace velto::DriverLines {
namespace {

/// A sound server that does not run is no failure.
constexpr const char* kAnyhow = " || true";

std::string command(const std::string& verb, const std::filesystem::path& operand) {
    return verb + " " + shellWord(operand.native());
}

} // namespace

std::string bundleName(const std::string& driver) {
    return driver + ".driver";
}

std::string install(const std::filesystem::path& source) {
    const auto folder = platform().driverPlace->folder();
    const auto verbs = platform().driverPlace->verbs();
    auto line = verbs.preamble + command(verbs.makeFolder, folder) + "; ";
    for (const auto* name : names) {
        const auto place = folder / bundleName(name);
        line += command(verbs.copy, source / bundleName(name)) + " " + shellWord(place.native()) + "; ";
        line += command(verbs.clear, place) + "; ";
    }
    return line + verbs.restart + kAnyhow;
}

std::string uninstall() {
    const auto folder = platform().driverPlace->folder();
    const auto verbs = platform().driverPlace->verbs();
    auto line = verbs.preamble;
    for (const auto* name : names)
        line += command(verbs.remove, folder / bundleName(name)) + "; ";
    return line + verbs.restart + kAnyhow;
}

std::string restart() {
    const auto verbs = platform().driverPlace->verbs();
    return verbs.preamble + verbs.restart;
}

} // namespace velto::DriverLines
