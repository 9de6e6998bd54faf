// The preferences store: one JSON object of flat, typed values in a file of the user's.
#pragma once

#include "VeltoPlatform/Preferences.h"
#include "VeltoPlatform/linux/JsonFile.h"

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>

namespace velto {

/// Reads the file anew for each question and rewrites it whole for each change (`JsonFile`). Keys and values
/// of other kinds that stand in the file are kept. What could not be written stays in memory for this run and
/// is said to `report`, once a cause.
class LinuxPreferences : public Preferences {
  public:
    using Report = std::function<void(std::string)>;
    explicit LinuxPreferences(std::filesystem::path file, Report report = {});

    std::optional<PreferenceValue> object(const std::string& key) override;
    void set(const std::string& key, PreferenceValue value) override;
    void remove(const std::string& key) override;
    std::string trouble() override;

  private:
    void change(const std::string& key, std::optional<PreferenceValue> value);
    void say(const std::string& problem);

    JsonFile file_;
    Report report_;
    std::mutex mutex_;
    std::map<std::string, std::optional<PreferenceValue>> unwritten_;
    std::string lastProblem_;
};

} // namespace velto
