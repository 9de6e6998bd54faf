// Where the root helper is.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace velto {

struct AdminHelperPlaces {
    std::filesystem::path installed;           ///< which polkit knows as Velto's own
    std::vector<std::filesystem::path> others; ///< of a build that was not installed
};

struct AdminHelperFile {
    std::filesystem::path path; ///< empty: there is none to be used
    std::string trouble;        ///< then, why not
};

/// The first that exists. The installed one must be safe: nobody but root may be able to change it or to put
/// something else in its place; one that is not, or that cannot be looked at, is not used, and none in its
/// stead.
AdminHelperFile findAdminHelper(const AdminHelperPlaces& places);

} // namespace velto
