#include "filterfixture.h"
#include "logcapture.h"

using KyPDtm::PIOIDXINFO;

namespace {

int sorts = 0; ///< calls of _IndexSort

QByteArray categoryTerm(int category)
{
    unsigned char term[9];
    unsigned short length = 0;
    GetCategory_FilterInfo(term, static_cast<unsigned char>(category), &length);
    return QByteArray(reinterpret_cast<const char *>(term), length);
}

/** By descending number, which is the order of the titles. */
KyPDataManagerSortKey descendingNumbers()
{
    KyPDataManagerSortKey order;
    order.addSortKey("NUMB", false, false);
    return order;
}

KyPDataManagerSortKey twoKeys()
{
    KyPDataManagerSortKey order;
    order.addSortKey("FLAG", false, true);
    order.addSortKey("NUMB", false, true);
    return order;
}

} // namespace

PdtmStatus _IndexSort(const char *path, uint32_t handle)
{
    static const auto next = nextDefinition<decltype(_IndexSort)>("_IndexSort");
    ++sorts;
    return next(path, handle);
}

class FilterTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void categoryIds_data();
    void categoryIds();
    void expressionOfACategory();
    void expressionOfNoCategoryLeavesBothAlone();

    void categoryShowsItsCards();
    void unfiledCards();
    void emptyCategoryIsAnOrdinaryView();
    void indexOfACategory();
    void sameCategoryAgainDoesNothing();
    void unfiledIsBuiltAgain();
    void permanentUnfiledIndexIsKept();
    void thirdCallReusesTheFirstIndex();
    void invalidCategories_data();
    void invalidCategories();
    void invalidCategoryWithAnIndex();
    void categoryZeroInAPlainView();
    void categoryZeroInASearch();
    void categoryZeroLeavesTheCategory();
    void categoryZeroTakesTheFirstIndexWithout();
    void categoryZeroWithACategoryAsMaster();
    void masterThatIsACategoryAlwaysBuilds();
    void newIndexTakesTheMastersOrder_data();
    void newIndexTakesTheMastersOrder();
    void newIndexTakesTheOrderOfTheView();
    void newIndexTakesTheExpressionOfTheView();
    void newIndexKnowsItsDirection();
    void directionOfTheViewStays();
    void reuseWithTheSameOrderSortsNothing();
    void reuseWithAnotherItem();
    void reuseWithAnItemThatRunsBackwards();
    void reuseWithAnotherExpression();
    void reuseWithNoOrder();
    void reuseWhenTheTableIsFull();
    void oldestIndexMakesRoom();
    void resumedIndexMakesNoRoom();
    void viewThatMakesRoomPassesItsOrderOn();
    void formerIndexThatMadeRoom();
    void nextManagerAdoptsTheCategory();
    void categoryFollowsEdits();
    void currentCardStays();
    void categoryOfAClosedBox();
    void categoryBesideAHolder();
    void managerWithNoTable();

    void disableGoesBackToAllCards();
    void disableDiscards();
    void disableKeepsTheOrder();
    void disableKeepsTheExpression();
    void disableKeepsTheDirection();
    void disableWithAMasterThatRunsBackwards();
    void disableWithNoOrder();
    void disableWithNoCategory();
    void disableOnAPlainView();
    void disableOnASearch();
    void disableNeverDiscardsTheMaster();
    void disableInAnEmptyBox();
};

void FilterTest::init()
{
    deleteTemporaryFiles();
    sorts = 0;
}

void FilterTest::categoryIds_data()
{
    QTest::addColumn<int>("category");
    QTest::addColumn<bool>("valid");
    QTest::newRow("below 0") << -1 << false;
    QTest::newRow("0") << 0 << false;
    QTest::newRow("first") << 1 << true;
    QTest::newRow("last") << 245 << true;
    QTest::newRow("behind the last") << 246 << false;
    QTest::newRow("before unfiled") << 253 << false;
    QTest::newRow("unfiled") << UnfiledCategoryId << true;
    QTest::newRow("behind unfiled") << 255 << false;
    QTest::newRow("5 in the low byte") << 0x105 << false;
}

