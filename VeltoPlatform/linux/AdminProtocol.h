// What Velto and its root helper say to each other, over a socket that keeps messages apart (SOCK_SEQPACKET).
// The first byte of a message is its kind. The helper says `hello` once it runs; then Velto sends one command
// at a time, and the helper answers with any number of `output` and one `end`.
#pragma once

#include <cstddef>
#include <string_view>

namespace velto::AdminProtocol {

// From the helper.
inline constexpr char kHello = 'H';  ///< with `kVersion`
inline constexpr char kOutput = 'O'; ///< with bytes that the command wrote
inline constexpr char kEnd = 'E';    ///< with the shell's exit status in decimal, 128 + N after signal N
// From Velto.
inline constexpr char kRun = 'R';   ///< with a line for "/bin/sh -c", up to `kLongestCommand` bytes, no NUL
inline constexpr char kQuiet = 'Q'; ///< nobody reads the rest of this command's output: send none of it

inline constexpr std::string_view kVersion = "velto-admin-helper 1";
inline constexpr std::size_t kLongestCommand = 65'536;
inline constexpr std::size_t kLongestOutput = 32'768; ///< bytes in one message
inline constexpr std::size_t kLongestMessage = kLongestCommand + 1;

} // namespace velto::AdminProtocol
