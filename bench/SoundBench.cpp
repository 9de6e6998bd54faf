// What sound costs: the callbacks beside memcpy, the way feed to mic, and questions to the server.
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/PulseHardware.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseUnits.h"
#include "VeltoShared/audio/AudioCapture.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioPlayback.h"
#include "VeltoShared/audio/CaptureBox.h"
#include "bench/SoundPaths.h"
#include "rehearsal/PrivateSoundServer.h"
#include "tests/support/TemporaryFolder.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <thread>
#include <vector>

namespace velto {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr std::uint32_t frames = 240; // 10 ms at 24 kHz
constexpr int rounds = 200'000;

/// Gives every render the same samples.
class Source final : public OutputUnit {
  public:
    AudioStatus enableIO(UnitScope, std::uint32_t, bool) override { return 0; }
    AudioStatus setCurrentDevice(AudioObjectID) override { return 0; }
    AudioStatus setStreamFormat(UnitScope, std::uint32_t, const StreamFormat&) override { return 0; }
    AudioStatus setInputCallback(InputCallback, void*) override { return 0; }
    AudioStatus setRenderCallback(RenderCallback, void*) override { return 0; }
    AudioStatus initialize() override { return 0; }
    AudioStatus start() override { return 0; }
    AudioStatus stop() override { return 0; }
    AudioStatus uninitialize() override { return 0; }
    AudioStatus render(const RenderContext&, std::uint32_t count, AudioBufferList buffers) override {
        std::memcpy(buffers[0].data, samples_.data(), std::size_t{count} * 4);
        return 0;
    }

