#include "japanesetext.h"
#include "logcapture.h"
#include "recordfixture.h"
#include "timeconversion.h"
#include <QFile>
#include <QSet>

Q_DECLARE_METATYPE(QList<int>)

namespace {

int languageCalls = 0;
QByteArray languageGiven;
bool refuseBoxInfo = false;
QByteArray undeletableIndex;

/** True when an int converts to nothing writeItem() takes. */
template <typename T>
concept Writable = requires(KyPDataManager &manager, T value)
{
    manager.writeItem("NUMB", value);
};
template <typename T>
concept Readable = requires(KyPDataManager &manager, T card)
{
    manager.readTimeItem("TIME", card, true);
};
template <typename T>
concept TakesTwo = requires(KyPDataManager &manager, T value)
{
    manager.readTimeItem("TIME", value);
};

static_assert(Writable<unsigned char> && Writable<unsigned short> && Writable<unsigned long>);
static_assert(Writable<QString> && Writable<QDate> && Writable<QDateTime> && Writable<const char *>);
static_assert(!Writable<int> && !Writable<unsigned> && !Writable<bool> && !Writable<char>);
static_assert(!Writable<long> && !Writable<qint64> && !Writable<double> && !Writable<std::nullptr_t>);
static_assert(Readable<unsigned long> && TakesTwo<unsigned long> && !TakesTwo<bool>);

QByteArray ptime(int year, int month, int day, int hour, int minute, int second)
{
    PTimeValue value = {};
    KyPDataManager::createPTime(&value, year, month, day, hour, minute, second);
    return QByteArray(reinterpret_cast<const char *>(value.bytes), sizeof value.bytes);
}

QList<int> fieldsOf(const QByteArray &value)
{
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    ppgettime(value.constData(), &year, &month, &day, &hour, &minute, &second, 0);
    return {year, month, day, hour, minute, second};
}

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

    // reading and writing
    void numbersRoundTrip();
    void textRoundTrips_data();
    void textRoundTrips();
    void unwrittenItems();
    void readersRefuseOtherTypes_data();
    void readersRefuseOtherTypes();
    void readersTakeTheCurrentCard();
    void storeFailuresOfNumbersAreLogged();
    void unsignedLongReadsBinary();
    void colourIsWrittenRaw();
    void writingNeedsAnEdit();
    void textWriterRefusesOtherTypes();
    void rawWriterIgnoresTheType();
    void failedWriteIsLogged();
    void nullAndClearEmptyAnItem();
    void datesHaveNoTime();
    void invalidTimesAreRefused();
    void timesInUtcAndLocal_data();
    void timesInUtcAndLocal();
    void timesThatCannotBeRead();
    void setInternalUtcIsForTimeItems();
    void currentTimeIsUtc();
    void writeAttributeWorksInPlace();
    void createPTimeForms();
    void shortAndNullCodes();
};

void KyPDataManagerTest::init()
{
    refuseBoxInfo = false;
    undeletableIndex.clear();
    qputenv("TZ", "Asia/Tokyo");
    tzset();
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

void KyPDataManagerTest::numbersRoundTrip()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("NUMB", static_cast<unsigned char>(0xF1)));
    QVERIFY(manager.writeItem("FLAG", static_cast<unsigned char>(0x81)));
    QVERIFY(manager.writeItem("SHRT", static_cast<unsigned short>(0xF102)));
    QVERIFY(manager.writeItem("SALT", static_cast<unsigned short>(0x0304)));
    QVERIFY(manager.writeItem("LONG", 0xF1020304UL));
    QVERIFY(manager.finishEditCard(&card));

    QCOMPARE(manager.readUcharItem("NUMB", card), 0xF1);
    QCOMPARE(manager.readUcharItem("FLAG", card), 0x81);
    QCOMPARE(manager.readUshortItem("SHRT", card), 0xF102);
    QCOMPARE(manager.readUshortItem("SALT", card), 0x0304);
    unsigned long value = 0;
    QVERIFY(manager.readUlongItem("LONG", &value, card));
    QCOMPARE(value, 0xF1020304UL);
    QCOMPARE(storedBytes(manager, card, "NUMB").size(), 1);
    QCOMPARE(storedBytes(manager, card, "SHRT").size(), 2);
    QCOMPARE(storedBytes(manager, card, "LONG").size(), 4);
}

