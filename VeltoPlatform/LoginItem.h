// The operating system's list of what starts when its user logs in.
#pragma once

#include <string>

namespace velto {

/// This application as an entry of it. Any thread, synchronous. Each operation answers the description of its
/// failure, for people to read, which leaves the list as it was; empty: it is done. Doing it twice is no
/// failure.
class LoginItem {
  public:
    virtual ~LoginItem() = default;

    virtual std::string registerApplication() = 0;
    virtual std::string unregisterApplication() = 0;
};

} // namespace velto
