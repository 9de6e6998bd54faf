// Opening a connection: every refusal, and the limits. Who is trusted is tried with the keys.
#include "tests/voice/VoiceFixture.h"

namespace velto::test {
namespace {

class VoiceSocketTest : public VoiceFixture {
  protected:
    static std::string failure(const std::string& host, VoiceSocket::Limits limits = {}) {
        const auto session = makeClient(VoiceProvider::gemini, host, limits);
        const auto connected = run(session->connect());
        run(session->close());
        // A session that never was connected delivers nothing else.
        EXPECT_EQ(next(*session), "closed client closed");
        return connected ? "connected" : connected.error().description;
    }
};

TEST_F(VoiceSocketTest, RefusalsAreDescribedWithoutTheKey) {
    const ScriptedTlsServer refusing([](ServerPeer& peer) {
        peer.acceptTls();
        peer.readRequest();
        peer.send("HTTP/1.1 403 Not\xFF with " + std::string(kSecret) + "\r\nContent-Length: 0\r\n\r\n");
    });
    const auto refusal = refusing.host() + " refused the connection: HTTP 403 Not\xEF\xBF\xBD with (key)";
    EXPECT_EQ(failure(refusing.host()), refusal);
    const auto openai = [](std::string key, const std::string& host) {
        return run(OpenAIRealtimeClient({std::move(key), "m", "v", "i", host}).connect()).error().description;
    };
    EXPECT_EQ(openai(std::string(kSecret) + "\n", refusing.host()), refusal);
    std::string closedHost;
    {
        const ScriptedTlsServer gone(listenToTheEnd);
        closedHost = "127.0.0.1:" + std::to_string(gone.port());
    }
    EXPECT_EQ(failure(closedHost), "cannot connect to " + closedHost + ": Connection refused");
    const ScriptedTlsServer silent([](ServerPeer& peer) { peer.acceptTls(); });
    EXPECT_TRUE(failure(silent.host()).starts_with("no WebSocket connection to " + silent.host() + ": "));
    const ScriptedTlsServer plain([](ServerPeer&) {});
    EXPECT_TRUE(failure(plain.host()).starts_with("no secure connection to " + plain.host() + ": "));
    EXPECT_EQ(failure("not a\nhost"), "\"not a host\" is not a host");
    // A key cannot bring fields of its own, nor be one that no field takes.
    for (const auto& key : {std::string("one\r\nX-Other: two"), std::string(70'000, 'k')})
        EXPECT_TRUE(openai(key, silent.host()).starts_with("the field Authorization would "));
    VoiceSocket::Limits impatient;
    impatient.connectivity = {};
    EXPECT_TRUE(failure("name.invalid", impatient).starts_with("cannot find name.invalid: "));
}

} // namespace
} // namespace velto::test
