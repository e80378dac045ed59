#include "boxfixture.h"

#include <algorithm>
#include <array>
#include <QTemporaryDir>
#include <QtTest>
#include <sys/stat.h>
#include <unistd.h>

using namespace boxfixture;

/** The operations on boxes, with their results. */
class BoxTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void create();
    void createRefuses();
    void createMakesTheFolderAnew();
    void namesTooLong();
    void oddNames_data();
    void oddNames();
    void createTakesNothingFromAnEarlierBox();
    void anyoneCanReadIt();
    void deleteBox();
    void deleteKeepsAHeldBox();
    void deletedBoxStaysReadable();
    void handles();
    void handlesCloseInEveryOrder();
    void sameIndexNamesInTwoFolders();
    void lowerCaseItemsInIndexes_data();
    void lowerCaseItemsInIndexes();
    void secondHolderFails();
    void oneBoxUnderTwoPaths();
    void readOnlyHandles();
    void badHandles();
    void appendItems();
    void appendIsAllOrNothing();
    void appendKeepsTypeAndLabel();
    void appendBesideAHolder();
    void appendFillsTheBox();
    void appendRefuses();
    void readItemDescription();
    void itemsOfAnOpenBox();
    void fileTests();
    void fileTestsBesideAHolder();
    void garbage();
    void garbageOfAHeldBox();
    void closedBoxIsOneFile();
    void noDescriptorStaysOnAnotherVolume();
    void changedFileIsNoticedAfterAClose();

private:
    QByteArray m_box; ///< a new box for each test
    int m_number = 0;
};

void BoxTest::init()
{
    m_box = "F0:T" + QByteArray::number(++m_number) + ".BOX";
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
}

void BoxTest::create()
{
    QCOMPARE(_BoxCreate("F0:NEW.BOX", ApplicationId), PdtmStatus(PdtmOk));
    const QStringList files = QDir(internalPath("")).entryList({"NEW.BOX*"}, QDir::Files);
    QCOMPARE(files, QStringList({"NEW.BOX", "NEW.BOX-lock"}));
    const uint32_t handle = _BoxOpenRwMode("F0:NEW.BOX", 0);
    QVERIFY(handle);
    uint16_t card = 0;
    QCOMPARE(_ExpectNewCardID(handle, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, uint16_t(1));
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
}

void BoxTest::createRefuses()
{
    QCOMPARE(_BoxCreate(m_box.constData(), ApplicationId), PdtmStatus(PdtmExists));
    QCOMPARE(_BoxCreate("F0:no folder/KYADRS.BOX", ApplicationId), PdtmStatus(PdtmMissing));
    QCOMPARE(_BoxCreate(nullptr, ApplicationId), PdtmStatus(PdtmBadArgument));
    QVERIFY(writeFile(internalPath("EMPTY.BOX"), ""));
    QCOMPARE(_BoxCreate("F0:EMPTY.BOX", ApplicationId), PdtmStatus(PdtmExists));
    QCOMPARE(fileBytes(internalPath("EMPTY.BOX")), QByteArray());
}

void BoxTest::createMakesTheFolderAnew()
{
    QVERIFY(QDir(QDir::homePath() + "/Applications").removeRecursively());
    QCOMPARE(makeBox("F0:ANEW.BOX"), PdtmStatus(PdtmOk));
    QVERIFY(QFile::exists(internalPath("ANEW.BOX")));
    QVERIFY(QDir(QDir::homePath() + "/Applications").removeRecursively());
    QCOMPARE(_IndexCreate("F0:ANEW.IDX", 17), PdtmStatus(PdtmOk));
    QVERIFY(QFile::exists(internalPath("ANEW.IDX")));
}

void BoxTest::namesTooLong()
{
    const QByteArray folder = QFile::encodeName(internalPath(""));
    QByteArray deep = folder;
    while (deep.size() < 200) {
        deep += "folder/";
        QVERIFY(QDir().mkpath(QString::fromUtf8(deep)));
    }
    const QByteArray longest = deep + QByteArray(251 - deep.size(), 'n') + ".BOX";
    QCOMPARE(longest.size(), qsizetype(255));
    QCOMPARE(makeBox(longest.constData()), PdtmStatus(PdtmOk));
    const uint32_t handle = _BoxOpenRwMode(longest.constData(), 0);
    QCOMPARE(addCard(handle, "a"), uint16_t(1));
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
    QCOMPARE(_BoxDelete(longest.constData()), PdtmStatus(PdtmOk));
    const QByteArray longer = deep + QByteArray(252 - deep.size(), 'n') + ".BOX";
    QCOMPARE(_BoxCreate(longer.constData(), ApplicationId), PdtmStatus(PdtmBadArgument));
    QVERIFY(!QFile::exists(QString::fromUtf8(longer)));
    const QByteArray noRoomForLock = "F0:" + QByteArray(248, 'n') + ".BOX";
    QCOMPARE(_BoxCreate(noRoomForLock.constData(), ApplicationId), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_BoxOpenRwMode(noRoomForLock.constData(), 0), 0U);
}

void BoxTest::oddNames_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("question mark") << QByteArray("A?mode=memory.BOX");
    QTest::newRow("number sign and percent") << QByteArray("A#%00%41.BOX");
    QTest::newRow("line feed and quote") << QByteArray("A\n'\".BOX");
    QTest::newRow("no UTF-8") << QByteArray("A\xFF\x83\x5C.BOX");
    QTest::newRow("a second colon") << QByteArray("A:B.BOX");
}

