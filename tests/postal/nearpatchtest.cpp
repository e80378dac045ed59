#include "codefixture.h"
#include "ydiccode_p.h"

#include <QTest>

using namespace codefixture;
using namespace imagebuilder;

namespace {

/** A row of the change table. */
struct Row
{
    uint32_t code;
    int kind;
};

using Rows = QList<Row>;

struct Near
{
    int result;
    Bytes code;
    bool isGuarded;
};

/** Asks a table. @param sizeOfTable what the header says of it */
Near nearIn(const Bytes &file, uint32_t number, int direction, uint32_t sizeOfTable)
{
    OpenImages files(file);
    ydic_fields fields{};
    uint8_t scratch[YDIC_SCRATCH_LENGTH];
    if (header_Read(files.info()->dictFile, &fields, scratch) < 0)
        return {-100, {}, false};
    fields.changesSize = sizeOfTable;
    ResultBuffer near(YDIC_CODE_LENGTH);
    const int result = near_numberSchPch(number, near.data(), static_cast<uint8_t>(direction),
                                         files.info()->dictFile, &fields);
    return {result, result == YDIC_NEAR_UNDECIDED || result < 0 ? Bytes() : Bytes(near.data()),
            near.isGuarded()};
}

Image imageOf(const Rows &rows)
{
    Image image{.type = YDIC_PATCH};
    for (const Row &row : rows)
        image.addChange(row.code, static_cast<uint8_t>(row.kind));
    return image;
}

Near nearIn(const Rows &rows, uint32_t number, int direction)
{
    return nearIn(imageOf(rows).bytes(), number, direction, static_cast<uint32_t>(rows.size()) * YDIC_CHANGE);
}

/** Where the change table begins. */
size_t changesAt(const Bytes &file)
{
    return ydic_u32(reinterpret_cast<const uint8_t *>(file.data()) + YDIC_AT_CHANGES);
}

/** The same table seen from its other end: next and previous change places. */
Rows mirrored(const Rows &rows)
{
    Rows result;
    for (const Row &row : rows)
        result.prepend({YDIC_LAST_CODE - row.code, row.kind});
    return result;
}

} // namespace

/** The neighbour of a code, as far as a patch knows it. */
class NearPatchTest : public QObject
{
    Q_OBJECT
private slots:
    void decision_data();
    void decision();
    void everyPositionOfALongTable();
    void noTableDecidesNothing_data();
    void noTableDecidesNothing();
    void endsOfTheCodes_data();
    void endsOfTheCodes();
    void rowsBesideEachOtherAreReadAtOnce();
    void tableThatCantBeRead();
    void offsetDoesntWrap();
    void codeThatIsNoneIsAFailure();
    void damagedSizeIsAFailure();
};

