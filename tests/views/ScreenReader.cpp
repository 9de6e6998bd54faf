#include "tests/views/ScreenReader.h"

#include <QAccessibleActionInterface>
#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>

namespace velto::test {
namespace {

/// What Qt 6.4 does not tell screen readers.
bool isEnabled(const QAccessibleInterface& element) {
    const auto* const item = qobject_cast<QQuickItem*>(element.object());
    return item && item->isEnabled();
}

std::string nameOf(const QAccessibleInterface& element) {
    const auto name = element.text(QAccessible::Name).toStdString();
    return name.empty() ? element.object()->metaObject()->className() : name;
}

void collect(QAccessibleInterface& element, std::vector<QAccessibleInterface*>& found) {
    found.push_back(&element);
    for (int i = 0; i < element.childCount(); ++i)
        if (auto* const child = element.child(i);
            child && !child->state().invisible && !child->rect().isEmpty())
            collect(*child, found);
}

} // namespace

/// Parents before their children.
ScreenReader::Elements ScreenReader::elements() const {
    settle_();
    Elements found;
    collect(*QAccessible::queryAccessibleInterface(&window_), found);
    return found;
}

std::vector<std::string>
ScreenReader::names(const std::function<bool(const QAccessibleInterface&)>& are) const {
    std::vector<std::string> names;
    for (const auto* const element : elements())
        if (are(*element))
            names.push_back(nameOf(*element));
    return names;
}

QAccessibleInterface* ScreenReader::find(QAccessible::Role role, const QString& name) const {
    for (auto* const element : elements())
        if (element->role() == role && element->text(QAccessible::Name) == name)
            return element;
    return nullptr;
}

std::vector<std::string> ScreenReader::enabled(QAccessible::Role role) const {
    window_.grabWindow(); // rows of lists come with a frame
    return names([&](const auto& element) { return element.role() == role && isEnabled(element); });
}

bool ScreenReader::reads(const QString& text) const {
    window_.grabWindow(); // what has just appeared has no size before a frame
    return finds(QAccessible::StaticText, text) || finds(QAccessible::Heading, text);
}

bool ScreenReader::press(const QString& name, QAccessible::Role role) const {
    auto* const element = find(role, name);
    if (!element || !isEnabled(*element) || !element->actionInterface())
        return false;
    element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    // What comes into sight comes with frames, which come in real time by themselves; each lays out what the
    // one before has made another size.
    constexpr int kFrames = 3;
    for (int i = 0; i < kFrames; ++i) {
        settle_();
        window_.grabWindow();
    }
    return true;
}

bool ScreenReader::pick(const QString& picker, const QString& choice) const {
    return press(picker, QAccessible::ComboBox) && press(choice, QAccessible::ListItem);
}

QQuickItem* ScreenReader::item(QAccessible::Role role, const QString& name) const {
    auto* const element = find(role, name);
    return element ? qobject_cast<QQuickItem*>(element->object()) : nullptr;
}

void ScreenReader::key(Qt::Key key, const QString& text) const {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&window_, &event);
    }
    settle_();
}

void ScreenReader::type(const QString& text) const {
    for (const auto letter : text)
        key(Qt::Key_unknown, letter);
}

std::string ScreenReader::focused() const {
    const auto* const element = QAccessible::queryAccessibleInterface(window_.activeFocusItem());
    return element ? nameOf(*element) : "";
}

std::vector<std::string> ScreenReader::tabStops() const {
    constexpr std::size_t kMost = 100; // where it does not come around
    std::vector<std::string> names;
    const auto* const first = window_.activeFocusItem();
    do {
        key(Qt::Key_Tab);
        names.push_back(focused());
    } while (window_.activeFocusItem() != first && names.size() < kMost);
    return names;
}

std::vector<std::string> ScreenReader::cutOff() const {
    const auto whole = QAccessible::queryAccessibleInterface(&window_)->rect();
    return names([&](const auto& element) {
        return element.rect().left() < whole.left() || element.rect().right() > whole.right();
    });
}

std::vector<std::string> ScreenReader::nameless() const {
    return names([](const auto& element) {
        return element.state().focusable && element.text(QAccessible::Name).isEmpty();
    });
}

} // namespace velto::test
