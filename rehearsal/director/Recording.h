// What the application recorded of a call, heard again from its file.
#pragma once

#include "rehearsal/signal/Mark.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace velto::rehearsal {

struct Recording {
    double seconds = 0;
    std::vector<Mark> heard; ///< in order
};

/// The only WAV file of a folder; none when there is none, are several, or it cannot be read.
std::optional<Recording> hearRecording(const std::filesystem::path& folder);

} // namespace velto::rehearsal
