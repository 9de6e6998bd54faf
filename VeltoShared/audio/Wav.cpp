// Straight from the file's bytes to the result, without a copy of the mono sound between them.
#include "VeltoShared/audio/Wav.h"

#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoShared/audio/WavFormat.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <new>

namespace velto::Wav {
namespace {

/// Samples of a result: a header that lies about its rate must not take the computer's memory.
constexpr double kLongest = 1U << 31;

struct Bytes {
    std::unique_ptr<std::byte[]> memory;
    std::size_t size = 0;
    std::span<const std::byte> span() const { return {memory.get(), size}; }
};

/// As many bytes as the file has, or had: it may shrink while it is read.
std::optional<Bytes> readFile(const std::filesystem::path& path) {
    // A pipe without a writer must not hold up anybody.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    const auto size = static_cast<std::size_t>(status.st_size);
    Bytes bytes{std::make_unique_for_overwrite<std::byte[]>(size), 0};
    while (bytes.size < size) {
        const auto got = ::read(file.get(), bytes.memory.get() + bytes.size, size - bytes.size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return std::nullopt;
        if (got == 0)
            break;
        bytes.size += static_cast<std::size_t>(got);
    }
    return bytes;
}

std::vector<std::int16_t> mono(const WavFormat::Sound& sound) {
    std::vector<std::int16_t> samples(sound.frames());
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = sound.mono(i);
    return samples;
}

std::vector<std::int16_t> converted(const WavFormat::Sound& sound, double ratio) {
    const std::size_t frames = sound.frames();
    std::vector<std::int16_t> samples(static_cast<std::size_t>(ratio * static_cast<double>(frames)));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double position = static_cast<double>(i) / ratio;
        const auto before = std::min(static_cast<std::size_t>(position), frames - 1);
        const auto after = std::min(before + 1, frames - 1);
        const double share = position - static_cast<double>(before);
        const double value = (1 - share) * sound.mono(before) + share * sound.mono(after);
        samples[i] = static_cast<std::int16_t>(std::clamp(value, -32768.0, 32767.0));
    }
    return samples;
}

} // namespace

std::optional<Sound> readMono16(const std::filesystem::path& url, std::optional<double> targetRate) {
    try {
        const auto bytes = readFile(url);
        const auto sound = bytes ? WavFormat::find(bytes->span()) : std::nullopt;
        if (!sound)
            return std::nullopt;
        const double rate = sound->rate;
        if (!targetRate || *targetRate == rate || sound->frames() == 0)
            return Sound{rate, mono(*sound)};
        if (!(*targetRate > 0) || rate == 0)
            return std::nullopt;
        const double ratio = *targetRate / rate;
        if (ratio * static_cast<double>(sound->frames()) >= kLongest)
            return std::nullopt;
        return Sound{*targetRate, converted(*sound, ratio)};
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

} // namespace velto::Wav