void BoxTest::oddNames()
{
    QFETCH(QByteArray, name);
    const QByteArray path = "F0:" + name;
    QCOMPARE(makeBox(path.constData()), PdtmStatus(PdtmOk));
    const QByteArray real = QFile::encodeName(internalPath("")) + name;
    QCOMPARE(access(real.constData(), F_OK), 0);
    const uint32_t handle = _BoxOpenRwMode(path.constData(), 0);
    QCOMPARE(addCard(handle, "a"), uint16_t(1));
    const QByteArray index = path.chopped(3) + "IDX";
    QCOMPARE(_IndexCreate(index.constData(), 17), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexUnGroup(index.constData(), handle), PdtmStatus(PdtmOk));
    char found[256] = {};
    QCOMPARE(_GetIndexName(path.constData(), 1, found, sizeof found, nullptr), PdtmStatus(PdtmOk));
    QCOMPARE(QByteArray(found), index);
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
    QCOMPARE(_BoxDelete(path.constData()), PdtmStatus(PdtmOk));
}

void BoxTest::createTakesNothingFromAnEarlierBox()
{
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(handle, "old"), uint16_t(1));
    const QByteArray log = fileBytes(internalPath(m_box.mid(3)) + "-wal");
    QVERIFY(log.size() > 4096);
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmOk));
    QVERIFY(writeFile(internalPath(m_box.mid(3)) + "-wal", log));
    QVERIFY(writeFile(internalPath(m_box.mid(3)) + ".new", "unfinished"));
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(read(handle, 1, "NAPR"), QByteArray("status 65"));
    _BoxClose(handle);
}

void BoxTest::anyoneCanReadIt()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    addCard(handle, "Tanaka");
    _BoxClose(handle);
    const QString path = internalPath(m_box.mid(3));
    QCOMPARE(sql(path, "SELECT count(*) FROM cards WHERE id < 65280"), QByteArray("1"));
    QCOMPARE(sql(path, "SELECT group_concat(code) FROM items"), QByteArray("NAPR,aDRS,CTGR,AGEU"));
    QCOMPARE(sql(path, "SELECT application_id FROM box"), QByteArray::number(ApplicationId));
    QCOMPARE(sql(path, "PRAGMA integrity_check"), QByteArray("ok"));
    QCOMPARE(sql(path, "PRAGMA auto_vacuum"), QByteArray("2"));
}

void BoxTest::deleteBox()
{
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmOk));
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmMissing));
    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 0), 0U);
    QCOMPARE(_BoxDelete(""), PdtmStatus(PdtmBadArgument));
    QCOMPARE(QDir(internalPath("")).entryList({m_box.mid(3) + "*"}, QDir::Files),
             QStringList({m_box.mid(3) + "-lock"}));
}

void BoxTest::deleteKeepsAHeldBox()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmBusy));
    QCOMPARE(addCard(handle, "still there"), uint16_t(1));
    _BoxClose(handle);
    QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
}

