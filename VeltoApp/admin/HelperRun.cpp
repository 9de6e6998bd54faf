#include "VeltoApp/admin/HelperRun.h"

#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoPlatform/Spawn.h"
#include "VeltoShared/core/Utf8.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace velto::Helper {
namespace {

namespace fs = std::filesystem;

constexpr std::int32_t kNotStarted = -1;

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;

    std::error_code open() {
        std::array<int, 2> ends{-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            return {errno, std::system_category()};
        reading = FileDescriptor(ends[0]);
        writing = FileDescriptor(ends[1]);
        return {};
    }
};

std::vector<std::string> overlaid(const std::map<std::string, std::string>& overlay) {
    std::vector<std::string> all;
    for (char** variable = environ; variable && *variable; ++variable) {
        const std::string_view pair(*variable);
        if (!overlay.contains(std::string(pair.substr(0, pair.find('=')))))
            all.emplace_back(pair);
    }
    for (const auto& [name, value] : overlay)
        all.emplace_back(name).append("=").append(value);
    return all;
}

bool holdsNul(const std::vector<std::string>& texts) {
    return std::any_of(texts.begin(), texts.end(),
                       [](const std::string& text) { return text.find('\0') != text.npos; });
}

/// False at its end.
bool readSome(int fd, std::string& text) {
    std::array<char, 65'536> chunk{};
    const auto count = ::read(fd, chunk.data(), chunk.size());
    if (count > 0)
        text.append(chunk.data(), static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

/// Both at once: a program that fills the one pipe may be waiting for it while we wait for the other.
void readBoth(const FileDescriptor& output, const FileDescriptor& errors, Result& result) {
    std::array<pollfd, 2> ends{{{output.get(), POLLIN, 0}, {errors.get(), POLLIN, 0}}};
    const std::array<std::string*, 2> texts{&result.stdout, &result.stderr};
    while (ends[0].fd >= 0 || ends[1].fd >= 0) {
        if (::poll(ends.data(), ends.size(), -1) < 0) {
            if (errno != EINTR)
                return;
            continue;
        }
        for (std::size_t i = 0; i < ends.size(); ++i)
            if (ends.at(i).revents != 0 && !readSome(ends.at(i).fd, *texts.at(i)))
                ends.at(i).fd = -1;
    }
}

Result notStarted(const std::string& what, const std::string& why) {
    Result result;
    result.status = kNotStarted;
    result.stderr = "cannot run " + what + ": " + why;
    return result;
}

} // namespace

Result run(const std::string& executable, const std::vector<std::string>& arguments,
           const std::optional<fs::path>& cwd, const std::optional<std::map<std::string, std::string>>& env) {
    std::error_code error;
    std::error_code ignored;
    SpawnRequest request;
    // From here, not from the folder that the program runs in.
    request.program = executable.empty() ? "" : fs::absolute(executable, error).string();
    request.arguments = arguments;
    request.environment = overlaid(env.value_or(std::map<std::string, std::string>()));
    request.folder = cwd ? cwd->string() : "";
    if (holdsNul({request.program, request.folder}) || holdsNul(arguments) || holdsNul(request.environment))
        return notStarted(executable.substr(0, executable.find('\0')), "a text holds a NUL");
    if (cwd && !fs::is_directory(*cwd, ignored))
        return notStarted(executable, "no such working folder: " + request.folder);
    Pipe output;
    Pipe errors;
    if (!error)
        error = output.open();
    if (!error)
        error = errors.open();
    request.output = output.writing.get();
    request.errors = errors.writing.get();
    pid_t child = 0;
    if (!error)
        error = spawn(request, child);
    if (error)
        return notStarted(executable, error.message());
    output.writing.close();
    errors.writing.close();

    Result result;
    readBoth(output.reading, errors.reading, result);
    result.status = waitForExit(child);
    for (auto* text : {&result.stdout, &result.stderr})
        if (!isValidUtf8(*text))
            text->clear();
    return result;
}

} // namespace velto::Helper
