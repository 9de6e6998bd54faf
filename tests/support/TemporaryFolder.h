// A folder for the length of a test or a benchmark.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace velto::test {

/// A fresh folder below the system's temporary folder, removed at the end.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "velto-test-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            throw std::runtime_error("no temporary folder");
        path_ = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

} // namespace velto::test
