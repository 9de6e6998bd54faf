// What distinguishes one voice provider from another: its messages, values in and values out.
#pragma once

#include "VeltoShared/voice/VoiceSession.h"
#include "VeltoShared/voice/VoiceSocket.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velto {

/// What a session is made of. Model and voice are used unchanged.
struct SessionOptions {
    std::string apiKey;
    std::string model; ///< without any prefix
    std::string voice;
    std::string systemInstruction;
    std::string host; ///< as VoiceSocket::Request takes it
};

/// The wire format of one session. No I/O. The const operations: any thread; the others: one thread. Texts
/// that are not UTF-8 are sent with U+FFFD in place of what is broken.
class ProviderMessages {
  public:
    virtual ~ProviderMessages() = default;

    /// Where to connect.
    virtual VoiceSocket::Request request() const = 0;
    /// The first message of a connection.
    virtual std::string configuration() const = 0;
    /// One message for a chunk of input audio; valid until the next call. Allocates nothing for a chunk that
    /// is no longer than an earlier one.
    virtual std::string_view audio(std::span<const std::byte> pcm) = 0;
    /// A user turn; the messages are sent one after the other, a later one also when an earlier one failed.
    virtual std::vector<std::string> clientText(std::string_view text) const = 0;
    virtual std::vector<std::string> toolResponse(std::string_view id, std::string_view name,
                                                  std::string_view resultJSON) const = 0;
    /// The events of one received message, in order; none for one that is malformed or unknown. They may be
    /// moved from and are valid until the next call.
    virtual std::span<VoiceEvent> handle(std::string_view text) = 0;
};

} // namespace velto
