#include "config.h"
#include "displayfixture.h"
#include "kycolumnlist.h"
#include "kymisc.h"
#include "logcapture.h"
#include <climits>
#include <QtTest>

/** A list of files, with columns of its own. */
class FileList : public QWidget, public KyColumnList
{
    Q_OBJECT
public:
    explicit FileList(int columns) : widths(columns, 1) {}

    [[nodiscard]] int columnCount() const override { return static_cast<int>(widths.size()); }
    [[nodiscard]] int columnWidth(int column) const override { return widths.at(column); }
    void setColumnWidth(int column, int width) override { widths[column] = width; }
    void adjustContentsSize() override { adjustedWidths.append(widths); }

    QList<int> widths;
    QList<QList<int>> adjustedWidths; ///< the widths at each adjustment
};

class ColumnWidthTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void rulesAtEachResolution_data();
    void rulesAtEachResolution();
    void stretchSharesTheRest();
    void negativeRestIsSharedAsIfItWereLeft();
    void evenShare_data();
    void evenShare();
    void textIsMeasuredInTheFontOfTheWidget();
    void keptWidthWins_data();
    void keptWidthWins();
    void hostileNumbers_data();
    void hostileNumbers();
    void hostileKeptWidth();
    void columnsThatTheWidgetHasNot();
    void noColumns();
    void widthSetIsTheWidthHad();
    void userMayChangeTheWidths();

    void writesInUnitsOfTheScale_data();
    void writesInUnitsOfTheScale();
    void writesAllColumnsOfTheWidget();
    void writesOnlyColumnsThatAreThere();
    void widthIsWrittenUnsigned();
    void bothOrientationsKeepTheirOwn();
    void currentGroupCounts();
    void allFormsOfTheCallsAgree();

    void rotation();
    void rotationOfATreeGoesToTheLeftEdge();
    void rotationOfAFileListAdjustsIt();
    void rotationWithoutConfig();

    void otherWidgetIsRefused();
    void noWidgetIsRefused();
};

namespace {

using Columns = QList<KyMisc::KyListColumnInfo>;

KyMisc::KyListColumnInfo scaled(int value)
{
    return {KyMisc::ColumnScaled, QString(), value};
}

KyMisc::KyListColumnInfo text(const QString &text)
{
    return {KyMisc::ColumnText, text, 0};
}

KyMisc::KyListColumnInfo stretch(int weight)
{
    return {KyMisc::ColumnStretch, QString(), weight};
}

KyMisc::KyListColumnInfo pixels(int value)
{
    return {KyMisc::ColumnPixels, QString(), value};
}

/** A settings file that isn't there yet. */
QString newFile()
{
    static int number = 0;
    return QDir::homePath() + "/columns" + QString::number(++number) + ".conf";
}

/** A tree of as many columns. */
class Tree : public QTreeWidget
{
    Q_OBJECT
public:
    explicit Tree(qsizetype columns) { setColumnCount(static_cast<int>(columns)); }

    [[nodiscard]] QList<int> widths() const
    {
        QList<int> list;
        for (int i = 0; i < columnCount(); ++i)
            list.append(columnWidth(i));
        return list;
    }
};

/** The widths that a tree gets; those of a list of files are the same. */
QList<int> widthsFor(const Columns &columns, Config *config = nullptr)
{
    Tree tree(columns.size());
    KyMisc::setListColumnsWidth(&tree, columns, config);
    FileList list(static_cast<int>(columns.size()));
    KyMisc::setListColumnsWidth(&list, columns, config);
    return tree.widths() == list.widths ? tree.widths() : QList<int>();
}

// A desktop on which the columns get 200 pixels: 16 for the scroll bar, 4 and 4 for borders.
constexpr char Desktop200[] = "224x320";

} // namespace

void ColumnWidthTest::initTestCase()
{
    QApplication::setStyle(new NarrowScrollBars);
}

void ColumnWidthTest::init()
{
    setDisplay(72, Desktop200);
}

