// The login item by the desktops' autostart convention.
#pragma once

#include "VeltoPlatform/LoginItem.h"

#include <filesystem>
#include <string_view>

namespace velto {

/// A desktop file in the user's autostart folder, by the convention of freedesktop.org ("Desktop Application
/// Autostart").
class LinuxLoginItem : public LoginItem {
  public:
    /// `config`: the user's folder of configuration. `bundleID` names the file, `program` is what is started,
    /// absolute.
    LinuxLoginItem(const std::filesystem::path& config, std::string_view bundleID,
                   std::filesystem::path program);

    /// Replaces an entry that a desktop has switched off, or that names another program.
    std::string registerApplication() override;
    std::string unregisterApplication() override;

    const std::filesystem::path& file() const { return file_; }

  private:
    std::string write(const std::string& content) const;

    std::filesystem::path file_;
    std::filesystem::path program_;
};

} // namespace velto
