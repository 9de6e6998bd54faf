#include "VeltoPlatform/linux/ProcessFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>

namespace velto::ProcessFiles {

std::string executable(pid_t pid) {
    std::error_code error;
    auto name =
        std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error).filename().string();
    // The mark of a program whose file was replaced while it runs.
    constexpr std::string_view kReplaced = " (deleted)";
    if (name.ends_with(kReplaced))
        name.resize(name.size() - kReplaced.size());
    return name;
}

bool exists(pid_t pid) {
    return ::access(("/proc/" + std::to_string(pid)).c_str(), F_OK) == 0;
}

std::vector<pid_t> own() {
    std::vector<pid_t> pids;
    std::error_code error;
    std::filesystem::directory_iterator entries("/proc", error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        const auto name = entries->path().filename().string();
        pid_t pid = 0;
        const auto [end, bad] = std::from_chars(name.data(), name.data() + name.size(), pid);
        struct stat status {};
        if (bad == std::errc() && end == name.data() + name.size() &&
            ::stat(entries->path().c_str(), &status) == 0 && status.st_uid == ::getuid())
            pids.push_back(pid);
    }
    std::sort(pids.begin(), pids.end());
    return pids;
}

} // namespace velto::ProcessFiles
