#ifndef KY_TIMESTRING_H
#define KY_TIMESTRING_H

#include "dateformat.h"
#include "kyexport.h"
#include <QCoreApplication>
#include <QDate>
#include <QString>
#include <QTime>

/**
 * Dates and times as the user wants to see them. An invalid date or time gives an empty text.
 *
 * The user's choice lies in the settings "qpe":
 *
 *     [Date]
 *     Order = YMD         or MDY or DMY; anything else counts as YMD
 *     Separator = /       its first character counts
 *     [Time]
 *     AMPM = 1            twelve hours (1, the default) or twenty-four (0)
 */
class KY_EXPORT TimeString
{
    Q_DECLARE_TR_FUNCTIONS(TimeString)
public:
    /** The user's format, read from the settings at each call. */
    [[nodiscard]] static DateFormat currentDateFormat();
    /** True when the user wants twelve hours, read from the settings at each call. */
    [[nodiscard]] static bool currentAmPm();

    /** Such as 2000/12/30 or 30.12.2000; month and day have two digits. */
    [[nodiscard]] static QString numberDateString(QDate date, DateFormat format);
    /** Such as 12/30: month and day without the year. */
    [[nodiscard]] static QString shortDate(QDate date, DateFormat format);
    /** With the names of weekday and month in the user's language, such as Saturday, 30 December 2000. */
    [[nodiscard]] static QString longDateString(QDate date);

    /** Such as 17:05, or with @p ampm 5:05 PM; with @p seconds 17:05:09. */
    [[nodiscard]] static QString timeString(QTime time, bool ampm, bool seconds = false);
};

#endif
