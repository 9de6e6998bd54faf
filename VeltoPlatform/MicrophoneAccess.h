// Whether the operating system lets this program record from microphones.
#pragma once

#include <functional>
#include <string>

namespace velto {

/// The numbers are the platform's.
enum class MicrophoneAuthorization {
    notDetermined = 0, ///< nobody has been asked, or nobody is there who could say
    restricted = 1,    ///< refused, and the user cannot change it
    denied = 2,        ///< refused
    authorized = 3,
};

struct MicrophoneStatus {
    MicrophoneAuthorization authorization = MicrophoneAuthorization::notDetermined;
    std::string reason; ///< for the log: why it is not authorized; empty when it is
};

/// All operations: any thread.
class MicrophoneAccess {
  public:
    virtual ~MicrophoneAccess() = default;

    /// As it is at the moment. Does not hold up its caller for more than a tenth of a second.
    virtual MicrophoneStatus status() = 0;
    /// Asks for access, and the user where the platform does so. `answered` is called once, on any thread,
    /// also from within; `status` tells what came of it.
    virtual void request(std::function<void()> answered) = 0;
};

} // namespace velto
