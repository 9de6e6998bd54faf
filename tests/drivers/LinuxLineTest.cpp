// The lines for Linux, run by the real shell below a folder that stands for the system's root.
#include "VeltoApp/admin/HelperRun.h"
#include "VeltoApp/drivers/DriverLines.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/linux/LinuxDriverPlace.h"
#include "tests/support/TestComputer.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <map>
#include <set>

namespace velto::test {
namespace {

namespace fs = std::filesystem;

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
    /// What an administrator's run prints; it finds programs of ours before the system's.
    std::string run(const std::string& line) const {
        const auto path = "PATH=" + programs.string() + ":/usr/sbin:/usr/bin:/sbin:/bin";
        const auto user = "PKEXEC_UID=" + std::to_string(::getuid());
        const auto result = Helper::run("/usr/bin/env", {"-i", user, path, "/bin/sh", "-c", line}, "/");
        EXPECT_EQ(result.status, 0) << result.stdout;
        return result.stdout;
    }
    fs::path published(const char* folder, const std::string& file) const {
        return root / "etc" / folder / file;
    }

    TestComputer computer;
    const fs::path programs = computer.root() / "bin";
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
    fs::create_directories(place.folder());
    auto expected = listing(root);
    write(pulse, "an older version");
    write(place.folder() / "VeltoVoice.driver" / "more", "an older version");
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
    writeProgram(programs / "head", "readlink /proc/$$/fd/1 | cut -d: -f1\necho /proc/$$/fd/[9]");
    EXPECT_EQ(run(DriverLines::install(source)), "");
    const auto held = readFile(pulse);
    fs::remove(programs / "head");
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
    writeProgram(programs / "systemctl", R"(case "$*" in
*is-active\ pulseaudio*|*is-active*media-session*) exit 3;;
*is-active*) exit 0;;
esac
echo "$XDG_RUNTIME_DIR: $*"
exit 1)");
    const auto small = computer.root() / "r"; // the path of a socket is short
    const auto home = small / "run/user" / std::to_string(::getuid());
    fs::create_directories(home / "systemd");
    boost::asio::io_context context;
    const boost::asio::local::stream_protocol::acceptor manager(context, (home / "systemd/private").string());
    LinuxDriverPlace otherPlace{small};
    auto parts = platform();
    parts.driverPlace = &otherPlace;
    installPlatform(parts);
    const std::string units = " pipewire.service wireplumber.service pipewire-pulse.service\n";
    EXPECT_EQ(run(DriverLines::restart() + " || true"),
              home.string() + ": --user restart" + units + "not restarted:" + units);
}

} // namespace
} // namespace velto::test
