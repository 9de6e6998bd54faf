#include "veltoctl/Keys.h"

#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/core/TextTrim.h"
#include "VeltoShared/voice/VoiceProvider.h"

#include <boost/json/serialize.hpp>

#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>

namespace velto::ctl::Keys {
namespace {

namespace json = boost::json;

constexpr std::size_t kLongest = 65'536;

/// What is typed is not shown while this lives, on the terminal that standard input is.
class Unseen {
  public:
    Unseen() {
        if (::tcgetattr(STDIN_FILENO, &before_) != 0)
            return;
        // No end of this program may leave the terminal without echo.
        for (const int signal : kEnds)
            ::signal(signal, restoreAndEnd);
        auto unseen = before_;
        unseen.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        // A shell shows what is typed after it has let a stopped program go on.
        unseen.c_cc[VSUSP] = _POSIX_VDISABLE;
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &unseen);
    }
    ~Unseen() {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        for (const int signal : kEnds)
            ::signal(signal, SIG_DFL);
    }
    Unseen(const Unseen&) = delete;
    Unseen& operator=(const Unseen&) = delete;

  private:
    static constexpr std::array kEnds{SIGINT, SIGTERM, SIGHUP, SIGQUIT};
    static void restoreAndEnd(int signal) {
        ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        ::signal(signal, SIG_DFL);
        ::raise(signal);
    }
    static inline termios before_{};
};

/// Up to the first line feed or the end; empty when it cannot be read to there.
std::string readLine() {
    std::string line;
    while (line.size() <= kLongest) {
        char byte = 0;
        const auto count = ::read(STDIN_FILENO, &byte, 1);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return {};
        if (count == 0 || byte == '\n')
            break;
        line += byte;
    }
    return line;
}

std::string readKey(VoiceProvider provider) {
    if (::isatty(STDIN_FILENO) == 0)
        return readLine();
    const auto prompt = std::string(displayName(provider)) + " API key: ";
    if (::write(STDERR_FILENO, prompt.data(), prompt.size()) < 0)
        return {};
    auto line = [] {
        const Unseen unseen;
        return readLine();
    }();
    if (::write(STDERR_FILENO, "\n", 1) < 0)
        return {};
    return line;
}

int set(VoiceProvider provider) {
    const auto line = readKey(provider);
    const auto key = trimBlanksAndNewlines(line);
    // What an arrow key or a paste brings along is not seen, and would only be noticed by the provider.
    const bool isPlain = std::ranges::all_of(key, [](char byte) { return byte > ' ' && byte < 0x7F; });
    if (key.empty() || line.size() > kLongest || !isPlain) {
        Output::message(key.empty() ? "no key on standard input; nothing was changed"
                                    : "that is no key, which is of visible ASCII characters without blanks; "
                                      "nothing was changed");
        return kFailed;
    }
    if (KeychainStore::set(key, keyAccount(provider)))
        return kDone;
    // The one before is removed first.
    const bool isLost = KeychainStore::holds(keyAccount(provider)) == SecretStatus::notFound;
    Output::message(std::string("the key could not be stored") + (isLost ? "; none is stored" : ""));
    return kFailed;
}

int remove(VoiceProvider provider) {
    if (KeychainStore::remove(keyAccount(provider)))
        return kDone;
    const bool none = KeychainStore::holds(keyAccount(provider)) == SecretStatus::notFound;
    Output::message(none ? "no key is stored" : "the key could not be removed");
    return none ? kRefused : kFailed;
}

int list(const Arguments& arguments, Output& output) {
    json::object all;
    bool known = true;
    for (const auto provider : kAllVoiceProviders) {
        const auto status = KeychainStore::holds(keyAccount(provider));
        const bool isStored = status == SecretStatus::success;
        const bool isKnown = isStored || status == SecretStatus::notFound;
        known = known && isKnown;
        const std::string name(rawValue(provider));
        all[name] = isKnown ? json::value(isStored) : json::value(nullptr);
        if (!arguments.json)
            output.line(name + (isStored                         ? "  stored"
                                : isKnown                        ? "  not stored"
                                : status == SecretStatus::locked ? "  not known: the keyring is locked"
                                                                 : "  not known"));
    }
    if (arguments.json)
        output.line(json::serialize(all));
    return known ? kDone : kFailed;
}

} // namespace

int run(const Arguments& arguments, Output& output, const std::function<bool(pid_t)>& reload) {
    if (arguments.command == "key list")
        return list(arguments, output);
    const auto provider = voiceProvider(arguments.provider).value_or(VoiceProvider::gemini);
    const int exit = arguments.command == "key set" ? set(provider) : remove(provider);
    if (exit != kDone)
        return exit;
    if (const auto application = ControlClient::applicationProcess(); application && !reload(*application))
        Output::message("the running Velto could not be told: start it again");
    if (arguments.json)
        output.line(R"({"ok":true})");
    return kDone;
}

} // namespace velto::ctl::Keys
