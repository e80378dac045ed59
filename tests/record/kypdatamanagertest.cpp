#include "logcapture.h"
#include "recordfixture.h"
#include <QFile>
#include <QSet>

namespace {

int languageCalls = 0;
QByteArray languageGiven;
bool refuseBoxInfo = false;
QByteArray undeletableIndex;

/** An index with the given information blocks and no cards. */
bool makeIndex(const QByteArray &path, const TestBox &box, const QByteArray &sort, const QByteArray &search)
{
    const QByteArray boxName = box.path().mid(3);
    const auto write = [&path](int id, const QByteArray &bytes) {
        return _IndexInfoWrite(path.constData(), id, bytes.constData(), quint16(bytes.size())) == PdtmOk;
    };
    return _IndexCreate(path.constData(), 17) == PdtmOk &&
           _IndexInfoWrite(path.constData(), InfoBoxName, boxName.constData(), quint16(boxName.size() + 1)) ==
               PdtmOk &&
           (sort.isNull() || write(InfoSortExpression, sort)) &&
           (search.isNull() || write(InfoSearchExpression, search));
}

QByteArray expression(const char *bytes, qsizetype length)
{
    return QByteArray(bytes, length);
}

const KyPDtm::PIOIDXINFO *rowOf(KyPDataManager &manager, const QByteArray &path)
{
    for (const auto &row : privateOf(manager).indexes) {
        if (path.mid(3) == row.fileName)
            return &row;
    }
    return nullptr;
}

} // namespace

PdtmStatus DtmSetLanguage(const char *language)
{
    static const auto next = nextDefinition<decltype(DtmSetLanguage)>("DtmSetLanguage");
    ++languageCalls;
    languageGiven = language;
    return next(language);
}

PioExtBoxInfo *_PioNewExtBoxInfo(const char *path, uint32_t handle)
{
    static const auto next = nextDefinition<decltype(_PioNewExtBoxInfo)>("_PioNewExtBoxInfo");
    return refuseBoxInfo ? nullptr : next(path, handle);
}

PdtmStatus _IndexDelete(const char *path)
{
    static const auto next = nextDefinition<decltype(_IndexDelete)>("_IndexDelete");
    return undeletableIndex == path ? PdtmStatus(PdtmReadOnly) : next(path);
}

class KyPDataManagerTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    // construction
    void givesTheLanguageOnce();
    void opensWithTheMasterAsCurrentIndex();
    void badPathIsLogged_data();
    void badPathIsLogged();
    void badPathNeverOpens();
    void missingBoxIsLogged();
    void boxThatWasMissingCanBeOpenedLater();
    void missingBoxInfoIsLogged();
    void reservedIndexesAreNoMaster();
    void failedManagerGivesFailureValues();
    void unreadableIndexIsDeleted();
    void unreadableIndexThatStaysIsPassedOver();
    void sortInformationOfRows_data();
    void sortInformationOfRows();
    void searchInformationOfRows_data();
    void searchInformationOfRows();
    void temporaryIndexIsAdopted();
    void tableHoldsTenIndexes();
    void firstPlainPermanentIndexIsMaster();

    // open and close
    void openOnAnOpenManagerChangesNothing();
    void closeAndOpenKeepTheView();
    void readOnlyReadsBesideAWriter();
    void staticFileCalls();

    // description
    void itemNumbersAndTypes();
    void itemsListsTheBox();
    void smallAnswers();
};

void KyPDataManagerTest::init()
{
    refuseBoxInfo = false;
    undeletableIndex.clear();
}

void KyPDataManagerTest::givesTheLanguageOnce()
{
    QCOMPARE(languageCalls, 0);
    const TestBox box;
    QCOMPARE(languageCalls, 1);
    QCOMPARE(languageGiven, "en"); // LANG of the test is C.UTF-8
    const KyPDataManager first(box.path().constData(), nullptr, false);
    const KyPDataManager second(box.path().constData(), nullptr, true);
    QVERIFY(KyPDataManager::checkFile(box.path().constData()));
    QCOMPARE(languageCalls, 1);
}

