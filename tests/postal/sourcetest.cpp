#include "source.h"

#include "jistext.h"
#include "progress.h"
#include <cstdio>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace ZipDict;

namespace {

QString text(const std::u16string &characters)
{
    return QString::fromStdU16String(characters);
}

/* A line of the file of places. */
QByteArray placeLine(const QByteArray &code, const QByteArray &municipality, const QByteArray &town,
                     const QByteArray &prefecture = "東京都")
{
    return "13101,\"100  \",\"" + code + "\",\"\",\"\",\"\",\"" + prefecture + "\",\"" + municipality +
           "\",\"" + town + "\",0,0,0,0,0,0\r\n";
}

QByteArray sjisOf(const QByteArray &utf8)
{
    QByteArray bytes;
    const QString characters = QString::fromUtf8(utf8);
    for (const QChar character : characters) {
        const unsigned code = jisOf(character.unicode());
        if (code == 0) {
            bytes += char(character.unicode());
            continue;
        }
        const unsigned row = code >> 8;
        const unsigned cell = code & 0xFF;
        bytes += char((row + 1) / 2 + (row < 0x5F ? 0x70 : 0xB0));
        bytes += char(row % 2 == 0 ? cell + 0x7E : cell + (cell < 0x60 ? 0x1F : 0x20));
    }
    return bytes;
}

} // namespace

/** The files of the postal operator. */
class SourceTest : public QObject
{
    Q_OBJECT
private slots:
    void placesInUtf8();
    void placesInShiftJis();
    void knownBytesOfShiftJis();
    void byteOrderMarkIsNoText();
    void businesses();
    void emptyTownIsRead();
    void halfWidthBecomesFullWidth();
    void spellingsBecomeOne();
    void splitRowsAreJoined();
    void splitRowEndsWithItsCode_data();
    void splitRowEndsWithItsCode();
    void splitRowAtTheEndIsAProblem();
    void tailOfASplitRowIsNoPlace();
    void endlessSplitRowIsAProblem();
    void badRowsAreProblems_data();
    void badRowsAreProblems();
    void badShiftJisIsAProblem();
    void problemsAreBounded();
    void otherFilesAreOneProblem_data();
    void otherFilesAreOneProblem();
    void missingFileIsAProblem();
    void hugeFileIsRefused();
    void progressReachesTheEnd();
    void progressIsOneLineThatGoesAway();

private:
    QString path() const { return m_folder.filePath("source.csv"); }

    void write(const QByteArray &bytes)
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), bytes.size());
    }

    Source read(const QByteArray &bytes)
    {
        write(bytes);
        return readSource(path().toStdString(), {});
    }

    QTemporaryDir m_folder;
};

void SourceTest::placesInUtf8()
{
    const Source source = read(placeLine("1000001", "千代田区", "千代田") +
                               placeLine("0600042", "札幌市中央区", "大通西（１～１９丁目）", "北海道"));
    QCOMPARE(source.problems.size(), 0U);
    QCOMPARE(source.rows.size(), 2U);
    QCOMPARE(source.rows[0].line, 1U);
    QCOMPARE(source.rows[0].code, 1000001U);
    QCOMPARE(text(source.rows[0].prefecture), "東京都");
    QCOMPARE(text(source.rows[0].municipality), "千代田区");
    QCOMPARE(text(source.rows[0].town), "千代田");
    QVERIFY(source.rows[0].business.empty());
    QCOMPARE(source.rows[1].line, 2U);
    QCOMPARE(source.rows[1].code, 600042U);
    QCOMPARE(text(source.rows[1].town), "大通西（１～１９丁目）");
}

void SourceTest::placesInShiftJis()
{
    // 表 and 予 have the codes of \ and ] as their second bytes, 鼻 the one behind the gap.
    const Source source = read(sjisOf(placeLine("1000001", "千代田区", "表予鼻ソ亜腕熙")));
    QCOMPARE(source.problems.size(), 0U);
    QCOMPARE(source.rows.size(), 1U);
    QCOMPARE(text(source.rows[0].prefecture), "東京都");
    QCOMPARE(text(source.rows[0].town), "表予鼻ソ亜腕熙");
}

