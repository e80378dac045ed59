#include "boxfixture.h"

#include <QtTest>

using namespace boxfixture;

/** The operations on cards, with their results. */
class CardTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void createGivesRisingIds();
    void createWithAnId();
    void newCardHasAttributeZero();
    void copyMakesOrOverwrites();
    void copyRefuses();
    void deleteCard();
    void deletedIdsAreNotUsedAgain();
    void deleteAll();
    void deleteByAttribute();
    void readLearnsTheLength();
    void readRefuses();
    void writeAndClear();
    void writeRefuses();
    void itemsOfEveryKind_data();
    void itemsOfEveryKind();
    void lowerCaseItemCodes_data();
    void lowerCaseItemCodes();
    void longItems_data();
    void longItems();
    void categories();
    void categoriesOfTheWorkCard();
    void categoriesRefuse();
    void idsWrapAround();
    void idsUsedUp();
    void reservedIds();
    void workCardSurvivesAClose();
    void workCardLeavesTheFileWithTheNextCommit();
    void workCardLeavesTheFileForANewCard();
    void newCardsAreAppendedBesideAWorkCard();
    void deletingAnAbsentWorkCardIsHarmless();
    void syncId();
    void manyCardsReadFromMemory();
    void cardsChangeInMemoryAndFile();

private:
    void reopen();
    QString path() const { return internalPath(m_box.mid(3).constData()); }
    QByteArray m_box;
    uint32_t m_handle = 0;
    int m_number = 0;
};

void CardTest::init()
{
    m_box = "F0:C" + QByteArray::number(++m_number) + ".BOX";
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(m_handle);
}

void CardTest::cleanup()
{
    QCOMPARE(_BoxClose(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
}

void CardTest::reopen()
{
    QCOMPARE(_BoxClose(m_handle), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(m_handle);
}

void CardTest::createGivesRisingIds()
{
    for (uint16_t expected = 1; expected < 5; ++expected) {
        uint16_t next = 0;
        uint16_t card = 0;
        QCOMPARE(_ExpectNewCardID(m_handle, &next), PdtmStatus(PdtmOk));
        QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk));
        QCOMPARE(card, expected);
        QCOMPARE(next, expected);
    }
    QCOMPARE(_CardCreate(m_handle, nullptr), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_ExpectNewCardID(m_handle, nullptr), PdtmStatus(PdtmBadArgument));
}

void CardTest::createWithAnId()
{
    uint16_t card = 40;
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, uint16_t(40));
    QCOMPARE(write(m_handle, 40, "NAPR", "kept"), PdtmStatus(PdtmOk));
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmExists));
    QCOMPARE(read(m_handle, 40, "NAPR"), QByteArray("kept"));
    card = 0;
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, uint16_t(41));
}

void CardTest::newCardHasAttributeZero()
{
    uint16_t card = 0;
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, card, "ATTR"), QByteArray(1, '\0'));
    for (const char *code : {"NAPR", "CTTM", "MDTM", "SYID", "CTGR", "AGEU"})
        QCOMPARE(read(m_handle, card, code), QByteArray());
}

void CardTest::copyMakesOrOverwrites()
{
    const uint16_t source = addCard(m_handle, "source");
    uint16_t made = 0;
    QCOMPARE(_CardCopy(m_handle, source, &made), PdtmStatus(PdtmOk));
    QCOMPARE(made, uint16_t(2));
    uint16_t absent = 700;
    QCOMPARE(_CardCopy(m_handle, source, &absent), PdtmStatus(PdtmOk));
    QCOMPARE(absent, uint16_t(700));
    QCOMPARE(write(m_handle, source, "NAPR", "changed"), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 700, "AGEU", "xx"), PdtmStatus(PdtmOk));
    QCOMPARE(_CardCopy(m_handle, source, &absent), PdtmStatus(PdtmOk));
    reopen();
    QCOMPARE(read(m_handle, made, "NAPR"), QByteArray("source"));
    QCOMPARE(read(m_handle, 700, "NAPR"), QByteArray("changed"));
    QCOMPARE(read(m_handle, 700, "AGEU"), QByteArray());
}

