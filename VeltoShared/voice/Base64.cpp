// The portable base64 loops, the last group with its padding, and the choice of the engine.
#include "VeltoShared/voice/Base64.h"

#include "VeltoShared/voice/Base64Engines.h"

#include <array>
#include <cstdint>

namespace velto::Base64 {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Set in a table's entry for a character outside the alphabet; above the 24 bits of a group.
constexpr std::uint32_t kBad = 1u << 24;

/// One table for each place in a group of four: the character's bits already where they belong.
using Table = std::array<std::uint32_t, 256>;
constexpr std::array<Table, 4> makeTables() {
    std::array<Table, 4> tables{};
    for (auto& table : tables)
        table.fill(kBad);
    for (std::uint32_t value = 0; value < 64; ++value)
        for (std::uint32_t place = 0; place < 4; ++place)
            tables[place][static_cast<unsigned char>(kAlphabet[value])] = value << (18 - 6 * place);
    return tables;
}
constexpr auto kTables = makeTables();

/// Two characters for twelve bits, so that a group of three bytes takes two look-ups.
constexpr std::array<std::array<char, 2>, 4096> makePairs() {
    std::array<std::array<char, 2>, 4096> pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits)
        pairs[bits] = {kAlphabet[bits >> 6], kAlphabet[bits & 63]};
    return pairs;
}
constexpr auto kPairs = makePairs();

std::uint32_t group(const unsigned char* four) {
    return kTables[0][four[0]] | kTables[1][four[1]] | kTables[2][four[2]] | kTables[3][four[3]];
}

void put(unsigned char* out, std::uint32_t bits) {
    out[0] = static_cast<unsigned char>(bits >> 16);
    out[1] = static_cast<unsigned char>(bits >> 8);
    out[2] = static_cast<unsigned char>(bits);
}

/// Whole groups without padding; false at a character outside the alphabet.
bool decodeGroups(const unsigned char* text, std::size_t count, unsigned char* out) {
    std::size_t at = 0;
    std::uint32_t seen = 0;
    for (; at + 8 <= count; at += 8, out += 6) {
        const std::uint32_t first = group(text + at);
        const std::uint32_t second = group(text + at + 4);
        seen |= first | second;
        put(out, first);
        put(out + 3, second);
    }
    if (seen & kBad)
        return false;
    if (at == count)
        return true;
    const std::uint32_t last = group(text + at);
    put(out, last);
    return (last & kBad) == 0;
}

/// The last group of a text: one to three bytes, or none when it is not well-formed.
std::optional<std::size_t> decodeLast(const unsigned char* four, unsigned char* out) {
    const std::size_t padding = four[3] != '=' ? 0 : four[2] != '=' ? 1 : 2;
    const std::uint32_t bits = kTables[0][four[0]] | kTables[1][four[1]] |
                               (padding > 1 ? 0 : kTables[2][four[2]]) |
                               (padding > 0 ? 0 : kTables[3][four[3]]);
    const std::uint32_t unused = (1u << (8 * padding)) - 1;
    if (bits & (kBad | unused))
        return std::nullopt;
    for (std::size_t byte = 0; byte < 3 - padding; ++byte)
        out[byte] = static_cast<unsigned char>(bits >> (16 - 8 * byte));
    return 3 - padding;
}

} // namespace

bool isAvailable(Engine engine) {
#if defined(__x86_64__)
    static const bool avx2 = __builtin_cpu_supports("avx2") != 0;
    static const bool avx512 =
        avx2 && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi");
#else
    constexpr bool avx2 = false;
    constexpr bool avx512 = false;
#endif
    return engine == Engine::portable || (engine == Engine::avx2 ? avx2 : avx512);
}

Engine quickest() {
    static const Engine best = isAvailable(Engine::avx512) ? Engine::avx512
                               : isAvailable(Engine::avx2) ? Engine::avx2
                                                           : Engine::portable;
    return best;
}

std::size_t decodedSize(std::string_view text) {
    const std::size_t whole = text.size() / 4 * 3;
    if (whole == 0 || text.back() != '=')
        return whole;
    return whole - (text[text.size() - 2] == '=' ? 2 : 1);
}

std::size_t encode(std::span<const std::byte> bytes, char* out, Engine engine) {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    Progress done;
    if (engine != Engine::portable && isAvailable(engine))
        done = encodeAVX2(in, bytes.size(), out);
    char* to = out + done.written;
    std::size_t at = done.read;
    const auto putPair = [&to](std::uint32_t bits) {
        *to++ = kPairs[bits][0];
        *to++ = kPairs[bits][1];
    };
    for (; at + 3 <= bytes.size(); at += 3) {
        putPair(static_cast<std::uint32_t>(in[at]) << 4 | in[at + 1] >> 4);
        putPair((static_cast<std::uint32_t>(in[at + 1]) & 15) << 8 | in[at + 2]);
    }
    if (bytes.size() - at == 1) {
        putPair(static_cast<std::uint32_t>(in[at]) << 4);
        *to++ = '=';
        *to++ = '=';
    } else if (bytes.size() - at == 2) {
        putPair(static_cast<std::uint32_t>(in[at]) << 4 | in[at + 1] >> 4);
        *to++ = kAlphabet[(in[at + 1] & 15u) << 2];
        *to++ = '=';
    }
    return static_cast<std::size_t>(to - out);
}

std::optional<std::size_t> decode(std::string_view text, std::span<std::byte> out, Engine engine) {
    if (text.empty())
        return 0;
    if (text.size() % 4 != 0 || out.size() < decodedSize(text))
        return std::nullopt;
    const std::size_t body = text.size() - 4;
    const auto* in = reinterpret_cast<const unsigned char*>(text.data());
    auto* to = reinterpret_cast<unsigned char*>(out.data());
    Progress done;
    if (engine == Engine::avx512 && isAvailable(engine))
        done = decodeAVX512(text.data(), text.size(), to);
    else if (engine == Engine::avx2 && isAvailable(engine))
        done = decodeAVX2(text.data(), text.size(), to);
    if (!decodeGroups(in + done.read, body - done.read, to + done.written))
        return std::nullopt;
    const auto last = decodeLast(in + body, to + body / 4 * 3);
    if (!last)
        return std::nullopt;
    return body / 4 * 3 + *last;
}

} // namespace velto::Base64
