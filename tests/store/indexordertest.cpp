#include "indexorder.h"
#include "recordbuilder.h"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <map>

using namespace pdtm;

/** The order in memory, with ids over the whole range. */
class IndexOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void agreesWithASortedList();
    void manyInOnePlace();
    void keysThatBeginAlike();
    void manyAreRemovedInOnePass();
    void keysOfAStoredOrder();
    void refusesImpossibleCards_data();
    void refusesImpossibleCards();
    void deadKeysAreGivenBack();
    void everyOrdinaryCardFits();
};

namespace {

struct Entry
{
    std::string key;
    uint8_t attribute = 0;
};

using Model = std::map<CardId, Entry>;

std::vector<CardId> sortedCards(const Model &model)
{
    std::vector<CardId> cards;
    for (const auto &entry : model) {
        cards.push_back(entry.first);
    }
    std::stable_sort(cards.begin(), cards.end(),
                     [&](CardId left, CardId right) { return model.at(left).key < model.at(right).key; });
    return cards;
}

void compare(const IndexOrder &order, const Model &model)
{
    const std::vector<CardId> cards = sortedCards(model);
    QVERIFY(order.cards() == cards);
    const std::vector<uint16_t> numbers = order.numbers();
    QCOMPARE(size_t(std::count(numbers.begin(), numbers.end(), 0)), numbers.size() - cards.size());
    QCOMPARE(size_t(order.count()), cards.size());
    uint16_t number = 0;
    uint16_t visible = 0;
    for (const CardId card : cards) {
        ++number;
        QCOMPARE(numbers[card], number);
        QCOMPARE(order.numberOf(card), number);
        QCOMPARE(order.cardAt(number), card);
        QCOMPARE(order.attributeOf(card), model.at(card).attribute);
        QVERIFY(order.keyOf(card) == model.at(card).key);
        const bool isVisible = (model.at(card).attribute & 0x40) == 0;
        visible = static_cast<uint16_t>(visible + (isVisible ? 1 : 0));
        QCOMPARE(order.ordinalOf(number, {0x40, 0}), isVisible ? visible : uint16_t(0));
    }
    QCOMPARE(order.visibleBehind(0, {0x40, 0}), visible);
}

} // namespace

void IndexOrderTest::agreesWithASortedList()
{
    QRandomGenerator random(7);
    IndexOrder order;
    Model model;
    for (int round = 0; round < 3000; ++round) {
        const auto card = static_cast<CardId>(1 + random.bounded(3U) * 30000U + random.bounded(400U));
        if (model.contains(card) && random.bounded(3) == 0) {
            order.remove(card);
            model.erase(card);
        } else if (model.contains(card)) {
            model[card].attribute = static_cast<uint8_t>(random.bounded(256));
            order.setAttribute(card, model[card].attribute);
        } else {
            Entry entry{QByteArray::number(random.bounded(50)).toStdString(),
                        static_cast<uint8_t>(random.bounded(2) * 0x40)};
            const uint16_t number = order.insert(card, entry.attribute, entry.key);
            model[card] = entry;
            QCOMPARE(order.cardAt(number), card);
        }
        if (round % 50 == 0) {
            compare(order, model);
        }
    }
    compare(order, model);
}

/** Blocks fill up and become empty. */
void IndexOrderTest::manyInOnePlace()
{
    constexpr CardId Stored = 2000, Added = 2000;
    IndexOrder order;
    Model model;
    const auto insert = [&](CardId card, const std::string &key) {
        model[card] = {key, static_cast<uint8_t>(card % 2 * 0x40)};
        QCOMPARE(order.cardAt(order.insert(card, model[card].attribute, key)), card);
    };
    for (CardId card = 1; card <= Stored; ++card) {
        insert(card, "the same eight bytes, then " + std::to_string(10000 + card));
    }
    for (CardId card = Stored + Added; card > Stored; --card) {
        insert(card, "the same eight bytes, then 11000");
    }
    compare(order, model);
    std::vector<CardId> cards = order.cards();
    std::rotate(cards.begin(), cards.begin() + 1000, cards.end()); // those of one place first
    for (size_t i = 0; i < cards.size(); ++i) {
        order.remove(cards[i]);
        model.erase(cards[i]);
        if (i % 500 == 250) {
            compare(order, model);
        }
    }
    QCOMPARE(order.count(), uint16_t(0));
    QCOMPARE(order.next(0, {}), uint16_t(0));
    QCOMPARE(order.previous(0xFFFF, {}), uint16_t(0));
    insert(7, "again");
    compare(order, model);
}

/** Keys that are equal, or one the beginning of the other, for some more or fewer bytes than stand beside the
 * ids; with zeros at the end, which aren't the same as no bytes. */
