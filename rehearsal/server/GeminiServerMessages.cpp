// Writes what the Gemini Live API sends.
#include "rehearsal/server/GeminiServerMessages.h"

#include "rehearsal/server/PcmText.h"

#include <boost/json.hpp>

namespace velto::rehearsal::GeminiServerMessages {
namespace {

namespace json = boost::json;

std::string content(std::string_view key, json::value value) {
    return json::serialize(json::object{{"serverContent", json::object{{key, std::move(value)}}}});
}

} // namespace

std::string setupComplete() {
    return R"({"setupComplete":{}})";
}

std::string audio(std::span<const std::int16_t> samples) {
    json::object inlineData{{"mimeType", "audio/pcm;rate=24000"}, {"data", PcmText::encode(samples)}};
    json::object part{{"inlineData", std::move(inlineData)}};
    return content("modelTurn", json::object{{"parts", json::array{std::move(part)}}});
}

std::string inputTranscription(std::string_view text) {
    return content("inputTranscription", json::object{{"text", text}});
}

std::string outputTranscription(std::string_view text) {
    return content("outputTranscription", json::object{{"text", text}});
}

std::string interrupted() {
    return content("interrupted", true);
}

std::string turnComplete() {
    return content("turnComplete", true);
}

std::string endCall(std::string_view id, std::string_view reason) {
    json::object call{{"id", id}, {"name", "end_call"}, {"args", json::object{{"reason", reason}}}};
    return json::serialize(
        json::object{{"toolCall", json::object{{"functionCalls", json::array{std::move(call)}}}}});
}

} // namespace velto::rehearsal::GeminiServerMessages
