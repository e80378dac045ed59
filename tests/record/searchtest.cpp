#include "kypdatabase.h"
#include "logcapture.h"
#include "viewfixture.h"

namespace {

constexpr unsigned char Contains = 0x92;

/** What the last search gave to the store. */
struct SearchCall
{
    QByteArray expression; ///< with the byte behind it
    int backward = -1;
    int start = -1;
    int third = -1;
};
SearchCall lastCall;
qsizetype expressionLength = 0; ///< bytes to keep of it
PdtmStatus searchStatus = PdtmOk;
PdtmStatus countStatus = PdtmOk;
PdtmStatus cardStatus = PdtmOk;

} // namespace

PdtmStatus _IndexSearch(const char *path, uint32_t handle, const void *expression, int backward, uint8_t mask,
                        uint8_t value, uint8_t third, uint16_t start, uint16_t *indexNumber)
{
    static const auto next = nextDefinition<decltype(_IndexSearch)>("_IndexSearch");
    lastCall = {QByteArray(static_cast<const char *>(expression), expressionLength), backward, start, third};
    return searchStatus != PdtmOk
               ? searchStatus
               : next(path, handle, expression, backward, mask, value, third, start, indexNumber);
}

PdtmStatus _IndexCount(const char *path, uint32_t handle, const void *expression, int flag, uint8_t mask,
                       uint8_t value, uint8_t third, uint16_t start, uint16_t *first, uint16_t *count)
{
    static const auto next = nextDefinition<decltype(_IndexCount)>("_IndexCount");
    const PdtmStatus status = next(path, handle, expression, flag, mask, value, third, start, first, count);
    return countStatus != PdtmOk ? countStatus : status;
}

PdtmStatus _IndexNoToCardID(const char *path, uint16_t indexNumber, uint16_t *card)
{
    static const auto next = nextDefinition<decltype(_IndexNoToCardID)>("_IndexNoToCardID");
    return cardStatus != PdtmOk ? cardStatus : next(path, indexNumber, card);
}

class SearchTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void directions_data();
    void directions();
    void forwardInADescendingViewWalksBackward();
    void backwardInADescendingViewWalksForward();
    void startsBehindTheCard();
    void startCardNotInTheIndex();
    void startCardWithHighBits();
    void changesNeitherViewNorCurrentCard();
    void markedCards();
    void namedIndex();
    void namedIndexIsSearchedInTheDirectionOfTheView();
    void searchesTheViewOnly();
    void failureOfTheStoreKeepsTheCard();
    void failureToTellTheCardKeepsIt();
    void malformedExpression();
    void closedBox();
    void managerWithNoBox();

    void textExpression_data();
    void textExpression();
    void defaultSearchItem();
    void noDefaultItemSearchesAnyText();
    void japaneseText();
    void longText();
    void textWithTerminatorIsCut();
    void operatorOfTheCaller();

    void counting();
    void countingBehindACard();
    void countingNothing();
    void countingMarkedCards();
    void countingInANamedIndex();
    void countingThatFails();

    void fields();
    void unknownField();
};

void SearchTest::init()
{
    expressionLength = 0;
    searchStatus = countStatus = cardStatus = PdtmOk;
    deleteTemporaryFiles();
}

/** All matches, from the end of the view on. */
static QString found(View &view, const QByteArray &expression, bool forward, const char *index = nullptr)
{
    QString titles;
    unsigned long card = 0;
    while (view.manager.search(&card, expression.constData(), forward, index))
        titles += view.manager.readItem("TITL", card);
    return titles;
}

void SearchTest::directions_data()
{
    QTest::addColumn<bool>("ascendent");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<QString>("titles");
    QTest::newRow("ascending, forward") << true << true << QStringLiteral("abcd");
    QTest::newRow("ascending, backward") << true << false << QStringLiteral("dcba");
    QTest::newRow("descending, forward") << false << true << QStringLiteral("dcba");
    QTest::newRow("descending, backward") << false << false << QStringLiteral("abcd");
}

