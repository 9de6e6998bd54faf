// The voice server's strictness, its conversation, and its socket.
#include "rehearsal/LocalAuthority.h"
#include "rehearsal/server/PcmText.h"
#include "rehearsal/server/VoiceServer.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/json.hpp>

#include <gtest/gtest.h>

#include <thread>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;
using namespace std::chrono_literals;

const std::string kSetup =
    R"({"setup":{"model":"models/gemini-3.1-flash-live-preview","generationConfig":{"responseModalities":["AUDIO"],)"
    R"("speechConfig":{"voiceConfig":{"prebuiltVoiceConfig":{"voiceName":"Puck"}}}},)"
    R"("systemInstruction":{"parts":[{"text":"Goal: a table."}]},)"
    R"("realtimeInputConfig":{"automaticActivityDetection":{"disabled":false,"silenceDurationMs":500},)"
    R"("activityHandling":"START_OF_ACTIVITY_INTERRUPTS"},"inputAudioTranscription":{},"outputAudioTranscription":{},)"
    R"("tools":[{"functionDeclarations":[{"name":"end_call",)"
    R"("description":"Hang up the phone call. Call this once the goal is complete and you have said goodbye.",)"
    R"("parameters":{"type":"OBJECT","properties":{"reason":{"type":"STRING",)"
    R"("description":"Short reason the call is ending (e.g. 'goal met', 'no longer needed')."}}}}]}]}})";
const std::string kText =
    R"({"clientContent":{"turns":[{"role":"user","parts":[{"text":"Call goal: a table"}]}],"turnComplete":true}})";
const std::string kAudio =
    R"({"realtimeInput":{"audio":{"mimeType":"audio/pcm;rate=16000","data":"AQACAA=="}}})";
const std::string kResponse =
    R"({"toolResponse":{"functionResponses":[{"id":"7","name":"end_call","response":{"status":"hanging_up"}}]}})";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(Protocol, GoodMessagesAreReadAndEveryDeviationIsRefused) {
    for (const auto& good : {kSetup, kText, kAudio, kResponse, replaced(kAudio, "AQACAA==", ""),
                             replaced(kResponse, R"({"status":"hanging_up"})", "[1]")})
        EXPECT_TRUE(parseClientMessage(good)) << parseClientMessage(good).error().what;
    EXPECT_EQ(std::get<AudioMessage>(*parseClientMessage(kAudio)).samples, (Samples{1, 2}));
    EXPECT_EQ(std::get<SetupMessage>(*parseClientMessage(kSetup)).voice, "Puck");

    // Each key of each message in turn: missing, beside an unknown one, and of another type.
    const std::function<void(const json::value&, const std::function<void(json::value)>&)> deviate =
        [&](const json::value& value, const std::function<void(json::value)>& use) {
            if (const auto* object = value.if_object()) {
                auto more = *object;
                more["unknown"] = 1;
                use(more);
                for (const auto& entry : *object) {
                    auto less = *object;
                    less.erase(entry.key());
                    use(less);
                    deviate(entry.value(), [&](json::value changed) {
                        auto other = *object;
                        other[entry.key()] = std::move(changed);
                        use(other);
                    });
                }
            } else if (const auto* list = value.if_array()) {
                use(json::array{});
                use(json::array{list->front(), list->front()});
                deviate(list->front(), [&](json::value changed) { use(json::array{std::move(changed)}); });
            }
            if (!value.is_object())
                use(json::object{});
            use(nullptr);
            use(17);
        };
    for (const auto& good : {kSetup, kText, kAudio}) {
        int tried = 0;
        deviate(json::parse(good), [&](const json::value& changed) {
            ++tried;
            EXPECT_FALSE(parseClientMessage(json::serialize(changed))) << changed;
        });
        EXPECT_GT(tried, 10);
    }
    const std::vector<std::pair<std::string, std::string>> wrong{
        {kSetup, "500"},        {kSetup, "false"},    {kSetup, "AUDIO"}, {kSetup, "models/"},
        {kSetup, "STRING"},     {kSetup, "end_call"}, {kText, "user"},   {kText, "true"},
        {kAudio, "rate=16000"}, {kSetup, "OBJECT"},   {kSetup, "START"}, {kSetup, "goodbye."},
        {kSetup, "no longer"}};
    for (const auto& [good, part] : wrong)
        EXPECT_FALSE(parseClientMessage(replaced(good, part,
                                                 part == "500"     ? "500.0"
                                                 : part == "true"  ? "false"
                                                 : part == "false" ? "true"
                                                                   : "x")))
            << part;
    for (const auto* data : {"AQACAA", "AQACAA=", "AQACAB==", "AQAC\\nAA==", "AQACAQ==AQACAQ==", "AQAC",
                             "AQA C", "====", "AQ-CAA=="})
        EXPECT_FALSE(parseClientMessage(replaced(kAudio, "AQACAA==", data))) << data;
    for (const auto* text : {"", "{", "[]", "null", "{}", R"({"other":{}})", "{\"setup\": {}}", "\xff"})
        EXPECT_FALSE(parseClientMessage(text)) << text;
    EXPECT_FALSE(parseClientMessage(kAudio + "\n"));
    EXPECT_FALSE(parseClientMessage(replaced(kResponse, R"({"status":"hanging_up"})", "\"ok\"")));
}

