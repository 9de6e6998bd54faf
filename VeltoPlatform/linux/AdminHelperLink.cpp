#include "VeltoPlatform/linux/AdminHelperLink.h"

#include "VeltoPlatform/AdminRights.h"
#include "VeltoPlatform/linux/AdminProtocol.h"

#include <sys/socket.h>

#include <cerrno>
#include <charconv>

namespace velto {

namespace Protocol = AdminProtocol;

std::shared_ptr<AdminHelperLink> AdminHelperLink::start(const std::filesystem::path& helper, PkexecEnd& why) {
    std::shared_ptr<AdminHelperLink> link(new AdminHelperLink);
    if (const auto error = link->child_.start(helper)) {
        const bool missing = error == std::errc::no_such_file_or_directory;
        why = {AdminStatus::notAvailable, missing
                                              ? "there is no pkexec; install the packages pkexec and polkitd"
                                              : "pkexec cannot be started: " + error.message()};
        return nullptr;
    }
    link->child_.awaitProgram();
    const auto hello = link->receiveBytes();
    if (hello == std::string(1, Protocol::kHello).append(Protocol::kVersion))
        return link;
    const auto exitStatus = link->child_.end();
    if (hello.empty())
        why = explainPkexec(exitStatus, link->child_.complaint());
    else
        why = {AdminStatus::failed, helper.string() + " is not this version's helper; install Velto anew"};
    return nullptr;
}

bool AdminHelperLink::run(const std::string& commandLine) {
    busy_ = send(Protocol::kRun, commandLine);
    return busy_;
}

void AdminHelperLink::quiet() {
    if (busy_)
        send(Protocol::kQuiet, {});
}

std::optional<AdminHelperLink::Message> AdminHelperLink::receive() {
    auto bytes = receiveBytes();
    if (bytes.empty())
        return giveUp();
    const char kind = bytes.front();
    bytes.erase(0, 1);
    if (kind == Protocol::kOutput && !bytes.empty())
        return Message{std::move(bytes)};
    std::int32_t status = 0;
    const char* const end = bytes.data() + bytes.size();
    const auto parsed = std::from_chars(bytes.data(), end, status);
    if (kind != Protocol::kEnd || parsed.ec != std::errc() || parsed.ptr != end)
        return giveUp();
    busy_ = false;
    return Message{{}, status};
}

std::nullopt_t AdminHelperLink::giveUp() {
    busy_ = false;
    child_.end();
    return std::nullopt;
}

bool AdminHelperLink::send(char kind, const std::string& text) const {
    const auto bytes = kind + text;
    ssize_t sent = 0;
    do
        sent = ::send(child_.socket(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

/// One message. None is empty: an empty text stands for the end, an error, and one longer than any may be.
std::string AdminHelperLink::receiveBytes() const {
    std::string bytes(Protocol::kLongestMessage, '\0');
    ssize_t count = 0;
    do
        count = ::recv(child_.socket(), bytes.data(), bytes.size(), MSG_TRUNC);
    while (count < 0 && errno == EINTR);
    const bool whole = count > 0 && static_cast<std::size_t>(count) <= bytes.size();
    bytes.resize(whole ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

} // namespace velto