void FilterTest::categoryIds()
{
    QFETCH(int, category);
    QFETCH(bool, valid);
    QCOMPARE(FilerCheckCategoryId(category), valid);
}

void FilterTest::expressionOfACategory()
{
    QCOMPARE(categoryTerm(5), QByteArray("CTGR\xFE\x92\x0C\x05\0", 9));
    QCOMPARE(categoryTerm(UnfiledCategoryId), QByteArray("CTGR\xFE\x92\x0C\xFE\0", 9));
}

void FilterTest::expressionOfNoCategoryLeavesBothAlone()
{
    for (const auto id : std::initializer_list<unsigned char>{0, 250}) {
        unsigned char term[9] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'};
        unsigned short length = 77;
        GetCategory_FilterInfo(term, id, &length);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(term), 9), QByteArray("abcdefghi"));
        QCOMPARE(int(length), 77);
    }
}

void FilterTest::categoryShowsItsCards()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
    QCOMPARE(view.manager.count(), 4);
    QVERIFY(!view.manager.isFiltered());
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(view.titles(), QStringLiteral("cde"));
}

void FilterTest::unfiledCards()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(UnfiledCategoryId));
    QCOMPARE(view.titles(), QStringLiteral("f"));
}

void FilterTest::emptyCategoryIsAnOrdinaryView()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(7));
    QCOMPARE(view.current().categoryId, quint8(7));
    QCOMPARE(view.manager.count(), 0);
    QVERIFY(!view.manager.first());
    QVERIFY(view.setCategories(view.cardOf("b"), "\x07"));
    QCOMPARE(view.titles(), QStringLiteral("b"));
    QVERIFY(view.manager.sort("NUMB", true)); // an empty one too
    QVERIFY(view.manager.enableFilter(8));
    QCOMPARE(view.manager.count(), 0);
    QCOMPARE(view.manager.sortItem(), NumberItem);
}

void FilterTest::indexOfACategory()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    const PIOIDXINFO &row = view.current();
    QVERIFY(row.inUse);
    QVERIFY(!row.sticky);
    QVERIFY(!row.filtered);
    QCOMPARE(int(row.categoryId), 9);
    QCOMPARE(int(row.indexAge), 0);
    QCOMPARE(temporaryFiles(), QStringList{QString::fromLatin1(row.fileName)});
    const QByteArray index = view.currentPath();
    QCOMPARE(infoOf(index, InfoBoxName), view.box.path().mid(3) + '\0');
    QCOMPARE(infoOf(index, InfoSearchExpression), categoryTerm(9));
    QCOMPARE(infoOf(index, InfoSubset), QByteArray("\1"));
}

void FilterTest::sameCategoryAgainDoesNothing()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.enableFilter(9));
    const PIOIDXINFO rows[] = {view.table().indexes[0], view.table().indexes[1], view.table().indexes[2]};
    const PIOIDXINFO *current = view.table().currentIndex;
    const auto files = folderState();
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(view.table().currentIndex, current);
    QVERIFY(memcmp(rows, view.table().indexes, sizeof rows) == 0); // none has grown older
    QCOMPARE(folderState(), files);
}

void FilterTest::unfiledIsBuiltAgain()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(UnfiledCategoryId));
    const QByteArray former = view.currentPath();
    QVERIFY(view.manager.enableFilter(UnfiledCategoryId));
    QVERIFY(view.currentPath() != former);
    QCOMPARE(temporaryFiles(), QStringList{QString::fromLatin1(view.current().fileName)});
    QCOMPARE(rowsInUse(view), 2);
    QCOMPARE(view.titles(), QStringLiteral("f"));
}

void FilterTest::permanentUnfiledIndexIsKept()
{
    TestBox box;
    QVERIFY(makePermanent(box, "U.IDX", categoryTerm(UnfiledCategoryId)));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.enableFilter(UnfiledCategoryId));
    QVERIFY(!privateOf(manager).currentIndex->sticky);
    QCOMPARE(infoOf(box.file("U.IDX"), InfoSearchExpression), categoryTerm(UnfiledCategoryId));
}