void ColumnWidthTest::rulesAtEachResolution_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QByteArray>("screen");
    QTest::addColumn<int>("scale");
    QTest::addColumn<int>("total");
    QTest::newRow("portrait, 72 dpi") << 72 << QByteArray("480x640") << 1 << 456;
    QTest::newRow("portrait, 143 dpi") << 143 << QByteArray("480x640") << 1 << 456;
    QTest::newRow("portrait, 144 dpi") << 144 << QByteArray("480x640") << 2 << 452;
    QTest::newRow("portrait, 200 dpi") << 200 << QByteArray("480x640") << 2 << 452;
    QTest::newRow("landscape, 72 dpi") << 72 << QByteArray("640x480") << 1 << 616;
    QTest::newRow("landscape, 143 dpi") << 143 << QByteArray("640x480") << 1 << 616;
    QTest::newRow("landscape, 144 dpi") << 144 << QByteArray("640x480") << 2 << 612;
    QTest::newRow("landscape, 200 dpi") << 200 << QByteArray("640x480") << 2 << 612;
}

void ColumnWidthTest::rulesAtEachResolution()
{
    QFETCH(int, dpi);
    QFETCH(QByteArray, screen);
    QFETCH(int, scale);
    QFETCH(int, total);
    setDisplay(dpi, screen);
    const int textWidth = QFontMetrics(QTreeWidget().font()).horizontalAdvance("Name") + 8 * scale;
    const int rest = total - 50 * scale - textWidth - 31;
    QCOMPARE(widthsFor({scaled(50), text("Name"), stretch(2), pixels(31), stretch(1)}),
             QList<int>({50 * scale, textWidth, rest * 2 / 3, 31, rest / 3}));
}

void ColumnWidthTest::stretchSharesTheRest()
{
    QCOMPARE(widthsFor({stretch(1), stretch(3)}), QList<int>({50, 150}));
    QCOMPARE(widthsFor({stretch(1), stretch(1), stretch(1)}), QList<int>({66, 66, 66}));
    QCOMPARE(widthsFor({stretch(0), stretch(1)}), QList<int>({0, 200}));
}

void ColumnWidthTest::negativeRestIsSharedAsIfItWereLeft()
{
    QCOMPARE(widthsFor({pixels(300), stretch(1), stretch(3)}), QList<int>({300, 25, 75}));
}

void ColumnWidthTest::evenShare_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("value");
    QTest::newRow("weights of 0") << int(KyMisc::ColumnStretch) << 0;
    QTest::newRow("type above the others") << 4 << 17;
    QTest::newRow("type below the others") << -1 << 17;
    QTest::newRow("largest type") << INT_MAX << 17;
}

void ColumnWidthTest::evenShare()
{
    QFETCH(int, type);
    QFETCH(int, value);
    QCOMPARE(widthsFor({{type, "text", value}, pixels(20), pixels(20)}), QList<int>({66, 20, 20}));
}

void ColumnWidthTest::textIsMeasuredInTheFontOfTheWidget()
{
    for (const int points : {8, 24}) {
        Tree tree(1);
        QFont font = tree.font();
        font.setPointSize(points);
        tree.setFont(font);
        KyMisc::setListColumnsWidth(&tree, {text("Filename")}, nullptr);
        QCOMPARE(tree.columnWidth(0), QFontMetrics(font).horizontalAdvance("Filename") + 8);
    }
}

void ColumnWidthTest::keptWidthWins_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("width");
    QTest::newRow("kept") << "33" << 66;
    QTest::newRow("1") << "1" << 2;
    QTest::newRow("0 counts as not kept") << "0" << 40;
    QTest::newRow("negative") << "-33" << 40;
    QTest::newRow("no number") << "wide" << 40;
    QTest::newRow("beyond 32 bits") << "4294967329" << 40;
    QTest::newRow("empty") << "" << 40;
}

