#include "boxholder.h"

class CloseForAllTest : public WatchedBoxes
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(prepare()); }
    void deadCloserOfAllIsMended();
    void livingCloserOfAllIsLeftAlone();
    void openFileForAllEndsThatWatch();
    void openFileForOneBoxDoesNotEndIt();
};

void CloseForAllTest::deadCloserOfAllIsMended()
{
    OpenFiles opened({""});
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    QTest::qWait(300);
    closer.kill();
    QTRY_COMPARE_WITH_TIMEOUT(opened.seen, QStringList{" kyplatformd"}, 1000);
}

void CloseForAllTest::livingCloserOfAllIsLeftAlone()
{
    OpenFiles opened({""});
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    QTest::qWait(Long);
    QVERIFY(opened.seen.isEmpty());
    QVERIFY(closer.isRunning());
    sendOpen("", "closer");
}

void CloseForAllTest::openFileForAllEndsThatWatch()
{
    OpenFiles opened({""});
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    sendOpen("", "closer");
    QTRY_COMPARE(opened.seen.size(), 1); // on the bus before the closer leaves it
    closer.kill();
    QTest::qWait(Long);
    QCOMPARE(opened.seen, QStringList{" closer"});
}

void CloseForAllTest::openFileForOneBoxDoesNotEndIt()
{
    OpenFiles opened({box("A.BOX"), ""});
    ChildProcess closer({"hold", "", ""});
    QCOMPARE(closer.readLine(), QByteArray("held"));
    sendOpen(box("A.BOX"), "other");
    QTRY_COMPARE(opened.seen.size(), 1);
    closer.kill();
    QTRY_COMPARE(opened.seen.size(), 2);
    QCOMPARE(opened.seen[1], QString(" kyplatformd"));
}

KY_TEST_MAIN_WITH_CHILD(CloseForAllTest, childMain)
#include "closeforalltest.moc"
