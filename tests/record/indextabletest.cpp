#include "logcapture.h"
#include "sortfixture.h"

using KyPDtm::PIOIDXINFO;

namespace {

constexpr int TableSize = KyPDtm::MaximumIndexes;
/** Items for ten orders beside that of the master. */
constexpr const char *OtherItems[] = {"NUMB", "SHRT", "LONG", "FLAG", "SALT",
                                      "TIME", "BINA", "COLR", "SJIS", "SJI2"};

/** A box with all rows of its table in use: the master and nine temporary indexes, the first item's oldest,
 * the last one's current. */
class FullTable : public SortBox
{
public:
    FullTable()
    {
        for (int i = 0; i < TableSize - 1; ++i) {
            if (!manager->sort(OtherItems[i], true))
                qFatal("the table can't be filled");
        }
    }

    PIOIDXINFO &row(int number) { return record().indexes[number]; }
    /** The first order that isn't in the table. */
    static const char *newItem() { return OtherItems[TableSize - 1]; }
    void makeAllSticky()
    {
        for (PIOIDXINFO &row : record().indexes)
            row.sticky = true;
    }
    QStringList names()
    {
        QStringList result;
        for (const PIOIDXINFO &row : record().indexes)
            result.append(row.fileName);
        return result;
    }
    QList<int> ages()
    {
        QList<int> result;
        for (const PIOIDXINFO &row : record().indexes)
            result.append(row.indexAge);
        return result;
    }
};

/** The file of a temporary index, which another process might have made. */
void makeFile(const QString &name)
{
    QFile file(boxFolder() + name);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("a file can't be made");
}

/** Makes a box with a card and sorts it; the file name of the index that comes of it. */
QByteArray sortedIndexOf(const QByteArray &box)
{
    KyPDataManagerItemInfo items;
    items.addTextItem("TITL", "title");
    items.addUcharItem("NUMB", "number");
    KyPDataManagerSortKey order;
    order.addSortKey("TITL", true, true);
    const QByteArray master = QByteArray(box).replace(".BOX", ".IDX");
    KyPDataManager::createFile(box.constData(), master.constData(), TestBox::ApplicationId, false, items,
                               order, KyPDataManagerIndexInfo());
    KyPDataManager manager(box.constData(), nullptr, false);
    const bool sorted = addCard(manager, "a") && manager.sort("NUMB", true) && manager.count() == 1;
    return sorted ? QByteArray(privateOf(manager).currentIndex->fileName) : QByteArray();
}

} // namespace

class IndexTableTest : public QObject
{
    Q_OBJECT
private slots:
    void temporaryIndexesAge();
    void ageStopsAt255();
    void oldestIndexMakesRoom();
    void firstOfEquallyOldIndexesMakesRoom();
    void freeRowIsTakenBeforeTheOldest();
    void evictionPassesOverTheResumeIndex();
    void evictionPassesOverPermanentIndexes();
    void currentIndexIsEvictedWhenNoOtherMayGo();
    void noRowAtAllIsAFailure();
    void namesCountUp();
    void allNamesTakenIsAFailure();
    void boxesWithTheSameBeginningShareNames();
    void boxNamedLikeATemporaryIndex();
    void nextManagerAdoptsTemporaryIndexes();

    void unknownIndexName();
    void temporaryIndexCannotBeTheMaster();
    void indexThatIsCurrentStays();
    void indexWithTheSameCardsGivesWayToTheOrder();
    void subsetTakesTheOrderOfTheView();
    void subsetTakesTheExpressionOfTheView();
    void viewWithoutOrderIsLogged();
    void newMasterRemovesTemporaryIndexes();
    void newMasterKeepsTheOrderOfAnExpression();
    void newMasterForgetsTheResumeIndex();
    void temporaryIndexesComeFromTheNewMaster();
};

