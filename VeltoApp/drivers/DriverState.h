// What the windows show of the audio drivers, and the installer behind it.
#pragma once

#include "VeltoApp/admin/Admin.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Published.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velto {

/// Held by `std::shared_ptr`; main thread only. The administrator's commands run off it, one at a time: while
/// `busy`, no further one is started.
class DriverState : public ObservableObject, public std::enable_shared_from_this<DriverState> {
  public:
    /// Runs a line of /bin/sh with an administrator's rights and waits for its end; on a thread that may
    /// block.
    using RunAsAdministrator = std::function<Helper::Result(const std::string& line)>;

    explicit DriverState(RunAsAdministrator run = Admin::run) : run_(std::move(run)) {}

    Published<std::string> log{*this};
    Published<bool> busy{*this, false};

    /// Where the bundles are copied from, absolute: what VELTO_DRIVERS_DIR names, "Drivers" among the
    /// application's resources, "velto-audio-driver" in the working folder; the first that exists.
    static std::optional<std::filesystem::path> sourceDir();
    /// Names in the plug-in folder that begin with "Velto", ascending; none when it cannot be read.
    static std::vector<std::string> installed();
    static std::vector<std::string> installedOnDisk() { return installed(); }

    /// Each returns at once; what came of it is in `log`, a failure too.
    void install();
    void uninstall();
    void restartCoreAudio();

  private:
    /// Tells `log` of a command's end.
    using Report = std::function<void(DriverState&, const Helper::Result&)>;

    /// Runs the line, waits for `pause` and reports.
    void start(std::string line, Clock::Duration pause, Report report);
    static asio::awaitable<void> job(std::weak_ptr<DriverState> weak, RunAsAdministrator run,
                                     std::string line, Clock::Duration pause, Report report);
    void append(const std::string& text);

    RunAsAdministrator run_;
};

} // namespace velto
