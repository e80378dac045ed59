#include "categoryfixture.h"

namespace {

using KyPDtm::KyPDataManagerPrivate;
constexpr auto Single = KyPDataManager::DeleteSingle;
constexpr auto Visible = KyPDataManager::DeleteVisible;
constexpr auto All = KyPDataManager::DeleteAll;

/** The six cards with views of 5, 9 and the unfiled ones kept, and the master current. */
struct Six : View
{
    Six()
    {
        addSix();
        for (const char title : QByteArray("abcdef"))
            ids[title] = cardOf(QString(QChar(title)));
        isReady = manager.enableFilter(UnfiledCategoryId) && manager.enableFilter(9) &&
                  manager.enableFilter(5) && manager.disableFilter(false);
    }

    /** Titles in the view of a category. */
    QString shown(int category)
    {
        QString all;
        for (const unsigned long card : cardsOfCategory(manager, category))
            all += manager.readItem("TITL", card);
        return all;
    }

    /** The three views in one text. */
    QString allShown() { return shown(5) + ' ' + shown(9) + ' ' + shown(UnfiledCategoryId); }

    QMap<char, unsigned long> ids;
    bool isReady = false;
};

/** One card or none in the view of category 7. */
bool showSeven(Six &six)
{
    return six.manager.enableFilter(7);
}

} // namespace

class CardCategoriesTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void readGivesTheValidIds();
    void readOfNoList();
    void readOfTheCurrentCard();
    void longListIsReadWhole();
    void cardIsUnfiledWithNoList_data();
    void cardIsUnfiledWithNoList();
    void addPutsTheCardIntoTheView();
    void addWithNoView();
    void addTwiceIsAddedOnce();
    void addOfAnUnfiledCardTakesItOutOfThatView();
    void addOfAFiledCardLeavesTheUnfiledViewAlone();
    void addOfUnfiledTakesTheCardOutOfAllOthers();
    void removeTakesTheCardOutOfTheView();
    void removeOfOneOfTwoLeavesItFiled();
    void removeOfTheLastPutsItIntoTheUnfiledView();
    void removeOfACategoryThatIsNotThere();
    void everyViewOfACategoryFollows();
    void noCategoryLeavesTheMasterAlone();
    void idsAreCutToEightBits();
    void flagHasNoEffect();
    void cardZeroIsTheCurrentOne();
    void missingCardIsRefused();
    void closedBoxIsRefused();
    void otherModesAreRefused();
    void visibleLeavesSeveralCardsAlone();
    void visibleChangesTheOnlyCard();
    void visibleOfAnEmptyViewChangesTheCurrentCard();
    void visibleOfAnEmptyViewWithNoCard();
    void updateReplacesTheList();
    void updateIsAnEdit();
    void updateTakesTheCardOutOfTheUnfiledView();
    void updateTakesAnEmptiedCardOutOfTheUnfiledViewToo();
    void updateLeavesAnEmptiedCardInTheUnfiledViewThatIsShown();
    void updateOfAFiledListInTheUnfiledViewThatIsShown();
    void updateOfTheCurrentCard();
    void updateInsideAnEditIsRefused();
    void updateOfAMissingCardIsRefused();
};

void CardCategoriesTest::init()
{
    deleteTemporaryFiles();
}

// Reading

void CardCategoriesTest::readGivesTheValidIds()
{
    View view;
    const unsigned long card = view.add("a", 0, QByteArray("\x01\x00\xF5\xF6\xFD\xFE\xFF\x03", 8));
    QCOMPARE(view.manager.readCategories(card), (QList<int>{1, 245, 254, 3}));
}

void CardCategoriesTest::readOfNoList()
{
    View view;
    const unsigned long card = view.add("a", 0, "");
    QVERIFY(view.manager.readCategories(card).isEmpty());
    QVERIFY(view.manager.readCategories(card + 1).isEmpty()); // no such card
    QVERIFY(view.manager.readCategories(0).isEmpty());        // no current card
}

