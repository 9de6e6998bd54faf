#include "VeltoPhone/views/Button.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace velto::phone {
namespace {

constexpr int kPillHeight = 38;
constexpr int kPillPadding = 20;
constexpr int kPillGlyph = 20;
constexpr int kGap = 8;
constexpr int kKeyDiameter = 66;
constexpr double kRing = 2; ///< of the focus, and as much again between it and the button

} // namespace

Button::Button(const QString& text, Glyph glyph, Colour colour)
    : QPushButton(text), glyph_(glyph), colour_(colour) {
    setAttribute(Qt::WA_Hover);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
}

Button* Button::pill(const QString& text, Colour colour, Glyph glyph) {
    auto* const button = new Button(text, glyph, colour);
    button->setFont(scaledFont(1.05, QFont::DemiBold));
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return button;
}

Button* Button::disc(Glyph glyph, const QString& accessibleName, Colour colour, int diameter) {
    auto* const button = new Button({}, glyph, colour);
    button->setAccessibleName(accessibleName);
    button->setToolTip(accessibleName);
    button->diameter_ = diameter;
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return button;
}

Button* Button::key(const QString& key, const QString& letters) {
    auto* const button = new Button(key, Glyph::none, Colour::plain);
    button->setFont(scaledFont(1.8));
    button->letters_ = letters;
    button->diameter_ = kKeyDiameter;
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return button;
}

void Button::onHold(const QString& description, std::function<void()> work) {
    setAccessibleDescription(description);
    holding_ = new QTimer(this);
    holding_->setSingleShot(true);
    holding_->setInterval(longPress);
    connect(holding_, &QTimer::timeout, this, [this, work = std::move(work)] {
        held_ = true;
        work();
    });
    connect(this, &QPushButton::pressed, this, [this] {
        if (!held_)
            holding_->start();
    });
    connect(this, &QPushButton::released, holding_, &QTimer::stop);
}

void Button::showEvent(QShowEvent* event) {
    QPushButton::showEvent(event);
    if (!event->spontaneous())
        shownSince_ = Clock::shared().steadyNow();
}

void Button::mousePressEvent(QMouseEvent* event) {
    if (colour_ == Colour::end && Clock::shared().steadyNow() - shownSince_ < mouseSettles)
        return event->accept();
    held_ = false;
    QPushButton::mousePressEvent(event);
}

void Button::mouseReleaseEvent(QMouseEvent* event) {
    // What is not down when it is let go of is not clicked.
    if (std::exchange(held_, false))
        setDown(false);
    QPushButton::mouseReleaseEvent(event);
}

void Button::keyPressEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat())
        held_ = false;
    QPushButton::keyPressEvent(event);
}

void Button::keyReleaseEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat() && std::exchange(held_, false))
        setDown(false);
    QPushButton::keyReleaseEvent(event);
}

QSize Button::sizeHint() const {
    if (diameter_ != 0)
        return {diameter_, diameter_};
    const int glyph = glyph_ == Glyph::none ? 0 : kPillGlyph + kGap;
    const int height = std::max(kPillHeight, fontMetrics().height() + 16);
    return {fontMetrics().horizontalAdvance(text()) + glyph + 2 * kPillPadding, height};
}

void Button::paintGround(QPainter& painter, const Look& look) const {
    const auto room = focusPolicy() == Qt::NoFocus ? 0 : 2 * kRing;
    const auto inner = QRectF(rect()).adjusted(room, room, -room, -room);
    const auto radius = inner.height() / 2;
    auto ground = colour_ == Colour::call ? look.call : colour_ == Colour::end ? look.end : look.key;
    const bool dark = Look::isDark(palette());
    const bool coloured = colour_ == Colour::call || colour_ == Colour::end;
    if (isDown())
        ground = dark && !coloured ? ground.lighter(150) : ground.darker(coloured ? 135 : 116);
    else if (underMouse() && isEnabled())
        ground = dark && !coloured ? ground.lighter(120) : ground.darker(coloured ? 112 : 106);
    if (colour_ == Colour::bare && !isDown() && !underMouse())
        ground = Qt::transparent;
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(inner, radius, radius);
    if (!hasFocus())
        return;
    const auto ring = QRectF(rect()).adjusted(kRing / 2, kRing / 2, -kRing / 2, -kRing / 2);
    painter.setPen(QPen(look.focus, kRing));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(ring, ring.height() / 2, ring.height() / 2);
}

void Button::paintFace(QPainter& painter, const QColor& ink, const QColor& faint) const {
    if (text().isEmpty()) {
        const double side = diameter_ * 0.46;
        paintGlyph(painter, glyph_, QRectF((width() - side) / 2, (height() - side) / 2, side, side), ink);
        return;
    }
    painter.setPen(ink);
    painter.setFont(font());
    if (diameter_ != 0) {
        auto above = QRectF(rect());
        if (!letters_.isEmpty()) {
            const auto below = above.adjusted(0, above.height() * 0.62, 0, -above.height() * 0.12);
            above.adjust(0, above.height() * 0.08, 0, -above.height() * 0.32);
            auto small = scaledFont(0.78, QFont::Medium);
            small.setLetterSpacing(QFont::AbsoluteSpacing, 1);
            painter.drawText(above, Qt::AlignCenter, text());
            painter.setPen(faint);
            painter.setFont(small);
            painter.drawText(below, Qt::AlignCenter, letters_);
            return;
        }
        painter.drawText(above, Qt::AlignCenter, text());
        return;
    }
    const int words = fontMetrics().horizontalAdvance(text());
    const int glyph = glyph_ == Glyph::none ? 0 : kPillGlyph + kGap;
    const double left = (width() - words - glyph) / 2.0;
    paintGlyph(painter, glyph_, QRectF(left, (height() - kPillGlyph) / 2.0, kPillGlyph, kPillGlyph), ink);
    painter.drawText(QRectF(left + glyph, 0, words + 1, height()), Qt::AlignCenter, text());
}

void Button::paintEvent(QPaintEvent* /*event*/) {
    const auto look = Look::of(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.4);
    paintGround(painter, look);
    const bool coloured = colour_ == Colour::call || colour_ == Colour::end;
    paintFace(painter, coloured ? QColor(Qt::white) : look.text, look.muted);
}

} // namespace velto::phone
