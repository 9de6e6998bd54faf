// The plug-in folder of the simulated computer.
#pragma once

#include "VeltoPlatform/DriverPlace.h"

namespace velto {

class SimulatedDriverPlace : public DriverPlace {
  public:
    /// "Library/Audio/Plug-Ins/HAL" below the root folder.
    explicit SimulatedDriverPlace(const std::filesystem::path& root)
        : plugIns(root / "Library" / "Audio" / "Plug-Ins" / "HAL") {}

    std::filesystem::path folder() override { return plugIns; }
    DriverVerbs verbs() override {
        return {"", "mkdir -p", "ditto", "xattr -cr", "rm -rf", "killall coreaudiod"};
    }

    std::filesystem::path plugIns;
};

} // namespace velto
