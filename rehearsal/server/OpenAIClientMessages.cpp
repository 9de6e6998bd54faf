// Checks what a client of the OpenAI Realtime API sends.
#include "rehearsal/server/OpenAIClientMessages.h"

#include "rehearsal/server/JSONNode.h"
#include "rehearsal/server/PcmText.h"

#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

void checkTools(const JSONNode& node) {
    const auto tool = node.only().members({"type", "name", "description", "parameters"});
    tool[0].isText("function");
    tool[1].isText(kEndCall);
    tool[2].isText(kEndCallDescription);
    const auto parameters = tool[3].members({"type", "properties"});
    parameters[0].isText("object");
    const auto reason = parameters[1].member("reason").members({"type", "description"});
    reason[0].isText("string");
    reason[1].isText("Short reason the call is ending.");
}

ConfigurationMessage parseSession(const JSONNode& node) {
    const auto session =
        node.members({"modalities", "instructions", "voice", "input_audio_format", "output_audio_format",
                      "input_audio_transcription", "turn_detection", "tools", "tool_choice"});
    session[0].is(boost::json::array{"audio", "text"});
    session[3].isText("pcm16");
    session[4].isText("pcm16");
    session[5].member("model").isText("whisper-1");
    session[6].member("type").isText("server_vad");
    checkTools(session[7]);
    session[8].isText("auto");
    return {session[2].nonEmpty(), session[1].nonEmpty()};
}

AudioMessage parseAudio(const JSONNode& audio) {
    auto samples = PcmText::decode(audio.text());
    if (!samples)
        audio.refuse("is not padded base64 of whole samples");
    return {std::move(*samples)};
}

ClientMessage parseItem(const JSONNode& item) {
    const auto type = item.anyMember("type");
    if (type.text() == "function_call_output") {
        const auto output = item.members({"type", "call_id", "output"});
        return ToolResponseMessage{output[1].text(), {}, output[2].text()};
    }
    type.isText("message");
    const auto message = item.members({"type", "role", "content"});
    message[1].isText("user");
    const auto content = message[2].only().members({"type", "text"});
    content[0].isText("input_text");
    return TextMessage{content[1].nonEmpty()};
}

OpenAIClientMessage parse(const JSONNode& message) {
    const auto type = message.anyMember("type");
    const auto name = type.text();
    if (name == "session.update")
        return parseSession(message.members({"type", "session"})[1]);
    if (name == "input_audio_buffer.append")
        return parseAudio(message.members({"type", "audio"})[1]);
    if (name == "conversation.item.create")
        return parseItem(message.members({"type", "item"})[1]);
    if (name == "response.create") {
        static_cast<void>(message.members({"type"}));
        return ResponseRequest{};
    }
    type.refuse("is unknown: '" + name.substr(0, 40) + "'");
}

} // namespace

Checked<OpenAIClientMessage> parseOpenAIMessage(std::string_view text) {
    return parseChecked(text, parse);
}

} // namespace velto::rehearsal
