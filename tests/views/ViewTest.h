// A window of the application for tests, and whoever uses it.
#pragma once

#include "tests/views/ScreenReader.h"
#include "tests/views/WindowBench.h"

#include <gtest/gtest.h>

#include <optional>

namespace velto::test {

using namespace std::chrono_literals;

struct ViewTest : ::testing::Test {
    void open(const QString& file = QStringLiteral("MainView.qml"));
    void openSettings(const char* tab = "readiness");
    /// In the debug area.
    void openPane(const char* pane);
    bool reads(const QString& text) const { return reader->reads(text); }
    bool press(const QString& name, QAccessible::Role role = QAccessible::Button) const {
        return reader->press(name, role);
    }
    bool offers(const QString& button) const { return reader->finds(QAccessible::Button, button); }
    /// The text of a field or a text area.
    QString text(const QString& name) const;
    /// What a picker shows.
    std::string chosen(const QString& picker) const;
    void fill(const QString& field, const QString& text) const;
    WindowBench bench;
    QQuickWindow* window = nullptr;
    std::optional<ScreenReader> reader;
};

} // namespace velto::test