void SearchTest::directions()
{
    QFETCH(bool, ascendent);
    QFETCH(bool, forward);
    QFETCH(QString, titles);
    View view;
    view.addSix();
    view.table().ascendent = ascendent;
    QCOMPARE(found(view, atLeast("NUMB", 3), forward), titles);
}

void SearchTest::forwardInADescendingViewWalksBackward()
{
    View view;
    view.addSix();
    view.table().ascendent = false;
    unsigned long card = 0;
    QVERIFY(view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, view.cardOf("f"));
    QCOMPARE(lastCall.backward, 1);
    QCOMPARE(lastCall.start, 0xFFFF);
    QCOMPARE(lastCall.third, 0);
}

void SearchTest::backwardInADescendingViewWalksForward()
{
    View view;
    view.addSix();
    view.table().ascendent = false;
    unsigned long card = 0;
    QVERIFY(view.manager.search(&card, atLeast("NUMB", 1).constData(), false));
    QCOMPARE(card, view.cardOf("a"));
    QCOMPARE(lastCall.backward, 0);
    QCOMPARE(lastCall.start, 0);
}

void SearchTest::startsBehindTheCard()
{
    View view;
    view.addSix();
    unsigned long card = view.cardOf("b");
    QVERIFY(view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, view.cardOf("c"));
    QVERIFY(view.manager.search(&card, atLeast("NUMB", 5).constData(), false));
    QCOMPARE(card, view.cardOf("b"));
    card = view.cardOf("b");
    QVERIFY(!view.manager.search(&card, atLeast("NUMB", 5).constData(), true));
    QCOMPARE(card, view.cardOf("b"));
}

void SearchTest::startCardNotInTheIndex()
{
    View view;
    view.addSix();
    unsigned long card = 77;
    QVERIFY(!view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, 77UL);
    QCOMPARE(int(view.table().lastError), int(PdtmNoSuchCard));
    QVERIFY(view.manager.enableFilter(9));
    card = view.cardOf("a"); // in the box, and not in the view
    QVERIFY(!view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, view.cardOf("a"));
}

void SearchTest::startCardWithHighBits()
{
    View view;
    view.addSix();
    unsigned long card = view.cardOf("a") | 0x70000;
    QVERIFY(view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, view.cardOf("b")); // an id and nothing else
}

void SearchTest::changesNeitherViewNorCurrentCard()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.first());
    const KyPDtm::PIOIDXINFO *current = view.table().currentIndex;
    unsigned long card = 0;
    int cards = 0;
    QVERIFY(view.manager.search(&card, atLeast("NUMB", 1).constData(), false));
    QVERIFY(view.manager.count(&cards, atLeast("NUMB", 1).constData(), 0));
    QCOMPARE(view.manager.cardId(), view.cardOf("a"));
    QCOMPARE(view.table().currentIndex, current);
    QVERIFY(view.manager.ascendent());
}

void SearchTest::markedCards()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.writeAttribute(view.cardOf("b"), 0x40, true));
    QVERIFY(view.manager.writeAttribute(view.cardOf("c"), 0x80, true)); // another bit
    const QByteArray all = atLeast("NUMB", 1);
    QCOMPARE(found(view, all, true), QStringLiteral("acdef"));
    unsigned long card = 0;
    QVERIFY(view.manager.search(&card, all.constData(), true, 0x40, 0x40, 0));
    QCOMPARE(view.manager.readItem("TITL", card), QStringLiteral("b"));
    QVERIFY(!view.manager.search(&card, all.constData(), true, 0x40, 0x40, 0));
    card = view.cardOf("a");
    QVERIFY(view.manager.search(&card, all.constData(), true, 0, 0, 0));
    QCOMPARE(view.manager.readItem("TITL", card), QStringLiteral("b"));
}

