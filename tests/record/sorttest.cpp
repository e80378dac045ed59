#include "logcapture.h"
#include "sortfixture.h"
#include <climits>

namespace {

/** Answers of the store's question for the item of a pronunciation, by item number. */
QMap<quint32, quint32> &pronunciations()
{
    static QMap<quint32, quint32> items;
    return items;
}

} // namespace

uint32_t _PioExtGetYomiPairItemNo(const PioExtBoxInfo * /*info*/, uint32_t itemNumber)
{
    return pronunciations().value(itemNumber);
}

class SortTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { pronunciations().clear(); }

    void sortByTheCurrentItemChangesNothing();
    void sortByANewItemMakesATemporaryIndex();
    void sortDescendingWalksAnAscendingIndex();
    void sortDescendingOnAnExistingOrderTouchesNoFile();
    void sortGoesBackToAnExistingOrder();
    void sortTakesTheFirstOfTwoFittingIndexes();
    void sortKeepsUpWithEdits();
    void storedDescendingDirectionCountsOnTheCurrentIndex();
    void sortByAnItemOutOfRangeTouchesNothing();
    void sortByAnUnknownCodeTouchesNothing();
    void sortByANameRunsOnItsPronunciation();
    void sortOfASubsetKeepsItsCards_data();
    void sortOfASubsetKeepsItsCards();
    void subsetIsNeverTakenForAPlainOrder();
    void newOrderOfAnEmptyBoxFails();
    void emptySubsetIsSorted();
    void readOnlyManagerSorts();
    void closedBoxShowsExistingOrdersOnly();
    void unopenedManagerRefuses();
    void managerWithoutMasterRefuses();

    void secondKeys_data();
    void secondKeys();
    void secondKeyOrdersEqualCards();

    void expressionMakesATemporaryIndex();
    void expressionInForceOnlySetsTheDirection();
    void expressionGoesBackToAnExistingOrder();
    void expressionIsToldFromAnItem();
    void impossibleExpressions_data();
    void impossibleExpressions();
    void malformedExpressionLeavesNoFile();
    void expressionsInTheNextManager_data();
    void expressionsInTheNextManager();
    void repeatedExpressionWithASecondKeyGoesByTheTable();
    void expressionWithNoRoomForTheSecondKeyIsRefused();
    void expressionOnASubsetHasAnInvertedResult_data();
    void expressionOnASubsetHasAnInvertedResult();
    void expressionOnASubsetTakesTheSecondKey_data();
    void expressionOnASubsetTakesTheSecondKey();

    void backToTheMaster();
    void directionOfTheMaster();
    void subsetTakesTheOrderOfTheMaster_data();
    void subsetTakesTheOrderOfTheMaster();
    void categoryLeftInTheOrderOfTheMaster();

    void firstSortKey();
    void dumpOfTheTable();
};

void SortTest::sortByTheCurrentItemChangesNothing()
{
    SortBox box;
    const auto files = folderState();
    const View before = box.view();
    QVERIFY(box.manager->sort("TITL", true));
    QVERIFY(box.manager->sort(box.item("TITL"), true));
    QCOMPARE(box.titles(), "abcd");
    QVERIFY(box.view() == before);
    QCOMPARE(folderState(), files);
}

void SortTest::sortByANewItemMakesATemporaryIndex()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.titles(), "cdba");
    QCOMPARE(box.manager->sortItem(), int(box.item("NUMB")));
    QVERIFY(box.manager->ascendent());
    const QByteArray expression = sortKey("NUMB", PlainAscending) + endOfExpression();
    const KyPDtm::PIOIDXINFO &row = box.currentRow();
    QCOMPARE(QByteArray(row.fileName), "ppin" + box.box.path().mid(3, 3) + "0.tdx");
    QCOMPARE(box.temporaries(), QStringList(row.fileName));
    QVERIFY(row.inUse && !row.sticky && row.ascending && !row.filtered);
    QCOMPARE(int(row.categoryId), 0);
    QCOMPARE(int(row.indexAge), 0);
    QCOMPARE(box.keptOrder(row), expression);
    QCOMPARE(box.storedOrder(row.fileName), expression);
}

void SortTest::sortDescendingWalksAnAscendingIndex()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", false));
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.titles(), "abdc");
    QVERIFY(box.currentRow().ascending);
    QCOMPARE(box.titlesIn(box.currentRow().fileName), "cdba");
}

void SortTest::sortDescendingOnAnExistingOrderTouchesNoFile()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    const auto files = folderState();
    QVERIFY(box.manager->sort("NUMB", false));
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.titles(), "abdc");
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.titles(), "cdba");
    QCOMPARE(folderState(), files);
}

