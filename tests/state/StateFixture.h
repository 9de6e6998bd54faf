// The simulated computer with the usual sound devices, and time that a test moves.
#pragma once

#include "VeltoShared/core/AppPaths.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

namespace velto::test {

using namespace std::chrono_literals;
using Notes = std::vector<std::string>;

struct StateTest : ::testing::Test {
    StateTest() { computer.audio.addUsualDevices(); }

    static std::string logged() { return readFile(AppPaths::logFile()); }
    static std::ptrdiff_t timesLogged(std::string_view part) {
        std::ptrdiff_t times = 0;
        const auto log = logged();
        for (auto at = log.find(part); at != log.npos; at = log.find(part, at + 1))
            ++times;
        return times;
    }

    TestComputer computer;
    Loop loop;
};

} // namespace velto::test