void CardTest::copyRefuses()
{
    uint16_t destination = 0;
    QCOMPARE(_CardCopy(m_handle, 5, &destination), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(_CardCopy(m_handle, 0, &destination), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(_CardCopy(m_handle, PdtmWorkCard, &destination), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(destination, uint16_t(0));
    QCOMPARE(_CardCopy(m_handle, 5, nullptr), PdtmStatus(PdtmBadArgument));
    uint16_t next = 0;
    QCOMPARE(_ExpectNewCardID(m_handle, &next), PdtmStatus(PdtmOk));
    QCOMPARE(next, uint16_t(1));
}

void CardTest::deleteCard()
{
    const uint16_t first = addCard(m_handle, "first");
    const uint16_t second = addCard(m_handle, "second");
    QCOMPARE(_CardDelete(m_handle, first), PdtmStatus(PdtmOk));
    QCOMPARE(_CardDelete(m_handle, first), PdtmStatus(PdtmOk));
    QCOMPARE(_CardDelete(m_handle, 0), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, first, "NAPR"), QByteArray("status 65"));
    reopen();
    QCOMPARE(read(m_handle, first, "NAPR"), QByteArray("status 65"));
    QCOMPARE(read(m_handle, second, "NAPR"), QByteArray("second"));
}

void CardTest::deletedIdsAreNotUsedAgain()
{
    addCard(m_handle, "one");
    const uint16_t last = addCard(m_handle, "two");
    QCOMPARE(_CardDelete(m_handle, last), PdtmStatus(PdtmOk));
    reopen();
    QCOMPARE(addCard(m_handle, "three"), uint16_t(last + 1));
}

void CardTest::deleteAll()
{
    QCOMPARE(_CardAllDelete(m_handle, 0, 0, 0), PdtmStatus(PdtmOk));
    for (int i = 0; i < 100; ++i)
        QVERIFY(addCard(m_handle, "x"));
    QCOMPARE(_CardAllDelete(m_handle, 0, 0, 0), PdtmStatus(PdtmOk));
    QCOMPARE(sql(path(), "SELECT count(*) FROM cards WHERE id < 65280"), QByteArray("0"));
    QCOMPARE(read(m_handle, PdtmWorkCard, "NAPR"), QByteArray("x"));
    QCOMPARE(addCard(m_handle, "next"), uint16_t(101));
}

void CardTest::deleteByAttribute()
{
    for (int i = 1; i <= 60; ++i) {
        const uint16_t card = addCard(m_handle, "x");
        if (i % 3 == 0)
            QCOMPARE(write(m_handle, card, "ATTR", i % 2 ? "\x41" : "\x40"), PdtmStatus(PdtmOk));
    }
    QCOMPARE(_CardAllDelete(m_handle, 0x40, 0x40, 0), PdtmStatus(PdtmOk));
    for (uint16_t card = 1; card <= 60; ++card)
        QCOMPARE(read(m_handle, card, "NAPR"), QByteArray(card % 3 ? "x" : "status 65"));
}

void CardTest::readLearnsTheLength()
{
    const uint16_t card = addCard(m_handle, "Tanaka");
    const CardItemKey name = key(card, "NAPR");
    uint32_t size = 0;
    QCOMPARE(_CardRead(m_handle, &name, nullptr, &size), PdtmStatus(PdtmTooShort));
    QCOMPARE(size, 6U);
    char buffer[6] = {'.', '.', '.', '.', '.', '.'};
    size = 5;
    QCOMPARE(_CardRead(m_handle, &name, buffer, &size), PdtmStatus(PdtmTooShort));
    QCOMPARE(size, 6U);
    QCOMPARE(QByteArray(buffer, 6), QByteArray("......"));
    QCOMPARE(_CardRead(m_handle, &name, buffer, &size), PdtmStatus(PdtmOk));
    QCOMPARE(QByteArray(buffer, 6), QByteArray("Tanaka"));

    const CardItemKey address = key(card, "ADRS");
    size = 0;
    QCOMPARE(_CardRead(m_handle, &address, nullptr, &size), PdtmStatus(PdtmOk));
    QCOMPARE(size, 0U);
}

void CardTest::readRefuses()
{
    const uint16_t card = addCard(m_handle, "x");
    CardItemKey item = key(card, "ZZZZ");
    uint32_t size = 0;
    QCOMPARE(_CardRead(m_handle, &item, nullptr, &size), PdtmStatus(PdtmNoSuchItem));
    for (const uint16_t absent : std::initializer_list<uint16_t>{0, 99, 0xFF10, 0xFFFF}) {
        item = key(absent, "NAPR");
        QCOMPARE(_CardRead(m_handle, &item, nullptr, &size), PdtmStatus(PdtmNoSuchCard));
    }
    item = key(card, "NAPR");
    QCOMPARE(_CardRead(m_handle, nullptr, nullptr, &size), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_CardRead(m_handle, &item, nullptr, nullptr), PdtmStatus(PdtmBadArgument));
    size = 10;
    QCOMPARE(_CardRead(m_handle, &item, nullptr, &size), PdtmStatus(PdtmBadArgument));
}

void CardTest::writeAndClear()
{
    const uint16_t card = addCard(m_handle, "name");
    QCOMPARE(write(m_handle, card, "ADRS", "address"), PdtmStatus(PdtmOk));
    const CardItemKey name = key(card, "NAPR");
    QCOMPARE(_CardWrite(m_handle, &name, "\0", 0), PdtmStatus(PdtmOk));
    QCOMPARE(_CardWrite(m_handle, &name, nullptr, 0), PdtmStatus(PdtmOk));
    reopen();
    QCOMPARE(read(m_handle, card, "NAPR"), QByteArray());
    QCOMPARE(read(m_handle, card, "ADRS"), QByteArray("address"));
}

void CardTest::writeRefuses()
{
    const uint16_t card = addCard(m_handle, "name");
    const CardItemKey name = key(card, "NAPR");
    QCOMPARE(write(m_handle, card, "ZZZZ", "x"), PdtmStatus(PdtmNoSuchItem));
    QCOMPARE(write(m_handle, 99, "NAPR", "x"), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(write(m_handle, 0xFF01, "NAPR", "x"), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(_CardWrite(m_handle, &name, nullptr, 3), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_CardWrite(m_handle, nullptr, "x", 1), PdtmStatus(PdtmBadArgument));
    QCOMPARE(write(m_handle, card, "NAPR", QByteArray((64 << 20) + 1, 'x')), PdtmStatus(PdtmTooShort));
    QCOMPARE(read(m_handle, card, "NAPR"), QByteArray("name"));
}

void CardTest::itemsOfEveryKind_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("text sjis") << 1 << 18 << QByteArray("\x93\x63\x92\x86");
    QTest::newRow("time") << 4 << 6 << QByteArray("\x00\x01\x02\x03\x04", 5);
    QTest::newRow("bit") << 6 << 13 << QByteArray("\x01");
    QTest::newRow("ushort") << 8 << 14 << QByteArray("\x00\x80", 2);
    QTest::newRow("binary") << 9 << 11 << QByteArray("\x00\xFF\x00", 3);
    QTest::newRow("ushort alt") << 10 << 14 << QByteArray("\x34\x12");
    QTest::newRow("uchar") << 11 << 13 << QByteArray(1, '\0');
    QTest::newRow("category") << 12 << 8 << QByteArray("\x01\xF5");
    QTest::newRow("color") << 13 << 12 << QByteArray("\x01\x02\x03\x04");
    QTest::newRow("text sjis 2") << 16 << 18 << QByteArray("\x93\x63");
    QTest::newRow("text utf-8") << 17 << 18 << QByteArray("\xE7\x94\xB0");
    QTest::newRow("ulong") << 18 << 15 << QByteArray("\xFF\xFF\xFF\x7F");
}

void CardTest::itemsOfEveryKind()
{
    QFETCH(int, type);
    QFETCH(int, kind);
    QFETCH(QByteArray, value);
    const ITEMDATA item = itemData(uint8_t(type), uint8_t(kind), "ITEM", "");
    _BoxClose(m_handle);
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, 1, nullptr), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    const uint16_t card = addCard(m_handle, "name");
    QCOMPARE(write(m_handle, card, "ITEM", value), PdtmStatus(PdtmOk));
    reopen();
    QCOMPARE(read(m_handle, card, "ITEM"), value);
    QCOMPARE(read(m_handle, card, "NAPR"), QByteArray("name"));
}

void CardTest::lowerCaseItemCodes_data()
{
    QTest::addColumn<QByteArray>("code");
    for (const char *code : {"aDRS", "ADRS"})
        QTest::newRow(code) << QByteArray(code);
}

void CardTest::lowerCaseItemCodes()
{
    QFETCH(QByteArray, code);
    const uint16_t card = addCard(m_handle, "name");
    QCOMPARE(write(m_handle, card, code.constData(), "street"), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, card, "aDRS"), QByteArray("street"));
    QCOMPARE(read(m_handle, card, "ADRS"), QByteArray("street"));
    QCOMPARE(read(m_handle, card, "aDrS"), QByteArray("status 69"));
    const CardItemKey categories = key(card, "cTGR");
    QCOMPARE(_CardCategoryAppend(m_handle, &categories, 9), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, card, "CTGR"), QByteArray("\x09"));
}

