// The folder of recordings, read where the reader may block.
#pragma once

#include "VeltoApp/state/RecordingState.h"
#include "VeltoShared/audio/FileBytes.h"
#include "VeltoShared/audio/MonoSound.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// All operations: on `Blocking`.
namespace velto::RecordingFiles {

/// The ".wav" files by name; a folder of such a name and what cannot be looked at are left out.
asio::awaitable<std::vector<RecordingState::File>> list();

/// A recording that is played: its file stays open, and little of it is in memory. One thread at a time.
struct Source {
    explicit Source(const std::filesystem::path& path, double rate);
    FileBytes file;
    std::optional<MonoSound> sound; ///< none when there is nothing to play
};

struct Prepared {
    std::string device;
    /// None when the recording cannot be read, or there is no such device.
    std::shared_ptr<Source> source;
};
/// What it takes to play a recording at `rate` Hz; on the default output when `device` is blank.
asio::awaitable<Prepared> prepare(std::string name, std::string device, double rate);
/// At most so many samples from the sample `first` on; none behind the end, or where the file has been cut
/// off.
asio::awaitable<std::vector<std::int16_t>> piece(std::shared_ptr<Source> source, std::size_t first,
                                                 std::size_t count);

} // namespace velto::RecordingFiles
