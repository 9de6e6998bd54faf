// Call records and their file: round trips, damage, and what is kept of it.
#include "VeltoApp/history/CallHistoryStore.h"

#include "VeltoApp/history/CallRecordJSON.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>
#include <random>

namespace velto::test {
namespace {

namespace fs = std::filesystem;

const std::string kOne =
    R"({"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","number":"+1","started":785622200.25,"duration":3,"transcript":"a\/b/c"})";

CallRecord recordOf(double started, double duration) {
    return {.number = "+1555",
            .started = {started},
            .duration = duration,
            .transcript = "Caller: \"hi\"/\\\nAgent: grüß dich\t\x01",
            .recordingPath = "/home/u/Recordings/call-1.wav"};
}

void write(const fs::path& file, std::string_view content) {
    std::ofstream(file, std::ios::binary) << content;
}

TEST(CallRecord, roundsItsDurationAndClampsItsTime) {
    for (const auto& [seconds, text] :
         std::map<double, std::string>{{0, "0:00"}, {59.5, "1:00"}, {61.49, "1:01"}, {3725.4, "62:05"}})
        EXPECT_EQ(recordOf(0, seconds).durationText(), text);
    EXPECT_GT(CallRecord::Time{1e300}.timePoint(), CallRecord::Time{1e9}.timePoint());
}

TEST(CallRecordJSON, writesItsFormatAndReadsBackEqual) {
    auto record = *CallRecordJSON::decode("[" + kOne + "]");
    EXPECT_EQ(record[0].transcript, "a/b/c");
    EXPECT_EQ(
        CallRecordJSON::encode(record),
        R"([{"id":"6F9619FF-8B86-D011-B42D-00C04FC964FF","number":"+1","started":785622200.25,"duration":3,"transcript":"a\/b\/c"}])");

    std::mt19937_64 random(7);
    std::vector<CallRecord> records;
    for (int i = 0; i < 2000; ++i)
        records.push_back(recordOf(std::ldexp(static_cast<double>(random() >> 11), -23),
                                   std::ldexp(static_cast<double>(random() >> 11), -44)));
    EXPECT_EQ(CallRecordJSON::decode(*CallRecordJSON::encode(records)), records);
    EXPECT_EQ(CallRecordJSON::encode({}), "[]");
    record[0].duration = std::nan("");
    EXPECT_EQ(CallRecordJSON::encode(record), std::nullopt);
    record[0].duration = 0;
    record[0].number = "\xFF";
    EXPECT_EQ(CallRecordJSON::decode(*CallRecordJSON::encode(record)).value()[0].number, "\xEF\xBF\xBD");
}

TEST(CallRecordJSON, isStrict) {
    const auto with = [](std::string_view key, std::string_view value) {
        auto text = kOne;
        const auto at = text.find('"' + std::string(key) + "\":") + key.size() + 3;
        return "[" + text.replace(at, text.find_first_of(",}", at) - at, value) + "]";
    };
    EXPECT_TRUE(CallRecordJSON::decode(with("duration", "1e2")));
    EXPECT_TRUE(CallRecordJSON::decode(with("transcript", R"("x","recordingPath":null,"more":[1])")));
    EXPECT_EQ(
        CallRecordJSON::decode(with("transcript", R"("x","recordingPath":"\/p")")).value()[0].recordingPath,
        "/p");
    for (const auto& bad :
         {with("id", "\"6F9619FF-8B86-D011-B42D-00C04FC964F\""), with("id", "7"), with("number", "null"),
          with("started", "\"1\""), with("duration", "true"), with("duration", "1e"),
          with("duration", "1e999"), with("transcript", "[]"), with("transcript", R"("x","recordingPath":5)"),
          std::string("[{}]"), std::string("{}"), kOne, "[" + kOne, "[" + kOne + "]]", "[" + kOne + ",]",
          std::string(), std::string("[null]"), with("number", "\"\xFF\"")})
        EXPECT_FALSE(CallRecordJSON::decode(bad)) << bad;
}

class CallHistoryStoreTest : public ::testing::Test {
  protected:
    TemporaryFolder folder;
    fs::path file = folder.path() / "history.json";

    std::size_t filesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
    }
};

TEST_F(CallHistoryStoreTest, mirrorsItsListToTheFile) {
    CallHistoryStore store(file);
    EXPECT_TRUE(store.records().empty());
    EXPECT_FALSE(fs::exists(file));
    int told = 0;
    const auto subscription = store.observe([&] { ++told; });

    const auto first = recordOf(1, 2);
    store.insertFirst(first);
    store.insertFirst(recordOf(3, 4));
    store.insertFirst(first);
    EXPECT_EQ(CallHistoryStore(file).records(), store.records());
    EXPECT_EQ(store.records().size(), 3u);
    store.remove(first.id);
    EXPECT_EQ(CallHistoryStore(file).records(), store.records());
    EXPECT_EQ(store.records().size(), 1u);
    store.removeAll();
    EXPECT_EQ(readFile(file), "[]");
    store.insertFirst(first);
    EXPECT_EQ(CallHistoryStore(file).records(), std::vector{first});
    EXPECT_EQ(told, 6);
    EXPECT_EQ(filesInFolder(), 1u);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(CallHistoryStoreTest, keepsWhatItCannotReadAside) {
    for (const std::string& damaged : {"[" + kOne, std::string("{\"calls\":[]}"), std::string("\0\xFF", 2)}) {
        write(file, damaged);
        CallHistoryStore store(file);
        EXPECT_TRUE(store.records().empty());
        EXPECT_EQ(readFile(file), damaged);
        store.insertFirst(recordOf(1, 2));
        store.insertFirst(recordOf(1, 2));
        EXPECT_EQ(CallHistoryStore(file).records().size(), 2u);
    }
    EXPECT_EQ(readFile(folder.path() / "history.json.unreadable"), "[" + kOne);
    EXPECT_EQ(readFile(folder.path() / "history.json.unreadable-3"), std::string("\0\xFF", 2));
    EXPECT_EQ(filesInFolder(), 4u);

    write(file, "");
    CallHistoryStore(file).removeAll();
    EXPECT_EQ(filesInFolder(), 4u); // an empty file holds nothing to keep

    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    CallHistoryStore(file).insertFirst(recordOf(1, 2)); // does not wait for a writer
    EXPECT_EQ(CallHistoryStore(file).records().size(), 1u);
}

TEST_F(CallHistoryStoreTest, keepsModesAndLinksAndSurvivesAMissingFolder) {
    const auto target = folder.path() / "elsewhere.json";
    write(target, "[]");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    fs::create_symlink(target, file);
    CallHistoryStore(file).insertFirst(recordOf(1, 2));
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(CallHistoryStore(target).records().size(), 1u);
    EXPECT_EQ(fs::status(target).permissions() & fs::perms::group_all, fs::perms::group_read);

    CallHistoryStore lost(folder.path() / "absent" / "history.json");
    lost.insertFirst(recordOf(1, 2));
    EXPECT_EQ(lost.records().size(), 1u);
}

} // namespace
} // namespace velto::test
