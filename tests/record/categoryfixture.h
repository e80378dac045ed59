#ifndef KY_TEST_CATEGORYFIXTURE_H
#define KY_TEST_CATEGORYFIXTURE_H

#include "viewfixture.h"

/** The list of a card as the store has it. */
inline QByteArray listOf(const KyPDataManager &manager, unsigned long card)
{
    return storedBytes(manager, card, "CTGR");
}

/** A view of a category as a permanent index of the box; a manager made later has it in its table. */
inline bool makeCategoryIndex(const TestBox &box, const QByteArray &path, char category)
{
    const quint32 handle = _BoxOpen(box.path());
    const QByteArray boxName = box.path().mid(3) + '\0';
    const QByteArray term = "CTGR\xFE\x92\x0C" + QByteArray(1, category) + '\0';
    const bool isMade =
        _IndexCreate(path, 18) == PdtmOk &&
        _IndexInfoWrite(path, InfoBoxName, boxName.constData(), quint16(boxName.size())) == PdtmOk &&
        _IndexInfoWrite(path, InfoSearchExpression, term.constData(), quint16(term.size())) == PdtmOk &&
        _IndexInfoWrite(path, InfoSubset, "\1", 1) == PdtmOk;
    const PdtmStatus grouped = _IndexGroup(box.master(), path, handle);
    return _BoxClose(handle) == PdtmOk && isMade && (grouped == PdtmOk || grouped == PdtmNothingToSort);
}

/** The row of a category in the table of a manager, null when there is none. */
inline KyPDtm::PIOIDXINFO *rowOf(KyPDataManager &manager, int category)
{
    for (KyPDtm::PIOIDXINFO &row : privateOf(manager).indexes) {
        if (row.inUse && row.categoryId == category)
            return &row;
    }
    return nullptr;
}

/** Path of the index of a row. */
inline QByteArray pathOf(KyPDataManager &manager, const KyPDtm::PIOIDXINFO &row)
{
    return QByteArray(privateOf(manager).boxDir) + row.fileName;
}

/** The visible cards of an index, in its order. */
inline QList<unsigned long> cardsIn(const KyPDataManager &manager, const QByteArray &index)
{
    QList<unsigned long> cards;
    for (unsigned long card = manager.nextCard(0, index.constData()); card;
         card = manager.nextCard(card, index.constData()))
        cards.append(card);
    return cards;
}

/** The visible cards of the view of a category, whatever the current view is; {0} when there is none. */
inline QList<unsigned long> cardsOfCategory(KyPDataManager &manager, int category)
{
    const KyPDtm::PIOIDXINFO *row = rowOf(manager, category);
    return row ? cardsIn(manager, pathOf(manager, *row)) : QList<unsigned long>{0};
}

/** Whether a card is in the box. */
inline bool isThere(const KyPDataManager &manager, unsigned long card)
{
    return storedBytes(manager, card, "ATTR") != "unreadable";
}

/** A view whose cards can be told with their categories. */
struct ListedView : View
{
    /** Title and list of each card: "a5 b5 c59 ...". */
    QString cards()
    {
        QString all;
        for (const unsigned long card : cardsIn(manager, box.master())) {
            all += (all.isEmpty() ? "" : " ") + manager.readItem("TITL", card);
            for (const int category : manager.readCategories(card))
                all += QString::number(category);
        }
        return all;
    }
};

#endif
