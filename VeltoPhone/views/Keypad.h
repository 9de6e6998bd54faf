// The twelve keys of a phone.
#pragma once

#include <QWidget>

#include <map>

namespace velto::phone {

class Button;

/// A long press on 0 is a "+".
class Keypad : public QWidget {
    Q_OBJECT

  public:
    Keypad();

    /// Presses the key, as from the keyboard; false when there is no such key.
    bool press(QChar key);

  Q_SIGNALS:
    void pressed(QChar key);

  private:
    std::map<QChar, Button*> keys_;
};

} // namespace velto::phone