void SearchTest::namedIndex()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    const QByteArray all = atLeast("NUMB", 1);
    QCOMPARE(found(view, all, true), QStringLiteral("cde"));
    QCOMPARE(found(view, all, true, view.box.master().constData()), QStringLiteral("abcdef"));
    unsigned long card = 0;
    QVERIFY(!view.manager.search(&card, all.constData(), true, "F0:NONE.IDX"));
    QCOMPARE(int(view.table().lastError), int(PdtmMissing));
}

void SearchTest::namedIndexIsSearchedInTheDirectionOfTheView()
{
    View view;
    view.addSix();
    view.table().ascendent = false;
    QCOMPARE(found(view, atLeast("NUMB", 1), true, view.box.master().constData()), QStringLiteral("fedcba"));
}

void SearchTest::searchesTheViewOnly()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(5));
    QCOMPARE(found(view, atLeast("NUMB", 1), true), QStringLiteral("abcd"));
    QCOMPARE(found(view, containsText("TITL", "e"), true), QString());
}

void SearchTest::failureOfTheStoreKeepsTheCard()
{
    View view;
    view.addSix();
    searchStatus = PdtmIoError;
    unsigned long card = view.cardOf("b") | 0x70000;
    const unsigned long before = card;
    QVERIFY(!view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, before);
    QCOMPARE(int(view.table().lastError), int(PdtmIoError));
}

void SearchTest::failureToTellTheCardKeepsIt()
{
    View view;
    view.addSix();
    unsigned long card = view.cardOf("b");
    const unsigned long before = card;
    cardStatus = PdtmNone;
    QVERIFY(!view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, before);
}

void SearchTest::malformedExpression()
{
    View view;
    view.addSix();
    unsigned long card = 0;
    QVERIFY(!view.manager.search(&card, "NUMB", true));
    QVERIFY(!view.manager.search(&card, "NUMB\xFE\x98\x7F\x01\x01\x01\x01\x01\x01", true));
    QCOMPARE(card, 0UL);
    int cards = 5;
    QVERIFY(!view.manager.count(&cards, "NUMB", 0));
    QCOMPARE(cards, 0);
}

void SearchTest::closedBox()
{
    View view;
    view.addSix();
    const unsigned long before = view.cardOf("a");
    QVERIFY(view.manager.close());
    unsigned long card = before;
    int cards = 5;
    QVERIFY(!view.manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QCOMPARE(card, before);
    QVERIFY(!view.manager.count(&cards, atLeast("NUMB", 1).constData(), 0));
    QCOMPARE(cards, 0);
}

void SearchTest::managerWithNoBox()
{
    KyPDataManager manager("F0:NONE.BOX", nullptr, true);
    unsigned long card = 0;
    int cards = 5;
    QVERIFY(!manager.search(&card, atLeast("NUMB", 1).constData(), true));
    QVERIFY(!manager.search(&card, QStringLiteral("a"), nullptr, Contains, true));
    QVERIFY(!manager.count(&cards, atLeast("NUMB", 1).constData(), 0));
    QCOMPARE(cards, 0);
    QVERIFY(!manager.isFiltered());
}

void SearchTest::textExpression_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QByteArray>("code");
    QTest::newRow("named") << QByteArray("TITL") << QByteArray("TITL");
    QTest::newRow("longer than a code") << QByteArray("TITLE") << QByteArray("TITL");
    QTest::newRow("shorter than a code") << QByteArray("AB") << QByteArray("AB\0\0", 4);
    QTest::newRow("empty") << QByteArray("") << QByteArray("    ");
    QTest::newRow("null") << QByteArray() << QByteArray("    ");
}

void SearchTest::textExpression()
{
    QFETCH(QByteArray, item);
    QFETCH(QByteArray, code);
    View view;
    const QByteArray expected = code + "\xFE\x92\x11" + "caf\xC3\xA9" + QByteArray(2, '\0');
    expressionLength = expected.size();
    unsigned long card = 0;
    QVERIFY(!view.manager.search(&card, QString::fromUtf8("caf\xC3\xA9"),
                                 item.isNull() ? nullptr : item.constData(), Contains, true));
    QCOMPARE(lastCall.expression, expected);
}

