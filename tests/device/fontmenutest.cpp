#include "displayfixture.h"
#include "kymisc.h"
#include <climits>
#include <QFontDatabase>
#include <QFontInfo>
#include <QMenu>
#include <QtTest>

class FontMenuTest : public QObject
{
    Q_OBJECT
private slots:
    void standardMenuHasTheLargestOnTop_data();
    void standardMenuHasTheLargestOnTop();
    void standardMenuKeepsWhatIsThere();
    void logicalSizeFromMenuId_data();
    void logicalSizeFromMenuId();
    void pointSizeIsClamped_data();
    void pointSizeIsClamped();
    void checksOneItemAlone_data();
    void checksOneItemAlone();
    void checkingLeavesOtherItemsAlone();
    void toggleStopsAtTheEnds_data();
    void toggleStopsAtTheEnds();
    void toggleAtTheEndDoesNothing();
    void toggleFromBeyondTheRange();
    void clickedItemTellsItsSize();
    void allSizesInListOrder();
    void allSizesOfAFamilyThatDoesNotExist();
    void toggleAllGoesThroughTheList();
    void toggleAllStaysInsideTheList();
    void toggleAllOfUnknownSize();
    void itemsThatShareANumberAreToldApart();
    void withoutMenu();
};

namespace {

/** The numbers of the items that are checked. */
QList<int> checkedNumbers(const QMenu &menu)
{
    QList<int> numbers;
    for (const QAction *item : menu.actions()) {
        if (item->isChecked())
            numbers.append(item->data().toInt());
    }
    return numbers;
}

QStringList checkedTexts(const QMenu &menu)
{
    QStringList texts;
    for (const QAction *item : menu.actions()) {
        if (item->isChecked())
            texts.append(item->text());
    }
    return texts;
}

/** As "text number", from the top. */
QStringList itemsOf(const QMenu &menu)
{
    QStringList items;
    for (const QAction *item : menu.actions())
        items.append(item->text() + ' ' + item->data().toString());
    return items;
}

QList<int> allSizes()
{
    return QFontDatabase::pointSizes(QFontInfo(QApplication::font()).family());
}

QString dotText(int size)
{
    return QString::number(size) + "dot";
}

} // namespace

void FontMenuTest::standardMenuHasTheLargestOnTop_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QStringList>("items");
    const QStringList three{"Large 3", "Medium 2", "Small 1"};
    const QStringList five{"Maximum 5", "Large 4", "Medium 3", "Small 2", "Minimum 1"};
    QTest::newRow("72 dpi") << 72 << three;
    QTest::newRow("143 dpi") << 143 << three;
    QTest::newRow("144 dpi") << 144 << five;
    QTest::newRow("200 dpi") << 200 << five;
    QTest::newRow("576 dpi") << 576 << five;
}

void FontMenuTest::standardMenuHasTheLargestOnTop()
{
    QFETCH(int, dpi);
    setDisplay(dpi, "480x640");
    QMenu menu;
    KyMisc::insertStandardFontMenu(&menu);
    QTEST(itemsOf(menu), "items");
    for (const QAction *item : menu.actions())
        QVERIFY(item->isCheckable() && !item->isChecked());
}

void FontMenuTest::standardMenuKeepsWhatIsThere()
{
    setDisplay(72, "480x640");
    QMenu menu;
    menu.addAction("Open");
    KyMisc::insertStandardFontMenu(&menu);
    QCOMPARE(itemsOf(menu), QStringList({"Open ", "Large 3", "Medium 2", "Small 1"}));
}

void FontMenuTest::logicalSizeFromMenuId_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QList<int>>("logicalSizes"); // of the numbers -1 to 7
    QTest::newRow("72 dpi") << 72 << QList<int>{0, 0, -1, 0, 1, 0, 0, 0, 0};
    QTest::newRow("143 dpi") << 143 << QList<int>{0, 0, -1, 0, 1, 0, 0, 0, 0};
    QTest::newRow("144 dpi") << 144 << QList<int>{0, 0, -2, -1, 0, 1, 2, 0, 0};
    QTest::newRow("216 dpi") << 216 << QList<int>{0, 0, -2, -1, 0, 1, 2, 0, 0};
}

