#include "config.h"
#include "dblistfixture.h"
#include "kylistviewitem.h"
#include "logcapture.h"
#include <QScrollBar>
#include <QtTest>

namespace {

int cellsRead = 0;

const QStringList Letters{"a", "b", "c", "d"};

/** Titles that stand in the order of their numbers. */
QStringList manyTitles(int count)
{
    QStringList titles;
    for (int i = 0; i < count; ++i)
        titles.append(QStringLiteral("card %1").arg(i, 4, 10, QLatin1Char('0')));
    return titles;
}

/** What the header shows, 0 for none: the column from 1, below 0 for a descending order. */
int indicator(const KyDbListView &list)
{
    const int column = list.header()->sortIndicatorSection() + 1;
    return list.header()->sortIndicatorOrder() == Qt::AscendingOrder ? column : -column;
}

QStringList titlesOf(const KyDbListView &list)
{
    QStringList titles;
    for (int column = 0; column < list.columnCount(); ++column)
        titles.append(list.headerItem()->text(column));
    return titles;
}

} // namespace

/** Counts the items that are read from the box. */
extern "C" PdtmStatus _CardRead(uint32_t handle, const CardItemKey *key, void *buffer, uint32_t *size)
{
    static const auto read = nextDefinition<decltype(_CardRead)>("_CardRead");
    cellsRead += key->code[0] == 'T';
    return read(handle, key, buffer, size);
}

/** The rows of the list, its columns and its order. */
class DbListViewTest : public QObject
{
    Q_OBJECT
private slots:
    void takesName();
    void newListShowsNothing();
    void everyCardIsARow();
    void nullEmptiesTheListAndClearsTheIndicator();
    void sameManagerAgainShowsNewCards();
    void onlyWhatIsSeenIsRead();
    void lastOfManyRowsKnowsItsLine();

    // columns
    void columnsAreShownByTheirTitles();
    void newColumnsReplaceTheOldOnes();
    void columnWithoutATitleIsNotShown();
    void columnWithoutATitleSorts();
    void columnWithoutATitleInFrontOfOthers();
    void listWithoutColumnsShowsNothing();
    void columnsThatThereAreNot_data();
    void columnsThatThereAreNot();

    // update
    void updateFollowsTheView();
    void updateOfAnEmptyView();
    void updateWithoutAManager();
    void updateLeavesTheColumns();
    void updateLeavesTheIndicator();
    void updateOfACardThatIsNotThere();

    // the order
    void listBeginsWithTheOrderOfTheView();
    void sortGoesToTheManager();
    void sortOfAnItemThatIsNoColumn();
    void orderOfSeveralKeysIsNoColumn();
    void firstOfTwoColumnsIsMarked();
    void sortWithoutAManager();
    void clickOnTheSortColumnTurnsTheOrder();
    void clickOnAnotherColumnSortsUpwards();
    void clickThatCannotSort();
    void clickWithoutAManager();
    void selectionStaysOnItsLineWhenSorted();
    void sortOfASubclassIsCalled();
    void indicatorFollowsTheManager();

    // cards and rows
    void cardOfARow();
    void cardOfNoRow();
    void rowOfACard();
    void rowOfACardThatIsNotInTheList();
    void cardIsSelectedAndSeen();
    void noCardMeansTheFirstRow();
    void unknownCardChangesNothing();
    void columnInSightStays();
    void onlyOneRowIsSelected();
    void rowsReplacedWhileACardIsSelected();

    // deletion
    void neighbourIsSelectedAfterADeletion_data();
    void neighbourIsSelectedAfterADeletion();
    void deletionOfTheOnlyCardLeavesNoSelection();
    void deletionOfTheSelectedCard();
    void deletionWithNothingSelected();
    void deletionOfAnUnknownCard();
    void deletionThatFails();
    void deletionOfARowAlone();
    void deletionTellsOfTheRightCards();
    void rowsReplacedWhileACardIsDeleted();

    // managers that go
    void managerDeletedUnderTheList();
    void boxClosedUnderTheList();
    void rowBehindTheView();
    void managerWithoutABox();
};

void DbListViewTest::takesName()
{
    QWidget parent;
    const KyDbListView list(&parent, "cards");
    QCOMPARE(list.objectName(), "cards");
    QCOMPARE(list.parentWidget(), &parent);
}

