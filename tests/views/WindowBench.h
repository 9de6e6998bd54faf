// The main window over the simulated computer, a line and an agent that are played by hand, and a clock that
// moves only when told.
#pragma once

#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/views/models/AppModel.h"
#include "tests/session/SessionFakes.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include <memory>
#include <string>
#include <vector>

namespace velto::test {

/// Before the first use: `prepareQt` and a QGuiApplication. One thread.
class WindowBench : CallArchive {
  public:
    /// For windows that nobody sees, with the software renderer.
    static void prepareQt();

    /// A computer that is ready, with sound devices, without calls and keys.
    WindowBench();
    ~WindowBench() override;
    WindowBench(const WindowBench&) = delete;
    WindowBench& operator=(const WindowBench&) = delete;

    /// Stores a key, which is found valid.
    void addKey();
    /// A call that ended so long ago.
    void addCall(std::string number, Clock::Duration ago, double seconds);
    /// One of 16,000 Hz, in the folder of recordings.
    static std::filesystem::path addRecording(const char* name, const std::vector<std::int16_t>& samples);
    /// Loads the window of this file, shows it and lets it settle.
    QQuickWindow& open(const QString& file = QStringLiteral("MainView.qml"));
    /// Runs all that is ready, in both loops.
    void settle();
    void advance(Clock::Duration duration);
    /// Lines of the agent of the call under way: "caller: …", "agent: …", "turn complete".
    void say(std::initializer_list<std::string> lines);
    /// Dials, connects and answers.
    void goLive(const char* number);

    TestComputer computer;
    Loop loop;
    Notes notes;
    FakeLine line{notes};
    FakeAudio audio{notes};
    FakeAgents agents{notes};
    std::vector<std::string> drivers{"VeltoLoop.driver", "VeltoVoice.driver"};
    AppSettings settings{computer.preferences};
    CallHistoryStore history{computer.root() / "history.json"};

    VeltoApp app;
    std::unique_ptr<AppModel> model;

  private:
    void add(CallRecord record) override { history.insertFirst(std::move(record)); }

    std::unique_ptr<QQmlApplicationEngine> engine_;
};

} // namespace velto::test
