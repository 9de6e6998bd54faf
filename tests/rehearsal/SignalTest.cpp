// Marks survive what a call does to sound, and nothing else is taken for one.
#include "rehearsal/signal/Dtmf.h"
#include "rehearsal/signal/LineVoice.h"
#include "rehearsal/signal/MarkListener.h"
#include "rehearsal/signal/Resampler.h"
#include "rehearsal/signal/Speech.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace velto::rehearsal {
namespace {

constexpr double kRate = 16000;
const std::string kText = "I would like to book a table for two people on Friday evening, please.";

std::vector<Mark> heardIn(const Samples& samples, std::size_t chunk = 160) {
    std::vector<Mark> marks;
    MarkListener listener(kRate, [&](const Mark& mark) { marks.push_back(mark); });
    Samples padded = samples;
    appendSilence(padded, Milliseconds(100), kRate);
    for (std::size_t at = 0; at < padded.size(); at += chunk)
        listener.feed(std::span(padded).subspan(at, std::min(chunk, padded.size() - at)));
    return marks;
}

std::string symbolsIn(const Samples& samples) {
    std::string symbols;
    DtmfDecoder decoder(kRate, [&](const HeardSymbol& heard) { symbols += heard.symbol; });
    decoder.feed(samples);
    return symbols;
}

/// What an automatic gain does that starts at 32, clips hard and moves 40 % of the way each 10 ms.
Samples throughGainControl(Samples samples, double gain = 32) {
    for (std::size_t at = 0; at + 160 <= samples.size(); at += 160) {
        const auto chunk = std::span(samples).subspan(at, 160);
        if (const auto level = loudness(chunk); level > 0.0015)
            gain = 0.6 * gain + 0.4 * std::clamp(0.15 / level, 1.0, 80.0);
        scale(chunk, gain);
    }
    return samples;
}

const std::vector<Mark> kBothMarks{{42, Mark::Place::begin}, {42, Mark::Place::end}};

TEST(Marks, EveryCodeReadsBackAndWrongOnesAreRefused) {
    for (int number = 0; number < Mark::numbers; ++number)
        for (const auto place : {Mark::Place::begin, Mark::Place::end}) {
            const Mark mark{number, place};
            EXPECT_EQ(Mark::parse(mark.symbols()), mark);
            for (std::size_t i = 1; i < mark.symbols().size(); ++i)
                for (char digit = '0'; digit <= '9'; ++digit) {
                    auto other = mark.symbols();
                    const bool isSame = std::exchange(other[i], digit) == digit;
                    EXPECT_EQ(Mark::parse(other).has_value(), isSame) << other;
                }
        }
    for (const auto* text : {"", "A12", "A12#", "C123", "A1234"})
        EXPECT_FALSE(Mark::parse(text)) << text;
}

TEST(Marks, AllSixteenSymbolsAreDecodedAtEveryLevelAndClippedSquare) {
    Samples clean;
    Dtmf::append(clean, Dtmf::symbols, kRate);
    appendSilence(clean, Milliseconds(60), kRate);
    for (const double factor : {0.01, 0.1, 1.0, 4.0, 32.0, 80.0}) {
        auto samples = clean;
        scale(samples, factor);
        EXPECT_EQ(symbolsIn(samples), Dtmf::symbols) << factor;
    }
    // Two octaves of rates: what a sound server resamples.
    EXPECT_EQ(symbolsIn(resampled(resampled(clean, kRate, 48000), 48000, kRate)), Dtmf::symbols);
}

TEST(Marks, AWholeLineIsHeardThroughTheGainControlAtAnyLevelAndChunking) {
    for (const double level : {0.02, 0.3, 1.0})
        for (const std::size_t chunk : {1UL, 97UL, 160UL, 4096UL}) {
            const auto line = speakLine(42, kText, "en-us", kRate, level).samples;
            EXPECT_EQ(heardIn(line, chunk), kBothMarks) << level << ' ' << chunk;
            EXPECT_EQ(heardIn(throughGainControl(line), chunk), kBothMarks) << level << ' ' << chunk;
        }
}

TEST(Marks, NoiseIsToleratedAndACutMarkIsNoMark) {
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0, 400);
    auto line = speakLine(42, kText, "en-us", kRate).samples;
    for (auto& sample : line)
        sample = static_cast<std::int16_t>(std::clamp(sample + noise(random), -32768.0, 32767.0));
    EXPECT_EQ(heardIn(line), kBothMarks);

    Samples mark;
    Dtmf::append(mark, Mark{42, Mark::Place::begin}.symbols(), kRate);
    const auto symbol = std::ssize(mark) / 4;
    const auto cut = mark.begin() + 3 * symbol + symbol / 8;
    EXPECT_TRUE(heardIn(Samples(mark.begin(), cut)).empty()) << "its end cut off";
    EXPECT_TRUE(heardIn(Samples(mark.begin() + symbol, mark.end())).empty()) << "its begin cut off";
    std::fill_n(mark.begin() + symbol, symbol, std::int16_t{0});
    EXPECT_TRUE(heardIn(mark).empty()) << "a symbol lost";
}

TEST(Marks, SpeechTonesAndNoiseAreNotTakenForSymbols) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> noise(-20000, 20000);
    Samples samples(16000 * 5);
    for (auto& sample : samples)
        sample = static_cast<std::int16_t>(noise(random));
    EXPECT_EQ(symbolsIn(samples), "");
    for (const double hz : {480.0, 697.0, 941.0, 1000.0, 1209.0, 1633.0}) {
        Samples tone;
        appendTones(tone, std::array{hz}, 12000, Milliseconds(500), kRate);
        EXPECT_EQ(symbolsIn(tone), "") << hz;
        EXPECT_EQ(symbolsIn(throughGainControl(tone)), "") << hz;
    }
    if (!speech("yes", "en-us", kRate))
        GTEST_SKIP() << "no speech synthesiser";
    for (const auto* voice : {"en-us", "en-gb", "en-us+f3", "en-gb+m7", "de", "fr+f2"})
        for (const double gain : {1.0, 32.0}) {
            Samples talk =
                *speech("One two three four five six seven eight nine ten. " + kText +
                            " Ooh, aah, eee. Hello? Who is calling, and what about? Nine, eight, "
                            "seven, six, five, four, three, two, one. You owe me a yo-yo. Murmuring "
                            "murmurs, woolly wool, lee-way, yellow lily, mama, Malaya, oh no no no.",
                        voice, kRate);
            talk = throughGainControl(talk, gain);
            EXPECT_TRUE(heardIn(talk).empty()) << voice;
            EXPECT_LE(symbolsIn(talk).size(), 1U) << voice << ' ' << symbolsIn(talk);
        }
}

} // namespace
} // namespace velto::rehearsal
