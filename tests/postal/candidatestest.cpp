#include "ydicaddress_p.h"

#include <QByteArray>
#include <QTest>

/** The candidates of a search by address, and which of them win. */
class CandidatesTest : public QObject
{
    Q_OBJECT
private slots:
    void stored();
    void fullTableIgnoresMore();
    void cancelled_data();
    void cancelled();
    void onlyTheFirstIsCancelled();
    void cancelledInAFullTable();
    void chosen_data();
    void chosen();
    void onlyRemovedOnesAreSorted_data();
    void onlyRemovedOnesAreSorted();
    void removedOneTakesItsStateAlong();
    void noMoreThanTheMaximum_data();
    void noMoreThanTheMaximum();
    void nothingIsWrittenWithoutACode();
    void hundredCodes();
    void compared_data();
    void compared();
    void equalCharacters_data();
    void equalCharacters();
};

struct Candidate
{
    uint32_t code;
    int match;
    int drop = 0;
};

using Candidates = QList<Candidate>;
using Codes = QByteArrayList;

ydic_search searchWith(const Candidates &candidates)
{
    ydic_search search = {};
    for (const Candidate &candidate : candidates) {
        search.dropMark = int16_t(candidate.drop);
        zip_store(candidate.code, uint8_t(candidate.match), &search, 0);
    }
    return search;
}

Codes chosenCodes(ydic_search search, uint32_t max = 100)
{
    char result[8 * YDIC_CANDIDATES] = {};
    Codes codes;
    for (int i = 0, count = set_kouho(max, result, &search); i < count; ++i)
        codes += QByteArray(result + 8 * i);
    return codes;
}

void CandidatesTest::stored()
{
    const ydic_search search = searchWith({{9999999, 200, 2}, {0, 1}});
    QCOMPARE(int{search.candCount}, 2);
    QCOMPARE(search.candCode[0], 9999999U);
    QCOMPARE(int{search.candMatch[0]}, 200);
    QCOMPARE(int{search.candDrop[0]}, 2);
    QCOMPARE(search.candCode[1], 0U);
    QCOMPARE(int{search.candMatch[1]}, 1);
    QCOMPARE(int{search.candDrop[1]}, 0);
}

void CandidatesTest::fullTableIgnoresMore()
{
    ydic_search search = {};
    for (uint32_t code = 1; code <= 101; ++code)
        zip_store(code, 5, &search, 0);
    QCOMPARE(int{search.candCount}, 100);
    QCOMPARE(search.candCode[99], 100U);
    QCOMPARE(search.query[0], '\0');
    QCOMPARE(int{search.candMatch[99]}, 5);
}

void CandidatesTest::cancelled_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("match");
    QTest::addColumn<int>("drop");
    QTest::addColumn<int>("left");
    QTest::newRow("equal") << 100 << 5 << 1 << 0;
    QTest::newRow("another code") << 101 << 5 << 1 << 5;
    QTest::newRow("another match") << 100 << 4 << 1 << 5;
    QTest::newRow("another drop") << 100 << 5 << 0 << 5;
}

void CandidatesTest::cancelled()
{
    QFETCH(int, code);
    QFETCH(int, match);
    QFETCH(int, drop);
    QFETCH(int, left);
    ydic_search search = searchWith({{100, 5, 1}});
    search.dropMark = int16_t(drop);
    zip_store(uint32_t(code), uint8_t(match), &search, 1);
    QCOMPARE(int{search.candCount}, 1);
    QCOMPARE(int{search.candMatch[0]}, left);
}

void CandidatesTest::onlyTheFirstIsCancelled()
{
    ydic_search search = searchWith({{100, 5}, {100, 5}});
    zip_store(100, 5, &search, 1);
    QCOMPARE(int{search.candMatch[0]}, 0);
    QCOMPARE(int{search.candMatch[1]}, 5);
}

void CandidatesTest::cancelledInAFullTable()
{
    ydic_search search = {};
    for (uint32_t code = 1; code <= 100; ++code)
        zip_store(code, 5, &search, 0);
    zip_store(100, 5, &search, 1);
    QCOMPARE(int{search.candMatch[99]}, 0);
    QCOMPARE(int{search.candCount}, 100);
}

