// The banner follows the line, and its buttons drive it.
#include "rehearsal/application/LineDesktop.h"

#include "tests/support/ManualClock.h"

#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

namespace velto::rehearsal {
namespace {

struct LineDesktopTest : testing::Test {
    test::Loop loop;
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("ld" + std::to_string(::getpid()));
    SimulatedDesktop desktop;
    std::string path;
    std::optional<asio::local::stream_protocol::acceptor> acceptor;
    asio::local::stream_protocol::socket callee{loop.context};
    std::shared_ptr<LineDesktop> line;

    LineDesktopTest() {
        std::filesystem::create_directories(folder);
        path = folder / "line";
        acceptor.emplace(loop.context, asio::local::stream_protocol::endpoint(path));
        line = LineDesktop::connect(desktop, loop.context.get_executor(), path);
        acceptor->accept(callee);
    }
    ~LineDesktopTest() override {
        line.reset();
        acceptor.reset();
        std::filesystem::remove_all(folder);
    }

    void say(const char* text) {
        asio::write(callee, asio::buffer(std::string(text) + "\n"));
        settle();
    }
    /// A local socket delivers at once, but the loop has to look a few times.
    void settle() {
        for (int i = 0; i < 20; ++i)
            loop.drain();
    }
    boost::json::value next() {
        std::string text;
        asio::read_until(callee, asio::dynamic_buffer(text), '\n');
        return boost::json::parse(text);
    }
    /// Every text and button of Notification Center, in order; `pressed` is pressed.
    std::vector<std::string> banner(const std::string& pressed = {}) {
        std::vector<std::string> shown;
        walk(desktop.find("com.apple.notificationcenterui"), pressed, shown);
        settle();
        return shown;
    }
    void walk(const ElementRef& element, const std::string& pressed, std::vector<std::string>& shown) {
        const Accessibility::Request request{element, Attribute::role | Attribute::value |
                                                          Attribute::description | Attribute::children};
        const auto attributes = desktop.read({&request, 1}).front();
        const auto* role = std::get_if<std::string>(&attributes.role);
        if (role != nullptr && *role == "AXButton") {
            shown.push_back("[" + std::get<std::string>(attributes.description) + "]");
            if (shown.back() == "[" + pressed + "]") {
                desktop.press(element);
            }
        } else if (const auto* text = std::get_if<std::string>(&attributes.value)) {
            shown.push_back(*text);
        }
        if (const auto* children = std::get_if<std::vector<ElementRef>>(&attributes.children))
            for (const auto& child : *children)
                walk(child, pressed, shown);
    }
};

using Shown = std::vector<std::string>;

TEST_F(LineDesktopTest, AWholeCallAndASecondOne) {
    EXPECT_EQ(banner(), Shown{});
    for (const auto& application : desktop.runningApplications()) {
        if (application.bundleID == "com.apple.mobilephone") {
            EXPECT_EQ(application.pid, ::getpid()) << "the process behind the line";
        }
    }
    for (int call = 0; call < 2; ++call) {
        EXPECT_TRUE(desktop.openURL("tel-phoneapp:+1555"));
        settle();
        EXPECT_EQ(banner("Call"), (Shown{"Phone", "+1555", "[Call]", "[Close]"}));
        EXPECT_EQ(next(), (boost::json::value{{"line", "dial"}, {"number", "+1555"}}));
        say(R"({"line":"ringing"})");
        loop.advance(std::chrono::seconds(3));
        EXPECT_EQ(banner(), (Shown{"Phone", "+1555", "Calling…", "[End]"}));
        EXPECT_TRUE(desktop.openURL("tel-phoneapp:+1777")) << "in a call: taken, and not shown";
        settle();
        say(R"({"line":"answered"})");
        loop.advance(std::chrono::seconds(67));
        EXPECT_EQ(banner("End"), (Shown{"Phone", "+1555", "1:07", "[End]"}));
        EXPECT_EQ(next(), (boost::json::value{{"line", "hangup"}}));
        EXPECT_EQ(banner().size(), 4U) << "until the line says that it has ended";
        say(R"({"line":"ended","reason":"hung up"})");
        EXPECT_EQ(banner(), Shown{});
    }
    EXPECT_FALSE(desktop.openURL("https://example.org"));
}

TEST_F(LineDesktopTest, ALineThatIsLostEndsTheCall) {
    desktop.openURL("tel-phoneapp:1");
    settle();
    banner("Call");
    EXPECT_EQ(banner().back(), "[End]");
    callee.close();
    settle();
    EXPECT_EQ(banner(), Shown{});
    EXPECT_EQ(LineDesktop::connect(desktop, loop.context.get_executor(), folder / "nobody"), nullptr);
}

} // namespace
} // namespace velto::rehearsal