void IndexTableTest::temporaryIndexesAge()
{
    FullTable table;
    // Each sort made all temporary indexes older, but for the one that it brought.
    QCOMPARE(table.ages(), QList<int>({0, 8, 7, 6, 5, 4, 3, 2, 1, 0}));
    QVERIFY(table.manager->sort("NUMB", true));
    QCOMPARE(table.ages(), QList<int>({0, 0, 8, 7, 6, 5, 4, 3, 2, 1}));
    QVERIFY(table.manager->sort("NUMB", false)); // the same index
    QCOMPARE(table.ages(), QList<int>({0, 0, 8, 7, 6, 5, 4, 3, 2, 1}));
    table.manager->sort(true);
    QCOMPARE(table.ages(), QList<int>({0, 1, 9, 8, 7, 6, 5, 4, 3, 2}));
}

void IndexTableTest::ageStopsAt255()
{
    FullTable table;
    table.row(1).indexAge = 254;
    table.row(2).indexAge = 255;
    table.row(3).sticky = true;
    table.row(3).indexAge = 7;
    for (int i = 0; i < 3; ++i) {
        table.manager->sort(true);
        QVERIFY(table.manager->sort("SALT", true));
    }
    QCOMPARE(int(table.row(1).indexAge), 255);
    QCOMPARE(int(table.row(2).indexAge), 255);
    QCOMPARE(int(table.row(3).indexAge), 7);
}

void IndexTableTest::oldestIndexMakesRoom()
{
    FullTable table;
    QVERIFY(table.manager->sort("NUMB", true)); // now that of SHRT is the oldest
    const QStringList names = table.names();
    QVERIFY(table.manager->sort(FullTable::newItem(), true));
    QCOMPARE(&table.currentRow(), &table.row(2));
    QCOMPARE(table.names(), names); // the file name was free again
    QCOMPARE(table.temporaries().size(), TableSize - 1);
    QCOMPARE(table.storedOrder(table.row(2).fileName),
             sortKey(FullTable::newItem(), TextAscending) + endOfExpression());
    QVERIFY(table.manager->sort("SHRT", true)); // in place of LONG
    QCOMPARE(&table.currentRow(), &table.row(3));
    QCOMPARE(table.titles(), "bdac");
}

void IndexTableTest::firstOfEquallyOldIndexesMakesRoom()
{
    FullTable table;
    for (PIOIDXINFO &row : table.record().indexes)
        row.indexAge = 3;
    table.row(1).indexAge = 2;
    QVERIFY(table.manager->sort(FullTable::newItem(), true));
    QCOMPARE(&table.currentRow(), &table.row(2));
}

void IndexTableTest::freeRowIsTakenBeforeTheOldest()
{
    FullTable table;
    const QByteArray name = table.row(5).fileName;
    QCOMPARE(int(_IndexDelete(("F0:" + name).constData())), int(PdtmOk));
    table.row(5) = {};
    QStringList names = table.names();
    QVERIFY(table.manager->sort(FullTable::newItem(), true));
    QCOMPARE(&table.currentRow(), &table.row(5));
    names[5] = name;
    QCOMPARE(table.names(), names);
}

void IndexTableTest::evictionPassesOverTheResumeIndex()
{
    FullTable table;
    table.makeAllSticky();
    table.row(2).sticky = false;
    table.record().resumeIndex = &table.row(2);
    table.row(2).indexAge = 200;
    table.row(4).sticky = false;
    table.row(4).indexAge = 0;
    QVERIFY(table.manager->sort(FullTable::newItem(), true));
    QCOMPARE(&table.currentRow(), &table.row(4));
    QCOMPARE(table.record().resumeIndex, &table.row(2));
    QCOMPARE(int(table.row(2).sortItem), int(table.item("SHRT")));
}

void IndexTableTest::evictionPassesOverPermanentIndexes()
{
    FullTable table;
    table.row(1).sticky = true; // the oldest
    QVERIFY(table.manager->sort(FullTable::newItem(), true));
    QCOMPARE(&table.currentRow(), &table.row(2));
    QCOMPARE(int(table.row(1).sortItem), int(table.item("NUMB")));
}

