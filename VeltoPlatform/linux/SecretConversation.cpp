#include "VeltoPlatform/linux/SecretConversation.h"

#include <algorithm>

namespace velto {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* kName = "org.freedesktop.secrets";
constexpr const char* kPath = "/org/freedesktop/secrets";
constexpr const char* kService = "org.freedesktop.Secret.Service";
constexpr const char* kCollection = "org.freedesktop.Secret.Collection";
constexpr const char* kItem = "org.freedesktop.Secret.Item";
constexpr const char* kPrompt = "org.freedesktop.Secret.Prompt";
constexpr const char* kIsLocked = "org.freedesktop.Secret.Error.IsLocked";
constexpr const char* kNone = "/"; ///< the path that stands for no object

bool holdsNul(const std::string& text) {
    return text.find('\0') != std::string::npos;
}

std::string seconds(milliseconds time) {
    auto text = std::to_string(time.count() / 1000);
    if (const auto rest = time.count() % 1000; rest != 0)
        text += "." + std::to_string(1000 + rest).substr(1);
    return text + " s";
}

} // namespace

SecretConversation::SecretConversation(const SecretServiceLimits& limits, SecretServiceLink& link)
    : limits_(limits), link_(link), deadline_(Clock::now() + limits.operation) {}

BusMessage SecretConversation::method(const std::string& path, const char* interface, const char* member) {
    return link_.bus->method(link_.service.empty() ? kName : link_.service.c_str(), path.c_str(), interface,
                             member);
}

BusReply SecretConversation::call(const BusMessage& request) {
    const auto left = std::chrono::duration_cast<Bus::Limit>(deadline_ - Clock::now());
    if (left <= Bus::Limit::zero())
        return {nullptr, SD_BUS_ERROR_TIMEOUT};
    return link_.bus->call(request, left);
}

SecretStatus SecretConversation::fail(const std::string& step, const BusReply& reply) {
    if (reply)
        trouble_ = step + ": an answer of the wrong form";
    else if (reply.timedOut())
        trouble_ = step + ": no answer within " + seconds(limits_.operation);
    else
        trouble_ = step + ": " + reply.error;
    return SecretStatus::failed;
}