void CardTest::longItems_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 127, 128, 4096, 16383, 16384, 300000})
        QTest::addRow("%d bytes", size) << size;
}

void CardTest::longItems()
{
    QFETCH(int, size);
    const QByteArray value(size, 'y');
    const uint16_t card = addCard(m_handle, "name");
    QCOMPARE(write(m_handle, card, "ADRS", value), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, card, "AGEU", "xx"), PdtmStatus(PdtmOk));
    reopen();
    QCOMPARE(read(m_handle, card, "ADRS"), value);
    QCOMPARE(read(m_handle, card, "AGEU"), QByteArray("xx"));
}

void CardTest::categories()
{
    const uint16_t card = addCard(m_handle, "name");
    const CardItemKey item = key(card, "CTGR");
    for (const uint8_t category : std::initializer_list<uint8_t>{3, 7, 3})
        QCOMPARE(_CardCategoryAppend(m_handle, &item, category), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, card, "CTGR"), QByteArray("\x03\x07"));
    QCOMPARE(_CardCategoryDelete(m_handle, &item, 9), PdtmStatus(PdtmOk));
    QCOMPARE(_CardCategoryDelete(m_handle, &item, 3), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, card, "CTGR"), QByteArray("\x07"));
    QCOMPARE(_CardCategoryAppend(m_handle, &item, 8), PdtmStatus(PdtmOk));
    QCOMPARE(_CardCategoryAppend(m_handle, &item, PdtmUnfiledCategory), PdtmStatus(PdtmOk));
    reopen();
    QCOMPARE(read(m_handle, card, "CTGR"), QByteArray());
    QCOMPARE(_CardCategoryDelete(m_handle, &item, 3), PdtmStatus(PdtmOk));
}

