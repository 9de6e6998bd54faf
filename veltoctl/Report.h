// Replies of the application as text for people.
#pragma once

#include <boost/json/object.hpp>

#include <string>
#include <vector>

/// Lines without their line feeds. A key that is missing or of another kind shows as "-" or not at all.
namespace velto::ctl::Report {

std::vector<std::string> status(const boost::json::object& reply);
std::vector<std::string> readiness(const boost::json::object& reply);
/// One block a call, newest first: the identifier's beginning, when, in local time, how long, which number,
/// and the transcript below.
std::vector<std::string> history(const boost::json::object& reply);
/// One call with everything that its record holds.
std::vector<std::string> call(const boost::json::object& call);
std::vector<std::string> providers(const boost::json::object& reply);
/// The transcript's lines as they are.
std::vector<std::string> transcript(const boost::json::object& reply);

} // namespace velto::ctl::Report
