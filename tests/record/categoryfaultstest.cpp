#include "kycategories.h"

#include "logcapture.h"
#include "qcopchannel.h"
#include "tablefixture.h"

namespace {

/** The calls of the store that libky makes while a watch is on, and the one of them that is to fail. */
struct Watch
{
    bool isOn = false;
    int failing = -1; ///< number of the call, from 0
    QStringList calls;
    int depth = 0; ///< the store calls itself, too
};
Watch watch;

template <typename Result, typename Forward> Result watched(const char *call, Result failure, Forward forward)
{
    if (!watch.isOn || watch.depth > 0)
        return forward();
    watch.calls.append(call);
    if (watch.calls.size() - 1 == watch.failing)
        return failure;
    ++watch.depth;
    const Result result = forward();
    --watch.depth;
    return result;
}

constexpr PdtmStatus Failure = PdtmIoError;

} // namespace

#define NEXT(operation, ...) nextDefinition<decltype(operation)>(#operation)(__VA_ARGS__)
#define WATCHED(operation, failure, ...)                                                                     \
    watched(#operation, failure, [&] { return NEXT(operation, __VA_ARGS__); })

uint32_t _BoxOpenRwMode(const char *path, uint8_t mode)
{
    return WATCHED(_BoxOpenRwMode, 0u, path, mode);
}

PdtmStatus _BoxCloseEx(uint32_t handle, int flag)
{
    const PdtmStatus status = WATCHED(_BoxCloseEx, Failure, handle, flag);
    watch.isOn = false; // what a removal does behind it belongs to other boxes
    return status;
}

PdtmStatus _GetBoxGarbageSize(const char *path, uint32_t *size)
{
    return WATCHED(_GetBoxGarbageSize, Failure, path, size);
}

PdtmStatus _CardCreate(uint32_t handle, uint16_t *card)
{
    return WATCHED(_CardCreate, Failure, handle, card);
}

PdtmStatus _CardCopy(uint32_t handle, uint16_t source, uint16_t *destination)
{
    return WATCHED(_CardCopy, Failure, handle, source, destination);
}

PdtmStatus _CardDelete(uint32_t handle, uint16_t card)
{
    return WATCHED(_CardDelete, Failure, handle, card);
}

PdtmStatus _CardRead(uint32_t handle, const CardItemKey *key, void *buffer, uint32_t *size)
{
    return WATCHED(_CardRead, Failure, handle, key, buffer, size);
}

PdtmStatus _CardWrite(uint32_t handle, const CardItemKey *key, const void *buffer, uint32_t size)
{
    return WATCHED(_CardWrite, Failure, handle, key, buffer, size);
}

PdtmStatus _BoxItemReadHeap(uint32_t handle, const char *code, void *buffer, uint16_t *size)
{
    return WATCHED(_BoxItemReadHeap, Failure, handle, code, buffer, size);
}

uint32_t DtmGetSyncId(uint32_t handle)
{
    return WATCHED(DtmGetSyncId, 0u, handle);
}

PdtmStatus DtmUpdateSyncId(uint32_t handle)
{
    return WATCHED(DtmUpdateSyncId, Failure, handle);
}

PdtmStatus DtmBeginAction(uint32_t handle)
{
    return WATCHED(DtmBeginAction, Failure, handle);
}

PdtmStatus _IndexCount(const char *path, uint32_t handle, const void *expression, int flag, uint8_t mask,
                       uint8_t value, uint8_t third, uint16_t start, uint16_t *first, uint16_t *count)
{
    return WATCHED(_IndexCount, Failure, path, handle, expression, flag, mask, value, third, start, first,
                   count);
}

PdtmStatus _IndexSearch(const char *path, uint32_t handle, const void *expression, int backward, uint8_t mask,
                        uint8_t value, uint8_t third, uint16_t start, uint16_t *indexNumber)
{
    return WATCHED(_IndexSearch, Failure, path, handle, expression, backward, mask, value, third, start,
                   indexNumber);
}

PdtmStatus _IndexNoToCardID(const char *path, uint16_t indexNumber, uint16_t *card)
{
    return WATCHED(_IndexNoToCardID, Failure, path, indexNumber, card);
}

PdtmStatus _CardIDToIndexNo(const char *path, uint16_t card, uint16_t *indexNumber)
{
    return WATCHED(_CardIDToIndexNo, Failure, path, card, indexNumber);
}

PdtmStatus _NextIndexNo(const char *path, uint8_t mask, uint8_t value, uint8_t third, uint16_t *indexNumber)
{
    return WATCHED(_NextIndexNo, Failure, path, mask, value, third, indexNumber);
}

PdtmStatus _PrevIndexNo(const char *path, uint8_t mask, uint8_t value, uint8_t third, uint16_t *indexNumber)
{
    return WATCHED(_PrevIndexNo, Failure, path, mask, value, third, indexNumber);
}

using Contents = QMap<QString, int>;

class CategoryFaultsTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();

    void eachCallFailsInTurn_data();
    void eachCallFailsInTurn();
    void failedSearchIsNoFreeName();
    void failedSearchIsNoFreeId();
    void failedDeletionLeavesTheCardsOfBoxes();
    void tableThatCannotBeClosedIsClosedByTheNextCall();
    void readingFails_data();
    void readingFails();
};

