#include "bench/SoundPaths.h"

#include "VeltoShared/audio/AudioCapture.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/audio/AudioRouting.h"
#include "VeltoShared/audio/LoopbackProbe.h"
#include "rehearsal/callee/PhoneAudio.h"

#include <pulse/introspect.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace velto::bench {
namespace {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

constexpr const char* speakerEar = "At the speaker";
constexpr int impulses = 60;

/// A phone app in this process: plays to the default output, at its server's request.
using Phone = rehearsal::PhoneAudio;

/// From the handing over of impulses to the capture callbacks that bring them, ms.
std::vector<double> delays(const std::string& output, const std::string& input) {
    if (const auto device = AudioDevices::find(output))
        AudioRouting::setDefaultOutput(device->id);
    Phone phone({[](auto, auto) {}, [](auto) {}});
    std::atomic<SteadyClock::rep> heardAt{0};
    const auto capture = AudioCapture::open(input, 16000, 2, [&](std::span<const std::int16_t> samples) {
        if (heardAt == 0 && std::ranges::any_of(samples, [](std::int16_t one) { return one > 3000; }))
            heardAt = SteadyClock::now().time_since_epoch().count();
    });
    std::vector<double> all;
    if (!capture)
        return all;
    capture->start();
    std::this_thread::sleep_for(1s);
    for (int i = 0; i < impulses; ++i) {
        heardAt = 0;
        const auto sent = SteadyClock::now();
        phone.say(rehearsal::Samples(24, 12000)); // 1 ms
        while (heardAt == 0 && SteadyClock::now() - sent < 1s)
            std::this_thread::sleep_for(1ms);
        if (heardAt != 0)
            all.push_back(static_cast<double>(heardAt - sent.time_since_epoch().count()) * 1e-6);
        std::this_thread::sleep_for(50ms + std::chrono::microseconds(i * 331));
    }
    std::ranges::sort(all);
    return all;
}

/// The median; nothing when too little was heard.
std::optional<double> print(const char* title, const std::vector<double>& all,
                            std::optional<double> shortest) {
    if (all.size() < impulses / 2) {
        std::printf("%-24s %zu of %d impulses heard\n", title, all.size(), impulses);
        return std::nullopt;
    }
    const auto median = all[all.size() / 2];
    std::printf("%-24s median %5.1f ms, worst %5.1f ms of %zu impulses", title, median, all.back(),
                all.size());
    if (shortest)
        std::printf("; adds %5.1f ms", median - *shortest);
    std::printf("\n");
    return median;
}

void printTap(PulseTaps& taps, const char* title, TapMute mute, std::optional<double> shortest) {
    const auto tap = taps.createProcessTap(
        {"VeltoTap", {static_cast<AudioObjectID>(::getpid())}, false, true, false, true, mute});
    const auto device = taps.createAggregateDevice(
        {"VeltoTap", "velto.tap.bench", true, false, {taps.tapUID(tap.value_or(0)).value_or("")}});
    print(title, delays("Speaker", "VeltoTap"), shortest);
    taps.destroyAggregateDevice(device.value_or(0));
    taps.destroyProcessTap(tap.value_or(0));
}

} // namespace

void printPaths(PulseServer& server, PulseTaps& taps) {
    // An input that hears what the speaker plays: the way without loop or tap.
    server.ask([](pa_context* context) {
        return std::vector<pa_operation*>{pa_context_load_module(
            context, "module-remap-source",
            "source_name=speaker_ear master=speaker.monitor "
            "source_properties='device.description=\"At the speaker\"'",
            [](pa_context*, std::uint32_t, void*) {}, nullptr)};
    });
    const auto shortest = print("heard at the speaker", delays("Speaker", speakerEar), {});
    print("heard through the loop", delays("VeltoLoop 2ch", "VeltoLoop 2ch"), shortest);
    printTap(taps, "heard by a tap", TapMute::unmuted, shortest);
    printTap(taps, "heard by a muting tap", TapMute::mutedWhenTapped, shortest);
}

void printProbes() {
    const auto probe = [](const char* out, const char* in, double rate) {
        const auto result = LoopbackProbe::run(out, in, 2, rate);
        std::printf("probe %-18s rms %lld (7590 is whole: %+.2f %%), peak %lld, %lld frames\n", out,
                    static_cast<long long>(result.capturedRMS),
                    100 * (static_cast<double>(result.capturedRMS) / 7590 - 1),
                    static_cast<long long>(result.capturedPeak),
                    static_cast<long long>(result.capturedFrames));
    };
    probe("VeltoVoice 2ch Feed", "VeltoVoice 2ch Mic", 24000);
    probe("VeltoLoop 2ch", "VeltoLoop 2ch", 16000);
}

} // namespace velto::bench
