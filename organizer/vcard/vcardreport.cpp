#include "vcardreport.h"
#include <QCoreApplication>
#include <QStringList>

namespace {

constexpr int SpelledOut = 10;

QString text(const char *source)
{
    return QCoreApplication::translate("VCardReader", source);
}

void addMore(QStringList *list, qsizetype total)
{
    if (total > SpelledOut)
        list->append(text("%1 more").arg(total - SpelledOut));
}

QString skippedCards(const VCardReport &report)
{
    QStringList list;
    for (const SkippedCard &card : report.skipped.mid(0, SpelledOut))
        list.append(text("line %1: %2").arg(card.line).arg(card.reason));
    addMore(&list, report.skippedCount);
    return text("%1 skipped (%2)").arg(report.skippedCount).arg(list.join(QLatin1String("; ")));
}

QString names(const QMap<QString, int> &counts)
{
    QStringList list;
    for (auto it = counts.cbegin(); it != counts.cend() && list.size() < SpelledOut; ++it)
        list.append(QStringLiteral("%1 (%2)").arg(it.key()).arg(it.value()));
    addMore(&list, counts.size());
    return list.join(QLatin1String(", "));
}

QString importedCards(int count)
{
    return count == 1 ? text("1 contact imported") : text("%1 contacts imported").arg(count);
}

QString movedValues(int count)
{
    return count == 1 ? text("1 value without a field kept in the notes")
                      : text("%1 values without a field kept in the notes").arg(count);
}

} // namespace

void VCardReport::skip(int line, const QString &reason)
{
    ++skippedCount;
    if (skipped.size() < MaxDetails)
        skipped.append({line, reason});
}

void VCardReport::count(QMap<QString, int> *counts, const QString &name)
{
    const bool hasRoom = counts->size() < MaxDetails || counts->contains(name);
    ++(*counts)[hasRoom ? name.left(64) : QStringLiteral("...")];
}

QString importReport(const VCardReport &report)
{
    QStringList parts{importedCards(report.imported)};
    if (report.skippedCount > 0)
        parts.append(skippedCards(report));
    if (!report.unknownProperties.isEmpty())
        parts.append(text("unknown properties: %1").arg(names(report.unknownProperties)));
    if (!report.leftOut.isEmpty())
        parts.append(text("left out: %1").arg(names(report.leftOut)));
    if (report.movedToNotes > 0)
        parts.append(movedValues(report.movedToNotes));
    return parts.join(QLatin1String(", "));
}