void CardTest::categoriesOfTheWorkCard()
{
    uint16_t work = PdtmWorkCard;
    QCOMPARE(_CardCreate(m_handle, &work), PdtmStatus(PdtmOk));
    const CardItemKey item = key(work, "CTGR");
    QCOMPARE(_CardCategoryAppend(m_handle, &item, 3), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, work, "CTGR"), QByteArray("\x03"));
}

void CardTest::categoriesRefuse()
{
    const uint16_t card = addCard(m_handle, "name");
    const CardItemKey absentCard = key(99, "CTGR");
    const CardItemKey absentItem = key(card, "ZZZZ");
    const CardItemKey text = key(card, "NAPR");
    for (const auto operation : {_CardCategoryAppend, _CardCategoryDelete}) {
        QCOMPARE(operation(m_handle, &absentCard, 3), PdtmStatus(PdtmNoSuchCard));
        QCOMPARE(operation(m_handle, &absentItem, 3), PdtmStatus(PdtmNoSuchItem));
        QCOMPARE(operation(m_handle, &text, 3), PdtmStatus(PdtmBadArgument));
        QCOMPARE(operation(m_handle, nullptr, 3), PdtmStatus(PdtmBadArgument));
    }
    QCOMPARE(read(m_handle, card, "NAPR"), QByteArray("name"));
}

