// One line of a scenario as it sounds: a beep, the begin mark, the words, the end mark.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <string>

namespace velto::rehearsal {

struct SpokenLine {
    Samples samples;
    /// Where the words are, in frames.
    std::size_t wordsBegin = 0;
    std::size_t wordsEnd = 0;
    bool synthesised = false; ///< false: the words are tones, because there is no speech synthesiser
};

/// The beep lets a gain control that starts far too high settle before the mark. Words are brought to one
/// loudness, and their pauses shortened so that no listener takes one for the end of the turn.
/// `mark` 0 to 99, `rate` in Hz, `level` a factor on the whole.
SpokenLine speakLine(int mark, const std::string& text, const std::string& voice, double rate,
                     double level = 1);

} // namespace velto::rehearsal
