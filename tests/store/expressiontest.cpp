#include "expression.h"
#include "guardedbytes.h"
#include "recordbuilder.h"

#include <QtTest>

using namespace pdtm;

namespace {

const QByteArray JoinConditions = raw("\xFE\x84");
const QByteArray JoinTerms = raw("\xFE\x86");
const QByteArray End = raw("\0");

QByteArray condition(const QByteArray &operators, char type, const QByteArray &value)
{
    return operators + type + value;
}

QByteArray term(const char *code, const QByteArray &operators, char type, const QByteArray &value)
{
    return QByteArray(code, 4) + condition(operators, type, value);
}

QByteArray text(const char *code, const QByteArray &operators, const QByteArray &value,
                char type = ItemTextUtf8)
{
    return term(code, operators, type, value + '\0');
}

const QByteArray Equal = raw("\xFE\x90");
const QByteArray NotEqual = raw("\xFE\x9B");
const QByteArray Contains = raw("\xFE\x92");
const QByteArray Whole = raw("\xFE\x95\xFE\x90");
const QByteArray NotWhole = raw("\xFE\x95\xFE\x9B");
const QByteArray AtOrAfter = raw("\xFE\x98");
const QByteArray AtOrBefore = raw("\xFE\x9A");

const QByteArray SjisTanaka = raw("\x93\x63\x92\x86"); // 田中
const QByteArray Utf8Tanaka = "田中";

bool matches(const QByteArray &expression, const Schema &schema, const TestCard &card)
{
    const auto parsed = SearchExpression::parse(bytesOf(expression));
    if (!parsed)
        qFatal("malformed expression");
    return parsed->matches(schema, card.view());
}

} // namespace

class ExpressionTest : public QObject
{
    Q_OBJECT
private slots:
    void sortKeys_data();
    void sortKeys();
    void malformedSort_data();
    void malformedSort();
    void keyBytes();

    void operatorsOnTypes_data();
    void operatorsOnTypes();
    void otherClass_data();
    void otherClass();
    void cases_data();
    void cases();

    void anyText_data();
    void anyText();
    void emptyMatchesEverything();
    void truncations_data();
    void truncations();
    void malformed_data();
    void malformed();
    void measure_data();
    void measure();
};

void ExpressionTest::sortKeys_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("text ascending") << raw("NAPR\xFE\x80\0") << QStringList{"NAPR text up"};
    QTest::newRow("text descending") << raw("NAPR\xFE\x81\0") << QStringList{"NAPR text down"};
    QTest::newRow("plain ascending") << raw("TIM1\xFE\x82\0") << QStringList{"TIM1 plain up"};
    QTest::newRow("plain descending") << raw("TIM1\xFE\x83\0") << QStringList{"TIM1 plain down"};
    QTest::newRow("two keys") << raw("NAPR\xFE\x80"
                                     "TIM1\xFE\x83\0")
                              << QStringList{"NAPR text up", "TIM1 plain down"};
    QTest::newRow("no terminator") << raw("NAPR\xFE\x80") << QStringList{"NAPR text up"};
    QTest::newRow("bytes behind the terminator") << raw("NAPR\xFE\x80\0zz") << QStringList{"NAPR text up"};
    QTest::newRow("no key") << raw("\0") << QStringList{};
    QTest::newRow("no bytes") << QByteArray() << QStringList{};
}

void ExpressionTest::sortKeys()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, keys);
    const auto expression = SortExpression::parse(GuardedBytes(bytes).bytes());
    QVERIFY(expression);
    QStringList found;
    for (const SortKey &key : expression->keys())
        found << QString("%1 %2 %3")
                     .arg(QString::fromLatin1(key.code.data(), 4), key.textOrder ? "text" : "plain",
                          key.descending ? "down" : "up");
    QCOMPARE(found, keys);
}

void ExpressionTest::malformedSort_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("half a code") << raw("NAP");
    QTest::newRow("code alone") << raw("NAPR");
    QTest::newRow("no operator") << raw("NAPR\xFE");
    QTest::newRow("operator below") << raw("NAPR\xFE\x7F\0");
    QTest::newRow("operator above") << raw("NAPR\xFE\x84\0");
    QTest::newRow("no mark") << raw("NAPR\x80\0");
    QTest::newRow("half a second key") << raw("NAPR\xFE\x80"
                                              "TIM1\xFE");
    QTest::newRow("ends inside a code by 0") << raw("NAPR\xFE\x80"
                                                    "TI\0");
}

