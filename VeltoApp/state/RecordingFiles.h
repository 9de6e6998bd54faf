// The folder of recordings, read where the reader may block.
#pragma once

#include "VeltoApp/state/RecordingState.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// All operations: on `Blocking`.
namespace velto::RecordingFiles {

/// The ".wav" files by name; a folder of such a name and what cannot be looked at are left out.
asio::awaitable<std::vector<RecordingState::File>> list();

struct Prepared {
    std::string device;
    /// None when the recording cannot be read, or there is no such device.
    std::optional<std::vector<std::int16_t>> samples;
};
/// What it takes to play a recording at `rate` Hz; on the default output when `device` is blank.
asio::awaitable<Prepared> prepare(std::string name, std::string device, double rate);

} // namespace velto::RecordingFiles
