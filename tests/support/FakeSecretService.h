// A Secret Service in this process that holds one item and behaves as a test wants.
#pragma once

#include "VeltoPlatform/linux/Bus.h"

#include <atomic>
#include <functional>
#include <map>
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

    FakeSecretService(const std::string& busAddress, Behaviour behaviour);
    ~FakeSecretService();

    static constexpr const char* key = "the fake's key";
    int prompts() const { return prompts_; } ///< that were shown
    /// Decides, later than asked, on the last prompt that was shown.
    void decide(User decision);
    bool itemExists() const { return itemExists_; }

  private:
    static int received(sd_bus_message* message, void* self, sd_bus_error*);
    int answer(sd_bus_message* message);
    /// The path of a prompt that does `granted` when the user agrees.
    const char* ask(std::function<void()> granted);
    void complete(User decision);

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
