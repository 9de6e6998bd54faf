// Only what a role's content needs is asked: a button's name is not asked for twice, a group has no value.
// The state is asked where something could be shown or hidden, texts or children, and of a text, whose state
// tells how many lines it has.
#include "VeltoPlatform/linux/AtspiReader.h"

#include "VeltoPlatform/linux/AtspiCalls.h"

#include <utility>

namespace velto {
namespace {

constexpr AttributeSet kTexts = Attribute::title | Attribute::description | Attribute::value;

AttributeValue textOrNone(std::optional<std::string> text) {
    return text ? AttributeValue(std::move(*text)) : AttributeValue();
}

bool isHidden(std::optional<std::uint64_t> state, AtspiRole role) {
    // Some toolkits give their application object, or objects of their own, no state at all.
    return state.value_or(0) != 0 && !AtspiState::has(*state, AtspiState::visible) &&
           role != AtspiRole::application;
}

} // namespace

AtspiReader::AtspiReader(const BusPool::Lease& lease, BusPool& pool, AtspiMemory& memory)
    : pool_(pool), memory_(memory) {
    if (lease)
        exchange_.emplace(lease);
}

std::vector<ElementAttributes> AtspiReader::read(std::span<const Accessibility::Request> requests) {
    std::vector<ElementAttributes> answers(requests.size());
    std::deque<Job> jobs;
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const auto* element = dynamic_cast<const AtspiElement*>(requests[i].element.get());
        if (!element || element->peer->bus != pool_.serial())
            continue;
        if (!exchange_ || element->peer->silent)
            memory_.recall(*element, requests[i].attributes, answers[i]);
        else
            begin(jobs.emplace_back(
                Job{.element = element, .wanted = requests[i].attributes, .answers = answers[i]}));
    }
    if (exchange_)
        exchange_->finish();
    for (auto& job : jobs)
        end(job);
    return answers;
}

void AtspiReader::begin(Job& job) {
    auto& bus = exchange_->bus();
    const auto* const peer = job.element->peer->name.c_str();
    const auto* const path = job.element->path.c_str();
    const bool roleKnown = job.element->role != AtspiElement::kNotRead;
    if (job.wants(Attribute::role) || (job.wants(kTexts) && !roleKnown))
        ask(job, AtspiCalls::getRole(bus, peer, path), [this, &job](const BusReply& reply) {
            job.element->role = AtspiCalls::number(reply).value_or(AtspiElement::kNotRead);
            if (static_cast<AtspiRole>(job.element->role.load()) == AtspiRole::text)
                askState(job);
            if (job.element->role != AtspiElement::kNotRead && job.wants(kTexts))
                askTexts(job);
        });
    else if (job.wants(kTexts))
        askTexts(job);
    if (job.wants(Attribute::children))
        ask(job, AtspiCalls::getChildren(bus, peer, path),
            [this, &job](const BusReply& reply) { takeChildren(job, reply); });
    if (job.wants(Attribute::position))
        ask(job, AtspiCalls::getExtents(bus, peer, path), [&job](const BusReply& reply) {
            if (const auto point = AtspiCalls::point(reply))
                job.answers.position = *point;
        });
}

void AtspiReader::askState(Job& job) {
    if (std::exchange(job.stateAsked, true))
        return;
    const auto& element = *job.element;
    ask(job, AtspiCalls::getState(exchange_->bus(), element.peer->name.c_str(), element.path.c_str()),
        [&job](const BusReply& reply) { job.state = AtspiCalls::state(reply); });
}

