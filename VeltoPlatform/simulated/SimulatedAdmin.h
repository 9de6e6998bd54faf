// Administrator rights of the simulated computer: a test says what the user answers and what commands print.
#pragma once

#include "VeltoPlatform/AdminRights.h"

#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace velto {

/// Everything public: set before a run, looked at after it.
class SimulatedAdmin : public AdminRights {
  public:
    bool hasAuthorization() override { return created_; }
    std::int32_t createAuthorization() override;
    std::int32_t preauthorize() override;
    std::int32_t execute(const std::string& commandLine, std::unique_ptr<AdminPipe>& pipe) override;
    std::string trouble() override { return {}; }
    void freeAuthorization() override { created_ = false; }

    /// Answers of the next calls, in this order; success once they are used up.
    std::deque<std::int32_t> createAnswers;
    std::deque<std::int32_t> preauthorizeAnswers;
    std::deque<std::int32_t> executeAnswers;
    /// Runs a command line: what it prints; none: no pipe. Empty: prints nothing.
    std::function<std::optional<std::string>(const std::string& commandLine)> shell;

    std::vector<std::string> commands; ///< those that were run
    int asked = 0;                     ///< how often the user was

  private:
    bool created_ = false;
};

} // namespace velto
