#ifndef CARDSOURCE_H
#define CARDSOURCE_H

#include "linesource.h"
#include <optional>
#include <QList>

namespace VCard {

/** The physical lines of one card, from the line after its BEGIN to the line before its END. */
struct RawCard
{
    int line = 0;             ///< Where the BEGIN stands.
    QList<Line> lines;        ///< Those of nested cards too, with their BEGIN and END.
    QString fault;            ///< Why the card can't be used; empty when it can.
    int faultLine = 0;        ///< The line that the fault is told of.
    bool isConverted = false; ///< The text is UTF-8 whatever its parameters say.
};

/** Cuts a file into cards. A card that isn't closed or is too large is given with its fault. */
class CardSource
{
public:
    /** Largest card, in bytes without line breaks. */
    static constexpr qsizetype MaxCard = qsizetype{16} * 1024 * 1024;

    explicit CardSource(QIODevice *device) : m_lines(device) {}

    /** The next card, whole or with a fault; nothing at the end of the device. */
    [[nodiscard]] std::optional<RawCard> next();

    /** Line of the first text outside any card, 0 when there is none. */
    [[nodiscard]] int strayLine() const { return m_strayLine; }

private:
    bool findBegin(Line *line);
    bool readInto(RawCard *card);
    void take(RawCard *card, const Line &line);

    LineSource m_lines;
    std::optional<Line> m_pendingBegin;
    qsizetype m_size = 0;
    int m_depth = 0;
    int m_strayLine = 0;
};

/** True for a line that says `BEGIN:VCARD`, in any case. */
[[nodiscard]] bool isBegin(const QByteArray &line);

/** True for a line that says `END:VCARD`, in any case. */
[[nodiscard]] bool isEnd(const QByteArray &line);

} // namespace VCard

#endif