void DbListViewTest::newListShowsNothing()
{
    const KyDbListView list;
    QCOMPARE(list.topLevelItemCount(), 0);
    QCOMPARE(list.columnCount(), 0);
    QCOMPARE(list.db(), nullptr);
    QCOMPARE(list.sortColumn(), -1);
    QVERIFY(list.ascending());
    QVERIFY(!list.isSortingEnabled());
    QCOMPARE(indicator(list), 0);
}

void DbListViewTest::everyCardIsARow()
{
    const ListedBox box({"b", "d", "a", "c"});
    QCOMPARE(box.texts(), Letters);
    QCOMPARE(box.list.db(), box.manager.get());
}

void DbListViewTest::nullEmptiesTheListAndClearsTheIndicator()
{
    ListedBox box(Letters);
    QCOMPARE(indicator(box.list), 1);
    box.list.setDb(nullptr);
    QCOMPARE(box.list.topLevelItemCount(), 0);
    QCOMPARE(indicator(box.list), 0);
    QCOMPARE(box.list.sortColumn(), -1);
    QCOMPARE(box.list.db(), nullptr);
}

void DbListViewTest::sameManagerAgainShowsNewCards()
{
    ListedBox box({"a", "c"});
    box.list.setCurrentCardId(box.cards[0]);
    addCard(*box.manager, "b");
    box.list.setDb(box.manager.get());
    QCOMPARE(box.texts(), (QStringList{"a", "b", "c"}));
    QCOMPARE(box.selected(), QStringList());
}

void DbListViewTest::onlyWhatIsSeenIsRead()
{
    ListedBox box(manyTitles(300));
    cellsRead = 0;
    box.list.setDb(box.manager.get());
    QCOMPARE(cellsRead, 0);
    showList(box.list);
    cellsRead = 0;
    (void)box.list.grab();
    const int rowHeight = box.list.visualItemRect(box.list.topLevelItem(0)).height();
    const int seen = box.list.viewport()->height() / rowHeight;
    QVERIFY(seen > 5);
    QVERIFY(cellsRead >= 2 * seen);
    QVERIFY(cellsRead <= 3 * (seen + 2)); // a text takes two reads: its length comes first
}

void DbListViewTest::lastOfManyRowsKnowsItsLine()
{
    ListedBox box(Letters);
    box.list.setAllDataNum(50000);
    QCOMPARE(box.list.topLevelItemCount(), 50000);
    QCOMPARE(static_cast<KyListViewItem *>(box.list.topLevelItem(49999))->lineNo(), 50000);
}

void DbListViewTest::columnsAreShownByTheirTitles()
{
    const ListedBox box(Letters);
    QCOMPARE(titlesOf(box.list), (QStringList{"Title", "When"}));
    QCOMPARE(box.list.columns().size(), 2);
    QCOMPARE(box.list.columns()[1].title, "When");
}

void DbListViewTest::newColumnsReplaceTheOldOnes()
{
    ListedBox box(Letters);
    QVERIFY(box.write(box.cards[0], "SJIS", QStringLiteral("other")));
    box.list.setColumns({listColumn("SJIS", "Other")});
    QCOMPARE(titlesOf(box.list), QStringList{"Other"});
    QCOMPARE(box.texts(), (QStringList{"other", "", "", ""}));
    QCOMPARE(box.list.sortColumn(), -1); // the order is that of a column that is gone
    box.list.setColumns({listColumn("TIME", "When"), listColumn("TITL", "Title"), listColumn("SJIS", "x")});
    QCOMPARE(titlesOf(box.list), (QStringList{"When", "Title", "x"}));
    QCOMPARE(box.texts(1), Letters);
    QCOMPARE(box.list.sortColumn(), 1);
}

void DbListViewTest::columnWithoutATitleIsNotShown()
{
    ListedBox box(Letters);
    box.list.setColumns({listColumn("TITL", "Title"), listColumn("NUMB", "")});
    QCOMPARE(titlesOf(box.list), QStringList{"Title"});
    QCOMPARE(box.list.columns().size(), 2);
}

void DbListViewTest::columnWithoutATitleSorts()
{
    ListedBox box({"a", "b"});
    QVERIFY(box.write(box.cards[0], "TIME", QDateTime(QDate(2002, 1, 1), QTime(1, 0))));
    QVERIFY(box.write(box.cards[1], "TIME", QDateTime(QDate(2001, 1, 1), QTime(1, 0))));
    box.list.setColumns({listColumn("TITL", "Title"), listColumn("TIME", "")});
    box.list.sort(1, true);
    QCOMPARE(box.texts(), (QStringList{"b", "a"}));
    QCOMPARE(box.list.sortColumn(), 1);
    showList(box.list); // the header has no such section
}

