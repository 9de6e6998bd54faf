// Whole files as texts.
#include "rehearsal/process/TextFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iterator>

namespace velto::rehearsal {

std::optional<std::string> readFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open())
        return {};
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (file.bad())
        return {};
    return text;
}

bool writePrivateFile(const std::filesystem::path& path, std::string_view text) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0)
        return false;
    bool whole = true;
    while (whole && !text.empty()) {
        const auto count = ::write(file, text.data(), text.size());
        whole = count >= 0;
        text.remove_prefix(whole ? static_cast<std::size_t>(count) : 0);
    }
    return ::close(file) == 0 && whole;
}

} // namespace velto::rehearsal
