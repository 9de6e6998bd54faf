#include "VeltoPlatform/linux/LinuxPreferences.h"

#include "VeltoPlatform/FileDescriptor.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace velto {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

std::string errorText() {
    return std::generic_category().message(errno);
}

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

/// Texts are kept as they come, but a file with one that is not UTF-8 would read as broken ever after.
bool readsBack(std::string_view content) {
    boost::system::error_code error;
    json::parse(json::string_view(content.data(), content.size()), error);
    return !error;
}

/// The first of "<file>.broken", "<file>.broken.2", … that is free.
fs::path freeBrokenName(const fs::path& file) {
    fs::path name = file;
    name += ".broken";
    std::error_code ignored;
    for (int i = 2; fs::exists(name, ignored); ++i) {
        name = file;
        name += ".broken." + std::to_string(i);
    }
    return name;
}

} // namespace

LinuxPreferences::LinuxPreferences(fs::path file, Report report)
    : file_(std::move(file)), report_(std::move(report)) {}

LinuxPreferences::Content LinuxPreferences::read(json::object& values) const {
    const FileDescriptor file(::open(file_.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        return errno == ENOENT || errno == ENOTDIR ? Content::absent : Content::unreadable;
    const auto bytes = readAll(file.get());
    if (!bytes)
        return Content::unreadable;
    boost::system::error_code error;
    auto parsed = json::parse(*bytes, error);
    if (error || !parsed.is_object())
        return Content::broken;
    values = std::move(parsed.get_object());
    return Content::sound;
}

std::optional<PreferenceValue> LinuxPreferences::object(const std::string& key) {
    std::lock_guard lock(mutex_);
    if (const auto kept = unwritten_.find(key); kept != unwritten_.end())
        return kept->second;
    json::object values;
    if (read(values) != Content::sound)
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
    if (write(key, value))
        unwritten_.erase(key);
    else
        unwritten_.insert_or_assign(key, std::move(value));
}

bool LinuxPreferences::write(const std::string& key, const std::optional<PreferenceValue>& value) {
    std::error_code ignored;
    fs::create_directories(file_.parent_path(), ignored);
    fs::path lockName = file_;
    lockName += ".lock";
    const FileDescriptor lock(::open(lockName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock || ::flock(lock.get(), LOCK_EX) != 0) {
        say("preferences: cannot lock " + lockName.string() + ": " + errorText());
        return false;
    }

    json::object values;
    switch (read(values)) {
    case Content::unreadable:
        say("preferences: cannot read " + file_.string() + ": " + errorText() +
            "; changes last for this run only");
        return false;
    case Content::broken: {
        const auto aside = freeBrokenName(file_);
        fs::rename(file_, aside, ignored);
        if (ignored) {
            say("preferences: " + file_.string() +
                " is broken and cannot be set aside: " + ignored.message());
            return false;
        }
        say("preferences: " + file_.string() + " was broken; kept as " + aside.filename().string());
        break;
    }
    case Content::absent:
    case Content::sound:
        break;
    }
    if (value)
        values.insert_or_assign(key, untyped(*value));
    else
        values.erase(key);

    const auto content = json::serialize(values) + "\n";
    if (!readsBack(content)) {
        say("preferences: '" + key + "' is not UTF-8; it lasts for this run only");
        return false;
    }

    fs::path temporary = file_;
    temporary += ".new";
    const FileDescriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    if (!file || !writeAll(file.get(), content) || ::fdatasync(file.get()) != 0 ||
        ::rename(temporary.c_str(), file_.c_str()) != 0) {
        say("preferences: cannot write " + file_.string() + ": " + errorText() +
            "; changes last for this run only");
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

void LinuxPreferences::say(const std::string& problem) {
    if (report_ && problem != lastProblem_)
        report_(problem);
    lastProblem_ = problem;
}

} // namespace velto
