#include "boxuser.h"
#include "platformservice.h"
#include "qcopenvelope.h"

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
    void askerThatDiesLeavesTheBoxToItsOwner();
    void boxComesBackFromOnesOwnApplication();
    void twoWaitForOneBox_data();
    void twoWaitForOneBox();
    void killedLenderIsForgotten();
    void editOutlastsAKilledBorrower();

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

void BoxLendingTest::askerThatDiesLeavesTheBoxToItsOwner()
{
    const TestBox box;
    KyPDataManager owner(box.path().constData(), nullptr, false);
    ChildProcess asker({"borrow", box.path()});
    QCOMPARE(asker.readLine(), "refused");
    QTRY_VERIFY(!owner.isOpened());
    asker.kill(); // before it has tried again
    QTRY_VERIFY(owner.isOpened());
    QVERIFY(addCard(owner, QStringLiteral("a")) != 0);
}

/** What another manager of the same application sends is ignored. */
void BoxLendingTest::boxComesBackFromOnesOwnApplication()
{
    const TestBox box;
    const KyPDataManager owner(box.path().constData(), nullptr, false);
    ChildProcess borrower({"borrow", box.path()});
    lend(owner, borrower);
    auto second = std::make_unique<KyPDataManager>(box.path().constData(), nullptr, false);
    QTRY_VERIFY(second->isOpened() || second->open(false));
    QCOMPARE(borrower.finish(), 0); // waits for the box itself, and says nothing
    second.reset();
    QVERIFY(!owner.isOpened());
    QTRY_VERIFY(owner.isOpened());
}

void BoxLendingTest::twoWaitForOneBox_data()
{
    QTest::addColumn<bool>("isKilled");
    QTest::newRow("for one that closes it") << false;
    QTest::newRow("for one that is killed") << true;
}

void BoxLendingTest::twoWaitForOneBox()
{
    QFETCH(bool, isKilled);
    const TestBox box;
    std::vector<std::unique_ptr<BoxUserProcess>> users;
    for (const char *name : {"first", "second", "third"}) {
        users.push_back(std::make_unique<BoxUserProcess>(box.path(), name));
        QVERIFY(!users.back()->start().isEmpty());
        QCOMPARE(users.back()->ask("take"), "open");
    }
    QCOMPARE(users[0]->ask("state"), "closed");
    QCOMPARE(users[1]->ask("state"), "closed");
    QVERIFY(users[2]->ask("add third") != "0");
    if (isKilled)
        users[2]->kill();
    else
        QCOMPARE(users[2]->ask("close"), "closed");
    // One of the two has it, which one doesn't matter, and the other can ask for it.
    const auto isHad = [&] { return users[0]->ask("state") == "open" || users[1]->ask("state") == "open"; };
    QTRY_VERIFY_WITH_TIMEOUT(isHad(), 10000);
    for (const int user : {0, 1, 0}) {
        QCOMPARE(users[size_t(user)]->ask("take"), "open");
        QVERIFY(users[size_t(user)]->ask("add user" + QByteArray::number(user)) != "0");
    }
    QCOMPARE(users[0]->ask("view"), " ascending third user0 user0 user1");
}

void BoxLendingTest::killedLenderIsForgotten()
{
    const TestBox box;
    KyPDataManager borrower(box.path().constData(), nullptr, false);
    QVERIFY(borrower.close());
    BoxUserProcess lender(box.path(), "lender");
    QCOMPARE(lender.start(), "open");
    QCOMPARE(lender.ask("begin 0"), "done");
    QCOMPARE(lender.ask("title half"), "done");
    QTRY_VERIFY(borrower.isOpened() || borrower.open(false));
    lender.kill();
    QVERIFY(addCard(borrower, QStringLiteral("a")) != 0);
    QVERIFY(borrower.close());
    QVERIFY(borrower.open(false));
    QCOMPARE(borrower.count(), 1);
    unsigned long card = 0;
    QVERIFY(borrower.editNewCard());
    QVERIFY(borrower.readItem("TITL", WorkCardId).isEmpty());
    QVERIFY(borrower.finishEditCard(&card));
}

void BoxLendingTest::editOutlastsAKilledBorrower()
{
    const TestBox box;
    KyPDataManager owner(box.path().constData(), nullptr, false);
    unsigned long card = addCard(owner, QStringLiteral("a"));
    QVERIFY(owner.startEditCard(card));
    QVERIFY(owner.writeItem("TITL", "of the owner"));
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(borrower.ask("take"), "open");
    QCOMPARE(borrower.ask("begin " + QByteArray::number(quint32(card))), "done");
    QCOMPARE(borrower.ask("title of the borrower"), "done");
    borrower.kill();
    QTRY_VERIFY(owner.isOpened());
    QCOMPARE(owner.readItem("TITL", card), QStringLiteral("a"));
    QVERIFY(owner.finishEditCard(&card));
    QCOMPARE(owner.readItem("TITL", card), QStringLiteral("of the owner"));
    QCOMPARE(owner.count(), 1);
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
    if (qstrcmp(argv[1], "use") == 0)
        return useBox(argc, argv);
    const QPEApplication application(argc, argv, "borrower");
    return qstrcmp(argv[1], "borrow") == 0 ? borrow(application, argv[2]) : closeAll(application);
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(BoxLendingTest, childMain)
#include "boxlendingtest.moc"
