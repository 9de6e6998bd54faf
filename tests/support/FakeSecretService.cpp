#include "tests/support/FakeSecretService.h"

#include <cstring>
#include <stdexcept>

namespace velto::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kNone = "/";
constexpr const char* kCollection = "/org/freedesktop/secrets/collection/fake";
constexpr const char* kItem = "/org/freedesktop/secrets/collection/fake/1";

} // namespace

FakeSecretService::FakeSecretService(const std::string& busAddress, Behaviour behaviour)
    : behaviour_(std::move(behaviour)), bus_(Bus::open(busAddress, 2s)) {
    if (!bus_ || sd_bus_add_filter(bus_->handle(), nullptr, received, this) < 0 ||
        sd_bus_request_name(bus_->handle(), "org.freedesktop.secrets", SD_BUS_NAME_QUEUE) < 0)
        throw std::runtime_error("no bus for the fake Secret Service");
    thread_ = std::thread([this] {
        while (!ending_) {
            bus_->process(10ms);
            complete(decision_);
            decision_ = User::isAway;
        }
        bus_.reset();
    });
}

FakeSecretService::~FakeSecretService() {
    ending_ = true;
    thread_.join();
}

int FakeSecretService::received(sd_bus_message* message, void* self, sd_bus_error*) {
    const bool ours = sd_bus_message_is_method_call(message, nullptr, nullptr) > 0;
    return ours ? static_cast<FakeSecretService*>(self)->answer(message) : 0;
}

const char* FakeSecretService::ask(std::function<void()> granted) {
    const auto path = "/org/freedesktop/secrets/prompt/p" + std::to_string(pending_.size());
    return pending_.emplace(path, std::move(granted)).first->first.c_str();
}

void FakeSecretService::complete(User decision) {
    if (decision == User::isAway)
        return;
    if (decision == User::answers)
        pending_.at(shown_)();
    sd_bus_emit_signal(bus_->handle(), shown_.c_str(), "org.freedesktop.Secret.Prompt", "Completed", "bv",
                       decision == User::dismisses ? 1 : 0, "s", "");
}

void FakeSecretService::decide(User decision) {
    decision_ = decision;
    while (decision_ != User::isAway)
        std::this_thread::yield();
}

int FakeSecretService::answer(sd_bus_message* message) {
    const std::string member = sd_bus_message_get_member(message);
    const std::string path = sd_bus_message_get_path(message);
    const auto is = [&](const char* name) { return member == name; };
    if (member == behaviour_.diesAt)
        ending_ = true;
    if (ending_ || member == behaviour_.silentAt)
        return 1;
    if (is("OpenSession"))
        return sd_bus_reply_method_return(message, "vo", "s", "", "/org/freedesktop/secrets/session/s1");
    if (is("ReadAlias")) {
        const char* alias = "";
        sd_bus_message_read(message, "s", &alias);
        return sd_bus_reply_method_return(message, "o", behaviour_.alias == alias ? kCollection : kNone);
    }
    if (is("CreateCollection"))
        return sd_bus_reply_method_return(message, "oo", kNone,
                                          ask([this] { behaviour_.alias = "default"; }));
    if (is("Get"))
        return sd_bus_reply_method_return(message, "v", "b", behaviour_.locked ? 1 : 0);
    if (is("Unlock")) {
        if (!behaviour_.locked && !behaviour_.lockedItem)
            return sd_bus_reply_method_return(message, "aoo", 0, kNone);
        return sd_bus_reply_method_return(message, "aoo", 0,
                                          ask([this] { behaviour_.locked = behaviour_.lockedItem = false; }));
    }
    if (is("SearchItems"))
        return itemExists_ ? sd_bus_reply_method_return(message, "ao", 1, kItem)
                           : sd_bus_reply_method_return(message, "ao", 0);
    if (is("CreateItem")) {
        itemExists_ = true;
        return sd_bus_reply_method_return(message, "oo", kItem, kNone);
    }
    if (is("GetSecret")) {
        if (behaviour_.lockedItem)
            return sd_bus_reply_method_errorf(message, "org.freedesktop.Secret.Error.IsLocked", "locked");
        sd_bus_message* reply = nullptr;
        sd_bus_message_new_method_return(message, &reply);
        const BusMessage owned(reply);
        sd_bus_message_open_container(reply, 'r', "oayays");
        sd_bus_message_append(reply, "o", "/org/freedesktop/secrets/session/s1");
        sd_bus_message_append_array(reply, 'y', nullptr, 0);
        sd_bus_message_append_array(reply, 'y', key, std::strlen(key));
        sd_bus_message_append(reply, "s", "text/plain");
        sd_bus_message_close_container(reply);
        return sd_bus_send(bus_->handle(), reply, nullptr);
    }
    if (is("Delete")) {
        if (behaviour_.asksToDelete)
            return sd_bus_reply_method_return(message, "o", ask([this] { itemExists_ = false; }));
        itemExists_ = false;
        return sd_bus_reply_method_return(message, "o", kNone);
    }
    if (is("Prompt")) {
        ++prompts_;
        sd_bus_reply_method_return(message, "");
        shown_ = path;
        complete(behaviour_.user);
        return 1;
    }
    return 0;
}

} // namespace velto::test
