#include "logcapture.h"
#include "viewfixture.h"

using KyPDtm::PIOIDXINFO;

namespace {

/** The store's operations as libky calls them. One of them is made to fail: the store isn't asked then. */
struct Store
{
    QByteArrayList calls; ///< names, with what tells one call from another
    QByteArray failing;   ///< the call that fails; none when it is empty
    PdtmStatus status = PdtmIoError;
    int depth = 0; ///< of the store's calls to itself
};
Store store;

void watch(const QByteArray &failing = QByteArray(), PdtmStatus status = PdtmIoError)
{
    store = {{}, failing, status, 0};
}

template <typename Result, typename Forward>
Result watched(const QByteArray &call, Result failure, Forward forward)
{
    if (store.depth > 0)
        return forward();
    store.calls.append(call);
    if (call == store.failing)
        return failure;
    ++store.depth;
    const Result result = forward();
    --store.depth;
    return result;
}

QByteArray numbered(const char *name, int number)
{
    return QByteArray(name) + ' ' + QByteArray::number(number);
}

} // namespace

// Forwards to the definition behind this one.
#define NEXT(operation, ...) nextDefinition<decltype(operation)>(#operation)(__VA_ARGS__)

PdtmStatus _IndexCreate(const char *path, int kind)
{
    return watched(numbered("_IndexCreate", kind), store.status,
                   [&] { return NEXT(_IndexCreate, path, kind); });
}

PdtmStatus _IndexDelete(const char *path)
{
    return watched("_IndexDelete", store.status, [&] { return NEXT(_IndexDelete, path); });
}

PdtmStatus _IndexCopy(const char *source, const char *destination, int kind, const void *expression,
                      int length)
{
    return watched("_IndexCopy", store.status,
                   [&] { return NEXT(_IndexCopy, source, destination, kind, expression, length); });
}

PdtmStatus _IndexInfoRead(const char *path, int id, void *buffer, uint16_t *size)
{
    return watched(numbered("_IndexInfoRead", id), store.status,
                   [&] { return NEXT(_IndexInfoRead, path, id, buffer, size); });
}

PdtmStatus _IndexInfoWrite(const char *path, int id, const void *buffer, uint16_t length)
{
    return watched(numbered("_IndexInfoWrite", id), store.status,
                   [&] { return NEXT(_IndexInfoWrite, path, id, buffer, length); });
}

PdtmStatus _IndexInfoWriteWithCheck(const char *path, int id, const void *buffer, uint16_t length)
{
    return watched(numbered("_IndexInfoWriteWithCheck", id), store.status,
                   [&] { return NEXT(_IndexInfoWriteWithCheck, path, id, buffer, length); });
}

PdtmStatus _IndexGroup(const char *parent, const char *path, uint32_t handle)
{
    return watched("_IndexGroup", store.status, [&] { return NEXT(_IndexGroup, parent, path, handle); });
}

PdtmStatus _IndexUnGroup(const char *path, uint32_t handle)
{
    return watched("_IndexUnGroup", store.status, [&] { return NEXT(_IndexUnGroup, path, handle); });
}

PdtmStatus _IndexSort(const char *path, uint32_t handle)
{
    return watched("_IndexSort", store.status, [&] { return NEXT(_IndexSort, path, handle); });
}

uint32_t _BoxOpen(const char *path)
{
    return watched("_BoxOpen", uint32_t{0}, [&] { return NEXT(_BoxOpen, path); });
}

PdtmStatus _BoxClose(uint32_t handle)
{
    return watched("_BoxClose", store.status, [&] { return NEXT(_BoxClose, handle); });
}

const char *DtmGetBaseNamePtr(const char *path)
{
    return watched("DtmGetBaseNamePtr", static_cast<const char *>(nullptr),
                   [&] { return NEXT(DtmGetBaseNamePtr, path); });
}

int GetNewFileName(const char *directory, char *name, const char *extension, int position, int digits)
{
    return watched("GetNewFileName", 0,
                   [&] { return NEXT(GetNewFileName, directory, name, extension, position, digits); });
}

