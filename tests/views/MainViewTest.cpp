// The main window as its users meet it: by what a screen reader finds, by keys, and by what comes of both.
#include "tests/views/WindowBench.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickItem>

#include <gtest/gtest.h>

#include <algorithm>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using State = NativeCallSession::State;

struct MainViewTest : ::testing::Test {
    void open() { window = &bench.open(); }

    static void collect(QAccessibleInterface* element, std::vector<QAccessibleInterface*>& found) {
        if (!element || element->state().invisible)
            return;
        found.push_back(element);
        for (int i = 0; i < element->childCount(); ++i)
            collect(element->child(i), found);
    }
    std::vector<QAccessibleInterface*> elements() const {
        std::vector<QAccessibleInterface*> found;
        collect(QAccessible::queryAccessibleInterface(window), found);
        return found;
    }
    QAccessibleInterface* find(const char* name) const {
        for (auto* const element : elements())
            if (element->text(QAccessible::Name) == QString::fromUtf8(name))
                return element;
        return nullptr;
    }
    bool shows(const char* name) const { return find(name) != nullptr; }
    static bool enabled(QAccessibleInterface* element) { return element && element->text(QAccessible::Description).isEmpty(); }
    void press(const char* name) {
        auto* const element = find(name);
        ASSERT_NE(element, nullptr) << name;
        element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        bench.settle();
    }
    void key(Qt::Key code, const QString& text = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        for (const auto kind : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(kind, code, modifiers, text);
            QCoreApplication::sendEvent(window, &event);
        }
        bench.settle();
    }
    void type(const QString& text) {
        for (const auto letter : text)
            key(Qt::Key_unknown, letter);
    }
    std::string focused() const {
        auto* const item = window->activeFocusItem();
        auto* const element = QAccessible::queryAccessibleInterface(item);
        return element ? element->text(QAccessible::Name).toStdString() : "";
    }

    WindowBench bench;
    QQuickWindow* window = nullptr;
};

TEST_F(MainViewTest, PlacesACallByKeyboardAloneAndFollowsItToItsRecord) {
    bench.addKey();
    open();
    EXPECT_TRUE(shows("Ready"));
    EXPECT_TRUE(shows("All set"));
    EXPECT_TRUE(shows("AI key ready"));
    EXPECT_TRUE(shows("Session: idle"));
    EXPECT_FALSE(enabled(find("Call with AI")));
    EXPECT_FALSE(shows("Stop"));

    for (int i = 0; i < 10 && focused() != "Number"; ++i)
        key(Qt::Key_Tab);
    type(QStringLiteral("5551234"));
    EXPECT_EQ(bench.app.nativeSession->number(), "5551234");
    key(Qt::Key_Tab);
    EXPECT_EQ(focused(), "Goal");
    key(Qt::Key_A, {}, Qt::ControlModifier);
    type(QStringLiteral("Ask <b>politely</b>"));
    EXPECT_EQ(bench.app.agent->goal(), "Ask <b>politely</b>");
    key(Qt::Key_Tab);
    EXPECT_EQ(focused(), "Call with AI");
    key(Qt::Key_Return);
    ASSERT_TRUE(bench.app.nativeSession->running());
    EXPECT_EQ(bench.agents.made.back().goal, "Ask <b>politely</b>");
    EXPECT_EQ(focused(), "Stop");
    EXPECT_TRUE(shows("Session: dialing"));

    bench.line.answered = true;
    bench.advance(3s);
    EXPECT_TRUE(shows("Session: live"));
    EXPECT_TRUE(shows("Running time 0:03"));
    bench.say({"caller: Hello ", "caller: there", "agent: <i>Hi</i>"});
    window->grabWindow(); // rows come with a frame
    EXPECT_TRUE(shows("Caller: Hello there"));
    EXPECT_TRUE(shows("Agent: <i>Hi</i>"));
    key(Qt::Key_Space);
    EXPECT_TRUE(shows("Session: ended"));
    EXPECT_EQ(focused(), "Call with AI");
    EXPECT_TRUE(shows("Redial 5551234"));
    EXPECT_EQ(bench.loop.clock.waiting(), 0U); // nothing ticks
}

TEST_F(MainViewTest, ARunningCallKeepsItsNumberAndRedialWaits) {
    bench.addKey();
    bench.addCall("5550001", 1h, 60);
    bench.addCall("", 2min, 60);
    open();
    EXPECT_FALSE(enabled(find("Redial Unknown")));
    bench.goLive("5551234");
    EXPECT_FALSE(enabled(find("Redial 5550001")));
    press("Redial 5550001");
    bench.model->session()->redial(QStringLiteral("5550001"), {});
    EXPECT_EQ(bench.app.nativeSession->number(), "5551234");
    EXPECT_TRUE(find("Number")->state().readOnly);
    press("Stop");
    press("Redial 5550001");
    EXPECT_EQ(bench.app.nativeSession->number(), "5550001");
    EXPECT_TRUE(bench.app.nativeSession->running());
}

TEST_F(MainViewTest, SaysWhatIsMissingOneHintAtATime) {
    bench.computer.desktop.setTrusted(false);
    bench.computer.audio.removeDevice("VeltoLoop 2ch");
    open();
    const char* keyHint = "Add a Gemini or OpenAI key in Settings → Readiness.";
    const char* accessHint = "Grant Accessibility in System Settings so Velto can dial and detect calls.";
    EXPECT_TRUE(shows("Readiness"));
    EXPECT_TRUE(shows("Fix what's missing"));
    EXPECT_TRUE(shows("AI key missing"));
    EXPECT_TRUE(shows("Audio bridge: Bridge devices not installed — Settings → Debug → Drivers"));
    EXPECT_TRUE(shows(keyHint));
    EXPECT_FALSE(shows(accessHint));
    bench.addKey();
    EXPECT_FALSE(shows(keyHint));
    EXPECT_TRUE(shows(accessHint));

    bench.app.nativeSession->number.set("5551234");
    bench.line.isTrusted = false;
    bench.settle();
    press("Call with AI");
    EXPECT_TRUE(shows("Session: error"));
    EXPECT_TRUE(shows("The call was not started: Velto is not allowed to use the phone app yet."));

    bench.computer.desktop.setTrusted(true);
    bench.model->mainWindowActivated();
    bench.settle();
    EXPECT_FALSE(shows(accessHint));
    EXPECT_TRUE(shows("Ready"));
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
    press("Settings");
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
    key(Qt::Key_Return);
    EXPECT_TRUE(bench.app.nativeSession->running());
    window->close();
    bench.settle();
    press("Stop and quit");
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
    auto* const list = window->findChild<QQuickItem*>(QStringLiteral("transcript"));
    ASSERT_NE(list, nullptr);
    const auto atEnd = [&] { return list->property("atYEnd").toBool(); };
    EXPECT_TRUE(atEnd());
    list->forceActiveFocus();
    key(Qt::Key_PageUp);
    EXPECT_FALSE(atEnd());
    const auto place = list->property("contentY").toDouble();
    talk(5);
    EXPECT_EQ(list->property("contentY").toDouble(), place);
    press("Newest line");
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
    press("Call with AI");
    EXPECT_EQ(bench.agents.made.back().goal, goal);
    EXPECT_EQ(window->minimumSize(), QSize(720, 520));
}

} // namespace
} // namespace velto::test
