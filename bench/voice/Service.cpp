#include "bench/voice/Service.h"

#include "VeltoShared/voice/Base64.h"

#include <algorithm>

namespace velto::bench {
namespace {

std::string geminiAudio() {
    return R"({"serverContent":{"modelTurn":{"parts":[{"inlineData":{"mimeType":"audio/pcm;rate=24000","data":")" +
           base64Of(kPcmBytes) + R"("}}]}}})";
}

std::string openAIAudio() {
    return R"({"type":"response.audio.delta","event_id":"event_C0dH4xBqTkWn2vY7LmRjZ",)"
           R"("response_id":"resp_C0dH3mPwXsQe9uT5KfGbA","item_id":"item_C0dH3tNrVcYz8iJ6DhLoE",)"
           R"("output_index":0,"content_index":0,"delta":")" +
           base64Of(kPcmBytes) + R"("})";
}

} // namespace

std::vector<std::byte> someBytes(std::size_t count) {
    std::vector<std::byte> bytes(count);
    std::uint32_t state = 1;
    for (auto& byte : bytes)
        byte = static_cast<std::byte>((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

std::string base64Of(std::size_t count) {
    std::string text(Base64::encodedSize(count), ' ');
    Base64::encode(someBytes(count), text.data());
    return text;
}

Service::Service(VoiceProvider provider) : provider_(provider) {
    std::vector<std::string_view> others;
    if (provider == VoiceProvider::gemini) {
        setup_ = frame(R"({"setupComplete":{}})");
        audio_ = frame(geminiAudio());
        others = {R"({"serverContent":{"outputTranscription":{"text":"The table for four is "}}})",
                  R"({"serverContent":{"inputTranscription":{"text":"At eight in the evening?"}}})",
                  R"({"usageMetadata":{"promptTokenCount":321,"totalTokenCount":456}})"};
        end_ = frame(R"({"serverContent":{"turnComplete":true}})");
    } else {
        setup_ = frame(R"({"type":"session.updated","session":{}})");
        audio_ = frame(openAIAudio());
        others = {
            R"({"type":"response.created","response":{"id":"resp_1","status":"in_progress"}})",
            R"({"type":"response.audio_transcript.delta","delta":"The table for four is "})",
            R"({"type":"conversation.item.input_audio_transcription.completed","transcript":"At eight?"})"};
        end_ = frame(R"({"type":"response.done","response":{"status":"completed"}})");
    }
    for (const auto& other : others) {
        talk_.push_back(frame(other));
        talk_.insert(talk_.end(), 2, audio_);
    }
}

std::string_view Service::audioKey() const {
    return provider_ == VoiceProvider::gemini ? R"("data":")" : R"("delta":")";
}

std::string Service::frame(std::string_view message) const {
    return test::ServerPeer::frame(provider_ == VoiceProvider::gemini ? 2 : 1, message);
}

void Service::serveAudio(test::ServerPeer& peer, int count) const {
    serve(peer, {audio_}, {count});
}

void Service::serveTalk(test::ServerPeer& peer, std::vector<int> counts) const {
    serve(peer, talk_, counts);
}

void Service::serve(test::ServerPeer& peer, const std::vector<std::string>& frames,
                    const std::vector<int>& counts) const {
    peer.accept();
    peer.read();
    peer.send(setup_);
    for (std::size_t round = 0; auto message = peer.read();) {
        if (message->opcode == 8)
            return;
        if (message->payload.find(R"("go")") == std::string::npos)
            continue;
        const int count = counts[std::min(round++, counts.size() - 1)];
        for (int i = 0; i < count; ++i)
            peer.send(frames[static_cast<std::size_t>(i) % frames.size()]);
        peer.send(end_);
    }
}

} // namespace velto::bench
