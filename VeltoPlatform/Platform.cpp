#include "VeltoPlatform/Platform.h"

namespace velto {
namespace {

Platform& installed() {
    static Platform platform;
    return platform;
}

} // namespace

const Platform& platform() {
    return installed();
}

void installPlatform(const Platform& platform) {
    installed() = platform;
}

} // namespace velto