void BoxTest::deletedBoxStaysReadable()
{
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    addCard(handle, "old");
    _BoxClose(handle);
    const uint32_t reader = _BoxOpenRwMode(m_box.constData(), 1);
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmOk));
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    handle = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(handle);
    addCard(handle, "new");
    QCOMPARE(read(reader, 1, "NAPR"), QByteArray("old"));
    QCOMPARE(_BoxClose(reader), PdtmStatus(PdtmOk));
    QCOMPARE(addCard(handle, "second"), uint16_t(2));
    _BoxClose(handle);
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT count(*) FROM cards WHERE id < 65280"), QByteArray("2"));
}

void BoxTest::handles()
{
    QSet<uint32_t> seen;
    for (int i = 0; i < 100; ++i) {
        const uint32_t handle = _BoxOpenRwMode(m_box.constData(), uint8_t(i % 2));
        QVERIFY(handle);
        QVERIFY(!seen.contains(handle));
        seen.insert(handle);
        QCOMPARE(i % 3 ? _BoxClose(handle) : _BoxCloseEx(handle, 1), PdtmStatus(PdtmOk));
        QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmBadArgument));
    }
    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 2), 0U);
    QCOMPARE(_BoxOpenRwMode("F0:MISSING.BOX", 0), 0U);
    QCOMPARE(_BoxOpenRwMode("F0:MISSING.BOX", 1), 0U);
    QVERIFY(!QFile::exists(internalPath("MISSING.BOX")));
    QVERIFY(!QFile::exists(internalPath("MISSING.BOX-lock")));
}

void BoxTest::handlesCloseInEveryOrder()
{
    std::array<int, 4> order = {0, 1, 2, 3};
    uint16_t cards = 0;
    do {
        const std::array<uint32_t, 4> handles = {
            _BoxOpenRwMode(m_box.constData(), 0), _BoxOpen(m_box.constData()),
            _BoxOpenRwMode(m_box.constData(), 1), _BoxOpenRwMode(m_box.constData(), 1)};
        QVERIFY(std::ranges::find(handles, 0U) == handles.end());
        QCOMPARE(addCard(handles[0], "name"), ++cards);
        QCOMPARE(DtmBeginAction(handles[0]), PdtmStatus(PdtmOk)); // a close undoes it
        QVERIFY(addCard(handles[0], "undone"));
        for (size_t i = 0; i < order.size(); ++i) {
            QCOMPARE(_BoxClose(handles[size_t(order[i])]), PdtmStatus(PdtmOk));
            for (size_t j = i + 1; j < order.size(); ++j)
                QCOMPARE(read(handles[size_t(order[j])], cards, "NAPR"), QByteArray("name"));
        }
        const uint32_t again = _BoxOpenRwMode(m_box.constData(), 0);
        QCOMPARE(read(again, uint16_t(cards + 1), "NAPR"), QByteArray("status 65"));
        QCOMPARE(_BoxClose(again), PdtmStatus(PdtmOk));
    } while (std::ranges::next_permutation(order).found);
    QCOMPARE(cards, uint16_t(24));
}

void BoxTest::sameIndexNamesInTwoFolders()
{
    const QTemporaryDir folder;
    const QByteArray other = QFile::encodeName(folder.path()) + '/' + m_box.mid(3);
    QCOMPARE(makeBox(other.constData()), PdtmStatus(PdtmOk));
    const std::array<QByteArray, 2> boxes = {m_box, other};
    std::array<uint32_t, 2> handles{};
    for (size_t i = 0; i < boxes.size(); ++i) {
        const QByteArray index = boxes[i].chopped(3) + "IDX";
        handles[i] = _BoxOpenRwMode(boxes[i].constData(), 0);
        QCOMPARE(_IndexCreate(index.constData(), 17), PdtmStatus(PdtmOk));
        QCOMPARE(_IndexUnGroup(index.constData(), handles[i]), PdtmStatus(PdtmNothingToSort));
    }
    QCOMPARE(addCard(handles[0], "a"), uint16_t(1));
    QCOMPARE(addCard(handles[1], "b"), uint16_t(1));
    QCOMPARE(addCard(handles[1], "c"), uint16_t(2));
    for (size_t i = 0; i < boxes.size(); ++i) {
        const QByteArray index = boxes[i].chopped(3) + "IDX";
        uint16_t count = 0;
        QCOMPARE(_IndexCount(index.constData(), handles[i], nullptr, 0, 0, 0, 0, 0, nullptr, &count),
                 PdtmStatus(PdtmOk));
        QCOMPARE(count, uint16_t(i + 1));
        QCOMPARE(_IndexSort(index.constData(), handles[1 - i]), PdtmStatus(PdtmBadArgument));
    }
    for (const uint32_t handle : handles)
        QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
}

