// Building and reading the OpenAI Realtime messages with Boost.JSON.
#include "VeltoShared/voice/OpenAIMessages.h"

#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/voice/EndCallTool.h"
#include "VeltoShared/voice/PercentEncoding.h"

#include <boost/json/serialize.hpp>

namespace velto {
namespace {

namespace json = boost::json;

constexpr std::string_view kPath = "/v1/realtime";
constexpr std::string_view kAudioPrefix = R"({"type":"input_audio_buffer.append","audio":")";
constexpr std::string_view kAudioSuffix = R"("})";
constexpr std::string_view kRespond = R"({"type":"response.create"})";

std::string itemCreate(json::object item) {
    return sendable(json::object{{"type", "conversation.item.create"}, {"item", std::move(item)}});
}

} // namespace

OpenAIMessages::OpenAIMessages(SessionOptions options)
    : options_(std::move(options)), audio_(kAudioPrefix, kAudioSuffix) {}

VoiceSocket::Request OpenAIMessages::request() const {
    std::string target(kPath);
    target.append("?model=").append(percentEncoded(options_.model));
    // White space around a field's value is no part of it (RFC 9110, section 5.5).
    std::string bearer = "Bearer ";
    bearer += trimBlanksAndNewlines(options_.apiKey);
    return {options_.host,
            std::move(target),
            {{"Authorization", std::move(bearer)}, {"OpenAI-Beta", "realtime=v1"}}};
}

std::string OpenAIMessages::configuration() const {
    const json::value reason{{"type", "string"}, {"description", "Short reason the call is ending."}};
    const json::value endCall{{"type", "function"},
                              {"name", EndCallTool::name},
                              {"description", EndCallTool::description},
                              {"parameters", {{"type", "object"}, {"properties", {{"reason", reason}}}}}};
    json::object session;
    session["modalities"] = json::array{"audio", "text"};
    session["instructions"] = options_.systemInstruction;
    session["voice"] = options_.voice;
    session["input_audio_format"] = "pcm16";
    session["output_audio_format"] = "pcm16";
    session["input_audio_transcription"] = {{"model", "whisper-1"}};
    session["turn_detection"] = {{"type", "server_vad"}};
    session["tools"] = json::array{endCall};
    session["tool_choice"] = "auto";
    return sendable(json::object{{"type", "session.update"}, {"session", std::move(session)}});
}

std::string_view OpenAIMessages::audio(std::span<const std::byte> pcm) {
    return audio_.build(pcm);
}

std::vector<std::string> OpenAIMessages::clientText(std::string_view text) const {
    return {itemCreate({{"type", "message"},
                        {"role", "user"},
                        {"content", json::array{json::object{{"type", "input_text"}, {"text", text}}}}}),
            std::string(kRespond)};
}

std::vector<std::string> OpenAIMessages::toolResponse(std::string_view id, std::string_view /*name*/,
                                                      std::string_view resultJSON) const {
    return {itemCreate({{"type", "function_call_output"}, {"call_id", id}, {"output", resultJSON}}),
            std::string(kRespond)};
}

std::span<VoiceEvent> OpenAIMessages::handle(std::string_view text) {
    events_.clear();
    reader_.read(text, [this](const json::object& message) { handleMessage(message); });
    return events_;
}

void OpenAIMessages::handleMessage(const json::object& message) {
    const auto type = textAt(message, "type");
    if (type == "response.audio.delta") {
        if (const auto* delta = stringAt(message, "delta"))
            if (auto chunk = decodedAudio({delta->data(), delta->size()}))
                events_.emplace_back(event::Audio{std::move(*chunk)});
    } else if (type == "response.audio_transcript.delta") {
        if (const auto delta = textAt(message, "delta"); !delta.empty())
            events_.emplace_back(event::AgentText{std::string(delta)});
    } else if (type == "conversation.item.input_audio_transcription.completed") {
        if (const auto transcript = textAt(message, "transcript"); !transcript.empty())
            events_.emplace_back(event::CallerText{std::string(transcript)});
    } else if (type == "session.created" || type == "session.updated") {
        events_.emplace_back(event::SetupComplete{});
    } else if (type == "response.created") {
        responseActive_ = true;
    } else if (type == "response.done") {
        responseActive_ = false;
        events_.emplace_back(event::TurnComplete{});
    } else if (type == "input_audio_buffer.speech_started") {
        if (responseActive_)
            events_.emplace_back(event::Interrupted{});
    } else if (type == "response.output_item.added") {
        rememberFunction(message);
    } else if (type == "response.function_call_arguments.done") {
        handleFunctionCall(message);
    } else if (type == "error") {
        handleError(message);
    }
}

void OpenAIMessages::rememberFunction(const json::object& message) {
    const auto* item = objectAt(message, "item");
    if (!item || textAt(*item, "type") != "function_call")
        return;
    const auto call = textAt(*item, "call_id", textAt(*item, "id"));
    functionNames_.insert_or_assign(std::string(call), std::string(textAt(*item, "name")));
}

void OpenAIMessages::handleFunctionCall(const json::object& message) {
    std::string call(textAt(message, "call_id"));
    const auto known = functionNames_.find(call);
    std::string name = known != functionNames_.end() ? known->second : std::string(textAt(message, "name"));
    events_.emplace_back(
        ToolCall{std::move(call), std::move(name), std::string(textAt(message, "arguments", "{}"))});
}

void OpenAIMessages::handleError(const json::object& message) {
    const json::value* error = message.if_contains("error");
    events_.emplace_back(event::Closed{"openai error: " + (error ? json::serialize(*error) : std::string())});
}

} // namespace velto
