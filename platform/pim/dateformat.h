#ifndef KY_DATEFORMAT_H
#define KY_DATEFORMAT_H

#include <QChar>

/** How a date is written in numbers. */
struct DateFormat
{
    /** What comes first. */
    enum Order { YearMonthDay, MonthDayYear, DayMonthYear };

    Order order = YearMonthDay;         ///< that of year, month and day
    QChar separator = QLatin1Char('/'); ///< stands between them

    /** True for the same order and separator. */
    bool operator==(const DateFormat &other) const = default;
};

#endif