void SortTest::sortGoesBackToAnExistingOrder()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    const View byNumber = box.view();
    QVERIFY(box.manager->sort("SHRT", true));
    QCOMPARE(box.titles(), "bdac");
    QCOMPARE(box.temporaries().size(), 2);
    const auto files = folderState();
    QVERIFY(box.manager->sort("NUMB", true));
    QVERIFY(box.view() == byNumber);
    QVERIFY(box.manager->sort("TITL", false));
    QCOMPARE(&box.currentRow(), box.record().masterIndex);
    QCOMPARE(box.titles(), "dcba");
    QCOMPARE(folderState(), files);
}

void SortTest::sortTakesTheFirstOfTwoFittingIndexes()
{
    SortBox box;
    const QByteArray expression = sortKey("NUMB", PlainAscending) + endOfExpression();
    const QByteArray first = box.adopt("A.IDX", expression);
    box.adopt("B.IDX", expression);
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(QByteArray(box.currentRow().fileName), first);
    QVERIFY(box.temporaries().isEmpty());
}

void SortTest::sortKeepsUpWithEdits()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    unsigned long card = box.manager->firstCard(); // c
    QVERIFY(box.manager->startEditCard(card));
    QVERIFY(box.manager->writeItem("NUMB", uchar(9)));
    QVERIFY(box.manager->finishEditCard(&card));
    QVERIFY(addCard(*box.manager, "e"));
    QCOMPARE(box.titles(), "edbac"); // the number of e is empty
}

void SortTest::storedDescendingDirectionCountsOnTheCurrentIndex()
{
    SortBox box;
    const QByteArray name = box.adopt("N.IDX", sortKey("NUMB", PlainDescending) + endOfExpression());
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(QByteArray(box.currentRow().fileName), name);
    QVERIFY(!box.currentRow().ascending);
    // An order that is come back to is walked as it stands.
    QVERIFY(box.manager->ascendent());
    QCOMPARE(box.titles(), "abdc");
    const auto files = folderState();
    QVERIFY(box.manager->sort("NUMB", true));
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.titles(), "cdba");
    QVERIFY(box.manager->sort("NUMB", false));
    QVERIFY(box.manager->ascendent());
    QCOMPARE(box.titles(), "abdc");
    QCOMPARE(folderState(), files);
}

void SortTest::sortByAnItemOutOfRangeTouchesNothing()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", false));
    const View before = box.view();
    const auto files = folderState();
    const int items = box.record().extBoxInfo->itemCount;
    for (const int item : {0, -1, items + 1, 256 + box.item("SHRT"), INT_MIN, INT_MAX})
        QVERIFY2(!box.manager->sort(item, true), qPrintable(QString::number(item)));
    QVERIFY(box.view() == before);
    QCOMPARE(folderState(), files);
    QVERIFY(box.manager->sort(items, true)); // the last one is in range
}

void SortTest::sortByAnUnknownCodeTouchesNothing()
{
    SortBox box;
    const View before = box.view();
    QVERIFY(!box.manager->sort("NONE", false));
    QVERIFY(!box.manager->sort("", false));
    QVERIFY(!box.manager->sort(static_cast<const char *>(nullptr), false));
    QVERIFY(box.view() == before);
    QVERIFY(box.temporaries().isEmpty());
}

void SortTest::sortByANameRunsOnItsPronunciation()
{
    SortBox box;
    // Only the low byte of the answer is an item number.
    pronunciations().insert(box.item("TITL"), 0x100U + box.item("SHRT"));
    QVERIFY(box.manager->sort("TITL", true));
    QCOMPARE(box.titles(), "bdac");
    QCOMPARE(box.manager->sortItem(), int(box.item("SHRT")));
    const auto files = folderState();
    QVERIFY(box.manager->sort("TITL", false));
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(folderState(), files);
    pronunciations().insert(box.item("NUMB"), 0x100U); // none
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.titles(), "cdba");
}

void SortTest::sortOfASubsetKeepsItsCards_data()
{
    QTest::addColumn<bool>("isCategory");
    QTest::newRow("category") << true;
    QTest::newRow("search") << false;
}