void SearchTest::defaultSearchItem()
{
    View view;
    view.addSix();
    memcpy(view.table().extBoxInfo->defaultSearchItem, "TITL", 4);
    expressionLength = 4;
    unsigned long card = 0;
    QVERIFY(view.manager.search(&card, QStringLiteral("C"), nullptr, Contains, true));
    QCOMPARE(lastCall.expression, QByteArray("TITL"));
    QCOMPARE(card, view.cardOf("c"));
    QVERIFY(!view.manager.search(&card, QStringLiteral("C"), "SJIS", Contains, false));
    QCOMPARE(lastCall.expression, QByteArray("SJIS"));
}

void SearchTest::noDefaultItemSearchesAnyText()
{
    View view;
    view.addSix();
    unsigned long edited = view.cardOf("d");
    QVERIFY(view.manager.startEditCard(edited));
    QVERIFY(view.manager.writeItem("SJIS", QStringLiteral("elsewhere")));
    QVERIFY(view.manager.finishEditCard(&edited));
    unsigned long card = 0;
    QVERIFY(view.manager.search(&card, QStringLiteral("e"), nullptr, Contains, true));
    QCOMPARE(card, edited);
    QVERIFY(view.manager.search(&card, QStringLiteral("e"), nullptr, Contains, true));
    QCOMPARE(card, view.cardOf("e"));
    QVERIFY(!view.manager.search(&card, QStringLiteral("e"), nullptr, Contains, true));
}

void SearchTest::japaneseText()
{
    View view;
    view.addSix();
    const QString town = QString::fromUtf8("\xE5\xA5\x88\xE8\x89\xAF\xE5\xB8\x82");
    const unsigned long card = view.add(town, 9, "");
    unsigned long match = 0;
    QVERIFY(view.manager.search(&match, town.mid(1), "TITL", Contains, true));
    QCOMPARE(match, card);
    match = 0;
    QVERIFY(!view.manager.search(&match, town.mid(1), "SJIS", Contains, true));
}

void SearchTest::longText()
{
    View view;
    view.addSix();
    const QString text(20000, QChar('x'));
    const unsigned long card = view.add(text, 9, "");
    unsigned long match = 0;
    QVERIFY(view.manager.search(&match, text, "TITL", Contains, true));
    QCOMPARE(match, card);
    match = 0;
    QVERIFY(!view.manager.search(&match, text + 'y', "TITL", Contains, true));
}

void SearchTest::textWithTerminatorIsCut()
{
    View view;
    view.addSix();
    unsigned long card = 0;
    QVERIFY(view.manager.search(&card, QStringLiteral("c") + QChar(0) + "zzz", "TITL", Contains, true));
    QCOMPARE(card, view.cardOf("c"));
}

void SearchTest::operatorOfTheCaller()
{
    View view;
    view.addSix();
    view.add(QStringLiteral("bc"), 9, "");
    expressionLength = 6;
    unsigned long card = 0;
    QVERIFY(view.manager.search(&card, QStringLiteral("c"), "TITL", 0x90, true)); // equal
    QCOMPARE(card, view.cardOf("c"));
    QVERIFY(!view.manager.search(&card, QStringLiteral("c"), "TITL", 0x77, true));
    QCOMPARE(lastCall.expression, QByteArray("TITL\xFE\x77"));
    QVERIFY(!view.manager.search(&card, QStringLiteral("c"), "TITL", 0x95, true)); // needs another behind it
    QCOMPARE(card, view.cardOf("c"));
}

void SearchTest::counting()
{
    View view;
    view.addSix();
    int cards = 0;
    QVERIFY(view.manager.count(&cards, atLeast("NUMB", 3).constData(), 0));
    QCOMPARE(cards, 4);
    QVERIFY(view.manager.count(&cards, "", 0));
    QCOMPARE(cards, 6);
    view.table().ascendent = false; // has no effect
    QVERIFY(view.manager.count(&cards, atLeast("NUMB", 3).constData(), 0));
    QCOMPARE(cards, 4);
    QVERIFY(view.manager.enableFilter(9));
    QVERIFY(view.manager.count(&cards, atLeast("NUMB", 3).constData(), 0));
    QCOMPARE(cards, 2);
}

