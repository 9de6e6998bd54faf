// The private world of a rehearsal: folders, environment, certificates, preferences.
#pragma once

#include "VeltoShared/voice/VoiceProvider.h"
#include "rehearsal/process/PrivateFolders.h"

#include <boost/json/object.hpp>

#include <filesystem>
#include <string>

namespace velto::rehearsal {

/// Everything lies below one folder; nothing of the user's own session is in it.
class Surroundings {
  public:
    explicit Surroundings(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// Makes the folders and the certificate authority with a server's certificate for "localhost"; false
    /// when that fails.
    bool prepare();
    /// Which provider the application is to use, that it finds both at the voice server, and other
    /// preferences by their keys; false when that fails.
    bool writePreferences(VoiceProvider provider, std::uint16_t serverPort, boost::json::object others) const;
    /// Of every program: private folders, the authority that is trusted; the desktop adds its bus.
    const Environment& environment() const { return environment_; }
    /// What leads a program to the display of whoever started this one; empty without one.
    static Environment callersDisplay();
    /// Writes the lines that make a shell one of that environment, with `programs` before others on its PATH;
    /// false when that fails.
    bool writeShellLines(const Environment& environment, const std::filesystem::path& programs) const;
    std::filesystem::path shellLines() const { return file("env"); }

    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path file(const std::string& name) const { return folder_ / name; }
    std::filesystem::path applicationLog() const;
    std::filesystem::path recordings() const;
    /// Makes this process one of that environment.
    static void enter(const Environment& environment);

  private:
    std::filesystem::path folder_;
    Environment environment_;
};

} // namespace velto::rehearsal
