#include "VeltoShared/audio/Waveform.h"

#include "VeltoShared/audio/FileBytes.h"
#include "VeltoShared/audio/WavFormat.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>

namespace velto {
namespace {

constexpr std::size_t kBlock = 4096; ///< frames
/// Of the samples in a block of bytes, however many channels a header says there are.
constexpr std::uint32_t kMostChannels = 64;

} // namespace

std::optional<Waveform> Waveform::read(const std::filesystem::path& file, std::size_t columns,
                                       const std::stop_token& stop) {
    FileBytes bytes(file);
    const auto sound = WavFormat::find(bytes);
    if (!sound || sound->frames() == 0 || sound->rate() == 0 || sound->channels() > kMostChannels)
        return std::nullopt;
    const auto frames = sound->frames();
    const auto count = std::min<std::uint64_t>(columns, frames);
    Waveform form{static_cast<double>(frames) / sound->rate(), {}};
    form.peaks.reserve(static_cast<std::size_t>(count));
    std::array<std::int16_t, kBlock> block{};
    for (std::uint64_t column = 0, at = 0; column < count; ++column) {
        // In floating point: a product of two such numbers may have more than 64 bits.
        const auto end = column + 1 == count ? frames
                                             : static_cast<std::uint64_t>(static_cast<double>(frames) *
                                                                          static_cast<double>(column + 1) /
                                                                          static_cast<double>(count));
        int peak = 0;
        while (at < end) {
            const auto part =
                std::span(block).first(static_cast<std::size_t>(std::min<std::uint64_t>(kBlock, end - at)));
            if (stop.stop_requested() || !sound->mono(at, part))
                return std::nullopt;
            const auto [low, high] = std::ranges::minmax(part);
            peak = std::max({peak, -int{low}, int{high}});
            at += part.size();
        }
        form.peaks.push_back(static_cast<std::uint16_t>(peak));
    }
    return form;
}

} // namespace velto
