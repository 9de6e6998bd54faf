// Base64 in 512-bit registers, after Mula and Lemire, "Base64 encoding and decoding at almost the speed of a
// memory copy" (Software: Practice and Experience, 2020).
#include "VeltoShared/voice/Base64Engines.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <array>
#include <cstdint>

namespace velto::Base64 {
namespace {

/// The value of each of the 128 ASCII characters; the top bit marks those outside the alphabet.
constexpr std::array<std::uint8_t, 128> makeValues() {
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 128> values{};
    values.fill(0x80);
    for (std::uint8_t value = 0; value < 64; ++value)
        values[static_cast<unsigned char>(kAlphabet[value])] = value;
    return values;
}
alignas(64) constexpr auto kValues = makeValues();

/// Where each of the 48 bytes of a group comes from: three bytes of every four, most significant first.
constexpr std::array<std::uint8_t, 64> makePacking() {
    std::array<std::uint8_t, 64> packing{};
    for (std::uint8_t byte = 0; byte < 48; ++byte)
        packing[byte] = static_cast<std::uint8_t>(byte / 3 * 4 + 2 - byte % 3);
    return packing;
}
alignas(64) constexpr auto kPacking = makePacking();

} // namespace

__attribute__((target("avx512f,avx512bw,avx512vbmi"))) Progress
decodeAVX512(const char* text, std::size_t count, unsigned char* out) {
    const __m512i lowValues = _mm512_load_si512(kValues.data());
    const __m512i highValues = _mm512_load_si512(kValues.data() + 64);
    const __m512i packing = _mm512_load_si512(kPacking.data());
    __m512i bad = _mm512_setzero_si512();
    Progress done;
    // A store writes 64 bytes of which 48 count, hence the margin of 24 characters.
    while (count - done.read >= 88) {
        const __m512i in = _mm512_loadu_si512(text + done.read);
        const __m512i values = _mm512_permutex2var_epi8(lowValues, in, highValues);
        bad = _mm512_or_si512(bad, _mm512_or_si512(in, values)); // the top bit of either is an error
        const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
        const __m512i quads = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
        _mm512_storeu_si512(out + done.written, _mm512_maskz_permutexvar_epi8(~__mmask64{0}, packing, quads));
        done.read += 64;
        done.written += 48;
    }
    return _mm512_movepi8_mask(bad) == 0 ? done : Progress{};
}

} // namespace velto::Base64

#else

namespace velto::Base64 {

Progress decodeAVX512(const char*, std::size_t, unsigned char*) {
    return {};
}

} // namespace velto::Base64

#endif