void SortTest::sortOfASubsetKeepsItsCards()
{
    QFETCH(bool, isCategory);
    SortBox box;
    QVERIFY(box.showSubset(isCategory));
    QCOMPARE(box.titles(), "abc");
    const View before = box.view();
    QVERIFY(box.manager->sort("NUMB", false));
    QCOMPARE(box.titles(), "abc");
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(&box.currentRow(), before.row);
    QVERIFY(box.manager->sort("SHRT", true));
    QCOMPARE(box.titles(), "bac");
    QCOMPARE(box.manager->sortItem(), int(box.item("SHRT")));
    const QByteArray expression = sortKey("SHRT", PlainAscending) + endOfExpression();
    QCOMPARE(box.keptOrder(box.currentRow()), expression);
    QCOMPARE(box.storedOrder(before.index), expression);
    QVERIFY(box.currentRow().ascending);
    QVERIFY(box.temporaries().isEmpty());
    QVERIFY(box.manager->sort("SHRT", false)); // the direction alone
    QCOMPARE(box.titles(), "cab");
    box.reopen();
    const KyPDtm::PIOIDXINFO *adopted = box.rowNamed(before.index);
    QVERIFY(adopted && adopted->isSubset());
    QCOMPARE(int(adopted->sortItem), int(box.item("SHRT")));
    QCOMPARE(box.titlesIn(before.index), "bac");
}

void SortTest::subsetIsNeverTakenForAPlainOrder()
{
    SortBox box;
    box.adopt("C.IDX", sortKey("NUMB", PlainAscending) + endOfExpression(),
              QByteArray("CTGR\xFE\x92\x0C\x05\0", 9));
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.titles(), "cdba");
    QCOMPARE(box.temporaries().size(), 1);
}

void SortTest::newOrderOfAnEmptyBoxFails()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const auto *master = privateOf(manager).currentIndex;
    const auto files = folderState();
    const QByteArray expression = sortKey("NUMB", PlainAscending) + sortKey("TITL", TextAscending);
    QVERIFY(!manager.sort("NUMB", false));
    QCOMPARE(int(privateOf(manager).lastError), int(PdtmNothingToSort));
    QVERIFY(!manager.sort(expression.constData(), int(expression.size()), false));
    QCOMPARE(privateOf(manager).currentIndex, master);
    QVERIFY(manager.ascendent());
    QCOMPARE(folderState(), files);
    QVERIFY(manager.sort("TITL", false)); // that order is there
    QVERIFY(!manager.ascendent());
}

void SortTest::emptySubsetIsSorted()
{
    SortBox box;
    const QByteArray name = box.adopt("C.IDX", SortBox::byTitle(), QByteArray("CTGR\xFE\x92\x0C\x09\0", 9));
    QVERIFY(box.manager->setCurrentIndex(name.constData(), false));
    QCOMPARE(box.titles(), "");
    LogCapture log;
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.manager->sortItem(), int(box.item("NUMB")));
    QVERIFY(log.lines().isEmpty());
}

void SortTest::readOnlyManagerSorts()
{
    SortBox box;
    box.reopen(true);
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.titles(), "cdba");
}

void SortTest::closedBoxShowsExistingOrdersOnly()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    const View before = box.view();
    for (KyPDtm::PIOIDXINFO &row : box.record().indexes)
        row.inUse = true; // none is free
    QVERIFY(box.manager->close());
    const QStringList files = box.temporaries();
    QVERIFY(!box.manager->sort("SHRT", false));
    QCOMPARE(box.temporaries(), files); // and none had to make room
    QCOMPARE(&box.currentRow(), before.row);
    QVERIFY(box.manager->ascendent());
    QVERIFY(box.manager->sort("TITL", false));
    QVERIFY(box.manager->open(false));
    QCOMPARE(box.titles(), "dcba");
}

void SortTest::unopenedManagerRefuses()
{
    KyPDataManager manager("F0:NOBOX.BOX", nullptr, false);
    QVERIFY(!manager.isOpened());
    QVERIFY(!manager.sort(1, true));
    QVERIFY(!manager.sort("TITL", true));
    QVERIFY(!manager.sort("TITL\xFE\x80", 6, true));
    manager.sort(false);
    QVERIFY(manager.ascendent());
    QVERIFY(!manager.setCurrentIndex("NOBOX.IDX", false));
    QVERIFY(!manager.setCurrentIndex("", false));
    QVERIFY(manager.current1stSortKey().isNull());
    LogCapture log;
    manager.dumpIndexStatus();
    QCOMPARE(log.lines(), QStringList("dumpIndexStatus: -----------------------------"));
}

