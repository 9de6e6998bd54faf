// The model of a rehearsal on a clock of its own, in both protocols.
#include "rehearsal/server/Conversation.h"
#include "rehearsal/server/PcmText.h"
#include "tests/rehearsal/ClientTexts.h"

#include <boost/json.hpp>

#include <set>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;
using namespace std::chrono_literals;
using Said = std::vector<std::string>;

/// The client plays what it gets at once.
struct ConversationTest : ForEachProvider {
    Scenario scenario;
    Conversation::Voices voices;
    std::vector<json::value> sent;
    std::unique_ptr<ServerProtocol> protocol =
        makeServerProtocol(texts().path, [this](const Outgoing& message) {
            sent.push_back(json::parse(message.text));
            EXPECT_EQ(message.binary, message.text.starts_with(R"({"serverContent":{"modelTurn")"));
        });
    std::optional<Conversation> conversation;
    Conversation::Time now{};
    Samples audio;
    std::string agentText;
    bool responding = false; ///< between the begin and the end of a response (OpenAI)

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
    /// How the last turn ends.
    static Said withEnd(Said before) {
        for (const auto* word :
             {isGemini() ? "turnComplete" : "end_call", isGemini() ? "end_call" : "turnComplete"})
            before.emplace_back(word);
        return before;
    }

    void keep(const json::value& data) {
        EXPECT_LE(data.get_string().size(), 64000U) << "48 000 bytes at most";
        const auto samples = PcmText::decode(data.get_string()).value();
        audio.insert(audio.end(), samples.begin(), samples.end());
    }
    /// What a client makes of a message; empty when it is not interested.
    std::string understood(const json::object& message) {
        if (message.contains("setupComplete"))
            return "ready";
        if (message.contains("toolCall"))
            return "end_call";
        const auto& entry = *message.at("serverContent").get_object().begin();
        const auto key = std::string(entry.key());
        if (key == "modelTurn") {
            keep(entry.value().at("parts").at(0).at("inlineData").at("data"));
            return "sound";
        }
        if (key == "outputTranscription") {
            agentText += entry.value().at("text").get_string();
            return "";
        }
        return key == "inputTranscription" ? "caller: " + std::string(entry.value().at("text").get_string())
                                           : key;
    }
    std::string understoodOpenAI(const json::object& message) {
        const auto type = std::string(message.at("type").get_string());
        if (type == "response.created" || type == "response.done")
            responding = type == "response.created";
        if (type == "session.updated")
            return "ready";
        if (type == "response.audio.delta") {
            keep(message.at("delta"));
            return "sound";
        }
        if (type == "response.audio_transcript.delta")
            agentText += message.at("delta").get_string();
        if (const auto* transcript = message.if_contains("transcript");
            transcript != nullptr && type.ends_with("transcription.completed") && *transcript != "")
            return "caller: " + std::string(transcript->get_string());
        if (type == "input_audio_buffer.speech_started" && responding)
            return "interrupted";
        return type == "response.done"                           ? "turnComplete"
               : type == "response.function_call_arguments.done" ? "end_call"
                                                                 : "";
    }
    /// What was sent, as a client understands it, and forgets it; runs of sound in one.
    Said said() {
        Said all;
        for (const auto& message : std::exchange(sent, {})) {
            const auto& object = message.get_object();
            auto word = isGemini() ? understood(object) : understoodOpenAI(object);
            if (!word.empty() && (word != "sound" || all.empty() || all.back() != word))
                all.push_back(std::move(word));
        }
        return all;
    }
};

TEST_P(ConversationTest, TurnsAreTakenOnMarksAloneAndTheCallEndsWithTheTool) {
    begin({{1, Side::callee, "Hello?"},
           {2, Side::agent, "Good day to you."},
           {3, Side::callee, "Yes?"},
           {4, Side::agent, "Goodbye."}});
    EXPECT_EQ(said(), Said{"ready"});
    hear(callee(1), 1000ms);
    EXPECT_EQ(said(), Said{"caller: Hello?"}) << "heard, and no answer before it is asked to speak";
    conversation->greet(now);
    wait(6000ms);
    EXPECT_EQ(said(), (Said{"sound", "turnComplete"}));
    EXPECT_EQ(audio, voices.at(2).samples) << "the whole line";
    EXPECT_EQ(agentText, "Good day to you.");

    hear(callee(99), 600ms);
    Samples words;
    appendTones(words, std::array{300.0, 410.0}, 4000, 1500ms, protocol->inputRate());
    hear(words, 3000ms);
    EXPECT_EQ(said(), Said{}) << "sound without the mark of a line of the callee leads to nothing";
    hear(callee(3), 490ms);
    EXPECT_EQ(said(), Said{"caller: Yes?"}) << "not before half a second of silence";
    wait(100ms);
    EXPECT_EQ(said(), Said{"sound"});
    wait(5000ms);
    EXPECT_EQ(said(), withEnd({"sound"}));
    EXPECT_EQ(conversation->measures().at("toolAnswered"), false);
    conversation->toolAnswered();
    EXPECT_EQ(conversation->measures().at("toolAnswered"), true);
    EXPECT_EQ(said(), isGemini() ? Said{} : Said{"turnComplete"})
        << "an empty response, where one is asked for";
}