void SourceTest::knownBytesOfShiftJis()
{
    const Source source =
        read("01101,\"060  \",\"0600000\",\"\xCE\xAF\xB6\xB2\xC4\xDE\xB3\",\"\",\"\","
             "\"\x96\x6B\x8A\x43\x93\xB9\",\"\x8E\x44\x96\x79\x8E\x73\",\"\",0,0,0,0,0,0\r\n");
    QCOMPARE(source.rows.size(), 1U);
    QCOMPARE(text(source.rows[0].prefecture), "北海道");
    QCOMPARE(text(source.rows[0].municipality), "札幌市");
}

void SourceTest::byteOrderMarkIsNoText()
{
    QByteArray line = placeLine("1000001", "千代田区", "千代田");
    line.replace("13101", "\"13101\"");
    const Source source = read("\xEF\xBB\xBF" + line);
    QCOMPARE(source.problems.size(), 0U);
    QCOMPARE(source.rows.size(), 1U);
}

void SourceTest::businesses()
{
    const QByteArray line =
        "13101,\"(ｶﾌﾞ) ｱ\",\"株式会社　あ\",\"東京都\",\"千代田区\",\"大手町（\",\"１丁目２－３\","
        "\"1008701\",\"100  \",\"銀座\",0,0,0\r\n";
    for (const QByteArray &bytes : {line, sjisOf(line).replace(sjisOf("ｶ"), "\xB6")}) {
        const Source source = read(bytes);
        QCOMPARE(source.problems.size(), 0U);
        QCOMPARE(source.rows.size(), 1U);
        QCOMPARE(source.rows[0].code, 1008701U);
        QCOMPARE(text(source.rows[0].prefecture), "東京都");
        QCOMPARE(text(source.rows[0].municipality), "千代田区");
        QCOMPARE(text(source.rows[0].town), "大手町（");
        QCOMPARE(text(source.rows[0].business), "株式会社　あ");
        QCOMPARE(text(source.rows[0].businessBlock), "１丁目２－３");
    }
}

void SourceTest::emptyTownIsRead()
{
    const Source source = read(placeLine("1000000", "千代田区", ""));
    QCOMPARE(source.rows.size(), 1U);
    QVERIFY(source.rows[0].town.empty());
}

void SourceTest::halfWidthBecomesFullWidth()
{
    const Source source = read(placeLine("1000000", "千代田区", " ビルA(2-3) 4 "));
    QCOMPARE(text(source.rows.at(0).town), "ビルＡ（２－３）　４");
}

void SourceTest::spellingsBecomeOne()
{
    const Source source =
        read(placeLine("1000000", "千代田区", "１〜２−３") + placeLine("1000000", "千代田区", "１～２－３"));
    QCOMPARE(source.rows.at(0).town, source.rows.at(1).town);
    QCOMPARE(text(source.rows.at(0).town), "１～２－３");
}

void SourceTest::splitRowsAreJoined()
{
    const Source source = read(
        placeLine("0330071", "六戸町", "犬落瀬（内金矢、内山、") + placeLine("0330071", "六戸町", "岡沼、") +
        placeLine("0330071", "六戸町", "金沢）") + placeLine("0330071", "六戸町", "上吉田"));
    QCOMPARE(source.problems.size(), 0U);
    QCOMPARE(source.rows.size(), 2U);
    QCOMPARE(text(source.rows[0].town), "犬落瀬（内金矢、内山、岡沼、金沢）");
    QCOMPARE(source.rows[0].line, 1U);
    QCOMPARE(text(source.rows[1].town), "上吉田");
    QCOMPARE(source.rows[1].line, 4U);
}

void SourceTest::splitRowEndsWithItsCode_data()
{
    QTest::addColumn<QByteArray>("next");
    QTest::newRow("other code") << placeLine("0330072", "六戸町", "金沢");
    QTest::newRow("other municipality") << placeLine("0330071", "七戸町", "金沢");
    QTest::newRow("other prefecture") << placeLine("0330071", "六戸町", "金沢", "青森県");
}