void ExpressionTest::malformedSort()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!SortExpression::parse(GuardedBytes(bytes).bytes()));
}

void ExpressionTest::keyBytes()
{
    for (int op = 0x80; op <= 0x83; ++op) {
        const QByteArray bytes = QByteArray("NAPR\xFE") + static_cast<char>(op);
        const auto written = SortExpression::parse(bytesOf(bytes))->keys().front().bytes();
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(written.data()), 6), bytes);
    }
}

/** For each operator: what it gives where the item is below the value, equal to it, above it, and empty. */
void ExpressionTest::operatorsOnTypes_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QByteArrayList>("stored");
    QTest::addColumn<QString>("expected");

    struct Operator
    {
        const char *name;
        QByteArray bytes;
        const char *ordered, *text, *category;
    };
    const Operator operators[] = {
        {"equal", Equal, "0100", "0100", "0100"},
        {"not equal", NotEqual, "1011", "1011", "1011"},
        {"contains", Contains, "0000", "0100", "0110"},
        {"whole text", Whole, "0100", "0100", "0100"},
        {"not whole text", NotWhole, "1011", "1011", "1011"},
        {"at or after", AtOrAfter, "0110", "0110", "0000"},
        {"at or before", AtOrBefore, "1100", "1100", "0000"},
        {"whole text alone", raw("\xFE\x95"), "0000", "0000", "0000"},
        {"whole text, at or after", raw("\xFE\x95\xFE\x98"), "0000", "0000", "0000"},
        {"whole text, contains", raw("\xFE\x95\xFE\x92"), "0000", "0000", "0000"},
        {"join byte", raw("\xFE\x84"), "0000", "0000", "0000"},
        {"unknown 0x91", raw("\xFE\x91"), "0000", "0000", "0000"},
        {"unknown 0", raw("\xFE\0"), "0000", "0000", "0000"},
        {"unknown 0xFF", raw("\xFE\xFF"), "0000", "0000", "0000"},
    };
    struct Type
    {
        const char *code;
        char type;
        QByteArray below, equal, above;
    };
    const QByteArray sjisDragon = raw("\x97\xB4"); // 龍
    const Type types[] = {
        {"SJS1", ItemTextSjis, "Tanaka", SjisTanaka, sjisDragon},
        {"SJS2", ItemTextSjis2, "Tanaka", SjisTanaka, sjisDragon},
        {"UTF8", ItemTextUtf8, "Tanaka", Utf8Tanaka, "龍"},
        {"TIME", ItemTime, timeValue(2003, 4, 5, 6, 7, 8), timeValue(2003, 4, 5, 6, 7, 9),
         timeValue(2004, 1, 1)},
        {"BITS", ItemBit, native<uint8_t>(1), native<uint8_t>(2), native<uint8_t>(0x80)},
        {"UCHR", ItemUchar, native<uint8_t>(0), native<uint8_t>(0x7F), native<uint8_t>(0xFF)},
        {"USH1", ItemUshort, native<uint16_t>(0x00FF), native<uint16_t>(0x0100), native<uint16_t>(0xFF00)},
        {"USH2", ItemUshortAlt, native<uint16_t>(0x00FF), native<uint16_t>(0x0100), native<uint16_t>(0xFF00)},
        {"BINA", ItemBinary, native<uint32_t>(0xFF), native<uint32_t>(0x100), native<uint32_t>(0xFF000000)},
        {"COLR", ItemColor, native<uint32_t>(0xFF), native<uint32_t>(0x100), native<uint32_t>(0xFF000000)},
        {"ULNG", ItemUlong, native<uint32_t>(0xFF), native<uint32_t>(0x100), native<uint32_t>(0xFF000000)},
        {"CTGR", ItemCategory, raw("\4"), raw("\5"), raw("\4\5")},
    };
    for (const Operator &op : operators)
        for (const Type &type : types) {
            const bool isText = isTextType(static_cast<uint8_t>(type.type));
            const char *expected = isText ? op.text : type.type == ItemCategory ? op.category : op.ordered;
            const QByteArray value = isText ? type.equal + '\0' : type.equal + End;
            QTest::addRow("%s on %s", op.name, type.code)
                << term(type.code, op.bytes, type.type, value) << QByteArray(type.code)
                << QByteArrayList{type.below, type.equal, type.above, QByteArray()} << QString(expected);
        }
}

