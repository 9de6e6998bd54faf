// Makes the phone app of a private desktop known as the handler of phone numbers.
#pragma once

#include "VeltoShared/core/Result.h"
#include "rehearsal/process/PrivateFolders.h"

#include <filesystem>

namespace velto::rehearsal {

struct PhoneRegistration {
    std::filesystem::path program; ///< velto-phone
    Environment environment;       ///< what it finds beside that of whoever opens a number
};

/// Writes the desktop file and the choice of it as the default for "tel-phoneapp:" into the private folders
/// that `folders` (`makePrivateFolders`) names. Paths and values may hold any character but control ones.
Result<> registerPhone(const PhoneRegistration& phone, const Environment& folders);

} // namespace velto::rehearsal
