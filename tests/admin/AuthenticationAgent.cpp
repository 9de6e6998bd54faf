#include "tests/admin/AuthenticationAgent.h"

#include "tests/admin/PolkitMachine.h"
#include "tests/support/TestComputer.h"

#include <sstream>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kPath = "/org/velto/TestAgent";
constexpr const char* kInterface = "org.freedesktop.PolicyKit1.AuthenticationAgent";

BusMessage authority(Bus& bus, const char* member) {
    return bus.method("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
                      "org.freedesktop.PolicyKit1.Authority", member);
}

/// Clock ticks since the machine's start: with it, a process's number means this process only.
std::uint64_t startTime(pid_t process) {
    const auto text = readFile("/proc/" + std::to_string(process) + "/stat");
    std::istringstream fields(text.substr(text.rfind(')') + 1)); // the third field comes next
    std::string skipped;
    for (int field = 3; field < 22; ++field)
        fields >> skipped;
    std::uint64_t ticks = 0;
    fields >> ticks;
    return ticks;
}

} // namespace

AuthenticationAgent::AuthenticationAgent(pid_t process, uid_t user, std::deque<Answer> answers)
    : bus_(Bus::open(PolkitMachine::busAddress, 10s)), answers_(std::move(answers)) {
    static const sd_bus_vtable kTable[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("BeginAuthentication", "sssa{ss}sa(sa{sv})", "", begin, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    if (!bus_ || sd_bus_add_object_vtable(bus_->handle(), nullptr, kPath, kInterface, kTable, this) < 0)
        return;
    registered_ = registerFor(process, user);
    thread_ = std::thread([this] {
        while (!ending_)
            bus_->process(5ms);
    });
}

AuthenticationAgent::~AuthenticationAgent() {
    ending_ = true;
    if (thread_.joinable())
        thread_.join();
}

std::vector<std::string> AuthenticationAgent::asked() {
    const std::lock_guard lock(mutex_);
    return asked_;
}

bool AuthenticationAgent::registerFor(pid_t process, uid_t user) {
    const auto request = authority(*bus_, "RegisterAuthenticationAgent");
    sd_bus_message_append(request.get(), "(sa{sv})ss", "unix-process", 3, "pid", "u",
                          static_cast<std::uint32_t>(process), "start-time", "t", startTime(process), "uid",
                          "i", static_cast<std::int32_t>(user), "C", kPath);
    return static_cast<bool>(bus_->call(request, 10s));
}

int AuthenticationAgent::begin(sd_bus_message* message, void* data, sd_bus_error* error) {
    return static_cast<AuthenticationAgent*>(data)->answer(message, error);
}

int AuthenticationAgent::answer(sd_bus_message* message, sd_bus_error* error) {
    const char* action = nullptr;
    const char* cookie = nullptr;
    sd_bus_message_read(message, "sss", &action, nullptr, nullptr);
    sd_bus_message_skip(message, "a{ss}");
    sd_bus_message_read(message, "s", &cookie);
    Answer answer = Answer::dismissed;
    {
        const std::lock_guard lock(mutex_);
        asked_.emplace_back(action);
        if (!answers_.empty()) {
            answer = answers_.front();
            answers_.pop_front();
        }
    }
    if (answer == Answer::dismissed)
        return sd_bus_error_set(error, "org.freedesktop.PolicyKit1.Error.Cancelled", "dismissed");
    if (answer == Answer::rightPassword)
        confirm(cookie);
    return sd_bus_reply_method_return(message, "");
}

/// What polkit's own helper says to it once the password was right; only root may.
bool AuthenticationAgent::confirm(const char* cookie) {
    const auto request = authority(*bus_, "AuthenticationAgentResponse2");
    sd_bus_message_append(request.get(), "us(sa{sv})", 0U, cookie, "unix-user", 1, "uid", "u", 0U);
    return static_cast<bool>(bus_->call(request, 10s));
}

} // namespace velto::test
