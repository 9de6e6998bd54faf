// The main window as its users meet it: by what a screen reader finds, by keys, and by what comes of both.
#include "tests/views/ScreenReader.h"
#include "tests/views/WindowBench.h"

#include <QAccessible>
#include <QQuickItem>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using State = NativeCallSession::State;

struct MainViewTest : ::testing::Test {
    void open() {
        window = &bench.open();
        reader.emplace(*window, [this] { bench.settle(); });
    }
    /// Rows of lists come with a frame, and those come in real time.
    void frame() const { window->grabWindow(); }
    bool reads(const char* text) const {
        frame();
        return reader->reads(QString::fromUtf8(text));
    }
    bool press(const char* button) const { return reader->press(QString::fromUtf8(button)); }
    bool canPress(const char* button) const {
        frame();
        const auto names = reader->enabled(QAccessible::Button);
        return std::ranges::find(names, button) != names.end();
    }
    std::string focused() const {
        auto* const element = QAccessible::queryAccessibleInterface(window->activeFocusItem());
        return element ? element->text(QAccessible::Name).toStdString() : "";
    }

    WindowBench bench;
    QQuickWindow* window = nullptr;
    std::optional<ScreenReader> reader;
};

TEST_F(MainViewTest, PlacesACallByKeyboardAloneAndFollowsItToItsRecord) {
    bench.addKey();
    open();
    EXPECT_TRUE(canPress("Ready"));
    EXPECT_TRUE(reads("All set"));
    EXPECT_TRUE(reads("AI key ready"));
    EXPECT_TRUE(reads("Session: idle"));
    EXPECT_FALSE(canPress("Call with AI"));
    EXPECT_FALSE(canPress("Stop"));

    for (int i = 0; i < 10 && focused() != "Number"; ++i)
        reader->key(Qt::Key_Tab);
    reader->type(QStringLiteral("5551234"));
    EXPECT_EQ(bench.app.nativeSession->number(), "5551234");
    reader->key(Qt::Key_Tab);
    EXPECT_EQ(focused(), "Goal");
    reader->item(QAccessible::EditableText, QStringLiteral("Goal"))->setProperty("text", QString());
    reader->type(QStringLiteral("Ask <b>politely</b>"));
    EXPECT_EQ(bench.app.agent->goal(), "Ask <b>politely</b>");
    reader->key(Qt::Key_Tab);
    EXPECT_EQ(focused(), "Call with AI");
    reader->key(Qt::Key_Return);
    ASSERT_TRUE(bench.app.nativeSession->running());
    EXPECT_EQ(bench.agents.made.back().goal, "Ask <b>politely</b>");
    EXPECT_EQ(focused(), "Stop");
    EXPECT_TRUE(reads("Session: dialing"));

    bench.line.answered = true;
    bench.advance(3s);
    EXPECT_TRUE(reads("Session: live"));
    EXPECT_TRUE(reads("Running time 0:03"));
    bench.say({"caller: Hello ", "caller: there", "agent: <i>Hi</i>"});
    EXPECT_TRUE(reads("Caller: Hello there"));
    EXPECT_TRUE(reads("Agent: <i>Hi</i>"));
    reader->key(Qt::Key_Space);
    EXPECT_TRUE(reads("Session: ended"));
    EXPECT_EQ(focused(), "Call with AI");
    EXPECT_TRUE(canPress("Redial 5551234"));
    EXPECT_EQ(bench.loop.clock.waiting(), 0U); // nothing ticks
}

TEST_F(MainViewTest, ARunningCallKeepsItsNumberAndRedialWaits) {
    bench.addKey();
    bench.addCall("5550001", 1h, 60);
    bench.addCall("", 2min, 60);
    open();
    EXPECT_FALSE(canPress("Redial Unknown"));
    bench.goLive("5551234");
    EXPECT_FALSE(canPress("Redial 5550001"));
    EXPECT_FALSE(press("Redial 5550001"));
    bench.model->session()->redial(QStringLiteral("5550001"), {});
    EXPECT_EQ(bench.app.nativeSession->number(), "5551234");
    EXPECT_TRUE(reader->find(QAccessible::EditableText, QStringLiteral("Number"))->state().readOnly);
    EXPECT_TRUE(press("Stop"));
    EXPECT_TRUE(press("Redial 5550001"));
    EXPECT_EQ(bench.app.nativeSession->number(), "5550001");
    EXPECT_TRUE(bench.app.nativeSession->running());
}