TEST(Protocol, TheOrderOfASessionIsHeld) {
    const auto message = [](const std::string& text) { return *parseClientMessage(text); };
    const auto codeOf = [](const std::optional<Violation>& violation) {
        return violation ? violation->closeCode : 0;
    };
    ProtocolOrder order;
    EXPECT_EQ(codeOf(order.accept(message(kAudio))), Violation::policy) << "before the setup";
    EXPECT_EQ(codeOf(order.accept(message(kSetup))), 0);
    EXPECT_EQ(codeOf(order.accept(message(kSetup))), Violation::policy);
    EXPECT_EQ(codeOf(order.accept(message(kAudio))), 0) << "does not wait for the setup to complete";
    EXPECT_EQ(codeOf(order.accept(message(kText))), Violation::policy) << "does";
    order.setupCompleted();
    EXPECT_EQ(codeOf(order.accept(message(kText))), 0);
    EXPECT_EQ(codeOf(order.accept(message(kText))), Violation::policy);
    EXPECT_EQ(codeOf(order.accept(message(kResponse))), Violation::policy) << "nobody asked";
    order.toolCalled("7", "end_call");
    EXPECT_EQ(codeOf(order.accept(message(replaced(kResponse, "\"7\"", "\"8\"")))), Violation::policy);
    EXPECT_EQ(codeOf(order.accept(message(replaced(kResponse, "end_call", "end")))), Violation::policy);
    EXPECT_FALSE(order.toolAnswered());
    EXPECT_EQ(codeOf(order.accept(message(kResponse))), 0);
    EXPECT_TRUE(order.toolAnswered());
    EXPECT_EQ(codeOf(order.accept(message(kResponse))), Violation::policy) << "twice";
}

/// A conversation on a clock of its own; the client plays what it gets at once.
struct ConversationTest : testing::Test {
    Scenario scenario;
    Conversation::Voices voices;
    std::vector<json::value> sent;
    std::vector<json::object> reports;
    std::optional<Conversation> conversation;
    Conversation::Time now{};

    void begin(std::vector<ScenarioLine> lines, CallEnd end = CallEnd::agentHangsUp) {
        scenario.goal = "a table";
        scenario.lines = std::move(lines);
        scenario.end = end;
        for (const auto& line : scenario.lines)
            if (line.side == Side::agent)
                voices.emplace(line.mark, speakLine(line.mark, line.text, "en-us", 24000));
        conversation.emplace(
            scenario, voices,
            Conversation::Hooks{[this](const Outgoing& message) {
                                    sent.push_back(json::parse(message.text));
                                    EXPECT_EQ(message.binary, isAudio(sent.back()));
                                },
                                [this](json::object report) { reports.push_back(std::move(report)); }});
        conversation->start(now);
    }
    static bool isAudio(const json::value& message) {
        const auto* content = message.get_object().if_contains("serverContent");
        return content != nullptr && content->get_object().contains("modelTurn");
    }
    /// Plays samples to the model in real time, and silence after them.
    void hear(Samples samples, Milliseconds silence = 0ms) {
        appendSilence(samples, silence, 16000);
        for (std::size_t at = 0; at + 160 <= samples.size(); at += 160) {
            now += 10ms;
            conversation->hear(std::span(samples).subspan(at, 160), now);
            conversation->tick(now);
        }
    }
    void wait(Milliseconds time) { hear({}, time); }
    Samples callee(int mark) { return speakLine(mark, "Some words of the callee.", "en-gb", 16000).samples; }