void DbListViewTest::columnWithoutATitleInFrontOfOthers()
{
    ListedBox box({"a"});
    QVERIFY(box.write(box.cards[0], "SJIS", QStringLiteral("other")));
    box.list.setColumns({listColumn("SJIS", ""), listColumn("TITL", "Title")});
    QCOMPARE(titlesOf(box.list), QStringList{"Title"});
    QCOMPARE(box.texts(), QStringList{"other"}); // columns count all entries
}

void DbListViewTest::listWithoutColumnsShowsNothing()
{
    ListedBox box(Letters);
    box.list.setColumns({});
    QCOMPARE(box.list.columnCount(), 0);
    showList(box.list);
    box.list.update(box.cards[1]);
    QCOMPARE(box.list.topLevelItemCount(), 4);
    box.list.setColumns({listColumn("TITL", "Title")});
    QCOMPARE(box.texts(), Letters);
    box.list.setCurrentCardId(box.cards[1]);
    QCOMPARE(box.selected(), QStringList{"b"});
}

void DbListViewTest::columnsThatThereAreNot_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("below") << -1;
    QTest::newRow("behind") << 2;
    QTest::newRow("lowest") << INT_MIN;
    QTest::newRow("highest") << INT_MAX;
}

void DbListViewTest::columnsThatThereAreNot()
{
    QFETCH(int, column);
    ListedBox box(Letters);
    LogCapture log;
    QVERIFY(box.list.itemText(1, column).isNull());
    QCOMPARE(log.lines(), QStringList{"no such item"});
    box.list.sort(column, false);
    QCOMPARE(box.texts(), Letters);
    box.list.headerClicked(column);
    QCOMPARE(indicator(box.list), 1);
}

void DbListViewTest::updateFollowsTheView()
{
    ListedBox box({"a", "c"});
    const unsigned long card = addCard(*box.manager, "b");
    QCOMPARE(box.list.topLevelItemCount(), 2);
    box.list.update(card);
    QCOMPARE(box.texts(), (QStringList{"a", "b", "c"}));
    QCOMPARE(box.selected(), QStringList{"b"});
    box.list.update(0);
    QCOMPARE(box.selected(), QStringList{"a"});
}

void DbListViewTest::updateOfAnEmptyView()
{
    ListedBox box({"a"});
    unsigned long card = box.cards[0];
    QVERIFY(box.manager->deleteCard(&card, KyPDataManager::DeleteSingle));
    box.list.update(0);
    QCOMPARE(box.list.topLevelItemCount(), 0);
    QCOMPARE(box.list.currentItem(), nullptr);
}

void DbListViewTest::updateWithoutAManager()
{
    KyDbListView list;
    list.setColumnCount(1);
    list.setAllDataNum(3);
    list.update(0);
    QCOMPARE(list.topLevelItemCount(), 0);
}

void DbListViewTest::updateLeavesTheColumns()
{
    ListedBox box(Letters);
    showList(box.list);
    box.list.header()->setStretchLastSection(false);
    box.list.header()->resizeSection(0, 77);
    box.list.header()->moveSection(0, 1);
    box.list.update(0);
    QCOMPARE(box.list.columnWidth(0), 77);
    box.list.setDb(box.manager.get());
    QCOMPARE(titlesOf(box.list), (QStringList{"Title", "When"}));
    QCOMPARE(box.list.columnWidth(0), 77);
    QCOMPARE(box.list.header()->visualIndex(0), 1);
}

void DbListViewTest::updateLeavesTheIndicator()
{
    ListedBox box(Letters);
    QVERIFY(box.manager->sort("TITL", false));
    box.list.update(0);
    QCOMPARE(box.texts().first(), "d");
    QCOMPARE(indicator(box.list), 1); // updateSortIndicator() is the caller's affair
}

void DbListViewTest::updateOfACardThatIsNotThere()
{
    ListedBox box(Letters);
    box.list.setCurrentCardId(box.cards[2]);
    box.list.update(999);
    QCOMPARE(box.list.topLevelItemCount(), 4);
    QCOMPARE(box.selected(), QStringList());
}

