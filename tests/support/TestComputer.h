// A simulated computer in a folder of its own, installed as the platform for the length of a test.
#pragma once

#include "VeltoPlatform/simulated/SimulatedAdmin.h"
#include "VeltoPlatform/simulated/SimulatedAudio.h"
#include "VeltoPlatform/simulated/SimulatedDesktop.h"
#include "VeltoPlatform/simulated/SimulatedDriverPlace.h"
#include "VeltoPlatform/simulated/SimulatedLoginItem.h"
#include "VeltoPlatform/simulated/SimulatedMicrophone.h"
#include "VeltoPlatform/simulated/SimulatedStores.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <string>

namespace velto::test {

class TestComputer {
  public:
    TestComputer();
    ~TestComputer();

    const std::filesystem::path& root() const { return folder_.path(); }

  private:
    TemporaryFolder folder_;

  public:
    SimulatedFolders folders{folder_.path()};
    SimulatedDriverPlace driverPlace{folder_.path()};
    SimulatedPreferences preferences;
    SimulatedSecretStore secrets;
    SimulatedAudio audio;
    SimulatedMicrophone microphone;
    SimulatedDesktop desktop;
    SimulatedAdmin admin;
    SimulatedLoginItem loginItem;
};

/// Empty when it cannot be read.
std::string readFile(const std::filesystem::path& file);
/// A shell script that its owner may run, with the folders that lead to it.
void writeProgram(const std::filesystem::path& file, const std::string& script);

} // namespace velto::test
