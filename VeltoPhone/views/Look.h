// Colours, sizes and glyphs of the phone's windows, made from the desktop's palette.
#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QPalette>
#include <QRectF>

namespace velto::phone {

/// Texts on their grounds have a contrast of 4.5 to 1 or more with the usual palettes.
struct Look {
    QColor ground;
    QColor outline;
    QColor text;
    QColor muted;
    QColor key; ///< of buttons without a colour of their own
    QColor focus;
    QColor call; ///< with white on it, like `end`
    QColor end;

    static Look of(const QPalette& palette);
    static bool isDark(const QPalette& palette);
};

/// For a desktop that says it prefers dark and does not bring a palette.
QPalette darkPalette();

/// The application's font, so many times as large.
QFont scaledFont(double factor, QFont::Weight weight = QFont::Normal);

enum class Glyph { none, handset, handsetDown, keypad, backspace };
/// Fills the rectangle, which is to be a square.
void paintGlyph(QPainter& painter, Glyph glyph, const QRectF& square, const QColor& colour);

QIcon phoneIcon();

} // namespace velto::phone