void DbListViewTest::listBeginsWithTheOrderOfTheView()
{
    const ListedBox box(Letters);
    QCOMPARE(box.list.sortColumn(), 0);
    QVERIFY(box.list.ascending());
    QCOMPARE(indicator(box.list), 1);
    QVERIFY(box.list.header()->isSortIndicatorShown());
}

void DbListViewTest::sortGoesToTheManager()
{
    ListedBox box(Letters);
    box.list.sort(0, false);
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.manager->sortItem(), box.manager->nameToItemId("TITL"));
    QCOMPARE(box.texts(), (QStringList{"d", "c", "b", "a"}));
    QVERIFY(!box.list.ascending());
    QCOMPARE(indicator(box.list), -1);
}

void DbListViewTest::sortOfAnItemThatIsNoColumn()
{
    ListedBox box(Letters);
    QVERIFY(box.manager->sort("NUMB", false));
    box.list.updateSortIndicator();
    QCOMPARE(box.list.sortColumn(), -1);
    QVERIFY(!box.list.ascending());
    QCOMPARE(indicator(box.list), 0);
}

void DbListViewTest::orderOfSeveralKeysIsNoColumn()
{
    ListedBox box(Letters);
    KyPDataManagerSortKey order;
    order.addSortKey("NUMB", true, false);
    order.addSortKey("TITL", true, false);
    TestBox other("TWO.IDX", order);
    KyPDataManager manager(other.path().constData(), nullptr, false);
    QCOMPARE(manager.sortItem(), 0);
    // An item that the box doesn't have is number 0 as well.
    box.list.setColumns({listColumn("NONE", "None"), listColumn("TITL", "Title")});
    box.list.setDb(&manager);
    QCOMPARE(box.list.sortColumn(), -1);
}

void DbListViewTest::firstOfTwoColumnsIsMarked()
{
    ListedBox box(Letters);
    box.list.setColumns({listColumn("TIME", "When"), listColumn("TITL", "One"), listColumn("TITL", "Two")});
    QCOMPARE(box.list.sortColumn(), 1);
    QCOMPARE(indicator(box.list), 2);
}

void DbListViewTest::sortWithoutAManager()
{
    KyDbListView list;
    list.setColumns({listColumn("TITL", "Title")});
    list.sort(0, false);
    QCOMPARE(list.sortColumn(), -1);
    QVERIFY(list.ascending());
}

void DbListViewTest::clickOnTheSortColumnTurnsTheOrder()
{
    ListedBox box(Letters);
    showList(box.list);
    clickHeader(box.list, 0);
    QCOMPARE(box.texts(), (QStringList{"d", "c", "b", "a"}));
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(indicator(box.list), -1);
    clickHeader(box.list, 0);
    QCOMPARE(box.texts(), Letters);
    QVERIFY(box.manager->ascendent());
    QCOMPARE(indicator(box.list), 1);
}

void DbListViewTest::clickOnAnotherColumnSortsUpwards()
{
    ListedBox box({"a", "b"});
    QVERIFY(box.write(box.cards[0], "TIME", QDateTime(QDate(2002, 1, 1), QTime(1, 0))));
    QVERIFY(box.write(box.cards[1], "TIME", QDateTime(QDate(2001, 1, 1), QTime(1, 0))));
    showList(box.list);
    clickHeader(box.list, 0);
    QCOMPARE(indicator(box.list), -1);
    clickHeader(box.list, 1);
    QCOMPARE(box.texts(), (QStringList{"b", "a"}));
    QCOMPARE(indicator(box.list), 2);
    clickHeader(box.list, 1);
    QCOMPARE(box.texts(), (QStringList{"a", "b"}));
    QCOMPARE(indicator(box.list), -2);
}

void DbListViewTest::clickThatCannotSort()
{
    ListedBox box(Letters);
    box.list.setColumns({listColumn("TITL", "Title"), listColumn("NONE", "None")});
    showList(box.list);
    clickHeader(box.list, 1);
    QCOMPARE(box.texts(), Letters);
    QCOMPARE(indicator(box.list), 1); // though the header has turned to the column that was clicked on
    clickHeader(box.list, 1);
    QCOMPARE(indicator(box.list), 1);
}

void DbListViewTest::clickWithoutAManager()
{
    ListedBox box(Letters);
    showList(box.list);
    box.list.setDb(nullptr);
    clickHeader(box.list, 1);
    QCOMPARE(indicator(box.list), 0);
}