void CandidatesTest::chosen_data()
{
    QTest::addColumn<Candidates>("candidates");
    QTest::addColumn<Codes>("codes");
    const auto row = [](const char *name, const Candidates &candidates, const Codes &codes) {
        QTest::newRow(name) << candidates << codes;
    };
    row("none", {}, {});
    row("one", {{1234567, 3}}, {"1234567"});
    row("leading zeros", {{10, 3}}, {"0000010"});
    row("the longest", {{100, 3}, {200, 5}, {300, 4}}, {"0000200"});
    row("all of the longest, in their order", {{300, 5}, {100, 5}, {200, 5}},
        {"0000300", "0000100", "0000200"});
    row("the same twice", {{300, 5}, {100, 5}, {300, 5}}, {"0000300", "0000100"});
    row("the same thrice", {{300, 5}, {300, 5}, {300, 5}}, {"0000300"});
    row("the same, later longer", {{300, 4}, {100, 5}, {300, 5}}, {"0000100", "0000300"});
    row("the same, first longer", {{300, 5}, {100, 5}, {300, 4}}, {"0000300", "0000100"});
    row("dropped, beaten by less", {{100, 5, 2}, {200, 4}}, {"0000200"});
    row("dropped by one, not beaten by the same", {{100, 5, 1}, {200, 4}}, {"0000100"});
    row("dropped by two, not beaten by the same", {{100, 6, 2}, {200, 4}}, {"0000100"});
    row("dropped, beaten by a longer one", {{100, 5, 1}, {200, 5}}, {"0000200"});
    row("dropped, beaten by one that comes first", {{200, 5}, {100, 5, 1}}, {"0000200"});
    row("dropped less beats dropped more", {{100, 5, 2}, {200, 5, 1}}, {"0000200"});
    row("both dropped", {{100, 5, 1}, {200, 5, 1}}, {"0000100", "0000200"});
    row("a whole one isn't beaten by a dropped one", {{100, 5}, {200, 5, 1}, {300, 5}},
        {"0000100", "0000300"});
    row("dropped and whole with the same code", {{100, 5, 1}, {100, 5}}, {"0000100"});
    row("of no characters", {{100, 0}}, {});
}

void CandidatesTest::chosen()
{
    QFETCH(Candidates, candidates);
    QFETCH(Codes, codes);
    QCOMPARE(chosenCodes(searchWith(candidates)), codes);
}

void CandidatesTest::onlyRemovedOnesAreSorted_data()
{
    QTest::addColumn<Candidates>("candidates");
    QTest::addColumn<QList<uint>>("codes");
    const auto row = [](const char *name, const Candidates &candidates, const QList<uint> &codes) {
        QTest::newRow(name) << candidates << codes;
    };
    row("none is removed", {{300, 2}, {200, 2}, {100, 2}}, {300, 200, 100});
    row("the last moves to the front", {{300, 2}, {200, 2}, {100, 0}}, {100, 300, 200});
    row("it stays behind a smaller code", {{100, 2}, {300, 2}, {200, 0}}, {100, 200, 300});
    row("a greater one stays", {{100, 2}, {300, 0}, {200, 2}}, {100, 300, 200});
    row("equal codes stay", {{200, 0}, {200, 0}}, {200, 200});
    row("two removed", {{300, 2}, {200, 0}, {400, 2}, {100, 0}}, {100, 200, 300, 400});
    row("two, the first smaller", {{300, 2}, {100, 0}, {400, 2}, {200, 0}}, {100, 200, 300, 400});
    row("a shorter one isn't removed", {{300, 4}, {200, 3}}, {300, 200});
    row("two of two", {{200, 2}, {100, 0}}, {100, 200});
}

void CandidatesTest::onlyRemovedOnesAreSorted()
{
    QFETCH(Candidates, candidates);
    QFETCH(QList<uint>, codes);
    ydic_search search = searchWith(candidates);
    char result[8 * 8] = {};
    set_kouho(8, result, &search);
    QList<uint> found;
    for (int i = 0; i < search.candCount; ++i)
        found += search.candCode[i];
    QCOMPARE(found, codes);
}

