// WAV files, ours and everybody else's: what is read from them, and what is refused.
#include "VeltoShared/audio/Wav.h"
#include "VeltoShared/audio/FileBytes.h"
#include "VeltoShared/audio/MonoSound.h"
#include "VeltoShared/audio/WavFormat.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>

#include <sys/stat.h>

namespace velto {
namespace {

using Samples = std::vector<std::int16_t>;

std::string little(std::uint64_t value, std::size_t bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes; ++i)
        text += static_cast<char>(value >> (8 * i));
    return text;
}

std::string chunk(const std::string& name, const std::string& body, std::optional<std::uint32_t> size = {}) {
    return name + little(size.value_or(static_cast<std::uint32_t>(body.size())), 4) + body +
           std::string(body.size() % 2, '\0');
}

std::string format(unsigned channels, unsigned rate, unsigned kind = 1, unsigned bits = 16) {
    return chunk("fmt ",
                 little(kind, 2) + little(channels, 2) + little(rate, 4) + little(0, 6) + little(bits, 2));
}

std::string pcm(const Samples& samples) {
    std::string bytes;
    for (const auto sample : samples)
        bytes += little(static_cast<std::uint16_t>(sample), 2);
    return bytes;
}

std::string riff(const std::string& chunks) {
    // Long enough for any reader: files of 44 bytes hold no sound.
    return "RIFF" + little(chunks.size() + 4, 4) + "WAVE" + chunks + chunk("LIST", std::string(40, 'x'));
}

std::string wav(unsigned rate, const Samples& samples) {
    return riff(format(1, rate) + chunk("data", pcm(samples)));
}

class WavTest : public testing::Test {
  protected:
    std::filesystem::path file(const std::string& bytes) {
        const auto path = folder_.path() / "sound.wav";
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path;
    }
    std::optional<Wav::Sound> read(const std::string& bytes, std::optional<double> rate = {}) {
        return Wav::readMono16(file(bytes), rate);
    }
    test::TemporaryFolder folder_;
};

TEST_F(WavTest, WhatARecorderWritesIsRead) {
    const auto header = WavFormat::header(2, 16'000.9);
    const std::string bytes(reinterpret_cast<const char*>(header.data()), header.size());
    EXPECT_EQ(bytes, "RIFF" + little(40, 4) + "WAVE" + "fmt " + little(16, 4) + little(1, 2) + little(1, 2) +
                         little(16'000, 4) + little(32'000, 4) + little(2, 2) + little(16, 2) + "data" +
                         little(4, 4));
    EXPECT_FALSE(read(bytes)) << "44 bytes hold nothing";
    const auto sound = read(bytes + pcm({7, -32768}));
    ASSERT_TRUE(sound);
    EXPECT_EQ(sound->rate, 16'000);
    EXPECT_EQ(sound->samples, (Samples{7, -32768}));
}

TEST_F(WavTest, ChannelsAreAveragedTowardsZero) {
    EXPECT_EQ(
        read(riff(format(2, 8000) + chunk("data", pcm({100, -101, -32768, -32768, 32767, 32767, 3, -4, 9}))))
            ->samples,
        (Samples{0, -32768, 32767, 0}))
        << "the half frame is left out";
    EXPECT_EQ(read(riff(format(0, 8000) + chunk("data", pcm({5, 6}))))->samples, (Samples{5, 6}));
    Samples wide(65535, -32768);
    EXPECT_EQ(read(riff(format(65535, 8000) + chunk("data", pcm(wide))))->samples, Samples{-32768});
}

TEST_F(WavTest, AnyPieceIsAsInTheWhole) {
    Samples sound(30'000);
    for (std::size_t i = 0; i < sound.size(); ++i)
        sound[i] = static_cast<std::int16_t>(i * i);
    FileBytes bytes(file(wav(16'000, sound)));
    for (const double rate : {16'000, 44'100, 8000}) {
        auto mono = MonoSound::of(*WavFormat::find(bytes), rate);
        const auto whole = Wav::toMono16(*WavFormat::find(bytes), rate)->samples;
        for (const std::size_t first : {std::size_t{9000}, whole.size() - 5000, std::size_t{0}}) {
            Samples piece(5000);
            ASSERT_TRUE(mono->read(first, piece));
            EXPECT_TRUE(std::equal(piece.begin(), piece.end(), whole.begin() + static_cast<long>(first)));
        }
        EXPECT_FALSE(mono->read(whole.size(), std::span(sound).first(1))) << rate;
    }
}

TEST_F(WavTest, ChunksAreWalkedToTheEnd) {
    const auto data = chunk("data", pcm({1, 2}));
    const Samples read12{1, 2};
    EXPECT_EQ(read(riff(chunk("odd ", "xyz") + format(1, 8000) + data))->samples, read12);
    EXPECT_EQ(read(riff(data + format(1, 8000)))->rate, 8000) << "in any order";
    EXPECT_EQ(read(riff(data))->rate, 16'000) << "without a format";
    EXPECT_EQ(read(riff(format(1, 1) + format(1, 8000) + chunk("data", pcm({9})) + data))->samples, read12)
        << "the later of two";
    EXPECT_EQ(read(riff(data + chunk("data", "")))->samples, Samples{});
    EXPECT_EQ(read(riff(data) + format(1, 8000, 3).substr(0, 20))->samples, read12)
        << "a format that is cut short";
    for (const std::uint32_t lie : {5u, 0x7FFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFEu}) {
        const auto sound =
            read("RIFF" + little(0, 4) + "WAVE" + format(1, 8000) + chunk("data", pcm({1, 2}), lie));
        ASSERT_TRUE(sound) << lie;
        EXPECT_EQ(sound->samples, read12) << lie;
    }
    EXPECT_EQ(read(riff(format(1, 8000) + chunk("data", pcm({1, 2}), 0)))->samples, Samples{}) << "it says 0";
}

TEST_F(WavTest, WhatIsNoSoundOfOursIsRefused) {
    const auto data = chunk("data", pcm({1, 2}));
    for (const auto& [kind, bits] :
         {std::pair{1u, 8u}, {3u, 32u}, {3u, 16u}, {0xFFFEu, 16u}, {1u, 24u}, {0u, 16u}})
        EXPECT_FALSE(read(riff(format(1, 8000, kind, bits) + data))) << kind << " " << bits;
    EXPECT_FALSE(read(riff(format(1, 8000)))) << "no data";
    const auto good = riff(format(1, 8000) + data);
    EXPECT_TRUE(read(good));
    for (const std::size_t at : {0u, 3u, 8u, 11u}) {
        auto broken = good;
        broken[at] ^= 0x20;
        EXPECT_FALSE(read(broken)) << at;
    }
    EXPECT_EQ(read(good.substr(0, 47))->samples, Samples{1}) << "cut in the second sample";
    EXPECT_FALSE(Wav::readMono16(folder_.path()));
    EXPECT_FALSE(Wav::readMono16(folder_.path() / "missing.wav"));
    const auto pipe = folder_.path() / "pipe.wav";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(Wav::readMono16(pipe)) << "and nobody waits for a writer";
}

TEST_F(WavTest, RatesAreConvertedByInterpolation) {
    const Samples ramp{0, 100, 200, -300, 400, 500};
    EXPECT_EQ(read(wav(16'000, ramp), 8000)->samples, (Samples{0, 200, 400}));
    EXPECT_EQ(read(wav(16'000, ramp), 24'000)->samples, (Samples{0, 66, 133, 200, -133, -66, 400, 466, 500}));
    EXPECT_EQ(read(wav(16'000, ramp), 24'000)->rate, 24'000);
    EXPECT_EQ(read(wav(16'000, ramp), 16'000)->samples, ramp);
    EXPECT_EQ(read(wav(16'000, {5}), 1)->samples, Samples{});
    EXPECT_EQ(read(wav(0, {}), 8000)->samples, Samples{});
    for (const double impossible : {0.0, -8000.0, std::nan("")})
        EXPECT_FALSE(read(wav(16'000, ramp), impossible)) << impossible;
    EXPECT_FALSE(read(wav(0, ramp), 8000));
    EXPECT_FALSE(read(wav(1, ramp), 1e9)) << "longer than any recording";
}

} // namespace
} // namespace velto
