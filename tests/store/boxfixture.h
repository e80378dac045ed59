#ifndef BOXFIXTURE_H
#define BOXFIXTURE_H

#include "pdtm.h"

#include <cstring>
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <sqlite3.h>

/** Helpers for tests on boxes. */
namespace boxfixture {

constexpr uint32_t ApplicationId = 0x544F444F;

inline ITEMDATA itemData(uint8_t type, uint8_t kind, const char *code, const char *label)
{
    ITEMDATA item{};
    item.type = type;
    item.kind = kind;
    std::memcpy(item.code, code, sizeof item.code);
    std::strncpy(item.label, label, sizeof item.label - 1);
    return item;
}

/** NAPR text, aDRS text with a lower-case first letter, CTGR, AGEU ushort. */
inline PdtmStatus appendItems(const char *path, uint32_t *added = nullptr)
{
    const ITEMDATA items[] = {
        itemData(ItemTextUtf8, KindText, "NAPR", "Name"),
        itemData(ItemTextUtf8, KindText, "aDRS", "Address"),
        itemData(ItemCategory, KindCategory, "CTGR", ""),
        itemData(ItemUshort, KindUshort, "AGEU", "Age"),
    };
    return _BoxItemAppend(path, items, 4, added);
}

inline PdtmStatus makeBox(const char *path)
{
    const PdtmStatus status = _BoxCreate(path, ApplicationId);
    return status == PdtmOk ? appendItems(path) : status;
}

inline CardItemKey key(uint16_t card, const char *code)
{
    CardItemKey result{};
    result.card = card;
    std::memcpy(result.code, code, sizeof result.code);
    return result;
}

inline PdtmStatus write(uint32_t handle, uint16_t card, const char *code, const QByteArray &value)
{
    const CardItemKey item = key(card, code);
    return _CardWrite(handle, &item, value.constData(), static_cast<uint32_t>(value.size()));
}

/** The bytes of an item; "status N" when it can't be read. */
inline QByteArray read(uint32_t handle, uint16_t card, const char *code)
{
    const CardItemKey item = key(card, code);
    uint32_t size = 0;
    PdtmStatus status = _CardRead(handle, &item, nullptr, &size);
    QByteArray value(static_cast<qsizetype>(size), '\0');
    if (status == PdtmTooShort)
        status = _CardRead(handle, &item, value.data(), &size);
    return status == PdtmOk ? value : "status " + QByteArray::number(status);
}

/** Adds a card with a name; 0 on failure. */
inline uint16_t addCard(uint32_t handle, const QByteArray &name)
{
    uint16_t work = PdtmWorkCard;
    uint16_t card = 0;
    const bool isAdded = _CardCreate(handle, &work) == PdtmOk &&
                         write(handle, work, "NAPR", name) == PdtmOk &&
                         _CardCopy(handle, work, &card) == PdtmOk;
    return isAdded ? card : uint16_t(0);
}

inline QString internalPath(const char *name)
{
    return QDir::homePath() + "/Applications/dtm/" + name;
}

inline QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

/** Runs SQL on a box as the sqlite3 shell would; the first value of the first row. */
inline QByteArray sql(const QString &path, const char *text)
{
    sqlite3 *database = nullptr;
    QByteArray value;
    const auto keep = [](void *place, int columns, char **values, char **) {
        if (columns > 0 && values[0] && static_cast<QByteArray *>(place)->isNull())
            *static_cast<QByteArray *>(place) = values[0];
        return 0;
    };
    char *message = nullptr;
    if (sqlite3_open_v2(path.toUtf8().constData(), &database, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK ||
        sqlite3_exec(database, text, keep, &value, &message) != SQLITE_OK)
        value = QByteArray("error ") + (message ? message : "");
    sqlite3_free(message);
    sqlite3_close(database);
    return value;
}

} // namespace boxfixture

#endif
