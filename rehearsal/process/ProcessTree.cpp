#include "rehearsal/process/ProcessTree.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace velto::rehearsal {
namespace {

/// The fourth field of /proc/PID/stat; what precedes it is a name in parentheses that may hold anything.
pid_t parentOf(const std::filesystem::path& process) {
    std::ifstream file(process / "stat");
    std::string text;
    std::getline(file, text);
    const auto name = text.rfind(')');
    if (name == std::string::npos || name + 4 >= text.size())
        return 0;
    return static_cast<pid_t>(std::strtol(text.c_str() + name + 4, nullptr, 10));
}

} // namespace

std::vector<pid_t> childrenOf(pid_t parent) {
    std::vector<pid_t> children;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const auto name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") == std::string::npos && parentOf(entry.path()) == parent)
            children.push_back(static_cast<pid_t>(std::strtol(name.c_str(), nullptr, 10)));
    }
    return children;
}

std::vector<pid_t> descendantsOf(pid_t ancestor) {
    auto all = childrenOf(ancestor);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const auto more = childrenOf(all[i]);
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

} // namespace velto::rehearsal
