#include "logcapture.h"
#include "sortfixture.h"

namespace {

/** A store operation that fails, when it is called for the n-th time. */
struct Fault
{
    QByteArray operation;
    int callsBefore = 0;
    int result = 0;
    bool hasHappened = false;

    bool hits(const char *called)
    {
        if (operation != called || hasHappened || callsBefore-- > 0)
            return false;
        hasHappened = true;
        return true;
    }
};

Fault &fault()
{
    static Fault instance;
    return instance;
}

constexpr PdtmStatus Failure = PdtmOutOfSpace;

} // namespace

// Each operation gives the result of the fault, with nothing done, or what the store gives.
#define FAULTY(operation, ...)                                                                               \
    if (fault().hits(#operation))                                                                            \
        return static_cast<decltype(operation(__VA_ARGS__))>(fault().result);                                \
    static const auto next = nextDefinition<decltype(operation)>(#operation);                                \
    return next(__VA_ARGS__)

PdtmStatus _IndexCopy(const char *source, const char *destination, int kind, const void *sortExpression,
                      int length)
{
    FAULTY(_IndexCopy, source, destination, kind, sortExpression, length);
}

PdtmStatus _IndexSort(const char *path, uint32_t handle)
{
    FAULTY(_IndexSort, path, handle);
}

PdtmStatus _IndexInfoWriteWithCheck(const char *path, int id, const void *buffer, uint16_t length)
{
    FAULTY(_IndexInfoWriteWithCheck, path, id, buffer, length);
}

PdtmStatus _IndexDelete(const char *path)
{
    FAULTY(_IndexDelete, path);
}

int GetNewFileName(const char *directory, char *name, const char *extension, int position, int digits)
{
    FAULTY(GetNewFileName, directory, name, extension, position, digits);
}

int PioSetSortCond(void *destination, const PioExtBoxInfo *info, uint32_t itemNumber, int ascending)
{
    FAULTY(PioSetSortCond, destination, info, itemNumber, ascending);
}

namespace {

/** What a row of a table of tests does to the view. */
enum Change { ByItem, ByExpression, AsMaster, MakeCurrent, MakeMaster };

/** A view that is changed while the store fails. */
class Trial : public SortBox
{
public:
    Trial() { byShort = adopt("N.IDX", sortKey("SHRT", PlainAscending) + endOfExpression()); }

    QByteArray byShort; ///< another permanent index
    View before;
    QStringList filesBefore;

    bool change(Change change)
    {
        const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("NUMB", PlainAscending);
        before = view();
        filesBefore = folderNames();
        switch (change) {
        case ByItem:
            return manager->sort("NUMB", false);
        case ByExpression:
            return manager->sort(expression.constData(), int(expression.size()), false);
        case AsMaster:
            manager->sort(false);
            return true;
        case MakeCurrent:
            return manager->setCurrentIndex(byShort.constData(), false);
        case MakeMaster:
            return manager->setCurrentIndex(byShort.constData(), true);
        }
        return false;
    }

    [[nodiscard]] bool isZero(int row)
    {
        const KyPDtm::PIOIDXINFO zero = {};
        return memcmp(&record().indexes[row], &zero, sizeof zero) == 0;
    }
};

} // namespace

Q_DECLARE_METATYPE(Change)

class SortFaultsTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { fault() = Fault(); }

    void newIndexThatFails_data();
    void newIndexThatFails();
    void subsetThatCannotBeSorted_data();
    void subsetThatCannotBeSorted();
    void subsetThatIsEmptyIsNoFailure();
    void secondKeyThatFails();
    void evictedFileThatStays();
    void currentIndexLostToAFailure_data();
    void currentIndexLostToAFailure();
    void orderLostByANewCurrentIndex();
    void orderLostByANewMaster_data();
    void orderLostByANewMaster();
    void temporaryIndexThatCannotBeDeleted();
};

void SortFaultsTest::newIndexThatFails_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("result");
    for (const auto &[name, change] : {std::pair("item", ByItem), std::pair("expression", ByExpression)}) {
        for (const char *operation : {"_IndexCopy", "_IndexSort"}) {
            for (const int status : {int(PdtmBadArgument), int(PdtmNone), int(PdtmTooShort),
                                     int(PdtmOutOfSpace), int(PdtmReadOnly), int(PdtmNothingToSort)})
                QTest::addRow("%s, %s gives %d", name, operation, status)
                    << change << QByteArray(operation) << status;
        }
        QTest::addRow("%s, no file name", name) << change << QByteArray("GetNewFileName") << 0;
    }
    QTest::newRow("item, no condition") << ByItem << QByteArray("PioSetSortCond") << 0;
}

void SortFaultsTest::newIndexThatFails()
{
    QFETCH(Change, change);
    QFETCH(QByteArray, operation);
    QFETCH(int, result);
    Trial trial;
    fault() = {operation, 0, result};
    LogCapture log;
    QVERIFY(!trial.change(change));
    QVERIFY(fault().hasHappened);
    QVERIFY(log.lines().isEmpty());
    QVERIFY(trial.view() == trial.before);
    QCOMPARE(folderNames(), trial.filesBefore);
    QVERIFY(trial.isZero(2));
    if (operation.startsWith("_Index"))
        QCOMPARE(int(trial.record().lastError), result);
    QVERIFY(trial.change(change)); // the next time it works
    QVERIFY(trial.view() != trial.before);
}

void SortFaultsTest::subsetThatCannotBeSorted_data()
{
    QTest::addColumn<bool>("isCategory");
    QTest::addColumn<Change>("change");
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("line");
    const QByteArray write = "_IndexInfoWriteWithCheck";
    const QByteArray sort = "_IndexSort";
    for (const bool isCategory : {true, false}) {
        for (const auto &[name, change] : {std::pair("item", ByItem), std::pair("expression", ByExpression),
                                           std::pair("master", AsMaster)}) {
            const char *subset = isCategory ? "category" : "search";
            QTest::addRow("%s by %s, write gives 71", subset, name)
                << isCategory << change << write << 71 << "index infowrite error 47";
            QTest::addRow("%s by %s, write gives 66", subset, name)
                << isCategory << change << write << 66 << "index infowrite error 42";
            QTest::addRow("%s by %s, sort gives 71", subset, name)
                << isCategory << change << sort << 71 << "sort error 47";
            QTest::addRow("%s by %s, sort gives 66", subset, name)
                << isCategory << change << sort << 66 << "sort error 42";
        }
        QTest::addRow("category by item, no condition")
            << isCategory << ByItem << QByteArray("PioSetSortCond") << 0 << QString();
        QTest::addRow("category as master, no condition")
            << isCategory << AsMaster << QByteArray("PioSetSortCond") << 0 << QString();
    }
}

void SortFaultsTest::subsetThatCannotBeSorted()
{
    QFETCH(bool, isCategory);
    QFETCH(Change, change);
    QFETCH(QByteArray, operation);
    QFETCH(int, result);
    QFETCH(QString, line);
    Trial trial;
    QVERIFY(trial.showSubset(isCategory));
    QVERIFY(trial.manager->sort("SHRT", true));
    const KyPDtm::PIOIDXINFO row = trial.currentRow();
    fault() = {operation, 0, result};
    LogCapture log;
    QCOMPARE(trial.change(change), change != ByItem); // by an expression a failure is true
    QVERIFY(fault().hasHappened);
    QCOMPARE(log.lines(), line.isEmpty() ? QStringList() : QStringList(line));
    QVERIFY(trial.view() == trial.before);
    QCOMPARE(memcmp(&row, &trial.currentRow(), sizeof row), 0);
    QCOMPARE(folderNames(), trial.filesBefore);
    if (!line.isEmpty())
        QCOMPARE(int(trial.record().lastError), result);
    // The order is written before the cards are sorted.
    const bool isWritten = operation == "_IndexSort";
    QCOMPARE(trial.storedOrder(row.fileName) != trial.keptOrder(row), isWritten);
    QCOMPARE(trial.change(change), change != ByExpression); // the next time it works
    QVERIFY(!trial.manager->ascendent());
    QCOMPARE(trial.titlesIn(row.fileName), change == AsMaster ? "abc" : "cba");
}

void SortFaultsTest::subsetThatIsEmptyIsNoFailure()
{
    Trial trial;
    QVERIFY(trial.showSubset(true));
    fault() = {"_IndexSort", 0, PdtmNothingToSort};
    LogCapture log;
    QVERIFY(trial.change(ByItem));
    QVERIFY(fault().hasHappened);
    QVERIFY(log.lines().isEmpty());
    QCOMPARE(trial.manager->sortItem(), int(trial.item("NUMB")));
}

void SortFaultsTest::secondKeyThatFails()
{
    Trial trial;
    memcpy(trial.record().extBoxInfo->secondSortItem, "TITL", 4);
    fault() = {"PioSetSortCond", 1, 0};
    QVERIFY(!trial.change(ByItem));
    QVERIFY(fault().hasHappened);
    QVERIFY(trial.view() == trial.before);
    fault() = {"PioSetSortCond", 0, 0};
    QVERIFY(!trial.change(ByExpression));
    QVERIFY(fault().hasHappened);
    QVERIFY(trial.view() == trial.before);
    QCOMPARE(folderNames(), trial.filesBefore);
}

/** Fills the table so that only one temporary index may make room. */
static void leaveOneEvictable(Trial &trial, const KyPDtm::PIOIDXINFO *evictable)
{
    for (KyPDtm::PIOIDXINFO &row : trial.record().indexes) {
        row.inUse = true;
        row.sticky = &row != evictable;
        row.categoryId = &row == trial.record().currentIndex || &row == evictable ? 0 : 1;
    }
}

void SortFaultsTest::evictedFileThatStays()
{
    Trial trial;
    QVERIFY(trial.manager->sort("FLAG", true));
    const QByteArray evicted = trial.currentRow().fileName;
    trial.manager->sort(true);
    leaveOneEvictable(trial, trial.rowNamed(evicted));
    fault() = {"_IndexDelete", 0, Failure};
    QVERIFY(trial.change(ByItem));
    QVERIFY(fault().hasHappened);
    // The row has a file of its own; the one that stayed is adopted by the next manager.
    QVERIFY(QByteArray(trial.currentRow().fileName) != evicted);
    QCOMPARE(trial.titles(), "abdc");
    trial.reopen();
    QVERIFY(trial.rowNamed(evicted));
}

void SortFaultsTest::currentIndexLostToAFailure_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("result");
    QTest::newRow("no file name") << QByteArray("GetNewFileName") << 0;
    QTest::newRow("copy") << QByteArray("_IndexCopy") << int(Failure);
    QTest::newRow("sort") << QByteArray("_IndexSort") << int(Failure);
}

