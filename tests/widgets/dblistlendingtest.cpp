#include "boxuser.h"
#include "dblistfixture.h"
#include "logcapture.h"
#include "qpeapplication.h"

/** A list of a box that another application takes away for a while. */
class DbListLendingTest : public QObject
{
    Q_OBJECT
private slots:
    void listOfALentBoxIsEmpty();
};

void DbListLendingTest::listOfALentBoxIsEmpty()
{
    ListedBox box({"a", "c"});
    showList(box.list);
    box.list.setCurrentCardId(box.cards[1]);
    BoxUserProcess borrower(box.box.path(), "borrower");
    borrower.start();
    QCOMPARE(borrower.ask("take"), "open");
    QVERIFY(!box.manager->isOpened());
    LogCapture log;
    (void)box.list.grab();
    QCOMPARE(box.texts(), (QStringList{"", ""}));
    QCOMPARE(log.lines(), QStringList()); // which would be many, one for each cell at each painting
    QVERIFY(!box.list.deleteItem(box.cards[1]));
    clickHeader(box.list, 1);
    box.list.update(box.cards[1]);
    QVERIFY(box.list.topLevelItemCount() <= 2);

    const unsigned long added = borrower.ask("add b").toULong();
    QVERIFY(added > 0);
    QCOMPARE(borrower.ask("close"), "closed");
    QTRY_VERIFY_WITH_TIMEOUT(box.manager->isOpened(), 10000);
    box.list.update(added);
    QCOMPARE(box.texts(), (QStringList{"a", "b", "c"}));
    QCOMPARE(box.selected(), QStringList{"b"});
    QCOMPARE(borrower.finish(), 0);
}

namespace {

int childMain(int argc, char **argv)
{
    return useBox(argc, argv);
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(DbListLendingTest, childMain)
#include "dblistlendingtest.moc"
