// The sixteen dual-tone symbols of telephone keypads (ITU-T Q.23) and how they are written into sound.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace velto::rehearsal::Dtmf {

inline constexpr std::array<double, 4> rowFrequencies{697, 770, 852, 941};        ///< Hz
inline constexpr std::array<double, 4> columnFrequencies{1209, 1336, 1477, 1633}; ///< Hz
/// Symbol of row r and column c at index 4 r + c.
inline constexpr std::string_view symbols = "123A456B789C*0#D";

inline constexpr Milliseconds toneDuration{70};
inline constexpr Milliseconds gapDuration{50};
/// Of each of the two sines: together they are about as loud as what a gain control aims at.
inline constexpr double defaultAmplitude = 5000;

/// Appends a tone and a gap for each symbol; characters that are none are skipped.
void append(Samples& samples, std::string_view text, double rate, double amplitude = defaultAmplitude);

} // namespace velto::rehearsal::Dtmf
