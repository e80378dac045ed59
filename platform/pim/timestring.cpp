#include "timestring.h"

#include "config.h"
#include <QLocale>

namespace {

DateFormat::Order orderOf(const QString &name)
{
    if (name == QLatin1String("MDY"))
        return DateFormat::MonthDayYear;
    return name == QLatin1String("DMY") ? DateFormat::DayMonthYear : DateFormat::YearMonthDay;
}

QString digits(int number, int width)
{
    return QStringLiteral("%1").arg(number, width, 10, QLatin1Char('0'));
}

} // namespace

DateFormat TimeString::currentDateFormat()
{
    Config settings(QStringLiteral("qpe"));
    settings.setGroup(QStringLiteral("Date"));
    DateFormat format;
    format.order = orderOf(settings.readEntry(QStringLiteral("Order")));
    const QString separator = settings.readEntry(QStringLiteral("Separator"));
    if (!separator.isEmpty())
        format.separator = separator[0];
    return format;
}

bool TimeString::currentAmPm()
{
    Config settings(QStringLiteral("qpe"));
    settings.setGroup(QStringLiteral("Time"));
    return settings.readBoolEntry(QStringLiteral("AMPM"), true);
}

QString TimeString::numberDateString(QDate date, DateFormat format)
{
    if (!date.isValid())
        return QString();
    const QString year = digits(date.year(), 4);
    const QString rest = shortDate(date, format);
    return format.order == DateFormat::YearMonthDay ? year + format.separator + rest
                                                    : rest + format.separator + year;
}

QString TimeString::shortDate(QDate date, DateFormat format)
{
    if (!date.isValid())
        return QString();
    const QString day = digits(date.day(), 2);
    const QString month = digits(date.month(), 2);
    return format.order == DateFormat::DayMonthYear ? day + format.separator + month
                                                    : month + format.separator + day;
}

QString TimeString::longDateString(QDate date)
{
    return QLocale().toString(date, QLocale::LongFormat);
}

QString TimeString::timeString(QTime time, bool ampm, bool seconds)
{
    if (!time.isValid())
        return QString();
    const QString rest = QLatin1Char(':') + digits(time.minute(), 2) +
                         (seconds ? QLatin1Char(':') + digits(time.second(), 2) : QString());
    if (!ampm)
        return digits(time.hour(), 2) + rest;
    const int hour = (time.hour() + 11) % 12 + 1;
    return QString::number(hour) + rest + QLatin1Char(' ') + (time.hour() < 12 ? tr("AM") : tr("PM"));
}
