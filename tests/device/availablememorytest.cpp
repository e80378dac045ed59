#include "devicefile.h"
#include "kymisc.h"
#include "logcapture.h"
#include <QTest>
#include <unistd.h>

namespace {

constexpr auto MemoryFile = "/proc/meminfo";
constexpr auto StorageFile = "/proc/fs/jffs2/1f:03/reliable_free_size";
constexpr int Unknown = 0x7fffffff;

QByteArray kilobytes(qint64 count)
{
    return QByteArray::number(count * 1024);
}

/** The second line of the file, with numbers in kilobytes; the others of it are such that taking one for
 * another shows. */
QByteArray memoryLine(qint64 free, qint64 buffers, qint64 cached)
{
    return "Mem:  " + kilobytes(70000) + ' ' + kilobytes(80000) + ' ' + kilobytes(free) + ' ' +
           kilobytes(90000) + ' ' + kilobytes(buffers) + ' ' + kilobytes(cached) + '\n';
}

QByteArray memoryFile(const QByteArray &secondLine)
{
    return "        total:    used:    free:  shared: buffers:  cached:\n" + secondLine +
           "Swap: 91000000 92000000 93000000 94000000 95000000 96000000\n";
}

/** A program that has no standard input, while this lives. */
class ClosedInput
{
public:
    ClosedInput() : m_saved(::dup(STDIN_FILENO)) { ::close(STDIN_FILENO); }
    ~ClosedInput()
    {
        ::dup2(m_saved, STDIN_FILENO);
        ::close(m_saved);
    }
    Q_DISABLE_COPY_MOVE(ClosedInput)

private:
    int m_saved;
};

} // namespace

class AvailableMemoryTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();

    void memoryIsSummedUp_data();
    void memoryIsSummedUp();
    void withoutMemoryFileThereIsNone();
    void memoryIsReadAnewEachTime();

    void storageIsInKilobytes_data();
    void storageIsInKilobytes();
    void unknownStorageIsTheMaximum();
    void storageThatCannotBeReadIsTheMaximum();
    void storageOnDescriptorZeroIsTheMaximum();
    void noDescriptorStaysOpen();
};

void AvailableMemoryTest::cleanup()
{
    removeDeviceFile(MemoryFile);
    QDir(devicePath(StorageFile)).removeRecursively();
    removeDeviceFile(StorageFile);
}

void AvailableMemoryTest::memoryIsSummedUp_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const QByteArray &contents, int expected) {
        QTest::newRow(name) << contents << expected;
    };
    row("free alone", memoryFile(memoryLine(5000, 0, 0)), 5000 - 2048);
    row("cached alone", memoryFile(memoryLine(0, 0, 6000)), 6000 - 2048);
    row("buffers count twice", memoryFile(memoryLine(0, 3000, 0)), 6000 - 2048);
    row("sum", memoryFile(memoryLine(1000, 200, 4000)), 1000 + 400 + 4000 - 2048);
    row("1000 kilobytes in all", memoryFile(memoryLine(300, 100, 500)), 0);
    row("what is kept back and no more", memoryFile(memoryLine(2048, 0, 0)), 0);
    row("one kilobyte more than is kept back", memoryFile(memoryLine(2049, 0, 0)), 1);
    row("parts of a kilobyte are cut off behind the sum",
        memoryFile("Mem: 1 1 " + QByteArray::number(2049 * 1024 - 1) + " 1 0 1\n"), 1);
    row("16 GB", memoryFile(memoryLine(16LL << 20, 0, 0)), (16 << 20) - 2048);
    row("largest result", memoryFile(memoryLine(Unknown + 2048LL, 0, 0)), Unknown);
    row("beyond the largest result", memoryFile(memoryLine(Unknown + 2049LL, 0, 0)), Unknown);
    row("64 bits", memoryFile("Mem: 1 1 18446744073709551615 1 18446744073709551615 18446744073709551615\n"),
        Unknown);
    row("65 bits", memoryFile("Mem: 1 1 18446744073709551616 1 0 0\n"), Unknown);
    row("1000 digits", memoryFile("Mem: 1 1 " + QByteArray(900, '9') + " 1 0 0\n"), Unknown);
    row("tabs and runs of blanks", memoryFile("  Mem:\t1   2\t5120000 4   0  0\n"), 5000 - 2048);
    row("short line", memoryFile("Mem: 1 1 5120000\n"), 5000 - 2048);
    row("line without numbers", memoryFile("Mem:\n"), 0);
    row("no number", memoryFile("Mem: 1 1 much 1 -9000000 5120000\n"), 5000 - 2048);
    row("digits up to the first other character", memoryFile("Mem: 1 1 5120000kB 1 0 0\n"), 5000 - 2048);
    row("without line feed", "header\nMem: 1 1 5120000 1 0 0", 5000 - 2048);
    row("first line alone", "Mem: 1 1 5120000 1 0 0\n", 0);
    row("today's form", "MemTotal:  8000000 kB\nMemFree:  5000000 kB\nMemAvailable: 6000000 kB\n", 0);
    row("empty second line", "header\n\nMem: 1 1 5120000 1 0 0\n", 0);
    row("empty", "", 0);
    row("zero bytes", QByteArray(5000, '\0'), 0);
}

