// Call records as JSON text (RFC 8259), the format of the history file.
#pragma once

#include "VeltoApp/history/CallRecord.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// An array of objects with the keys "id" (canonical identifier in upper case), "number", "started" (seconds
/// since 2001-01-01T00:00:00Z), "duration" (seconds), "transcript" and, where there is one, "recordingPath".
namespace velto::CallRecordJSON {

/// No white space between tokens, "/" written as "\/", bytes that are not UTF-8 written as U+FFFD. None when
/// a number is not finite.
std::optional<std::string> encode(const std::vector<CallRecord>& records);

/// None unless every record has every key with a value of its kind; "recordingPath" may be missing or null,
/// and unknown keys are passed over.
std::optional<std::vector<CallRecord>> decode(std::string_view json);

} // namespace velto::CallRecordJSON
