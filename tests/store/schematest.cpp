#include "recordbuilder.h"

#include <QtTest>

using namespace pdtm;

class SchemaTest : public QObject
{
    Q_OBJECT
private slots:
    void implicitItemsStandBehindTheDeclared();
    void codes_data();
    void codes();
    void exactCodeGoesFirst();
    void storageIdsStayWhenItemsAreAdded();
    void limits();
};

void SchemaTest::implicitItemsStandBehindTheDeclared()
{
    const Schema schema = everyType();
    QCOMPARE(schema.declaredCount(), 13);
    QCOMPARE(schema.items().size(), size_t(17));
    const std::tuple<const char *, int, int> implicit[] = {
        {"ATTR", ItemUchar, 252}, {"CTTM", ItemTime, 253}, {"MDTM", ItemTime, 254}, {"SYID", ItemUlong, 255}};
    int number = 13;
    for (const auto &[code, type, storage] : implicit) {
        QCOMPARE(schema.number(code), ++number);
        QCOMPARE(int(schema.find(code)->type), type);
        QCOMPARE(int(schema.find(code)->storage), storage);
        QCOMPARE(schema.ofStorage(static_cast<StorageId>(storage)), schema.find(code));
    }
}

void SchemaTest::codes_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<int>("number");
    QTest::newRow("first") << QByteArray("SJS1") << 1;
    QTest::newRow("declared lower, asked upper") << QByteArray("NAME") << 13;
    QTest::newRow("declared lower, asked lower") << QByteArray("nAME") << 13;
    QTest::newRow("declared upper, asked lower") << QByteArray("sJS1") << 1;
    QTest::newRow("implicit, asked lower") << QByteArray("aTTR") << 14;
    QTest::newRow("only the first letter folds") << QByteArray("Name") << 0;
    QTest::newRow("unknown") << QByteArray("XXXX") << 0;
    QTest::newRow("zero bytes") << QByteArray(4, 0) << 0;
    QTest::newRow("only four bytes count") << QByteArray("TIMEx") << 2;
}

void SchemaTest::codes()
{
    QFETCH(QByteArray, code);
    QFETCH(int, number);
    const Schema schema = everyType();
    QCOMPARE(schema.number(code), number);
    QCOMPARE(schema.find(code), number ? &schema.items()[size_t(number) - 1] : nullptr);
}

void SchemaTest::exactCodeGoesFirst()
{
    Schema schema;
    QVERIFY(schema.add({codeOf("mEMO"), ItemTextUtf8, KindText, "lower", 0}));
    QVERIFY(schema.add({codeOf("MEMO"), ItemTextUtf8, KindText, "upper", 0}));
    QCOMPARE(schema.number("MEMO"), 2);
    QCOMPARE(schema.number("mEMO"), 1);
}

void SchemaTest::storageIdsStayWhenItemsAreAdded()
{
    Schema schema;
    for (const char *code : {"AAAA", "BBBB", "CCCC"})
        QVERIFY(schema.add({codeOf(code), ItemUchar, KindUchar, {}, 99}));
    QCOMPARE(int(schema.find("AAAA")->storage), 1);
    QCOMPARE(int(schema.find("CCCC")->storage), 3);
    QCOMPARE(schema.ofStorage(2), schema.find("BBBB"));
    QCOMPARE(schema.ofStorage(0), nullptr);
    QCOMPARE(schema.ofStorage(4), nullptr);
    QCOMPARE(schema.ofStorage(251), nullptr);
}

void SchemaTest::limits()
{
    Schema schema;
    QVERIFY(!schema.add({codeOf("AAAA"), 5, 0, {}, 0}));
    QVERIFY(!schema.add({codeOf("AAAA"), 0, 0, {}, 0}));
    QCOMPARE(schema.declaredCount(), 0);
    for (int i = 0; i < 251; ++i)
        QVERIFY(schema.add({{'I', static_cast<char>('0' + i / 100), static_cast<char>('0' + i / 10 % 10),
                             static_cast<char>('0' + i % 10)},
                            ItemUchar,
                            KindUchar,
                            {},
                            0}));
    QVERIFY(!schema.add({codeOf("LAST"), ItemUchar, KindUchar, {}, 0}));
    QCOMPARE(schema.items().size(), size_t(255));
    QCOMPARE(schema.ofStorage(251), schema.find("I250"));
    QCOMPARE(schema.ofStorage(252), schema.find("ATTR"));
}

QTEST_GUILESS_MAIN(SchemaTest)
#include "schematest.moc"
