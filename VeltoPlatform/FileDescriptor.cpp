#include "VeltoPlatform/FileDescriptor.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace velto {

bool FileDescriptor::close() {
    const int fd = std::exchange(fd_, -1);
    return fd < 0 || ::close(fd) == 0;
}

std::optional<std::string> readAll(int fd) {
    std::string bytes;
    std::array<char, 65'536> chunk{};
    for (;;) {
        const auto count = ::read(fd, chunk.data(), chunk.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return bytes;
        bytes.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace velto
