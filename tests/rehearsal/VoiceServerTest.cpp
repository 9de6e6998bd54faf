// The voice server's socket, with a client as small as can be.
#include "rehearsal/server/VoiceServer.h"
#include "rehearsal/LocalAuthority.h"
#include "tests/rehearsal/ClientTexts.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/host_name_verification.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/ssl.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <boost/json.hpp>

#include <thread>

namespace velto::rehearsal {
namespace {

namespace http = boost::beast::http;
namespace json = boost::json;
using boost::beast::websocket::request_type;
using boost::beast::websocket::response_type;

using Fields = std::vector<std::pair<std::string, std::string>>;
const Fields kOpenAIFields{{"Authorization", "Bearer sk/+"}, {"OpenAI-Beta", "realtime=v1"}};
const std::string kPing =
    R"({"model":"gpt-4o-mini","messages":[{"role":"user","content":"ping"}],"max_tokens":1})";

struct VoiceServerTest : testing::Test {
    using Stream = boost::beast::websocket::stream<boost::asio::ssl::stream<boost::asio::ip::tcp::socket>>;

    boost::asio::io_context serverContext{1};
    boost::asio::io_context clientContext{1};
    LocalAuthority authority;
    std::vector<json::object> reports;
    std::shared_ptr<WireTranscript> wire;
    std::unique_ptr<VoiceServer> server;
    std::uint16_t port = 0;
    std::thread thread;
    boost::asio::ssl::context tls{boost::asio::ssl::context::tls_client};

    VoiceServerTest() {
        const ApiKeys keys{{VoiceProvider::gemini, "a key/&"}, {VoiceProvider::openai, "sk/+"}};
        wire = std::make_shared<WireTranscript>(keys);
        const auto issued = authority.issue("localhost");
        VoiceServerOptions options{issued.certificatePEM, issued.keyPEM, keys, {}, {}, wire};
        options.scenario.goal = "a table";
        options.scenario.lines = {{2, Side::agent, "Hi."}};
        options.voices.emplace(2, speakLine(2, "Hi.", "en-us", 24000));
        server = std::make_unique<VoiceServer>(
            std::move(options), [this](json::object report) { reports.push_back(std::move(report)); });
        boost::asio::co_spawn(serverContext, server->serve(), boost::asio::detached);
        while (reports.empty())
            serverContext.run_one();
        port = reports.front().at("port").to_number<std::uint16_t>();
        reports.clear();
        thread = std::thread([this] { serverContext.run(); });
        tls.add_certificate_authority(boost::asio::buffer(authority.certificatePEM()));
    }
    ~VoiceServerTest() override { stopServer(); }
    void stopServer() {
        serverContext.stop();
        if (thread.joinable())
            thread.join();
    }

