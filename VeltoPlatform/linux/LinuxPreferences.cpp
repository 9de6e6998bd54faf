#include "VeltoPlatform/linux/LinuxPreferences.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

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

std::string LinuxPreferences::trouble() {
    json::object values;
    const auto file = file_.path().string();
    const auto content = file_.read(values);
    if (content == JsonFile::Content::unreadable)
        return "cannot read " + file + ": " + std::generic_category().message(errno);
    if (content == JsonFile::Content::broken)
        return file + " is no JSON object";
    auto folder = file_.path().parent_path();
    while (::access(folder.c_str(), F_OK) != 0 && folder.has_relative_path())
        folder = folder.parent_path();
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return "cannot write in " + folder.string() + ": " + std::generic_category().message(errno);
    return {};
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