/// Whether the keyring is still the process that gave the session.
bool SecretConversation::sessionLives() {
    if (!link_.bus || link_.service.empty())
        return false;
    const auto request = link_.bus->method("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                           "org.freedesktop.DBus", "GetNameOwner");
    sd_bus_message_append(request.get(), "s", kName);
    const auto reply = call(request);
    const char* owner = nullptr;
    return reply && sd_bus_message_read(reply.message.get(), "s", &owner) > 0 && owner == link_.service;
}

SecretStatus SecretConversation::connect() {
    // A bus that has hung up since is noticed only by reading.
    while (link_.bus && link_.bus->process(Bus::Limit::zero())) {
    }
    if (link_.bus && link_.bus->alive())
        return SecretStatus::success;
    bool nobody = false;
    link_.bus = Bus::open(Bus::sessionAddress(),
                          std::chrono::duration_cast<Bus::Limit>(deadline_ - Clock::now()), &nobody);
    if (link_.bus)
        return SecretStatus::success;
    trouble_ = nobody ? "there is no session bus" : "the session bus does not answer";
    return nobody ? SecretStatus::unavailable : SecretStatus::failed;
}

SecretStatus SecretConversation::open() {
    if (sessionLives())
        return SecretStatus::success;
    link_.service.clear();
    if (const auto status = connect(); status != SecretStatus::success)
        return status;
    const auto request = method(kPath, kService, "OpenSession");
    sd_bus_message_append(request.get(), "sv", "plain", "s", "");
    const auto reply = call(request);
    if (!reply && (reply.absent() || reply.error.starts_with("org.freedesktop.systemd1."))) {
        trouble_ = "nobody keeps secrets on the session bus (" + reply.error + ")";
        return SecretStatus::unavailable;
    }
    const char* session = nullptr;
    const char* sender = reply ? sd_bus_message_get_sender(reply.message.get()) : nullptr;
    if (!sender || sd_bus_message_skip(reply.message.get(), "v") < 0 ||
        sd_bus_message_read(reply.message.get(), "o", &session) <= 0)
        return fail("opening a session", reply);
    link_.service = sender;
    link_.session = session;
    return SecretStatus::success;
}

SecretStatus SecretConversation::readAlias(const char* alias) {
    const auto request = method(kPath, kService, "ReadAlias");
    sd_bus_message_append(request.get(), "s", alias);
    const auto reply = call(request);
    const char* path = nullptr;
    if (!reply || sd_bus_message_read(reply.message.get(), "o", &path) <= 0)
        return fail("looking for the collection", reply);
    if (std::string_view(path) == kNone)
        return SecretStatus::notFound;
    collection_ = path;
    return SecretStatus::success;
}

SecretStatus SecretConversation::findCollection() {
    const auto status = readAlias("default");
    return status == SecretStatus::notFound ? readAlias("login") : status;
}

SecretStatus SecretConversation::createCollection() {
    const auto request = method(kPath, kService, "CreateCollection");
    sd_bus_message_append(request.get(), "a{sv}s", 1, "org.freedesktop.Secret.Collection.Label", "s",
                          "Default keyring", "default");
    const auto status = callPromptable("creating the collection", request, "o");
    return status == SecretStatus::success ? findCollection() : status;
}

SecretStatus SecretConversation::readLocked(bool& locked) {
    const auto request = method(collection_, "org.freedesktop.DBus.Properties", "Get");
    sd_bus_message_append(request.get(), "ss", kCollection, "Locked");
    const auto reply = call(request);
    int value = 1;
    if (!reply || sd_bus_message_read(reply.message.get(), "v", "b", &value) <= 0)
        return fail("looking whether it is locked", reply);
    locked = value != 0;
    return SecretStatus::success;
}

SecretStatus SecretConversation::unlock() {
    bool locked = true;
    auto status = readLocked(locked);
    if (status != SecretStatus::success || !locked)
        return status;
    status = unlockObject(collection_);
    if (status == SecretStatus::success)
        status = readLocked(locked);
    if (status != SecretStatus::success || !locked)
        return status;
    trouble_ = "locked, and stayed so after the prompt";
    return SecretStatus::locked;
}

SecretStatus SecretConversation::unlockObject(const std::string& path) {
    const auto request = method(kPath, kService, "Unlock");
    sd_bus_message_append(request.get(), "ao", 1, path.c_str());
    return callPromptable("unlocking", request, "ao");
}

SecretStatus SecretConversation::search(const std::string& service, const std::string& account,
                                        Paths& items) {
    const auto request = method(collection_, kCollection, "SearchItems");
    if (holdsNul(service) || holdsNul(account) ||
        sd_bus_message_append(request.get(), "a{ss}", 2, "service", service.c_str(), "account",
                              account.c_str()) < 0) {
        trouble_ = "an item's name that cannot be sent";
        return SecretStatus::failed;
    }
    const auto reply = call(request);
    if (!reply || sd_bus_message_enter_container(reply.message.get(), 'a', "o") < 0)
        return fail("searching", reply);
    const char* path = nullptr;
    while (sd_bus_message_read(reply.message.get(), "o", &path) > 0)
        items.emplace_back(path);
    return SecretStatus::success;
}

SecretStatus SecretConversation::findUnlocked(const std::string& service, const std::string& account,
                                              Paths& items) {
    auto status = findCollection();
    if (status == SecretStatus::success)
        status = unlock();
    if (status == SecretStatus::success)
        status = search(service, account, items);
    if (status == SecretStatus::success && items.empty())
        status = SecretStatus::notFound;
    return status;
}

SecretStatus SecretConversation::read(const std::string& item, std::string& data) {
    const auto ask = [&] {
        const auto request = method(item, kItem, "GetSecret");
        sd_bus_message_append(request.get(), "o", link_.session.c_str());
        return call(request);
    };
    auto reply = ask();
    // Some keyrings lock single items.
    if (reply.error == kIsLocked) {
        if (const auto status = unlockObject(item); status != SecretStatus::success)
            return status;
        reply = ask();
    }
    if (!reply)
        return fail("reading", reply);
    sd_bus_message_sensitive(reply.message.get());
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_enter_container(reply.message.get(), 'r', "oayays") < 0 ||
        sd_bus_message_skip(reply.message.get(), "oay") < 0 ||
        sd_bus_message_read_array(reply.message.get(), 'y', &bytes, &size) < 0)
        return fail("reading", reply);
    data.assign(static_cast<const char*>(bytes), size);
    return SecretStatus::success;
}

