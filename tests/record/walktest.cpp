#include "logcapture.h"
#include "recordfixture.h"

/** A box with cards "a", "b", ... in the order of their ids, open in a manager. */
class Cards
{
public:
    explicit Cards(int count)
    {
        for (int i = 0; i < count; ++i)
            ids.append(addCard(manager, QString(QChar(u'a' + i))));
    }

    TestBox box;
    KyPDataManager manager{box.path().constData(), nullptr, false};
    QList<unsigned long> ids;

    void showDescending() { privateOf(manager).ascendent = false; }
    QString walk()
    {
        QString titles;
        for (bool found = manager.first(); found; found = manager.next())
            titles += manager.readItem("TITL");
        return titles;
    }
    QString walkBack(const char *index = nullptr)
    {
        QString titles;
        for (bool found = manager.last(index); found; found = manager.prev(0, index))
            titles += manager.readItem("TITL");
        return titles;
    }
};

class WalkTest : public QObject
{
    Q_OBJECT
private slots:
    void ascendingView();
    void descendingView();
    void namedIndexIgnoresTheDirection();
    void movesThatFailStay();
    void cardFormsLeaveTheCurrentCard();
    void nextStartsFromTheCurrentCard();
    void unknownCardsAndIndexes();
    void markedCardsArePassedOver();
    void firstCardOfANamedIndexIsLogged();
    void numbers_data();
    void numbers();
    void lastOfTenDescendingIsNumberOne();
    void numbersOutOfRange();
    void numberOfTheCurrentCard();
    void counting();

    void deleteGivesTheNext();
    void deleteOfTheLastGivesThePrevious();
    void deleteOfTheOnlyGivesNone();
    void deleteGoesByTheIndexNotTheView();
    void deleteOfTheCurrentCard();
    void deleteThatFailsKeepsTheCard();
};

void WalkTest::ascendingView()
{
    Cards cards(4);
    QCOMPARE(cards.walk(), QStringLiteral("abcd"));
    QCOMPARE(cards.walkBack(), QStringLiteral("dcba"));
    QCOMPARE(cards.manager.firstCard(), cards.ids.first());
    QCOMPARE(cards.manager.lastCard(), cards.ids.last());
}

void WalkTest::descendingView()
{
    Cards cards(4);
    cards.showDescending();
    QCOMPARE(cards.walk(), QStringLiteral("dcba"));
    QCOMPARE(cards.walkBack(), QStringLiteral("abcd"));
    QCOMPARE(cards.manager.firstCard(), cards.ids.last());
    QCOMPARE(cards.manager.lastCard(), cards.ids.first());
    QCOMPARE(cards.manager.nextCard(cards.ids[2]), cards.ids[1]);
    QCOMPARE(cards.manager.prevCard(cards.ids[2]), cards.ids[3]);
}

void WalkTest::namedIndexIgnoresTheDirection()
{
    Cards cards(4);
    const QByteArray index = cards.box.master();
    cards.showDescending();
    QCOMPARE(cards.manager.firstCard(index.constData()), cards.ids.first());
    QCOMPARE(cards.manager.lastCard(index.constData()), cards.ids.last());
    QCOMPARE(cards.manager.nextCard(cards.ids[1], index.constData()), cards.ids[2]);
    QCOMPARE(cards.manager.prevCard(cards.ids[1], index.constData()), cards.ids[0]);
    QCOMPARE(cards.walkBack(index.constData()), QStringLiteral("dcba"));
}

void WalkTest::movesThatFailStay()
{
    Cards cards(2);
    QVERIFY(cards.manager.last());
    QVERIFY(!cards.manager.next());
    QCOMPARE(cards.manager.cardId(), cards.ids.last());
    QVERIFY(cards.manager.first());
    QVERIFY(!cards.manager.prev());
    QVERIFY(!cards.manager.first("F0:NONE.IDX"));
    QVERIFY(!cards.manager.last("F0:NONE.IDX"));
    QVERIFY(!cards.manager.next(77));
    QCOMPARE(cards.manager.cardId(), cards.ids.first());
}

