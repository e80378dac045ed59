#include "querytext.h"
#include "ydicbytes_p.h"
#include "ydictables_p.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

/** The tables of prefectures and of variants, and the program that makes them. */
class TablesTest : public QObject
{
    Q_OBJECT
private slots:
    void prefecturesByNumber();
    void prefecturesInTheOrderOfTheLookup();
    void everyPairBothWays();
    void everyClassMember();
    void rowsByHand_data();
    void rowsByHand();
    void firstRows();
    void rowsAscend();
    void onlyTheCharactersOfTheTableAreFound();
    void badListIsRefused_data();
    void badListIsRefused();
    void goodListsAreTaken();
};

/* The standard form, then its variant. */
constexpr char16_t Pairs[] =
    u"りリ 芦蘆 鯵鰺 一１ 園薗 炎焔 煙烟 応應 鴬鶯 岡崗 仮假 箇個 蓋乢 蛎蠣 岳嶽 椛樺 竃竈 刈苅 諌諫 館舘 "
    u"棋碁 気氣 糾糺 挟挾 "
    u"狭狹 極亟 九９ 恵惠 渓溪 蛍螢 頚頸 鼓皷 五５ 効效 広廣 鉱砿 国國 斎齋 桜櫻 三３ 四４ 七７ 篠筱 蕊蘂 "
    u"称稱 条條 真眞 靭靱 "
    u"船舟 賎賤 曾曽 鼠鼡 蔵藏 体躰 滝瀧 沢澤 恥耻 中仲 瀦潴 壷壺 纏纒 伝傳 砺礪 島嶋 梼檮 涛濤 灯燈 当當 "
    u"栃杤 縄繩 二２ 迩邇 "
    u"禰祢 杯盃 梅楳 麦麥 櫨枦 八８ 桧檜 浜濱 付附 富冨 淵渕 仏佛 箆篦 峰峯 萌萠 槙槇 桝枡 侭儘 万萬 蓑簑 "
    u"弥彌 薮藪 湧涌 余餘 "
    u"与與 来來 竜龍 涙泪 篭籠 六６ 俎爼 埒埓 帚箒 悴忰 櫟檪 筍笋 艫舮 蟇蟆 銹鏥 鑪鈩 麩麸";

constexpr char16_t LookupOrder[] = u"愛知県 愛媛県 茨城県 岡山県 沖縄県 岩手県 岐阜県 宮崎県 宮城県 熊本県 "
                                   u"群馬県 広島県 香川県 高知県 佐賀県 "
                                   u"埼玉県 三重県 山形県 山口県 山梨県 滋賀県 秋田県 新潟県 青森県 静岡県 "
                                   u"石川県 千葉県 大分県 長崎県 長野県 "
                                   u"鳥取県 島根県 徳島県 栃木県 奈良県 富山県 福井県 福岡県 福島県 兵庫県 "
                                   u"鹿児島県 神奈川県 和歌山県 京都府 "
                                   u"大阪府 北海道 東京都";

struct Class
{
    uint16_t value;
    const char16_t *members; /**< the form that stands for them first */
};

constexpr Class Classes[] = {{0xFF00, u"ケがガヶ"},
                             {0xFE00, u"ツつッ"},
                             {0xFD00, u"ノの之"},
                             {0xFC00, u"剣劔剱"},
                             {0xFB00, u"兎菟莵"}};

QStringList words(const char16_t *text)
{
    return QString::fromUtf16(text).split(u' ');
}

uint16_t codeAt(int row)
{
    return ydic_u16(Yuragi_dat[row]);
}

/* By walking, unlike the searches; -1 when there is none. */
int rowOf(unsigned code)
{
    for (int row = 1; row < YDIC_VARIANT_ROWS; ++row) {
        if (codeAt(row) == code)
            return row;
    }
    return -1;
}

unsigned valueAt(int row)
{
    return Yuragi_dat[row][2] + 256U * Yuragi_dat[row][3];
}

QString nameIn(const void *row)
{
    return jisText(static_cast<const char *>(row));
}

void TablesTest::prefecturesByNumber()
{
    const char empty[YDIC_TDFK_ROW] = {};
    QCOMPARE(memcmp(Tdfk_tbl[0], empty, sizeof empty), 0);
    QCOMPARE(memcmp(Tdfk_tbl[48], empty, sizeof empty), 0);
    QCOMPARE(nameIn(Tdfk_tbl[1]), QString("北海道"));
    QCOMPARE(nameIn(Tdfk_tbl[13]), QString("東京都"));
    QCOMPARE(nameIn(Tdfk_tbl[14]), QString("神奈川県"));
    QCOMPARE(nameIn(Tdfk_tbl[26]), QString("京都府"));
    QCOMPARE(nameIn(Tdfk_tbl[41]), QString("佐賀県"));
    QCOMPARE(nameIn(Tdfk_tbl[47]), QString("沖縄県"));
    for (int number = 1; number <= 47; ++number) {
        const auto length = qstrlen(Tdfk_tbl[number]);
        QVERIFY(length == 6 || length == 8);
        QCOMPARE(memcmp(Tdfk_tbl[number] + length, empty, sizeof empty - length), 0);
    }
}

