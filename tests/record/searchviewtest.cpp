#include "filterfixture.h"

using KyPDtm::PIOIDXINFO;

/** Views of searches: filter() and unfilter(). Those of categories have filtertest. */
class SearchViewTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void filterShowsTheMatches();
    void filterOverTheCurrentView();
    void filterOverTheMaster();
    void filterOverTheResumedView();
    void filterOverNothingToResume();
    void filterOverAnUnknownParent();
    void filterReplacesAFilter();
    void filterKeepsAFilter();
    void filterStaysInsideItsCategory();
    void filterOfAFilterStaysInsideBoth();
    void filterWithNoOrderTakesThatOfTheParent();
    void filterWithNoExpressionShowsTheWholeBox();
    void filterIsAdopted();
    void filterThatMatchesNothing();
    void badExpressions_data();
    void badExpressions();
    void filterKeepsDirectionAndCard();
    void filterOfAClosedBox();
    void parentMakesNoRoom();
    void viewToResumeMakesNoRoom();
    void viewThatIsNotNeededMakesRoom();

    void unfilterOnACategory();
    void unfilterOnTheMaster();
    void unfilterWithNothingToResume();
    void unfilterResumes();
    void unfilterForgets();
    void unfilterRestoresNoOrder();
    void unfilterDeletesAPermanentSearch();
    void unfilterKeepsTheMaster();
    void killedResume();
    void resumeIsForgottenWithItsIndex();
};

void SearchViewTest::init()
{
    deleteTemporaryFiles();
}

void SearchViewTest::filterShowsTheMatches()
{
    View view;
    view.addSix();
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterMaster, false));
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QVERIFY(view.manager.isFiltered());
    const PIOIDXINFO &row = view.current();
    QVERIFY(row.inUse);
    QVERIFY(row.filtered);
    QVERIFY(row.ascending);
    QVERIFY(!row.sticky);
    QCOMPARE(int(row.categoryId), 0);
    QCOMPARE(int(row.sortItem), 0);
    QCOMPARE(QByteArray(reinterpret_cast<const char *>(row.sortExp), row.sortExpLength), plainKey("NUMB"));
    QCOMPARE(infoOf(view.currentPath(), InfoSearchExpression), atLeast("NUMB", 3));
    QCOMPARE(temporaryFiles(), QStringList{QString::fromLatin1(row.fileName)});
    QVERIFY(view.manager.unfilter(false));
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(temporaryFiles(), QStringList());
    QCOMPARE(rowsInUse(view), 1);
}

void SearchViewTest::filterOverTheCurrentView()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterCurrent, false));
    QCOMPARE(view.titles(), QStringLiteral("dc"));
    QCOMPARE(temporaryFiles().size(), 2); // a category is no search: it stays
}

void SearchViewTest::filterOverTheMaster()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterMaster, false));
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
}

void SearchViewTest::filterOverTheResumedView()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filter("c", KyPDataManager::FilterCurrent, true));
    QCOMPARE(view.titles(), QStringLiteral("c"));
    QVERIFY(view.filterBy(atLeast("NUMB", 1), plainKey("NUMB"), KyPDataManager::FilterResume, false));
    QCOMPARE(view.titles(), QStringLiteral("edc"));
    QCOMPARE(temporaryFiles().size(), 2); // the category and this one
    QVERIFY(view.manager.unfilter(true));
    QCOMPARE(int(view.current().categoryId), 9);
}

void SearchViewTest::filterOverNothingToResume()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    const QStringList files = temporaryFiles();
    QVERIFY(!view.filter("c", KyPDataManager::FilterResume, true));
    QCOMPARE(temporaryFiles(), files); // no row was taken
    QCOMPARE(int(view.current().categoryId), 29);
    QVERIFY(!view.table().resumeIndex);
}

void SearchViewTest::filterOverAnUnknownParent()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    const QStringList files = temporaryFiles();
    QVERIFY(!view.filter("c", static_cast<KyPDataManager::FilterFor>(3), true));
    QCOMPARE(temporaryFiles(), files);
    QCOMPARE(int(view.current().categoryId), 29);
}

void SearchViewTest::filterReplacesAFilter()
{
    View view;
    view.addSix();
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterMaster, false));
    QVERIFY(view.filterBy(atLeast("NUMB", 5), plainKey("NUMB"), KyPDataManager::FilterCurrent, false));
    QCOMPARE(view.titles(), QStringLiteral("ba"));
    QCOMPARE(temporaryFiles(), QStringList{QString::fromLatin1(view.current().fileName)});
    QCOMPARE(rowsInUse(view), 2);
    QVERIFY(!view.table().resumeIndex);
    QVERIFY(view.manager.unfilter(true));
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(temporaryFiles(), QStringList());
}

