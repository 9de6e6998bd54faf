#include "VeltoPhone/views/DesktopColours.h"

#include "VeltoPhone/views/Look.h"

#include <QApplication>

namespace velto::phone {

DesktopColours::DesktopColours() : own_(QApplication::palette()) {
    if (Look::isDark(own_))
        return;
    QObject::connect(&scheme_, &DesktopScheme::changed, &scheme_,
                     [this] { QApplication::setPalette(scheme_.prefersDark() ? darkPalette() : own_); });
}

} // namespace velto::phone