void BoxTest::lowerCaseItemsInIndexes_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::newRow("as declared") << QByteArray("aDRS");
    QTest::newRow("upper case") << QByteArray("ADRS");
    QTest::newRow("declared in upper case") << QByteArray("nAPR");
}

void BoxTest::lowerCaseItemsInIndexes()
{
    QFETCH(QByteArray, code);
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    for (const char *value : {"b", "a", "c"}) {
        const uint16_t card = addCard(handle, value);
        QCOMPARE(write(handle, card, "ADRS", value), PdtmStatus(PdtmOk));
    }
    const QByteArray index = m_box.chopped(3) + "IDX";
    const QByteArray sort = code + "\xFE\x80" + '\0';
    const QByteArray isA = code + "\xFE\x90\x11" + "a" + '\0';
    QCOMPARE(_IndexCreate(index.constData(), 17), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexInfoWrite(index.constData(), InfoSortExpression, sort.constData(), uint16_t(sort.size())),
             PdtmStatus(PdtmOk));
    QCOMPARE(_IndexUnGroup(index.constData(), handle), PdtmStatus(PdtmOk));
    uint16_t number = 0;
    QCOMPARE(_IndexSearch(index.constData(), handle, isA.constData(), 0, 0, 0, 0, 0, &number),
             PdtmStatus(PdtmOk));
    QCOMPARE(number, uint16_t(1));
    uint16_t card = 0;
    QCOMPARE(_IndexNoToCardID(index.constData(), 3, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, uint16_t(3));
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
    const ITEMDATA item = itemData(ItemTextUtf8, KindText, code.constData(), "");
    uint32_t added = 1;
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, 1, &added), PdtmStatus(PdtmOk));
    QCOMPARE(added, 0U);
}

void BoxTest::secondHolderFails()
{
    const uint32_t holder = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(holder);
    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 0), 0U);
    const uint32_t reader = _BoxOpenRwMode(m_box.constData(), 1);
    const uint32_t brief = _BoxOpen(m_box.constData());
    QVERIFY(reader && brief);
    QCOMPARE(_BoxClose(holder), PdtmStatus(PdtmOk));
    const uint32_t second = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(second);
    for (const uint32_t handle : {reader, brief, second})
        QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
}

void BoxTest::oneBoxUnderTwoPaths()
{
    const QByteArray real = internalPath(m_box.mid(3)).toUtf8();
    const QByteArray link = internalPath("link.box").toUtf8();
    QFile::remove(link);
    QVERIFY(QFile::link(real, link));
    const uint32_t holder = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(_BoxOpenRwMode(real.constData(), 0), 0U);
    QCOMPARE(_BoxOpenRwMode(link.constData(), 0), 0U);
    const uint32_t reader = _BoxOpenRwMode(link.constData(), 1);
    addCard(holder, "both");
    QCOMPARE(read(reader, 1, "NAPR"), QByteArray("both"));
    _BoxClose(holder);
    _BoxClose(reader);
}

void BoxTest::readOnlyHandles()
{
    uint32_t holder = _BoxOpenRwMode(m_box.constData(), 0);
    addCard(holder, "kept");
    _BoxClose(holder);
    for (const uint32_t handle : {_BoxOpenRwMode(m_box.constData(), 1), _BoxOpen(m_box.constData())}) {
        uint16_t card = 0;
        const CardItemKey category = key(1, "CTGR");
        QCOMPARE(_CardCreate(handle, &card), PdtmStatus(PdtmReadOnly));
        QCOMPARE(_CardCopy(handle, 1, &card), PdtmStatus(PdtmReadOnly));
        QCOMPARE(_CardDelete(handle, 1), PdtmStatus(PdtmReadOnly));
        QCOMPARE(_CardAllDelete(handle, 0, 0, 0), PdtmStatus(PdtmReadOnly));
        QCOMPARE(write(handle, 1, "NAPR", "lost"), PdtmStatus(PdtmReadOnly));
        QCOMPARE(_CardCategoryAppend(handle, &category, 3), PdtmStatus(PdtmReadOnly));
        QCOMPARE(_CardCategoryDelete(handle, &category, 3), PdtmStatus(PdtmReadOnly));
        QCOMPARE(DtmBeginAction(handle), PdtmStatus(PdtmReadOnly));
        QCOMPARE(DtmUpdateSyncId(handle), PdtmStatus(PdtmReadOnly));
        QCOMPARE(read(handle, 1, "NAPR"), QByteArray("kept"));
        QCOMPARE(_ExpectNewCardID(handle, &card), PdtmStatus(PdtmOk));
        QCOMPARE(card, uint16_t(2));
        QVERIFY(DtmGetSyncId(handle) != 0);
        _BoxClose(handle);
    }
}

