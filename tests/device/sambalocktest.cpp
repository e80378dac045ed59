#include "devicepath.h"
#include "kymisc.h"
#include "logcapture.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <QTest>
#include <sys/stat.h>

namespace {

template <typename Number> QByteArray littleEndian(Number value)
{
    value = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

/** The words beside the share mode have all bits set, so that reading one of them shows. */
QByteArray entry(quint32 shareMode)
{
    const QByteArray unused = littleEndian(~quint32{0}) + littleEndian(~quint32{0});
    return unused + littleEndian(shareMode) + unused;
}

QByteArray entries(const QList<quint32> &shareModes)
{
    QByteArray bytes;
    for (const quint32 mode : shareModes)
        bytes += entry(mode);
    return bytes;
}

/** A lock file whose count and name length are what they are told to be. */
QByteArray lockFile(quint32 count, quint16 nameLength, const QByteArray &rest)
{
    return littleEndian(quint32{0x12345678}) + littleEndian(count) + littleEndian(nameLength) + rest;
}

QByteArray lockFile(const QList<quint32> &shareModes, const QByteArray &name = "shared.txt")
{
    return lockFile(quint32(shareModes.size()), quint16(name.size()), name + entries(shareModes));
}

QString lockPath()
{
    return QDir::homePath() + "/lock";
}

bool put(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(contents) == contents.size();
}

/** Whether a lock file of these bytes has a writing entry. */
bool hasWriteEntry(const QByteArray &contents)
{
    return put(lockPath(), contents) && KyMisc::isTheSmbShareFileHasWriteEntry(lockPath());
}

/** Where the server would keep the lock file of a file. */
QString serverLockOf(const QString &path)
{
    struct stat file = {};
    if (::stat(QFile::encodeName(path).constData(), &file) != 0)
        return QString();
    return qEnvironmentVariable("KY_DEVICE_ROOT") +
           QString("/var/lock/samba/share.%1.%2").arg(quint32(file.st_dev)).arg(quint64(file.st_ino));
}

} // namespace

class SambaLockTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void shareModes_data();
    void shareModes();
    void writeEntry_data();
    void writeEntry();
    void copy_data();
    void copy();

    void missingFileHasNoEntry();
    void folderHasNoEntry();
    void everyTruncationIsNoHit();
    void hitBeforeTheEndCounts();
    void countOfZeroEndsIt();
    void negativeCountIsNone();
    void hugeCountEndsWithTheFile();
    void nameOfNoBytesEndsIt();
    void longestName();

    void missingFileIsLocked();
    void fileWithoutLockFileIsFree();
    void lockFileDecides_data();
    void lockFileDecides();
    void serverRunsWhileItsFileIsThere();
};

void SambaLockTest::init()
{
    QDir(lockPath()).removeRecursively();
    QFile::remove(lockPath());
    QDir(devicePath("/var/lock/samba")).removeRecursively();
}

void SambaLockTest::shareModes_data()
{
    QTest::addColumn<QList<quint32>>("modes");
    QTest::addColumn<int>("mask");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("equal");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *name, const QList<quint32> &modes, int mask, int value, bool equal,
                        bool expected) {
        QTest::newRow(name) << modes << mask << value << equal << expected;
    };
    row("equal", {0x05}, 0x0f, 0x05, true, true);
    row("not equal", {0x04}, 0x0f, 0x05, true, false);
    row("different", {0x04}, 0x0f, 0x05, false, true);
    row("not different", {0x05}, 0x0f, 0x05, false, false);
    row("bits beside the mask don't count", {0xf5}, 0x0f, 0x05, true, true);
    row("bytes above the low one don't count", {0xffffff05}, 0xff, 0x05, true, true);
    row("bytes above the low one are no mode", {0x01010100}, 0xff, 0, false, false);
    row("value beside the mask is never met", {0x05}, 0x0f, 0x15, true, false);
    row("value beside the mask always differs", {0x05}, 0x0f, 0x15, false, true);
    row("highest bit", {0x80}, 0x80, 0x80, true, true);
    row("high half", {0xf3}, 0xf0, 0xf0, true, true);
    row("high half of several bytes", {0xfffffff3}, 0xf0, 0xf0, true, true);
    row("high half, different", {0x73}, 0xf0, 0xf0, false, true);
    row("high half, not different", {0xf3}, 0xf0, 0xf0, false, false);
    row("all bits", {0xff}, 0xff, 0xff, true, true);
    row("any entry counts", {0x00, 0x00, 0x05}, 0x0f, 0x05, true, true);
    row("first entry counts", {0x05, 0x00, 0x00}, 0x0f, 0x05, true, true);
    row("no entry of several", {0x00, 0x01, 0x02}, 0x0f, 0x05, true, false);
    row("an empty mask meets zero", {0xff}, 0, 0, true, true);
}

