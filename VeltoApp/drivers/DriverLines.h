// The shell lines with which an administrator installs and removes the audio drivers.
#pragma once

#include <array>
#include <filesystem>
#include <string>

namespace velto::DriverLines {

inline constexpr std::array names{"VeltoHQ", "VeltoLoop", "VeltoVoice"};

/// The folder that a driver is delivered as.
std::string bundleName(const std::string& driver);

/// Lines for /bin/sh, from the platform's verbs for the platform's plug-in folder. Any thread.
/// `source`: the folder that holds the bundles, absolute.
std::string install(const std::filesystem::path& source);
std::string uninstall();
std::string restart();

} // namespace velto::DriverLines
