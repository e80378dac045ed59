#ifndef VCARDREADER_H
#define VCARDREADER_H

#include "contactfields.h"
#include "vcardreport.h"
#include <memory>
#include <optional>
#include <QByteArray>
#include <QIODevice>

namespace VCard {
class CardSource;
}

/**
 * Reads contacts from vCard files of the versions 2.1, 3.0 and 4.0, mixed as they come, one card at a time.
 *
 * Text is UTF-8, UTF-16, Shift-JIS (found out card by card) or what a CHARSET says. A card that is broken is
 * skipped with its line and a reason, and the reader goes on behind it. Memory is that of the largest card,
 * at most 16 MiB of text, and lines over 4 MiB aren't taken.
 *
 *     VCardReader reader(&file);
 *     while (std::optional<ContactFields> contact = reader.next())
 *         add(*contact);
 *     show(importReport(reader.report()));
 */
class VCardReader
{
public:
    /** @p device stays the caller's, is open for reading, holds all its data and outlives the reader. */
    explicit VCardReader(QIODevice *device);

    explicit VCardReader(const QByteArray &bytes);
    ~VCardReader();

    /** The next contact that can be used; nothing at the end of the file. Every contact has a FullName. */
    [[nodiscard]] std::optional<ContactFields> next();

    /** What became of the file so far, complete when next() has given nothing. */
    [[nodiscard]] const VCardReport &report() const { return m_report; }

    /** The number of cards that a whole reading of @p device meets, for a progress bar. Leaves it at its
     * start. */
    [[nodiscard]] static int countCards(QIODevice *device);

private:
    Q_DISABLE_COPY(VCardReader)

    void finish();

    std::unique_ptr<QIODevice> m_ownDevice;
    std::unique_ptr<VCard::CardSource> m_cards;
    VCardReport m_report;
    bool m_isFinished = false;
};

#endif
