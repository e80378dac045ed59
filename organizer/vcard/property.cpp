#include "property.h"
#include "japanesetext.h"
#include <algorithm>
#include <QStringDecoder>

namespace VCard {

namespace {

constexpr int NoPreference = 101;

bool isNameCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'-' || c == u'_' || c == u'/';
}

bool isName(const QString &name)
{
    return !name.isEmpty() && std::all_of(name.cbegin(), name.cend(), isNameCharacter);
}

/** Position of the first @p wanted outside double quotes, or -1. */
qsizetype findOutsideQuotes(const QByteArray &bytes, char wanted, qsizetype from = 0)
{
    bool quoted = false;
    for (qsizetype i = from; i < bytes.size(); ++i) {
        if (bytes[i] == '"')
            quoted = !quoted;
        else if (bytes[i] == wanted && !quoted)
            return i;
    }
    return -1;
}

QList<QByteArray> splitOutsideQuotes(const QByteArray &bytes, char separator)
{
    QList<QByteArray> parts;
    qsizetype start = 0;
    for (qsizetype end; (end = findOutsideQuotes(bytes, separator, start)) >= 0; start = end + 1)
        parts.append(bytes.mid(start, end - start));
    parts.append(bytes.mid(start));
    return parts;
}

QString decodeBytes(const QByteArray &bytes, Charset charset)
{
    switch (charset) {
    case Charset::ShiftJis:
        return JapaneseText::fromSjis(bytes);
    case Charset::Latin1:
        return QString::fromLatin1(bytes);
    case Charset::Utf8:
        break;
    }
    return QString::fromUtf8(bytes);
}

bool isShiftJisName(const QByteArray &name)
{
    static constexpr const char *Names[] = {"SHIFT_JIS", "SHIFT-JIS",   "SJIS",    "X-SJIS",
                                            "CP932",     "WINDOWS-31J", "MS_KANJI"};
    return std::any_of(std::begin(Names), std::end(Names), [&](const char *known) { return name == known; });
}

QString decodeNamed(const QByteArray &bytes, const QByteArray &charset, Charset fallback)
{
    if (isShiftJisName(charset))
        return JapaneseText::fromSjis(bytes);
    QStringDecoder decoder(charset.constData());
    return decoder.isValid() ? QString(decoder.decode(bytes)) : decodeBytes(bytes, fallback);
}

QString unquoted(const QByteArray &bytes, Charset charset)
{
    return decodeBytes(bytes, charset).remove(u'"').trimmed();
}

bool isEncodingName(const QString &word)
{
    static constexpr const char *Names[] = {"QUOTED-PRINTABLE", "BASE64", "B", "8BIT", "7BIT"};
    return std::any_of(std::begin(Names), std::end(Names),
                       [&](const char *known) { return word == QLatin1String(known); });
}

bool isPlaceName(const QString &word)
{
    static constexpr const char *Names[] = {"INLINE", "URL", "CONTENT-ID", "CID"};
    return std::any_of(std::begin(Names), std::end(Names),
                       [&](const char *known) { return word == QLatin1String(known); });
}

void addBareParameter(Property *property, const QString &word)
{
    const QString upper = word.toUpper();
    if (isEncodingName(upper))
        property->parameters.insert(QStringLiteral("ENCODING"), upper);
    else if (isPlaceName(upper))
        property->parameters.insert(QStringLiteral("VALUE"), upper);
    else if (!upper.isEmpty())
        property->types.append(upper);
}

void addTypes(Property *property, const QString &list)
{
    for (const QString &type : list.split(u',')) {
        if (!type.trimmed().isEmpty())
            property->types.append(type.trimmed().toUpper());
    }
}

void addParameter(Property *property, const QByteArray &parameter)
{
    const qsizetype equals = findOutsideQuotes(parameter, '=');
    if (equals < 0)
        return addBareParameter(property, unquoted(parameter, property->charset));
    const QString name = unquoted(parameter.left(equals), property->charset).toUpper();
    const QString value = unquoted(parameter.mid(equals + 1), property->charset);
    if (name == u"TYPE")
        addTypes(property, value);
    else
        property->parameters.insert(name, value);
}

void splitGroup(Property *property)
{
    const qsizetype dot = property->name.lastIndexOf(u'.');
    if (dot < 0)
        return;
    property->group = property->name.left(dot).toLower();
    property->name.remove(0, dot + 1);
}

/** The separators of version 2.1 may be escaped, nothing else is. */
bool isEscapable(QChar c, bool isLegacy)
{
    return c == u'\\' || c == u';' || c == u',' || c == u':' || (!isLegacy && (c == u'n' || c == u'N'));
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

QString withLineFeeds(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(u'\r', u'\n');
    return text.remove(QChar(0));
}

} // namespace

QByteArray decodeQuotedPrintable(const QByteArray &bytes)
{
    QByteArray result;
    result.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const int high = bytes[i] == '=' && i + 2 < bytes.size() ? hexDigit(bytes[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(bytes[i + 2]) : -1;
        if (low >= 0) {
            result.append(static_cast<char>(high * 16 + low));
            i += 2;
        } else {
            result.append(bytes[i]);
        }
    }
    return result;
}

QString unescape(const QString &text, bool isLegacy)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\\' && i + 1 < text.size() && isEscapable(text[i + 1], isLegacy)) {
            ++i;
            result.append(text[i].toLower() == u'n' ? QChar(u'\n') : text[i]);
        } else {
            result.append(text[i]);
        }
    }
    return result;
}

