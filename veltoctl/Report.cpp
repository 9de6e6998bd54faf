// Aligned columns, wrapped lists, indented transcripts.
#include "veltoctl/Report.h"

#include "veltoctl/Output.h"
#include "veltoctl/Reply.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>
#include <string_view>
#include <utility>

namespace velto::ctl::Report {
namespace {

namespace json = boost::json;
using Lines = std::vector<std::string>;
using Rows = std::vector<std::pair<std::string, std::string>>;

constexpr std::size_t kWidth = 80;
constexpr std::size_t kGap = 2;
constexpr std::size_t kShortID = 8;

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

Lines columns(const Rows& rows) {
    std::size_t widest = 0;
    for (const auto& row : rows)
        widest = std::max(widest, row.first.size());
    Lines lines;
    for (const auto& [name, value] : rows)
        lines.push_back(padded(name, widest + kGap) + (value.empty() ? "-" : printable(value)));
    return lines;
}

std::string yesNo(const json::object& reply, json::string_view key) {
    return Reply::flag(reply, key) ? "yes" : "no";
}

std::string minutes(double seconds) {
    if (!std::isfinite(seconds) || std::abs(seconds) > 1e9)
        return "-";
    const auto whole = std::llround(seconds);
    const auto rest = std::to_string(whole % 60);
    return std::to_string(whole / 60) + ':' + (rest.size() < 2 ? "0" : "") + rest;
}

/// 2026-11-16T20:23:20Z as local time.
std::string when(const std::string& started) {
    std::tm time{};
    const char* const end = ::strptime(started.c_str(), "%Y-%m-%dT%H:%M:%SZ", &time);
    if (!end || *end != '\0')
        return started;
    const auto seconds = ::timegm(&time);
    std::array<char, 64> text{};
    if (!::localtime_r(&seconds, &time))
        return started;
    return {text.data(), std::strftime(text.data(), text.size(), "%F %T %Z", &time)};
}

Lines split(std::string_view text) {
    Lines lines;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

void appendWrapped(Lines& lines, const Lines& words, std::size_t indent) {
    std::string line(indent, ' ');
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto word = printable(words[i]) + (i + 1 < words.size() ? "," : "");
        if (line.size() > indent && line.size() + 1 + word.size() > kWidth) {
            lines.push_back(std::move(line));
            line.assign(indent, ' ');
        }
        line += (line.size() > indent ? " " : "") + word;
    }
    if (line.size() > indent)
        lines.push_back(std::move(line));
}

struct Call {
    std::string id;
    std::string started;
    std::string duration;
    std::string number;
    Lines transcript;
};

std::vector<Call> calls(const json::object& reply) {
    std::vector<Call> found;
    const auto* value = reply.if_contains("calls");
    const auto* list = value ? value->if_array() : nullptr;
    if (!list)
        return found;
    for (const auto& element : *list) {
        const auto* object = element.if_object();
        if (!object)
            continue;
        auto number = printable(Reply::text(*object, "number"));
        found.push_back({printable(Reply::text(*object, "id")).substr(0, kShortID),
                         printable(when(Reply::text(*object, "started"))),
                         minutes(Reply::number(*object, "duration")),
                         number.empty() ? "(no number)" : std::move(number),
                         split(printable(Reply::text(*object, "transcript")))});
    }
    return found;
}

} // namespace

Lines status(const json::object& reply) {
    const auto session = Reply::integer(reply, "session");
    return columns({{"State", Reply::text(reply, "state")},
                    {"Running", yesNo(reply, "running")},
                    {"Number", Reply::text(reply, "number")},
                    {"Session", session > 0 ? std::to_string(session) : ""},
                    {"Provider", Reply::text(reply, "provider")},
                    {"Ready", yesNo(reply, "ready")}});
}

Lines readiness(const json::object& reply) {
    return columns({{"Accessibility", yesNo(reply, "accessibility")},
                    {"Microphone", yesNo(reply, "microphone")},
                    {"Audio driver", yesNo(reply, "driver")},
                    {"Gemini key valid", yesNo(reply, "gemini")},
                    {"OpenAI key valid", yesNo(reply, "openai")},
                    {"Any key valid", yesNo(reply, "apiKeyValid")},
                    {"Ready to call", yesNo(reply, "ready")}});
}

Lines history(const json::object& reply) {
    const auto found = calls(reply);
    std::size_t widest = 0;
    for (const auto& call : found)
        widest = std::max(widest, call.duration.size());
    Lines lines;
    for (const auto& call : found) {
        if (!lines.empty())
            lines.emplace_back();
        lines.push_back(padded(call.id, call.id.empty() ? 0 : call.id.size() + kGap) + call.started +
                        std::string(kGap + widest - call.duration.size(), ' ') + call.duration +
                        std::string(kGap, ' ') + call.number);
        for (const auto& line : call.transcript)
            lines.push_back("    " + line);
    }
    return lines;
}

Lines call(const json::object& call) {
    auto lines = columns({{"ID", Reply::text(call, "id")},
                          {"Number", Reply::text(call, "number")},
                          {"Started", when(Reply::text(call, "started"))},
                          {"Duration", minutes(Reply::number(call, "duration"))},
                          {"Recording", Reply::text(call, "recordingPath")}});
    lines.emplace_back();
    std::ranges::move(split(printable(Reply::text(call, "transcript"))), std::back_inserter(lines));
    return lines;
}

Lines providers(const json::object& reply) {
    Lines lines;
    const auto* value = reply.if_contains("voices");
    const auto* voices = value ? value->if_object() : nullptr;
    if (!voices)
        return lines;
    for (const auto& provider : *voices) {
        const auto name = provider.key();
        lines.push_back(padded(printable({name.data(), name.size()}), 8) +
                        (Reply::flag(reply, name) ? "key stored" : "no key"));
        appendWrapped(lines, Reply::texts(*voices, name), 4);
    }
    return lines;
}

Lines transcript(const json::object& reply) {
    auto lines = Reply::texts(reply, "lines");
    for (auto& line : lines)
        line = printable(line);
    return lines;
}

} // namespace velto::ctl::Report
