// The providers' own JavaScript SDKs on the same messages.
#include "bench/voice/Parts.h"
#include "bench/voice/Program.h"

#include <cstdio>
#include <cstdlib>

namespace velto::bench {
namespace {

constexpr int kMessages = 1500;
/// Rounds in which its code is still being compiled.
constexpr int kWarmUps = 3;
/// sdk/run.sh: not on this machine.
constexpr int kSkipped = 77;

} // namespace

void benchSdk(const Service& service, const Figure& client) {
    const test::ScriptedTlsServer server(
        [&](test::ServerPeer& peer) { service.serveAudio(peer, kMessages); });
    // Nothing in this process changes the environment once threads run.
    const char* authority = std::getenv("SSL_CERT_FILE");
    const auto sdk =
        runProgram({BENCH_SDK "/run.sh", std::string(rawValue(service.provider())),
                    std::to_string(server.port()), std::to_string(kMessages)},
                   {{"NODE_EXTRA_CA_CERTS", authority ? authority : ""}}, std::chrono::seconds(300));
    if (sdk.code == kSkipped && !sdk.lines.empty()) {
        std::printf("%s\n", sdk.lines[0].c_str());
        return;
    }
    // The name first, then a line for every round.
    if (sdk.code != 0 || sdk.lines.size() < 2 + kWarmUps) {
        std::printf("the SDK failed with code %d\n", sdk.code);
        return;
    }
    std::vector<double> rounds;
    for (std::size_t i = 1; i < sdk.lines.size(); ++i)
        rounds.push_back(std::stod(sdk.lines[i]));
    const double first = rounds[0];
    rounds.erase(rounds.begin(), rounds.begin() + kWarmUps);
    const auto warm = figureOf(rounds);
    std::printf("the same in npm %s: %s of CPU a message when warm: client's share of it %.2f (aim 0.42); in "
                "the first "
                "round, %d messages, %.1f us: %.2f\n",
                sdk.lines[0].c_str(), microseconds(warm).c_str(), client.median / warm.median, kMessages,
                first, client.median / first);
}

} // namespace velto::bench