void TablesTest::prefecturesInTheOrderOfTheLookup()
{
    const QStringList names = words(LookupOrder);
    QCOMPARE(names.size(), 47);
    for (int row = 0; row < 47; ++row) {
        char name[9] = {};
        memcpy(name, Tdfk_dat[row], 8);
        QCOMPARE(nameIn(name), names[row]);
        QCOMPARE(nameIn(Tdfk_tbl[Tdfk_dat[row][8]]), names[row]);
    }
}

void TablesTest::everyPairBothWays()
{
    const QStringList pairs = words(Pairs);
    QCOMPARE(pairs.size(), 113);
    for (const QString &pair : pairs) {
        const int standard = rowOf(ZipDict::jisOf(pair[0].unicode()));
        const int variant = rowOf(ZipDict::jisOf(pair[1].unicode()));
        QVERIFY2(standard > 0 && variant > 0, qPrintable(pair));
        QCOMPARE(valueAt(standard), 0x8000U + unsigned(variant));
        QCOMPARE(valueAt(variant), unsigned(standard));

        const ydic_search typed = normalisedSearch(QString("川") + pair[1] + pair[0]);
        QCOMPARE(queryText(typed), QString("川") + pair[0] + pair[0]);
        QCOMPARE(int{typed.charInfo[1]}, variant);
        QCOMPARE(int{typed.charInfo[2]}, 0x8000 + variant);
        QCOMPARE(int{typed.flags}, YDIC_HAS_VARIANT);
    }
}

void TablesTest::everyClassMember()
{
    int members = 0;
    for (const Class &group : Classes) {
        const QString characters = QString::fromUtf16(group.members);
        for (const QChar member : characters) {
            QCOMPARE(valueAt(rowOf(ZipDict::jisOf(member.unicode()))), unsigned{group.value});
            const ydic_search typed = normalisedSearch(QString("川") + member);
            QCOMPARE(queryText(typed), QString("川") + characters[0]);
            QCOMPARE(int{typed.charInfo[1]}, int{group.value});
            QCOMPARE(int{typed.flags}, YDIC_HAS_VARIANT);
            ++members;
        }
    }
    QCOMPARE(members, 16);
}

void TablesTest::rowsByHand_data()
{
    QTest::addColumn<int>("standard");
    QTest::addColumn<int>("variant");
    QTest::newRow("ri") << 0x246A << 0x256A;
    QTest::newRow("five") << 0x385E << 0x2335;
    QTest::newRow("reed") << 0x3032 << 0x6943;
    QTest::newRow("garden") << 0x3160 << 0x3172;
    QTest::newRow("provisional") << 0x323E << 0x5071;
    QTest::newRow("oyster") << 0x3342 << 0x695A;
    QTest::newRow("mow") << 0x3422 << 0x3423;
    QTest::newRow("hall") << 0x345B << 0x345C;
    QTest::newRow("spirit") << 0x3524 << 0x5D66;
    QTest::newRow("broad") << 0x392D << 0x5722;
    QTest::newRow("country") << 0x3971 << 0x5422;
    QTest::newRow("purity") << 0x3A58 << 0x6337;
    QTest::newRow("cherry") << 0x3A79 << 0x5D2F;
    QTest::newRow("avenue") << 0x3E72 << 0x5B6A;
    QTest::newRow("waterfall") << 0x426C << 0x426D;
    QTest::newRow("stream") << 0x4274 << 0x5F37;
    QTest::newRow("island") << 0x4567 << 0x4568;
    QTest::newRow("cypress") << 0x4930 << 0x5B58;
    QTest::newRow("riches") << 0x4959 << 0x495A;
    QTest::newRow("ten thousand") << 0x4B7C << 0x685F;
    QTest::newRow("dragon") << 0x4E35 << 0x4E36;
    QTest::newRow("wheat") << 0x734F << 0x7350;
}

void TablesTest::rowsByHand()
{
    QFETCH(int, standard);
    QFETCH(int, variant);
    const auto bytesOf = [](int code) { return QByteArray{} + char(code >> 8) + char(code & 0xFF); };
    uint16_t variantRow = 0;
    uint16_t row = 0;
    uint16_t value = 0;
    QCOMPARE(ydic_variant(bytesOf(variant).constData(), &variantRow, &value), 1);
    QCOMPARE(int{codeAt(value)}, standard);
    QCOMPARE(ydic_variant(bytesOf(standard).constData(), &row, &value), 1);
    QCOMPARE(int{codeAt(row)}, standard);
    QCOMPARE(int{value}, 0x8000 + variantRow);
}

