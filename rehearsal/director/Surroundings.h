// The private world of a rehearsal: folders, environment, certificates, preferences.
#pragma once

#include "rehearsal/process/PrivateFolders.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace velto::rehearsal {

/// Everything lies below one folder; nothing of the user's own session is in it.
class Surroundings {
  public:
    explicit Surroundings(std::filesystem::path folder);

    /// Makes the folders, the certificate authority with a server's certificate for "localhost", and an API
    /// key; false when that fails.
    bool prepare();
    /// Where the application finds the voice server; false when that fails.
    bool writePreferences(std::uint16_t serverPort) const;
    /// Of every program: private folders, the authority that is trusted; the desktop adds its bus.
    const Environment& environment() const { return environment_; }
    /// Those of the variables that somebody needs to talk to the application, as shell words.
    std::string environmentForPeople(const std::map<std::string, std::string>& sound) const;

    std::filesystem::path file(const std::string& name) const { return folder_ / name; }
    std::filesystem::path applicationLog() const;
    /// Makes this process one of that environment.
    static void enter(const Environment& environment);
    const std::string& apiKey() const { return apiKey_; }
    /// Files below the folder in which the API key can be read.
    std::vector<std::string> filesWithKey() const;

  private:
    std::filesystem::path folder_;
    Environment environment_;
    std::string keyMark_; ///< the part of the key that looks the same in every encoding
    std::string apiKey_;
};

} // namespace velto::rehearsal
