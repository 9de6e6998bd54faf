// One look: the state first, then the transcript, so that the look after the end sees all of it.
#include "veltoctl/Follower.h"

#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/AppPaths.h"
#include "VeltoShared/core/Clock.h"
#include "veltoctl/Reply.h"

#include <boost/json/serialize.hpp>

namespace velto::ctl {
namespace {

namespace json = boost::json;

constexpr std::chrono::milliseconds kInterval{300};

} // namespace

void tellOutcome(Output& output, const Arguments& arguments, const char* outcome) {
    if (arguments.json)
        output.line(json::serialize(json::object{{"outcome", outcome}}));
}

Follower::Follower(Output& output, const Arguments& arguments, Show show)
    : output_(output), arguments_(arguments), show_(show), printer_([this](const std::string& line) {
          output_.line(arguments_.json ? json::serialize(json::object{{"line", line}}) : printable(line));
      }) {}

int Follower::run() {
    for (;;) {
        if (const auto exit = look())
            return *exit;
        if (show_ == Show::everything && !output_.isRead())
            return kDone;
        Clock::shared().blockFor(kInterval);
    }
}

int Follower::end(const char* outcome, int exit) {
    tellOutcome(output_, arguments_, outcome);
    return exit;
}

int Follower::gone() {
    Output::message("Velto has gone");
    return end("gone", kGone);
}

std::optional<int> Follower::look() {
    const auto status = ControlClient::request({{"cmd", "status"}});
    if (!status || !Reply::flag(*status, "ok"))
        return gone();
    const auto session = Reply::integer(*status, "session");
    if (session > session_.value_or(session)) {
        output_.remark("the session has ended, and another one has begun");
        return end("ended", kDone);
    }
    if (session < session_.value_or(session)) // one that was started again counts from the beginning
        return gone();
    session_ = session;
    const bool over = !Reply::flag(*status, "running");
    if (show_ == Show::everything) {
        // At the end the last lines come before the word that it is over.
        if (!over || state_.empty())
            tellState(*status);
        if (!printTranscript(over))
            return gone();
        tellState(*status);
    }
    if (!over)
        return std::nullopt;
    const auto state = Reply::text(*status, "state");
    if (state == "idle")
        return end("none", kNothing);
    if (state == "error") {
        Output::message("the session could not start: see \"veltoctl readiness\"");
        return end("error", kRefused);
    }
    return outcome();
}

/// The application calls every session ended. One in which nobody said a word was no call: nobody answered,
/// the number could not be dialed, or the agent could not start.
int Follower::outcome() {
    const auto transcript = ControlClient::request({{"cmd", "transcript"}});
    const auto status = ControlClient::request({{"cmd", "status"}});
    if (!transcript || !status)
        return gone();
    // Of another session that has begun meanwhile these lines would be.
    if (Reply::integer(*status, "session") != *session_ || !Reply::texts(*transcript, "lines").empty())
        return end("ended", kDone);
    Output::message("nobody said a word: " + printable(AppPaths::logFileToReach().string()) + " says why");
    return end("error", kRefused);
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
