// Scenarios as JSON files.
#include "rehearsal/scenario/ScenarioFile.h"

#include <boost/json.hpp>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

/// For the director to act before the line begins and, where a server has to come back, for everybody to
/// find it again, s.
double shortestPause(Trouble trouble) {
    return trouble == Trouble::soundRestart ? 3 : 1;
}

/// Thrown and caught in this file only.
struct Wrong {
    std::string message;
};

/// Takes keys out of an object and complains about those that nobody took.
class Fields {
  public:
    Fields(const json::value& value, std::string path) : path_(std::move(path)) {
        if (!value.is_object())
            throw Wrong{path_ + " is not an object"};
        object_ = &value.get_object();
    }

    const json::value* find(std::string_view key) {
        taken_.emplace(key);
        return object_->if_contains(key);
    }
    const json::value& need(std::string_view key) {
        if (const auto* value = find(key))
            return *value;
        throw Wrong{at(key) + " is missing"};
    }
    std::string text(std::string_view key) {
        const auto& value = need(key);
        if (!value.is_string() || value.get_string().find_first_not_of(" \t\r\n") == json::string::npos)
            throw Wrong{at(key) + " is not a text, or is empty"};
        return std::string(value.get_string());
    }
    std::optional<double> number(std::string_view key, double least, double most) {
        const auto* value = find(key);
        if (value == nullptr)
            return {};
        json::error_code error;
        const auto number = value->to_number<double>(error);
        if (error || !(number >= least) || !(number <= most))
            throw Wrong{at(key) + " is not a number from " + shortest(least) + " to " + shortest(most)};
        return number;
    }
    void noOthers() const {
        for (const auto& entry : *object_)
            if (!taken_.contains(std::string(entry.key())))
                throw Wrong{at(entry.key()) + " is not known"};
    }
    std::string at(std::string_view key) const { return path_ + "." + std::string(key); }

  private:
    static std::string shortest(double number) { return std::to_string(static_cast<int>(number)); }

    std::string path_;
    const json::object* object_ = nullptr;
    std::set<std::string> taken_;
};

Trouble parseTrouble(Fields& fields) {
    const auto trouble = fields.text("after");
    if (trouble == "sound restart")
        return Trouble::soundRestart;
    if (trouble == "phone stops")
        return Trouble::phoneStops;
    if (trouble == "keyring killed")
        return Trouble::keyringKilled;
    throw Wrong{fields.at("after") + R"( is none of "sound restart", "phone stops" and "keyring killed")"};
}

ScenarioLine parseLine(const json::value& value, const std::string& path) {
    Fields fields(value, path);
    ScenarioLine line;
    const auto& mark = fields.need("mark");
    if (!mark.is_int64() || mark.get_int64() < 0 || mark.get_int64() > 99)
        throw Wrong{fields.at("mark") + " is not a whole number from 0 to 99"};
    line.mark = static_cast<int>(mark.get_int64());
    const auto side = fields.text("side");
    if (side != "agent" && side != "callee")
        throw Wrong{fields.at("side") + " is neither \"agent\" nor \"callee\""};
    line.side = side == "agent" ? Side::agent : Side::callee;
    line.text = fields.text("text");
    if (line.text.front() == ' ' || line.text.back() == ' ')
        throw Wrong{fields.at("text") + " has blanks at an end"};
    line.pause = fields.number("pause", 0, 30).value_or(line.pause);
    line.over = fields.number("over", 0, 30);
    if (fields.find("after") != nullptr)
        line.after = parseTrouble(fields);
    if (line.side == Side::agent && (fields.find("pause") != nullptr || line.over || line.after))
        throw Wrong{path + R"(: "pause", "over" and "after" are for lines of the callee)"};
    if (line.after && (line.over || line.pause < shortestPause(*line.after)))
        throw Wrong{fields.at("after") + " needs a pause of at least " +
                    std::to_string(static_cast<int>(shortestPause(*line.after))) + " s"};
    fields.noOthers();
    return line;
}

