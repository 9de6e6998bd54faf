#include "VeltoApp/views/items/Appearance.h"

#include <QQmlEngine>

namespace velto {

Appearance& Appearance::of(QQmlEngine& engine) {
    return *engine.singletonInstance<Appearance*>(qmlTypeId("Velto", 1, 0, "Appearance"));
}

void Appearance::setDark(bool dark) {
    if (dark == dark_)
        return;
    dark_ = dark;
    Q_EMIT darkChanged();
}

} // namespace velto
