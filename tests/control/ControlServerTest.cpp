// The control server on a real socket: raw bytes, bad clients, many clients.
#include "VeltoApp/control/ControlListener.h"
#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoShared/control/ControlAddress.h"
#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/TextTrim.h"
#include "tests/control/ServerFixture.h"

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <fcntl.h>
#include <unistd.h>

#include <fstream>

namespace velto::test {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

const std::string kPing = "{\"cmd\":\"ping\"}\n";
const std::string kOK = "{\"ok\":true}\n";
const std::string kBad = "{\"ok\":false,\"error\":\"bad request\"}\n";

using ControlServerTest = ServerFixture;

TEST_F(ControlServerTest, AnotherUsersListenerIsNotTheApplication) {
    EXPECT_EQ(ControlClient::applicationProcess(), ::getpid());
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be another user";
    fs::remove(path());
    const FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(listener.get(), ControlAddress(path()).get(), ControlAddress::kLength), 0);
    ASSERT_EQ(::seteuid(65534), 0);
    EXPECT_EQ(::listen(listener.get(), 1), 0); // the socket keeps who listened
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_TRUE(ControlClient::somebodyListens());
    EXPECT_EQ(ControlClient::applicationProcess(), std::nullopt);
}

TEST_F(ControlServerTest, listensForItsOwnerAlone) {
    struct stat status {};
    ASSERT_EQ(::stat(path().c_str(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
    onMain([&] { server->start(session, agent, setup); });
    const auto log = readFile(AppPaths::logFile());
    EXPECT_EQ(log.substr(log.find("] ")), "] control: listening at " + path().string() + "\n");
}

TEST_F(ControlServerTest, answersOneLineWithOneLine) {
    EXPECT_EQ(ask(kPing), kOK);
    RawClient slow(path());
    for (const char byte : kPing)
        slow.send({&byte, 1});
    EXPECT_EQ(slow.receiveAll(), kOK);
    RawClient unended(path());
    unended.send("{\"cmd\":\"CALL\"}");
    unended.endSending();
    EXPECT_EQ(unended.receiveAll(), "{\"ok\":false,\"error\":\"unknown cmd 'CALL'\"}\n");
}

TEST_F(ControlServerTest, refusesWhatIsNoJSONObject) {
    const auto nested = [](std::size_t levels) {
        return "{\"cmd\":\"ping\",\"x\":" + std::string(levels, '[') + std::string(levels, ']') + "}\n";
    };
    EXPECT_EQ(ask(nested(500)), kOK);
    for (const std::string& bad :
         {kPing + kPing, std::string("\n"), std::string("[]\n"), std::string("7\n"),
          std::string("{\"cmd\"\n"), std::string("{\"cmd\":\"\xFF\xFE\"}\n"),
          std::string("{\"cmd\":\"a\0\"}\n", 13), nested(600), std::string(2'000'000, '[') + "\n",
          std::string(2'000'000, '{') + "\n", std::string("nonsense\n")})
        EXPECT_EQ(ask(bad), kBad) << bad.substr(0, 40);
    RawClient silent(path());
    silent.endSending();
    EXPECT_EQ(silent.receiveAll(), kBad);
    EXPECT_EQ(ask(kPing), kOK);
}

TEST_F(ControlServerTest, holdsNoMoreThanItsLimitOfARequestWithoutEnd) {
    RawClient endless(path());
    const std::string megabyte(1u << 20u, 'x');
    for (int i = 0; i < 100; ++i)
        ASSERT_TRUE(endless.send(megabyte)) << i;
    EXPECT_EQ(endless.receiveAll(), kBad); // at once, without a line feed
    EXPECT_EQ(ask("{\"cmd\":\"ping\",\"goal\":\"" + std::string(10u << 20u, 'g') + "\"}\n"), kOK);
}

TEST_F(ControlServerTest, survivesClientsThatLeaveOrDoNotRead) {
    for (int i = 0; i < 300; ++i) {
        RawClient leaving(path());
        leaving.send(i % 2 == 0 ? kPing : kPing.substr(0, 5));
    }
    onMain([&] { history->records.set({{.number = "1", .transcript = std::string(32u << 20u, 't')}}); });
    std::vector<RawClient> deaf;
    for (int i = 0; i < 4; ++i)
        deaf.emplace_back(path()).send("{\"cmd\":\"history\"}\n");
    EXPECT_EQ(ask(kPing), kOK);
    EXPECT_GT(deaf.back().receiveAll().size(), 32u << 20u);
}

TEST_F(ControlServerTest, manySilentConnectionsDisturbNobody) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_cur < 4096)
        GTEST_SKIP() << "both ends of 1000 connections need more open files than this user may have";
    std::vector<RawClient> silent;
    for (int i = 0; i < 1000; ++i)
        ASSERT_TRUE(silent.emplace_back(path()).connected()) << i;
    EXPECT_EQ(ask(kPing), kOK);
    EXPECT_EQ(silent.front().ask(kPing), kOK);
}

TEST_F(ControlServerTest, waitsForDescriptorsWhenThereAreNone) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers need descriptors of their own to look at memory";
#endif
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(ask(kPing), kOK);
    std::optional<RawClient> waiting;
    {
        // The lowest free descriptor is the client's; above it nobody gets one.
        const int next = ::dup(0);
        ::close(next);
        rlimit none = before;
        none.rlim_cur = static_cast<rlim_t>(next) + 1;
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
        waiting.emplace(path());
        waiting->send(kPing);
        onMain([] {});
    }
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(waiting->receiveAll(), kOK);
}

