#include "categoryfixture.h"
#include "logcapture.h"
#include "synchronisations.h"

namespace {

quint32 pretendedGarbage = 0; ///< what _GetBoxGarbageSize tells; 0: the truth

} // namespace

PdtmStatus _GetBoxGarbageSize(const char *path, uint32_t *size)
{
    static const auto next = nextDefinition<decltype(_GetBoxGarbageSize)>("_GetBoxGarbageSize");
    if (!pretendedGarbage)
        return next(path, size);
    *size = pretendedGarbage;
    return PdtmOk;
}

namespace {

/** A box of six cards, a to f, of which b, d and f are in category 3, and a is in 4. */
struct Cards : View
{
    Cards()
    {
        for (int i = 0; i < 6; ++i)
            ids.append(add(QString(QChar('a' + i)), 0, i % 2 ? "\3" : i ? "" : "\4"));
    }

    /** Titles of all cards that are visible, whatever the view. */
    [[nodiscard]] QString left() const
    {
        QString all;
        for (const unsigned long card : cardsIn(manager, box.master()))
            all += manager.readItem("TITL", card);
        return all;
    }

    QList<unsigned long> ids;
};

bool deleteCards(KyPDataManager &manager, KyPDataManager::DeleteMode mode)
{
    unsigned long card = 77;
    return manager.deleteCard(&card, mode) && card == 77;
}

} // namespace

class DeleteTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void singleTakesTheNeighbourInTheView();
    void visibleDeletesTheCardsOfACategory();
    void visibleDeletesTheCardsOfASearch();
    void visibleDeletesAllOfAWholeView_data();
    void visibleDeletesAllOfAWholeView();
    void visibleOfAnEmptyView();
    void visibleOfADroppedView();
    void visibleTakesMarkedCardsAlong();
    void visibleOfAViewThatGoesByTheAttribute();
    void visibleOfManyCards();
    void allDeletesEveryCardWhateverTheView();
    void allOfAnEmptyBox();
    void deletedCardsLeaveEveryIndex();
    void bulkLeavesTheCurrentCard();
    void bulkTakesNoCard();
    void unknownModeIsRefused();
    void bulkIsOneSynchronisation_data();
    void bulkIsOneSynchronisation();
    void bulkIsPartOfTheCallersAction();
    void editGoesOn_data();
    void editGoesOn();
    void editOfANewCardGoesOn();
    void bulkNeedsAnOpenBox_data();
    void bulkNeedsAnOpenBox();
    void visibleNeedsAnIndexTable();
};

void DeleteTest::init()
{
    pretendedGarbage = 0;
    deleteTemporaryFiles();
}

void DeleteTest::singleTakesTheNeighbourInTheView()
{
    Cards cards;
    QVERIFY(cards.manager.enableFilter(3));
    unsigned long card = cards.ids[1];
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[3]); // and not c, which is next in the box
    card = cards.ids[5];
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, cards.ids[3]);
    QVERIFY(cards.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, 0UL);
    QCOMPARE(cards.left(), QStringLiteral("ace"));
}

void DeleteTest::visibleDeletesTheCardsOfACategory()
{
    Cards cards;
    QVERIFY(cards.manager.enableFilter(3));
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(cards.left(), QStringLiteral("ace"));
    QCOMPARE(cards.manager.count(), 0);
    QVERIFY(privateOf(cards.manager).currentIndex == rowOf(cards.manager, 3)); // the view stays
    for (int i = 0; i < 6; ++i)
        QCOMPARE(isThere(cards.manager, cards.ids[i]), i % 2 == 0);
    for (const int i : {0, 2, 4})
        QCOMPARE(storedBytes(cards.manager, cards.ids[i], "ATTR"), QByteArray(1, '\0'));
}

void DeleteTest::visibleDeletesTheCardsOfASearch()
{
    Cards cards;
    const QByteArray notB = QByteArray("TITL\xFE\x9B\x11"
                                       "b")
                                .append(2, '\0');
    QVERIFY(cards.filterBy(notB, plainKey("TITL"), KyPDataManager::FilterMaster, false));
    QCOMPARE(cards.manager.count(), 5);
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(cards.left(), QStringLiteral("b"));
    QVERIFY(cards.manager.isFiltered());
}

void DeleteTest::visibleDeletesAllOfAWholeView_data()
{
    QTest::addColumn<bool>("ascending");
    QTest::newRow("ascending") << true;
    QTest::newRow("descending") << false;
}

void DeleteTest::visibleDeletesAllOfAWholeView()
{
    QFETCH(bool, ascending);
    Cards cards;
    cards.manager.sort(ascending);
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(cards.left(), QString());
    for (const unsigned long card : cards.ids)
        QVERIFY(!isThere(cards.manager, card));
}

void DeleteTest::visibleOfAnEmptyView()
{
    Cards cards;
    QVERIFY(cards.manager.enableFilter(9));
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(cards.left(), QStringLiteral("abcdef"));
}

