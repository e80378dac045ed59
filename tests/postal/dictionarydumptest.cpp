#include "dictionarycheck.h"

#include "imagebuilder.h"
#include "patchwriter.h"
#include <QTest>

using namespace ZipDict;
using imagebuilder::Bytes;

namespace {

/** What is printed; null when the file is none. */
QString dumpOf(const Bytes &file)
{
    char *text = nullptr;
    size_t length = 0;
    FILE *out = open_memstream(&text, &length);
    const bool isDictionary =
        dumpDictionary({reinterpret_cast<const uint8_t *>(file.data()), file.size()}, out);
    fclose(out);
    const QString dump = QString::fromUtf8(text, qsizetype(length));
    free(text);
    return isDictionary ? dump : QString();
}

QString dumpOf(const WrittenFile &file)
{
    return dumpOf(Bytes(file.bytes.begin(), file.bytes.end()));
}

/* The lines behind a heading, up to the next empty line. */
QStringList part(const QString &dump, const QString &heading)
{
    const qsizetype start = dump.indexOf("\n" + heading + "\n");
    return start < 0 ? QStringList()
                     : dump.mid(start + heading.size() + 2).section("\n\n", 0, 0).trimmed().split('\n');
}

std::vector<Place> places()
{
    return {
        {1000000, 13, u"千代田区", u"", u"", {}, false},
        {1000003, 13, u"千代田区", u"一ツ橋１丁目", u"一ツ橋", {u"一ツ橋一番"}, false},
        {1008701, 13, u"千代田区", u"丸の内　銀行", u"", {}, true},
        {3840000, 20, u"北佐久郡立科町", u"", u"", {}, false},
    };
}

} // namespace

/** A dictionary printed for people. */
class DictionaryDumpTest : public QObject
{
    Q_OBJECT
private slots:
    void headerIsPrintedByName();
    void recordsArePrintedWithTheirMarks();
    void groupsArePrintedWithTheirReferences();
    void patchHasCancelsAndChanges();
    void otherFilesAreRefused();
    void damagedFilesArePrintedAsFarAsTheyGo();
};

void DictionaryDumpTest::headerIsPrintedByName()
{
    const WrittenFile file = writeDictionary(5, places());
    const QStringList lines = dumpOf(file).section("\n\n", 0, 0).split('\n');
    QVERIFY(lines.contains("kind: dictionary"));
    QVERIFY(lines.contains("edition: 5"));
    QVERIFY(lines.contains(QString("file size: %1").arg(file.bytes.size())));
    QVERIFY(lines.contains("number index, bytes: 202"));
    QVERIFY(lines.filter("one-byte characters: ").value(0).contains("田"));
    QVERIFY(lines.filter("corrects").isEmpty());
}

void DictionaryDumpTest::recordsArePrintedWithTheirMarks()
{
    QCOMPARE(part(dumpOf(writeDictionary(1, places())), "codes"),
             (QStringList{"1000000 東京都／千代田区 [whole area]",
                          "1000003 東京都／千代田区一ツ橋１丁目 [matches: 一ツ橋]",
                          "1000003 東京都／千代田区一ツ橋一番 [silent]",
                          "1008701 東京都／千代田区丸の内　銀行 [complete]",
                          "3840000 長野県／北佐久郡立科町 [whole area]"}));
}

void DictionaryDumpTest::groupsArePrintedWithTheirReferences()
{
    const QStringList groups = part(dumpOf(writeDictionary(1, places())), "addresses");
    QVERIFY(groups.contains("千代田区 東京都: 1 chunks, 0 records"));
    QVERIFY(groups.contains("北佐久郡立科町 長野県: 1 chunks, 0 records"));
    QVERIFY(groups.contains("立科町 長野県: 1 chunks, 0 records"));
    QCOMPARE(groups.size(), 3);
}

void DictionaryDumpTest::patchHasCancelsAndChanges()
{
    std::vector<Place> newer = places();
    newer[1].code = 1000004;
    const QString dump = dumpOf(writePatch({2, true, 1, 9}, places(), newer));
    QVERIFY(dump.startsWith("kind: patch\ncorrects edition: 1\nserial: 9\nedition: 2\n"));
    QCOMPARE(part(dump, "codes"),
             (QStringList{"1000003 東京都／千代田区一ツ橋１丁目 [cancels] [matches: 一ツ橋]",
                          "1000003 東京都／千代田区一ツ橋一番 [cancels] [silent]",
                          "1000004 東京都／千代田区一ツ橋１丁目 [matches: 一ツ橋]",
                          "1000004 東京都／千代田区一ツ橋一番 [silent]"}));
    QCOMPARE(part(dump, "changes"),
             (QStringList{"1000000 kept", "1000003 removed", "1000004 added", "1008701 kept"}));
}

void DictionaryDumpTest::otherFilesAreRefused()
{
    QVERIFY(dumpOf(Bytes()).isNull());
    QVERIFY(dumpOf(Bytes(1000, 'a')).isNull());
    QVERIFY(dumpOf(Bytes("\xFF\0\x28\x02", 4)).isNull());
}

void DictionaryDumpTest::damagedFilesArePrintedAsFarAsTheyGo()
{
    const WrittenFile written = writeDictionary(1, places());
    const Bytes good(written.bytes.begin(), written.bytes.end());
    QStringList whole = part(dumpOf(good), "codes");
    for (size_t length = 232; length < good.size(); ++length)
        QVERIFY(dumpOf(good.substr(0, length)).startsWith("kind: dictionary\n"));
    for (size_t at = 3; at < good.size(); ++at) {
        Bytes file = good;
        file[at] = '\xFF';
        QVERIFY(!dumpOf(file).isNull());
    }
    // The last section is missing: the codes are still there.
    QCOMPARE(part(dumpOf(good.substr(0, good.size() - 20)), "codes"), whole);
}

QTEST_MAIN(DictionaryDumpTest)
#include "dictionarydumptest.moc"
