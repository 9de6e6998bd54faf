// The main window as its users meet it: by what a screen reader finds, by keys, and by what comes of both.
#include "tests/views/ViewTest.h"

#include <QGuiApplication>

namespace velto::test {
namespace {

using MainViewTest = ViewTest;

TEST_F(MainViewTest, PlacesACallByKeyboardAloneAndFollowsItToItsRecord) {
    bench.addKey();
    open();
    EXPECT_TRUE(offers("Ready"));
    EXPECT_EQ(window->minimumSize(), QSize(720, 520));
    EXPECT_FALSE(press("Call with AI"));

    EXPECT_EQ(reader->focused(), "Number");
    reader->type("5551234");
    fill("Goal", "Ask <b>politely</b>");
    reader->key(Qt::Key_Tab);
    reader->key(Qt::Key_Return);
    ASSERT_TRUE(bench.app.nativeSession->running());
    EXPECT_EQ(bench.agents.made.back().goal, "Ask <b>politely</b>");
    EXPECT_EQ(reader->focused(), "Stop");

    bench.line.answered = true;
    bench.advance(3s);
    EXPECT_TRUE(reads("Running time 0:03"));
    bench.say({"caller: Hello ", "caller: there", "agent: <i>Hi</i>"});
    EXPECT_TRUE(reads("Caller: Hello there"));
    EXPECT_TRUE(reads("Agent: <i>Hi</i>"));
    reader->key(Qt::Key_Space);
    EXPECT_TRUE(reads("Session: ended"));
    EXPECT_EQ(reader->focused(), "Call with AI");
    EXPECT_TRUE(offers("Redial 5551234"));
    EXPECT_EQ(bench.loop.clock.waiting(), 0U); // nothing ticks
}

TEST_F(MainViewTest, ARunningCallKeepsItsNumberAndRedialWaits) {
    bench.addKey();
    bench.addCall("5550001", 1h, 60);
    bench.addCall("", 2min, 60);
    open();
    EXPECT_FALSE(press("Redial Unknown"));
    bench.goLive("5551234");
    EXPECT_FALSE(press("Redial 5550001"));
    bench.model->session()->redial("5550001", {});
    EXPECT_EQ(bench.app.nativeSession->number(), "5551234");
    EXPECT_TRUE(reader->find(QAccessible::EditableText, "Number")->state().readOnly);
    EXPECT_TRUE(press("Stop"));
    EXPECT_TRUE(press("Redial 5550001"));
    EXPECT_EQ(bench.app.nativeSession->number(), "5550001");
    EXPECT_TRUE(bench.app.nativeSession->running());
}

TEST_F(MainViewTest, TheKeyboardReachesEverythingAndArrowsGoThroughTheCalls) {
    bench.addKey();
    for (const char* number : {"5550002", "5550001"})
        bench.addCall(number, 1h, 60);
    bench.app.nativeSession->number.set("5551234");
    open();
    EXPECT_EQ(reader->tabStops(),
              (Notes{"Goal", "Call with AI", "Redial 5550001", "Ready", "Settings", "Number"}));
    for (int i = 0; i < 6 && reader->focused() != "Redial 5550001"; ++i)
        reader->key(Qt::Key_Tab);
    reader->key(Qt::Key_Down);
    reader->key(Qt::Key_Return);
    EXPECT_EQ(bench.app.nativeSession->number(), "5550002");
}

TEST_F(MainViewTest, AFirstRunPutsBackWhatAKilledCallLeftAndSaysWhatIsMissingOneHintAtATime) {
    bench.settings.hasCompletedSetup.set(false);
    bench.computer.preferences.set("velto.settingsTab", PreferenceValue(std::string("general")));
    bench.computer.preferences.set("bridgeActive", PreferenceValue(true));
    bench.computer.desktop.setTrusted(false);
    open();
    EXPECT_EQ(bench.computer.preferences.text("velto.settingsTab"), "readiness");
    EXPECT_FALSE(bench.computer.preferences.boolean("bridgeActive"));
    const char* accessHint = "Grant Accessibility in System Settings so Velto can dial and detect calls.";
    EXPECT_TRUE(offers("Readiness"));
    EXPECT_FALSE(reads(accessHint)) << "a key comes first";
    bench.addKey();
    EXPECT_FALSE(reads("Add a Gemini or OpenAI key in Settings → Readiness."));
    EXPECT_TRUE(reads(accessHint));

    bench.app.nativeSession->number.set("5551234");
    bench.line.isTrusted = false;
    EXPECT_TRUE(press("Call with AI"));
    EXPECT_TRUE(reads("The call was not started: Velto is not allowed to use the phone app yet."));

    bench.computer.desktop.setTrusted(true);
    bench.model->mainWindowActivated();
    EXPECT_FALSE(reads(accessHint));
    EXPECT_TRUE(offers("Ready"));
}

TEST_F(MainViewTest, ClosingInMidCallAsksFirstAndLosesNoRecord) {
    bench.addKey();
    open();
    bench.goLive("5551234");
    window->close();
    bench.settle();
    EXPECT_EQ(reader->focused(), "Keep the call");
    reader->key(Qt::Key_Return);
    EXPECT_TRUE(bench.app.nativeSession->running());
    window->close();
    EXPECT_TRUE(press("Stop and quit"));
    EXPECT_FALSE(bench.app.nativeSession->running());
    EXPECT_EQ(bench.history.records().size(), 1U);
}

TEST_F(MainViewTest, TheTranscriptFollowsUnlessItsReaderHasScrolledUp) {
    bench.addKey();
    open();
    bench.goLive("5551234");
    const auto talk = [this](int lines) {
        for (int i = 0; i < lines; ++i)
            bench.say({"caller: A line that is long enough to be wrapped once or twice in a narrow window.",
                       "turn complete"});
        window->grabWindow();
        bench.settle();
    };
    talk(30);
    auto* const list = window->findChild<QQuickItem*>("transcript");
    ASSERT_NE(list, nullptr);
    EXPECT_TRUE(list->property("atYEnd").toBool());
    list->forceActiveFocus();
    reader->key(Qt::Key_PageUp);
    EXPECT_FALSE(list->property("atYEnd").toBool());
    const auto place = list->property("contentY").toDouble();
    talk(5);
    EXPECT_EQ(list->property("contentY").toDouble(), place);
    EXPECT_TRUE(press("Newest line"));
    talk(1);
    EXPECT_TRUE(list->property("atYEnd").toBool());
}

/// A view that complains of itself is a failure; what this platform cannot do to windows is none.
void judge(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message) {
    if (message.contains("qrc:/Velto/"))
        ADD_FAILURE() << message.toStdString();
}

} // namespace
} // namespace velto::test

/// Of all the windows' tests: one Qt application, windows that nobody sees.
int main(int argc, char** argv) {
    velto::test::WindowBench::prepareQt();
    ::testing::InitGoogleTest(&argc, argv);
    ::qInstallMessageHandler(velto::test::judge);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
