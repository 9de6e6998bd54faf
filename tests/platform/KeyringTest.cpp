// Keys in a real keyring, in one that behaves badly, and where there is none.
#include "VeltoPlatform/linux/LinuxSecretStore.h"
#include "VeltoPlatform/simulated/SimulatedStores.h"
#include "rehearsal/PrivateDesktop.h"
#include "tests/support/FakeSecretService.h"
#include "tests/support/TestComputer.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <thread>

namespace velto::test {
namespace {

using namespace std::chrono_literals;
using rehearsal::PrivateDesktop;
using enum SecretStatus;

const std::string kService = "org.velto.Velto.api-keys";
const std::string kSecret = "sk-not-to-be-seen";

/// A private session bus, with the real keyring where it is asked for, and the store that asks it.
struct Keyring : ::testing::Test {
    TemporaryFolder folder;
    std::unique_ptr<PrivateDesktop> desktop;
    std::mutex mutex;
    std::vector<std::string> reports;
    TroubleReport::Report report = [this](const std::string& line) {
        const std::lock_guard lock(mutex);
        reports.push_back(line);
    };
    SecretServiceLimits limits{.operation = 5s, .prompt = 300ms, .peace = 60s};

    void startSession(bool keyring) {
        auto environment = *rehearsal::makePrivateFolders(folder.path());
        // The bus starts no keyring by itself.
        const auto services = folder.path() / "data/dbus-1/services";
        std::filesystem::create_directories(services);
        std::ofstream(services / "org.freedesktop.secrets.service")
            << "[D-BUS Service]\nName=org.freedesktop.secrets\nExec=/bin/false\n";
        auto started = PrivateDesktop::start(folder.path(), environment, {.keyring = keyring});
        ASSERT_TRUE(started) << started.error().description;
        desktop = std::move(*started);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", desktop->busAddress().c_str(), 1);
    }
    SecretServiceStore store() { return SecretServiceStore(report, limits); }
    /// What `find` answers, and what it found.
    std::pair<SecretStatus, std::string> find(SecretStore& store, const std::string& account = "one") {
        std::string data;
        const auto status = store.find(kService, account, data);
        return {status, data};
    }
    static SecretStatus add(SecretStore& store, const std::string& data, const std::string& account = "one") {
        return store.add({kService, account, data, {}});
    }
    /// Whatever bytes it is given, and only once.
    void keepsAll(SecretStore& store) {
        using namespace std::string_literals;
        for (const auto& data :
             {""s, kSecret, "a\r\n b\n"s, "\0x\0"s, "schlüssel\xff"s, std::string(100'000, 'k')}) {
            EXPECT_EQ(add(store, data), success);
            EXPECT_TRUE(find(store) == std::pair(success, data)) << data.size();
            EXPECT_EQ(add(store, "other"), duplicate);
            EXPECT_EQ(store.remove(kService, "one"), success);
            EXPECT_EQ(find(store).first, notFound);
            EXPECT_EQ(store.remove(kService, "one"), notFound);
        }
        EXPECT_EQ(add(store, "", "\xff"), failed);
    }
};

using Found = std::pair<SecretStatus, std::string>;

TEST_F(Keyring, KeepsWhatItWasGivenBeyondItsRestart) {
    startSession(true);
    auto secrets = store();
    keepsAll(secrets);
    ASSERT_EQ(add(secrets, kSecret), success);
    ASSERT_EQ(secrets.add({kService, "two", "kept", "Velto API key"}), success);
    EXPECT_EQ(secrets.remove("org.velto.Other", "one"), notFound);
    ASSERT_EQ(secrets.remove(kService, "two"), success);
    EXPECT_EQ(find(secrets), Found(success, kSecret));
    EXPECT_EQ(add(secrets, "", std::string("one\0x", 5)), failed);

    ASSERT_TRUE(desktop->restartKeyring(true));
    EXPECT_EQ(find(secrets), Found(success, kSecret));
    ASSERT_TRUE(desktop->restart());
    EXPECT_EQ(find(secrets), Found(success, kSecret));
    EXPECT_EQ(secrets.state(), "system keyring");
    for (const auto& line : reports)
        EXPECT_EQ(line.find("one"), std::string::npos) << line;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
        EXPECT_FALSE(entry.is_regular_file() && readFile(entry).find(kSecret) != std::string::npos)
            << entry.path();
}

TEST_F(Keyring, ALockedOneWithNobodyThereIsAskedOnce) {
    startSession(true);
    auto secrets = store();
    ASSERT_EQ(add(secrets, kSecret), success);
    ASSERT_TRUE(desktop->restartKeyring(false));
    EXPECT_EQ(secrets.state(), "system keyring, locked");
    EXPECT_EQ(secrets.holds(kService, "one"), success);
    EXPECT_EQ(secrets.holds(kService, "none"), locked);
    EXPECT_TRUE(reports.empty()); // nobody was asked
    EXPECT_EQ(find(secrets).first, locked);
    EXPECT_EQ(add(secrets, kSecret), locked);
    EXPECT_EQ(secrets.remove(kService, "one"), locked);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_TRUE(reports.front().starts_with("keyring: locked, and the prompt was ")) << reports.front();
    // It is the prompts that rest, not the keyring: unlocked by other hands, it is used at once.
    ASSERT_TRUE(desktop->restartKeyring(true));
    EXPECT_EQ(find(secrets), Found(success, kSecret));
}

TEST_F(Keyring, AStoppedOneFailsInTimeAndAMissingOneAtOnce) {
    startSession(true);
    auto secrets = store();
    SecretServiceStore impatient(report, {.operation = 100ms});
    desktop->keyring()->signal(SIGSTOP);
    EXPECT_EQ(find(impatient).first, failed);
    EXPECT_EQ(impatient.state(), "system keyring, not answering");
    desktop->keyring()->kill();
    EXPECT_EQ(find(secrets).first, unavailable);
    EXPECT_EQ(secrets.state(), "none");
    desktop->bus()->signal(SIGSTOP);
    SecretServiceStore late(report, {.operation = 100ms});
    EXPECT_EQ(find(late).first, failed);
    desktop->bus()->kill();
    EXPECT_EQ(find(secrets).first, unavailable);
    EXPECT_EQ(secrets.remove(kService, "one"), unavailable);
    ASSERT_EQ(reports.size(), 4u);
    EXPECT_EQ(reports[0], "keyring: opening a session: no answer within 0.100 s");
    EXPECT_EQ(reports[3], "keyring: there is no session bus");
}

TEST_F(Keyring, PromptsAreFollowed) {
    startSession(false);
    auto secrets = store();
    {
        const FakeSecretService fake(desktop->busAddress(), {.locked = true, .asksToDelete = true});
        EXPECT_EQ(find(secrets), Found(success, FakeSecretService::key));
        EXPECT_EQ(secrets.remove(kService, "one"), success);
        EXPECT_FALSE(fake.itemExists());
        EXPECT_EQ(fake.prompts(), 2);
    }
    {
        const FakeSecretService fake(desktop->busAddress(), {.alias = "login", .lockedItem = true});
        EXPECT_EQ(find(secrets), Found(success, FakeSecretService::key));
    }
    {
        FakeSecretService fake(desktop->busAddress(), {.alias = ""});
        EXPECT_EQ(find(secrets).first, notFound);
        EXPECT_EQ(secrets.remove(kService, "one"), notFound);
        EXPECT_EQ(fake.prompts(), 0);
        EXPECT_EQ(add(secrets, kSecret), duplicate); // the new one has the fake's item
        EXPECT_EQ(fake.prompts(), 1);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(Keyring, ARefusedPromptIsNotRepeatedForAWhile) {
    startSession(false);
    using User = FakeSecretService::User;
    for (const auto& [user, why] : {std::pair(User::dismisses, "dismissed or could not be shown"),
                                    std::pair(User::isAway, "not answered within 0.300 s")}) {
        FakeSecretService fake(desktop->busAddress(), {.locked = true, .user = user});
        auto secrets = store();
        reports.clear();
        std::thread other([&] { EXPECT_EQ(find(secrets, "two").first, locked); });
        EXPECT_EQ(find(secrets).first, locked);
        other.join();
        EXPECT_EQ(fake.prompts(), 1);
        EXPECT_EQ(reports, std::vector{std::string("keyring: locked, and the prompt was ") + why});
        // An answer that comes late counts.
        if (user == User::isAway) {
            fake.decide(User::answers);
            EXPECT_EQ(find(secrets).first, success);
            EXPECT_EQ(fake.prompts(), 1);
        }
    }
    FakeSecretService fake(desktop->busAddress(), {.asksToDelete = true, .user = User::isAway});
    SecretServiceStore restless(report, {.operation = 5s, .prompt = 50ms, .peace = 0ms});
    EXPECT_EQ(restless.remove(kService, "one"), locked);
    EXPECT_EQ(restless.remove(kService, "one"), locked);
    EXPECT_EQ(fake.prompts(), 1); // which is still on the screen
    fake.decide(User::dismisses);
    EXPECT_EQ(restless.remove(kService, "one"), locked);
    EXPECT_EQ(fake.prompts(), 2);
    EXPECT_TRUE(fake.itemExists());
    EXPECT_EQ(find(restless).first, success);
}

TEST_F(Keyring, OneThatEndsOrFallsSilentHalfwayFails) {
    startSession(false);
    limits.operation = 200ms;
    for (const char* step : {"ReadAlias", "Get", "Unlock", "Prompt", "SearchItems", "GetSecret"})
        for (const bool dies : {true, false}) {
            const FakeSecretService fake(
                desktop->busAddress(),
                {.locked = true, .diesAt = dies ? step : "", .silentAt = dies ? "" : step});
            auto secrets = store();
            EXPECT_EQ(find(secrets).first, failed) << step << dies;
        }
    // With the prompt on the screen.
    limits = {.operation = 5s, .prompt = 20s};
    auto patient = store();
    std::optional<FakeSecretService> fake;
    fake.emplace(desktop->busAddress(),
                 FakeSecretService::Behaviour{.locked = true, .user = FakeSecretService::User::isAway});
    std::thread asking([&] { EXPECT_EQ(find(patient).first, failed); });
    while (fake->prompts() == 0)
        std::this_thread::yield();
    fake.reset();
    asking.join();
}

/// The application's store, with a file for keys in a folder of its own.
struct KeyFile : Keyring {
    SimulatedPreferences preferences;
    std::filesystem::path file = folder.path() / "data/org.velto.Velto/keys/keys.json";
    LinuxSecretStore secrets{preferences, file, report, limits};

    void SetUp() override { ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1); }
    void allow() { preferences.set(LinuxSecretStore::kFilePreference, true); }
    static unsigned mode(const std::filesystem::path& path) {
        return static_cast<unsigned>(std::filesystem::status(path).permissions());
    }
};

TEST_F(KeyFile, TakesKeysOnlyWhereItIsAllowedAndNoKeyringIsThere) {
    EXPECT_EQ(add(secrets, kSecret), unavailable);
    EXPECT_EQ(secrets.remove(kService, "one"), unavailable);
    EXPECT_EQ(secrets.state(), "none");
    EXPECT_FALSE(std::filesystem::exists(file.parent_path()));
    allow();
    EXPECT_EQ(find(secrets).first, notFound);
    EXPECT_EQ(add(secrets, kSecret), success);
    EXPECT_EQ(add(secrets, ""), duplicate);
    EXPECT_EQ(find(secrets), Found(success, kSecret));
    EXPECT_EQ(secrets.state(), "file " + file.string() + ", not encrypted");
    EXPECT_EQ(mode(file), 0600u);
    EXPECT_EQ(mode(file.parent_path()), 0700u);

    startSession(true);
    EXPECT_EQ(find(secrets), Found(success, kSecret));
    EXPECT_EQ(add(secrets, "in the keyring"), success);
    EXPECT_EQ(find(secrets).second, "in the keyring");
    EXPECT_EQ(secrets.state(), "system keyring");
    preferences.remove(LinuxSecretStore::kFilePreference);
    EXPECT_EQ(secrets.remove(kService, "one"), success);
    allow();
    EXPECT_EQ(find(secrets).first, notFound);
    ASSERT_TRUE(desktop->restartKeyring(false));
    EXPECT_EQ(add(secrets, kSecret), locked);
}

TEST_F(KeyFile, KeepsOthersOutAndWhatItCannotRead) {
    FileSecretStore keys(file, report);
    keepsAll(keys);
    ASSERT_EQ(add(keys, kSecret), success);
    reports.clear();
    std::filesystem::permissions(file, std::filesystem::perms(0644));
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0755));
    EXPECT_EQ(find(keys), Found(success, kSecret));
    EXPECT_EQ(mode(file) | mode(file.parent_path()), 0700u);
    EXPECT_EQ(reports.size(), 2u);

    for (const char* broken :
         {"{\"keys\":[", "{\"keys\":7}", R"({"keys":[{"service":"s","account":"a"}]})"}) {
        std::ofstream(file) << broken;
        std::string data;
        EXPECT_EQ(keys.find("s", "a", data), failed);
        EXPECT_EQ(readFile(file), broken);
    }
    std::ofstream(file) << "{\"keys\":[";
    EXPECT_EQ(add(keys, kSecret), success);
    EXPECT_EQ(readFile(file.string() + ".broken"), "{\"keys\":[");

    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(file.c_str(), 1, 1), 0);
        const auto before = readFile(file);
        EXPECT_EQ(find(keys).first, failed);
        EXPECT_EQ(add(keys, kSecret, "two"), failed);
        EXPECT_EQ(readFile(file), before);
    }
    for (const auto& line : reports)
        EXPECT_EQ(line.find(kSecret), std::string::npos) << line;
}

TEST_F(KeyFile, TwoProcessesLoseNothing) {
    const auto write = [this](const char* writer) {
        FileSecretStore mine(file, {});
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(mine.add({kService, writer + std::to_string(i), kSecret, {}}), success);
    };
    const pid_t child = ::fork();
    write(child == 0 ? "child" : "parent");
    if (child == 0)
        ::_exit(HasFailure() ? 1 : 0);
    int status = -1;
    EXPECT_TRUE(::waitpid(child, &status, 0) == child && status == 0) << status;
    FileSecretStore keys(file, {});
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(find(keys, (i % 2 ? "child" : "parent") + std::to_string(i / 2)), Found(success, kSecret));
}

} // namespace
} // namespace velto::test
