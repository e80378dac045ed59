#include "boxfixture.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace boxfixture;

/** Damaged box files: no crash, no endless loop, and what is refused is left as it was. */
class BoxDamageTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void headerBytes();
    void truncations();
    void randomFlips();
    void flipsInRecords();
    void journalModeIsNotMended();
    void foreignSchema_data();
    void foreignSchema();
    void contradictoryRows_data();
    void contradictoryRows();
    void strangeRowsDoNoHarm_data();
    void strangeRowsDoNoHarm();
    void leftOverLogOfADamagedBox();

private:
    bool tryEverything();
    bool putBox(const QByteArray &bytes);
    QByteArray m_path;
    QByteArray m_whole;
    // In memory where there is such a place: the many commits needn't wait for a disk.
    QTemporaryDir m_folder{QFileInfo("/dev/shm").isWritable() ? "/dev/shm/boxdamagetest.XXXXXX"
                                                              : QDir::tempPath() + "/boxdamagetest.XXXXXX"};
};

void BoxDamageTest::initTestCase()
{
    m_path = m_folder.path().toUtf8() + "/D.BOX";
    QCOMPARE(makeBox(m_path.constData()), PdtmStatus(PdtmOk));
    const uint32_t handle = _BoxOpenRwMode(m_path.constData(), 0);
    DtmBeginAction(handle);
    for (int i = 0; i < 120; ++i) {
        const uint16_t card = addCard(handle, "name " + QByteArray::number(i));
        QCOMPARE(write(handle, card, "ADRS", QByteArray(i % 10 == 0 ? 9000 : 500, 'x')), PdtmStatus(PdtmOk));
    }
    QCOMPARE(DtmEndAction(handle), PdtmStatus(PdtmOk));
    for (uint16_t card = 20; card < 40; ++card)
        QCOMPARE(_CardDelete(handle, card), PdtmStatus(PdtmOk)); // free pages, too
    _BoxClose(handle);
    m_whole = fileBytes(QString::fromUtf8(m_path));
    QVERIFY(m_whole.size() > 50000);
}

/** Puts other bytes in the place of the box, as a new file. */
bool BoxDamageTest::putBox(const QByteArray &bytes)
{
    const QString path = QString::fromUtf8(m_path);
    for (const char *ending : {"", "-wal", "-shm"})
        QFile::remove(path + ending);
    return writeFile(path, bytes);
}

/** Uses the box in every way; true when it was refused at opening. */
bool BoxDamageTest::tryEverything()
{
    QElapsedTimer timer;
    timer.start();
    const auto slow = qScopeGuard([&] {
        if (timer.elapsed() > 5000)
            QFAIL("a damaged box takes too long");
    });
    uint32_t size = 0;
    _DTMFileCheckAppliID(m_path.constData(), 3, ApplicationId);
    _DTMFileCheckLevel(m_path.constData(), 3);
    _DTMFileCheckLevel(m_path.constData(), 255);
    _GetBoxGarbageSize(m_path.constData(), &size);
    const uint32_t reader = _BoxOpenRwMode(m_path.constData(), 1);
    for (uint16_t card = 0; card < 125; ++card)
        read(reader, card, "ADRS");
    _BoxClose(reader);
    const uint32_t handle = _BoxOpenRwMode(m_path.constData(), 0);
    if (!handle)
        return reader == 0;
    for (uint16_t card = 0; card < 125; card += 5) {
        read(handle, card, "NAPR");
        write(handle, card, "NAPR", QByteArray(card * 10, 'y'));
        _CardDelete(handle, uint16_t(card + 1));
    }
    addCard(handle, "new");
    _CardAllDelete(handle, 0x40, 0x40, 0);
    _CardAllDelete(handle, 0, 0, 0);
    _BoxClose(handle);
    _BoxGarbageCollect(m_path.constData());
    return false;
}

void BoxDamageTest::headerBytes()
{
    int refused = 0;
    for (int offset = 0; offset < 100; ++offset) {
        QByteArray damaged = m_whole;
        damaged[offset] = char(~damaged[offset]);
        QVERIFY(putBox(damaged));
        if (!tryEverything())
            continue;
        ++refused;
        QVERIFY2(fileBytes(QString::fromUtf8(m_path)) == damaged, QByteArray::number(offset));
    }
    QVERIFY2(refused > 40, QByteArray::number(refused));
}

