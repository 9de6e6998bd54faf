// One operation's conversation with the Secret Service, step by step.
#pragma once

#include "VeltoPlatform/SecretStore.h"
#include "VeltoPlatform/linux/Bus.h"
#include "VeltoPlatform/linux/SecretPrompt.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace velto {

struct SecretServiceLimits {
    std::chrono::milliseconds operation{2000}; ///< of an operation, the time of its prompts left out
    std::chrono::milliseconds prompt{15'000};  ///< after that an open prompt is not waited for
    std::chrono::milliseconds peace{60'000};   ///< in which nothing is asked again after such a prompt
};

/// What one conversation leaves to the next. One thread at a time.
struct SecretServiceLink {
    std::shared_ptr<Bus> bus;
    std::string service; ///< the unique name of the process that answers; empty without a session
    std::string session;
    std::unique_ptr<SecretPrompt> left; ///< a prompt that is still on the screen after its time
    std::chrono::steady_clock::time_point peaceUntil;
    std::string refusal; ///< why there is peace
};

/// One thread, one operation. A step that does not answer success, notFound or duplicate has said why in
/// `trouble`. Everything after `open` goes to the process that answered then: one that is started meanwhile
/// does not know this session.
class SecretConversation {
  public:
    using Paths = std::vector<std::string>;

    SecretConversation(const SecretServiceLimits& limits, SecretServiceLink& link);

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
    bool sessionLives();
    SecretStatus connect();

    SecretServiceLimits limits_;
    SecretServiceLink& link_;
    TimePoint deadline_;
    std::string collection_;
    std::string trouble_;
};

} // namespace velto
