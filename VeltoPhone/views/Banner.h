// The small window in the corner that offers a call, shows how it goes on and ends it.
#pragma once

#include "VeltoPhone/model/Phone.h"

#include <QLabel>
#include <QScreen>
#include <QWidget>

namespace velto::phone {

/// Shows and hides itself as the phone's state asks, above other windows and without taking the focus. Others
/// drive it over the accessibility bus, so what does not apply does not exist: there is a button "Call" while
/// a number can be called, a button "End" exactly while a call is up and the same one all the time, and
/// nothing at all while there is nothing to show. Closed by the desktop, it does what "Close" does, and
/// nothing while a call is up.
class Banner : public QWidget {
    Q_OBJECT

  public:
    explicit Banner(Phone& phone);

  Q_SIGNALS:
    void keypadWanted();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    enum class Kind { nothing, offer, refusal, message, call };

    Kind kindOfState() const;
    void follow();
    void build();
    QWidget* head();
    QWidget* actions();
    void followScreen(QScreen* screen);
    void place();
    void tintTexts();

    Phone& phone_;
    Kind kind_ = Kind::nothing;
    QWidget* body_ = nullptr;
    QLabel* caption_ = nullptr;
    QLabel* number_ = nullptr;
    QLabel* status_ = nullptr;
    QLabel* notice_ = nullptr;
};

} // namespace velto::phone