void SortTest::managerWithoutMasterRefuses()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    const QByteArray temporary = box.currentRow().fileName;
    box.manager.reset();
    QCOMPARE(int(_IndexDelete(box.box.master().constData())), int(PdtmOk));
    box.reopen();
    QVERIFY(!box.record().currentIndex);
    QVERIFY(!box.manager->sort("TITL", true));
    QVERIFY(!box.manager->sort("TITL\xFE\x80", 6, true));
    box.manager->sort(false);
    QVERIFY(box.manager->ascendent());
    QVERIFY(!box.manager->setCurrentIndex(temporary.constData(), false));
    QVERIFY(box.manager->current1stSortKey().isNull());
    LogCapture log;
    box.manager->dumpIndexStatus();
    QCOMPARE(log.lines().size(), 4); // the heading and the temporary index
}

/** Bytes for the property of an item, as the store frees them. */
static quint8 *propertyWithPartner(const char *code)
{
    constexpr size_t PropertySize = 17;
    auto *property = static_cast<quint8 *>(calloc(PropertySize, 1));
    memcpy(property + 2, code, 4);
    return property;
}

void SortTest::secondKeys_data()
{
    QTest::addColumn<QByteArray>("secondItem");
    QTest::addColumn<int>("sameDirection");
    QTest::addColumn<int>("propertyKind");
    QTest::addColumn<QByteArray>("partner");
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray number = sortKey("NUMB", PlainAscending);
    const QByteArray numberDown = sortKey("NUMB", PlainDescending);
    const QByteArray title = sortKey("TITL", TextAscending);
    const QByteArray titleDown = sortKey("TITL", TextDescending);
    const QByteArray partner = sortKey("SHRT", PlainAscending);
    const QByteArray partnerDown = sortKey("SHRT", PlainDescending);
    const QByteArray none;
    QTest::newRow("none") << none << 1 << 0 << none << true << number;
    QTest::newRow("none, descending") << none << 1 << 0 << none << false << numberDown;
    QTest::newRow("same direction") << QByteArray("TITL") << 1 << 0 << none << true << number + title;
    QTest::newRow("same direction, descending")
        << QByteArray("TITL") << 2 << 0 << none << false << numberDown + titleDown;
    QTest::newRow("opposite") << QByteArray("TITL") << 0 << 0 << none << true << number + titleDown;
    QTest::newRow("opposite, descending")
        << QByteArray("TITL") << 0 << 0 << none << false << numberDown + title;
    QTest::newRow("the item itself") << QByteArray("NUMB") << 1 << 0 << none << true << number;
    QTest::newRow("unknown to the box") << QByteArray("NONE") << 1 << 0 << none << true << number;
    QTest::newRow("partner") << none << 0 << 9 << QByteArray("SHRT") << true << number + partner;
    QTest::newRow("partner, descending")
        << none << 0 << 9 << QByteArray("SHRT") << false << numberDown + partnerDown;
    QTest::newRow("partner before the second item")
        << QByteArray("TITL") << 0 << 9 << QByteArray("SHRT") << true << number + partner;
    QTest::newRow("unknown partner instead of the second item")
        << QByteArray("TITL") << 1 << 9 << QByteArray("NONE") << true << number;
    QTest::newRow("property of another kind")
        << QByteArray("TITL") << 1 << 8 << QByteArray("SHRT") << true << number + title;
    QTest::newRow("kind without a property")
        << QByteArray("TITL") << 1 << 9 << none << true << number + title;
}

void SortTest::secondKeys()
{
    QFETCH(QByteArray, secondItem);
    QFETCH(int, sameDirection);
    QFETCH(int, propertyKind);
    QFETCH(QByteArray, partner);
    QFETCH(bool, ascending);
    QFETCH(QByteArray, expected);
    KyPDataManagerSortKey order;
    order.addSortKey("NUMB", false, ascending);
    SortBox box(order);
    QVERIFY(box.showSubset(true));
    QVERIFY(box.manager->sort("SHRT", true));
    PioExtBoxInfo &info = *box.record().extBoxInfo;
    memcpy(info.secondSortItem, secondItem.leftJustified(4, '\0').constData(), 4);
    info.secondSortAscending = quint8(sameDirection);
    PioExtItem &number = info.items[box.item("NUMB") - 1];
    number.propertyKind = quint32(propertyKind);
    if (!partner.isEmpty())
        number.property = propertyWithPartner(partner.constData());
    box.manager->sort(true); // by the item and in the direction of the master
    QCOMPARE(box.storedOrder(box.currentRow().fileName), expected + endOfExpression());
}

