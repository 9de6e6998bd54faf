// Times as people read them.
#pragma once

#include <QString>

#include <chrono>

namespace velto {

/// Date and time of day in the user's language and time zone.
QString dateTimeText(std::chrono::system_clock::time_point time);

/// "Just now", "5 minutes ago", "Yesterday" …; from a week on, and for a time to come, the date.
QString agoText(std::chrono::system_clock::time_point time, std::chrono::system_clock::time_point now);
/// How long until `agoText` says something else; 0 from a day on.
std::chrono::milliseconds agoLifetime(std::chrono::system_clock::duration age);

/// Minutes and seconds, or hours too: "0:07", "1:02:05".
QString runningTimeText(std::chrono::nanoseconds time);

} // namespace velto