TEST_F(ControlServerTest, closesTheOldestConnectionWhenThereAreTooMany) {
    const auto other = computer.root() / "other.sock";
    std::unique_ptr<ControlSocket> socket;
    onMain([&] {
        socket = std::make_unique<ControlSocket>(
            *ControlListener::open(other),
            [](const json::object&) {
                return json::object{{"ok", true}};
            },
            ControlSocket::Limits{.request = 100, .allRequests = 150, .connections = 3});
    });
    std::vector<RawClient> clients;
    for (int i = 0; i < 4; ++i)
        clients.emplace_back(other);
    EXPECT_EQ(clients[0].receiveAll(), "");
    clients[2].send(std::string(90, 'x'));
    EXPECT_EQ(clients[1].ask(kPing), kOK);
    EXPECT_EQ(clients[3].ask(std::string(80, 'x')), kBad) << "too much with what is held";
    clients[2].endSending();
    EXPECT_EQ(clients[2].receiveAll(), kBad);
    onMain([&] { socket.reset(); });
}

TEST_F(ControlServerTest, aRequestThatOutlivesTheServerIsToldSo) {
    RawClient client(path());
    client.send(kPing.substr(0, 10));
    EXPECT_EQ(ask(kPing), kOK); // so the first one has been accepted
    // The request reaches the main thread's queue behind the end of the server.
    onMain([&] {
        client.send(kPing.substr(10));
        std::promise<void> read;
        Background::post([&] { Background::post([&] { read.set_value(); }); });
        read.get_future().get();
        server.reset();
    });
    const auto reply = client.receiveAll();
    EXPECT_TRUE(reply == "{\"ok\":false,\"error\":\"server unavailable\"}\n" || reply.empty()) << reply;
}

TEST_F(ControlServerTest, replacesLeftoversAndSaysWhatFailed) {
    const auto folder = path().parent_path();
    onMain([&] {
        server = std::make_shared<ControlServer>(*history);
        fs::remove(path());
        std::ofstream(path()) << "a file";
        server->start(session, agent, setup);
    });
    EXPECT_EQ(ask(kPing), kOK);
    onMain([&] {
        server = std::make_shared<ControlServer>(*history);
        fs::remove(path());
        fs::create_directory(path());
        server->start(session, agent, setup);
        EXPECT_FALSE(server->listening());
        fs::remove(path());
        server->start(session, agent, setup);
    });
    EXPECT_EQ(ask(kPing), kOK);
    EXPECT_NE(readFile(AppPaths::logFile())
                  .find("] control: bind failed errno=" + std::to_string(EADDRINUSE) + "\n"),
              std::string::npos);
}

TEST(ControlAddress, cutsTheSamePathAtBothEnds) {
    const TemporaryFolder folder;
    const auto longPath = folder.path() / std::string(150, 'p');
    for (int run = 0; run < 2; ++run) { // the second replaces the leftover of the first
        const auto listener = ControlListener::open(longPath);
        ASSERT_TRUE(listener.has_value());
        EXPECT_TRUE(RawClient(longPath).connected());
        EXPECT_EQ(std::string(ControlAddress(longPath).path()), longPath.string().substr(0, 103));
        ::close(*listener);
    }
}

TEST_F(ControlServerTest, theClientAsksAndAnswersNoneWhereThereIsNobody) {
    onMain([&] { history->records.set({{.number = "1", .transcript = std::string(3u << 20u, 't')}}); });
    EXPECT_EQ(
        ControlClient::request({{"cmd", "history"}})->at("calls").at(0).at("transcript").as_string().size(),
        3u << 20u);
    EXPECT_EQ(ControlClient::request({{"cmd", std::string(20u << 20u, 'x')}})->at("error"), "bad request");
    fs::remove(path());
    EXPECT_FALSE(ControlClient::appIsRunning());
}

} // namespace
} // namespace velto::test
