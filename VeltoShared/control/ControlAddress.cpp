// Cutting the path to what an address holds.
#include "VeltoShared/control/ControlAddress.h"

#include <algorithm>
#include <cstddef>

namespace velto {

static_assert(ControlAddress::kLength == offsetof(sockaddr_un, sun_path) + ControlAddress::kLongestPath + 1);
static_assert(sizeof(sockaddr_un::sun_path) > ControlAddress::kLongestPath);

ControlAddress::ControlAddress(const std::filesystem::path& path) {
    address_.sun_family = AF_UNIX;
    const auto& bytes = path.native();
    std::copy_n(bytes.begin(), std::min(bytes.size(), kLongestPath), address_.sun_path);
}

} // namespace velto