void BoxDamageTest::truncations()
{
    for (int i = 0; i < 20; ++i) {
        const QByteArray damaged = m_whole.left(m_whole.size() * i / 20 + (i % 3 == 0 ? 1 : 0));
        QVERIFY(putBox(damaged));
        QVERIFY2(tryEverything(), QByteArray::number(damaged.size()));
        QVERIFY(fileBytes(QString::fromUtf8(m_path)) == damaged);
        QCOMPARE(_DTMFileCheckAppliID(m_path.constData(), 3, ApplicationId), PdtmStatus(PdtmDamaged));
        QCOMPARE(_DTMFileCheckLevel(m_path.constData(), 3), PdtmStatus(PdtmDamaged));
    }
}

void BoxDamageTest::randomFlips()
{
    quint32 seed = 4711;
    const auto random = [&seed](qsizetype range) {
        seed = seed * 1664525 + 1013904223;
        return static_cast<qsizetype>(seed >> 4) % range;
    };
    for (int round = 0; round < 1000; ++round) {
        QByteArray damaged = m_whole;
        for (qsizetype flip = 0; flip <= random(4); ++flip) {
            const qsizetype offset = random(damaged.size());
            damaged[offset] = char(damaged[offset] ^ char(1 << random(8)));
        }
        QVERIFY(putBox(damaged));
        if (tryEverything())
            QVERIFY2(fileBytes(QString::fromUtf8(m_path)) == damaged, QByteArray::number(round));
    }
}

void BoxDamageTest::flipsInRecords()
{
    const QList<QByteArray> records = {
        QByteArray(),
        QByteArray("\x01"),
        QByteArray("\x01\x05"
                   "ab"),
        QByteArray("\x02\x01x\x01\x01y"),
        QByteArray("\x01\xFF\xFF\xFF\xFF\xFF\xFF\xFF"),
        QByteArray("\x01\xFF\xFF\xFF\xFF\x0F"
                   "x"),
        QByteArray("\x00\x01x", 3),
        QByteArray("\x01\x00", 2),
        QByteArray("\xFC\x01\x40\x01\x01z"),
    };
    for (const QByteArray &record : records) {
        QVERIFY(putBox(m_whole));
        const QByteArray change = "UPDATE cards SET data = x'" + record.toHex() + "' WHERE id = 7";
        QCOMPARE(sql(QString::fromUtf8(m_path), change.constData()), QByteArray());
        QCOMPARE(_DTMFileCheckLevel(m_path.constData(), 255),
                 PdtmStatus(record.isEmpty() ? PdtmOk : PdtmDamaged));
        const uint32_t handle = _BoxOpenRwMode(m_path.constData(), 0);
        QVERIFY(handle);
        for (const char *code : {"NAPR", "ADRS", "CTGR", "ATTR", "SYID"})
            QVERIFY(read(handle, 7, code).size() <= record.size());
        QCOMPARE(write(handle, 7, "NAPR", "mended"), PdtmStatus(PdtmOk));
        QCOMPARE(read(handle, 7, "NAPR"), QByteArray("mended"));
        QCOMPARE(read(handle, 8, "NAPR"), QByteArray("name 7"));
        _BoxClose(handle);
        QCOMPARE(_DTMFileCheckLevel(m_path.constData(), 255), PdtmStatus(PdtmOk));
    }
}

/** Another journal mode in the header is damage: it is not put right by opening. */
void BoxDamageTest::journalModeIsNotMended()
{
    QByteArray damaged = m_whole;
    damaged[18] = 1;
    damaged[19] = 1;
    QVERIFY(putBox(damaged));
    QVERIFY(tryEverything());
    QVERIFY(fileBytes(QString::fromUtf8(m_path)) == damaged);
}

void BoxDamageTest::foreignSchema_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::newRow("trigger") << QByteArray(
        "CREATE TRIGGER t AFTER INSERT ON cards BEGIN DELETE FROM items; END");
    QTest::newRow("trigger with a reserved name")
        << QByteArray("CREATE TRIGGER t AFTER INSERT ON cards BEGIN DELETE FROM items; END; "
                      "PRAGMA writable_schema = ON; UPDATE sqlite_schema SET name = 'sqlite_stat_t', "
                      "sql = replace(sql, 'TRIGGER t', 'TRIGGER sqlite_stat_t') WHERE name = 't'");
    QTest::newRow("view") << QByteArray("CREATE VIEW v AS SELECT * FROM cards");
    QTest::newRow("index") << QByteArray("CREATE INDEX i ON cards(data)");
    QTest::newRow("another table") << QByteArray("CREATE TABLE extra(a)");
    QTest::newRow("a table is missing") << QByteArray("DROP TABLE items");
    QTest::newRow("another column") << QByteArray("ALTER TABLE items ADD COLUMN a");
    QTest::newRow("view in the place of a table")
        << QByteArray("ALTER TABLE cards RENAME TO c; CREATE VIEW cards AS SELECT * FROM c");
    QTest::newRow("another format") << QByteArray("PRAGMA user_version = 2");
    QTest::newRow("another application") << QByteArray("PRAGMA application_id = 1");
}