void CardCategoriesTest::readOfTheCurrentCard()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.first() && view.manager.next() && view.manager.next());
    QCOMPARE(view.manager.readCategories(0), (QList<int>{5, 9}));
}

void CardCategoriesTest::longListIsReadWhole()
{
    View view;
    QByteArray list;
    QList<int> ids;
    for (int id = 1; id <= 245; ++id) {
        list.append(char(id));
        ids.append(id);
    }
    const unsigned long card = view.add("a", 0, list);
    QCOMPARE(view.manager.readCategories(card), ids);
}

void CardCategoriesTest::cardIsUnfiledWithNoList_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<bool>("isUnfiled");
    QTest::newRow("no list") << QByteArray() << true;
    QTest::newRow("one category") << QByteArray("\5") << false;
    QTest::newRow("two categories") << QByteArray("\5\xC8") << false;
    QTest::newRow("the id of the unfiled") << QByteArray("\xFE") << false;
    QTest::newRow("an invalid id") << QByteArray("\xFF") << false;
}

void CardCategoriesTest::cardIsUnfiledWithNoList()
{
    QFETCH(QByteArray, list);
    QFETCH(bool, isUnfiled);
    Six six;
    const unsigned long card = six.ids['f'];
    QVERIFY(six.setCategories(card, list));
    const QByteArray unfiled = pathOf(six.manager, *rowOf(six.manager, UnfiledCategoryId));
    quint16 number = 0;
    _IndexNoAppend(unfiled.constData(), six.manager.boxHandle(), quint16(card), &number);
    QCOMPARE(six.shown(UnfiledCategoryId), QStringLiteral("f"));
    QVERIFY(six.manager.addCardToCtgr(card, 30, Single, false));
    QCOMPARE(six.shown(UnfiledCategoryId), isUnfiled ? QString() : QStringLiteral("f"));
}

// One category of one card

void CardCategoriesTest::addPutsTheCardIntoTheView()
{
    Six six;
    QVERIFY(six.isReady);
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
    QVERIFY(six.manager.addCardToCtgr(six.ids['b'], 9, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcd bcde f")); // at its sorted place
    QCOMPARE(listOf(six.manager, six.ids['b']), QByteArray("\5\x09"));
    QVERIFY(six.table().currentIndex == six.table().masterIndex);
}

void CardCategoriesTest::addWithNoView()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 30, Single, false));
    QCOMPARE(six.manager.readCategories(six.ids['a']), (QList<int>{5, 30}));
    QVERIFY(!rowOf(six.manager, 30));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
    QVERIFY(six.manager.enableFilter(30));
    QCOMPARE(six.titles(), QStringLiteral("a"));
}

void CardCategoriesTest::addTwiceIsAddedOnce()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 5, Single, false));
    QCOMPARE(listOf(six.manager, six.ids['a']), QByteArray("\5"));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
}

void CardCategoriesTest::addOfAnUnfiledCardTakesItOutOfThatView()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['f'], 9, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cdef "));
}

void CardCategoriesTest::addOfAFiledCardLeavesTheUnfiledViewAlone()
{
    Six six;
    const QByteArray unfiled = pathOf(six.manager, *rowOf(six.manager, UnfiledCategoryId));
    quint16 number = 0;
    QCOMPARE(_IndexNoAppend(unfiled, six.manager.boxHandle(), quint16(six.ids['a']), &number),
             PdtmStatus(PdtmOk));
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 9, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcd acde af"));
}

void CardCategoriesTest::addOfUnfiledTakesTheCardOutOfAllOthers()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['c'], UnfiledCategoryId, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("abd de cf"));
    QCOMPARE(listOf(six.manager, six.ids['c']), QByteArray());
    QCOMPARE(six.manager.count(), 6); // the master keeps it
}

void CardCategoriesTest::removeTakesTheCardOutOfTheView()
{
    Six six;
    QVERIFY(six.manager.enableFilter(5)); // while it is shown
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['d'], 5, Single, false));
    QCOMPARE(six.titles(), QStringLiteral("abc"));
    QCOMPARE(six.allShown(), QStringLiteral("abc cde f"));
    QCOMPARE(listOf(six.manager, six.ids['d']), QByteArray("\x09"));
}

