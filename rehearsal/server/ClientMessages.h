// The messages that a client of the Gemini Live API (v1beta, BidiGenerateContent) may send, checked to the
// key.
#pragma once

#include "rehearsal/signal/Tones.h"

#include <boost/json/value.hpp>
#include <boost/system/result.hpp>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace velto::rehearsal {

struct SetupMessage {
    std::string model; ///< without "models/"
    std::string voice;
    std::string systemInstruction;
};
struct AudioMessage {
    Samples samples; ///< 16 kHz mono
};
struct TextMessage {
    std::string text;
};
struct ToolResponseMessage {
    std::string id;
    std::string name;
    boost::json::value response;
};
using ClientMessage = std::variant<SetupMessage, AudioMessage, TextMessage, ToolResponseMessage>;

/// Something that the protocol does not allow. The close code is one of RFC 6455, section 7.4.1.
struct Violation {
    static constexpr std::uint16_t invalidPayload = 1007;
    static constexpr std::uint16_t policy = 1008;

    std::uint16_t closeCode = invalidPayload;
    std::string what;
};
[[noreturn]] inline void throw_exception_from_error(const Violation& violation,
                                                    const boost::source_location&) {
    throw std::invalid_argument(violation.what);
}

/// One message. Refused is whatever is not compact JSON, misses a key, has one that is not asked for, or a
/// value of another type or another content than the fixed ones.
boost::system::result<ClientMessage, Violation> parseClientMessage(std::string_view text);

/// The order of a session: the setup first and once; one text turn, and only after the server has completed
/// the setup; an answer to each function call, once. Audio any time after the setup.
class ProtocolOrder {
  public:
    /// None when the message may come now.
    std::optional<Violation> accept(const ClientMessage& message);
    void setupCompleted() { setupCompleted_ = true; }
    void toolCalled(std::string id, std::string name);
    bool toolAnswered() const { return toolAnswered_; }

  private:
    std::optional<Violation> acceptText();
    std::optional<Violation> acceptToolResponse(const ToolResponseMessage& response);

    bool setupSeen_ = false;
    bool setupCompleted_ = false;
    bool textSeen_ = false;
    std::optional<std::pair<std::string, std::string>> openCall_;
    bool toolAnswered_ = false;
};

} // namespace velto::rehearsal