void SearchViewTest::filterKeepsAFilter()
{
    View view;
    view.addSix();
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterMaster, false));
    const PIOIDXINFO *first = view.table().currentIndex;
    QVERIFY(view.filterBy(atLeast("NUMB", 5), plainKey("NUMB"), KyPDataManager::FilterCurrent, true));
    QCOMPARE(view.titles(), QStringLiteral("ba"));
    QCOMPARE(view.table().resumeIndex, first);
    QCOMPARE(temporaryFiles().size(), 2);
    QVERIFY(view.manager.unfilter(true));
    QCOMPARE(view.table().currentIndex, first);
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QVERIFY(!view.table().resumeIndex);
    QVERIFY(view.manager.unfilter(true));
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(temporaryFiles(), QStringList());
}

void SearchViewTest::filterStaysInsideItsCategory()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterCurrent, true));
    QCOMPARE(view.titles(), QStringLiteral("dc"));
    QVERIFY(view.setCategories(view.cardOf("a"), "\x05\x09")); // in both
    QVERIFY(view.setCategories(view.cardOf("b"), "\x05"));     // in the search only
    QVERIFY(view.setCategories(view.cardOf("d"), "\x05"));     // no longer in the category
    QCOMPARE(view.titles(), QStringLiteral("ca"));
    QVERIFY(view.add("new", 9, ""));
    QCOMPARE(view.titles(), QStringLiteral("ca"));
    QVERIFY(view.manager.disableFilter(true)); // an index that is built anew
    QVERIFY(view.manager.enableFilter(9));
    QCOMPARE(view.manager.count(), 3);
}

void SearchViewTest::filterOfAFilterStaysInsideBoth()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterCurrent, false));
    QVERIFY(view.filterBy(containsText("TITL", "a"), plainKey("NUMB"), KyPDataManager::FilterCurrent, false));
    QCOMPARE(view.titles(), QString());
    QVERIFY(view.add("a1", 9, "\x09"));
    QVERIFY(view.add("a2", 1, "\x09")); // number too low
    QVERIFY(view.add("a3", 9, "\x05")); // another category
    QVERIFY(view.add("x", 9, "\x09"));  // another title
    QCOMPARE(view.titles(), QStringLiteral("a1"));
}

void SearchViewTest::filterWithNoOrderTakesThatOfTheParent()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(view.manager.filter(atLeast("NUMB", 3).constData(), 9, nullptr, 0, KyPDataManager::FilterCurrent,
                                false));
    QCOMPARE(view.titles(), QStringLiteral("dcba"));
    QCOMPARE(int(view.current().sortExpLength), 0);
}

void SearchViewTest::filterWithNoExpressionShowsTheWholeBox()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    const QByteArray order = plainKey("NUMB");
    QVERIFY(view.filterBy(ExpressionEnd, order, KyPDataManager::FilterCurrent, true));
    QCOMPARE(view.titles(), QStringLiteral("edc")); // an empty one: all of the parent
    // With no bytes at all the parent doesn't count: callers make a view of all cards in this way.
    QVERIFY(view.manager.filter(nullptr, 0, order.constData(), static_cast<unsigned long>(order.size()),
                                KyPDataManager::FilterResume, false));
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
    QVERIFY(view.manager.isFiltered());
}

void SearchViewTest::filterIsAdopted()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterCurrent, true));
    const QByteArray name = view.current().fileName;
    unsigned long card = view.cardOf("d");
    QVERIFY(view.manager.close());
    KyPDataManager next(view.box.path().constData(), nullptr, false);
    QVERIFY(!next.isFiltered());
    QVERIFY(next.setCurrentIndex(name.constData(), false)); // in the order of the view
    QVERIFY(next.isFiltered());
    QCOMPARE(next.count(), 2);
    QVERIFY(next.startEditCard(card));
    QVERIFY(next.writeItem("CTGR", "\x05", 1));
    QVERIFY(next.finishEditCard(&card));
    QCOMPARE(next.count(), 1); // still inside the category
    QVERIFY(next.unfilter(false));
    QCOMPARE(next.count(), 6);
}

void SearchViewTest::filterThatMatchesNothing()
{
    View view;
    view.addSix();
    QVERIFY(view.filterBy(atLeast("NUMB", 100), plainKey("NUMB"), KyPDataManager::FilterMaster, false));
    QVERIFY(view.manager.isFiltered());
    QCOMPARE(view.manager.count(), 0);
    QVERIFY(view.add("new", 100, ""));
    QCOMPARE(view.titles(), QStringLiteral("new"));
}

