// velto-rehearsal-server: the local voice server of a rehearsal as a program.
#include "VeltoPlatform/FileDescriptor.h"
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

void run(VoiceServerOptions options) {
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
}

/// The keys that the environment holds, as long as it has all.
std::optional<ApiKeys> keysOfEnvironment() {
    ApiKeys keys;
    for (const auto provider : velto::kAllVoiceProviders)
        if (const char* const key =
                std::getenv(keyVariable(provider).c_str())) // NOLINT(concurrency-mt-unsafe)
            keys.emplace(provider, key);
    if (keys.size() < velto::kAllVoiceProviders.size())
        return {};
    return keys;
}

} // namespace

int main(int argc, char** argv) {
    std::string scenarioFile;
    std::string certificateFile;
    std::string keyFile;
    std::string wireFile;
    CLI::App arguments("A local voice server that follows a scenario");
    arguments.add_option("--scenario", scenarioFile, "Scenario file")->required();
    arguments.add_option("--certificate", certificateFile, "Certificate chain, PEM")->required();
    arguments.add_option("--key", keyFile, "Private key, PEM")->required();
    arguments.add_option("--wire", wireFile, "Gets what the clients sent, without keys and audio");
    CLI11_PARSE(arguments, argc, argv);

    const auto scenario = loadScenario(scenarioFile, ".");
    if (!scenario)
        return fail(scenario.error().message);
    const auto certificate = readFile(certificateFile);
    const auto key = readFile(keyFile);
    const auto apiKeys = keysOfEnvironment();
    if (!certificate || !key || !apiKeys)
        return fail("a certificate, a key and an API key of each provider in the environment are needed");
    std::shared_ptr<WireTranscript> wire;
    velto::FileDescriptor wireTo;
    if (!wireFile.empty()) {
        wire = std::make_shared<WireTranscript>(*apiKeys);
        wireTo = openPrivateFile(wireFile);
        if (!wireTo)
            return fail("cannot write " + wireFile);
    }
    try {
        run({*certificate, *key, *apiKeys, *scenario, {}, wire});
        if (wire && !(velto::writeAll(wireTo.get(), wire->text()) && wireTo.close()))
            return fail("cannot write all of " + wireFile);
        return 0;
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}