void SortTest::secondKeyOrdersEqualCards()
{
    SortBox box;
    memcpy(box.record().extBoxInfo->secondSortItem, "NUMB", 4);
    box.record().extBoxInfo->secondSortAscending = 1;
    QVERIFY(box.manager->sort("LONG", true)); // equal for all but d
    QCOMPARE(box.titles(), "cbad");
    QCOMPARE(box.manager->sortItem(), int(box.item("LONG")));
    QCOMPARE(box.storedOrder(box.currentRow().fileName),
             sortKey("LONG", PlainAscending) + sortKey("NUMB", PlainAscending) + endOfExpression());
    const QByteArray name = box.currentRow().fileName;
    box.reopen(); // two keys are no longer a sort by an item
    QCOMPARE(int(box.rowNamed(name)->sortItem), 0);
    QCOMPARE(int(box.rowNamed(name)->sortExpLength), 13);
}

void SortTest::expressionMakesATemporaryIndex()
{
    SortBox box;
    const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("NUMB", PlainDescending);
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), false));
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.titles(), "dcba");
    QCOMPARE(box.manager->sortItem(), 0);
    const KyPDtm::PIOIDXINFO &row = box.currentRow();
    QCOMPARE(box.temporaries(), QStringList(row.fileName));
    QVERIFY(row.inUse && !row.sticky && row.ascending && !row.filtered && row.categoryId == 0);
    QCOMPARE(int(row.indexAge), 0);
    QCOMPARE(box.keptOrder(row), expression);
    QCOMPARE(box.storedOrder(row.fileName), expression);
    QCOMPARE(box.titlesIn(row.fileName), "abcd");
}

void SortTest::expressionInForceOnlySetsTheDirection()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    const KyPDtm::PIOIDXINFO *other = box.record().currentIndex;
    const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("SHRT", PlainAscending);
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    const View before = box.view();
    const int age = other->indexAge;
    const auto files = folderState();
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), false));
    QCOMPARE(&box.currentRow(), before.row);
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(box.titles(), "dcab");
    QCOMPARE(int(other->indexAge), age); // the current index did not change
    QCOMPARE(folderState(), files);
}

void SortTest::expressionGoesBackToAnExistingOrder()
{
    SortBox box;
    const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("SHRT", PlainAscending);
    const QByteArray longer = expression + sortKey("TITL", TextAscending);
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    const View before = box.view();
    QVERIFY(box.manager->sort(longer.constData(), int(longer.size()), true));
    QVERIFY(box.view() != before);
    const auto files = folderState();
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    QVERIFY(box.view() == before);
    QVERIFY(box.manager->sort(longer.constData(), int(longer.size()), false));
    QCOMPARE(box.titles(), "dcab");
    QCOMPARE(folderState(), files);
}

void SortTest::expressionIsToldFromAnItem()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    const QByteArray expression = box.keptOrder(box.currentRow());
    const View byItem = box.view();
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    QVERIFY(&box.currentRow() != byItem.row);
    QCOMPARE(box.manager->sortItem(), 0);
    QCOMPARE(box.titles(), byItem.titles);
    QVERIFY(box.manager->sort("NUMB", true));
    QVERIFY(box.view() == byItem);
}

void SortTest::impossibleExpressions_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<int>("length");
    const QByteArray keys = sortKey("NUMB", PlainAscending).repeated(9);
    QTest::newRow("null") << QByteArray() << 6;
    QTest::newRow("no key") << keys << 0;
    QTest::newRow("negative") << keys << -1;
    QTest::newRow("negative, low byte positive") << keys << INT_MIN + 6;
    QTest::newRow("51 bytes") << keys << 51;
    QTest::newRow("256 bytes more") << keys << 256 + 6;
    QTest::newRow("most") << keys << INT_MAX;
}

void SortTest::impossibleExpressions()
{
    QFETCH(QByteArray, expression);
    QFETCH(int, length);
    SortBox box;
    const auto refuses = [&] {
        const View before = box.view();
        const auto files = folderState();
        const bool result =
            box.manager->sort(expression.isNull() ? nullptr : expression.constData(), length, false);
        return !result && box.view() == before && folderState() == files;
    };
    QVERIFY(refuses());
    QVERIFY(box.showSubset(true));
    QVERIFY(refuses()); // nothing is inverted where nothing was tried
    memcpy(box.record().extBoxInfo->secondSortItem, "NUMB", 4);
    QVERIFY(refuses());
}

void SortTest::malformedExpressionLeavesNoFile()
{
    SortBox box;
    const View before = box.view();
    for (const QByteArray &expression :
         {QByteArray("NUM"), QByteArray("NUMB\xFE"), QByteArray("NUMB\xFE\x90"), QByteArray("NUMB\x80\xFE"),
          sortKey("NUMB", PlainAscending) + "T", sortKey("NUMB", PlainAscending).repeated(9).left(50)}) {
        QVERIFY(!box.manager->sort(expression.constData(), int(expression.size()), false));
        QVERIFY(box.view() == before);
        QVERIFY(box.temporaries().isEmpty());
    }
}

