#include "indexfixture.h"

using namespace expression;

namespace {
constexpr uint8_t NoMask = 0;
constexpr uint16_t Behind = 0xFFFF;
} // namespace

/** Making, describing, filling and walking indexes: results and edge cases of each operation. */
class IndexTest : public QObject
{
    Q_OBJECT

private slots:
    void createChecksItsArguments();
    void createdIndexIsEmptyAndBelongsToNobody();
    void deleteTellsWhetherThereWasOne();
    void deleteNeverTakesABox();
    void informationIsReadBack();
    void informationThatIsNotThere();
    void informationTooLong();
    void checkedWriteRefusesMalformed();
    void unfilledAndFilledSortInformation();
    void writtenExpressionTakesEffectWithTheNextSort();
    void sortOnAnEmptyIndexIsNothingToSort();
    void sortChecksItsArguments();
    void sortOperators_data();
    void sortOperators();
    void severalKeysAndTies();
    void unGroupWithoutExpressionIsByCardId();
    void groupTakesOverTheOrderOfItsParent();
    void groupByCategory_data();
    void groupByCategory();
    void groupResults();
    void groupTakesTheCardsOfTheParentAsTheyStand();
    void copyKeepsCardsAndOrderUntilSorted();
    void copyChecksItsArguments();
    void familyNames();
    void familyRoomAndArguments();
    void walkFromBothEnds();
    void stepsLeaveTheNumberAloneAtTheEnd();
    void hiddenCardsAreSkipped();
    void conversionsAgreeWithWalking_data();
    void conversionsAgreeWithWalking();
    void countForms();
    void searchForms();
    void searchFarAway();
    void expressionsInSearchAndCount();
    void appendAndDeleteSingleCards();
    void nothingWorksOnMissingOrDamagedFiles();
    void onlySixteenBitsAreWritten();
};

void IndexTest::createChecksItsArguments()
{
    TestBox box;
    QCOMPARE(_IndexCreate(nullptr, 17), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCreate("", 17), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCreate("X9:A.IDX", 17), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCreate("F0:A.IDX", 16), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCreate("F0:A.IDX", 17), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexCreate("F0:A.IDX", 17), PdtmStatus(PdtmExists));
    QCOMPARE(_IndexCreate(box.path(), 17), PdtmStatus(PdtmExists));
    QCOMPARE(_IndexDelete("F0:A.IDX"), PdtmStatus(PdtmOk));
    QVERIFY(_IndexCreate("/nowhere/at/all.IDX", 17) != PdtmOk);
}

void IndexTest::createdIndexIsEmptyAndBelongsToNobody()
{
    TestBox box;
    box.add("Abe");
    QCOMPARE(_IndexCreate("F0:A.IDX", 18), PdtmStatus(PdtmOk));
    QVERIFY(cardsOf("F0:A.IDX").isEmpty());
    QVERIFY(box.family().isEmpty());
    TestBox::writeInfo("F0:A.IDX", InfoBoxName, raw("KYTEST.BOX\0"));
    QCOMPARE(box.family(), QList<QByteArray>{"F0:A.IDX"});
    box.add("Baba");
    QVERIFY(cardsOf("F0:A.IDX").isEmpty());
}

void IndexTest::deleteTellsWhetherThereWasOne()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    QCOMPARE(_IndexDelete(index), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexDelete(index), PdtmStatus(PdtmMissing));
    QCOMPARE(_IndexDelete(nullptr), PdtmStatus(PdtmBadArgument));
    uint16_t number = 0;
    QCOMPARE(_NextIndexNo(index, NoMask, 0, 0, &number), PdtmStatus(PdtmMissing));
}

void IndexTest::deleteNeverTakesABox()
{
    TestBox box;
    QCOMPARE(_IndexDelete(box.path()), PdtmStatus(PdtmBadArgument));
    box.close();
    QCOMPARE(_IndexDelete(box.path()), PdtmStatus(PdtmBadArgument));
    QVERIFY(QFile::exists(TestBox::file(box.path())));
    QVERIFY(box.open());
}

void IndexTest::informationIsReadBack()
{
    TestBox box;
    const QByteArray sort = sortBy("NAME", TextDescending);
    const QByteArray index = box.describe("KYTEST.IDX", sort, category(7));
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(TestBox::info(index, InfoBoxName), raw("KYTEST.BOX\0"));
        QCOMPARE(TestBox::info(index, InfoSortExpression), sort);
        QCOMPARE(TestBox::info(index, InfoSearchExpression), category(7));
        QCOMPARE(TestBox::info(index, InfoSubset), raw("\1"));
        box.restart();
    }
}

void IndexTest::informationThatIsNotThere()
{
    TestBox box;
    QCOMPARE(_IndexCreate("F0:A.IDX", 17), PdtmStatus(PdtmOk));
    char buffer[PdtmInfoRoom];
    for (const int id : {InfoBoxName, InfoSortExpression, InfoSearchExpression, InfoSubset}) {
        uint16_t size = sizeof buffer;
        QCOMPARE(_IndexInfoRead("F0:A.IDX", id, buffer, &size), PdtmStatus(PdtmNone));
    }
    uint16_t size = sizeof buffer;
    QCOMPARE(_IndexInfoRead("F0:A.IDX", 4, buffer, &size), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexInfoRead("F0:A.IDX", 2, buffer, nullptr), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexInfoRead("F0:A.IDX", 2, nullptr, &size), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexInfoRead("F0:B.IDX", 2, buffer, &size), PdtmStatus(PdtmMissing));
    QCOMPARE(_IndexInfoWrite("F0:B.IDX", 2, buffer, 0), PdtmStatus(PdtmMissing));
    QCOMPARE(_IndexInfoWrite("F0:A.IDX", 5, buffer, 1), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexInfoWrite("F0:A.IDX", 2, nullptr, 1), PdtmStatus(PdtmBadArgument));
    _IndexDelete("F0:A.IDX");
}

