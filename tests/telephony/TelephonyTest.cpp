// Dialling, watching and hanging up, to the millisecond.
#include "VeltoShared/telephony/Telephony.h"

#include "VeltoShared/telephony/CallTimer.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>

#include <gtest/gtest.h>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

class TelephonyTest : public ::testing::Test {
  protected:
    Loop loop;
    TestComputer computer;
    SimulatedDesktop& desktop = computer.desktop;
    SimulatedElementRef center = desktop.launch("com.apple.notificationcenterui");
    Lines lines;

    auto elapsed() const { return loop.clock.steadyNow().time_since_epoch() / 1ms; }
    bool dial(std::string number) {
        return loop.run(Telephony::dial(std::move(number), [this](auto line) {
            lines.push_back(std::to_string(elapsed()) + " " + line);
        }));
    }
    /// Runs `change` when the clock reaches this moment.
    void at(std::chrono::milliseconds moment, std::function<void()> change) {
        MainThread::spawn([](auto when, auto what) -> asio::awaitable<void> {
            co_await Clock::shared().sleep(when);
            what();
        }(moment, std::move(change)));
    }
};

TEST_F(TelephonyTest, dialsPressesAndSeesTheCall) {
    center->addButton("Call", [&] { center->addButton("End"); });
    EXPECT_TRUE(dial(" \t5551234 "));
    EXPECT_EQ(desktop.openedURLs(), Lines{"tel-phoneapp:5551234"});
    EXPECT_EQ(lines, (Lines{"0 dial: opening tel-phoneapp:5551234", "0 dial: pressed Call after 0 attempts",
                            "0 dial: call active"}));
}

TEST_F(TelephonyTest, keepsPressingAndLookingEvery100Milliseconds) {
    at(9850ms, [&] { center->addButton("Call"); });
    at(49'900ms, [&] { center->addButton("End"); }); // just before the last look
    EXPECT_TRUE(dial("+1(555)123-4567"));
    EXPECT_EQ(lines,
              (Lines{"0 dial: opening tel-phoneapp:+1(555)123-4567",
                     "9900 dial: pressed Call after 99 attempts", "49900 dial: finished active=true"}));
}

TEST_F(TelephonyTest, givesUpAfterAllAttemptsAndLooks) {
    auto button = center->addButton("Call");
    button->failPress();
    EXPECT_FALSE(dial("1"));
    EXPECT_EQ(button->pressAttempts(), 100);
    EXPECT_EQ(lines, (Lines{"0 dial: opening tel-phoneapp:1",
                            "10000 dial: Call button not found — Accessibility? banner not AX-visible?",
                            "50000 dial: finished active=false"}));
}

TEST_F(TelephonyTest, refusesWhatMakesNoURL) {
    for (const std::string number :
         {"", " \t ", "55 51", "5\"", "%4", "%zz", "1#2#3", "\xC3\xA9", "<1>", "[1]"}) {
        lines.clear();
        EXPECT_FALSE(dial(number)) << number;
        EXPECT_EQ(lines, Lines{"0 dial: invalid number '" + number + "'"});
    }
    EXPECT_TRUE(desktop.openedURLs().empty());
    desktop.setTrusted(false);
    EXPECT_FALSE(dial("*31%23;ext=1?a#b"));
    EXPECT_EQ(desktop.openedURLs().size(), 1u);
}

TEST_F(TelephonyTest, aCancelledWaitCountsAsFinished) {
    asio::cancellation_signal cancel;
    std::optional<bool> answer;
    asio::co_spawn(loop.context, Telephony::dial("1", {}),
                   asio::bind_cancellation_slot(cancel.slot(),
                                                [&](std::exception_ptr, bool active) { answer = active; }));
    loop.advance(50ms);
    center->addButton("Call", [&] { center->addButton("End"); });
    cancel.emit(asio::cancellation_type::terminal);
    loop.drain();
    EXPECT_EQ(answer, true);
}

TEST_F(TelephonyTest, aCallIsActiveWhenAButtonIsDescribedExactlyEnd) {
    center->add({.role = "AXButton", .title = "End"});
    center->addButton("end");
    EXPECT_FALSE(Telephony::callActive());
    center->add({.role = "AXGroup"})->addButton("End");
    EXPECT_TRUE(Telephony::callActive());
    desktop.setTrusted(false);
    EXPECT_FALSE(Telephony::callActive());
}

TEST_F(TelephonyTest, aCallIsAnsweredWhenATimerShowsOrThePhoneRecords) {
    auto phone = desktop.launch("com.apple.mobilephone", 91);
    auto text = phone->addText("Mobile 0:12");
    EXPECT_FALSE(Telephony::callAnswered()); // no call
    center->addButton("End");
    EXPECT_TRUE(Telephony::callAnswered());
    text->set(Attribute::value, std::string("12:345"));
    EXPECT_FALSE(Telephony::callAnswered());
    computer.audio.setProcess(91, 7, true);
    EXPECT_TRUE(Telephony::callAnswered());
    computer.audio.setProcess(91, 7, false);
    EXPECT_FALSE(Telephony::callAnswered());
    center->addText("105:00");
    EXPECT_TRUE(Telephony::callAnswered());
}

TEST(CallTimer, isAWordOfItsOwn) {
    for (const auto* text : {"0:07", "12:45", "105:00", "(1:23)", "1:23:45", "x:1:23", "9999 0:12.",
                             "0:07\u00A0s", "\u20680:07\u2069", "12:345 0:12"})
        EXPECT_TRUE(showsCallTimer(text)) << text;
    for (const auto* text : {"", ":", "0:7", ":07", "1234:56", "12:345", "a0:07", "_0:07", "0:07a", "0 :07",
                             "0: 07", "\u00E90:07", "0:07\u00E9", "0:1"})
        EXPECT_FALSE(showsCallTimer(text)) << text;
}

TEST_F(TelephonyTest, hangupPressesUntilNoCallIsLeft) {
    EXPECT_TRUE(Telephony::hangup());
    EXPECT_EQ(elapsed(), 0);

    auto end = center->addButton("End");
    int presses = 0;
    end->onPress([&] {
        if (++presses == 3)
            end->remove();
    });
    EXPECT_TRUE(Telephony::hangup());
    EXPECT_EQ(elapsed(), 600);

    auto deaf = center->addButton("End");
    EXPECT_FALSE(Telephony::hangup());
    EXPECT_EQ(deaf->presses(), 30);
    EXPECT_EQ(elapsed(), 6'600);
}

} // namespace
} // namespace velto::test
