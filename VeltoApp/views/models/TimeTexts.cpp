#include "VeltoApp/views/models/TimeTexts.h"

#include <QDateTime>
#include <QLocale>

namespace velto {
namespace {

using namespace std::chrono_literals;

QDateTime local(std::chrono::system_clock::time_point time) {
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    return QDateTime::fromMSecsSinceEpoch(since.count());
}

QString ago(qint64 count, const char* unit) {
    return QStringLiteral("%1 %2%3 ago").arg(count).arg(QLatin1String(unit), count == 1 ? "" : "s");
}

} // namespace

QString dateTimeText(std::chrono::system_clock::time_point time) {
    const auto when = local(time);
    const QLocale locale;
    return locale.toString(when.date(), QLocale::LongFormat) + QStringLiteral(", ") +
           locale.toString(when.time(), QLocale::ShortFormat);
}

QString agoText(std::chrono::system_clock::time_point time, std::chrono::system_clock::time_point now) {
    const auto when = local(time);
    const auto days = when.date().daysTo(local(now).date());
    const auto age = now - time;
    if (age < 0s || days >= 7)
        return QLocale().toString(when.date(), QLocale::ShortFormat);
    if (age < 1min)
        return QStringLiteral("Just now");
    if (age < 1h)
        return ago(age / 1min, "minute");
    if (days == 0 || age < 12h)
        return ago(age / 1h, "hour");
    if (days == 1)
        return QStringLiteral("Yesterday");
    return ago(days, "day");
}

std::chrono::milliseconds agoLifetime(std::chrono::system_clock::duration age) {
    const auto left = [age](auto unit) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(unit - age % unit) + 1ms;
    };
    if (age < 0s || age >= 24h)
        return 0ms;
    return age < 1h ? left(std::chrono::minutes(1)) : left(std::chrono::hours(1));
}

QString runningTimeText(std::chrono::nanoseconds time) {
    const auto seconds = time / 1s;
    const auto two = [](auto number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    const auto minutes = seconds / 60 % 60;
    return (seconds < 3600 ? QString::number(minutes)
                           : QString::number(seconds / 3600) + QLatin1Char(':') + two(minutes)) +
           QLatin1Char(':') + two(seconds % 60);
}

} // namespace velto
