#include "VeltoPlatform/linux/LinuxLoginItem.h"

#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <fstream>

namespace velto::test {
namespace {

namespace fs = std::filesystem;

struct LoginItemTest : ::testing::Test {
    TemporaryFolder home;
    fs::path config = home.path() / ".config";

    LinuxLoginItem item(const std::string& name = "velto") {
        writeProgram(home.path() / name, "");
        return {config, "org.velto.Velto", home.path() / name};
    }
};

TEST_F(LoginItemTest, AFileInTheAutostartFolderNamesTheProgram) {
    auto here = item("velto of mine");
    EXPECT_EQ(here.unregisterApplication(), "") << "there is none yet";
    fs::create_directories(here.file().parent_path());
    std::ofstream(here.file()) << "[Desktop Entry]\nHidden=true\n";
    EXPECT_EQ(here.registerApplication(), "");
    EXPECT_EQ(here.registerApplication(), "");
    EXPECT_EQ(here.file(), config / "autostart/org.velto.Velto.desktop");
    const auto content = readFile(here.file());
    const auto named = (home.path() / "velto of mine").string();
    EXPECT_NE(content.find("\nTryExec=" + named + "\nExec=\"" + named + "\"\n"), content.npos);
    EXPECT_EQ(content.find("Hidden"), content.npos) << "somebody switches it on again";
    EXPECT_EQ(here.unregisterApplication(), "");
    EXPECT_TRUE(fs::is_empty(config / "autostart"));
}

TEST_F(LoginItemTest, WhatCannotBeDoneIsDescribedAndChangesNothing) {
    auto escaped = item("ve$to");
    EXPECT_NE(escaped.registerApplication().find("ve$to"), std::string::npos);
    auto gone = item();
    fs::remove(home.path() / "velto");
    EXPECT_NE(gone.registerApplication().find("No such file"), std::string::npos);
    EXPECT_FALSE(fs::exists(config));

    auto here = item();
    std::ofstream(config) << "a file where the folder should be";
    EXPECT_NE(here.registerApplication(), "");
    EXPECT_EQ(here.unregisterApplication(), "");
    fs::remove(config);
    fs::create_directories(here.file() / "a folder where the file should be");
    EXPECT_NE(here.registerApplication(), "");
    EXPECT_NE(here.unregisterApplication(), "");
    EXPECT_FALSE(fs::exists(here.file().string() + ".new"));
}

} // namespace
} // namespace velto::test
