// Changes the rate of a whole recording.
#pragma once

#include "rehearsal/signal/Tones.h"

namespace velto::rehearsal {

/// Windowed-sinc interpolation with the band limited to the lower of the two rates. Rates in Hz, above 0.
Samples resampled(const Samples& samples, double fromRate, double toRate);

} // namespace velto::rehearsal
