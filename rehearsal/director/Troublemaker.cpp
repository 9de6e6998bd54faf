#include "rehearsal/director/Troublemaker.h"

#include <signal.h>

#include <algorithm>

namespace velto::rehearsal {
namespace {

using namespace std::chrono_literals;

constexpr auto kPhoneStandsStill = 4s;

} // namespace

void Troublemaker::makeWhenDue(PrivateSession& session) {
    for (std::size_t i = 1; i < scenario_.lines.size(); ++i) {
        const auto& line = scenario_.lines[i];
        if (line.after && !tried_.contains(line.mark) &&
            evidence_.calleeHeard(scenario_.lines[i - 1].mark, Mark::Place::end)) {
            tried_.insert(line.mark);
            if (make(*line.after, session))
                evidence_.troubledBefore.insert(line.mark);
        }
    }
}

bool Troublemaker::make(Trouble trouble, PrivateSession& session) {
    switch (trouble) {
    case Trouble::soundRestart:
        printer_.note("(the sound server is killed and started again)");
        if (const auto restarted = session.restartSound(); !restarted) {
            stage_.fail(restarted.error().description);
            return false;
        }
        return true;
    case Trouble::keyringKilled:
        printer_.note("(the keyring's daemon is killed)");
        return session.killKeyring();
    case Trouble::phoneStops:
        return stopPhone();
    }
    return false;
}

bool Troublemaker::stopPhone() {
    // Anything less would name a group of processes, this one's own among them.
    if (evidence_.phone <= 0 || ::kill(evidence_.phone, SIGSTOP) != 0)
        return false;
    printer_.note("(the phone app stands still for four seconds)");
    const auto begin = std::chrono::steady_clock::now();
    evidence_.longestHold = 0;
    while (stage_.failure().empty() && std::chrono::steady_clock::now() - begin < kPhoneStandsStill) {
        const auto asked = std::chrono::steady_clock::now();
        askStatus_();
        const std::chrono::duration<double> hold = std::chrono::steady_clock::now() - asked;
        evidence_.longestHold = std::max(*evidence_.longestHold, hold.count());
        stage_.waitUntil([] { return false; }, 5ms);
    }
    return ::kill(evidence_.phone, SIGCONT) == 0;
}

} // namespace velto::rehearsal
