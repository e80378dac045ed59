#include "linesource.h"

namespace VCard {

namespace {

constexpr qint64 BlockSize = qint64{64} * 1024;
constexpr char Utf8Mark[] = "\xEF\xBB\xBF";

} // namespace

void LineSource::detectUtf16(const QByteArray &start)
{
    if (start.size() < 2)
        return;
    const auto first = static_cast<uchar>(start[0]);
    const auto second = static_cast<uchar>(start[1]);
    if ((first == 0xFF && second == 0xFE) || (first != 0 && second == 0))
        m_utf16 = QStringDecoder(QStringConverter::Utf16LE);
    else if ((first == 0xFE && second == 0xFF) || (first == 0 && second != 0))
        m_utf16 = QStringDecoder(QStringConverter::Utf16BE);
}

bool LineSource::fill()
{
    m_position = 0;
    do {
        m_block = m_device->read(BlockSize);
        if (m_block.isEmpty())
            return false;
        if (!m_started) {
            detectUtf16(m_block);
            m_started = true;
        }
        if (m_utf16.isValid())
            m_block = QString(m_utf16.decode(m_block)).toUtf8();
    } while (m_block.isEmpty());
    return true;
}

qsizetype LineSource::findLineEnd() const
{
    for (qsizetype i = m_position; i < m_block.size(); ++i) {
        if (m_block[i] == '\n' || m_block[i] == '\r')
            return i;
    }
    return m_block.size();
}

void LineSource::append(Line *line, qsizetype end) const
{
    const qsizetype room = MaxLine - line->bytes.size();
    const qsizetype length = end - m_position;
    line->bytes.append(m_block.constData() + m_position, qMin(room, length));
    line->tooLong = line->tooLong || length > room;
}

void LineSource::stepOverBreak(qsizetype end)
{
    m_afterCarriageReturn = m_block[end] == '\r';
    m_position = end + 1;
}

bool LineSource::next(Line *line)
{
    *line = Line{{}, ++m_number, false};
    bool any = false;
    for (;;) {
        if (m_position >= m_block.size() && !fill())
            break;
        if (m_afterCarriageReturn) {
            m_afterCarriageReturn = false;
            m_position += m_block[m_position] == '\n' ? 1 : 0;
            continue;
        }
        any = true;
        const qsizetype end = findLineEnd();
        append(line, end);
        m_position = end;
        if (end < m_block.size()) {
            stepOverBreak(end);
            break;
        }
    }
    if (line->bytes.startsWith(Utf8Mark))
        line->bytes.remove(0, 3);
    return any;
}

} // namespace VCard
