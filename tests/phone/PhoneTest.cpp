// Which texts are numbers, and the states of a call.
#include "VeltoPhone/model/PhoneNumber.h"
#include "tests/phone/PhoneFixture.h"

#include <thread>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;
using State = PhoneState;

TEST(PhoneNumber, TakesWhatDesktopsOpenAndPeopleType) {
    const std::map<std::string, std::string> numbers{
        {"5551234", "5551234"},
        {"tel-phoneapp:5551234", "5551234"},
        {"TEL:+1-(555) 012.6", "+15550126"},
        {"tel:%2B15550126%20", "+15550126"},
        {"tel-phoneapp:*31#5551234", "*31#5551234"},
        {"tel-phoneapp:%2A31%23+15551234", "*31#+15551234"},
        {"\u200e tel:%C2%A0+1\u202f555\u20130126\u2069\n", "+15550126"},
        {std::string(40, '1'), std::string(40, '1')}};
    for (const auto& [text, number] : numbers)
        EXPECT_EQ(phoneNumber(text).value(), number) << text;
}

TEST(PhoneNumber, SaysOfAnythingElseThatItIsNone) {
    const std::map<std::string, std::string> texts{{"", "nothing was given"},
                                                   {"tel-phoneapp:", "nothing was given"},
                                                   {"555CALL", "555CALL"},
                                                   {"1+2", "1+2"},
                                                   {"*#", "*#"},
                                                   {"+", "+"},
                                                   {"5%", "5%"},
                                                   {"5%2", "5%2"},
                                                   {"tel:5;ext=1", "5;ext=1"},
                                                   {"٥٥٥", "٥٥٥"},
                                                   {"5%00%0a\x1b[2J", "5   [2J"},
                                                   {"\xff", "\xef\xbf\xbd"},
                                                   {std::string(10'000, '5'), std::string(32, '5') + "…"}};
    for (const auto& [text, shown] : texts) {
        const auto number = phoneNumber(text);
        ASSERT_FALSE(number) << text;
        EXPECT_EQ(number.error().description, "Not a phone number: " + shown);
    }
}

using PhoneTest = PhoneFixture;
using Did = std::vector<std::string>;

TEST_F(PhoneTest, CallsFromTheOfferToAWhileAfterTheEnd) {
    phone.call();
    EXPECT_EQ(phone.state(), State::idle);
    phone.open("tel-phoneapp:5551234");
    EXPECT_EQ(phone.state(), State::offered);
    EXPECT_EQ(phone.number(), "5551234");
    phone.call();
    phone.call();
    phone.sendTone('1');
    phone.dismiss();
    EXPECT_EQ(phone.state(), State::dialing);
    EXPECT_EQ(line->did, Did{"dial 5551234"}) << "once, and no tone before the answer";
    std::thread([this] { line->events.ringing(); }).join();
    EXPECT_EQ(phone.state(), State::dialing) << "nothing happens on the line's thread";
    settle();
    EXPECT_EQ(phone.state(), State::ringing);
    wait(70s);
    line->events.answered();
    settle();
    EXPECT_EQ(phone.runningTime(), "0:00");
    wait(7999ms);
    EXPECT_EQ(phone.runningTime(), "0:07");
    phone.sendTone('#');
    wait(1h);
    EXPECT_EQ(phone.runningTime(), "60:07");
    phone.hangUp();
    EXPECT_TRUE(phone.callUp()) << "until the line says otherwise";
    EXPECT_EQ(line->did, (Did{"dial 5551234", "tones #", "hang up"}));
    lineEnds("hung up by the caller");
    EXPECT_EQ(phone.state(), State::ended);
    EXPECT_EQ(phone.reason(), "hung up by the caller");
    wait(2900ms);
    EXPECT_EQ(phone.state(), State::ended);
    wait(200ms);
    EXPECT_EQ(phone.state(), State::idle);
    EXPECT_EQ(phone.number(), "");
}

TEST_F(PhoneTest, ANumberThatIsOpenedDoesNotDisturbACall) {
    call("1");
    answer();
    phone.open("2");
    EXPECT_EQ(phone.number(), "1");
    EXPECT_EQ(phone.state(), State::active);
    EXPECT_EQ(phone.notice(), "2 can be called when this call is over");
    phone.open("two");
    EXPECT_EQ(phone.notice(), "Not a phone number: two");
    lineEnds("callee hung up");
    EXPECT_EQ(phone.notice(), "");
    EXPECT_EQ(phone.number(), "1") << "whoever was called may read how it ended";
    wait(3s);
    EXPECT_EQ(phone.state(), State::offered);
    EXPECT_EQ(phone.number(), "2");
    EXPECT_EQ(line->did, Did{"dial 1"});

    phone.call();
    phone.open("5");
    lineEnds("busy");
    phone.open("6");
    EXPECT_EQ(phone.number(), "6");
    phone.dismiss();
    EXPECT_EQ(phone.state(), State::idle) << "what came later took the place of what waited";
    phone.open("two");
    EXPECT_EQ(phone.state(), State::refused);
    wait(1h);
    EXPECT_EQ(phone.state(), State::refused) << "until somebody has read it";
    phone.open("3");
    EXPECT_EQ(phone.state(), State::offered);
    phone.dismiss();
    EXPECT_EQ(phone.state(), State::idle);
}

TEST_F(PhoneTest, ALineThatDiesEndsTheCallAndIsNotHeardInTheNext) {
    call("1");
    lineEnds("busy");
    EXPECT_EQ(phone.state(), State::ended);
    EXPECT_EQ(phone.reason(), "busy");
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
    EXPECT_EQ(phone.state(), State::ended);

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

TEST_F(PhoneTest, WithoutALineNothingIsCalled) {
    Phone lineless(nullptr);
    lineless.open("1");
    lineless.call();
    lineless.hangUp();
    EXPECT_EQ(lineless.state(), State::offered);
}

} // namespace
} // namespace velto::phone
