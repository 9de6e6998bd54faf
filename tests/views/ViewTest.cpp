#include "tests/views/SettingsWindow.h"

namespace velto::test {

void SettingsWindow::open(const char* tab) {
    bench.computer.preferences.set("velto.settingsTab", std::string(tab));
    window = &bench.open(QStringLiteral("SettingsView.qml"));
    reader.emplace(*window, [this] { bench.settle(); });
}

void SettingsWindow::openPane(const char* pane) {
    open("debug");
    ASSERT_TRUE(reader->pick("Pane", pane)) << pane;
}

QString SettingsWindow::text(const QString& name) const {
    const auto* const item = reader->item(QAccessible::EditableText, name);
    return item ? item->property("text").toString() : QString();
}

void SettingsWindow::fill(const QString& field, const QString& text) const {
    auto* const item = reader->item(QAccessible::EditableText, field);
    ASSERT_NE(item, nullptr) << field.toStdString();
    item->forceActiveFocus();
    QMetaObject::invokeMethod(item, "selectAll");
    reader->key(Qt::Key_Delete);
    reader->type(text);
}

} // namespace velto::test
