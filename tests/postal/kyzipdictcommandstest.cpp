#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

/** Patches, checks, dumps and look-ups as they are called from a shell. */
class KyZipDictCommandsTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void patchOfTwoEditions();
    void patchKeepsBusinesses();
    void patchNeedsPlaces();
    void checkTellsGoodAndBad();
    void dumpPrintsCodes();
    void lookupFindsBothWays();
    void lookupUsesTheDeviceDictionary();
    void lookupFindsTheDictionaryBesideTheProgram();
    void lookupWithoutDictionaryFails();
    void fullOutputIsAnError_data();
    void fullOutputIsAnError();
    void missingFile_data();
    void missingFile();
    void wrongArguments_data();
    void wrongArguments();

private:
    struct Run
    {
        int code = -1;
        QString output;
        QString errors;
    };

    Run run(const QStringList &arguments, const QString &program = KY_ZIPDICT) const;
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    void write(const QString &name, const QByteArray &bytes) const;

    QTemporaryDir m_folder;
};

static QByteArray rowOf(const QByteArray &code, const QByteArray &town)
{
    return "13101,100," + code + ",,,,東京都,千代田区," + town + ",0,0,0,0,0,0\n";
}

static QByteArray businessOf(const QByteArray &code, const QByteArray &name)
{
    return "13101,," + name + ",東京都,千代田区,大手町,１丁目," + code + ",100,銀座,0,0,0\n";
}

void KyZipDictCommandsTest::initTestCase()
{
    write("old.csv", rowOf("1000001", "千代田") + rowOf("1000002", "皇居外苑") + rowOf("1000004", "大手町"));
    write("new.csv", rowOf("1000001", "千代田") + rowOf("1000003", "一ツ橋") + rowOf("1000004", "大手町"));
    write("old-businesses.csv", businessOf("1008701", "あ銀行"));
    write("new-businesses.csv", businessOf("1008701", "あ銀行") + businessOf("1008702", "い銀行"));
    QCOMPARE(run({"write", "old.csv", "-o", "old.dat"}).code, 0);
    QCOMPARE(run({"patch", "old.csv", "new.csv", "-o", "patch.dat"}).code, 0);
}

