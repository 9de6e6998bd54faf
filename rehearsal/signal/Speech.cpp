// Words as sound, by the speech synthesiser of the system.
#include "rehearsal/signal/Speech.h"

#include "rehearsal/signal/Resampler.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <string_view>
#include <vector>

namespace velto::rehearsal {
namespace {

constexpr const char* kWordsPerMinute = "190";

/// The program's standard output; none when it cannot be run or fails.
std::optional<std::string> outputOf(std::vector<std::string> arguments) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (auto& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    pid_t pid = 0;
    const int error = ::posix_spawnp(&pid, pointers[0], &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    std::string output;
    std::array<char, 65536> buffer{};
    for (ssize_t count = 0; error == 0 && (count = ::read(ends[0], buffer.data(), buffer.size())) > 0;)
        output.append(buffer.data(), static_cast<std::size_t>(count));
    ::close(ends[0]);
    int status = -1;
    if (error != 0 || ::waitpid(pid, &status, 0) != pid || status != 0)
        return {};
    return output;
}

std::uint32_t littleEndian(std::string_view bytes, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
    return value;
}

} // namespace

std::optional<Recording> parseWav(std::string_view bytes) {
    if (bytes.size() < 12 || bytes.substr(0, 4) != "RIFF" || bytes.substr(8, 4) != "WAVE")
        return {};
    Recording recording;
    for (auto rest = bytes.substr(12); rest.size() >= 8;) {
        const auto name = rest.substr(0, 4);
        const auto length = littleEndian(rest.substr(4), 4);
        rest.remove_prefix(8);
        // A program that writes to a pipe cannot go back to fill in the length.
        const auto body = rest.substr(0, length);
        if (name == "fmt ") {
            if (body.size() < 16 || littleEndian(body, 2) != 1 || littleEndian(body.substr(2), 2) != 1 ||
                littleEndian(body.substr(14), 2) != 16)
                return {};
            recording.rate = littleEndian(body.substr(4), 4);
        } else if (name == "data") {
            recording.samples.resize(body.size() / 2);
            std::memcpy(recording.samples.data(), body.data(), recording.samples.size() * 2);
            break;
        }
        rest.remove_prefix(std::min<std::size_t>(rest.size(), length + length % 2));
    }
    if (recording.rate <= 0 || recording.samples.empty())
        return {};
    return recording;
}

std::optional<Samples> speech(const std::string& text, const std::string& voice, double rate) {
    const auto output = outputOf({"espeak-ng", "-v", voice, "-s", kWordsPerMinute, "--stdout", "--", text});
    const auto recording = output ? parseWav(*output) : std::nullopt;
    if (!recording)
        return {};
    return resampled(recording->samples, recording->rate, rate);
}

} // namespace velto::rehearsal
