// Makes the phone app of a private desktop known as the handler of phone numbers.
#pragma once

#include "rehearsal/process/PrivateFolders.h"

#include <filesystem>

namespace velto::rehearsal {

struct PhoneRegistration {
    std::filesystem::path program; ///< velto-phone
    Environment environment;       ///< what it finds beside that of whoever opens a number
};

/// Writes the desktop file and the choice of it as the default for "tel-phoneapp:" into the private folders
/// that `folders` (`makePrivateFolders`) names; false when that fails.
bool registerPhone(const PhoneRegistration& phone, const Environment& folders);

/// A word of an "Exec" line as the Desktop Entry Specification wants it, with whatever characters.
std::string execWord(const std::string& text);

} // namespace velto::rehearsal