void CardCategoriesTest::removeOfOneOfTwoLeavesItFiled()
{
    Six six;
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['c'], 9, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcd de f"));
}

void CardCategoriesTest::removeOfTheLastPutsItIntoTheUnfiledView()
{
    Six six;
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 5, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("bcd cde af"));
    QCOMPARE(listOf(six.manager, six.ids['a']), QByteArray());
}

void CardCategoriesTest::removeOfACategoryThatIsNotThere()
{
    Six six;
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 9, Single, false));
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['f'], 9, Single, false)); // in the unfiled view already
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
    QCOMPARE(listOf(six.manager, six.ids['a']), QByteArray("\5"));
}

void CardCategoriesTest::everyViewOfACategoryFollows()
{
    View view;
    const unsigned long card = view.add("a", 0, "");
    QVERIFY(view.manager.close());
    const QByteArrayList indexes = {view.box.file("1.IDX"), view.box.file("2.IDX")};
    for (const QByteArray &index : indexes)
        QVERIFY(makeCategoryIndex(view.box, index, 5));
    const QByteArrayList unfiled = {view.box.file("3.IDX"), view.box.file("4.IDX")};
    for (const QByteArray &index : unfiled)
        QVERIFY(makeCategoryIndex(view.box, index, char(UnfiledCategoryId)));
    KyPDataManager manager(view.box.path().constData(), nullptr, false);
    const auto in = [&](const QByteArrayList &list) {
        return cardsOf(list[0]).size() + cardsOf(list[1]).size();
    };
    QCOMPARE(in(unfiled), 2);
    QVERIFY(manager.addCardToCtgr(card, 5, Single, false));
    QCOMPARE(in(indexes), 2);
    QCOMPARE(in(unfiled), 0);
    QVERIFY(manager.removeCardFromCtgr(card, 5, Single, false));
    QCOMPARE(in(indexes), 0);
    QCOMPARE(in(unfiled), 2);
}

void CardCategoriesTest::noCategoryLeavesTheMasterAlone()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 0, Single, false));
    QCOMPARE(six.manager.readCategories(six.ids['a']), QList<int>{5});
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 0, Single, false));
    QCOMPARE(listOf(six.manager, six.ids['a']), QByteArray("\5"));
    QCOMPARE(six.titles(), QStringLiteral("abcdef"));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
}

void CardCategoriesTest::idsAreCutToEightBits()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 0x109, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcd acde f"));
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 0x105, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("bcd acde f"));
    QCOMPARE(listOf(six.manager, six.ids['a']), QByteArray("\x09"));
}

void CardCategoriesTest::flagHasNoEffect()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['a'], 9, Single, true));
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 5, Single, true));
    QVERIFY(six.manager.updateCategories(six.ids['f'], {5}, Single, true));
    QCOMPARE(six.allShown(), QStringLiteral("bcdf acde "));
}

