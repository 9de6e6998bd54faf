// Writes dual-tone symbols into sound.
#include "rehearsal/signal/Dtmf.h"

namespace velto::rehearsal::Dtmf {

void append(Samples& samples, std::string_view text, double rate, double amplitude) {
    for (const char symbol : text) {
        const auto index = symbols.find(symbol);
        if (index == std::string_view::npos)
            continue;
        const std::array pair{rowFrequencies.at(index / 4), columnFrequencies.at(index % 4)};
        appendTones(samples, pair, amplitude, toneDuration, rate);
        appendSilence(samples, gapDuration, rate);
    }
}

} // namespace velto::rehearsal::Dtmf
