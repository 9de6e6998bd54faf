// One look: the state first, then the transcript, so that the look after the end sees all of it.
#include "veltoctl/Follower.h"

#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/Clock.h"
#include "veltoctl/Reply.h"

#include <boost/json/serialize.hpp>

namespace velto::ctl {
namespace {

namespace json = boost::json;

constexpr std::chrono::milliseconds kInterval{300};

} // namespace

Follower::Follower(Output& output, const Arguments& arguments, Show show)
    : output_(output), arguments_(arguments), show_(show), printer_([this](const std::string& line) {
          output_.line(arguments_.json ? json::serialize(json::object{{"line", line}}) : printable(line));
      }) {}

int Follower::run() {
    for (;;) {
        if (const auto exit = look())
            return *exit;
        if (!output_.isRead())
            return kDone;
        Clock::shared().blockFor(kInterval);
    }
}

int Follower::end(const char* outcome, int exit) {
    if (arguments_.json)
        output_.line(json::serialize(json::object{{"outcome", outcome}}));
    return exit;
}

std::optional<int> Follower::look() {
    const auto status = ControlClient::request({{"cmd", "status"}});
    if (!status) {
        Output::message("Velto has gone");
        return end("gone", kGone);
    }
    const auto session = Reply::integer(*status, "session");
    if (session_.value_or(session) != session) {
        output_.remark("the session has ended, and another one has begun");
        return end("ended", kDone);
    }
    session_ = session;
    const bool over = !Reply::flag(*status, "running");
    if (show_ == Show::everything) {
        // At the end the last lines come before the word that it is over.
        if (!over || state_.empty())
            tellState(*status);
        if (!printTranscript(over)) {
            Output::message("Velto has gone");
            return end("gone", kGone);
        }
        tellState(*status);
    }
    if (!over)
        return std::nullopt;
    const auto state = Reply::text(*status, "state");
    if (state == "error") {
        Output::message("the session ended in error: see \"veltoctl readiness\"");
        return end("error", kRefused);
    }
    return state == "idle" ? end("none", kNothing) : end("ended", kDone);
}

void Follower::tellState(const json::object& status) {
    const auto state = Reply::text(status, "state");
    if (state == state_)
        return;
    state_ = state;
    if (arguments_.json)
        output_.line(json::serialize(json::object{
            {"state", state}, {"session", *session_}, {"number", Reply::text(status, "number")}}));
    else
        output_.remark(printable(state));
}

bool Follower::printTranscript(bool final) {
    const auto reply = ControlClient::request({{"cmd", "transcript"}});
    if (!reply)
        return false;
    const auto lines = Reply::texts(*reply, "lines");
    if (final)
        printer_.finish(lines);
    else if (arguments_.json)
        printer_.lookAtFinal(lines);
    else
        printer_.look(lines);
    return true;
}

} // namespace velto::ctl