void BoxTest::badHandles()
{
    uint16_t card = 1;
    uint16_t room = 44;
    uint32_t size = 0;
    char buffer[64];
    const CardItemKey item = key(1, "CTGR");
    for (const uint32_t handle : {0U, 4000000000U}) {
        QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_BoxCloseEx(handle, 1), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardCreate(handle, &card), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardCopy(handle, 1, &card), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardDelete(handle, 1), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardAllDelete(handle, 0, 0, 0), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardRead(handle, &item, nullptr, &size), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardWrite(handle, &item, "", 0), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardCategoryAppend(handle, &item, 1), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_CardCategoryDelete(handle, &item, 1), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_ExpectNewCardID(handle, &card), PdtmStatus(PdtmBadArgument));
        QCOMPARE(_BoxItemReadHeap(handle, "NAPR", buffer, &room), PdtmStatus(PdtmBadArgument));
        QCOMPARE(DtmBeginAction(handle), PdtmStatus(PdtmBadArgument));
        QCOMPARE(DtmEndAction(handle), PdtmStatus(PdtmBadArgument));
        QCOMPARE(DtmGetSyncId(handle), 0U);
        QCOMPARE(DtmUpdateSyncId(handle), PdtmStatus(PdtmBadArgument));
        QCOMPARE(DtmIsEnoughStorageForOperation(handle, 1), 0);
    }
}

void BoxTest::appendItems()
{
    QCOMPARE(_BoxCreate("F0:ITEMS.BOX", ApplicationId), PdtmStatus(PdtmOk));
    uint32_t added = 7;
    QCOMPARE(boxfixture::appendItems("F0:ITEMS.BOX", &added), PdtmStatus(PdtmOk));
    QVERIFY(added != 0);
    const QByteArray before = fileBytes(internalPath("ITEMS.BOX"));
    QCOMPARE(boxfixture::appendItems("F0:ITEMS.BOX", &added), PdtmStatus(PdtmOk));
    QCOMPARE(added, 0U);
    QCOMPARE(fileBytes(internalPath("ITEMS.BOX")), before);

    // With the first letter in the other case it is there already.
    const ITEMDATA more[] = {
        itemData(ItemTextUtf8, KindText, "nAPR", ""), itemData(ItemTextUtf8, KindText, "ADRS", ""),
        itemData(ItemUchar, KindUchar, "ATTR", ""), itemData(ItemTime, KindTime, "BRTH", "Birthday"),
        itemData(ItemTime, KindTime, "BRTH", "Twice")};
    QCOMPARE(_BoxItemAppend("F0:ITEMS.BOX", more, 5, &added), PdtmStatus(PdtmOk));
    QVERIFY(added != 0);
    QCOMPARE(sql(internalPath("ITEMS.BOX"), "SELECT group_concat(code) FROM items"),
             QByteArray("NAPR,aDRS,CTGR,AGEU,BRTH"));
    QCOMPARE(_BoxItemAppend("F0:ITEMS.BOX", nullptr, 0, nullptr), PdtmStatus(PdtmOk));
}

void BoxTest::appendIsAllOrNothing()
{
    const ITEMDATA items[] = {itemData(ItemTextUtf8, KindText, "GOOD", ""),
                              itemData(7, KindText, "BADT", "")};
    uint32_t added = 7;
    QCOMPARE(_BoxItemAppend(m_box.constData(), items, 2, &added), PdtmStatus(PdtmBadArgument));
    QCOMPARE(added, 0U);
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT count(*) FROM items"), QByteArray("4"));
}

void BoxTest::appendKeepsTypeAndLabel()
{
    const ITEMDATA item = itemData(ItemBinary, KindBinary, "NAPR", "Another label");
    uint32_t added = 7;
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, 1, &added), PdtmStatus(PdtmOk));
    QCOMPARE(added, 0U);
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT type || label FROM items WHERE code = 'NAPR'"),
             QByteArray("17Name"));
}

