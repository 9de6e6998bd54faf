// The commands of the control socket: a request object in, a reply object out.
#pragma once

#include "VeltoApp/control/ControlTargets.h"
#include "VeltoApp/history/CallRecord.h"

#include <boost/json/object.hpp>

#include <vector>

/// Main thread. Every reply has "ok"; a failed one has "error", too.
namespace velto::ControlCommands {

/// `calls`: the history, newest first.
boost::json::object handle(const boost::json::object& request, const ControlTargets& targets,
                           const std::vector<CallRecord>& calls);

/// The reply of something that was not done.
boost::json::object failure(std::string_view error);

} // namespace velto::ControlCommands
