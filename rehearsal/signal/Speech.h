// Words as sound, by the speech synthesiser of the system.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <optional>
#include <string>

namespace velto::rehearsal {

/// Runs espeak-ng and waits for it. `voice` is one of its voice names; the answer has `rate` Hz. None when
/// it is not installed or its output cannot be used.
std::optional<Samples> speech(const std::string& text, const std::string& voice, double rate);

/// The samples of a WAV file of 16-bit mono PCM whose length fields may be those of a stream of unknown
/// length, and its rate in Hz (RIFF, "WAVEfmt ", "data").
struct Recording {
    Samples samples;
    double rate = 0;
};
std::optional<Recording> parseWav(std::string_view bytes);

} // namespace velto::rehearsal