void FilterTest::thirdCallReusesTheFirstIndex()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    const PIOIDXINFO *first = view.table().currentIndex;
    QVERIFY(view.manager.enableFilter(9));
    const auto files = folderState();
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(view.table().currentIndex, first);
    QCOMPARE(int(first->indexAge), 0);
    QCOMPARE(folderState(), files);
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
}

void FilterTest::invalidCategories_data()
{
    QTest::addColumn<int>("category");
    QTest::newRow("below 0") << -1;
    QTest::newRow("246") << 246;
    QTest::newRow("250") << 250;
    QTest::newRow("255") << 255;
    QTest::newRow("5 in the low byte") << 0x105;
    QTest::newRow("0 in the low byte") << 0x100;
}

void FilterTest::invalidCategories()
{
    QFETCH(int, category);
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    const auto files = folderState();
    QVERIFY(!view.manager.enableFilter(category));
    QCOMPARE(folderState(), files);
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
    QCOMPARE(rowsInUse(view), 2);
}

void FilterTest::invalidCategoryWithAnIndex()
{
    TestBox box;
    QVERIFY(makePermanent(box, "X.IDX", QByteArray("CTGR\xFE\x92\x0C\xFA\0", 9)));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(!manager.enableFilter(250));
    QCOMPARE(privateOf(manager).currentIndex, privateOf(manager).masterIndex);
}

void FilterTest::categoryZeroInAPlainView()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(0));
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QVERIFY(view.manager.sort("NUMB", true));
    const PIOIDXINFO *current = view.table().currentIndex;
    QVERIFY(view.manager.enableFilter(0));
    QCOMPARE(view.table().currentIndex, current);
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
}

void FilterTest::categoryZeroInASearch()
{
    View view;
    view.addSix();
    QVERIFY(view.filter("a", KyPDataManager::FilterMaster, false));
    QVERIFY(view.manager.enableFilter(0));
    QVERIFY(view.manager.isFiltered());
    QCOMPARE(view.titles(), QStringLiteral("a"));
}

void FilterTest::categoryZeroLeavesTheCategory()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.sort("NUMB", false));
    QVERIFY(view.manager.enableFilter(0));
    // Unlike disableFilter(), this brings the master itself into the order of the view.
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QCOMPARE(view.manager.sortItem(), NumberItem);
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(temporaryFiles().size(), 1);
}

void FilterTest::categoryZeroTakesTheFirstIndexWithout()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.close());
    QVERIFY(makePermanent(view.box, " A.IDX", atLeast("NUMB", 5))); // stands before the master
    KyPDataManager manager(view.box.path().constData(), nullptr, false);
    QVERIFY(privateOf(manager).indexes[0].filtered);
    QVERIFY(manager.enableFilter(5));
    QVERIFY(manager.enableFilter(0));
    QCOMPARE(privateOf(manager).currentIndex, &privateOf(manager).indexes[0]);
    QVERIFY(manager.isFiltered());
    QCOMPARE(manager.count(), 2);
}

/** Makes the permanent index of category 5 the master, with a manager of its own. */
class CategoryMaster
{
public:
    CategoryMaster()
    {
        {
            View cards;
            cards.addSix();
            box = cards.box.path();
            name = cards.box.file("C.IDX").mid(3);
            cards.manager.close();
            made = makePermanent(cards.box, "C.IDX", categoryTerm(5));
        }
        manager = std::make_unique<KyPDataManager>(box.constData(), nullptr, false);
        made = made && manager->setCurrentIndex(name.constData(), true);
    }
    QString titles()
    {
        QString titles;
        for (unsigned long card = manager->firstCard(); card; card = manager->nextCard(card))
            titles += manager->readItem("TITL", card);
        return titles;
    }
    KyPDtm::KyPDataManagerPrivate &table() { return privateOf(*manager); }

    QByteArray box;
    QByteArray name;
    std::unique_ptr<KyPDataManager> manager;
    bool made = false;
};

void FilterTest::categoryZeroWithACategoryAsMaster()
{
    CategoryMaster box;
    QVERIFY(box.made);
    QVERIFY(!box.manager->enableFilter(0));
    QCOMPARE(box.titles(), QStringLiteral("abcd"));
    QCOMPARE(temporaryFiles(), QStringList());
}

