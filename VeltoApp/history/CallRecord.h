// One finished call as the history keeps it.
#pragma once

#include "VeltoShared/core/UUID.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace velto {

struct CallRecord {
    /// Time with the resolution of the history file: 64-bit floating-point seconds since
    /// 2001-01-01T00:00:00Z, so that a record reads back equal.
    struct Time {
        double sinceReference = 0;

        static constexpr double kReferenceAfterUnixEpoch = 978'307'200;
        static Time of(std::chrono::system_clock::time_point time);
        /// Clamped to what a time point can hold.
        std::chrono::system_clock::time_point timePoint() const;
        bool operator==(const Time&) const = default;
    };

    UUID id = UUID::random();
    std::string number{}; ///< may be empty
    Time started{};
    double duration = 0;                        ///< seconds, finite
    std::string transcript{};                   ///< finished turns, separated by line feeds
    std::optional<std::string> recordingPath{}; ///< absolute path of the recording

    /// Over all fields: two records of one id with another field different are different.
    bool operator==(const CallRecord&) const = default;

    /// Minutes and seconds, rounded to the nearest second, half away from zero: "62:05".
    std::string durationText() const;
};

} // namespace velto

template <>
struct std::hash<velto::CallRecord> {
    std::size_t operator()(const velto::CallRecord& record) const noexcept;
};