int PioSetSortCond(void *destination, const PioExtBoxInfo *info, uint32_t item, int ascending)
{
    return watched("PioSetSortCond", 0,
                   [&] { return NEXT(PioSetSortCond, destination, info, item, ascending); });
}

namespace {

const QByteArray TwoKeys = plainKey("FLAG").chopped(1) + plainKey("NUMB");

/** What a failure must not change. */
struct Shown
{
    explicit Shown(View &view)
        : index(view.table().currentIndex), ascendent(view.manager.ascendent()), titles(view.titles()),
          card(view.manager.cardId()), resume(view.table().resumeIndex), files(temporaryFiles())
    {
    }
    bool operator==(const Shown &) const = default;

    const PIOIDXINFO *index;
    bool ascendent;
    QString titles;
    unsigned long card;
    const PIOIDXINFO *resume;
    QStringList files;
};

/** True when every row that is not in use is all zero. */
bool freeRowsAreZero(View &view)
{
    const PIOIDXINFO zero = {};
    for (const PIOIDXINFO &row : view.table().indexes) {
        if (!row.inUse && memcmp(&row, &zero, sizeof row) != 0)
            return false;
    }
    return true;
}

bool enterCategory(View &view)
{
    return view.manager.enableFilter(9);
}

bool enterUnfiled(View &view)
{
    return view.manager.enableFilter(UnfiledCategoryId);
}

bool search(View &view)
{
    return view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterCurrent, false);
}

bool searchAndResume(View &view)
{
    return view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterMaster, true);
}

using Operation = bool (*)(View &);

/** One call that fails, and what is said of it. */
struct Fault
{
    const char *call;
    PdtmStatus status;
    const char *log; ///< null for silence
};

void addRows(const char *what, Operation operation, bool byExpression, const QList<Fault> &faults)
{
    for (const Fault &fault : faults)
        QTest::addRow("%s, %s gives %d", what, fault.call, fault.status)
            << operation << byExpression << QByteArray(fault.call) << fault.status << QByteArray(fault.log);
}

} // namespace

Q_DECLARE_METATYPE(Operation)

class FilterFaultsTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void callsOfEachOperation();
    void newViewThatCannotBeMade_data();
    void newViewThatCannotBeMade();
    void newViewThatCannotBeMadeInAFullTable();
    void viewThatMadeRoomInVain_data();
    void viewThatMadeRoomInVain();
    void reuseThatCannotBeSorted_data();
    void reuseThatCannotBeSorted();
    void emptyCategoryStatusIsASuccess();
    void formerUnfiledIndexThatCannotBeDeleted();
    void disableThatCannotSort_data();
    void disableThatCannotSort();
    void indexThatCannotBeDeleted();
    void boxThatCannotBeClosedBehindASearch();
};

void FilterFaultsTest::init()
{
    watch();
    deleteTemporaryFiles();
}

/** A view by number, descending: not that of the master. */
static bool showOtherOrder(View &view, bool byExpression)
{
    view.addSix();
    return view.manager.first() &&
           (byExpression ? view.manager.sort(TwoKeys.constData(), int(TwoKeys.size()), false)
                         : view.manager.sort("NUMB", false));
}

/** Nothing that can fail is missing in the tables below. */
void FilterFaultsTest::callsOfEachOperation()
{
    View view;
    QVERIFY(showOtherOrder(view, false));
    watch();
    QVERIFY(enterCategory(view));
    QCOMPARE(store.calls,
             (QByteArrayList{"GetNewFileName", "_IndexCreate 18", "_IndexInfoWriteWithCheck 1",
                             "_IndexInfoWriteWithCheck 3", "_IndexInfoWriteWithCheck 32", "_IndexGroup",
                             "PioSetSortCond", "_IndexInfoWriteWithCheck 2", "_IndexSort"}));
    view.manager.sort(true);
    watch();
    QVERIFY(view.manager.disableFilter(true));
    QCOMPARE(store.calls, QByteArrayList{"_IndexDelete"});
    watch();
    QVERIFY(search(view));
    QCOMPARE(store.calls,
             (QByteArrayList{"GetNewFileName", "_IndexCreate 17", "DtmGetBaseNamePtr", "_IndexInfoWrite 1",
                             "_BoxOpen", "_IndexInfoWrite 3", "_IndexInfoWrite 32", "_IndexGroup",
                             "_IndexInfoWrite 2", "_IndexSort", "_BoxClose"}));
    watch();
    QVERIFY(view.manager.unfilter(false));
    QCOMPARE(store.calls, QByteArrayList{"_IndexDelete"});
}

