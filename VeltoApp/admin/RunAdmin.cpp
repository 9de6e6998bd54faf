#include "VeltoApp/admin/RunAdmin.h"

#include "VeltoPlatform/AdminRights.h"
#include "VeltoPlatform/Platform.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace velto {
namespace {

constexpr std::size_t kChunk = 4096;

std::int32_t authorize(AdminRights& rights) {
    if (const auto status = rights.createAuthorization(); status != AdminStatus::success)
        return status;
    const auto status = rights.preauthorize();
    if (status != AdminStatus::success)
        rights.freeAuthorization();
    return status;
}

/// For the caller to free; null when there is no memory.
char* readWhole(AdminPipe& pipe) {
    std::size_t capacity = kChunk;
    auto* buffer = static_cast<char*>(std::malloc(capacity));
    if (!buffer)
        return nullptr;
    std::size_t length = 0;
    std::array<char, kChunk> chunk{};
    while (const auto count = pipe.read(chunk)) {
        const auto needed = length + count + 1;
        if (needed > capacity) {
            auto* const grown = static_cast<char*>(std::realloc(buffer, needed * 2));
            if (!grown)
                break;
            buffer = grown;
            capacity = needed * 2;
        }
        std::memcpy(buffer + length, chunk.data(), count);
        length += count;
    }
    buffer[length] = '\0';
    return buffer;
}

} // namespace
} // namespace velto

extern "C" std::int32_t velto_run_admin(const char* command, char** output) {
    using namespace velto;
    static std::mutex oneAtATime;
    const std::lock_guard lock(oneAtATime);
    if (output)
        *output = nullptr;
    AdminRights& rights = *platform().adminRights;
    if (!rights.hasAuthorization())
        if (const auto status = authorize(rights); status != AdminStatus::success)
            return status;
    std::unique_ptr<AdminPipe> pipe;
    const auto status = rights.execute(command, pipe);
    if (status == AdminStatus::denied || status == AdminStatus::cancelled)
        rights.freeAuthorization();
    if (status == AdminStatus::success && output && pipe)
        *output = readWhole(*pipe);
    return status;
}
