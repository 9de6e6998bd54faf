// Shows a file in the desktop's file manager.
#pragma once

#include <filesystem>

namespace velto {

/// Soon, off the main thread; where nothing can show it, the log says so. Any thread.
void reveal(std::filesystem::path file);

} // namespace velto
