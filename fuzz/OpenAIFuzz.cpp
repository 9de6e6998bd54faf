// OpenAI Realtime: any bytes as the server's messages, and as the texts that our messages are made of.
#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/voice/OpenAIMessages.h"
#include "fuzz/MessageFuzz.h"

#include <cstdint>

using namespace velto;
using namespace velto::fuzz;

namespace {

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
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string text(input);
    OpenAIMessages messages({text, text, text, text, "localhost"});
    forEachMessage(input, [&](std::string_view message) {
        const auto events = received(messages, message);
        require(events.size() <= 1);
        for (const auto& each : events)
            if (const auto* call = std::get_if<ToolCall>(&each))
                messages.toolResponse(call->id, call->name, call->argsJSON);
    });
    buildMessages(messages, input);
    return 0;
}