void ColumnWidthTest::keptWidthWins()
{
    QFETCH(QString, value);
    QFETCH(int, width);
    setDisplay(144, "480x640");
    Config config(newFile(), Config::File);
    config.writeEntry("pcolw1_h", value);
    config.writeEntry("pcolw0_w", "77"); // of the other orientation
    const Columns others{scaled(20), stretch(1), text("x"), pixels(40)};
    for (const auto &column : others) {
        Tree tree(2);
        KyMisc::setListColumnsWidth(&tree, {scaled(10), column}, nullptr);
        const int byRule = tree.columnWidth(1);
        KyMisc::setListColumnsWidth(&tree, {scaled(10), column}, config);
        QCOMPARE(tree.widths(), QList<int>({20, width == 40 ? byRule : width}));
    }
}

void ColumnWidthTest::hostileNumbers_data()
{
    QTest::addColumn<Columns>("columns");
    QTest::addColumn<QList<int>>("widths");
    const int widest = 32767;
    QTest::newRow("widest scaled") << Columns{scaled(INT_MAX)} << QList<int>{widest};
    QTest::newRow("narrowest scaled") << Columns{scaled(INT_MIN)} << QList<int>{0};
    QTest::newRow("widest pixels") << Columns{pixels(INT_MAX)} << QList<int>{widest};
    QTest::newRow("negative pixels") << Columns{pixels(-1)} << QList<int>{0};
    QTest::newRow("just within") << Columns{pixels(widest)} << QList<int>{widest};
    QTest::newRow("just beyond") << Columns{pixels(widest + 1)} << QList<int>{widest};
    QTest::newRow("weights that cancel out")
        << Columns{stretch(5), stretch(-5), pixels(7)} << QList<int>{66, 66, 7};
    QTest::newRow("negative weight") << Columns{stretch(-1), stretch(3)} << QList<int>{0, 300};
    QTest::newRow("weights beyond 32 bits")
        << Columns{stretch(INT_MAX), stretch(INT_MAX)} << QList<int>{100, 100};
    QTest::newRow("largest weight, almost no sum")
        << Columns{stretch(INT_MAX), stretch(-(INT_MAX - 1))} << QList<int>{widest, 0};
    QTest::newRow("largest weight of the largest rest")
        << Columns{scaled(INT_MAX), scaled(INT_MAX), scaled(INT_MAX), stretch(INT_MAX)}
        << QList<int>{widest, widest, widest, widest};
    QTest::newRow("smallest weight of the largest rest")
        << Columns{scaled(INT_MIN), scaled(INT_MIN), stretch(INT_MIN), stretch(1)}
        << QList<int>{0, 0, widest, 0};
}

void ColumnWidthTest::hostileNumbers()
{
    QFETCH(Columns, columns);
    QTEST(widthsFor(columns), "widths");
    setDisplay(576, "8000x8000");
    for (const int width : widthsFor(columns))
        QVERIFY(width >= 0 && width <= 32767);
}

void ColumnWidthTest::hostileKeptWidth()
{
    setDisplay(576, "480x640");
    Config config(newFile(), Config::File);
    config.writeEntry("pcolw0_h", INT_MAX);
    config.writeEntry("pcolw1_h", INT_MIN);
    QCOMPARE(widthsFor({pixels(10), pixels(10)}, &config), QList<int>({32767, 10}));
}

void ColumnWidthTest::columnsThatTheWidgetHasNot()
{
    Tree tree(1);
    KyMisc::setListColumnsWidth(&tree, {stretch(1), stretch(3)}, nullptr);
    QCOMPARE(tree.widths(), QList<int>{50}); // they still take their share
    FileList list(1);
    KyMisc::setListColumnsWidth(&list, {stretch(1), stretch(3)}, nullptr);
    QCOMPARE(list.widths, QList<int>{50});
}

void ColumnWidthTest::noColumns()
{
    FileList list(2);
    list.widths = {11, 12};
    KyMisc::setListColumnsWidth(&list, {}, nullptr);
    QCOMPARE(list.widths, QList<int>({11, 12}));
}