void ExpressionTest::operatorsOnTypes()
{
    QFETCH(QByteArray, expression);
    QFETCH(QByteArray, code);
    QFETCH(QByteArrayList, stored);
    QFETCH(QString, expected);
    const Schema schema = everyType();
    QString found;
    for (const QByteArray &value : stored)
        found += matches(expression, schema, TestCard(schema).set(code, value)) ? '1' : '0';
    QCOMPARE(found, expected);
}

/** A value of another class than the item holds for no card, whatever the operator. */
void ExpressionTest::otherClass_data()
{
    QTest::addColumn<QByteArray>("expression");
    const QByteArray number = native<uint32_t>(0x41) + End;
    for (const QByteArray &op : {Equal, NotEqual, Contains, Whole, AtOrAfter, AtOrBefore}) {
        const QByteArray name = op.mid(1).toHex(' ');
        QTest::addRow("%s number on text", name.constData()) << term("UTF8", op, ItemUlong, number);
        QTest::addRow("%s number on time", name.constData()) << term("TIME", op, ItemUlong, number);
        QTest::addRow("%s number on categories", name.constData()) << term("CTGR", op, ItemUchar, raw("A\0"));
        QTest::addRow("%s text on number", name.constData()) << text("UCHR", op, "A");
        QTest::addRow("%s text on time", name.constData()) << text("TIME", op, "A");
        QTest::addRow("%s text on categories", name.constData()) << text("CTGR", op, "A");
        QTest::addRow("%s time on number", name.constData())
            << term("ULNG", op, ItemTime, timeValue(0, 0, 0) + End);
        QTest::addRow("%s time on text", name.constData())
            << term("UTF8", op, ItemTime, timeValue(0, 0, 0) + End);
        QTest::addRow("%s category on number", name.constData())
            << term("UCHR", op, ItemCategory, raw("A\0"));
    }
}

void ExpressionTest::otherClass()
{
    QFETCH(QByteArray, expression);
    const Schema schema = everyType();
    TestCard card(schema);
    card.set("UTF8", "A")
        .set("UCHR", "A")
        .set("CTGR", "A")
        .set("TIME", timeValue(0, 0, 0))
        .set("ULNG", native<uint32_t>(0x41));
    QVERIFY(!matches(expression, schema, card));
}

