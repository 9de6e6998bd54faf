// What holds for the messages of every provider, received or built.
#pragma once

#include "VeltoShared/core/Utf8.h"
#include "VeltoShared/voice/MessageReader.h"
#include "VeltoShared/voice/ProviderMessages.h"
#include "rehearsal/server/HttpRequest.h"
#include "tests/voice/EventText.h"

#include <boost/json/parse.hpp>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace velto::fuzz {

namespace json = boost::json;

inline void require(bool holds) {
    if (!holds)
        std::abort();
}

/// Takes the input for a connection's messages, one a line, and gives each as a binary frame brings it.
template <class Use>
void forEachMessage(std::string_view input, Use use) {
    for (std::size_t end = 0; end != std::string_view::npos;) {
        end = input.find('\n');
        const auto bytes = input.substr(0, end);
        const std::string text = repairedUtf8(bytes);
        require(isValidUtf8(text));
        require(!isValidUtf8(bytes) || text == bytes);
        use(std::string_view(text));
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    }
}

/// The events of a message. The same again has to give the same: what a message does to the session's state,
/// it does once.
inline std::vector<VoiceEvent> received(ProviderMessages& messages, std::string_view text) {
    std::vector<VoiceEvent> events;
    for (auto& each : messages.handle(text))
        events.push_back(std::move(each));
    require(std::ranges::equal(messages.handle(text), events, {}, test::text, test::text));
    // Log lines and histories are made of them.
    for (const auto& each : events)
        require(std::holds_alternative<event::Audio>(each) || isValidUtf8(test::text(each)));
    return events;
}

/// A built message, as the server reads it.
inline json::value sent(std::string_view message) {
    require(isValidUtf8(message));
    json::parse_options options;
    options.max_depth = kDeepestJSON + 8; // the message around what it carries
    boost::system::error_code malformed;
    auto parsed = json::parse(message, malformed, {}, options);
    require(!malformed && parsed.is_object());
    return parsed;
}

/// The text arrives, with what is not UTF-8 in it repaired. `pointer` is a JSON pointer (RFC 6901).
inline void requireCarries(const json::value& message, std::string_view pointer, std::string_view text,
                           std::string_view prefix = {}) {
    const auto& arrived = message.at_pointer(pointer).get_string();
    require(std::string_view(arrived.data(), arrived.size()) == std::string(prefix) + repairedUtf8(text));
}

/// A chunk of any length arrives, also in the buffer that a longer one has used.
inline void requireCarriesAudio(ProviderMessages& messages, std::string_view pointer,
                                std::span<const std::byte> pcm) {
    for (const auto chunk : {pcm, pcm.first(pcm.size() / 2)}) {
        const auto message = sent(messages.audio(chunk));
        const auto& base64 = message.at_pointer(pointer).get_string();
        const auto arrived = decodedAudio({base64.data(), base64.size()});
        require(arrived && std::ranges::equal(arrived->bytes(), chunk));
    }
}

/// The target is one word of a request line, and its one query item reads as the value that was given.
inline void requireTarget(std::string_view target, std::string_view query, std::string_view value) {
    require(std::ranges::all_of(target, [](char c) { return c > ' ' && c <= '~'; }));
    const auto at = target.find(query);
    require(at != std::string_view::npos);
    const auto encoded = target.substr(at + query.size());
    require(encoded.find_first_of("&#=+;?/") == std::string_view::npos);
    require(rehearsal::percentDecoded(encoded) == value);
}

} // namespace velto::fuzz