void IndexOrderTest::keysThatBeginAlike()
{
    constexpr CardId Cards = 3000;
    QRandomGenerator random(11);
    IndexOrder order;
    Model model;
    for (CardId card = 1; card <= Cards; ++card) {
        std::string key(static_cast<size_t>(random.bounded(6, 28)), 'x');
        for (int length = random.bounded(8); length > 0; --length) {
            key += static_cast<char>(random.bounded(2));
        }
        model[card] = {key, 0};
        QCOMPARE(order.cardAt(order.insert(card, 0, key)), card);
    }
    compare(order, model);
    for (CardId card = 1; card <= Cards; card = static_cast<CardId>(card + 2)) { // firsts of blocks, too
        order.remove(card);
        order.insert(card, 0, model[card].key);
    }
    compare(order, model);
}

void IndexOrderTest::manyAreRemovedInOnePass()
{
    IndexOrder order;
    Model model;
    std::vector<CardId> doomed;
    for (CardId card = 1; card <= 9000; ++card) {
        model[card] = {std::to_string(card % 100), static_cast<uint8_t>(card % 2)};
        order.insert(card, model[card].attribute, model[card].key);
        if (card % 3 == 0) {
            doomed.push_back(card);
        }
    }
    doomed.push_back(50000); // never was there
    order.removeAll(doomed);
    for (const CardId card : doomed) {
        model.erase(card);
        QVERIFY(!order.contains(card));
    }
    compare(order, model);
    order.insert(3, 0, "50");
    model[3] = {"50", 0};
    compare(order, model);
}

void IndexOrderTest::keysOfAStoredOrder()
{
    IndexOrder order;
    const uint8_t attributes[] = {1, 2, 3};
    QVERIFY(order.assign({30, 10, 20}, attributes));
    QVERIFY(!order.hasKeys());
    order.remove(10);
    const CardId cards[] = {30, 10, 20};
    const uint32_t ends[] = {1, 3, 6};
    QVERIFY(order.setKeys(cards, ends, "abbccc"));
    QVERIFY(order.keyOf(30) == "a");
    QVERIFY(order.keyOf(20) == "ccc");
    QCOMPARE(order.insert(10, 0, "bb"), uint16_t(2));
    const CardId fewer[] = {30};
    QVERIFY(!order.setKeys(fewer, std::span(ends, 1), "a"));
}

void IndexOrderTest::refusesImpossibleCards_data()
{
    QTest::addColumn<int>("card");
    QTest::newRow("no card") << 0;
    QTest::newRow("work card") << 0xFF00;
    QTest::newRow("last id") << 0xFFFF;
    QTest::newRow("twice") << 5;
}

void IndexOrderTest::refusesImpossibleCards()
{
    QFETCH(int, card);
    IndexOrder order;
    const uint8_t attributes[] = {0, 0};
    QVERIFY(!order.assign({5, static_cast<CardId>(card)}, attributes));
    QCOMPARE(order.count(), uint16_t(0));
    QVERIFY(order.assign({5, 6}, attributes));
}

void IndexOrderTest::deadKeysAreGivenBack()
{
    IndexOrder order;
    Model model;
    for (CardId card = 1; card <= 20; ++card) {
        model[card] = {std::string(500, static_cast<char>('a' + card)), 0};
        order.insert(card, 0, model[card].key);
    }
    for (int round = 0; round < 2000; ++round) {
        const auto card = static_cast<CardId>(1 + round % 20);
        order.remove(card);
        model[card].key = std::string(500, static_cast<char>('a' + round % 23));
        order.insert(card, 0, model[card].key);
    }
    compare(order, model);
    QVERIFY(order.keyBytes() < 40 * 500);
}

void IndexOrderTest::everyOrdinaryCardFits()
{
    std::vector<CardId> cards;
    for (uint32_t card = PdtmLastOrdinaryCard; card > 0; --card) {
        cards.push_back(static_cast<CardId>(card));
    }
    IndexOrder order;
    QVERIFY(order.assign(cards, std::vector<uint8_t>(cards.size())));
    QCOMPARE(order.count(), uint16_t(PdtmLastOrdinaryCard));
    QCOMPARE(order.previous(0xFFFF, {}), uint16_t(PdtmLastOrdinaryCard));
    QCOMPARE(order.next(PdtmLastOrdinaryCard - 1, {}), uint16_t(PdtmLastOrdinaryCard));
    QCOMPARE(order.next(PdtmLastOrdinaryCard, {}), uint16_t(0));
    QCOMPARE(order.next(0xFFFF, {}), uint16_t(0));
    QCOMPARE(order.nthBehind(0, PdtmLastOrdinaryCard, {}), uint16_t(PdtmLastOrdinaryCard));
    QCOMPARE(order.nthBefore(0xFFFF, PdtmLastOrdinaryCard, {}), uint16_t(1));
    for (const CardId card : {CardId(1), CardId(30000), CardId(PdtmLastOrdinaryCard)}) {
        const uint16_t number = order.numberOf(card);
        QCOMPARE(number, uint16_t(PdtmLastOrdinaryCard + 1 - card));
        QCOMPARE(order.cardAt(number), card);
        order.remove(card);
    }
    order.setEmptyKeys();
    order.insert(30000, 0, "z");
    QCOMPARE(order.count(), uint16_t(PdtmLastOrdinaryCard - 2));
    QCOMPARE(order.numberOf(30000), order.count());
}

QTEST_GUILESS_MAIN(IndexOrderTest)
#include "indexordertest.moc"
