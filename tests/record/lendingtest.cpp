#include "boxuser.h"
#include "qcopenvelope.h"

/** Boxes that living processes lend each other. */
class LendingTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { deleteTemporaryFiles(); }
    void viewIsAsItWasWhenTheBoxComesBack_data();
    void viewIsAsItWasWhenTheBoxComesBack();
    void searchIsLeftForTheOrderThatWas();
    void viewOutlastsTheBorrowersIndexes_data();
    void viewOutlastsTheBorrowersIndexes();
    void turnsDoNotUseUpTheNames();
    void boxGoesBackAndForth();
    void boxesGoAndComeBackForAll();
    void requestForAnotherBoxIsIgnored();
    void readOnlyProcessIsInNobodysWay();
    void readOnlyProcessTellsThatItCloses();

    // edits
    void editsOfTwoCards();
    void editOfANewCardBesideAnother();
    void lastFinishedEditOfOneCardWins();
    void editOfADeletedCardWritesItAgain();
    void finishWhileLentKeepsTheEdit();
    void cancelWhileLentEndsTheEdit();

    // removal of a category
    void removalReachesABoxThatNobodyHas();
    void removalDuringTheLoan();
    void newCategoryOfTheSameIdStays();
    void removalDuringTheLoanReachesTheEdit();
};

namespace {

void tellAll(const char *message, const QByteArray &path)
{
    QCopEnvelope envelope("QPE/System", message);
    envelope << QString::fromUtf8(path) << QStringLiteral("somebody");
}

void tellRemoved(int category)
{
    QCopEnvelope envelope("QPE/System", "categoryRemoved(int)");
    envelope << qint32(category);
}

/** Fills a box. @return the cards, in the order of the titles */
QByteArrayList makeCards(const TestBox &box, const QStringList &titles)
{
    KyPDataManager maker(box.path().constData(), nullptr, false);
    QByteArrayList cards;
    for (const QString &title : titles)
        cards.append(QByteArray::number(quint32(addCard(maker, title))));
    return cards;
}

/** Lets @p borrower have the box that @p owner has, in which an edit may be under way. */
void lend(BoxUserProcess &owner, BoxUserProcess &borrower)
{
    QCOMPARE(borrower.ask("take"), "open");
    QCOMPARE(owner.ask("state"), "closed");
}

/** The box goes back. */
void giveBack(BoxUserProcess &borrower, BoxUserProcess &owner)
{
    QCOMPARE(borrower.ask("close"), "closed");
    QCOMPARE(owner.ask("await open"), "open");
}

// To be asked when no box is lent: that a reader closes is told, and lenders take it for the end of the loan.

QByteArray titleOf(const TestBox &box, const QByteArray &card)
{
    const KyPDataManager manager(box.path().constData(), nullptr, true);
    return manager.readItem("TITL", card.toULong()).toUtf8();
}

int countOf(const TestBox &box)
{
    return KyPDataManager(box.path().constData(), nullptr, true).count();
}

} // namespace

void LendingTest::viewIsAsItWasWhenTheBoxComesBack_data()
{
    QTest::addColumn<QByteArrayList>("commands");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after"); // with the borrower's card "ab"
    QTest::newRow("direction") << QByteArrayList{} << QByteArray("b descending c b a")
                               << QByteArray("b descending c b ab a");
    QTest::newRow("order") << QByteArrayList{"sort LONG"} << QByteArray("b descending a b c")
                           << QByteArray("b descending a b c ab");
    QTest::newRow("search") << QByteArrayList{"find a"} << QByteArray("a descending a")
                            << QByteArray("a descending a ab");
    QTest::newRow("category") << QByteArrayList{"category 254"} << QByteArray("b descending c b a")
                              << QByteArray("b descending c b ab a");
}

