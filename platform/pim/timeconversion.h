#ifndef KY_TIMECONVERSION_H
#define KY_TIMECONVERSION_H

#include "kyexport.h"
#include <ctime>
#include <QDateTime>

/**
 * Between wall-clock times and moments. A wall-clock QDateTime carries its date and time only; its own time
 * specification isn't looked at. Local time has the rules of the process's zone (TZ, read at each call): a
 * time that the zone skips moves forward, one that it has twice is the first.
 */
class KY_EXPORT TimeConversion
{
public:
    /** Local wall-clock time to a moment, without parts of a second; -1 for an invalid one. */
    [[nodiscard]] static time_t toUTC(const QDateTime &local);
    /** Moment to local wall-clock time, as Qt::LocalTime; invalid when the moment is beyond the calendar. */
    [[nodiscard]] static QDateTime fromUTC(time_t moment);
    /** A wall-clock time that shows UTC fields, to its moment; -1 for an invalid one. */
    [[nodiscard]] static time_t toRawUTC(const QDateTime &utc);
    /** Moment to a wall-clock time that shows the UTC fields, as Qt::UTC, since local time may skip them;
     * invalid when the moment is beyond the calendar. */
    [[nodiscard]] static QDateTime fromRawUTC(time_t moment);
};

#endif
