// Writes what the OpenAI Realtime API sends.
#include "rehearsal/server/OpenAIServerMessages.h"

#include "rehearsal/server/PcmText.h"

#include <boost/json.hpp>

#include <array>
#include <cstdio>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

std::string identifier(const char* kind, std::uint64_t number) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%s_Rehearsal%012llu", kind,
                  static_cast<unsigned long long>(number));
    return text.data();
}

json::value textOrNull(const std::string& text) {
    return text.empty() ? json::value() : json::value(text);
}

json::object item(std::string_view id, std::string_view type, std::string_view status) {
    return {{"id", id}, {"object", "realtime.item"}, {"type", type}, {"status", status}};
}

json::array oneContent(json::object content) {
    return {std::move(content)};
}

json::object rateLimit(const char* name, int limit, int remaining) {
    return {{"name", name}, {"limit", limit}, {"remaining", remaining}, {"reset_seconds", 0.06}};
}

json::array endCallTool() {
    json::object reason{{"type", "string"}, {"description", "Short reason the call is ending."}};
    json::object parameters{{"type", "object"}, {"properties", json::object{{"reason", std::move(reason)}}}};
    return oneContent({{"type", "function"},
                       {"name", kEndCall},
                       {"description", kEndCallDescription},
                       {"parameters", std::move(parameters)}});
}

/// The model that a rehearsal pretends to be does not count its tokens: one for each letter.
json::value usage(const std::string& transcript) {
    const auto count = transcript.size();
    return {{"total_tokens", count}, {"input_tokens", 0}, {"output_tokens", count}};
}

} // namespace

void OpenAIServerMessages::emit(std::string_view type, json::object members) {
    json::object event{{"type", type}, {"event_id", identifier("event", ++events_)}};
    for (auto& member : members)
        event.emplace(member.key(), std::move(member.value()));
    send_({json::serialize(event)});
}

void OpenAIServerMessages::emitSession(std::string_view type) {
    emit(type, {{"session", session_}});
}

void OpenAIServerMessages::emitOutput(std::string_view type, json::object members) {
    members.emplace("response_id", responseID_);
    members.emplace("output_index", output_.size());
    emit(type, std::move(members));
}

void OpenAIServerMessages::emitContent(std::string_view type, json::object members) {
    members.emplace("item_id", outputItem_);
    members.emplace("content_index", 0);
    emitOutput(type, std::move(members));
}

void OpenAIServerMessages::emitItem(json::object item) {
    auto id = std::string(item.at("id").get_string());
    emit("conversation.item.created",
         {{"previous_item_id", textOrNull(previousItem_)}, {"item", std::move(item)}});
    previousItem_ = std::move(id);
}

std::string OpenAIServerMessages::freshItem() {
    return identifier("item", ++items_);
}

void OpenAIServerMessages::sessionCreated(std::string_view model) {
    json::object detection{{"type", "server_vad"},     {"threshold", 0.5},
                           {"prefix_padding_ms", 300}, {"silence_duration_ms", 500},
                           {"create_response", true},  {"interrupt_response", true}};
    session_ = {{"id", identifier("sess", 1)},
                {"object", "realtime.session"},
                {"model", model},
                {"modalities", json::array{"audio", "text"}},
                {"instructions", "You are a helpful, witty, and friendly AI."},
                {"voice", "alloy"},
                {"turn_detection", std::move(detection)},
                {"input_audio_format", "pcm16"},
                {"output_audio_format", "pcm16"},
                {"input_audio_transcription", nullptr},
                {"tools", json::array{}},
                {"tool_choice", "auto"},
                {"temperature", 0.8},
                {"max_response_output_tokens", "inf"}};
    emitSession("session.created");
}

void OpenAIServerMessages::sessionUpdated(const ConfigurationMessage& configuration) {
    session_["instructions"] = configuration.systemInstruction;
    session_["voice"] = configuration.voice;
    session_["input_audio_transcription"] = {{"model", "whisper-1"}};
    session_["tools"] = endCallTool();
    emitSession("session.updated");
}

void OpenAIServerMessages::itemCreated(const ClientMessage& made) {
    if (const auto* text = std::get_if<TextMessage>(&made)) {
        auto user = item(freshItem(), "message", "completed");
        user["role"] = "user";
        user["content"] = oneContent({{"type", "input_text"}, {"text", text->text}});
        emitItem(std::move(user));
    } else if (const auto* response = std::get_if<ToolResponseMessage>(&made)) {
        auto output = item(freshItem(), "function_call_output", "completed");
        output["call_id"] = response->id;
        output["output"] = response->output;
        emitItem(std::move(output));
    }
}

