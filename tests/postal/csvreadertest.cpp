#include "csvreader.h"

#include <QTest>

using namespace ZipDict;

namespace {

using Fields = std::vector<std::string>;

std::vector<CsvRecord> recordsOf(std::string_view bytes)
{
    CsvReader reader(bytes);
    std::vector<CsvRecord> records;
    CsvRecord record;
    while (reader.readRecord(record))
        records.push_back(record);
    return records;
}

} // namespace

/** Comma-separated values. */
class CsvReaderTest : public QObject
{
    Q_OBJECT
private slots:
    void fieldsOfOneRecord_data();
    void fieldsOfOneRecord();
    void linesAreCounted();
    void emptyLinesAreNoRecords();
    void everyEndOfLineIsRead();
    void brokenRecordSpoilsItsOwnLineOnly_data();
    void brokenRecordSpoilsItsOwnLineOnly();
    void recordsAreBounded();
    void positionReachesTheEnd();
};

void CsvReaderTest::fieldsOfOneRecord_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArrayList>("fields");
    using List = QByteArrayList;
    QTest::newRow("plain") << QByteArray("a,b\n") << List{"a", "b"};
    QTest::newRow("without an end of line") << QByteArray("a,b") << List{"a", "b"};
    QTest::newRow("quoted") << QByteArray("\"a\",b\n") << List{"a", "b"};
    QTest::newRow("comma in quotes") << QByteArray("\"a,b\",c\n") << List{"a,b", "c"};
    QTest::newRow("doubled quotation mark") << QByteArray("\"a\"\"b\"\n") << List{"a\"b"};
    QTest::newRow("line's end in quotes") << QByteArray("\"a\r\nb\",c\n") << List{"a\nb", "c"};
    QTest::newRow("empty fields") << QByteArray(",\"\",\n") << List{"", "", ""};
    QTest::newRow("empty at the end of the file") << QByteArray("a,") << List{"a", ""};
    QTest::newRow("blanks stay") << QByteArray("01  , b\n") << List{"01  ", " b"};
    QTest::newRow("mark inside a plain field") << QByteArray("a\"b,c\n") << List{"a\"b", "c"};
}

void CsvReaderTest::fieldsOfOneRecord()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArrayList, fields);
    const std::vector<CsvRecord> records = recordsOf(bytes.toStdString());
    QCOMPARE(records.size(), 1U);
    QVERIFY(records[0].isWhole);
    QByteArrayList found;
    for (const std::string &field : records[0].fields)
        found << QByteArray::fromStdString(field);
    QCOMPARE(found, fields);
}

void CsvReaderTest::linesAreCounted()
{
    const std::vector<CsvRecord> records = recordsOf("a\n\n\"b\nb\"\nc\n");
    QCOMPARE(records.size(), 3U);
    QCOMPARE(records[0].line, 1U);
    QCOMPARE(records[1].line, 3U);
    QCOMPARE(records[2].line, 5U);
}

void CsvReaderTest::emptyLinesAreNoRecords()
{
    QCOMPARE(recordsOf("").size(), 0U);
    QCOMPARE(recordsOf("\n\r\n\r").size(), 0U);
}

void CsvReaderTest::everyEndOfLineIsRead()
{
    const std::vector<CsvRecord> records = recordsOf("a\r\nb\rc\nd");
    QCOMPARE(records.size(), 4U);
    QCOMPARE(records[2].fields, Fields{"c"});
    QCOMPARE(records[3].line, 4U);
}

void CsvReaderTest::brokenRecordSpoilsItsOwnLineOnly_data()
{
    QTest::addColumn<QByteArray>("broken");
    QTest::newRow("never closed") << QByteArray("\"a,b");
    QTest::newRow("text behind the closing mark") << QByteArray("\"a\"b,c");
}

void CsvReaderTest::brokenRecordSpoilsItsOwnLineOnly()
{
    QFETCH(QByteArray, broken);
    const std::vector<CsvRecord> records = recordsOf((broken + "\nc,d\n").toStdString());
    QCOMPARE(records.size(), 2U);
    QVERIFY(!records[0].isWhole);
    QVERIFY(records[0].fields.empty());
    QCOMPARE(records[0].line, 1U);
    QVERIFY(records[1].isWhole);
    QCOMPARE(records[1].line, 2U);
    QCOMPARE(records[1].fields, (Fields{"c", "d"}));
}

void CsvReaderTest::recordsAreBounded()
{
    const std::string fitting(CsvReader::MaximumRecordSize, 'a');
    QVERIFY(recordsOf(fitting + "\n")[0].isWhole);
    const std::vector<CsvRecord> plain = recordsOf(fitting + "a\nb\n");
    QVERIFY(!plain[0].isWhole);
    QCOMPARE(plain[1].fields, Fields{"b"});
    const std::vector<CsvRecord> quoted = recordsOf('"' + fitting + "\"\nb\n");
    QVERIFY(!quoted[0].isWhole);
    QCOMPARE(quoted[1].fields, Fields{"b"});
}

void CsvReaderTest::positionReachesTheEnd()
{
    CsvReader reader("a\nbc\n");
    CsvRecord record;
    QVERIFY(reader.readRecord(record));
    QCOMPARE(reader.position(), 2U);
    QVERIFY(reader.readRecord(record));
    QVERIFY(!reader.readRecord(record));
    QCOMPARE(reader.position(), 5U);
}

QTEST_GUILESS_MAIN(CsvReaderTest)
#include "csvreadertest.moc"
