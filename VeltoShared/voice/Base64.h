// Standard base64 (RFC 4648, section 4), strict and quick: the voice providers' audio travels in it.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace velto::Base64 {

/// How the work is done; all give the same answers for every input. `avx512` decodes with AVX-512 VBMI and
/// encodes as `avx2` does.
enum class Engine { portable, avx2, avx512 };

/// Whether this computer can run the engine.
bool isAvailable(Engine engine);
/// The quickest available engine.
Engine quickest();

/// Characters of the text of `byteCount` bytes, padding included.
constexpr std::size_t encodedSize(std::size_t byteCount) {
    return (byteCount + 2) / 3 * 4;
}
/// Bytes that the text stands for if it is well-formed; never less than what `decode` writes.
std::size_t decodedSize(std::string_view text);

/// Writes `encodedSize(bytes.size())` characters, padded, without line breaks, and answers their number.
/// `out` must have room for them and must not overlap `bytes`.
std::size_t encode(std::span<const std::byte> bytes, char* out, Engine engine = quickest());

/// The number of bytes written to `out`, which must have room for `decodedSize(text)` and must not overlap
/// `text`. None, with unspecified bytes in `out`, for every text that `encode` does not write: a length that
/// is no multiple of four, a character outside the alphabet (line breaks and blanks too), padding that is
/// missing, inside or too long, and unused bits that are not zero. The empty text stands for no bytes.
std::optional<std::size_t> decode(std::string_view text, std::span<std::byte> out,
                                  Engine engine = quickest());

} // namespace velto::Base64