void KyPDataManagerTest::textRoundTrips_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("stored");

    const QString japanese = QString::fromUtf8("山田 ｶﾅ A");
    QTest::newRow("utf8") << QByteArray("TITL") << japanese << japanese.toUtf8();
    QTest::newRow("sjis") << QByteArray("SJIS") << japanese << QByteArray("\x8E\x52\x93\x63 \xB6\xC5 A");
    QTest::newRow("sjis 2") << QByteArray("SJI2") << japanese << QByteArray("\x8E\x52\x93\x63 \xB6\xC5 A");
    QTest::newRow("zero inside") << QByteArray("TITL") << QString(QChar(0)) + QLatin1Char('x')
                                 << QByteArray("\0x", 2);
    QTest::newRow("empty") << QByteArray("TITL") << QStringLiteral("") << QByteArray("");
}

void KyPDataManagerTest::textRoundTrips()
{
    QFETCH(QByteArray, code);
    QFETCH(QString, text);
    QFETCH(QByteArray, stored);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem(code.constData(), text));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem(code.constData(), card), text);
    QVERIFY(!manager.readItem(code.constData(), card).isNull());
    QCOMPARE(storedBytes(manager, card, code.constData()), stored);
}

void KyPDataManagerTest::unwrittenItems()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard() && manager.finishEditCard(&card));
    for (const char *code : {"TITL", "SJIS", "SJI2"}) {
        QVERIFY(manager.readItem(code, card).isEmpty());
        QVERIFY(!manager.readItem(code, card).isNull());
    }
    QVERIFY(manager.readItem("NUMB", card).isNull());
    QCOMPARE(manager.readUcharItem("NUMB", card), -1);
    QCOMPARE(manager.readUshortItem("SHRT", card), -1);
    unsigned long value = 5;
    QVERIFY(!manager.readUlongItem("LONG", &value, card));
    QCOMPARE(value, 5UL);
    QVERIFY(!manager.readDateItem("TIME", card).isValid());
    QVERIFY(!manager.readTimeItem("TIME", card).isValid());
}

void KyPDataManagerTest::readersRefuseOtherTypes_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QString>("accepting");
    QTest::newRow("text") << QByteArray("TITL") << "text";
    QTest::newRow("text sjis") << QByteArray("SJIS") << "text";
    QTest::newRow("uchar") << QByteArray("NUMB") << "uchar";
    QTest::newRow("bit") << QByteArray("FLAG") << "uchar";
    QTest::newRow("ushort") << QByteArray("SHRT") << "ushort";
    QTest::newRow("ushort alt") << QByteArray("SALT") << "ushort";
    QTest::newRow("ulong") << QByteArray("LONG") << "ulong";
    QTest::newRow("binary") << QByteArray("BINA") << "ulong";
    QTest::newRow("time") << QByteArray("TIME") << "time";
    QTest::newRow("colour") << QByteArray("COLR") << "";
    QTest::newRow("category") << QByteArray("CTGR") << "";
    QTest::newRow("unknown") << QByteArray("NONE") << "";
}

void KyPDataManagerTest::readersRefuseOtherTypes()
{
    QFETCH(QByteArray, code);
    QFETCH(QString, accepting);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    // A length that the accepting reader takes, so that each refusal is by the type.
    const QMap<QString, QByteArray> values = {{"text", "abc"},
                                              {"uchar", "a"},
                                              {"ushort", "ab"},
                                              {"ulong", "abcd"},
                                              {"time", ptime(2001, 2, 3, 4, 5, 6)},
                                              {"", "abcd"}};
    const QByteArray value = values.value(accepting);
    QCOMPARE(manager.writeItem(code.constData(), value.constData(), static_cast<unsigned long>(value.size())),
             code != "NONE");
    QVERIFY(manager.finishEditCard(&card));
    unsigned long number = 0;
    QCOMPARE(!manager.readItem(code.constData(), card).isNull(), accepting == "text");
    QCOMPARE(manager.readUcharItem(code.constData(), card) >= 0, accepting == "uchar");
    QCOMPARE(manager.readUshortItem(code.constData(), card) >= 0, accepting == "ushort");
    QCOMPARE(manager.readUlongItem(code.constData(), &number, card), accepting == "ulong");
    QCOMPARE(manager.readDateItem(code.constData(), card).isValid(), accepting == "time");
    QCOMPARE(manager.readTimeItem(code.constData(), card).isValid(), accepting == "time");
}