void ColumnWidthTest::widthSetIsTheWidthHad()
{
    Tree tree(3);
    tree.header()->setMinimumSectionSize(60);
    tree.header()->setSectionResizeMode(QHeaderView::Stretch);
    tree.resize(600, 200);
    tree.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tree));
    KyMisc::setListColumnsWidth(&tree, {pixels(5), pixels(100), pixels(70)}, nullptr);
    QCOMPARE(tree.widths(), QList<int>({5, 100, 70}));
    tree.resize(500, 200);
    QCoreApplication::processEvents();
    QCOMPARE(tree.widths(), QList<int>({5, 100, 70}));
}

void ColumnWidthTest::userMayChangeTheWidths()
{
    Tree tree(2);
    tree.resize(600, 200);
    tree.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tree));
    const Columns columns{pixels(100), pixels(70)};
    KyMisc::setListColumnsWidth(&tree, columns, nullptr);
    QWidget *header = tree.header()->viewport();
    const QPoint edge(99, header->height() / 2);
    QTest::mousePress(header, Qt::LeftButton, {}, edge);
    QTest::mouseMove(header, edge + QPoint(20, 0));
    QTest::mouseMove(header, edge + QPoint(40, 0));
    QTest::mouseRelease(header, Qt::LeftButton, {}, edge + QPoint(40, 0));
    QTRY_COMPARE_WITH_TIMEOUT(tree.columnWidth(0), 140, 10000);
    Config config(newFile(), Config::File);
    KyMisc::writeListColumnsWidth(&tree, columns, config);
    QCOMPARE(widthsFor(columns, &config), QList<int>({140, 70}));
}

void ColumnWidthTest::writesInUnitsOfTheScale_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QList<int>>("units"); // of 101 and 50 pixels
    QTest::newRow("72 dpi") << 72 << QList<int>{101, 50};
    QTest::newRow("143 dpi") << 143 << QList<int>{101, 50};
    QTest::newRow("144 dpi") << 144 << QList<int>{50, 25};
    QTest::newRow("200 dpi") << 200 << QList<int>{50, 25};
    QTest::newRow("216 dpi") << 216 << QList<int>{33, 16};
}

void ColumnWidthTest::writesInUnitsOfTheScale()
{
    QFETCH(int, dpi);
    QFETCH(QList<int>, units);
    const Columns columns{pixels(101), pixels(50)};
    for (const char *screen : {"480x640", "640x480"}) {
        setDisplay(dpi, screen);
        const QString end = qstrcmp(screen, "640x480") == 0 ? "_w" : "_h";
        Tree tree(2);
        KyMisc::setListColumnsWidth(&tree, columns, nullptr);
        Config config(newFile(), Config::File);
        KyMisc::writeListColumnsWidth(&tree, columns, config);
        QCOMPARE(config.readNumEntry("pcolw0" + end), units[0]);
        QCOMPARE(config.readNumEntry("pcolw1" + end), units[1]);
        const QString other = end == "_w" ? "_h" : "_w";
        QVERIFY(!config.hasKey("pcolw0" + other) && !config.hasKey("pcolw1" + other));
        const int scale = dpi / 72;
        QCOMPARE(widthsFor(columns, &config), QList<int>({units[0] * scale, units[1] * scale}));
    }
}

void ColumnWidthTest::writesAllColumnsOfTheWidget()
{
    FileList list(3);
    list.widths = {11, 12, 13};
    Config all(newFile(), Config::File), first(newFile(), Config::File);
    KyMisc::writeListColumnsWidth(&list, {}, all);
    KyMisc::writeListColumnsWidth(&list, {pixels(1)}, first);
    QCOMPARE(all.readNumEntry("pcolw0_h"), 11);
    QCOMPARE(all.readNumEntry("pcolw1_h"), 12);
    QCOMPARE(all.readNumEntry("pcolw2_h"), 13);
    QVERIFY(!all.hasKey("pcolw3_h"));
    QCOMPARE(first.readNumEntry("pcolw0_h"), 11);
    QVERIFY(!first.hasKey("pcolw1_h"));
}

void ColumnWidthTest::writesOnlyColumnsThatAreThere()
{
    FileList list(1);
    Tree tree(1);
    Config config(newFile(), Config::File);
    config.writeEntry("pcolw1_h", 40);
    KyMisc::writeListColumnsWidth(&list, {pixels(1), pixels(1)}, config);
    KyMisc::writeListColumnsWidth(&tree, {pixels(1), pixels(1)}, config);
    QCOMPARE(config.readNumEntry("pcolw1_h"), 40);
}

