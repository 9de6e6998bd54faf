// A Secret Service in this process that holds one item and behaves as a test wants.
#pragma once

#include "VeltoPlatform/linux/Bus.h"

#include <atomic>
#include <cstring>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <thread>

namespace velto::test {

/// Owns org.freedesktop.secrets on the bus from the constructor on, on a thread of its own.
class FakeSecretService {
  public:
    enum class User { answers, dismisses, isAway };
    struct Behaviour {
        std::string alias = "default"; ///< of the collection; empty: there is none
        bool locked = false;
        bool lockedItem = false;
        bool asksToDelete = false;
        User user = User::answers;
        std::string diesAt{};   ///< a method that ends the service
        std::string silentAt{}; ///< a method that gets no answer
    };

    FakeSecretService(const std::string& busAddress, Behaviour behaviour)
        : behaviour_(std::move(behaviour)), bus_(Bus::open(busAddress, std::chrono::seconds(2))) {
        if (!bus_ || sd_bus_add_filter(bus_->handle(), nullptr, received, this) < 0 ||
            sd_bus_request_name(bus_->handle(), "org.freedesktop.secrets", SD_BUS_NAME_QUEUE) < 0)
            throw std::runtime_error("no bus for the fake Secret Service");
        thread_ = std::thread([this] {
            while (!ending_) {
                bus_->process(std::chrono::milliseconds(10));
                complete(decision_);
                decision_ = User::isAway;
            }
            bus_.reset();
        });
    }
    ~FakeSecretService() {
        ending_ = true;
        thread_.join();
    }

    static constexpr const char* key = "the fake's key";
    int prompts() const { return prompts_; } ///< that were shown
    /// Decides, later than asked, on the last prompt that was shown.
    void decide(User decision) {
        decision_ = decision;
        while (decision_ != User::isAway)
            std::this_thread::yield();
    }
    bool itemExists() const { return itemExists_; }

  private:
    static constexpr const char* kNone = "/";
    static constexpr const char* kSession = "/org/freedesktop/secrets/session/s1";
    static constexpr const char* kCollection = "/org/freedesktop/secrets/collection/fake";
    static constexpr const char* kItem = "/org/freedesktop/secrets/collection/fake/1";

    static int received(sd_bus_message* message, void* self, sd_bus_error*) {
        const bool ours = sd_bus_message_is_method_call(message, nullptr, nullptr) > 0;
        return ours ? static_cast<FakeSecretService*>(self)->answer(message) : 0;
    }
    /// The path of a prompt that does `granted` when the user agrees.
    const char* ask(std::function<void()> granted) {
        const auto path = "/org/freedesktop/secrets/prompt/p" + std::to_string(pending_.size());
        return pending_.emplace(path, std::move(granted)).first->first.c_str();
    }
    void complete(User decision) {
        if (decision == User::isAway)
            return;
        if (decision == User::answers)
            pending_.at(shown_)();
        sd_bus_emit_signal(bus_->handle(), shown_.c_str(), "org.freedesktop.Secret.Prompt", "Completed", "bv",
                           decision == User::dismisses ? 1 : 0, "s", "");
    }
    int answer(sd_bus_message* message) {
        const std::string member = sd_bus_message_get_member(message);
        const std::string path = sd_bus_message_get_path(message);
        const auto is = [&](const char* name) { return member == name; };
        if (member == behaviour_.diesAt)
            ending_ = true;
        if (ending_ || member == behaviour_.silentAt)
            return 1;
        if (is("OpenSession"))
            return sd_bus_reply_method_return(message, "vo", "s", "", kSession);
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
            return sd_bus_reply_method_return(
                message, "aoo", 0, ask([this] { behaviour_.locked = behaviour_.lockedItem = false; }));
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
            sd_bus_message_append(reply, "o", kSession);
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

    Behaviour behaviour_;
    std::unique_ptr<Bus> bus_;
    std::map<std::string, std::function<void()>> pending_;
    std::atomic<bool> itemExists_ = true;
    std::atomic<bool> ending_ = false;
    std::atomic<int> prompts_ = 0;
    std::atomic<User> decision_ = User::isAway;
    std::string shown_; ///< the last prompt
    std::thread thread_;
};

} // namespace velto::test