void KyPDataManagerTest::readersTakeTheCurrentCard()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long first = addCard(manager, QStringLiteral("a"));
    addCard(manager, QStringLiteral("b"));
    QVERIFY(manager.readItem("TITL").isNull()); // no current card yet
    QVERIFY(manager.last());
    QCOMPARE(manager.readItem("TITL"), QStringLiteral("b"));
    QCOMPARE(manager.readItem("TITL", 0), QStringLiteral("b"));
    QCOMPARE(manager.readItem("TITL", first), QStringLiteral("a"));
}

void KyPDataManagerTest::storeFailuresOfNumbersAreLogged()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long value = 0;
    LogCapture log;
    QCOMPARE(manager.readUshortItem("SHRT", 77), -1);
    QVERIFY(!manager.readUlongItem("LONG", &value, 77));
    QCOMPARE(manager.readUcharItem("NUMB", 77), -1);
    QCOMPARE(log.lines().size(), 2);
    QVERIFY(log.lines()[0].startsWith("KyPDataManager::readUshortItem error in CardRead 77 41 "));
    QVERIFY(log.lines()[1].startsWith("KyPDataManager::readUlongItem error in CardRead 77 41 "));

    log.clear();
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(storeBytes(manager, card, "BINA", "123456"));
    QVERIFY(!manager.readUlongItem("BINA", &value, card));
    QCOMPARE(
        log.lines(),
        QStringList{QStringLiteral("KyPDataManager::readUlongItem error in CardRead %1 44 6").arg(card)});
}

void KyPDataManagerTest::unsignedLongReadsBinary()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    const quint32 stored = 0x80000001;
    QVERIFY(storeBytes(manager, card, "BINA",
                       QByteArray(reinterpret_cast<const char *>(&stored), sizeof stored)));
    unsigned long value = 0;
    QVERIFY(manager.readUlongItem("BINA", &value, card));
    QCOMPARE(value, 0x80000001UL);
    QVERIFY(storeBytes(manager, card, "BINA", "123"));
    QVERIFY(!manager.readUlongItem("BINA", &value, card));
    QCOMPARE(value, 0x80000001UL);
}

void KyPDataManagerTest::colourIsWrittenRaw()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("COLR", "\0\1\2\3", 4));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "COLR"), QByteArray("\0\1\2\3", 4));
}

void KyPDataManagerTest::writingNeedsAnEdit()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.first());
    LogCapture log;
    QVERIFY(!manager.writeItem("TITL", "x", 1));
    QVERIFY(!manager.writeItem("TITL", QStringLiteral("x")));
    QVERIFY(!manager.writeItem("NUMB", QStringLiteral("x")));
    QVERIFY(!manager.writeItem("TIME", QDateTime::currentDateTime()));
    QVERIFY(!manager.writeItem("TIME", QDate::currentDate()));
    QVERIFY(!manager.writeItem("NUMB", static_cast<unsigned char>(1)));
    QVERIFY(!manager.writeItem("SHRT", static_cast<unsigned short>(1)));
    QVERIFY(!manager.writeItem("LONG", 1UL));
    QVERIFY(!manager.clearItem("TITL"));
    QVERIFY(!manager.writeCurrentTime("TIME", true));
    QVERIFY(!manager.writeCurrentTime("NUMB", true));
    QVERIFY(log.lines().isEmpty());
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
}

void KyPDataManagerTest::textWriterRefusesOtherTypes()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.editNewCard());
    for (const char *code : {"NUMB", "TIME", "BINA", "CTGR", "NONE"}) {
        LogCapture log;
        QVERIFY(!manager.writeItem(code, QStringLiteral("x")));
        QCOMPARE(log.lines(),
                 QStringList{QStringLiteral("KyPDataManager::writeItem error in writing %1.").arg(code)});
    }
    QVERIFY(manager.writeItem("TITL", "a literal is text"));
    unsigned long card = 0;
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a literal is text"));
}

void KyPDataManagerTest::rawWriterIgnoresTheType()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("NUMB", "three", 5));
    QVERIFY(manager.writeItem("TITL", static_cast<unsigned char>('q')));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "NUMB"), "three");
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("q"));
    QCOMPARE(manager.readUcharItem("NUMB", card), -1);
}

void KyPDataManagerTest::failedWriteIsLogged()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.editNewCard());
    LogCapture log;
    QVERIFY(!manager.writeItem("NONE", "x", 1));
    QCOMPARE(log.lines(), QStringList{"KyPDataManager::writeItem error in writing NONE."});
    QCOMPARE(int(privateOf(manager).lastError), int(PdtmNoSuchItem));
    QVERIFY(!privateOf(manager).editModified);
    QVERIFY(!manager.writeItem("TITL", "x", 0x100000001UL));
}

