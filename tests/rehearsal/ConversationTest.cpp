// The model of a rehearsal on a clock of its own, in both protocols.
#include "rehearsal/server/Conversation.h"
#include "rehearsal/server/PcmText.h"
#include "tests/rehearsal/ClientTexts.h"

#include <boost/json.hpp>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;
using namespace std::chrono_literals;

/// The client plays what it gets at once.
struct ConversationTest : ForEachProvider {
    Scenario scenario;
    Conversation::Voices voices;
    std::unique_ptr<ServerProtocol> protocol =
        makeServerProtocol(texts().path, [this](const Outgoing& message) {
            const auto event = json::parse(message.text).as_object();
            if (const auto* type = event.if_contains("type"); type != nullptr) {
                if (*type == "response.audio.delta")
                    keep(event.at("delta"));
                if (*type == "response.audio_transcript.delta")
                    agentText += event.at("delta").get_string();
            } else if (const auto* content = event.if_contains("serverContent")) {
                if (const auto* turn = content->get_object().if_contains("modelTurn"))
                    keep(turn->at("parts").at(0).at("inlineData").at("data"));
                if (const auto* words = content->get_object().if_contains("outputTranscription"))
                    agentText += words->at("text").get_string();
            }
        });
    std::optional<Conversation> conversation;
    Conversation::Time now{};
    Samples audio;
    std::string agentText;

    void keep(const json::value& data) {
        const auto samples = PcmText::decode(data.get_string()).value();
        audio.insert(audio.end(), samples.begin(), samples.end());
    }
    void begin(std::vector<ScenarioLine> lines) {
        scenario.goal = "a table";
        scenario.lines = std::move(lines);
        for (const auto& line : scenario.lines)
            if (line.side == Side::agent)
                voices.emplace(line.mark, speakLine(line.mark, line.text, "en-us", 24000));
        conversation.emplace(scenario, voices, *protocol, [](const json::object&) {});
        protocol->connected();
        conversation->start(now);
    }
    /// Plays samples to the model in real time, and silence after them.
    void hear(Samples samples, Milliseconds silence = 0ms) {
        appendSilence(samples, silence, protocol->inputRate());
        const auto step = frameCount(10ms, protocol->inputRate());
        for (std::size_t at = 0; at + step <= samples.size(); at += step) {
            now += 10ms;
            conversation->hear(std::span(samples).subspan(at, step), now);
            conversation->tick(now);
        }
    }
    void wait(Milliseconds time) { hear({}, time); }
    Samples callee(int mark) const {
        return speakLine(mark, "Some words of the callee.", "en-gb", protocol->inputRate()).samples;
    }
};

TEST_P(ConversationTest, SoundGoesOutFasterThanItPlaysAndIsCutByTheCaller) {
    begin({{1, Side::agent,
            "This is a very long line that goes on and on, about one thing and then another, "
            "and does not seem to end at all for anybody who has to listen to it."},
           {2, Side::callee, "Stop.", 0.2, 1.0},
           {3, Side::agent, "Fine."}});
    conversation->greet(now);
    wait(1000ms);
    EXPECT_GT(audio.size(), 2 * 24000U) << "ahead of what can have played in a second";
    hear(callee(2), 0ms);
    const auto cut = audio.size();
    EXPECT_LT(cut, voices.at(1).samples.size()) << "the rest is not sent";
    EXPECT_LT(agentText.size(), scenario.lines[0].text.size()) << "transcribed as far as it was heard";
    wait(5000ms);
    EXPECT_EQ(audio.size() - cut, voices.at(3).samples.size()) << "what comes next is whole";
}

INSTANTIATE_TEST_SUITE_P(, ConversationTest, testing::ValuesIn(kAllVoiceProviders), ForEachProvider::name);

} // namespace
} // namespace velto::rehearsal
