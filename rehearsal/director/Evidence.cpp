// What the programs of a rehearsal report.
#include "rehearsal/director/Evidence.h"

#include <boost/json.hpp>

#include <algorithm>

namespace velto::rehearsal {
namespace {

namespace json = boost::json;

std::int64_t integer(const json::object& event, std::string_view key) {
    const auto* value = event.if_contains(key);
    boost::system::error_code error;
    const auto number = value != nullptr ? value->to_number<std::int64_t>(error) : 0;
    return error ? 0 : number;
}

std::string text(const json::object& event, std::string_view key) {
    const auto* value = event.if_contains(key);
    return value != nullptr && value->is_string() ? std::string(value->get_string()) : std::string();
}

bool boolean(const json::object& event, std::string_view key) {
    const auto* value = event.if_contains(key);
    return value != nullptr && value->is_bool() && value->get_bool();
}

Evidence::Time at(const json::object& event) {
    return Evidence::Time(integer(event, "at"));
}

Evidence::HeardMark heardMark(const json::object& event) {
    return {{static_cast<int>(integer(event, "mark")),
             boolean(event, "whole") ? Mark::Place::end : Mark::Place::begin},
            at(event)};
}

double secondsOf(Evidence::Time time) {
    return std::chrono::duration<double>(time).count();
}

} // namespace

void Evidence::fromServer(const json::object& event) {
    const auto what = text(event, "event");
    if (what == "listening") {
        serverPort = static_cast<std::uint16_t>(integer(event, "port"));
    } else if (what == "violation") {
        violations.push_back(text(event, "what"));
    } else if (what == "connected") {
        if (const auto provider = voiceProvider(text(event, "provider")))
            sessions.push_back(*provider);
    } else if (what == "keyCheck") {
        if (const auto provider = voiceProvider(text(event, "provider")))
            keyChecks.push_back({*provider, static_cast<int>(integer(event, "status"))});
    } else if (what == "heard") {
        heardByServer.push_back(heardMark(event));
    } else if (what == "speaks") {
        spoken.push_back(static_cast<int>(integer(event, "mark")));
    } else if (what == "interrupted") {
        interruptions.push_back(at(event));
    } else if (what == "endCall") {
        endCallAsked = true;
    } else if (what == "closed") {
        serverClosed = true;
        closeCode = static_cast<int>(integer(event, "code"));
        endCallAnswered = boolean(event, "toolAnswered");
        server.framesIn = static_cast<std::uint64_t>(integer(event, "framesIn"));
        server.framesOut = static_cast<std::uint64_t>(integer(event, "framesOut"));
        serverRateIn = static_cast<int>(integer(event, "rateIn"));
        server.peakIn = static_cast<int>(integer(event, "peakIn"));
    }
}

void Evidence::fromCallee(const json::object& event) {
    const auto what = text(event, "event");
    if (what == "ready") {
        phone = static_cast<pid_t>(integer(event, "pid"));
    } else if (what == "dialled") {
        dialled = text(event, "number");
        ++timesDialled;
    } else if (what == "answered") {
        ++timesAnswered;
    } else if (what == "heard") {
        heardByCallee.push_back(heardMark(event));
    } else if (what == "says") {
        spoken.push_back(static_cast<int>(integer(event, "mark")));
    } else if (what == "said") {
        sounds_.push_back({CalleeSound::Kind::said, at(event)});
    } else if (what == "soundBegins") {
        sounds_.push_back({CalleeSound::Kind::begins, at(event)});
    } else if (what == "soundEnds") {
        sounds_.push_back({CalleeSound::Kind::ends, at(event)});
    } else if (what == "ended") {
        ended = text(event, "reason");
        ++timesEnded;
    } else if (what == "measures") {
        callee = {static_cast<std::uint64_t>(integer(event, "framesHeard")),
                  static_cast<std::uint64_t>(integer(event, "framesSaid")),
                  static_cast<int>(integer(event, "peakHeard")),
                  static_cast<int>(integer(event, "peakSaid"))};
    }
}

bool Evidence::calleeHeard(int mark, Mark::Place place) const {
    return std::any_of(heardByCallee.begin(), heardByCallee.end(), [&](const HeardMark& heard) {
        return heard.mark == Mark{mark, place};
    });
}

std::vector<double> Evidence::responseSeconds() const {
    std::vector<double> seconds;
    std::optional<Time> said;
    for (const auto& sound : sounds_) {
        if (sound.kind == CalleeSound::Kind::said)
            said = sound.at;
        else if (sound.kind == CalleeSound::Kind::begins && said)
            seconds.push_back(secondsOf(sound.at - *std::exchange(said, std::nullopt)));
    }
    return seconds;
}

std::vector<double> Evidence::soundAfterInterruptionSeconds() const {
    std::vector<double> seconds;
    for (const auto interruption : interruptions) {
        const auto end = std::find_if(sounds_.begin(), sounds_.end(), [&](const CalleeSound& sound) {
            return sound.kind == CalleeSound::Kind::ends && sound.at >= interruption;
        });
        if (end != sounds_.end())
            seconds.push_back(secondsOf(end->at - interruption));
    }
    return seconds;
}

} // namespace velto::rehearsal
