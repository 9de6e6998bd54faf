// Asks, prints what came back, and follows the session where that was wanted.
#include "veltoctl/Commands.h"

#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/Utf8.h"
#include "veltoctl/Follower.h"
#include "veltoctl/Reply.h"
#include "veltoctl/Report.h"

#include <boost/json/serialize.hpp>

namespace velto::ctl {
namespace {

namespace json = boost::json;

bool isText(const std::optional<std::string>& argument) {
    return !argument || isValidUtf8(*argument);
}

json::object requestOf(const Arguments& arguments) {
    json::object request{{"cmd", arguments.command}};
    if (arguments.number)
        request["number"] = *arguments.number;
    if (arguments.goal)
        request["goal"] = *arguments.goal;
    return request;
}

std::vector<std::string> report(const Arguments& arguments, const json::object& reply) {
    if (arguments.command == "ping")
        return {"Velto is running."};
    if (arguments.command == "status")
        return Report::status(reply);
    if (arguments.command == "readiness")
        return Report::readiness(reply);
    if (arguments.command == "transcript")
        return Report::transcript(reply);
    if (arguments.command == "history")
        return Report::history(reply);
    if (arguments.command == "providers")
        return Report::providers(reply);
    if (arguments.command == "hangup")
        return {"The session is stopped; the phone call itself is not hung up."};
    if (arguments.command == "watch")
        return {"Waiting for a call."};
    return {"Calling " + printable(arguments.number.value_or("")) + "."};
}

void print(const Arguments& arguments, const json::object& reply, Output& output) {
    if (arguments.json) {
        output.line(json::serialize(reply));
        return;
    }
    const auto lines = report(arguments, reply);
    if (lines.empty())
        Output::message(arguments.command == "history" ? "no calls yet" : "nothing yet");
    for (const auto& line : lines)
        output.line(line);
}

/// A start answers ok even where it failed at once; only then does nothing run afterwards.
bool failedAtOnce(const json::object& reply) {
    if (Reply::text(reply, "state") != "error")
        return false;
    const auto status = ControlClient::request({{"cmd", "status"}});
    return status && Reply::flag(*status, "ok") && !Reply::flag(*status, "running");
}

} // namespace

int run(const Arguments& arguments, Output& output) {
    if (!isText(arguments.number) || !isText(arguments.goal)) {
        Output::message("the number and the goal must be UTF-8 text");
        return kFailed;
    }
    const auto reply = ControlClient::request(requestOf(arguments));
    if (!reply) {
        Output::message("Velto is not running, or does not answer");
        return kFailed;
    }
    const bool starts = arguments.command == "call" || arguments.command == "watch";
    const bool refused = !Reply::flag(*reply, "ok");
    const bool failed = !refused && starts && failedAtOnce(*reply);
    const bool replyIsShownByFollower = arguments.command == "transcript" && arguments.follow;
    if (arguments.json ? !replyIsShownByFollower || refused
                       : !refused && !failed && !(starts && arguments.follow) && !replyIsShownByFollower)
        print(arguments, *reply, output);
    if (refused) {
        const auto error = printable(Reply::text(*reply, "error"));
        Output::message("Velto says no: " + (error.empty() ? "no reason given" : error));
        return kRefused;
    }
    if (failed) {
        Output::message("the session could not start: see \"veltoctl readiness\"");
        return kRefused;
    }
    if (!arguments.follow)
        return kDone;
    return Follower(output, arguments.json).run();
}

} // namespace velto::ctl
