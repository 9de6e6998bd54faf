// Shows a file in the desktop's file manager.
#pragma once

#include <chrono>
#include <filesystem>

namespace velto {

/// Asks the file manager to select the file or folder; where there is none that can, or it does not answer
/// within the limit, opens the folder that contains it (`openURL`). False for what does not exist, and when
/// nothing can show it. Any thread.
bool revealFile(const std::filesystem::path& path,
                std::chrono::milliseconds limit = std::chrono::milliseconds(1000));

} // namespace velto
