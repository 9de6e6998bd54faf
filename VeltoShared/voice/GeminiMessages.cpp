// Building and reading the Gemini Live messages with Boost.JSON.
#include "VeltoShared/voice/GeminiMessages.h"

#include "VeltoShared/voice/EndCallTool.h"
#include "VeltoShared/voice/PercentEncoding.h"

#include <boost/json/serialize.hpp>

namespace velto {
namespace {

namespace json = boost::json;

constexpr std::string_view kPath =
    "/ws/google.ai.generativelanguage.v1beta.GenerativeService.BidiGenerateContent";
constexpr std::string_view kAudioPrefix =
    R"({"realtimeInput":{"audio":{"mimeType":"audio/pcm;rate=16000","data":")";
constexpr std::string_view kAudioSuffix = R"("}}})";

bool isContainer(const json::value* value) {
    return value && (value->is_object() || value->is_array());
}

} // namespace

GeminiMessages::GeminiMessages(SessionOptions options)
    : options_(std::move(options)), audio_(kAudioPrefix, kAudioSuffix) {}

VoiceSocket::Request GeminiMessages::request() const {
    std::string target(kPath);
    target.append("?key=").append(percentEncoded(options_.apiKey));
    return {options_.host, std::move(target), {}};
}

std::string GeminiMessages::configuration() const {
    const json::value reason{
        {"type", "STRING"},
        {"description", "Short reason the call is ending (e.g. 'goal met', 'no longer needed')."}};
    const json::value endCall{{"name", EndCallTool::name},
                              {"description", EndCallTool::description},
                              {"parameters", {{"type", "OBJECT"}, {"properties", {{"reason", reason}}}}}};
    json::object setup;
    setup["model"] = "models/" + options_.model;
    setup["generationConfig"] = {
        {"responseModalities", json::array{"AUDIO"}},
        {"speechConfig", {{"voiceConfig", {{"prebuiltVoiceConfig", {{"voiceName", options_.voice}}}}}}}};
    setup["systemInstruction"] = {{"parts", json::array{json::object{{"text", options_.systemInstruction}}}}};
    setup["realtimeInputConfig"] = {
        {"automaticActivityDetection", {{"disabled", false}, {"silenceDurationMs", 500}}},
        {"activityHandling", "START_OF_ACTIVITY_INTERRUPTS"}};
    setup["inputAudioTranscription"].emplace_object();
    setup["outputAudioTranscription"].emplace_object();
    setup["tools"] = json::array{json::object{{"functionDeclarations", json::array{endCall}}}};
    return sendable(json::object{{"setup", std::move(setup)}});
}

std::string_view GeminiMessages::audio(std::span<const std::byte> pcm) {
    return audio_.build(pcm);
}

std::vector<std::string> GeminiMessages::clientText(std::string_view text) const {
    const json::object turn{{"role", "user"}, {"parts", json::array{json::object{{"text", text}}}}};
    return {
        sendable(json::object{{"clientContent", {{"turns", json::array{turn}}, {"turnComplete", true}}}})};
}

std::vector<std::string> GeminiMessages::toolResponse(std::string_view id, std::string_view name,
                                                      std::string_view resultJSON) const {
    boost::system::error_code malformed;
    json::value result = parsedJSON(resultJSON, malformed);
    if (malformed || !isContainer(&result))
        result.emplace_object();
    const json::object response{{"id", id}, {"name", name}, {"response", std::move(result)}};
    return {sendable(json::object{{"toolResponse", {{"functionResponses", json::array{response}}}}})};
}

std::span<VoiceEvent> GeminiMessages::handle(std::string_view text) {
    events_.clear();
    reader_.read(text, [this](const json::object& message) { handleMessage(message); });
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
        if (const auto* data = inlineData ? stringAt(*inlineData, "data") : nullptr)
            if (auto chunk = decodedAudio({data->data(), data->size()}))
                events_.emplace_back(event::Audio{std::move(*chunk)});
    }
}

} // namespace velto
