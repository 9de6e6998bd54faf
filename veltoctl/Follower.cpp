// One look: the state first, then the transcript, so that the look after the end sees all of it.
#include "veltoctl/Follower.h"

#include "VeltoShared/control/ControlClient.h"
#include "VeltoShared/core/Clock.h"
#include "veltoctl/Output.h"
#include "veltoctl/Reply.h"

#include <boost/json/serialize.hpp>

namespace velto::ctl {
namespace {

namespace json = boost::json;

constexpr std::chrono::milliseconds kInterval{300};

int gone() {
    Output::message("Velto has gone");
    return kFailed;
}

} // namespace

Follower::Follower(Output& output, bool json)
    : output_(output), json_(json),
      printer_([this](const std::string& line) { writable_ = output_.line(printable(line)); }) {}

int Follower::run() {
    for (;;) {
        if (const auto exit = look())
            return *exit;
        if (!writable_)
            return kDone;
        Clock::shared().blockFor(kInterval);
    }
}

std::optional<int> Follower::look() {
    const auto status = ControlClient::request({{"cmd", "status"}});
    if (!status)
        return gone();
    const auto session = Reply::integer(*status, "session");
    if (session_.value_or(session) != session) {
        Output::message("the session has ended, and another one has begun");
        return kDone;
    }
    session_ = session;
    if (const auto state = Reply::text(*status, "state"); state != state_) {
        Output::message(printable(state));
        state_ = state;
    }
    const bool over = !Reply::flag(*status, "running");
    if (!printTranscript(over))
        return gone();
    return over ? std::optional<int>(kDone) : std::nullopt;
}

bool Follower::printTranscript(bool final) {
    const auto reply = ControlClient::request({{"cmd", "transcript"}});
    if (!reply)
        return false;
    if (json_) {
        auto text = json::serialize(*reply);
        if (text != printedJSON_)
            writable_ = output_.line(text);
        printedJSON_ = std::move(text);
        return true;
    }
    const auto lines = Reply::texts(*reply, "lines");
    if (final)
        printer_.finish(lines);
    else
        printer_.look(lines);
    return true;
}

} // namespace velto::ctl
