// What others find in the banner over the accessibility interface, and what the window's keys do.
#include "VeltoPhone/views/Banner.h"
#include "VeltoPhone/views/Button.h"
#include "VeltoPhone/views/MainWindow.h"
#include "tests/phone/PhoneFixture.h"

#include <QAccessible>
#include <QTest>

#include <map>
#include <set>
#include <thread>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;

struct ViewsTest : PhoneFixture {
    using Names = std::multiset<std::string>;
    using Elements = std::multimap<std::string, QAccessibleInterface*>;

    static void collect(QAccessibleInterface* element, Elements& found) {
        const auto name = element->text(QAccessible::Name).toStdString();
        const bool isButton = element->role() == QAccessible::Button;
        if (!name.empty() && (isButton || element->role() == QAccessible::StaticText))
            found.emplace(isButton ? '[' + name + ']' : name, element);
        for (int i = 0; i < element->childCount(); ++i)
            collect(element->child(i), found);
    }
    static Elements elements(QWidget& window) {
        Elements found;
        collect(QAccessible::queryAccessibleInterface(&window), found);
        return found;
    }
    /// The texts, and the buttons in brackets.
    static Names shown(QWidget& window) {
        Names names;
        for (const auto& [name, element] : elements(window))
            names.insert(name);
        return names;
    }
    static QAccessibleInterface* button(QWidget& window, const std::string& name) {
        const auto found = elements(window);
        const auto one = found.find('[' + name + ']');
        return one == found.end() ? nullptr : one->second;
    }
    template <class Done>
    static void until(Done done) {
        ASSERT_TRUE(QTest::qWaitFor(done, 20'000));
    }
    /// A press takes a moment, so that it can be seen.
    template <class Done>
    static void press(QWidget& window, const char* name, Done done) {
        auto* const element = button(window, name);
        ASSERT_NE(element, nullptr) << name;
        element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        until(done);
    }
    static void mouse(QWidget& window, const char* name, QTest::MouseAction action) {
        auto* const element = button(window, name);
        ASSERT_NE(element, nullptr) << name;
        QTest::mouseEvent(action, qobject_cast<QWidget*>(element->object()), Qt::LeftButton, {}, {});
    }
};

TEST_F(ViewsTest, TheBannerFollowsACallFromItsOfferToAWhileAfterItsEnd) {
    Banner banner(phone);
    phone.open("tel-phoneapp:5551234");
    banner.close();
    EXPECT_EQ(phone.state(), PhoneState::idle);
    phone.open("tel-phoneapp:5551234");
    EXPECT_TRUE(banner.isVisible());
    EXPECT_EQ(shown(banner), (Names{"Phone", "[Keypad]", "5551234", "[Close]", "[Call]"}));

    press(banner, "Call", [&] { return phone.callUp(); });
    phone.call();
    phone.sendTone('1');
    EXPECT_FALSE(banner.close()) << "the desktop does not close a call";
    EXPECT_EQ(line->did, Did{"dial 5551234"}) << "once, and no tone before the answer";
    EXPECT_EQ(shown(banner), (Names{"Phone", "[Keypad]", "5551234", "Calling…", "[End]"}));
    const auto* const end = button(banner, "End")->object();
    std::thread([this] { line->events.ringing(); }).join();
    EXPECT_EQ(phone.state(), PhoneState::dialing) << "nothing happens on the line's thread";
    settle();
    EXPECT_EQ(shown(banner).count("Ringing…"), 1U);
    wait(70s);
    line->events.answered();
    settle();
    wait(7999ms);
    EXPECT_EQ(shown(banner).count("0:07"), 1U);
    wait(1h);
    EXPECT_EQ(shown(banner).count("60:07"), 1U);
    phone.open("two");
    EXPECT_EQ(button(banner, "End")->object(), end) << "whoever reads during a change must not miss it";

    press(banner, "End", [&] { return line->did.back() == "hang up"; });
    EXPECT_EQ(shown(banner),
              (Names{"Phone", "[Keypad]", "5551234", "Ending…", "Not a phone number: two", "[End]"}));
    lineEnds("hung up by the caller");
    EXPECT_EQ(shown(banner), (Names{"Phone", "[Keypad]", "5551234", "You hung up", "[Close]"}));
    wait(2900ms);
    EXPECT_TRUE(banner.isVisible());
    wait(200ms);
    EXPECT_FALSE(banner.isVisible());
    EXPECT_EQ(phone.number(), "");
}

TEST_F(ViewsTest, ADoubleClickOnCallDoesNotHangUp) {
    Banner banner(phone);
    MainWindow window(phone);
    window.present();
    for (const auto& [place, start, end] :
         {std::tuple<QWidget*, const char*, const char*>{&banner, "Call", "End"},
          {&window, "Dial number", "Hang up"}}) {
        const auto click = [&place = *place](const char* name, QTest::MouseAction action) {
            mouse(place, name, action);
            mouse(place, name, QTest::MouseRelease);
            settle();
        };
        phone.open("1");
        settle();
        click(start, QTest::MousePress);
        EXPECT_TRUE(phone.callUp()) << start;
        click(end, QTest::MouseDClick);
        EXPECT_FALSE(phone.ending()) << end;
        clock.advance(Button::mouseSettles);
        click(end, QTest::MousePress);
        EXPECT_TRUE(phone.ending()) << end;
        lineEnds("");
    }
}

TEST_F(ViewsTest, TheBannerSaysWhatCannotBeCalled) {
    Banner banner(phone);
    phone.open("<b>five</b>");
    EXPECT_EQ(shown(banner), (Names{"Phone", "[Keypad]", "Not a phone number: <b>five</b>", "[Close]"}));
    press(banner, "Close", [&] { return !banner.isVisible(); });

    Phone lineless(nullptr);
    Banner other(lineless);
    lineless.open(QString(40, '8'));
    lineless.call();
    EXPECT_EQ(shown(other), (Names{"Phone", "[Keypad]", std::string(40, '8'), "No phone line", "[Close]"}));
}

TEST_F(ViewsTest, KeysEditTheNumberWithoutACallAndSendTonesInOne) {
    MainWindow window(phone);
    window.present();
    auto& number = *window.findChild<QLineEdit*>();
    const auto hold = [&](const char* name, auto done) {
        EXPECT_NE(button(window, name)->text(QAccessible::Description), "");
        mouse(window, name, QTest::MousePress);
        until(done);
        mouse(window, name, QTest::MouseRelease);
    };
    EXPECT_FALSE(button(window, "Dial number")->object()->property("enabled").toBool());
    number.insert("\u202atel:+1\u00a0(555)\u20130126\u202c");
    EXPECT_EQ(number.text(), "+1 (555)-0126");
    number.setCursorPosition(2);
    number.insert("\u00a0");
    EXPECT_EQ(number.cursorPosition(), 3);
    number.insert("tel:");
    EXPECT_EQ(number.text(), "+1  (555)-0126") << "not in the middle";
    hold("Erase digit", [&] { return number.text().isEmpty(); });
    hold("0", [&] { return number.text() == "+"; });
    press(window, "0", [&] { return number.text() == "+0"; });
    number.clear();
    QTest::keyClicks(&number, "5a");
    QTest::keyClicks(&window, "**");
    EXPECT_EQ(number.text(), "5**");
    press(window, "Erase digit", [&] { return number.text() == "5*"; });
    QTest::keyClick(&number, Qt::Key_Return);
    EXPECT_EQ(line->did.back(), "dial 5*");
    for (const char* name : {"Call", "End", "Close"})
        EXPECT_EQ(button(window, name), nullptr) << "is the banner's";

    QTest::keyClick(&number, '6');
    answer();
    QTest::keyClick(&number, '8');
    EXPECT_EQ(line->did.back(), "tones 8");
    hold("0", [&] { return line->did.back() == "tones 0"; });
    EXPECT_EQ(number.text(), "5*");
    EXPECT_EQ(shown(window).count("80"), 1U);
    press(window, "Hang up", [&] { return line->did.back() == "hang up"; });
}

} // namespace
} // namespace velto::phone
