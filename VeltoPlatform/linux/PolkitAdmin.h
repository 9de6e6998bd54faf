// Administrator rights through polkit (docs/admin.md).
#pragma once

#include "VeltoPlatform/AdminRights.h"
#include "VeltoPlatform/TroubleReport.h"
#include "VeltoPlatform/linux/AdminHelperFile.h"
#include "VeltoPlatform/linux/AdminHelperLink.h"

namespace velto {

/// The grant is a root helper that runs: it lasts until `freeAuthorization`, this object's or the process's
/// end, and is asked for again when the helper was killed. The commands' standard error comes with their
/// output. A command's end is the end of its pipe, whatever it left running; a command whose helper went
/// before it did has a last line that says so. When the process ends, so does a command that runs.
class PolkitAdmin : public AdminRights {
  public:
    /// `report` gets a line for everything that is not success, without the command; on the operation's
    /// thread.
    PolkitAdmin(AdminHelperPlaces places, TroubleReport::Report report)
        : places_(std::move(places)), trouble_(std::make_shared<TroubleReport>("admin", std::move(report))) {}

    bool hasAuthorization() override { return authorized_; }
    std::int32_t createAuthorization() override;
    std::int32_t preauthorize() override;
    std::int32_t execute(const std::string& commandLine, std::unique_ptr<AdminPipe>& pipe) override;
    std::string trouble() override { return findAdminHelper(places_).trouble; }
    void freeAuthorization() override;

  private:
    std::int32_t fail(std::int32_t status, const std::string& trouble);

    AdminHelperPlaces places_;
    std::shared_ptr<TroubleReport> trouble_; ///< the pipes have it, too
    bool authorized_ = false;
    std::filesystem::path helper_;
    std::shared_ptr<AdminHelperLink> link_;
};

} // namespace velto
