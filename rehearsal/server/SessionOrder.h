// What a client may ask for at which point of a session, the same with every provider.
#pragma once

#include "rehearsal/server/ClientMessage.h"
#include "rehearsal/server/Violation.h"

#include <optional>
#include <string>
#include <utility>

namespace velto::rehearsal {

/// The configuration first and once; one text turn, and only after the server has said that it is ready; an
/// answer to each function call, once. Audio any time after the configuration.
class SessionOrder {
  public:
    /// None when the message may come now.
    std::optional<Violation> accept(const ClientMessage& message);
    void ready() { ready_ = true; }
    /// A response must bring the same identifier and name.
    void toolCalled(std::string id, std::string name) { openCall_.emplace(std::move(id), std::move(name)); }

  private:
    std::optional<Violation> acceptText();
    std::optional<Violation> acceptToolResponse(const ToolResponseMessage& response);

    bool configured_ = false;
    bool ready_ = false;
    bool textSeen_ = false;
    std::optional<std::pair<std::string, std::string>> openCall_;
};

} // namespace velto::rehearsal