void FilterTest::masterThatIsACategoryAlwaysBuilds()
{
    CategoryMaster box;
    QVERIFY(box.made);
    QCOMPARE(box.titles(), QStringLiteral("abcd"));
    QVERIFY(box.manager->enableFilter(9));
    QCOMPARE(box.titles(), QStringLiteral("cd")); // of the master's cards
    const QStringList first = temporaryFiles();
    QVERIFY(box.manager->enableFilter(9));
    QCOMPARE(box.titles(), QStringLiteral("cd"));
    QVERIFY(temporaryFiles() != first);
    QCOMPARE(temporaryFiles().size(), 1);
    QVERIFY(box.manager->enableFilter(5));
    QVERIFY(box.table().currentIndex != box.table().masterIndex);
    QCOMPARE(temporaryFiles().size(), 2);
    QCOMPARE(box.titles(), QStringLiteral("abcd"));
    QVERIFY(box.table().masterIndex->inUse);
}

void FilterTest::newIndexTakesTheMastersOrder_data()
{
    QTest::addColumn<QString>("order");
    QTest::addColumn<QString>("titles");
    QTest::newRow("one key") << QStringLiteral("one") << QStringLiteral("cde");
    QTest::newRow("two keys") << QStringLiteral("two") << QStringLiteral("edc");
    QTest::newRow("none") << QStringLiteral("none") << QStringLiteral("cde");
}

void FilterTest::newIndexTakesTheMastersOrder()
{
    QFETCH(QString, order);
    QFETCH(QString, titles);
    View view("IDX", order == "one"   ? descendingNumbers()
                     : order == "two" ? twoKeys()
                                      : KyPDataManagerSortKey());
    view.addSix();
    sorts = 0;
    QVERIFY(view.manager.enableFilter(9));
    const PIOIDXINFO &row = view.current();
    const PIOIDXINFO &master = *view.table().masterIndex;
    QCOMPARE(row.sortItem, master.sortItem);
    QCOMPARE(row.ascending, master.ascending);
    QCOMPARE(row.sortExpLength, master.sortExpLength);
    QVERIFY(memcmp(row.sortExp, master.sortExp, row.sortExpLength) == 0);
    QCOMPARE(infoOf(view.currentPath(), InfoSortExpression), infoOf(view.box.master(), InfoSortExpression));
    QCOMPARE(view.titles(), titles);
    QCOMPARE(sorts, 0);
    QVERIFY(view.manager.disableFilter(false));
    QCOMPARE(view.table().currentIndex, &master);
}

void FilterTest::newIndexTakesTheOrderOfTheView()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("NUMB", true));
    LogCapture log;
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(log.lines(), QStringList{"required sort"});
    QCOMPARE(view.titles(), QStringLiteral("edc"));
    QCOMPARE(view.manager.sortItem(), NumberItem);
    QCOMPARE(view.manager.current1stSortKey(), QStringLiteral("NUMB"));
}

void FilterTest::newIndexTakesTheExpressionOfTheView()
{
    View view;
    view.addSix();
    const QByteArray order = plainKey("FLAG").chopped(1) + plainKey("NUMB");
    QVERIFY(view.manager.sort(order.constData(), int(order.size()), true));
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(view.titles(), QStringLiteral("edc"));
    QCOMPARE(view.manager.sortItem(), 0);
    QCOMPARE(int(view.current().sortExpLength), int(order.size()));
    QCOMPARE(infoOf(view.currentPath(), InfoSortExpression), order);
    QCOMPARE(view.manager.current1stSortKey(), QStringLiteral("FLAG"));
}

void FilterTest::newIndexKnowsItsDirection()
{
    View view("IDX", descendingNumbers());
    view.addSix();
    QVERIFY(!view.table().masterIndex->ascending);
    QVERIFY(view.manager.sort("TITL", true));
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.current().ascending); // that of the view, not of the master
    QVERIFY(view.manager.sort("TITL", true));
    QCOMPARE(view.titles(), QStringLiteral("cde"));
}

