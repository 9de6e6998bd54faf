// Reading ten minutes of stereo sound at another rate: against the bare formula in memory, and against sox.
#include "VeltoShared/audio/Wav.h"
#include "tests/support/TemporaryFolder.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace velto {
namespace {

constexpr unsigned kRate = 48'000;
constexpr double kTarget = 44'100;
constexpr std::size_t kFrames = std::size_t{600} * kRate;
constexpr int kRounds = 7;

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

template <class Work>
double milliseconds(Work work) {
    std::vector<double> rounds;
    for (int i = 0; i < kRounds; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        rounds.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count());
    }
    return median(rounds);
}

std::vector<std::int16_t> stereo() {
    std::vector<std::int16_t> samples(2 * kFrames);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(9000 * std::sin(static_cast<double>(i / 2) * 0.05) +
                                               static_cast<double>(i % 97));
    return samples;
}

void write(const std::filesystem::path& path, const std::vector<std::int16_t>& samples) {
    // The header for twice as many frames of one channel, with two channels in its place.
    auto header = WavFormat::header(2 * kFrames, kRate);
    header[22] = std::byte{2};
    header[32] = std::byte{4};
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(header.data()), header.size());
    file.write(reinterpret_cast<const char*>(samples.data()),
               static_cast<std::streamsize>(samples.size() * 2));
}

/// The formula and nothing else: from mono samples in memory into memory that is there.
void bareLoop(const std::vector<std::int16_t>& from, std::vector<std::int16_t>& to) {
    const double ratio = kTarget / kRate;
    const std::size_t last = from.size() - 1;
    for (std::size_t i = 0; i < to.size(); ++i) {
        const double position = static_cast<double>(i) / ratio;
        const auto before = static_cast<std::size_t>(position);
        const auto after = std::min(before + 1, last);
        const double share = position - static_cast<double>(before);
        to[i] = static_cast<std::int16_t>(
            std::clamp((1 - share) * from[before] + share * from[after], -32768.0, 32767.0));
    }
    asm volatile("" ::"r"(to.data()) : "memory");
}

/// What a process of its own needs at most for the work, MB beyond what it needs for nothing.
template <class Work>
double peakMegabytes(Work work) {
    const auto peak = [](auto&& inside) {
        const pid_t child = ::fork();
        if (child == 0) {
            inside();
            ::_exit(0);
        }
        int status = 0;
        rusage usage{};
        ::wait4(child, &status, 0, &usage);
        return static_cast<double>(usage.ru_maxrss) / 1024;
    };
    const double nothing = peak([] {});
    return peak(work) - nothing;
}

} // namespace
} // namespace velto

int main() {
    using namespace velto;
    const test::TemporaryFolder folder;
    const auto path = folder.path() / "sound.wav";
    write(path, stereo());
    const double fileMegabytes = static_cast<double>(std::filesystem::file_size(path)) / (1 << 20);
    const double memory = peakMegabytes([&] { Wav::readMono16(path, kTarget); });
    std::printf("memory: %.0f MB for a file of %.0f MB: %.2f of it (aim 3)\n", memory, fileMegabytes,
                memory / fileMegabytes);

    const double reading = milliseconds([&] { Wav::readMono16(path, kTarget); });
    const auto mono = Wav::readMono16(path)->samples;
    std::vector<std::int16_t> out(
        static_cast<std::size_t>(kTarget / kRate * static_cast<double>(mono.size())));
    const double bare = milliseconds([&] { bareLoop(mono, out); });
    std::printf("10 min of stereo, 48 000 to 44 100 Hz: %.0f ms, the bare loop %.0f ms: ratio %.2f (aim 2)\n",
                reading, bare, reading / bare);

    const std::string sox = "sox " + path.string() + " -c 1 -b 16 " + (folder.path() / "out.wav").string() +
                            " rate -l 44100 2>/dev/null";
    if (std::system("sox --version >/dev/null 2>&1") == 0) {
        const double theirs = milliseconds([&] { static_cast<void>(std::system(sox.c_str())); });
        std::printf("sox \"rate -l\", file to file: %.0f ms: our reading takes %.2f of it (aim below 1)\n",
                    theirs, reading / theirs);
    } else {
        std::printf("sox is not here: skipped\n");
    }
}