void IndexTableTest::currentIndexIsEvictedWhenNoOtherMayGo()
{
    FullTable table;
    table.makeAllSticky();
    PIOIDXINFO &current = table.currentRow();
    current.sticky = false;
    const QByteArray name = current.fileName;
    QVERIFY(table.manager->sort(FullTable::newItem(), false));
    QCOMPARE(&table.currentRow(), &current);
    QCOMPARE(QByteArray(current.fileName), name);
    QCOMPARE(int(current.sortItem), int(table.item(FullTable::newItem())));
    QCOMPARE(table.titles(), "dacb"); // all equal, backwards
}

void IndexTableTest::noRowAtAllIsAFailure()
{
    FullTable table;
    table.makeAllSticky();
    table.row(3).sticky = false;
    table.record().resumeIndex = &table.row(3);
    const View before = table.view();
    const auto files = folderState();
    const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("SHRT", PlainAscending);
    LogCapture log;
    QVERIFY(!table.manager->sort(FullTable::newItem(), false));
    QVERIFY(!table.manager->sort(expression.constData(), int(expression.size()), false));
    QVERIFY(log.lines().isEmpty());
    QVERIFY(table.view() == before);
    QCOMPARE(folderState(), files);
}

void IndexTableTest::namesCountUp()
{
    SortBox box;
    const QByteArray stem = "ppin" + box.box.path().mid(3, 3);
    makeFile(stem + "1.tdx");
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(QByteArray(box.currentRow().fileName), stem + "0.tdx");
    QVERIFY(box.manager->sort("SHRT", true));
    QCOMPARE(QByteArray(box.currentRow().fileName), stem + "2.tdx");
    QFile::remove(boxFolder() + stem + "1.tdx");
}

void IndexTableTest::allNamesTakenIsAFailure()
{
    SortBox box;
    const QByteArray stem = "ppin" + box.box.path().mid(3, 3);
    for (int digit = 0; digit < 10; ++digit)
        makeFile(stem + QByteArray::number(digit) + ".tdx");
    const View before = box.view();
    const auto files = folderState();
    QVERIFY(!box.manager->sort("NUMB", false));
    QVERIFY(box.view() == before);
    QCOMPARE(folderState(), files);
    QCOMPARE(box.record().indexes[1].fileName[0], '\0'); // the row is free and zero
    QFile::remove(boxFolder() + stem + "7.tdx");
    QVERIFY(box.manager->sort("NUMB", false));
    QCOMPARE(QByteArray(box.currentRow().fileName), stem + "7.tdx");
    for (int digit = 0; digit < 10; ++digit)
        QFile::remove(boxFolder() + stem + QByteArray::number(digit) + ".tdx");
}

void IndexTableTest::boxesWithTheSameBeginningShareNames()
{
    const QByteArray first = "F0:SAMEA.BOX";
    const QByteArray second = "F0:SAMEB.BOX";
    QCOMPARE(sortedIndexOf(first), "ppinSAM0.tdx");
    QCOMPARE(sortedIndexOf(second), "ppinSAM1.tdx");
    // Each manager adopts that of its own box.
    KyPDataManager manager(second.constData(), nullptr, false);
    const PIOIDXINFO *rows = privateOf(manager).indexes;
    QCOMPARE(rows[1].fileName, "ppinSAM1.tdx");
    QVERIFY(!rows[2].inUse);
    KyPDtm::DeleteFamilyIndex(first.constData());
    KyPDtm::DeleteFamilyIndex(second.constData());
}

void IndexTableTest::boxNamedLikeATemporaryIndex()
{
    const QByteArray box = "F0:ppinABCD.BOX";
    QCOMPARE(sortedIndexOf(box), "ppinABC0.BOXtdx");
    KyPDtm::DeleteFamilyIndex(box.constData());
    QCOMPARE(folderNames(boxFolder(), "ppinABC"), QStringList("ppinABCD.BOX"));
    QVERIFY(KyPDataManager::deleteFile(box.constData()));
}

void IndexTableTest::nextManagerAdoptsTemporaryIndexes()
{
    FullTable table;
    const QStringList names = table.names();
    const auto files = folderState(boxFolder(), "ppin");
    table.reopen();
    QCOMPARE(table.names(), names);
    QCOMPARE(table.ages(), QList<int>(TableSize, 0));
    QCOMPARE(table.titles(), "abcd");
    QVERIFY(table.manager->sort("SHRT", true));
    QCOMPARE(table.titles(), "bdac");
    QCOMPARE(folderState(boxFolder(), "ppin"), files);
}

