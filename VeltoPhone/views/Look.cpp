#include "VeltoPhone/views/Look.h"

#include "VeltoQt/Handset.h"

#include <QApplication>
#include <QPainterPath>
#include <QPixmap>

namespace velto::phone {
namespace {

const QColor kGreen(0x15, 0x80, 0x3d);
const QColor kRed(0xc6, 0x28, 0x28);
constexpr double kGrid = 24; ///< glyphs are drawn on a square of this side

/// `share` of the second colour, 0 to 1.
QColor mixed(const QColor& a, const QColor& b, double share) {
    const auto part = [share](int from, int to) { return static_cast<int>(from + share * (to - from)); };
    return {part(a.red(), b.red()), part(a.green(), b.green()), part(a.blue(), b.blue())};
}

void paintKeypad(QPainter& painter, const QColor& colour) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    for (const double x : {5.5, 12.0, 18.5})
        for (const double y : {5.5, 12.0, 18.5})
            painter.drawEllipse(QPointF(x, y), 2, 2);
}

void paintBackspace(QPainter& painter, const QColor& colour) {
    painter.setPen(QPen(colour, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(QPolygonF(
        {QPointF(8, 5.5), QPointF(21, 5.5), QPointF(21, 18.5), QPointF(8, 18.5), QPointF(2.5, 12)}));
    painter.drawLine(QPointF(11.5, 9.3), QPointF(16.9, 14.7));
    painter.drawLine(QPointF(16.9, 9.3), QPointF(11.5, 14.7));
}

} // namespace

bool Look::isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

Look Look::of(const QPalette& palette) {
    const auto window = palette.color(QPalette::Window);
    const auto text = palette.color(QPalette::WindowText);
    const bool dark = isDark(palette);
    Look look;
    look.ground = mixed(window, dark ? QColor(Qt::black) : QColor(Qt::white), dark ? 0.1 : 0.6);
    look.text = text;
    look.outline = mixed(look.ground, text, 0.16);
    look.muted = mixed(look.ground, text, 0.68);
    look.key = mixed(look.ground, text, 0.09);
    look.focus = palette.color(QPalette::Highlight);
    look.call = kGreen;
    look.end = kRed;
    return look;
}

QPalette darkPalette() {
    QPalette palette(QColor(0x2b, 0x2d, 0x31));
    const QColor text(0xf1, 0xf2, 0xf4);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Base, QColor(0x1f, 0x20, 0x24));
    palette.setColor(QPalette::ToolTipBase, QColor(0x1f, 0x20, 0x24));
    palette.setColor(QPalette::PlaceholderText, mixed(palette.color(QPalette::Base), text, 0.6));
    palette.setColor(QPalette::Highlight, QColor(0x5b, 0x9d, 0xf5));
    palette.setColor(QPalette::HighlightedText, Qt::black);
    return palette;
}

QFont scaledFont(double factor, QFont::Weight weight) {
    auto font = QApplication::font();
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(qRound(font.pixelSize() * factor));
    font.setWeight(weight);
    return font;
}

void paintGlyph(QPainter& painter, Glyph glyph, const QRectF& square, const QColor& colour) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(square.topLeft());
    painter.scale(square.width() / kGrid, square.height() / kGrid);
    switch (glyph) {
    case Glyph::handset:
        painter.translate(kGrid / 2, kGrid / 2);
        painter.rotate(-135);
        painter.translate(-kGrid / 2, -kGrid / 2);
        painter.fillPath(handset(), colour);
        break;
    case Glyph::handsetDown:
        painter.fillPath(handset(), colour);
        break;
    case Glyph::keypad:
        paintKeypad(painter, colour);
        break;
    case Glyph::backspace:
        paintBackspace(painter, colour);
        break;
    case Glyph::none:
        break;
    }
    painter.restore();
}

QIcon phoneIcon() {
    constexpr int kSide = 128;
    QPixmap picture(kSide, kSide);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(kGreen);
    painter.drawRoundedRect(QRectF(8, 8, 112, 112), 28, 28);
    paintGlyph(painter, Glyph::handset, QRectF(30, 30, 68, 68), Qt::white);
    return picture;
}

} // namespace velto::phone
