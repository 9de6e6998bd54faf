// The operating system's accessibility interface: other applications' elements, their attributes, the press.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace velto {

/// A backend's handle of one element of another application; cheap to copy.
class Element {
  public:
    virtual ~Element() = default;
};
using ElementRef = std::shared_ptr<const Element>;

struct ScreenPoint {
    double x = 0;
    double y = 0;
};

enum class Attribute : unsigned {
    role = 1u << 0u,        ///< "AXRole", text
    title = 1u << 1u,       ///< "AXTitle", text
    description = 1u << 2u, ///< "AXDescription", text
    value = 1u << 3u,       ///< "AXValue", text or other
    position = 1u << 4u,    ///< "AXPosition", a point on the screen
    children = 1u << 5u,    ///< "AXChildren", elements
};

/// Attributes asked for together.
struct AttributeSet {
    unsigned bits = 0;

    constexpr AttributeSet() = default;
    constexpr AttributeSet(Attribute attribute) : bits(static_cast<unsigned>(attribute)) {}
    constexpr bool contains(Attribute attribute) const {
        return (bits & static_cast<unsigned>(attribute)) != 0;
    }
    constexpr AttributeSet operator|(AttributeSet other) const {
        other.bits |= bits;
        return other;
    }
};
constexpr AttributeSet operator|(Attribute a, Attribute b) {
    return AttributeSet(a) | AttributeSet(b);
}

/// The value of an attribute in whatever kind the other application gave it; `monostate`: the read failed or
/// there is no value.
using AttributeValue =
    std::variant<std::monostate, std::string, double, bool, ScreenPoint, std::vector<ElementRef>>;

/// What one `read` brought for one element; attributes that were not asked for stay without a value.
struct ElementAttributes {
    AttributeValue role;
    AttributeValue title;
    AttributeValue description;
    AttributeValue value;
    AttributeValue position;
    AttributeValue children;
};

/// All operations: any thread, synchronous.
class Accessibility {
  public:
    virtual ~Accessibility() = default;

    virtual bool trusted() = 0;
    /// For the log: why `trusted` answered false when it was last asked; empty when it answered true.
    virtual std::string whyNotTrusted() = 0;
    /// Asks the platform to let the user grant access; returns at once.
    virtual void promptForTrust() = 0;

    /// The root element of an application; no traffic yet.
    virtual ElementRef application(pid_t pid) = 0;
    /// One answer per request, in order. Requests of one call are independent, so that a backend whose reads
    /// are messages can have all of them in flight.
    struct Request {
        ElementRef element;
        AttributeSet attributes;
    };
    virtual std::vector<ElementAttributes> read(std::span<const Request> requests) = 0;
    /// Performs "AXPress"; true when the platform reports success.
    virtual bool press(const ElementRef& element) = 0;
};

} // namespace velto