CallEnd parseEnd(Fields& fields) {
    const auto end = fields.text("ends");
    if (end == "agent")
        return CallEnd::agentHangsUp;
    if (end == "callee")
        return CallEnd::calleeHangsUp;
    if (end == "no answer")
        return CallEnd::noAnswer;
    throw Wrong{fields.at("ends") + " is none of \"agent\", \"callee\" and \"no answer\""};
}

/// What no single key shows.
void check(const Scenario& scenario) {
    std::set<int> marks;
    for (std::size_t i = 0; i < scenario.lines.size(); ++i) {
        const auto& line = scenario.lines[i];
        const auto path = "scenario.lines[" + std::to_string(i) + "]";
        if (!marks.insert(line.mark).second)
            throw Wrong{path + ".mark is used twice"};
        if (i > 0 && line.side == scenario.lines[i - 1].side)
            throw Wrong{path + ".side: the sides must take turns"};
        if (i == 0 && (line.over || line.after))
            throw Wrong{path + ": there is no line before it to be talked over or waited for"};
    }
    if (scenario.lines.empty())
        throw Wrong{"scenario.lines is empty"};
    const auto last = scenario.lines.back().side;
    if (scenario.end == CallEnd::agentHangsUp && last != Side::agent)
        throw Wrong{"scenario.lines must end with the agent, who hangs up"};
    if (scenario.end == CallEnd::calleeHangsUp && last != Side::callee)
        throw Wrong{"scenario.lines must end with the callee, who hangs up"};
    if (scenario.end == CallEnd::noAnswer && (scenario.lines.size() != 1 || last != Side::agent))
        throw Wrong{"scenario.lines must be one line of the agent when nobody answers"};
}

Scenario parse(const json::value& value) {
    Fields fields(value, "scenario");
    Scenario scenario;
    scenario.name = fields.text("name");
    scenario.about = fields.text("about");
    scenario.number = fields.text("number");
    scenario.goal = fields.text("goal");
    scenario.ringing = fields.number("ringing", 0, 120).value_or(scenario.ringing);
    scenario.calleeLevel = fields.number("calleeLevel", 0, 1).value_or(scenario.calleeLevel);
    scenario.patience = fields.number("patience", 1, 60).value_or(scenario.patience);
    scenario.deadline = fields.number("deadline", 1, 600).value_or(scenario.deadline);
    scenario.end = parseEnd(fields);
    const auto& lines = fields.need("lines");
    if (!lines.is_array())
        throw Wrong{"scenario.lines is not a list"};
    for (const auto& line : lines.get_array())
        scenario.lines.push_back(
            parseLine(line, "scenario.lines[" + std::to_string(scenario.lines.size()) + "]"));
    fields.noOthers();
    check(scenario);
    return scenario;
}

} // namespace

ScenarioResult parseScenario(std::string_view text) {
    json::error_code error;
    const auto value = json::parse(text, error);
    if (error)
        return ScenarioError{"not JSON: " + error.message()};
    try {
        return parse(value);
    } catch (const Wrong& wrong) {
        return ScenarioError{wrong.message};
    }
}

ScenarioResult loadScenario(const std::string& nameOrPath, const std::filesystem::path& folder) {
    const bool isName = nameOrPath.find('/') == std::string::npos && !nameOrPath.ends_with(".json");
    const auto path = isName ? folder / (nameOrPath + ".json") : std::filesystem::path(nameOrPath);
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad())
        return ScenarioError{isName ? "there is no scenario \"" + nameOrPath + "\" in " + folder.string()
                                    : "cannot read " + path.string()};
    auto scenario = parseScenario(text);
    if (!scenario)
        return ScenarioError{path.string() + ": " + scenario.error().message};
    return scenario;
}

std::vector<std::string> scenarioNames(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (entry.path().extension() == ".json")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace velto::rehearsal
