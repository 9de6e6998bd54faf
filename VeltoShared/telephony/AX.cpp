// The accessibility toolkit over the bounded walk: what each operation asks of which roles.
#include "VeltoShared/telephony/AX.h"

#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Workspace.h"
#include "VeltoShared/telephony/ElementWalk.h"
#include "VeltoShared/telephony/Letters.h"

namespace velto::AX {
namespace {

using Answer = ElementWalk::Answer;
using Plan = ElementWalk::Plan;
using Visited = ElementWalk::Visited;

std::optional<pid_t> firstPID(std::string_view bundleID) {
    for (const auto& application : platform().workspace->runningApplications())
        if (application.bundleID == bundleID)
            return application.pid;
    return std::nullopt;
}

void walk(pid_t pid, std::size_t budget, const ElementWalk::Planner& plan,
          const ElementWalk::Visitor& visit) {
    auto& accessibility = *platform().accessibility;
    ElementWalk::run(accessibility, accessibility.application(pid), budget, plan, visit);
}

void walkFirst(std::string_view bundleID, const ElementWalk::Planner& plan,
               const ElementWalk::Visitor& visit) {
    if (!trusted())
        return;
    if (const auto pid = firstPID(bundleID))
        walk(*pid, kBudget, plan, visit);
}

} // namespace

bool trusted() {
    return platform().accessibility->trusted();
}

void promptForTrust() {
    platform().accessibility->promptForTrust();
}

std::optional<pid_t> notificationCenterPID() {
    return firstPID(kNotificationCenter);
}

std::vector<Button> buttons() {
    std::vector<Button> found;
    walkFirst(
        kNotificationCenter,
        [](const std::string& role) {
            Plan plan;
            if (role == "AXButton")
                plan.attributes = Attribute::description | Attribute::position;
            return plan;
        },
        [&](const Visited& visited) {
            if (visited.role != "AXButton")
                return Answer::descend;
            if (auto description = textOf(visited.attributes.description); !description.empty()) {
                const auto* point = std::get_if<ScreenPoint>(&visited.attributes.position);
                const auto at = point ? *point : ScreenPoint{};
                found.push_back({std::move(description), at.x, at.y});
            }
            return Answer::descend;
        });
    return found;
}

bool press(std::string_view description) {
    bool pressed = false;
    walkFirst(
        kNotificationCenter,
        [](const std::string& role) {
            Plan plan;
            if (role == "AXButton")
                plan = {Attribute::description | Attribute::title, Plan::Children::askVisitor};
            return plan;
        },
        [&](const Visited& visited) {
            if (visited.role != "AXButton" ||
                !(equalIgnoringCase(textOf(visited.attributes.description), description) ||
                  equalIgnoringCase(textOf(visited.attributes.title), description)))
                return Answer::descend;
            pressed = platform().accessibility->press(visited.element);
            return pressed ? Answer::stop : Answer::skipChildren;
        });
    return pressed;
}

std::vector<std::string> texts(const std::optional<std::string>& bundleID) {
    std::vector<std::string> found;
    const auto isText = [](const std::string& role) {
        return role == "AXStaticText" || role == "AXGenericElement";
    };
    walkFirst(
        bundleID ? std::string_view(*bundleID) : kNotificationCenter,
        [&](const std::string& role) {
            Plan plan;
            if (isText(role))
                plan.attributes = Attribute::description | Attribute::value | Attribute::title;
            return plan;
        },
        [&](const Visited& visited) {
            if (isText(visited.role))
                for (const auto* attribute :
                     {&visited.attributes.description, &visited.attributes.value, &visited.attributes.title})
                    if (auto text = textOf(*attribute); !text.empty())
                        found.push_back(std::move(text));
            return Answer::descend;
        });
    return found;
}

std::vector<ElementInfo> scanAllApps(std::string_view needle, const std::optional<std::string>& bundleID) {
    const auto wanted = lowerCased(needle);
    const auto isMenu = [](const std::string& role) { return role == "AXMenuBar" || role == "AXMenu"; };
    std::vector<ElementInfo> found;
    for (const auto& application : platform().workspace->runningApplications()) {
        if (application.bundleID.empty() || (bundleID && application.bundleID != *bundleID))
            continue;
        walk(
            application.pid, kSearchBudget,
            [&](const std::string& role) {
                Plan plan{Attribute::title | Attribute::description | Attribute::value};
                if (isMenu(role))
                    plan = {.attributes = {}, .children = Plan::Children::skip};
                return plan;
            },
            [&](const Visited& visited) {
                if (isMenu(visited.role))
                    return Answer::skipChildren;
                ElementInfo info{.pid = application.pid,
                                 .bundleID = application.bundleID,
                                 .role = visited.role,
                                 .title = textOf(visited.attributes.title),
                                 .description = textOf(visited.attributes.description),
                                 .value = textOf(visited.attributes.value)};
                const auto joined = info.role + ' ' + info.title + ' ' + info.description + ' ' + info.value;
                if (wanted.empty() || lowerCased(joined).find(wanted) != std::string::npos)
                    found.push_back(std::move(info));
                return Answer::descend;
            });
    }
    return found;
}

std::map<std::string, int> roleCounts(std::string_view bundleID) {
    std::map<std::string, int> counts;
    if (const auto pid = firstPID(bundleID))
        walk(
            *pid, kSearchBudget, [](const std::string&) { return Plan{}; },
            [&](const Visited& visited) {
                ++counts[visited.role.empty() ? "?" : visited.role];
                return Answer::descend;
            });
    return counts;
}

} // namespace velto::AX