void KyPDataManagerTest::nullAndClearEmptyAnItem()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", static_cast<const char *>(nullptr), 5));
    QVERIFY(manager.writeItem("BINA", "abc", 3));
    QVERIFY(manager.clearItem("BINA"));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "TITL"), "");
    QCOMPARE(storedBytes(manager, card, "BINA"), "");
}

void KyPDataManagerTest::datesHaveNoTime()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("TIME", QDate(2026, 2, 28)));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(fieldsOf(storedBytes(manager, card, "TIME")), (QList<int>{2026, 2, 28, 31, 63, 63}));
    QCOMPARE(manager.readDateItem("TIME", card), QDate(2026, 2, 28));
    QCOMPARE(manager.readTimeItem("TIME", card), QDateTime(QDate(2026, 2, 28), QTime(0, 0)));
}

void KyPDataManagerTest::invalidTimesAreRefused()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.editNewCard());
    QVERIFY(!manager.writeItem("TIME", QDateTime()));
    QVERIFY(!manager.writeItem("TIME", QDateTime(QDate(), QTime(1, 2))));
    QVERIFY(!manager.writeItem("TIME", QDate()));
    QVERIFY(!manager.writeItem("TIME", QDate(2026, 2, 29)));
    QVERIFY(!manager.writeItem("TIME", QDate(10000, 1, 1)));
    QVERIFY(!manager.writeItem("TIME", QDateTime(QDate(10000, 1, 1), QTime(0, 0))));
    QVERIFY(!manager.writeItem("TIME", QDate(-1, 1, 1)));
    QVERIFY(!privateOf(manager).editModified);
}

void KyPDataManagerTest::timesInUtcAndLocal_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("wanted");
    QTest::addColumn<QDateTime>("expected");

    const QDate day(2026, 7, 1);
    const QByteArray tokyo("Asia/Tokyo"), berlin("Europe/Berlin");
    const QTime noon(12, 30, 15);
    QTest::newRow("local as it stands") << tokyo << false << false << QDateTime(day, noon);
    QTest::newRow("utc as it stands") << tokyo << true << true << QDateTime(day, noon, Qt::UTC);
    QTest::newRow("local to utc") << tokyo << false << true << QDateTime(day, QTime(3, 30, 15), Qt::UTC);
    QTest::newRow("utc to local") << tokyo << true << false << QDateTime(day, QTime(21, 30, 15));
    QTest::newRow("summer to utc") << berlin << false << true << QDateTime(day, QTime(10, 30, 15), Qt::UTC);
    QTest::newRow("utc to summer") << berlin << true << false << QDateTime(day, QTime(14, 30, 15));
}

void KyPDataManagerTest::timesInUtcAndLocal()
{
    QFETCH(QByteArray, zone);
    QFETCH(bool, stored);
    QFETCH(bool, wanted);
    QFETCH(QDateTime, expected);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("TIME", QDateTime(QDate(2026, 7, 1), QTime(12, 30, 15))));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(fieldsOf(storedBytes(manager, card, "TIME")), (QList<int>{2026, 7, 1, 12, 30, 15}));
    if (stored)
        QVERIFY(manager.setInternalUtc("TIME"));
    qputenv("TZ", zone); // tzset() is up to the reader
    const QDateTime read = manager.readTimeItem("TIME", card, wanted);
    QCOMPARE(read.date(), expected.date());
    QCOMPARE(read.time(), expected.time());
    QCOMPARE(read.timeSpec(), expected.timeSpec());
    QCOMPARE(manager.readDateItem("TIME", card), QDate(2026, 7, 1));
}

void KyPDataManagerTest::timesThatCannotBeRead()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    for (const QByteArray &bytes :
         {QByteArray(""), QByteArray("abcd"), QByteArray("abcdef"), ptime(2026, 0, 0, 0, 0, 0)}) {
        QVERIFY(storeBytes(manager, card, "TIME", bytes));
        QVERIFY(!manager.readTimeItem("TIME", card, false).isValid());
        QVERIFY(!manager.readTimeItem("TIME", card, true).isValid());
        QVERIFY(!manager.readDateItem("TIME", card).isValid());
    }
    QVERIFY(!manager.readTimeItem("TIME", 77).isValid());
}

