#include "VeltoApp/drivers/DriverState.h"

#include "VeltoApp/drivers/DriverLines.h"
#include "VeltoPlatform/DriverPlace.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/TextTrim.h"

#include <algorithm>
#include <cstdlib>

namespace velto {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPrefix = "Velto";
constexpr const char* kSourceVariable = "VELTO_DRIVERS_DIR";
constexpr const char* kDevelopmentSource = "velto-audio-driver";
/// For the sound server to publish its devices again.
constexpr auto kRestartPause = std::chrono::seconds(3);

std::string output(const Helper::Result& result) {
    return std::string(trimBlanksAndNewlines(result.stdout + result.stderr));
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

asio::awaitable<Helper::Result> ran(DriverState::RunAsAdministrator run, std::string line) {
    co_return run(line);
}

} // namespace

std::optional<fs::path> DriverState::sourceDir() {
    std::error_code error;
    std::vector<fs::path> candidates;
    if (const char* named = std::getenv(kSourceVariable)) // NOLINT(concurrency-mt-unsafe): nothing sets it
        candidates.emplace_back(named);
    candidates.push_back(AppPaths::drivers());
    candidates.emplace_back(kDevelopmentSource);
    for (const auto& candidate : candidates)
        if (fs::exists(candidate, error))
            return fs::absolute(candidate, error);
    return std::nullopt;
}

std::vector<std::string> DriverState::installed() {
    std::error_code error;
    std::vector<std::string> names;
    fs::directory_iterator entry(platform().driverPlace->folder(), error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        if (auto name = entry->path().filename().string(); name.starts_with(kPrefix))
            names.push_back(std::move(name));
    std::ranges::sort(names);
    return names;
}

void DriverState::install() {
    if (busy())
        return;
    const auto present = installed();
    if (std::ranges::all_of(DriverLines::names, [&](const char* name) {
            return std::ranges::binary_search(present, DriverLines::bundleName(name));
        }))
        return log.set("Drivers already installed — nothing to do.");
    const auto source = sourceDir();
    if (!source)
        return log.set("Driver bundles not found in the app. Build with mac/bundle.");
    log.set("Installing from " + source->string() + "…");
    start(DriverLines::install(*source), {}, [](DriverState& self, const Helper::Result& result) {
        self.append("\n" + output(result) + "\nexit " + std::to_string(result.status) +
                    " — installed: " + joined(installed()));
    });
}

void DriverState::uninstall() {
    if (busy())
        return;
    start(DriverLines::uninstall(), {}, [](DriverState& self, const Helper::Result& result) {
        self.log.set("Uninstall exit " + std::to_string(result.status) + "\n" + output(result));
    });
}

void DriverState::restartCoreAudio() {
    if (busy())
        return;
    start(DriverLines::restart(), kRestartPause, [](DriverState& self, const Helper::Result& result) {
        self.append("\n$ " + platform().driverPlace->verbs().restart + " (admin)\n" + result.stdout +
                    result.stderr + " (exit " + std::to_string(result.status) + ")");
    });
}

void DriverState::start(std::string line, Clock::Duration pause, Report report) {
    busy.set(true);
    MainThread::spawn(job(weak_from_this(), run_, std::move(line), pause, std::move(report)));
}

asio::awaitable<void> DriverState::job(std::weak_ptr<DriverState> weak, RunAsAdministrator run,
                                       std::string line, Clock::Duration pause, Report report) {
    const auto result = co_await Blocking::run(ran(std::move(run), std::move(line)));
    if (pause > Clock::Duration::zero())
        co_await Clock::shared().sleep(pause);
    if (const auto self = weak.lock()) {
        report(*self, result);
        self->busy.set(false);
    }
}

void DriverState::append(const std::string& text) {
    log.mutate([&](std::string& all) { all += text; });
}

} // namespace velto
