// Checks what a client of the Gemini Live API sends.
#include "rehearsal/server/GeminiClientMessages.h"

#include "rehearsal/server/JSONNode.h"
#include "rehearsal/server/PcmText.h"

namespace velto::rehearsal {
namespace {

void checkActivityDetection(const JSONNode& node) {
    const auto input = node.members({"automaticActivityDetection", "activityHandling"});
    const auto detection = input[0].members({"disabled", "silenceDurationMs"});
    detection[0].is(false);
    detection[1].is(500);
    input[1].isText("START_OF_ACTIVITY_INTERRUPTS");
}

void checkTools(const JSONNode& node) {
    const auto function =
        node.only().member("functionDeclarations").only().members({"name", "description", "parameters"});
    function[0].isText(kEndCall);
    function[1].isText(kEndCallDescription);
    const auto parameters = function[2].members({"type", "properties"});
    parameters[0].isText("OBJECT");
    const auto reason = parameters[1].member("reason").members({"type", "description"});
    reason[0].isText("STRING");
    reason[1].isText("Short reason the call is ending (e.g. 'goal met', 'no longer needed').");
}

ConfigurationMessage parseSetup(const JSONNode& node) {
    const auto setup = node.members({"model", "generationConfig", "systemInstruction", "realtimeInputConfig",
                                     "inputAudioTranscription", "outputAudioTranscription", "tools"});
    ConfigurationMessage message;
    const auto model = setup[0].text();
    constexpr std::string_view prefix = "models/";
    if (!model.starts_with(prefix) || model.size() == prefix.size())
        setup[0].refuse("does not name a model");
    const auto generation = setup[1].members({"responseModalities", "speechConfig"});
    generation[0].only().isText("AUDIO");
    message.voice =
        generation[1].member("voiceConfig").member("prebuiltVoiceConfig").member("voiceName").nonEmpty();
    message.systemInstruction = setup[2].member("parts").only().member("text").nonEmpty();
    checkActivityDetection(setup[3]);
    static_cast<void>(setup[4].members({}));
    static_cast<void>(setup[5].members({}));
    checkTools(setup[6]);
    return message;
}

AudioMessage parseAudio(const JSONNode& node) {
    const auto audio = node.member("audio").members({"mimeType", "data"});
    audio[0].isText("audio/pcm;rate=16000");
    auto samples = PcmText::decode(audio[1].text());
    if (!samples)
        audio[1].refuse("is not padded base64 of whole samples");
    return {std::move(*samples)};
}

TextMessage parseText(const JSONNode& node) {
    const auto content = node.members({"turns", "turnComplete"});
    content[1].is(true);
    const auto turn = content[0].only().members({"role", "parts"});
    turn[0].isText("user");
    return {turn[1].only().member("text").nonEmpty()};
}

ToolResponseMessage parseToolResponse(const JSONNode& node) {
    const auto answer = node.member("functionResponses").only().members({"id", "name", "response"});
    return {answer[0].text(), answer[1].text(), answer[2].container()};
}

ClientMessage parse(const JSONNode& message) {
    const auto key = message.onlyKey();
    if (key == "setup")
        return parseSetup(message.member(key));
    if (key == "realtimeInput")
        return parseAudio(message.member(key));
    if (key == "clientContent")
        return parseText(message.member(key));
    if (key == "toolResponse")
        return parseToolResponse(message.member(key));
    message.refuse("is unknown: '" + std::string(key.substr(0, 40)) + "'");
}

} // namespace

Checked<ClientMessage> parseGeminiMessage(std::string_view text) {
    return parseChecked(text, parse);
}

} // namespace velto::rehearsal