void FilterTest::directionOfTheViewStays()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("TITL", false));
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("edc"));
}

void FilterTest::reuseWithTheSameOrderSortsNothing()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.enableFilter(9));
    sorts = 0;
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(sorts, 0);
    QCOMPARE(view.titles(), QStringLiteral("edc"));
}

void FilterTest::reuseWithAnotherItem()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(view.manager.sort("NUMB", true));
    const qsizetype files = temporaryFiles().size();
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(temporaryFiles().size(), files);
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QCOMPARE(view.manager.sortItem(), NumberItem);
    QVERIFY(infoOf(view.currentPath(), InfoSortExpression).startsWith("NUMB"));
    view.manager.sort(true); // the master's order, which the next reuse follows back
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
    QCOMPARE(view.manager.sortItem(), TitleItem);
}

void FilterTest::reuseWithAnItemThatRunsBackwards()
{
    View view("IDX", descendingNumbers());
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.manager.sort("TITL", false));
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.setCurrentIndex(view.table().masterIndex->fileName, false)); // by title, too
    view.manager.sort(true);
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(view.manager.sortItem(), NumberItem);
    QVERIFY(!view.current().ascending);
    QCOMPARE(view.titles(), QStringLiteral("cde")); // from the highest number on
}

void FilterTest::reuseWithAnotherExpression()
{
    View view;
    view.addSix();
    const QByteArray order = plainKey("FLAG").chopped(1) + plainKey("NUMB");
    const QByteArray other = plainKey("FLAG").chopped(1) + plainKey("NUMB", false);
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(view.manager.sort(order.constData(), int(order.size()), true));
    QVERIFY(view.manager.enableFilter(5)); // had been sorted by an item
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QCOMPARE(view.manager.sortItem(), 0);
    QCOMPARE(infoOf(view.currentPath(), InfoSortExpression), order);
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(view.manager.sort(other.constData(), int(other.size()), true));
    QVERIFY(view.manager.enableFilter(5)); // of the same length
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
    QCOMPARE(infoOf(view.currentPath(), InfoSortExpression), other);
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(view.manager.enableFilter(5)); // back to an item
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QCOMPARE(view.manager.sortItem(), NumberItem);
}

void FilterTest::reuseWithNoOrder()
{
    View view("IDX", KyPDataManagerSortKey());
    view.addSix();
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QVERIFY(view.manager.close());
    KyPDataManager next(view.box.path().constData(), nullptr, false); // its row has no expression
    QCOMPARE(next.sortItem(), 0);
    QVERIFY(next.enableFilter(5));
    QCOMPARE(next.sortItem(), 0);
    QCOMPARE(next.readItem("TITL", next.firstCard()), QStringLiteral("a")); // by card id
}

void FilterTest::reuseWhenTheTableIsFull()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    const QStringList files = temporaryFiles();
    QVERIFY(view.manager.enableFilter(21));
    QCOMPARE(int(view.current().categoryId), 21);
    QCOMPARE(temporaryFiles(), files);
    QCOMPARE(rowsInUse(view), KyPDtm::MaximumIndexes);
}

void FilterTest::oldestIndexMakesRoom()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    QVERIFY(view.manager.enableFilter(21)); // 22 is the oldest now
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
    QCOMPARE(temporaryFiles().size(), 9);
    QStringList categories;
    for (const PIOIDXINFO &row : view.table().indexes)
        categories.append(QString::number(row.categoryId));
    QVERIFY(!categories.contains("22"));
    QVERIFY(categories.contains("21"));
    QVERIFY(categories.contains("5"));
}

void FilterTest::resumedIndexMakesNoRoom()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    view.table().resumeIndex = &view.table().indexes[1]; // the oldest
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(int(view.table().indexes[1].categoryId), 21);
    QCOMPARE(int(view.table().indexes[2].categoryId), 5);
}

void FilterTest::viewThatMakesRoomPassesItsOrderOn()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    QVERIFY(view.manager.sort("NUMB", true));
    keepAllButTheCurrent(view);
    const PIOIDXINFO *row = view.table().currentIndex;
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(view.table().currentIndex, row);
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QCOMPARE(temporaryFiles().size(), 9);
}

