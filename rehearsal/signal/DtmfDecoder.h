// Finds dual-tone symbols in a stream of sound, at any level and through hard clipping, and not in speech.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>

namespace velto::rehearsal {

/// One symbol with the frames of the stream between which it was seen.
struct HeardSymbol {
    char symbol = 0;
    std::uint64_t firstFrame = 0;
    std::uint64_t endFrame = 0;
};

/// Goertzel's algorithm on windows of 30 ms every 10 ms. A window shows a symbol when one row and one column
/// hold most of its energy, neither is much louder than the other, and no other of its group comes near.
/// A symbol counts after three such windows in a row. One thread.
class DtmfDecoder {
  public:
    /// `heard` is called from `feed` when a symbol has ended.
    DtmfDecoder(double rate, std::function<void(const HeardSymbol&)> heard);

    void feed(std::span<const std::int16_t> samples);

  private:
    char classify() const;
    double power(double coefficient) const;
    void step(char seen);

    std::function<void(const HeardSymbol&)> heard_;
    std::size_t hop_;
    Samples window_;        ///< the newest samples, the oldest first once it is full
    std::size_t fresh_ = 0; ///< samples since the last step
    std::uint64_t frames_ = 0;
    std::array<double, 8> coefficients_{}; ///< rows, then columns
    char current_ = 0;
    int run_ = 0;
    int missed_ = 0;
    std::uint64_t firstFrame_ = 0;
    std::uint64_t lastFrame_ = 0;
};

} // namespace velto::rehearsal
