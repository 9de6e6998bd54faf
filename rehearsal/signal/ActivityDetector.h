// Voice activity by energy: when somebody starts to talk and when they have stopped.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <cstdint>
#include <span>
#include <vector>

namespace velto::rehearsal {

/// Works on blocks of 10 ms. Activity starts after `onset` of sound without a silent block, and ends after
/// `hangover` of silence. One thread.
class ActivityDetector {
  public:
    struct Settings {
        double rate = 16000;     ///< Hz
        double threshold = 0.01; ///< share of full scale, root mean square
        Milliseconds onset{50};
        Milliseconds hangover{500};
    };
    struct Change {
        bool active = false;
        /// The first frame with sound, or the first frame of the silence.
        std::uint64_t frame = 0;
    };

    explicit ActivityDetector(Settings settings);

    /// The changes that these samples bring, in order.
    std::vector<Change> feed(std::span<const std::int16_t> samples);
    bool active() const { return active_; }
    /// Frames fed so far.
    std::uint64_t frames() const { return frames_; }

  private:
    Settings settings_;
    std::size_t blockFrames_;
    Samples block_;
    std::uint64_t frames_ = 0;
    std::uint64_t runStart_ = 0; ///< of the current run of loud or silent blocks
    bool runLoud_ = false;
    bool active_ = false;
};

} // namespace velto::rehearsal
