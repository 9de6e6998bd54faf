// Asking real TLS servers of this computer whether they like a key.
#include "VeltoShared/voice/KeyValidator.h"

#include "VeltoShared/voice/ProviderHosts.h"
#include "VeltoShared/voice/TlsTrust.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TestComputer.h"
#include "tests/voice/VoiceFixture.h"

#include <algorithm>
#include <atomic>

#include <openssl/ssl.h>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using enum VoiceProvider;

const std::string kYes = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}";
/// The server's end of the connection, instead of the client's.
const std::string kCut = "<cut>";

/// Gives one answer and notes what it was asked.
struct Service {
    explicit Service(std::string answer, std::optional<LocalAuthority::Issued> identity = {})
        : response(std::move(answer)),
          server([this](ServerPeer& peer) { serve(peer); },
                 identity ? std::move(*identity) : trustedAuthority().issue("localhost")) {}

    std::string host() const { return server.host(); }
    void serve(ServerPeer& peer) {
        ++connections;
        if (!peer.acceptTls())
            return;
        auto asked = peer.readRequest();
        peer.sendBytewise(response.substr(0, response.find(kCut)));
        if (!response.ends_with(kCut))
            asked += peer.readRequest();
        if (connections == 1)
            request.set_value(asked);
    }

    const std::string response;
    std::atomic<int> connections = 0;
    std::promise<std::string> request; ///< the first connection's, once it has ended
    ScriptedTlsServer server;
};

class KeyValidatorTest : public NetworkLoop {
  protected:
    void setHost(VoiceProvider provider, const std::string& host) {
        computer.preferences.set(std::string(ProviderHosts::preferenceKey(provider)), PreferenceValue(host));
    }
    bool valid(VoiceProvider provider, const std::string& key, const std::string& host) {
        setHost(provider, host);
        const auto outcome = start(KeyValidator::validate(provider, key));
        runUntil([&] { return outcome->has_value(); });
        return outcome->value_or(false);
    }

    TestComputer computer;
};

TEST_F(KeyValidatorTest, RequestsAreTheProvidersOwnAndGoToNobodyElse) {
    ScopedEnvironment environment;
    const auto secrets = computer.root() / "secrets";
    environment.set({{"https_proxy", "http://127.0.0.1:9"},
                     {"ALL_PROXY", "http://127.0.0.1:9"},
                     {"SSLKEYLOGFILE", secrets}});
    Service first(kYes);
    EXPECT_TRUE(valid(gemini, "\t a/b&c=\x01 é \r\n", first.host()));
    EXPECT_EQ(first.request.get_future().get(),
              "GET /v1beta/models?key=a%2Fb%26c%3D%01%20%C3%A9 HTTP/1.1\r\nHost: " + first.host() +
                  "\r\nUser-Agent: Velto\r\nAccept: */*\r\n\r\n");
    Service second(kYes);
    EXPECT_TRUE(valid(openai, "sk-secret\n", second.host()));
    EXPECT_EQ(second.request.get_future().get(),
              "POST /v1/chat/completions HTTP/1.1\r\nHost: " + second.host() +
                  "\r\nUser-Agent: Velto\r\nAccept: */*\r\nContent-Type: application/json\r\n"
                  "Authorization: Bearer sk-secret\r\nContent-Length: 84\r\n\r\n"
                  R"({"model":"gpt-4o-mini","messages":[{"role":"user","content":"ping"}],"max_tokens":1})");
    EXPECT_EQ(readFile(secrets), "");
}

TEST_F(KeyValidatorTest, WhatCannotBeAskedIsNotAsked) {
    const Service service(kYes);
    for (const auto& key : {std::string(), std::string(" \t\r\n")})
        for (const auto provider : kAllVoiceProviders)
            EXPECT_FALSE(valid(provider, key, service.host()));
    for (const auto& key : {std::string("key\r\nX-More: 1"), std::string("key\0more", 8)})
        EXPECT_FALSE(valid(openai, key, service.host()));
    for (const auto& host : {std::string("not a host"), "user@" + service.host(), service.host() + "/path",
                             std::string("localhost:0")})
        EXPECT_FALSE(valid(gemini, "key", host)) << host;
    EXPECT_EQ(service.connections, 0);
}