void SortTest::expressionsInTheNextManager_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<bool>("isAscending");
    QTest::addColumn<bool>("isKept");
    const QByteArray none;
    const QByteArray up = sortKey("NUMB", PlainAscending);
    const QByteArray down = sortKey("NUMB", PlainDescending);
    const QByteArray end = endOfExpression();
    // Without its terminator a single key is too short to be told from no order.
    QTest::newRow("one key") << up << none << true << false;
    QTest::newRow("one key, descending") << down << none << true << false;
    QTest::newRow("one key, terminated") << up + end << QByteArray("NUMB") << true << false;
    QTest::newRow("one key, descending, terminated") << down + end << QByteArray("NUMB") << false << false;
    QTest::newRow("two keys") << up + down << none << true << true;
    QTest::newRow("two keys, descending, terminated") << down + up + end << none << false << true;
    QTest::newRow("eight keys, terminated") << down.repeated(8) + end << none << false << true;
}

void SortTest::expressionsInTheNextManager()
{
    QFETCH(QByteArray, expression);
    QFETCH(QByteArray, item);
    QFETCH(bool, isAscending);
    QFETCH(bool, isKept);
    SortBox box;
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    const QByteArray name = box.currentRow().fileName;
    const QString titles = box.titles();
    box.reopen();
    const KyPDtm::PIOIDXINFO *row = box.rowNamed(name);
    QVERIFY(row && !row->sticky && row->isPlain());
    QCOMPARE(int(row->sortItem), item.isEmpty() ? 0 : int(box.item(item.constData())));
    QCOMPARE(row->ascending, isAscending);
    QCOMPARE(int(row->indexAge), 0);
    QCOMPARE(box.keptOrder(*row), isKept ? expression : QByteArray());
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    QCOMPARE(box.titles(), titles);
    QCOMPARE(QByteArray(box.currentRow().fileName) == name, isKept);
    QCOMPARE(box.temporaries().size(), isKept ? 1 : 2);
}

void SortTest::repeatedExpressionWithASecondKeyGoesByTheTable()
{
    SortBox box;
    memcpy(box.record().extBoxInfo->secondSortItem, "TITL", 4);
    QVERIFY(box.manager->sort("SHRT", true));
    const KyPDtm::PIOIDXINFO *other = box.record().currentIndex;
    const QByteArray expression = sortKey("LONG", PlainAscending);
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    QCOMPARE(box.keptOrder(box.currentRow()), expression);
    QCOMPARE(box.storedOrder(box.currentRow().fileName), expression);
    QCOMPARE(box.titles(), "bcad"); // equal cards in the order of their making
    const View before = box.view();
    const int age = other->indexAge;
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    QVERIFY(box.view() == before);
    QCOMPARE(int(other->indexAge), age + 1); // the row was made current again
}

void SortTest::expressionWithNoRoomForTheSecondKeyIsRefused()
{
    SortBox box;
    memcpy(box.record().extBoxInfo->secondSortItem, "TITL", 4);
    const QByteArray eight = sortKey("NUMB", PlainAscending).repeated(8);
    const View before = box.view();
    QVERIFY(!box.manager->sort(eight.constData(), int(eight.size()), false));
    QVERIFY(!box.manager->sort(eight.constData(), 45, false)); // 51 with the second key
    QVERIFY(box.view() == before);
    QVERIFY(box.temporaries().isEmpty());
    QVERIFY(box.manager->sort(eight.constData(), 7 * 6, false));
    QCOMPARE(box.titles(), "abdc");
}

void SortTest::expressionOnASubsetHasAnInvertedResult_data()
{
    sortOfASubsetKeepsItsCards_data();
}