    std::unique_ptr<Stream> connected() {
        auto stream = std::make_unique<Stream>(clientContext, tls);
        auto& ssl = stream->next_layer();
        ssl.set_verify_mode(boost::asio::ssl::verify_peer);
        ssl.set_verify_callback(boost::asio::ssl::host_name_verification("localhost"));
        ssl.next_layer().connect({boost::asio::ip::address_v4::loopback(), port});
        ssl.handshake(boost::asio::ssl::stream_base::client);
        return stream;
    }
    /// The status that the request for the upgrade was answered with.
    static unsigned shakeHands(Stream& stream, const std::string& target, const Fields& fields) {
        stream.set_option(boost::beast::websocket::stream_base::decorator([fields](request_type& request) {
            request.erase(http::field::user_agent);
            for (const auto& [name, value] : fields)
                request.insert(name, value);
        }));
        response_type response;
        boost::system::error_code error;
        stream.handshake(response, "localhost:1", target, error);
        EXPECT_EQ(!error, response.result_int() == 101) << error;
        return response.result_int();
    }
    static std::string targetOf(VoiceProvider provider) {
        return clientTexts(provider).path +
               (provider == VoiceProvider::gemini ? "?key=a%20key%2f%26" : "?model=gpt-4o-realtime-preview");
    }
    static Fields fieldsOf(VoiceProvider provider) {
        return provider == VoiceProvider::gemini ? Fields{} : kOpenAIFields;
    }
    std::unique_ptr<Stream> opened(VoiceProvider provider) {
        auto stream = connected();
        EXPECT_EQ(shakeHands(*stream, targetOf(provider), fieldsOf(provider)), 101U);
        return stream;
    }
    static http::request<http::string_body> checkOf(VoiceProvider provider) {
        http::request<http::string_body> request(http::verb::get, "/v1beta/models?key=a%20key%2F%26", 11);
        if (provider == VoiceProvider::openai) {
            request = {http::verb::post, "/v1/chat/completions", 11, kPing};
            request.set(http::field::content_type, "application/json");
            request.set(http::field::authorization, "Bearer sk/+");
            request.prepare_payload();
        }
        request.set(http::field::host, "localhost");
        return request;
    }
    static http::response<http::string_body> ask(Stream& stream,
                                                 const http::request<http::string_body>& request) {
        http::write(stream.next_layer(), request);
        boost::beast::flat_buffer buffer;
        http::response<http::string_body> response;
        http::read(stream.next_layer(), buffer, response);
        return response;
    }
    std::vector<std::string> reported(const std::string& event) {
        stopServer();
        std::vector<std::string> all;
        for (const auto& report : reports)
            if (report.at("event").get_string() == event)
                all.push_back(json::serialize(report));
        return all;
    }
};
using Texts = std::vector<std::string>;

TEST_F(VoiceServerTest, ViolationsCloseWithTheirCode) {
    std::size_t tried = 0;
    for (const auto provider : kAllVoiceProviders) {
        const auto& all = clientTexts(provider);
        const std::vector<std::tuple<Texts, bool, std::uint16_t>> cases{
            {{all.audio}, false, 1008},
            {{all.configuration, "{"}, false, 1007},
            {{all.configuration}, true, 1007},
            {{clientTexts(provider == VoiceProvider::gemini ? VoiceProvider::openai : VoiceProvider::gemini)
                  .configuration},
             false,
             1007},
            {{replaced(all.configuration, "a table", "a chair")}, false, 1008}};
        for (const auto& [messages, binary, code] : cases) {
            ++tried;
            auto stream = opened(provider);
            stream->binary(binary);
            boost::system::error_code error;
            for (const auto& message : messages)
                stream->write(boost::asio::buffer(message), error);
            boost::beast::flat_buffer buffer;
            while (!error)
                stream->read(buffer, error);
            EXPECT_EQ(stream->reason().code, code) << messages.back();
        }
    }
    EXPECT_EQ(reported("violation").size(), tried);
}

TEST_F(VoiceServerTest, OtherPathsKeysAndFieldsAreRefusedInTheHandshake) {
    const auto gemini = targetOf(VoiceProvider::gemini);
    const auto openAI = targetOf(VoiceProvider::openai);
    const Fields none;
    const std::vector<std::tuple<std::string, Fields, unsigned>> cases{
        {replaced(gemini, "v1beta", "v1alpha"), none, 403},
        {replaced(gemini, "a%20key", "b%20key"), none, 403},
        {gemini + "&x=1", none, 403},
        {gemini, {{"Sec-WebSocket-Protocol", "x"}}, 403},
        {"/", none, 403},
        {openAI, none, 403},
        {openAI, {kOpenAIFields[0]}, 403},
        {openAI, {kOpenAIFields[0], {"OpenAI-Beta", "realtime=v2"}}, 403},
        {openAI, {{"Authorization", "sk/+"}, kOpenAIFields[1]}, 403},
        {openAI, {{"Authorization", "Bearer sk/"}, kOpenAIFields[1]}, 401},
        {openAI, {{"Authorization", "Bearer a key/&"}, kOpenAIFields[1]}, 401},
        {"/v1/realtime?model=", kOpenAIFields, 403},
        {openAI + "&key=sk%2F%2B", kOpenAIFields, 403},
        {openAI, {kOpenAIFields[0], kOpenAIFields[1], {"Sec-WebSocket-Protocol", "realtime"}}, 403}};
    for (const auto& [target, fields, status] : cases)
        EXPECT_EQ(shakeHands(*connected(), target, fields), status) << target;
    EXPECT_EQ(reported("violation").size(), cases.size());
    EXPECT_EQ(reported("violation").front(), R"({"event":"violation","what":"handshake: another path: )" +
                                                 replaced(gemini, "v1beta", "v1alpha").substr(0, 78) +
                                                 R"("})");
    for (const auto* key : {"sk/+", "sk%2F%2B", "a key/&", "a%20key%2f%26"})
        EXPECT_EQ(wire->text().find(key), std::string::npos) << key;
}

TEST_F(VoiceServerTest, KeyChecksAreAnsweredOnOneConnectionAndMayBeFollowedByASession) {
    auto stream = connected();
    for (const auto provider : kAllVoiceProviders) {
        const auto right = ask(*stream, checkOf(provider));
        EXPECT_EQ(right.result_int(), 200U);
        EXPECT_TRUE(json::parse(right.body()).is_object());
        auto wrong = checkOf(provider);
        if (provider == VoiceProvider::gemini)
            wrong.target("/v1beta/models?key=b");
        else
            wrong.set(http::field::authorization, "Bearer b");
        const auto refused = ask(*stream, wrong);
        EXPECT_EQ(refused.result_int(), 401U);
        EXPECT_TRUE(json::parse(refused.body()).at("error").is_object());
    }
    EXPECT_EQ(shakeHands(*stream, targetOf(VoiceProvider::gemini), {}), 101U);
    EXPECT_EQ(reported("keyCheck"), (Texts{R"({"event":"keyCheck","provider":"gemini","status":200})",
                                           R"({"event":"keyCheck","provider":"gemini","status":401})",
                                           R"({"event":"keyCheck","provider":"openai","status":200})",
                                           R"({"event":"keyCheck","provider":"openai","status":401})"}));
    EXPECT_EQ(reported("violation"), Texts{});
    EXPECT_TRUE(wire->text().starts_with("GET /v1beta/models?key=(key) HTTP/1.1\nHost: localhost\n\n"
                                         "GET /v1beta/models?key=(another key) HTTP/1.1\n"))
        << wire->text();
    EXPECT_NE(wire->text().find("Authorization: Bearer (key)\n"), std::string::npos);
    EXPECT_NE(wire->text().find("\n\n" + kPing + "\n\n"), std::string::npos);
}

} // namespace
} // namespace velto::rehearsal
