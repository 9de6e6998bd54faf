// Tells another process to read its settings again, by SIGUSR1.
#pragma once

#include <sys/types.h>

#include <string_view>

namespace velto {

/// False, and nothing is sent, unless the process runs the program of this file name and catches the signal,
/// which would end it otherwise. Any thread.
bool askToReload(pid_t process, std::string_view program);

} // namespace velto
