#include "VeltoPlatform/linux/LinuxLoginItem.h"

#include "VeltoPlatform/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace velto {
namespace {

namespace fs = std::filesystem;

/// Desktops and systemd do not agree on how these are written in a command.
bool canBeWritten(const fs::path& program) {
    constexpr std::string_view kTrouble = "\"`$\\%";
    return std::ranges::none_of(program.native(), [&](char letter) {
        return kTrouble.find(letter) != kTrouble.npos || static_cast<unsigned char>(letter) < ' ' ||
               letter == '\x7f';
    });
}

std::string failed(const std::string& what, const fs::path& path) {
    return "cannot " + what + " " + path.string() + ": " + std::generic_category().message(errno);
}

} // namespace

LinuxLoginItem::LinuxLoginItem(const fs::path& config, std::string_view bundleID, fs::path program)
    : file_(config / "autostart" / (std::string(bundleID) + ".desktop")), program_(std::move(program)) {}

std::string LinuxLoginItem::registerApplication() {
    if (::access(program_.c_str(), X_OK) != 0)
        return failed("start", program_);
    if (!canBeWritten(program_))
        return "the path of the program holds characters that a desktop file cannot: " + program_.string();
    std::error_code error;
    fs::create_directories(file_.parent_path(), error);
    if (error)
        return "cannot make " + file_.parent_path().string() + ": " + error.message();
    return write("[Desktop Entry]\n"
                 "Type=Application\n"
                 "Name=Velto\n"
                 "Comment=AI voice agent for cellular calls\n"
                 // Where the program has gone, the entry starts nothing and says nothing.
                 "TryExec=" +
                 program_.string() + "\nExec=\"" + program_.string() +
                 "\"\n"
                 "Terminal=false\n");
}

std::string LinuxLoginItem::unregisterApplication() {
    if (::unlink(file_.c_str()) != 0 && errno != ENOENT && errno != ENOTDIR)
        return failed("remove", file_);
    return "";
}

std::string LinuxLoginItem::write(const std::string& content) const {
    auto temporary = file_;
    temporary += ".new";
    ::unlink(temporary.c_str());
    FileDescriptor made(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (made && writeAll(made.get(), content) && made.close() &&
        ::rename(temporary.c_str(), file_.c_str()) == 0)
        return "";
    auto problem = failed("write", file_);
    ::unlink(temporary.c_str());
    return problem;
}

} // namespace velto