void FilterFaultsTest::newViewThatCannotBeMade_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<bool>("byExpression");
    QTest::addColumn<QByteArray>("call");
    QTest::addColumn<PdtmStatus>("status");
    QTest::addColumn<QByteArray>("log");

    const QList<Fault> making = {{"GetNewFileName", PdtmOk, nullptr},
                                 {"_IndexCreate 18", PdtmOutOfSpace, nullptr},
                                 {"_IndexCreate 18", PdtmExists, nullptr},
                                 {"_IndexInfoWriteWithCheck 1", PdtmIoError, nullptr},
                                 {"_IndexInfoWriteWithCheck 3", PdtmBadArgument, nullptr},
                                 {"_IndexInfoWriteWithCheck 32", PdtmOutOfSpace, nullptr},
                                 {"_IndexInfoWriteWithCheck 32", PdtmNone, nullptr},
                                 {"_IndexGroup", PdtmNone, "index group err 42"},
                                 {"_IndexGroup", PdtmTooShort, "index group err 44"},
                                 {"_IndexGroup", PdtmOutOfSpace, "index group err 47"},
                                 {"_IndexGroup", PdtmGroupFailed, "index group err fe"},
                                 {"_IndexInfoWriteWithCheck 2", PdtmOutOfSpace, "index infowrite error 47"},
                                 {"_IndexSort", PdtmIoError, "sort error 4c"}};
    const QList<Fault> condition = {{"PioSetSortCond", PdtmOk, nullptr}};
    const QList<Fault> searching = {{"GetNewFileName", PdtmOk, nullptr},
                                    {"_IndexCreate 17", PdtmOutOfSpace, nullptr},
                                    {"DtmGetBaseNamePtr", PdtmOk, "invalid box filename"},
                                    {"_IndexInfoWrite 1", PdtmIoError, nullptr},
                                    {"_IndexInfoWrite 1", PdtmNone, nullptr},
                                    {"_BoxOpen", PdtmOk, "fatal error in IndexGroup or IndexUnGroup"},
                                    {"_IndexInfoWrite 3", PdtmOutOfSpace, nullptr},
                                    {"_IndexInfoWrite 32", PdtmIoError, nullptr},
                                    {"_IndexGroup", PdtmTooShort, "error in IndexGroup or IndexUnGroup"},
                                    {"_IndexGroup", PdtmOutOfSpace, "error in IndexGroup or IndexUnGroup"},
                                    {"_IndexGroup", PdtmGroupFailed, "error in IndexGroup or IndexUnGroup"},
                                    {"_IndexGroup", PdtmIoError, "fatal error in IndexGroup or IndexUnGroup"},
                                    {"_IndexInfoWrite 2", PdtmOutOfSpace, nullptr},
                                    {"_IndexSort", PdtmIoError, nullptr}};
    addRows("category", enterCategory, false, making + condition);
    addRows("category, by an expression", enterCategory, true, making);
    addRows("unfiled", enterUnfiled, false, making + condition);
    addRows("search", search, false, searching);
    addRows("search to resume", searchAndResume, true, searching);
}

