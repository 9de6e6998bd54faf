// Who may record, as a real sound server has it.
#include "VeltoPlatform/linux/PulseMicrophone.h"

#include "tests/audio/SoundServerFixture.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <utility>

namespace velto::test {
namespace {

using enum MicrophoneAuthorization;

struct MicrophoneTest : SoundServer {
    /// Looks until it is so; answers the last reason.
    static std::string reasonOnce(MicrophoneAccess& microphone, MicrophoneAuthorization is,
                                  std::string_view part = {}) {
        MicrophoneStatus status;
        const bool isSo = eventually([&] {
            status = microphone.status();
            return status.authorization == is && status.reason.find(part) != std::string::npos;
        });
        return isSo ? status.reason : "not so, but: " + status.reason;
    }
    static std::uint16_t freePort() {
        const FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        socklen_t size = sizeof address;
        ::listen(socket.get(), 1); // at any
        ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }
};

TEST_F(MicrophoneTest, FollowsWhatTheServerHasToRecordFrom) {
    PulseMicrophone microphone(connection);
    EXPECT_EQ(reasonOnce(microphone, authorized), "");
    ASSERT_TRUE(
        server->restart({.without = {"Microphone", "VeltoVoice 2ch Mic", "VeltoLoop 2ch"}, .muted = {}}));
    EXPECT_EQ(reasonOnce(microphone, notDetermined, "monitors"),
              "the sound server has nothing to record from but monitors of outputs");
    ASSERT_TRUE(server->restart({.without = {"Microphone"}, .muted = {}}));
    EXPECT_EQ(reasonOnce(microphone, authorized), "") << "the virtual devices are enough for a call";
    server->kill();
    EXPECT_EQ(reasonOnce(microphone, notDetermined, "refused"), "no sound server: Connection refused");
    ASSERT_TRUE(server->restart());
    EXPECT_EQ(reasonOnce(microphone, authorized), "");
    bool isAnswered = false;
    microphone.request([&] { isAnswered = true; });
    EXPECT_TRUE(isAnswered);
}

TEST_F(MicrophoneTest, AServerThatRefusesUsIsADenial) {
    const auto port = std::to_string(freePort());
    const auto arguments = "listen=127.0.0.1 auth-anonymous=0 port=" + port;
    if (load("module-native-protocol-tcp", arguments.c_str()) == PA_INVALID_INDEX)
        GTEST_SKIP() << "this server does not ask for a cookie";
    PulseMicrophone stranger(std::make_shared<PulseServer>(PulseServer::Log(), "tcp:127.0.0.1:" + port));
    EXPECT_EQ(reasonOnce(stranger, denied), "the sound server refuses access");
}

} // namespace
} // namespace velto::test
