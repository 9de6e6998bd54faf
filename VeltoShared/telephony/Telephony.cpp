// Dialling by looking and pressing at fixed intervals; every look is a fresh walk.
#include "VeltoShared/telephony/Telephony.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Workspace.h"
#include "VeltoShared/audio/AudioProcess.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/telephony/AX.h"
#include "VeltoShared/telephony/CallTimer.h"

#include <boost/asio/this_coro.hpp>

#include <algorithm>
#include <string_view>

namespace velto::Telephony {
namespace {

constexpr std::string_view kScheme = "tel-phoneapp:";
constexpr int kPressAttempts = 100;
constexpr int kActivePolls = 400;
constexpr std::chrono::milliseconds kDialPause{100};
constexpr int kHangupAttempts = 30;
constexpr std::chrono::milliseconds kHangupPause{200};

bool isAlphanumeric(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z');
}

bool isHexadecimal(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'F') ||
           (character >= 'a' && character <= 'f');
}

/// What may follow a scheme: characters of a path, a query and one fragment (RFC 3986, section 3).
bool isURLRest(std::string_view rest) {
    constexpr std::string_view kPunctuation = "-._~!$&'()*+,;=:@/?";
    if (std::count(rest.begin(), rest.end(), '#') > 1)
        return false;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        if (rest[i] == '%') {
            if (rest.size() - i < 3 || !isHexadecimal(rest[i + 1]) || !isHexadecimal(rest[i + 2]))
                return false;
        } else if (!isAlphanumeric(rest[i]) && rest[i] != '#' &&
                   kPunctuation.find(rest[i]) == std::string_view::npos) {
            return false;
        }
    }
    return true;
}

class Dialer {
  public:
    Dialer(std::string number, std::function<void(std::string)> log)
        : number_(std::move(number)), log_(std::move(log)) {}

    asio::awaitable<bool> run() {
        if (!isDialable(number_)) {
            say("dial: invalid number '" + number_ + "'");
            co_return false;
        }
        const auto url = std::string(kScheme).append(trimBlanks(number_));
        say("dial: opening " + url);
        platform().workspace->openURL(url);
        co_await pressCall();
        co_return co_await waitForCall();
    }

  private:
    asio::awaitable<void> pressCall() {
        for (int attempt = 0; attempt < kPressAttempts; ++attempt) {
            if (AX::press("Call")) {
                say("dial: pressed Call after " + std::to_string(attempt) + " attempts");
                co_return;
            }
            co_await Clock::shared().sleep(kDialPause);
        }
        say("dial: Call button not found — Accessibility? banner not AX-visible?");
    }

    asio::awaitable<bool> waitForCall() {
        for (int poll = 0; poll < kActivePolls; ++poll) {
            if (callActive()) {
                say("dial: call active");
                co_return true;
            }
            co_await Clock::shared().sleep(kDialPause);
        }
        const bool active = callActive();
        say(std::string("dial: finished active=") + (active ? "true" : "false"));
        co_return active;
    }

    void say(std::string line) const {
        if (log_)
            log_(std::move(line));
    }

    std::string number_;
    std::function<void(std::string)> log_;
};

} // namespace

bool isDialable(std::string_view number) {
    const auto rest = trimBlanks(number);
    return !rest.empty() && isURLRest(rest);
}

asio::awaitable<bool> dial(std::string number, std::function<void(std::string)> log) {
    // A cancellation cuts a wait short; it must not throw out of the steps that follow.
    const bool throws = co_await asio::this_coro::throw_if_cancelled();
    co_await asio::this_coro::throw_if_cancelled(false);
    Dialer dialer(std::move(number), std::move(log));
    const bool active = co_await dialer.run();
    co_await asio::this_coro::throw_if_cancelled(throws);
    co_return active;
}

bool callActive() {
    const auto buttons = AX::buttons();
    return std::any_of(buttons.begin(), buttons.end(),
                       [](const auto& button) { return button.description == "End"; });
}

bool callAnswered() {
    if (!callActive())
        return false;
    for (const auto& texts : {AX::texts(), AX::texts(std::string(AX::kPhoneApp))})
        if (std::any_of(texts.begin(), texts.end(), showsCallTimer))
            return true;
    return AudioProcess::isRunningInput(AX::kPhoneApp);
}

bool hangup() {
    for (int attempt = 0; attempt < kHangupAttempts; ++attempt) {
        if (!callActive())
            return true;
        AX::press("End");
        Clock::shared().blockFor(kHangupPause);
    }
    return !callActive();
}

} // namespace velto::Telephony
