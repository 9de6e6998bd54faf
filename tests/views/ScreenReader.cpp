#include "tests/views/ScreenReader.h"

#include <QAccessibleActionInterface>
#include <QCoreApplication>
#include <QKeyEvent>

#include <algorithm>

namespace velto::test {
namespace {

bool isVisible(const QAccessibleInterface& element) {
    return !element.state().invisible && !element.rect().isEmpty();
}

/// What Qt 6.4 does not tell screen readers.
bool isEnabled(const QAccessibleInterface& element) {
    const auto* const item = qobject_cast<QQuickItem*>(element.object());
    return item && item->isEnabled();
}

/// The first visible element, parents before their children, of which `is` is true.
template <class Is>
QAccessibleInterface* search(QAccessibleInterface* element, const Is& is) {
    if (!element || is(*element))
        return element;
    for (int i = 0; i < element->childCount(); ++i)
        if (auto* const child = element->child(i); child && isVisible(*child))
            if (auto* const found = search(child, is))
                return found;
    return nullptr;
}

std::string nameOf(const QAccessibleInterface& element) {
    return element.text(QAccessible::Name).toStdString();
}

} // namespace

QAccessibleInterface* ScreenReader::find(QAccessible::Role role, const QString& name) const {
    return search(QAccessible::queryAccessibleInterface(&window_), [&](const QAccessibleInterface& element) {
        return element.role() == role && element.text(QAccessible::Name) == name;
    });
}

int ScreenReader::count(QAccessible::Role role) const {
    int found = 0;
    search(QAccessible::queryAccessibleInterface(&window_), [&](const QAccessibleInterface& element) {
        found += element.role() == role ? 1 : 0;
        return false;
    });
    return found;
}

std::vector<std::string> ScreenReader::enabled(QAccessible::Role role) const {
    std::vector<std::string> names;
    search(QAccessible::queryAccessibleInterface(&window_), [&](const QAccessibleInterface& element) {
        if (element.role() == role && isEnabled(element))
            names.push_back(nameOf(element));
        return false;
    });
    return names;
}

bool ScreenReader::reads(const QString& text) const {
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

std::vector<std::string> ScreenReader::tabStops() const {
    std::vector<std::string> names;
    std::vector<QQuickItem*> seen;
    for (;;) {
        key(Qt::Key_Tab);
        auto* const item = window_.activeFocusItem();
        if (!item || std::ranges::find(seen, item) != seen.end())
            return names;
        seen.push_back(item);
        const auto* const element = QAccessible::queryAccessibleInterface(item);
        names.push_back(element ? nameOf(*element) : item->metaObject()->className());
    }
}

std::vector<std::string> ScreenReader::cutOff() const {
    std::vector<std::string> names;
    const auto* const whole = QAccessible::queryAccessibleInterface(&window_);
    search(QAccessible::queryAccessibleInterface(&window_), [&](const QAccessibleInterface& element) {
        const auto place = element.rect();
        if (place.left() < whole->rect().left() || place.right() > whole->rect().right())
            names.push_back(nameOf(element));
        return false;
    });
    return names;
}

std::vector<std::string> ScreenReader::nameless() const {
    std::vector<std::string> found;
    search(QAccessible::queryAccessibleInterface(&window_), [&](const QAccessibleInterface& element) {
        if (element.state().focusable && nameOf(element).empty())
            found.emplace_back(element.object()->metaObject()->className());
        return false;
    });
    return found;
}

} // namespace velto::test
