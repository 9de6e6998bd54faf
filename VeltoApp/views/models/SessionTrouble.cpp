#include "VeltoApp/views/models/SessionTrouble.h"

namespace velto {

std::string sessionTrouble(const NativeCallSession::Failure& failure) {
    using enum NativeCallSession::Failure::Reason;
    switch (failure.reason) {
    case none:
        break;
    case noKey:
        return "The call was not started: no API key is stored.";
    case notTrusted:
        return "The call was not started: Velto is not allowed to use the phone app yet.";
    case agent:
        return "The voice agent could not start: " + failure.description;
    case invalidNumber:
        return "This number cannot be dialed. Write it without blanks, like +15551234567.";
    case notDialed:
        return "The phone app did not place the call.";
    case neverConnected:
        return "No call was connected within 90 seconds.";
    }
    return {};
}

} // namespace velto
