#include "jistext.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

/** The program, as it is called from a shell. */
class KyZipDictTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void writesADictionary();
    void readsStandardInput();
    void addsBusinesses();
    void quietIsQuiet();
    void verboseListsKeysLeftOut();
    void unusableRowsAreToldWithTheirLine();
    void editionIsWritten();
    void wrongArguments_data();
    void wrongArguments();
    void helpIsNoError_data();
    void helpIsNoError();
    void missingFileIsAnError();
    void businessesThatCannotBeReadAreAnError();
    void nothingToWriteKeepsTheOldFile();
    void failedWritingKeepsTheOldFile();
    void fullDiskKeepsTheOldFile();
    void sourcesAreNotReplaced();
    void pipesAreNotReplaced();
    void noProgressWithoutATerminal();
    void hasNoLibrariesToWaitFor();

private:
    struct Run
    {
        int code = -1;
        QByteArray output;
        QByteArray errors;
    };

    Run run(const QStringList &arguments, const QByteArray &input = {},
            const QString &program = KY_ZIPDICT) const;
    void write(const QString &name, const QByteArray &bytes) const;
    QByteArray content(const QString &name) const;
    bool exists(const QString &name) const { return QFile::exists(m_folder->filePath(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

const QByteArray Places = "13101,100,1000001,,,,東京都,千代田区,千代田,0,0,0,0,0,0\n"
                          "13101,100,1000003,,,,東京都,千代田区,一ツ橋（１丁目）,0,0,0,0,0,0\n"
                          "13101,100,1000003,,,,東京都,千代田区,神田,0,0,0,0,0,0\n";
const QByteArray Businesses = "13101,,あ銀行,東京都,千代田区,大手町,１丁目,1008701,100,銀座,0,0,0\n";

constexpr qsizetype EditionOffset = 5;

} // namespace

void KyZipDictTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    write("places.csv", Places);
}

KyZipDictTest::Run KyZipDictTest::run(const QStringList &arguments, const QByteArray &input,
                                      const QString &program) const
{
    QProcess process;
    process.setWorkingDirectory(m_folder->path());
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

void KyZipDictTest::write(const QString &name, const QByteArray &bytes) const
{
    QFile file(m_folder->filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray KyZipDictTest::content(const QString &name) const
{
    QFile file(m_folder->filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void KyZipDictTest::writesADictionary()
{
    const Run result = run({"write", "places.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.errors, "");
    QCOMPARE(result.code, 0);
    const QByteArray file = content("yubin02.dat");
    QCOMPARE(file.left(4).toHex(), "ff002802");
    QCOMPARE(result.output, "rows used: 3\nplaces: 3\ncodes: 2\nbytes: " + QByteArray::number(file.size()) +
                                "\nkeys left out: 0\n");
    QVERIFY(!exists("yubin02.dat.new"));
}

void KyZipDictTest::readsStandardInput()
{
    QCOMPARE(run({"write", "places.csv", "-o", "a.dat"}).code, 0);
    QCOMPARE(run({"write", "-o", "b.dat", "-"}, Places).code, 0);
    QVERIFY(!content("a.dat").isEmpty());
    QCOMPARE(content("b.dat"), content("a.dat"));
    const Run bad = run({"write", "-o", "b.dat", "-"}, "x\n");
    QVERIFY2(bad.errors.startsWith("standard input: "), bad.errors.constData());
}

void KyZipDictTest::addsBusinesses()
{
    write("businesses.csv", Businesses);
    const Run result = run({"write", "--businesses", "businesses.csv", "places.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.output.startsWith("rows used: 4\nplaces: 4\ncodes: 3\n"), result.output.constData());
}

void KyZipDictTest::quietIsQuiet()
{
    write("places.csv", Places + "x\n");
    const Run result = run({"write", "--quiet", "places.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.output, "");
    QVERIFY(result.errors.startsWith("places.csv:4: ")); // what went wrong is told
    QVERIFY(exists("yubin02.dat"));
}

void KyZipDictTest::verboseListsKeysLeftOut()
{
    // More municipalities in a 郡 than the index has room for, each with a first two characters of its own.
    QByteArray places;
    int count = 0;
    for (unsigned code = 0x3021; count < 2000; code += (code & 0xFF) == 0x7E ? 0xA3 : 1) {
        const std::u16string name = ZipDict::fromJis(std::string{char(code >> 8), char(code & 0xFF)});
        if (name == u"\uFFFD")
            continue;
        const QByteArray municipality = "甲郡" + QString::fromStdU16String(name).toUtf8() + "田町";
        places +=
            "1,1," + QByteArray::number(1000000 + count) + ",,,,東京都," + municipality + ",,0,0,0,0,0,0\n";
        ++count;
    }
    write("places.csv", places);
    const Run result = run({"write", "--verbose", "places.csv", "-o", "yubin02.dat"});
    const Run brief = run({"write", "places.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.code, 0);
    QCOMPARE(brief.code, 0);
    const QByteArray mark = "keys left out: ";
    const qsizetype at = brief.output.indexOf(mark);
    const int leftOut = brief.output.mid(at + mark.size()).trimmed().toInt();
    QVERIFY2(leftOut > 0, brief.output.constData());
    QCOMPARE(brief.output.count('\n'), 5);
    QCOMPARE(result.output.count('\n'), 5 + leftOut);
}

void KyZipDictTest::unusableRowsAreToldWithTheirLine()
{
    write("places.csv", "13101,100,1000002,,,,江戸,千代田区,皇居外苑,0,0,0,0,0,0\n" + Places + "1,2,3\n");
    const Run result = run({"write", "places.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.code, 0);
    const QByteArrayList lines = result.errors.split('\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY2(lines[0].startsWith("places.csv:1: "), result.errors.constData());
    QVERIFY2(lines[1].startsWith("places.csv:5: "), result.errors.constData());
    QVERIFY(result.output.startsWith("rows used: 3\n"));
}

void KyZipDictTest::editionIsWritten()
{
    QCOMPARE(run({"write", "places.csv", "-o", "yubin02.dat"}).code, 0);
    QCOMPARE(int(quint8(content("yubin02.dat").at(EditionOffset))), 1);
    QCOMPARE(run({"write", "--edition", "255", "places.csv", "-o", "yubin02.dat"}).code, 0);
    QCOMPARE(int(quint8(content("yubin02.dat").at(EditionOffset))), 255);
}

void KyZipDictTest::wrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("error");
    using List = QStringList;
    QTest::newRow("none") << List{} << QByteArray("Usage: kyzipdict COMMAND");
    QTest::newRow("unknown command") << List{"make"} << QByteArray("unknown command make");
    QTest::newRow("no files") << List{"write"} << QByteArray("write needs one file of places");
    QTest::newRow("no output") << List{"write", "places.csv"} << QByteArray("the file to write is missing");
    QTest::newRow("no value") << List{"write", "places.csv", "-o"}
                              << QByteArray("a value is missing behind -o");
    QTest::newRow("two files") << List{"write", "a", "b", "-o", "c"}
                               << QByteArray("write needs one file of places");
    QTest::newRow("unknown option") << List{"write", "--speed", "a", "-o", "c"}
                                    << QByteArray("unknown option --speed");
    QTest::newRow("unknown option at the end")
        << List{"write", "a", "-o", "c", "-x"} << QByteArray("unknown option -x");
    for (const char *edition : {"0", "256", "99999999999999999999", "one", "", "-1", "1 "})
        QTest::addRow("edition %s", edition)
            << List{"write", "--edition", edition, "places.csv", "-o", "yubin02.dat"}
            << QByteArray("the value of --edition is a number from 1 to 255");
}

void KyZipDictTest::wrongArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, error);
    const Run result = run(arguments);
    QCOMPARE(result.code, 2);
    QCOMPARE(result.output, "");
    QVERIFY2(result.errors.contains(error), result.errors.constData());
    QVERIFY2(result.errors.contains("Usage: kyzipdict "), result.errors.constData());
    QVERIFY(!exists("yubin02.dat"));
}

void KyZipDictTest::helpIsNoError_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("--help") << QStringList{"--help"};
    QTest::newRow("-h") << QStringList{"-h"};
    QTest::newRow("of a command") << QStringList{"write", "--help"};
    QTest::newRow("behind other arguments") << QStringList{"write", "places.csv", "-h"};
}

void KyZipDictTest::helpIsNoError()
{
    QFETCH(QStringList, arguments);
    const Run result = run(arguments);
    QCOMPARE(result.code, 0);
    QCOMPARE(result.errors, "");
    QVERIFY2(result.output.contains("write [--edition N]"), result.output.constData());
    QCOMPARE(result.output.contains("\n  --edition N "), arguments.first() == "write");
}

void KyZipDictTest::missingFileIsAnError()
{
    const Run result = run({"write", "none.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.errors.startsWith("none.csv: No such file or directory\n"), result.errors.constData());
    QVERIFY(!exists("yubin02.dat"));
}

/* A dictionary without them would take the place of one that has them. */
void KyZipDictTest::businessesThatCannotBeReadAreAnError()
{
    write("yubin02.dat", "old");
    const QStringList arguments = {"write",      "--businesses", "businesses.csv",
                                   "places.csv", "-o",           "yubin02.dat"};
    const Run missing = run(arguments);
    QCOMPARE(missing.code, 1);
    QVERIFY2(missing.errors.startsWith("businesses.csv: No such file"), missing.errors.constData());
    write("businesses.csv", "");
    QCOMPARE(run(arguments).code, 1);
    QCOMPARE(content("yubin02.dat"), "old");
}

void KyZipDictTest::nothingToWriteKeepsTheOldFile()
{
    write("yubin02.dat", "old");
    write("places.csv", "x\n");
    QCOMPARE(run({"write", "places.csv", "-o", "yubin02.dat"}).code, 1);
    QCOMPARE(content("yubin02.dat"), "old");
}

void KyZipDictTest::failedWritingKeepsTheOldFile()
{
    write("yubin02.dat", "old");
    QVERIFY(QDir(m_folder->path()).mkpath("yubin02.dat.new/inner"));
    const Run result = run({"write", "places.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.code, 1);
    QVERIFY2(result.errors.contains("yubin02.dat: Is a directory"), result.errors.constData());
    QCOMPARE(content("yubin02.dat"), "old");

    const Run nowhere = run({"write", "places.csv", "-o", "none/yubin02.dat"});
    QCOMPARE(nowhere.code, 1);
    QVERIFY2(nowhere.errors.contains("No such file or directory"), nowhere.errors.constData());
}

void KyZipDictTest::fullDiskKeepsTheOldFile()
{
    write("yubin02.dat", "old");
    // No file may grow at all, and the signal that tells it is ignored.
    const Run result =
        run({"-c", "trap '' XFSZ; ulimit -f 0; exec \"$0\" write places.csv -o yubin02.dat", KY_ZIPDICT}, {},
            "/bin/sh");
    QCOMPARE(result.code, 1);
    QVERIFY2(result.errors.contains("yubin02.dat: File too large"), result.errors.constData());
    QCOMPARE(content("yubin02.dat"), "old");
    QVERIFY(!exists("yubin02.dat.new"));
}

void KyZipDictTest::sourcesAreNotReplaced()
{
    write("businesses.csv", Businesses);
    QVERIFY(QFile::link("places.csv", m_folder->filePath("link.csv")));
    for (const char *output : {"places.csv", "./places.csv", "link.csv", "businesses.csv"}) {
        const Run result = run({"write", "--businesses", "businesses.csv", "places.csv", "-o", output});
        QCOMPARE(result.code, 1);
        QCOMPARE(result.errors, QByteArray("kyzipdict: ") + output + ": it is one of the files to read\n");
    }
    write("newer.csv", Places);
    QCOMPARE(run({"patch", "places.csv", "newer.csv", "-o", "newer.csv"}).code, 1);
    QCOMPARE(content("places.csv"), Places);
    QCOMPARE(content("newer.csv"), Places);
    QCOMPARE(content("businesses.csv"), Businesses);
}

/* Renaming would put a file in the place of /dev/stdout. */
void KyZipDictTest::pipesAreNotReplaced()
{
    const QByteArray pipe = QFile::encodeName(m_folder->filePath("pipe"));
    QCOMPARE(mkfifo(pipe.constData(), 0600), 0);
    const Run result = run({"write", "places.csv", "-o", "pipe"});
    QCOMPARE(result.code, 1);
    QCOMPARE(result.errors, "kyzipdict: pipe: it is no file that can be replaced\n");
    struct stat status = {};
    QVERIFY(stat(pipe.constData(), &status) == 0 && S_ISFIFO(status.st_mode));
}

void KyZipDictTest::noProgressWithoutATerminal()
{
    write("places.csv", Places.repeated(5000));
    const Run result = run({"write", "places.csv", "-o", "yubin02.dat"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.errors, "");
}

void KyZipDictTest::hasNoLibrariesToWaitFor()
{
    QFile program(KY_ZIPDICT);
    QVERIFY(program.open(QIODevice::ReadOnly));
    const QByteArray bytes = program.readAll();
    QByteArrayList libraries = {"libQt6", "libicu"};
#ifndef __SANITIZE_ADDRESS__ // which is a library, and needs more of them
    libraries += {"libstdc++.so", "libgcc_s.so"};
#endif
    for (const QByteArray &library : libraries)
        QVERIFY2(!bytes.contains(library), library);
}

QTEST_GUILESS_MAIN(KyZipDictTest)
#include "kyzipdicttest.moc"
