// The right to run commands as the administrator, which the user grants in a dialog of the operating
// system's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace velto {

/// What the operations of `AdminRights` answer.
namespace AdminStatus {
inline constexpr std::int32_t success = 0;
inline constexpr std::int32_t denied = -60005;       ///< wrong credentials, or a rule of the computer's
inline constexpr std::int32_t cancelled = -60006;    ///< the user closed the dialog
inline constexpr std::int32_t nobodyToAsk = -60007;  ///< nothing shows dialogs in this session
inline constexpr std::int32_t failed = -60008;       ///< anything else; the log says what
inline constexpr std::int32_t badCommand = -60011;   ///< too long, or not text
inline constexpr std::int32_t noHelper = -60031;     ///< what runs the commands is not installed, or unsafe
inline constexpr std::int32_t notAvailable = -60032; ///< this computer has no means of asking
} // namespace AdminStatus

/// What a command writes. One thread. Closed by its destructor; the command goes on.
class AdminPipe {
  public:
    virtual ~AdminPipe() = default;
    /// Waits for output; the number of bytes written to `bytes`, 0 at the end.
    virtual std::size_t read(std::span<char> bytes) = 0;
};

/// Holds at most one authorization. One thread at a time; every operation may wait for the user.
class AdminRights {
  public:
    virtual ~AdminRights() = default;

    virtual bool hasAuthorization() = 0;
    /// One that allows nothing yet. Without success there is none.
    virtual std::int32_t createAuthorization() = 0;
    /// Asks the user, who may take as long as they like.
    virtual std::int32_t preauthorize() = 0;
    /// Starts "/bin/sh" "-c" `commandLine` and answers at once; may ask again when the grant has been lost.
    /// `pipe` is set on success only, and may stay empty when the platform has none. The command sees none
    /// of this process's environment. An earlier pipe must be closed.
    virtual std::int32_t execute(const std::string& commandLine, std::unique_ptr<AdminPipe>& pipe) = 0;
    /// Why the user could not even be asked, for people; empty: nothing is known to be wrong. Asks nobody.
    virtual std::string trouble() = 0;
    /// Gives the grant back.
    virtual void freeAuthorization() = 0;
};

} // namespace velto
