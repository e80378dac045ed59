#ifndef KY_TEST_LINKSTEPS_H
#define KY_TEST_LINKSTEPS_H

#include <algorithm>
#include <QString>

/**
 * Links as they were always made: step by step, inserting in place, with every boundary looked for on its
 * own. The library makes them in one pass; both must come to the same. Quadratic, and with no limit on links
 * inside one another: for short texts.
 */
namespace LinkSteps {

constexpr qsizetype NotFound = -1;

template <typename Predicate> qsizetype lastBefore(const QString &text, qsizetype place, Predicate matches)
{
    for (qsizetype i = place - 1; i >= 0; --i) {
        if (matches(text[i]))
            return i;
    }
    return NotFound;
}

template <typename Predicate> qsizetype firstFrom(const QString &text, qsizetype place, Predicate matches)
{
    for (qsizetype i = place; i < text.size(); ++i) {
        if (matches(text[i]))
            return i;
    }
    return NotFound;
}

/** [ ,;:()<>\n"] */
inline bool isPunctuation(QChar character)
{
    return QStringLiteral(" ,;:()<>\n\"").contains(character);
}

inline bool isBackslash(QChar character)
{
    return character == u'\\';
}

/** [^!-~] */
inline bool isUnprintable(QChar character)
{
    return character.unicode() < 0x21 || character.unicode() > 0x7e;
}

/** The text with ASCII in lower case, place for place. */
inline QString lowered(QString text)
{
    for (QChar &character : text) {
        if (character >= u'A' && character <= u'Z')
            character = QChar(character.unicode() + ('a' - 'A'));
    }
    return text;
}

inline qsizetype orLength(qsizetype place, const QString &text)
{
    return place == NotFound ? text.size() : place;
}

inline QString encoded(const QString &address)
{
    return QString(address).replace(u'"', "%22").replace(u'<', "%3C").replace(u'>', "%3E");
}

inline qsizetype leftBoundary(const QString &text, qsizetype at)
{
    const qsizetype lineBreak = lowered(text.left(at)).lastIndexOf("<br>");
    return std::max({lastBefore(text, at, isPunctuation), lastBefore(text, at, isBackslash), lineBreak,
                     lastBefore(text, at, isUnprintable)});
}

inline qsizetype beforeEntity(const QString &text, qsizetype boundary)
{
    const QString ending = lowered(text.left(boundary + 1));
    for (const char *entity : {"&lt;", "&gt;", "&amp;", "&quot;"}) {
        if (ending.endsWith(QLatin1String(entity)))
            return boundary - qsizetype(qstrlen(entity)) + 1;
    }
    return boundary;
}

/** 0 for the end of the text. */
inline qsizetype rightBoundary(const QString &text, qsizetype at)
{
    qsizetype punctuation = orLength(firstFrom(text, at, isPunctuation), text);
    const qsizetype backslash = orLength(firstFrom(text, at, isBackslash), text);
    const qsizetype lineBreak = orLength(lowered(text).indexOf("<br>", at), text);
    const qsizetype unprintable = orLength(firstFrom(text, at, isUnprintable), text);
    if (punctuation < text.size() && text[punctuation] == u';')
        punctuation = beforeEntity(text, punctuation);
    const qsizetype right = std::min({punctuation, backslash, lineBreak, unprintable});
    return right == text.size() ? 0 : right;
}

inline void emailLinks(QString &text)
{
    const QString tag = "<a href=\"mailto:";
    qsizetype at = text.indexOf(u'@');
    while (at != NotFound) {
        const qsizetype left = leftBoundary(text, at); // NotFound: the address starts the text
        const qsizetype start = left + 1;
        const qsizetype right = rightBoundary(text, at);
        const QString address = right == 0 ? text.mid(start) : text.mid(start, right - start);
        const QString link = "\">" + address + "</a>";
        if (left != NotFound && text[left] == u'<')
            text[left] = u' ';
        text.insert(start, tag);
        qsizetype next = 0;
        if (right == 0) {
            text.append(link);
            next = text.size();
        } else {
            text.insert(right + 16, link);
            next = right + 16 + link.size();
        }
        at = text.indexOf(u'@', next);
    }
}

inline qsizetype nearest(const QString &text, qsizetype from)
{
    const qsizetype http = lowered(text).indexOf("http://", from);
    const qsizetype https = lowered(text).indexOf("https://", from);
    if (http == NotFound)
        return https > 0 ? https : NotFound;
    return https > 0 ? std::min(http, https) : http;
}

inline void urlLinks(QString &text)
{
    qsizetype start = lowered(text).indexOf("http://");
    if (start == NotFound)
        start = lowered(text).indexOf("https://");
    while (start != NotFound) {
        qsizetype end =
            std::min({orLength(text.indexOf(u' ', start), text), orLength(text.indexOf(u'\n', start), text),
                      orLength(lowered(text).indexOf("<br>", start), text),
                      orLength(firstFrom(text, start, isUnprintable), text)});
        if (end == text.size())
            end = 0;
        const QString url = end == 0 ? text.mid(start) : text.mid(start, end - start);
        const QString link = "\">" + url + "</a>";
        const qsizetype grown = encoded(url).size() - url.size();
        text.replace(start, url.size(), "<a href=\"" + encoded(url));
        qsizetype next = 0;
        if (end == 0) {
            text.append(link);
            next = text.size();
        } else {
            text.insert(end + 9 + grown, link);
            next = end + 13 + grown;
        }
        start = nearest(text, next);
    }
}

} // namespace LinkSteps

#endif
