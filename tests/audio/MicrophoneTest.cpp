// Who may record, as a real sound server has it.
#include "VeltoPlatform/linux/PulseMicrophone.h"

#include "tests/audio/SoundServerFixture.h"

#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>

#include <thread>
#include <utility>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using enum MicrophoneAuthorization;

struct MicrophoneTest : SoundServer {
    /// Looks until it is so; answers the last reason.
    static std::string reasonOnce(MicrophoneAccess& microphone, MicrophoneAuthorization is,
                                  std::string_view part = {}) {
        const auto until = std::chrono::steady_clock::now() + patience;
        auto status = microphone.status();
        while ((status.authorization != is || status.reason.find(part) == std::string::npos) &&
               std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(10ms);
            status = microphone.status();
        }
        return status.authorization == is ? status.reason : "not so, but: " + status.reason;
    }
    std::string restartedWithout(std::set<std::string> devices, MicrophoneAuthorization is) {
        rehearsal::SoundDevices options;
        options.without = std::move(devices);
        EXPECT_TRUE(server->restart(options));
        return reasonOnce(*microphone, is, is == authorized ? "" : "monitors");
    }
    static std::uint16_t freePort() {
        const FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), size);
        ::getsockname(socket.get(), reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }

    void SetUp() override {
        SoundServer::SetUp();
        if (!HasFatalFailure())
            microphone = std::make_unique<PulseMicrophone>(connection);
    }
    std::unique_ptr<PulseMicrophone> microphone;
};

TEST_F(MicrophoneTest, FollowsWhatTheServerHasToRecordFrom) {
    EXPECT_EQ(reasonOnce(*microphone, authorized), "");
    EXPECT_EQ(restartedWithout({"Microphone", "VeltoVoice 2ch Mic", "VeltoLoop 2ch"}, notDetermined),
              "the sound server has nothing to record from but monitors of outputs");
    EXPECT_EQ(restartedWithout({"Microphone"}, authorized), "")
        << "the virtual devices are enough for a call";
    server->kill();
    EXPECT_EQ(reasonOnce(*microphone, notDetermined, "refused"), "no sound server: Connection refused");
    EXPECT_EQ(restartedWithout({}, authorized), "");
    bool isAnswered = false;
    microphone->request([&] { isAnswered = true; });
    EXPECT_TRUE(isAnswered);
}

TEST_F(MicrophoneTest, AServerThatHangsIsWaitedForOnce) {
    EXPECT_EQ(reasonOnce(*microphone, authorized), "");
    ::kill(server->processes().back().pid(), SIGSTOP);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 50; ++i) {
        const auto status = microphone->status();
        EXPECT_EQ(status.authorization, notDetermined);
        EXPECT_EQ(status.reason, "the sound server does not answer");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20 * PulseMicrophone::patience);
    ::kill(server->processes().back().pid(), SIGCONT);
    EXPECT_EQ(reasonOnce(*microphone, authorized), "");
    ::kill(server->processes().back().pid(), SIGSTOP);
    microphone->status();
    microphone.reset(); // with its question still open
    ::kill(server->processes().back().pid(), SIGCONT);
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
