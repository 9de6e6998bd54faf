#include "VeltoPhone/views/Banner.h"

#include "VeltoPhone/views/Button.h"
#include "VeltoPhone/views/CallTexts.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace velto::phone {
namespace {

constexpr int kWidth = 348;
constexpr int kMargin = 16; ///< inside, and to the screen's edges
constexpr double kCorner = 18;
constexpr double kNumberScale = 1.7;
constexpr double kSmallestNumberScale = 0.9;

/// As large as lets the whole number be seen.
QFont numberFont(const QString& number) {
    const auto large = scaledFont(kNumberScale, QFont::DemiBold);
    const double width = QFontMetricsF(large).horizontalAdvance(number);
    const double room = kWidth - 2 * kMargin - 4;
    return width <= room
               ? large
               : scaledFont(std::max(kSmallestNumberScale, kNumberScale * room / width), QFont::DemiBold);
}

/// A label that is not there while it has nothing to say.
void say(QLabel& label, const QString& text) {
    if (label.text() != text)
        label.setText(text);
    label.setVisible(!text.isEmpty());
}

/// Only when the press is over: it may be this very button that has to go.
/// Buttons of a window that never has the focus show none.
template <class Work>
void onPress(Button* button, QObject* owner, Work work) {
    button->setFocusPolicy(Qt::NoFocus);
    QObject::connect(button, &QPushButton::clicked, owner, work, Qt::QueuedConnection);
}

} // namespace

Banner::Banner(Phone& phone)
    : QWidget(nullptr,
              Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus),
      phone_(phone) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowTitle(tr("Phone call"));
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    connect(&phone_, &Phone::changed, this, &Banner::follow);
    followScreen(QGuiApplication::primaryScreen());
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &Banner::followScreen);
    follow();
}

void Banner::followScreen(QScreen* screen) {
    if (screen != nullptr)
        connect(screen, &QScreen::availableGeometryChanged, this, &Banner::place, Qt::UniqueConnection);
    place();
}

Banner::Kind Banner::kindOfState() const {
    if (phone_.state() == PhoneState::idle)
        return Kind::nothing;
    if (phone_.callUp())
        return Kind::call;
    if (phone_.state() == PhoneState::refused)
        return Kind::refusal;
    return phone_.state() == PhoneState::offered && phone_.hasLine() ? Kind::offer : Kind::message;
}

void Banner::follow() {
    const auto kind = kindOfState();
    if (kind != kind_) {
        kind_ = kind;
        build();
    }
    if (kind == Kind::nothing)
        return hide();
    if (number_->text() != phone_.number()) {
        number_->setFont(numberFont(phone_.number()));
        say(*number_, phone_.number());
    }
    say(*status_, statusText(phone_));
    say(*notice_, phone_.notice());
    show();
    place();
}

void Banner::build() {
    delete std::exchange(body_, nullptr);
    if (kind_ == Kind::nothing)
        return;
    body_ = new QWidget;
    body_->setFixedWidth(kWidth);
    auto* const column = new QVBoxLayout(body_);
    column->setContentsMargins(kMargin, 12, kMargin, kMargin);
    column->setSpacing(2);
    column->addWidget(head());
    column->addSpacing(4);
    number_ = plainLabel({}, scaledFont(kNumberScale, QFont::DemiBold));
    number_->hide();
    column->addWidget(number_);
    status_ = plainLabel({}, scaledFont(1.1));
    status_->setWordWrap(true);
    column->addWidget(status_);
    notice_ = plainLabel({}, scaledFont(0.95));
    notice_->setWordWrap(true);
    column->addWidget(notice_);
    column->addSpacing(10);
    column->addWidget(actions());
    tintTexts();
    layout()->addWidget(body_);
}

QWidget* Banner::head() {
    auto* const row = new QWidget;
    auto* const line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(8);
    auto* const icon = new QLabel;
    icon->setPixmap(phoneIcon().pixmap(QSize(22, 22), devicePixelRatioF()));
    caption_ = plainLabel(tr("Phone"), scaledFont(1.0, QFont::Medium));
    auto* const keypad = Button::disc(Glyph::keypad, tr("Keypad"), Button::Colour::plain, 32);
    onPress(keypad, this, [this] { Q_EMIT keypadWanted(); });
    line->addWidget(icon);
    line->addWidget(caption_, 1);
    line->addWidget(keypad);
    return row;
}

QWidget* Banner::actions() {
    auto* const row = new QWidget;
    auto* const line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(8);
    if (kind_ == Kind::call) {
        auto* const end = Button::pill(tr("End"), Button::Colour::end, Glyph::handsetDown);
        onPress(end, &phone_, [this] { phone_.hangUp(); });
        line->addWidget(end);
        return row;
    }
    auto* const close = Button::pill(tr("Close"), Button::Colour::plain);
    onPress(close, &phone_, [this] { phone_.dismiss(); });
    line->addWidget(close);
    if (kind_ == Kind::offer) {
        auto* const call = Button::pill(tr("Call"), Button::Colour::call, Glyph::handset);
        onPress(call, &phone_, [this] { phone_.call(); });
        line->addWidget(call);
    }
    return row;
}

void Banner::place() {
    const auto* const screen = QGuiApplication::primaryScreen();
    if (screen == nullptr)
        return;
    const auto room = screen->availableGeometry();
    move(room.right() + 1 - kMargin - width(), room.top() + kMargin);
}

void Banner::tintTexts() {
    if (body_ == nullptr)
        return;
    const auto look = Look::of(palette());
    tint(*caption_, look.muted);
    tint(*status_, look.muted);
    tint(*notice_, look.muted);
}

void Banner::closeEvent(QCloseEvent* event) {
    // A call that nobody sees would never be ended.
    event->setAccepted(!phone_.callUp());
    phone_.dismiss();
}

void Banner::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        tintTexts();
}

void Banner::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    // Where nobody blends windows, what lies outside of the mask would be black; a pixel more than is
    // painted keeps the smooth edge where somebody does.
    QPainterPath shape;
    shape.addRoundedRect(rect(), kCorner - 1, kCorner - 1);
    setMask(QRegion(shape.toFillPolygon().toPolygon()));
    place();
}

void Banner::paintEvent(QPaintEvent* /*event*/) {
    const auto look = Look::of(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(look.outline, 1));
    painter.setBrush(look.ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCorner, kCorner);
}

} // namespace velto::phone
