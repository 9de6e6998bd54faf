// Base64: the engines agree on every text, and only what the encoder writes is accepted.
#include "VeltoShared/voice/Base64.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

using velto::Base64::Engine;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    // Exactly the promised room, so that the address sanitizer sees a byte too many.
    std::vector<std::byte> expected(velto::Base64::decodedSize(text));
    const auto length = velto::Base64::decode(text, expected, Engine::portable);
    for (const auto engine : {Engine::avx2, Engine::avx512}) {
        if (!velto::Base64::isAvailable(engine))
            continue;
        std::vector<std::byte> bytes(velto::Base64::decodedSize(text));
        if (velto::Base64::decode(text, bytes, engine) != length || (length && bytes != expected))
            std::abort();
    }
    if (!length)
        return 0;
    for (const auto engine : {Engine::portable, Engine::avx2}) {
        std::string again(velto::Base64::encodedSize(*length), ' ');
        velto::Base64::encode({expected.data(), *length}, again.data(), engine);
        if (again != text)
            std::abort();
    }
    return 0;
}