void SambaLockTest::shareModes()
{
    QFETCH(QList<quint32>, modes);
    QFETCH(int, mask);
    QFETCH(int, value);
    QFETCH(bool, equal);
    QVERIFY(put(lockPath(), lockFile(modes)));
    QTEST(KyMisc::checkTheSmbShareFileMode(lockPath(), char(mask), char(value), equal), "expected");
}

void SambaLockTest::writeEntry_data()
{
    QTest::addColumn<QList<quint32>>("modes");
    QTest::addColumn<bool>("expected");
    QTest::newRow("no bit") << QList<quint32>{0x00} << false;
    for (const quint32 bit : {1u, 2u, 4u, 8u})
        QTest::newRow(qPrintable(QString("bit of %1").arg(bit))) << QList<quint32>{bit} << true;
    QTest::newRow("high bits only") << QList<quint32>{0xf0} << false;
    QTest::newRow("second entry") << QList<quint32>{0x10, 0x12} << true;
}

void SambaLockTest::writeEntry()
{
    QFETCH(QList<quint32>, modes);
    QTEST(hasWriteEntry(lockFile(modes)), "expected");
}

void SambaLockTest::copy_data()
{
    QTest::addColumn<QList<quint32>>("modes");
    QTest::addColumn<bool>("expected");
    QTest::newRow("both bits") << QList<quint32>{0x11} << true;
    QTest::newRow("both among others") << QList<quint32>{0xff} << true;
    QTest::newRow("lower bit") << QList<quint32>{0x01} << false;
    QTest::newRow("higher bit") << QList<quint32>{0x10} << false;
    QTest::newRow("one in each of two entries") << QList<quint32>{0x01, 0x10} << false;
    QTest::newRow("second entry") << QList<quint32>{0x00, 0x11} << true;
}

void SambaLockTest::copy()
{
    QFETCH(QList<quint32>, modes);
    QVERIFY(put(lockPath(), lockFile(modes)));
    QTEST(KyMisc::isTheSmbShareFileNowCopy(lockPath()), "expected");
}

void SambaLockTest::missingFileHasNoEntry()
{
    QVERIFY(!KyMisc::checkTheSmbShareFileMode(lockPath(), 0, 0, true));
    QVERIFY(!KyMisc::checkTheSmbShareFileMode(QString(), 0, 0, true));
}

void SambaLockTest::folderHasNoEntry()
{
    QVERIFY(QDir().mkpath(lockPath()));
    QVERIFY(!KyMisc::checkTheSmbShareFileMode(lockPath(), 0, 0, true));
}

void SambaLockTest::everyTruncationIsNoHit()
{
    const QByteArray whole = lockFile({0x00, 0x0f});
    for (qsizetype length = 0; length < whole.size(); ++length)
        QVERIFY2(!hasWriteEntry(whole.first(length)), qPrintable(QString::number(length)));
    QVERIFY(hasWriteEntry(whole));
}

void SambaLockTest::hitBeforeTheEndCounts()
{
    const QByteArray whole = lockFile({0x0f, 0x00});
    const qsizetype secondEntry = whole.size() - entry(0).size();
    for (qsizetype length = 0; length < secondEntry; ++length)
        QVERIFY2(!hasWriteEntry(whole.first(length)), qPrintable(QString::number(length)));
    for (qsizetype length = secondEntry; length <= whole.size(); ++length)
        QVERIFY2(hasWriteEntry(whole.first(length)), qPrintable(QString::number(length)));
}

