#include "VeltoPlatform/linux/PolkitAdmin.h"

#include "VeltoPlatform/linux/AdminOutput.h"
#include "VeltoPlatform/linux/AdminProtocol.h"

namespace velto {

std::int32_t PolkitAdmin::createAuthorization() {
    const auto helper = findAdminHelper(places_);
    if (helper.path.empty())
        return fail(AdminStatus::noHelper, helper.trouble);
    helper_ = helper.path;
    authorized_ = true;
    return AdminStatus::success;
}

std::int32_t PolkitAdmin::preauthorize() {
    PkexecEnd why{};
    link_ = AdminHelperLink::start(helper_, why);
    return link_ ? AdminStatus::success : fail(why.status, why.trouble);
}

std::int32_t PolkitAdmin::execute(const std::string& commandLine, std::unique_ptr<AdminPipe>& pipe) {
    if (commandLine.size() > AdminProtocol::kLongestCommand || commandLine.find('\0') != commandLine.npos)
        return fail(AdminStatus::badCommand, "a command is too long, or no text");
    // One whose output nobody wanted may still be running.
    while (link_ && link_->busy())
        link_->receive();
    if (!link_ || !link_->run(commandLine)) {
        if (const auto status = preauthorize(); status != AdminStatus::success)
            return status;
        if (!link_->run(commandLine))
            return fail(AdminStatus::failed, "the helper ended before it took a command");
    }
    pipe = std::make_unique<AdminOutput>(link_, trouble_);
    return AdminStatus::success;
}

void PolkitAdmin::freeAuthorization() {
    authorized_ = false;
    link_.reset();
}

std::int32_t PolkitAdmin::fail(std::int32_t status, const std::string& trouble) {
    trouble_->note(trouble + " (" + std::to_string(status) + ")");
    return status;
}

} // namespace velto
