// Building and reading the Gemini Live messages with Boost.JSON.
#include "VeltoShared/voice/GeminiMessages.h"

#include "VeltoShared/core/Utf8.h"
#include "VeltoShared/voice/Base64.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>

namespace velto {
namespace {

namespace json = boost::json;

constexpr std::string_view kPath =
    "/ws/google.ai.generativelanguage.v1beta.GenerativeService.BidiGenerateContent";
constexpr std::string_view kAudioPrefix =
    R"({"realtimeInput":{"audio":{"mimeType":"audio/pcm;rate=16000","data":")";
constexpr std::string_view kAudioSuffix = R"("}}})";

json::parse_options bounded() {
    json::parse_options options;
    options.max_depth = 64;
    return options;
}

std::string message(const json::value& value) {
    std::string text = json::serialize(value);
    if (isValidUtf8(text))
        return text;
    return repairedUtf8(text);
}

/// A query value (RFC 3986, section 3.4): everything but the unreserved characters is escaped.
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

const json::object* objectAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    return found ? found->if_object() : nullptr;
}

std::string_view textAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    const json::string* text = found ? found->if_string() : nullptr;
    return text ? std::string_view(text->data(), text->size()) : std::string_view();
}

bool isTrueAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    return found && found->is_bool() && found->get_bool();
}

/// An array with nothing but objects in it.
const json::array* objectsAt(const json::object& parent, std::string_view key) {
    const json::value* found = parent.if_contains(key);
    const json::array* array = found ? found->if_array() : nullptr;
    if (!array || !std::ranges::all_of(*array, [](const json::value& each) { return each.is_object(); }))
        return nullptr;
    return array;
}

bool isContainer(const json::value* value) {
    return value && (value->is_object() || value->is_array());
}

} // namespace

GeminiMessages::GeminiMessages(std::string apiKey, std::string model, std::string voice,
                               std::string systemInstruction, std::string host)
    : apiKey_(std::move(apiKey)), model_(std::move(model)), voice_(std::move(voice)),
      systemInstruction_(std::move(systemInstruction)), host_(std::move(host)),
      audio_(kAudioPrefix, kAudioSuffix), parser_({}, bounded()) {}

VoiceSocket::Request GeminiMessages::request() const {
    std::string target(kPath);
    target.append("?key=").append(percentEncoded(apiKey_));
    return {host_, std::move(target), {}};
}

std::string GeminiMessages::configuration() const {
    const json::value reason{
        {"type", "STRING"},
        {"description", "Short reason the call is ending (e.g. 'goal met', 'no longer needed')."}};
    const json::value endCall{
        {"name", "end_call"},
        {"description",
         "Hang up the phone call. Call this once the goal is complete and you have said goodbye."},
        {"parameters", {{"type", "OBJECT"}, {"properties", {{"reason", reason}}}}}};
    json::object setup;
    setup["model"] = "models/" + model_;
    setup["generationConfig"] = {
        {"responseModalities", json::array{"AUDIO"}},
        {"speechConfig", {{"voiceConfig", {{"prebuiltVoiceConfig", {{"voiceName", voice_}}}}}}}};
    setup["systemInstruction"] = {{"parts", json::array{json::object{{"text", systemInstruction_}}}}};
    setup["realtimeInputConfig"] = {
        {"automaticActivityDetection", {{"disabled", false}, {"silenceDurationMs", 500}}},
        {"activityHandling", "START_OF_ACTIVITY_INTERRUPTS"}};
    setup["inputAudioTranscription"].emplace_object();
    setup["outputAudioTranscription"].emplace_object();
    setup["tools"] = json::array{json::object{{"functionDeclarations", json::array{endCall}}}};
    return message(json::object{{"setup", std::move(setup)}});
}

std::string_view GeminiMessages::audio(std::span<const std::byte> pcm) {
    return audio_.build(pcm);
}

std::vector<std::string> GeminiMessages::clientText(std::string_view text) const {
    const json::object turn{{"role", "user"}, {"parts", json::array{json::object{{"text", text}}}}};
    return {message(json::object{{"clientContent", {{"turns", json::array{turn}}, {"turnComplete", true}}}})};
}

std::vector<std::string> GeminiMessages::toolResponse(std::string_view id, std::string_view name,
                                                      std::string_view resultJSON) const {
    boost::system::error_code malformed;
    json::value result = json::parse(resultJSON, malformed, {}, bounded());
    if (malformed || !isContainer(&result))
        result.emplace_object();
    const json::object response{{"id", id}, {"name", name}, {"response", std::move(result)}};
    return {message(json::object{{"toolResponse", {{"functionResponses", json::array{response}}}}})};
}

std::span<VoiceEvent> GeminiMessages::handle(std::string_view text) {
    events_.clear();
    parser_.reset(&memory_);
    boost::system::error_code malformed;
    parser_.write(text.data(), text.size(), malformed);
    if (!malformed) {
        const json::value parsed = parser_.release();
        if (const auto* object = parsed.if_object())
            handleMessage(*object);
    }
    parser_.reset();
    memory_.release();
    return events_;
}

void GeminiMessages::handleMessage(const json::object& message) {
    if (message.contains("setupComplete"))
        events_.emplace_back(event::SetupComplete{});
    else if (message.contains("goAway"))
        events_.emplace_back(event::Closed{"goAway"});
    else if (!handleToolCall(message))
        if (const auto* content = objectAt(message, "serverContent"))
            handleServerContent(*content);
}

bool GeminiMessages::handleToolCall(const json::object& message) {
    const auto* toolCall = objectAt(message, "toolCall");
    const auto* calls = toolCall ? objectsAt(*toolCall, "functionCalls") : nullptr;
    if (!calls)
        return false;
    for (const auto& each : *calls) {
        const auto& call = each.get_object();
        // Arguments are named, so a bare scalar stands for none.
        const auto* args = call.if_contains("args");
        events_.emplace_back(ToolCall{std::string(textAt(call, "id")), std::string(textAt(call, "name")),
                                      isContainer(args) ? json::serialize(*args) : std::string("{}")});
    }
    return true;
}

void GeminiMessages::handleServerContent(const json::object& content) {
    if (isTrueAt(content, "interrupted"))
        events_.emplace_back(event::Interrupted{});
    if (const auto* heard = objectAt(content, "inputTranscription"))
        if (const auto text = textAt(*heard, "text"); !text.empty())
            events_.emplace_back(event::CallerText{std::string(text)});
    if (const auto* spoken = objectAt(content, "outputTranscription"))
        if (const auto text = textAt(*spoken, "text"); !text.empty())
            events_.emplace_back(event::AgentText{std::string(text)});
    handleModelTurn(content);
    if (isTrueAt(content, "turnComplete"))
        events_.emplace_back(event::TurnComplete{});
}

void GeminiMessages::handleModelTurn(const json::object& content) {
    const auto* turn = objectAt(content, "modelTurn");
    const auto* parts = turn ? objectsAt(*turn, "parts") : nullptr;
    if (!parts)
        return;
    for (const auto& part : *parts) {
        const auto* inlineData = objectAt(part.get_object(), "inlineData");
        const auto* data = inlineData ? inlineData->if_contains("data") : nullptr;
        if (!data || !data->is_string())
            continue;
        const std::string_view text(data->get_string().data(), data->get_string().size());
        AudioChunk chunk(Base64::decodedSize(text));
        if (Base64::decode(text, chunk.bytes()))
            events_.emplace_back(event::Audio{std::move(chunk)});
    }
}

} // namespace velto
