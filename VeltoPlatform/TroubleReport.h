// Tells one trouble once, until it changes or is over.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <utility>

namespace velto {

/// Any thread.
class TroubleReport {
  public:
    using Report = std::function<void(const std::string&)>;
    /// `title` precedes each line: "keyring".
    TroubleReport(std::string title, Report report) : title_(std::move(title)), report_(std::move(report)) {}

    /// Empty: the trouble is over.
    void tell(const std::string& trouble) {
        {
            std::lock_guard lock(mutex_);
            if (trouble == std::exchange(last_, trouble) || trouble.empty())
                return;
        }
        note(trouble);
    }
    /// Something that happened once, no state of affairs.
    void note(const std::string& line) const {
        if (report_)
            report_(title_ + ": " + line);
    }

  private:
    std::string title_;
    Report report_;
    std::mutex mutex_;
    std::string last_;
};

} // namespace velto
