// A platform of simulated sound, desktop and preferences for one test.
#pragma once

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/simulated/SimulatedAudio.h"
#include "VeltoPlatform/simulated/SimulatedDesktop.h"
#include "VeltoPlatform/simulated/SimulatedStores.h"

#include <gtest/gtest.h>

namespace velto::test {

class SimulatedSound : public ::testing::Test {
  protected:
    SimulatedSound() {
        Platform all;
        all.audioHardware = &audio;
        all.outputUnits = &audio;
        all.workspace = &desktop;
        all.preferences = &preferences;
        installPlatform(all);
    }
    ~SimulatedSound() override { installPlatform({}); }

    SimulatedAudio audio;
    SimulatedDesktop desktop;
    SimulatedPreferences preferences;
};

} // namespace velto::test