void SearchViewTest::badExpressions_data()
{
    QTest::addColumn<QByteArray>("search");
    QTest::addColumn<qulonglong>("searchLength");
    QTest::addColumn<QByteArray>("order");
    QTest::addColumn<qulonglong>("orderLength");
    const QByteArray search = atLeast("NUMB", 3);
    const QByteArray order = plainKey("NUMB");
    const QByteArray fifty = containsText("TITL", QByteArray(42, 'x'));
    QCOMPARE(fifty.size(), 50);
    const QByteArray longer = containsText("TITL", QByteArray(43, 'x'));
    const QByteArray keys = plainKey("NUMB").chopped(1).repeated(8) + QByteArray(3, '\0');
    QTest::newRow("search too long") << longer << 51ULL << order << 7ULL;
    QTest::newRow("search longer than an int") << search << 0x100000009ULL << order << 7ULL;
    QTest::newRow("search of no bytes in an int") << search << 0x100000000ULL << order << 7ULL;
    QTest::newRow("order too long") << search << 9ULL << keys << 51ULL;
    QTest::newRow("order longer than an int") << search << 9ULL << order << 0x100000007ULL;
    QTest::newRow("no search with a length") << QByteArray() << 9ULL << order << 7ULL;
    QTest::newRow("no order with a length") << search << 9ULL << QByteArray() << 7ULL;
    QTest::newRow("malformed search") << QByteArray("NUMB\xFE", 5) << 5ULL << order << 7ULL;
    QTest::newRow("search cut short") << fifty << 49ULL << order << 7ULL;
    QTest::newRow("malformed order") << search << 9ULL << QByteArray("NUMB", 4) << 4ULL;
}

void SearchViewTest::badExpressions()
{
    QFETCH(QByteArray, search);
    QFETCH(qulonglong, searchLength);
    QFETCH(QByteArray, order);
    QFETCH(qulonglong, orderLength);
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    const QStringList files = temporaryFiles();
    QVERIFY(!view.manager.filter(
        search.isNull() ? nullptr : search.constData(), static_cast<unsigned long>(searchLength),
        order.isNull() ? nullptr : order.constData(), static_cast<unsigned long>(orderLength),
        KyPDataManager::FilterCurrent, true));
    QCOMPARE(temporaryFiles(), files);
    QCOMPARE(rowsInUse(view), 2);
    QVERIFY(!view.table().resumeIndex);
    QCOMPARE(view.titles(), QStringLiteral("cde"));
}

void SearchViewTest::filterKeepsDirectionAndCard()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("TITL", false));
    QVERIFY(view.manager.last());
    QVERIFY(view.filterBy(atLeast("NUMB", 3), plainKey("NUMB"), KyPDataManager::FilterMaster, false));
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("abcd"));
    QCOMPARE(view.manager.cardId(), view.cardOf("a"));
    QVERIFY(view.manager.unfilter(false));
    QVERIFY(!view.manager.ascendent());
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
}

void SearchViewTest::filterOfAClosedBox()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    const QStringList files = temporaryFiles();
    QVERIFY(view.manager.close());
    QVERIFY(!view.filter("a", KyPDataManager::FilterMaster, true));
    QCOMPARE(temporaryFiles(), files);
    QVERIFY(view.manager.open(false));
    QVERIFY(view.filter("a", KyPDataManager::FilterMaster, true));
    QCOMPARE(view.titles(), QStringLiteral("a"));
}

void SearchViewTest::parentMakesNoRoom()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    QVERIFY(view.manager.enableFilter(9));
    keepAllButTheCurrent(view);
    const QStringList files = temporaryFiles();
    QVERIFY(!view.filter("c", KyPDataManager::FilterCurrent, false));
    QCOMPARE(temporaryFiles(), files);
    QCOMPARE(view.titles(), QStringLiteral("cde"));
}

void SearchViewTest::viewToResumeMakesNoRoom()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    QVERIFY(view.manager.enableFilter(9));
    keepAllButTheCurrent(view);
    QVERIFY(!view.filter("c", KyPDataManager::FilterMaster, true));
    QCOMPARE(view.titles(), QStringLiteral("cde"));
    QVERIFY(!view.table().resumeIndex);
}

void SearchViewTest::viewThatIsNotNeededMakesRoom()
{
    View view;
    view.addSix();
    QVERIFY(fillTable(view));
    QVERIFY(view.filter("e", KyPDataManager::FilterMaster, false));
    keepAllButTheCurrent(view);
    QVERIFY(view.filter("c", KyPDataManager::FilterMaster, false));
    QVERIFY(view.manager.isFiltered());
    QCOMPARE(view.titles(), QStringLiteral("c"));
    QCOMPARE(temporaryFiles().size(), 9);
}

void SearchViewTest::unfilterOnACategory()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    const auto files = folderState();
    QVERIFY(!view.manager.unfilter(true));
    QVERIFY(!view.manager.unfilter(false));
    QCOMPARE(folderState(), files);
    QCOMPARE(view.titles(), QStringLiteral("cde"));
}