void IndexTest::informationTooLong()
{
    TestBox box;
    const QByteArray index = box.describe("KYTEST.IDX");
    const QByteArray longest = sortKey("NAME", Ascending).repeated(8) + '\0';
    QCOMPARE(longest.size(), 49);
    QCOMPARE(TestBox::writeInfo(index, InfoSortExpression, longest), PdtmStatus(PdtmOk));
    const QByteArray tooLong(51, 'x');
    for (const int id : {InfoSortExpression, InfoSearchExpression, InfoSubset}) {
        QCOMPARE(TestBox::writeInfo(index, id, tooLong), PdtmStatus(PdtmTooShort));
        QCOMPARE(_IndexInfoWriteWithCheck(index, id, tooLong, 51), PdtmStatus(PdtmTooShort));
    }
    QCOMPARE(TestBox::info(index, InfoSortExpression), longest);
    const QByteArray name = QByteArray(100, 'N') + '\0';
    QCOMPARE(TestBox::writeInfo(index, InfoBoxName, name), PdtmStatus(PdtmOk));
    char small[10];
    uint16_t size = sizeof small;
    QCOMPARE(_IndexInfoRead(index, InfoBoxName, small, &size), PdtmStatus(PdtmTooShort));
    QCOMPARE(size, uint16_t(101));
    TestBox::writeInfo(index, InfoBoxName, raw("KYTEST.BOX\0"));
}

void IndexTest::checkedWriteRefusesMalformed()
{
    TestBox box;
    const QByteArray index = box.describe("KYTEST.IDX");
    const auto check = [&](int id, const QByteArray &info) {
        return _IndexInfoWriteWithCheck(index, id, info.constData(), static_cast<uint16_t>(info.size()));
    };
    QCOMPARE(check(InfoSortExpression, "NAME"), PdtmStatus(PdtmBadArgument));
    QCOMPARE(check(InfoSortExpression, sortBy("NAME", 0x84)), PdtmStatus(PdtmBadArgument));
    QCOMPARE(check(InfoSortExpression, sortKey("NAME", Ascending)),
             PdtmStatus(PdtmOk)); // the end may be missing
    QCOMPARE(check(InfoSearchExpression, "CTGR"), PdtmStatus(PdtmBadArgument));
    QCOMPARE(check(InfoSearchExpression, category(3)), PdtmStatus(PdtmOk));
    QCOMPARE(check(InfoSubset, "\2"), PdtmStatus(PdtmBadArgument));
    QCOMPARE(check(InfoSubset, "\1"), PdtmStatus(PdtmOk));
    QCOMPARE(check(InfoBoxName, "NAME"), PdtmStatus(PdtmBadArgument));
    QCOMPARE(check(InfoBoxName, raw("KYTEST.BOX\0")), PdtmStatus(PdtmOk));
}

void IndexTest::unfilledAndFilledSortInformation()
{
    TestBox box;
    const QByteArray index = box.describe("KYTEST.IDX");
    char buffer[PdtmInfoRoom];
    uint16_t size = sizeof buffer;
    QCOMPARE(_IndexInfoRead(index, InfoSortExpression, buffer, &size), PdtmStatus(PdtmNone));
    QCOMPARE(_IndexUnGroup(index, box.handle()), PdtmStatus(PdtmNothingToSort));
    QCOMPARE(_IndexInfoRead(index, InfoSortExpression, buffer, &size), PdtmStatus(PdtmOk));
    QCOMPARE(size, uint16_t(0));
    size = sizeof buffer;
    QCOMPARE(_IndexInfoRead(index, InfoSearchExpression, buffer, &size), PdtmStatus(PdtmNone));
    QCOMPARE(_IndexInfoRead(index, InfoSubset, buffer, &size), PdtmStatus(PdtmNone));
}

void IndexTest::writtenExpressionTakesEffectWithTheNextSort()
{
    TestBox box;
    const uint16_t b = box.add("b", 1);
    const uint16_t c = box.add("c", 2);
    const uint16_t a = box.add("a", 4);
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    TestBox::writeInfo(index, InfoSortExpression, sortBy("NUMB", Ascending));
    QCOMPARE(cardsOf(index), (Cards{a, b, c}));
    const uint16_t d = box.add("bb", 3);
    QCOMPARE(cardsOf(index), (Cards{a, b, d, c}));
    QCOMPARE(_IndexSort(index, box.handle()), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(index), (Cards{b, c, d, a}));
    QCOMPARE(TestBox::info(index, InfoSortExpression), sortBy("NUMB", Ascending));
}

void IndexTest::sortOnAnEmptyIndexIsNothingToSort()
{
    TestBox box;
    const QByteArray index = box.describe("KYTEST.IDX", sortBy("NAME", TextAscending));
    QCOMPARE(_IndexSort(index, box.handle()), PdtmStatus(PdtmNothingToSort));
    _IndexUnGroup(index, box.handle());
    QCOMPARE(_IndexSort(index, box.handle()), PdtmStatus(PdtmNothingToSort));
    const uint16_t card = box.add("late");
    QCOMPARE(cardsOf(index), Cards{card});
}

