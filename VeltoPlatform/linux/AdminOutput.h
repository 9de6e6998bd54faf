// What a command writes that the root helper runs.
#pragma once

#include "VeltoPlatform/AdminRights.h"
#include "VeltoPlatform/TroubleReport.h"
#include "VeltoPlatform/linux/AdminHelperLink.h"

namespace velto {

class AdminOutput : public AdminPipe {
  public:
    /// `link` runs a command. `trouble` gets a line when that does not succeed.
    AdminOutput(std::shared_ptr<AdminHelperLink> link, std::shared_ptr<TroubleReport> trouble)
        : link_(std::move(link)), trouble_(std::move(trouble)) {}
    ~AdminOutput() override;

    std::size_t read(std::span<char> bytes) override;

  private:
    void receive();

    std::shared_ptr<AdminHelperLink> link_; ///< none once the command has ended
    std::shared_ptr<TroubleReport> trouble_;
    std::string waiting_;
    std::size_t read_ = 0; ///< of those
};

} // namespace velto