void LendingTest::viewIsAsItWasWhenTheBoxComesBack()
{
    QFETCH(QByteArrayList, commands);
    const TestBox box;
    makeCards(box, {"a", "b", "c"});
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    for (const QByteArray card : {"1 3", "2 2", "3 1"}) {
        QCOMPARE(owner.ask("begin " + card.first(1)), "done");
        QCOMPARE(owner.ask("number " + card.last(1)), "done");
        QCOMPARE(owner.ask("finish " + card.first(1)), card.first(1));
    }
    for (const QByteArray &command : commands)
        QCOMPARE(owner.ask(command), "done");
    QTEST(owner.ask("turn"), "before");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed"); // it asks only now
    QCOMPARE(owner.ask("await closed"), "closed");
    QCOMPARE(borrower.ask("renew"), "open");
    QCOMPARE(borrower.ask("view"), " ascending a b c");
    QVERIFY(borrower.ask("add ab") != "0");
    giveBack(borrower, owner);
    QTEST(owner.ask("view"), "after");
}

void LendingTest::searchIsLeftForTheOrderThatWas()
{
    const TestBox box;
    makeCards(box, {"a", "b", "c"});
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    QCOMPARE(owner.ask("begin 1"), "done");
    QCOMPARE(owner.ask("number 9"), "done");
    QCOMPARE(owner.ask("finish 1"), "1");
    QCOMPARE(owner.ask("sort LONG"), "done");
    QCOMPARE(owner.ask("find c"), "done");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(borrower.ask("take"), "open");
    QVERIFY(borrower.ask("add d") != "0");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("view"), " ascending c");
    QCOMPARE(owner.ask("leave"), "done"); // to the view that was before the search
    QCOMPARE(owner.ask("view"), " ascending b c d a");
}

void LendingTest::viewOutlastsTheBorrowersIndexes_data()
{
    QTest::addColumn<QByteArrayList>("commands");
    QTest::addColumn<QByteArrayList>("meanwhile");
    const QByteArrayList others{"evict", "find b"};
    QTest::newRow("order") << QByteArrayList{"sort LONG"} << others;
    QTest::newRow("search") << QByteArrayList{"find a"} << others;
    QTest::newRow("category") << QByteArrayList{"category 5"} << others;
    QTest::newRow("unfiled") << QByteArrayList{"category 254"} << others;
    QTest::newRow("unfiled in both") << QByteArrayList{"category 254"} << QByteArrayList{"category 254"};
}

void LendingTest::viewOutlastsTheBorrowersIndexes()
{
    QFETCH(QByteArrayList, commands);
    QFETCH(QByteArrayList, meanwhile);
    const TestBox box;
    const QByteArrayList cards = makeCards(box, {"a", "ab", "b", "c"});
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    QCOMPARE(owner.ask("begin " + cards[0]), "done");
    QCOMPARE(owner.ask("number 5"), "done");
    QCOMPARE(owner.ask("finish " + cards[0]), cards[0]);
    for (const QByteArray &card : {cards[1], cards[2]})
        QCOMPARE(owner.ask("file " + card + " 5"), "done");
    for (const QByteArray &command : commands)
        QCOMPARE(owner.ask(command), "done");
    const QByteArray before = owner.ask("turn");
    QVERIFY(!before.endsWith("c b ab a"));
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(borrower.ask("take"), "open");
    for (const QByteArray &command : meanwhile)
        QCOMPARE(borrower.ask(command), "done");
    const QByteArray borrowers = borrower.ask("view");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("view"), before);
    QCOMPARE(owner.ask("close"), "closed"); // the borrower's is its own as well
    QCOMPARE(borrower.ask("open"), "open");
    QCOMPARE(borrower.ask("view"), borrowers);
}

void LendingTest::turnsDoNotUseUpTheNames()
{
    const TestBox box;
    makeCards(box, {"a", "ab", "c"});
    BoxUserProcess one(box.path(), "one"), other(box.path(), "other");
    QVERIFY(!one.start().isEmpty() && !other.start().isEmpty());
    QCOMPARE(one.ask("take"), "open");
    QCOMPARE(other.ask("take"), "open");
    QCOMPARE(other.ask("evict"), "done"); // nine indexes that the first doesn't know
    giveBack(other, one);
    for (const QByteArray text : {"a", "ab", "c", "a"}) { // the letters of an incremental search
        QCOMPARE(one.ask("find " + text), "done");
        QVERIFY(one.ask("view").startsWith(" ascending " + text));
    }
}