void DeleteTest::visibleOfADroppedView()
{
    Cards cards;
    QVERIFY(cards.manager.enableFilter(3));
    cards.current() = {};
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(cards.left(), QStringLiteral("abcdef"));
}

void DeleteTest::visibleTakesMarkedCardsAlong()
{
    Cards cards;
    QVERIFY(cards.manager.writeAttribute(cards.ids[0], 0x40, true));
    QCOMPARE(cards.left(), QStringLiteral("bcdef"));
    QVERIFY(cards.manager.enableFilter(3));
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QVERIFY(!isThere(cards.manager, cards.ids[0]));
    QCOMPARE(cards.left(), QStringLiteral("ce"));
}

void DeleteTest::visibleOfAViewThatGoesByTheAttribute()
{
    Cards sorted;
    QVERIFY(sorted.manager.sort("ATTR", true));
    QVERIFY(deleteCards(sorted.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(sorted.left(), QString());

    Cards searched;
    const QByteArray unmarked = QByteArray("ATTR\xFE\x90\x0B").append(2, '\0');
    QVERIFY(searched.filterBy(unmarked, plainKey("TITL"), KyPDataManager::FilterMaster, false));
    QCOMPARE(searched.manager.count(), 6);
    QVERIFY(deleteCards(searched.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(searched.left(), QString());
}

void DeleteTest::visibleOfManyCards()
{
    View view;
    KyPDataManager &manager = view.manager;
    QVERIFY(manager.beginAction());
    for (int i = 0; i < 1000; ++i)
        QVERIFY(view.add(QString::number(i), 0, i % 2 ? "\3" : "\4") != 0);
    QVERIFY(manager.endAction());
    QVERIFY(manager.enableFilter(3));
    QVERIFY(deleteCards(manager, KyPDataManager::DeleteVisible));
    QCOMPARE(manager.count(), 0);
    QCOMPARE(manager.count(view.box.master().constData()), 500);
    QVERIFY(manager.enableFilter(4));
    QCOMPARE(manager.count(), 500);
}

void DeleteTest::allDeletesEveryCardWhateverTheView()
{
    Cards cards;
    QVERIFY(cards.manager.writeAttribute(cards.ids[0], 0x40, true)); // not visible anywhere
    QVERIFY(cards.manager.enableFilter(3));
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteAll));
    QCOMPARE(cards.left(), QString());
    for (const unsigned long card : cards.ids)
        QVERIFY(!isThere(cards.manager, card));
    QCOMPARE(int(privateOf(cards.manager).lastError), 0);
    QVERIFY(addCard(cards.manager, QStringLiteral("new")) != 0);
    QCOMPARE(cards.left(), QStringLiteral("new"));
}

void DeleteTest::allOfAnEmptyBox()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(deleteCards(manager, KyPDataManager::DeleteAll));
    QVERIFY(deleteCards(manager, KyPDataManager::DeleteVisible));
    QCOMPARE(manager.count(), 0);
}

void DeleteTest::deletedCardsLeaveEveryIndex()
{
    Cards cards;
    QVERIFY(cards.manager.sort("NUMB", true));
    QVERIFY(cards.manager.enableFilter(4));
    QVERIFY(cards.manager.enableFilter(3));
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    int rows = 0;
    for (const KyPDtm::PIOIDXINFO &row : privateOf(cards.manager).indexes) {
        if (!row.inUse)
            continue;
        ++rows;
        const QByteArray index = pathOf(cards.manager, row);
        for (const int i : {1, 3, 5}) {
            quint16 number = 0;
            QCOMPARE(_CardIDToIndexNo(index.constData(), quint16(cards.ids[i]), &number),
                     PdtmStatus(PdtmNoSuchCard));
        }
        QCOMPARE(cards.manager.count(index.constData()), row.categoryId == 3   ? 0
                                                         : row.categoryId == 4 ? 1
                                                                               : 3);
    }
    QCOMPARE(rows, 4);
}

void DeleteTest::bulkLeavesTheCurrentCard()
{
    Cards cards;
    QVERIFY(cards.manager.first());
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QCOMPARE(cards.manager.cardId(), cards.ids[0]);
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteAll));
    QCOMPARE(cards.manager.cardId(), cards.ids[0]);
}

void DeleteTest::bulkTakesNoCard()
{
    Cards cards;
    QVERIFY(cards.manager.enableFilter(3));
    QVERIFY(cards.manager.deleteCard(nullptr, KyPDataManager::DeleteVisible));
    QCOMPARE(cards.left(), QStringLiteral("ace"));
    QVERIFY(cards.manager.deleteCard(nullptr, KyPDataManager::DeleteAll));
    QCOMPARE(cards.left(), QString());
}

void DeleteTest::unknownModeIsRefused()
{
    Cards cards;
    for (const int mode : {-1, 3}) {
        unsigned long card = cards.ids[0];
        QVERIFY(!cards.manager.deleteCard(&card, static_cast<KyPDataManager::DeleteMode>(mode)));
        QCOMPARE(card, cards.ids[0]);
    }
    QCOMPARE(cards.left(), QStringLiteral("abcdef"));
}

