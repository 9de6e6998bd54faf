// A window as a screen reader finds it: elements by their roles and names.
#pragma once

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace velto::test {

/// Qt's main thread. Sees what is visible only.
class ScreenReader {
  public:
    /// `settle` lets the program do what there is to do.
    ScreenReader(QQuickWindow& window, std::function<void()> settle)
        : window_(window), settle_(std::move(settle)) {}

    QAccessibleInterface* find(QAccessible::Role role, const QString& name) const {
        for (auto* const element : elements())
            if (element->role() == role && element->text(QAccessible::Name) == name)
                return element;
        return nullptr;
    }
    bool finds(QAccessible::Role role, const QString& name) const { return find(role, name) != nullptr; }
    /// What shows it; none when there is no such element.
    QQuickItem* item(QAccessible::Role role, const QString& name) const {
        auto* const element = find(role, name);
        return element ? qobject_cast<QQuickItem*>(element->object()) : nullptr;
    }
    /// The names of those that can be used.
    std::vector<std::string> enabled(QAccessible::Role role) const {
        window_.grabWindow(); // rows of lists come with a frame
        return names([&](const auto& element) { return element.role() == role && isEnabled(element); });
    }
    /// Whether a text stands in the window, letter for letter.
    bool reads(const QString& text) const {
        window_.grabWindow(); // what has just appeared has no size before a frame
        return finds(QAccessible::StaticText, text) || finds(QAccessible::Heading, text);
    }
    /// False when it is not there, or disabled.
    bool press(const QString& name, QAccessible::Role role = QAccessible::Button) const {
        auto* const element = find(role, name);
        if (!element || !isEnabled(*element) || !element->actionInterface())
            return false;
        element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        // What comes into sight comes with frames, which come in real time by themselves; each lays out what
        // the one before has made another size.
        constexpr int kFrames = 3;
        for (int i = 0; i < kFrames; ++i) {
            settle_();
            window_.grabWindow();
        }
        return true;
    }
    /// Chooses in a picker; false when either is not there.
    bool pick(const QString& picker, const QString& choice) const {
        return press(picker, QAccessible::ComboBox) && press(choice, QAccessible::ListItem);
    }
    /// To the window, which hands it to what has the keyboard.
    void key(Qt::Key key, const QString& text = {}) const {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, Qt::NoModifier, text);
            QCoreApplication::sendEvent(&window_, &event);
        }
        settle_();
    }
    void type(const QString& text) const {
        for (const auto letter : text)
            key(Qt::Key_unknown, letter);
    }
    /// The name of the element that has the keyboard.
    std::string focused() const {
        const auto* const element = QAccessible::queryAccessibleInterface(window_.activeFocusItem());
        return element ? nameOf(*element) : "";
    }
    /// The same, each time that Tab is pressed, until it comes around.
    std::vector<std::string> tabStops() const {
        constexpr std::size_t kMost = 100; // where it does not come around
        std::vector<std::string> names;
        const auto* const first = window_.activeFocusItem();
        do {
            key(Qt::Key_Tab);
            names.push_back(focused());
        } while (window_.activeFocusItem() != first && names.size() < kMost);
        return names;
    }
    /// Elements that stand out of the window to the left or to the right.
    std::vector<std::string> cutOff() const {
        const auto whole = QAccessible::queryAccessibleInterface(&window_)->rect();
        return names([&](const auto& element) {
            return element.rect().left() < whole.left() || element.rect().right() > whole.right();
        });
    }
    /// Elements that can be used and have no name, by their kinds.
    std::vector<std::string> nameless() const {
        return names([](const auto& element) {
            return element.state().focusable && element.text(QAccessible::Name).isEmpty();
        });
    }

  private:
    using Elements = std::vector<QAccessibleInterface*>;

    /// What Qt 6.4 does not tell screen readers.
    static bool isEnabled(const QAccessibleInterface& element) {
        const auto* const item = qobject_cast<QQuickItem*>(element.object());
        return item && item->isEnabled();
    }
    static std::string nameOf(const QAccessibleInterface& element) {
        const auto name = element.text(QAccessible::Name).toStdString();
        return name.empty() ? element.object()->metaObject()->className() : name;
    }
    static void collect(QAccessibleInterface& element, Elements& found) {
        found.push_back(&element);
        for (int i = 0; i < element.childCount(); ++i)
            if (auto* const child = element.child(i);
                child && !child->state().invisible && !child->rect().isEmpty())
                collect(*child, found);
    }
    /// Parents before their children.
    Elements elements() const {
        settle_();
        Elements found;
        collect(*QAccessible::queryAccessibleInterface(&window_), found);
        return found;
    }
    std::vector<std::string> names(const std::function<bool(const QAccessibleInterface&)>& are) const {
        std::vector<std::string> names;
        for (const auto* const element : elements())
            if (are(*element))
                names.push_back(nameOf(*element));
        return names;
    }

    QQuickWindow& window_;
    std::function<void()> settle_;
};

} // namespace velto::test
