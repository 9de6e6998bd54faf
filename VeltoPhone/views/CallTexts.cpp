#include "VeltoPhone/views/CallTexts.h"

namespace velto::phone {

QString statusText(const Phone& phone) {
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
        return phone.reason().left(1).toUpper() + phone.reason().mid(1);
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