SecretStatus SecretConversation::createItem(const SecretItem& item) {
    const auto label = item.accessDescription.value_or(item.service);
    const auto request = method(collection_, kCollection, "CreateItem");
    auto* const message = request.get();
    sd_bus_message_sensitive(message);
    const bool filled =
        !holdsNul(label) && sd_bus_message_open_container(message, 'a', "{sv}") >= 0 &&
        sd_bus_message_append(message, "{sv}", "org.freedesktop.Secret.Item.Label", "s", label.c_str()) >=
            0 &&
        sd_bus_message_append(message, "{sv}", "org.freedesktop.Secret.Item.Attributes", "a{ss}", 3,
                              "service", item.service.c_str(), "account", item.account.c_str(), "xdg:schema",
                              "org.freedesktop.Secret.Generic") >= 0 &&
        sd_bus_message_close_container(message) >= 0 &&
        sd_bus_message_open_container(message, 'r', "oayays") >= 0 &&
        sd_bus_message_append(message, "o", link_.session.c_str()) >= 0 &&
        sd_bus_message_append_array(message, 'y', nullptr, 0) >= 0 &&
        sd_bus_message_append_array(message, 'y', item.data.data(), item.data.size()) >= 0 &&
        sd_bus_message_append(message, "s", "text/plain") >= 0 &&
        sd_bus_message_close_container(message) >= 0 && sd_bus_message_append(message, "b", 0) >= 0;
    if (!filled) {
        trouble_ = "an item that cannot be sent";
        return SecretStatus::failed;
    }
    return callPromptable("storing", request, "o");
}

SecretStatus SecretConversation::deleteItem(const std::string& item) {
    return callPromptable("deleting", method(item, kItem, "Delete"), "");
}

/// A call whose reply ends with the path of a prompt, behind values of the types `before`; the prompt, if
/// there is one, is shown and its end awaited.
SecretStatus SecretConversation::callPromptable(const std::string& step, const BusMessage& request,
                                                const char* before) {
    const auto reply = call(request);
    const char* prompt = nullptr;
    if (reply.error == kIsLocked) {
        trouble_ = step + ": locked";
        return SecretStatus::locked;
    }
    if (!reply || (*before != '\0' && sd_bus_message_skip(reply.message.get(), before) < 0) ||
        sd_bus_message_read(reply.message.get(), "o", &prompt) <= 0)
        return fail(step, reply);
    return std::string_view(prompt) == kNone ? SecretStatus::success : showPrompt(prompt);
}

SecretStatus SecretConversation::showPrompt(const std::string& path) {
    using State = SecretPrompt::State;
    if (Clock::now() < link_.peaceUntil ||
        (link_.left && link_.left->await(Bus::Limit::zero()) == State::open)) {
        trouble_ = link_.refusal;
        return SecretStatus::locked;
    }
    link_.left = std::make_unique<SecretPrompt>(link_.bus, link_.service, path);
    const auto request = method(path, kPrompt, "Prompt");
    sd_bus_message_append(request.get(), "s", "");
    const auto shown = call(request);
    const auto end = shown ? link_.left->await(limits_.prompt) : State::lost;
    deadline_ = Clock::now() + limits_.operation;
    if (end == State::open)
        return refuse("locked, and the prompt was not answered within " + seconds(limits_.prompt));
    link_.left.reset();
    if (end == State::refused)
        return refuse("locked, and the prompt was dismissed or could not be shown");
    if (end == State::granted)
        return SecretStatus::success;
    return fail("asking its user",
                shown ? BusReply{nullptr, SD_BUS_ERROR_DISCONNECTED} : BusReply{nullptr, shown.error});
}

SecretStatus SecretConversation::refuse(const std::string& why) {
    link_.peaceUntil = Clock::now() + limits_.peace;
    link_.refusal = why;
    trouble_ = why;
    return SecretStatus::locked;
}

} // namespace velto