void KyPDataManagerTest::opensWithTheMasterAsCurrentIndex()
{
    const TestBox box;
    LogCapture log;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.isOpened());
    QVERIFY(manager.boxHandle() != 0);
    QVERIFY(log.lines().isEmpty());
    QVERIFY(manager.ascendent());
    QVERIFY(!manager.isFiltered());
    QCOMPARE(manager.sortItem(), manager.nameToItemId("TITL"));
    QCOMPARE(manager.cardId(), 0UL);
    QCOMPARE(manager.count(), 0);
    QVERIFY(!manager.first());
    const auto &d = privateOf(manager);
    QCOMPARE(d.indexCapacity, 10);
    QCOMPARE(d.currentIndex, &d.indexes[0]);
    QCOMPARE(d.masterIndex, &d.indexes[0]);
    QVERIFY(d.indexes[0].inUse && d.indexes[0].sticky && !d.indexes[1].inUse);
    QCOMPARE(d.boxDir, "F0:");
    QCOMPARE(QByteArray(d.boxName), box.path().mid(3));
}

void KyPDataManagerTest::badPathIsLogged_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("null") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("another drive") << QByteArray("F1:A.BOX");
    QTest::newRow("no base name") << QByteArray("F0:");
    QTest::newRow("folder") << QByteArray("/tmp/");
    QTest::newRow("too long") << "F0:" + QByteArray(300, 'A');
}

void KyPDataManagerTest::badPathIsLogged()
{
    QFETCH(QByteArray, path);
    LogCapture log;
    const KyPDataManager manager(path.isNull() ? nullptr : path.constData(), nullptr, false);
    QVERIFY(!manager.isOpened());
    QCOMPARE(log.lines(), QStringList{"invalid boxFName"});
}

void KyPDataManagerTest::badPathNeverOpens()
{
    KyPDataManager manager("", nullptr, false);
    QVERIFY(!manager.open(false));
    QVERIFY(!manager.open(true));
    QVERIFY(!manager.close());
}

void KyPDataManagerTest::missingBoxIsLogged()
{
    LogCapture log;
    const KyPDataManager manager("F0:NONE.BOX", nullptr, false);
    QVERIFY(!manager.isOpened());
    QCOMPARE(log.lines(), QStringList{"could not open box F0:NONE.BOX"});
}

void KyPDataManagerTest::boxThatWasMissingCanBeOpenedLater()
{
    KyPDataManager manager("F0:TB9999.BOX", nullptr, false);
    QVERIFY(!manager.isOpened());
    const TestBox made;
    QVERIFY(QFile::copy(QString::fromLocal8Bit(qgetenv("HOME") + "/Applications/dtm/" + made.path().mid(3)),
                        QString::fromLocal8Bit(qgetenv("HOME") + "/Applications/dtm/TB9999.BOX")));
    QVERIFY(manager.open(false));
    QVERIFY(manager.isOpened());
    QCOMPARE(manager.count(), -1); // the index table stays empty
    QVERIFY(!manager.first());
}

void KyPDataManagerTest::missingBoxInfoIsLogged()
{
    const TestBox box;
    refuseBoxInfo = true;
    LogCapture log;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QCOMPARE(log.lines(), QStringList{"could not create box info"});
    QVERIFY(manager.isOpened());
    QCOMPARE(manager.nameToItemId("TITL"), 0);
    QCOMPARE(manager.readItemType("TITL"), 0);
    QVERIFY(manager.items().entries().isEmpty());
    QVERIFY(!manager.setInternalUtc("TIME"));
    QCOMPARE(manager.count(), -1);
}

void KyPDataManagerTest::reservedIndexesAreNoMaster()
{
    const TestBox box("F0:pplxtest.IDX", KyPDataManagerSortKey());
    LogCapture log;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QCOMPARE(log.lines(), QStringList{"could not create index info"});
    QVERIFY(manager.isOpened());
    QVERIFY(!privateOf(manager).currentIndex);
    QCOMPARE(manager.count(), -1);
    QCOMPARE(manager.count("F0:pplxtest.IDX"), 0);
}

