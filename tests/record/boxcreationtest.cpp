#include "boxcreation.h"
#include "boxfixture.h"
#include "folderlock_p.h"
#include "kypdatamanager.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "logcapture.h"
#include "storefaults.h"
#include <atomic>
#include <QTest>
#include <QThread>
#include <thread>

namespace {

constexpr unsigned long AppId = 0x54455354;
constexpr char Search[] = "NAME\xFE\x92\x11"
                          "a"; // the name contains an a
constexpr char Sort[] = "NAME\xFE\x82";
constexpr char Descending[] = "NAME\xFE\x83";
constexpr char TextOrder[] = "NAME\xFE\x80";

using Faults = QList<QPair<QString, int>>;

ITEMDATA item(const char *code, uint8_t type, uint8_t kind)
{
    ITEMDATA data = {};
    data.type = type;
    data.kind = kind;
    memcpy(data.code, code, sizeof data.code);
    return data;
}

KyPDataManagerItemInfo basicItems()
{
    KyPDataManagerItemInfo items;
    items.addTextItem("NAME", "name");
    items.addTextItem("NOTE", "note");
    return items;
}

KyPDataManagerSortKey byName(bool ascending = true)
{
    KyPDataManagerSortKey key;
    key.addSortKey("NAME", false, ascending);
    return key;
}

} // namespace

/** Making and mending the files of a box, each test on a box of its own. */
class BoxCreationTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void boxSteps_data();
    void boxSteps();

    void newIndexTakesTheseSteps();
    void newSubsetTakesTheseSteps();
    void indexSteps_data();
    void indexSteps();
    void indexOfInvalidBoxName();
    void expressionOutOfRange_data();
    void expressionOutOfRange();

    void familyIsDeleted();
    void familyDeletionPassesOverWhatStays();
    void sameExpressions_data();
    void sameExpressions();
    void fullPathName();
    void sjisString();

    void creationMakesEverything();
    void itemsAreDeclared();
    void labelKeepsWholeCharacters();
    void secondCreationChangesNothing();
    void subsetWithoutOrderIsKept();
    void newItemRenewsAllIndexes();
    void changedOrderRenewsThatIndexOnly();
    void changedSearchRenewsThatIndexOnly();
    void otherLanguageRenewsTextOrder();
    void otherApplicationIsLeftAlone();
    void uncheckedIndexStays();
    void uncheckedIndexWithOtherExpressionsIsOverwritten();
    void tooManyKeysGiveNoOrder();
    void oneFailingIndexStopsNoOther();
    void failingMasterStopsTheRest();
    void resultIsAlwaysTrue_data();
    void resultIsAlwaysTrue();
    void unfilledIndexIsMadeAnew_data();
    void unfilledIndexIsMadeAnew();
    void anotherCreationIsWaitedFor();

private:
    [[nodiscard]] QByteArray path(const char *ending) const { return "F0:" + m_name + ending; }
    [[nodiscard]] bool exists(const char *ending) const
    {
        return QFile::exists(boxFolder() + m_name + ending);
    }
    [[nodiscard]] FileState state(const char *ending) const
    {
        return fileState(boxFolder() + m_name + ending);
    }
    [[nodiscard]] QMap<QString, FileState> states() const { return folderState(boxFolder(), m_name); }
    [[nodiscard]] QString named(QString text) const { return text.replace("$", m_name); }
    bool create(const KyPDataManagerItemInfo &items = basicItems(), bool ascending = true,
                const KyPDataManagerIndexInfo &indexes = KyPDataManagerIndexInfo());
    bool createWithSubset(const char *search = Search, int searchLength = sizeof Search);
    void addCards();
    [[nodiscard]] QByteArray info(const char *ending, int id) const;
    void force(const Faults &faults);

    QByteArray m_name;
    int m_number = 100;
};

void BoxCreationTest::initTestCase()
{
    InitLanguageEnvironment();
}

void BoxCreationTest::init()
{
    StoreFaults::reset();
    m_name = "T" + QByteArray::number(++m_number);
}

void BoxCreationTest::cleanup()
{
    StoreFaults::reset();
}

bool BoxCreationTest::create(const KyPDataManagerItemInfo &items, bool ascending,
                             const KyPDataManagerIndexInfo &indexes)
{
    return KyPDataManager::createFile(path(".BOX"), path(".IDX"), AppId, false, items, byName(ascending),
                                      indexes);
}

bool BoxCreationTest::createWithSubset(const char *search, int searchLength)
{
    KyPDataManagerIndexInfo indexes;
    indexes.addIndexInfo(path("1.IDX"), search, static_cast<unsigned long>(searchLength), Sort, sizeof Sort);
    return create(basicItems(), true, indexes);
}

