// Takes a secret out of texts that go to a log or to people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velto {

/// A server may quote the key that it was given, as it came, escaped for a URL or inside JSON.
class SecretBlot {
  public:
    /// White space and line ends around the secret are no part of it: not all requests send them.
    explicit SecretBlot(std::string_view stored);

    /// The text with "(key)" in place of the secret.
    std::string blotted(std::string text) const;

  private:
    std::vector<std::string> forms_;
};

} // namespace velto