void KyPDataManagerTest::failedManagerGivesFailureValues()
{
    KyPDataManager manager("F0:NONE.BOX", nullptr, false);
    unsigned long card = 7;
    unsigned long value = 5;
    QVERIFY(!manager.close());
    QCOMPARE(manager.boxHandle(), 0u);
    QCOMPARE(manager.garbageSize(), 0UL);
    QCOMPARE(manager.nameToItemId("TITL"), 0);
    QCOMPARE(manager.readItemType("TITL"), 0);
    QVERIFY(manager.items().entries().isEmpty());
    QVERIFY(!manager.setInternalUtc("TIME"));
    QVERIFY(manager.readItem("TITL", 1).isNull());
    QCOMPARE(manager.readUcharItem("NUMB", 1), -1);
    QCOMPARE(manager.readUshortItem("SHRT", 1), -1);
    QVERIFY(!manager.readUlongItem("LONG", &value, 1));
    QCOMPARE(value, 5UL);
    QVERIFY(!manager.readDateItem("TIME", 1).isValid());
    QVERIFY(!manager.readTimeItem("TIME", 1, true).isValid());
    QVERIFY(!manager.writeAttribute(1, 0x40, true));
    QVERIFY(!manager.startEditCard(1));
    QVERIFY(!manager.editNewCard());
    QVERIFY(!manager.finishEditCard(&card));
    QVERIFY(manager.cancelEditCard());
    QVERIFY(!manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, 7UL);
    QVERIFY(!manager.first() && !manager.last() && !manager.next(1) && !manager.prev(1));
    QCOMPARE(manager.firstCard() + manager.lastCard() + manager.nextCard(1) + manager.prevCard(1), 0UL);
    QCOMPARE(manager.cardIdFromNumber(1), 0UL);
    QCOMPARE(manager.numberFromCardId(1), 0UL);
    QCOMPARE(manager.count(), -1);
    QCOMPARE(manager.sortItem(), 0);
    QVERIFY(!manager.isFiltered());
    QCOMPARE(manager.expectedCardId(), 0UL);
    QCOMPARE(manager.cardId(), 0UL);
}

void KyPDataManagerTest::unreadableIndexIsDeleted()
{
    const TestBox box;
    const QByteArray unreadable = box.file("A.IDX"); // no sort information was ever written
    QVERIFY(makeIndex(unreadable, box, QByteArray(), QByteArray()));
    QVERIFY(makeIndex(box.file("B.IDX"), box, "", QByteArray()));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(!KyPDataManager::checkFile(unreadable.constData()));
    QVERIFY(!rowOf(manager, unreadable));
    QVERIFY(rowOf(manager, box.file("B.IDX")));
    QVERIFY(rowOf(manager, box.master()));
    QVERIFY(privateOf(manager).indexes[1].inUse && !privateOf(manager).indexes[2].inUse);
}

void KyPDataManagerTest::unreadableIndexThatStaysIsPassedOver()
{
    const TestBox box;
    undeletableIndex = box.file("A.IDX");
    QVERIFY(makeIndex(undeletableIndex, box, QByteArray(), QByteArray()));
    QVERIFY(makeIndex(box.file("B.IDX"), box, "", QByteArray()));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(KyPDataManager::checkFile(undeletableIndex.constData()));
    QVERIFY(!rowOf(manager, undeletableIndex));
    QVERIFY(rowOf(manager, box.file("B.IDX")));
    QVERIFY(rowOf(manager, box.master()));
    QVERIFY(!privateOf(manager).indexes[2].inUse);
}

void KyPDataManagerTest::sortInformationOfRows_data()
{
    QTest::addColumn<QByteArray>("sort");
    QTest::addColumn<QByteArray>("sortCode");
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<bool>("isKept");

    QTest::newRow("none") << QByteArray("") << QByteArray() << true << false;
    QTest::newRow("final byte alone") << expression("", 1) << QByteArray() << true << false;
    QTest::newRow("text up") << expression("NUMB\xFE\x80", 7) << QByteArray("NUMB") << true << false;
    QTest::newRow("text down") << expression("NUMB\xFE\x81", 7) << QByteArray("NUMB") << false << false;
    QTest::newRow("plain up") << expression("NUMB\xFE\x82", 7) << QByteArray("NUMB") << true << false;
    QTest::newRow("plain down") << expression("NUMB\xFE\x83", 7) << QByteArray("NUMB") << false << false;
    QTest::newRow("unknown item") << expression("????\xFE\x82", 7) << QByteArray() << true << false;
    QTest::newRow("two keys up") << expression("NUMB\xFE\x82LONG\xFE\x83", 13) << QByteArray() << true
                                 << true;
    QTest::newRow("two keys down") << expression("NUMB\xFE\x83LONG\xFE\x82", 13) << QByteArray() << false
                                   << true;
    QTest::newRow("two keys text down")
        << expression("TITL\xFE\x81LONG\xFE\x82", 13) << QByteArray() << false << true;
}

void KyPDataManagerTest::sortInformationOfRows()
{
    QFETCH(QByteArray, sort);
    QFETCH(QByteArray, sortCode);
    QFETCH(bool, ascending);
    QFETCH(bool, isKept);
    const TestBox box;
    QVERIFY(makeIndex(box.file("B.IDX"), box, sort, QByteArray()));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const auto *row = rowOf(manager, box.file("B.IDX"));
    QVERIFY(row);
    QCOMPARE(int(row->sortItem), sortCode.isEmpty() ? 0 : manager.nameToItemId(sortCode.constData()));
    QCOMPARE(row->ascending, ascending);
    QCOMPARE(int(row->sortExpLength), isKept ? int(sort.size()) : 0);
    if (isKept)
        QCOMPARE(memcmp(row->sortExp, sort.constData(), size_t(sort.size())), 0);
}

