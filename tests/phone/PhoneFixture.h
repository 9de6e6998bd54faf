// A phone with a line that does what a test tells it, on a hand-driven clock and without a display.
#pragma once

#include "VeltoPhone/model/Phone.h"
#include "tests/support/ManualClock.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace velto::phone {

using Did = std::vector<std::string>;

struct ToldLine : Line {
    void dial(const std::string& number, LineEvents itsEvents) override {
        did.push_back("dial " + number);
        events = std::move(itsEvents);
    }
    void hangUp() override { did.emplace_back("hang up"); }
    void sendTones(const std::string& digits) override { did.push_back("tones " + digits); }

    Did did;
    LineEvents events;
};

struct PhoneFixture : testing::Test {
    test::ManualClock clock{[] {}};
    ToldLine* line = new ToldLine;
    Phone phone{std::unique_ptr<Line>(line)};

    PhoneFixture() { Clock::install(&clock); }
    ~PhoneFixture() override { Clock::install(nullptr); }

    static void settle() {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
    void wait(Clock::Duration time) {
        clock.advance(time);
        phone.tick();
        settle();
    }
    void call(const char* number) {
        phone.open(QString::fromLatin1(number));
        phone.call();
    }
    void answer() {
        line->events.ringing();
        line->events.answered();
        settle();
    }
    void lineEnds(const char* reason) {
        line->events.ended(reason);
        settle();
    }
};

} // namespace velto::phone
