#include "VeltoPlatform/linux/RevealFile.h"

#include "VeltoPlatform/linux/Bus.h"
#include "VeltoPlatform/linux/OpenURL.h"

#include <algorithm>
#include <string_view>

namespace velto {
namespace {

namespace fs = std::filesystem;

std::string fileURL(const fs::path& path) {
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char letter : path.native()) {
        const auto byte = static_cast<unsigned char>(letter);
        if (kPlain.find(letter) != kPlain.npos)
            url += letter;
        else
            url.append({'%', kDigits[byte >> 4U], kDigits[byte & 15U]});
    }
    return url;
}

bool showItem(const fs::path& path, std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    const auto bus = Bus::open(Bus::sessionAddress(), limit);
    if (!bus)
        return false;
    const auto request = bus->method("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                     "org.freedesktop.FileManager1", "ShowItems");
    sd_bus_message_append(request.get(), "ass", 1, fileURL(path).c_str(), "");
    return static_cast<bool>(bus->call(
        request, std::chrono::duration_cast<Bus::Limit>(deadline - std::chrono::steady_clock::now())));
}

} // namespace

bool revealFile(const fs::path& path, std::chrono::milliseconds limit) {
    std::error_code error;
    const auto whole = fs::absolute(path, error).lexically_normal();
    if (error || !fs::exists(fs::symlink_status(whole, error)))
        return false;
    return showItem(whole, std::max(limit - kToOpenURL, limit / 2)) ||
           openURL(fileURL(whole.parent_path()), std::min(kToOpenURL, limit / 2));
}

} // namespace velto
