// Whole files as texts.
#include "rehearsal/process/TextFile.h"

#include "VeltoPlatform/FileDescriptor.h"

#include <fcntl.h>

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
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    return file && writeAll(file.get(), text) && file.close();
}

} // namespace velto::rehearsal
