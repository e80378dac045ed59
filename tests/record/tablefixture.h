#ifndef KY_TEST_TABLEFIXTURE_H
#define KY_TEST_TABLEFIXTURE_H

#include "kycategories.h"
#include "recordfixture.h"
#include <initializer_list>
#include <QDir>
#include <QMap>
#include <utility>

// The table of categories, for the tests of it. There is one in each HOME.

constexpr char TableBox[] = "F0:KYFLER.BOX";
constexpr char TableIndex[] = "F0:KYFLER.IDX";

/** Takes the table away. */
inline bool removeTable()
{
    const QString box = KyCategories::boxFileName();
    if (QFile::exists(box) && !KyPDataManager::deleteFile(TableBox))
        return false;
    const QFileInfo info(box);
    for (const QString &name : info.dir().entryList({"KYFLER*.IDX", "KYFLER*.tdx"}))
        _IndexDelete(QFile::encodeName(info.dir().filePath(name)).constData());
    return !QFile::exists(box) && !QFile::exists(KyCategories::indexFileName());
}

/** An empty table in place of the one that is there. */
inline bool makeTable()
{
    return removeTable() && KyCategories::createFile(nullptr) && QFile::exists(KyCategories::boxFileName());
}

/** A table of a few categories, whose ids are stored. */
inline bool makeTable(std::initializer_list<std::pair<const char *, int *>> categories)
{
    bool isMade = makeTable();
    KyCategories table;
    for (const auto &[name, id] : categories)
        isMade = isMade && (*id = table.addCategory(name)) != 0;
    return isMade;
}

/** Makes categories "1", "2", ... with these ids at one stroke. */
inline bool fillTable(int first, int last)
{
    KyPDataManager table(TableBox, nullptr, false);
    bool isFilled = table.beginAction();
    for (int id = first; id <= last; ++id) {
        unsigned long card = 0;
        isFilled = isFilled && table.editNewCard() && table.writeItem("TITL", QString::number(id)) &&
                   table.writeItem("SCTG", quint8(id)) && table.writeItem("COLR", 0xFFFFFFul) &&
                   table.writeItem("TYPE", quint8(0)) && table.finishEditCard(&card);
    }
    return table.endAction() && isFilled;
}

/** What the cards of the table hold: ids by name, and a minus in front of a system category's. */
inline QMap<QString, int> tableContents()
{
    KyPDataManager table(TableBox, nullptr, true);
    QMap<QString, int> contents;
    for (unsigned long card = table.firstCard(); card; card = table.nextCard(card)) {
        const int id = table.readUcharItem("SCTG", card);
        const bool isSystem = table.readUcharItem("TYPE", card) & 0x80;
        contents.insert(table.readItem("TITL", card), isSystem ? -id : id);
    }
    return contents;
}

/** True when no process holds the table. */
inline bool isTableFree()
{
    const uint32_t handle = _BoxOpenRwMode(TableBox, 0);
    return handle && _BoxCloseEx(handle, 1) == PdtmOk;
}

#endif
