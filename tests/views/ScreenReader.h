// A window as a screen reader finds it: elements by their roles and names.
#pragma once

#include <QAccessible>
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

    QAccessibleInterface* find(QAccessible::Role role, const QString& name) const;
    bool finds(QAccessible::Role role, const QString& name) const { return find(role, name) != nullptr; }
    /// The names of those that can be used.
    std::vector<std::string> enabled(QAccessible::Role role) const;
    /// Whether a text stands in the window, letter for letter.
    bool reads(const QString& text) const;
    /// False when it is not there, or disabled.
    bool press(const QString& name, QAccessible::Role role = QAccessible::Button) const;
    /// Chooses in a picker; false when either is not there.
    bool pick(const QString& picker, const QString& choice) const;
    /// What shows it; none when there is no such element.
    QQuickItem* item(QAccessible::Role role, const QString& name) const;
    /// To the window, which hands it to what has the keyboard.
    void key(Qt::Key key, const QString& text = {}) const;
    void type(const QString& text) const;
    /// The name of the element that has the keyboard.
    std::string focused() const;
    /// The same, each time that Tab is pressed, until it comes around.
    std::vector<std::string> tabStops() const;
    /// Elements that stand out of the window to the left or to the right.
    std::vector<std::string> cutOff() const;
    /// Elements that can be used and have no name, by their kinds.
    std::vector<std::string> nameless() const;

  private:
    using Elements = std::vector<QAccessibleInterface*>;
    Elements elements() const;
    std::vector<std::string> names(const std::function<bool(const QAccessibleInterface&)>& are) const;

    QQuickWindow& window_;
    std::function<void()> settle_;
};

} // namespace velto::test
