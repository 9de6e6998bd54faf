#include "tests/admin/PolkitMachine.h"

#include "VeltoPlatform/linux/Bus.h"
#include "tests/support/TestComputer.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <thread>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr int kSkipped = 77;
constexpr const char* kPolkit = "/usr/lib/polkit-1/polkitd";
constexpr const char* kActions = "/usr/share/polkit-1/actions";

[[noreturn]] void skip(const std::string& why) {
    std::cerr << "skipped: " << why << std::endl;
    ::_exit(kSkipped);
}

/// An empty folder over an existing one.
void cover(const char* folder) {
    if (::mount("tmpfs", folder, "tmpfs", 0, "mode=755") != 0)
        skip(std::string("nothing can be mounted on ") + folder);
}

void coverAll() {
    const auto generic = readFile(fs::path(kActions) / "org.freedesktop.policykit.policy");
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("proc", "/proc", "proc", 0, nullptr) != 0)
        skip("namespaces are of no use here");
    for (const char* folder : {"/run", kActions, "/etc/polkit-1", "/opt", "/usr/local/share"})
        cover(folder);
    for (const char* folder : {"/etc/pulse", "/etc/pipewire"})
        if (fs::is_directory(folder))
            cover(folder);
    fs::create_directory("/run/dbus");
    std::ofstream(fs::path(kActions) / "org.freedesktop.policykit.policy") << generic;
    fs::copy_file(VELTO_TEST_POLICY, fs::path(kActions) / "org.velto.Velto.policy");
    fs::create_directory("/etc/polkit-1/rules.d");
    std::ofstream("/etc/polkit-1/rules.d/10-test.rules")
        << "polkit.addAdminRule(function() { return ['unix-user:root']; });\n";
    for (const char* helper : {PolkitMachine::installedHelper, PolkitMachine::otherHelper}) {
        fs::create_directories(fs::path(helper).parent_path());
        fs::copy_file(VELTO_ADMIN_HELPER, helper);
    }
}

} // namespace

void PolkitMachine::enter() {
    if (::geteuid() != 0)
        skip("needs root");
    for (const char* program : {kPolkit, "/usr/bin/pkexec", "/usr/bin/dbus-daemon"})
        if (!fs::exists(program))
            skip(std::string("needs ") + program);
    if (::unshare(CLONE_NEWNS | CLONE_NEWPID) != 0)
        skip("no namespaces here");
    const pid_t child = ::fork();
    if (child < 0)
        skip("no process namespace here");
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        coverAll();
        return;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) != child) {
    }
    ::_exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
}

PolkitMachine::PolkitMachine() {
    const std::map<std::string, std::string> environment{{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}};
    bus_ = rehearsal::ChildProcess::start(
        {"the bus", {"dbus-daemon", "--system", "--nofork", "--nopidfile"}, environment, "/opt/bus.err"});
    std::unique_ptr<Bus> bus;
    for (int i = 0; i < 1000 && !bus; ++i, std::this_thread::sleep_for(10ms))
        bus = Bus::open(busAddress, 1s);
    polkit_ =
        rehearsal::ChildProcess::start({"polkit", {kPolkit, "--no-debug"}, environment, "/opt/polkit.err"});
    for (int i = 0; bus && i < 1000 && !up_; ++i, std::this_thread::sleep_for(10ms)) {
        const auto request = bus->method("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus", "GetNameOwner");
        sd_bus_message_append(request.get(), "s", "org.freedesktop.PolicyKit1");
        up_ = static_cast<bool>(bus->call(request, 1s));
    }
}

void PolkitMachine::stop() {
    polkit_.reset();
    bus_.reset();
}

} // namespace velto::test
