#ifndef KY_TEST_DBLISTFIXTURE_H
#define KY_TEST_DBLISTFIXTURE_H

#include "kydblistview.h"
#include "recordfixture.h"
#include <algorithm>
#include <QHeaderView>

inline KyDbListViewColumn listColumn(const char *code, const QString &title)
{
    KyDbListViewColumn column;
    memcpy(column.code, code, sizeof column.code);
    column.title = title;
    return column;
}

/** A box, its manager, and a list of it with the columns "Title" and "When". */
class ListedBox
{
public:
    /** @param titles of the cards, which come in the order of their titles */
    explicit ListedBox(const QStringList &titles = {})
        : manager(std::make_unique<KyPDataManager>(box.path().constData(), nullptr, false))
    {
        manager->beginAction(); // one synchronisation to the disk for all of them
        for (const QString &title : titles)
            cards.append(addCard(*manager, title));
        manager->endAction();
        list.setColumns({listColumn("TITL", "Title"), listColumn("TIME", "When")});
        list.setDb(manager.get());
    }
    Q_DISABLE_COPY_MOVE(ListedBox)

    /** What stands in the first column, from top to bottom. */
    [[nodiscard]] QStringList texts(int column = 0) const
    {
        QStringList texts;
        for (int row = 0; row < list.topLevelItemCount(); ++row)
            texts.append(list.topLevelItem(row)->text(column));
        return texts;
    }

    /** Those of the selected rows. */
    [[nodiscard]] QStringList selected() const
    {
        QStringList texts;
        for (const QTreeWidgetItem *item : list.selectedItems())
            texts.append(item->text(0));
        return texts;
    }

    /** Changes an item of a card. */
    template <typename Value> bool write(unsigned long card, const char *code, const Value &value)
    {
        return manager->startEditCard(card) && manager->writeItem(code, value) &&
               manager->finishEditCard(&card);
    }

    TestBox box;
    std::unique_ptr<KyPDataManager> manager;
    QList<unsigned long> cards; ///< in the order they were added
    KyDbListView list;
};

/** Shows a list at a size of a few rows and waits until it can be clicked on. */
inline void showList(QTreeWidget &list)
{
    list.resize(300, 200);
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
}

/** Clicks on a header, as the user does. */
inline void clickHeader(QTreeWidget &list, int column)
{
    const QHeaderView *header = list.header();
    const QPoint middle(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, middle);
}

#endif