void SourceTest::splitRowEndsWithItsCode()
{
    QFETCH(QByteArray, next);
    const Source source = read(placeLine("0330071", "六戸町", "犬落瀬（内金矢、") + next);
    QCOMPARE(source.problems.size(), 1U);
    QCOMPARE(source.problems[0].line, 1U);
    QVERIFY(source.problems[0].text.find("never closed") != std::string::npos);
    QCOMPARE(source.rows.size(), 1U);
    QCOMPARE(text(source.rows[0].town), "金沢");
}

void SourceTest::splitRowAtTheEndIsAProblem()
{
    const Source source =
        read(placeLine("0330071", "六戸町", "上吉田") + placeLine("0330071", "六戸町", "犬落瀬（"));
    QCOMPARE(source.rows.size(), 1U);
    QCOMPARE(source.problems.size(), 1U);
    QCOMPARE(source.problems[0].line, 2U);
}

void SourceTest::tailOfASplitRowIsNoPlace()
{
    const Source source =
        read("x" + placeLine("bad", "六戸町", "犬落瀬（内金矢、") + placeLine("0330071", "六戸町", "内山）"));
    QCOMPARE(source.rows.size(), 0U);
    QCOMPARE(source.problems.size(), 2U);
    QVERIFY(source.problems[1].text.find("never opened") != std::string::npos);
}

void SourceTest::endlessSplitRowIsAProblem()
{
    QByteArray bytes = placeLine("0330071", "六戸町", "犬落瀬（");
    for (int i = 0; i < 50; ++i)
        bytes += placeLine("0330071", "六戸町", QByteArray("甲").repeated(100));
    const Source source = read(bytes);
    QCOMPARE(source.problems.size(), 1U);
    QCOMPARE(source.problems[0].line, 1U);
    QVERIFY(source.problems[0].text.find("too long") != std::string::npos);
}

void SourceTest::badRowsAreProblems_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("problem");
    QTest::newRow("columns") << QByteArray("1,2,3\n") << QByteArray("3 columns");
    QTest::newRow("columns of businesses")
        << QByteArray("1,2,3,4,5,6,7,8,9,0,1,2,3\n") << QByteArray("13 columns");
    QTest::newRow("short code") << placeLine("100001", "港区", "芝") << QByteArray("seven digits");
    QTest::newRow("long code") << placeLine("10000011", "港区", "芝") << QByteArray("seven digits");
    QTest::newRow("letter in the code") << placeLine("100000x", "港区", "芝") << QByteArray("seven digits");
    QTest::newRow("sign in the code") << placeLine("+100000", "港区", "芝") << QByteArray("seven digits");
    QTest::newRow("prefecture") << placeLine("1000001", "港区", "芝", "江戸") << QByteArray("prefecture");
    QTest::newRow("no prefecture") << placeLine("1000001", "港区", "芝", "") << QByteArray("prefecture");
    QTest::newRow("no municipality") << placeLine("1000001", "", "芝") << QByteArray("municipality");
    QTest::newRow("blank municipality") << placeLine("1000001", " ", "芝") << QByteArray("municipality");
    for (const QByteArray name : {"千代田", "区", "甲乙丙丁戊己庚辛壬癸子丑寅卯辰巳午区"})
        QTest::addRow("municipality %s", name.constData())
            << placeLine("1000001", name, "芝") << QByteArray("ends in 市, 区, 町 or 村");
    QTest::newRow("long line") << placeLine("1000001", "港区", QByteArray("芝").repeated(6000))
                               << QByteArray("too long");
    QTest::newRow("character") << placeLine("1000001", "港区", "髙輪") << QByteArray("JIS X 0208");
    QTest::newRow("half-width kana") << placeLine("1000001", "港区", "ｼﾊﾞ") << QByteArray("JIS X 0208");
    QTest::newRow("control character") << placeLine("1000001", "港区", "芝\x1B") << QByteArray("JIS X 0208");
    QTest::newRow("bad UTF-8") << placeLine("1000001", "港区", "\xE8\x8A") << QByteArray("JIS X 0208");
    QTest::newRow("quotation marks") << QByteArray("\"a\"b\n") << QByteArray("quotation marks");
}

