// velto-rehearsal-callee: the person on the phone's line as a program, reached over a socket. From the
// desktop:
// {"line":"dial","number":…}, {"line":"hangup"}. To it: {"line":"ringing"}, {"line":"answered"},
// {"line":"ended","reason":…}.
#include "rehearsal/callee/Callee.h"
#include "rehearsal/callee/LineSocket.h"
#include "rehearsal/scenario/ScenarioFile.h"

#include <CLI/CLI.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/json.hpp>

#include <iostream>

namespace velto::rehearsal {
namespace {

std::string textOf(const boost::json::object& object, std::string_view key) {
    const auto* value = object.if_contains(key);
    return value != nullptr && value->is_string() ? std::string(value->get_string()) : std::string();
}

void received(Callee& callee, const boost::json::object& message) {
    const auto what = textOf(message, "line");
    if (what == "dial")
        callee.dial(textOf(message, "number"));
    else if (what == "hangup")
        callee.hangUp("hung up by the caller");
}

} // namespace
} // namespace velto::rehearsal

int main(int argc, char** argv) {
    using namespace velto::rehearsal;
    std::string scenarioFile;
    std::string line;
    CLI::App arguments("The person on the phone's line, following a scenario");
    arguments.add_option("--scenario", scenarioFile, "Scenario file")->required();
    arguments.add_option("--line", line, "Path of the line's socket")->required();
    CLI11_PARSE(arguments, argc, argv);

    const auto scenario = loadScenario(scenarioFile, ".");
    if (!scenario) {
        std::cerr << "velto-rehearsal-callee: " << scenario.error().message << '\n';
        return 2;
    }
    try {
        boost::asio::io_context context(1);
        boost::asio::signal_set signals(context, SIGTERM, SIGINT);
        signals.async_wait([&](auto, auto) { context.stop(); });
        std::optional<LineSocket> socket;
        Callee callee(context, *scenario,
                      {[&] {
                           socket->send({{"line", "ringing"}});
                       },
                       [&] {
                           socket->send({{"line", "answered"}});
                       },
                       [&](const std::string& reason) {
                           socket->send({{"line", "ended"}, {"reason", reason}});
                       },
                       reportToStandardOutput});
        socket.emplace(
            context.get_executor(), line,
            LineSocket::Callbacks{[&](const boost::json::object& message) { received(callee, message); },
                                  [&] { callee.hangUp("the desktop has gone"); }});
        boost::asio::co_spawn(context, socket->serve(), boost::asio::detached);
        reportToStandardOutput({{"event", "ready"}});
        boost::asio::co_spawn(context, callee.run(), [](const std::exception_ptr& error) {
            if (error)
                std::rethrow_exception(error);
        });
        context.run();
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "velto-rehearsal-callee: " << error.what() << '\n';
        return 2;
    }
}
