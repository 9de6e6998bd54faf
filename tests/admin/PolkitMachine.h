// This machine with a system bus and a polkit of its own, in namespaces that nobody else sees.
#pragma once

#include "rehearsal/process/ChildProcess.h"

#include <filesystem>
#include <optional>

namespace velto::test {

/// One in a process, which must be in the namespaces (`enter`). Velto's helper is installed there, known to
/// polkit, and lies a second time in a place that polkit does not know. The folders for drivers are empty.
class PolkitMachine {
  public:
    static constexpr const char* busAddress = "unix:path=/run/dbus/system_bus_socket";
    static constexpr const char* installedHelper = "/opt/velto/libexec/velto-admin-helper";
    static constexpr const char* otherHelper = "/opt/velto/build/velto-admin-helper";

    /// Goes on in a child process, the first of a new process namespace: when it ends, so do all others
    /// there. The calling process ends with its status; with 77, which ctest takes for "skipped", where
    /// such a machine cannot be had.
    static void enter();

    PolkitMachine();
    /// The bus and polkit run.
    bool up() const { return up_; }
    void stop();

  private:
    std::optional<rehearsal::ChildProcess> bus_;
    std::optional<rehearsal::ChildProcess> polkit_;
    bool up_ = false;
};

} // namespace velto::test