void ExpressionTest::cases_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *name, const QByteArray &expression, bool expected) {
        QTest::newRow(name) << expression << expected;
    };
    // The card: see cases().
    row("equal ignores the case of ASCII", text("UTF8", Equal, "the QUICK 田中ａ fox"), true);
    row("whole text doesn't", text("UTF8", Whole, "the QUICK 田中ａ fox"), false);
    row("whole text", text("UTF8", Whole, "The quick 田中ａ Fox"), true);
    row("equal is no prefix", text("UTF8", Equal, "The quick"), false);
    row("equal is no longer text", text("UTF8", Equal, "The quick 田中ａ Foxes"), false);
    row("contains in front", text("UTF8", Contains, "tHE"), true);
    row("contains at the end", text("UTF8", Contains, "fOX"), true);
    row("contains in the middle", text("UTF8", Contains, "K 田"), true);
    row("contains the whole", text("UTF8", Contains, "The quick 田中ａ Fox"), true);
    row("contains not", text("UTF8", Contains, "quack"), false);
    row("contains a longer text not", text("UTF8", Contains, "The quick 田中ａ Fox!"), false);
    row("case is folded for ASCII alone", text("UTF8", Contains, "Ａ"), false);
    row("contains the empty text", text("UTF8", Contains, ""), true);
    row("empty contains the empty text", text("NAME", Contains, ""), true);
    row("empty equals the empty text", text("NAME", Equal, ""), true);
    row("empty is the empty text", text("NAME", Whole, ""), true);
    row("empty is in no range from the empty text", text("NAME", AtOrAfter, ""), false);
    row("empty is in no range up to a text", text("NAME", AtOrBefore, "z"), false);

    row("UTF-8 value, Shift-JIS item", text("SJS1", Whole, Utf8Tanaka), true);
    row("UTF-8 value in Shift-JIS item", text("SJS2", Contains, "ソート"), true);
    row("UTF-8 value, other Shift-JIS item", text("SJS1", Whole, "中田"), false);
    row("Shift-JIS value in UTF-8 item", text("UTF8", Contains, SjisTanaka, ItemTextSjis), true);
    row("Shift-JIS value of the second type", text("UTF8", Contains, SjisTanaka, ItemTextSjis2), true);
    row("a trail byte is no letter", text("SJS2", Contains, "\\"), false);
    row("range across encodings", text("SJS1", AtOrBefore, "田中"), true);

    row("number of another width", term("ULNG", Equal, ItemUchar, raw("\x07\0")), true);
    row("wider number than the item", term("UCHR", Equal, ItemUlong, native<uint32_t>(200) + End), true);
    row("its low byte alone", term("UCHR", Equal, ItemUlong, native<uint32_t>(0x1C8) + End), false);
    row("range across widths", term("UCHR", AtOrBefore, ItemUshort, native<uint16_t>(0x100) + End), true);
    row("binary of another length is no number",
        term("BINA", Equal, ItemUlong, native<uint32_t>(0x434241) + End), false);
    row("and so not equal", term("BINA", NotEqual, ItemUlong, native<uint32_t>(0x434241) + End), true);
    row("attribute", term("ATTR", Equal, ItemUchar, raw("\x40\0")), true);
    row("sync id", term("SYID", Equal, ItemUlong, native<uint32_t>(77) + End), true);

    row("category in the list", raw("CTGR\xFE\x92\x0C\x02\0"), true);
    row("category not in the list", raw("CTGR\xFE\x92\x0C\x04\0"), false);
    row("unfiled, of a filed card", raw("CTGR\xFE\x92\x0C\xFE\0"), false);
    row("filed, of a filed card", raw("CTGR\xFE\x9B\x0C\xFE\0"), true);

    const QByteArray lower = timeValue(2003, 1, 1), inside = timeValue(2003, 6, 15, 12, 0, 0),
                     upper = timeValue(2004, 1, 1);
    const auto range = [&](const QByteArray &from, const QByteArray &to) {
        return term("TIME", AtOrAfter, ItemTime, from) + JoinConditions + condition(AtOrBefore, ItemTime, to);
    };
    row("in the range", range(lower, upper) + End, true);
    row("at both ends", range(inside, inside) + End, true);
    row("behind the range", range(lower, lower) + End, false);
    row("before the range", range(upper, upper) + End, false);
    row("joined, both hold", range(lower, upper) + JoinTerms + term("UCHR", Equal, ItemUchar, raw("\xC8\0")),
        true);
    row("joined, the first fails",
        range(upper, upper) + JoinTerms + term("UCHR", Equal, ItemUchar, raw("\xC8\0")), false);
    row("joined, the second fails",
        range(lower, upper) + JoinTerms + term("UCHR", Equal, ItemUchar, raw("\xC9\0")), false);
    row("text in front of a join",
        text("UTF8", Contains, "quick") + JoinTerms + term("UCHR", Equal, ItemUchar, raw("\xC9\0")), false);
    row("text in front of a join, holds",
        text("UTF8", Contains, "quick") + JoinTerms + term("UCHR", Equal, ItemUchar, raw("\xC8\0")), true);
    row("texts joined on one item",
        text("UTF8", Contains, "quick") + JoinConditions + condition(Contains, ItemTextUtf8, raw("cow\0")),
        false);
    row("three terms",
        text("UTF8", Contains, "quick") + JoinTerms + term("UCHR", Equal, ItemUchar, raw("\xC8")) +
            JoinTerms + text("SJS1", Whole, Utf8Tanaka),
        true);
    row("value bytes that look like a join", term("USH1", Equal, ItemUshort, raw("\xFE\x86\0")), true);

    row("an item the box lacks", text("XXXX", Contains, "quick"), false);
    row("an item the box lacks, not equal", text("XXXX", NotEqual, "quick"), false);
    row("a code in lower case", text("uTF8", Contains, "quick"), true);
    row("an unknown operator spoils the rest",
        text("UTF8", raw("\xFE\x99"), "quick") + JoinTerms + term("UCHR", Equal, ItemUchar, raw("\xC8\0")),
        false);

    row("any text item", text("    ", Contains, "QUICK"), true);
    row("any text item, Shift-JIS", text("    ", Whole, Utf8Tanaka), true);
    row("any text item, contained in Shift-JIS", text("    ", Contains, "ソート"), true);
    row("any text item, none", text("    ", Contains, "nobody"), false);
    row("any text item leaves binaries out", text("    ", Contains, "ABC"), false);
    row("any text item, both on one",
        text("    ", Contains, "quick") + JoinConditions + condition(Contains, ItemTextUtf8, raw("fox\0")),
        true);
    row("any text item, not on two",
        text("    ", Contains, "quick") + JoinConditions + condition(Contains, ItemTextUtf8, "ソート" + End),
        false);
    row("any item, a number", term("    ", Equal, ItemUchar, raw("\xC8\0")), false);
}