namespace {

/** A change of a table with the categories "a", 1, and "b", 2, and what the table holds afterwards. */
struct Change
{
    const char *name;
    bool (*run)(KyCategories &);
    Contents after;
    QString refusing; ///< the calls whose failure makes the change fail
};

const Contents Before{{"a", 1}, {"b", 2}};

const QList<Change> &changes()
{
    const QString adding = "DtmGetSyncId DtmUpdateSyncId _BoxItemReadHeap _CardCopy _CardCreate _CardWrite "
                           "_IndexCount _IndexSearch";
    static const QList<Change> all{
        {"addition",
         [](KyCategories &table) { return table.addCategory("new") == 3; },
         {{"a", 1}, {"b", 2}, {"new", 3}},
         adding},
        {"addition of a system category",
         [](KyCategories &table) { return table.addSystemCategory("new") == 3; },
         {{"a", 1}, {"b", 2}, {"new", -3}},
         adding},
        {"renaming",
         [](KyCategories &table) { return table.renameCategory("b", "new"); },
         {{"a", 1}, {"new", 2}},
         "_BoxItemReadHeap _CardCopy _CardRead _CardWrite _IndexNoToCardID _IndexSearch"},
        {"removal",
         [](KyCategories &table) { return table.removeCategory("b"); },
         {{"a", 1}},
         "_CardDelete _IndexNoToCardID _IndexSearch"},
    };
    return all;
}

bool prepare()
{
    if (!makeTable())
        return false;
    KyCategories table(nullptr);
    return table.addCategory("a") == 1 && table.addCategory("b") == 2 && tableContents() == Before;
}

/** Makes a change with one call failing, or none for -1. @return what the change returned */
bool runWith(const Change &change, KyCategories &table, int failing)
{
    watch = Watch();
    watch.failing = failing;
    watch.isOn = true;
    const bool result = change.run(table);
    watch.isOn = false;
    return result;
}

} // namespace

void CategoryFaultsTest::cleanup()
{
    watch = Watch();
    QVERIFY(isTableFree());
}

void CategoryFaultsTest::eachCallFailsInTurn_data()
{
    QTest::addColumn<int>("number");
    for (int i = 0; i < changes().size(); ++i)
        QTest::newRow(changes()[i].name) << i;
}

void CategoryFaultsTest::eachCallFailsInTurn()
{
    QFETCH(int, number);
    const Change &change = changes()[number];
    QSet<QString> refusing;
    int failing = 0;
    do {
        QVERIFY(prepare());
        KyCategories table(nullptr);
        const bool result = runWith(change, table, failing);
        const QString call = watch.calls.value(failing);
        const QByteArray where = call.toUtf8() + " as call " + QByteArray::number(failing);
        QVERIFY2(tableContents() == (result ? change.after : Before), where);
        QVERIFY2(isTableFree() || call == "_BoxCloseEx", where);
        if (!result) {
            refusing.insert(call);
            QVERIFY2(change.run(table), where); // nothing is left in its way
        }
        QVERIFY2(tableContents() == change.after, where);
    } while (++failing < watch.calls.size());
    QStringList names = refusing.values();
    names.sort();
    QCOMPARE(names.join(' '), change.refusing);
}

