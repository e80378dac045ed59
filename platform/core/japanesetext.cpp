#include "japanesetext.h"

#include <cerrno>
#include <iconv.h>
#include <optional>
#include <QDebug>

namespace {

constexpr const char *utf16 = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "UTF-16LE" : "UTF-16BE";
constexpr const char *codePage = "CP932";

/** One direction of the code page. */
class Converter
{
public:
    Converter(const char *to, const char *from) : m_handle(iconv_open(to, from))
    {
        if (!isOpen())
            qWarning("no table of Japanese text: %s to %s", from, to);
    }
    ~Converter()
    {
        if (isOpen())
            iconv_close(m_handle);
    }
    Q_DISABLE_COPY_MOVE(Converter)

    /** Converts until the end or the first bad place; both pointers move on. @return true at the end */
    bool run(const char *&in, const char *inEnd, char *&out, char *outEnd)
    {
        if (!isOpen())
            return in == inEnd;
        char *from = const_cast<char *>(in);
        size_t left = static_cast<size_t>(inEnd - in);
        size_t room = static_cast<size_t>(outEnd - out);
        const size_t result = iconv(m_handle, &from, &left, &out, &room);
        in = from;
        return result != static_cast<size_t>(-1);
    }

private:
    bool isOpen() const { return m_handle != reinterpret_cast<iconv_t>(-1); }

