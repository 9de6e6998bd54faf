#include "VeltoApp/app/Helper.h"
#include "VeltoPlatform/linux/LinuxPreferences.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/AppSettings.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/SecretKey.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <boost/asio/bind_cancellation_slot.hpp>

#include <sys/stat.h>

#include <fstream>
#include <thread>

namespace velto::test {
namespace {

namespace fs = std::filesystem;

TEST(AppPaths, namesAndCreatesWhatTheApplicationOwns) {
    TestComputer computer;
    const auto support = computer.root() / "Library/Application Support" / AppPaths::bundleID;
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(AppPaths::recordings(), support / "Recordings");
        EXPECT_TRUE(fs::is_directory(support / "Recordings"));
        fs::remove_all(support);
    }
    EXPECT_EQ(AppPaths::historyFile(), support / "history.json");
    EXPECT_EQ(AppPaths::controlSocket(), support / "control.sock");
    EXPECT_EQ(AppPaths::drivers(), AppPaths::resources() / "Drivers");
}

TEST(Log, linesStayWholeWhileManyThreadsWrite) {
    TestComputer computer;
    Loop loop;
    Helper::log("session: first");
    EXPECT_EQ(readFile(AppPaths::logFile()), "[2026-11-16T20:23:20Z] session: first\n");
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 4; ++writer)
        writers.emplace_back([writer] {
            for (int i = 0; i < 100; ++i)
                Helper::log(std::string(200, static_cast<char>('a' + writer)));
        });
    for (auto& writer : writers)
        writer.join();
    std::ifstream file(AppPaths::logFile());
    std::string line;
    int whole = 0;
    while (std::getline(file, line))
        whole += line.size() == 223 && line.find_first_not_of(line[23], 23) == std::string::npos;
    EXPECT_EQ(whole, 400);

    // A log that cannot be written is lost without a word.
    fs::remove(AppPaths::logFile());
    fs::create_directory(AppPaths::logFile());
    Helper::log("lost");
}

asio::awaitable<int> sevenInTwoSteps() {
    co_await asio::post(asio::use_awaitable);
    co_await asio::post(asio::use_awaitable);
    co_return 7;
}

TEST(Executors, aCancelledCallerWaitsForWorkElsewhere) {
    asio::io_context here{1};
    asio::io_context there{1};
    Background::install(there.get_executor());
    asio::cancellation_signal signal;
    int answer = 0;
    asio::co_spawn(
        here, Background::run(sevenInTwoSteps()),
        asio::bind_cancellation_slot(signal.slot(), [&](const std::exception_ptr& error, int seven) {
            EXPECT_FALSE(error);
            answer = seven;
        }));
    here.poll();
    signal.emit(asio::cancellation_type::terminal);
    here.poll();
    there.run();
    here.run();
    EXPECT_EQ(answer, 7);
    Background::install({});
}

TEST(AppSettings, aWrongTypeIsTheDefault) {
    SimulatedPreferences store;
    store.set("routeSystemAudio", std::string("false"));
    store.set("restoreDevices", std::int64_t{0});
    store.set("showDebug", false);
    store.set("geminiVoice", std::int64_t{7});
    store.set("recordCalls", std::string("yes"));
    const AppSettings wrong(store);
    EXPECT_TRUE(wrong.routeSystemAudio() && wrong.restoreDevices());
    EXPECT_FALSE(wrong.showDebug());
    EXPECT_EQ(wrong.geminiVoice(), "Puck");
    EXPECT_FALSE(wrong.recordCalls());
}

TEST(AppSettings, aWriteIsToldAndStoredUnderItsName) {
    SimulatedPreferences store;
    AppSettings settings(store);
    int told = 0;
    const auto object = settings.observe([&] { ++told; });
    settings.provider.set("openai");
    settings.routeSystemAudio.set(false);
    EXPECT_EQ(told, 2);
    EXPECT_EQ(store.text("provider"), "openai");
    EXPECT_FALSE(AppSettings(store).routeSystemAudio());
}

