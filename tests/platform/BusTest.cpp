// Message bus connections against a real bus that dies, stops and goes on.
#include "VeltoPlatform/linux/Bus.h"
#include "rehearsal/PrivateDesktop.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <csignal>

namespace velto {
namespace {

using namespace std::chrono_literals;
using rehearsal::PrivateDesktop;

std::unique_ptr<PrivateDesktop> startDesktop(const std::filesystem::path& folder) {
    auto started = PrivateDesktop::start(folder, *rehearsal::makePrivateFolders(folder), {});
    EXPECT_TRUE(started) << (started ? "" : started.error().description);
    return started ? std::move(*started) : nullptr;
}

BusMessage getId(Bus& bus) {
    return bus.method("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId");
}

TEST(BusTest, CallsAreAnsweredInPlaceOrLater) {
    const test::TemporaryFolder folder;
    const auto desktop = startDesktop(folder.path());
    const auto bus = Bus::open(desktop->busAddress(), 2s);
    ASSERT_TRUE(bus);
    EXPECT_TRUE(bus->call(getId(*bus), 2s));

    const auto nobody = bus->method("org.velto.Nobody", "/", "org.velto.Nobody", "Call");
    EXPECT_TRUE(bus->call(nobody, 2s).absent());
    EXPECT_FALSE(bus->method("not a name", "/", "org.velto.Nobody", "Call"));

    int answers = 0;
    std::string error;
    ASSERT_TRUE(bus->send(getId(*bus), 2s, [&](const BusReply& reply) { answers += reply ? 1 : 0; }));
    ASSERT_TRUE(bus->send(nobody, 2s, [&](const BusReply& reply) { error = reply.error; }));
    while ((answers == 0 || error.empty()) && bus->process(2s)) {
    }
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(error, SD_BUS_ERROR_SERVICE_UNKNOWN);
}

TEST(BusTest, NothingWaitsForABusThatIsStoppedOrGone) {
    const test::TemporaryFolder folder;
    const auto desktop = startDesktop(folder.path());
    const auto bus = Bus::open(desktop->busAddress(), 2s);
    ASSERT_TRUE(bus);

    desktop->bus()->signal(SIGSTOP);
    EXPECT_FALSE(Bus::open(desktop->busAddress(), 50ms));
    EXPECT_TRUE(bus->call(getId(*bus), 50ms).timedOut());
    std::string error;
    ASSERT_TRUE(bus->send(getId(*bus), 50ms, [&](const BusReply& reply) { error = reply.error; }));
    while (error.empty() && bus->process(2s)) {
    }
    EXPECT_TRUE((BusReply{nullptr, error}.timedOut())) << error;

    desktop->bus()->signal(SIGCONT);
    EXPECT_TRUE(bus->call(getId(*bus), 2s));
    desktop->bus()->kill();
    EXPECT_TRUE(bus->call(getId(*bus), 2s).absent());
    EXPECT_FALSE(bus->alive());
    EXPECT_FALSE(Bus::open(desktop->busAddress(), 2s));
    EXPECT_FALSE(Bus::open("disabled:", 2s));
    EXPECT_FALSE(Bus::open("", 2s));
}

} // namespace
} // namespace velto