void IndexTest::sortChecksItsArguments()
{
    TestBox box;
    TestBox other("KYELSE.BOX");
    box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    QCOMPARE(_IndexSort(index, 0), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexSort(index, box.handle() + 1000), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexSort(index, other.handle()), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexSort(nullptr, box.handle()), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexSort("F0:NONE.IDX", box.handle()), PdtmStatus(PdtmMissing));
    TestBox::writeInfo(index, InfoSortExpression, "nonsense");
    QCOMPARE(_IndexSort(index, box.handle()), PdtmStatus(PdtmBadArgument));
}

void IndexTest::sortOperators_data()
{
    QTest::addColumn<QByteArray>("sort");
    QTest::addColumn<QByteArray>("names");
    // Text order goes by the alphabet, plain order by the bytes; an empty item is first, last when
    // descending.
    QTest::newRow("text, ascending") << sortBy("NAME", TextAscending) << QByteArray(",a,B,c,D");
    QTest::newRow("text, descending") << sortBy("NAME", TextDescending) << QByteArray("D,c,B,a,");
    QTest::newRow("plain, ascending") << sortBy("NAME", Ascending) << QByteArray(",B,D,a,c");
    QTest::newRow("plain, descending") << sortBy("NAME", Descending) << QByteArray("c,a,D,B,");
    QTest::newRow("number, ascending") << sortBy("NUMB", Ascending) << QByteArray("c,a,,D,B");
    QTest::newRow("number, descending") << sortBy("NUMB", Descending) << QByteArray("B,D,,a,c");
    QTest::newRow("an item that is not there") << sortBy("NONE", Ascending) << QByteArray("a,B,,c,D");
    QTest::newRow("code with another first letter") << sortBy("nUMB", Ascending) << QByteArray("c,a,,D,B");
}

void IndexTest::sortOperators()
{
    QFETCH(QByteArray, sort);
    QFETCH(QByteArray, names);
    TestBox box;
    QHash<uint16_t, QByteArray> nameOf;
    const QList<std::pair<QByteArray, uint16_t>> people = {
        {"a", 255}, {"B", 65535}, {"", 256}, {"c", 1}, {"D", 4096}};
    for (const auto &[name, number] : people) {
        nameOf[box.add(name, number)] = name;
    }
    const QByteArray index = box.sorted("KYTEST.IDX", sort);
    QByteArrayList walked;
    for (const uint16_t card : cardsOf(index)) {
        walked << nameOf.value(card);
    }
    QCOMPARE(walked.join(','), names);
    QCOMPARE(_IndexSort(index, box.handle()), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(index).size(), 5);
}

void IndexTest::severalKeysAndTies()
{
    TestBox box;
    const uint16_t first = box.add("x", 2);
    const uint16_t second = box.add("x", 1);
    const uint16_t third = box.add("a", 1);
    const uint16_t fourth = box.add("x", 2);
    const QByteArray index =
        box.sorted("KYTEST.IDX", sortKey("NAME", Descending) + sortKey("NUMB", Ascending) + '\0');
    QCOMPARE(cardsOf(index), (Cards{second, first, fourth, third}));
    const uint16_t fifth = box.add("x", 2);
    QCOMPARE(cardsOf(index), (Cards{second, first, fourth, fifth, third}));
}

void IndexTest::unGroupWithoutExpressionIsByCardId()
{
    TestBox box;
    const uint16_t first = box.add("z");
    const uint16_t second = box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", {});
    QCOMPARE(cardsOf(index), (Cards{first, second}));
    box.edit(first, "NAME", "zz");
    const uint16_t third = box.add("m");
    QCOMPARE(cardsOf(index), (Cards{first, second, third}));
}

void IndexTest::groupTakesOverTheOrderOfItsParent()
{
    TestBox box;
    const uint16_t b = box.add("b", 1, "\7");
    box.add("c", 2);
    const uint16_t a = box.add("a", 3, "\7");
    const QByteArray parent = box.sorted("KYTEST.IDX", sortBy("NAME", Descending));
    const QByteArray child = box.grouped("ppinKYT0.tdx", parent, category(7));
    QCOMPARE(cardsOf(child), (Cards{b, a}));
    QCOMPARE(TestBox::info(child, InfoSortExpression), sortBy("NAME", Descending));
    const QByteArray own = box.grouped("ppinKYT1.tdx", parent, category(7), sortBy("NUMB", Descending));
    QCOMPARE(cardsOf(own), (Cards{a, b}));
    QCOMPARE(TestBox::info(own, InfoSearchExpression), category(7));
}

void IndexTest::groupByCategory_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<QByteArray>("names");
    QTest::newRow("one") << 1 << QByteArray("a,b");
    QTest::newRow("another") << 2 << QByteArray("b");
    QTest::newRow("nobody's") << 3 << QByteArray();
    QTest::newRow("unfiled") << 254 << QByteArray("c");
}

void IndexTest::groupByCategory()
{
    QFETCH(int, id);
    QFETCH(QByteArray, names);
    TestBox box;
    QHash<uint16_t, QByteArray> nameOf;
    nameOf[box.add("c")] = "c";
    nameOf[box.add("b", 0, "\1\2")] = "b";
    nameOf[box.add("a", 0, "\1")] = "a";
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray index = box.grouped("CATEGORY.IDX", master, category(static_cast<uint8_t>(id)));
    QByteArrayList walked;
    for (const uint16_t card : cardsOf(index)) {
        walked << nameOf.value(card);
    }
    QCOMPARE(walked.join(','), names);
}

