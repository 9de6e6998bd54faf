// One JSON object in a file of the user's that several processes may share.
#pragma once

#include <boost/json/object.hpp>

#include <filesystem>
#include <functional>
#include <string>

namespace velto {

/// Read anew for each question and rewritten whole for each change (lock file, temporary, flush, rename), so
/// that a crash leaves the old or the new file. The file is its user's alone (mode 600). Any thread.
class JsonFile {
  public:
    enum class Content { absent, sound, broken, unreadable };
    /// Gets one line when a file that is not such an object is set aside as "<file>.broken".
    using SetAside = std::function<void(const std::string&)>;

    JsonFile(std::filesystem::path file, SetAside setAside);

    const std::filesystem::path& path() const { return file_; }
    /// `values` is set for sound content only; `errno` says why content is unreadable.
    Content read(boost::json::object& values) const;
    /// Hands what the file holds to `change`, alone among all processes, and writes it back unless that
    /// answers false. A broken file is set aside first, never overwritten; one that cannot be read is left
    /// alone. Answers what went wrong; empty: nothing.
    std::string update(const std::function<bool(boost::json::object&)>& change) const;

  private:
    std::string write(const std::string& content) const;

    std::filesystem::path file_;
    SetAside setAside_;
};

} // namespace velto
