#include "kypdatabaseiteminfo.h"
#include "kypdatamanagerindexinfo.h"
#include "kypdatamanageriteminfo.h"
#include "kypdatamanagersortkey.h"
#include "logcapture.h"
#include <QTest>

using Info = KyPDataBaseItemInfo;

namespace {

const QString TooLong = QStringLiteral("too long indexFname or searchExp or sortExp");

QByteArray codeOf(const KyPDataManagerItem &item)
{
    return QByteArray(item.code, sizeof item.code);
}

QByteArray sortExpression(const KyPDataManagerSortKey &keys)
{
    QByteArray bytes(256, 'x');
    const unsigned long length = keys.createSortExp(bytes.data(), 256);
    return bytes.left(static_cast<qsizetype>(length));
}

} // namespace

/** The value classes that describe a box. */
class DescriptorsTest : public QObject
{
    Q_OBJECT
private slots:
    void itemOperations_data();
    void itemOperations();
    void itemsKeepTheirOrder();
    void itemCodeIsFourBytes();
    void itemCopiesAreIndependent();

    void sortOperator_data();
    void sortOperator();
    void sortKeysFollowEachOther();
    void sortExpressionNeedsItsRoom_data();
    void sortExpressionNeedsItsRoom();
    void sortKeyCopiesAreIndependent();

    void indexIsKept();
    void indexLimits_data();
    void indexLimits();
    void indexCopiesAreIndependent();

    void fieldIsKept();
    void unknownFieldIsEmpty();
    void fieldIsReplaced();
    void fieldCopiesAreIndependent();
    void fieldBecomesItem_data();
    void fieldBecomesItem();
    void fieldsBecomeItemsByNumber();
    void flagDecidesCaseOfFirstLetter_data();
    void flagDecidesCaseOfFirstLetter();
};

void DescriptorsTest::itemOperations_data()
{
    using Items = KyPDataManagerItemInfo;
    using Add = std::function<void(Items &)>;
    QTest::addColumn<Add>("add");
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("label");
    const auto row = [](const char *name, const Add &add, const char *code, int type, int kind,
                        const char *label) {
        QTest::newRow(name) << add << QByteArray(code) << type << kind << QString::fromLatin1(label);
    };
    row(
        "text", [](Items &i) { i.addTextItem("AAAA", "a"); }, "AAAA", 17, 18, "a");
    row(
        "uchar", [](Items &i) { i.addUcharItem("BBBB", "b"); }, "BBBB", 11, 13, "b");
    row(
        "bit", [](Items &i) { i.addBitItem("CCCC", "c"); }, "CCCC", 6, 13, "c");
    row(
        "ushort", [](Items &i) { i.addUshortItem("DDDD", "d", false); }, "DDDD", 8, 14, "d");
    row(
        "ushort alt", [](Items &i) { i.addUshortItem("EEEE", "e", true); }, "EEEE", 10, 14, "e");
    row(
        "ulong", [](Items &i) { i.addUlongItem("FFFF", "f"); }, "FFFF", 18, 15, "f");
    row(
        "category", [](Items &i) { i.addCategoryItem(); }, "CTGR", 12, 8, "");
    row(
        "color", [](Items &i) { i.addColorItem("GGGG", "g"); }, "GGGG", 13, 12, "g");
    row(
        "time", [](Items &i) { i.addTimeItem("HHHH", "h"); }, "HHHH", 4, 6, "h");
    row(
        "binary", [](Items &i) { i.addBinaryItem("IIII", "i"); }, "IIII", 9, 11, "i");
}

void DescriptorsTest::itemOperations()
{
    QFETCH(std::function<void(KyPDataManagerItemInfo &)>, add);
    KyPDataManagerItemInfo items;
    add(items);
    QCOMPARE(items.entries().size(), 1);
    const KyPDataManagerItem item = items.entries().first();
    QTEST(codeOf(item), "code");
    QTEST(int(item.type), "type");
    QTEST(item.kind, "kind");
    QTEST(item.label, "label");
    QVERIFY(!item.label.isNull());
}

void DescriptorsTest::itemsKeepTheirOrder()
{
    KyPDataManagerItemInfo items;
    items.addTimeItem("ZZZZ", "last letter first");
    items.addCategoryItem();
    items.addTextItem("AAAA", "first letter last");
    QByteArrayList codes;
    for (const KyPDataManagerItem &item : items.entries())
        codes.append(codeOf(item));
    QCOMPARE(codes, (QByteArrayList{"ZZZZ", "CTGR", "AAAA"}));
}