void CardCategoriesTest::cardZeroIsTheCurrentOne()
{
    Six six;
    QVERIFY(!six.manager.addCardToCtgr(0, 9, Single, false)); // there is none yet
    QVERIFY(!six.manager.removeCardFromCtgr(0, 9, Single, false));
    QVERIFY(six.manager.first());
    QVERIFY(six.manager.addCardToCtgr(0, 9, Single, false));
    QVERIFY(six.manager.removeCardFromCtgr(0, 5, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("bcd acde f"));
}

void CardCategoriesTest::missingCardIsRefused()
{
    Six six;
    QVERIFY(!six.manager.addCardToCtgr(77, 9, Single, false));
    QCOMPARE(int(six.table().lastError), int(PdtmNoSuchCard));
    six.table().lastError = 0;
    QVERIFY(!six.manager.removeCardFromCtgr(77, 9, Single, false));
    QCOMPARE(int(six.table().lastError), int(PdtmNoSuchCard));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
}

void CardCategoriesTest::closedBoxIsRefused()
{
    Six six;
    const unsigned long card = six.ids['a'];
    QVERIFY(six.manager.close());
    QVERIFY(!six.manager.addCardToCtgr(card, 9, Single, false));
    QVERIFY(!six.manager.removeCardFromCtgr(card, 5, Single, false));
    QVERIFY(!six.manager.updateCategories(card, {9}, Single, false));
    QVERIFY(six.manager.readCategories(card).isEmpty());
    QVERIFY(six.manager.open(false));
    QCOMPARE(six.manager.readCategories(card), QList<int>{5});
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
}

void CardCategoriesTest::otherModesAreRefused()
{
    Six six;
    const unsigned long card = six.ids['a'];
    for (const auto mode : {All, static_cast<KyPDataManager::DeleteMode>(3)}) {
        QVERIFY(!six.manager.addCardToCtgr(card, 9, mode, false));
        QVERIFY(!six.manager.removeCardFromCtgr(card, 5, mode, false));
        QVERIFY(!six.manager.updateCategories(card, {9}, mode, false));
    }
    QVERIFY(!six.manager.updateCategories(card, {9}, Visible, false));
    QCOMPARE(six.manager.readCategories(card), QList<int>{5});
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
}

// The loop over a view

void CardCategoriesTest::visibleLeavesSeveralCardsAlone()
{
    Six six;
    QVERIFY(six.manager.enableFilter(9));
    QVERIFY(six.manager.addCardToCtgr(0, 30, Visible, false));
    QVERIFY(six.manager.removeCardFromCtgr(0, 9, Visible, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
    for (const char title : QByteArray("cde"))
        QVERIFY(six.manager.readCategories(six.ids[title]).contains(9) &&
                !six.manager.readCategories(six.ids[title]).contains(30));
    QCOMPARE(six.manager.cardId(), six.ids['d']); // where next() went
}

void CardCategoriesTest::visibleChangesTheOnlyCard()
{
    Six six;
    QVERIFY(six.manager.addCardToCtgr(six.ids['b'], 7, Single, false));
    QVERIFY(showSeven(six));
    QCOMPARE(six.titles(), QStringLiteral("b"));
    QVERIFY(six.manager.addCardToCtgr(six.ids['f'], 9, Visible, false)); // the card isn't looked at
    QCOMPARE(six.allShown(), QStringLiteral("abcd bcde f"));
    QCOMPARE(six.manager.cardId(), six.ids['b']);
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['f'], 5, Visible, false));
    QCOMPARE(six.allShown(), QStringLiteral("acd bcde f"));
    QVERIFY(six.manager.removeCardFromCtgr(0, 7, Visible, false)); // and the view is empty then
    QCOMPARE(six.titles(), QString());
    QCOMPARE(six.manager.readCategories(six.ids['b']), QList<int>{9});
}

void CardCategoriesTest::visibleOfAnEmptyViewChangesTheCurrentCard()
{
    Six six;
    QVERIFY(six.manager.first());
    QVERIFY(showSeven(six));
    QVERIFY(six.manager.addCardToCtgr(0, 9, Visible, false));
    QVERIFY(six.manager.removeCardFromCtgr(0, 5, Visible, false));
    QCOMPARE(six.allShown(), QStringLiteral("bcd acde f"));
}

void CardCategoriesTest::visibleOfAnEmptyViewWithNoCard()
{
    Six six;
    QVERIFY(showSeven(six));
    QVERIFY(!six.manager.addCardToCtgr(six.ids['a'], 9, Visible, false));
    QVERIFY(six.manager.removeCardFromCtgr(six.ids['a'], 5, Visible, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcd cde f"));
}

// The whole list

void CardCategoriesTest::updateReplacesTheList()
{
    Six six;
    QVERIFY(six.manager.updateCategories(six.ids['c'], {30, 245, 9}, Single, false));
    QCOMPARE(listOf(six.manager, six.ids['c']), QByteArray("\x1E\xF5\x09"));
    QVERIFY(six.manager.updateCategories(six.ids['c'], {}, Single, false));
    QCOMPARE(listOf(six.manager, six.ids['c']), QByteArray());
    QCOMPARE(six.manager.readItem("TITL", six.ids['c']), QStringLiteral("c"));
    QCOMPARE(six.manager.count(), 6);
}

void CardCategoriesTest::updateIsAnEdit()
{
    Six six;
    const unsigned long card = six.ids['a'];
    const QByteArray longAgo = ptime(2001, 1, 1, 1, 1, 1);
    for (const char *code : {"CTTM", "MDTM"})
        QVERIFY(storeBytes(six.manager, card, code, longAgo));
    QVERIFY(six.manager.updateCategories(card, {5}, Single, false));
    QCOMPARE(storedBytes(six.manager, card, "CTTM"), longAgo);
    QVERIFY(storedBytes(six.manager, card, "MDTM") != longAgo);
    QVERIFY(!six.table().editing);
}

void CardCategoriesTest::updateTakesTheCardOutOfTheUnfiledView()
{
    Six six;
    const QByteArray unfiled = pathOf(six.manager, *rowOf(six.manager, UnfiledCategoryId));
    QVERIFY(six.manager.updateCategories(six.ids['f'], {5}, Single, false));
    QCOMPARE(six.allShown(), QStringLiteral("abcdf cde "));
    QCOMPARE(cardsOf(unfiled), QList<int>());
}

void CardCategoriesTest::updateTakesAnEmptiedCardOutOfTheUnfiledViewToo()
{
    Six six;
    QVERIFY(six.manager.updateCategories(six.ids['f'], {}, Single, false));
    QVERIFY(six.manager.updateCategories(six.ids['a'], {}, Single, false));
    QCOMPARE(six.shown(UnfiledCategoryId), QString());
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId)); // which is made anew each time
    QCOMPARE(six.titles(), QStringLiteral("af"));
}

void CardCategoriesTest::updateLeavesAnEmptiedCardInTheUnfiledViewThatIsShown()
{
    Six six;
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId));
    QVERIFY(six.manager.updateCategories(six.ids['f'], {}, Single, false));
    QVERIFY(six.manager.updateCategories(six.ids['a'], {}, Single, false));
    QCOMPARE(six.titles(), QStringLiteral("af"));
}