void SearchViewTest::unfilterOnTheMaster()
{
    View view;
    view.addSix();
    view.table().resumeIndex = view.table().masterIndex;
    QVERIFY(!view.manager.unfilter(true));
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(view.table().resumeIndex, view.table().masterIndex);
}

void SearchViewTest::unfilterWithNothingToResume()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filter("c", KyPDataManager::FilterCurrent, false));
    QVERIFY(view.manager.unfilter(true));
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
}

void SearchViewTest::unfilterResumes()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("NUMB", true));
    const PIOIDXINFO *sorted = view.table().currentIndex;
    QVERIFY(view.filter("c", KyPDataManager::FilterCurrent, true));
    QVERIFY(view.manager.unfilter(true));
    QCOMPARE(view.table().currentIndex, sorted);
    QCOMPARE(view.titles(), QStringLiteral("fedcba"));
    QVERIFY(!view.table().resumeIndex);
}

void SearchViewTest::unfilterForgets()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filter("c", KyPDataManager::FilterCurrent, true));
    QVERIFY(view.table().resumeIndex);
    QVERIFY(view.manager.unfilter(false));
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QVERIFY(!view.table().resumeIndex);
}

void SearchViewTest::unfilterRestoresNoOrder()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.sort("NUMB", true));
    QVERIFY(view.filter("c", KyPDataManager::FilterCurrent, false));
    QVERIFY(view.manager.unfilter(false));
    QCOMPARE(view.titles(), QStringLiteral("abcdef"));
    QCOMPARE(view.manager.sortItem(), TitleItem);
}

void SearchViewTest::unfilterDeletesAPermanentSearch()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.close());
    QVERIFY(makePermanent(view.box, "P.IDX", atLeast("NUMB", 5)));
    KyPDataManager manager(view.box.path().constData(), nullptr, false);
    QVERIFY(manager.setCurrentIndex(view.box.file("P.IDX").mid(3).constData(), false));
    QVERIFY(manager.isFiltered());
    QCOMPARE(manager.count(), 2);
    QVERIFY(manager.unfilter(true));
    QCOMPARE(manager.count(), 6);
    QCOMPARE(infoOf(view.box.file("P.IDX"), InfoSearchExpression), QByteArray("none"));
}

void SearchViewTest::unfilterKeepsTheMaster()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.close());
    QVERIFY(makePermanent(view.box, "P.IDX", atLeast("NUMB", 5)));
    KyPDataManager manager(view.box.path().constData(), nullptr, false);
    QVERIFY(manager.setCurrentIndex(view.box.file("P.IDX").mid(3).constData(), true));
    QVERIFY(manager.isFiltered());
    QVERIFY(manager.unfilter(false));
    QCOMPARE(privateOf(manager).currentIndex, privateOf(manager).masterIndex);
    QCOMPARE(manager.count(), 2);
    const QByteArray order = plainKey("NUMB");
    QVERIFY(manager.filter(containsText("TITL", "a").constData(), 9, order.constData(), 7,
                           KyPDataManager::FilterMaster, false));
    QCOMPARE(manager.count(), 1);
    QVERIFY(manager.unfilter(false));
    QCOMPARE(manager.count(), 2);
}

void SearchViewTest::killedResume()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.filter("c", KyPDataManager::FilterCurrent, true));
    view.manager.killIdxResume();
    QVERIFY(!view.table().resumeIndex);
    QVERIFY(!view.filter("c", KyPDataManager::FilterResume, true));
    QVERIFY(view.manager.unfilter(true));
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
    QCOMPARE(temporaryFiles().size(), 1); // the category itself stays
}

void SearchViewTest::resumeIsForgottenWithItsIndex()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    const QByteArray category = view.current().fileName;
    QVERIFY(view.filter("c", KyPDataManager::FilterCurrent, true));
    QCOMPARE(int(view.table().resumeIndex->categoryId), 9);
    QVERIFY(view.manager.setCurrentIndex(category.constData(), false));
    QVERIFY(view.manager.disableFilter(true));
    QVERIFY(!view.table().resumeIndex);
    QVERIFY(view.filter("a", KyPDataManager::FilterMaster, false));
    const QByteArray search = view.current().fileName;
    QVERIFY(view.filter("b", KyPDataManager::FilterMaster, true));
    QVERIFY(view.manager.setCurrentIndex(search.constData(), false));
    QVERIFY(view.manager.unfilter(true)); // leaves the very view to resume
    QVERIFY(!view.table().resumeIndex);
    QCOMPARE(view.table().currentIndex, view.table().masterIndex);
}

QTEST_MAIN(SearchViewTest)
#include "searchviewtest.moc"
