// A window of the application on the simulated computer, used as a screen reader uses it: by roles and names.
#pragma once

#include "VeltoApp/app/VeltoApp.h"
#include "VeltoApp/views/app/QtExecutor.h"
#include "VeltoApp/views/models/AppModel.h"
#include "VeltoShared/core/AppPaths.h"
#include "tests/session/SessionFakes.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

#include <memory>
#include <string>
#include <vector>

namespace velto::test {

using namespace std::chrono_literals;

/// Qt's loop as every executor, on one thread; time moves when a test moves it.
class WindowTest : public ::testing::Test {
  protected:
    WindowTest();
    ~WindowTest() override;

    /// Opens the window of this file and lets it settle.
    void open(const QString& file);
    void close();
    /// Runs what is ready.
    void settle();

    /// The first visible element with this role and name; none when there is none.
    QAccessibleInterface* find(QAccessible::Role role, const QString& name) const;
    bool shows(QAccessible::Role role, const QString& name) const { return find(role, name) != nullptr; }
    /// Whether a text stands in the window, letter for letter.
    bool says(const QString& text) const;
    /// Presses as a screen reader does; false when it is not there, or disabled.
    bool press(const QString& name, QAccessible::Role role = QAccessible::Button);
    QQuickItem* item(QAccessible::Role role, const QString& name) const;
    void key(Qt::Key key, const QString& text = {});
    /// Picks from a picker by its label.
    void pick(const QString& picker, const QString& choice);
    /// Visible elements that can be used and have no name.
    std::vector<std::string> nameless() const;
    /// Saves the window where VELTO_PICTURES names a folder.
    void picture(const std::string& name);

    TestComputer computer;
    QtLoop loop;
    ManualClock clock{[this] { settle(); }};
    AppSettings settings{computer.preferences};
    CallHistoryStore history{AppPaths::historyFile()};
    Notes calls;    ///< what the session asked of line, sound and agent
    Notes commands; ///< what was to be run as the administrator
    Notes validated;
    Notes drivers{"VeltoHQ.driver", "VeltoLoop.driver", "VeltoVoice.driver"};

  private:
    asio::awaitable<bool> validate(VoiceProvider provider, std::string key);

    FakeLine line_{calls};
    FakeAudio sound_{calls};
    FakeAgents agents_{calls};
    FakeArchive archive_{calls};

  protected:
    VeltoApp app;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<QQmlApplicationEngine> engine;
    QQuickWindow* window = nullptr;
};

} // namespace velto::test