TEST_F(KeyValidatorTest, OnlySuccessOfAWholeResponseIsAYes) {
    const Service elsewhere(kYes);
    const auto empty = [&](const std::string& status) {
        return "HTTP/1.1 " + status + "\r\nContent-Length: 0\r\nLocation: https://" + elsewhere.host() +
               "/\r\nWWW-Authenticate: Basic\r\n\r\n";
    };
    const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\n{ }\r\n";
    for (const auto& [response, expected] : std::initializer_list<std::pair<std::string, bool>>{
             {kYes, true},
             {empty("204 No Content"), true},
             {empty("299 Fine"), true},
             {chunked + "0\r\n\r\n", true},
             {empty("300 Multiple Choices"), false},
             {empty("302 Found"), false},
             {empty("401 Unauthorized"), false},
             {"HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\n{}" + kCut, false},
             {chunked + kCut, false},
             {kCut, false},
         })
        for (const auto provider : kAllVoiceProviders) {
            const Service service(response);
            EXPECT_EQ(valid(provider, "key", service.host()), expected) << rawValue(provider) << response;
            EXPECT_EQ(service.connections, 1);
        }
    EXPECT_EQ(elsewhere.connections, 0);
}

TEST_F(KeyValidatorTest, TheServerMustBeTrustedAndTheRightOneForKeysAndForCalls) {
    LocalAuthority stranger;
    const auto local = authority.issue("localhost");
    const auto numeric = authority.issue("127.0.0.1");
    for (const auto& [identity, host, problem] :
         {std::tuple{local, "localhost:", ""},
          {numeric, "127.0.0.1:", ""},
          {local, "127.0.0.1:", "IP address mismatch"},
          {numeric, "localhost:", "hostname mismatch"},
          {authority.issue("elsewhere.example"), "localhost:", "hostname mismatch"},
          {stranger.issue("localhost"), "localhost:", "unable to get local issuer certificate"}}) {
        const Service service(kYes, identity);
        const auto address = host + std::to_string(service.server.port());
        const bool isTrusted = std::string(problem).empty();
        EXPECT_EQ(valid(gemini, "key", address), isTrusted) << address << problem;
        const auto session = makeClient(openai, address);
        const auto connected = start(session->connect());
        runUntil([&] { return connected->has_value(); });
        EXPECT_EQ((*connected)->error().description,
                  isTrusted ? address + " refused the connection: HTTP 200 OK"
                            : "the certificate of " + address + " was refused: " + problem);
    }
    // For calls only a root may be the end of a chain.
    const X509_STORE* authorities = SSL_CTX_get_cert_store(TlsTrust::context().native_handle());
    EXPECT_FALSE(X509_VERIFY_PARAM_get_flags(X509_STORE_get0_param(authorities)) & X509_V_FLAG_PARTIAL_CHAIN);
}

/// Takes requests and never answers.
struct SilentService {
    std::atomic<int> asked = 0;
    std::atomic<int> left = 0;
    ScriptedTlsServer server{[this](ServerPeer& peer) {
        peer.acceptTls();
        peer.readRequest();
        ++asked;
        peer.drain();
        ++left;
    }};
};

TEST_F(KeyValidatorTest, SilentServersAreLeftAfterTwentySecondsAndHoldUpNobody) {
    const SilentService silent;
    setHost(gemini, silent.server.host());
    std::vector<std::shared_ptr<std::optional<bool>>> outcomes(50);
    for (auto& outcome : outcomes)
        outcome = start(KeyValidator::validate(gemini, "key"));
    const auto answered = [&] {
        return std::ranges::count_if(outcomes, [](const auto& each) { return each->has_value(); });
    };
    runUntil([&] { return silent.asked == 1; });
    const Service talking(kYes);
    EXPECT_TRUE(valid(openai, "key", talking.host()));
    loop.advance(20s - 1ms);
    EXPECT_EQ(answered(), 0);
    loop.advance(1ms);
    EXPECT_EQ(answered(), 50);
    EXPECT_TRUE(std::ranges::none_of(outcomes, [](const auto& each) { return **each; }));
    runUntil([&] { return silent.left > 0; });
    EXPECT_EQ(loop.clock.waiting(), 0u);
}

TEST_F(KeyValidatorTest, ARequestWhoseThreadEndsLeavesNothingBehind) {
    const SilentService silent;
    setHost(gemini, silent.server.host());
    Clock::install(nullptr);
    {
        const BackgroundThreads threads;
        start(KeyValidator::validate(gemini, "key"));
        runUntil([&] { return silent.asked == 1; });
    }
    runUntil([&] { return silent.left == 1; });
}

} // namespace
} // namespace velto::test
