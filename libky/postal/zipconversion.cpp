#include "zipconversion.h"
#include "japanesetext.h"

#include <array>
#include <cstring>

namespace {

constexpr int ZipDigits = 7;
constexpr int AreaDigits = 3; // in front of the hyphen
constexpr QChar FullWidthZero(0xFF10);
constexpr QChar FullWidthHyphen(0xFF0D);
constexpr QChar Solidus(0xFF0F); // between the prefecture and the place

/* 7-bit JIS: its escapes around the characters, two bytes each. */
constexpr char KanjiIn[] = "\x1B$B";
constexpr char KanjiOut[] = "\x1B(B";
constexpr qsizetype EscapeLength = 3;
constexpr qsizetype CharacterLength = 2;
constexpr char GetaMark[] = "\x22\x2E"; // 〓, which stands for a character that isn't there

// Each with its terminator; the buffers have one more.
constexpr size_t ResultLength = YDIC_ADDRESS_LENGTH + 1;
constexpr size_t CodeLength = ZipDigits + 1;

/** The digit, or a null character. */
QChar asciiDigit(QChar character)
{
    const int fromZero = character.unicode() - '0';
    const int fromFullWidthZero = character.unicode() - FullWidthZero.unicode();
    for (const int digit : {fromZero, fromFullWidthZero}) {
        if (digit >= 0 && digit <= 9)
            return QLatin1Char(static_cast<char>('0' + digit));
    }
    return {};
}

/** Between JIS X 0208's rows of signs and kana and those of its Kanji, and behind these, makers put
 * characters of their own. */
bool isRowOfJisX0208(uchar row)
{
    return (row >= 0x21 && row <= 0x28) || (row >= 0x30 && row <= 0x74);
}

/** @return two bytes; none for a character that JIS X 0208 hasn't */
QByteArray jisOf(char32_t character)
{
    const QByteArray encoded = JapaneseText::toJis7(QString::fromUcs4(&character, 1));
    if (!encoded.startsWith(KanjiIn) || encoded.size() != 2 * EscapeLength + CharacterLength)
        return {};
    const QByteArray code = encoded.mid(EscapeLength, CharacterLength);
    return isRowOfJisX0208(static_cast<uchar>(code[0])) ? code : QByteArray();
}

KYAddressItem addressItem(const QString &text, const QString &zip, bool showZip)
{
    const qsizetype solidus = text.indexOf(Solidus);
    return {text.left(qMax<qsizetype>(solidus, 0)), text.mid(solidus + 1), zip, showZip};
}

/** The two searches by code, with the room for their results. */
class ZipSearch
{
public:
    explicit ZipSearch(ydic_info *info) : m_info(info) {}

    /** @return as Zip2AdrSearch() */
    int find(const QString &code)
    {
        m_zip = code;
        m_count = Zip2AdrSearch(code.toLatin1().constData(), KyAddressListMaximum, m_results.data(), m_info);
        return m_count;
    }

    /** @return as Zip2AdrSearchNP() */
    int findNear(const QString &code, uint8_t direction)
    {
        std::array<char, CodeLength + 1> nearCode{};
        m_count = Zip2AdrSearchNP(code.toLatin1().constData(), KyAddressListMaximum, direction,
                                  nearCode.data(), m_results.data(), m_info);
        m_zip = QString::fromLatin1(nearCode.data());
        return m_count;
    }

    /** The code itself, else the next one of its area, else the first that there is from the area's begin on.
     */
    void findOrFollow(const QString &code)
    {
        const QString area = code.left(AreaDigits);
        if (find(code) != 0)
            return;
        const int following = findNear(code, YDIC_NEXT);
        if (following < 0 || (following > 0 && m_zip.startsWith(area)))
            return;
        const QString firstOfArea = EncodeZipStr(area);
        if (find(firstOfArea) == 0)
            findNear(firstOfArea, YDIC_NEXT);
    }

    /** The code of the addresses; null when there are none. */
    [[nodiscard]] QString found() const { return m_count > 0 ? m_zip : QString(); }