void ColumnWidthTest::widthIsWrittenUnsigned()
{
    setDisplay(144, "480x640");
    FileList list(1);
    list.widths = {-2};
    Config config(newFile(), Config::File);
    KyMisc::writeListColumnsWidth(&list, {}, config);
    QCOMPARE(config.readNumEntry("pcolw0_h"), INT_MAX);
}

void ColumnWidthTest::bothOrientationsKeepTheirOwn()
{
    const Columns columns{pixels(1), pixels(2)};
    Config config(newFile(), Config::File);
    FileList list(2);
    list.widths = {30, 40};
    KyMisc::writeListColumnsWidth(&list, columns, false, &config);
    list.widths = {50, 60};
    KyMisc::writeListColumnsWidth(&list, columns, true, &config);
    QCOMPARE(config.readNumEntry("pcolw0_h"), 30);
    QCOMPARE(config.readNumEntry("pcolw1_h"), 40);
    QCOMPARE(config.readNumEntry("pcolw0_w"), 50);
    QCOMPARE(config.readNumEntry("pcolw1_w"), 60);
    setDisplay(72, "480x640");
    QCOMPARE(widthsFor(columns, &config), QList<int>({30, 40}));
    setDisplay(72, "640x480");
    QCOMPARE(widthsFor(columns, &config), QList<int>({50, 60}));
}

void ColumnWidthTest::currentGroupCounts()
{
    Config config(newFile(), Config::File);
    config.setGroup("Contacts");
    FileList list(1);
    list.widths = {30};
    KyMisc::writeListColumnsWidth(&list, {}, config);
    QCOMPARE(widthsFor({pixels(7)}, &config), QList<int>{30});
    config.setGroup("Tasks");
    QVERIFY(!config.hasKey("pcolw0_h"));
    QCOMPARE(widthsFor({pixels(7)}, &config), QList<int>{7});
}

void ColumnWidthTest::allFormsOfTheCallsAgree()
{
    FileList list(1);
    list.widths = {30};
    const auto keysAfter = [&](auto write) {
        Config config(newFile(), Config::File);
        write(config);
        return QString::number(config.readNumEntry("pcolw0_w")) + ' ' +
               QString::number(config.readNumEntry("pcolw0_h"));
    };
    const auto given = [&](bool landscape, bool byReference) {
        return keysAfter([&](Config &config) {
            if (byReference)
                KyMisc::writeListColumnsWidth(&list, {}, config, landscape);
            else
                KyMisc::writeListColumnsWidth(&list, {}, landscape, &config);
        });
    };
    for (const bool landscape : {true, false}) {
        const QString expected = landscape ? "30 -1" : "-1 30";
        setDisplay(72, landscape ? "640x480" : "480x640");
        QCOMPARE(keysAfter([&](Config &config) { KyMisc::writeListColumnsWidth(&list, {}, config); }),
                 expected);
        QCOMPARE(keysAfter([&](Config &config) { KyMisc::writeListColumnsWidth(&list, {}, &config); }),
                 expected);
        setDisplay(72, landscape ? "480x640" : "640x480");
        QCOMPARE(given(landscape, true), expected);
        QCOMPARE(given(landscape, false), expected);
    }
}

void ColumnWidthTest::rotation()
{
    const Columns columns{pixels(30), stretch(1)};
    Config config(newFile(), Config::File);
    setDisplay(72, "320x480");
    Tree tree(2);
    KyMisc::setListColumnsWidth(&tree, columns, config);
    QCOMPARE(tree.widths(), QList<int>({30, 320 - 24 - 30}));
    tree.setColumnWidth(0, 44);
    setDisplay(72, "480x320");
    KyMisc::rotateListColumnsWidth(&tree, columns, config);
    QCOMPARE(tree.widths(), QList<int>({30, 480 - 24 - 30}));
    QCOMPARE(config.readNumEntry("pcolw0_h"), 44);
    QVERIFY(!config.hasKey("pcolw0_w"));
    tree.setColumnWidth(0, 55);
    setDisplay(72, "320x480");
    KyMisc::rotateListColumnsWidth(&tree, columns, &config);
    QCOMPARE(tree.columnWidth(0), 44);
    QCOMPARE(config.readNumEntry("pcolw0_w"), 55);
}

