// A sound server of its own with the backend on it, and an ear for what its devices carry.
#pragma once

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/PulseHardware.h"
#include "VeltoPlatform/linux/PulseServer.h"
#include "VeltoPlatform/linux/PulseTaps.h"
#include "VeltoPlatform/linux/PulseUnits.h"
#include "VeltoShared/audio/AudioCapture.h"
#include "rehearsal/PrivateSoundServer.h"
#include "tests/support/Eventually.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>
#include <pulse/introspect.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

namespace velto::test {

inline constexpr double amplitude = 12000;

/// Of what another thread changes.
class Monitor {
  public:
    template <class Change>
    auto change(Change&& apply) {
        std::lock_guard guard(mutex_);
        return apply();
    }
    template <class Condition>
    bool wait(Condition&& condition, std::chrono::milliseconds limit = kPatience) {
        return eventually([&] { return change(condition); }, limit);
    }

  private:
    std::mutex mutex_;
};

inline std::vector<std::int16_t> tone(double sampleRate, double seconds, double frequency = 1000) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(sampleRate * seconds));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<std::int16_t>(std::lround(
            amplitude * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / sampleRate)));
    return samples;
}

/// A capture that keeps the level of each 20 ms.
class Ear {
  public:
    Ear(const std::string& device, double sampleRate) : block_(static_cast<std::size_t>(sampleRate / 50)) {
        levels_.reserve(100'000);
        capture_ = AudioCapture::open(device, sampleRate, 2,
                                      [this](auto samples) { monitor_.change([&] { listen(samples); }); });
        if (capture_)
            capture_->start();
    }

    explicit operator bool() const { return capture_ != nullptr; }
    void forget() {
        monitor_.change([this] { levels_.clear(); });
    }
    bool hearsLoud(std::size_t blocks) {
        return monitor_.wait([this, blocks] { return loudBlocks() >= blocks; });
    }
    /// Waits for a second's worth of loud blocks and answers the median of their levels; 0 when none come.
    double loudness() {
        if (!hearsLoud(50))
            return 0;
        std::vector<double> all;
        monitor_.change([&] { std::ranges::copy_if(levels_, std::back_inserter(all), isLoud); });
        std::ranges::nth_element(all, all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2));
        return all[all.size() / 2];
    }
    /// Waits for half a second without a loud block.
    bool hearsSilence() {
        forget();
        return monitor_.wait([this] {
            return levels_.size() >= 25 && std::none_of(levels_.end() - 25, levels_.end(), isLoud);
        });
    }
    bool hearsAnything(std::chrono::milliseconds limit = kPatience) {
        forget();
        return monitor_.wait([this] { return !levels_.empty(); }, limit);
    }
    double seconds() {
        return monitor_.change([&] { return static_cast<double>(levels_.size()) / 50; });
    }

  private:
    static bool isLoud(double level) { return level > 1000; }
    std::size_t loudBlocks() const {
        return static_cast<std::size_t>(std::ranges::count_if(levels_, isLoud));
    }
    void listen(std::span<const std::int16_t> samples) {
        for (const double sample : samples) {
            energy_ += sample * sample;
            if (++filled_ < block_)
                continue;
            if (levels_.size() < levels_.capacity())
                levels_.push_back(std::sqrt(energy_ / static_cast<double>(block_)));
            energy_ = 0;
            filled_ = 0;
        }
    }

    Monitor monitor_;
    std::size_t block_;
    std::size_t filled_ = 0;
    double energy_ = 0;
    std::vector<double> levels_;
    std::unique_ptr<AudioCapture> capture_;
};

class SoundServer : public ::testing::Test {
  protected:
    virtual rehearsal::SoundServerKind kind() const { return rehearsal::SoundServerKind::pulseAudio; }
    void SetUp() override {
        auto started = rehearsal::PrivateSoundServer::start(folder_.path(), {.kind = kind()});
        ASSERT_TRUE(started) << started.error().description;
        server = std::move(*started);
        for (const auto& [name, value] : server->clientEnvironment())
            ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        connect();
    }
    void TearDown() override { installPlatform({}); }

    void connect() {
        const auto log = [this](const std::string& line) { logged.change([&] { lines.push_back(line); }); };
        connection = std::make_shared<PulseServer>(log, server->address());
        taps = std::make_shared<PulseTaps>(connection);
        hardware = std::make_unique<PulseHardware>(connection, taps);
        units = std::make_unique<PulseUnits>(connection, taps);
        Platform all;
        all.processTaps = taps.get();
        all.audioHardware = hardware.get();
        all.outputUnits = units.get();
        installPlatform(all);
    }
    /// Units that play keep the connection.
    void disconnect() {
        installPlatform({});
        units.reset();
        hardware.reset();
        taps.reset();
        connection.reset();
    }

    bool waitForLine(std::string_view part) {
        return logged.wait([&] {
            return std::ranges::any_of(
                lines, [&](const std::string& line) { return line.find(part) != std::string::npos; });
        });
    }
    /// Loads a module and answers its index.
    std::uint32_t load(const char* module, const char* arguments) {
        std::uint32_t index = PA_INVALID_INDEX;
        connection->ask([&](pa_context* context) {
            return std::vector<pa_operation*>{pa_context_load_module(
                context, module, arguments,
                [](pa_context*, std::uint32_t loaded, void* data) {
                    *static_cast<std::uint32_t*>(data) = loaded;
                },
                &index)};
        });
        return index;
    }
    void unload(std::uint32_t module) {
        connection->ask([&](pa_context* context) {
            return std::vector<pa_operation*>{pa_context_unload_module(
                context, module, [](pa_context*, int, void*) {}, nullptr)};
        });
    }

    TemporaryFolder folder_;
    std::unique_ptr<rehearsal::PrivateSoundServer> server;
    Monitor logged;
    std::vector<std::string> lines;
    std::shared_ptr<PulseServer> connection;
    std::shared_ptr<PulseTaps> taps;
    std::unique_ptr<PulseHardware> hardware;
    std::unique_ptr<PulseUnits> units;
};

/// Once with each kind of server.
class EachSoundServer : public SoundServer, public ::testing::WithParamInterface<rehearsal::SoundServerKind> {
  protected:
    rehearsal::SoundServerKind kind() const override { return GetParam(); }
};

inline const auto bothKinds =
    ::testing::Values(rehearsal::SoundServerKind::pulseAudio, rehearsal::SoundServerKind::pipeWire);

inline std::string nameOfKind(const ::testing::TestParamInfo<rehearsal::SoundServerKind>& info) {
    return info.param == rehearsal::SoundServerKind::pulseAudio ? "PulseAudio" : "PipeWire";
}

} // namespace velto::test
