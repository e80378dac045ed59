#include "boxholder.h"

class BoxWatchTest : public WatchedBoxes
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(prepare()); }
    void lockFileLiesBesideTheBox();
    void killedHolderIsMended_data();
    void killedHolderIsMended();
    void boxThatNobodyHoldsIsGivenFree();
    void releasedBoxIsMended();
    void boxesAreWatchedApart();
    void requestsBeyondTheMostAreIgnored();
    void pathThatIsTooLongIsIgnored();
};

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
    OpenFiles opened({path});
    ChildProcess holder({"hold", BoxWatch::lockFile(path), path});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    QTest::qWait(300);
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
    OpenFiles opened({box("none.BOX")});
    sendClose(box("none.BOX"), "opener");
    QTRY_COMPARE(opened.seen, QStringList{box("none.BOX") + " kyplatformd"});
}

void BoxWatchTest::releasedBoxIsMended()
{
    OpenFiles opened({box("E.BOX")});
    ChildProcess holder({"hold", lock("E.BOX"), box("E.BOX")});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    holder.write("release");
    QTRY_COMPARE(opened.seen, QStringList{box("E.BOX") + " kyplatformd"});
}

void BoxWatchTest::boxesAreWatchedApart()
{
    OpenFiles opened({box("G.BOX"), box("H.BOX")});
    ChildProcess first({"hold", lock("G.BOX"), box("G.BOX")}), second({"hold", lock("H.BOX"), box("H.BOX")});
    QCOMPARE(first.readLine(), QByteArray("held"));
    QCOMPARE(second.readLine(), QByteArray("held"));
    first.kill();
    QTRY_COMPARE(opened.seen, QStringList{box("G.BOX") + " kyplatformd"});
    second.kill();
    QTRY_COMPARE(opened.seen.size(), 2);
    QCOMPARE(opened.seen[1], box("H.BOX") + " kyplatformd");
}

void BoxWatchTest::requestsBeyondTheMostAreIgnored()
{
    constexpr qsizetype count = BoxWatch::MostBoxes + 50;
    QStringList boxes;
    for (qsizetype i = 0; i < count; ++i)
        boxes.append(box(QString("flood%1.BOX").arg(i)));
    OpenFiles opened(boxes);
    for (const QString &path : boxes)
        sendClose(path, "opener");
    QTRY_VERIFY(opened.seen.size() >= BoxWatch::MostBoxes);
    // It is free for new ones again, and those before come first.
    OpenFiles later({box("later.BOX")});
    sendClose(box("later.BOX"), "opener");
    QTRY_COMPARE(later.seen.size(), 1);
    QCOMPARE(opened.seen.size(), BoxWatch::MostBoxes);
}

void BoxWatchTest::pathThatIsTooLongIsIgnored()
{
    const QString longest = '/' + QString(BoxWatch::LongestPath - 1, 'l');
    OpenFiles opened({longest, longest + 'l'});
    sendClose(longest + 'l', "opener");
    sendClose(longest, "opener");
    QTRY_COMPARE(opened.seen, QStringList{longest + " kyplatformd"});
    sendClose(box("after.BOX"), "opener");
    OpenFiles after({box("after.BOX")});
    QTRY_COMPARE(after.seen.size(), 1);
    QCOMPARE(opened.seen.size(), 1);
}

KY_TEST_MAIN_WITH_CHILD(BoxWatchTest, childMain)
#include "boxwatchtest.moc"
