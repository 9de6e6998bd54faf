#include "rehearsal/server/WireTranscript.h"

#include "VeltoShared/voice/SecretBlot.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace velto::rehearsal {
namespace {

constexpr std::string_view kKey = "(key)";
constexpr std::string_view kAnotherKey = "(another key)";

std::string withoutKeys(std::string text, const ApiKeys& keys) {
    for (const auto& [provider, key] : keys)
        text = SecretBlot(key).blotted(std::move(text));
    return text;
}

std::string_view credential(std::string_view text, const ApiKeys& keys) {
    const bool known =
        std::any_of(keys.begin(), keys.end(), [&](const auto& entry) { return entry.second == text; });
    return known ? kKey : kAnotherKey;
}

/// One line, whatever it holds.
std::string inOneLine(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < ' ' || byte == 0x7f)
            line.append({'\\', 'x', digits[byte >> 4], digits[byte & 15]});
        else
            line += c;
    }
    return line;
}

std::string withoutKeysInQuery(const HttpRequest& request, const ApiKeys& keys) {
    std::string target(request.path());
    for (auto at = target.size(); at < request.target.size();) {
        const auto end = std::min(request.target.find('&', at + 1), request.target.size());
        const auto item = std::string_view(request.target).substr(at, end - at);
        const auto value = std::min(item.find('='), item.size() - 1) + 1;
        const auto decoded = percentDecoded(item.substr(value)).value_or("");
        target += item.substr(0, value);
        if (item.substr(1).starts_with("key="))
            target += credential(decoded, keys);
        else if (withoutKeys(decoded, keys) != decoded)
            target += kKey;
        else
            target += item.substr(value);
        at = end;
    }
    return target;
}

std::string fieldValue(const std::string& name, const std::string& value, const ApiKeys& keys) {
    const auto is = [&](const char* other) { return boost::algorithm::iequals(name, other); };
    if (is("Sec-WebSocket-Key"))
        return "(random)";
    if (const auto colon = value.rfind(':'); is("Host") && colon != std::string::npos)
        return value.substr(0, colon) + ":(port)";
    constexpr std::string_view bearer = "Bearer ";
    if (is("Authorization") && value.starts_with(bearer))
        return std::string(bearer).append(credential(value.substr(bearer.size()), keys));
    if (is("Authorization"))
        return std::string(credential(value, keys));
    return withoutKeys(value, keys);
}

/// Replaces the samples in a message with audio. Answers whether there were any.
bool takeAudioOut(std::string& text) {
    bool found = false;
    // No text of JSON holds these, for its own quotation marks are escaped.
    for (const std::string_view member : {"\"data\":\"", "\"audio\":\""})
        if (const auto at = text.find(member); at != std::string::npos) {
            const auto begin = at + member.size();
            text.replace(begin, std::min(text.find('"', begin), text.size()) - begin, "(audio)");
            found = true;
        }
    return found;
}

} // namespace

void WireTranscript::Section::add(std::string_view kind, std::string rest) {
    const bool isAudio = takeAudioOut(rest);
    rest = inOneLine(withoutKeys(std::move(rest), keys_));
    if (isAudio && !lines_.empty() && lines_.back().count > 0 && lines_.back().rest == rest)
        ++lines_.back().count;
    else
        lines_.push_back({std::string(kind), std::move(rest), isAudio ? std::size_t{1} : std::size_t{0}});
}

void WireTranscript::Section::text(std::string_view frame) {
    add("text", std::string(frame));
}

void WireTranscript::Section::binary(std::size_t bytes) {
    add("binary", "(" + std::to_string(bytes) + " bytes)");
}

void WireTranscript::Section::control(std::string_view name) {
    add(name, {});
}

void WireTranscript::Section::closed(std::uint16_t code) {
    add(code != 0 ? "close" : "ended without a close code", code != 0 ? std::to_string(code) : "");
}

WireTranscript::Section& WireTranscript::begin(const HttpRequest& request) {
    sections_.push_back(Section(keys_));
    auto& section = sections_.back();
    section.head_ = request.method + " " + withoutKeysInQuery(request, keys_) + " HTTP/" +
                    std::to_string(request.version / 10) + "." + std::to_string(request.version % 10) + "\n";
    for (const auto& [name, value] : request.fields)
        section.head_.append(name).append(": ").append(fieldValue(name, value, keys_)).append("\n");
    if (!request.body.empty())
        section.add({}, request.body);
    return section;
}

std::string WireTranscript::text() const {
    std::string text;
    for (const auto& section : sections_) {
        text += section.head_ + "\n";
        for (const auto& line : section.lines_) {
            text += line.kind;
            if (line.count > 0)
                text.append(" x").append(std::to_string(line.count));
            if (!line.rest.empty())
                text.append(line.kind.empty() ? "" : " ").append(line.rest);
            text += "\n";
        }
        text += section.lines_.empty() ? "" : "\n";
    }
    return text;
}

} // namespace velto::rehearsal
