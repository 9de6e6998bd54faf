// velto-rehearsal-callee: the person on the phone's line as a program.
#include "rehearsal/callee/Callee.h"
#include "rehearsal/scenario/ScenarioFile.h"

#include <CLI/CLI.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/signal_set.hpp>

#include <iostream>

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
        Callee callee(context, *scenario, line, reportToStandardOutput);
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
