#include "boxwatch.h"
#include "childprocess.h"
#include "platformservice.h"
#include "qcopenvelope.h"
#include <fcntl.h>
#include <QtTest>
#include <sys/file.h>

namespace {

void sendMessage(const QByteArray &message, const QString &box, const QString &sender)
{
    QCopEnvelope envelope("QPE/System", message);
    envelope << box << sender;
}

void sendClose(const QString &box, const QString &sender)
{
    sendMessage("closeFile(QString,QString)", box, sender);
}

void sendOpen(const QString &box, const QString &sender)
{
    sendMessage("openFile(QString,QString)", box, sender);
}

/** LOCK BOX: holds the lock of a box and asks others to close it, as a process that opened it does. Its
 * input: "release", "take". With an empty LOCK it only asks. */
int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const int fd = *argv[2] ? ::open(argv[2], O_RDWR | O_CREAT, 0600) : -1;
    if (fd >= 0 && ::flock(fd, LOCK_EX | LOCK_NB) != 0)
        return 1;
    sendClose(QString::fromLocal8Bit(argv[3]), "holder");
    ChildInput input([fd](const QByteArray &line) {
        const bool done = ::flock(fd, line == "release" ? LOCK_UN : LOCK_EX | LOCK_NB) == 0;
        ChildProcess::say(done ? "done" : "failed");
    });
    ChildProcess::say("held");
    return QCoreApplication::exec();
}

/** Keeps the boxes that were given free, each with its sender behind a blank. */
class OpenFiles
{
public:
    OpenFiles() : m_channel("QPE/System")
    {
        QObject::connect(&m_channel, &QCopChannel::received,
                         [this](const QByteArray &message, const QByteArray &data) {
                             if (message == "openFile(QString,QString)")
                                 note(data);
                         });
    }
    QStringList seen;

private:
    void note(const QByteArray &data)
    {
        QString box, sender;
        QCopArguments arguments(data);
        arguments >> box >> sender;
        seen.append(box + ' ' + sender);
    }
    QCopChannel m_channel;
};

} // namespace

class BoxWatchTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void lockFileLiesBesideTheBox();
    void killedHolderIsMended_data();
    void killedHolderIsMended();
    void boxThatNobodyHoldsIsGivenFree();
    void nothingIsSentWhileTheLockIsHeld();
    void openFileEndsTheWatch();
    void shortReleaseIsNoRelease();
    void releasedBoxIsMended();
    void mendingHappensOnce();
    void boxesAreWatchedApart();
    void deadCloserOfAllIsMended();
    void livingCloserOfAllIsLeftAlone();
    void openFileForAllEndsThatWatch();
    void openFileForOneBoxDoesNotEndIt();
    void lookingNeverDisturbsAnOpen();
    void damagedMessagesAreIgnored();

private:
    [[nodiscard]] QString box(const QString &name) const { return QDir::homePath() + '/' + name; }
    [[nodiscard]] QString lock(const QString &name) const { return BoxWatch::lockFile(box(name)); }

    std::unique_ptr<PlatformService> m_service;
};

void BoxWatchTest::initTestCase()
{
    QVERIFY(QDir().mkpath(QDir::homePath() + "/Applications/dtm"));
}

void BoxWatchTest::init()
{
    m_service.reset();
    QTRY_VERIFY(!SessionBus::hasOwner(SessionBus::serviceName("platform")));
    m_service = std::make_unique<PlatformService>();
    QVERIFY(m_service->isReady());
}

void BoxWatchTest::lockFileLiesBesideTheBox()
{
    QCOMPARE(BoxWatch::lockFile("/mnt/card/A.BOX"), QString("/mnt/card/A.BOX-lock"));
    QCOMPARE(BoxWatch::lockFile("F0:KYADRS.BOX"), QDir::homePath() + "/Applications/dtm/KYADRS.BOX-lock");
}

void BoxWatchTest::killedHolderIsMended_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("full path") << box("A.BOX");
    QTest::newRow("internal box") << "F0:A.BOX";
    QTest::newRow("Japanese name") << box(QString::fromUtf8("住所録.BOX"));
}

void BoxWatchTest::killedHolderIsMended()
{
    QFETCH(QString, path);
    OpenFiles opened;
    ChildProcess holder({"hold", BoxWatch::lockFile(path), path});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    QTest::qWait(500);
    QVERIFY(opened.seen.isEmpty());
    QElapsedTimer clock;
    clock.start();
    holder.kill();
    QTRY_COMPARE(opened.seen, QStringList{path + " kyplatformd"});
    QVERIFY2(clock.elapsed() >= BoxWatch::FreeTime && clock.elapsed() < 1000,
             QByteArray::number(clock.elapsed()));
}

void BoxWatchTest::boxThatNobodyHoldsIsGivenFree()
{
    OpenFiles opened;
    sendClose(box("none.BOX"), "opener");
    QTRY_COMPARE(opened.seen, QStringList{box("none.BOX") + " kyplatformd"});
}

