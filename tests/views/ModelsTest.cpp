#include "VeltoApp/views/models/HistoryModel.h"
#include "VeltoApp/views/models/TimeTexts.h"
#include "VeltoApp/views/models/TranscriptModel.h"
#include "tests/views/WindowBench.h"

#include <QAbstractItemModelTester>
#include <QDate>
#include <QLocale>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

constexpr auto kFatal = QAbstractItemModelTester::FailureReportingMode::Fatal;

std::string at(const QAbstractItemModel& model, int row, int role) {
    return model.data(model.index(row, 0), role).toString().toStdString();
}

TEST(TranscriptModelTest, TellsOnlyTheRowsThatAreOtherThanBefore) {
    TranscriptModel model;
    const QAbstractItemModelTester tester(&model, kFatal);
    const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    const QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    model.setLines({"Agent: Hel"});
    model.setLines({"Agent: Hello"});
    model.setLines({"Caller: Hi", "Agent: Hello"});
    model.setLines({"Caller: Hi", "Agent: Hello"});
    model.setLines({"Caller: Hi", "Agent: Hello", "Caller: A: b\nc"});
    EXPECT_EQ(inserted.count(), 3);
    EXPECT_EQ(changed.count(), 2);
    EXPECT_EQ(at(model, 2, TranscriptModel::Speaker), "Caller");
    EXPECT_EQ(at(model, 2, TranscriptModel::Words), "A: b\nc");
    model.setLines({});
    EXPECT_EQ(model.count(), 0);
    model.setText("Caller: Hi\n\nsomething else");
    EXPECT_EQ(model.count(), 2);
    EXPECT_EQ(at(model, 1, TranscriptModel::Speaker), "");
}

TEST(HistoryModelTest, FollowsTheStoreOnceATurn) {
    WindowBench bench;
    HistoryModel all(bench.history);
    HistoryModel newest(bench.history, 2);
    const QAbstractItemModelTester tester(&all, kFatal);
    const QSignalSpy inserted(&all, &QAbstractItemModel::rowsInserted);
    bench.addCall("", 3h, 3725);
    bench.addCall("2", 2h, 7);
    EXPECT_EQ(all.count(), 0);
    bench.settle();
    EXPECT_EQ(inserted.count(), 1);
    bench.addCall("3", 1h, 7);
    bench.settle();
    EXPECT_EQ(inserted.back()[2], 0) << "one row";
    EXPECT_EQ(at(all, 0, HistoryModel::Name), "3");
    EXPECT_EQ(newest.count(), 2);

    all.remove(QString::fromStdString(at(all, 1, HistoryModel::CallId)));
    // Before the rows are gone, whoever looks finds nothing rather than another call.
    EXPECT_EQ(at(all, 1, HistoryModel::Name), "");
    EXPECT_EQ(at(all, 2, HistoryModel::Name), "Unknown");
    bench.settle();
    EXPECT_EQ(all.count(), 2);
    EXPECT_EQ(inserted.count(), 2);
    EXPECT_EQ(at(newest, 1, HistoryModel::DurationText), "62:05");
    EXPECT_EQ(at(newest, 1, HistoryModel::Ago), "3 hours ago");
}

TEST(TimeTextsTest, SayHowLongAgoInWordsThatStayTrueForTheirLifetime) {
    const std::chrono::system_clock::time_point noon{std::chrono::seconds(1794830400)}; // 12:00 UTC
    const auto ago = [&](auto age) { return agoText(noon - age, noon).toStdString(); };
    EXPECT_EQ(ago(59s), "Just now");
    EXPECT_EQ(ago(60s), "1 minute ago");
    EXPECT_EQ(ago(1h), "1 hour ago");
    EXPECT_EQ(ago(30h), "Yesterday");
    EXPECT_EQ(ago(72h), "3 days ago");
    EXPECT_EQ(ago(24h * 30), QLocale().toString(QDate(2026, 10, 17), QLocale::ShortFormat).toStdString());
    EXPECT_NE(ago(-1h), "Just now"); // the clock was set back
    for (const auto age : {0s, 59s, 61s, 3599s, 3600s, 8000s}) {
        const auto life = agoLifetime(age);
        EXPECT_EQ(ago(age), ago(age + life - 2ms)) << age.count();
        EXPECT_NE(ago(age), ago(age + life)) << age.count();
    }
    EXPECT_EQ(agoLifetime(24h), 0ms);
    EXPECT_EQ(runningTimeText(7s), QStringLiteral("0:07"));
    EXPECT_EQ(runningTimeText(3725s), QStringLiteral("1:02:05"));
}

} // namespace
} // namespace velto::test