  private:
    std::vector<std::int16_t> samples_ = std::vector<std::int16_t>(std::size_t{frames} * 2, 1234);
};

/// ns a frame.
template <class Work>
double measured(Work&& work) {
    double best = 1e9;
    for (int attempt = 0; attempt < 5; ++attempt) {
        const auto began = SteadyClock::now();
        for (int i = 0; i < rounds; ++i)
            work(i);
        const std::chrono::duration<double, std::nano> passed = SteadyClock::now() - began;
        best = std::min(best, passed.count() / rounds / frames);
    }
    return best;
}

void callbacks() {
    std::vector<std::int16_t> from(std::size_t{frames} * 2, 7);
    std::vector<std::int16_t> to(from.size());
    const auto copy = measured([&](int) {
        std::memcpy(to.data(), from.data(), from.size() * 2);
        asm volatile("" : : "r"(to.data()) : "memory");
    });
    PlaybackBox playback(2);
    const auto render = measured([&](int) {
        // The writer's part: a chunk in, so that the queue neither grows nor runs dry.
        playback.ring.insert(playback.ring.end(), from.begin(), from.begin() + frames);
        AudioBuffer buffer{2, frames * 4, to.data()};
        PlaybackBox::rendered(&playback, frames, {&buffer, 1});
    });
    Source source;
    CaptureBox capture;
    capture.prepare(2);
    capture.unit = &source;
    capture.onFrames = [](auto samples) { asm volatile("" : : "r"(samples.data()) : "memory"); };
    const auto captured = measured([&](int) { CaptureBox::captured(&capture, {}, frames); });
    std::printf("memcpy of stereo frames  %7.3f ns a frame\n", copy);
    std::printf("render callback + write  %7.3f ns a frame  %5.1f x memcpy\n", render, render / copy);
    std::printf("capture callback         %7.3f ns a frame  %5.1f x memcpy\n", captured, captured / copy);
}

double processorSeconds() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// From `write` of a click to the capture callback that brings it.
void latency() {
    std::atomic<SteadyClock::rep> heardAt{0};
    auto capture = AudioCapture::open("VeltoVoice 2ch Mic", 16000, 2, [&](auto samples) {
        if (std::ranges::any_of(samples, [](std::int16_t sample) { return sample > 3000; }) && heardAt == 0)
            heardAt = SteadyClock::now().time_since_epoch().count();
    });
    auto playback = AudioPlayback::open("VeltoVoice 2ch Feed", 24000, 2);
    if (!capture || !playback)
        return;
    capture->start();
    playback->start();
    std::this_thread::sleep_for(500ms);
    const auto processor = processorSeconds();
    const auto began = SteadyClock::now();
    std::vector<double> all;
    const std::vector<std::int16_t> click(240, 12000);
    for (int i = 0; i < 60; ++i) {
        heardAt = 0;
        const auto written = SteadyClock::now();
        playback->write(click);
        while (heardAt == 0 && SteadyClock::now() - written < 1s)
            std::this_thread::sleep_for(1ms);
        if (heardAt != 0)
            all.push_back(static_cast<double>(heardAt - written.time_since_epoch().count()) * 1e-6);
        std::this_thread::sleep_for(50ms + std::chrono::microseconds(i * 331));
    }
    const std::chrono::duration<double> passed = SteadyClock::now() - began;
    std::ranges::sort(all);
    if (all.empty())
        return;
    std::printf(
        "feed to mic              median %.1f ms, worst %.1f ms of %zu clicks; client %.1f %% of a core\n",
        all[all.size() / 2], all.back(), all.size(), 100 * (processorSeconds() - processor) / passed.count());
}

void questions() {
    std::vector<double> all;
    for (int i = 0; i < 100; ++i) {
        const auto began = SteadyClock::now();
        AudioDevices::find("VeltoLoop 2ch");
        const std::chrono::duration<double, std::milli> passed = SteadyClock::now() - began;
        all.push_back(passed.count());
    }
    std::ranges::sort(all);
    std::printf("AudioDevices::find       median %.2f ms, worst %.2f ms\n", all[50], all.back());
}

/// From the new server's first sign of life to sound out of a unit that was open when the old one died.
void comeBack(rehearsal::PrivateSoundServer& server) {
    std::atomic<bool> heard = false;
    auto capture = AudioCapture::open("VeltoLoop 2ch", 16000, 2, [&](auto) { heard = true; });
    if (!capture)
        return;
    capture->start();
    double worst = 0;
    for (int i = 0; i < 5; ++i) {
        server.kill();
        std::this_thread::sleep_for(300ms + std::chrono::milliseconds(70 * i));
        if (!server.restart())
            return;
        const auto back = SteadyClock::now();
        heard = false;
        while (!heard && SteadyClock::now() - back < 10s)
            std::this_thread::sleep_for(1ms);
        const std::chrono::duration<double, std::milli> passed = SteadyClock::now() - back;
        worst = std::max(worst, passed.count());
    }
    std::printf("server back to sound     worst %.0f ms of 5 kills\n", worst);
}

} // namespace
} // namespace velto

namespace {

bool measureOn(velto::rehearsal::SoundServerKind kind, const std::filesystem::path& folder) {
    using namespace velto;
    auto server = rehearsal::PrivateSoundServer::start(folder, {.kind = kind});
    if (!server) {
        std::fprintf(stderr, "%s\n", server.error().description.c_str());
        return false;
    }
    for (const auto& [name, value] : (*server)->clientEnvironment())
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    auto connection = std::make_shared<PulseServer>();
    auto taps = std::make_shared<PulseTaps>(connection);
    PulseHardware hardware(connection, taps);
    PulseUnits units(connection, taps);
    Platform all;
    all.audioHardware = &hardware;
    all.outputUnits = &units;
    all.processTaps = taps.get();
    installPlatform(all);
    questions();
    latency();
    bench::printPaths(*connection, *taps);
    bench::printProbes();
    comeBack(**server);
    installPlatform({});
    return true;
}

} // namespace

int main() {
    using velto::rehearsal::SoundServerKind;
    velto::callbacks();
    bool measured = true;
    for (const auto& [title, kind] : {std::pair{"PulseAudio", SoundServerKind::pulseAudio},
                                      std::pair{"PipeWire", SoundServerKind::pipeWire}}) {
        std::printf("\n%s\n", title);
        measured = measureOn(kind, velto::test::TemporaryFolder().path()) && measured;
    }
    return measured ? 0 : 1;
}