    /** @param zip the code as the items are to have it */
    [[nodiscard]] QList<KYAddressItem> items(const QString &zip, bool showZip) const
    {
        QList<KYAddressItem> list;
        const char *result = m_results.data();
        for (int i = 0; i < qMin(m_count, KyAddressListMaximum); ++i) {
            list.append(addressItem(YDicJisToUnicode(result), zip, showZip));
            result += strlen(result) + 1;
        }
        return list;
    }

private:
    ydic_info *const m_info;
    std::array<char, KyAddressListMaximum * ResultLength + 1> m_results{};
    int m_count = 0;
    QString m_zip;
};

QString withHyphen(const QString &code, QChar hyphen)
{
    return QString(code).insert(AreaDigits, hyphen);
}

} // namespace

QString FullWidthAdrStr(const QString &text)
{
    constexpr char16_t FullWidthOffset = 0xFEE0;
    QString result;
    // Composes half-width kana with their marks too.
    for (const QChar character : text.normalized(QString::NormalizationForm_KC)) {
        const bool isHalfWidth = character.unicode() > 0x20 && character.unicode() < 0x7F;
        if (isHalfWidth)
            result += QChar(static_cast<char16_t>(character.unicode() + FullWidthOffset));
        else if (!character.isSpace())
            result += character;
    }
    return result;
}

QString EncodeAdrStr(const QString &text)
{
    return UnicodeToYDicJis(text);
}

QString EncodeZipStr(const QString &text)
{
    QString digits;
    for (const QChar character : text) {
        if (const QChar digit = asciiDigit(character); !digit.isNull())
            digits += digit;
    }
    return digits.isEmpty() ? QString() : digits.leftJustified(ZipDigits, QLatin1Char('0'));
}

QString EncodeZipLabel(const QString &text)
{
    QString label = EncodeZipStr(text);
    if (label.isNull())
        return {};
    for (QChar &digit : label)
        digit = QChar(digit.unicode() - '0' + FullWidthZero.unicode());
    return withHyphen(label, FullWidthHyphen);
}

QString YDicJisToUnicode(const char *text)
{
    return text ? JapaneseText::fromJis7(QByteArray(KanjiIn) + text + KanjiOut) : QString();
}

QString UnicodeToYDicJis(const QString &text)
{
    QByteArray jis;
    bool hasAny = false;
    for (const uint character : text.toUcs4()) {
        const QByteArray code = jisOf(character);
        hasAny = hasAny || !code.isEmpty();
        // Left out, it would make another name of what stands around it.
        jis += code.isEmpty() ? GetaMark : code;
    }
    return hasAny ? QString::fromLatin1(jis) : QString();
}

QList<KYAddressItem> GetKyAddressListFromZip(ydic_info *info, const QString &zip, QString *foundZip, int mode)
{
    if (foundZip)
        *foundZip = QString();
    const QString code = EncodeZipStr(zip);
    if (!info || code.isNull())
        return {};
    ZipSearch search(info);
    if (mode == KyAddressListFind)
        search.findOrFollow(code);
    else if (mode == KyAddressListNext || mode == KyAddressListPrevious)
        search.findNear(code, mode == KyAddressListNext ? YDIC_NEXT : YDIC_PREVIOUS);
    if (foundZip)
        *foundZip = search.found();
    return search.items(search.found(), false);
}

QList<KYAddressItem> GetKyAddressListFromAdr(ydic_info *info, const QString &address, bool *multi, int mode)
{
    if (multi)
        *multi = false;
    if (!info || address.isNull() || mode != KyAddressListFind)
        return {};
    std::array<char, KyAddressListMaximum * CodeLength + 1> codes{};
    const int count = Adr2ZipSearch(address.toLatin1().constData(), KyAddressListMaximum, codes.data(), info);
    const bool hasSeveral = count > 1;
    QList<KYAddressItem> list;
    for (int i = 0; i < qMin(count, KyAddressListMaximum); ++i) {
        const QString code = QString::fromLatin1(codes.data() + static_cast<size_t>(i) * CodeLength);
        ZipSearch search(info);
        if (search.find(code) > 0 && hasSeveral && multi)
            *multi = true;
        list += search.items(withHyphen(code, QLatin1Char('-')), hasSeveral);
    }
    return list;
}
