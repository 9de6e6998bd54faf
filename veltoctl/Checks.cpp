#include "veltoctl/Checks.h"

#include "VeltoApp/drivers/DriverState.h"
#include "VeltoPlatform/Accessibility.h"
#include "VeltoPlatform/AdminRights.h"
#include "VeltoPlatform/AudioHardware.h"
#include "VeltoPlatform/MicrophoneAccess.h"
#include "VeltoPlatform/Platform.h"
#include "VeltoPlatform/Preferences.h"
#include "VeltoPlatform/SecretStore.h"
#include "VeltoPlatform/Workspace.h"
#include "VeltoShared/audio/AudioBridge.h"
#include "VeltoShared/audio/AudioDevices.h"
#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/BackgroundThreads.h"
#include "VeltoShared/core/Clock.h"
#include "VeltoShared/core/Executors.h"
#include "VeltoShared/core/ISO8601.h"
#include "VeltoShared/core/KeychainStore.h"
#include "VeltoShared/voice/KeyValidator.h"
#include "veltoctl/Reply.h"

#include <boost/asio/use_future.hpp>
#include <openssl/x509.h>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace velto::ctl {
namespace {

namespace fs = std::filesystem;
using Is = Finding::Is;

constexpr std::uintmax_t kSpaceForCalls = 100'000'000; // bytes
constexpr const char* kStart = "start it: velto, or velto --headless";

Finding application() {
    if (ControlClient::appIsRunning())
        return {Is::well, "running"};
    return {Is::missing, "not running", kStart};
}

Finding accessibility() {
    if (platform().accessibility->trusted())
        return {Is::well, "switched on"};
    return {Is::missing, platform().accessibility->whyNotTrusted(),
            "gsettings set org.gnome.desktop.interface toolkit-accessibility true, and open programs again"};
}

Finding phoneApp() {
    const auto program = platform().workspace->handlerOf("tel-phoneapp");
    if (!program)
        return {Is::missing, "no program is registered for tel-phoneapp:",
                "register velto-phone (docs/phone.md, \"Starting it\")"};
    if (::access(program->c_str(), X_OK) != 0)
        return {Is::missing, *program + " is not there", "install it, or register another one"};
    return {Is::well, *program};
}

Finding phoneLine() {
    return {Is::advice, "known to the phone app only",
            "look at its window: it says \"No phone line\" without one"};
}

Finding soundServer() {
    if (platform().audioHardware->devices())
        return {Is::well, "answers"};
    return {Is::missing, platform().microphoneAccess->status().reason,
            "start it: systemctl --user start pulseaudio, or pipewire-pulse"};
}

Finding devices() {
    if (!platform().audioHardware->devices())
        return {Is::unknown, "the sound server does not answer", "start it first"};
    std::string absent;
    for (const auto name : {AudioBridge::inputDevice, AudioBridge::agentFeed, AudioBridge::outputDevice})
        if (!AudioDevices::find(name))
            absent += (absent.empty() ? "" : ", ") + std::string(name);
    if (absent.empty())
        return {Is::well, "there"};
    const auto installed = DriverState::installedOnDisk();
    const auto has = [&](const char* driver) {
        return std::ranges::any_of(installed, [&](const auto& name) { return name.starts_with(driver); });
    };
    return {Is::missing, "missing: " + absent,
            has("VeltoLoop") && has("VeltoVoice")
                ? "restart the sound server, which reads drivers when it starts"
                : "install the drivers: Settings → Readiness → Install (docs/drivers.md)"};
}

Finding microphone() {
    if (!platform().audioHardware->devices())
        return {Is::unknown, "the sound server does not answer", "start it first"};
    const auto status = platform().microphoneAccess->status();
    if (status.authorization == MicrophoneAuthorization::authorized)
        return {Is::well, "may be recorded"};
    return {Is::missing, status.reason,
            "let this user record, and give the sound server something to record from"};
}

Finding keyring() {
    const auto state = platform().secretStore->state();
    if (state == "none")
        return {Is::missing, "none on the session bus",
                "start one: gnome-keyring-daemon, KWallet or KeePassXC"};
    if (state.ends_with("not answering"))
        return {Is::missing, state, "restart it"};
    if (state.ends_with("locked"))
        return {Is::advice, state, "unlock it, or answer its question when a call begins"};
    return {Is::well, state};
}

Finding keys() {
    std::string stored;
    bool known = true;
    for (const auto provider : kAllVoiceProviders) {
        const auto status = KeychainStore::holds(keyAccount(provider));
        known = known && (status == SecretStatus::success || status == SecretStatus::notFound);
        if (status == SecretStatus::success)
            stored += (stored.empty() ? "" : ", ") + std::string(rawValue(provider));
    }
    if (!stored.empty())
        return {Is::well, "stored for " + stored};
    if (!known)
        return {Is::unknown, "the keyring does not say", "unlock or start the keyring"};
    return {Is::missing, "none is stored", "veltoctl key set gemini, or openai"};
}

Finding acceptance() {
    const auto reply = ControlClient::request({{"cmd", "readiness"}});
    if (!reply)
        return {Is::advice, "not known while Velto does not run", "start it, or ask with --online"};
    if (Reply::flag(*reply, "apiKeyValid"))
        return {Is::well, "accepted when Velto last asked"};
    return {Is::advice, "no key was accepted when Velto last asked",
            "docs/keys.md, \"Whether a key is valid\""};
}

Finding acceptanceOnline() {
    if (platform().secretStore->state().ends_with("locked"))
        return {Is::unknown, "the keyring is locked", "unlock it"};
    static const auto* const threads =
        new BackgroundThreads; // a request may be under way when the process ends
    static_cast<void>(threads);
    std::string accepted;
    std::string refused;
    for (const auto provider : kAllVoiceProviders) {
        const auto key = KeychainStore::holds(keyAccount(provider)) == SecretStatus::success
                             ? KeychainStore::get(keyAccount(provider))
                             : std::nullopt;
        if (!key)
            continue;
        const bool good =
            asio::co_spawn(Background::executor(), KeyValidator::validate(provider, *key), asio::use_future)
                .get();
        auto& names = good ? accepted : refused;
        names += (names.empty() ? "" : ", ") + std::string(rawValue(provider));
    }
    if (refused.empty() && !accepted.empty())
        return {Is::well, "accepted: " + accepted};
    return {accepted.empty() ? Is::missing : Is::advice,
            refused.empty() ? "no key to ask about" : "not accepted: " + refused,
            "docs/keys.md, \"Whether a key is valid\""};
}

Finding certificates() {
    const char* const file = std::getenv("SSL_CERT_FILE"); // NOLINT(concurrency-mt-unsafe): nothing sets it
    if (file && *file && ::access(file, R_OK) != 0)
        return {Is::missing, std::string("SSL_CERT_FILE names ") + file + ", which cannot be read",
                "unset it"};
    std::error_code error;
    const fs::path folder(::X509_get_default_cert_dir());
    if ((file && *file) || fs::directory_iterator(folder, error) != fs::directory_iterator())
        return {Is::well, file && *file ? file : folder.string()};
    return {Is::missing, folder.string() + " is empty", "install the package ca-certificates"};
}

Finding folders() {
    for (auto folder : {AppPaths::supportToReach(), AppPaths::logsToReach()}) {
        const auto wanted = folder.string();
        while (::access(folder.c_str(), F_OK) != 0 && folder.has_relative_path())
            folder = folder.parent_path();
        if (::access(folder.c_str(), W_OK | X_OK) != 0)
            return {Is::missing, "cannot write in " + wanted, "chown or chmod " + folder.string()};
        std::error_code error;
        const auto space = fs::space(folder, error);
        if (!error && space.available < kSpaceForCalls)
            return {Is::advice, "less than 100 MB are free for " + wanted, "make room"};
    }
    return {Is::well, "writable"};
}

Finding preferences() {
    const auto trouble = platform().preferences->trouble();
    if (trouble.empty())
        return {Is::well, "readable"};
    return {Is::advice, trouble, "repair or remove it; until then the defaults count"};
}

Finding clock() {
    struct stat program {};
    const auto time = Clock::shared().now();
    if (::stat("/proc/self/exe", &program) == 0 &&
        time < std::chrono::system_clock::from_time_t(program.st_mtime) - std::chrono::hours(24))
        return {Is::missing, "it is before this program was made: " + iso8601(time),
                "set it right: no certificate is valid then"};
    return {Is::well, iso8601(time)};
}

Finding leftovers() {
    if (!platform().preferences->boolean("bridgeActive"))
        return {Is::well, "the user's own"};
    const auto status = ControlClient::request({{"cmd", "status"}});
    if (status && Reply::flag(*status, "running"))
        return {Is::well, "switched for the call that is up"};
    return {Is::advice, "a call left them switched", "start Velto again, which puts them back"};
}

Finding administrator() {
    const auto trouble = platform().adminRights->trouble();
    if (trouble.empty())
        return {Is::well, "there"};
    return {Is::advice, trouble, "only installing drivers needs it (docs/admin.md)"};
}

} // namespace

std::vector<Check> checks(bool online) {
    return {{"application", "Velto", application},
            {"accessibility", "Accessibility", accessibility},
            {"phone-app", "Phone app", phoneApp},
            {"phone-line", "Phone line", phoneLine},
            {"sound-server", "Sound server", soundServer},
            {"devices", "Virtual devices", devices},
            {"microphone", "Microphone", microphone},
            {"default-devices", "Default devices", leftovers},
            {"keyring", "Keyring", keyring},
            {"keys", "Keys", keys},
            {"acceptance", "Keys accepted", online ? acceptanceOnline : acceptance},
            {"certificates", "Certificates", certificates},
            {"clock", "Clock", clock},
            {"folders", "Folders", folders},
            {"preferences", "Preferences", preferences},
            {"administrator", "Root helper", administrator}};
}

} // namespace velto::ctl