    /// What was sent, in short, and forgets it; runs of one kind in one.
    std::vector<std::string> said() {
        std::vector<std::string> all;
        for (const auto& message : std::exchange(sent, {})) {
            if (message.get_object().contains("setupComplete")) {
                all.emplace_back("ready");
            } else if (message.get_object().contains("toolCall")) {
                all.emplace_back("end_call");
            } else {
                const auto& entry = *message.at("serverContent").get_object().begin();
                const auto key = std::string(entry.key());
                if (key == "modelTurn") {
                    const auto& data =
                        entry.value().at("parts").at(0).at("inlineData").at("data").get_string();
                    EXPECT_LE(data.size(), 64000U) << "48 000 bytes at most";
                    const auto samples = PcmText::decode(data).value();
                    audio.insert(audio.end(), samples.begin(), samples.end());
                    if (all.empty() || all.back() != "sound")
                        all.emplace_back("sound");
                } else if (key == "outputTranscription") {
                    agentText += entry.value().at("text").get_string();
                } else if (key == "inputTranscription") {
                    all.push_back("caller: " + std::string(entry.value().at("text").get_string()));
                } else {
                    all.push_back(key);
                }
            }
        }
        return all;
    }
    Samples audio;
    std::string agentText;
};
using Said = std::vector<std::string>;

TEST_F(ConversationTest, TurnsAreTakenOnMarksAloneAndTheCallEndsWithTheTool) {
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
    appendTones(words, std::array{300.0, 410.0}, 4000, 1500ms, 16000);
    hear(words, 3000ms);
    EXPECT_EQ(said(), Said{}) << "sound without the mark of a line of the callee leads to nothing";
    hear(callee(3), 490ms);
    EXPECT_EQ(said(), Said{"caller: Yes?"}) << "not before half a second of silence";
    wait(100ms);
    EXPECT_EQ(said(), Said{"sound"});
    wait(5000ms);
    EXPECT_EQ(said(), (Said{"sound", "turnComplete", "end_call"}));
}

TEST_F(ConversationTest, SoundGoesOutFasterThanItPlaysAndIsCutByTheCaller) {
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
    EXPECT_LT(audio.size(), voices.at(1).samples.size()) << "the rest is not sent";
    EXPECT_LT(agentText.size(), scenario.lines[0].text.size()) << "transcribed as far as it was heard";
    wait(5000ms);
    EXPECT_EQ(said(), (Said{"caller: Stop.", "sound", "turnComplete", "end_call"}));
}

TEST_F(ConversationTest, WordsOverALineThatHasPlayedInterruptNothingAndASilentCalleeIsGreeted) {
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
    EXPECT_EQ(said(), (Said{"sound", "turnComplete", "caller: Yes?", "sound", "turnComplete", "end_call"}));
}

// The socket, with a client as small as can be.

struct SocketTest : testing::Test {
    using Stream = boost::beast::websocket::stream<boost::asio::ssl::stream<boost::asio::ip::tcp::socket>>;

    boost::asio::io_context serverContext{1};
    boost::asio::io_context clientContext{1};
    LocalAuthority authority;
    std::vector<json::object> reports;
    std::unique_ptr<VoiceServer> server;
    std::string port;
    const std::string target =
        "/ws/google.ai.generativelanguage.v1beta.GenerativeService.BidiGenerateContent?key=a%20key%2f%26";

