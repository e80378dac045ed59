#include "folderlock_p.h"

#include "childprocess.h"
#include <QTemporaryDir>
#include <QTest>

namespace {

/** FOLDER: has the lock until it is killed; FOLDER FILE: until it has made that file, a moment later. */
int childMain(int argc, char **argv)
{
    if (argc < 2)
        return 2;
    const FolderLock lock(QFile::decodeName(argv[1]));
    ChildProcess::say("held");
    QThread::msleep(argc > 2 ? 200 : 60000);
    QFile file(argc > 2 ? QFile::decodeName(argv[2]) : QString());
    return file.open(QIODevice::WriteOnly) ? 0 : 1;
}

} // namespace

class FolderLockTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void anotherProcessIsWaitedFor();
    void killedProcessHasNoLock();
    void lockEndsWithItsObject();
    void lockIsNotPassedToAStartedProgram();
    void otherFoldersAreFree();
    void nothingIsLeftBehind();
    void folderThatCannotBeOpened();

private:
    /** True when nobody has the lock. */
    [[nodiscard]] bool isFree() const
    {
        const Descriptor folder(
            ::open(QFile::encodeName(m_folder->path()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return ::flock(folder.get(), LOCK_EX | LOCK_NB) == 0;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void FolderLockTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void FolderLockTest::anotherProcessIsWaitedFor()
{
    const QString done = m_folder->filePath("done");
    ChildProcess holder({m_folder->path(), done});
    QCOMPARE(holder.readLine(), "held");
    const FolderLock lock(m_folder->path());
    QVERIFY(QFile::exists(done));
    QCOMPARE(holder.finish(), 0);
}

void FolderLockTest::killedProcessHasNoLock()
{
    ChildProcess holder({m_folder->path()});
    QCOMPARE(holder.readLine(), "held");
    QVERIFY(!isFree());
    holder.kill();
    QVERIFY(isFree());
}

void FolderLockTest::lockEndsWithItsObject()
{
    {
        const FolderLock lock(m_folder->path());
        QVERIFY(!isFree());
    }
    QVERIFY(isFree());
}

void FolderLockTest::lockIsNotPassedToAStartedProgram()
{
    QProcess program;
    {
        const FolderLock lock(m_folder->path());
        program.start("sleep", {"60"});
        QVERIFY(program.waitForStarted());
    }
    QVERIFY(isFree());
    program.kill();
    QVERIFY(program.waitForFinished());
}

void FolderLockTest::otherFoldersAreFree()
{
    const QTemporaryDir other;
    const FolderLock lock(other.path());
    QVERIFY(isFree());
}

void FolderLockTest::nothingIsLeftBehind()
{
    {
        const FolderLock lock(m_folder->path());
    }
    QVERIFY(QDir(m_folder->path()).isEmpty());
}

void FolderLockTest::folderThatCannotBeOpened()
{
    const QString missing = m_folder->filePath("missing");
    const FolderLock none(missing); // comes back
    QVERIFY(!QFile::exists(missing));
    QFile file(m_folder->filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const FolderLock ofAFile(file.fileName());
    const FolderLock ofNothing{QString()};
    QVERIFY(isFree());
}

KY_TEST_MAIN_WITH_CHILD(FolderLockTest, childMain)
#include "folderlocktest.moc"
