// Opening the control socket's file and listening on it.
#pragma once

#include "VeltoShared/core/Result.h"

#include <filesystem>

namespace velto::ControlListener {

/// A listening, non-blocking descriptor, which the caller owns. Whatever lies at the path is removed first,
/// so a running instance's socket loses its name to the newest. Nobody but the owner of the file (mode 600)
/// can connect at any moment: the mode is set before the socket listens. The failure's code is the error
/// number, its description the line for the log.
Result<int> open(const std::filesystem::path& path);

/// Raises the process's soft limit of open files to what it may have, up to some thousands, and answers it.
std::size_t raiseDescriptorLimit();

} // namespace velto::ControlListener