void NearPatchTest::decision_data()
{
    // The table, the number, and what the search for the previous code says of it. As next codes they stand
    // in the mirrored table. Three rows: the search begins with that of 200.
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<uint32_t>("number");
    QTest::addColumn<int>("result");
    QTest::addColumn<uint32_t>("code");
    const int none = YDIC_NEAR_NONE;
    const int undecided = YDIC_NEAR_UNDECIDED;
    const int found = YDIC_NEAR_FOUND;
    for (const uint32_t number : {200U, 150U}) {
        const char *at = number == 200 ? "at the row" : "before the row";
        for (const int kind : {1, 2, 3, 254, 255}) {
            const auto add = [&](const char *name, int previous, int result, uint32_t code) {
                QTest::addRow("%s of kind %d, %s", at, kind, name)
                    << Rows{{100, previous}, {200, kind}, {300, 0}} << number << result << code;
            };
            add("the one before says that it is the first", 255, none, 0);
            add("the one before is kept", 0, found, 100);
            add("the one before is added", 1, found, 100);
            add("the one before is removed, and nothing lies before it", 2, none, 0);
            add("the one before is removed by another kind", 254, none, 0);
            QTest::addRow("%s of kind %d, nothing is before it", at, kind)
                << Rows{{200, kind}, {300, 1}, {400, 1}} << number << none << 0U;
        }
        const auto add = [&](const char *name, int previous, int result, uint32_t code) {
            QTest::addRow("%s of a kept code, %s", at, name)
                << Rows{{100, previous}, {200, 0}, {300, 1}} << number << result << code;
        };
        add("the one before says that it is the first", 255, undecided, 0);
        add("the one before is kept", 0, undecided, 0);
        add("the one before is added", 1, found, 100);
        add("the one before is removed, and nothing lies before it", 2, none, 0);
        add("the one before is removed by another kind", 3, none, 0);
        QTest::addRow("%s of a kept code, nothing is before it", at)
            << Rows{{200, 0}, {300, 1}, {400, 1}} << number << undecided << 0U;
    }
    for (const int previous : {0, 1, 2, 255}) {
        for (const int next : {0, 1, 2, 255}) {
            QTest::addRow("behind an added code, between %d and %d", previous, next)
                << Rows{{100, previous}, {200, 1}, {300, next}} << 250U << found << 200U;
        }
    }
    QTest::newRow("behind an added code alone") << Rows{{200, 1}} << 250U << found << 200U;
    for (const int kind : {2, 3, 254, 255}) {
        const auto add = [&](const char *name, int previous, int result, uint32_t code) {
            QTest::addRow("behind a removed code of kind %d, %s", kind, name)
                << Rows{{100, previous}, {200, kind}, {300, 1}} << 250U << result << code;
        };
        add("the one before is kept", 0, found, 100);
        add("the one before is added", 1, found, 100);
        add("the one before says that it is the first", 255, none, 0);
        add("the one before is removed, and nothing lies before it", 2, none, 0);
        QTest::addRow("behind a removed code of kind %d alone", kind)
            << Rows{{200, kind}} << 250U << none << 0U;
    }
    for (const int previous : {0, 1, 2, 255}) {
        const auto add = [&](const char *name, int next, int result, uint32_t code) {
            QTest::addRow("behind a kept code, after kind %d, %s", previous, name)
                << Rows{{100, previous}, {200, 0}, {300, next}} << 250U << result << code;
        };
        add("the next one says that it is the last", 255, undecided, 0);
        add("the next one is kept", 0, undecided, 0);
        add("the next one is added", 1, found, 200);
        add("the next one is removed", 2, found, 200);
        add("the next one is removed by another kind", 254, found, 200);
    }
    QTest::newRow("behind a kept code alone") << Rows{{200, 0}} << 250U << undecided << 0U;

    // Scans: rows that are removed are stepped over, from the second row before on.
    const Rows scanned = {{50, 0},  {60, 1},  {70, 2},  {80, 255}, {90, 3}, {200, 1},
                          {300, 2}, {400, 0}, {500, 0}, {510, 0},  {520, 0}};
    QTest::newRow("scan from a row") << scanned << 200U << found << 60U;
    QTest::newRow("scan from before a row") << scanned << 199U << found << 60U;
    QTest::newRow("scan steps over one row only")
        << Rows{{100, 1}, {150, 2}, {200, 0}, {300, 1}, {400, 1}} << 200U << found << 100U;
    QTest::newRow("scan finds a kept code")
        << Rows{{100, 0}, {150, 2}, {200, 2}, {300, 1}, {400, 1}} << 200U << found << 100U;
    QTest::newRow("scan from behind a row")
        << Rows{{100, 1}, {150, 2}, {200, 2}, {300, 2}, {400, 1}} << 250U << found << 100U;
    QTest::newRow("scan finds nothing")
        << Rows{{100, 2}, {150, 2}, {200, 2}, {300, 2}, {400, 1}} << 250U << none << 0U;
}

