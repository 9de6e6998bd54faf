// One operation's conversation with the Secret Service, step by step.
#pragma once

#include "VeltoPlatform/SecretStore.h"
#include "VeltoPlatform/linux/Bus.h"
#include "VeltoPlatform/linux/SecretPrompt.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace velto {

struct SecretServiceLimits {
    std::chrono::milliseconds operation{2000}; ///< of an operation, the time of its prompts left out
    std::chrono::milliseconds prompt{15'000};  ///< after that an open prompt is not waited for
    std::chrono::milliseconds peace{60'000};   ///< in which nothing is asked again after such a prompt
};

/// What the conversations of one store share: one prompt at a time, and none soon after a refused one.
struct PromptGate {
    std::mutex prompting;
    // All of these under the lock.
    std::chrono::steady_clock::time_point peaceUntil;
    std::string refusal;
    std::unique_ptr<SecretPrompt> left; ///< one that is still on the screen after its time
};

/// One thread, one operation. A step that does not answer success, notFound or duplicate has said why in
/// `trouble`. Everything after `open` goes to the process that answered then: one that is started meanwhile
/// does not know this session.
class SecretConversation {
  public:
    using Paths = std::vector<std::string>;

    SecretConversation(const SecretServiceLimits& limits, PromptGate& gate);

    /// One line for people; empty while all is well.
    const std::string& trouble() const { return trouble_; }

    SecretStatus open();
    /// notFound: there is neither a default nor a login collection.
    SecretStatus findCollection();
    /// A default collection, in the place of the one that was not found.
    SecretStatus createCollection();
    SecretStatus readLocked(bool& locked);
    /// Of the collection; success also when it is not locked.
    SecretStatus unlock();
    /// Success also when nothing was found.
    SecretStatus search(const std::string& service, const std::string& account, Paths& items);
    /// All that comes before reading or deleting; success with at least one item.
    SecretStatus findUnlocked(const std::string& service, const std::string& account, Paths& items);
    SecretStatus read(const std::string& item, std::string& data);
    SecretStatus createItem(const SecretItem& item);
    SecretStatus deleteItem(const std::string& item);

  private:
    using TimePoint = std::chrono::steady_clock::time_point;

    BusMessage method(const std::string& path, const char* interface, const char* member);
    BusReply call(const BusMessage& request);
    SecretStatus fail(const std::string& step, const BusReply& reply);
    SecretStatus callPromptable(const std::string& step, const BusMessage& request, const char* before);
    SecretStatus showPrompt(const std::string& path);
    SecretStatus refuse(const std::string& why);
    SecretStatus unlockObject(const std::string& path);
    SecretStatus readAlias(const char* alias);

    SecretServiceLimits limits_;
    PromptGate& gate_;
    TimePoint deadline_;
    std::shared_ptr<Bus> bus_;
    std::string service_; ///< the unique name of the process that answers
    std::string session_;
    std::string collection_;
    std::string trouble_;
};

} // namespace velto