    SocketTest() {
        const auto issued = authority.issue("localhost");
        VoiceServerOptions options{issued.certificatePEM, issued.keyPEM, "a key/&", {}, {}};
        options.scenario.goal = "a table";
        options.scenario.lines = {{2, Side::agent, "Hi."}};
        options.voices.emplace(2, speakLine(2, "Hi.", "en-us", 24000));
        server = std::make_unique<VoiceServer>(
            std::move(options), [this](json::object report) { reports.push_back(std::move(report)); });
        boost::asio::co_spawn(serverContext, server->serve(), boost::asio::detached);
        while (reports.empty())
            serverContext.run_one();
        port = std::to_string(reports.front().at("port").to_number<int>());
        reports.clear();
        thread = std::thread([this] { serverContext.run(); });
    }
    ~SocketTest() override { stopServer(); }
    void stopServer() {
        serverContext.stop();
        if (thread.joinable())
            thread.join();
    }
    std::thread thread;
    boost::asio::ssl::context tls{boost::asio::ssl::context::tls_client};

    std::unique_ptr<Stream> connected() {
        tls.add_certificate_authority(boost::asio::buffer(authority.certificatePEM()));
        auto stream = std::make_unique<Stream>(clientContext, tls);
        auto& ssl = stream->next_layer();
        ssl.set_verify_mode(boost::asio::ssl::verify_peer);
        ssl.set_verify_callback(boost::asio::ssl::host_name_verification("localhost"));
        ssl.next_layer().connect(
            {boost::asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(std::stoi(port))});
        ssl.handshake(boost::asio::ssl::stream_base::client);
        return stream;
    }
    std::string read(Stream& stream) {
        boost::beast::flat_buffer buffer;
        stream.read(buffer);
        return boost::beast::buffers_to_string(buffer.data());
    }
    std::string reported(std::string_view key) {
        stopServer();
        for (const auto& report : reports)
            if (const auto* value = report.if_contains(key))
                return json::serialize(*value);
        return "none";
    }
};

TEST_F(SocketTest, ASessionIsGreetedAndClosedNormally) {
    auto stream = connected();
    stream->handshake("localhost", target);
    stream->write(boost::asio::buffer(kSetup));
    EXPECT_EQ(read(*stream), R"({"setupComplete":{}})");
    stream->write(boost::asio::buffer(kAudio));
    stream->write(boost::asio::buffer(kText));
    EXPECT_NE(read(*stream).find("modelTurn"), std::string::npos);
    EXPECT_TRUE(stream->got_binary());
    stream->close(boost::beast::websocket::close_code::normal);
    stream.reset();
    EXPECT_EQ(reported("what"), "none");
}

TEST_F(SocketTest, ViolationsCloseWithTheirCode) {
    const std::vector<std::tuple<std::vector<std::string>, bool, std::uint16_t>> cases{
        {{kAudio}, false, 1008},
        {{kSetup, "{"}, false, 1007},
        {{kSetup}, true, 1007},
        {{replaced(kSetup, "a table", "a chair")}, false, 1008}};
    for (const auto& [messages, binary, code] : cases) {
        auto stream = connected();
        stream->handshake("localhost", target);
        stream->binary(binary);
        boost::system::error_code error;
        for (const auto& message : messages)
            stream->write(boost::asio::buffer(message), error);
        boost::beast::flat_buffer buffer;
        while (!error)
            stream->read(buffer, error);
        EXPECT_EQ(stream->reason().code, code) << messages.back();
    }
    stopServer();
    EXPECT_EQ(std::count_if(reports.begin(), reports.end(),
                            [](const auto& r) { return r.at("event") == "violation"; }),
              4);
}

TEST_F(SocketTest, OtherPathsAndKeysAreRefusedInTheHandshake) {
    for (const auto& wrong :
         {replaced(target, "v1beta", "v1alpha"), replaced(target, "a%20key", "b%20key"), target + "&x=1",
          replaced(target, "?key=", "?token="), replaced(target, "%26", "%2"), std::string("/")}) {
        auto stream = connected();
        boost::system::error_code error;
        stream->handshake("localhost", wrong, error);
        EXPECT_EQ(error, boost::beast::websocket::error::upgrade_declined) << wrong;
    }
    EXPECT_NE(reported("what").find("another path"), std::string::npos);
}

} // namespace
} // namespace velto::rehearsal
