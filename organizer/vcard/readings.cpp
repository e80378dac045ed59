#include "readings.h"
#include <QStringList>

namespace VCard {

namespace {

bool isHalfWidthKana(QChar c)
{
    return c.unicode() >= 0xFF61 && c.unicode() <= 0xFF9F;
}

} // namespace

QString normalizedReading(const QString &reading)
{
    QString result;
    for (qsizetype start = 0; start < reading.size();) {
        const bool isHalfWidth = isHalfWidthKana(reading[start]);
        qsizetype end = start + 1;
        while (end < reading.size() && isHalfWidthKana(reading[end]) == isHalfWidth)
            ++end;
        const QString run = reading.mid(start, end - start);
        result += isHalfWidth ? run.normalized(QString::NormalizationForm_KC) : run;
        start = end;
    }
    return result;
}

QString joined(const QStringList &parts)
{
    QStringList filled = parts;
    filled.removeAll(QString());
    return filled.join(u' ');
}

} // namespace VCard