void LendingTest::boxGoesBackAndForth()
{
    const TestBox box;
    BoxUserProcess one(box.path(), "one"), other(box.path(), "other");
    QVERIFY(!one.start().isEmpty() && !other.start().isEmpty());
    for (int round = 0; round < 20; ++round) {
        QCOMPARE(one.ask("take"), "open");
        QVERIFY(one.ask("add one" + QByteArray::number(round)) != "0");
        QCOMPARE(other.ask("take"), "open");
        QVERIFY(other.ask("add other" + QByteArray::number(round)) != "0");
    }
    QCOMPARE(countOf(box), 40);
}

void LendingTest::boxesGoAndComeBackForAll()
{
    const TestBox box, second;
    BoxUserProcess one(box.path(), "one"), other(second.path(), "other");
    QCOMPARE(one.start(), "open");
    QCOMPARE(other.start(), "open");
    tellAll("closeFile(QString,QString)", "");
    QCOMPARE(one.ask("await closed"), "closed");
    QCOMPARE(other.ask("await closed"), "closed");
    tellAll("openFile(QString,QString)", box.path()); // ends no wait that was for all boxes
    tellAll("openFile(QString,QString)", second.path());
    QCOMPARE(one.ask("settle"), "closed");
    QCOMPARE(other.ask("settle"), "closed");
    tellAll("openFile(QString,QString)", "");
    QCOMPARE(one.ask("await open"), "open");
    QCOMPARE(other.ask("await open"), "open");
}

void LendingTest::requestForAnotherBoxIsIgnored()
{
    const TestBox box, second;
    BoxUserProcess one(box.path(), "one"), other(second.path(), "other");
    QCOMPARE(one.start(), "open");
    QCOMPARE(other.start(), "open"); // and has told all others to close it
    QCOMPARE(one.ask("settle"), "open");
    tellAll("closeFile(QString,QString)", box.path() + "2");
    QCOMPARE(one.ask("settle"), "open");
    QVERIFY(one.ask("add a") != "0");
}

void LendingTest::readOnlyProcessIsInNobodysWay()
{
    const TestBox box;
    makeCards(box, {"a"});
    BoxUserProcess reader(box.path(), "reader", {"read"});
    QCOMPARE(reader.start(), "open");
    BoxUserProcess writer(box.path(), "writer");
    QCOMPARE(writer.start(), "open");
    QCOMPARE(reader.ask("settle"), "open");
    QVERIFY(writer.ask("add b") != "0");
    QCOMPARE(reader.ask("view"), " ascending a b");
}

void LendingTest::readOnlyProcessTellsThatItCloses()
{
    const TestBox box;
    BoxUserProcess reader(box.path(), "reader", {"read"}), owner(box.path(), "owner");
    QCOMPARE(reader.start(), "open");
    QCOMPARE(owner.start(), "open");
    tellAll("closeFile(QString,QString)", box.path());
    QCOMPARE(owner.ask("await closed"), "closed");
    QCOMPARE(reader.ask("close"), "closed");
    QCOMPARE(owner.ask("await open"), "open");
}

void LendingTest::editsOfTwoCards()
{
    const TestBox box;
    const QByteArrayList cards = makeCards(box, {"a", "b"});
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(owner.ask("take"), "open");
    QCOMPARE(owner.ask("begin " + cards[0]), "done");
    QCOMPARE(owner.ask("title a of the owner"), "done");
    lend(owner, borrower);
    QCOMPARE(borrower.ask("view"), " ascending a b");
    QCOMPARE(borrower.ask("begin " + cards[1]), "done");
    QCOMPARE(borrower.ask("title b of the borrower"), "done");
    QCOMPARE(borrower.ask("finish " + cards[1]), cards[1]);
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("number 5"), "done");
    QCOMPARE(owner.ask("finish " + cards[0]), cards[0]);
    QCOMPARE(titleOf(box, cards[0]), "a of the owner");
    QCOMPARE(titleOf(box, cards[1]), "b of the borrower");
    QCOMPARE(owner.ask("number-of " + cards[0]), "5");
    QCOMPARE(owner.ask("number-of " + cards[1]), "none");
    QCOMPARE(countOf(box), 2);
}