/** Cards 1 to 3 by rising name: 2 (anna), 1 (berta), 3 (cent). */
void BoxCreationTest::addCards()
{
    const uint32_t box = _BoxOpenRwMode(path(".BOX"), 0);
    QCOMPARE(addCard(box, {{"NAME", "berta"}}), 1);
    QCOMPARE(addCard(box, {{"NAME", "anna"}}), 2);
    QCOMPARE(addCard(box, {{"NAME", "cent"}}), 3);
    QCOMPARE(_BoxCloseEx(box, 1), PdtmStatus(PdtmOk));
}

/** An index information; "none" when it can't be read. */
QByteArray BoxCreationTest::info(const char *ending, int id) const
{
    char buffer[50];
    uint16_t size = sizeof buffer;
    const PdtmStatus status = _IndexInfoRead(path(ending), id, buffer, &size);
    return status == PdtmOk ? QByteArray(buffer, size) : QByteArray("none");
}

void BoxCreationTest::force(const Faults &faults)
{
    StoreFaults::reset();
    for (const auto &fault : faults)
        StoreFaults::force(named(fault.first), PdtmStatus(fault.second));
}

void BoxCreationTest::boxSteps_data()
{
    QTest::addColumn<Faults>("faults");
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("indexStays");
    QTest::addColumn<QStringList>("steps"); // of the box
    QTest::addColumn<QStringList>("log");
    const QString check = "_DTMFileCheckAppliID $.BOX 3";
    const QString make = "_BoxCreate $.BOX";
    const QString append = "_BoxItemAppend $.BOX";
    const QStringList none;
    QTest::newRow("fine") << Faults{} << 0 << true << QStringList{check, append} << none;
    for (const int status : {177, 178})
        QTest::addRow("check %d", status)
            << Faults{{check, status}} << 0 << true << QStringList{check, append} << none;
    QTest::newRow("check 68") << Faults{{check, 68}} << 1 << true << QStringList{check} << none;
    for (const int status : {1, 70, 75, 76, 135, 176, 179})
        QTest::addRow("check %d", status)
            << Faults{{check, status}} << 2 << false << QStringList{check}
            << QStringList{QString("F0:$.BOX is incorrect box file %1.").arg(status, 0, 16)};
    QTest::newRow("create 0") << Faults{{check, 64}, {make, 0}} << 0 << false
                              << QStringList{check, make, append} << none;
    for (const int status : {68, 71})
        QTest::addRow("create %d", status)
            << Faults{{check, 64}, {make, status}} << 1 << true << QStringList{check, make} << none;
    for (const int status : {1, 67, 73, 76})
        QTest::addRow("create %d", status)
            << Faults{{check, 64}, {make, status}} << 2 << false << QStringList{check, make} << none;
    for (const int status : {68, 71})
        QTest::addRow("append %d", status)
            << Faults{{append, status}} << 1 << false << QStringList{check, append}
            << QStringList{QString("error in item append.%1").arg(status, 0, 16)};
    for (const int status : {1, 70, 73, 74, 76})
        QTest::addRow("append %d", status)
            << Faults{{append, status}} << 2 << false << QStringList{check, append}
            << QStringList{QString("error in item append.%1").arg(status, 0, 16)};
}

void BoxCreationTest::boxSteps()
{
    QFETCH(Faults, faults);
    QFETCH(QStringList, steps);
    QFETCH(QStringList, log);
    m_name = "STEPS"; // one box for all rows: making it costs more than what is tested
    QVERIFY(create());
    const FileState box = state(".BOX");
    force(faults);
    LogCapture capture;
    ITEMDATA name = item("NAME", 17, 18);
    QTEST(createBoxFile(path(".BOX"), AppId, &name, 1), "result");
    QCOMPARE(capture.lines(), log.replaceInStrings("$", m_name));
    QStringList taken;
    for (const QString &call : StoreFaults::calls()) {
        if (!call.startsWith("_GetIndexName") && !call.startsWith("_IndexDelete"))
            taken.append(call);
    }
    QCOMPARE(taken, steps.replaceInStrings("$", m_name));
    QTEST(exists(".IDX"), "indexStays");
    QCOMPARE(state(".BOX"), box);
}