void NearPatchTest::decision()
{
    QFETCH(Rows, rows);
    QFETCH(uint32_t, number);
    QFETCH(int, result);
    QFETCH(uint32_t, code);
    const Near previous = nearIn(rows, number, YDIC_PREVIOUS);
    QCOMPARE(previous.result, result);
    QVERIFY(previous.isGuarded);
    const Near next = nearIn(mirrored(rows), YDIC_LAST_CODE - number, YDIC_NEXT);
    QCOMPARE(next.result, result);
    if (result == YDIC_NEAR_FOUND) {
        char text[YDIC_CODE_LENGTH];
        int2ascii(code, text);
        QCOMPARE(previous.code, Bytes(text));
        int2ascii(YDIC_LAST_CODE - code, text);
        QCOMPARE(next.code, Bytes(text));
    } else {
        QCOMPARE(previous.code, Bytes());
        QCOMPARE(next.code, Bytes());
    }
}

void NearPatchTest::everyPositionOfALongTable()
{
    // Added codes alone: every number has its neighbours in the table, wherever the search begins.
    for (const uint32_t count : {1U, 2U, 3U, 4U, 7U, 8U, 40U}) {
        Rows rows;
        for (uint32_t i = 0; i < count; ++i)
            rows.append({1000 + 3 * i, 1});
        const uint32_t last = rows.last().code;
        for (uint32_t number = 998; number <= last + 2; ++number) {
            const Near next = nearIn(rows, number, YDIC_NEXT);
            const Near previous = nearIn(rows, number, YDIC_PREVIOUS);
            const uint32_t above = number < 1000 ? 1000 : number + 3 - (number - 1000) % 3;
            const uint32_t below = number <= 1000 ? 0 : 1000 + (number - 1001) / 3 * 3;
            QCOMPARE(next.result, above > last ? int{YDIC_NEAR_NONE} : int{YDIC_NEAR_FOUND});
            QCOMPARE(next.code, above > last ? Bytes() : "000" + std::to_string(above));
            QCOMPARE(previous.result, below == 0 ? int{YDIC_NEAR_NONE} : int{YDIC_NEAR_FOUND});
            QCOMPARE(previous.code, below == 0 ? Bytes() : "000" + std::to_string(below));
        }
    }
}

void NearPatchTest::noTableDecidesNothing_data()
{
    QTest::addColumn<uint32_t>("size");
    QTest::addColumn<int>("result");
    QTest::newRow("none") << 0U << int{YDIC_NEAR_UNDECIDED};
    QTest::newRow("part of a row") << 3U << int{YDIC_NEAR_UNDECIDED};
    QTest::newRow("one row") << 4U << int{YDIC_NEAR_FOUND};
    QTest::newRow("one row and a part of another") << 7U << int{YDIC_NEAR_FOUND};
}

void NearPatchTest::noTableDecidesNothing()
{
    QFETCH(uint32_t, size);
    const Bytes file = imageOf({{100, 1}, {200, 1}}).bytes();
    QTEST(nearIn(file, 150, YDIC_PREVIOUS, size).result, "result");
}

void NearPatchTest::endsOfTheCodes_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<uint32_t>("number");
    QTest::addColumn<int>("direction");
    QTest::addColumn<int>("result");
    // The table has one code in the middle; the first and the last code of all lie beside it.
    QTest::newRow("next of the lowest, added") << 1 << 0U << int{YDIC_NEXT} << int{YDIC_NEAR_FOUND};
    QTest::newRow("previous of the highest, added")
        << 1 << 9999999U << int{YDIC_PREVIOUS} << int{YDIC_NEAR_FOUND};
    QTest::newRow("next of the lowest, removed") << 2 << 0U << int{YDIC_NEXT} << int{YDIC_NEAR_NONE};
    QTest::newRow("previous of the highest, removed")
        << 2 << 9999999U << int{YDIC_PREVIOUS} << int{YDIC_NEAR_NONE};
    QTest::newRow("previous of the lowest, added") << 1 << 0U << int{YDIC_PREVIOUS} << int{YDIC_NEAR_NONE};
    QTest::newRow("next of the highest, added") << 1 << 9999999U << int{YDIC_NEXT} << int{YDIC_NEAR_NONE};
    QTest::newRow("previous of the lowest, kept")
        << 0 << 0U << int{YDIC_PREVIOUS} << int{YDIC_NEAR_UNDECIDED};
    QTest::newRow("next of the highest, kept") << 0 << 9999999U << int{YDIC_NEXT} << int{YDIC_NEAR_UNDECIDED};
}

