#include "cardparser.h"
#include "japanesetext.h"
#include <algorithm>
#include <QCoreApplication>
#include <QUtf8StringView>

namespace VCard {

namespace {

struct Unfolder
{
    QList<LogicalLine> result;
    bool isLegacy = false;
    bool isQuotedPrintable = false;
    bool isBase64 = false;
    bool isOpen = false;

    void start(const Line &line);
    void add(const Line &line);
};

void Unfolder::start(const Line &line)
{
    result.append({line.bytes, line.number});
    const QByteArray head = line.bytes.left(line.bytes.indexOf(':')).toUpper();
    isQuotedPrintable = head.contains("QUOTED-PRINTABLE");
    isBase64 = isLegacy && (head.contains("BASE64") || head.contains("ENCODING=B"));
    isOpen = true;
}

void Unfolder::add(const Line &line)
{
    const bool isFolded = line.bytes.startsWith(' ') || line.bytes.startsWith('\t');
    if (isOpen && isQuotedPrintable && result.last().bytes.endsWith('=')) {
        result.last().bytes.chop(1);
        result.last().bytes += line.bytes;
    } else if (isOpen && isFolded) {
        result.last().bytes += isLegacy ? line.bytes : line.bytes.mid(1);
    } else if (line.bytes.trimmed().isEmpty()) {
        isOpen = false;
    } else if (isOpen && isBase64 && !line.bytes.contains(':')) {
        result.last().bytes += line.bytes;
    } else {
        start(line);
    }
}

bool isVersionLine(const QByteArray &line)
{
    return line.left(8).compare("VERSION:", Qt::CaseInsensitive) == 0;
}

bool isLegacyCard(const QList<Line> &lines)
{
    for (const Line &line : lines) {
        if (isVersionLine(line.bytes))
            return line.bytes.mid(8).trimmed().startsWith("2.");
    }
    return false;
}

bool isUtf8(const QByteArray &bytes)
{
    return QUtf8StringView(bytes).isValidUtf8();
}

bool declaresCharset(const QByteArray &line)
{
    return line.left(line.indexOf(':')).toUpper().contains("CHARSET=");
}

struct CharsetFinding
{
    Charset charset = Charset::Utf8;
    bool isUnreadable = false;
};

/**
 * One character set a card. Text that is not UTF-8 is Shift-JIS when all of it decodes, otherwise Latin-1 in
 * version 2.1, and damaged UTF-8 in the others, which know nothing else.
 */
CharsetFinding findCharset(const QList<LogicalLine> &lines, bool isLegacy)
{
    bool isAllUtf8 = true;
    bool isAllShiftJis = true;
    for (const LogicalLine &line : lines) {
        if (declaresCharset(line.bytes) || isUtf8(line.bytes))
            continue;
        isAllUtf8 = false;
        isAllShiftJis =
            isAllShiftJis && !JapaneseText::fromSjis(line.bytes).contains(QChar::ReplacementCharacter);
    }
    if (isAllUtf8)
        return {};
    if (isAllShiftJis)
        return {Charset::ShiftJis, false};
    return isLegacy ? CharsetFinding{Charset::Latin1, false} : CharsetFinding{Charset::Utf8, true};
}

QString personName(const Property &property)
{
    if (property.name == u"FN")
        return property.text().simplified();
    QStringList parts = property.parts(u';').mid(0, 2);
    std::reverse(parts.begin(), parts.end());
    return parts.join(u' ').simplified();
}

/** Takes the lines of nested cards out of @p card. Only the name of the nested person has a use. */
class Nesting
{
public:
    explicit Nesting(Card *card) : m_card(card) {}

    [[nodiscard]] bool opens(const LogicalLine &line);
    [[nodiscard]] bool takes(const LogicalLine &line, Charset charset, bool isLegacy);

private:
    void close();

    Card *m_card;
    int m_depth = 0;
    QString m_name;
};

bool Nesting::opens(const LogicalLine &line)
{
    const bool isInline = line.bytes.left(5).compare("AGENT", Qt::CaseInsensitive) == 0 &&
                          isBegin(line.bytes.mid(line.bytes.indexOf(':') + 1).trimmed());
    return isInline || isBegin(line.bytes);
}

void Nesting::close()
{
    if (--m_depth == 0 && !m_name.isEmpty())
        m_card->agents.append(m_name);
    if (m_depth == 0)
        m_name.clear();
}

bool Nesting::takes(const LogicalLine &line, Charset charset, bool isLegacy)
{
    if (opens(line)) {
        ++m_depth;
        return true;
    }
    if (m_depth == 0)
        return false;
    if (isEnd(line.bytes)) {
        close();
        return true;
    }
    std::optional<Property> property = parseProperty(line, charset);
    if (m_depth == 1 && property &&
        (property->name == u"FN" || (property->name == u"N" && m_name.isEmpty()))) {
        property->isLegacy = isLegacy;
        m_name = personName(*property);
    }
    return true;
}

void setFault(Card *card, int line)
{
    card->fault = QCoreApplication::translate("VCardReader", "the line is no property");
    card->faultLine = line;
}

void sortByPreference(QList<Property> *properties)
{
    std::stable_sort(properties->begin(), properties->end(),
                     [](const Property &a, const Property &b) { return a.preference() < b.preference(); });
}

} // namespace

QList<LogicalLine> unfold(const QList<Line> &lines, bool isLegacy)
{
    Unfolder unfolder;
    unfolder.isLegacy = isLegacy;
    for (const Line &line : lines)
        unfolder.add(line);
    return unfolder.result;
}

Card parseCard(const RawCard &raw)
{
    Card card;
    card.line = raw.line;
    card.fault = raw.fault;
    card.faultLine = raw.faultLine;
    const bool isLegacy = isLegacyCard(raw.lines);
    const QList<LogicalLine> lines = unfold(raw.lines, isLegacy);
    const CharsetFinding finding = findCharset(lines, isLegacy);
    card.isUnreadable = finding.isUnreadable;
    Nesting nesting(&card);
    for (const LogicalLine &line : lines) {
        if (nesting.takes(line, finding.charset, isLegacy))
            continue;
        std::optional<Property> property = parseProperty(line, finding.charset);
        if (!property) {
            setFault(&card, line.number);
            break;
        }
        property->isLegacy = isLegacy;
        property->isConverted = raw.isConverted;
        card.properties.append(*std::move(property));
    }
    sortByPreference(&card.properties);
    return card;
}

QString nameInCard(const QString &card)
{
    QString name;
    for (const QString &line : card.split(u'\n')) {
        const std::optional<Property> property = parseProperty({line.toUtf8(), 0}, Charset::Utf8);
        if (property && property->name == u"FN")
            return personName(*property);
        if (property && property->name == u"N")
            name = personName(*property);
    }
    return name;
}

} // namespace VCard