void FilterFaultsTest::newViewThatCannotBeMade()
{
    QFETCH(Operation, operation);
    QFETCH(bool, byExpression);
    QFETCH(QByteArray, call);
    QFETCH(PdtmStatus, status);
    QFETCH(QByteArray, log);
    View view;
    QVERIFY(showOtherOrder(view, byExpression));
    const Shown before(view);
    watch(call, status);
    LogCapture capture;
    const bool done = operation(view);
    const QStringList lines = capture.lines().filter(QStringLiteral("err"), Qt::CaseInsensitive) +
                              capture.lines().filter(QStringLiteral("invalid"));
    QVERIFY(store.calls.contains(call));
    const bool isCategory = operation == enterCategory || operation == enterUnfiled;
    if (isCategory && call.startsWith("_Index"))
        QCOMPARE(view.table().lastError, status);
    watch();
    QVERIFY(!done);
    QVERIFY(Shown(view) == before);
    QVERIFY(freeRowsAreZero(view));
    QCOMPARE(lines.size(), log.isEmpty() ? 0 : 1);
    QVERIFY(log.isEmpty() || lines.first().startsWith(QString::fromLatin1(log)));
    QVERIFY(operation(view)); // nothing stands in the way of a second attempt
    QVERIFY(view.table().currentIndex != before.index);
}

void FilterFaultsTest::newViewThatCannotBeMadeInAFullTable()
{
    View view;
    view.addSix();
    for (int category = 21; category < 30; ++category)
        QVERIFY(view.manager.enableFilter(category));
    const QByteArray oldest = view.table().indexes[1].fileName;
    for (const Operation operation : {enterCategory, search}) {
        const Shown before(view);
        watch("_IndexGroup");
        QVERIFY(!operation(view));
        watch();
        Shown after(view);
        QCOMPARE(after.files.size(), 8); // the one that made room is gone
        after.files = before.files;
        QVERIFY(after == before);
        QVERIFY(freeRowsAreZero(view));
    }
    QVERIFY(!temporaryFiles().contains(QString::fromLatin1(oldest)));
}

void FilterFaultsTest::viewThatMadeRoomInVain_data()
{
    QTest::addColumn<QByteArray>("call");
    QTest::newRow("no name") << QByteArray("GetNewFileName");
    QTest::newRow("no group") << QByteArray("_IndexGroup");
}

void FilterFaultsTest::viewThatMadeRoomInVain()
{
    QFETCH(QByteArray, call);
    View view;
    view.addSix();
    for (int category = 21; category < 30; ++category)
        QVERIFY(view.manager.enableFilter(category));
    for (PIOIDXINFO &row : view.table().indexes)
        row.sticky = &row != view.table().currentIndex;
    watch(call, PdtmOk);
    store.status = call == "_IndexGroup" ? PdtmIoError : PdtmOk;
    QVERIFY(!enterCategory(view));
    watch();
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QVERIFY(freeRowsAreZero(view));
    QCOMPARE(temporaryFiles().size(), 8);
}

void FilterFaultsTest::reuseThatCannotBeSorted_data()
{
    QTest::addColumn<bool>("byExpression");
    QTest::addColumn<QByteArray>("call");
    QTest::addColumn<QByteArray>("log");
    QTest::newRow("no condition") << false << QByteArray("PioSetSortCond") << QByteArray();
    for (const bool byExpression : {false, true}) {
        const char *what = byExpression ? "expression" : "item";
        QTest::addRow("%s not written", what) << byExpression << QByteArray("_IndexInfoWriteWithCheck 2")
                                              << QByteArray("index infowrite error 4c");
        QTest::addRow("%s not sorted", what)
            << byExpression << QByteArray("_IndexSort") << QByteArray("sort error 4c");
    }
}