void BoxCreationTest::newIndexTakesTheseSteps()
{
    QVERIFY(create());
    StoreFaults::reset();
    QCOMPARE(createMIdxFile(path("1.IDX"), path(".BOX"), nullptr, 0, Sort, sizeof Sort, false, nullptr), 0);
    const QStringList steps{"_DTMFileCheckLevel $1.IDX 3", "_IndexCreate $1.IDX 17",
                            "_IndexInfoWrite $1.IDX 1",    "_BoxOpen $.BOX",
                            "_IndexUnGroup $1.IDX",        "_IndexInfoWrite $1.IDX 2",
                            "_IndexSort $1.IDX",           "_BoxClose"};
    QCOMPARE(StoreFaults::calls(), QStringList(steps).replaceInStrings("$", m_name));
    QCOMPARE(info("1.IDX", 1), m_name + QByteArray(".BOX\0", 5));
    QCOMPARE(info("1.IDX", 2), QByteArray(Sort, sizeof Sort));
    QCOMPARE(info("1.IDX", 3), QByteArray("none"));
    QCOMPARE(info("1.IDX", 32), QByteArray("none"));
}

void BoxCreationTest::newSubsetTakesTheseSteps()
{
    QVERIFY(create());
    StoreFaults::reset();
    QCOMPARE(createMIdxFile(path("1.IDX"), path(".BOX"), Search, sizeof Search, Sort, sizeof Sort, false,
                            path(".IDX")),
             0);
    const QStringList steps{"_DTMFileCheckLevel $1.IDX 3", "_IndexCreate $1.IDX 17",
                            "_IndexInfoWrite $1.IDX 1",    "_BoxOpen $.BOX",
                            "_IndexInfoWrite $1.IDX 3",    "_IndexInfoWrite $1.IDX 32",
                            "_IndexGroup $.IDX $1.IDX",    "_IndexInfoWrite $1.IDX 2",
                            "_IndexSort $1.IDX",           "_BoxClose"};
    QCOMPARE(StoreFaults::calls(), QStringList(steps).replaceInStrings("$", m_name));
    QCOMPARE(info("1.IDX", 2), QByteArray(Sort, sizeof Sort));
    QCOMPARE(info("1.IDX", 3), QByteArray(Search, sizeof Search));
    QCOMPARE(info("1.IDX", 32), QByteArray("\1"));
}

void BoxCreationTest::indexSteps_data()
{
    // The index $1.IDX is there with the same expressions when "there" is set; it is a subset.
    QTest::addColumn<Faults>("faults");
    QTest::addColumn<bool>("there");
    QTest::addColumn<bool>("subset");
    QTest::addColumn<bool>("noCheck");
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("isMade"); // _IndexCreate was called
    QTest::addColumn<QStringList>("log");
    const auto row = [](const QString &step, int status, bool there, bool subset, bool noCheck, int result,
                        bool isMade, const QStringList &log = {}) {
        QTest::addRow("%s %d%s%s%s", qPrintable(step), status, there ? ", there" : "",
                      subset ? ", subset" : "", noCheck ? ", no check" : "")
            << Faults{{step, status}} << there << subset << noCheck << result << isMade << log;
    };
    const QString check = "_DTMFileCheckLevel $1.IDX";
    row(check, 0, true, true, false, 0, false);
    row(check, 177, true, true, false, 0, false);
    row(check, 68, true, true, false, 1, false);
    row(check, 68, false, false, false, 1, false);
    row(check, 64, false, true, false, 0, true);
    row(check, 135, true, true, false, 0, true, {"F0:$1.IDX has different language code"});
    for (const int status : {1, 70, 76, 178})
        row(check, status, true, true, false, 0, true);

    const QString make = "_IndexCreate $1.IDX";
    for (const int status : {1, 68, 71, 73, 76})
        row(make, status, false, false, false, 1, true);
    row(make, 67, true, true, true, 0, true);
    row(make, 71, true, true, true, 1, true);

    for (const int status : {66, 68, 71, 76})
        row("_IndexInfoWrite $1.IDX 1", status, false, false, false, 1, true);
    const QString open = "_BoxOpen $.BOX";
    row(open, 1, false, false, false, 1, true, {"fatal error in IndexGroup or IndexUnGroup F0:$1.IDX"});
    for (const char *info : {"_IndexInfoWrite $1.IDX 3", "_IndexInfoWrite $1.IDX 2"}) {
        row(info, 66, false, true, false, 0, true);
        for (const int status : {1, 68, 71, 76})
            row(info, status, false, true, false, 1, true);
    }
    row("_IndexInfoWrite $1.IDX 32", 66, false, true, false, 0, true);
    row("_IndexInfoWrite $1.IDX 32", 71, false, true, false, 1, true);
    for (const bool subset : {false, true}) {
        const QString fill = subset ? "_IndexGroup $.IDX $1.IDX" : "_IndexUnGroup $1.IDX";
        for (const int status : {0, 66, 225})
            row(fill, status, false, subset, false, 0, true);
        for (const int status : {68, 71, 254})
            row(fill, status, false, subset, false, 1, true,
                {"error in IndexGroup or IndexUnGroup F0:$1.IDX"});
        for (const int status : {1, 64, 67, 70, 76, 224, 226})
            row(fill, status, false, subset, false, 1, true,
                {"fatal error in IndexGroup or IndexUnGroup F0:$1.IDX"});
    }
    const QString sort = "_IndexSort $1.IDX";
    for (const int status : {0, 225})
        row(sort, status, false, false, false, 0, true);
    for (const int status : {1, 66, 68, 71, 76, 254})
        row(sort, status, false, false, false, 1, true);
}

