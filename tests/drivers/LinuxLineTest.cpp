// The lines for Linux, run by the real shell below a folder that stands for the system's root.
#include "VeltoApp/drivers/DriverLines.h"
#include "VeltoPlatform/FileDescriptor.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxDriverPlace.h"
#include "tests/drivers/AdministratorShell.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <fstream>
#include <map>
#include <set>

namespace velto::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// What lies below a folder: each path with what a file holds, a link points to, or "/" for a folder.
std::map<std::string, std::string> listing(const fs::path& root) {
    std::map<std::string, std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        auto& what = all[fs::relative(entry.path(), root).string()];
        what = entry.is_symlink()     ? "-> " + fs::read_symlink(entry).string()
               : entry.is_directory() ? "/"
                                      : readFile(entry.path());
    }
    return all;
}

void write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

FileDescriptor boundSocket(const fs::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return FileDescriptor(-1);
    return socket;
}

struct LinuxLineTest : ::testing::Test {
    LinuxLineTest() {
        auto parts = platform();
        parts.driverPlace = &place;
        installPlatform(parts);
        for (const auto* name : DriverLines::names) {
            write(source / DriverLines::bundleName(name) / "pulse.pa", std::string("pulse ") + name);
            write(source / DriverLines::bundleName(name) / "pipewire.conf", std::string("pipewire ") + name);
        }
        write(root / "run/velto-drivers.lock", "");
    }
    static std::string run(const std::string& line,
                           const std::string& path = "/usr/sbin:/usr/bin:/sbin:/bin") {
        const auto result = runInShell(line, ::getuid(), path);
        EXPECT_EQ(result.status, 0) << result.stdout;
        return result.stdout;
    }
    fs::path published(const char* folder, const std::string& file) const {
        return root / "etc" / folder / file;
    }

    TestComputer computer;
    const std::string odd = "it's a \"place\" $(touch pwned) `touch pwned`\nü;&*";
    fs::path source = computer.root() / (odd + " from");
    fs::path root = computer.root() / (odd + " to");
    LinuxDriverPlace place{root};
    const fs::path pulse = published("pulse/default.pa.d", "VeltoVoice.pa");
    const fs::path pipewire = published("pipewire/pipewire.conf.d", "VeltoVoice.conf");
};

TEST_F(LinuxLineTest, InstallsAndRemovesWithoutATraceWhateverTheFoldersAreCalled) {
    const auto before = listing(computer.root());
    const auto line = DriverLines::install(source);
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(run(line), "");
        EXPECT_EQ(readFile(place.folder() / "VeltoVoice.driver" / "pulse.pa"), "pulse VeltoVoice");
        EXPECT_EQ(readFile(pulse), "pulse VeltoVoice");
        EXPECT_EQ(readFile(pipewire), "pipewire VeltoVoice");
        const auto mode = fs::status(pulse).permissions();
        EXPECT_EQ(mode & fs::perms::all, fs::perms(0644));
    }
    // Of an installation that was ended half-way.
    write(place.folder() / ".next" / "pulse.pa", "half");
    write(fs::path(pulse) += ".next", "half");
    for (int again = 0; again < 2; ++again) {
        EXPECT_EQ(run(DriverLines::uninstall()), "");
        EXPECT_EQ(listing(computer.root()), before);
    }
    write(root / "usr/local/share/velto/.made-by-velto", "");
    write(root / "usr/local/share/.made-by-velto", "");
    EXPECT_EQ(run(DriverLines::uninstall()), "");
    EXPECT_FALSE(fs::exists(root / "usr/local/share"));
    EXPECT_FALSE(fs::exists("/pwned"));
}

TEST_F(LinuxLineTest, LeavesWhatOthersPutThereBeforeAndMeanwhile) {
    write(published("pulse/default.pa.d", "10-speaker.pa"), "speaker");
    fs::create_directories(root / "usr/local/share/velto");
    write(pulse, "an older version");
    write(place.folder() / "VeltoVoice.driver" / "more", "an older version");
    auto expected = listing(root);
    for (const auto* ours :
         {"usr/local/share/velto/drivers/VeltoVoice.driver",
          "usr/local/share/velto/drivers/VeltoVoice.driver/more", "etc/pulse/default.pa.d/VeltoVoice.pa"})
        expected.erase(ours);
    EXPECT_EQ(run(DriverLines::install(source)), "");
    EXPECT_EQ(readFile(pulse), "pulse VeltoVoice");
    EXPECT_FALSE(fs::exists(place.folder() / "VeltoVoice.driver" / "more"));

    write(published("pipewire/pipewire.conf.d", "theirs.conf"), "later");
    write(place.folder() / "VeltoOld.driver" / "pulse.pa", "later");
    for (const auto* theirs :
         {"etc/pipewire", "etc/pipewire/pipewire.conf.d", "usr/local/share/velto/drivers/VeltoOld.driver"})
        expected[theirs] = "/";
    expected["etc/pipewire/pipewire.conf.d/theirs.conf"] = "later";
    expected["usr/local/share/velto/drivers/VeltoOld.driver/pulse.pa"] = "later";
    EXPECT_EQ(run(DriverLines::uninstall()), "");
    EXPECT_EQ(listing(root), expected);
}