void KyPDataManagerTest::setInternalUtcIsForTimeItems()
{
    const TestBox box;
    unsigned long card = 0;
    {
        KyPDataManager manager(box.path().constData(), nullptr, false);
        QVERIFY(!manager.setInternalUtc("TITL"));
        QVERIFY(!manager.setInternalUtc("NONE"));
        QVERIFY(manager.setInternalUtc("TIME"));
        QVERIFY(manager.setInternalUtc("TIME"));
        QVERIFY(manager.editNewCard());
        QVERIFY(manager.writeItem("TIME", QDateTime(QDate(2026, 7, 1), QTime(12, 0))));
        QVERIFY(manager.finishEditCard(&card));
        QCOMPARE(manager.readTimeItem("TIME", card).time(), QTime(21, 0));
    }
    const KyPDataManager other(box.path().constData(), nullptr, false);
    QCOMPARE(other.readTimeItem("TIME", card).time(), QTime(12, 0)); // nothing of it is in the box
}

void KyPDataManagerTest::currentTimeIsUtc()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    LogCapture log;
    QVERIFY(!manager.writeCurrentTime("NUMB", true));
    QCOMPARE(log.lines(), QStringList{"KyPDataManager::writeCurrentItem it isn't time item NUMB."});
    for (const bool flag : {true, false}) {
        const time_t before = time(nullptr);
        QVERIFY(manager.writeCurrentTime("TIME", flag));
        const QDateTime written = manager.readTimeItem("TIME", WorkCardId, false); // as it stands
        const time_t moment = TimeConversion::toRawUTC(written);
        QVERIFY(moment >= before && moment <= time(nullptr));
    }
    QVERIFY(manager.finishEditCard(&card));
}

void KyPDataManagerTest::writeAttributeWorksInPlace()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    const QByteArray longAgo = ptime(2001, 1, 1, 1, 1, 1);
    QVERIFY(storeBytes(manager, card, "MDTM", longAgo));
    QVERIFY(manager.writeAttribute(card, 0x05, true));
    QCOMPARE(storedBytes(manager, card, "ATTR"), "\x05");
    QVERIFY(manager.writeAttribute(card, 0x04, false));
    QCOMPARE(storedBytes(manager, card, "ATTR"), "\x01");
    QCOMPARE(storedBytes(manager, card, "MDTM"), longAgo);
    QVERIFY(!privateOf(manager).editModified);
    QVERIFY(!privateOf(manager).editing);
    QCOMPARE(privateOf(manager).workCard, 0UL);
    QVERIFY(!manager.finishEditCard(&card));
    QVERIFY(!manager.writeAttribute(77, 0x01, true));
    QVERIFY(manager.first());
    QVERIFY(manager.writeAttribute(0, 0x40, true)); // the current card
    QCOMPARE(storedBytes(manager, card, "ATTR"), "\x41");
    QCOMPARE(manager.count(), 0);
}

void KyPDataManagerTest::createPTimeForms()
{
    PTimeValue value = {};
    QVERIFY(KyPDataManager::createPTime(&value, 1999, 12, 31, 31, 63, 63));
    const auto bytes = [&value] { return QByteArray(reinterpret_cast<const char *>(value.bytes), 5); };
    QCOMPARE(fieldsOf(bytes()), (QList<int>{1999, 12, 31, 31, 63, 63}));
    const QByteArray before = bytes();
    QVERIFY(KyPDataManager::createPTime(&value, 10000, 1, 1, 0, 0, 0)); // always true
    QCOMPARE(bytes(), before);
    KyPDataManager::createPTime(&value, QDateTime(QDate(2026, 7, 1), QTime(1, 2, 3), Qt::UTC));
    QCOMPARE(fieldsOf(bytes()), (QList<int>{2026, 7, 1, 1, 2, 3}));
}

void KyPDataManagerTest::shortAndNullCodes()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    const char unterminated[4] = {'T', 'I', 'T', 'L'};
    QCOMPARE(manager.readItem(unterminated, card), QStringLiteral("a"));
    QCOMPARE(manager.readItem("TITLE", card), QStringLiteral("a")); // four characters count
    for (const char *code : {static_cast<const char *>(nullptr), "", "TI"}) {
        QVERIFY(manager.readItem(code, card).isNull());
        QCOMPARE(manager.nameToItemId(code), 0);
        QCOMPARE(manager.readItemType(code), 0);
        QVERIFY(!manager.setInternalUtc(code));
        QVERIFY(manager.editNewCard());
        QVERIFY(!manager.writeItem(code, "x", 1));
        QVERIFY(manager.cancelEditCard());
    }
}

QTEST_MAIN(KyPDataManagerTest)
#include "kypdatamanagertest.moc"
