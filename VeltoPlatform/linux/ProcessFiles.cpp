#include "VeltoPlatform/linux/ProcessFiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

namespace velto::ProcessFiles {
namespace {

/// 0 for a process that is not there, or has none.
pid_t parent(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    const std::string status{std::istreambuf_iterator<char>(file), {}};
    // "pid (name) state parent …"; the name may hold anything.
    const auto name = status.rfind(") ");
    if (name == std::string::npos || status.size() < name + 4)
        return 0;
    pid_t value = 0;
    std::from_chars(status.data() + name + 4, status.data() + status.size(), value);
    return value;
}

} // namespace

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

bool descends(pid_t pid, pid_t ancestor) {
    // Bounded, in case numbers are given anew between two looks.
    for (int generations = 0; pid > 0 && generations < 64; ++generations) {
        if (pid == ancestor)
            return true;
        pid = parent(pid);
    }
    return false;
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