void FontMenuTest::logicalSizeFromMenuId()
{
    QFETCH(int, dpi);
    setDisplay(dpi, "480x640");
    QList<int> logicalSizes;
    for (int number = -1; number <= 7; ++number)
        logicalSizes.append(KyMisc::getLogicalSizeFromMenuId(number));
    QTEST(logicalSizes, "logicalSizes");
    QCOMPARE(KyMisc::getLogicalSizeFromMenuId(INT_MIN), 0);
    QCOMPARE(KyMisc::getLogicalSizeFromMenuId(INT_MAX), 0);
}

void FontMenuTest::pointSizeIsClamped_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<QList<int>>("points"); // of the logical sizes -3 to 3
    QTest::newRow("72 dpi") << 72 << QList<int>{10, 10, 10, 12, 18, 18, 18};
    QTest::newRow("143 dpi") << 143 << QList<int>{10, 10, 10, 12, 18, 18, 18};
    QTest::newRow("144 dpi") << 144 << QList<int>{12, 12, 16, 20, 24, 36, 36};
    QTest::newRow("216 dpi") << 216 << QList<int>{12, 12, 16, 20, 24, 36, 36};
}

void FontMenuTest::pointSizeIsClamped()
{
    QFETCH(int, dpi);
    QFETCH(QList<int>, points);
    setDisplay(dpi, "480x640");
    QList<int> actual;
    for (int logicalSize = -3; logicalSize <= 3; ++logicalSize)
        actual.append(KyMisc::getFontPointSize(logicalSize));
    QCOMPARE(actual, points);
    QCOMPARE(KyMisc::getFontPointSize(5), points.last());
    QCOMPARE(KyMisc::getFontPointSize(INT_MIN), points.first());
    QCOMPARE(KyMisc::getFontPointSize(INT_MAX), points.last());
}

void FontMenuTest::checksOneItemAlone_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("logicalSize");
    QTest::addColumn<int>("number");
    const auto row = [](int dpi, int logicalSize, int number) {
        QTest::addRow("%d dpi, size %d", dpi, logicalSize) << dpi << logicalSize << number;
    };
    row(72, -1, 1);
    row(72, 0, 2);
    row(72, 1, 3);
    row(72, 2, 3);
    row(72, -2, 1);
    row(72, INT_MIN, 1);
    row(144, -2, 1);
    row(144, -1, 2);
    row(144, 0, 3);
    row(144, 1, 4);
    row(144, 2, 5);
    row(144, -3, 1);
    row(144, INT_MAX, 5);
}

void FontMenuTest::checksOneItemAlone()
{
    QFETCH(int, dpi);
    QFETCH(int, logicalSize);
    QFETCH(int, number);
    setDisplay(dpi, "480x640");
    QMenu menu;
    KyMisc::insertStandardFontMenu(&menu);
    for (QAction *item : menu.actions())
        item->setChecked(true);
    KyMisc::setFontSizeItemChecked(&menu, logicalSize);
    QCOMPARE(checkedNumbers(menu), QList<int>{number});
}

void FontMenuTest::checkingLeavesOtherItemsAlone()
{
    setDisplay(72, "480x640");
    QMenu menu;
    QList<QAction *> own;
    for (int number = 1; number <= 3; ++number) {
        own.append(menu.addAction("own"));
        own.last()->setCheckable(true);
        own.last()->setChecked(number != 2);
        own.last()->setData(number);
    }
    KyMisc::insertStandardFontMenu(&menu);
    KyMisc::setFontSizeItemChecked(&menu, 0);
    QVERIFY(own[0]->isChecked() && !own[1]->isChecked() && own[2]->isChecked());
    QCOMPARE(checkedTexts(menu), QStringList({"own", "own", "Medium"}));
}