void LendingTest::editOfANewCardBesideAnother()
{
    const TestBox box;
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(owner.ask("take"), "open");
    QCOMPARE(owner.ask("begin 0"), "done");
    QCOMPARE(owner.ask("title new of the owner"), "done");
    lend(owner, borrower);
    const QByteArray first = borrower.ask("add new of the borrower");
    giveBack(borrower, owner);
    const QByteArray second = owner.ask("finish 0");
    QVERIFY(first != "0" && second != "0" && first != second);
    QCOMPARE(titleOf(box, first), "new of the borrower");
    QCOMPARE(titleOf(box, second), "new of the owner");
    QCOMPARE(countOf(box), 2);
}

void LendingTest::lastFinishedEditOfOneCardWins()
{
    const TestBox box;
    const QByteArray card = makeCards(box, {"a"}).first();
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(owner.ask("take"), "open");
    QCOMPARE(owner.ask("begin " + card), "done");
    QCOMPARE(owner.ask("title of the owner"), "done");
    lend(owner, borrower);
    QCOMPARE(borrower.ask("begin " + card), "done");
    QCOMPARE(borrower.ask("title of the borrower"), "done");
    QCOMPARE(borrower.ask("number 7"), "done");
    QCOMPARE(borrower.ask("finish " + card), card);
    QCOMPARE(borrower.ask("number-of " + card), "7");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("finish " + card), card);
    QCOMPARE(titleOf(box, card), "of the owner"); // the whole card, no mixture
    QCOMPARE(owner.ask("number-of " + card), "none");
    QCOMPARE(countOf(box), 1);
}

void LendingTest::editOfADeletedCardWritesItAgain()
{
    const TestBox box;
    const QByteArrayList cards = makeCards(box, {"a", "b"});
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(owner.ask("take"), "open");
    QCOMPARE(owner.ask("begin " + cards[0]), "done");
    QCOMPARE(owner.ask("title edited"), "done");
    lend(owner, borrower);
    QCOMPARE(borrower.ask("delete " + cards[0]), "done");
    QCOMPARE(borrower.ask("view"), " ascending b");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("finish " + cards[0]), cards[0]);
    QCOMPARE(owner.ask("view"), " ascending b edited");
}

void LendingTest::finishWhileLentKeepsTheEdit()
{
    const TestBox box;
    const QByteArrayList cards = makeCards(box, {"a", "b"});
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(owner.ask("take"), "open");
    for (const QByteArray &card : {cards[0], QByteArray("0")}) {
        QCOMPARE(owner.ask("await open"), "open");
        QCOMPARE(owner.ask("begin " + card), "done");
        QCOMPARE(owner.ask("title edited"), "done");
        lend(owner, borrower);
        QCOMPARE(owner.ask("finish " + card), "0");
        QVERIFY(borrower.ask("add c") != "0");
        QCOMPARE(owner.ask("finish " + card), "0");
        giveBack(borrower, owner);
        const QByteArray written = owner.ask("finish " + card);
        QVERIFY(written != "0");
        QCOMPARE(titleOf(box, written), "edited");
        QCOMPARE(owner.ask("finish " + card), "0"); // it is over
    }
    QCOMPARE(countOf(box), 5);
}

void LendingTest::cancelWhileLentEndsTheEdit()
{
    const TestBox box;
    const QByteArrayList cards = makeCards(box, {"a"});
    BoxUserProcess owner(box.path(), "owner");
    QCOMPARE(owner.start(), "open");
    BoxUserProcess borrower(box.path(), "borrower");
    QCOMPARE(borrower.start(), "closed");
    QCOMPARE(owner.ask("take"), "open");
    QCOMPARE(owner.ask("begin " + cards[0]), "done");
    QCOMPARE(owner.ask("title edited"), "done");
    lend(owner, borrower);
    QCOMPARE(owner.ask("cancel"), "done");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("finish " + cards[0]), "0");
    QCOMPARE(owner.ask("begin " + cards[0]), "done");
    QCOMPARE(owner.ask("finish " + cards[0]), cards[0]);
    QCOMPARE(owner.ask("view"), " ascending a");
}

