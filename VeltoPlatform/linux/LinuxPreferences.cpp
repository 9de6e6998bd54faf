#include "VeltoPlatform/linux/LinuxPreferences.h"

namespace velto {
namespace {

namespace json = boost::json;

std::optional<PreferenceValue> typed(const json::value& value) {
    if (value.is_bool())
        return value.get_bool();
    if (value.is_int64())
        return value.get_int64();
    if (value.is_uint64()) // beyond 63 bits
        return static_cast<double>(value.get_uint64());
    if (value.is_double())
        return value.get_double();
    if (value.is_string())
        return std::string(value.get_string());
    return std::nullopt;
}

json::value untyped(const PreferenceValue& value) {
    return std::visit([](const auto& plain) { return json::value(plain); }, value);
}

} // namespace

LinuxPreferences::LinuxPreferences(std::filesystem::path file, Report report)
    : file_(std::move(file), [this](const std::string& line) { say("preferences: " + line); }),
      report_(std::move(report)) {}

std::optional<PreferenceValue> LinuxPreferences::object(const std::string& key) {
    std::lock_guard lock(mutex_);
    if (const auto kept = unwritten_.find(key); kept != unwritten_.end())
        return kept->second;
    json::object values;
    if (file_.read(values) != JsonFile::Content::sound)
        return std::nullopt;
    const auto* value = values.if_contains(key);
    return value ? typed(*value) : std::nullopt;
}

void LinuxPreferences::set(const std::string& key, PreferenceValue value) {
    change(key, std::move(value));
}
void LinuxPreferences::remove(const std::string& key) {
    change(key, std::nullopt);
}

void LinuxPreferences::change(const std::string& key, std::optional<PreferenceValue> value) {
    std::lock_guard lock(mutex_);
    const auto problem = file_.update([&](json::object& values) {
        if (value)
            values.insert_or_assign(key, untyped(*value));
        else
            values.erase(key);
        return true;
    });
    if (problem.empty()) {
        unwritten_.erase(key);
    } else {
        say("preferences: " + problem + "; changes last for this run only");
        unwritten_.insert_or_assign(key, std::move(value));
    }
}

void LinuxPreferences::say(const std::string& problem) {
    if (report_ && problem != lastProblem_)
        report_(problem);
    lastProblem_ = problem;
}

} // namespace velto
