// Scenarios as JSON files.
#pragma once

#include "rehearsal/scenario/Scenario.h"

#include <boost/system/result.hpp>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velto::rehearsal {

/// What is wrong with a scenario, for the person who wrote it.
struct ScenarioError {
    std::string message;
};
[[noreturn]] inline void throw_exception_from_error(const ScenarioError& error,
                                                    const boost::source_location&) {
    throw std::invalid_argument(error.message);
}
using ScenarioResult = boost::system::result<Scenario, ScenarioError>;

/// `text` is a JSON object with the fields of `Scenario` by name; "ends" is "agent", "callee" or "no answer",
/// and a line's "side" is "agent" or "callee". Unknown keys, wrong types and scenarios that cannot be played
/// are refused with the path of the key.
ScenarioResult parseScenario(std::string_view text);

/// Reads a file; `nameOrPath` without a slash and without ".json" is looked for in `folder`.
ScenarioResult loadScenario(const std::string& nameOrPath, const std::filesystem::path& folder);

/// Names of the scenarios in the folder, sorted.
std::vector<std::string> scenarioNames(const std::filesystem::path& folder);

} // namespace velto::rehearsal