void BoxWatchTest::nothingIsSentWhileTheLockIsHeld()
{
    OpenFiles opened;
    ChildProcess holder({"hold", lock("B.BOX"), box("B.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    sendClose(box("B.BOX"), "other");
    QTest::qWait(1000);
    QVERIFY(opened.seen.isEmpty());
    QVERIFY(holder.isRunning());
}

void BoxWatchTest::openFileEndsTheWatch()
{
    OpenFiles opened;
    ChildProcess holder({"hold", lock("C.BOX"), box("C.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    sendOpen(box("C.BOX"), "holder");
    holder.kill();
    QTest::qWait(900);
    QCOMPARE(opened.seen, QStringList{box("C.BOX") + " holder"});
}

void BoxWatchTest::shortReleaseIsNoRelease()
{
    OpenFiles opened;
    ChildProcess holder({"hold", lock("D.BOX"), box("D.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    for (int i = 0; i < 3; ++i) {
        holder.write("release");
        QCOMPARE(holder.readLine(), QByteArray("done"));
        QTest::qWait(150);
        holder.write("take");
        QCOMPARE(holder.readLine(), QByteArray("done"));
        QTest::qWait(150);
    }
    QVERIFY(opened.seen.isEmpty());
}

void BoxWatchTest::releasedBoxIsMended()
{
    OpenFiles opened;
    ChildProcess holder({"hold", lock("E.BOX"), box("E.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    holder.write("release");
    QTRY_COMPARE(opened.seen, QStringList{box("E.BOX") + " kyplatformd"});
}

void BoxWatchTest::mendingHappensOnce()
{
    OpenFiles opened;
    sendClose(box("F.BOX"), "opener");
    QTRY_COMPARE(opened.seen.size(), 1);
    QTest::qWait(900);
    QCOMPARE(opened.seen.size(), 1);
}

void BoxWatchTest::boxesAreWatchedApart()
{
    OpenFiles opened;
    ChildProcess first({"hold", lock("G.BOX"), box("G.BOX")}), second({"hold", lock("H.BOX"), box("H.BOX")});
    QCOMPARE(first.readLine(), QByteArray("held"));
    QCOMPARE(second.readLine(), QByteArray("held"));
    first.kill();
    QTRY_COMPARE(opened.seen, QStringList{box("G.BOX") + " kyplatformd"});
    second.kill();
    QTRY_COMPARE(opened.seen.size(), 2);
    QCOMPARE(opened.seen[1], box("H.BOX") + " kyplatformd");
}

void BoxWatchTest::deadCloserOfAllIsMended()
{
    OpenFiles opened;
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    QTest::qWait(400);
    closer.kill();
    QTRY_COMPARE_WITH_TIMEOUT(opened.seen, QStringList{" kyplatformd"}, 1000);
}

void BoxWatchTest::livingCloserOfAllIsLeftAlone()
{
    OpenFiles opened;
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    QTest::qWait(900);
    QVERIFY(opened.seen.isEmpty());
    QVERIFY(closer.isRunning());
}

void BoxWatchTest::openFileForAllEndsThatWatch()
{
    OpenFiles opened;
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    sendOpen("", "closer");
    closer.kill();
    QTest::qWait(700);
    QCOMPARE(opened.seen, QStringList{" closer"});
}

void BoxWatchTest::openFileForOneBoxDoesNotEndIt()
{
    OpenFiles opened;
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    sendOpen(box("A.BOX"), "other");
    closer.kill();
    QTRY_COMPARE(opened.seen.size(), 2);
    QCOMPARE(opened.seen[1], QString(" kyplatformd"));
}

void BoxWatchTest::lookingNeverDisturbsAnOpen()
{
    const int fd = ::open(QFile::encodeName(lock("I.BOX")).constData(), O_RDWR | O_CREAT, 0600);
    QVERIFY(fd >= 0);
    sendClose(box("I.BOX"), "opener");
    QElapsedTimer clock;
    int failures = 0;
    for (clock.start(); clock.elapsed() < 1000;) { // a free time is never long enough to be mended
        failures += ::flock(fd, LOCK_EX | LOCK_NB) != 0;
        ::flock(fd, LOCK_UN);
        QCoreApplication::processEvents();
    }
    ::close(fd);
    QVERIFY2(failures <= 1, QByteArray::number(failures));
}

void BoxWatchTest::damagedMessagesAreIgnored()
{
    OpenFiles opened;
    QCopChannel::send("QPE/System", "closeFile(QString,QString)", QByteArray("\xff\x00\x01", 3));
    QCopChannel::send("QPE/System", "closeFile(QString,QString)");
    sendClose(box("J.BOX"), "kyplatformd");
    QTest::qWait(700);
    QVERIFY(opened.seen.isEmpty());
    sendClose(box("K.BOX"), "opener");
    QTRY_COMPARE(opened.seen, QStringList{box("K.BOX") + " kyplatformd"});
}

KY_TEST_MAIN_WITH_CHILD(BoxWatchTest, childMain)
#include "boxwatchtest.moc"