void SourceTest::badRowsAreProblems()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, problem);
    const Source source = read(placeLine("1000001", "千代田区", "千代田") + line +
                               placeLine("1000002", "千代田区", "皇居外苑"));
    QCOMPARE(source.rows.size(), 2U);
    QCOMPARE(source.rows[1].code, 1000002U);
    QCOMPARE(source.rows[1].line, 3U);
    QCOMPARE(source.problems.size(), 1U);
    QCOMPARE(source.problems[0].line, 2U);
    QCOMPARE(QString::fromStdString(source.problems[0].file), path());
    QVERIFY2(source.problems[0].text.find(problem.toStdString()) != std::string::npos,
             source.problems[0].text.c_str());
}

void SourceTest::badShiftJisIsAProblem()
{
    const Source source =
        read(sjisOf(placeLine("1000001", "千代田区", "千代田")) +
             sjisOf(placeLine("1000002", "千代田区", "芝")).replace(sjisOf("芝"), "\x87\x40"));
    QCOMPARE(source.rows.size(), 1U);
    QCOMPARE(source.problems.size(), 1U);
    QCOMPARE(source.problems[0].line, 2U);
}

void SourceTest::problemsAreBounded()
{
    const Source source = read(placeLine("1000001", "千代田区", "千代田") + QByteArray("x\n").repeated(1500));
    QCOMPARE(source.rows.size(), 1U);
    QCOMPARE(source.problems.size(), 1001U);
    QCOMPARE(source.problems.back().line, 0U);
    QCOMPARE(source.problems.back().text, std::string("500 more rows can't be used"));
}

void SourceTest::otherFilesAreOneProblem_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("one\ntwo, three\n");
    QTest::newRow("bytes") << QByteArray("\xFF\x00\x28\x02\"\"\"\n\"", 9);
}

void SourceTest::otherFilesAreOneProblem()
{
    QFETCH(QByteArray, bytes);
    const Source source = read(bytes);
    QCOMPARE(source.rows.size(), 0U);
    QCOMPARE(source.problems.size(), 1U);
    QCOMPARE(source.problems[0].line, 0U);
}

void SourceTest::missingFileIsAProblem()
{
    const Source missing = readSource(m_folder.filePath("none.csv").toStdString(), {});
    QCOMPARE(missing.problems.size(), 1U);
    QCOMPARE(missing.problems[0].text, std::string("No such file or directory"));
    const Source folder = readSource(m_folder.path().toStdString(), {});
    QCOMPARE(folder.problems.size(), 1U);
    QCOMPARE(folder.problems[0].text, std::string("Is a directory"));
}

void SourceTest::hugeFileIsRefused()
{
    write(placeLine("1000001", "千代田区", "千代田"));
    QVERIFY(QFile::resize(path(), (64 << 20) + 1));
    const Source source = readSource(path().toStdString(), {});
    QCOMPARE(source.rows.size(), 0U);
    QCOMPARE(source.problems.size(), 1U);
    QVERIFY(source.problems[0].text.find("64 megabytes") != std::string::npos);
}

void SourceTest::progressReachesTheEnd()
{
    write(placeLine("1000001", "千代田区", "千代田").repeated(10000));
    size_t last = 0;
    size_t calls = 0;
    const Source source = readSource(path().toStdString(), [&](const char *, size_t done, size_t all) {
        QVERIFY(done >= last && done <= all);
        QCOMPARE(qint64(all), QFile(path()).size());
        last = done;
        ++calls;
    });
    QCOMPARE(source.rows.size(), 10000U);
    QCOMPARE(qint64(last), QFile(path()).size());
    QVERIFY(calls >= 3);
}

void SourceTest::progressIsOneLineThatGoesAway()
{
    char *printed = nullptr;
    size_t size = 0;
    FILE *terminal = open_memstream(&printed, &size);
    const Progress progress = progressOn(terminal);
    progress("Reading", 1, 2);
    progress("Reading", 2, 2);
    std::fclose(terminal);
    QCOMPARE(std::string(printed, size), std::string("\r\033[KReading 50 %\r\033[K"));
    std::free(printed);
}

QTEST_GUILESS_MAIN(SourceTest)
#include "sourcetest.moc"
