// A symbol of the windows, painted in one colour.
#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace velto {

/// Fills its square; sharp at every scale, with and without a graphics card. A name that is not known shows
/// nothing.
class SymbolItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// As in `symbolPath`.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

  public:
    explicit SymbolItem(QQuickItem* parent = nullptr);

    const QString& name() const { return name_; }
    void setName(const QString& name);
    const QColor& color() const { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void nameChanged();
    void colorChanged();

  private:
    QString name_;
    QColor color_ = Qt::black;
};

} // namespace velto