void TablesTest::firstRows()
{
    QCOMPARE(int{codeAt(0)}, 0);
    QCOMPARE(valueAt(0), 0x8000U);
    for (int digit = 1; digit <= 9; ++digit)
        QCOMPARE(int{codeAt(digit)}, 0x2330 + digit);
}

void TablesTest::rowsAscend()
{
    for (int row = 1; row < YDIC_VARIANT_ROWS; ++row)
        QVERIFY(codeAt(row - 1) < codeAt(row));
}

void TablesTest::onlyTheCharactersOfTheTableAreFound()
{
    int found = 0;
    for (unsigned code = 0x2121; code <= 0x7E7E; ++code) {
        const char bytes[] = {static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
        uint16_t row = 0;
        uint16_t value = 0;
        const bool isFound = ydic_variant(bytes, &row, &value) == 1;
        QCOMPARE(isFound, rowOf(code) > 0);
        if (!isFound)
            continue;
        QCOMPARE(int{row}, rowOf(code));
        QCOMPARE(unsigned{value}, valueAt(row));
        ++found;
    }
    QCOMPARE(found, 242);
}

/* Runs the program on two lists. */
int made(const QByteArray &prefectures, const QByteArray &variants, QByteArray *tables = nullptr)
{
    QTemporaryDir directory;
    const auto path = [&directory](const char *name) { return directory.filePath(name); };
    const auto write = [&path](const char *name, const QByteArray &bytes) {
        QFile file(path(name));
        if (!file.open(QFile::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("can't write %s", name);
    };
    write("prefectures", prefectures);
    write("variants", variants);
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + "/maketables",
                  {path("prefectures"), path("variants"), path("tables")});
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return -1;
    QFile file(path("tables"));
    if (tables && file.open(QFile::ReadOnly))
        *tables = file.readAll();
    const bool isWritten = QFile::exists(path("tables"));
    const bool isExplained = process.readAllStandardError().startsWith("maketables: ");
    return isWritten == (process.exitCode() == 0) && isExplained == !isWritten ? process.exitCode() : -1;
}

QByteArray list(const char *name)
{
    QFile file(QString(TEST_LISTS) + '/' + name);
    if (!file.open(QFile::ReadOnly))
        qFatal("can't read %s", name);
    return file.readAll();
}

void TablesTest::badListIsRefused_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    const auto row = [](const char *name, const char *file, const char *from, const char *to) {
        QTest::newRow(name) << QByteArray(file) << QByteArray(from) << QByteArray(to);
    };
    row("a prefecture too few", "prefectures.txt", "\n三重県", "");
    row("a prefecture too many", "prefectures.txt", "三重県", "三重県\n四重県");
    row("a prefecture twice", "prefectures.txt", "三重県", "滋賀県");
    row("a prefecture of two characters", "prefectures.txt", "三重県", "三県");
    row("a prefecture without an ending", "prefectures.txt", "三重県", "三重市");
    row("a prefecture of another kind", "prefectures.txt", "三重県", "三重府");
    row("a prefecture not in JIS", "prefectures.txt", "三重県", "①重県");
    row("a pair too few", "variants.txt", "芦 蘆\n", "");
    row("a pair too many", "variants.txt", "芦 蘆", "芦 蘆\n甲 乙");
    row("a form twice", "variants.txt", "芦 蘆", "芦 烟");
    row("a form alone", "variants.txt", "芦 蘆", "芦");
    row("a form of two characters", "variants.txt", "芦 蘆", "芦 蘆蘆");
    row("a form not in JIS", "variants.txt", "芦 蘆", "芦 髙");
    row("a digit is missing", "variants.txt", "一 １", "一 甲");
    row("an early character", "variants.txt", "芦 蘆", "芦 ０");
    row("no value of a class", "variants.txt", "FF00 ", "FF01 ");
    row("a class too low", "variants.txt", "FB00 ", "FA00 ");
    row("a member too few", "variants.txt", "ケ が ガ", "ケ が");
    row("a class of pairs", "variants.txt", "兎 菟 莵", "兎");
}

void TablesTest::badListIsRefused()
{
    QFETCH(QByteArray, list);
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    QByteArray prefectures = ::list("prefectures.txt");
    QByteArray variants = ::list("variants.txt");
    QByteArray &changed = list == "prefectures.txt" ? prefectures : variants;
    QCOMPARE(changed.count(from), 1);
    changed.replace(from, to);
    QCOMPARE(made(prefectures, variants), 1);
}

void TablesTest::goodListsAreTaken()
{
    QByteArray tables;
    QCOMPARE(made(list("prefectures.txt"), list("variants.txt"), &tables), 0);
    QVERIFY(tables.contains("Tdfk_tbl") && tables.contains("Tdfk_dat") && tables.contains("Yuragi_dat"));
    QByteArray again;
    QCOMPARE(made(list("prefectures.txt"), list("variants.txt") + "\n# the end\n\n", &again), 0);
    QCOMPARE(again, tables);
}

QTEST_GUILESS_MAIN(TablesTest)
#include "tablestest.moc"
