// The phone's one kind of button: a pill with a text, a disc with a glyph, or a key of the keypad.
#pragma once

#include "VeltoPhone/views/Look.h"

#include <QPushButton>

namespace velto::phone {

/// Drawn from the palette it has at the time. The text, or the accessible name where there is only a glyph,
/// is what others press it by.
class Button : public QPushButton {
    Q_OBJECT

  public:
    enum class Colour { plain, bare, call, end };

    /// A pill; the glyph stands before the text.
    static Button* pill(const QString& text, Colour colour, Glyph glyph = Glyph::none);
    /// `diameter` in device-independent pixels.
    static Button* disc(Glyph glyph, const QString& accessibleName, Colour colour, int diameter);
    static Button* key(const QString& key, const QString& letters);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Button(const QString& text, Glyph glyph, Colour colour);

    void paintGround(QPainter& painter, const Look& look) const;
    void paintFace(QPainter& painter, const QColor& ink, const QColor& faint) const;

    Glyph glyph_;
    Colour colour_;
    QString letters_;
    int diameter_ = 0; ///< 0: a pill
};

} // namespace velto::phone
