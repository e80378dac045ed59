#include "childprocess.h"
#include "platformservice.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"
#include "recordfixture.h"

/** Real boxes passed between real processes, with the service beside them. */
class BoxLendingTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(m_service.isReady()); }
    void boxOfAKilledBorrowerComesBack_data();
    void boxOfAKilledBorrowerComesBack();
    void boxIsNotTakenFromALivingBorrower();
    void boxesOfAKilledCloserOfAllComeBack();

private:
    PlatformService m_service;
};

namespace {

constexpr int SoonEnough = 1000; // ms

/** Lets another process have the box that @p owner holds. */
void lend(const KyPDataManager &owner, ChildProcess &borrower)
{
    QCOMPARE(borrower.readLine(), "refused"); // the request leaves only now
    QTRY_VERIFY(!owner.isOpened());
    borrower.write("open");
    QCOMPARE(borrower.readLine(), "opened");
}

} // namespace

void BoxLendingTest::boxOfAKilledBorrowerComesBack_data()
{
    QTest::addColumn<bool>("inAnEdit");
    QTest::newRow("between edits") << false;
    QTest::newRow("inside an edit") << true;
}

void BoxLendingTest::boxOfAKilledBorrowerComesBack()
{
    QFETCH(bool, inAnEdit);
    const TestBox box;
    KyPDataManager owner(box.path().constData(), nullptr, false);
    QVERIFY(addCard(owner, QStringLiteral("a")) != 0);
    ChildProcess borrower({"borrow", box.path()});
    lend(owner, borrower);
    borrower.write("add");
    QCOMPARE(borrower.readLine(), "added");
    if (inAnEdit) {
        borrower.write("edit");
        QCOMPARE(borrower.readLine(), "editing");
    }
    QElapsedTimer clock;
    clock.start();
    borrower.kill();
    QVERIFY(QTest::qWaitFor([&] { return owner.isOpened(); }, SoonEnough));
    QVERIFY2(clock.elapsed() < SoonEnough, QByteArray::number(clock.elapsed()));
    QCOMPARE(owner.count(), 2);
    QVERIFY(addCard(owner, QStringLiteral("c")) != 0);
}

void BoxLendingTest::boxIsNotTakenFromALivingBorrower()
{
    const TestBox box;
    const KyPDataManager owner(box.path().constData(), nullptr, false);
    ChildProcess borrower({"borrow", box.path()});
    lend(owner, borrower);
    QTest::qWait(SoonEnough);
    QVERIFY(!owner.isOpened());
    borrower.write("add");
    QCOMPARE(borrower.readLine(), "added");
    QCOMPARE(borrower.finish(), 0); // closes the box in an orderly way
    QTRY_VERIFY(owner.isOpened());
    QCOMPARE(owner.count(), 1);
}

void BoxLendingTest::boxesOfAKilledCloserOfAllComeBack()
{
    const TestBox one, other;
    const KyPDataManager first(one.path().constData(), nullptr, false);
    const KyPDataManager second(other.path().constData(), nullptr, false);
    ChildProcess closer({"close all"});
    QCOMPARE(closer.readLine(), "asked");
    QTRY_VERIFY(!first.isOpened() && !second.isOpened());
    closer.kill();
    const auto areOpen = [&] { return first.isOpened() && second.isOpened(); };
    QVERIFY(QTest::qWaitFor(areOpen, SoonEnough));
}

namespace {

QByteArray borrowStep(KyPDataManager &manager, const QByteArray &line)
{
    if (line == "open")
        return manager.open(false) ? "opened" : "refused";
    if (line == "add")
        return addCard(manager, QStringLiteral("b")) ? "added" : "failed";
    return manager.editNewCard() && manager.writeItem("TITL", "half") ? "editing" : "failed";
}

int borrow(const QPEApplication &application, const char *box)
{
    KyPDataManager manager(box, nullptr, false);
    const ChildInput input(
        [&manager](const QByteArray &line) { ChildProcess::say(borrowStep(manager, line)); });
    ChildProcess::say(manager.isOpened() ? "opened" : "refused");
    return application.exec();
}

int closeAll(const QPEApplication &application)
{
    {
        QCopEnvelope envelope("QPE/System", "closeFile(QString,QString)");
        envelope << QString() << QStringLiteral("closer");
    }
    ChildProcess::say("asked");
    return application.exec();
}

int childMain(int argc, char **argv)
{
    const QPEApplication application(argc, argv, "borrower");
    return qstrcmp(argv[1], "borrow") == 0 ? borrow(application, argv[2]) : closeAll(application);
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(BoxLendingTest, childMain)
#include "boxlendingtest.moc"