void BoxCreationTest::indexSteps()
{
    QFETCH(Faults, faults);
    QFETCH(bool, there);
    QFETCH(bool, subset);
    QFETCH(bool, noCheck);
    QFETCH(int, result);
    QFETCH(bool, isMade);
    QFETCH(QStringList, log);
    m_name = "INDEX"; // one box for all rows: making it costs more than what is tested
    QVERIFY(there ? createWithSubset() : create());
    if (!there)
        _IndexDelete(path("1.IDX"));
    force(faults);
    LogCapture capture;
    QCOMPARE(createMIdxFile(path("1.IDX"), path(".BOX"), Search, subset ? int(sizeof Search) : 0, Sort,
                            sizeof Sort, noCheck, subset ? path(".IDX").constData() : nullptr),
             result);
    const QStringList calls = StoreFaults::calls();
    StoreFaults::reset();
    QCOMPARE(capture.lines(), log.replaceInStrings("$", m_name));
    QCOMPARE(!calls.filter("_IndexCreate").isEmpty(), isMade);
    const bool couldOpen = faults.first().first != "_BoxOpen $.BOX";
    QCOMPARE(calls.count("_BoxClose"), couldOpen ? calls.filter("_BoxOpen").size() : 0);
    QCOMPARE(!calls.filter("_DTMFileCheckLevel").isEmpty(), !noCheck);
    QCOMPARE(exists("1.IDX"), result == 0);
    QCOMPARE(calls.last() == named("_IndexDelete $1.IDX"), result != 0);
    QVERIFY(exists(".IDX"));
}

void BoxCreationTest::indexOfInvalidBoxName()
{
    QVERIFY(create());
    LogCapture capture;
    QCOMPARE(createMIdxFile(path("1.IDX"), "F0:", nullptr, 0, Sort, sizeof Sort, false, nullptr), 1);
    QCOMPARE(capture.lines(), QStringList("invalid box filename F0:"));
    QVERIFY(!exists("1.IDX"));
}

void BoxCreationTest::expressionOutOfRange_data()
{
    QTest::addColumn<int>("search");
    QTest::addColumn<int>("sort");
    for (const int length : {-1, 51, 65536, 65536 + 9}) {
        QTest::addRow("search of %d", length) << length << 0;
        QTest::addRow("sort of %d", length) << 0 << length;
    }
}

void BoxCreationTest::expressionOutOfRange()
{
    QFETCH(int, search);
    QFETCH(int, sort);
    QVERIFY(create());
    const QByteArray bytes(70000, '\0');
    QCOMPARE(createMIdxFile(path("1.IDX"), path(".BOX"), bytes, search, bytes, sort, false, path(".IDX")), 1);
    QVERIFY(!exists("1.IDX"));
}

void BoxCreationTest::familyIsDeleted()
{
    QVERIFY(createWithSubset());
    QCOMPARE(_IndexCopy(path(".IDX"), path("A.tdx"), 2, Sort, sizeof Sort), PdtmStatus(PdtmOk));
    const QByteArray first = m_name;
    m_name += "X";
    QVERIFY(create());
    DeleteFamilyIndex("F0:" + first + ".BOX");
    QVERIFY(exists(".IDX"));
    QVERIFY(exists(".BOX"));
    m_name = first;
    QVERIFY(exists(".BOX"));
    for (const char *index : {".IDX", "1.IDX", "A.tdx"})
        QVERIFY2(!exists(index), index);
}

