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
    installPlatform(computer);
}

TestComputer::~TestComputer() {
    installPlatform({});
}

std::string readFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace velto::test
