// Runs a command line with administrator rights: the plain function below `Admin::run`.
#pragma once

#include <cstdint>

/// Runs "/bin/sh" "-c" `command` with the process's one authorization, which is made and granted by the user
/// in the first run and kept until a run is denied or cancelled; the run after that asks again. Answers 0, or
/// one of `AdminStatus`. With a place for `output`, waits for the command's end and leaves there what it
/// wrote, with a NUL after it, for the caller to `free`; null when there was none to be had. Without it, the
/// command goes on by itself. Any thread that may block; of two runs the second waits for the first.
extern "C" std::int32_t velto_run_admin(const char* command, char** output);
