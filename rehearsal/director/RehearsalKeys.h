// The API keys of one rehearsal.
#pragma once

#include "rehearsal/server/ApiKeys.h"

#include <string>
#include <string_view>
#include <vector>

namespace velto::rehearsal {

/// A key of its own for each provider, with characters that must be escaped on the way to its service.
class RehearsalKeys {
  public:
    RehearsalKeys();

    const ApiKeys& all() const { return keys_; }
    /// Whether one of them is in there, in whatever encoding a URL or JSON may have it.
    bool isIn(std::string_view bytes) const;

  private:
    ApiKeys keys_;
    /// The part of each key that encodings leave as it is, and as one has it that escapes whatever it can.
    std::vector<std::string> marks_;
};

} // namespace velto::rehearsal
