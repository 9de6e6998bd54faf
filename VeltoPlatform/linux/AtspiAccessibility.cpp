#include "VeltoPlatform/linux/AtspiAccessibility.h"

#include "VeltoPlatform/linux/AtspiCalls.h"
#include "VeltoPlatform/linux/AtspiReader.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace velto {
namespace {

BusPool::Report prefixed(const std::function<void(const std::string&)>& report) {
    return [report](const std::string& line) {
        if (report)
            report("accessibility: " + line);
    };
}

/// The answers of a process's objects as those of one.
ElementAttributes merged(std::span<ElementAttributes> parts) {
    if (parts.empty())
        return {};
    auto whole = std::move(parts.front());
    for (auto& part : parts.subspan(1)) {
        auto* const more = std::get_if<std::vector<ElementRef>>(&part.children);
        auto* const children = std::get_if<std::vector<ElementRef>>(&whole.children);
        if (more && children)
            std::move(more->begin(), more->end(), std::back_inserter(*children));
        else if (more)
            whole.children = std::move(*more);
    }
    return whole;
}

} // namespace

AtspiAccessibility::AtspiAccessibility(const std::function<void(const std::string&)>& report,
                                       std::string sessionAddress)
    : report_(prefixed(report)), launcher_(std::move(sessionAddress), patience_, report_) {}

bool AtspiAccessibility::trusted() {
    const auto status = launcher_.status();
    if (status.silent)
        return stayed(status.trouble);
    if (!status.trouble.empty())
        return found(status.trouble);
    use(status.busAddress);
    const auto [desktop, lease] = reach();
    if (desktop && !lease)
        return stayed("the accessibility bus does not answer");
    return found(lease ? "" : "the accessibility bus cannot be reached");
}

bool AtspiAccessibility::found(std::string whyNot) {
    const std::scoped_lock lock(mutex_);
    whyNotTrusted_ = std::move(whyNot);
    return whyNotTrusted_.empty();
}

bool AtspiAccessibility::stayed(std::string whyNot) {
    const std::scoped_lock lock(mutex_);
    if (!whyNotTrusted_.empty())
        whyNotTrusted_ = std::move(whyNot);
    return whyNotTrusted_.empty();
}

std::string AtspiAccessibility::whyNotTrusted() {
    const std::scoped_lock lock(mutex_);
    return whyNotTrusted_;
}

void AtspiAccessibility::promptForTrust() {
    launcher_.switchOn();
}

AtspiAccessibility::DesktopRef AtspiAccessibility::use(const std::string& busAddress) {
    const std::scoped_lock lock(mutex_);
    // A bus outlives a launcher that was killed; who takes part then is on the next launcher's.
    if (!desktop_ || desktop_->pool->gone() || desktop_->address != busAddress) {
        desktop_ = std::make_shared<Desktop>();
        desktop_->address = busAddress;
        desktop_->pool = std::make_shared<BusPool>(
            busAddress, "the accessibility bus",
            BusPool::Probe{AtspiCalls::kRoot, AtspiCalls::kAccessible, "GetRole"}, patience_, report_);
    }
    return desktop_;
}

AtspiAccessibility::DesktopRef AtspiAccessibility::connected() {
    {
        const std::scoped_lock lock(mutex_);
        if (desktop_ && !desktop_->pool->gone())
            return desktop_;
    }
    const auto address = launcher_.status().busAddress;
    return address.empty() ? nullptr : use(address);
}

std::pair<AtspiAccessibility::DesktopRef, BusPool::Lease> AtspiAccessibility::reach() {
    // The second time for a bus that was restarted since.
    for (int attempt = 0; attempt < 2; ++attempt) {
        auto desktop = connected();
        if (!desktop)
            break;
        auto lease = desktop->pool->lease();
        if (lease || desktop->pool->silent())
            return {std::move(desktop), std::move(lease)};
    }
    return {};
}

ElementRef AtspiAccessibility::application(pid_t pid) {
    return std::make_shared<AtspiApplicationElement>(pid);
}

std::vector<ElementAttributes> AtspiAccessibility::read(std::span<const Request> requests) {
    std::vector<ElementAttributes> answers(requests.size());
    const auto [desktop, lease] = reach();
    if (!desktop)
        return answers;

    // A process stands for all its objects; `owners` says to which request each of `asked` belongs.
    std::vector<Request> asked;
    std::vector<std::size_t> owners;
    std::optional<std::vector<AtspiApplication>> applications;
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const auto* process = dynamic_cast<const AtspiApplicationElement*>(requests[i].element.get());
        if (!process) {
            asked.push_back(requests[i]);
            owners.push_back(i);
            continue;
        }
        if (!applications)
            applications =
                lease ? desktop->applications.list(lease, desktop->memory) : desktop->applications.last();
        for (const auto& found : *applications)
            if (found.pid == process->pid) {
                asked.push_back(
                    {std::make_shared<AtspiElement>(found.peer, found.path), requests[i].attributes});
                owners.push_back(i);
            }
    }
    auto parts = AtspiReader(lease, *desktop->pool, desktop->memory).read(asked);
    for (std::size_t begin = 0; begin < parts.size();) {
        const auto owner = owners[begin];
        const auto end = static_cast<std::size_t>(
            std::find_if(owners.begin() + static_cast<std::ptrdiff_t>(begin), owners.end(),
                         [&](std::size_t other) { return other != owner; }) -
            owners.begin());
        answers[owner] = merged(std::span(parts).subspan(begin, end - begin));
        begin = end;
    }
    return answers;
}

bool AtspiAccessibility::press(const ElementRef& element) {
    const auto* pressed = dynamic_cast<const AtspiElement*>(element.get());
    const auto [desktop, lease] = reach();
    return pressed && lease && desktop->presses.press(lease, *pressed);
}

std::optional<std::vector<pid_t>> AtspiAccessibility::processes() {
    const auto [desktop, lease] = reach();
    if (!desktop)
        return std::nullopt;
    const auto applications =
        lease ? desktop->applications.list(lease, desktop->memory) : desktop->applications.last();
    std::vector<pid_t> pids;
    for (const auto& application : applications)
        if (std::find(pids.begin(), pids.end(), application.pid) == pids.end())
            pids.push_back(application.pid);
    return pids;
}

} // namespace velto