void BoxCreationTest::familyDeletionPassesOverWhatStays()
{
    QVERIFY(createWithSubset());
    QCOMPARE(_IndexCopy(path(".IDX"), path("A.tdx"), 2, Sort, sizeof Sort), PdtmStatus(PdtmOk));
    force({{"_IndexDelete $1.IDX", 73}});
    DeleteFamilyIndex(path(".BOX"));
    const QStringList steps{"_GetIndexName $.BOX 1", "_IndexDelete $.IDX",    "_GetIndexName $.BOX 1",
                            "_IndexDelete $1.IDX",   "_GetIndexName $.BOX 2", "_IndexDelete $A.tdx",
                            "_GetIndexName $.BOX 2"};
    QStringList taken = StoreFaults::calls();
    // Which of the two permanent indexes comes first is the store's choice.
    if (taken.value(1) == named("_IndexDelete $1.IDX")) {
        const QStringList other{"_GetIndexName $.BOX 1", "_IndexDelete $1.IDX",   "_GetIndexName $.BOX 2",
                                "_IndexDelete $.IDX",    "_GetIndexName $.BOX 2", "_IndexDelete $A.tdx",
                                "_GetIndexName $.BOX 2"};
        QCOMPARE(taken, QStringList(other).replaceInStrings("$", m_name));
    } else {
        QCOMPARE(taken, QStringList(steps).replaceInStrings("$", m_name));
    }
    QVERIFY(exists("1.IDX"));
    QVERIFY(!exists(".IDX"));
    QVERIFY(!exists("A.tdx"));
}

void BoxCreationTest::sameExpressions_data()
{
    QTest::addColumn<QByteArray>("index");
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<bool>("sort");
    QTest::addColumn<bool>("search");
    const QByteArray sort(Sort, sizeof Sort);
    const QByteArray search(Search, sizeof Search);
    QTest::newRow("sort") << QByteArray("1.IDX") << sort << true << false;
    QTest::newRow("search") << QByteArray("1.IDX") << search << false << true;
    QTest::newRow("other") << QByteArray("1.IDX") << QByteArray(Descending, 7) << false << false;
    QTest::newRow("shorter") << QByteArray("1.IDX") << sort.left(6) << false << false;
    QTest::newRow("longer") << QByteArray("1.IDX") << sort + '\0' << false << false;
    QTest::newRow("empty") << QByteArray("1.IDX") << QByteArray() << false << false;
    QTest::newRow("missing information") << QByteArray(".IDX") << search << false << false;
    QTest::newRow("missing information, empty") << QByteArray(".IDX") << QByteArray() << false << true;
    QTest::newRow("missing index") << QByteArray("9.IDX") << sort << false << false;
    QTest::newRow("missing index, empty") << QByteArray("9.IDX") << QByteArray() << true << true;
}

void BoxCreationTest::sameExpressions()
{
    QFETCH(QByteArray, index);
    QFETCH(QByteArray, expression);
    QVERIFY(createWithSubset());
    QByteArray bytes = expression;
    void *const given = bytes.data();
    QTEST(isSortExprsSame(path(index), given, int(bytes.size())), "sort");
    QTEST(isSearchExprsSame(path(index), given, int(bytes.size())), "search");
}

void BoxCreationTest::fullPathName()
{
    unsigned char room[32];
    memset(room, 'x', sizeof room);
    GetFullPathName(room, "F0:", "A.BOX");
    QCOMPARE(reinterpret_cast<char *>(room), "F0:A.BOX");
    GetFullPathName(room, nullptr, "B.BOX");
    QCOMPARE(reinterpret_cast<char *>(room), "B.BOX");
    GetFullPathName(room, "/a/b", "C");
    QCOMPARE(reinterpret_cast<char *>(room), "/a/bC");
}

void BoxCreationTest::sjisString()
{
    QCOMPARE(SjisString(QStringLiteral("aｱ日本")), QByteArray("a\xB1\x93\xFA\x96\x7B"));
    QCOMPARE(SjisString(QString()), QByteArray());
}

void BoxCreationTest::creationMakesEverything()
{
    QVERIFY(createWithSubset());
    QCOMPARE(states().keys(), (QStringList{m_name + ".BOX", m_name + ".IDX", m_name + "1.IDX"}));
    addCards();
    QCOMPARE(cardsOf(path(".IDX")), (QList<int>{2, 1, 3}));
    QCOMPARE(cardsOf(path("1.IDX")), (QList<int>{2, 1}));
    KyPDataManager manager(path(".BOX"), nullptr, false);
    QVERIFY(manager.isOpened());
    QCOMPARE(manager.count(), 3);
    QCOMPARE(manager.firstCard(), 2ul);
}

void BoxCreationTest::itemsAreDeclared()
{
    KyPDataManagerItemInfo items;
    items.addTextItem("NAME", QString::fromUtf8("名前"));
    items.addUshortItem("SHRT", "short", true);
    items.addCategoryItem();
    items.addBinaryItem("BINA", "binary");
    QVERIFY(create(items));
    KyPDataManager manager(path(".BOX"), nullptr, false);
    const QList<KyPDataManagerItem> found = manager.items().entries();
    QVERIFY(found.size() >= items.entries().size());
    for (qsizetype i = 0; i < items.entries().size(); ++i) {
        const KyPDataManagerItem &wanted = items.entries().at(i);
        QCOMPARE(QByteArray(found.at(i).code, 4), QByteArray(wanted.code, 4));
        QCOMPARE(found.at(i).type, wanted.type);
        QCOMPARE(found.at(i).kind, wanted.kind);
        QCOMPARE(found.at(i).label, wanted.label);
    }
}

