// Which texts are numbers, which line the environment names, and the states of a call.
#include "VeltoPhone/line/ConfiguredLine.h"
#include "VeltoPhone/model/PhoneNumber.h"
#include "tests/phone/PhoneFixture.h"
#include "tests/support/ScopedEnvironment.h"

#include <QApplication>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;
using State = PhoneState;
using Texts = std::map<std::string, std::string>;

TEST(PhoneNumber, IsWhatDesktopsOpenAndPeopleType) {
    const Texts numbers{{"TEL:+1-(555) 012.6", "+15550126"},
                        {"tel:%2B15550126%20", "+15550126"},
                        {"tel-phoneapp:*31#5551234", "*31#5551234"},
                        {"tel-phoneapp:%2A31%23+15551234", "*31#+15551234"},
                        {"\u200e tel:%C2%A0+1\u202f555\u20130126\u2069\n", "+15550126"},
                        {std::string(40, '1'), std::string(40, '1')}};
    for (const auto& [text, number] : numbers)
        EXPECT_EQ(phoneNumber(text).value(), number) << text;

    const Texts others{{"tel-phoneapp:", "nothing was given"},
                       {"tel:5;ext=1", "5;ext=1"},
                       {"5%00%0a\x1b[2J", "5   [2J"},
                       {"\xff", "\xef\xbf\xbd"},
                       {std::string(10'000, '5'), std::string(32, '5') + "…"}};
    for (const auto& [text, shown] : others)
        EXPECT_EQ(phoneNumber(text).error().description, "Not a phone number: " + shown);
    for (const char* text : {"555CALL", "1+2", "*#", "+", "5%", "5%2", "٥٥٥"})
        EXPECT_FALSE(phoneNumber(text)) << text;
}

TEST(ConfiguredLine, SaysWhyThereIsNone) {
    test::ScopedEnvironment environment;
    const auto whyNot = [&](const char* value) {
        environment.set("VELTO_PHONE_LINE", value);
        const auto line = configuredLine();
        return line ? "there is one" : line.error().description;
    };
    EXPECT_EQ(whyNot(""), "VELTO_PHONE_LINE names none");
    EXPECT_EQ(whyNot("modem:0"), "VELTO_PHONE_LINE: unknown kind of line \"modem:0\"");
    EXPECT_NE(whyNot("rehearsal:/no/such.json").find("/no/such.json"), std::string::npos);
}

using PhoneTest = PhoneFixture;

TEST_F(PhoneTest, ANumberThatIsOpenedDoesNotDisturbACall) {
    call("1");
    answer();
    phone.open("2");
    EXPECT_EQ(phone.state(), State::active);
    EXPECT_EQ(phone.notice(), "2 can be called when this call is over");
    lineEnds("callee hung up");
    EXPECT_EQ(phone.notice(), "");
    EXPECT_EQ(phone.number(), "1") << "whoever was called may read how it ended";
    wait(3s);
    EXPECT_EQ(phone.state(), State::offered);
    EXPECT_EQ(phone.number(), "2");

    phone.call();
    phone.open("5");
    lineEnds("busy");
    phone.open("6");
    EXPECT_EQ(phone.number(), "6");
    phone.dismiss();
    EXPECT_EQ(phone.state(), State::idle) << "what came later took the place of what waited";
    phone.open("two");
    wait(1h);
    EXPECT_EQ(phone.state(), State::refused) << "until somebody has read it";
    phone.open("3");
    EXPECT_EQ(phone.state(), State::offered);
}

TEST_F(PhoneTest, ALineThatDiesEndsTheCallAndIsNotHeardInTheNext) {
    call("1");
    lineEnds("busy");
    const auto first = line->events;
    call("2");
    first.answered();
    first.ended("again");
    settle();
    EXPECT_EQ(phone.state(), State::dialing);
    answer();
    wait(3s);
    EXPECT_EQ(phone.state(), State::active);
    lineEnds("the modem has gone");

    call("3");
    answer();
    phone.hangUp();
    wait(4900ms);
    phone.hangUp();
    EXPECT_TRUE(phone.callUp());
    wait(200ms);
    EXPECT_EQ(phone.state(), State::ended);
    EXPECT_EQ(phone.reason(), "the phone line does not answer; the call may still be up");
    wait(3s);
    lineEnds("late");
    EXPECT_EQ(phone.state(), State::idle);
}

} // namespace
} // namespace velto::phone

int main(int argc, char** argv) {
    ::qputenv("QT_QPA_PLATFORM", "offscreen");
    ::qputenv("QT_LOGGING_RULES", "default.warning=false");
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
