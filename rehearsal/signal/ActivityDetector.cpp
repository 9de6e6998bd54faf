// Voice activity by energy.
#include "rehearsal/signal/ActivityDetector.h"

#include <algorithm>

namespace velto::rehearsal {

ActivityDetector::ActivityDetector(Settings settings)
    : settings_(settings), blockFrames_(frameCount(Milliseconds(10), settings.rate)) {
    block_.reserve(blockFrames_);
}

std::vector<ActivityDetector::Change> ActivityDetector::feed(std::span<const std::int16_t> samples) {
    std::vector<Change> changes;
    while (!samples.empty()) {
        const auto count = std::min(samples.size(), blockFrames_ - block_.size());
        block_.insert(block_.end(), samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count));
        samples = samples.subspan(count);
        if (block_.size() < blockFrames_)
            break;
        const bool loud = loudness(block_) > settings_.threshold;
        block_.clear();
        if (loud != runLoud_) {
            runLoud_ = loud;
            runStart_ = frames_;
        }
        frames_ += blockFrames_;
        const auto needed = frameCount(loud ? settings_.onset : settings_.hangover, settings_.rate);
        if (loud != active_ && frames_ - runStart_ >= needed) {
            active_ = loud;
            changes.push_back({loud, runStart_});
        }
    }
    return changes;
}

} // namespace velto::rehearsal
