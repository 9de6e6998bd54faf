#include "VeltoPhone/views/CallTexts.h"

namespace velto::phone {
namespace {

/// The usual ends in the words of whoever looks at them, any other as the line says it.
QString endText(const QString& reason) {
    if (reason.isEmpty())
        return Phone::tr("Call ended");
    if (reason == QLatin1String(LineEvents::hungUpHere))
        return Phone::tr("You hung up");
    if (reason == QLatin1String(LineEvents::hungUpThere))
        return Phone::tr("They hung up");
    return reason.left(1).toUpper() + reason.mid(1);
}

} // namespace

QString statusText(const Phone& phone) {
    if (phone.ending())
        return Phone::tr("Ending…");
    switch (phone.state()) {
    case PhoneState::dialing:
        return Phone::tr("Calling…");
    case PhoneState::ringing:
        return Phone::tr("Ringing…");
    case PhoneState::active:
        return phone.runningTime();
    case PhoneState::refused:
        return phone.reason();
    case PhoneState::ended:
        return endText(phone.reason());
    case PhoneState::idle:
    case PhoneState::offered:
        break;
    }
    return phone.hasLine() ? QString() : Phone::tr("No phone line");
}

QLabel* plainLabel(const QString& text, const QFont& font) {
    auto* const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setFont(font);
    return label;
}

void tint(QLabel& label, const QColor& colour) {
    auto palette = label.palette();
    palette.setColor(QPalette::WindowText, colour);
    label.setPalette(palette);
}

} // namespace velto::phone