    iconv_t m_handle;
};

Converter &encoder()
{
    thread_local Converter converter(codePage, utf16);
    return converter;
}

Converter &decoder()
{
    thread_local Converter converter(utf16, codePage);
    return converter;
}

struct Encoded
{
    QByteArray bytes;
    bool complete = true; ///< nothing was replaced
};

qsizetype bytesOfCharacter(const QChar *at, const QChar *end)
{
    const bool isPair = at + 1 < end && at[0].isHighSurrogate() && at[1].isLowSurrogate();
    return isPair ? 4 : 2;
}

Encoded encode(const QString &text)
{
    Encoded result;
    result.bytes.resize(text.size() * 2);
    const char *in = reinterpret_cast<const char *>(text.constData());
    const char *inEnd = in + text.size() * 2;
    char *out = result.bytes.data();
    char *outEnd = out + result.bytes.size();
    while (!encoder().run(in, inEnd, out, outEnd)) {
        in += bytesOfCharacter(reinterpret_cast<const QChar *>(in), text.constEnd());
        *out++ = '?';
        result.complete = false;
    }
    result.bytes.resize(out - result.bytes.data());
    return result;
}

constexpr char escapeByte = '\x1B';

/** The character sets of 7-bit JIS. */
enum class Set { Ascii, Kana, Kanji };

struct Escape
{
    Set set;
    char bytes[4];
};

/** The first of a set is the one that is written. ESC ( J, Latin with a yen sign, is read as ASCII: Shift-JIS
 * has the same bytes for both. */
constexpr Escape escapes[] = {{Set::Ascii, "\x1B(B"},
                              {Set::Ascii, "\x1B(J"},
                              {Set::Kana, "\x1B(I"},
                              {Set::Kanji, "\x1B$B"},
                              {Set::Kanji, "\x1B$@"}};
constexpr qsizetype escapeLength = 3;

const char *escapeTo(Set set)
{
    for (const Escape &escape : escapes) {
        if (escape.set == set)
            return escape.bytes;
    }
    return "";
}

std::optional<Set> escapeAt(const QByteArray &bytes, qsizetype at)
{
    for (const Escape &escape : escapes) {
        if (qstrncmp(bytes.constData() + at, escape.bytes, escapeLength) == 0)
            return escape.set;
    }
    return std::nullopt;
}

bool isLead(uchar byte)
{
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

bool isKana(uchar byte)
{
    return byte >= 0xA1 && byte <= 0xDF;
}

/** True for a byte of a two-byte code. */
bool isKanjiByte(uchar byte)
{
    return byte >= 0x21 && byte <= 0x7E;
}

/** Two rows of JIS share a lead byte of Shift-JIS. Rows behind 94 have no JIS code: empty. */
QByteArray jisOfSjis(uchar lead, uchar trail)
{
    const int pairOfRows = lead - (lead <= 0x9F ? 0x81 : 0xC1);
    const bool isSecondRow = trail >= 0x9F;
    const int row = 0x21 + 2 * pairOfRows + (isSecondRow ? 1 : 0);
    const int cell = isSecondRow ? trail - 0x7E : trail - (trail > 0x7F ? 0x20 : 0x1F);
    if (row > 0x7E)
        return {};
    const char code[] = {static_cast<char>(row), static_cast<char>(cell)};
    return QByteArray(code, 2);
}

QByteArray sjisOfJis(uchar row, uchar cell)
{
    const int pairOfRows = (row - 0x21) / 2;
    const int lead = pairOfRows + (pairOfRows <= 0x1E ? 0x81 : 0xC1);
    const bool isFirstRow = row % 2 == 1;
    const int trail = isFirstRow ? cell + (cell >= 0x60 ? 0x20 : 0x1F) : cell + 0x7E;
    const char code[] = {static_cast<char>(lead), static_cast<char>(trail)};
    return QByteArray(code, 2);
}

class Jis7Writer
{
public:
    void add(Set set, const QByteArray &code)
    {
        if (set != m_set)
            m_bytes += escapeTo(set);
        m_set = set;
        m_bytes += code;
    }

    void addKanji(uchar lead, uchar trail)
    {
        const QByteArray code = jisOfSjis(lead, trail);
        code.isEmpty() ? add(Set::Ascii, "?") : add(Set::Kanji, code);
    }

    void addSingle(uchar byte)
    {
        if (isKana(byte))
            add(Set::Kana, QByteArray(1, static_cast<char>(byte - 0x80)));
        else
            add(Set::Ascii, QByteArray(1, byte < 0x80 && byte != escapeByte ? static_cast<char>(byte) : '?'));
    }

    QByteArray finish()
    {
        add(Set::Ascii, {});
        return m_bytes;
    }

private:
    Set m_set = Set::Ascii;
    QByteArray m_bytes;
};

class Jis7Reader
{
public:
    explicit Jis7Reader(const QByteArray &bytes) : m_bytes(bytes) {}

    QString read()
    {
        while (m_at < m_bytes.size())
            readNext();
        return m_text;
    }

private:
    uchar byteAt(qsizetype at) const { return at < m_bytes.size() ? static_cast<uchar>(m_bytes[at]) : 0; }

    void readNext()
    {
        const uchar byte = byteAt(m_at);
        if (const auto set = escapeAt(m_bytes, m_at)) {
            m_set = *set;
            m_at += escapeLength;
        } else if (m_set == Set::Kanji && isKanjiByte(byte) && isKanjiByte(byteAt(m_at + 1))) {
            const QString text = JapaneseText::fromSjis(sjisOfJis(byte, byteAt(m_at + 1)));
            m_text += text.size() == 1 ? text[0] : QChar(QChar::ReplacementCharacter);
            m_at += 2;
        } else {
            m_text += single(byte);
            ++m_at;
        }
    }

    /** Control characters and the blank are the same in every set. */
    QChar single(uchar byte) const
    {
        if (byte == escapeByte || byte >= 0x80)
            return QChar::ReplacementCharacter;
        if (m_set == Set::Ascii || !isKanjiByte(byte))
            return QLatin1Char(static_cast<char>(byte));
        if (m_set == Set::Kana && isKana(static_cast<uchar>(byte + 0x80)))
            return QChar(0xFF61 + byte - 0x21);
        return QChar::ReplacementCharacter;
    }

    const QByteArray m_bytes;
    qsizetype m_at = 0;
    Set m_set = Set::Ascii;
    QString m_text;
};

} // namespace

QByteArray JapaneseText::toSjis(const QString &text)
{
    return encode(text).bytes;
}

bool JapaneseText::canEncodeSjis(const QString &text)
{
    return encode(text).complete;
}

QString JapaneseText::fromSjis(const QByteArray &bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    const char *in = bytes.constData();
    const char *inEnd = in + bytes.size();
    char *begin = reinterpret_cast<char *>(text.data());
    char *out = begin;
    char *outEnd = out + text.size() * 2;
    while (!decoder().run(in, inEnd, out, outEnd)) {
        ++in;
        *reinterpret_cast<QChar *>(out) = QChar::ReplacementCharacter;
        out += sizeof(QChar);
    }
    text.resize((out - begin) / static_cast<qsizetype>(sizeof(QChar)));
    return text;
}

QByteArray JapaneseText::toJis7(const QString &text)
{
    const QByteArray sjis = toSjis(text);
    Jis7Writer writer;
    for (qsizetype i = 0; i < sjis.size(); ++i) {
        const uchar byte = static_cast<uchar>(sjis[i]);
        if (isLead(byte) && i + 1 < sjis.size())
            writer.addKanji(byte, static_cast<uchar>(sjis[++i]));
        else
            writer.addSingle(byte);
    }
    return writer.finish();
}

QString JapaneseText::fromJis7(const QByteArray &bytes)
{
    return Jis7Reader(bytes).read();
}