void DbListViewTest::selectionStaysOnItsLineWhenSorted()
{
    ListedBox box(Letters);
    box.list.setCurrentCardId(box.cards[0]);
    box.list.sort(0, false);
    QVERIFY(box.list.topLevelItem(0)->isSelected());
    QCOMPARE(box.list.currentCardId(), box.cards[3]);
}

void DbListViewTest::sortOfASubclassIsCalled()
{
    struct Asked : KyDbListView
    {
        void sort(int column, bool ascending) override { calls.append({column, ascending}); }
        QList<QPair<int, bool>> calls;
    };
    const ListedBox box(Letters);
    Asked list;
    list.setColumns(box.list.columns());
    list.setDb(box.manager.get());
    showList(list);
    clickHeader(list, 0);
    clickHeader(list, 1);
    QCOMPARE(list.calls, (QList<QPair<int, bool>>{{0, false}, {1, true}}));
    QCOMPARE(indicator(list), 1);
}

void DbListViewTest::indicatorFollowsTheManager()
{
    ListedBox box(Letters);
    QVERIFY(box.manager->sort("TITL", false));
    QCOMPARE(indicator(box.list), 1);
    box.list.updateSortIndicator();
    QCOMPARE(indicator(box.list), -1);
}

void DbListViewTest::cardOfARow()
{
    ListedBox box({"b", "a"});
    QCOMPARE(box.list.currentCardId(box.list.topLevelItem(0)), box.cards[1]);
    QCOMPARE(box.list.currentCardId(box.list.topLevelItem(1)), box.cards[0]);
    box.list.topLevelItem(1)->setSelected(true);
    QCOMPARE(box.list.currentCardId(), box.cards[0]);
}

void DbListViewTest::cardOfNoRow()
{
    ListedBox box(Letters);
    const ListedBox other(Letters);
    box.manager->first();
    QCOMPARE(box.list.currentCardId(), 0UL);
    QCOMPARE(box.list.currentCardId(other.list.topLevelItem(1)), 0UL);
    box.list.setAllDataNum(5);
    QCOMPARE(box.list.currentCardId(box.list.topLevelItem(4)), 0UL);
    box.list.topLevelItem(0)->setSelected(true);
    box.manager.reset();
    QCOMPARE(box.list.currentCardId(), 0UL);
}

void DbListViewTest::rowOfACard()
{
    ListedBox box(Letters);
    QCOMPARE(box.list.findCard(box.cards[3]), box.list.topLevelItem(3));
    box.list.sort(0, false);
    QCOMPARE(box.list.findCard(box.cards[3]), box.list.topLevelItem(0));
    QVERIFY(box.manager->last());
    QCOMPARE(box.list.findCard(0), box.list.topLevelItem(3)); // the manager's current card
}

void DbListViewTest::rowOfACardThatIsNotInTheList()
{
    ListedBox box(Letters);
    const unsigned long card = addCard(*box.manager, "e");
    QCOMPARE(box.list.findCard(card), nullptr);
    QCOMPARE(box.list.findCard(999), nullptr);
    box.list.setDb(nullptr);
    QCOMPARE(box.list.findCard(box.cards[0]), nullptr);
}

void DbListViewTest::cardIsSelectedAndSeen()
{
    ListedBox box(manyTitles(60));
    showList(box.list);
    box.list.setCurrentCardId(box.cards[59]);
    QTreeWidgetItem *item = box.list.topLevelItem(59);
    QCOMPARE(box.list.selectedItems(), QList<QTreeWidgetItem *>{item});
    QCOMPARE(box.list.currentItem(), item);
    QVERIFY(box.list.viewport()->rect().contains(box.list.visualItemRect(item).center()));
    box.list.setCurrentCardId(box.cards[0]);
    QCOMPARE(box.list.verticalScrollBar()->value(), 0);
}

void DbListViewTest::noCardMeansTheFirstRow()
{
    ListedBox box(Letters);
    box.manager->last(); // the manager's current card has nothing to do with it
    box.list.setCurrentCardId(0);
    QCOMPARE(box.selected(), QStringList{"a"});
}

void DbListViewTest::unknownCardChangesNothing()
{
    ListedBox box(Letters);
    box.list.setCurrentCardId(box.cards[2]);
    box.list.setCurrentCardId(999);
    QCOMPARE(box.selected(), QStringList{"c"});
}