void AvailableMemoryTest::memoryIsSummedUp()
{
    QFETCH(QByteArray, contents);
    QVERIFY(writeDeviceFile(MemoryFile, contents));
    QTEST(KyMisc::availableMemory(), "expected");
}

void AvailableMemoryTest::withoutMemoryFileThereIsNone()
{
    QVERIFY(!QFile::exists(devicePath(MemoryFile)));
    QCOMPARE(KyMisc::availableMemory(), 0);
}

void AvailableMemoryTest::memoryIsReadAnewEachTime()
{
    QVERIFY(writeDeviceFile(MemoryFile, memoryFile(memoryLine(5000, 0, 0))));
    QCOMPARE(KyMisc::availableMemory(), 5000 - 2048);
    QVERIFY(writeDeviceFile(MemoryFile, memoryFile(memoryLine(7000, 0, 0))));
    QCOMPARE(KyMisc::availableMemory(), 7000 - 2048);
}

void AvailableMemoryTest::storageIsInKilobytes_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const QByteArray &contents, int expected) {
        QTest::newRow(name) << contents << expected;
    };
    row("1048576 and a line feed", "1048576\n", 1024);
    row("without line feed", "1048576", 1024);
    row("parts of a kilobyte", "2047\n", 1);
    row("none", "0\n", 0);
    row("more than 32 bits", "68719476736\n", 64 << 20);
    row("largest that is known", "2199023253504\n", Unknown - 1);
    row("beyond the largest", "2199023256576\n", Unknown);
    row("65 bits", "18446744073709551616\n", Unknown);
    row("32 digits", QByteArray(32, '9'), Unknown);
    row("32 digits that are small", QByteArray(28, '0') + "4096", 4);
    row("what follows 32 bytes doesn't count", QByteArray(28, '0') + "409600", 4);
    row("digits up to the first other character", "4096 8192\n", 4);
    row("no digit at the start", " 4096\n", 0);
    row("sign", "-4096\n", 0);
    row("zero byte",
        QByteArray("4096\0"
                   "99",
                   7),
        4);
    row("empty", "", 0);
}

void AvailableMemoryTest::storageIsInKilobytes()
{
    QFETCH(QByteArray, contents);
    QVERIFY(writeDeviceFile(StorageFile, contents));
    const LogCapture log;
    QTEST(KyMisc::availableInternalStorage(), "expected");
    QCOMPARE(log.lines(), QStringList());
}

void AvailableMemoryTest::unknownStorageIsTheMaximum()
{
    QVERIFY(!QFile::exists(devicePath(StorageFile)));
    const LogCapture log;
    QCOMPARE(KyMisc::availableInternalStorage(), Unknown);
    QCOMPARE(log.lines(), QStringList("DtmFileGetFsAvail: read len is not avail -1"));
}

void AvailableMemoryTest::storageThatCannotBeReadIsTheMaximum()
{
    QVERIFY(QDir().mkpath(devicePath(StorageFile))); // a folder can be opened
    const LogCapture log;
    QCOMPARE(KyMisc::availableInternalStorage(), Unknown);
    QCOMPARE(log.lines(), QStringList("DtmFileGetFsAvail: read len is not avail -1"));
}

void AvailableMemoryTest::storageOnDescriptorZeroIsTheMaximum()
{
    QVERIFY(writeDeviceFile(StorageFile, "1048576\n"));
    const LogCapture log;
    int first = 0, second = 0;
    {
        const ClosedInput closed;
        first = KyMisc::availableInternalStorage();
        second = KyMisc::availableInternalStorage();
    }
    QCOMPARE(first, Unknown);
    QCOMPARE(second, Unknown);
    const QString line = "DtmFileGetFsAvail: cannot open a proc file";
    QCOMPARE(log.lines(), QStringList({line, line}));
    QCOMPARE(KyMisc::availableInternalStorage(), 1024);
}

void AvailableMemoryTest::noDescriptorStaysOpen()
{
    QVERIFY(writeDeviceFile(StorageFile, "1048576\n"));
    const auto openFiles = [] { return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).size(); };
    const auto before = openFiles();
    for (int i = 0; i < 10; ++i)
        QCOMPARE(KyMisc::availableInternalStorage(), 1024);
    QCOMPARE(openFiles(), before);
}

QTEST_GUILESS_MAIN(AvailableMemoryTest)
#include "availablememorytest.moc"
