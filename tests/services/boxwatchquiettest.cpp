#include "boxholder.h"

class BoxWatchQuietTest : public WatchedBoxes
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(prepare()); }
    void nothingIsSentWhileTheLockIsHeld();
    void openFileDoesNotEndTheWatch();
    void shortReleaseIsNoRelease();
    void mendingHappensOnce();
    void lookingLetsOpensSucceed();
    void damagedMessagesAreIgnored();
};

void BoxWatchQuietTest::nothingIsSentWhileTheLockIsHeld()
{
    OpenFiles opened({box("B.BOX")});
    ChildProcess holder({"hold", lock("B.BOX"), box("B.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    sendClose(box("B.BOX"), "other");
    QTest::qWait(Long);
    QVERIFY(opened.seen.isEmpty());
    QVERIFY(holder.isRunning());
}

void BoxWatchQuietTest::openFileDoesNotEndTheWatch()
{
    OpenFiles opened({box("C.BOX")});
    ChildProcess holder({"hold", lock("C.BOX"), box("C.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    sendOpen(box("C.BOX"), "holder");
    holder.kill();
    QTRY_COMPARE(opened.seen, (QStringList{box("C.BOX") + " holder", box("C.BOX") + " kyplatformd"}));
    QTest::qWait(Long);
    QCOMPARE(opened.seen.size(), 2);
}

void BoxWatchQuietTest::shortReleaseIsNoRelease()
{
    OpenFiles opened({box("D.BOX")});
    ChildProcess holder({"hold", lock("D.BOX"), box("D.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    for (int i = 0; i < 2; ++i) {
        holder.write("release");
        QCOMPARE(holder.readLine(), QByteArray("done"));
        QTest::qWait(150);
        holder.write("take");
        QCOMPARE(holder.readLine(), QByteArray("done"));
        QTest::qWait(150);
    }
    QVERIFY(opened.seen.isEmpty());
}

void BoxWatchQuietTest::mendingHappensOnce()
{
    OpenFiles opened({box("F.BOX")});
    sendClose(box("F.BOX"), "opener");
    QTRY_COMPARE(opened.seen.size(), 1);
    QTest::qWait(Long);
    QCOMPARE(opened.seen.size(), 1);
}

void BoxWatchQuietTest::lookingLetsOpensSucceed()
{
    const int fd = ::open(QFile::encodeName(lock("I.BOX")).constData(), O_RDWR | O_CREAT, 0600);
    QVERIFY(fd >= 0);
    sendClose(box("I.BOX"), "opener");
    QElapsedTimer clock;
    int failures = 0;
    for (clock.start(); clock.elapsed() < Long;) {
        failures += ::flock(fd, LOCK_EX | LOCK_NB) != 0;
        ::flock(fd, LOCK_UN);
        QCoreApplication::processEvents();
    }
    ::close(fd);
    QVERIFY2(failures <= 1, QByteArray::number(failures)); // the watch's one look before it mends
}

void BoxWatchQuietTest::damagedMessagesAreIgnored()
{
    OpenFiles opened({box("J.BOX"), box("K.BOX")});
    QCopChannel::send("QPE/System", "closeFile(QString,QString)", QByteArray("\xff\x00\x01", 3));
    QCopChannel::send("QPE/System", "closeFile(QString,QString)");
    sendClose(box("J.BOX"), "kyplatformd");
    QTest::qWait(Long);
    QVERIFY(opened.seen.isEmpty());
    sendClose(box("K.BOX"), "opener");
    QTRY_COMPARE(opened.seen, QStringList{box("K.BOX") + " kyplatformd"});
}

KY_TEST_MAIN_WITH_CHILD(BoxWatchQuietTest, childMain)
#include "boxwatchquiettest.moc"
