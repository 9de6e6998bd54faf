#include "VeltoPlatform/linux/AtspiApplications.h"

#include "VeltoPlatform/linux/AtspiCalls.h"
#include "VeltoPlatform/linux/BusExchange.h"
#include "VeltoPlatform/linux/ProcessFiles.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace velto {
namespace {

/// A question about a name to the bus itself.
BusMessage question(Bus& bus, const char* member, const std::string& name) {
    auto request =
        bus.method("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member);
    if (request)
        sd_bus_message_append(request.get(), "s", name.c_str());
    return request;
}

} // namespace

std::vector<AtspiApplication> AtspiApplications::list(const BusPool::Lease& lease, AtspiMemory& memory) {
    auto& pool = lease.pool();
    const auto registry = pool.peer(AtspiCalls::kRegistry, "the accessibility registry");
    if (registry->silent)
        return last();
    std::vector<std::pair<std::string, std::string>> places;
    BusExchange exchange(lease);
    bool listed = false;
    exchange.ask(registry, AtspiCalls::getChildren(exchange.bus(), AtspiCalls::kRegistry, AtspiCalls::kRoot),
                 [&](const BusReply& reply) {
                     listed = AtspiCalls::children(
                         reply, [&](const char* name, const char* path) { places.emplace_back(name, path); });
                 });
    exchange.finish();
    if (listed)
        findPids(lease, memory, places);
    return last();
}

void AtspiApplications::findPids(const BusPool::Lease& lease, AtspiMemory& memory,
                                 const std::vector<std::pair<std::string, std::string>>& places) {
    auto& pool = lease.pool();
    // A bus never gives a name to a second program, so that a pid holds as long as the name.
    std::map<std::string, pid_t> pids;
    const auto before = last();
    for (const auto& application : before)
        pids[application.peer->name] = application.pid;

    BusExchange exchange(lease);
    std::set<std::string> listed;
    for (const auto& [name, path] : places)
        if (listed.insert(name).second && !pids.contains(name))
            exchange.ask(pool.daemon(), question(exchange.bus(), "GetConnectionUnixProcessID", name),
                         [&pids, name = name](const BusReply& reply) {
                             if (const auto pid = AtspiCalls::number(reply))
                                 pids[name] = static_cast<pid_t>(*pid);
                         });
    std::set<std::string> unlisted;
    for (const auto& name : memory.peers())
        unlisted.insert(name);
    for (const auto& application : before)
        unlisted.insert(application.peer->name);
    std::set<std::string> alive;
    for (const auto& name : unlisted)
        if (!listed.contains(name))
            exchange.ask(pool.daemon(), question(exchange.bus(), "NameHasOwner", name),
                         [&memory, &alive, name](const BusReply& reply) {
                             const auto owned = AtspiCalls::truth(reply);
                             if (owned == true)
                                 alive.insert(name);
                             else if (owned == false)
                                 memory.forget(name);
                         });
    exchange.finish();
    if (exchange.gaveUp(*pool.daemon()))
        return;
    // A registry that was started anew does not know who has been there for longer.
    std::vector<std::pair<std::string, std::string>> all;
    for (const auto& application : before)
        if (alive.contains(application.peer->name))
            all.emplace_back(application.peer->name, application.path);
    all.insert(all.end(), places.begin(), places.end());

    std::vector<AtspiApplication> found;
    for (const auto& [name, path] : all)
        if (const auto pid = pids.find(name); pid != pids.end()) {
            const auto executable = ProcessFiles::executable(pid->second);
            const auto title = (executable.empty() ? "a program" : executable) + " (pid " +
                               std::to_string(pid->second) + ")";
            found.push_back({pool.peer(name, title), path, pid->second});
        }
    const std::scoped_lock lock(mutex_);
    last_ = std::move(found);
}

std::vector<AtspiApplication> AtspiApplications::last() const {
    const std::scoped_lock lock(mutex_);
    return last_;
}

} // namespace velto
