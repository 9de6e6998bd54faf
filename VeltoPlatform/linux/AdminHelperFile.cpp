#include "VeltoPlatform/linux/AdminHelperFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace velto {
namespace {

namespace fs = std::filesystem;

bool onlyRootChanges(const fs::path& path) {
    struct stat found {};
    return ::stat(path.c_str(), &found) == 0 && found.st_uid == 0 &&
           (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// The file and every folder on the way to it.
bool isSafe(const fs::path& file) {
    std::error_code error;
    // A link on the way could be another user's.
    if (fs::canonical(file, error) != file || error)
        return false;
    for (auto path = file; path != path.root_path(); path = path.parent_path())
        if (!onlyRootChanges(path))
            return false;
    return onlyRootChanges(file.root_path());
}

bool isProgram(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

} // namespace

AdminHelperFile findAdminHelper(const AdminHelperPlaces& places) {
    std::error_code error;
    const auto& installed = places.installed;
    const auto found = fs::symlink_status(installed, error);
    if (found.type() == fs::file_type::none)
        return {{}, "cannot look at " + installed.string() + ": " + error.message() + "; install Velto anew"};
    if (fs::exists(found)) {
        if (!isSafe(installed))
            return {{},
                    "not using " + installed.string() +
                        ", which others than root can change; install Velto anew"};
        if (isProgram(installed))
            return {installed, {}};
    }
    const auto other = std::find_if(places.others.begin(), places.others.end(), isProgram);
    if (other != places.others.end())
        return {*other, {}};
    return {{}, "there is no helper at " + installed.string() + "; install Velto anew"};
}

} // namespace velto
