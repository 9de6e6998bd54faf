// Printing with plain writes, whose errors count.
#include "veltoctl/Output.h"

#include "VeltoShared/core/Utf8.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace velto::ctl {
namespace {

bool isControl(std::string_view text, std::size_t i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == 0xC2 && i + 1 < text.size()) // U+0080 to U+009F
        return static_cast<unsigned char>(text[i + 1]) < 0xA0;
    return (byte < 0x20 && byte != '\n' && byte != '\t') || byte == 0x7F;
}

/// Waits for a slow reader also where another program that has the stream made it non-blocking.
bool writeWaiting(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(fd, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            pollfd room{fd, POLLOUT, 0};
            ::poll(&room, 1, -1);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

std::string printable(std::string_view text) {
    const auto valid = repairedUtf8(text);
    std::string shown;
    shown.reserve(valid.size());
    for (std::size_t i = 0; i < valid.size(); ++i) {
        if (!isControl(valid, i)) {
            shown += valid[i];
            continue;
        }
        shown += "\xEF\xBF\xBD";
        if (static_cast<unsigned char>(valid[i]) == 0xC2)
            ++i;
    }
    return shown;
}

bool Output::line(std::string_view text) {
    if (error_ == 0)
        error_ = writeWaiting(STDOUT_FILENO, std::string(text) + '\n') ? 0 : errno;
    return error_ == 0;
}

void Output::message(std::string_view text) {
    writeWaiting(STDERR_FILENO, "veltoctl: " + std::string(text) + '\n');
}

void Output::remark(std::string_view text) const {
    if (!quiet)
        message(text);
}

bool Output::isRead() const {
    pollfd out{STDOUT_FILENO, 0, 0};
    return error_ == 0 && (::poll(&out, 1, 0) <= 0 || (out.revents & (POLLERR | POLLHUP)) == 0);
}

bool Output::isColoured() {
    const auto variable = [](const char* name) -> std::string_view {
        const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing sets it
        return value ? value : "";
    };
    return ::isatty(STDOUT_FILENO) != 0 && variable("NO_COLOR").empty() && !variable("TERM").empty() &&
           variable("TERM") != "dumb";
}

int Output::exitStatus(int planned) const {
    if (error_ == 0 || error_ == EPIPE)
        return planned;
    message("standard output: " + std::string(::strerrordesc_np(error_)));
    return kFailed;
}

} // namespace velto::ctl
