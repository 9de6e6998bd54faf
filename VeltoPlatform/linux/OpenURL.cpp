#include "VeltoPlatform/linux/OpenURL.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <atomic>
#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace velto {
namespace {

template <class T>
struct Unref {
    void operator()(T* object) const { g_object_unref(object); }
};
template <class T>
using Ref = std::unique_ptr<T, Unref<T>>;

/// A program that ends so soon has handed the URL to one that was running already.
constexpr std::chrono::milliseconds kToHandOver{150};

/// Between the caller, who may stop waiting, and the thread that opens.
struct Opening {
    std::string url;
    std::mutex mutex;
    std::condition_variable changed;
    std::optional<bool> done;
    std::atomic<bool> abandoned = false;
    std::atomic<bool> launched = false;
};

/// The scheme's handler, without touching what GIO may load for foreign file systems unless it is a file.
Ref<GAppInfo> handler(const std::string& url) {
    const char* const scheme = g_uri_peek_scheme(url.c_str());
    if (!scheme)
        return nullptr;
    Ref<GAppInfo> found(g_app_info_get_default_for_uri_scheme(scheme));
    if (!found && std::string_view(scheme) == "file") {
        const Ref<GFile> file(g_file_new_for_uri(url.c_str()));
        found.reset(g_file_query_default_handler(file.get(), nullptr, nullptr));
    }
    return found;
}

/// In the new process, before it becomes the handler: nothing here may allocate or lock.
void becomeIndependent(void* opening) {
    if (static_cast<const Opening*>(opening)->abandoned.load())
        ::_exit(127);
    ::setsid();
    sigset_t none;
    ::sigemptyset(&none);
    ::pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

/// Returns when the process has ended, or stays.
void letHandOver(GDesktopAppInfo*, GPid pid, void* opening) {
    static_cast<Opening*>(opening)->launched = true;
    const int process = static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
    if (process < 0)
        return;
    pollfd ended{process, POLLIN, 0};
    ::poll(&ended, 1, static_cast<int>(kToHandOver.count()));
    ::close(process);
}

bool launch(Opening& opening) {
    const auto application = handler(opening.url);
    if (!application || !G_IS_DESKTOP_APP_INFO(application.get()) || opening.abandoned)
        return false;
    GList urls{opening.url.data(), nullptr, nullptr};
    constexpr auto kFlags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                     G_SPAWN_STDERR_TO_DEV_NULL);
    return g_desktop_app_info_launch_uris_as_manager(G_DESKTOP_APP_INFO(application.get()), &urls, nullptr,
                                                     kFlags, becomeIndependent, &opening, letHandOver,
                                                     &opening, nullptr) != FALSE;
}

} // namespace

bool openURL(const std::string& url, std::chrono::milliseconds limit) {
    if (url.find('\0') != std::string::npos)
        return false;
    const auto opening = std::make_shared<Opening>();
    opening->url = url;
    try {
        // GIO waits without a limit for a session bus that does not answer. The thread then stays with it,
        // and touches nothing but what it owns with us.
        std::thread([opening] {
            const bool launched = launch(*opening);
            const std::lock_guard lock(opening->mutex);
            opening->done = launched;
            opening->changed.notify_all();
        }).detach();
    } catch (const std::system_error&) {
        return false;
    }
    std::unique_lock lock(opening->mutex);
    if (!opening->changed.wait_for(lock, limit, [&] { return opening->done.has_value(); }))
        opening->abandoned = true;
    return opening->done.value_or(opening->launched);
}

std::optional<std::string> handlerOf(const std::string& scheme) {
    const Ref<GAppInfo> found(g_app_info_get_default_for_uri_scheme(scheme.c_str()));
    // GIO's own word for the executable keeps the quotes of its line.
    const char* const line = found ? g_app_info_get_commandline(found.get()) : nullptr;
    char** parsed = nullptr;
    if (!line || !g_shell_parse_argv(line, nullptr, &parsed, nullptr))
        return std::nullopt;
    const std::unique_ptr<char*, decltype(&g_strfreev)> words(parsed, g_strfreev);
    const std::unique_ptr<char, decltype(&g_free)> path(g_find_program_in_path(*parsed), g_free);
    return std::string(path ? path.get() : *parsed);
}

} // namespace velto
