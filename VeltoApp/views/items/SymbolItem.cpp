#include "VeltoApp/views/items/SymbolItem.h"

#include "VeltoApp/views/items/Symbols.h"

#include <QPainter>

namespace velto {

SymbolItem::SymbolItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void SymbolItem::setName(const QString& name) {
    if (name == name_)
        return;
    name_ = name;
    Q_EMIT nameChanged();
    update();
}

void SymbolItem::setColor(const QColor& color) {
    if (color == color_)
        return;
    color_ = color;
    Q_EMIT colorChanged();
    update();
}

void SymbolItem::paint(QPainter* painter) {
    const double side = std::min(width(), height());
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(side / kSymbolGrid, side / kSymbolGrid);
    painter->fillPath(symbolPath(name_), color_);
}

} // namespace velto
