// Gemini Live: any bytes as the server's messages, and as the texts that our messages are made of.
#include "VeltoShared/voice/GeminiMessages.h"
#include "fuzz/MessageFuzz.h"

#include <cstdint>

using namespace velto;
using namespace velto::fuzz;

namespace {

void readMessage(GeminiMessages& messages, std::string_view text) {
    for (const auto& each : received(messages, text))
        if (const auto* call = std::get_if<ToolCall>(&each)) {
            boost::system::error_code malformed;
            const auto args = parsedJSON(call->argsJSON, malformed);
            require(!malformed && (args.is_object() || args.is_array()));
            messages.toolResponse(call->id, call->name, call->argsJSON);
        }
}

void buildMessages(GeminiMessages& messages, std::string_view text) {
    requireTarget(messages.request().target, "?key=", text);
    const auto setup = sent(messages.configuration());
    requireCarries(setup, "/setup/model", text, "models/");
    requireCarries(setup, "/setup/generationConfig/speechConfig/voiceConfig/prebuiltVoiceConfig/voiceName",
                   text);
    requireCarries(setup, "/setup/systemInstruction/parts/0/text", text);
    requireCarriesAudio(messages, "/realtimeInput/audio/data", std::as_bytes(std::span(text)));

    const auto turn = messages.clientText(text);
    require(turn.size() == 1);
    requireCarries(sent(turn[0]), "/clientContent/turns/0/parts/0/text", text);

    const auto result = messages.toolResponse(text, text, text);
    require(result.size() == 1);
    const auto response = sent(result[0]);
    requireCarries(response, "/toolResponse/functionResponses/0/id", text);
    requireCarries(response, "/toolResponse/functionResponses/0/name", text);
    const auto& carried = response.at_pointer("/toolResponse/functionResponses/0/response");
    require(carried.is_object() || carried.is_array());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string text(input);
    GeminiMessages messages({text, text, text, text, "localhost"});
    forEachMessage(input, [&](std::string_view message) { readMessage(messages, message); });
    buildMessages(messages, input);
    return 0;
}
