// velto-rehearsal-server: the local voice server of a rehearsal as a program.
#include "rehearsal/process/Reports.h"
#include "rehearsal/process/TextFile.h"
#include "rehearsal/scenario/ScenarioFile.h"
#include "rehearsal/server/VoiceServer.h"

#include <CLI/CLI.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/signal_set.hpp>

#include <cstdlib>
#include <iostream>

namespace {

using namespace velto::rehearsal;

constexpr const char* kVoice = "en-us+f3";
constexpr double kRate = 24000;

int fail(const std::string& message) {
    std::cerr << "velto-rehearsal-server: " << message << '\n';
    return 2;
}

int run(VoiceServerOptions options) {
    for (const auto& line : options.scenario.lines)
        if (line.side == Side::agent)
            options.voices.emplace(line.mark, speakLine(line.mark, line.text, kVoice, kRate));
    boost::asio::io_context context(1);
    boost::asio::signal_set signals(context, SIGTERM, SIGINT);
    signals.async_wait([&](auto, auto) { context.stop(); });
    VoiceServer server(std::move(options), reportToStandardOutput);
    boost::asio::co_spawn(context, server.serve(), [](const std::exception_ptr& error) {
        if (error)
            std::rethrow_exception(error);
    });
    context.run();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    std::string scenarioFile;
    std::string certificateFile;
    std::string keyFile;
    CLI::App arguments("A local voice server that follows a scenario");
    arguments.add_option("--scenario", scenarioFile, "Scenario file")->required();
    arguments.add_option("--certificate", certificateFile, "Certificate chain, PEM")->required();
    arguments.add_option("--key", keyFile, "Private key, PEM")->required();
    CLI11_PARSE(arguments, argc, argv);

    const auto scenario = loadScenario(scenarioFile, ".");
    if (!scenario)
        return fail(scenario.error().message);
    const auto certificate = readFile(certificateFile);
    const auto key = readFile(keyFile);
    // An API key is a secret even here: not among the arguments, which everybody on the computer can read.
    const char* const apiKey = std::getenv("VELTO_REHEARSAL_KEY"); // NOLINT(concurrency-mt-unsafe)
    if (!certificate || !key || apiKey == nullptr)
        return fail("a certificate, a key and VELTO_REHEARSAL_KEY are needed");
    try {
        return run({*certificate, *key, apiKey, *scenario, {}});
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
