// A bounded walk over another application's elements: depth-first, an element before its children.
#pragma once

#include "VeltoPlatform/Accessibility.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace velto {

/// An attribute as text: what is no text, or could not be read, is the empty text.
std::string textOf(const AttributeValue& value);

/// Walks one tree. What is asked of an element depends on its role, which is read first together with its
/// children; what the visitor needs beyond that is read only where the plan asks for it. Reads are bundled:
/// up to `kReadsInFlight` elements that the walk is certain to reach are asked for in one call, so that a
/// backend whose reads are messages does not wait for each of them.
///
/// Bounds: no element deeper than `kDeepest` is visited (the root is at depth 0), and no more than `budget`
/// elements are; the budget is one counter for the whole tree. So a cyclic or endless tree ends, too. A walk
/// that has lasted `kLongest` ends where it is: that is for applications that answer, but hardly. One that
/// is well gives 20 000 elements in less than half of it.
class ElementWalk {
  public:
    static constexpr int kDeepest = 79;
    static constexpr std::size_t kReadsInFlight = 32;
    static constexpr std::chrono::seconds kLongest{5};

    /// What to do with an element of some role.
    struct Plan {
        AttributeSet attributes; ///< wanted by the visitor, beside the role and the children
        enum class Children { visit, skip, askVisitor } children = Children::visit;
    };
    enum class Answer { descend, skipChildren, stop };

    struct Visited {
        const ElementRef& element;
        const std::string& role; ///< empty when it has none
        const ElementAttributes& attributes;
    };

    /// `plan` must answer the same for the same role. `visit` is called once for each element, in order; its
    /// descend or skipChildren counts only where the plan says `askVisitor`.
    using Planner = std::function<Plan(const std::string& role)>;
    using Visitor = std::function<Answer(const Visited&)>;

    /// Blocks until the walk is over. Any thread. Time is `Clock::shared`'s.
    static void run(Accessibility& accessibility, ElementRef root, std::size_t budget, const Planner& plan,
                    const Visitor& visit);
};

} // namespace velto
