// What a client of each provider sends, as it should be.
#pragma once

#include "rehearsal/server/ServerProtocol.h"

#include <gtest/gtest.h>

namespace velto::rehearsal {

struct ClientTexts {
    std::string path;
    std::string configuration;
    std::string audio;               ///< two samples, 1 and 2
    std::vector<std::string> text;   ///< a text turn
    std::vector<std::string> answer; ///< to the call of `end_call`
};

inline const std::string kResponseCreate = R"({"type":"response.create"})";

inline const ClientTexts& clientTexts(VoiceProvider provider) {
    static const ClientTexts gemini{
        "/ws/google.ai.generativelanguage.v1beta.GenerativeService.BidiGenerateContent",
        R"({"setup":{"model":"models/gemini-3.1-flash-live-preview","generationConfig":{"responseModalities":["AUDIO"],)"
        R"("speechConfig":{"voiceConfig":{"prebuiltVoiceConfig":{"voiceName":"Puck"}}}},)"
        R"("systemInstruction":{"parts":[{"text":"Goal: a table."}]},)"
        R"("realtimeInputConfig":{"automaticActivityDetection":{"disabled":false,"silenceDurationMs":500},)"
        R"("activityHandling":"START_OF_ACTIVITY_INTERRUPTS"},"inputAudioTranscription":{},"outputAudioTranscription":{},)"
        R"("tools":[{"functionDeclarations":[{"name":"end_call",)"
        R"("description":"Hang up the phone call. Call this once the goal is complete and you have said goodbye.",)"
        R"("parameters":{"type":"OBJECT","properties":{"reason":{"type":"STRING",)"
        R"("description":"Short reason the call is ending (e.g. 'goal met', 'no longer needed')."}}}}]}]}})",
        R"({"realtimeInput":{"audio":{"mimeType":"audio/pcm;rate=16000","data":"AQACAA=="}}})",
        {R"({"clientContent":{"turns":[{"role":"user","parts":[{"text":"Call goal: a table"}]}],"turnComplete":true}})"},
        {R"({"toolResponse":{"functionResponses":[{"id":"function-call-1","name":"end_call","response":{"status":"hanging_up"}}]}})"}};
    static const ClientTexts openAI{
        "/v1/realtime",
        R"({"type":"session.update","session":{"modalities":["audio","text"],"instructions":"Goal: a table.",)"
        R"("voice":"alloy","input_audio_format":"pcm16","output_audio_format":"pcm16",)"
        R"("input_audio_transcription":{"model":"whisper-1"},"turn_detection":{"type":"server_vad"},)"
        R"("tools":[{"type":"function","name":"end_call",)"
        R"("description":"Hang up the phone call. Call this once the goal is complete and you have said goodbye.",)"
        R"("parameters":{"type":"object","properties":{"reason":{"type":"string",)"
        R"("description":"Short reason the call is ending."}}}}],"tool_choice":"auto"}})",
        R"({"type":"input_audio_buffer.append","audio":"AQACAA=="})",
        {R"({"type":"conversation.item.create","item":{"type":"message","role":"user",)"
         R"("content":[{"type":"input_text","text":"Call goal: a table"}]}})",
         kResponseCreate},
        {R"({"type":"conversation.item.create","item":{"type":"function_call_output",)"
         R"("call_id":"call_Rehearsal000001","output":"{\"status\":\"hanging_up\"}"}})",
         kResponseCreate}};
    return provider == VoiceProvider::gemini ? gemini : openAI;
}

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

} // namespace velto::rehearsal