void NearPatchTest::endsOfTheCodes()
{
    QFETCH(int, kind);
    QFETCH(uint32_t, number);
    QFETCH(int, direction);
    const Near near = nearIn({{5000000, kind}}, number, direction);
    QTEST(near.result, "result");
    QCOMPARE(near.code, near.result == YDIC_NEAR_FOUND ? Bytes("5000000") : Bytes());
}

void NearPatchTest::rowsBesideEachOtherAreReadAtOnce()
{
    // A table that ends the file: no row behind it is asked for.
    const Image image = imageOf({{100, 1}, {200, 1}, {300, 1}});
    const Bytes file = image.bytes();
    const Bytes cut = file.substr(0, changesAt(file) + image.changes.size());
    for (const uint32_t number : {50U, 100U, 150U, 200U, 250U, 300U, 350U}) {
        for (const int direction : {YDIC_NEXT, YDIC_PREVIOUS})
            QVERIFY(nearIn(cut, number, direction, 12).result >= 0);
    }
}

void NearPatchTest::tableThatCantBeRead()
{
    const Rows rows = {{100, 1}, {200, 2}, {300, 2}, {400, 2}, {500, 2}};
    const Bytes file = imageOf(rows).bytes();
    // The row of 300 with those beside it can be read, the one that the scan needs can't.
    const Bytes cut = file.substr(0, changesAt(file) + 19);
    QCOMPARE(nearIn(file, 300, YDIC_NEXT, 20).result, int{YDIC_NEAR_NONE});
    QCOMPARE(nearIn(cut, 300, YDIC_NEXT, 20).result, -1);
    QCOMPARE(nearIn(cut, 300, YDIC_PREVIOUS, 20).result, int{YDIC_NEAR_FOUND});
    QCOMPARE(nearIn(file.substr(0, changesAt(file) + 15), 300, YDIC_PREVIOUS, 20).result, -1);
}

void NearPatchTest::offsetDoesntWrap()
{
    Bytes file = imageOf({{100, 1}, {200, 1}, {300, 1}}).bytes();
    file.replace(YDIC_AT_CHANGES, 4, u32(0xFFFFFFFC)); // plus that of the second row: the header
    QCOMPARE(nearIn(file, 150, YDIC_NEXT, 12).result, -1);
    QCOMPARE(nearIn(file, 150, YDIC_NEXT, 20).result, -1);
}

void NearPatchTest::codeThatIsNoneIsAFailure()
{
    QCOMPARE(nearIn({{100, 1}, {0xFFFFFF, 1}}, 150, YDIC_NEXT).result, -1);
    QCOMPARE(nearIn({{100, 2}, {200, 2}, {10000000, 0}}, 100, YDIC_NEXT).result, -1);
}

void NearPatchTest::damagedSizeIsAFailure()
{
    const Bytes file = imageOf({{100, 1}, {200, 1}, {300, 1}}).bytes();
    QCOMPARE(nearIn(file, 150, YDIC_NEXT, 0xFFFFFFFF).result, -1);
    QCOMPARE(nearIn(file, 150, YDIC_PREVIOUS, 0x80000000).result, -1);
}

QTEST_GUILESS_MAIN(NearPatchTest)
#include "nearpatchtest.moc"