void OpenAIServerMessages::speechStarted(Position at) {
    speechItem_ = freshItem();
    emit("input_audio_buffer.speech_started", {{"audio_start_ms", at.count()}, {"item_id", speechItem_}});
}

void OpenAIServerMessages::speechStopped(Position at, std::string_view transcript) {
    emit("input_audio_buffer.speech_stopped", {{"audio_end_ms", at.count()}, {"item_id", speechItem_}});
    emit("input_audio_buffer.committed",
         {{"previous_item_id", textOrNull(previousItem_)}, {"item_id", speechItem_}});
    auto speech = item(speechItem_, "message", "completed");
    speech["role"] = "user";
    speech["content"] = oneContent({{"type", "input_audio"}, {"transcript", nullptr}});
    emitItem(std::move(speech));
    const auto transcription = [&](const char* type, const char* key) {
        emit(std::string("conversation.item.input_audio_transcription.") + type,
             {{"item_id", speechItem_}, {"content_index", 0}, {key, transcript}});
    };
    if (!transcript.empty())
        transcription("delta", "delta");
    transcription("completed", "transcript");
}

json::object OpenAIServerMessages::response(std::string_view status) const {
    return {{"object", "realtime.response"}, {"id", responseID_}, {"status", status},
            {"status_details", nullptr},     {"output", output_}, {"usage", nullptr}};
}

void OpenAIServerMessages::responseCreated() {
    responseID_ = identifier("resp", ++responses_);
    output_.clear();
    transcript_.clear();
    emit("response.created", {{"response", response("in_progress")}});
    emit("rate_limits.updated", {{"rate_limits", json::array{rateLimit("requests", 5000, 4999),
                                                             rateLimit("tokens", 20000, 19000)}}});
}

json::object OpenAIServerMessages::message(std::string_view status) const {
    auto spoken = item(outputItem_, "message", status);
    spoken["role"] = "assistant";
    spoken["content"] = json::array{};
    if (status != "in_progress")
        spoken["content"] = oneContent({{"type", "audio"}, {"transcript", transcript_}});
    return spoken;
}

void OpenAIServerMessages::messageAdded() {
    outputItem_ = freshItem();
    emitOutput("response.output_item.added", {{"item", message("in_progress")}});
    emitItem(message("in_progress"));
    emitContent("response.content_part.added",
                {{"part", json::object{{"type", "audio"}, {"transcript", ""}}}});
}

void OpenAIServerMessages::audioDelta(std::span<const std::int16_t> samples) {
    emitContent("response.audio.delta", {{"delta", PcmText::encode(samples)}});
}

void OpenAIServerMessages::transcriptDelta(std::string_view fragment) {
    transcript_ += fragment;
    emitContent("response.audio_transcript.delta", {{"delta", fragment}});
}

void OpenAIServerMessages::messageDone(bool whole) {
    emitContent("response.audio.done");
    emitContent("response.audio_transcript.done", {{"transcript", transcript_}});
    emitContent("response.content_part.done",
                {{"part", json::object{{"type", "audio"}, {"transcript", transcript_}}}});
    auto done = message(whole ? "completed" : "incomplete");
    emitOutput("response.output_item.done", {{"item", done}});
    output_.push_back(std::move(done));
}

json::object OpenAIServerMessages::call(std::string_view status, std::string_view callID,
                                        std::string_view arguments) const {
    auto made = item(outputItem_, "function_call", status);
    made["name"] = kEndCall;
    made["call_id"] = callID;
    made["arguments"] = arguments;
    return made;
}

void OpenAIServerMessages::functionCall(std::string_view callID, std::string_view arguments) {
    outputItem_ = freshItem();
    emitOutput("response.output_item.added", {{"item", call("in_progress", callID, "")}});
    emitItem(call("in_progress", callID, ""));
    const auto progress = [&](const char* type, const char* key, std::string_view text) {
        emitOutput(std::string("response.function_call_arguments.") + type,
                   {{"item_id", outputItem_}, {"call_id", callID}, {key, text}});
    };
    const auto half = arguments.size() / 2;
    progress("delta", "delta", arguments.substr(0, half));
    progress("delta", "delta", arguments.substr(half));
    progress("done", "arguments", arguments);
    auto done = call("completed", callID, arguments);
    emitOutput("response.output_item.done", {{"item", done}});
    output_.push_back(std::move(done));
}

void OpenAIServerMessages::responseDone(bool cancelled) {
    auto done = response(cancelled ? "cancelled" : "completed");
    if (cancelled)
        done["status_details"] = {{"type", "cancelled"}, {"reason", "turn_detected"}};
    done["usage"] = usage(transcript_);
    emit("response.done", {{"response", std::move(done)}});
}

} // namespace velto::rehearsal