void SortTest::expressionOnASubsetHasAnInvertedResult()
{
    QFETCH(bool, isCategory);
    SortBox box;
    QVERIFY(box.showSubset(isCategory));
    const View before = box.view();
    const QByteArray expression = sortKey("LONG", PlainAscending) + sortKey("SHRT", PlainDescending);
    QVERIFY(!box.manager->sort(expression.constData(), int(expression.size()), false));
    QCOMPARE(box.titles(), "bac");
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(&box.currentRow(), before.row);
    QCOMPARE(box.manager->sortItem(), 0);
    QVERIFY(box.currentRow().ascending);
    QCOMPARE(box.keptOrder(box.currentRow()), expression);
    QCOMPARE(box.storedOrder(before.index), expression);
    QCOMPARE(box.titlesIn(before.index), "cab");
    QVERIFY(box.temporaries().isEmpty());
    // The order in force is no new sort: true, and nothing is written.
    const auto files = folderState();
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    QCOMPARE(box.titles(), "cab");
    QCOMPARE(folderState(), files);
    // A failure is true, and the view stays.
    const View sorted = box.view();
    LogCapture log;
    QVERIFY(box.manager->sort("NUMB\xFE\x90", 6, false));
    QCOMPARE(log.lines(), QStringList("index infowrite error 1"));
    QVERIFY(box.view() == sorted);
    QCOMPARE(folderState(), files);
}

void SortTest::expressionOnASubsetTakesTheSecondKey_data()
{
    QTest::addColumn<bool>("isDescending");
    QTest::addColumn<int>("sameDirection");
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<char>("direction");
    QTest::newRow("same direction") << false << 1 << QByteArray() << PlainAscending;
    QTest::newRow("opposite") << false << 0 << QByteArray() << PlainDescending;
    QTest::newRow("same direction, descending view") << true << 1 << QByteArray() << PlainDescending;
    QTest::newRow("opposite, descending view") << true << 0 << QByteArray() << PlainAscending;
    QTest::newRow("in place of the terminator") << false << 1 << endOfExpression() << PlainAscending;
}

void SortTest::expressionOnASubsetTakesTheSecondKey()
{
    QFETCH(bool, isDescending);
    QFETCH(int, sameDirection);
    QFETCH(QByteArray, end);
    QFETCH(char, direction);
    SortBox box;
    QVERIFY(box.showSubset(true));
    QVERIFY(box.manager->sort("TITL", !isDescending));
    memcpy(box.record().extBoxInfo->secondSortItem, "SHRT", 4);
    box.record().extBoxInfo->secondSortAscending = quint8(sameDirection);
    const QByteArray given = sortKey("LONG", PlainAscending) + end; // equal for all three
    const QByteArray extended = sortKey("LONG", PlainAscending) + sortKey("SHRT", direction);
    // The direction that counts is that of the view before the call.
    QVERIFY(!box.manager->sort(given.constData(), int(given.size()), true));
    QCOMPARE(box.titles(), direction == PlainAscending ? "bac" : "cab");
    QCOMPARE(box.keptOrder(box.currentRow()), extended);
    QCOMPARE(box.storedOrder(box.currentRow().fileName), extended);
}

void SortTest::backToTheMaster()
{
    SortBox box;
    QVERIFY(box.manager->sort("NUMB", true));
    KyPDtm::PIOIDXINFO *byNumber = box.record().currentIndex;
    const auto files = folderState();
    box.manager->sort(false);
    QCOMPARE(&box.currentRow(), box.record().masterIndex);
    QCOMPARE(box.titles(), "dcba");
    QCOMPARE(int(byNumber->indexAge), 1);
    QCOMPARE(folderState(), files);
}

void SortTest::directionOfTheMaster()
{
    SortBox box;
    const auto files = folderState();
    box.manager->sort(false);
    QCOMPARE(box.titles(), "dcba");
    box.manager->sort(true);
    QCOMPARE(box.titles(), "abcd");
    QCOMPARE(&box.currentRow(), box.record().masterIndex);
    QCOMPARE(folderState(), files);
}

void SortTest::subsetTakesTheOrderOfTheMaster_data()
{
    QTest::addColumn<QByteArrayList>("codes");
    QTest::addColumn<bool>("isAscending");
    QTest::addColumn<QString>("titles");
    QTest::newRow("one item") << QByteArrayList{"SHRT"} << true << "bac";
    QTest::newRow("one item, descending") << QByteArrayList{"SHRT"} << false << "cab";
    QTest::newRow("two keys") << QByteArrayList{"LONG", "NUMB"} << true << "cba";
    QTest::newRow("no order") << QByteArrayList() << true << "bca"; // as the cards were made
}

