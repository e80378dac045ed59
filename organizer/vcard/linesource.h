#ifndef LINESOURCE_H
#define LINESOURCE_H

#include <QByteArray>
#include <QIODevice>
#include <QStringDecoder>

namespace VCard {

/** A physical line without its line break. */
struct Line
{
    QByteArray bytes;
    int number = 0;       ///< 1 is the first line of the file.
    bool tooLong = false; ///< The line passed LineSource::MaxLine; bytes holds its beginning only.
};

/**
 * Splits a device into physical lines, whatever ends them: CR LF, LF or CR.
 *
 * A file in UTF-16 (with a mark, or recognised by its first character) arrives as UTF-8; byte order marks are
 * taken off. At most one block and one line are in memory.
 */
class LineSource
{
public:
    /** Longest line that is kept, in bytes; a picture in one line has room in it. */
    static constexpr qsizetype MaxLine = qsizetype{4} * 1024 * 1024;

    /** @p device stays the caller's, is open for reading and outlives the source. */
    explicit LineSource(QIODevice *device) : m_device(device) {}

    /** The next line in @p line; false at the end of the device. */
    [[nodiscard]] bool next(Line *line);

    /** True when the bytes have been converted, so that their original encoding means nothing any more. */
    [[nodiscard]] bool isConverted() const { return m_utf16.isValid(); }

private:
    bool fill();
    void detectUtf16(const QByteArray &start);
    void append(Line *line, qsizetype end) const;
    qsizetype findLineEnd() const;
    void stepOverBreak(qsizetype end);

    QIODevice *m_device;
    QStringDecoder m_utf16;
    QByteArray m_block;
    qsizetype m_position = 0;
    int m_number = 0;
    bool m_started = false;
    bool m_afterCarriageReturn = false;
};

} // namespace VCard

#endif
