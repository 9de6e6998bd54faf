// A window of the application for tests, and whoever uses it.
#pragma once

#include "tests/views/ScreenReader.h"
#include "tests/views/WindowBench.h"

#include <gtest/gtest.h>

#include <optional>

namespace velto::test {

using namespace std::chrono_literals;

struct ViewTest : ::testing::Test {
    void open(const QString& file = QStringLiteral("MainView.qml")) {
        window = &bench.open(file);
        reader.emplace(*window, [this] { bench.settle(); });
    }
    void openSettings(const char* tab = "readiness") {
        bench.computer.preferences.set("velto.settingsTab", std::string(tab));
        open(QStringLiteral("SettingsView.qml"));
    }
    /// In the debug area.
    void openPane(const char* pane) {
        openSettings("debug");
        ASSERT_TRUE(reader->pick("Pane", pane)) << pane;
    }
    bool reads(const QString& text) const { return reader->reads(text); }
    bool press(const QString& name, QAccessible::Role role = QAccessible::Button) const {
        return reader->press(name, role);
    }
    /// Whether it can be used.
    bool offers(const char* button) const {
        return std::ranges::count(reader->enabled(QAccessible::Button), button) > 0;
    }
    /// Of a field or a text area.
    QString text(const QString& name) const { return shown(QAccessible::EditableText, name, "text"); }
    /// In a picker.
    QString chosen(const QString& picker) const {
        return shown(QAccessible::ComboBox, picker, "displayText");
    }
    void fill(const QString& field, const QString& text) const {
        auto* const item = reader->item(QAccessible::EditableText, field);
        ASSERT_NE(item, nullptr) << field.toStdString();
        item->forceActiveFocus();
        QMetaObject::invokeMethod(item, "selectAll");
        reader->key(Qt::Key_Delete);
        reader->type(text);
    }
    WindowBench bench;
    QQuickWindow* window = nullptr;
    std::optional<ScreenReader> reader;

  private:
    QString shown(QAccessible::Role role, const QString& name, const char* property) const {
        const auto* const item = reader->item(role, name);
        return item ? item->property(property).toString() : "there is no " + name;
    }
};

} // namespace velto::test
