#include "cardsource.h"
#include <QCoreApplication>

namespace VCard {

namespace {

QString text(const char *source)
{
    return QCoreApplication::translate("VCardReader", source);
}

bool isMarker(const QByteArray &line, const char *keyword)
{
    // The longest marker with a few blanks; long lines aren't looked at.
    if (line.size() > 80 || line.startsWith(' ') || line.startsWith('\t'))
        return false;
    const qsizetype colon = line.indexOf(':');
    return colon > 0 && line.left(colon).trimmed().compare(keyword, Qt::CaseInsensitive) == 0 &&
           line.mid(colon + 1).trimmed().compare("VCARD", Qt::CaseInsensitive) == 0;
}

/** `AGENT:` with nothing behind it, which announces a nested card. */
bool announcesAgent(const QByteArray &line)
{
    const qsizetype colon = line.indexOf(':');
    return colon > 0 && line.left(5).compare("AGENT", Qt::CaseInsensitive) == 0 &&
           line.mid(colon + 1).trimmed().isEmpty();
}

/** `AGENT:BEGIN:VCARD` in one line. */
bool opensAgent(const QByteArray &line)
{
    const qsizetype colon = line.indexOf(':');
    return colon > 0 && line.left(5).compare("AGENT", Qt::CaseInsensitive) == 0 &&
           isBegin(line.mid(colon + 1).trimmed());
}

QByteArray lastTextLine(const QList<Line> &lines)
{
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        if (!line->bytes.trimmed().isEmpty())
            return line->bytes;
    }
    return {};
}

void setFault(RawCard *card, int line, const char *reason)
{
    if (!card->fault.isEmpty())
        return;
    card->faultLine = line;
    card->fault = text(reason);
    card->lines.clear();
}

} // namespace

bool isBegin(const QByteArray &line)
{
    return isMarker(line, "BEGIN");
}

bool isEnd(const QByteArray &line)
{
    return isMarker(line, "END");
}

bool CardSource::findBegin(Line *line)
{
    if (m_pendingBegin) {
        *line = *m_pendingBegin;
        m_pendingBegin.reset();
        return true;
    }
    while (m_lines.next(line)) {
        const QByteArray trimmed = line->bytes.trimmed();
        if (isBegin(trimmed))
            return true;
        if (!trimmed.isEmpty() && m_strayLine == 0)
            m_strayLine = line->number;
    }
    return false;
}

void CardSource::take(RawCard *card, const Line &line)
{
    if (line.tooLong)
        setFault(card, line.number, QT_TRANSLATE_NOOP("VCardReader", "the line is too long"));
    m_size += line.bytes.size() + qsizetype(sizeof(Line));
    if (m_size > MaxCard)
        setFault(card, card->line, QT_TRANSLATE_NOOP("VCardReader", "the card is too large"));
    if (card->fault.isEmpty())
        card->lines.append(line);
}

bool CardSource::readInto(RawCard *card)
{
    Line line;
    while (m_lines.next(&line)) {
        if (isEnd(line.bytes)) {
            if (m_depth-- == 0)
                return true;
        } else if (isBegin(line.bytes)) {
            if (!announcesAgent(lastTextLine(card->lines))) {
                m_pendingBegin = line;
                return false;
            }
            ++m_depth;
        } else if (opensAgent(line.bytes)) {
            ++m_depth;
        }
        take(card, line);
    }
    return false;
}

std::optional<RawCard> CardSource::next()
{
    Line begin;
    if (!findBegin(&begin))
        return std::nullopt;
    RawCard card;
    card.line = begin.number;
    m_size = 0;
    m_depth = 0;
    if (!readInto(&card))
        setFault(&card, card.line, QT_TRANSLATE_NOOP("VCardReader", "the card has no end"));
    card.isConverted = m_lines.isConverted();
    return card;
}

} // namespace VCard
