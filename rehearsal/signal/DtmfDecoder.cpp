// Finds dual-tone symbols in a stream of sound.
#include "rehearsal/signal/DtmfDecoder.h"

#include "rehearsal/signal/Dtmf.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velto::rehearsal {
namespace {

constexpr Milliseconds kWindow{30};
constexpr Milliseconds kHop{10};
constexpr int kWindowsForSymbol = 3;
constexpr int kMissesForEnd = 2;
/// Share of full scale below which nothing is looked for.
constexpr double kFloor = 0.0008;
/// A pair of sines clipped into square edges keeps about two thirds of its energy at its own frequencies.
constexpr double kLeastShare = 0.58;
/// As ratios of power: 8 dB between row and column, 7 dB over the others of the group.
constexpr double kTwist = 6.3;
constexpr double kOverOthers = 5;

/// Index of the largest of four and its ratio to the second.
std::pair<std::size_t, double> strongest(std::span<const double> powers) {
    const auto best =
        static_cast<std::size_t>(std::max_element(powers.begin(), powers.end()) - powers.begin());
    double second = 1e-9;
    for (std::size_t i = 0; i < powers.size(); ++i)
        if (i != best)
            second = std::max(second, powers[i]);
    return {best, powers[best] / second};
}

} // namespace

DtmfDecoder::DtmfDecoder(double rate, std::function<void(const HeardSymbol&)> heard)
    : heard_(std::move(heard)), hop_(frameCount(kHop, rate)), window_(frameCount(kWindow, rate)) {
    for (std::size_t i = 0; i < 4; ++i) {
        const auto coefficient = [&](double hz) { return 2 * std::cos(2 * std::numbers::pi * hz / rate); };
        coefficients_.at(i) = coefficient(Dtmf::rowFrequencies.at(i));
        coefficients_.at(i + 4) = coefficient(Dtmf::columnFrequencies.at(i));
    }
}

void DtmfDecoder::feed(std::span<const std::int16_t> samples) {
    while (!samples.empty()) {
        const auto count = std::min(samples.size(), hop_ - fresh_);
        std::shift_left(window_.begin(), window_.end(), static_cast<std::ptrdiff_t>(count));
        std::copy_n(samples.begin(), count, window_.end() - static_cast<std::ptrdiff_t>(count));
        samples = samples.subspan(count);
        fresh_ += count;
        frames_ += count;
        if (fresh_ == hop_) {
            fresh_ = 0;
            step(classify());
        }
    }
}

double DtmfDecoder::power(double coefficient) const {
    double previous = 0;
    double beforeThat = 0;
    for (const auto sample : window_) {
        const auto next = sample + coefficient * previous - beforeThat;
        beforeThat = previous;
        previous = next;
    }
    return previous * previous + beforeThat * beforeThat - coefficient * previous * beforeThat;
}

char DtmfDecoder::classify() const {
    if (loudness(window_) < kFloor)
        return 0;
    std::array<double, 8> powers{};
    std::transform(coefficients_.begin(), coefficients_.end(), powers.begin(),
                   [this](double coefficient) { return power(coefficient); });
    const auto [row, rowLead] = strongest(std::span(powers).first(4));
    const auto [column, columnLead] = strongest(std::span(powers).last(4));
    const auto rowPower = powers.at(row);
    const auto columnPower = powers.at(column + 4);
    if (rowLead < kOverOthers || columnLead < kOverOthers || rowPower > kTwist * columnPower ||
        columnPower > kTwist * rowPower)
        return 0;
    double energy = 0;
    for (const auto sample : window_)
        energy += static_cast<double>(sample) * sample;
    // A sine of power P in this transform has the energy 2 P / N.
    const auto share = 2 * (rowPower + columnPower) / (static_cast<double>(window_.size()) * energy);
    return share < kLeastShare ? '\0' : Dtmf::symbols[4 * row + column];
}

void DtmfDecoder::step(char seen) {
    if (seen != 0 && seen == current_) {
        ++run_;
        missed_ = 0;
        lastFrame_ = frames_;
        return;
    }
    if (current_ != 0 && seen == 0 && ++missed_ < kMissesForEnd)
        return;
    if (current_ != 0 && run_ >= kWindowsForSymbol)
        heard_({current_, firstFrame_, lastFrame_});
    current_ = seen;
    run_ = seen != 0 ? 1 : 0;
    missed_ = 0;
    firstFrame_ = frames_ - std::min<std::uint64_t>(frames_, window_.size());
    lastFrame_ = frames_;
}

} // namespace velto::rehearsal