void CardTest::idsWrapAround()
{
    addCard(m_handle, "one");
    addCard(m_handle, "two");
    QCOMPARE(_CardDelete(m_handle, 1), PdtmStatus(PdtmOk));
    _BoxClose(m_handle);
    sql(path(), "UPDATE box SET next_card = 65279");
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(m_handle, "last"), uint16_t(PdtmLastOrdinaryCard));
    QCOMPARE(addCard(m_handle, "first again"), uint16_t(1));
    uint16_t next = 0;
    QCOMPARE(_ExpectNewCardID(m_handle, &next), PdtmStatus(PdtmOk));
    QCOMPARE(next, uint16_t(3));
    reopen();
    QCOMPARE(addCard(m_handle, "behind two"), uint16_t(3));
}

void CardTest::idsUsedUp()
{
    _BoxClose(m_handle);
    sql(path(), "WITH RECURSIVE n(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM n WHERE id < 65279) "
                "INSERT INTO cards SELECT id, x'FC0101' FROM n");
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    uint16_t card = 0;
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOutOfSpace));
    QCOMPARE(_ExpectNewCardID(m_handle, &card), PdtmStatus(PdtmOutOfSpace));
    QCOMPARE(_CardCopy(m_handle, 1, &card), PdtmStatus(PdtmOutOfSpace));
    QCOMPARE(card, uint16_t(0));
    QCOMPARE(_CardDelete(m_handle, 300), PdtmStatus(PdtmOk));
    QCOMPARE(_CardCopy(m_handle, 1, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, uint16_t(300));
}

void CardTest::reservedIds()
{
    for (const int reserved : {0xFF00, 0xFF10, 0xFFFF}) {
        auto card = uint16_t(reserved);
        QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk));
        QCOMPARE(card, uint16_t(reserved));
        QCOMPARE(write(m_handle, card, "NAPR", "scratch"), PdtmStatus(PdtmOk));
        QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk)); // replaces
        QCOMPARE(read(m_handle, card, "NAPR"), QByteArray());
        QCOMPARE(read(m_handle, card, "ATTR"), QByteArray(1, '\0'));
    }
    QCOMPARE(sql(path(), "SELECT count(*) FROM cards"), QByteArray("0"));
    uint16_t next = 0;
    QCOMPARE(_ExpectNewCardID(m_handle, &next), PdtmStatus(PdtmOk));
    QCOMPARE(next, uint16_t(1));
}

void CardTest::workCardSurvivesAClose()
{
    const uint16_t card = addCard(m_handle, "saved");
    uint16_t work = PdtmWorkCard;
    QCOMPARE(_CardCopy(m_handle, card, &work), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, work, "NAPR", "being edited"), PdtmStatus(PdtmOk));
    _BoxClose(m_handle);
    QCOMPARE(sql(path(), "SELECT count(*) FROM cards WHERE id = 65280"), QByteArray("1"));
    m_handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(read(m_handle, work, "NAPR"), QByteArray("being edited"));
    uint16_t destination = card;
    QCOMPARE(_CardCopy(m_handle, work, &destination), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, card, "NAPR"), QByteArray("being edited"));
}

void CardTest::workCardLeavesTheFileWithTheNextCommit()
{
    addCard(m_handle, "saved");
    reopen();
    QCOMPARE(sql(path(), "SELECT count(*) FROM cards WHERE id = 65280"), QByteArray("1"));
    QCOMPARE(_CardDelete(m_handle, PdtmWorkCard), PdtmStatus(PdtmOk));
    QCOMPARE(write(m_handle, 1, "NAPR", "again"), PdtmStatus(PdtmOk));
    QCOMPARE(sql(path(), "SELECT count(*) FROM cards WHERE id = 65280"), QByteArray("0"));
}

void CardTest::workCardLeavesTheFileForANewCard()
{
    addCard(m_handle, "saved");
    reopen();
    uint16_t card = 0;
    QCOMPARE(_CardCreate(m_handle, &card), PdtmStatus(PdtmOk));
    QCOMPARE(sql(path(), "SELECT count(*) FROM cards WHERE id = 65280"), QByteArray("0"));
    QCOMPARE(read(m_handle, PdtmWorkCard, "NAPR"), QByteArray("saved"));
    reopen();
    QCOMPARE(sql(path(), "SELECT instr(data, 'saved') > 0 FROM cards WHERE id = 65280"), QByteArray("1"));
}