KyZipDictCommandsTest::Run KyZipDictCommandsTest::run(const QStringList &arguments,
                                                      const QString &program) const
{
    QProcess process;
    process.setWorkingDirectory(m_folder.path());
    process.start(program, arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void KyZipDictCommandsTest::write(const QString &name, const QByteArray &bytes) const
{
    QDir().mkpath(QFileInfo(path(name)).path());
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

void KyZipDictCommandsTest::patchOfTwoEditions()
{
    QCOMPARE(run({"check", "patch.dat"}).code, 0);
    const Run added = run({"lookup", "--dictionary", "old.dat", "--patch", "patch.dat", "1000003"});
    QCOMPARE(added.output, QString("100-0003 東京都千代田区一ツ橋\n"));
    const Run removed = run({"lookup", "--dictionary", "old.dat", "--patch", "patch.dat", "100-0002"});
    QCOMPARE(removed.code, 1);
    QVERIFY(removed.errors.contains("the next one is 100-0003 東京都千代田区一ツ橋\n"));
}

void KyZipDictCommandsTest::patchKeepsBusinesses()
{
    QCOMPARE(
        run({"patch", "--from", "3", "--to", "5", "--serial", "9", "--businesses-old", "old-businesses.csv",
             "--businesses-new", "new-businesses.csv", "old.csv", "new.csv", "-o", "businesses.dat"})
            .code,
        0);
    const Run dump = run({"dump", "businesses.dat"});
    QVERIFY(dump.output.startsWith("kind: patch\ncorrects edition: 3\nserial: 9\nedition: 5\n"));
    QVERIFY(dump.output.contains("1008702 東京都／千代田区大手町１丁目　い銀行"));
    QVERIFY(!dump.output.contains("あ銀行"));
}

void KyZipDictCommandsTest::patchNeedsPlaces()
{
    write("empty.csv", "");
    const Run patch = run({"patch", "old.csv", "empty.csv", "-o", "empty.dat"});
    QCOMPARE(patch.code, 1);
    QVERIFY(patch.errors.contains("empty.csv"));
    QVERIFY(!QFile::exists(path("empty.dat")));
}

void KyZipDictCommandsTest::checkTellsGoodAndBad()
{
    const Run good = run({"check", "old.dat"});
    QCOMPARE(good.code, 0);
    QCOMPARE(good.output, QString("old.dat is good\n"));
    QFile file(path("old.dat"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    write("longer.dat", file.readAll() + 'x');
    const Run bad = run({"check", "longer.dat"});
    QCOMPARE(bad.code, 1);
    QVERIFY(bad.output.startsWith("0x000060: the file says it has"));
}

void KyZipDictCommandsTest::dumpPrintsCodes()
{
    const Run dump = run({"dump", "old.dat"});
    QCOMPARE(dump.code, 0);
    QVERIFY(dump.output.contains("\n1000002 東京都／千代田区皇居外苑\n"));
    const Run text = run({"dump", "old.csv"});
    QCOMPARE(text.code, 1);
    QCOMPARE(text.errors, QString("kyzipdict: old.csv is no dictionary\n"));
}

void KyZipDictCommandsTest::lookupFindsBothWays()
{
    const QString expected = "100-0004 東京都千代田区大手町\n";
    QCOMPARE(run({"lookup", "--dictionary", "old.dat", "100-0004"}).output, expected);
    QCOMPARE(run({"lookup", "--dictionary", "old.dat", "千代田区", "大手町1-2"}).output, expected);
    QCOMPARE(run({"lookup", "--dictionary", "old.dat", "--max", "1", "千代田区大手町"}).output, expected);
}

void KyZipDictCommandsTest::lookupUsesTheDeviceDictionary()
{
    const QString device = qEnvironmentVariable("KY_DEVICE_ROOT") + "/home/QtPalmtop/etc";
    QVERIFY(QDir().mkpath(device));
    QVERIFY(QFile::copy(path("old.dat"), device + "/yubin02.dat"));
    const Run found = run({"lookup", "1000001"});
    QVERIFY(QFile::remove(device + "/yubin02.dat"));
    QCOMPARE(found.output, QString("100-0001 東京都千代田区千代田\n"));
}

void KyZipDictCommandsTest::lookupFindsTheDictionaryBesideTheProgram()
{
    QVERIFY(QDir().mkpath(path("bin")) && QDir().mkpath(path("share/libky")));
    QVERIFY(QFile::copy(KY_ZIPDICT, path("bin/kyzipdict")));
    QVERIFY(QFile::copy(path("old.dat"), path("share/libky/yubin02.dat")));
    const Run found = run({"lookup", "1000001"}, path("bin/kyzipdict"));
    QCOMPARE(found.errors, QString());
    QCOMPARE(found.output, QString("100-0001 東京都千代田区千代田\n"));
}

void KyZipDictCommandsTest::lookupWithoutDictionaryFails()
{
    QVERIFY(QDir().mkpath(path("apart/bin")));
    QVERIFY(QFile::copy(KY_ZIPDICT, path("apart/bin/kyzipdict")));
    const Run found = run({"lookup", "1000001"}, path("apart/bin/kyzipdict"));
    QCOMPARE(found.code, 1);
    QVERIFY(found.errors.contains("share/libky/yubin02.dat: No such file"));
}

void KyZipDictCommandsTest::fullOutputIsAnError_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("lookup") << "lookup --dictionary old.dat 1000001";
    QTest::newRow("dump") << "dump old.dat";
    QTest::newRow("check") << "check old.dat";
}

void KyZipDictCommandsTest::fullOutputIsAnError()
{
    QFETCH(const QString, command);
    const Run failed = run({"-c", "exec \"$0\" " + command + " >/dev/full", KY_ZIPDICT}, "/bin/sh");
    QCOMPARE(failed.code, 1);
    QCOMPARE(failed.errors, QString("kyzipdict: standard output: No space left on device\n"));
}

void KyZipDictCommandsTest::missingFile_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("check") << QStringList{"check", "missing"};
    QTest::newRow("dump") << QStringList{"dump", "missing"};
    QTest::newRow("lookup") << QStringList{"lookup", "--dictionary", "missing", "1000001"};
    QTest::newRow("patch") << QStringList{"patch", "old.csv", "missing", "-o", "made.dat"};
    QTest::newRow("folder") << QStringList{"check", "."};
}

void KyZipDictCommandsTest::missingFile()
{
    QFETCH(const QStringList, arguments);
    const Run failed = run(arguments);
    QCOMPARE(failed.code, 1);
    QCOMPARE(failed.output, QString());
    QVERIFY(!failed.errors.isEmpty());
}

void KyZipDictCommandsTest::wrongArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("reason");
    const QString edition = "the value of --to is a number from 2 to 255";
    QTest::newRow("check nothing") << QStringList{"check"} << "check needs one file";
    QTest::newRow("check two") << QStringList{"check", "a", "b"} << "check needs one file";
    QTest::newRow("dump nothing") << QStringList{"dump"} << "dump needs one file";
    QTest::newRow("unknown option") << QStringList{"dump", "--all", "a"} << "unknown option --all";
    QTest::newRow("lookup nothing") << QStringList{"lookup"} << "lookup needs a code or an address";
    QTest::newRow("patch alone") << QStringList{"lookup", "--patch", "a", "b"}
                                 << "--patch needs --dictionary";
    QTest::newRow("no maximum") << QStringList{"lookup", "--max", "0", "b"} << "the value of --max";
    QTest::newRow("large maximum") << QStringList{"lookup", "--max", "501", "b"} << "the value of --max";
    QTest::newRow("value missing") << QStringList{"lookup", "b", "--max"}
                                   << "a value is missing behind --max";
    QTest::newRow("one edition") << QStringList{"patch", "a", "-o", "b"}
                                 << "patch needs the older and the newer";
    QTest::newRow("no output") << QStringList{"patch", "a", "b"} << "the file to write is missing";
    QTest::newRow("edition 256") << QStringList{"patch", "--to", "256", "a", "b", "-o", "c"} << edition;
    QTest::newRow("edition of letters") << QStringList{"patch", "--to", "2x", "a", "b", "-o", "c"} << edition;
    QTest::newRow("same edition") << QStringList{"patch", "--from", "2", "a", "b", "-o", "c"}
                                  << "comes behind the one that it corrects";
    QTest::newRow("businesses of one edition")
        << QStringList{"patch", "--businesses-old", "d", "a", "b", "-o", "c"}
        << "businesses of one edition only";
}

void KyZipDictCommandsTest::wrongArguments()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QString, reason);
    const Run failed = run(arguments);
    QCOMPARE(failed.code, 2);
    QVERIFY2(failed.errors.contains(reason), qPrintable(failed.errors));
    QVERIFY(failed.errors.contains("Usage: kyzipdict " + arguments.first()));
}

QTEST_MAIN(KyZipDictCommandsTest)
#include "kyzipdictcommandstest.moc"