void SortFaultsTest::currentIndexLostToAFailure()
{
    QFETCH(QByteArray, operation);
    QFETCH(int, result);
    Trial trial;
    QVERIFY(trial.manager->sort("SALT", true));
    const KyPDtm::PIOIDXINFO *row = &trial.currentRow();
    QCOMPARE(trial.temporaries().size(), 1);
    leaveOneEvictable(trial, row);
    fault() = {operation, 0, result};
    QVERIFY(!trial.change(ByItem));
    QVERIFY(fault().hasHappened);
    QVERIFY(trial.temporaries().isEmpty());
    QVERIFY(!row->inUse);
    QCOMPARE(&trial.currentRow(), trial.record().masterIndex);
    QVERIFY(trial.manager->ascendent());
    QCOMPARE(trial.titles(), "abcd");
}

void SortFaultsTest::orderLostByANewCurrentIndex()
{
    Trial trial;
    const QByteArray category = trial.adoptCategory();
    QVERIFY(trial.manager->sort("NUMB", false));
    fault() = {"_IndexSort", 0, Failure};
    LogCapture log;
    QVERIFY(trial.manager->setCurrentIndex(category.constData(), false));
    QVERIFY(fault().hasHappened);
    QCOMPARE(log.lines(), QStringList("sort error 47"));
    QCOMPARE(QByteArray(trial.currentRow().fileName), category);
    QVERIFY(!trial.manager->ascendent());
    QCOMPARE(trial.titles(), "cba"); // by title still
}

