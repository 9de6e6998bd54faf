// The walk keeps the elements that it is certain to reach as one list in visiting order. Children take their
// places behind their parent as soon as they are known, which may be before the parent's turn.
#include "VeltoShared/telephony/ElementWalk.h"

#include "VeltoShared/core/Clock.h"

#include <iterator>
#include <list>
#include <utility>

namespace velto {
namespace {

using Children = ElementWalk::Plan::Children;

struct Node {
    ElementRef element;
    int depth = 0;
    enum class Stage { unasked, roleKnown, complete } stage = Stage::unasked;
    ElementWalk::Plan plan{};
    std::string role{};
    ElementAttributes attributes{};
};

class Walk {
  public:
    Walk(Accessibility& accessibility, ElementRef root, std::size_t budget, const ElementWalk::Planner& plan)
        : accessibility_(accessibility), plan_(plan), budget_(budget) {
        if (budget_ > 0 && root)
            nodes_.push_back({.element = std::move(root)});
    }

    void run(const ElementWalk::Visitor& visit) {
        while (!nodes_.empty()) {
            const auto first = nodes_.begin();
            if (first->stage != Node::Stage::complete) {
                if (Clock::shared().steadyNow() >= end_)
                    return;
                readAhead();
                continue;
            }
            const auto answer = visit({first->element, first->role, first->attributes});
            if (answer == ElementWalk::Answer::stop)
                return;
            if (first->plan.children == Children::askVisitor && answer == ElementWalk::Answer::descend)
                placeChildren(first);
            nodes_.pop_front();
            --budget_;
        }
    }

  private:
    using Position = std::list<Node>::iterator;

    void readAhead() {
        requests_.clear();
        asked_.clear();
        for (auto node = nodes_.begin(); node != nodes_.end() && asked_.size() < ElementWalk::kReadsInFlight;
             ++node) {
            if (node->stage == Node::Stage::complete)
                continue;
            const auto wanted = node->stage == Node::Stage::unasked ? Attribute::role | Attribute::children
                                                                    : node->plan.attributes;
            requests_.push_back({node->element, wanted});
            asked_.push_back(node);
        }
        auto answers = accessibility_.read(requests_);
        answers.resize(asked_.size());
        // From the back: placing children cuts the list's end, and must not take a node still to be filled.
        for (std::size_t i = asked_.size(); i-- > 0;)
            take(asked_[i], std::move(answers[i]));
    }

    void take(Position node, ElementAttributes answer) {
        if (node->stage == Node::Stage::roleKnown) {
            answer.role = std::move(node->attributes.role);
            answer.children = std::move(node->attributes.children);
            node->attributes = std::move(answer);
            node->stage = Node::Stage::complete;
            return;
        }
        node->attributes = std::move(answer);
        node->role = textOf(node->attributes.role);
        node->plan = plan_(node->role);
        node->stage = node->plan.attributes.bits == 0 ? Node::Stage::complete : Node::Stage::roleKnown;
        if (node->plan.children == Children::visit)
            placeChildren(node);
    }

    void placeChildren(Position parent) {
        const auto* children = std::get_if<std::vector<ElementRef>>(&parent->attributes.children);
        if (!children || parent->depth >= ElementWalk::kDeepest)
            return;
        auto place = std::next(parent);
        std::size_t placed = 0;
        for (const auto& child : *children) {
            if (placed++ == budget_)
                break;
            if (child)
                nodes_.insert(place, {.element = child, .depth = parent->depth + 1});
        }
        parent->attributes.children = {};
        // Every listed node costs one unit before any node behind it is reached.
        while (nodes_.size() > budget_)
            nodes_.pop_back();
    }

    Accessibility& accessibility_;
    const ElementWalk::Planner& plan_;
    std::size_t budget_;
    const Clock::SteadyTime end_ = Clock::shared().steadyNow() + ElementWalk::kLongest;
    std::list<Node> nodes_;
    std::vector<Accessibility::Request> requests_;
    std::vector<Position> asked_;
};

} // namespace

std::string textOf(const AttributeValue& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text ? *text : std::string();
}

void ElementWalk::run(Accessibility& accessibility, ElementRef root, std::size_t budget, const Planner& plan,
                      const Visitor& visit) {
    Walk(accessibility, std::move(root), budget, plan).run(visit);
}

} // namespace velto
