// The list of finished calls, newest first, mirrored to one JSON file.
#pragma once

#include "VeltoApp/history/CallRecord.h"
#include "VeltoShared/core/Published.h"

#include <filesystem>
#include <vector>

namespace velto {

/// Main thread only. A file that is missing, cannot be read or is no list of records gives an empty list; a
/// failed save leaves the list as it is. Neither is reported.
///
/// Saving is synchronous. The new content is written to a file beside the history, flushed to the disk and
/// renamed over it, so that whatever happens meanwhile the file holds the whole old list or the whole new
/// one. Where the folder refuses a second file, the history is overwritten in place. A file that was there
/// and could not be understood is not overwritten but kept under a name of its own
/// ("history.json.unreadable", with a number behind it where that is taken) when the first save comes. A new
/// file is its user's alone (mode 600); an existing one keeps its mode, and a symbolic link its target's
/// place.
class CallHistoryStore : public ObservableObject {
  public:
    /// Over AppPaths::historyFile(), loaded when first asked for.
    static CallHistoryStore& shared();
    /// Loads the file.
    explicit CallHistoryStore(std::filesystem::path url);

    Published<std::vector<CallRecord>> records{*this};
    const std::filesystem::path& url() const { return url_; }

    /// Each changes `records` and saves.
    void insertFirst(CallRecord record);
    void removeAll();
    /// Removes every record of this id.
    void remove(const UUID& id);

    void save();

  private:
    void load();
    /// False when the file could not be moved away.
    bool keepAside();

    std::filesystem::path url_;
    bool unreadable_ = false;
};

} // namespace velto
