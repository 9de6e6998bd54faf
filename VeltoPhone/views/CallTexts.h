// What the banner and the window say of a call in words.
#pragma once

#include "VeltoPhone/model/Phone.h"

#include <QLabel>

namespace velto::phone {

/// "Calling…", "Ringing…", the running time, "Ending…", or why there is nothing of the kind; empty when there
/// is nothing to say.
QString statusText(const Phone& phone);

/// A label that shows any text as it is: what is in it was typed or opened by somebody.
QLabel* plainLabel(const QString& text, const QFont& font);
/// Its text in another colour than the palette's.
void tint(QLabel& label, const QColor& colour);

} // namespace velto::phone
