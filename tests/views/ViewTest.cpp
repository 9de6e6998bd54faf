#include "tests/views/ViewTest.h"

namespace velto::test {

void ViewTest::open(const QString& file) {
    window = &bench.open(file);
    reader.emplace(*window, [this] { bench.settle(); });
}

void ViewTest::openSettings(const char* tab) {
    bench.computer.preferences.set("velto.settingsTab", std::string(tab));
    open(QStringLiteral("SettingsView.qml"));
}

void ViewTest::openPane(const char* pane) {
    openSettings("debug");
    ASSERT_TRUE(reader->pick("Pane", pane)) << pane;
}

QString ViewTest::text(const QString& name) const {
    const auto* const item = reader->item(QAccessible::EditableText, name);
    return item ? item->property("text").toString() : QString();
}

std::string ViewTest::chosen(const QString& picker) const {
    const auto* const item = reader->item(QAccessible::ComboBox, picker);
    return item ? item->property("displayText").toString().toStdString() : "no such picker";
}

void ViewTest::fill(const QString& field, const QString& text) const {
    auto* const item = reader->item(QAccessible::EditableText, field);
    ASSERT_NE(item, nullptr) << field.toStdString();
    item->forceActiveFocus();
    QMetaObject::invokeMethod(item, "selectAll");
    reader->key(Qt::Key_Delete);
    reader->type(text);
}

} // namespace velto::test