void FilterTest::formerIndexThatMadeRoom()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(UnfiledCategoryId)); // will be the oldest
    for (int category = 21; category < 29; ++category)
        QVERIFY(view.manager.enableFilter(category));
    QCOMPARE(rowsInUse(view), KyPDtm::MaximumIndexes);
    QVERIFY(view.manager.enableFilter(UnfiledCategoryId));
    QCOMPARE(int(view.current().categoryId), UnfiledCategoryId);
    QCOMPARE(view.titles(), QStringLiteral("f"));
    QCOMPARE(rowsInUse(view), KyPDtm::MaximumIndexes);
}

void FilterTest::nextManagerAdoptsTheCategory()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9)); // in the master's order
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(view.manager.enableFilter(5)); // in that of the view
    QVERIFY(view.manager.close());
    const QStringList files = temporaryFiles();
    QCOMPARE(files.size(), 2);
    KyPDataManager next(view.box.path().constData(), nullptr, false);
    QCOMPARE(temporaryFiles(), files);
    const auto &rows = privateOf(next).indexes;
    QCOMPARE(int(rows[1].categoryId), 9);
    QCOMPARE(int(rows[2].categoryId), 5);
    QCOMPARE(int(rows[1].sortItem), NumberItem);
    QCOMPARE(int(rows[2].sortItem), NumberItem);
    QVERIFY(!rows[2].sticky);
    QVERIFY(!rows[2].filtered);
    QVERIFY(rows[2].ascending);
    QVERIFY(next.enableFilter(5)); // in the master's order
    QCOMPARE(privateOf(next).currentIndex, &rows[2]);
    QCOMPARE(next.count(), 4);
    QCOMPARE(next.readItem("TITL", next.firstCard()), QStringLiteral("a"));
    QCOMPARE(temporaryFiles(), files);
}

void FilterTest::categoryFollowsEdits()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.setCategories(view.cardOf("a"), "\x05\x09"));
    QVERIFY(view.setCategories(view.cardOf("d"), "\x05"));
    QVERIFY(view.add("bb", 8, "\x09"));
    QCOMPARE(view.titles(), QStringLiteral("abbce"));
}

void FilterTest::currentCardStays()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.first());
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(view.manager.cardId(), view.cardOf("a"));
    QVERIFY(view.manager.disableFilter(true));
    QVERIFY(view.filter("b", KyPDataManager::FilterMaster, false));
    QVERIFY(view.manager.unfilter(false));
    QCOMPARE(view.manager.cardId(), view.cardOf("a"));
}

void FilterTest::categoryOfAClosedBox()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    const QStringList files = temporaryFiles();
    QVERIFY(view.manager.close());
    QVERIFY(!view.manager.enableFilter(5));
    QCOMPARE(temporaryFiles(), files); // none has made room
    QVERIFY(view.manager.open(false));
    QCOMPARE(int(view.current().categoryId), 29);
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
}

void FilterTest::categoryBesideAHolder()
{
    View view;
    view.addSix();
    KyPDataManager reader(view.box.path().constData(), nullptr, true);
    QVERIFY(reader.enableFilter(9));
    QCOMPARE(reader.count(), 3);
    QVERIFY(view.setCategories(view.cardOf("a"), "\x09"));
    QCOMPARE(reader.count(), 4);
    QCOMPARE(reader.readItem("TITL", reader.firstCard()), QStringLiteral("a"));
    QVERIFY(reader.disableFilter(true));
    QCOMPARE(temporaryFiles(), QStringList());
}

void FilterTest::managerWithNoTable()
{
    KyPDataManager manager("F0:NONE.BOX", nullptr, true);
    QVERIFY(!manager.enableFilter(5));
    QVERIFY(!manager.enableFilter(0));
    QVERIFY(!manager.disableFilter(true));
    QVERIFY(!manager.filter("", 1, "", 1, KyPDataManager::FilterMaster, true));
    QVERIFY(!manager.unfilter(true));
    manager.killIdxResume();
    QVERIFY(!manager.isFiltered());
}

