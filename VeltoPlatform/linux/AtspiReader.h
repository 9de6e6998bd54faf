// Reads attributes of many elements in one conversation.
#pragma once

#include "VeltoPlatform/linux/AtspiMemory.h"
#include "VeltoPlatform/linux/BusExchange.h"

#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace velto {

/// For one batch, on one thread.
class AtspiReader {
  public:
    /// Without a lease, everything is answered from memory.
    AtspiReader(const BusPool::Lease& lease, BusPool& pool, AtspiMemory& memory);

    /// Elements of an earlier bus have no values. A program that is silent, or falls silent during the
    /// batch, answers what it last answered.
    std::vector<ElementAttributes> read(std::span<const Accessibility::Request> requests);

  private:
    struct Job {
        const AtspiElement* element;
        AttributeSet wanted;
        ElementAttributes& answers;
        std::optional<std::uint64_t> state{};
        bool stateAsked = false;
        bool owed = false; ///< something could not be asked: its answer is owed, or nobody is there

        bool wants(AttributeSet any) const { return (wanted.bits & any.bits) != 0; }
    };
    using Handler = BusExchange::Handler;

    void begin(Job& job);
    void askState(Job& job);
    void askTexts(Job& job);
    void askName(Job& job, AttributeValue ElementAttributes::*into);
    void askDescription(Job& job);
    void ask(Job& job, const BusMessage& request, Handler handler);
    void takeChildren(Job& job, const BusReply& reply);
    void end(Job& job);

    std::optional<BusExchange> exchange_;
    BusPool& pool_;
    AtspiMemory& memory_;
};

} // namespace velto
