// Variables of this process's environment for the length of a test.
#pragma once

#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace velto::test {

/// One thread, while no other reads the environment.
class ScopedEnvironment {
  public:
    ScopedEnvironment() = default;
    ~ScopedEnvironment() {
        for (const auto& [name, value] : before_)
            if (value)
                ::setenv(name.c_str(), value->c_str(), 1); // NOLINT(concurrency-mt-unsafe)
            else
                ::unsetenv(name.c_str()); // NOLINT(concurrency-mt-unsafe)
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    void set(const std::string& name, const std::string& value) {
        const char* const old = std::getenv(name.c_str()); // NOLINT(concurrency-mt-unsafe)
        before_.try_emplace(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
        ::setenv(name.c_str(), value.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
    }
    void set(const std::map<std::string, std::string>& variables) {
        for (const auto& [name, value] : variables)
            set(name, value);
    }

  private:
    std::map<std::string, std::optional<std::string>> before_;
};

} // namespace velto::test
