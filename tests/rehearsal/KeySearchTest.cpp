// The search for API keys, where they are hidden on purpose.
#include "rehearsal/director/KeySearch.h"
#include "VeltoShared/voice/PercentEncoding.h"
#include "rehearsal/process/ChildProcess.h"
#include "rehearsal/process/TextFile.h"

#include <boost/json/serialize.hpp>

#include <gtest/gtest.h>

#include <poll.h>
#include <unistd.h>

namespace velto::rehearsal {
namespace {

using namespace std::chrono_literals;
using Places = std::set<std::string>;

struct KeySearchTest : testing::Test {
    RehearsalKeys keys;
    Evidence evidence;
    KeySearch search{keys, evidence};
    const std::string gemini = keys.all().at(VoiceProvider::gemini);
    const std::string openAI = keys.all().at(VoiceProvider::openai);
};

TEST_F(KeySearchTest, FindsEitherKeyInAnyEncodingInFiles) {
    const auto folder = std::filesystem::path(testing::TempDir()) / ("keys" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder / "deep");
    std::string escaped;
    for (const char c : openAI)
        escaped += c >= '0' && c <= '9' ? std::string("%3") + c : std::string(1, c);
    Places expected;
    for (const auto& text : {gemini, openAI, percentEncoded(gemini), percentEncoded(openAI), escaped,
                             boost::json::serialize(boost::json::string(gemini))}) {
        const auto file = folder / "deep" / std::to_string(expected.size());
        ASSERT_TRUE(writePrivateFile(file, "before " + text + " after"));
        expected.insert("the file " + file.string());
    }
    ASSERT_TRUE(writePrivateFile(folder / "other", RehearsalKeys().all().at(VoiceProvider::gemini)));
    search.lookAtFolder(folder);
    std::filesystem::remove_all(folder);
    EXPECT_EQ(evidence.placesWithKey, expected);
}

TEST_F(KeySearchTest, FindsKeysInACommandLineAndAnEnvironmentBelowAProcess) {
    search.lookAtProcess("this", ::getpid());
    EXPECT_EQ(evidence.placesWithKey, Places{});
    EXPECT_EQ(evidence.searchedForKeys, Places{"this"});

    ChildProgram program;
    program.title = "a child";
    program.arguments = {"sh", "-c", "echo ready; kill -STOP $$", gemini};
    program.environment = {{"PATH", "/usr/bin:/bin"}, {"KEY", openAI}};
    program.errorFile = "/dev/null";
    auto child = ChildProcess::start(program);
    ASSERT_TRUE(child);
    pollfd ready{child->output(), POLLIN, 0};
    ASSERT_EQ(::poll(&ready, 1, 10000), 1);
    search.lookAtProcess("this", ::getpid());
    EXPECT_EQ(evidence.placesWithKey, (Places{"the command line of a process that descends from this",
                                              "the environment of a process that descends from this"}));
    child->kill();
    search.lookAtProcess("the dead one", child->pid());
    EXPECT_EQ(evidence.searchedForKeys, Places{"this"});
}

} // namespace
} // namespace velto::rehearsal
