// Base64 in 256-bit registers, after Mula and Lemire, "Faster Base64 Encoding and Decoding using AVX2
// Instructions" (ACM Transactions on the Web, 2018).
#include "VeltoShared/voice/Base64Engines.h"

#if defined(__x86_64__)

#include <immintrin.h>

namespace velto::Base64 {
namespace {

constexpr std::size_t kBytesPerGroup = 24;
constexpr std::size_t kCharactersPerGroup = 32;

} // namespace

__attribute__((target("avx2"))) Progress encodeAVX2(const unsigned char* bytes, std::size_t count,
                                                    char* out) {
    const __m256i spread = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10, //
                                            1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    // What is added to a 6-bit value: letters, digits, '+' and '/', selected by the value's range.
    const __m256i offsets =
        _mm256_setr_epi8(65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0, //
                         65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0);
    Progress done;
    // The upper half is loaded from twelve bytes on and reads sixteen.
    while (count - done.read >= 28) {
        const auto* from = bytes + done.read;
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 12));
        const __m256i in = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), spread);
        const __m256i upper = _mm256_mulhi_epu16(_mm256_and_si256(in, _mm256_set1_epi32(0x0fc0fc00)),
                                                 _mm256_set1_epi32(0x04000040));
        const __m256i lower = _mm256_mullo_epi16(_mm256_and_si256(in, _mm256_set1_epi32(0x003f03f0)),
                                                 _mm256_set1_epi32(0x01000010));
        const __m256i values = _mm256_or_si256(upper, lower);
        const __m256i range = _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                              _mm256_cmpgt_epi8(values, _mm256_set1_epi8(25)));
        const __m256i text = _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, range));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + done.written), text);
        done.read += kBytesPerGroup;
        done.written += kCharactersPerGroup;
    }
    return done;
}

__attribute__((target("avx2"))) Progress decodeAVX2(const char* text, std::size_t count, unsigned char* out) {
    // Bit classes by lower and upper half of the character: a character is in the alphabet where they share
    // no bit.
    const __m256i byLower = _mm256_setr_epi8(
        0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A, //
        0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
    const __m256i byUpper = _mm256_setr_epi8(
        0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, //
        0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
    // From a character to its value, by upper half; '/' shares its half with '+' and takes the entry below.
    const __m256i offsets = _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0, //
                                             0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i pack = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, //
                                          2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
    const __m256i slash = _mm256_set1_epi8('/');
    Progress done;
    // A store writes 32 bytes of which 24 count, hence the margin of a group and a half.
    while (count - done.read >= 48) {
        const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + done.read));
        // The mask keeps a bit too many, which the table look-up ignores, and serves as '/' as well.
        const __m256i upper = _mm256_and_si256(_mm256_srli_epi32(in, 4), slash);
        const __m256i lower = _mm256_and_si256(in, slash);
        if (!_mm256_testz_si256(_mm256_shuffle_epi8(byLower, lower), _mm256_shuffle_epi8(byUpper, upper)))
            break;
        const __m256i entry = _mm256_add_epi8(_mm256_cmpeq_epi8(in, slash), upper);
        const __m256i values = _mm256_add_epi8(in, _mm256_shuffle_epi8(offsets, entry));
        const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
        const __m256i quads = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
        const __m256i bytes = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(quads, pack), join);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + done.written), bytes);
        done.read += kCharactersPerGroup;
        done.written += kBytesPerGroup;
    }
    return done;
}

} // namespace velto::Base64

#else

namespace velto::Base64 {

Progress encodeAVX2(const unsigned char*, std::size_t, char*) {
    return {};
}
Progress decodeAVX2(const char*, std::size_t, unsigned char*) {
    return {};
}

} // namespace velto::Base64

#endif
