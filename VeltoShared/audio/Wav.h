// Reads WAV files as mono sound.
#pragma once

#include "VeltoShared/audio/WavFormat.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace velto::Wav {

struct Sound {
    double rate = 0; ///< Hz
    std::vector<std::int16_t> samples;
};

/// The whole file, as `MonoSound`. None when it is no regular file that can be read, no WAV file of 16-bit
/// integer PCM, or cannot be converted. Blocks while it reads. Any thread.
std::optional<Sound> readMono16(const std::filesystem::path& url, std::optional<double> targetRate = {});

/// The same of a file that has been looked into.
std::optional<Sound> toMono16(const WavFormat::Sound& sound, std::optional<double> targetRate);

} // namespace velto::Wav