void ExpressionTest::cases()
{
    QFETCH(QByteArray, expression);
    QFETCH(bool, expected);
    const Schema schema = everyType();
    TestCard card(schema);
    card.set("UTF8", "The quick 田中ａ Fox")
        .set("SJS1", SjisTanaka)
        .set("SJS2", raw("\x83\x5C\x81\x5B\x83\x67")); // ソート
    card.set("ULNG", native<uint32_t>(7))
        .set("UCHR", raw("\xC8"))
        .set("BINA", "ABC")
        .set("USH1", raw("\xFE\x86"));
    card.set("ATTR", raw("\x40")).set("SYID", native<uint32_t>(77)).set("CTGR", raw("\1\2\3"));
    card.set("TIME", timeValue(2003, 6, 15, 12, 0, 0));
    QCOMPARE(matches(expression, schema, card), expected);
}

void ExpressionTest::anyText_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *name, const QByteArray &expression, bool expected) {
        QTest::newRow(name) << expression << expected;
    };
    // The card: see anyText().
    row("in the first text", text("    ", Contains, "SAPPORO"), true);
    row("at the end of the last text", text("    ", Contains, "of call"), true);
    row("in an item that is no text first, in a text then", text("    ", Contains, "port"), true);
    row("in an item that is no text", text("    ", Contains, "ary"), false);
    row("nowhere", text("    ", Contains, "harbour"), false);
    row("across two items", text("    ", Contains, "northbin"), false);
    row("across two items and what stands between",
        text("    ", Contains,
             "north\x02\x0B"
             "bin"),
        false);
    row("the empty text", text("    ", Contains, ""), true);
    row("two texts in one item",
        text("    ", Contains, "call") + JoinConditions + condition(Contains, ItemTextUtf8, raw("PORT\0")),
        true);
    row("two texts in different items",
        text("    ", Contains, "call") + JoinConditions + condition(Contains, ItemTextUtf8, raw("north\0")),
        false);
    row("one text in it, the other nowhere",
        text("    ", Contains, "call") + JoinConditions + condition(Contains, ItemTextUtf8, raw("harbour\0")),
        false);
    row("contained, and after another text",
        text("    ", Contains, "call") + JoinConditions + condition(AtOrAfter, ItemTextUtf8, raw("po\0")),
        true);
    row("contained, and not after it",
        text("    ", Contains, "call") + JoinConditions + condition(AtOrAfter, ItemTextUtf8, raw("q\0")),
        false);
    row("equal", text("    ", Equal, "SAPPORO north"), true);
    row("equal to a part of one", text("    ", Equal, "north"), false);
}

/** Records whose texts are all in UTF-8 are searched as one run of bytes, others item by item. */
void ExpressionTest::anyText()
{
    QFETCH(QByteArray, expression);
    QFETCH(bool, expected);
    for (const uint8_t unusedType : {ItemTextUtf8, ItemTextSjis}) {
        Schema schema;
        schema.add({codeOf("CITY"), ItemTextUtf8, 0, "City", 0});
        schema.add({codeOf("DATA"), ItemBinary, 0, "Data", 0});
        schema.add({codeOf("PORT"), ItemTextUtf8, 0, "Port", 0});
        schema.add({codeOf("NOTE"), unusedType, 0, "Note", 0});
        QCOMPARE(schema.hasPlainTexts(), unusedType == ItemTextUtf8);
        TestCard card(schema);
        card.set("CITY", "Sapporo north").set("DATA", "binary port").set("PORT", "port of call");
        QCOMPARE(matches(expression, schema, card), expected);
    }
}

void ExpressionTest::emptyMatchesEverything()
{
    const Schema schema = everyType();
    for (const QByteArray &bytes : {QByteArray(), raw("\0"), raw("\0TITL")}) {
        const auto expression = SearchExpression::parse(bytesOf(bytes));
        QVERIFY(expression);
        QVERIFY(expression->isEmpty());
        QVERIFY(expression->matches(schema, RecordView()));
    }
    QVERIFY(!SearchExpression::parse(bytesOf(text("UTF8", Equal, "a")))->isEmpty());
}