void FilterFaultsTest::reuseThatCannotBeSorted()
{
    QFETCH(bool, byExpression);
    QFETCH(QByteArray, call);
    QFETCH(QByteArray, log);
    View view;
    QVERIFY(enterCategory(view)); // in the master's order
    const PIOIDXINFO *found = view.table().currentIndex;
    QVERIFY(view.manager.disableFilter(false));
    QVERIFY(showOtherOrder(view, byExpression));
    const Shown before(view);
    const PIOIDXINFO row = *found;
    watch(call);
    LogCapture capture;
    QVERIFY(!enterCategory(view));
    QCOMPARE(capture.lines(), log.isEmpty() ? QStringList() : QStringList{QString::fromLatin1(log)});
    watch();
    QVERIFY(Shown(view) == before);
    QVERIFY(memcmp(found, &row, sizeof row) == 0); // stays as it was
    if (!log.isEmpty())
        QCOMPARE(int(view.table().lastError), int(PdtmIoError));
    QVERIFY(enterCategory(view));
    QCOMPARE(view.table().currentIndex, found);
    QCOMPARE(view.titles(), QStringLiteral("cde"));
}

void FilterFaultsTest::emptyCategoryStatusIsASuccess()
{
    View view;
    view.addSix();
    watch("_IndexGroup", PdtmNothingToSort);
    LogCapture capture;
    QVERIFY(enterCategory(view));
    QCOMPARE(capture.lines(), QStringList());
    QCOMPARE(int(view.current().categoryId), 9);
    QVERIFY(view.manager.disableFilter(true));
    watch();
    QVERIFY(view.manager.sort("NUMB", true));
    watch("_IndexSort", PdtmNothingToSort);
    QVERIFY(enterCategory(view));
    QCOMPARE(capture.lines(), QStringList{"required sort"});
}

void FilterFaultsTest::formerUnfiledIndexThatCannotBeDeleted()
{
    View view;
    view.addSix();
    QVERIFY(enterUnfiled(view));
    watch("_IndexDelete");
    QVERIFY(enterUnfiled(view));
    QVERIFY(store.calls.contains("_IndexDelete"));
    watch();
    QCOMPARE(view.titles(), QStringLiteral("f"));
    QVERIFY(freeRowsAreZero(view));
}

void FilterFaultsTest::disableThatCannotSort_data()
{
    QTest::addColumn<bool>("byExpression");
    QTest::addColumn<QByteArray>("call");
    QTest::newRow("item, no condition") << false << QByteArray("PioSetSortCond");
    for (const bool byExpression : {false, true}) {
        const char *what = byExpression ? "expression" : "item";
        QTest::addRow("%s, no name", what) << byExpression << QByteArray("GetNewFileName");
        QTest::addRow("%s, no copy", what) << byExpression << QByteArray("_IndexCopy");
        QTest::addRow("%s, not sorted", what) << byExpression << QByteArray("_IndexSort");
    }
}

void FilterFaultsTest::disableThatCannotSort()
{
    QFETCH(bool, byExpression);
    QFETCH(QByteArray, call);
    View view;
    view.addSix();
    QVERIFY(enterCategory(view));
    if (byExpression)
        view.manager.sort(TwoKeys.constData(), int(TwoKeys.size()), false);
    else
        QVERIFY(view.manager.sort("NUMB", false));
    const QStringList files = temporaryFiles();
    watch(call, call == "GetNewFileName" ? PdtmOk : PdtmIoError);
    QVERIFY(!view.manager.disableFilter(false));
    watch();
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
    QCOMPARE(temporaryFiles(), files);
    QVERIFY(freeRowsAreZero(view));
}

/** The view is left all the same: an index that could not be deleted is adopted by the next manager. */
void FilterFaultsTest::indexThatCannotBeDeleted()
{
    View view;
    view.addSix();
    QVERIFY(enterCategory(view));
    watch("_IndexDelete");
    QVERIFY(view.manager.disableFilter(true));
    watch();
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QVERIFY(freeRowsAreZero(view));
    QVERIFY(search(view));
    watch("_IndexDelete");
    QVERIFY(view.manager.unfilter(false));
    watch();
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QVERIFY(freeRowsAreZero(view));
}

void FilterFaultsTest::boxThatCannotBeClosedBehindASearch()
{
    View view;
    view.addSix();
    watch("_BoxClose");
    QVERIFY(search(view));
    watch();
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
}

QTEST_MAIN(FilterFaultsTest)
#include "filterfaultstest.moc"
