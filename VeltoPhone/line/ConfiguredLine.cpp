// The one place that names the kinds of lines.
#include "VeltoPhone/line/ConfiguredLine.h"

#include "VeltoPhone/line/RehearsalLine.h"
#include "rehearsal/process/ReportSocket.h"
#include "rehearsal/scenario/ScenarioFile.h"

#include <cstdlib>
#include <string_view>

namespace velto::phone {
namespace {

constexpr std::string_view kRehearsal = "rehearsal:";

std::string variable(const char* name) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): before threads start
    return value != nullptr ? value : "";
}

Result<std::unique_ptr<Line>> rehearsalLine(const std::string& scenarioFile) {
    auto scenario = rehearsal::loadScenario(scenarioFile, ".");
    if (!scenario)
        return Failure{.description = scenario.error().message};
    const auto listener = variable("VELTO_REHEARSAL_REPORTS");
    auto report = listener.empty() ? [](const boost::json::object&) {} : rehearsal::reportToSocket(listener);
    return std::make_unique<RehearsalLine>(std::move(*scenario), std::move(report));
}

} // namespace

Result<std::unique_ptr<Line>> configuredLine() {
    const auto wanted = variable("VELTO_PHONE_LINE");
    if (wanted.empty())
        return Failure{.description = "VELTO_PHONE_LINE names none"};
    if (wanted.starts_with(kRehearsal))
        return rehearsalLine(wanted.substr(kRehearsal.size()));
    return Failure{.description = "VELTO_PHONE_LINE: unknown kind of line \"" + wanted + "\""};
}

} // namespace velto::phone