void BoxCreationTest::labelKeepsWholeCharacters()
{
    KyPDataManagerItemInfo items;
    items.addTextItem("NAME", QString(37, 'n'));
    items.addTextItem("LONG", QString(38, 'l'));
    items.addTextItem("KANA", QString(20, QChar(0x3042)));                // three bytes each: twelve fit
    items.addTextItem("EMOJ", "a" + QString::fromUtf8("😀").repeated(12)); // four bytes each: nine fit
    QVERIFY(create(items));
    KyPDataManager manager(path(".BOX"), nullptr, false);
    const QList<KyPDataManagerItem> found = manager.items().entries();
    QCOMPARE(found.value(0).label, QString(37, 'n'));
    QCOMPARE(found.value(1).label, QString(37, 'l'));
    QCOMPARE(found.value(2).label, QString(12, QChar(0x3042)));
    QCOMPARE(found.value(3).label, "a" + QString::fromUtf8("😀").repeated(9));
}

void BoxCreationTest::secondCreationChangesNothing()
{
    QVERIFY(createWithSubset());
    addCards();
    const auto before = states();
    QCOMPARE(before.size(), 3);
    LogCapture capture;
    QVERIFY(createWithSubset());
    QCOMPARE(states(), before);
    QCOMPARE(capture.lines(), QStringList());
}

void BoxCreationTest::subsetWithoutOrderIsKept()
{
    const auto createUnordered = [this](bool ascending) {
        KyPDataManagerIndexInfo indexes;
        indexes.addIndexInfo(path("1.IDX"), Search, sizeof Search, nullptr, 0);
        return create(basicItems(), ascending, indexes);
    };
    QVERIFY(createUnordered(true));
    addCards();
    QCOMPARE(cardsOf(path("1.IDX")), (QList<int>{2, 1})); // its parent's order
    const auto before = states();
    QVERIFY(createUnordered(true));
    QCOMPARE(states(), before);
    QVERIFY(createUnordered(false));
    QCOMPARE(cardsOf(path("1.IDX")), (QList<int>{1, 2}));
}

void BoxCreationTest::newItemRenewsAllIndexes()
{
    QVERIFY(createWithSubset());
    addCards();
    QCOMPARE(_IndexCopy(path(".IDX"), path("A.tdx"), 2, Sort, sizeof Sort), PdtmStatus(PdtmOk));
    KyPDataManagerItemInfo items = basicItems();
    items.addUlongItem("SIZE", "size");
    KyPDataManagerIndexInfo indexes;
    indexes.addIndexInfo(path("1.IDX"), Search, sizeof Search, Sort, sizeof Sort);
    StoreFaults::reset();
    QVERIFY(create(items, true, indexes));
    const QStringList calls = StoreFaults::calls();
    for (const char *index : {".IDX", "1.IDX", "A.tdx"})
        QVERIFY2(calls.contains("_IndexDelete " + m_name + index), index);
    for (const char *index : {".IDX", "1.IDX"})
        QVERIFY2(calls.contains("_IndexCreate " + m_name + index + " 17"), index);
    QVERIFY(!exists("A.tdx"));
    QCOMPARE(cardsOf(path(".IDX")), (QList<int>{2, 1, 3}));
    QCOMPARE(cardsOf(path("1.IDX")), (QList<int>{2, 1}));
    KyPDataManager manager(path(".BOX"), nullptr, false);
    QCOMPARE(manager.nameToItemId("SIZE"), 3);
    QCOMPARE(manager.readItem("NAME", 2), QString("anna"));
}

void BoxCreationTest::changedOrderRenewsThatIndexOnly()
{
    QVERIFY(createWithSubset());
    addCards();
    const FileState box = state(".BOX");
    const FileState other = state("1.IDX");
    KyPDataManagerIndexInfo indexes;
    indexes.addIndexInfo(path("1.IDX"), Search, sizeof Search, Sort, sizeof Sort);
    QVERIFY(create(basicItems(), false, indexes));
    QCOMPARE(info(".IDX", 2), QByteArray(Descending, sizeof Descending));
    QCOMPARE(cardsOf(path(".IDX")), (QList<int>{3, 1, 2}));
    QCOMPARE(state("1.IDX"), other);
    QCOMPARE(state(".BOX"), box);
}

