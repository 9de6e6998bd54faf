// The client side of the control socket, for programs that drive the running application.
#pragma once

#include <boost/json/object.hpp>

#include <sys/types.h>

#include <optional>

/// One connection a request. Any thread; blocks, without a time-out, until the application has answered or
/// closed the connection. Every failure is the absence of an answer; a broken connection raises no signal.
namespace velto::ControlClient {

/// Sends the object as one line and answers the object that comes back. None when the application cannot be
/// reached or its answer is no JSON object.
std::optional<boost::json::object> request(const boost::json::object& request);

/// Whether an application holds the socket, be it too busy to answer. Does not wait.
bool somebodyListens();

/// The process that holds the socket, when it is this user's.
std::optional<pid_t> applicationProcess();

/// Whether the application answers "ping" with "ok": true.
bool appIsRunning();

} // namespace velto::ControlClient