TEST(KeychainStore, replacesByDeletingAndAnswersWhatWasStored) {
    TestComputer computer;
    const auto account = SecretKey::geminiAPIKey;
    EXPECT_EQ(KeychainStore::get(account), std::nullopt);
    EXPECT_FALSE(KeychainStore::remove(account));
    EXPECT_TRUE(KeychainStore::set("one", account));
    EXPECT_TRUE(KeychainStore::set("", account));
    EXPECT_EQ(KeychainStore::get(account), "");
    ASSERT_EQ(computer.secrets.items().size(), 1u);
    EXPECT_EQ(computer.secrets.items()[0].accessDescription, "Velto API key");

    computer.secrets.describesAccess = false;
    EXPECT_TRUE(KeychainStore::set("two", account));
    EXPECT_EQ(computer.secrets.items()[0].accessDescription, std::nullopt);

    EXPECT_FALSE(KeychainStore::set("\xff\xfe", account));
    EXPECT_EQ(KeychainStore::get(account), "two");
    computer.secrets.addFault = SecretStatus::failed;
    EXPECT_FALSE(KeychainStore::set("three", account));
    EXPECT_EQ(KeychainStore::get(account), std::nullopt);
    computer.secrets.addFault.reset();
    computer.secrets.add({std::string(KeychainStore::service), std::string(account), "\xc0\xaf", {}});
    EXPECT_EQ(KeychainStore::get(account), std::nullopt);
    computer.secrets.fault = SecretStatus::locked;
    EXPECT_FALSE(KeychainStore::remove(account));
}

struct PreferencesFile : ::testing::Test {
    TestComputer computer;
    fs::path file = computer.root() / "config" / "preferences.json";
    std::vector<std::string> reports;
    LinuxPreferences store{file, [this](std::string problem) { reports.push_back(std::move(problem)); }};

    void write(const std::string& content) {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << content;
    }
};

TEST_F(PreferencesFile, keepsTypesAndForeignKeys) {
    write(R"({"foreign":{"deep":[1]},"flag":false})");
    store.set("count", std::int64_t{4294967295});
    store.set("text", std::string("true"));
    LinuxPreferences again(file);
    EXPECT_EQ(again.object("count"), PreferenceValue(std::int64_t{4294967295}));
    EXPECT_EQ(again.object("text"), PreferenceValue(std::string("true")));
    EXPECT_EQ(again.object("flag"), PreferenceValue(false));
    EXPECT_EQ(again.object("foreign"), std::nullopt);
    EXPECT_NE(readFile(file).find(R"("foreign":{"deep":[1]})"), std::string::npos);
    again.remove("count");
    EXPECT_EQ(store.object("count"), std::nullopt);
    again.set("text", std::string("\xFF"));
    EXPECT_EQ(again.object("text"), PreferenceValue(std::string("\xFF"))); // for this run, not in the file
    EXPECT_EQ(store.object("text"), PreferenceValue(std::string("true")));
    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(PreferencesFile, aBrokenFileReadsEmptyAndIsKeptAside) {
    for (const char* broken : {"", "{\"provider\":\"gem", "[1,2]", "\xff\xfe"}) {
        write(broken);
        EXPECT_EQ(store.text("provider"), std::nullopt);
        EXPECT_EQ(readFile(file), broken); // reading leaves it alone
        store.set("provider", std::string("openai"));
        EXPECT_EQ(store.text("provider"), "openai");
    }
    EXPECT_EQ(readFile(file.string() + ".broken"), "");
    EXPECT_EQ(readFile(file.string() + ".broken.2"), "{\"provider\":\"gem");
    EXPECT_FALSE(reports.empty());
}

TEST_F(PreferencesFile, whatCannotBeWrittenLastsForThisRun) {
    fs::create_directories(
        file); // a folder stands where the file should be: also root cannot read or replace it
    store.set("provider", std::string("openai"));
    store.set("provider", std::string("gemini"));
    EXPECT_EQ(store.text("provider"), "gemini");
    EXPECT_EQ(reports.size(), 1u);
    EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(PreferencesFile, manyWritersLoseNothing) {
    std::vector<std::thread> writers;
    for (int writer = 0; writer < 4; ++writer)
        writers.emplace_back([this, writer] {
            LinuxPreferences mine(file);
            for (int i = 0; i < 20; ++i)
                mine.set("w" + std::to_string(writer) + "." + std::to_string(i), true);
        });
    for (auto& writer : writers)
        writer.join();
    for (int writer = 0; writer < 4; ++writer)
        for (int i = 0; i < 20; ++i)
            EXPECT_TRUE(store.boolean("w" + std::to_string(writer) + "." + std::to_string(i)));
}

} // namespace
} // namespace velto::test
