#include "carddate.h"
#include <QDate>
#include <QRegularExpression>

namespace VCard {

namespace {

/** A leap year, so that a birthday of 29 February needs no year. */
constexpr int AnyYear = 2000;

} // namespace

QString toBookDate(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^(\\d{4}|--)(?|(\\d{2})(\\d{2})|[-/.]?(\\d{1,2})[-/.](\\d{1,2}))(?:[T ].*)?$"));
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return {};
    const bool hasYear = match.captured(1) != u"--";
    const QDate date(hasYear ? match.captured(1).toInt() : AnyYear, match.captured(2).toInt(),
                     match.captured(3).toInt());
    if (!date.isValid())
        return {};
    return hasYear ? date.toString(Qt::ISODate) : withoutYear(date.toString(Qt::ISODate));
}

QString withoutYear(const QString &date)
{
    return date.isEmpty() ? date : u'-' + date.mid(4);
}

} // namespace VCard