void IndexTest::groupResults()
{
    TestBox box;
    TestBox other("KYELSE.BOX");
    box.add("a");
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray stranger = other.sorted("KYELSE.IDX", sortBy("NAME", Ascending));
    const QByteArray index = box.describe("CATEGORY.IDX", {}, category(9), 18);
    QCOMPARE(_IndexGroup(master, index, box.handle()), PdtmStatus(PdtmNothingToSort));
    QCOMPARE(_IndexGroup("F0:NONE.IDX", index, box.handle()), PdtmStatus(PdtmGroupFailed));
    QCOMPARE(_IndexGroup(nullptr, index, box.handle()), PdtmStatus(PdtmGroupFailed));
    QCOMPARE(_IndexGroup(stranger, index, box.handle()), PdtmStatus(PdtmGroupFailed));
    QCOMPARE(_IndexGroup(box.path(), index, box.handle()), PdtmStatus(PdtmGroupFailed));
    QCOMPARE(_IndexGroup(master, "F0:NONE.IDX", box.handle()), PdtmStatus(PdtmMissing));
    QCOMPARE(_IndexGroup(master, index, 0), PdtmStatus(PdtmBadArgument));
    TestBox::writeInfo(index, InfoSearchExpression, "junk");
    QCOMPARE(_IndexGroup(master, index, box.handle()), PdtmStatus(PdtmGroupFailed));
    TestBox::writeInfo(index, InfoSearchExpression, text("NAME", Equal, "a"));
    QCOMPARE(_IndexGroup(master, index, box.handle()), PdtmStatus(PdtmOk));
    TestBox::writeInfo(index, InfoSortExpression, "junk");
    QCOMPARE(_IndexGroup(master, index, box.handle()), PdtmStatus(PdtmGroupFailed));
    QCOMPARE(_IndexUnGroup(index, box.handle()), PdtmStatus(PdtmGroupFailed));
    QCOMPARE(_IndexUnGroup(index, 0), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexUnGroup("F0:NONE.IDX", box.handle()), PdtmStatus(PdtmMissing));
}

void IndexTest::groupTakesTheCardsOfTheParentAsTheyStand()
{
    TestBox box;
    const uint16_t a = box.add("a", 0, "\1");
    const uint16_t b = box.add("b", 0, "\2");
    box.add("c", 0, "\3");
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray ones = box.grouped("ONE.IDX", master, category(1));
    uint16_t number = 0;
    QCOMPARE(_IndexNoAppend(ones, box.handle(), b, &number), PdtmStatus(PdtmOk));
    const QByteArray child = box.grouped("CHILD.IDX", ones, text("NAME", 0x9B, "c"));
    QCOMPARE(cardsOf(child), (Cards{a, b}));
}

void IndexTest::copyKeepsCardsAndOrderUntilSorted()
{
    TestBox box;
    const uint16_t b = box.add("b", 1, "\1");
    const uint16_t a = box.add("a", 2, "\1");
    box.add("c", 3);
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray ones = box.grouped("ONE.IDX", master, category(1));
    const QByteArray sort = sortBy("NUMB", Ascending);
    const QByteArray copy = box.at("ppinKYT0.tdx");
    QCOMPARE(_IndexCopy(ones, copy, 2, sort.constData(), static_cast<int>(sort.size())), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(copy), (Cards{a, b}));
    QCOMPARE(TestBox::info(copy, InfoSortExpression), sort);
    QCOMPARE(TestBox::info(copy, InfoBoxName), raw("KYTEST.BOX\0"));
    QCOMPARE(_IndexSort(copy, box.handle()), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(copy), (Cards{b, a}));
    const uint16_t d = box.add("d", 0, "\1");
    box.add("e", 0);
    QCOMPARE(cardsOf(copy), (Cards{d, b, a}));
}

void IndexTest::copyChecksItsArguments()
{
    TestBox box;
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray sort = sortBy("NUMB", Ascending);
    const auto length = static_cast<int>(sort.size());
    QCOMPARE(_IndexCopy(master, master, 2, sort.constData(), length), PdtmStatus(PdtmExists));
    QCOMPARE(_IndexCopy("F0:NONE.IDX", "F0:NEW.IDX", 2, sort.constData(), length), PdtmStatus(PdtmMissing));
    QCOMPARE(_IndexCopy(master, "F0:NEW.IDX", 1, sort.constData(), length), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCopy(master, "F0:NEW.IDX", 2, nullptr, length), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCopy(master, "F0:NEW.IDX", 2, sort.constData(), -1), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCopy(master, "F0:NEW.IDX", 2, "NAME", 4), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCopy(master, "F0:NEW.IDX", 2, QByteArray(60, 'x').constData(), 60),
             PdtmStatus(PdtmTooShort));
    QCOMPARE(_IndexCopy(nullptr, "F0:NEW.IDX", 2, sort.constData(), length), PdtmStatus(PdtmBadArgument));
    QVERIFY(!QFile::exists(TestBox::file("F0:NEW.IDX")));
}

void IndexTest::familyNames()
{
    TestBox box;
    TestBox other("KYELSE.BOX");
    const QByteArray sort = sortBy("NAME", Ascending);
    for (const char *name :
         {"ppinKYT1.tdx", "KYTEST.idx", "ppinKYT0.tdx", "KYTEST9.IDX", "KYTEST.IDX", "other"}) {
        box.sorted(name, sort);
    }
    other.sorted("KYELSE.IDX", sort);
    QFile(TestBox::file("F0:KYTEST.txt")).open(QIODevice::WriteOnly);
    QCOMPARE(box.family(), (QList<QByteArray>{"F0:KYTEST.IDX", "F0:KYTEST.idx", "F0:KYTEST9.IDX", "F0:other",
                                              "F0:ppinKYT0.tdx", "F0:ppinKYT1.tdx"}));
    QCOMPARE(other.family(), QList<QByteArray>{"F0:KYELSE.IDX"});
    char name[256];
    uint32_t permanent = 0;
    QCOMPARE(_GetIndexName(box.path(), 3, name, sizeof name, &permanent), PdtmStatus(PdtmOk));
    QVERIFY(permanent != 0);
    QCOMPARE(_GetIndexName(box.path(), 4, name, sizeof name, &permanent), PdtmStatus(PdtmOk));
    QCOMPARE(permanent, 0U);
    const QByteArray real = QFile::encodeName(TestBox::file(box.path()));
    QCOMPARE(_GetIndexName(real, 1, name, sizeof name, &permanent), PdtmStatus(PdtmOk));
    QCOMPARE(QByteArray(name), QFile::encodeName(TestBox::file("F0:KYTEST.IDX")));
    QFile::remove(TestBox::file("F0:KYTEST.txt"));
}