void LendingTest::removalReachesABoxThatNobodyHas()
{
    const TestBox box;
    const QByteArray card = makeCards(box, {"a"}).first();
    // updateForCategoryRemoved() asks for boxes by their plain paths.
    const QByteArray path = QFile::encodeName(boxFolder()) + box.path().mid(3);
    BoxUserProcess owner(path, "owner");
    QCOMPARE(owner.start(), "open");
    QCOMPARE(owner.ask("settle"), "open");
    QCOMPARE(owner.ask("file " + card + " 5"), "done");
    KyPDtm::updateForCategoryRemovedVolume(boxFolder().chopped(1), 5);
    tellRemoved(5);
    QCOMPARE(owner.ask("settle"), "closed");                    // at a request of somebody that didn't wait
    const quint32 reader = _BoxOpenRwMode(path.constData(), 1); // silent
    CardItemKey key = {quint16(card.toUInt()), {'C', 'T', 'G', 'R'}};
    char list[8] = {};
    quint32 size = sizeof list;
    QCOMPARE(int(_CardRead(reader, &key, list, &size)), int(PdtmOk));
    QCOMPARE(int(size), 0);
    QCOMPARE(int(_BoxClose(reader)), int(PdtmOk));
    tellAll("openFile(QString,QString)", path); // kyplatformd does it
    QCOMPARE(owner.ask("await open"), "open");
    QCOMPARE(owner.ask("categories-of " + card), "none");
}

void LendingTest::removalDuringTheLoan()
{
    const TestBox box;
    const QByteArrayList cards = makeCards(box, {"a", "b", "c"});
    BoxUserProcess owner(box.path(), "owner"), borrower(box.path(), "borrower");
    QVERIFY(!owner.start().isEmpty() && !borrower.start().isEmpty());
    QCOMPARE(owner.ask("take"), "open");
    QCOMPARE(owner.ask("file " + cards[1] + " 5"), "done");
    QCOMPARE(owner.ask("category 5"), "done");
    lend(owner, borrower);
    tellRemoved(5);
    QCOMPARE(owner.ask("settle"), "closed");
    QCOMPARE(borrower.ask("settle"), "open");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("categories-of " + cards[1]), "none");
    QCOMPARE(owner.ask("view"), " ascending a b c"); // the category is left, as ever
}

void LendingTest::newCategoryOfTheSameIdStays()
{
    const TestBox box;
    const QByteArrayList cards = makeCards(box, {"a", "b"});
    BoxUserProcess owner(box.path(), "owner"), borrower(box.path(), "borrower");
    QVERIFY(!owner.start().isEmpty() && !borrower.start().isEmpty());
    QCOMPARE(owner.ask("take"), "open");
    QCOMPARE(owner.ask("file " + cards[0] + " 5"), "done");
    lend(owner, borrower);
    tellRemoved(5);
    QCOMPARE(owner.ask("settle"), "closed");
    QCOMPARE(borrower.ask("settle"), "open");
    QCOMPARE(borrower.ask("file " + cards[1] + " 5"), "done");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("categories-of " + cards[0]), "none");
    QCOMPARE(owner.ask("categories-of " + cards[1]), "5");
}

void LendingTest::removalDuringTheLoanReachesTheEdit()
{
    const TestBox box;
    const QByteArray card = makeCards(box, {"a"}).first();
    BoxUserProcess owner(box.path(), "owner"), borrower(box.path(), "borrower");
    QVERIFY(!owner.start().isEmpty() && !borrower.start().isEmpty());
    QCOMPARE(owner.ask("take"), "open");
    for (const QByteArray category : {" 5", " 9"})
        QCOMPARE(owner.ask("file " + card + category), "done");
    QCOMPARE(owner.ask("begin " + card), "done");
    QCOMPARE(owner.ask("title edited"), "done");
    lend(owner, borrower);
    tellRemoved(5);
    QCOMPARE(owner.ask("settle"), "closed");
    QCOMPARE(borrower.ask("settle"), "open");
    QCOMPARE(borrower.ask("categories-of " + card), "9");
    giveBack(borrower, owner);
    QCOMPARE(owner.ask("finish " + card), card);
    QCOMPARE(owner.ask("categories-of " + card), "9");
    QCOMPARE(titleOf(box, card), "edited");
}

KY_TEST_MAIN_WITH_CHILD(LendingTest, useBox)
#include "lendingtest.moc"