int Property::preference() const
{
    if (hasType("PREF"))
        return 1;
    bool isNumber = false;
    const int rank = parameters.value(QStringLiteral("PREF")).toInt(&isNumber);
    return isNumber && rank >= 1 && rank < NoPreference ? rank : NoPreference;
}

QString Property::encodedText() const
{
    const QString encoding = parameters.value(QStringLiteral("ENCODING")).toUpper();
    QByteArray bytes = value;
    if (encoding == u"QUOTED-PRINTABLE")
        bytes = decodeQuotedPrintable(value);
    else if (encoding == u"BASE64" || encoding == u"B")
        bytes = QByteArray::fromBase64(value);
    const bool isPlain = bytes == value;
    const QByteArray named = parameters.value(QStringLiteral("CHARSET")).toUpper().toLatin1();
    if (named.isEmpty() || (isPlain && isConverted))
        return withLineFeeds(decodeBytes(bytes, charset));
    return withLineFeeds(decodeNamed(bytes, named, charset));
}

QString Property::text() const
{
    return unescape(encodedText(), isLegacy);
}

QStringList Property::parts(QChar separator) const
{
    const QString whole = encodedText();
    QStringList result;
    qsizetype start = 0;
    for (qsizetype i = 0; i <= whole.size(); ++i) {
        if (i < whole.size() && whole[i] == u'\\' && i + 1 < whole.size()) {
            ++i;
        } else if (i == whole.size() || whole[i] == separator) {
            result.append(unescape(whole.mid(start, i - start), isLegacy).trimmed());
            start = i + 1;
        }
    }
    return result;
}

std::optional<Property> parseProperty(const LogicalLine &line, Charset charset)
{
    const qsizetype colon = findOutsideQuotes(line.bytes, ':');
    if (colon < 0)
        return std::nullopt;
    const QList<QByteArray> head = splitOutsideQuotes(line.bytes.left(colon), ';');
    Property property;
    property.charset = charset;
    property.line = line.number;
    property.name = QString::fromLatin1(head.first()).trimmed().toUpper();
    splitGroup(&property);
    if (!isName(property.name))
        return std::nullopt;
    for (const QByteArray &parameter : head.mid(1))
        addParameter(&property, parameter);
    property.value = line.bytes.mid(colon + 1);
    return property;
}

} // namespace VCard