void DbListViewTest::columnInSightStays()
{
    ListedBox box(manyTitles(60));
    showList(box.list);
    box.list.setColumnWidth(0, 400);
    box.list.setColumnWidth(1, 400);
    QTRY_VERIFY(box.list.horizontalScrollBar()->maximum() > 350);
    box.list.horizontalScrollBar()->setValue(350);
    box.list.setCurrentCardId(box.cards[50]);
    QCOMPARE(box.list.horizontalScrollBar()->value(), 350);
}

void DbListViewTest::onlyOneRowIsSelected()
{
    ListedBox box(Letters);
    box.list.setSelectionMode(QAbstractItemView::MultiSelection);
    box.list.setCurrentCardId(box.cards[0]);
    box.list.setCurrentCardId(box.cards[1]);
    box.list.setCurrentCardId(box.cards[1]);
    QCOMPARE(box.selected(), QStringList{"b"});
}

void DbListViewTest::rowsReplacedWhileACardIsSelected()
{
    ListedBox box(manyTitles(60));
    showList(box.list);
    const auto replace = [&](const QTreeWidgetItem *current) {
        if (current && current->text(0) == "card 0050")
            box.list.update(box.cards[3]);
    };
    connect(&box.list, &QTreeWidget::currentItemChanged, this, replace);
    box.list.setCurrentCardId(box.cards[50]);
    QCOMPARE(box.selected(), QStringList{"card 0003"});
    QVERIFY(box.list.viewport()->rect().contains(box.list.visualItemRect(box.list.currentItem()).center()));
}

void DbListViewTest::neighbourIsSelectedAfterADeletion_data()
{
    QTest::addColumn<int>("card");
    QTest::addColumn<QStringList>("rest");
    QTest::addColumn<QString>("neighbour");
    QTest::newRow("first") << 0 << QStringList{"b", "c", "d"} << "b";
    QTest::newRow("in between") << 1 << QStringList{"a", "c", "d"} << "c";
    QTest::newRow("last") << 3 << QStringList{"a", "b", "c"} << "c";
}

void DbListViewTest::neighbourIsSelectedAfterADeletion()
{
    QFETCH(int, card);
    ListedBox box(Letters);
    showList(box.list);
    QVERIFY(box.list.deleteItem(box.cards[card]));
    QTEST(box.texts(), "rest");
    QFETCH(QString, neighbour);
    QCOMPARE(box.selected(), QStringList{neighbour});
    QCOMPARE(box.manager->count(), 3);
}

void DbListViewTest::deletionOfTheOnlyCardLeavesNoSelection()
{
    ListedBox box({"a"});
    box.list.setCurrentCardId(box.cards[0]);
    QVERIFY(box.list.deleteItem(box.cards[0]));
    QCOMPARE(box.list.topLevelItemCount(), 0);
    QCOMPARE(box.selected(), QStringList());
    QCOMPARE(box.list.currentCardId(), 0UL);
    QCOMPARE(box.manager->count(), 0);
}

void DbListViewTest::deletionOfTheSelectedCard()
{
    ListedBox box(Letters);
    box.manager->first();
    box.list.setCurrentCardId(box.cards[2]);
    QVERIFY(box.list.deleteItem(0UL));
    QCOMPARE(box.texts(), (QStringList{"a", "b", "d"}));
    QCOMPARE(box.selected(), QStringList{"d"});
}

void DbListViewTest::deletionWithNothingSelected()
{
    ListedBox box(Letters);
    box.manager->first();
    QVERIFY(!box.list.deleteItem(0UL));
    QCOMPARE(box.texts(), Letters);
    box.list.setDb(nullptr);
    QVERIFY(!box.list.deleteItem(box.cards[0]));
    QCOMPARE(box.manager->count(), 4);
}

void DbListViewTest::deletionOfAnUnknownCard()
{
    ListedBox box(Letters);
    box.list.setCurrentCardId(box.cards[1]);
    QVERIFY(!box.list.deleteItem(999));
    QCOMPARE(box.texts(), Letters);
    QCOMPARE(box.selected(), QStringList{"b"});
}