void SortFaultsTest::orderLostByANewMaster_data()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<int>("result");
    QTest::newRow("no file name") << QByteArray("GetNewFileName") << 0;
    QTest::newRow("no condition") << QByteArray("PioSetSortCond") << 0;
    QTest::newRow("copy") << QByteArray("_IndexCopy") << int(Failure);
    QTest::newRow("sort") << QByteArray("_IndexSort") << int(Failure);
}

void SortFaultsTest::orderLostByANewMaster()
{
    QFETCH(QByteArray, operation);
    QFETCH(int, result);
    Trial trial;
    QVERIFY(trial.manager->sort("NUMB", false));
    fault() = {operation, 0, result};
    QVERIFY(trial.change(MakeMaster)); // whether or not the order could be kept
    QVERIFY(fault().hasHappened);
    QCOMPARE(QByteArray(trial.currentRow().fileName), trial.byShort);
    QCOMPARE(trial.record().masterIndex, &trial.currentRow());
    QVERIFY(!trial.manager->ascendent());
    QCOMPARE(trial.titles(), "cadb");
    QVERIFY(trial.temporaries().isEmpty());
}

void SortFaultsTest::temporaryIndexThatCannotBeDeleted()
{
    Trial trial;
    QVERIFY(trial.manager->sort("FLAG", true));
    const QByteArray kept = trial.currentRow().fileName;
    QVERIFY(trial.manager->sort("NUMB", true));
    fault() = {"_IndexDelete", 0, Failure};
    QVERIFY(trial.change(MakeMaster));
    QVERIFY(fault().hasHappened);
    QVERIFY(!trial.rowNamed(kept));
    QCOMPARE(trial.titles(), "cdba");
    QCOMPARE(trial.temporaries(), QStringList({kept, trial.currentRow().fileName}));
}

QTEST_MAIN(SortFaultsTest)
#include "sortfaultstest.moc"
