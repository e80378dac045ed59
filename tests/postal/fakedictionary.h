#ifndef KY_TEST_FAKEDICTIONARY_H
#define KY_TEST_FAKEDICTIONARY_H

#include "japanesetext.h"
#include "ydic.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/** A postal dictionary whose contents a test gives: it stands in for the engine's public functions in a test
 * program, and keeps what was asked. */
struct FakeDictionary
{
    int initResult = ZIP_INIT_DICTIONARY;
    bool hasHandle = true;
    int opened = 0;
    int closed = 0;
    int closedNothing = 0;                  ///< calls of ZipFin(null)
    QMap<QByteArray, QStringList> places;   ///< by code: "prefecture／place"
    QMap<QByteArray, QByteArrayList> codes; ///< by address, in JIS
    int failure = 0;                        ///< when negative, the result of the searches
    int nearFailure = 0;                    ///< the same, of Zip2AdrSearchNP() alone
    QByteArrayList asked;
};

inline FakeDictionary dictionary;

/** Text in JIS without the escapes. Every character has to be in JIS X 0208. */
inline QByteArray jis(const QString &text)
{
    const QByteArray framed = JapaneseText::toJis7(text);
    return framed.mid(3, framed.size() - 6);
}

/** Writes the texts one behind the other. */
inline int writeResults(const QByteArrayList &texts, uint32_t max, qsizetype length, char *result)
{
    *result = '\0';
    const int count = qMin(static_cast<int>(max), static_cast<int>(texts.size()));
    for (int i = 0; i < count; ++i) {
        const QByteArray text = texts[i].left(length);
        memcpy(result, text.constData(), static_cast<size_t>(text.size()) + 1);
        result += text.size() + 1;
    }
    return count;
}

inline int writePlaces(const QByteArray &code, uint32_t max, char *result)
{
    QByteArrayList texts;
    for (const QString &place : dictionary.places.value(code))
        texts.append(jis(place));
    return writeResults(texts, max, YDIC_ADDRESS_LENGTH, result);
}

extern "C" {

KY_EXPORT int ZipInit(ydic_info **info)
{
    ++dictionary.opened;
    *info = dictionary.hasHandle ? static_cast<ydic_info *>(calloc(1, sizeof(ydic_info))) : nullptr;
    return dictionary.initResult;
}

KY_EXPORT int ZipFin(ydic_info *info)
{
    info ? ++dictionary.closed : ++dictionary.closedNothing;
    free(info);
    return 1;
}

KY_EXPORT int Zip2AdrSearch(const char *code, uint32_t max, char *result, ydic_info *)
{
    dictionary.asked.append(QByteArray("search ") + code);
    return dictionary.failure ? dictionary.failure : writePlaces(code, max, result);
}

KY_EXPORT int Zip2AdrSearchNP(const char *code, uint32_t max, uint8_t direction, char *nearCode, char *result,
                              ydic_info *)
{
    dictionary.asked.append(QByteArray(direction == YDIC_NEXT ? "next " : "previous ") + code);
    const int failure = dictionary.failure ? dictionary.failure : dictionary.nearFailure;
    if (failure)
        return failure;
    *nearCode = '\0';
    *result = '\0';
    const QByteArrayList known = dictionary.places.keys();
    auto at = direction == YDIC_NEXT ? std::upper_bound(known.begin(), known.end(), QByteArray(code))
                                     : std::lower_bound(known.begin(), known.end(), QByteArray(code));
    if (at == (direction == YDIC_NEXT ? known.end() : known.begin()))
        return 0;
    const QByteArray found = direction == YDIC_NEXT ? *at : *(at - 1);
    memcpy(nearCode, found.constData(), 8);
    return writePlaces(found, max, result);
}

KY_EXPORT int Adr2ZipSearch(const char *address, uint32_t max, char *result, ydic_info *)
{
    dictionary.asked.append(QByteArray("address ") + address);
    return dictionary.failure ? dictionary.failure
                              : writeResults(dictionary.codes.value(address), max, 7, result);
}
}

#endif