void FilterTest::disableGoesBackToAllCards()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    LogCapture log;
    QVERIFY(view.manager.disableFilter(false));
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(temporaryFiles().size(), 1); // for the next time
}

void FilterTest::disableDiscards()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.disableFilter(true));
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(temporaryFiles(), QStringList());
    QCOMPARE(rowsInUse(view), 1);
}

void FilterTest::disableKeepsTheOrder()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(view.manager.disableFilter(false));
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
    const PIOIDXINFO *made = view.table().currentIndex;
    QVERIFY(made != view.table().masterIndex);
    QCOMPARE(temporaryFiles().size(), 2);
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.disableFilter(false));
    QCOMPARE(view.table().currentIndex, made); // found
    QCOMPARE(temporaryFiles().size(), 2);
}

void FilterTest::disableKeepsTheExpression()
{
    View view;
    view.addSix();
    const QByteArray order = plainKey("FLAG").chopped(1) + plainKey("NUMB");
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(!view.manager.sort(order.constData(), int(order.size()), false)); // false: has been sorted
    QVERIFY(view.manager.disableFilter(true));
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(view.manager.sortItem(), 0);
    QVERIFY(view.table().currentIndex != view.table().masterIndex);
}

void FilterTest::disableKeepsTheDirection()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.sort("NUMB", false));
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.manager.sort("TITL", false));
    QVERIFY(view.manager.disableFilter(false));
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
}

void FilterTest::disableWithAMasterThatRunsBackwards()
{
    View view("IDX", descendingNumbers());
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
    // Meant: it is a sort by the master's item, which counts the direction that is built into the index.
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
}

void FilterTest::disableWithNoOrder()
{
    View view("IDX", KyPDataManagerSortKey());
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    view.table().ascendent = false;
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
}

void FilterTest::disableWithNoCategory()
{
    View view("IDX", descendingNumbers()); // which a sort would turn round
    view.addSix();
    LogCapture log;
    QVERIFY(view.manager.disableFilter(true));
    QCOMPARE(log.lines(), QStringList{"KyPDataManager::disableFilter already filter is disabled"});
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(folderNames(boxFolder(), view.box.path().mid(3).chopped(3) + "IDX").size(), 1);
}

void FilterTest::disableOnAPlainView()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("NUMB", true));
    const PIOIDXINFO *current = view.table().currentIndex;
    LogCapture log;
    QVERIFY(view.manager.disableFilter(false));
    QCOMPARE(log.lines(), QStringList{"KyPDataManager::disableFilter already filter is disabled"});
    QCOMPARE(view.table().currentIndex, current); // by way of the master: the order is found again
    QVERIFY(view.manager.disableFilter(true));    // deleted, and made again
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
    QCOMPARE(temporaryFiles().size(), 1);
}

void FilterTest::disableOnASearch()
{
    View view;
    view.addSix();
    QVERIFY(view.filterBy(atLeast("NUMB", 4), plainKey("NUMB"), KyPDataManager::FilterMaster, false));
    LogCapture log;
    QVERIFY(view.manager.disableFilter(true));
    QCOMPARE(log.lines(), QStringList{"KyPDataManager::disableFilter already filter is disabled"});
    QVERIFY(!view.manager.isFiltered());
    QCOMPARE(view.titles(), QStringLiteral("fedcba")); // all cards, in the order of the search
    QCOMPARE(temporaryFiles().size(), 1);
}

void FilterTest::disableNeverDiscardsTheMaster()
{
    CategoryMaster box;
    QVERIFY(box.made);
    QVERIFY(box.manager->disableFilter(true));
    QVERIFY(box.table().masterIndex->inUse);
    QCOMPARE(box.titles(), QStringLiteral("abcd"));
}

void FilterTest::disableInAnEmptyBox()
{
    View view;
    QVERIFY(view.manager.enableFilter(5));
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(!view.manager.disableFilter(false)); // no new order in an empty box
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QCOMPARE(temporaryFiles().size(), 1);
}

QTEST_MAIN(FilterTest)
#include "filtertest.moc"
