#include "VeltoPhone/views/MainWindow.h"

#include "VeltoPhone/model/PhoneNumber.h"
#include "VeltoPhone/views/Button.h"
#include "VeltoPhone/views/CallTexts.h"
#include "VeltoPhone/views/Keypad.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include <algorithm>

namespace velto::phone {
namespace {

constexpr int kMargin = 22;
constexpr int kActionDiameter = 66;
constexpr int kEraseDiameter = 48;

/// Lets in what belongs into numbers, however it comes: typed, pasted, dropped or set by another program.
class NumberValidator : public QRegularExpressionValidator {
  public:
    explicit NumberValidator(QObject* parent)
        : QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9*#+ ./()-]{0,60}")), parent) {}

    State validate(QString& text, int& cursor) const override {
        const auto behind = text.size() - cursor; // of what is refused, the cursor goes to the end
        if (const auto state = QRegularExpressionValidator::validate(text, cursor); state != Invalid)
            return state;
        text = QString::fromStdString(plainNumberText(text.toStdString()));
        cursor = static_cast<int>(std::max<qsizetype>(0, text.size() - behind));
        return QRegularExpressionValidator::validate(text, cursor);
    }
};

} // namespace

MainWindow::MainWindow(Phone& phone)
    : phone_(phone), status_(plainLabel({}, scaledFont(1.1))), number_(new QLineEdit),
      tones_(plainLabel({}, scaledFont(1.0))), keypad_(new Keypad),
      notice_(plainLabel({}, scaledFont(0.95))) {
    setWindowTitle(tr("Phone"));
    for (auto* const label : {status_, tones_, notice_}) {
        label->setAlignment(Qt::AlignCenter);
        label->setWordWrap(true);
    }
    number_->setAlignment(Qt::AlignCenter);
    number_->setFrame(false);
    number_->setFont(scaledFont(1.9));
    number_->setPlaceholderText(tr("Number"));
    number_->setAccessibleName(tr("Number"));
    number_->setValidator(new NumberValidator(number_));
    connect(number_, &QLineEdit::returnPressed, this, &MainWindow::dial);
    connect(number_, &QLineEdit::textChanged, this, &MainWindow::follow);
    connect(keypad_, &Keypad::pressed, this, &MainWindow::keyPressed);

    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(kMargin, 16, kMargin, 18);
    column->setSpacing(6);
    column->addWidget(status_);
    column->addWidget(number_);
    column->addWidget(tones_);
    column->addSpacing(6);
    column->addWidget(keypad_, 0, Qt::AlignHCenter);
    column->addSpacing(8);
    column->addWidget(actions());
    column->addWidget(notice_);
    column->addStretch();
    for (auto* const label : {status_, tones_})
        label->setMinimumHeight(label->fontMetrics().height());

    connect(&phone_, &Phone::changed, this, [this] {
        if (!phone_.number().isEmpty() && number_->text() != phone_.number())
            number_->setText(phone_.number());
        follow();
    });
    number_->setText(phone_.number());
    restyle();
    follow();
}

QWidget* MainWindow::actions() {
    dial_ = Button::disc(Glyph::handset, tr("Dial number"), Button::Colour::call, kActionDiameter);
    hangUp_ = Button::disc(Glyph::handsetDown, tr("Hang up"), Button::Colour::end, kActionDiameter);
    erase_ = Button::disc(Glyph::backspace, tr("Erase digit"), Button::Colour::bare, kEraseDiameter);
    connect(dial_, &QPushButton::clicked, this, &MainWindow::dial);
    connect(hangUp_, &QPushButton::clicked, &phone_, &Phone::hangUp);
    connect(erase_, &QPushButton::clicked, number_, &QLineEdit::backspace);
    erase_->onHold(tr("hold to clear the number"), [this] { number_->clear(); });
    auto* const row = new QWidget;
    auto* const grid = new QGridLayout(row);
    grid->setContentsMargins(0, 0, 0, 0);
    for (const int column : {0, 1, 2})
        grid->setColumnStretch(column, 1);
    grid->addWidget(dial_, 0, 1, Qt::AlignCenter);
    grid->addWidget(hangUp_, 0, 1, Qt::AlignCenter);
    grid->addWidget(erase_, 0, 2, Qt::AlignCenter);
    grid->setRowMinimumHeight(0, kActionDiameter);
    return row;
}

void MainWindow::present() {
    show();
    raise();
    activateWindow();
    number_->setFocus();
}

void MainWindow::follow() {
    const bool up = phone_.callUp();
    const bool focused = dial_->hasFocus() || hangUp_->hasFocus();
    const auto status = statusText(phone_);
    status_->setText(status.isEmpty() && number_->text().isEmpty() ? tr("Enter a number") : status);
    tones_->setText(phone_.tones());
    notice_->setText(phone_.notice());
    notice_->setVisible(!phone_.notice().isEmpty());
    number_->setReadOnly(up);
    dial_->setVisible(!up);
    dial_->setEnabled(phone_.hasLine() && !number_->text().isEmpty());
    hangUp_->setVisible(up);
    erase_->setVisible(!up && !number_->text().isEmpty());
    if (focused)
        (up ? hangUp_ : dial_)->setFocus();
}

void MainWindow::dial() {
    if (phone_.callUp() || !dial_->isEnabled())
        return;
    phone_.open(number_->text());
    phone_.call();
}

void MainWindow::keyPressed(QChar key) {
    if (phone_.callUp())
        phone_.sendTone(key == QLatin1Char('+') ? QLatin1Char('0') : key); // there is no such tone
    else
        number_->insert(key);
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    const auto text = event->text();
    if (text.size() == 1 && keypad_->press(text[0]))
        return;
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        return dial();
    QWidget::keyPressEvent(event);
}

void MainWindow::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    Q_EMIT hidden();
}

void MainWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        restyle();
}

void MainWindow::restyle() {
    const auto look = Look::of(palette());
    for (auto* const label : {status_, tones_, notice_})
        tint(*label, look.muted);
    auto palette = number_->palette();
    palette.setColor(QPalette::Base, look.ground);
    palette.setColor(QPalette::Text, look.text);
    palette.setColor(QPalette::PlaceholderText, look.muted);
    number_->setPalette(palette);
}

void MainWindow::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), Look::of(palette()).ground);
}

} // namespace velto::phone
