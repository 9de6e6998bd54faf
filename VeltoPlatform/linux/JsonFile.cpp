#include "VeltoPlatform/linux/JsonFile.h"

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

/// Texts are kept as they come, but a file with one that is not UTF-8 would read as broken ever after.
bool readsBack(std::string_view content) {
    boost::system::error_code error;
    json::parse(json::string_view(content.data(), content.size()), error);
    return !error;
}

fs::path beside(const fs::path& file, const std::string& ending) {
    fs::path name = file;
    return name += ending;
}

/// The first of "<file>.broken", "<file>.broken.2", … that is free.
fs::path freeBrokenName(const fs::path& file) {
    fs::path name = beside(file, ".broken");
    std::error_code ignored;
    for (int i = 2; fs::exists(name, ignored); ++i)
        name = beside(file, ".broken." + std::to_string(i));
    return name;
}

} // namespace

JsonFile::JsonFile(fs::path file, SetAside setAside)
    : file_(std::move(file)), setAside_(std::move(setAside)) {}

JsonFile::Content JsonFile::read(json::object& values) const {
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

std::string JsonFile::update(const std::function<bool(json::object&)>& change) const {
    std::error_code error;
    fs::create_directories(file_.parent_path(), error);
    const auto lockName = beside(file_, ".lock");
    const FileDescriptor lock(::open(lockName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock || ::flock(lock.get(), LOCK_EX) != 0)
        return "cannot lock " + lockName.string() + ": " + errorText();

    json::object values;
    switch (read(values)) {
    case Content::unreadable:
        return "cannot read " + file_.string() + ": " + errorText();
    case Content::broken: {
        const auto aside = freeBrokenName(file_);
        fs::rename(file_, aside, error);
        if (error)
            return file_.string() + " is broken and cannot be set aside: " + error.message();
        if (setAside_)
            setAside_(file_.string() + " was broken; kept as " + aside.filename().string());
        break;
    }
    case Content::absent:
    case Content::sound:
        break;
    }
    return change(values) ? write(json::serialize(values) + "\n") : "";
}

std::string JsonFile::write(const std::string& content) const {
    if (!readsBack(content))
        return "what was to be written to " + file_.string() + " is not UTF-8";
    const auto temporary = beside(file_, ".new");
    // One that a crash left behind may have another mode.
    ::unlink(temporary.c_str());
    const FileDescriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (file && writeAll(file.get(), content) && ::fdatasync(file.get()) == 0 &&
        ::rename(temporary.c_str(), file_.c_str()) == 0)
        return "";
    auto problem = "cannot write " + file_.string() + ": " + errorText();
    ::unlink(temporary.c_str());
    return problem;
}

} // namespace velto