void SambaLockTest::countOfZeroEndsIt()
{
    QVERIFY(!hasWriteEntry(lockFile(0, 1, "n" + entry(0x0f))));
    QVERIFY(hasWriteEntry(lockFile(1, 1, "n" + entry(0x0f))));
}

void SambaLockTest::negativeCountIsNone()
{
    QVERIFY(!hasWriteEntry(lockFile(0xffffffff, 1, "n" + entry(0x0f))));
    QVERIFY(!hasWriteEntry(lockFile(0x80000000, 1, "n" + entry(0x0f))));
}

void SambaLockTest::hugeCountEndsWithTheFile()
{
    QVERIFY(!hasWriteEntry(lockFile(0x7fffffff, 1, "n" + entries({0x00, 0x10}))));
    QVERIFY(hasWriteEntry(lockFile(0x7fffffff, 1, "n" + entries({0x00, 0x11}))));
}

void SambaLockTest::nameOfNoBytesEndsIt()
{
    QVERIFY(!hasWriteEntry(lockFile(1, 0, entry(0x0f))));
}

void SambaLockTest::longestName()
{
    const QByteArray name(0xffff, 'n');
    QVERIFY(hasWriteEntry(lockFile({0x0f}, name)));
    QVERIFY(!hasWriteEntry(lockFile({0x00}, name)));
    QVERIFY(!hasWriteEntry(lockFile(1, 0xffff, name.chopped(1) + entry(0x0f)))); // one byte of it is missing
    QVERIFY(!hasWriteEntry(lockFile(1, 0xffff, entries({0x0f, 0x0f}))));
    QVERIFY(!hasWriteEntry(lockFile(1, 0xffff, QByteArray())));
}

void SambaLockTest::missingFileIsLocked()
{
    const LogCapture log;
    QVERIFY(KyMisc::isTheFileLockedBySmbd(QDir::homePath() + "/missing"));
    QVERIFY(KyMisc::isTheFileLockedBySmbd(QString()));
    QCOMPARE(log.lines(), QStringList());
}

void SambaLockTest::fileWithoutLockFileIsFree()
{
    const QString shared = QDir::homePath() + QString::fromUtf8("/日本.txt");
    QVERIFY(put(shared, "text"));
    const LogCapture log;
    QVERIFY(!KyMisc::isTheFileLockedBySmbd(shared));
    QCOMPARE(log.lines(), QStringList("lock file is " + serverLockOf(shared)));
}

void SambaLockTest::lockFileDecides_data()
{
    QTest::addColumn<QByteArray>("lock");
    QTest::addColumn<bool>("expected");
    QTest::newRow("writer") << lockFile({0x01}) << true;
    QTest::newRow("reader") << lockFile({0x00}) << false;
    QTest::newRow("reader with high bits") << lockFile({0x10}) << false;
    QTest::newRow("reader and writer") << lockFile({0x10, 0x02}) << true;
    QTest::newRow("no entry") << lockFile({}) << false;
    QTest::newRow("cut short") << lockFile({0x01}).chopped(1) << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void SambaLockTest::lockFileDecides()
{
    QFETCH(QByteArray, lock);
    const QString shared = QDir::homePath() + "/shared.txt", other = QDir::homePath() + "/other.txt";
    QVERIFY(put(shared, "text") && put(other, "text") && put(serverLockOf(shared), lock));
    QTEST(KyMisc::isTheFileLockedBySmbd(shared), "expected");
    QVERIFY(!KyMisc::isTheFileLockedBySmbd(other));
}

void SambaLockTest::serverRunsWhileItsFileIsThere()
{
    QVERIFY(!KyMisc::isSambaForked());
    QVERIFY(put(devicePath("/var/lock/samba/smbd.pid"), "17\n"));
    QVERIFY(KyMisc::isSambaForked());
    QVERIFY(QFile::remove(devicePath("/var/lock/samba/smbd.pid")));
    QVERIFY(!KyMisc::isSambaForked());
}

QTEST_GUILESS_MAIN(SambaLockTest)
#include "sambalocktest.moc"