TEST_F(LinuxLineTest, AFaultInTheMiddleShowsAndLeavesWholeDriversOrNone) {
    const auto before = listing(root);
    const auto missing = run(DriverLines::install(computer.root() / "missing \xe4\\c"));
    EXPECT_NE(missing.find("not to be read: VeltoHQ.driver/pulse.pa\n"), std::string::npos) << missing;
    EXPECT_EQ(listing(root), before);

    fs::remove(source / "VeltoLoop.driver" / "pipewire.conf");
    fs::create_directories(published("pulse/default.pa.d", "VeltoVoice.pa") / "in the way");
    const auto output = run(DriverLines::install(source));
    EXPECT_NE(output.find("VeltoLoop.driver/pipewire.conf"), std::string::npos) << output;
    EXPECT_NE(output.find("not installed: VeltoVoice\n"), std::string::npos) << output;
    EXPECT_EQ(readFile(published("pulse/default.pa.d", "VeltoHQ.pa")), "pulse VeltoHQ");
    EXPECT_FALSE(fs::exists(published("pulse/default.pa.d", "VeltoLoop.pa")));
    EXPECT_FALSE(fs::exists(pipewire));
    std::set<std::string> drivers;
    for (const auto& entry : fs::directory_iterator(place.folder()))
        drivers.insert(entry.path().filename().string());
    EXPECT_EQ(drivers, (std::set<std::string>{".made-by-velto", "VeltoHQ.driver"}));
}

TEST_F(LinuxLineTest, WhatReadsForTheUserHoldsNothingOfRootsAndIsNotReadWithoutAnEnd) {
    const auto programs = computer.root() / "bin";
    write(programs / "head", "#!/bin/sh\nreadlink /proc/$$/fd/1 | cut -d: -f1\necho /proc/$$/fd/[9]\n");
    fs::permissions(programs / "head", fs::perms::owner_all);
    EXPECT_EQ(run(DriverLines::install(source), programs.string() + ":/usr/sbin:/usr/bin:/sbin:/bin"), "");
    const auto held = readFile(pulse);
    EXPECT_TRUE(held.starts_with("pipe\n") && held.ends_with("/fd/[9]\n")) << held;

    const auto endless = source / "VeltoVoice.driver" / "pulse.pa";
    fs::remove(endless);
    fs::create_symlink("/dev/zero", endless);
    const std::string refused = "empty, or too long for a driver: VeltoVoice.driver/pulse.pa\n";
    EXPECT_EQ(run(DriverLines::install(source)), refused);
    EXPECT_EQ(readFile(pulse), held);
    fs::remove(endless);
    write(endless, std::string(65'537, '#'));
    EXPECT_EQ(run(DriverLines::install(source)), refused);
}

TEST_F(LinuxLineTest, RestartsTheUsersUnitsThatRunAllAtOnce) {
    const auto runtime = root / "run/user" / std::to_string(::getuid());
    EXPECT_EQ(run(DriverLines::restart()), ""); // not logged in
    fs::create_directories(runtime);
    EXPECT_EQ(run(DriverLines::restart()), ""); // no server

    // A user's systemd with PipeWire, of which one unit is off.
    const auto programs = computer.root() / "bin";
    write(programs / "systemctl", "#!/bin/sh\n"
                                  "case \"$*\" in\n"
                                  "*is-active\\ pulseaudio*|*is-active*media-session*) exit 3;;\n"
                                  "*is-active*) exit 0;;\n"
                                  "esac\n"
                                  "echo \"$XDG_RUNTIME_DIR: $*\"\nexit 1\n");
    fs::permissions(programs / "systemctl", fs::perms::owner_all);
    const auto small = computer.root() / "r"; // the path of a socket is short
    const auto home = small / "run/user" / std::to_string(::getuid());
    fs::create_directories(home / "systemd");
    const FileDescriptor manager = boundSocket(home / "systemd/private");
    ASSERT_TRUE(manager);
    LinuxDriverPlace otherPlace{small};
    auto parts = platform();
    parts.driverPlace = &otherPlace;
    installPlatform(parts);
    const std::string units = " pipewire.service wireplumber.service pipewire-pulse.service\n";
    EXPECT_EQ(run(DriverLines::restart() + " || true", programs.string() + ":/usr/sbin:/usr/bin:/sbin:/bin"),
              home.string() + ": --user restart" + units + "not restarted:" + units);
}

} // namespace
} // namespace velto::test