void DeleteTest::bulkIsOneSynchronisation_data()
{
    QTest::addColumn<KyPDataManager::DeleteMode>("mode");
    QTest::newRow("visible") << KyPDataManager::DeleteVisible;
    QTest::newRow("all") << KyPDataManager::DeleteAll;
}

void DeleteTest::bulkIsOneSynchronisation()
{
    QFETCH(KyPDataManager::DeleteMode, mode);
    Cards cards;
    synchronisations() = 0;
    QVERIFY(deleteCards(cards.manager, mode));
    QCOMPARE(synchronisations(), 1);
}

void DeleteTest::bulkIsPartOfTheCallersAction()
{
    Cards cards;
    synchronisations() = 0;
    LogCapture log;
    QVERIFY(cards.manager.beginAction());
    QVERIFY(cards.manager.enableFilter(3));
    pretendedGarbage = 200000;
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QVERIFY(addCard(cards.manager, QStringLiteral("new")) != 0);
    QCOMPARE(synchronisations(), 0);
    QVERIFY(log.lines().isEmpty()); // a collection would have closed the box and undone the action
    QVERIFY(cards.manager.endAction());
    QCOMPARE(log.lines(), QStringList{"KyPDataManager: auto garbage collection 200000"});
    QCOMPARE(cards.left(), QStringLiteral("acenew"));
}

void DeleteTest::editGoesOn_data()
{
    QTest::addColumn<KyPDataManager::DeleteMode>("mode");
    QTest::addColumn<bool>("collects");
    QTest::newRow("visible") << KyPDataManager::DeleteVisible << false;
    QTest::newRow("visible, with a collection") << KyPDataManager::DeleteVisible << true;
    QTest::newRow("all") << KyPDataManager::DeleteAll << false;
    QTest::newRow("all, with a collection") << KyPDataManager::DeleteAll << true;
}

void DeleteTest::editGoesOn()
{
    QFETCH(KyPDataManager::DeleteMode, mode);
    QFETCH(bool, collects);
    Cards cards;
    unsigned long card = cards.ids[1];
    QVERIFY(cards.manager.startEditCard(card));
    QVERIFY(cards.manager.writeItem("TITL", "kept"));
    pretendedGarbage = collects ? 200000 : 0;
    QVERIFY(deleteCards(cards.manager, mode));
    pretendedGarbage = 0;
    QCOMPARE(cards.left(), QString());
    QVERIFY(cards.manager.writeItem("NUMB", static_cast<unsigned char>(5)));
    QVERIFY(cards.manager.finishEditCard(&card));
    QCOMPARE(card, cards.ids[1]);
    QCOMPARE(cards.left(), QStringLiteral("kept"));
    QCOMPARE(cards.manager.readUcharItem("NUMB", card), 5);
    QCOMPARE(storedBytes(cards.manager, card, "ATTR"), QByteArray(1, '\0'));
}

void DeleteTest::editOfANewCardGoesOn()
{
    Cards cards;
    unsigned long card = 0;
    QVERIFY(cards.manager.editNewCard());
    QVERIFY(cards.manager.writeItem("TITL", "new"));
    QVERIFY(deleteCards(cards.manager, KyPDataManager::DeleteVisible));
    QVERIFY(cards.manager.finishEditCard(&card));
    QVERIFY(!cards.ids.contains(card));
    QCOMPARE(cards.left(), QStringLiteral("new"));
    QVERIFY(!cards.manager.readTimeItem("MDTM", card).isNull());
}

void DeleteTest::bulkNeedsAnOpenBox_data()
{
    bulkIsOneSynchronisation_data();
}

void DeleteTest::bulkNeedsAnOpenBox()
{
    QFETCH(KyPDataManager::DeleteMode, mode);
    Cards cards;
    unsigned long card = 77;
    QVERIFY(cards.manager.close());
    QVERIFY(!cards.manager.deleteCard(&card, mode));
    KyPDataManager reader(cards.box.path().constData(), nullptr, true);
    QVERIFY(reader.isOpened());
    QVERIFY(!reader.deleteCard(&card, mode));
    QVERIFY(cards.manager.open(false));
    QCOMPARE(cards.left(), QStringLiteral("abcdef"));
}

void DeleteTest::visibleNeedsAnIndexTable()
{
    KyPDataManager nothing("F0:NOTHING.BOX", nullptr, false);
    unsigned long card = 77;
    QVERIFY(!nothing.deleteCard(&card, KyPDataManager::DeleteVisible));
    QVERIFY(!nothing.deleteCard(&card, KyPDataManager::DeleteAll));
    const TestBox reserved("F0:pplxDELE.IDX", KyPDataManagerSortKey());
    KyPDataManager manager(reserved.path().constData(), nullptr, false);
    QVERIFY(manager.isOpened());
    QVERIFY(addCard(manager, QStringLiteral("a")) != 0);
    QVERIFY(!manager.deleteCard(&card, KyPDataManager::DeleteVisible));
    QVERIFY(isThere(manager, 1));
}

QTEST_MAIN(DeleteTest)
#include "deletetest.moc"
