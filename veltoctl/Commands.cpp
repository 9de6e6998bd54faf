// Asks, prints what came back, and follows the session where that was wanted.
#include "veltoctl/Commands.h"

#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/Utf8.h"
#include "veltoctl/Follower.h"
#include "veltoctl/History.h"
#include "veltoctl/Interrupt.h"
#include "veltoctl/Reply.h"
#include "veltoctl/Report.h"

#include <boost/json/serialize.hpp>

#include <future>
#include <memory>

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
    const bool starts = arguments.command == "call" || arguments.command == "watch";
    if (output.quiet && (starts || arguments.command == "hangup"))
        return;
    const auto lines = report(arguments, reply);
    if (lines.empty())
        output.remark(arguments.command == "history" ? "no calls yet" : "nothing yet");
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

/// At Ctrl-C the user hears what becomes of the call, once the answer has been kept: before that the
/// application may just be starting it.
std::shared_ptr<std::promise<void>> onInterruptOfCall(const Arguments& arguments, const Output& output) {
    auto begun = std::make_shared<std::promise<void>>();
    onInterrupt([begun, hangsUp = arguments.hangUpOnInterrupt, quiet = output.quiet] {
        begun->get_future().wait();
        if (hangsUp)
            ControlClient::request({{"cmd", "hangup"}});
        if (!quiet)
            Output::message(hangsUp ? "the session is stopped; the phone call itself is not hung up"
                                    : "the call goes on; \"veltoctl hangup\" stops the session");
    });
    return begun;
}

int refuse(const Arguments& arguments, const json::object& reply, const std::string& why, Output& output) {
    if (arguments.json)
        output.line(json::serialize(reply));
    Output::message(why);
    if (arguments.follow || arguments.command == "wait")
        tellOutcome(output, arguments, "error");
    return kRefused;
}

} // namespace

bool isLocal(const Arguments& arguments) {
    return arguments.command == "doctor" || arguments.command.starts_with("key ");
}

int run(const Arguments& arguments, Output& output) {
    if (!isText(arguments.number) || !isText(arguments.goal)) {
        Output::message("the number and the goal must be UTF-8 text");
        return kFailed;
    }
    if (arguments.command == "history show")
        return History::show(arguments, output);
    const bool lists = arguments.command == "history";
    const bool waits = arguments.command == "wait";
    const bool starts = arguments.command == "call" || arguments.command == "watch";
    const auto begun = starts && arguments.follow ? onInterruptOfCall(arguments, output) : nullptr;
    const auto reply =
        lists ? History::calls(arguments.last)
              : ControlClient::request(waits ? json::object{{"cmd", "ping"}} : requestOf(arguments));
    if (!reply) {
        if (!lists)
            Output::message("Velto is not running, or does not answer");
        return kFailed;
    }
    if (!Reply::flag(*reply, "ok")) {
        const auto error = printable(Reply::text(*reply, "error"));
        return refuse(arguments, *reply, "Velto says no: " + (error.empty() ? "no reason given" : error),
                      output);
    }
    if (starts && failedAtOnce(*reply))
        return refuse(arguments, *reply, "the session could not start: see \"veltoctl readiness\"", output);
    if (!arguments.follow && !waits) {
        print(arguments, *reply, output);
        return kDone;
    }
    if (begun)
        begun->set_value();
    const int exit =
        Follower(output, arguments, waits ? Follower::Show::nothing : Follower::Show::everything).run();
    return arguments.command == "transcript" && exit == kNothing ? kDone : exit;
}

} // namespace velto::ctl
