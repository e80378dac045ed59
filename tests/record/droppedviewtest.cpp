#include "categoryfixture.h"

namespace {

bool refuseCards = false; ///< a view can't take a card, so that it is dropped

} // namespace

PdtmStatus _IndexNoAppend(const char *path, uint32_t handle, uint16_t card, uint16_t *number)
{
    static const auto next = nextDefinition<decltype(_IndexNoAppend)>("_IndexNoAppend");
    return refuseCards ? PdtmStatus(PdtmDamaged) : next(path, handle, card, number);
}

namespace {

/** The six cards of View, and a view that is lost while it is shown. */
struct Six : View
{
    Six() { addSix(); }

    /** Drops the shown view of a category. False when it is still there. */
    bool lose(int category)
    {
        refuseCards = true;
        const bool isLost =
            !manager.addCardToCtgr(cardOf("f"), category, KyPDataManager::DeleteSingle, false);
        refuseCards = false;
        return isLost && !rowOf(manager, category) && !current().inUse;
    }

    bool isMasterShown() { return table().currentIndex == table().masterIndex; }
};

} // namespace

class DroppedViewTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void showsNoCard();
    void otherCategoryIsShownInTheOrderOfTheMaster();
    void newCategoryIsShownInTheOrderOfTheMaster();
    void noCategoryShowsTheMaster();
    void disableShowsTheMaster_data();
    void disableShowsTheMaster();
    void sortShowsAllCards();
    void anotherIndexIsShown();
    void nothingIsChosenFromIt();
    void itIsNotResumed();
    void singleDeletionGoesOn();
    void masterThatIsDroppedIsReplaced();
};

void DroppedViewTest::init()
{
    refuseCards = false;
    deleteTemporaryFiles();
}

void DroppedViewTest::showsNoCard()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    QCOMPARE(six.titles(), QString());
    QCOMPARE(six.manager.lastCard(), 0UL);
    QCOMPARE(six.manager.cardIdFromNumber(1), 0UL);
    QCOMPARE(six.manager.numberFromCardId(six.cardOf("a")), 0UL);
    int result = -1;
    QVERIFY(!six.manager.count(&result, "", 0));
    QCOMPARE(result, 0);
    unsigned long card = 0;
    QVERIFY(!six.manager.search(&card, QStringLiteral("a"), "TITL", 0x92, true));
    QVERIFY(!six.manager.isFiltered() && !six.manager.unfilter(true));
    QVERIFY(six.manager.current1stSortKey().isNull());
}

void DroppedViewTest::otherCategoryIsShownInTheOrderOfTheMaster()
{
    Six six;
    QVERIFY(six.setCategories(six.cardOf("a"), "\x09")); // of another order than the cards
    QVERIFY(six.add("0", 0, "\x09") != 0);
    QVERIFY(six.manager.enableFilter(9) && six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    QVERIFY(six.manager.enableFilter(9));
    QCOMPARE(six.titles(), QStringLiteral("0acde"));
    QCOMPARE(six.manager.sortItem(), six.manager.nameToItemId("TITL"));
}

void DroppedViewTest::newCategoryIsShownInTheOrderOfTheMaster()
{
    Six six;
    QVERIFY(six.add("0", 0, "\x09") != 0);
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    QVERIFY(six.manager.enableFilter(9));
    QCOMPARE(six.titles(), QStringLiteral("0cde"));
    QCOMPARE(six.manager.sortItem(), six.manager.nameToItemId("TITL"));
}

void DroppedViewTest::noCategoryShowsTheMaster()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    QVERIFY(six.manager.enableFilter(0));
    QVERIFY(six.isMasterShown());
    QCOMPARE(six.titles(), QStringLiteral("abcdef"));
}

void DroppedViewTest::disableShowsTheMaster_data()
{
    QTest::addColumn<bool>("discards");
    QTest::newRow("kept") << false;
    QTest::newRow("discarded") << true;
}