void ExpressionTest::truncations_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<QList<int>>("wholeAt"); // the shorter lengths that are expressions of their own
    QTest::newRow("category") << raw("CTGR\xFE\x92\x0C\x07\0") << QList<int>{};
    QTest::newRow("two numbers") << raw("RTYP\xFE\x90\x0B\xFF\xFE\x86MDAY\xFE\x90\x0B\0\0") << QList<int>{};
    QTest::newRow("range") << term("TIME", AtOrAfter, ItemTime, timeValue(2003, 1, 1)) + JoinConditions +
                                  condition(AtOrBefore, ItemTime, timeValue(2004, 1, 1)) + End
                           << QList<int>{};
    QTest::newRow("whole text") << text("TITL", Whole, "田中") << QList<int>{};
    QTest::newRow("ulong") << term("SYID", Equal, ItemUlong, native<uint32_t>(0x01020304) + End)
                           << QList<int>{};
    QTest::newRow("text joined") << text("TITL", Contains, "a") + JoinTerms + text("MEMO", Contains, "b")
                                 << QList<int>{9, 10};
}

void ExpressionTest::truncations()
{
    QFETCH(QByteArray, expression);
    QFETCH(QList<int>, wholeAt);
    QVERIFY(SearchExpression::parse(GuardedBytes(expression).bytes()));
    for (int length = 1; length < expression.size(); ++length) {
        const GuardedBytes cut(expression.left(length));
        const bool whole = wholeAt.contains(length);
        QVERIFY2(SearchExpression::parse(cut.bytes()).has_value() == whole,
                 qPrintable(QString::number(length)));
        QVERIFY2((SearchExpression::measure(cut.data(), size_t(length)) != 0) == whole,
                 qPrintable(QString::number(length)));
    }
}

void ExpressionTest::malformed_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no mark") << raw("TITL\x90\x11"
                                    "abc\0");
    QTest::newRow("unknown type") << raw("TITL\xFE\x90\x05"
                                         "abc\0");
    QTest::newRow("type 0") << raw("TITL\xFE\x90\0abc\0");
    QTest::newRow("no end behind a number") << raw("UCHR\xFE\x90\x0B\x07"
                                                   "abc\0");
    QTest::newRow("join of terms with nothing behind it") << raw("UCHR\xFE\x90\x0B\x07\xFE\x86\0");
    QTest::newRow("join of conditions with nothing behind it") << raw("UCHR\xFE\x90\x0B\x07\xFE\x84\0");
    QTest::newRow("unknown join") << raw("UCHR\xFE\x90\x0B\x07\xFE\x85UCHR\xFE\x90\x0B\x07\0");
    QTest::newRow("half a term behind a text") << raw("TITL\xFE\x90\x11"
                                                      "abc\0\xFE\x86TI");
    QTest::newRow("text without an end") << raw("TITL\xFE\x90\x11"
                                                "abc");
    QTest::newRow("a mark alone") << raw("\xFE");
    QTest::newRow("marks") << QByteArray(50, '\xFE');
}

void ExpressionTest::malformed()
{
    QFETCH(QByteArray, bytes);
    const GuardedBytes guarded(bytes);
    QVERIFY(!SearchExpression::parse(guarded.bytes()));
    QCOMPARE(SearchExpression::measure(guarded.data(), size_t(bytes.size())), size_t(0));
}

void ExpressionTest::measure_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::newRow("empty") << raw("\0");
    QTest::newRow("category") << raw("CTGR\xFE\x92\x0C\x07\0");
    QTest::newRow("text") << text("TITL", Contains, "abc");
    QTest::newRow("text joined") << text("TITL", Contains, "a") + JoinTerms + text("MEMO", Contains, "b");
    QTest::newRow("zero bytes in the value") << term("SYID", Equal, ItemUlong, native<uint32_t>(0) + End);
    QTest::newRow("text, then a number")
        << text("TITL", Contains, "a") + JoinTerms + raw("CTGR\xFE\x92\x0C\x07\0");
}

void ExpressionTest::measure()
{
    QFETCH(QByteArray, expression);
    const auto length = static_cast<size_t>(expression.size());
    QCOMPARE(SearchExpression::measure(GuardedBytes(expression).data(), length), length);
    const QByteArray followed = expression + "more of the caller's memory";
    QCOMPARE(SearchExpression::measure(GuardedBytes(followed).data(), size_t(followed.size())), length);
}

QTEST_GUILESS_MAIN(ExpressionTest)
#include "expressiontest.moc"
