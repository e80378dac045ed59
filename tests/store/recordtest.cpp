#include "record.h"

#include <QtTest>

using namespace pdtm;

namespace {

QByteArray asArray(Bytes bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

Bytes asBytes(const QByteArray &bytes)
{
    return {reinterpret_cast<const uint8_t *>(bytes.constData()), static_cast<size_t>(bytes.size())};
}

QByteArray withItem(const QByteArray &record, StorageId storage, const QByteArray &value)
{
    std::string packed = record.toStdString();
    return setItem(packed, storage, asBytes(value)) ? QByteArray::fromStdString(packed) : QByteArray();
}

} // namespace

/** The packed record, as docs/store-format.md tells. */
class RecordTest : public QObject
{
    Q_OBJECT
private slots:
    void layout();
    void setItemKeepsTheOrder();
    void longestRecord();
    void lengths_data();
    void lengths();
    void malformed_data();
    void malformed();
};

void RecordTest::layout()
{
    const QByteArray packed = withItem(withItem({}, 3, "abc"), AttributeItem, "\x40");
    QCOMPARE(packed, QByteArray("\x03\x03"
                                "abc\xFC\x01\x40"));
}

void RecordTest::setItemKeepsTheOrder()
{
    QByteArray record;
    const auto set = [&record](StorageId storage, const QByteArray &value) {
        record = withItem(record, storage, value);
    };
    set(5, "five");
    set(2, "two");
    set(9, "nine");
    set(5, "other");
    QCOMPARE(record, QByteArray("\x02\x03two\x05\x05other\x09\x04nine"));
    set(2, {});
    set(7, {});
    QCOMPARE(record, QByteArray("\x05\x05other\x09\x04nine"));
    const RecordView view(asBytes(record));
    QVERIFY(view.isValid());
    QCOMPARE(asArray(view.item(9)), QByteArray("nine"));
    QCOMPARE(asArray(view.item(2)), QByteArray());
    QCOMPARE(view.attribute(), uint8_t(0));
    int seen = 0;
    view.forEachItem([&seen](StorageId, Bytes) { return ++seen < 1; });
    QCOMPARE(seen, 1);
}

void RecordTest::longestRecord()
{
    constexpr size_t Head = 5; // storage id and a length of four bytes
    const std::string value(LargestRecord - Head, 'v');
    const auto *bytes = reinterpret_cast<const uint8_t *>(value.data());
    std::string packed;
    QVERIFY(setItem(packed, 1, {bytes, value.size()}));
    QCOMPARE(packed.size(), LargestRecord);
    const std::string whole = packed;
    QVERIFY(!setItem(packed, 2, {bytes, 1}));
    QVERIFY(packed == whole);
    QVERIFY(setItem(packed, 1, {bytes, value.size()})); // in place of the other
    QVERIFY(packed == whole);
    QVERIFY(setItem(packed, 1, {}));
    QVERIFY(packed.empty());
}

void RecordTest::lengths_data()
{
    QTest::addColumn<int>("length");
    for (const int length : {1, 127, 128, 16383, 16384, 2097151, 2097152})
        QTest::addRow("%d", length) << length;
}

void RecordTest::lengths()
{
    QFETCH(int, length);
    const QByteArray value(length, 'v');
    const QByteArray record = withItem({}, 1, value);
    const QByteArray longer = withItem(record, 2, "x");
    QVERIFY(RecordView(asBytes(longer)).isValid());
    QCOMPARE(asArray(RecordView(asBytes(longer)).item(1)), value);
    QCOMPARE(asArray(RecordView(asBytes(longer)).item(2)), QByteArray("x"));
    QVERIFY(!RecordView(asBytes(longer.chopped(1))).isValid());
}

void RecordTest::malformed_data()
{
    QTest::addColumn<QByteArray>("tail"); // behind one whole item
    QTest::newRow("number alone") << QByteArray("\x05");
    QTest::newRow("length missing its end") << QByteArray("\x05\x80");
    QTest::newRow("length beyond the end") << QByteArray("\x05\x03"
                                                         "ab");
    QTest::newRow("huge length") << QByteArray("\x05\xFF\xFF\xFF\xFF\x7F"
                                               "ab");
    QTest::newRow("length of six bytes") << QByteArray("\x05\x81\x80\x80\x80\x80\x00"
                                                       "a",
                                                       8);
    QTest::newRow("length 0") << QByteArray("\x05\x00", 2);
    QTest::newRow("falling number") << QByteArray("\x02\x01"
                                                  "a");
    QTest::newRow("repeated number") << QByteArray("\x03\x01"
                                                   "a");
    QTest::newRow("number 0") << QByteArray("\x00\x01"
                                            "a",
                                            3);
}

void RecordTest::malformed()
{
    QFETCH(QByteArray, tail);
    const QByteArray record = QByteArray("\x03\x02ok") + tail;
    const RecordView view(asBytes(record));
    QVERIFY(!view.isValid());
    QCOMPARE(asArray(view.item(3)), QByteArray("ok"));
    for (const int storage : {1, 2, 4, 5, 255})
        QCOMPARE(asArray(view.item(StorageId(storage))), QByteArray());
    int seen = 0;
    view.forEachItem([&seen](StorageId, Bytes) { return ++seen > 0; });
    QCOMPARE(seen, 1);
    const QByteArray mended = withItem(record, 9, "new");
    QCOMPARE(mended, QByteArray("\x03\x02ok\x09\x03new"));
}

QTEST_GUILESS_MAIN(RecordTest)
#include "recordtest.moc"