void DescriptorsTest::itemCodeIsFourBytes()
{
    KyPDataManagerItemInfo items;
    items.addTextItem("ABCDEF", "longer");
    items.addTextItem("A\0CD", "a zero inside");
    QCOMPARE(codeOf(items.entries().at(0)), QByteArray("ABCD"));
    QCOMPARE(codeOf(items.entries().at(1)), QByteArray("A\0CD", 4));
}

void DescriptorsTest::itemCopiesAreIndependent()
{
    KyPDataManagerItemInfo first;
    first.addTextItem("AAAA", "a");
    KyPDataManagerItemInfo second = first;
    KyPDataManagerItemInfo third;
    third = first;
    second.addTextItem("BBBB", "b");
    first.addTextItem("CCCC", "c");
    first.addTextItem("DDDD", "d");
    QCOMPARE(first.entries().size(), 3);
    QCOMPARE(second.entries().size(), 2);
    QCOMPARE(codeOf(second.entries().at(1)), QByteArray("BBBB"));
    QCOMPARE(third.entries().size(), 1);
}

void DescriptorsTest::sortOperator_data()
{
    QTest::addColumn<bool>("textOrder");
    QTest::addColumn<bool>("ascending");
    QTest::addColumn<QByteArray>("expression");
    QTest::newRow("text ascending") << true << true << QByteArray("NAPR\xFE\x80\0", 7);
    QTest::newRow("text descending") << true << false << QByteArray("NAPR\xFE\x81\0", 7);
    QTest::newRow("plain ascending") << false << true << QByteArray("NAPR\xFE\x82\0", 7);
    QTest::newRow("plain descending") << false << false << QByteArray("NAPR\xFE\x83\0", 7);
}

void DescriptorsTest::sortOperator()
{
    QFETCH(bool, textOrder);
    QFETCH(bool, ascending);
    KyPDataManagerSortKey keys;
    keys.addSortKey("NAPR", textOrder, ascending);
    QTEST(sortExpression(keys), "expression");
}

void DescriptorsTest::sortKeysFollowEachOther()
{
    KyPDataManagerSortKey keys;
    QCOMPARE(sortExpression(keys), QByteArray("\0", 1));
    keys.addSortKey("BBBBxx", true, true);
    keys.addSortKey("AAAA", false, false);
    QCOMPARE(sortExpression(keys), QByteArray("BBBB\xFE\x80"
                                              "AAAA\xFE\x83\0",
                                              13));
}

void DescriptorsTest::sortExpressionNeedsItsRoom_data()
{
    QTest::addColumn<int>("keys");
    QTest::addColumn<int>("room");
    QTest::addColumn<int>("length");
    QTest::newRow("no key in no room") << 0 << 0 << 0;
    QTest::newRow("no key in 1 byte") << 0 << 1 << 1;
    QTest::newRow("one key in 6 bytes") << 1 << 6 << 0;
    QTest::newRow("one key in 7 bytes") << 1 << 7 << 7;
    QTest::newRow("eight keys in 50 bytes") << 8 << 50 << 49;
    QTest::newRow("nine keys in 50 bytes") << 9 << 50 << 0;
    QTest::newRow("nine keys in 55 bytes") << 9 << 55 << 55;
}

void DescriptorsTest::sortExpressionNeedsItsRoom()
{
    QFETCH(int, keys);
    QFETCH(int, room);
    QFETCH(int, length);
    KyPDataManagerSortKey sort;
    for (int i = 0; i < keys; ++i)
        sort.addSortKey("NAPR", true, true);
    QByteArray bytes(64, 'x');
    QCOMPARE(int(sort.createSortExp(bytes.data(), static_cast<unsigned long>(room))), length);
    QCOMPARE(bytes.mid(length), QByteArray(64 - length, 'x'));
}

void DescriptorsTest::sortKeyCopiesAreIndependent()
{
    KyPDataManagerSortKey first;
    first.addSortKey("AAAA", true, true);
    KyPDataManagerSortKey second = first;
    second.addSortKey("BBBB", true, true);
    QCOMPARE(sortExpression(first).size(), 7);
    QCOMPARE(sortExpression(second).size(), 13);
}