void IndexTableTest::unknownIndexName()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", false));
    const View before = box.view();
    LogCapture log;
    QVERIFY(!box.manager->setCurrentIndex("NONE.IDX", true));
    QVERIFY(!box.manager->setCurrentIndex("", false)); // the name of a row that isn't in use
    QVERIFY(!box.manager->setCurrentIndex(nullptr, false));
    QVERIFY(!box.manager->setCurrentIndex(box.box.master().constData(), false)); // a path
    QCOMPARE(log.lines(), QStringList({"failed for setCurrentIdx NONE.IDX", "failed for setCurrentIdx ",
                                       "failed for setCurrentIdx ",
                                       "failed for setCurrentIdx " + QString(box.box.master())}));
    QVERIFY(box.view() == before);
}

void IndexTableTest::temporaryIndexCannotBeTheMaster()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", false));
    const QByteArray name = box.currentRow().fileName;
    QVERIFY(box.manager->sort("SHRT", false));
    const View before = box.view();
    const PIOIDXINFO *master = box.record().masterIndex;
    LogCapture log;
    QVERIFY(!box.manager->setCurrentIndex(name.constData(), true));
    QCOMPARE(log.lines(), QStringList("only sticky index file can be the Master. " + QString(name)));
    QVERIFY(box.view() == before);
    QCOMPARE(box.record().masterIndex, master);
}

void IndexTableTest::indexThatIsCurrentStays()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", false));
    const View before = box.view();
    const PIOIDXINFO table = box.currentRow();
    LogCapture log;
    QVERIFY(box.manager->setCurrentIndex(before.index.constData(), false));
    QCOMPARE(log.lines(), QStringList("this index is already current index. " + QString(before.index)));
    QVERIFY(box.view() == before);
    // Not even a wish for another master is looked at.
    const QByteArray category = box.adoptCategory();
    QVERIFY(box.manager->setCurrentIndex(category.constData(), false));
    const PIOIDXINFO *master = box.record().masterIndex;
    QVERIFY(box.manager->setCurrentIndex(category.constData(), true));
    QCOMPARE(box.record().masterIndex, master);
    QCOMPARE(box.temporaries(), QStringList(table.fileName));
}

void IndexTableTest::indexWithTheSameCardsGivesWayToTheOrder()
{
    SortBox box;
    const QByteArray byShort = box.adopt("N.IDX", sortKey("SHRT", PlainAscending) + endOfExpression());
    QVERIFY(box.manager->sort("NUMB", false));
    const View before = box.view();
    PIOIDXINFO *other = box.rowNamed(byShort);
    QVERIFY(box.manager->setCurrentIndex(byShort.constData(), false));
    // The order of the view is there in another index, which is current again.
    QVERIFY(box.view() == before);
    QCOMPARE(int(other->indexAge), 0);
    QCOMPARE(box.record().masterIndex, &box.record().indexes[0]);
}

void IndexTableTest::subsetTakesTheOrderOfTheView()
{
    SortBox box;
    const QByteArray name = box.adoptCategory();
    QVERIFY(box.manager->sort("NUMB", false));
    QVERIFY(box.manager->setCurrentIndex(name.constData(), false));
    QCOMPARE(QByteArray(box.currentRow().fileName), name);
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.titles(), "abc");
    QCOMPARE(box.manager->sortItem(), int(box.item("NUMB")));
    QCOMPARE(box.titlesIn(name), "cba");
    QCOMPARE(box.temporaries().size(), 1);
}

void IndexTableTest::subsetTakesTheExpressionOfTheView()
{
    SortBox box;
    const QByteArray name = box.adoptCategory();
    const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("SHRT", PlainAscending);
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), false));
    QVERIFY(box.manager->setCurrentIndex(name.constData(), false));
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.titles(), "cab");
    QCOMPARE(box.keptOrder(box.currentRow()), expression);
}