void FontMenuTest::toggleStopsAtTheEnds_data()
{
    QTest::addColumn<int>("dpi");
    QTest::addColumn<int>("largest");
    QTest::newRow("72 dpi") << 72 << 1;
    QTest::newRow("143 dpi") << 143 << 1;
    QTest::newRow("144 dpi") << 144 << 2;
}

void FontMenuTest::toggleStopsAtTheEnds()
{
    QFETCH(int, dpi);
    QFETCH(int, largest);
    setDisplay(dpi, "480x640");
    QMenu menu;
    KyMisc::insertStandardFontMenu(&menu);
    int logicalSize = 0;
    for (int step = 1; step <= 4; ++step) {
        KyMisc::toggleFontSize(&menu, logicalSize, true);
        QCOMPARE(logicalSize, std::min(step, largest));
        QCOMPARE(checkedNumbers(menu), QList<int>{logicalSize + largest + 1});
    }
    for (int step = 1; step <= 6; ++step) {
        KyMisc::toggleFontSize(&menu, logicalSize, false);
        QCOMPARE(logicalSize, std::max(largest - step, -largest));
        QCOMPARE(checkedNumbers(menu), QList<int>{logicalSize + largest + 1});
    }
}

void FontMenuTest::toggleAtTheEndDoesNothing()
{
    setDisplay(72, "480x640");
    QMenu menu;
    KyMisc::insertStandardFontMenu(&menu);
    for (const bool larger : {true, false}) {
        int logicalSize = larger ? 1 : -1;
        KyMisc::toggleFontSize(&menu, logicalSize, larger);
        QCOMPARE(logicalSize, larger ? 1 : -1);
        QVERIFY(checkedNumbers(menu).isEmpty());
    }
}

void FontMenuTest::toggleFromBeyondTheRange()
{
    setDisplay(72, "480x640");
    QMenu menu;
    KyMisc::insertStandardFontMenu(&menu);
    int logicalSize = INT_MAX;
    KyMisc::toggleFontSize(&menu, logicalSize, true);
    QCOMPARE(logicalSize, INT_MAX);
    logicalSize = INT_MIN;
    KyMisc::toggleFontSize(&menu, logicalSize, false);
    QCOMPARE(logicalSize, INT_MIN);
    logicalSize = 5;
    KyMisc::toggleFontSize(&menu, logicalSize, false);
    QCOMPARE(logicalSize, 4);
    QCOMPARE(checkedNumbers(menu), QList<int>{3});
}

void FontMenuTest::clickedItemTellsItsSize()
{
    setDisplay(144, "480x640");
    QMenu menu;
    KyMisc::insertStandardFontMenu(&menu);
    KyMisc::setFontSizeItemChecked(&menu, 0);
    int logicalSize = 0;
    connect(&menu, &QMenu::triggered, this, [&](const QAction *item) {
        logicalSize = KyMisc::getLogicalSizeFromMenuId(item->data().toInt());
        KyMisc::setFontSizeItemChecked(&menu, logicalSize);
    });
    for (const int row : {0, 4, 4}) { // the last click is on what is checked
        menu.popup(QPoint(20, 20));
        QVERIFY(QTest::qWaitForWindowExposed(&menu));
        QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(menu.actions().at(row)).center());
        QTRY_COMPARE_WITH_TIMEOUT(logicalSize, row == 0 ? 2 : -2, 10000);
        QCOMPARE(checkedNumbers(menu), QList<int>{row == 0 ? 5 : 1});
        QTRY_VERIFY_WITH_TIMEOUT(!menu.isVisible(), 10000);
    }
}

void FontMenuTest::allSizesInListOrder()
{
    QMenu menu;
    KyMisc::insertAllFontMenu(&menu);
    const QList<int> sizes = allSizes();
    QVERIFY2(sizes.contains(9) && sizes.contains(12) && sizes.contains(72), "the font can be scaled");
    QStringList expected;
    for (const int size : sizes)
        expected.append(QString("%1dot %2").arg(size).arg(size / 10));
    QCOMPARE(itemsOf(menu), expected);
    QVERIFY(itemsOf(menu).contains("9dot 0"));
    QVERIFY(itemsOf(menu).contains("12dot 1"));
    QVERIFY(itemsOf(menu).contains("72dot 7"));
    for (const QAction *item : menu.actions())
        QVERIFY(item->isCheckable() && !item->isChecked());
}

