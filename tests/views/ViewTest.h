// The settings window for tests.
#pragma once

#include "tests/views/ScreenReader.h"
#include "tests/views/WindowBench.h"

#include <gtest/gtest.h>

#include <optional>

namespace velto::test {

using namespace std::chrono_literals;

struct SettingsWindow : ::testing::Test {
    void open(const char* tab = "readiness");
    /// In the debug area.
    void openPane(const char* pane);
    bool reads(const QString& text) const {
        window->grabWindow(); // what has just appeared has no size before a frame
        return reader->reads(text);
    }
    bool press(const QString& name, QAccessible::Role role = QAccessible::Button) const {
        return reader->press(name, role);
    }
    bool offers(const QString& button) const { return reader->finds(QAccessible::Button, button); }
    /// The text of a field or a text area.
    QString text(const QString& name) const;
    void fill(const QString& field, const QString& text) const;
    WindowBench bench;
    QQuickWindow* window = nullptr;
    std::optional<ScreenReader> reader;
};

} // namespace velto::test
