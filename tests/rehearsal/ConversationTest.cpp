// The model of a rehearsal on a clock of its own.
#include "rehearsal/server/Conversation.h"
#include "rehearsal/server/PcmText.h"
#include "tests/rehearsal/ClientTexts.h"

#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

TEST(Conversation, SoundGoesOutFasterThanItPlaysAndIsCutByTheCaller) {
    Scenario scenario;
    scenario.lines = {{1, Side::agent,
                       "This is a very long line that goes on and on, about one thing and then another, "
                       "and does not seem to end at all for anybody who has to listen to it."},
                      {2, Side::callee, "Stop.", 0.2, 1.0},
                      {3, Side::agent, "Fine."}};
    Conversation::Voices voices;
    for (const auto& line : scenario.lines)
        if (line.side == Side::agent)
            voices.emplace(line.mark, speakLine(line.mark, line.text, "en-us", 24000));
    std::size_t sent = 0; // samples
    std::string transcribed;
    const auto protocol =
        makeServerProtocol(clientTexts(VoiceProvider::openai).path, [&](const Outgoing& message) {
            const auto event = json::parse(message.text);
            if (event.at("type") == "response.audio.delta")
                sent += PcmText::decode(event.at("delta").get_string())->size();
            if (event.at("type") == "response.audio_transcript.delta")
                transcribed += event.at("delta").get_string();
        });
    Conversation conversation(scenario, voices, *protocol, [](const json::object&) {});
    Conversation::Time now{};
    // Sound for the model in real time, and silence after it.
    const auto hear = [&](Samples samples, Milliseconds silence) {
        appendSilence(samples, silence, protocol->inputRate());
        const auto step = frameCount(Milliseconds(10), protocol->inputRate());
        for (std::size_t at = 0; at + step <= samples.size(); at += step) {
            now += std::chrono::milliseconds(10);
            conversation.hear(std::span(samples).subspan(at, step), now);
            conversation.tick(now);
        }
    };
    protocol->connected();
    conversation.start(now);
    conversation.greet(now);
    hear({}, Milliseconds(1000));
    EXPECT_GT(sent, 2 * 24000U) << "ahead of what can have played in a second";
    hear(speakLine(2, "Stop.", "en-gb", protocol->inputRate()).samples, Milliseconds(0));
    const auto cut = sent;
    EXPECT_LT(cut, voices.at(1).samples.size()) << "the rest is not sent";
    EXPECT_LT(transcribed.size(), scenario.lines[0].text.size()) << "transcribed as far as it was heard";
    hear({}, Milliseconds(5000));
    EXPECT_EQ(sent - cut, voices.at(3).samples.size()) << "what comes next is whole";
}

} // namespace
} // namespace velto::rehearsal
