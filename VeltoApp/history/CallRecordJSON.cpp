// Strict reading and writing of call records.
#include "VeltoApp/history/CallRecordJSON.h"

#include "VeltoApp/history/ExactJSON.h"
#include "VeltoShared/core/Utf8.h"

#include <boost/json.hpp>

#include <array>
#include <charconv>
#include <cmath>

namespace velto::CallRecordJSON {
namespace {

namespace json = boost::json;

void appendString(std::string& out, std::string_view text) {
    for (const char character : json::serialize(repairedUtf8(text))) {
        if (character == '/')
            out += '\\';
        out += character;
    }
}

bool appendNumber(std::string& out, double number) {
    if (!std::isfinite(number))
        return false;
    std::array<char, 32> digits{};
    // The shortest text that reads back as the same number.
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
    return true;
}

bool append(std::string& out, const CallRecord& record) {
    out += R"({"id":")" + record.id.text() + R"(","number":)";
    appendString(out, record.number);
    out += R"(,"started":)";
    bool finite = appendNumber(out, record.started.sinceReference);
    out += R"(,"duration":)";
    finite = appendNumber(out, record.duration) && finite;
    out += R"(,"transcript":)";
    appendString(out, record.transcript);
    if (record.recordingPath) {
        out += R"(,"recordingPath":)";
        appendString(out, *record.recordingPath);
    }
    out += '}';
    return finite;
}

std::optional<std::string> text(const json::object& object, json::string_view key) {
    const auto* value = object.if_contains(key);
    if (!value || !value->is_string())
        return std::nullopt;
    return std::string(value->get_string());
}

std::optional<double> number(const json::object& object, json::string_view key) {
    const auto* value = object.if_contains(key);
    if (!value || !value->is_number())
        return std::nullopt;
    const auto number = value->to_number<double>();
    // Beyond a float's range; such a record could never be written again, nor any beside it.
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<CallRecord> record(const json::value& value) {
    const auto* object = value.if_object();
    if (!object)
        return std::nullopt;
    const auto id = text(*object, "id");
    const auto uuid = id ? UUID::parse(*id) : std::nullopt;
    auto dialled = text(*object, "number");
    const auto started = number(*object, "started");
    const auto duration = number(*object, "duration");
    auto transcript = text(*object, "transcript");
    if (!uuid || !dialled || !started || !duration || !transcript)
        return std::nullopt;
    CallRecord record{.id = *uuid,
                      .number = std::move(*dialled),
                      .started = {*started},
                      .duration = *duration,
                      .transcript = std::move(*transcript),
                      .recordingPath = std::nullopt};
    if (const auto* path = object->if_contains("recordingPath"); path && !path->is_null()) {
        if (!path->is_string())
            return std::nullopt;
        record.recordingPath = std::string(path->get_string());
    }
    return record;
}

} // namespace

std::optional<std::string> encode(const std::vector<CallRecord>& records) {
    std::string out = "[";
    for (const auto& record : records) {
        if (out.size() > 1)
            out += ',';
        if (!append(out, record))
            return std::nullopt;
    }
    out += ']';
    return out;
}

std::optional<std::vector<CallRecord>> decode(std::string_view text) {
    const auto value = parseExactJSON(text);
    const auto* array = value ? value->if_array() : nullptr;
    if (!array)
        return std::nullopt;
    std::vector<CallRecord> records;
    records.reserve(array->size());
    for (const auto& element : *array) {
        auto one = record(element);
        if (!one)
            return std::nullopt;
        records.push_back(std::move(*one));
    }
    return records;
}

} // namespace velto::CallRecordJSON
