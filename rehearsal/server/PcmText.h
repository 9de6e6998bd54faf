// Samples as they travel inside messages: little-endian bytes in base64 (RFC 4648, padded).
#pragma once

#include "rehearsal/signal/Tones.h"

#include <optional>
#include <string>
#include <string_view>

namespace velto::rehearsal::PcmText {

std::string encode(std::span<const std::int16_t> samples);
/// None for anything but the one canonical text of an even number of bytes.
std::optional<Samples> decode(std::string_view text);

} // namespace velto::rehearsal::PcmText
