#include "tests/support/TestComputer.h"

#include "VeltoPlatform/Platform.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace velto::test {

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "velto-test-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::runtime_error("no temporary folder");
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

TestComputer::TestComputer() {
    Platform computer;
    computer.folders = &folders;
    computer.driverPlace = &driverPlace;
    computer.preferences = &preferences;
    computer.secretStore = &secrets;
    computer.audioHardware = &audio;
    computer.outputUnits = &audio;
    computer.processTaps = &audio.taps;
    computer.microphoneAccess = &microphone;
    computer.accessibility = &desktop;
    computer.workspace = &desktop;
    computer.adminRights = &admin;
    computer.loginItem = &loginItem;
    installPlatform(computer);
}

TestComputer::~TestComputer() {
    installPlatform({});
}

std::string readFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeProgram(const std::filesystem::path& file, const std::string& script) {
    std::ofstream(file) << "#!/bin/sh\n" << script << '\n';
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

} // namespace velto::test