void BoxDamageTest::foreignSchema()
{
    QFETCH(QByteArray, change);
    QVERIFY(putBox(m_whole));
    QCOMPARE(sql(QString::fromUtf8(m_path), change.constData()), QByteArray());
    const QByteArray changed = fileBytes(QString::fromUtf8(m_path));
    QVERIFY(changed != m_whole);
    QVERIFY(tryEverything());
    QVERIFY(fileBytes(QString::fromUtf8(m_path)) == changed);
}

void BoxDamageTest::contradictoryRows_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::newRow("no state") << QByteArray("DELETE FROM box");
    QTest::newRow("next card 0") << QByteArray("UPDATE box SET next_card = 0");
    QTest::newRow("next card too high") << QByteArray("UPDATE box SET next_card = 99999");
    QTest::newRow("counter below 1") << QByteArray("UPDATE box SET counter = -5");
    QTest::newRow("counter that can't rise") << QByteArray("UPDATE box SET counter = 9223372036854775807");
    QTest::newRow("300 items") << QByteArray(
        "WITH RECURSIVE n(i) AS (SELECT 5 UNION ALL SELECT i + 1 FROM n WHERE i < 300) INSERT INTO items "
        "SELECT i, printf('%04d', i), 8, 14, '' FROM n");
    QTest::newRow("gap in the items") << QByteArray("DELETE FROM items WHERE storage = 2");
    QTest::newRow("code too short") << QByteArray("UPDATE items SET code = 'ABC' WHERE storage = 2");
    QTest::newRow("unknown item type") << QByteArray("UPDATE items SET type = 99 WHERE storage = 2");
}

void BoxDamageTest::contradictoryRows()
{
    foreignSchema();
}

void BoxDamageTest::strangeRowsDoNoHarm_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::newRow("ids that no card has") << QByteArray(
        "INSERT INTO cards VALUES(-1, x'00'), (0, x'01'), (65536, x'02'), (9223372036854775807, x'03')");
    QTest::newRow("text for a record") << QByteArray("UPDATE cards SET data = 'text'");
    QTest::newRow("number for a record") << QByteArray("UPDATE cards SET data = 12");
    QTest::newRow("large record") << QByteArray("UPDATE cards SET data = zeroblob(9000000) WHERE id < 4");
    QTest::newRow("text for a language") << QByteArray("UPDATE box SET language = x'00ff'");
    QTest::newRow("text for an application id") << QByteArray("UPDATE box SET application_id = 'text'");
    QTest::newRow("long label") << QByteArray("UPDATE items SET label = hex(zeroblob(100000))");
}

void BoxDamageTest::strangeRowsDoNoHarm()
{
    QFETCH(QByteArray, change);
    QVERIFY(putBox(m_whole));
    QCOMPARE(sql(QString::fromUtf8(m_path), change.constData()), QByteArray());
    QVERIFY(!tryEverything());
    const uint32_t handle = _BoxOpenRwMode(m_path.constData(), 0);
    ITEMDATA item{};
    uint16_t size = sizeof item;
    QCOMPARE(_BoxItemReadHeap(handle, "NAPR", &item, &size), PdtmStatus(PdtmOk));
    QCOMPARE(item.label[37], '\0');
    const uint16_t card = addCard(handle, "still works");
    QVERIFY(card >= 1);
    QCOMPARE(read(handle, card, "NAPR"), QByteArray("still works"));
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
}

void BoxDamageTest::leftOverLogOfADamagedBox()
{
    QByteArray damaged = m_whole;
    damaged[0] = 'X';
    QVERIFY(putBox(damaged));
    QVERIFY(writeFile(QString::fromUtf8(m_path) + "-wal", QByteArray(9000, 'w')));
    QVERIFY(tryEverything());
    QVERIFY(fileBytes(QString::fromUtf8(m_path)) == damaged);
    QVERIFY(fileBytes(QString::fromUtf8(m_path) + "-wal") == QByteArray(9000, 'w'));
}

QTEST_GUILESS_MAIN(BoxDamageTest)
#include "boxdamagetest.moc"