void CardCategoriesTest::updateOfAFiledListInTheUnfiledViewThatIsShown()
{
    Six six;
    QVERIFY(six.manager.enableFilter(UnfiledCategoryId));
    QVERIFY(six.manager.updateCategories(six.ids['f'], {9}, Single, false));
    QCOMPARE(six.titles(), QString());
}

void CardCategoriesTest::updateOfTheCurrentCard()
{
    Six six;
    QVERIFY(!six.manager.updateCategories(0, {9}, Single, false));
    QCOMPARE(six.manager.count(), 6); // no new card
    QVERIFY(six.manager.first());
    QVERIFY(six.manager.updateCategories(0, {9}, Single, false));
    QCOMPARE(listOf(six.manager, six.ids['a']), QByteArray("\x09"));
    QCOMPARE(six.manager.count(), 6);
}

void CardCategoriesTest::updateInsideAnEditIsRefused()
{
    Six six;
    unsigned long card = six.ids['a'];
    QVERIFY(six.manager.startEditCard(card));
    QVERIFY(six.manager.writeItem("TITL", "edited"));
    QVERIFY(!six.manager.updateCategories(six.ids['b'], {9}, Single, false));
    QCOMPARE(six.table().editState, 3);
    QVERIFY(six.manager.finishEditCard(&card));
    QCOMPARE(six.manager.readItem("TITL", card), QStringLiteral("edited"));
    QCOMPARE(six.manager.readCategories(six.ids['b']), QList<int>{5});
}

void CardCategoriesTest::updateOfAMissingCardIsRefused()
{
    Six six;
    QVERIFY(!six.manager.updateCategories(77, {9}, Single, false));
    QVERIFY(!six.table().editing);
    QCOMPARE(six.manager.count(), 6);
}

QTEST_MAIN(CardCategoriesTest)
#include "cardcategoriestest.moc"