void IndexTest::familyRoomAndArguments()
{
    TestBox box;
    box.sorted("KYTEST.IDX", {});
    char name[256] = "untouched";
    uint32_t permanent = 0;
    QCOMPARE(_GetIndexName(box.path(), 2, name, sizeof name, &permanent), PdtmStatus(PdtmNone));
    QCOMPARE(_GetIndexName(box.path(), 1, name, 13, &permanent), PdtmStatus(PdtmTooShort));
    QCOMPARE(QByteArray(name), QByteArray("untouched"));
    QCOMPARE(_GetIndexName(box.path(), 1, name, 14, &permanent), PdtmStatus(PdtmOk));
    QCOMPARE(_GetIndexName(box.path(), 0, name, sizeof name, &permanent), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_GetIndexName(nullptr, 1, name, sizeof name, &permanent), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_GetIndexName(box.path(), 1, nullptr, 256, &permanent), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_GetIndexName("/nowhere/KYTEST.BOX", 1, name, sizeof name, &permanent), PdtmStatus(PdtmNone));
}

void IndexTest::walkFromBothEnds()
{
    TestBox box;
    const uint16_t a = box.add("a");
    const uint16_t b = box.add("b");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    uint16_t number = 0;
    uint16_t card = 0;
    QCOMPARE(_NextIndexNo(index, HiddenMask, 0, 0, &number), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexNoToCardID(index, number, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, a);
    number = Behind;
    QCOMPARE(_PrevIndexNo(index, HiddenMask, 0, 0, &number), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexNoToCardID(index, number, &card), PdtmStatus(PdtmOk));
    QCOMPARE(card, b);
    QCOMPARE(_CardIDToIndexNo(index, b, &number), PdtmStatus(PdtmOk));
    QCOMPARE(number, uint16_t(2));
    QCOMPARE(_CardIDToIndexNo(index, 999, &number), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(_CardIDToIndexNo(index, 0, &number), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(_CardIDToIndexNo(index, 0xFFFF, &number), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(_CardIDToIndexNo(index, b, nullptr), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexNoToCardID(index, 0, &card), PdtmStatus(PdtmNone));
    QCOMPARE(_IndexNoToCardID(index, 3, &card), PdtmStatus(PdtmNone));
    QCOMPARE(_IndexNoToCardID(index, Behind, &card), PdtmStatus(PdtmNone));
    QCOMPARE(_IndexNoToCardID(index, 1, nullptr), PdtmStatus(PdtmBadArgument));
}

void IndexTest::stepsLeaveTheNumberAloneAtTheEnd()
{
    TestBox box;
    box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    for (const uint16_t start : {uint16_t(1), uint16_t(2), Behind}) {
        uint16_t number = start;
        QCOMPARE(_NextIndexNo(index, HiddenMask, 0, 0, &number), PdtmStatus(PdtmNone));
        QCOMPARE(number, start);
    }
    for (const uint16_t start : {uint16_t(0), uint16_t(1)}) {
        uint16_t number = start;
        QCOMPARE(_PrevIndexNo(index, HiddenMask, 0, 0, &number), PdtmStatus(PdtmNone));
        QCOMPARE(number, start);
    }
    QCOMPARE(_NextIndexNo(index, HiddenMask, 0, 0, nullptr), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_PrevIndexNo(index, HiddenMask, 0, 0, nullptr), PdtmStatus(PdtmBadArgument));
}

void IndexTest::hiddenCardsAreSkipped()
{
    TestBox box;
    Cards cards;
    for (const char *name : {"a", "b", "c", "d", "e"}) {
        cards << box.add(name);
    }
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    for (const int hidden : {0, 2, 4}) {
        QCOMPARE(box.setAttribute(cards[hidden], HiddenMask | 1), PdtmStatus(PdtmOk));
    }
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(cardsOf(index), (Cards{cards[1], cards[3]}));
        QCOMPARE(allCardsOf(index), cards);
        uint16_t number = Behind;
        QCOMPARE(_PrevIndexNo(index, HiddenMask, 0, 0, &number), PdtmStatus(PdtmOk));
        QCOMPARE(number, uint16_t(4));
        QCOMPARE(_PrevIndexNo(index, HiddenMask, 0, 0, &number), PdtmStatus(PdtmOk));
        QCOMPARE(number, uint16_t(2));
        QCOMPARE(_PrevIndexNo(index, HiddenMask, 0, 0, &number), PdtmStatus(PdtmNone));
        uint16_t first = 0;
        uint16_t count = 0;
        const QByteArray anything = text("NAME", 0x9B, "zz");
        QCOMPARE(
            _IndexCount(index, box.handle(), anything.constData(), 0, HiddenMask, 0, 0, 0, &first, &count),
            PdtmStatus(PdtmOk));
        QCOMPARE(count, uint16_t(2));
        QCOMPARE(first, uint16_t(2));
        QCOMPARE(_IndexCount(index, box.handle(), nullptr, 0, HiddenMask, 0, 0, 0, &first, &count),
                 PdtmStatus(PdtmOk));
        QCOMPARE(count, uint16_t(2));
        uint16_t match = 0;
        QCOMPARE(_IndexSearch(index, box.handle(), anything.constData(), 0, HiddenMask, 0, 0, 2, &match),
                 PdtmStatus(PdtmOk));
        QCOMPARE(match, uint16_t(4));
        QCOMPARE(_IndexSearch(index, box.handle(), anything.constData(), 0, HiddenMask, 0, 0, 4, &match),
                 PdtmStatus(PdtmNone));
        uint16_t ordinal = 0;
        QCOMPARE(_IndexNoToNumber(index, HiddenMask, 0, 0, 0, 4, &ordinal), PdtmStatus(PdtmOk));
        QCOMPARE(ordinal, uint16_t(2));
        QCOMPARE(_IndexNoToNumber(index, HiddenMask, 0, 0, 0, 3, &ordinal), PdtmStatus(PdtmNone));
        number = 0;
        QCOMPARE(_NumberToIndexNo(index, 0, HiddenMask, 0, 0, &number, 2), PdtmStatus(PdtmOk));
        QCOMPARE(number, uint16_t(4));
        box.restart();
    }
}

void IndexTest::conversionsAgreeWithWalking_data()
{
    QTest::addColumn<int>("hiddenStep");
    QTest::newRow("all visible") << 0;
    QTest::newRow("every second hidden") << 2;
    QTest::newRow("every third hidden") << 3;
    QTest::newRow("all hidden") << 1;
}

void IndexTest::conversionsAgreeWithWalking()
{
    QFETCH(int, hiddenStep);
    TestBox box;
    for (int i = 1; i <= 20; ++i) {
        const uint16_t card = box.add(QByteArray::number(1000 - i));
        if (hiddenStep > 0 && i % hiddenStep == 0) {
            box.setAttribute(card, HiddenMask);
        }
    }
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    QList<uint16_t> numbers;
    uint16_t at = 0;
    while (_NextIndexNo(index, HiddenMask, 0, 0, &at) == PdtmOk) {
        numbers << at;
    }
    QCOMPARE(numbers.size(), hiddenStep == 0 ? 20 : 20 - 20 / hiddenStep);
    for (int i = 0; i < numbers.size(); ++i) {
        uint16_t ordinal = 0;
        QCOMPARE(_IndexNoToNumber(index, HiddenMask, 0, 0, 0, numbers[i], &ordinal), PdtmStatus(PdtmOk));
        QCOMPARE(int(ordinal), i + 1);
        uint16_t number = 0;
        QCOMPARE(_NumberToIndexNo(index, 0, HiddenMask, 0, 0, &number, ordinal), PdtmStatus(PdtmOk));
        QCOMPARE(number, numbers[i]);
        number = Behind;
        const auto fromEnd = static_cast<uint16_t>(numbers.size() - i);
        QCOMPARE(_NumberToIndexNo(index, 1, HiddenMask, 0, 0, &number, fromEnd), PdtmStatus(PdtmOk));
        QCOMPARE(number, numbers[i]);
        if (i > 0) {
            number = numbers[0];
            QCOMPARE(_NumberToIndexNo(index, 0, HiddenMask, 0, 0, &number, static_cast<uint16_t>(i)),
                     PdtmStatus(PdtmOk));
            QCOMPARE(number, numbers[i]);
        }
    }
    const auto tooMany = static_cast<uint16_t>(numbers.size() + 1);
    uint16_t number = 0;
    QCOMPARE(_NumberToIndexNo(index, 0, HiddenMask, 0, 0, &number, tooMany), PdtmStatus(PdtmNone));
    QCOMPARE(_NumberToIndexNo(index, 0, HiddenMask, 0, 0, &number, 0), PdtmStatus(PdtmNone));
    QCOMPARE(number, uint16_t(0));
    number = Behind;
    QCOMPARE(_NumberToIndexNo(index, 1, HiddenMask, 0, 0, &number, tooMany), PdtmStatus(PdtmNone));
    QCOMPARE(number, Behind);
    for (const uint16_t outside : {uint16_t(0), uint16_t(21), Behind}) {
        QCOMPARE(_IndexNoToNumber(index, HiddenMask, 0, 0, 0, outside, &number), PdtmStatus(PdtmNone));
    }
}

void IndexTest::countForms()
{
    TestBox box;
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    uint16_t first = 7;
    uint16_t count = 7;
    QCOMPARE(_IndexCount(index, box.handle(), nullptr, 0, HiddenMask, 0, 0, 0, &first, &count),
             PdtmStatus(PdtmNone));
    QCOMPARE(count, uint16_t(0));
    QCOMPARE(first, uint16_t(0));
    for (const char *name : {"a", "b", "b", "c"}) {
        box.add(name);
    }
    QCOMPARE(_IndexCount(index, box.handle(), "", 0, HiddenMask, 0, 0, 0, nullptr, &count),
             PdtmStatus(PdtmOk));
    QCOMPARE(count, uint16_t(4));
    QCOMPARE(_IndexCount(index, 0, nullptr, 0, HiddenMask, 0, 0, 0, nullptr, &count), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexCount(index, box.handle(), "", 0, HiddenMask, 0, 0, 3, &first, &count),
             PdtmStatus(PdtmOk));
    QCOMPARE(count, uint16_t(1));
    QCOMPARE(first, uint16_t(4));
    QCOMPARE(_IndexCount(index, box.handle(), "", 0, HiddenMask, 0, 0, 4, &first, &count),
             PdtmStatus(PdtmNone));
    QCOMPARE(_IndexCount(index, box.handle(), "", 0, HiddenMask, 0, 0, Behind, &first, &count),
             PdtmStatus(PdtmNone));
    const QByteArray isB = text("NAME", Equal, "b");
    QCOMPARE(_IndexCount(index, box.handle(), isB.constData(), 0, HiddenMask, 0, 0, 0, &first, &count),
             PdtmStatus(PdtmOk));
    QCOMPARE(count, uint16_t(2));
    QCOMPARE(first, uint16_t(2));
    QCOMPARE(_IndexCount(index, box.handle(), isB.constData(), 0, HiddenMask, 0, 0, 2, &first, &count),
             PdtmStatus(PdtmOk));
    QCOMPARE(count, uint16_t(1));
    QCOMPARE(first, uint16_t(3));
    const QByteArray isZ = text("NAME", Equal, "z");
    QCOMPARE(_IndexCount(index, box.handle(), isZ.constData(), 0, HiddenMask, 0, 0, 0, &first, &count),
             PdtmStatus(PdtmNone));
    QCOMPARE(count, uint16_t(0));
    QCOMPARE(_IndexCount(index, 0, isB.constData(), 0, HiddenMask, 0, 0, 0, &first, &count),
             PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexCount(index, box.handle(), nullptr, 0, HiddenMask, 0, 0, 0, &first, nullptr),
             PdtmStatus(PdtmBadArgument));
}

void IndexTest::searchForms()
{
    TestBox box;
    for (const char *name : {"ab", "b", "bc", "c"}) {
        box.add(name);
    }
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray hasB = text("NAME", Contains, "b");
    const auto search = [&](const QByteArray &expression, bool backward, uint16_t start) -> int {
        uint16_t match = 0;
        const PdtmStatus status = _IndexSearch(index, box.handle(), expression.constData(), backward ? 1 : 0,
                                               HiddenMask, 0, 0, start, &match);
        return status == PdtmOk ? match : -int(status);
    };
    QCOMPARE(search(hasB, false, 0), 1);
    QCOMPARE(search(hasB, false, 1), 2); // the card at the start is no match
    QCOMPARE(search(hasB, false, 3), -PdtmNone);
    QCOMPARE(search(hasB, true, Behind), 3);
    QCOMPARE(search(hasB, true, 3), 2);
    QCOMPARE(search(hasB, true, 1), -PdtmNone);
    QCOMPARE(search(text("    ", Contains, "C"), false, 0), 3);
    QCOMPARE(search(raw("\0"), false, 2), 3);
    uint16_t match = 77;
    QCOMPARE(_IndexSearch(index, 0, hasB.constData(), 0, HiddenMask, 0, 0, 0, &match),
             PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexSearch(index, box.handle(), hasB.constData(), 0, HiddenMask, 0, 0, 0, nullptr),
             PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexSearch(index, box.handle(), hasB.constData(), 0, HiddenMask, 0, 0, 4, &match),
             PdtmStatus(PdtmNone));
    QCOMPARE(match, uint16_t(77));
}

/** A match so far off that the search goes over to memory order is the nearest one all the same. */
void IndexTest::searchFarAway()
{
    TestBox box;
    QCOMPARE(DtmBeginAction(box.handle()), PdtmStatus(PdtmOk));
    for (int i = 0; i < 6000; ++i) {
        box.add(QByteArray::number(90000 - i), 0, {}, i % 2000 == 999 ? "here" : "there");
    }
    QCOMPARE(DtmEndAction(box.handle()), PdtmStatus(PdtmOk));
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray here = text("TOWN", Equal, "here");
    const auto search = [&](bool backward, uint16_t start) {
        uint16_t match = 0;
        _IndexSearch(index, box.handle(), here.constData(), backward ? 1 : 0, HiddenMask, 0, 0, start,
                     &match);
        return int(match);
    };
    // The names fall as the cards rise: card i + 1 stands at 6000 - i, so the matches stand at 1001, 3001,
    // 5001.
    QCOMPARE(search(false, 0), 1001);
    QCOMPARE(search(true, Behind), 5001);
    const uint16_t middle = 3001;
    uint16_t card = 0;
    _IndexNoToCardID(index, middle, &card);
    box.edit(card, "TOWN", "there");
    _IndexNoToCardID(index, 1001, &card);
    box.edit(card, "TOWN", "there");
    QCOMPARE(search(false, 0), 5001);
    _IndexNoToCardID(index, 5001, &card);
    box.edit(card, "TOWN", "there");
    _IndexNoToCardID(index, 10, &card);
    box.edit(card, "TOWN", "here");
    _IndexNoToCardID(index, 20, &card);
    box.edit(card, "TOWN", "here");
    QCOMPARE(search(true, Behind), 20);
    QCOMPARE(search(false, 20), 0);
}

void IndexTest::expressionsInSearchAndCount()
{
    TestBox box;
    box.add("a", 5);
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    uint16_t match = 0;
    uint16_t count = 0;
    const QByteArray unknown = text("NAME", 0xC7, "a");
    QCOMPARE(_IndexSearch(index, box.handle(), unknown.constData(), 0, 0, 0, 0, 0, &match),
             PdtmStatus(PdtmNone));
    QCOMPARE(_IndexCount(index, box.handle(), unknown.constData(), 0, 0, 0, 0, 0, nullptr, &count),
             PdtmStatus(PdtmNone));
    QByteArray endless(70000, 'x');
    endless.replace(0, 7, raw("NAME\xFE\x90\x11"));
    for (const QByteArray &malformed : {QByteArray("NAME=a"), raw("NAME\xFE"), endless}) {
        QCOMPARE(_IndexSearch(index, box.handle(), malformed.constData(), 0, 0, 0, 0, 0, &match),
                 PdtmStatus(PdtmBadArgument));
        QCOMPARE(_IndexCount(index, box.handle(), malformed.constData(), 0, 0, 0, 0, 0, nullptr, &count),
                 PdtmStatus(PdtmBadArgument));
    }
    const QByteArray five = number("NUMB", Equal, 5);
    QCOMPARE(_IndexSearch(index, box.handle(), five.constData(), 0, 0, 0, 0, 0, &match), PdtmStatus(PdtmOk));
}

void IndexTest::appendAndDeleteSingleCards()
{
    TestBox box;
    const uint16_t c = box.add("c", 0, "\1");
    const uint16_t a = box.add("a", 0, "\1");
    const uint16_t b = box.add("b");
    const QByteArray master = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    const QByteArray index = box.grouped("ONE.IDX", master, category(1));
    uint16_t number = 0;
    QCOMPARE(_IndexNoAppend(index, box.handle(), b, &number), PdtmStatus(PdtmOk));
    QCOMPARE(number, uint16_t(2));
    QCOMPARE(cardsOf(index), (Cards{a, b, c}));
    number = 0;
    QCOMPARE(_IndexNoAppend(index, box.handle(), c, &number), PdtmStatus(PdtmAlreadyInIndex));
    QCOMPARE(number, uint16_t(3));
    QCOMPARE(_IndexNoAppend(index, box.handle(), 500, &number), PdtmStatus(PdtmNoSuchCard));
    for (const int reserved : {0xFF00, 0xFF10, 0xFFFF}) {
        QCOMPARE(_IndexNoAppend(index, box.handle(), static_cast<uint16_t>(reserved), &number),
                 PdtmStatus(PdtmBadArgument));
    }
    QCOMPARE(_IndexNoAppend(index, 0, b, &number), PdtmStatus(PdtmBadArgument));
    QCOMPARE(_IndexNoDelete(index, 0), PdtmStatus(PdtmNone));
    QCOMPARE(_IndexNoDelete(index, 4), PdtmStatus(PdtmNone));
    QCOMPARE(_IndexNoDelete(index, 1), PdtmStatus(PdtmOk));
    QCOMPARE(cardsOf(index), (Cards{b, c}));
    box.restart(); // both were written at the close and need no rebuild
    QCOMPARE(cardsOf(index), (Cards{b, c}));
    QCOMPARE(cardsOf(master), (Cards{a, b, c}));
}

void IndexTest::nothingWorksOnMissingOrDamagedFiles()
{
    TestBox box;
    QFile junk(TestBox::file("F0:KYTEST.IDX"));
    QVERIFY(junk.open(QIODevice::WriteOnly));
    junk.write(QByteArray(500, 'j'));
    junk.close();
    const std::pair<const char *, PdtmStatus> paths[] = {
        {"F0:NONE.IDX", PdtmMissing}, {"F0:KYTEST.IDX", PdtmDamaged}, {"", PdtmBadArgument}};
    for (const auto &[path, status] : paths) {
        uint16_t number = 0;
        uint16_t count = 0;
        char buffer[PdtmInfoRoom];
        uint16_t size = sizeof buffer;
        QCOMPARE(_NextIndexNo(path, 0, 0, 0, &number), status);
        QCOMPARE(_PrevIndexNo(path, 0, 0, 0, &number), status);
        QCOMPARE(_IndexNoToCardID(path, 1, &number), status);
        QCOMPARE(_CardIDToIndexNo(path, 1, &number), status);
        QCOMPARE(_IndexNoToNumber(path, 0, 0, 0, 0, 1, &number), status);
        QCOMPARE(_NumberToIndexNo(path, 0, 0, 0, 0, &number, 1), status);
        QCOMPARE(_IndexCount(path, box.handle(), nullptr, 0, 0, 0, 0, 0, nullptr, &count), status);
        QCOMPARE(_IndexSearch(path, box.handle(), nullptr, 0, 0, 0, 0, 0, &number), status);
        QCOMPARE(_IndexNoAppend(path, box.handle(), 1, &number), status);
        QCOMPARE(_IndexNoDelete(path, 1), status);
        QCOMPARE(_IndexInfoRead(path, 2, buffer, &size), status);
        QCOMPARE(_IndexInfoWrite(path, 2, buffer, 0), status);
        QCOMPARE(_IndexSort(path, box.handle()), status);
        QCOMPARE(_IndexUnGroup(path, box.handle()), status);
    }
    QCOMPARE(box.family(), QList<QByteArray>{"F0:KYTEST.IDX"}); // so that its owner can delete it
    QCOMPARE(_IndexDelete("F0:KYTEST.IDX"), PdtmStatus(PdtmOk));
}

void IndexTest::onlySixteenBitsAreWritten()
{
    TestBox box;
    const uint16_t card = box.add("a");
    const QByteArray index = box.sorted("KYTEST.IDX", sortBy("NAME", Ascending));
    uint16_t words[3] = {0xAAAA, 0xAAAA, 0xAAAA};
    QCOMPARE(_IndexNoToCardID(index, 1, &words[1]), PdtmStatus(PdtmOk));
    QCOMPARE(words[0], uint16_t(0xAAAA));
    QCOMPARE(words[1], card);
    QCOMPARE(words[2], uint16_t(0xAAAA));
}

QTEST_GUILESS_MAIN(IndexTest)
#include "indextest.moc"