void FontMenuTest::allSizesOfAFamilyThatDoesNotExist()
{
    const QFont before = QApplication::font();
    QApplication::setFont(QFont("no such family"));
    QMenu menu;
    KyMisc::insertAllFontMenu(&menu);
    QApplication::setFont(before);
    QVERIFY(!menu.actions().isEmpty());
}

void FontMenuTest::toggleAllGoesThroughTheList()
{
    QMenu menu;
    KyMisc::insertAllFontMenu(&menu);
    QList<int> sizes = allSizes();
    int size = sizes.first();
    for (const int expected : sizes.mid(1)) {
        KyMisc::toggleAllFontSize(&menu, &size, true);
        QCOMPARE(size, expected);
        QCOMPARE(checkedTexts(menu), QStringList{dotText(expected)});
    }
    std::reverse(sizes.begin(), sizes.end());
    for (const int expected : sizes.mid(1)) {
        KyMisc::toggleAllFontSize(&menu, &size, false);
        QCOMPARE(size, expected);
        QCOMPARE(checkedTexts(menu), QStringList{dotText(expected)});
    }
}

void FontMenuTest::toggleAllStaysInsideTheList()
{
    QMenu menu;
    KyMisc::insertAllFontMenu(&menu);
    const QList<int> sizes = allSizes();
    int smallest = sizes.first();
    KyMisc::toggleAllFontSize(&menu, &smallest, false);
    QCOMPARE(smallest, sizes.first());
    QCOMPARE(checkedTexts(menu), QStringList{dotText(smallest)});
    KyMisc::toggleAllFontSize(&menu, &smallest, true);
    int largest = sizes.last();
    KyMisc::toggleAllFontSize(&menu, &largest, true);
    QCOMPARE(largest, sizes.last());
    QCOMPARE(checkedTexts(menu), QStringList({dotText(sizes[1]), dotText(largest)}));
}

void FontMenuTest::toggleAllOfUnknownSize()
{
    QMenu menu;
    KyMisc::insertAllFontMenu(&menu);
    for (const int unknown : {0, -12, 13, INT_MAX, INT_MIN}) {
        for (const bool larger : {true, false}) {
            int size = unknown;
            KyMisc::toggleAllFontSize(&menu, &size, larger);
            QCOMPARE(size, unknown);
            QVERIFY(checkedTexts(menu).isEmpty());
        }
    }
}

void FontMenuTest::itemsThatShareANumberAreToldApart()
{
    QMenu menu;
    QAction *own = menu.addAction("own");
    own->setCheckable(true);
    own->setChecked(true);
    own->setData(1);
    KyMisc::insertAllFontMenu(&menu);
    int size = 12;
    KyMisc::toggleAllFontSize(&menu, &size, true);
    QCOMPARE(size, 14);
    QCOMPARE(checkedTexts(menu), QStringList({"own", "14dot"}));
}

void FontMenuTest::withoutMenu()
{
    setDisplay(72, "480x640");
    KyMisc::insertStandardFontMenu(nullptr);
    KyMisc::insertAllFontMenu(nullptr);
    KyMisc::setFontSizeItemChecked(nullptr, 1);
    int logicalSize = 0;
    KyMisc::toggleFontSize(nullptr, logicalSize, true);
    QCOMPARE(logicalSize, 1);
    int size = 12;
    KyMisc::toggleAllFontSize(nullptr, &size, true);
    QCOMPARE(size, 14);
    QMenu menu;
    KyMisc::insertAllFontMenu(&menu);
    KyMisc::toggleAllFontSize(&menu, nullptr, true);
    QVERIFY(checkedTexts(menu).isEmpty());
}

QTEST_MAIN(FontMenuTest)
#include "fontmenutest.moc"