void BoxCreationTest::changedSearchRenewsThatIndexOnly()
{
    QVERIFY(createWithSubset());
    addCards();
    const FileState master = state(".IDX");
    constexpr char other[] = "NAME\xFE\x92\x11"
                             "t";
    QVERIFY(createWithSubset(other, sizeof other));
    QCOMPARE(info("1.IDX", 3), QByteArray(other, sizeof other));
    QCOMPARE(cardsOf(path("1.IDX")), (QList<int>{1, 3}));
    QCOMPARE(state(".IDX"), master);
}

void BoxCreationTest::otherLanguageRenewsTextOrder()
{
    const auto createInTextOrder = [this] {
        return KyPDataManager::createFile(path(".BOX"), path(".IDX"), AppId, false, basicItems(), TextOrder,
                                          sizeof TextOrder, KyPDataManagerIndexInfo());
    };
    QVERIFY(createInTextOrder());
    addCards();
    QCOMPARE(_DTMFileCheckLevel(path(".IDX"), 3), PdtmStatus(PdtmOk));
    const FileState before = state(".IDX");
    DtmSetLanguage("de");
    const auto restore = qScopeGuard([] { DtmSetLanguage("en"); });
    QCOMPARE(_DTMFileCheckLevel(path(".IDX"), 3), PdtmStatus(135));
    LogCapture capture;
    QVERIFY(createInTextOrder());
    QCOMPARE(capture.lines(), QStringList(QString(path(".IDX") + " has different language code")));
    QCOMPARE(_DTMFileCheckLevel(path(".IDX"), 3), PdtmStatus(PdtmOk));
    QVERIFY(state(".IDX").inode != before.inode || state(".IDX").contents != before.contents);
    QCOMPARE(cardsOf(path(".IDX")), (QList<int>{2, 1, 3}));
}

void BoxCreationTest::otherApplicationIsLeftAlone()
{
    QVERIFY(createWithSubset());
    addCards();
    const FileState box = state(".BOX");
    LogCapture capture;
    QVERIFY(KyPDataManager::createFile(path(".BOX"), path(".IDX"), AppId + 1, false, basicItems(), byName(),
                                       KyPDataManagerIndexInfo()));
    QCOMPARE(capture.lines(), QStringList(QString(path(".BOX") + " is incorrect box file 4b.")));
    QCOMPARE(states().keys(), QStringList(m_name + ".BOX"));
    QCOMPARE(state(".BOX"), box);
}

void BoxCreationTest::uncheckedIndexStays()
{
    QVERIFY(create());
    addCards();
    const auto before = states();
    StoreFaults::reset();
    QVERIFY(KyPDataManager::createFile(path(".BOX"), path(".IDX"), AppId, true, basicItems(), byName(),
                                       KyPDataManagerIndexInfo()));
    QVERIFY(StoreFaults::calls().filter("_DTMFileCheckLevel").isEmpty());
    QVERIFY(StoreFaults::calls().contains(named("_IndexCreate $.IDX 17")));
    QVERIFY(StoreFaults::calls().filter("_IndexInfoWrite").isEmpty());
    QCOMPARE(states(), before);
}

void BoxCreationTest::uncheckedIndexWithOtherExpressionsIsOverwritten()
{
    QVERIFY(createWithSubset());
    addCards();
    QCOMPARE(
        createMIdxFile(path("1.IDX"), path(".BOX"), nullptr, 0, Descending, sizeof Descending, true, nullptr),
        0);
    QCOMPARE(info("1.IDX", 2), QByteArray(Descending, sizeof Descending));
    QVERIFY(isSearchExprsSame(path("1.IDX"), nullptr, 0));
    QCOMPARE(cardsOf(path("1.IDX")), (QList<int>{3, 1, 2}));
    // What was overwritten counts as the same the next time.
    const auto before = states();
    QCOMPARE(createMIdxFile(path("1.IDX"), path(".BOX"), nullptr, 0, Descending, sizeof Descending, false,
                            nullptr),
             0);
    QCOMPARE(states(), before);
}

void BoxCreationTest::tooManyKeysGiveNoOrder()
{
    KyPDataManagerSortKey keys;
    for (int i = 0; i < 9; ++i)
        keys.addSortKey("NAME", false, false);
    QVERIFY(KyPDataManager::createFile(path(".BOX"), path(".IDX"), AppId, false, basicItems(), keys,
                                       KyPDataManagerIndexInfo()));
    addCards();
    QCOMPARE(cardsOf(path(".IDX")), (QList<int>{1, 2, 3}));
    const auto before = states();
    QVERIFY(KyPDataManager::createFile(path(".BOX"), path(".IDX"), AppId, false, basicItems(), keys,
                                       KyPDataManagerIndexInfo()));
    QCOMPARE(states(), before);
    KyPDataManager manager(path(".BOX"), nullptr, false);
    QCOMPARE(manager.count(), 3);
    QCOMPARE(manager.sortItem(), 0);
}

