#include "timeconversion.h"

namespace {

constexpr time_t secondsOfDay = 86400;

/** Seconds that local time is ahead of UTC at a moment. */
long offsetAt(time_t moment)
{
    tm fields;
    return localtime_r(&moment, &fields) ? fields.tm_gmtoff : 0;
}

QDateTime dateTimeOf(const tm &fields, Qt::TimeSpec spec)
{
    return QDateTime(QDate(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday),
                     QTime(fields.tm_hour, fields.tm_min, fields.tm_sec), spec);
}

} // namespace

time_t TimeConversion::toUTC(const QDateTime &local)
{
    if (!local.date().isValid() || !local.time().isValid())
        return -1;
    tzset();
    const time_t wall = toRawUTC(local);
    const long before = offsetAt(wall - secondsOfDay);
    const long after = offsetAt(wall + secondsOfDay);
    const time_t byOldRule = wall - before;
    const time_t byNewRule = wall - after;
    const bool isSkipped = offsetAt(byOldRule) != before && offsetAt(byNewRule) != after;
    return offsetAt(byOldRule) == before || isSkipped ? byOldRule : byNewRule;
}

QDateTime TimeConversion::fromUTC(time_t moment)
{
    tzset();
    tm fields;
    return localtime_r(&moment, &fields) ? dateTimeOf(fields, Qt::LocalTime) : QDateTime();
}

time_t TimeConversion::toRawUTC(const QDateTime &utc)
{
    if (!utc.date().isValid() || !utc.time().isValid())
        return -1;
    return static_cast<time_t>(QDateTime(utc.date(), utc.time(), Qt::UTC).toSecsSinceEpoch());
}

QDateTime TimeConversion::fromRawUTC(time_t moment)
{
    tm fields;
    return gmtime_r(&moment, &fields) ? dateTimeOf(fields, Qt::UTC) : QDateTime();
}
