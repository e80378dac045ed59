#include "indexfixture.h"

#include <QRandomGenerator>

#include <algorithm>
#include <map>

using namespace expression;

namespace {

/** A card as the test knows it. */
struct Person
{
    QByteArray name;
    QByteArray town;
    uint16_t number = 0;
    QByteArray categories;
    uint8_t attribute = 0;
};

using Belongs = bool (*)(const Person &);
using ComesBefore = int (*)(const Person &, const Person &);

int compareBytes(const QByteArray &left, const QByteArray &right)
{
    return left.isEmpty() || right.isEmpty() ? int(!left.isEmpty()) - int(!right.isEmpty())
                                             : QByteArrayView(left).compare(right);
}

bool everybody(const Person &)
{
    return true;
}
bool inCategoryOne(const Person &person)
{
    return person.categories.contains('\1');
}
bool unfiled(const Person &person)
{
    return person.categories.isEmpty();
}
bool inCategoryOneFromKyoto(const Person &person)
{
    return inCategoryOne(person) && person.town == "Kyoto";
}
int byName(const Person &left, const Person &right)
{
    return compareBytes(left.name, right.name);
}
int byNumberDown(const Person &left, const Person &right)
{
    return int(right.number) - int(left.number);
}
int byTownThenNumber(const Person &left, const Person &right)
{
    const int order = compareBytes(left.town, right.town);
    return order != 0 ? order : -byNumberDown(left, right);
}
int byId(const Person &, const Person &)
{
    return 0;
}

struct Expected
{
    const char *name;
    Belongs belongs;
    ComesBefore compare;
};

constexpr Expected Indexes[] = {
    {"KYTEST.IDX", everybody, byName}, {"NUMBER.IDX", everybody, byNumberDown},
    {"IDS.IDX", everybody, byId},      {"ONE.IDX", inCategoryOne, byTownThenNumber},
    {"UNFILED.IDX", unfiled, byName},  {"ppinKYT0.tdx", inCategoryOneFromKyoto, byNumberDown},
};

} // namespace

/** Indexes stay equal to a naive sort whatever happens to the cards. */
class IndexModelTest : public QObject
{
    Q_OBJECT

private slots:
    void anySequenceAgreesWithASort_data();
    void anySequenceAgreesWithASort();

private:
    void makeIndexes(const TestBox &box);
    void change(TestBox &box);
    void changeCategory(TestBox &box, uint16_t card, Person &person);
    void compareAll(const TestBox &box);
    uint16_t anyCard();
    Person anyPerson();
    quint32 below(quint32 limit) { return m_random.bounded(limit); }

    std::map<uint16_t, Person> m_people;
    QRandomGenerator m_random;
};

void IndexModelTest::makeIndexes(const TestBox &box)
{
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    box.sorted("NUMBER.IDX", sortBy("NUMB", Descending));
    box.sorted("IDS.IDX", {});
    const QByteArray one = box.grouped("ONE.IDX", master, category(1),
                                       sortKey("TOWN", Ascending) + sortKey("NUMB", Ascending) + '\0');
    box.grouped("UNFILED.IDX", master, category(PdtmUnfiledCategory));
    box.grouped("ppinKYT0.tdx", one, text("TOWN", Equal, "Kyoto"), sortBy("NUMB", Descending));
}

Person IndexModelTest::anyPerson()
{
    static const QByteArray Categories[] = {"", "\1", "\2", "\1\2", "\3\1"};
    Person person;
    for (quint32 i = below(4); i > 0; --i) {
        person.name += static_cast<char>('a' + below(3));
    }
    person.town = below(2) == 0 ? "Kyoto" : "Nara";
    person.number = static_cast<uint16_t>(below(5));
    person.categories = Categories[below(5)];
    return person;
}

uint16_t IndexModelTest::anyCard()
{
    auto card = m_people.begin();
    std::advance(card, below(static_cast<quint32>(m_people.size())));
    return card->first;
}

/** Categories changed directly touch no index: the caller keeps those it knows of. */
void IndexModelTest::changeCategory(TestBox &box, uint16_t card, Person &person)
{
    const CardItemKey key = TestBox::keyOf(card, "CTGR");
    const bool adds = !inCategoryOne(person);
    if (adds) {
        QCOMPARE(_CardCategoryAppend(box.handle(), &key, 1), PdtmStatus(PdtmOk));
        person.categories += '\1';
    } else {
        QCOMPARE(_CardCategoryDelete(box.handle(), &key, 1), PdtmStatus(PdtmOk));
        person.categories.replace("\1", "");
    }
    for (const Expected &expected : Indexes) {
        const QByteArray index = box.at(expected.name);
        uint16_t number = 0;
        const bool isIn = _CardIDToIndexNo(index, card, &number) == PdtmOk;
        if (isIn && !expected.belongs(person)) {
            QCOMPARE(_IndexNoDelete(index, number), PdtmStatus(PdtmOk));
        } else if (!isIn && expected.belongs(person)) {
            QCOMPARE(_IndexNoAppend(index, box.handle(), card, &number), PdtmStatus(PdtmOk));
        }
    }
}

