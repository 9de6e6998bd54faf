// OpenAI Realtime: any bytes as the server's messages, and as the texts that our messages are made of.
#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/voice/OpenAIMessages.h"
#include "fuzz/MessageFuzz.h"

#include <cstdint>

using namespace velto;
using namespace velto::fuzz;

namespace {

/// What the connection's messages so far have to mean, told by their types alone.
class Expected {
  public:
    void follow(std::string_view text, std::span<const VoiceEvent> events) {
        require(events.size() <= 1);
        const std::string type = typeOf(text);
        if (type == "response.created")
            isResponding_ = true;
        if (type == "response.done")
            isResponding_ = false;
        const bool isInterrupted = type == "input_audio_buffer.speech_started" && isResponding_;
        const bool isSetup = type == "session.created" || type == "session.updated";
        if (isInterrupted || isSetup || type == "response.done" || type == "error" ||
            type == "response.function_call_arguments.done")
            require(events.size() == 1);
        if (events.empty())
            return;
        const auto& event = events[0];
        require(std::holds_alternative<event::Interrupted>(event) == isInterrupted);
        require(std::holds_alternative<event::SetupComplete>(event) == isSetup);
        require(std::holds_alternative<event::TurnComplete>(event) == (type == "response.done"));
        require(std::holds_alternative<event::Audio>(event) == (type == "response.audio.delta"));
        require(std::holds_alternative<event::AgentText>(event) ==
                (type == "response.audio_transcript.delta"));
        require(std::holds_alternative<event::CallerText>(event) ==
                (type == "conversation.item.input_audio_transcription.completed"));
        require(std::holds_alternative<ToolCall>(event) == (type == "response.function_call_arguments.done"));
        const auto* closed = std::get_if<event::Closed>(&event);
        require((closed != nullptr) == (type == "error"));
        require(!closed || closed->reason.starts_with("openai error: "));
    }

  private:
    static std::string typeOf(std::string_view text) {
        boost::system::error_code malformed;
        const auto message = parsedJSON(text, malformed);
        const auto* object = message.if_object();
        return object ? std::string(textAt(*object, "type")) : std::string();
    }

    bool isResponding_ = false;
};

void buildMessages(OpenAIMessages& messages, std::string_view text) {
    const auto request = messages.request();
    requireTarget(request.target, "?model=", text);
    require(request.headers.size() == 2 &&
            request.headers[0].second == "Bearer " + std::string(trimBlanksAndNewlines(text)));
    const auto session = sent(messages.configuration());
    requireCarries(session, "/session/voice", text);
    requireCarries(session, "/session/instructions", text);
    requireCarriesAudio(messages, "/audio", std::as_bytes(std::span(text)));

    const auto turn = messages.clientText(text);
    const auto result = messages.toolResponse(text, text, text);
    requireCarries(sent(turn.at(0)), "/item/content/0/text", text);
    const auto output = sent(result.at(0));
    requireCarries(output, "/item/call_id", text);
    requireCarries(output, "/item/output", text);
    for (const auto& both : {turn, result}) {
        require(both.size() == 2);
        requireCarries(sent(both[1]), "/type", "response.create");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string text(input);
    OpenAIMessages messages({text, text, text, text, "localhost"});
    Expected expected;
    forEachMessage(input, [&](std::string_view message) {
        const auto events = received(messages, message);
        for (const auto& each : events)
            if (const auto* call = std::get_if<ToolCall>(&each))
                messages.toolResponse(call->id, call->name, call->argsJSON);
        expected.follow(message, events);
    });
    buildMessages(messages, input);
    return 0;
}