void BoxTest::appendBesideAHolder()
{
    const uint32_t holder = _BoxOpenRwMode(m_box.constData(), 0);
    uint32_t added = 7;
    QCOMPARE(boxfixture::appendItems(m_box.constData(), &added), PdtmStatus(PdtmOk));
    QCOMPARE(added, 0U);
    const ITEMDATA item = itemData(ItemTime, KindTime, "BRTH", "Birthday");
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, 1, &added), PdtmStatus(PdtmBusy));
    QCOMPARE(added, 0U);
    _BoxClose(holder);

    const uint32_t reader = _BoxOpenRwMode(m_box.constData(), 1);
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, 1, &added), PdtmStatus(PdtmOk));
    ITEMDATA found;
    uint16_t size = sizeof found;
    QCOMPARE(_BoxItemReadHeap(reader, "BRTH", &found, &size), PdtmStatus(PdtmOk));
    _BoxClose(reader);
}

void BoxTest::appendFillsTheBox()
{
    QCOMPARE(_BoxCreate("F0:FULL.BOX", ApplicationId), PdtmStatus(PdtmOk));
    QList<ITEMDATA> items;
    for (int i = 0; i < 252; ++i)
        items << itemData(ItemTextUtf8, KindText, qPrintable(QString::asprintf("X%03d", i)), "");
    uint32_t added = 7;
    QCOMPARE(_BoxItemAppend("F0:FULL.BOX", items.constData(), 252, &added), PdtmStatus(PdtmTooShort));
    QCOMPARE(added, 0U);
    QCOMPARE(_BoxItemAppend("F0:FULL.BOX", items.constData(), 251, &added), PdtmStatus(PdtmOk));
    const uint32_t handle = _BoxOpenRwMode("F0:FULL.BOX", 0);
    uint16_t card = 0;
    QCOMPARE(_CardCreate(handle, &card), PdtmStatus(PdtmOk));
    QCOMPARE(write(handle, card, "X250", "last"), PdtmStatus(PdtmOk));
    QCOMPARE(write(handle, card, "X000", "first"), PdtmStatus(PdtmOk));
    QCOMPARE(read(handle, card, "X250"), QByteArray("last"));
    QCOMPARE(read(handle, card, "X000"), QByteArray("first"));
    QCOMPARE(read(handle, card, "ATTR"), QByteArray(1, '\0'));
    _BoxClose(handle);
}

void BoxTest::appendRefuses()
{
    const ITEMDATA item = itemData(ItemTextUtf8, KindText, "NAPR", "");
    QCOMPARE(_BoxItemAppend("F0:MISSING.BOX", &item, 1, nullptr), PdtmStatus(PdtmMissing));
    QCOMPARE(_BoxItemAppend(m_box.constData(), nullptr, 1, nullptr), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, -1, nullptr), PdtmStatus(PdtmBadArgument));
    QVERIFY(writeFile(internalPath("TEXT.BOX"), "no box at all"));
    QCOMPARE(_BoxItemAppend("F0:TEXT.BOX", &item, 1, nullptr), PdtmStatus(PdtmDamaged));
    QCOMPARE(fileBytes(internalPath("TEXT.BOX")), QByteArray("no box at all"));
}

void BoxTest::readItemDescription()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 1);
    for (const char *code : {"aDRS", "ADRS"}) {
        ITEMDATA item;
        uint16_t size = sizeof item;
        QCOMPARE(_BoxItemReadHeap(handle, code, &item, &size), PdtmStatus(PdtmOk));
        QCOMPARE(size, uint16_t(44));
        QCOMPARE(int(item.type), int(ItemTextUtf8));
        QCOMPARE(int(item.kind), int(KindText));
        QCOMPARE(QByteArray(item.code, 4), QByteArray("aDRS"));
        QCOMPARE(QByteArray(item.label), QByteArray("Address"));
    }
    ITEMDATA implicit;
    uint16_t size = sizeof implicit;
    QCOMPARE(_BoxItemReadHeap(handle, "SYID", &implicit, &size), PdtmStatus(PdtmOk));
    QCOMPARE(int(implicit.type), int(ItemUlong));

    QByteArray untouched(44, '\xEE');
    QCOMPARE(_BoxItemReadHeap(handle, "ZZZZ", untouched.data(), &size), PdtmStatus(PdtmNoSuchItem));
    QCOMPARE(untouched, QByteArray(44, '\xEE'));
    size = 43;
    QCOMPARE(_BoxItemReadHeap(handle, "NAPR", untouched.data(), &size), PdtmStatus(PdtmTooShort));
    QCOMPARE(untouched, QByteArray(44, '\xEE'));
    _BoxClose(handle);
}

