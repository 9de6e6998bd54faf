// The phone's window: the number, how the call goes on, a keypad, dialling and hanging up.
#pragma once

#include "VeltoPhone/model/Phone.h"

#include <QLabel>
#include <QLineEdit>
#include <QWidget>

namespace velto::phone {

class Button;
class Keypad;

/// While a call is up a key sends its tone, otherwise it edits the number; the keyboard's keys do the same
/// wherever the focus is. Its buttons are "Dial number" and "Hang up", unlike the banner's, so that "Call"
/// and "End" are found in one place only.
class MainWindow : public QWidget {
    Q_OBJECT

  public:
    explicit MainWindow(Phone& phone);

    /// Shows it, in front of others and with the focus.
    void present();

  Q_SIGNALS:
    void hidden();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QWidget* actions();
    void follow();
    void dial();
    void keyPressed(QChar key);
    void restyle();

    Phone& phone_;
    QLabel* status_;
    QLineEdit* number_;
    QLabel* tones_;
    Keypad* keypad_;
    Button* dial_ = nullptr;
    Button* hangUp_ = nullptr;
    Button* erase_ = nullptr;
    QLabel* notice_;
};

} // namespace velto::phone