void WalkTest::cardFormsLeaveTheCurrentCard()
{
    Cards cards(3);
    QCOMPARE(cards.manager.firstCard(), cards.ids[0]);
    QCOMPARE(cards.manager.lastCard(), cards.ids[2]);
    QCOMPARE(cards.manager.nextCard(cards.ids[0]), cards.ids[1]);
    QCOMPARE(cards.manager.prevCard(cards.ids[2]), cards.ids[1]);
    QCOMPARE(cards.manager.nextCard(0), cards.ids[0]);
    QCOMPARE(cards.manager.prevCard(0), cards.ids[2]);
    QCOMPARE(cards.manager.nextCard(cards.ids[2]), 0UL);
    QCOMPARE(cards.manager.prevCard(cards.ids[0]), 0UL);
    QCOMPARE(cards.manager.cardId(), 0UL);
}

void WalkTest::nextStartsFromTheCurrentCard()
{
    Cards cards(4);
    QVERIFY(cards.manager.next()); // no current card: the first one
    QCOMPARE(cards.manager.cardId(), cards.ids[0]);
    QVERIFY(cards.manager.next(0, nullptr));
    QCOMPARE(cards.manager.cardId(), cards.ids[1]);
    QVERIFY(cards.manager.next(cards.ids[2]));
    QCOMPARE(cards.manager.cardId(), cards.ids[3]);
    QVERIFY(cards.manager.prev(cards.ids[1]));
    QCOMPARE(cards.manager.cardId(), cards.ids[0]);
}

void WalkTest::unknownCardsAndIndexes()
{
    Cards cards(2);
    QCOMPARE(cards.manager.nextCard(77), 0UL);
    QCOMPARE(cards.manager.prevCard(77), 0UL);
    QCOMPARE(cards.manager.nextCard(0x10000), 0UL); // an id of 16 bits
    QCOMPARE(cards.manager.firstCard("F0:NONE.IDX"), 0UL);
    QCOMPARE(cards.manager.firstCard(""), 0UL);
    QCOMPARE(cards.manager.count("F0:NONE.IDX"), -1);
}

void WalkTest::markedCardsArePassedOver()
{
    Cards cards(4);
    QVERIFY(cards.manager.writeAttribute(cards.ids[0], 0x40, true));
    QVERIFY(cards.manager.writeAttribute(cards.ids[2], 0x40, true));
    QVERIFY(cards.manager.writeAttribute(cards.ids[1], 0x80, true)); // another bit
    QCOMPARE(cards.walk(), QStringLiteral("bd"));
    QCOMPARE(cards.manager.count(), 2);
    QCOMPARE(cards.manager.cardIdFromNumber(2), cards.ids[3]);
    QCOMPARE(cards.manager.numberFromCardId(cards.ids[3]), 2UL);
    cards.showDescending();
    QCOMPARE(cards.walk(), QStringLiteral("db"));
    QCOMPARE(cards.manager.numberFromCardId(cards.ids[3]), 1UL);
}

void WalkTest::firstCardOfANamedIndexIsLogged()
{
    Cards cards(2);
    LogCapture log;
    QCOMPARE(cards.manager.firstCard(), cards.ids[0]);
    QVERIFY(log.lines().isEmpty());
    QCOMPARE(cards.manager.firstCard(cards.box.master().constData()), cards.ids[0]);
    QCOMPARE(log.lines(), QStringList{QStringLiteral("firstCard result %1 %2")
                                          .arg(QString::fromLatin1(cards.box.master()))
                                          .arg(cards.ids[0])});
    log.clear();
    QCOMPARE(cards.manager.lastCard(cards.box.master().constData()), cards.ids[1]);
    QCOMPARE(cards.manager.nextCard(0, cards.box.master().constData()), cards.ids[0]);
    QVERIFY(log.lines().isEmpty());
}

void WalkTest::numbers_data()
{
    QTest::addColumn<bool>("descending");
    QTest::newRow("ascending") << false;
    QTest::newRow("descending") << true;
}

