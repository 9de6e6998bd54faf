#include "tests/support/TestComputer.h"

#include "VeltoPlatform/Platform.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace velto::test {

TestComputer::TestComputer() {
    installPlatform({.audioHardware = &audio,
                     .outputUnits = &audio,
                     .processTaps = &audio.taps,
                     .microphoneAccess = &microphone,
                     .accessibility = &desktop,
                     .workspace = &desktop,
                     .secretStore = &secrets,
                     .preferences = &preferences,
                     .folders = &folders,
                     .loginItem = &loginItem,
                     .adminRights = &admin,
                     .driverPlace = &driverPlace});
}

TestComputer::~TestComputer() {
    installPlatform({});
}

std::string readFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeProgram(const std::filesystem::path& file, const std::string& script) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << "#!/bin/sh\n" << script << '\n';
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

} // namespace velto::test
