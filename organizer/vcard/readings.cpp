#include "readings.h"
#include <algorithm>
#include <QStringList>

namespace VCard {

namespace {

bool isHalfWidthKana(QChar c)
{
    return c.unicode() >= 0xFF61 && c.unicode() <= 0xFF9F;
}

bool isEastAsianCharacter(uint c)
{
    switch (QChar::script(c)) {
    case QChar::Script_Han:
    case QChar::Script_Hiragana:
    case QChar::Script_Katakana:
    case QChar::Script_Hangul:
        return true;
    default:
        return false;
    }
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

bool isEastAsian(const QString &text)
{
    const QList<uint> characters = text.toUcs4();
    return std::any_of(characters.cbegin(), characters.cend(), isEastAsianCharacter);
}

QString joined(const QStringList &parts)
{
    QStringList filled = parts;
    filled.removeAll(QString());
    return filled.join(u' ');
}

} // namespace VCard