namespace {

/** Runs a call with the failure of one of the store's, counted from 0 among those of its name. */
template <typename Call> auto withFailure(const char *name, int occurrence, Call call)
{
    watch = Watch();
    watch.isOn = true;
    (void)call(); // to see the calls
    for (watch.failing = 0; watch.failing < watch.calls.size(); ++watch.failing) {
        if (watch.calls[watch.failing] == QLatin1String(name) && occurrence-- == 0)
            break;
    }
    watch.calls.clear();
    watch.isOn = true;
    const auto result = call();
    watch.isOn = false;
    return result;
}

} // namespace

void CategoryFaultsTest::failedSearchIsNoFreeName()
{
    QVERIFY(prepare());
    KyCategories table(nullptr);
    const auto add = [&] { return table.addCategory("a"); };
    QCOMPARE(withFailure("_IndexSearch", 0, add), 0);
    QCOMPARE(withFailure("_IndexNoToCardID", 0, add), 0);
    QCOMPARE(table.labels(false), (QStringList{"a", "b"}));
}

void CategoryFaultsTest::failedSearchIsNoFreeId()
{
    QVERIFY(makeTable() && fillTable(1, 245));
    KyCategories table(nullptr);
    const auto add = [&] { return table.addCategory("new"); };
    for (const int occurrence : {1, 2, 100, 244}) {
        QCOMPARE(withFailure("_IndexSearch", occurrence, add), 0);
        QCOMPARE(withFailure("_IndexNoToCardID", occurrence, add), 0);
    }
    QCOMPARE(tableContents().size(), 245);
}

void CategoryFaultsTest::failedDeletionLeavesTheCardsOfBoxes()
{
    QVERIFY(prepare());
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, "card");
    QVERIFY(storeBytes(manager, card, "CTGR", "\2") && manager.close());
    QCopChannel channel("QPE/System");
    QList<QByteArray> messages;
    connect(&channel, &QCopChannel::received, &channel,
            [&](const QByteArray &message) { messages.append(message); });

    KyCategories table(nullptr);
    QCOMPARE(table.addCategory("c"), 3);
    QVERIFY(!withFailure("_CardDelete", 0, [&] {
        // The first call is only to see what the store is asked.
        return table.removeCategory(watch.failing < 0 ? "a" : "b");
    }));
    QCOMPARE(tableContents(), (Contents{{"b", 2}, {"c", 3}}));
    QVERIFY(manager.open(true));
    QCOMPARE(manager.readCategories(card), QList<int>{2});
    QCopChannel::send("QPE/System", "marker()");
    QTRY_VERIFY_WITH_TIMEOUT(messages.contains("marker()"), 10000);
    QCOMPARE(messages.count("categoryRemoved(int)"), 1); // of "a"
}

void CategoryFaultsTest::tableThatCannotBeClosedIsClosedByTheNextCall()
{
    QVERIFY(prepare());
    KyCategories table(nullptr);
    QCOMPARE(withFailure("_BoxCloseEx", 0, [&] { return table.id("b"); }), 2);
    QVERIFY(!isTableFree());
    QCOMPARE(table.id("a"), 1);
    QVERIFY(isTableFree());
}

void CategoryFaultsTest::readingFails_data()
{
    QTest::addColumn<QByteArray>("call");
    QTest::newRow("search") << QByteArray("_IndexSearch");
    QTest::newRow("position") << QByteArray("_IndexNoToCardID");
    QTest::newRow("value") << QByteArray("_CardRead");
}

void CategoryFaultsTest::readingFails()
{
    QFETCH(QByteArray, call);
    QVERIFY(prepare());
    KyCategories table(nullptr);
    QCOMPARE(table.addSystemCategory("system"), 3);
    QCOMPARE(withFailure(call, 0, [&] { return table.id("b"); }), 0);
    QCOMPARE(withFailure(call, 0, [&] { return table.ids({"b", "a"}); }), QList<int>{1});
    {
        const LogCapture log;
        QVERIFY(withFailure(call, 0, [&] { return table.label(2); }).isNull());
        QCOMPARE(log.lines(), QStringList{"KyCategories: not found id 2"});
    }
    QVERIFY(!withFailure(call, 0, [&] { return table.isSystemCategory(3); }));
    QVERIFY(!withFailure(call, 0, [&] { return table.isSystemCategory("system"); }));
    if (call != "_CardRead")
        QVERIFY(!withFailure(call, 0, [&] { return table.exists("b"); }));
    QCOMPARE(table.labels(false).size(), 3);
}

QTEST_MAIN(CategoryFaultsTest)
#include "categoryfaultstest.moc"