void BoxTest::itemsOfAnOpenBox()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    PioExtBoxInfo *info = _PioNewExtBoxInfo(m_box.constData(), handle);
    QVERIFY(info);
    QCOMPARE(int(info->itemCount), 8);
    QCOMPARE(_PioExtGetItemNo(info, "ADRS"), 2U);
    QCOMPARE(_PioExtGetItemNo(info, "ATTR"), 5U);
    QCOMPARE(_PioExtGetItemNo(info, "ZZZZ"), 0U);
    _PioDisposeExtBoxInfo(info);
    _BoxClose(handle);
}

void BoxTest::fileTests()
{
    QCOMPARE(_DTMFileCheckAppliID(m_box.constData(), 3, ApplicationId), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckAppliID(m_box.constData(), 3, 1), PdtmStatus(PdtmWrongApplication));
    QCOMPARE(_DTMFileCheckAppliID("F0:MISSING.BOX", 3, ApplicationId), PdtmStatus(PdtmMissing));
    QCOMPARE(_DTMFileCheckAppliID("", 3, ApplicationId), PdtmStatus(PdtmBadArgument));
    for (const int level : {3, 255}) {
        QCOMPARE(_DTMFileCheckLevel(m_box.constData(), level), PdtmStatus(PdtmOk));
        QCOMPARE(_DTMFileCheckLevel("F0:MISSING.BOX", level), PdtmStatus(PdtmMissing));
        QCOMPARE(_DTMFileCheckLevel(nullptr, level), PdtmStatus(PdtmBadArgument));
    }
    for (const QByteArray &bytes : {QByteArray(), QByteArray("text"), QByteArray(8192, '\0'),
                                    QByteArray("SQLite format 3\0 and nothing more", 32)}) {
        QVERIFY(writeFile(internalPath("OTHER.BOX"), bytes));
        QCOMPARE(_DTMFileCheckAppliID("F0:OTHER.BOX", 3, ApplicationId), PdtmStatus(PdtmDamaged));
        QCOMPARE(_DTMFileCheckLevel("F0:OTHER.BOX", 3), PdtmStatus(PdtmDamaged));
        QCOMPARE(_BoxOpenRwMode("F0:OTHER.BOX", 0), 0U);
        QCOMPARE(_BoxOpenRwMode("F0:OTHER.BOX", 1), 0U);
        QCOMPARE(_BoxGarbageCollect("F0:OTHER.BOX"), PdtmStatus(PdtmDamaged));
        QCOMPARE(fileBytes(internalPath("OTHER.BOX")), bytes);
    }
    QVERIFY(QDir().mkpath(internalPath("FOLDER.BOX")));
    QCOMPARE(_DTMFileCheckAppliID("F0:FOLDER.BOX", 3, ApplicationId), PdtmStatus(PdtmDamaged));
    QCOMPARE(_DTMFileCheckLevel("F0:FOLDER.BOX", 3), PdtmStatus(PdtmDamaged));
    const QByteArray pipe = QFile::encodeName(internalPath("PIPE.BOX"));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    const auto tidy = qScopeGuard([&] { unlink(pipe.constData()); });
    QCOMPARE(_DTMFileCheckAppliID("F0:PIPE.BOX", 3, ApplicationId), PdtmStatus(PdtmDamaged));
    QCOMPARE(_DTMFileCheckLevel("F0:PIPE.BOX", 3), PdtmStatus(PdtmDamaged)); // and doesn't wait for a writer
}

void BoxTest::fileTestsBesideAHolder()
{
    const uint32_t holder = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(DtmBeginAction(holder), PdtmStatus(PdtmOk));
    addCard(holder, "within an action");
    uint32_t size = 7;
    QCOMPARE(_DTMFileCheckAppliID(m_box.constData(), 3, ApplicationId), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), &size), PdtmStatus(PdtmOk));
    QCOMPARE(DtmEndAction(holder), PdtmStatus(PdtmOk));
    QCOMPARE(read(holder, 1, "NAPR"), QByteArray("within an action"));
    _BoxClose(holder);
}