void DbListViewTest::deletionThatFails()
{
    const ListedBox box(Letters);
    box.manager->close();
    const KyPDataManager owner(box.box.path().constData(), nullptr, false);
    KyPDataManager reader(box.box.path().constData(), nullptr, true);
    KyDbListView list;
    list.setColumns(box.list.columns());
    list.setDb(&reader);
    QCOMPARE(list.topLevelItemCount(), 4);
    QVERIFY(!list.deleteItem(box.cards[1]));
    QCOMPARE(list.topLevelItemCount(), 4);
    QCOMPARE(list.selectedItems().size(), 0);
}

void DbListViewTest::deletionOfARowAlone()
{
    ListedBox box(Letters);
    static_cast<KyListView &>(box.list).deleteItem(box.list.topLevelItem(3));
    QCOMPARE(box.list.topLevelItemCount(), 3);
    QCOMPARE(box.manager->count(), 4);
}

void DbListViewTest::deletionTellsOfTheRightCards()
{
    ListedBox box(Letters);
    box.list.setCurrentCardId(box.cards[1]);
    QList<unsigned long> current, selected;
    connect(&box.list, &QTreeWidget::currentItemChanged, this,
            [&](QTreeWidgetItem *item) { current.append(item ? box.list.currentCardId(item) : 0); });
    connect(&box.list, &QTreeWidget::itemSelectionChanged, this,
            [&] { selected.append(box.list.currentCardId()); });
    QVERIFY(box.list.deleteItem(box.cards[1]));
    QCOMPARE(current, (QList<unsigned long>{0, box.cards[2]}));
    QCOMPARE(selected, (QList<unsigned long>{0, box.cards[2]}));
}

void DbListViewTest::rowsReplacedWhileACardIsDeleted()
{
    ListedBox box(Letters);
    box.list.setCurrentCardId(box.cards[1]);
    connect(&box.list, &QTreeWidget::currentItemChanged, this, [&](const QTreeWidgetItem *current) {
        if (!current)
            box.list.setDb(box.manager.get());
    });
    QVERIFY(box.list.deleteItem(box.cards[1]));
    QCOMPARE(box.texts(), (QStringList{"a", "c", "d"}));
    QCOMPARE(box.selected(), QStringList{"c"});
}

void DbListViewTest::managerDeletedUnderTheList()
{
    ListedBox box(Letters);
    showList(box.list);
    box.manager.reset();
    QCOMPARE(box.list.db(), nullptr);
    LogCapture log;
    (void)box.list.grab();
    QVERIFY(log.lines().contains("[KyDbListView::itemText] unexpected NULL"));
    QCOMPARE(box.texts(), (QStringList{"", "", "", ""}));
    clickHeader(box.list, 0);
    QCOMPARE(indicator(box.list), 0);
    box.list.update(0);
    QCOMPARE(box.list.topLevelItemCount(), 0);
}

void DbListViewTest::boxClosedUnderTheList()
{
    ListedBox box(Letters);
    showList(box.list);
    QVERIFY(box.manager->close());
    (void)box.list.grab();
    box.list.update(box.cards[1]);
    QCOMPARE(box.list.topLevelItemCount(), box.manager->count() < 0 ? 0 : box.manager->count());
    QVERIFY(!box.list.deleteItem(box.cards[1]));
    QVERIFY(box.manager->open(false));
    box.list.update(box.cards[1]);
    QCOMPARE(box.texts(), Letters);
    QCOMPARE(box.selected(), QStringList{"b"});
}

void DbListViewTest::rowBehindTheView()
{
    ListedBox box(Letters);
    QVERIFY(box.manager->last()); // whose title must not show there
    cellsRead = 0;
    QCOMPARE(box.list.itemText(5, 0), QString());
    QCOMPARE(box.list.itemText(0, 0), QString());
    QCOMPARE(box.list.itemText(-1, 0), QString());
    QCOMPARE(box.list.itemText(65537, 0), QString());
    QCOMPARE(cellsRead, 0);
}

void DbListViewTest::managerWithoutABox()
{
    KyPDataManager manager("F0:MISSING.BOX", nullptr, false);
    KyDbListView list;
    list.setColumns({listColumn("TITL", "Title")});
    list.setDb(&manager);
    QCOMPARE(list.topLevelItemCount(), 0);
    QCOMPARE(list.sortColumn(), -1);
    list.update(0);
    list.headerClicked(0);
    QCOMPARE(indicator(list), 0);
    QVERIFY(!list.deleteItem(1UL));
}

QTEST_MAIN(DbListViewTest)
#include "dblistviewtest.moc"
