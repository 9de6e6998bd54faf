#include "VeltoPlatform/linux/JitterBuffer.h"

#include <algorithm>
#include <cstdlib>

namespace velto {
namespace {

using namespace std::chrono_literals;

constexpr auto prefill = 30ms;
/// What taking leaves of the prefill: the room for uneven arrival.
constexpr auto slack = 20ms;
constexpr auto mostSlack = 30ms;
constexpr auto mostKept = 100ms;
constexpr auto capacity = 500ms;
constexpr auto watched = 1000ms;
/// Loudest sample of what nobody misses, about 40 dB below full scale.
constexpr int quiet = 300;

} // namespace

JitterBuffer::JitterBuffer(std::uint32_t rate, std::uint32_t channels)
    : rate_(rate), channels_(channels), ring_(samplesIn(capacity)), least_(ring_.size()) {}

std::size_t JitterBuffer::samplesIn(std::chrono::milliseconds time) const {
    return static_cast<std::size_t>(time.count()) * rate_ / 1000 * channels_;
}

std::chrono::milliseconds JitterBuffer::kept() const {
    return std::chrono::milliseconds(kept_ / channels_ * 1000 / rate_);
}

void JitterBuffer::push(std::span<const std::int16_t> samples, Time now) {
    if (samples.size() > ring_.size())
        samples = samples.last(ring_.size());
    if (kept_ == 0 && waiting_)
        waitingSince_ = now;
    drop(std::max(kept_ + samples.size(), ring_.size()) - ring_.size());
    const auto end = (first_ + kept_) % ring_.size();
    const auto straight = std::min(samples.size(), ring_.size() - end);
    std::ranges::copy(samples.first(straight), ring_.begin() + static_cast<std::ptrdiff_t>(end));
    std::ranges::copy(samples.subspan(straight), ring_.begin());
    kept_ += samples.size();
}

void JitterBuffer::drop(std::size_t samples) {
    const auto dropped = std::min(samples, kept_);
    first_ = (first_ + dropped) % ring_.size();
    kept_ -= dropped;
}

void JitterBuffer::addTo(std::span<std::int32_t> sum, Time now) {
    if (waiting_ && (kept_ == 0 || now - waitingSince_ < prefill))
        return;
    const auto count = std::min(sum.size(), kept_);
    for (std::size_t i = 0; i < count; ++i)
        sum[i] += at(i);
    drop(count);
    waiting_ = count < sum.size();
    if (const auto most = samplesIn(mostKept); kept_ > most)
        drop(kept_ - most);
    catchUp(count);
}

void JitterBuffer::catchUp(std::size_t taken) {
    least_ = std::min(least_, kept_);
    taken_ += taken;
    const bool isOver = taken_ >= samplesIn(watched);
    if (excess_ > 0 && (isOver || isQuiet(excess_))) {
        drop(excess_);
        excess_ = 0;
    } else if (isOver && least_ > samplesIn(mostSlack)) {
        excess_ = least_ - samplesIn(slack);
    }
    if (isOver) {
        taken_ = 0;
        least_ = ring_.size();
    }
}

bool JitterBuffer::isQuiet(std::size_t samples) const {
    for (std::size_t i = 0; i < std::min(samples, kept_); ++i)
        if (std::abs(at(i)) > quiet)
            return false;
    return true;
}

} // namespace velto