void ColumnWidthTest::rotationOfATreeGoesToTheLeftEdge()
{
    Tree tree(2);
    for (int i = 0; i < 100; ++i)
        tree.addTopLevelItem(new QTreeWidgetItem({"one", "two"}));
    const Columns columns{pixels(500), pixels(500)};
    KyMisc::setListColumnsWidth(&tree, columns, nullptr);
    tree.resize(200, 200);
    tree.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tree));
    tree.horizontalScrollBar()->setValue(70);
    tree.verticalScrollBar()->setValue(20);
    QCOMPARE(tree.horizontalScrollBar()->value(), 70);
    KyMisc::rotateListColumnsWidth(&tree, columns, nullptr);
    QCoreApplication::processEvents();
    QCOMPARE(tree.horizontalScrollBar()->value(), 0);
    QCOMPARE(tree.verticalScrollBar()->value(), 20);
}

void ColumnWidthTest::rotationOfAFileListAdjustsIt()
{
    FileList list(2);
    const Columns columns{pixels(30), pixels(40)};
    KyMisc::setListColumnsWidth(&list, columns, nullptr);
    QVERIFY(list.adjustedWidths.isEmpty());
    list.widths = {1, 1};
    KyMisc::rotateListColumnsWidth(&list, columns, nullptr);
    const QList<QList<int>> once{{30, 40}}; // once, behind the new widths
    QCOMPARE(list.adjustedWidths, once);
}

void ColumnWidthTest::rotationWithoutConfig()
{
    Tree tree(2);
    KyMisc::rotateListColumnsWidth(&tree, {stretch(1), stretch(3)}, nullptr);
    QCOMPARE(tree.widths(), QList<int>({50, 150}));
}

void ColumnWidthTest::otherWidgetIsRefused()
{
    const QString line = "KyMisc::setListColumnsWidth() doesn't accept QTableWidget";
    const QString file = newFile();
    QTableWidget table(1, 2);
    table.setColumnWidth(0, 77);
    {
        Config config(file, Config::File);
        LogCapture log;
        KyMisc::setListColumnsWidth(&table, {pixels(30)}, config);
        QCOMPARE(log.lines(), QStringList{line});
        KyMisc::writeListColumnsWidth(&table, {pixels(30)}, config);
        QCOMPARE(log.lines(), QStringList({line, line}));
        KyMisc::writeListColumnsWidth(&table, {pixels(30)}, nullptr);
        QCOMPARE(log.lines(), QStringList({line, line, line}));
        log.clear();
        KyMisc::rotateListColumnsWidth(&table, {pixels(30)}, config);
        QCOMPARE(log.lines(), QStringList({line, line})); // of the writing, and of the setting
        QVERIFY(log.warnings().isEmpty());
    }
    QCOMPARE(table.columnWidth(0), 77);
    QVERIFY(!QFileInfo::exists(file));
}

void ColumnWidthTest::noWidgetIsRefused()
{
    const QString line = "KyMisc::setListColumnsWidth() doesn't accept null";
    Config config(newFile(), Config::File);
    LogCapture log;
    KyMisc::setListColumnsWidth(nullptr, {pixels(30)}, config);
    KyMisc::writeListColumnsWidth(nullptr, {pixels(30)}, config);
    QCOMPARE(log.lines(), QStringList({line, line}));
    KyMisc::rotateListColumnsWidth(nullptr, {pixels(30)}, config);
    QCOMPARE(log.lines(), QStringList({line, line, line, line}));
    QVERIFY(!config.hasKey("pcolw0_h") && !config.hasKey("pcolw0_w"));
}

QTEST_MAIN(ColumnWidthTest)
#include "columnwidthtest.moc"