/** A commit writes the page of the card and that of the state, and for every sixth card those of a new page.
 */
void CardTest::newCardsAreAppendedBesideAWorkCard()
{
    constexpr int Cards = 60;
    const auto addMany = [this](int count) {
        for (int i = 0; i < count; ++i)
            QVERIFY(addCard(m_handle, QByteArray(600, 'x')));
    };
    const auto logSize = [this] { return QFileInfo(path() + "-wal").size(); };
    addMany(Cards);
    reopen();
    QCOMPARE(sql(path(), "SELECT count(*) FROM cards WHERE id = 65280"), QByteArray("1"));
    addMany(1);
    const qint64 before = logSize();
    addMany(Cards);
    constexpr qint64 Page = 4096 + 24;
    const qint64 pages = (logSize() - before) / Page;
    QVERIFY2(pages >= 2 * Cards && pages <= 27 * Cards / 10, QByteArray::number(pages));
}

void CardTest::deletingAnAbsentWorkCardIsHarmless()
{
    addCard(m_handle, "saved");
    for (int i = 0; i < 2; ++i)
        QCOMPARE(_CardDelete(m_handle, PdtmWorkCard), PdtmStatus(PdtmOk));
    QCOMPARE(read(m_handle, 1, "NAPR"), QByteArray("saved"));
    QCOMPARE(read(m_handle, PdtmWorkCard, "NAPR"), QByteArray("status 65"));
}

void CardTest::syncId()
{
    const uint32_t first = DtmGetSyncId(m_handle);
    QVERIFY(first != 0);
    QCOMPARE(DtmUpdateSyncId(m_handle), PdtmStatus(PdtmOk));
    QCOMPARE(DtmGetSyncId(m_handle), first + 1);
    reopen();
    QCOMPARE(DtmGetSyncId(m_handle), first + 1);
}

void CardTest::manyCardsReadFromMemory()
{
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    for (int i = 1; i <= 2000; ++i)
        QCOMPARE(addCard(m_handle, "name " + QByteArray::number(i)), uint16_t(i));
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    reopen();
    for (uint16_t card = 2000; card > 0; --card)
        QCOMPARE(read(m_handle, card, "NAPR"), "name " + QByteArray::number(card));
    QCOMPARE(read(m_handle, 2001, "NAPR"), QByteArray("status 65"));
    QCOMPARE(read(m_handle, 0, "NAPR"), QByteArray("status 65"));
}

/** A run of changes, compared with a plain map. */
void CardTest::cardsChangeInMemoryAndFile()
{
    QMap<uint16_t, QByteArray> expected;
    quint32 seed = 12345;
    const auto random = [&seed](quint32 range) {
        return ((seed = seed * 1664525 + 1013904223) >> 8) % range;
    };
    QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
    for (int step = 0; step < 6000; ++step) {
        const QByteArray value(static_cast<qsizetype>(1 + random(5000)), char('a' + random(26)));
        const auto card = uint16_t(1 + random(200));
        if (random(4) == 0) {
            QCOMPARE(_CardDelete(m_handle, card), PdtmStatus(PdtmOk));
            expected.remove(card);
        } else if (expected.contains(card)) {
            QCOMPARE(write(m_handle, card, "NAPR", value), PdtmStatus(PdtmOk));
            expected[card] = value;
        } else {
            const uint16_t added = addCard(m_handle, value);
            QVERIFY(added);
            expected[added] = value;
        }
        const auto probe = uint16_t(1 + random(200));
        QCOMPARE(read(m_handle, probe, "NAPR"), expected.value(probe, "status 65"));
        if (step % 1000 == 999) {
            QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
            reopen();
            QCOMPARE(DtmBeginAction(m_handle), PdtmStatus(PdtmOk));
        }
    }
    QCOMPARE(DtmEndAction(m_handle), PdtmStatus(PdtmOk));
    reopen();
    for (auto card = expected.constBegin(); card != expected.constEnd(); ++card)
        QCOMPARE(read(m_handle, card.key(), "NAPR"), card.value());
}

QTEST_GUILESS_MAIN(CardTest)
#include "cardtest.moc"
