#include "VeltoPhone/views/Keypad.h"

#include "VeltoPhone/views/Button.h"

#include <QGridLayout>

#include <array>

namespace velto::phone {
namespace {

struct Key {
    const char* key;
    const char* letters;
};
constexpr std::array kKeys{Key{"1", ""},     Key{"2", "ABC"}, Key{"3", "DEF"},  Key{"4", "GHI"},
                           Key{"5", "JKL"},  Key{"6", "MNO"}, Key{"7", "PQRS"}, Key{"8", "TUV"},
                           Key{"9", "WXYZ"}, Key{"*", ""},    Key{"0", "+"},    Key{"#", ""}};
constexpr int kColumns = 3;

} // namespace

Keypad::Keypad() {
    auto* const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(14);
    grid->setVerticalSpacing(8);
    int place = 0;
    for (const auto& key : kKeys) {
        const QChar sign = QLatin1Char(*key.key);
        auto* const button = Button::key(sign, QString::fromLatin1(key.letters));
        connect(button, &QPushButton::clicked, this, [this, sign] { Q_EMIT pressed(sign); });
        if (sign == QLatin1Char('0'))
            button->onHold(tr("hold for +"), [this] { Q_EMIT pressed(QLatin1Char('+')); });
        grid->addWidget(button, place / kColumns, place % kColumns, Qt::AlignCenter);
        keys_.emplace(sign, button);
        ++place;
    }
}

bool Keypad::press(QChar key) {
    const auto found = keys_.find(key);
    if (found == keys_.end())
        return false;
    // At once: an animated click would swallow the second of two quick keys.
    found->second->click();
    return true;
}

} // namespace velto::phone
