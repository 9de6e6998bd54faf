#include "VeltoApp/admin/Admin.h"

#include "VeltoApp/admin/RunAdmin.h"
#include "VeltoPlatform/AdminRights.h"
#include "VeltoShared/core/Utf8.h"

#include <cstdlib>
#include <memory>

namespace velto::Admin {
namespace {

struct Free {
    void operator()(char* text) const { std::free(text); }
};

} // namespace

Helper::Result run(const std::string& command) {
    Helper::Result result;
    char* written = nullptr;
    // Half of a command line may mean anything.
    result.status = command.find('\0') == command.npos ? velto_run_admin(command.c_str(), &written)
                                                       : AdminStatus::badCommand;
    const std::unique_ptr<char, Free> output(written);
    if (output && isValidUtf8(output.get()))
        result.stdout = output.get();
    if (result.status != AdminStatus::success)
        result.stderr = "authorization failed (" + std::to_string(result.status) + ")";
    return result;
}

} // namespace velto::Admin