void BoxCreationTest::oneFailingIndexStopsNoOther()
{
    KyPDataManagerIndexInfo indexes;
    for (const char *name : {"1.IDX", "2.IDX", "3.IDX"})
        indexes.addIndexInfo(path(name), Search, sizeof Search, Sort, sizeof Sort);
    force({{"_IndexSort $2.IDX", 71}});
    QVERIFY(create(basicItems(), true, indexes));
    QVERIFY(exists("1.IDX"));
    QVERIFY(!exists("2.IDX"));
    QVERIFY(exists("3.IDX"));
    StoreFaults::reset();
    QVERIFY(create(basicItems(), true, indexes));
    QVERIFY(exists("2.IDX"));
}

void BoxCreationTest::failingMasterStopsTheRest()
{
    force({{"_IndexSort $.IDX", 71}});
    QVERIFY(createWithSubset());
    QCOMPARE(states().keys(), QStringList(m_name + ".BOX"));
    StoreFaults::reset();
    QVERIFY(createWithSubset());
    QCOMPARE(states().size(), 3);
}

void BoxCreationTest::resultIsAlwaysTrue_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<QByteArray>("index");
    QTest::newRow("missing folder") << QByteArray("/nowhere/at/all/A.BOX")
                                    << QByteArray("/nowhere/at/all/A.IDX");
    QTest::newRow("unknown drive") << QByteArray("F9:A.BOX") << QByteArray("F9:A.IDX");
    QTest::newRow("no base name") << QByteArray("F0:") << QByteArray("F0:");
    QTest::newRow("too long") << QByteArray(300, 'a') << QByteArray(300, 'b');
    QTest::newRow("empty") << QByteArray("") << QByteArray("");
    QTest::newRow("null") << QByteArray() << QByteArray();
}

void BoxCreationTest::resultIsAlwaysTrue()
{
    QFETCH(QByteArray, box);
    QFETCH(QByteArray, index);
    const auto before = folderState();
    QVERIFY(KyPDataManager::createFile(box.isNull() ? nullptr : box.constData(),
                                       index.isNull() ? nullptr : index.constData(), AppId, false,
                                       basicItems(), byName(), KyPDataManagerIndexInfo()));
    QCOMPARE(folderState(), before);
}

void BoxCreationTest::unfilledIndexIsMadeAnew_data()
{
    QTest::addColumn<bool>("subset");
    QTest::addColumn<bool>("noCheck");
    QTest::newRow("all cards") << false << false;
    QTest::newRow("all cards, no check") << false << true;
    QTest::newRow("subset") << true << false;
    QTest::newRow("subset, no check") << true << true;
}

void BoxCreationTest::unfilledIndexIsMadeAnew()
{
    QFETCH(bool, subset);
    QFETCH(bool, noCheck);
    QVERIFY(create());
    addCards();
    // As far as a killed process may come: described, but without its cards. It has no order to tell that by.
    const QByteArray name = m_name + QByteArray(".BOX\0", 5);
    QCOMPARE(_IndexCreate(path("1.IDX"), 17), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexInfoWrite(path("1.IDX"), InfoBoxName, name, uint16_t(name.size())), PdtmStatus(PdtmOk));
    if (subset)
        QCOMPARE(_IndexInfoWrite(path("1.IDX"), InfoSearchExpression, Search, sizeof Search),
                 PdtmStatus(PdtmOk));
    QCOMPARE(createMIdxFile(path("1.IDX"), path(".BOX"), Search, subset ? int(sizeof Search) : 0, nullptr, 0,
                            noCheck, path(".IDX")),
             0);
    QCOMPARE(cardsOf(path("1.IDX")), subset ? (QList<int>{2, 1}) : (QList<int>{1, 2, 3}));
}

void BoxCreationTest::anotherCreationIsWaitedFor()
{
    auto lock = std::make_unique<FolderLock>(boxFolder());
    std::atomic<bool> isFinished = false;
    std::thread other([&] {
        QThread::msleep(200);
        isFinished = true;
        lock.reset();
    });
    const bool isCreated = create();
    const bool hasWaited = isFinished;
    other.join();
    QVERIFY(isCreated && hasWaited);
    QVERIFY(exists(".BOX"));
    const FolderLock afterwards(boxFolder()); // it is free again
}

QTEST_GUILESS_MAIN(BoxCreationTest)
#include "boxcreationtest.moc"
