// A root helper that runs, and the conversation with it (AdminProtocol.h).
#pragma once

#include "VeltoPlatform/linux/PkexecChild.h"
#include "VeltoPlatform/linux/PkexecEnd.h"

#include <memory>
#include <optional>

namespace velto {

/// One thread at a time. The helper ends when this object or this process does.
class AdminHelperLink {
  public:
    /// Starts the helper through pkexec, which asks the user and is waited for as long as they take. None
    /// when it does not run in the end; `why` then says why.
    static std::shared_ptr<AdminHelperLink> start(const std::filesystem::path& helper, PkexecEnd& why);
    AdminHelperLink(const AdminHelperLink&) = delete;
    AdminHelperLink& operator=(const AdminHelperLink&) = delete;

    /// A command was sent and has not ended.
    bool busy() const { return busy_; }
    /// Not while busy. False when the helper has gone: then the command has not been run.
    bool run(const std::string& commandLine);
    /// Of the running command nothing more is wanted than its end.
    void quiet();

    struct Message {
        std::string output;                       ///< bytes that the command wrote
        std::optional<std::int32_t> exitStatus{}; ///< it has ended with
    };
    /// While busy: waits for the next. None when the helper has gone, or does not speak as it should: then it
    /// is left to itself, and is of no more use.
    std::optional<Message> receive();

  private:
    AdminHelperLink() = default;
    bool send(char kind, const std::string& text) const;
    std::string receiveBytes() const;
    std::nullopt_t giveUp();

    PkexecChild child_;
    bool busy_ = false;
};

} // namespace velto
