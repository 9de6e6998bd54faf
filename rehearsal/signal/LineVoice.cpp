// One line of a scenario as it sounds.
#include "rehearsal/signal/LineVoice.h"

#include "rehearsal/signal/Dtmf.h"
#include "rehearsal/signal/Mark.h"
#include "rehearsal/signal/Speech.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace velto::rehearsal {
namespace {

constexpr Milliseconds kBeep{200};
constexpr Milliseconds kBreath{60};
constexpr Milliseconds kLongestPause{180};
constexpr Milliseconds kBlock{10};
constexpr double kSilent = 0.004; ///< share of full scale
constexpr double kWordsLoudness = 0.12;
constexpr double kBeepAmplitude = 7000;
/// Below every frequency of a mark.
constexpr std::array kBeepFrequency{480.0};

/// Silence at both ends taken away and pauses inside cut to a length.
Samples tightened(const Samples& words, double rate) {
    const auto block = frameCount(kBlock, rate);
    const auto longest = static_cast<std::size_t>(kLongestPause / kBlock);
    Samples result;
    std::size_t silentBlocks = longest; // nothing before the first sound
    std::size_t afterLastSound = 0;
    for (std::size_t at = 0; at < words.size(); at += block) {
        const auto part = std::span(words).subspan(at, std::min(block, words.size() - at));
        const bool silent = loudness(part) < kSilent;
        silentBlocks = silent ? silentBlocks + 1 : 0;
        if (silentBlocks > longest)
            continue;
        result.insert(result.end(), part.begin(), part.end());
        if (!silent)
            afterLastSound = result.size();
    }
    result.resize(afterLastSound);
    return result;
}

/// A tone for each word, as long as the word, rising and falling.
Samples hummed(const std::string& text, double rate) {
    Samples samples;
    std::istringstream words(text);
    std::size_t index = 0;
    for (std::string word; words >> word; ++index) {
        const std::array frequency{240.0 + 40.0 * static_cast<double>(index % 5)};
        appendTones(samples, frequency, 6000, Milliseconds(90 + 25 * std::min<std::size_t>(word.size(), 8)),
                    rate);
        appendSilence(samples, Milliseconds(40), rate);
    }
    return samples;
}

} // namespace

SpokenLine speakLine(int mark, const std::string& text, const std::string& voice, double rate, double level) {
    SpokenLine line;
    auto synthesised = speech(text, voice, rate);
    line.synthesised = synthesised.has_value();
    auto words = tightened(synthesised ? *synthesised : hummed(text, rate), rate);
    if (const auto loud = loudness(words); loud > 0)
        scale(words, kWordsLoudness / loud);

    appendTones(line.samples, kBeepFrequency, kBeepAmplitude, kBeep, rate);
    appendSilence(line.samples, kBreath, rate);
    Dtmf::append(line.samples, Mark{mark, Mark::Place::begin}.symbols(), rate);
    line.wordsBegin = line.samples.size();
    line.samples.insert(line.samples.end(), words.begin(), words.end());
    line.wordsEnd = line.samples.size();
    appendSilence(line.samples, kBreath, rate);
    Dtmf::append(line.samples, Mark{mark, Mark::Place::end}.symbols(), rate);
    // The last symbol ends the line: times are measured from there.
    line.samples.resize(line.samples.size() - frameCount(Dtmf::gapDuration, rate));
    scale(line.samples, level);
    return line;
}

} // namespace velto::rehearsal
