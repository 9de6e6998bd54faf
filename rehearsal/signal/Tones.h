// Sines and silence at the end of a run of samples, and how loud a run is.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velto::rehearsal {

/// Mono, signed 16-bit.
using Samples = std::vector<std::int16_t>;
using Milliseconds = std::chrono::milliseconds;

/// `rate` in Hz.
std::size_t frameCount(Milliseconds duration, double rate);

void appendSilence(Samples& samples, Milliseconds duration, double rate);
/// The sum of sines of these frequencies (Hz), each of this amplitude, with 5 ms ramps at both ends.
void appendTones(Samples& samples, std::span<const double> frequencies, double amplitude,
                 Milliseconds duration, double rate);

/// Largest absolute value, 0 to 32768.
int peak(std::span<const std::int16_t> samples);
/// Root mean square as a share of full scale, 0 to 1; 0 without samples.
double loudness(std::span<const std::int16_t> samples);
/// Multiplies in place, limited to the range of a sample.
void scale(std::span<std::int16_t> samples, double factor);

} // namespace velto::rehearsal