void CandidatesTest::removedOneTakesItsStateAlong()
{
    ydic_search search = searchWith({{300, 7}, {100, 5, 2}});
    char result[16] = {};
    QCOMPARE(set_kouho(2, result, &search), 1);
    QCOMPARE(int{search.candMatch[0]}, 0);
    QCOMPARE(int{search.candDrop[0]}, 2);
    QCOMPARE(int{search.candMatch[1]}, 7);
    QCOMPARE(int{search.candDrop[1]}, 0);
    QCOMPARE(QByteArray(result), QByteArray("0000300"));
}

void CandidatesTest::noMoreThanTheMaximum_data()
{
    QTest::addColumn<uint>("max");
    QTest::addColumn<int>("count");
    QTest::newRow("none") << 0U << 0;
    QTest::newRow("one") << 1U << 1;
    QTest::newRow("two") << 2U << 2;
    QTest::newRow("all") << 3U << 3;
    QTest::newRow("more") << 4U << 3;
    QTest::newRow("any number") << 0xFFFFFFFFU << 3;
}

void CandidatesTest::noMoreThanTheMaximum()
{
    QFETCH(uint, max);
    QFETCH(int, count);
    ydic_search search = searchWith({{300, 5}, {100, 5}, {200, 4}, {150, 5}});
    QByteArray result(5 * 8, 'x');
    QCOMPARE(set_kouho(max, result.data(), &search), count);
    const QByteArray all("0000300\0"
                         "0000100\0"
                         "0000150\0",
                         24);
    QCOMPARE(result.left(8 * count), all.left(8 * count));
    QCOMPARE(result.mid(8 * count), QByteArray(40 - 8 * count, 'x'));
}

void CandidatesTest::nothingIsWrittenWithoutACode()
{
    ydic_search search = {};
    char result[] = "xyz";
    QCOMPARE(set_kouho(20, result, &search), 0);
    QCOMPARE(QByteArray(result), QByteArray("xyz"));
}

void CandidatesTest::hundredCodes()
{
    ydic_search search = {};
    for (uint32_t code = 0; code < 100; ++code)
        zip_store(9000000 - code, 40, &search, 0);
    const Codes codes = chosenCodes(search);
    QCOMPARE(codes.size(), 100);
    QCOMPARE(codes.first(), QByteArray("9000000"));
    QCOMPARE(codes.last(), QByteArray("8999901"));
}

void CandidatesTest::compared_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("difference");
    QTest::newRow("equal") << QByteArray("abcd") << QByteArray("abcd") << 4 << 0;
    QTest::newRow("greater") << QByteArray("abgd") << QByteArray("abcx") << 4 << 4;
    QTest::newRow("less") << QByteArray("abcd") << QByteArray("abcx") << 4 << 'd' - 'x';
    QTest::newRow("unequal behind the count") << QByteArray("abcd") << QByteArray("abxd") << 2 << 0;
    QTest::newRow("no bytes") << QByteArray("a") << QByteArray("b") << 0 << 0;
    QTest::newRow("bytes have no sign") << QByteArray("\xFF") << QByteArray("\x01") << 1 << 0xFE;
    QTest::newRow("no end at a NUL") << QByteArray("\0b", 2) << QByteArray("\0a", 2) << 2 << 1;
}

void CandidatesTest::compared()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QFETCH(int, count);
    QFETCH(int, difference);
    QCOMPARE(stncmp(first.constData(), second.constData(), count), difference);
}

void CandidatesTest::equalCharacters_data()
{
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("characters");
    QTest::newRow("all") << QByteArray("abcdef") << 6 << 3;
    QTest::newRow("two") << QByteArray("abcdxf") << 6 << 2;
    QTest::newRow("half a character is none") << QByteArray("abcxef") << 6 << 1;
    QTest::newRow("none") << QByteArray("xbcdef") << 6 << 0;
    QTest::newRow("up to the count") << QByteArray("abcdef") << 4 << 2;
    QTest::newRow("of no bytes") << QByteArray("abcdef") << 0 << 0;
}

void CandidatesTest::equalCharacters()
{
    QFETCH(QByteArray, second);
    QFETCH(int, count);
    QFETCH(int, characters);
    QCOMPARE(stncmp2("abcdef", second.constData(), count), characters);
}

QTEST_GUILESS_MAIN(CandidatesTest)
#include "candidatestest.moc"