void SortTest::subsetTakesTheOrderOfTheMaster()
{
    QFETCH(QByteArrayList, codes);
    QFETCH(bool, isAscending);
    QFETCH(QString, titles);
    KyPDataManagerSortKey order;
    for (const QByteArray &code : std::as_const(codes))
        order.addSortKey(code.constData(), false, isAscending);
    SortBox box(order);
    const QByteArray name = box.adoptCategory();
    QVERIFY(box.manager->setCurrentIndex(name.constData(), false));
    QVERIFY(box.manager->sort("TITL", true));
    QCOMPARE(box.titles(), "abc");
    box.manager->sort(false);
    QVERIFY(!box.manager->ascendent());
    QCOMPARE(QByteArray(box.currentRow().fileName), name);
    QCOMPARE(box.titlesIn(name), titles);
    const KyPDtm::PIOIDXINFO &master = *box.record().masterIndex;
    QCOMPARE(box.storedOrder(name), codes.isEmpty() ? QByteArray() : box.storedOrder(master.fileName));
    QCOMPARE(box.currentRow().sortItem, master.sortItem);
    QCOMPARE(box.currentRow().ascending, master.ascending);
    QCOMPARE(box.keptOrder(box.currentRow()), box.keptOrder(master));
    QVERIFY(box.temporaries().isEmpty());
}

void SortTest::categoryLeftInTheOrderOfTheMaster()
{
    SortBox box;
    QVERIFY(box.manager->enableFilter(5));
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.titles(), "cba");
    box.manager->sort(false);
    const QByteArray name = box.currentRow().fileName;
    QCOMPARE(box.titles(), "cba"); // by title, backwards
    QVERIFY(box.manager->disableFilter(false));
    QCOMPARE(&box.currentRow(), box.record().masterIndex);
    QCOMPARE(box.titles(), "dcba");
    QCOMPARE(box.titlesIn(name), "abc");
    QVERIFY(box.manager->enableFilter(5)); // found as it was left
    QCOMPARE(QByteArray(box.currentRow().fileName), name);
    QCOMPARE(box.titles(), "cba");
    QCOMPARE(box.temporaries(), QStringList(name));
}

void SortTest::firstSortKey()
{
    SortBox box;
    QCOMPARE(box.manager->current1stSortKey(), "TITL");
    QVERIFY(box.manager->sort("NUMB", true));
    QCOMPARE(box.manager->current1stSortKey(), "NUMB");
    const QByteArray expression = sortKey("SHRT", PlainAscending) + sortKey("TITL", TextAscending);
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    QCOMPARE(box.manager->current1stSortKey(), "SHRT");
    box.currentRow().sortExpLength = 5;
    QCOMPARE(box.manager->current1stSortKey(), "SHRT");
    box.currentRow().sortExpLength = 4; // no key
    QVERIFY(box.manager->current1stSortKey().isNull());
    box.currentRow().sortExpLength = 0;
    QVERIFY(box.manager->current1stSortKey().isNull());
}

void SortTest::dumpOfTheTable()
{
    SortBox box;
    const QByteArray search = box.adoptSearch();
    const QByteArray category = box.adoptCategory();
    const QByteArray unordered = box.adopt("N.IDX", QByteArray());
    const QByteArray expression = sortKey("SHRT", PlainDescending) + sortKey("TITL", TextAscending);
    const QByteArray backwards = box.adopt("D.IDX", expression);
    QVERIFY(box.manager->sort("NUMB", false));
    const QString name(box.currentRow().fileName);
    LogCapture log;
    box.manager->dumpIndexStatus();
    QCOMPARE(log.lines(), QStringList({"dumpIndexStatus: -----------------------------",
                                       "\tcurrentIdx " + name + " 0",
                                       "\t  sorted by NUMB ascendent",
                                       "\t\t" + QString(box.box.master().mid(3)),
                                       "\t\t  sticky  ",
                                       "\t\t  sorted by TITL ascendent",
                                       "\t\t" + QString(category),
                                       "\t\t  sticky category ",
                                       "\t\t  sorted by TITL ascendent",
                                       "\t\t" + QString(backwards),
                                       "\t\t  sticky  ",
                                       "\t\t  sorted by special disascendent",
                                       "\t\t" + QString(unordered),
                                       "\t\t  sticky  ",
                                       "\t\t  sorted by none ascendent",
                                       "\t\t" + QString(search),
                                       "\t\t  sticky  filter",
                                       "\t\t  sorted by TITL ascendent",
                                       "\t\t" + name,
                                       "\t\t  temporary  ",
                                       "\t\t  sorted by NUMB ascendent"}));
    log.clear();
    QVERIFY(box.manager->sort(expression.constData(), int(expression.size()), true));
    box.manager->dumpIndexStatus();
    QCOMPARE(log.lines().mid(1, 2), QStringList({"\tcurrentIdx " + QString(backwards) + " 1",
                                                 "\t  sorted by special disascendent"}));
}

QTEST_MAIN(SortTest)
#include "sorttest.moc"
