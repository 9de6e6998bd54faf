// Looks for API keys where they should not be.
#pragma once

#include "rehearsal/director/Evidence.h"
#include "rehearsal/director/RehearsalKeys.h"

#include <filesystem>
#include <string>

namespace velto::rehearsal {

/// What it finds goes to the evidence, which must outlive it like the keys. One thread.
class KeySearch {
  public:
    KeySearch(const RehearsalKeys& keys, Evidence& evidence) : keys_(keys), evidence_(evidence) {}

    /// Command line and environment of a process and of all that descend from it. Everybody on the computer
    /// can read a command line, and a core file holds both.
    void lookAtProcess(const char* title, pid_t pid);
    void lookAtFolder(const std::filesystem::path& folder);
    void lookAtFile(const std::filesystem::path& file);

  private:
    /// False when there is nothing to look at.
    bool look(const std::string& whose, pid_t pid);

    const RehearsalKeys& keys_;
    Evidence& evidence_;
};

} // namespace velto::rehearsal
