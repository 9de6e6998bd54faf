// Changes the rate of a whole recording.
#include "rehearsal/signal/Resampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velto::rehearsal {
namespace {

constexpr double kZeroCrossings = 12;

double sinc(double x) {
    return std::abs(x) < 1e-9 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

} // namespace

Samples resampled(const Samples& samples, double fromRate, double toRate) {
    if (fromRate == toRate || samples.empty())
        return samples;
    const double band = std::min(1.0, toRate / fromRate);
    const double reach = kZeroCrossings / band;
    const auto last = static_cast<std::ptrdiff_t>(samples.size()) - 1;
    Samples result(static_cast<std::size_t>(static_cast<double>(samples.size()) * toRate / fromRate));
    for (std::size_t i = 0; i < result.size(); ++i) {
        const double position = static_cast<double>(i) * fromRate / toRate;
        const auto from = std::max<std::ptrdiff_t>(0, std::lround(std::ceil(position - reach)));
        const auto to = std::min<std::ptrdiff_t>(last, std::lround(std::floor(position + reach)));
        double sum = 0;
        for (auto k = from; k <= to; ++k) {
            const double distance = static_cast<double>(k) - position;
            const double hann = 0.5 + 0.5 * std::cos(std::numbers::pi * distance / reach);
            sum += samples[static_cast<std::size_t>(k)] * band * sinc(distance * band) * hann;
        }
        result[i] = static_cast<std::int16_t>(std::lround(std::clamp(sum, -32768.0, 32767.0)));
    }
    return result;
}

} // namespace velto::rehearsal
