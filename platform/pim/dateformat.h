#ifndef DATEFORMAT_H
#define DATEFORMAT_H

#include <QChar>

/** How a date is written in numbers. */
struct DateFormat
{
    enum Order { YearMonthDay, MonthDayYear, DayMonthYear };

    Order order = YearMonthDay;
    QChar separator = QLatin1Char('/');

    bool operator==(const DateFormat &other) const = default;
};

#endif