void DroppedViewTest::disableShowsTheMaster()
{
    QFETCH(bool, discards);
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    QVERIFY(six.manager.disableFilter(discards));
    QVERIFY(six.isMasterShown());
    QCOMPARE(six.titles(), QStringLiteral("abcdef"));
}

void DroppedViewTest::sortShowsAllCards()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    QVERIFY(six.manager.sort("NUMB", true));
    QCOMPARE(six.titles(), QStringLiteral("fedcba"));
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    six.manager.sort(true);
    QVERIFY(six.isMasterShown());
    QCOMPARE(six.titles(), QStringLiteral("abcdef"));
}

void DroppedViewTest::anotherIndexIsShown()
{
    Six six;
    QVERIFY(six.manager.enableFilter(9) && six.manager.enableFilter(5));
    const QByteArray other = rowOf(six.manager, 9)->fileName;
    QVERIFY(six.lose(5));
    QVERIFY(six.manager.setCurrentIndex(other.constData(), false));
    QCOMPARE(six.titles(), QStringLiteral("cde"));
}

void DroppedViewTest::nothingIsChosenFromIt()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    const QStringList files = temporaryFiles();
    for (const bool keepResume : {false, true})
        QVERIFY(!six.filter("a", KyPDataManager::FilterCurrent, keepResume));
    QCOMPARE(temporaryFiles(), files);
    QCOMPARE(six.titles(), QString());
}

void DroppedViewTest::itIsNotResumed()
{
    Six six;
    QVERIFY(six.manager.enableFilter(9) && six.manager.enableFilter(5));
    QVERIFY(six.lose(5)); // its row is the next one to be taken
    QVERIFY(six.filter("a", KyPDataManager::FilterMaster, true));
    QCOMPARE(six.titles(), QStringLiteral("a"));
    QVERIFY(!six.table().resumeIndex);
    QVERIFY(six.manager.unfilter(true));
    QVERIFY(six.isMasterShown());

    QVERIFY(six.manager.enableFilter(5));
    *rowOf(six.manager, 9) = {}; // a row in front of it is free
    QVERIFY(six.lose(5));
    QVERIFY(six.filter("a", KyPDataManager::FilterMaster, true));
    QVERIFY(!six.table().resumeIndex);
}

void DroppedViewTest::singleDeletionGoesOn()
{
    Six six;
    unsigned long card = six.cardOf("b");
    QVERIFY(six.manager.enableFilter(5));
    QVERIFY(six.lose(5));
    QVERIFY(six.manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(card, 0UL);
    QCOMPARE(six.cardOf("b"), 0UL);
}

void DroppedViewTest::masterThatIsDroppedIsReplaced()
{
    Six six;
    const unsigned long card = six.cardOf("f");
    QVERIFY(six.manager.close());
    QVERIFY(makeCategoryIndex(six.box, six.box.file("C.IDX"), 5));
    KyPDataManager manager(six.box.path().constData(), nullptr, false);
    const KyPDtm::PIOIDXINFO *whole = privateOf(manager).masterIndex;
    QVERIFY(manager.setCurrentIndex(six.box.file("C.IDX").mid(3).constData(), true));
    QVERIFY(privateOf(manager).masterIndex == rowOf(manager, 5));
    refuseCards = true;
    QVERIFY(!manager.addCardToCtgr(card, 5, KyPDataManager::DeleteSingle, false));
    refuseCards = false;
    QVERIFY(privateOf(manager).masterIndex == whole);
    QVERIFY(!privateOf(manager).currentIndex->inUse); // until another is chosen
    QVERIFY(manager.sort("NUMB", true));
    QCOMPARE(manager.count(), 6);
    QVERIFY(manager.enableFilter(5));
    QCOMPARE(manager.count(), 5);
}

QTEST_MAIN(DroppedViewTest)
#include "droppedviewtest.moc"
