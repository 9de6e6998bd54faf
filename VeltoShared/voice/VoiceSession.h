// What the agent and a voice provider's client agree on: one realtime speech-to-speech session.
#pragma once

#include "VeltoShared/core/BoundedSequence.h"
#include "VeltoShared/core/Result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <variant>

namespace velto {

/// A run of bytes that is 16-bit PCM, native byte order: bytes for whoever fills it, samples for whoever
/// plays it. A trailing odd byte belongs to no sample.
class AudioChunk {
  public:
    AudioChunk() = default;
    explicit AudioChunk(std::size_t byteCount)
        : storage_(std::make_unique_for_overwrite<std::int16_t[]>(byteCount / 2 + 1)), byteCount_(byteCount) {
    }

    std::span<std::byte> bytes() { return {reinterpret_cast<std::byte*>(storage_.get()), byteCount_}; }
    std::span<const std::byte> bytes() const {
        return {reinterpret_cast<const std::byte*>(storage_.get()), byteCount_};
    }
    std::span<const std::int16_t> samples() const { return {storage_.get(), byteCount_ / 2}; }
    /// Forgets the bytes past `byteCount`.
    void truncate(std::size_t byteCount) { byteCount_ = byteCount < byteCount_ ? byteCount : byteCount_; }

  private:
    std::unique_ptr<std::int16_t[]> storage_;
    std::size_t byteCount_ = 0;
};

/// A function call that the model asks for.
struct ToolCall {
    std::string id;       ///< the provider's identifier, echoed in the response; may be empty
    std::string name;     ///< may be empty
    std::string argsJSON; ///< JSON object text; "{}" without arguments
    bool operator==(const ToolCall&) const = default;
};

namespace event {
/// Speech of the model, in playback order.
struct Audio {
    AudioChunk chunk;
};
/// Transcription of the callee's speech, never empty.
struct CallerText {
    std::string text;
};
/// Transcription of the model's own speech, never empty.
struct AgentText {
    std::string text;
};
/// The session has ended or is about to end.
struct Closed {
    std::string reason;
};
/// The provider has accepted the configuration; may repeat.
struct SetupComplete {};
struct TurnComplete {};
/// The callee talks over the model: drop what is queued for playback.
struct Interrupted {};
} // namespace event

using VoiceEvent = std::variant<event::Audio, event::CallerText, event::AgentText, ToolCall, event::Closed,
                                event::SetupComplete, event::TurnComplete, event::Interrupted>;

/// Undelivered events kept: the newest 512.
inline constexpr std::size_t kVoiceEventCapacity = 512;
using VoiceEvents = BoundedSequence<VoiceEvent>;

/// One session of one call. The coroutines may be awaited on any executor and resume there; each client does
/// its own work on `Background`. Operations other than `connect` never fail towards the caller: what cannot
/// be sent is dropped.
class VoiceSession {
  public:
    virtual ~VoiceSession() = default;

    /// One consumer. Ends after `close`, not on a transport failure.
    virtual VoiceEvents& events() = 0;
    /// Opens the connection, sends the configuration, starts receiving. Does not wait for SetupComplete.
    virtual asio::awaitable<Result<>> connect() = 0;
    /// One chunk of input audio, 16-bit little-endian mono at the provider's rate. `pcm` must stay valid
    /// until the coroutine ends.
    virtual asio::awaitable<void> sendAudio(std::span<const std::byte> pcm) = 0;
    /// A user turn that asks the model to answer.
    virtual asio::awaitable<void> sendClientText(std::string text) = 0;
    virtual asio::awaitable<void> sendToolResponse(std::string id, std::string name,
                                                   std::string resultJSON) = 0;
    /// Closes with code 1000, delivers Closed "client closed" and ends the events. Any state, also twice.
    virtual asio::awaitable<void> close() = 0;
};

} // namespace velto