void KyPDataManagerTest::searchInformationOfRows_data()
{
    QTest::addColumn<QByteArray>("search");
    QTest::addColumn<int>("category");
    QTest::addColumn<bool>("filtered");

    QTest::newRow("none") << QByteArray() << 0 << false;
    QTest::newRow("seven bytes") << expression("CTGR\xFE\x92", 7) << 0 << false;
    QTest::newRow("category") << expression("CTGR\xFE\x92\x0C\x05", 9) << 5 << false;
    QTest::newRow("unfiled") << expression("CTGR\xFE\x92\x0C\xFE", 9) << 254 << false;
    QTest::newRow("search") << expression("NUMB\xFE\x90\x0B\x05", 9) << 0 << true;
    QTest::newRow("other operator on the category") << expression("CTGR\xFE\x90\x0C\x05", 9) << 0 << true;
}

void KyPDataManagerTest::searchInformationOfRows()
{
    QFETCH(QByteArray, search);
    QFETCH(int, category);
    QFETCH(bool, filtered);
    const TestBox box;
    QVERIFY(makeIndex(box.file("B.IDX"), box, "", search));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const auto *row = rowOf(manager, box.file("B.IDX"));
    QVERIFY(row && row->inUse && row->sticky);
    QCOMPARE(int(row->categoryId), category);
    QCOMPARE(row->filtered, filtered);
    QCOMPARE(privateOf(manager).masterIndex, rowOf(manager, box.master()));
}

void KyPDataManagerTest::temporaryIndexIsAdopted()
{
    const TestBox box;
    QVERIFY(makeIndex("F0:ppinTMP0.tdx", box, "", QByteArray()));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const auto *row = rowOf(manager, "F0:ppinTMP0.tdx");
    QVERIFY(row && row->inUse);
    QVERIFY(!row->sticky);
    QVERIFY(KyPDataManager::checkFile("F0:ppinTMP0.tdx"));
    QCOMPARE(_IndexDelete("F0:ppinTMP0.tdx"), PdtmStatus(PdtmOk));
}

void KyPDataManagerTest::tableHoldsTenIndexes()
{
    const TestBox box;
    for (char letter = 'A'; letter <= 'L'; ++letter)
        QVERIFY(makeIndex(box.file(QByteArray(1, letter) + ".IDX"), box, "", QByteArray()));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    for (const auto &row : privateOf(manager).indexes)
        QVERIFY(row.inUse);
    QVERIFY(manager.isOpened());
}

void KyPDataManagerTest::firstPlainPermanentIndexIsMaster()
{
    const TestBox box("IDX", KyPDataManagerSortKey());
    // Both come before the master in the family.
    QVERIFY(makeIndex(box.file("#1.IDX"), box, "", expression("CTGR\xFE\x92\x0C\x05", 9)));
    QVERIFY(makeIndex(box.file("#2.IDX"), box, "", expression("NUMB\xFE\x90\x0B\x05", 9)));
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const auto &d = privateOf(manager);
    QVERIFY(rowOf(manager, box.file("#1.IDX")) == &d.indexes[0]);
    QVERIFY(rowOf(manager, box.file("#2.IDX")) == &d.indexes[1]);
    QCOMPARE(d.masterIndex, &d.indexes[2]);
    QCOMPARE(d.currentIndex, d.masterIndex);
    QCOMPARE(QByteArray(d.masterIndex->fileName), box.master().mid(3));
}

void KyPDataManagerTest::openOnAnOpenManagerChangesNothing()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const quint32 handle = manager.boxHandle();
    QVERIFY(!manager.open(true));
    QCOMPARE(manager.boxHandle(), handle);
    QVERIFY(addCard(manager, QStringLiteral("a")) != 0);
}

void KyPDataManagerTest::closeAndOpenKeepTheView()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    addCard(manager, QStringLiteral("a"));
    const unsigned long second = addCard(manager, QStringLiteral("b"));
    QVERIFY(manager.last());
    privateOf(manager).ascendent = false;
    QVERIFY(manager.close());
    QVERIFY(!manager.isOpened());
    QVERIFY(manager.readItem("TITL").isNull());
    QVERIFY(!manager.startEditCard(second));
    QVERIFY(manager.open(false));
    QCOMPARE(manager.cardId(), second);
    QVERIFY(!manager.ascendent());
    QCOMPARE(manager.firstCard(), second);
    QCOMPARE(manager.sortItem(), manager.nameToItemId("TITL"));
    QCOMPARE(manager.readItem("TITL"), QStringLiteral("b"));
}

