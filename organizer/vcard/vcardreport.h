#ifndef VCARDREPORT_H
#define VCARDREPORT_H

#include <QList>
#include <QMap>
#include <QString>

/** A card that could not be used. */
struct SkippedCard
{
    int line = 0;   ///< 1 is the first line of the file.
    QString reason; ///< For the user, without a full stop.
};

/** What became of a file of cards. Its memory has a limit, whatever is in the file. */
struct VCardReport
{
    /** So many skipped cards and so many names are told one by one; the rest is only counted. */
    static constexpr int MaxDetails = 1000;

    int imported = 0;
    int skippedCount = 0;
    QList<SkippedCard> skipped;
    QMap<QString, int> unknownProperties; ///< Name and count.
    QMap<QString, int> leftOut; ///< Known, but nothing the address book has room for: pictures, keys.
    int movedToNotes = 0;       ///< Values without a field of their own.

    void skip(int line, const QString &reason);

    /** Adds one to @p name in @p counts, under "..." when there are too many names. */
    static void count(QMap<QString, int> *counts, const QString &name);
};

/**
 * The report in a sentence for the user, for example "23 contacts imported, 1 skipped (line 120: the card has
 * no end), unknown properties: X-FOO (3)". Up to ten skipped cards and ten names are spelled out.
 */
[[nodiscard]] QString importReport(const VCardReport &report);

#endif
