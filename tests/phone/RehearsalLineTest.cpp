// A whole call over the line of a rehearsal, on a sound server of its own; where its reports go.
#include "VeltoPhone/line/RehearsalLine.h"
#include "VeltoPhone/line/ConfiguredLine.h"
#include "rehearsal/PrivateSoundServer.h"
#include "rehearsal/process/ReportSocket.h"

#include <boost/asio/local/stream_protocol.hpp>
#include <boost/asio/read.hpp>
#include <boost/json.hpp>

#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdlib>

#include <unistd.h>

namespace velto::phone {
namespace {

using namespace std::chrono_literals;

/// What line and person say, in order, each from whatever thread.
struct Journal {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> entries;

    void add(std::string entry) {
        const std::lock_guard lock(mutex);
        entries.push_back(std::move(entry));
        changed.notify_all();
    }
    bool waitFor(const std::string& entry) {
        std::unique_lock lock(mutex);
        return changed.wait_for(
            lock, 60s, [&] { return std::find(entries.begin(), entries.end(), entry) != entries.end(); });
    }
    std::vector<std::string> taken() {
        const std::lock_guard lock(mutex);
        return std::exchange(entries, {});
    }
    LineEvents events() {
        return {[this] { add("ringing"); }, [this] { add("answered"); },
                [this](const std::string& reason) { add("ended: " + reason); }};
    }
};
using Entries = std::vector<std::string>;

TEST(RehearsalLine, RingsIsAnsweredSpeaksAndEndsInsideThisProcess) {
    const auto folder = std::filesystem::temp_directory_path() / ("velto-pl-" + std::to_string(::getpid()));
    auto server = rehearsal::PrivateSoundServer::start(folder);
    ASSERT_TRUE(server) << server.error().description;
    for (const auto& [name, value] : (*server)->clientEnvironment())
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)

    rehearsal::Scenario scenario;
    scenario.ringing = 0.05;
    scenario.end = rehearsal::CallEnd::calleeHangsUp;
    scenario.lines = {{.mark = 1, .side = rehearsal::Side::callee, .text = "Wrong number."}};
    Journal journal;
    std::atomic<std::int64_t> framesSaid{0};
    const auto report = [&](const boost::json::object& event) {
        if (event.at("event") == "ready")
            journal.add(event.at("pid") == ::getpid() ? "ready" : "not this process");
        if (event.at("event") == "measures")
            framesSaid = event.at("framesSaid").to_number<std::int64_t>();
        if (event.at("event") == "tones")
            journal.add("tones " + std::string(event.at("digits").as_string()));
    };
    {
        RehearsalLine line(scenario, report);
        line.hangUp();
        line.dial("5551234", journal.events());
        line.dial("5551235", journal.events());
        line.sendTones("1");
        ASSERT_TRUE(journal.waitFor("answered"));
        line.sendTones("5");
        ASSERT_TRUE(journal.waitFor("ended: callee hung up"));
        EXPECT_EQ(journal.taken(), (Entries{"ready", "ringing", "ended: the line is busy", "answered",
                                            "tones 5", "ended: callee hung up"}));
        EXPECT_GT(framesSaid, 24'000);

        line.dial("1", journal.events());
        line.hangUp();
        ASSERT_TRUE(journal.waitFor("ended: hung up by the caller"));
        EXPECT_EQ(framesSaid, 0) << "of this call, not of the one before";
        line.dial("2", journal.events());
        ASSERT_TRUE(journal.waitFor("answered"));
        journal.taken();
    }
    EXPECT_EQ(journal.taken(), Entries{"ended: the phone was closed"});
    server->reset();
    std::filesystem::remove_all(folder);
}

TEST(ReportSocket, BringsWholeLinesAndWaitsForNobody) {
    using Protocol = boost::asio::local::stream_protocol;
    const auto path = std::filesystem::temp_directory_path() / ("velto-rs-" + std::to_string(::getpid()));
    rehearsal::reportToSocket(path)({{"event", "unheard"}});
    rehearsal::reportToSocket(std::string(200, 'x'))({{"event", "unheard"}});

    boost::asio::io_context context;
    Protocol::acceptor acceptor(context, Protocol::endpoint(path));
    const boost::json::object event{{"event", "heard"}, {"text", std::string(1000, 'x')}};
    {
        const auto report = rehearsal::reportToSocket(path);
        for (int i = 0; i < 10'000; ++i)
            report(event);
    }
    std::string all;
    boost::system::error_code end;
    auto peer = acceptor.accept();
    boost::asio::read(peer, boost::asio::dynamic_buffer(all), end);
    const auto line = boost::json::serialize(event) + "\n";
    EXPECT_GT(all.size() / line.size(), 10U);
    EXPECT_LT(all.size() / line.size(), 10'000U) << "what the socket's buffer does not hold is dropped";
    EXPECT_EQ(all.substr(0, line.size()), line);
    std::filesystem::remove(path);
}

TEST(ConfiguredLine, SaysWhyThereIsNone) {
    const auto whyNot = [](const char* value) {
        ::setenv("VELTO_PHONE_LINE", value, 1); // NOLINT(concurrency-mt-unsafe)
        const auto line = configuredLine();
        return line ? "there is one" : line.error().description;
    };
    EXPECT_EQ(whyNot(""), "VELTO_PHONE_LINE names none");
    EXPECT_EQ(whyNot("modem:0"), "VELTO_PHONE_LINE: unknown kind of line \"modem:0\"");
    EXPECT_NE(whyNot("rehearsal:/no/such.json").find("/no/such.json"), std::string::npos);
}

} // namespace
} // namespace velto::phone
