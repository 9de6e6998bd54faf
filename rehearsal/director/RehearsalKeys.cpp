#include "rehearsal/director/RehearsalKeys.h"

#include <algorithm>
#include <cstdint>
#include <random>

namespace velto::rehearsal {
namespace {

/// Twenty digits that nothing else has.
std::string freshMark() {
    std::random_device random;
    std::uniform_int_distribution<std::uint64_t> digits(1'000'000'000, 9'999'999'999);
    return std::to_string(digits(random)) + std::to_string(digits(random));
}

/// Digits as a URL may have them: "%31%32" for "12".
std::string escaped(const std::string& digits) {
    std::string text;
    for (const char digit : digits)
        text.append("%3") += digit;
    return text;
}

} // namespace

RehearsalKeys::RehearsalKeys() {
    for (const auto provider : kAllVoiceProviders) {
        const auto mark = freshMark();
        keys_[provider] = provider == VoiceProvider::gemini ? "rehearsal key/" + mark + "&"
                                                            : "sk-rehearsal/" + mark + "+&=%";
        marks_.push_back(mark);
        marks_.push_back(escaped(mark));
    }
}

bool RehearsalKeys::isIn(std::string_view bytes) const {
    return std::any_of(marks_.begin(), marks_.end(),
                       [&](const auto& mark) { return bytes.find(mark) != std::string::npos; });
}

} // namespace velto::rehearsal