void SearchTest::countingBehindACard()
{
    View view;
    view.addSix();
    int cards = 0;
    QVERIFY(view.manager.count(&cards, atLeast("NUMB", 3).constData(), view.cardOf("b")));
    QCOMPARE(cards, 2);
    QVERIFY(!view.manager.count(&cards, atLeast("NUMB", 3).constData(), 77));
    QCOMPARE(cards, 0);
    QCOMPARE(int(view.table().lastError), int(PdtmNoSuchCard));
}

void SearchTest::countingNothing()
{
    View view;
    view.addSix();
    int cards = 5;
    QVERIFY(!view.manager.count(&cards, atLeast("NUMB", 100).constData(), 0));
    QCOMPARE(cards, 0);
    QCOMPARE(int(view.table().lastError), int(PdtmNone));
}

void SearchTest::countingMarkedCards()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.writeAttribute(view.cardOf("b"), 0x40, true));
    const QByteArray all = atLeast("NUMB", 1);
    int cards = 0;
    QVERIFY(view.manager.count(&cards, all.constData(), 0));
    QCOMPARE(cards, 5);
    QVERIFY(view.manager.count(&cards, all.constData(), 0, 0x40, 0x40, 0));
    QCOMPARE(cards, 1);
    QVERIFY(view.manager.count(&cards, all.constData(), 0, 0, 0, 0));
    QCOMPARE(cards, 6);
}

void SearchTest::countingInANamedIndex()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.enableFilter(9));
    int cards = 0;
    QVERIFY(view.manager.count(&cards, atLeast("NUMB", 3).constData(), 0, view.box.master().constData()));
    QCOMPARE(cards, 4);
    QVERIFY(!view.manager.count(&cards, atLeast("NUMB", 3).constData(), 0, "F0:NONE.IDX"));
    QCOMPARE(cards, 0);
}

void SearchTest::countingThatFails()
{
    View view;
    view.addSix();
    countStatus = PdtmIoError;
    int cards = 5;
    QVERIFY(!view.manager.count(&cards, atLeast("NUMB", 1).constData(), 0));
    QCOMPARE(cards, 0); // though the store has written one
    QCOMPARE(int(view.table().lastError), int(PdtmIoError));
}

/** Two fields: 1 the title, 2 the number. */
static KyPDataBaseItemInfo twoFields()
{
    KyPDataBaseItemInfo fields;
    fields.addItemInfo(1, "TITL", KyPDataBaseItemInfo::Text, QString(), true);
    fields.addItemInfo(2, "NUMB", KyPDataBaseItemInfo::UnsignedChar, QString(), true);
    return fields;
}

void SearchTest::fields()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.close());
    KyPDataBase base(view.box.path().constData(), twoFields(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(base.searchField(&card, QStringLiteral("C"), 1, Contains, true));
    QCOMPARE(base.readField(1, card), QStringLiteral("c"));
    QVERIFY(!base.searchField(&card, QStringLiteral("C"), 2, Contains, false)); // no text
    QVERIFY(base.sortField(2, true));
    QCOMPARE(base.readField(1, base.firstCard()), QStringLiteral("f"));
    QVERIFY(base.sortField(2, false));
    QCOMPARE(base.readField(1, base.firstCard()), QStringLiteral("a"));
}

void SearchTest::unknownField()
{
    View view;
    view.addSix();
    QVERIFY(view.manager.close());
    KyPDataBase base(view.box.path().constData(), twoFields(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(!base.searchField(&card, QStringLiteral("c"), 7, Contains, true));
    QCOMPARE(card, 0UL);
    QVERIFY(!base.sortField(7, true));
}

QTEST_MAIN(SearchTest)
#include "searchtest.moc"