void IndexModelTest::change(TestBox &box)
{
    const quint32 kind = m_people.empty() ? 0 : below(10);
    if (kind < 3) {
        const Person person = anyPerson();
        const uint16_t card = box.add(person.name, person.number, person.categories, person.town);
        QVERIFY(card != 0);
        m_people[card] = person;
        return;
    }
    const uint16_t card = anyCard();
    Person &person = m_people[card];
    const Person other = anyPerson();
    switch (kind) {
    case 3:
        QCOMPARE(_CardDelete(box.handle(), card), PdtmStatus(PdtmOk));
        m_people.erase(card);
        break;
    case 4:
        QCOMPARE(box.edit(card, "NAME", other.name), PdtmStatus(PdtmOk));
        person.name = other.name;
        break;
    case 5:
        QCOMPARE(box.edit(card, "TOWN", other.town), PdtmStatus(PdtmOk));
        person.town = other.town;
        break;
    case 6:
        QCOMPARE(box.edit(card, "NUMB", native(other.number)), PdtmStatus(PdtmOk));
        person.number = other.number;
        break;
    case 7:
        QCOMPARE(box.edit(card, "CTGR", other.categories), PdtmStatus(PdtmOk));
        person.categories = other.categories;
        break;
    case 8:
        person.attribute ^= HiddenMask;
        QCOMPARE(box.setAttribute(card, person.attribute), PdtmStatus(PdtmOk));
        break;
    default:
        changeCategory(box, card, person);
    }
}

void IndexModelTest::compareAll(const TestBox &box)
{
    for (const Expected &expected : Indexes) {
        Cards cards;
        for (const auto &[card, person] : m_people) {
            if (expected.belongs(person)) {
                cards << card;
            }
        }
        std::stable_sort(cards.begin(), cards.end(), [&](uint16_t left, uint16_t right) {
            return expected.compare(m_people[left], m_people[right]) < 0;
        });
        QCOMPARE(allCardsOf(box.at(expected.name)), cards);
        cards.removeIf([&](uint16_t card) { return m_people[card].attribute != 0; });
        QCOMPARE(cardsOf(box.at(expected.name)), cards);
        for (int i = 0; i < cards.size(); ++i) {
            uint16_t number = 0;
            uint16_t ordinal = 0;
            QCOMPARE(_CardIDToIndexNo(box.at(expected.name), cards[i], &number), PdtmStatus(PdtmOk));
            QCOMPARE(_IndexNoToNumber(box.at(expected.name), HiddenMask, 0, 0, 0, number, &ordinal),
                     PdtmStatus(PdtmOk));
            QCOMPARE(int(ordinal), i + 1);
        }
    }
}

void IndexModelTest::anySequenceAgreesWithASort_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 10; ++seed) {
        QTest::addRow("seed %u", seed) << seed;
    }
}

void IndexModelTest::anySequenceAgreesWithASort()
{
    QFETCH(quint32, seed);
    m_random.seed(seed);
    m_people.clear();
    const MemoryFolder folder;
    TestBox box("KYTEST.BOX", folder.path());
    makeIndexes(box);
    for (int batch = 0; batch < 100 && !QTest::currentTestFailed(); ++batch) {
        const bool inAction = below(2) == 0;
        const auto before = m_people;
        if (inAction) {
            QCOMPARE(DtmBeginAction(box.handle()), PdtmStatus(PdtmOk));
        }
        for (int i = 0; i < 25 && !QTest::currentTestFailed(); ++i) {
            change(box);
        }
        if (inAction && below(4) == 0) {
            box.close(); // undoes the action
            m_people = before;
            QVERIFY(box.open());
        } else if (inAction) {
            QCOMPARE(DtmEndAction(box.handle()), PdtmStatus(PdtmOk));
        }
        compareAll(box);
        if (below(5) == 0) {
            box.restart();
            compareAll(box);
        }
    }
    // A build from the cards alone gives the same.
    for (const Expected &expected : Indexes) {
        QFile file(TestBox::file(box.at(expected.name)));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.resize(file.size() / 3));
    }
    box.close();
    box.forgetMemory();
    box.open();
    compareAll(box);
}

QTEST_GUILESS_MAIN(IndexModelTest)
#include "indexmodeltest.moc"