void AtspiReader::askTexts(Job& job) {
    auto& bus = exchange_->bus();
    const auto& element = *job.element;
    if (element.hidden)
        return;
    if (!element.stateRead)
        askState(job);
    const auto content = contentOf(static_cast<AtspiRole>(element.role.load()));
    switch (content) {
    case AtspiContent::button:
        if (job.wants(Attribute::title | Attribute::description))
            askName(job, &ElementAttributes::title);
        return;
    case AtspiContent::label:
        if (job.wants(Attribute::value))
            askName(job, &ElementAttributes::value);
        if (job.wants(Attribute::description))
            askDescription(job);
        return;
    case AtspiContent::edited:
        if (job.wants(Attribute::value))
            ask(job, AtspiCalls::getText(bus, element.peer->name.c_str(), element.path.c_str()),
                [&job](const BusReply& reply) { job.answers.value = textOrNone(AtspiCalls::text(reply)); });
        break;
    case AtspiContent::counted:
        if (job.wants(Attribute::value))
            ask(job, AtspiCalls::getCurrentValue(bus, element.peer->name.c_str(), element.path.c_str()),
                [&job](const BusReply& reply) {
                    if (const auto value = AtspiCalls::numberProperty(reply))
                        job.answers.value = *value;
                });
        break;
    case AtspiContent::other:
        break;
    }
    if (job.wants(Attribute::title))
        askName(job, &ElementAttributes::title);
    if (job.wants(Attribute::description))
        askDescription(job);
}

void AtspiReader::askName(Job& job, AttributeValue ElementAttributes::*into) {
    const auto& element = *job.element;
    ask(job,
        AtspiCalls::getProperty(exchange_->bus(), element.peer->name.c_str(), element.path.c_str(), "Name"),
        [this, &job, into](const BusReply& reply) {
            auto name = AtspiCalls::textProperty(reply);
            const bool empty = !name || name->empty();
            job.answers.*into = textOrNone(std::move(name));
            if (!empty)
                return;
            const auto& element = *job.element;
            const auto content = contentOf(static_cast<AtspiRole>(element.role.load()));
            if (content == AtspiContent::button)
                askDescription(job);
            else if (content == AtspiContent::label)
                ask(job,
                    AtspiCalls::getText(exchange_->bus(), element.peer->name.c_str(), element.path.c_str()),
                    [&job](const BusReply& text) {
                        if (auto shown = AtspiCalls::text(text))
                            job.answers.value = std::move(*shown);
                    });
        });
}

void AtspiReader::askDescription(Job& job) {
    const auto& element = *job.element;
    ask(job,
        AtspiCalls::getProperty(exchange_->bus(), element.peer->name.c_str(), element.path.c_str(),
                                "Description"),
        [&job](const BusReply& reply) {
            job.answers.description = textOrNone(AtspiCalls::textProperty(reply));
        });
}

void AtspiReader::ask(Job& job, const BusMessage& request, Handler handler) {
    if (!exchange_->ask(job.element->peer, request, std::move(handler)))
        job.owed = true;
}

void AtspiReader::takeChildren(Job& job, const BusReply& reply) {
    std::vector<ElementRef> children;
    // Nearly always the parent's own program.
    auto peer = job.element->peer;
    if (AtspiCalls::children(reply, [&](const char* name, const char* path) {
            if (peer->name != name)
                peer = pool_.peer(name);
            children.push_back(std::make_shared<AtspiElement>(peer, path));
        })) {
        if (!children.empty())
            askState(job);
        job.answers.children = std::move(children);
    }
}

void AtspiReader::end(Job& job) {
    auto& answers = job.answers;
    const auto& element = *job.element;
    const auto role = static_cast<AtspiRole>(element.role.load());
    const bool roleKnown = element.role != AtspiElement::kNotRead;
    if (job.state) {
        element.hidden = isHidden(job.state, role);
        element.stateRead = true;
    }
    if (roleKnown && job.wants(Attribute::role))
        answers.role = accessibilityRole(role, AtspiState::has(job.state.value_or(0), AtspiState::multiLine));
    if (roleKnown && contentOf(role) == AtspiContent::button) {
        // One text for both; the description was read only where there is no name.
        const auto text =
            std::holds_alternative<std::monostate>(answers.description) ? answers.title : answers.description;
        answers.title = job.wants(Attribute::title) ? text : AttributeValue();
        answers.description = job.wants(Attribute::description) ? text : AttributeValue();
    }
    if (element.hidden) {
        auto kept = std::move(answers.role);
        answers = {};
        answers.role = std::move(kept);
        if (job.wants(Attribute::children))
            answers.children = std::vector<ElementRef>{};
    }
    if (job.owed || exchange_->gaveUp(*element.peer))
        memory_.recall(element, job.wanted, answers);
    memory_.remember(element, job.wanted, answers);
}

} // namespace velto