void DescriptorsTest::indexIsKept()
{
    KyPDataManagerIndexInfo indexes;
    indexes.addIndexInfo("F0:ONE.IDX", "s\0arch", 6, "sort\0", 5);
    indexes.addIndexInfo("F0:TWO.IDX", nullptr, 0, nullptr, 0);
    QCOMPARE(indexes.entries().size(), 2);
    const KyPDataManagerIndexEntry one = indexes.entries().at(0);
    QCOMPARE(one.indexFile, "F0:ONE.IDX");
    QCOMPARE(QByteArray(one.searchExp, int(one.searchLength)), QByteArray("s\0arch", 6));
    QCOMPARE(QByteArray(one.sortExp, int(one.sortLength)), QByteArray("sort\0", 5));
    const KyPDataManagerIndexEntry two = indexes.entries().at(1);
    QCOMPARE(two.indexFile, "F0:TWO.IDX");
    QCOMPARE(two.searchLength, 0u);
    QCOMPARE(two.sortLength, 0u);
}

void DescriptorsTest::indexLimits_data()
{
    QTest::addColumn<int>("name");
    QTest::addColumn<int>("search");
    QTest::addColumn<int>("sort");
    QTest::addColumn<bool>("taken");
    QTest::newRow("all at their limits") << 255 << 50 << 50 << true;
    QTest::newRow("name of 256") << 256 << 50 << 50 << false;
    QTest::newRow("search of 51") << 10 << 51 << 7 << false;
    QTest::newRow("sort of 51") << 10 << 9 << 51 << false;
    QTest::newRow("empty") << 0 << 0 << 0 << true;
}

void DescriptorsTest::indexLimits()
{
    QFETCH(int, name);
    QFETCH(int, search);
    QFETCH(int, sort);
    QFETCH(bool, taken);
    const QByteArray bytes(64, 'e');
    const QByteArray path(name, 'n');
    KyPDataManagerIndexInfo indexes;
    LogCapture log;
    indexes.addIndexInfo(path, bytes, static_cast<unsigned long>(search), bytes,
                         static_cast<unsigned long>(sort));
    QCOMPARE(log.lines(), taken ? QStringList() : QStringList(TooLong));
    QCOMPARE(indexes.entries().size(), taken ? 1 : 0);
    if (!taken)
        return;
    const KyPDataManagerIndexEntry entry = indexes.entries().first();
    QCOMPARE(QByteArray(entry.indexFile), path);
    QCOMPARE(QByteArray(entry.searchExp, int(entry.searchLength)), bytes.left(search));
    QCOMPARE(QByteArray(entry.sortExp, int(entry.sortLength)), bytes.left(sort));
}

void DescriptorsTest::indexCopiesAreIndependent()
{
    KyPDataManagerIndexInfo first;
    first.addIndexInfo("one", nullptr, 0, nullptr, 0);
    KyPDataManagerIndexInfo second = first;
    second.addIndexInfo("two", nullptr, 0, nullptr, 0);
    QCOMPARE(first.entries().size(), 1);
    QCOMPARE(second.entries().size(), 2);
}

void DescriptorsTest::fieldIsKept()
{
    Info table;
    table.addItemInfo(7, "ADAYxx", Info::UnsignedChar, "all day", true);
    const KyPdbItemInfo field = table.itemInfo(7);
    QCOMPARE(QByteArray(field.code, 4), QByteArray("ADAY"));
    QCOMPARE(field.type, Info::UnsignedChar);
    QCOMPARE(field.label, QString("all day"));
    QCOMPARE(field.flag, true);
}

void DescriptorsTest::unknownFieldIsEmpty()
{
    Info table;
    table.addItemInfo(7, "ADAY", Info::UnsignedChar, "all day", true);
    for (const int number : {6, 8, -1, 0, 100000}) {
        const KyPdbItemInfo field = table.itemInfo(number);
        QCOMPARE(QByteArray(field.code, 4), QByteArray(4, '\0'));
        QCOMPARE(field.type, Info::Text);
        QVERIFY(field.label.isEmpty());
        QCOMPARE(field.flag, false);
    }
    KyPDataManagerItemInfo items;
    table.toKyPdtmItemInfo(&items);
    QCOMPARE(items.entries().size(), 1); // asking made no field
}

void DescriptorsTest::fieldIsReplaced()
{
    Info table;
    table.addItemInfo(1, "AAAA", Info::Text, "a", true);
    table.addItemInfo(1, "BBBB", Info::Time, "b", false);
    QCOMPARE(QByteArray(table.itemInfo(1).code, 4), QByteArray("BBBB"));
    QCOMPARE(table.itemInfo(1).type, Info::Time);
    QCOMPARE(table.itemInfo(1).flag, false);
}