TEST_P(ConversationTest, SoundGoesOutFasterThanItPlaysAndIsCutByTheCaller) {
    begin({{1, Side::agent,
            "This is a very long line that goes on and on, about one thing and then another, "
            "and does not seem to end at all for anybody who has to listen to it."},
           {2, Side::callee, "Stop.", 0.2, 1.0},
           {3, Side::agent, "Fine."}});
    conversation->greet(now);
    wait(1000ms);
    EXPECT_EQ(said(), (Said{"ready", "sound"}));
    const auto ahead = audio.size();
    EXPECT_GT(ahead, 2 * 24000U) << "ahead of what can have played in a second";
    hear(callee(2), 0ms);
    const auto cut = said();
    EXPECT_EQ(std::count(cut.begin(), cut.end(), "interrupted"), 1);
    EXPECT_EQ(std::count(cut.begin(), cut.end(), "turnComplete"), 1);
    EXPECT_LT(audio.size(), voices.at(1).samples.size()) << "the rest is not sent";
    EXPECT_LT(agentText.size(), scenario.lines[0].text.size()) << "transcribed as far as it was heard";
    wait(5000ms);
    EXPECT_EQ(said(), withEnd({"caller: Stop.", "sound"}));
}

TEST_P(ConversationTest, WordsOverALineThatHasPlayedInterruptNothingAndASilentCalleeIsGreeted) {
    begin({{1, Side::callee, "Hello?"},
           {2, Side::agent, "Good day."},
           {3, Side::callee, "Yes?"},
           {4, Side::agent, "Bye."}});
    conversation->greet(now);
    wait(3900ms);
    EXPECT_EQ(said(), Said{"ready"});
    wait(200ms);
    EXPECT_EQ(said(), Said{"sound"}) << "nobody said hello: the model begins";
    wait(5000ms);
    hear(callee(3), 6000ms);
    EXPECT_EQ(said(), withEnd({"sound", "turnComplete", "caller: Yes?", "sound"}));
}

INSTANTIATE_TEST_SUITE_P(, ConversationTest, testing::ValuesIn(kAllVoiceProviders), ForEachProvider::name);

struct OpenAIConversationTest : ConversationTest {
    /// The types of what was sent, runs of deltas in one; looks at what ties the events together.
    Said types() const {
        Said all;
        std::set<std::string> events;
        std::string response;
        for (const auto& message : sent) {
            const auto& event = message.get_object();
            events.emplace(event.at("event_id").get_string());
            auto type = std::string(event.at("type").get_string());
            if (type == "response.created")
                response = event.at("response").at("id").get_string();
            if (const auto* id = event.if_contains("response_id")) {
                EXPECT_EQ(id->get_string(), response) << type;
            }
            if (type == "response.audio_transcript.delta")
                type = "response.audio.delta";
            if (all.empty() || all.back() != type || !type.ends_with("delta"))
                all.push_back(std::move(type));
        }
        EXPECT_EQ(events.size(), sent.size());
        return all;
    }
    const json::object& last(std::string_view type) const {
        const auto found = std::find_if(sent.rbegin(), sent.rend(), [&](const json::value& event) {
            return event.at("type").get_string() == type;
        });
        return found == sent.rend() ? sent.back().get_object() : found->get_object();
    }
};

TEST_P(OpenAIConversationTest, AllEventsOfTheServiceComeInItsOrder) {
    begin({{1, Side::callee, "Hello?"}, {2, Side::agent, "Good day."}});
    conversation->greet(now);
    hear(callee(1), 8000ms);
    const std::string buffer = "input_audio_buffer.";
    const std::string transcription = "conversation.item.input_audio_transcription.";
    EXPECT_EQ(types(),
              (Said{"session.created", "session.updated",
                    // The caller's turn.
                    buffer + "speech_started", buffer + "speech_stopped", buffer + "committed",
                    "conversation.item.created", transcription + "delta", transcription + "completed",
                    // The line.
                    "response.created", "rate_limits.updated", "response.output_item.added",
                    "conversation.item.created", "response.content_part.added", "response.audio.delta",
                    "response.audio.done", "response.audio_transcript.done", "response.content_part.done",
                    "response.output_item.done",
                    // The call of the tool.
                    "response.output_item.added", "conversation.item.created",
                    "response.function_call_arguments.delta", "response.function_call_arguments.done",
                    "response.output_item.done", "response.done"}));
    const auto& call = last("response.output_item.added").at("item");
    EXPECT_EQ(call.at("type"), "function_call");
    EXPECT_EQ(call.at("name"), "end_call");
    EXPECT_EQ(call.at("call_id"), last("response.function_call_arguments.done").at("call_id"));
    EXPECT_EQ(last("response.function_call_arguments.done").at("arguments"), R"({"reason":"goal met"})");
    EXPECT_EQ(last("response.done").at("response").at("status"), "completed");
    EXPECT_EQ(last("response.done").at("response").at("output").get_array().size(), 2U);
    EXPECT_EQ(last("response.audio_transcript.done").at("transcript"), "Good day.");
}

TEST_P(OpenAIConversationTest, AResponseThatIsTalkedOverIsCancelled) {
    begin({{1, Side::agent, "A line that is long enough to be talked over."},
           {2, Side::callee, "Stop.", 0.2, 1.0},
           {3, Side::agent, "Fine."}});
    conversation->greet(now);
    wait(1500ms);
    sent.clear();
    Samples words;
    appendTones(words, std::array{300.0, 410.0}, 4000, 1000ms, protocol->inputRate());
    hear(words, 600ms);
    EXPECT_EQ(last("response.done").at("response").at("status"), "cancelled");
    EXPECT_EQ(last("response.output_item.done").at("item").at("status"), "incomplete");
    EXPECT_EQ(last("input_audio_buffer.speech_started").at("audio_start_ms"), 1500);
    EXPECT_EQ(last("input_audio_buffer.speech_stopped").at("audio_end_ms"), 2500);
}

INSTANTIATE_TEST_SUITE_P(, OpenAIConversationTest, testing::Values(VoiceProvider::openai));

} // namespace
} // namespace velto::rehearsal
