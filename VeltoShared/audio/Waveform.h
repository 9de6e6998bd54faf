// The outline of a recording: how loud it is, column by column.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <vector>

namespace velto {

struct Waveform {
    double seconds = 0;
    /// Of equal lengths of time from begin to end: the largest size of a sample, 0 to 32768. Fewer than asked
    /// for where there are fewer samples.
    std::vector<std::uint16_t> peaks;

    /// In one pass that keeps a small piece of the file in memory, however long it is. None where nothing can
    /// be played: no WAV file of 16-bit integer PCM, no sound in it, or it became shorter meanwhile; and when
    /// it was stopped. Blocks while it reads. Any thread.
    static std::optional<Waveform> read(const std::filesystem::path& file, std::size_t columns,
                                        const std::stop_token& stop = {});
};

} // namespace velto
