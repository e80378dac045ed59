#include "elidedtext_p.h"

#include <algorithm>
#include <QTextBoundaryFinder>

namespace {

constexpr QLatin1String Ellipsis("...");

// Code units that are looked at for each pixel of a cell: more than any script needs.
constexpr qsizetype UnitsPerPixel = 4;
// Where the search for the longest beginning starts, in code units.
constexpr qsizetype FirstStep = 16;

// Qt takes what stands behind it for a shorter form of the text, which is shown when there is no room.
constexpr QChar VariantSeparator(0x9C);

/** Line ends and tabs would begin a line or a column of their own. */
QString asOneLine(QString text)
{
    for (QChar &character : text) {
        const bool isBreak = character == QChar::LineSeparator || character == QChar::ParagraphSeparator ||
                             character == VariantSeparator;
        if (isBreak || (character >= u'\t' && character <= u'\r'))
            character = u' ';
    }
    return text;
}

/** Finds how much of a text fits, in whole characters. */
class Beginning
{
public:
    Beginning(const QString &text, const QFontMetrics &metrics, int room)
        : m_text(text), m_metrics(metrics), m_room(room), m_characters(QTextBoundaryFinder::Grapheme, text)
    {
    }

    [[nodiscard]] qsizetype longest();

private:
    [[nodiscard]] bool fits(qsizetype length) const;
    [[nodiscard]] qsizetype characterEnd(qsizetype position);
    [[nodiscard]] qsizetype characterStart(qsizetype position);

    const QString &m_text;
    const QFontMetrics &m_metrics;
    const int m_room;
    QTextBoundaryFinder m_characters;
};

bool Beginning::fits(qsizetype length) const
{
    return m_metrics.horizontalAdvance(Ellipsis + m_text.left(length)) < m_room;
}

/** The end of the character that begins at a position. */
qsizetype Beginning::characterEnd(qsizetype position)
{
    m_characters.setPosition(position);
    const qsizetype end = m_characters.toNextBoundary();
    return end < 0 ? m_text.size() : end;
}

/** A position itself when a character begins there, else the beginning of the character around it. */
qsizetype Beginning::characterStart(qsizetype position)
{
    m_characters.setPosition(position);
    if (m_characters.isAtBoundary())
        return position;
    return std::max<qsizetype>(m_characters.toPreviousBoundary(), 0);
}

/** Doubles a step until it is too wide, so that little of a long text is measured, then halves the rest. */
qsizetype Beginning::longest()
{
    qsizetype fitting = 0;
    qsizetype tooLong = m_text.size();
    for (qsizetype step = FirstStep; step < m_text.size(); step *= 2) {
        const qsizetype length = characterStart(step);
        if (!fits(length)) {
            tooLong = length;
            break;
        }
        fitting = length;
    }
    while (characterEnd(fitting) < tooLong) {
        const qsizetype middle = characterStart(fitting + (tooLong - fitting) / 2);
        const qsizetype length = middle > fitting ? middle : characterEnd(fitting);
        (fits(length) ? fitting : tooLong) = length;
    }
    return fitting > 0 ? fitting : characterEnd(0);
}

} // namespace

QString elidedText(const QString &text, const QFontMetrics &metrics, int width, int margin)
{
    const QString head = asOneLine(text.left(UnitsPerPixel * std::max(width, 1)));
    const bool isWhole = head.size() == text.size();
    if (text.isEmpty() || (isWhole && metrics.horizontalAdvance(head) + margin <= width))
        return head;
    return head.left(Beginning(head, metrics, width - margin).longest()) + Ellipsis;
}
