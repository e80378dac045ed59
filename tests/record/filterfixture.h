#ifndef KY_TEST_FILTERFIXTURE_H
#define KY_TEST_FILTERFIXTURE_H

#include "boxcreation.h"
#include "viewfixture.h"

constexpr int TitleItem = 1;
constexpr int NumberItem = 2;

/** An information block of an index, as its file has it. */
inline QByteArray infoOf(const QByteArray &index, int id)
{
    char info[PdtmInfoRoom];
    uint16_t size = sizeof info;
    return _IndexInfoRead(index.constData(), id, info, &size) == PdtmOk ? QByteArray(info, size)
                                                                        : QByteArray("none");
}

/** Adds a permanent index to a box that nobody has open. */
inline bool makePermanent(const TestBox &box, const QByteArray &name, const QByteArray &search)
{
    const QByteArray order = plainKey("TITL");
    return createMIdxFile(box.file(name).constData(), box.path().constData(), search.constData(),
                          int(search.size()), order.constData(), int(order.size()), false,
                          box.master().constData()) == 0;
}

inline int rowsInUse(View &view)
{
    int rows = 0;
    for (const KyPDtm::PIOIDXINFO &row : view.table().indexes)
        rows += row.inUse ? 1 : 0;
    return rows;
}

/** Makes all rows but the current one permanent, so that none but it can make room. */
inline void keepAllButTheCurrent(View &view)
{
    for (KyPDtm::PIOIDXINFO &row : view.table().indexes)
        row.sticky = &row != view.table().currentIndex;
}

/** Categories 21 to 29: with the master, all ten rows are taken. The last one is the view. */
inline bool fillTable(View &view)
{
    for (int category = 21; category < 30; ++category) {
        if (!view.manager.enableFilter(category))
            return false;
    }
    return rowsInUse(view) == KyPDtm::MaximumIndexes;
}

#endif