void IndexTableTest::viewWithoutOrderIsLogged()
{
    SortBox box{KyPDataManagerSortKey()};
    const QByteArray name = box.adoptCategory();
    LogCapture log;
    QVERIFY(box.manager->setCurrentIndex(name.constData(), false));
    QCOMPARE(log.lines(), QStringList("setCurrentIndex previous index was not sorted?"));
    QCOMPARE(box.titles(), "abc"); // the index as it was
}

void IndexTableTest::newMasterRemovesTemporaryIndexes()
{
    SortBox box;
    const QByteArray byShort = box.adopt("N.IDX", sortKey("SHRT", PlainAscending) + endOfExpression());
    const QByteArray category = box.adoptCategory();
    const QByteArray search = box.adoptSearch("S.tdx");
    QVERIFY(box.manager->sort("FLAG", false));
    QVERIFY(box.manager->sort("NUMB", false));
    QCOMPARE(box.temporaries().size(), 2);
    QVERIFY(box.manager->setCurrentIndex(byShort.constData(), true));
    QCOMPARE(QByteArray(box.record().masterIndex->fileName), byShort);
    QCOMPARE(box.temporaries(), QStringList(box.currentRow().fileName)); // made anew
    QVERIFY(!folderNames().contains(search));
    QVERIFY(folderNames().contains(category)); // permanent
    QVERIFY(!box.rowNamed(search) && box.rowNamed(category));
    QCOMPARE(box.titles(), "abdc");
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.manager->sortItem(), int(box.item("NUMB")));
    QVERIFY(!box.currentRow().sticky);
}

void IndexTableTest::newMasterKeepsTheOrderOfAnExpression()
{
    SortBox box;
    const QByteArray byShort = box.adopt("N.IDX", sortKey("SHRT", PlainAscending) + endOfExpression());
    const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("NUMB", PlainAscending);
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), false));
    QCOMPARE(box.titles(), "dabc");
    QVERIFY(box.manager->setCurrentIndex(byShort.constData(), true));
    QCOMPARE(box.titles(), "dabc");
    QCOMPARE(box.keptOrder(box.currentRow()), expression);
    QCOMPARE(box.temporaries(), QStringList(box.currentRow().fileName));
}

void IndexTableTest::newMasterForgetsTheResumeIndex()
{
    SortBox box;
    const QByteArray byShort = box.adopt("N.IDX", sortKey("SHRT", PlainAscending) + endOfExpression());
    QVERIFY(box.manager->sort("FLAG", true));
    box.record().resumeIndex = box.record().currentIndex;
    QVERIFY(box.manager->sort("NUMB", true));
    QVERIFY(box.manager->setCurrentIndex(byShort.constData(), true));
    QVERIFY(!box.record().resumeIndex);
    box.record().resumeIndex = box.rowNamed(box.box.master().mid(3)); // permanent: it stays
    QVERIFY(box.manager->setCurrentIndex(box.box.master().mid(3).constData(), true));
    QVERIFY(box.record().resumeIndex);
}

void IndexTableTest::temporaryIndexesComeFromTheNewMaster()
{
    SortBox box;
    const QByteArray category = box.adoptCategory();
    QVERIFY(box.manager->setCurrentIndex(category.constData(), true));
    QCOMPARE(box.titles(), "abc");
    // A master that is a subset is sorted in its place, too.
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(QByteArray(box.currentRow().fileName), category);
    QCOMPARE(box.titles(), "cba");
    const auto files = folderState();
    box.manager->sort(false); // the master itself: only its direction
    QCOMPARE(box.titles(), "abc");
    QCOMPARE(folderState(), files);
    QVERIFY(box.manager->setCurrentIndex(box.box.master().mid(3).constData(), false));
    QVERIFY(box.manager->sort("SHRT", true));
    QCOMPARE(box.titles(), "bac"); // a copy of the master
    box.manager->sort(true);
    QCOMPARE(QByteArray(box.currentRow().fileName), category);
}

QTEST_MAIN(IndexTableTest)
#include "indextabletest.moc"