void WalkTest::numbers()
{
    QFETCH(bool, descending);
    Cards cards(5);
    if (descending)
        cards.showDescending();
    unsigned long number = 1;
    for (bool found = cards.manager.first(); found; found = cards.manager.next()) {
        QCOMPARE(cards.manager.numberFromCardId(cards.manager.cardId()), number);
        QCOMPARE(cards.manager.cardIdFromNumber(number), cards.manager.cardId());
        ++number;
    }
    QCOMPARE(number, 6UL);
}

void WalkTest::lastOfTenDescendingIsNumberOne()
{
    Cards cards(10);
    cards.showDescending();
    QCOMPARE(cards.manager.numberFromCardId(cards.ids.last()), 1UL);
    QCOMPARE(cards.manager.numberFromCardId(cards.ids.first()), 10UL);
}

void WalkTest::numbersOutOfRange()
{
    Cards cards(2);
    for (const unsigned long number : {0UL, 3UL, 0xFFFFUL, 0x10001UL}) {
        QCOMPARE(cards.manager.cardIdFromNumber(number), 0UL);
        QCOMPARE(cards.manager.cardId(), 0UL);
    }
    QCOMPARE(cards.manager.cardIdFromNumber(3), 0UL);
    QVERIFY(privateOf(cards.manager).lastError != 0);
    QCOMPARE(cards.manager.cardIdFromNumber(1), cards.ids[0]);
    QCOMPARE(int(privateOf(cards.manager).lastError), 0);
    QCOMPARE(cards.manager.numberFromCardId(77), 0UL);
    QCOMPARE(int(privateOf(cards.manager).lastError), int(PdtmNoSuchCard));
}

void WalkTest::numberOfTheCurrentCard()
{
    Cards cards(3);
    QCOMPARE(cards.manager.numberFromCardId(0), 0UL);
    QVERIFY(cards.manager.last());
    QCOMPARE(cards.manager.numberFromCardId(0), 3UL);
}

void WalkTest::counting()
{
    Cards none(0);
    QCOMPARE(none.manager.count(), 0);
    Cards cards(3);
    QCOMPARE(cards.manager.count(), 3);
    QCOMPARE(cards.manager.count(cards.box.master().constData()), 3);
}

void WalkTest::deleteGivesTheNext()
{
    Cards cards(3);
    unsigned long card = cards.ids[1];
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[2]);
    QCOMPARE(cards.walk(), QStringLiteral("ac"));
    QVERIFY(cards.manager.readItem("TITL", cards.ids[1]).isNull());
}

void WalkTest::deleteOfTheLastGivesThePrevious()
{
    Cards cards(3);
    unsigned long card = cards.ids[2];
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[1]);
}

void WalkTest::deleteOfTheOnlyGivesNone()
{
    Cards cards(1);
    unsigned long card = cards.ids[0];
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, 0UL);
    QCOMPARE(cards.manager.count(), 0);
    QVERIFY(!cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle)); // no card is meant
}

void WalkTest::deleteGoesByTheIndexNotTheView()
{
    Cards cards(3);
    cards.showDescending();
    unsigned long card = cards.ids[1];
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[2]);
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[0]);
}

void WalkTest::deleteOfTheCurrentCard()
{
    Cards cards(3);
    QVERIFY(cards.manager.first());
    unsigned long card = 0;
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[1]);
    QCOMPARE(cards.manager.cardId(), cards.ids[0]); // stays, though the card is gone
    QCOMPARE(cards.walk(), QStringLiteral("bc"));
}

void WalkTest::deleteThatFailsKeepsTheCard()
{
    Cards cards(2);
    unsigned long card = cards.ids[0];
    QVERIFY(cards.manager.close());
    QVERIFY(!cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[0]);
    QVERIFY(cards.manager.open(false));
    QCOMPARE(cards.walk(), QStringLiteral("ab"));
}

QTEST_MAIN(WalkTest)
#include "walktest.moc"