void KyPDataManagerTest::readOnlyReadsBesideAWriter()
{
    const TestBox box;
    KyPDataManager writer(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(writer, QStringLiteral("a"));
    KyPDataManager reader(box.path().constData(), nullptr, true);
    QVERIFY(reader.isOpened());
    QCOMPARE(reader.readItem("TITL", card), QStringLiteral("a"));
    QVERIFY(!reader.writeAttribute(card, 0x01, true));
    unsigned long target = card;
    QVERIFY(!reader.deleteCard(&target, KyPDataManager::DeleteSingle));
    QCOMPARE(target, card);
    KyPDataManager second(box.path().constData(), nullptr, false);
    QVERIFY(!second.isOpened()); // the same process, the same application
}

void KyPDataManagerTest::staticFileCalls()
{
    const TestBox box;
    QVERIFY(KyPDataManager::checkFile(box.path().constData()));
    QVERIFY(KyPDataManager::checkFile(box.master().constData()));
    QVERIFY(!KyPDataManager::checkFile("F0:NONE.BOX"));
    QCOMPARE(KyPDataManager::checkDtmGlobal(), int(CheckFINFO()));
    {
        const KyPDataManager manager(box.path().constData(), nullptr, false);
        QVERIFY(!KyPDataManager::deleteFile(box.path().constData()));
    }
    QVERIFY(KyPDataManager::deleteFile(box.path().constData()));
    QVERIFY(!KyPDataManager::checkFile(box.path().constData()));
    QVERIFY(!KyPDataManager::deleteFile(box.path().constData()));
}

void KyPDataManagerTest::itemNumbersAndTypes()
{
    const TestBox box;
    const KyPDataManager manager(box.path().constData(), nullptr, false);
    QCOMPARE(manager.nameToItemId("TITL"), 1);
    QCOMPARE(manager.nameToItemId("NUMB"), 2);
    QCOMPARE(manager.nameToItemId("NONE"), 0);
    QCOMPARE(manager.readItemType("TITL"), int(ItemTextUtf8));
    QCOMPARE(manager.readItemType("SALT"), int(ItemUshortAlt));
    QCOMPARE(manager.readItemType("ATTR"), int(ItemUchar));
    QCOMPARE(manager.readItemType("NONE"), 0);
}

void KyPDataManagerTest::itemsListsTheBox()
{
    const TestBox box;
    const KyPDataManager manager(box.path().constData(), nullptr, false);
    const QList<KyPDataManagerItem> items = manager.items().entries();
    QSet<QByteArray> codes;
    for (const KyPDataManagerItem &item : items)
        codes.insert(QByteArray(item.code, 4));
    QCOMPARE(codes, (QSet<QByteArray>{"TITL", "NUMB", "FLAG", "SHRT", "SALT", "LONG", "TIME", "BINA", "COLR",
                                      "CTGR", "SJIS", "SJI2", "ATTR", "CTTM", "MDTM", "SYID"}));
    QCOMPARE(QByteArray(items[4].code, 4), "SALT");
    QCOMPARE(int(items[4].type), int(ItemUshortAlt));
    QCOMPARE(items[4].kind, int(KindUshort));
    QCOMPARE(items[4].label, QStringLiteral("other short"));
}

void KyPDataManagerTest::smallAnswers()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QCOMPARE(manager.resumeCardId(), 0xFF10UL);
    const unsigned long expected = manager.expectedCardId();
    QVERIFY(expected != 0);
    QCOMPARE(addCard(manager, QStringLiteral("a")), expected);
    quint32 garbage = 0;
    QCOMPARE(_GetBoxGarbageSize(box.path().constData(), &garbage), PdtmStatus(PdtmOk));
    QCOMPARE(manager.garbageSize(), static_cast<unsigned long>(garbage));
    unsigned char mask = 1, value = 2, third = 3;
    KyPDataManager::getAttrValues(&mask, &value, &third);
    QCOMPARE(int(mask), 0x40);
    QCOMPARE(int(value), 0);
    QCOMPARE(int(third), 0);
}

QTEST_MAIN(KyPDataManagerTest)
#include "kypdatamanagertest.moc"