void BoxTest::garbage()
{
    uint32_t size = 7;
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), &size), PdtmStatus(PdtmOk));
    QCOMPARE(size, 0U);
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    DtmBeginAction(handle);
    for (int i = 0; i < 500; ++i)
        QVERIFY(addCard(handle, QByteArray(600, 'x')));
    QCOMPARE(DtmEndAction(handle), PdtmStatus(PdtmOk));
    QCOMPARE(_CardAllDelete(handle, 0, 0, 0), PdtmStatus(PdtmOk));
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), &size), PdtmStatus(PdtmOk));
    QVERIFY2(size > 300000 && size < 500000, QByteArray::number(size));
    _BoxClose(handle);
    const qint64 before = QFileInfo(internalPath(m_box.mid(3))).size();
    QCOMPARE(_BoxGarbageCollect(m_box.constData()), PdtmStatus(PdtmOk));
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), &size), PdtmStatus(PdtmOk));
    QCOMPARE(size, 0U);
    QVERIFY(QFileInfo(internalPath(m_box.mid(3))).size() < before - 300000);
    QCOMPARE(_GetBoxGarbageSize("F0:MISSING.BOX", &size), PdtmStatus(PdtmMissing));
    QCOMPARE(_BoxGarbageCollect("F0:MISSING.BOX"), PdtmStatus(PdtmMissing));
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), nullptr), PdtmStatus(PdtmBadArgument));
}

void BoxTest::garbageOfAHeldBox()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(_BoxGarbageCollect(m_box.constData()), PdtmStatus(PdtmBusy));
    _BoxClose(handle);
    const uint32_t reader = _BoxOpenRwMode(m_box.constData(), 1);
    QCOMPARE(_BoxGarbageCollect(m_box.constData()), PdtmStatus(PdtmOk));
    _BoxClose(reader);
}

void BoxTest::closedBoxIsOneFile()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    addCard(handle, "in the file");
    _BoxClose(handle);
    QVERIFY(writeFile(internalPath("COPY.BOX"), fileBytes(internalPath(m_box.mid(3)))));
    const uint32_t copy = _BoxOpenRwMode("F0:COPY.BOX", 1);
    QCOMPARE(read(copy, 1, "NAPR"), QByteArray("in the file"));
    _BoxClose(copy);
}

void BoxTest::noDescriptorStaysOnAnotherVolume()
{
    if (!QFileInfo("/dev/shm").isWritable())
        QSKIP("no second volume to write on");
    QTemporaryDir folder("/dev/shm/boxtest.XXXXXX");
    const QByteArray path = folder.path().toUtf8() + "/CARD.BOX";
    const auto openFiles = [&] {
        int count = 0;
        for (const QFileInfo &entry :
             QDir("/proc/self/fd").entryInfoList(QDir::Files | QDir::System | QDir::Hidden))
            count += entry.symLinkTarget().startsWith(folder.path()) ? 1 : 0;
        return count;
    };
    QCOMPARE(makeBox(path.constData()), PdtmStatus(PdtmOk));
    QCOMPARE(openFiles(), 0);
    for (const uint8_t mode : {uint8_t(0), uint8_t(1)}) {
        const uint32_t handle = _BoxOpenRwMode(path.constData(), mode);
        if (mode == 0)
            QVERIFY(addCard(handle, "card"));
        QVERIFY(openFiles() > 0);
        QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
        QCOMPARE(openFiles(), 0);
    }
    QCOMPARE(_BoxGarbageCollect(path.constData()), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel(path.constData(), 255), PdtmStatus(PdtmOk));
    QCOMPARE(openFiles(), 0);
}

void BoxTest::changedFileIsNoticedAfterAClose()
{
    const QString path = internalPath(m_box.mid(3));
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    addCard(handle, "one");
    _BoxClose(handle);
    const QByteArray whole = fileBytes(path);
    QVERIFY(writeFile(path, whole.left(5000)));
    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 0), 0U);
    QCOMPARE(_DTMFileCheckAppliID(m_box.constData(), 3, ApplicationId), PdtmStatus(PdtmDamaged));
    QCOMPARE(fileBytes(path), whole.left(5000));
}

QTEST_GUILESS_MAIN(BoxTest)
#include "boxtest.moc"
