// The bulk loops behind base64; each does a whole number of groups and leaves the rest to the caller.
#pragma once

#include <cstddef>

namespace velto::Base64 {

/// How far a loop came.
struct Progress {
    std::size_t read = 0;
    std::size_t written = 0;
};

/// Encodes groups of 24 bytes; stops with fewer than 28 bytes left.
Progress encodeAVX2(const unsigned char* bytes, std::size_t count, char* out);
/// Decodes groups of 32 characters; stops with fewer than 48 left or before a group with a character outside
/// the alphabet. `out` has room for three bytes for every four characters, less two.
Progress decodeAVX2(const char* text, std::size_t count, unsigned char* out);
/// Decodes groups of 64 characters with AVX-512 VBMI; stops with fewer than 88 left. Answers no progress at
/// all when a group held a character outside the alphabet.
Progress decodeAVX512(const char* text, std::size_t count, unsigned char* out);

} // namespace velto::Base64
