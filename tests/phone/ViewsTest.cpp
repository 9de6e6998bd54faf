// What others find in the banner over the accessibility interface, and what the window's keys do.
#include "VeltoPhone/views/Banner.h"
#include "VeltoPhone/views/Button.h"
#include "VeltoPhone/views/MainWindow.h"
#include "tests/phone/PhoneFixture.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QThread>

#include <set>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;

struct ViewsTest : PhoneFixture {
    using Names = std::multiset<std::string>;

    static void collect(QAccessibleInterface* element, QAccessible::Role role,
                        std::vector<QAccessibleInterface*>& found) {
        if (element->role() == role && !element->text(QAccessible::Name).isEmpty())
            found.push_back(element);
        for (int i = 0; i < element->childCount(); ++i)
            collect(element->child(i), role, found);
    }
    static Names names(QWidget& window, QAccessible::Role role) {
        std::vector<QAccessibleInterface*> found;
        collect(QAccessible::queryAccessibleInterface(&window), role, found);
        Names names;
        for (auto* element : found)
            names.insert(element->text(QAccessible::Name).toStdString());
        return names;
    }
    static Names buttons(QWidget& window) { return names(window, QAccessible::Button); }
    static Names texts(QWidget& window) { return names(window, QAccessible::StaticText); }
    static QAccessibleInterface* button(QWidget& window, const char* name) {
        std::vector<QAccessibleInterface*> found;
        collect(QAccessible::queryAccessibleInterface(&window), QAccessible::Button, found);
        for (auto* element : found)
            if (element->text(QAccessible::Name) == QLatin1String(name))
                return element;
        return nullptr;
    }
    /// A press takes a moment, so that it can be seen.
    template <class Done>
    static void press(QAccessibleInterface* element, Done done) {
        ASSERT_NE(element, nullptr);
        element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        until(done);
    }
    static void mouse(QAccessibleInterface* element, QEvent::Type kind) {
        ASSERT_NE(element, nullptr);
        auto& widget = *qobject_cast<QWidget*>(element->object());
        const QPointF middle = widget.rect().center();
        QMouseEvent event(kind, middle, widget.mapToGlobal(middle), Qt::LeftButton,
                          kind == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
    template <class Done>
    static void until(Done done) {
        for (int i = 0; i < 20'000 && !done(); ++i) {
            QCoreApplication::processEvents();
            QThread::msleep(1);
        }
        ASSERT_TRUE(done());
    }
};

TEST_F(ViewsTest, TheBannerHasTheButtonsThatApplyAndNoOthers) {
    Banner banner(phone);
    EXPECT_FALSE(banner.isVisible());
    EXPECT_EQ(buttons(banner), Names{});
    phone.open("5551234");
    EXPECT_TRUE(banner.isVisible());
    EXPECT_EQ(buttons(banner), (Names{"Keypad", "Close", "Call"}));
    EXPECT_EQ(texts(banner), (Names{"Phone", "5551234"}));

    press(button(banner, "Call"), [&] { return phone.callUp(); });
    EXPECT_EQ(buttons(banner), (Names{"Keypad", "End"}));
    EXPECT_EQ(texts(banner), (Names{"Phone", "5551234", "Calling…"}));
    const auto* const end = button(banner, "End")->object();
    line->events.ringing();
    settle();
    EXPECT_EQ(texts(banner), (Names{"Phone", "5551234", "Ringing…"}));
    line->events.answered();
    settle();
    wait(67s);
    EXPECT_EQ(texts(banner), (Names{"Phone", "5551234", "1:07"}));
    phone.open("two");
    EXPECT_EQ(button(banner, "End")->object(), end) << "whoever reads during a change must not miss it";

    press(button(banner, "End"), [&] { return line->did.back() == "hang up"; });
    EXPECT_EQ(buttons(banner), (Names{"Keypad", "End"}));
    EXPECT_EQ(texts(banner), (Names{"Phone", "5551234", "Ending…", "Not a phone number: two"}));
    lineEnds("hung up by the caller");
    EXPECT_EQ(buttons(banner), (Names{"Keypad", "Close"}));
    EXPECT_EQ(texts(banner), (Names{"Phone", "5551234", "You hung up"}));
    wait(4s);
    EXPECT_EQ(buttons(banner), Names{});
    EXPECT_FALSE(banner.isVisible());
}

TEST_F(ViewsTest, ADoubleClickOnCallDoesNotHangUp) {
    Banner banner(phone);
    MainWindow window(phone);
    window.present();
    for (const auto& [place, start, end] :
         {std::tuple<QWidget*, const char*, const char*>{&banner, "Call", "End"},
          {&window, "Dial number", "Hang up"}}) {
        phone.open("1");
        settle();
        mouse(button(*place, start), QEvent::MouseButtonPress);
        mouse(button(*place, start), QEvent::MouseButtonRelease);
        until([&] { return phone.callUp() && button(*place, end) != nullptr; });
        const auto click = [&, name = end](QEvent::Type kind) {
            mouse(button(*place, name), kind);
            mouse(button(*place, name), QEvent::MouseButtonRelease);
            settle();
        };
        click(QEvent::MouseButtonDblClick);
        EXPECT_FALSE(phone.ending()) << end;
        clock.advance(Button::mouseSettles);
        click(QEvent::MouseButtonPress);
        EXPECT_TRUE(phone.ending()) << end;
        lineEnds("");
    }
    phone.open("1");
    press(button(banner, "Call"), [&] { return phone.callUp(); });
    press(button(banner, "End"), [&] { return phone.ending(); });
}

TEST_F(ViewsTest, TheDesktopClosesTheBannerOnlyWithoutACall) {
    Banner banner(phone);
    phone.open("1");
    banner.close();
    EXPECT_EQ(phone.state(), PhoneState::idle);
    call("2");
    EXPECT_FALSE(banner.close());
    EXPECT_TRUE(banner.isVisible());
    lineEnds("busy");
    EXPECT_TRUE(banner.close());
    EXPECT_EQ(phone.state(), PhoneState::idle);
}

TEST_F(ViewsTest, LongPressesAndPastedNumbers) {
    MainWindow window(phone);
    window.present();
    auto& number = *window.findChild<QLineEdit*>();
    const auto hold = [&](const char* name, auto done) {
        EXPECT_NE(button(window, name)->text(QAccessible::Description), "");
        mouse(button(window, name), QEvent::MouseButtonPress);
        until(done);
        mouse(button(window, name), QEvent::MouseButtonRelease);
    };
    hold("0", [&] { return number.text() == "+"; });
    press(button(window, "0"), [&] { return number.text() == "+0"; });
    number.setCursorPosition(1);
    number.insert("tel:");
    EXPECT_EQ(number.text(), "+0") << "not in the middle";
    number.clear();
    number.insert("\u202atel:+1\u00a0(555)\u20130126\u202c");
    EXPECT_EQ(number.text(), "+1 (555)-0126");
    number.setCursorPosition(2);
    number.insert("\u00a0");
    EXPECT_EQ(number.cursorPosition(), 3);
    hold("Erase digit", [&] { return number.text().isEmpty(); });

    call("1");
    answer();
    hold("0", [&] { return line->did.back() == "tones 0"; });
    EXPECT_EQ(phone.tones(), "0");
}

TEST_F(ViewsTest, TheBannerSaysWhatCannotBeCalled) {
    Banner banner(phone);
    phone.open("<b>five</b>");
    EXPECT_EQ(buttons(banner), (Names{"Keypad", "Close"}));
    EXPECT_EQ(texts(banner), (Names{"Phone", "Not a phone number: <b>five</b>"}));
    press(button(banner, "Close"), [&] { return !banner.isVisible(); });

    Phone lineless(nullptr);
    Banner other(lineless);
    lineless.open(QString(40, '8'));
    EXPECT_EQ(buttons(other), (Names{"Keypad", "Close"}));
    EXPECT_EQ(texts(other), (Names{"Phone", std::string(40, '8'), "No phone line"}));
}

TEST_F(ViewsTest, KeysEditTheNumberWithoutACallAndSendTonesInOne) {
    Banner banner(phone);
    MainWindow window(phone);
    window.present();
    auto& number = *window.findChild<QLineEdit*>();
    const auto key = [](QWidget& widget, Qt::Key code, const char* text) {
        QKeyEvent event(QEvent::KeyPress, code, Qt::NoModifier, QLatin1String(text));
        QCoreApplication::sendEvent(&widget, &event);
    };
    EXPECT_FALSE(button(window, "Dial number")->object()->property("enabled").toBool());
    key(number, Qt::Key_5, "5");
    key(number, Qt::Key_A, "a");
    key(window, Qt::Key_Asterisk, "*");
    key(window, Qt::Key_Asterisk, "*");
    EXPECT_EQ(number.text(), "5**");
    number.setText("5*");
    press(button(window, "7"), [&] { return number.text() == "5*7"; });
    press(button(window, "Erase digit"), [&] { return number.text() == "5*"; });
    key(number, Qt::Key_Return, "\r");
    EXPECT_EQ(line->did.back(), "dial 5*");
    for (const auto& name : buttons(window))
        EXPECT_FALSE(name == "Call" || name == "End" || name == "Close");

    key(number, Qt::Key_6, "6");
    answer();
    key(number, Qt::Key_8, "8");
    EXPECT_EQ(line->did.back(), "tones 8");
    press(button(window, "#"), [&] { return line->did.back() == "tones #"; });
    EXPECT_EQ(number.text(), "5*");
    EXPECT_TRUE(texts(window).count("8#") == 1);
    press(button(window, "Hang up"), [&] { return line->did.back() == "hang up"; });
}

} // namespace
} // namespace velto::phone
