#include "VeltoPlatform/linux/InstallTree.h"

namespace velto::InstallTree {
namespace {

namespace fs = std::filesystem;

fs::path besidePrograms(const fs::path& relative) {
    const auto here = programs();
    return here.empty() ? fs::path() : here.parent_path() / relative;
}

} // namespace

fs::path programs() {
    std::error_code error;
    // A replaced program's link ends with " (deleted)"; its folder is the same.
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

fs::path helpers() {
    return besidePrograms("libexec/velto");
}

fs::path resources() {
    std::error_code error;
    auto bundle = besidePrograms("Resources");
    return fs::is_directory(bundle, error) ? bundle : besidePrograms("share/velto");
}

} // namespace velto::InstallTree