void DescriptorsTest::fieldCopiesAreIndependent()
{
    Info first;
    first.addItemInfo(1, "AAAA", Info::Text, "a", true);
    Info second = first;
    Info third;
    third = first;
    second.addItemInfo(1, "BBBB", Info::Text, "b", true);
    QCOMPARE(QByteArray(first.itemInfo(1).code, 4), QByteArray("AAAA"));
    QCOMPARE(QByteArray(second.itemInfo(1).code, 4), QByteArray("BBBB"));
    QCOMPARE(QByteArray(third.itemInfo(1).code, 4), QByteArray("AAAA"));
}

void DescriptorsTest::fieldBecomesItem_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<Info::ItemType>("itemType");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QByteArray>("code");
    QTest::newRow("text") << 0 << Info::Text << 17 << 18 << QByteArray("CODE");
    QTest::newRow("unsigned char") << 1 << Info::UnsignedChar << 11 << 13 << QByteArray("CODE");
    QTest::newRow("unsigned short") << 2 << Info::UnsignedShort << 8 << 14 << QByteArray("CODE");
    QTest::newRow("unsigned long") << 3 << Info::UnsignedLong << 18 << 15 << QByteArray("CODE");
    QTest::newRow("color") << 4 << Info::Color << 13 << 12 << QByteArray("CODE");
    QTest::newRow("time") << 5 << Info::Time << 4 << 6 << QByteArray("CODE");
    QTest::newRow("binary") << 6 << Info::Binary << 9 << 11 << QByteArray("CODE");
    QTest::newRow("category") << 7 << Info::Category << 12 << 8 << QByteArray("CTGR");
}

void DescriptorsTest::fieldBecomesItem()
{
    QFETCH(int, number);
    QFETCH(Info::ItemType, itemType);
    QCOMPARE(int(itemType), number);
    Info table;
    table.addItemInfo(3, "CODE", itemType, "label", true);
    KyPDataManagerItemInfo items;
    table.toKyPdtmItemInfo(&items);
    QCOMPARE(items.entries().size(), 1);
    const KyPDataManagerItem item = items.entries().first();
    QTEST(codeOf(item), "code");
    QTEST(int(item.type), "type");
    QTEST(item.kind, "kind");
    QCOMPARE(item.label, itemType == Info::Category ? QString("") : QString("label"));
}

void DescriptorsTest::fieldsBecomeItemsByNumber()
{
    Info table;
    for (const int number : {10, 2, 9, 1})
        table.addItemInfo(number, QByteArray("IT").append(QByteArray::number(number + 10)), Info::Text, "",
                          true);
    KyPDataManagerItemInfo items;
    items.addTextItem("OLD1", "was there before");
    table.toKyPdtmItemInfo(&items);
    QByteArrayList codes;
    for (const KyPDataManagerItem &item : items.entries())
        codes.append(codeOf(item));
    QCOMPARE(codes, (QByteArrayList{"OLD1", "IT11", "IT12", "IT19", "IT20"}));
}

void DescriptorsTest::flagDecidesCaseOfFirstLetter_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<QByteArray>("declared");
    QTest::newRow("set") << QByteArray("TIM1") << true << QByteArray("TIM1");
    QTest::newRow("clear") << QByteArray("TIM1") << false << QByteArray("tIM1");
    QTest::newRow("clear, lower already") << QByteArray("tIM1") << false << QByteArray("tIM1");
    QTest::newRow("clear, no letter") << QByteArray("1IME") << false << QByteArray("1IME");
    QTest::newRow("clear, no ASCII") << QByteArray("\xC0IME") << false << QByteArray("\xC0IME");
}

void DescriptorsTest::flagDecidesCaseOfFirstLetter()
{
    QFETCH(QByteArray, code);
    QFETCH(bool, flag);
    Info table;
    table.addItemInfo(1, code, Info::Time, "time", flag);
    KyPDataManagerItemInfo items;
    table.toKyPdtmItemInfo(&items);
    QTEST(codeOf(items.entries().first()), "declared");
    QCOMPARE(QByteArray(table.itemInfo(1).code, 4), code);
}

QTEST_GUILESS_MAIN(DescriptorsTest)
#include "descriptorstest.moc"
