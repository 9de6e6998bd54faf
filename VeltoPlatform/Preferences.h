// The operating system's per-user preferences store: typed values by key.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace velto {

using PreferenceValue = std::variant<bool, std::int64_t, double, std::string>;

/// All operations: any thread. A store that cannot be read is empty; a write that fails is kept in memory.
class Preferences {
  public:
    virtual ~Preferences() = default;

    virtual std::optional<PreferenceValue> object(const std::string& key) = 0;
    virtual void set(const std::string& key, PreferenceValue value) = 0;
    virtual void remove(const std::string& key) = 0;
    /// Why what is stored cannot be read or changed, for people; empty: it can. Changes nothing.
    virtual std::string trouble() = 0;

    /// Typed readings, alike on every platform. Boolean: a Boolean, or a number other than 0; else false.
    bool boolean(const std::string& key);
    /// An integer; a Boolean as 0 or 1; a fractional number in range, truncated; else 0.
    std::int64_t integer(const std::string& key);
    /// A text; none for every other type.
    std::optional<std::string> text(const std::string& key);
};

} // namespace velto
