#include "VeltoShared/voice/PercentEncoding.h"

namespace velto {

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const bool isUnreserved = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                  (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' || c == '~';
        if (isUnreserved) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return encoded;
}

} // namespace velto
