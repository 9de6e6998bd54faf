// The phone's one kind of button: a pill with a text, a disc with a glyph, or a key of the keypad.
#pragma once

#include "VeltoPhone/views/Look.h"
#include "VeltoShared/core/Clock.h"

#include <QPushButton>
#include <QTimer>

namespace velto::phone {

/// Drawn from the palette it has at the time. The text, or the accessible name where there is only a glyph,
/// is what others press it by. One that ends a call ignores the mouse, and nothing else, for `mouseSettles`
/// after it has appeared: it comes up under the pointer of whoever has just called with a double click.
class Button : public QPushButton {
    Q_OBJECT

  public:
    enum class Colour { plain, bare, call, end };
    static constexpr std::chrono::milliseconds mouseSettles{500};
    static constexpr std::chrono::milliseconds longPress{600};

    /// A pill; the glyph stands before the text.
    static Button* pill(const QString& text, Colour colour, Glyph glyph = Glyph::none);
    /// `diameter` in device-independent pixels.
    static Button* disc(Glyph glyph, const QString& accessibleName, Colour colour, int diameter);
    static Button* key(const QString& key, const QString& letters);

    /// A press of `longPress` does something else, and is then no click; `description` says what.
    void onHold(const QString& description, std::function<void()> work);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

  private:
    Button(const QString& text, Glyph glyph, Colour colour);

    void paintGround(QPainter& painter, const Look& look) const;
    void paintFace(QPainter& painter, const QColor& ink, const QColor& faint) const;

    Glyph glyph_;
    Colour colour_;
    QString letters_;
    int diameter_ = 0; ///< 0: a pill
    Clock::SteadyTime shownSince_;
    QTimer* holding_ = nullptr; ///< none where a long press means nothing
    bool held_ = false;         ///< the press under way has had its effect
};

} // namespace velto::phone
