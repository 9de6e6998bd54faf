// A received Gemini message, as a binary frame brings it: any bytes, one reader for all of them.
#include "VeltoShared/core/Utf8.h"
#include "VeltoShared/voice/GeminiMessages.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static velto::GeminiMessages messages({"key", "model", "Puck", "instruction", "localhost"});
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = velto::repairedUtf8(bytes);
    if (!velto::isValidUtf8(text) || (velto::isValidUtf8(bytes) && text != bytes))
        std::abort();
    for (const auto& event : messages.handle(text)) {
        if (const auto* heard = std::get_if<velto::event::CallerText>(&event); heard && heard->text.empty())
            std::abort();
        if (const auto* call = std::get_if<velto::ToolCall>(&event))
            messages.toolResponse(call->id, call->name, call->argsJSON);
    }
    messages.toolResponse("id", "name", bytes);
    messages.clientText(bytes);
    return 0;
}
