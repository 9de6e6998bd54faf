// Hears marks in a stream of sound.
#pragma once

#include "rehearsal/signal/DtmfDecoder.h"
#include "rehearsal/signal/Mark.h"

#include <functional>
#include <string>

namespace velto::rehearsal {

/// A mark is four symbols that follow each other without a hole. One thread.
class MarkListener {
  public:
    MarkListener(double rate, std::function<void(const Mark&)> heard);

    /// Marks that end in these samples are told before this returns.
    void feed(std::span<const std::int16_t> samples) { decoder_.feed(samples); }

  private:
    void symbolHeard(const HeardSymbol& heard);

    std::function<void(const Mark&)> heard_;
    std::uint64_t longestHole_; ///< frames
    DtmfDecoder decoder_;
    std::string recent_;
    std::uint64_t lastFrame_ = 0;
};

} // namespace velto::rehearsal
