#include "linkfinder_p.h"
#include <algorithm>
#include <initializer_list>

namespace {

struct Encoding
{
    QChar character;
    QLatin1String code;
};

/** What would end an attribute or a tag. An entity such as &quot; doesn't: it is decoded when the attribute
 * has been read. Everything outside printable ASCII ends an address, so that it is never in an attribute. */
constexpr Encoding Encodings[] = {
    {u'"', QLatin1String("%22")},
    {u'<', QLatin1String("%3C")},
    {u'>', QLatin1String("%3E")},
};

constexpr QLatin1String Entities[] = {QLatin1String("&lt;"), QLatin1String("&gt;"), QLatin1String("&amp;"),
                                      QLatin1String("&quot;")};

constexpr QLatin1String Http("http://");
constexpr QLatin1String Https("https://");
constexpr QLatin1String LineBreak("<br>");
constexpr QLatin1String LinkEnd("</a>");

bool isPrintableAscii(QChar character)
{
    return character >= u'!' && character <= u'~';
}

/** A "<br>" and a blank are among these as well. */
bool endsAddress(QChar character)
{
    return !isPrintableAscii(character) || QStringView(u",;:()<>\"\\").contains(character);
}

/** Compares letter by letter: Qt's comparison of whole texts takes a long s for an s. */
bool standsAt(QStringView text, qsizetype place, QLatin1String word)
{
    return place >= 0 && text.size() - place >= word.size() &&
           std::equal(word.begin(), word.end(), text.begin() + place, [](char letter, QChar character) {
               return character.toLower() == QLatin1Char(letter);
           });
}

/** The next place of any of the words, in one pass for all of them; -1 when there is none. */
qsizetype find(QStringView text, qsizetype from, std::initializer_list<QLatin1String> words)
{
    for (qsizetype place = from; place < text.size(); ++place) {
        const auto standsHere = [=](QLatin1String word) { return standsAt(text, place, word); };
        if (std::any_of(words.begin(), words.end(), standsHere))
            return place;
    }
    return -1;
}

QString linkStart(QLatin1String scheme, const QString &address)
{
    QString href = address;
    for (const Encoding &encoding : Encodings)
        href.replace(encoding.character, encoding.code);
    return QLatin1String("<a href=\"") + scheme + href + QLatin1String("\">");
}

QString emailLink(const QString &address)
{
    return linkStart(QLatin1String("mailto:"), address) + address + LinkEnd;
}

/** The first character of the text where nothing ends the address. */
qsizetype addressStart(QStringView text, qsizetype at)
{
    qsizetype start = at;
    while (start > 0 && !endsAddress(text[start - 1]))
        --start;
    return start;
}

/** The start of the entity whose last character stands at a place; the place itself when none does. */
qsizetype entityStart(QStringView text, qsizetype last)
{
    for (QLatin1String entity : Entities) {
        const qsizetype start = last - entity.size() + 1;
        if (standsAt(text, start, entity))
            return start;
    }
    return last;
}

qsizetype addressEnd(QStringView text, qsizetype at)
{
    const auto *end = std::find_if(text.begin() + at + 1, text.end(), endsAddress);
    return entityStart(text, end - text.begin());
}

/** An "https://" in front of the first "http://" stays plain. */
qsizetype firstUrl(QStringView text)
{
    const qsizetype place = find(text, 0, {Http});
    return place >= 0 ? place : find(text, 0, {Https});
}

qsizetype nextUrl(QStringView text, qsizetype from)
{
    return find(text, from, {Http, Https});
}

qsizetype urlEnd(QStringView text, qsizetype start)
{
    qsizetype end = start;
    while (end < text.size() && isPrintableAscii(text[end]) && !standsAt(text, end, LineBreak))
        ++end;
    return end;
}

/** What a link shows is searched in its turn, behind the "ht" that it begins with; an address found there
 * goes on to the end of the outer one, with the tag that closes it. */
void appendUrlLinks(const QString &url, int maxLinks, QString &result)
{
    QString address = url;
    for (int links = 1;; ++links) {
        result += linkStart(QLatin1String(), address);
        const qsizetype inner = links < maxLinks ? nextUrl(address, 2) : -1;
        if (inner < 0)
            break;
        result += QStringView(address).first(inner);
        address = address.sliced(inner) + LinkEnd;
    }
    result += address + LinkEnd;
}

} // namespace

QString LinkFinder::withEmailLinks(const QString &text)
{
    QString result;
    qsizetype done = 0;
    for (qsizetype at = text.indexOf(u'@'); at >= 0; at = text.indexOf(u'@', done)) {
        const qsizetype start = addressStart(text, at);
        const qsizetype end = addressEnd(text, at);
        result += QStringView(text).sliced(done, start - done);
        if (result.endsWith(u'<')) // <name@host> would be a tag
            result.back() = u' ';
        result += emailLink(text.sliced(start, end - start));
        done = end;
    }
    return result += QStringView(text).sliced(done);
}

QString LinkFinder::withUrlLinks(const QString &text)
{
    QString result;
    qsizetype done = 0;
    for (qsizetype start = firstUrl(text); start >= 0; start = nextUrl(text, done)) {
        const qsizetype end = urlEnd(text, start);
        const bool isLast = end == text.size(); // the search is over, inside the link too
        result += QStringView(text).sliced(done, start - done);
        appendUrlLinks(text.sliced(start, end - start), isLast ? 1 : MaxNestedLinks, result);
        done = end;
    }
    return result += QStringView(text).sliced(done);
}

QString LinkFinder::withoutClosingBrackets(const QString &linked, const QString &text)
{
    QString result;
    qsizetype done = 0;
    for (qsizetype at = text.indexOf(u'@'), end = 0; at >= 0; at = text.indexOf(u'@', end)) {
        const qsizetype start = addressStart(text, at);
        end = addressEnd(text, at);
        const bool isClosed = end < text.size() && text[end] == u'>';
        if (!isClosed || start == 0 || !QStringView(u" <").contains(text[start - 1]))
            continue;
        // Those behind a blank look the same by now, and are passed over one by one.
        const QString link = u' ' + emailLink(text.sliced(start, end - start)) + u'>';
        const qsizetype place = linked.indexOf(link, done);
        if (place < 0) // links of another kind
            break;
        const bool isBracketed = text[start - 1] == u'<';
        const qsizetype next = place + link.size();
        result += QStringView(linked).sliced(done, next - done - (isBracketed ? 1 : 0));
        done = next;
    }
    return result += QStringView(linked).sliced(done);
}

QString LinkFinder::decodedLink(const QString &href)
{
    QString link = href;
    for (const Encoding &encoding : Encodings)
        link.replace(encoding.code, QString(encoding.character));
    return link;
}
