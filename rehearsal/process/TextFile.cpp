// Whole files as texts.
#include "rehearsal/process/TextFile.h"

#include <fcntl.h>
#include <sys/stat.h>

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

FileDescriptor openPrivateFile(const std::filesystem::path& path) {
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    struct stat found {};
    if (file && ::fstat(file.get(), &found) == 0 && S_ISREG(found.st_mode) && ::fchmod(file.get(), 0600) != 0)
        file.close();
    return file;
}

bool writePrivateFile(const std::filesystem::path& path, std::string_view text) {
    auto file = openPrivateFile(path);
    return file && writeAll(file.get(), text) && file.close();
}

} // namespace velto::rehearsal