TEST_F(MainViewTest, TheKeyboardReachesEverythingAndArrowsGoThroughTheCalls) {
    bench.addKey();
    for (const char* number : {"5550003", "5550002", "5550001"})
        bench.addCall(number, 1h, 60);
    bench.app.nativeSession->number.set("5551234");
    open();
    EXPECT_EQ(focused(), "Number");
    EXPECT_EQ(reader->tabStops(),
              (Notes{"Goal", "Call with AI", "Redial 5550001", "Ready", "Settings", "Number"}));
    EXPECT_EQ(reader->nameless(), Notes{});
    for (int i = 0; i < 6 && focused() != "Redial 5550001"; ++i)
        reader->key(Qt::Key_Tab);
    reader->key(Qt::Key_Down);
    reader->key(Qt::Key_Return);
    EXPECT_EQ(bench.app.nativeSession->number(), "5550002");
    EXPECT_EQ(focused(), "Stop");
}

TEST_F(MainViewTest, SaysWhatIsMissingOneHintAtATime) {
    bench.computer.desktop.setTrusted(false);
    bench.computer.audio.removeDevice("VeltoLoop 2ch");
    open();
    const char* keyHint = "Add a Gemini or OpenAI key in Settings → Readiness.";
    const char* accessHint = "Grant Accessibility in System Settings so Velto can dial and detect calls.";
    EXPECT_TRUE(canPress("Readiness"));
    EXPECT_TRUE(reads("Fix what's missing"));
    EXPECT_TRUE(reads("AI key missing"));
    EXPECT_TRUE(reads("Audio bridge: Bridge devices not installed — Settings → Debug → Drivers"));
    EXPECT_TRUE(reads(keyHint));
    EXPECT_FALSE(reads(accessHint));
    bench.addKey();
    EXPECT_FALSE(reads(keyHint));
    EXPECT_TRUE(reads(accessHint));

    bench.app.nativeSession->number.set("5551234");
    bench.line.isTrusted = false;
    bench.settle();
    EXPECT_TRUE(press("Call with AI"));
    EXPECT_TRUE(reads("Session: error"));
    EXPECT_TRUE(reads("The call was not started: Velto is not allowed to use the phone app yet."));

    bench.computer.desktop.setTrusted(true);
    bench.model->mainWindowActivated();
    bench.settle();
    EXPECT_FALSE(reads(accessHint));
    EXPECT_TRUE(canPress("Ready"));
}

TEST_F(MainViewTest, AFirstRunOpensTheChecklistOnce) {
    const auto settingsWindow = [this] {
        return window->property("settingsWindow").value<QObject*>() != nullptr;
    };
    bench.settings.hasCompletedSetup.set(false);
    bench.computer.preferences.set("velto.settingsTab", PreferenceValue(std::string("general")));
    bench.computer.preferences.set("bridgeActive", PreferenceValue(true)); // killed in mid-call
    bench.drivers.clear();
    open();
    EXPECT_TRUE(settingsWindow());
    EXPECT_EQ(bench.computer.preferences.text("velto.settingsTab"), "readiness");
    EXPECT_FALSE(bench.computer.preferences.boolean("bridgeActive"));
    open();
    EXPECT_FALSE(settingsWindow());
    EXPECT_TRUE(press("Settings"));
    EXPECT_TRUE(settingsWindow());
}

TEST_F(MainViewTest, ClosingInMidCallAsksFirstAndLosesNoRecord) {
    bench.addKey();
    open();
    bench.goLive("5551234");
    window->close();
    bench.settle();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(focused(), "Keep the call");
    reader->key(Qt::Key_Return);
    EXPECT_TRUE(bench.app.nativeSession->running());
    window->close();
    bench.settle();
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
        frame();
        bench.settle();
    };
    talk(30);
    auto* const list = window->findChild<QQuickItem*>(QStringLiteral("transcript"));
    ASSERT_NE(list, nullptr);
    const auto atEnd = [&] { return list->property("atYEnd").toBool(); };
    EXPECT_TRUE(atEnd());
    list->forceActiveFocus();
    reader->key(Qt::Key_PageUp);
    EXPECT_FALSE(atEnd());
    const auto place = list->property("contentY").toDouble();
    talk(5);
    EXPECT_EQ(list->property("contentY").toDouble(), place);
    EXPECT_TRUE(press("Newest line"));
    talk(1);
    EXPECT_TRUE(atEnd());
}

TEST_F(MainViewTest, TakesWhateverIsPasted) {
    bench.addKey();
    open();
    const std::string goal(10'240, 'x');
    bench.app.agent->goal.set(goal);
    bench.app.nativeSession->number.set("0043-1-TRATTORIA-LUCIA-VIENNA-0123456789");
    bench.settle();
    EXPECT_TRUE(press("Call with AI"));
    EXPECT_EQ(bench.agents.made.back().goal, goal);

    EXPECT_EQ(window->minimumSize(), QSize(720, 520));
    window->resize(window->minimumSize());
    bench.settle();
    frame();
    EXPECT_EQ(reader->cutOff(), Notes{});
}

} // namespace
} // namespace velto::test
