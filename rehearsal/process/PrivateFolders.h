// A user's folders below one folder, and the environment that leads programs there.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace velto::rehearsal {

using Environment = std::map<std::string, std::string>;

/// Makes home, data, state, config, cache, run and tmp, of mode 0700. Answers the whole environment of a
/// program in them: nothing in it leads back to the user's own session, display or buses. None when a folder
/// cannot be made.
std::optional<Environment> makePrivateFolders(const std::filesystem::path& folder);

} // namespace velto::rehearsal
