#ifndef QUERYTEXT_H
#define QUERYTEXT_H

#include "jistext.h"
#include "ydicaddress_p.h"
#include <QByteArray>
#include <QString>

/**
 * @file querytext.h
 * Addresses in readable text, before and after they are normalised.
 */

/** Text in 7-bit JIS; fails the program when a character has no code. */
inline QByteArray jisBytes(const QString &text)
{
    const std::optional<std::string> jis = ZipDict::toJis(text.toStdU16String());
    if (!jis)
        qFatal("not in JIS X 0208: %s", qPrintable(text));
    return QByteArray::fromStdString(*jis);
}

inline QString jisText(const char *jis)
{
    return QString::fromStdU16String(ZipDict::fromJis(jis));
}

/** A search whose query is the address, not yet normalised; its prefecture is taken off. */
inline ydic_search searchOf(const QString &address)
{
    ydic_search search = {};
    if (set_moji(jisBytes(address).constData(), &search) != 0)
        qFatal("no address: %s", qPrintable(address));
    return search;
}

inline ydic_search normalisedSearch(const QString &address)
{
    ydic_search search = searchOf(address);
    yuragi_check(&search);
    return search;
}

inline QString queryText(const ydic_search &search)
{
    return jisText(search.query);
}

/** The address as the searches compare it. */
inline QString normalised(const QString &address)
{
    return queryText(normalisedSearch(address));
}

#endif
