#include "textlist.h"
#include <QSignalSpy>
#include <QStyle>
#include <QtTest>

namespace {

/** Three rows with check boxes, shown, the first one current. */
std::unique_ptr<TextList> shownList()
{
    auto list = std::make_unique<TextList>(2, true);
    list->setAllDataNum(3);
    list->resize(300, 150);
    list->show();
    list->activateWindow(); // without a window manager nobody else does
    if (!QTest::qWaitForWindowActive(list.get()))
        qFatal("the list isn't active");
    list->setFocus();
    return list;
}

/** Where the style has the box of a row. */
QPoint boxOf(const TextList &list, int row)
{
    const int left = list.style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
    return list.cell(row, 0).topLeft() +
           QPoint(left + list.style()->pixelMetric(QStyle::PM_IndicatorWidth) / 2, list.rowHeight() / 2);
}

void click(const TextList &list, const QPoint &position)
{
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, position);
}

} // namespace

/** The state of rows with a check box, and what turns it. */
class CheckListItemTest : public QObject
{
    Q_OBJECT
private slots:
    void newRowIsOff();
    void rowHasLineAndText();
    void stateByRole();
    void stateOfOtherColumns();
    void stateOfARowInNoView();
    void changeIsTold();
    void clickOnTheBoxTurnsIt();
    void clickOnTheTextDoesNotTurnIt();
    void clickInAnotherColumnDoesNotTurnIt();
    void spaceTurnsIt_data();
    void spaceTurnsIt();
    void disabledRowDoesNotTurn();
    void rowsAreAsHighAsTheBox();
    void rowsFollowTheBoxOfAStyleSheet();
};

void CheckListItemTest::newRowIsOff()
{
    TextList list(2, true);
    list.setAllDataNum(2);
    QVERIFY(!list.checkRow(0)->isOn());
    list.checkRow(0)->setOn(true);
    QVERIFY(list.checkRow(0)->isOn());
    QVERIFY(!list.checkRow(1)->isOn());
    list.checkRow(0)->setOn(false);
    QVERIFY(!list.checkRow(0)->isOn());
}

void CheckListItemTest::rowHasLineAndText()
{
    TextList list(2, true);
    list.setAllDataNum(3);
    list.pixmaps[{2, 0}] = plainPixmap(5, 6);
    QCOMPARE(list.checkRow(1)->lineNo(), 2);
    QCOMPARE(list.checkRow(1)->text(0), "2.0");
    QCOMPARE(list.checkRow(1)->itemText(1), "2.1");
    QCOMPARE(list.checkRow(1)->itemPixmap(0).size(), QSize(5, 6));
}

void CheckListItemTest::stateByRole()
{
    TextList list(2, true);
    list.setAllDataNum(1);
    KyCheckListItem *item = list.checkRow(0);
    QCOMPARE(item->data(0, Qt::CheckStateRole), QVariant(Qt::Unchecked));
    item->setOn(true);
    QCOMPARE(item->checkState(0), Qt::Checked);
    item->setCheckState(0, Qt::Unchecked);
    QVERIFY(!item->isOn());
    item->setCheckState(0, Qt::Checked);
    QVERIFY(item->isOn());
    item->setToolTip(0, "tip");
    QCOMPARE(item->toolTip(0), "tip");
}

void CheckListItemTest::stateOfOtherColumns()
{
    TextList list(2, true);
    list.setAllDataNum(1);
    KyCheckListItem *item = list.checkRow(0);
    item->setCheckState(1, Qt::Checked);
    QVERIFY(!item->isOn());
    QVERIFY(!item->data(1, Qt::CheckStateRole).isValid());
}

void CheckListItemTest::stateOfARowInNoView()
{
    KyCheckListItem item;
    item.setOn(true);
    QVERIFY(item.isOn());
    QCOMPARE(item.lineNo(), 0);
}

void CheckListItemTest::changeIsTold()
{
    TextList list(2, true);
    list.setAllDataNum(2);
    const QSignalSpy changes(&list, &QTreeWidget::itemChanged);
    list.checkRow(1)->setOn(true);
    QCOMPARE(changes.size(), 1);
    QCOMPARE(changes[0][0].value<QTreeWidgetItem *>(), list.topLevelItem(1));
    QCOMPARE(changes[0][1].toInt(), 0);
    list.checkRow(1)->setOn(true);
    QCOMPARE(changes.size(), 1);
}

void CheckListItemTest::clickOnTheBoxTurnsIt()
{
    const auto list = shownList();
    const QSignalSpy changes(list.get(), &QTreeWidget::itemChanged);
    click(*list, boxOf(*list, 1));
    QVERIFY(list->checkRow(1)->isOn());
    QVERIFY(!list->checkRow(0)->isOn());
    QCOMPARE(changes.size(), 1);
    click(*list, boxOf(*list, 1));
    QVERIFY(!list->checkRow(1)->isOn());
    QCOMPARE(changes.size(), 2);
}

void CheckListItemTest::clickOnTheTextDoesNotTurnIt()
{
    const auto list = shownList();
    click(*list, boxOf(*list, 1) + QPoint(30, 0));
    QVERIFY(!list->checkRow(1)->isOn());
    QVERIFY(list->checkRow(1)->isSelected());
}

void CheckListItemTest::clickInAnotherColumnDoesNotTurnIt()
{
    const auto list = shownList();
    const int offset = boxOf(*list, 1).x();
    click(*list, list->cell(1, 1).topLeft() + QPoint(offset, 5));
    QVERIFY(!list->checkRow(1)->isOn());
}

void CheckListItemTest::spaceTurnsIt_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("first column") << 0;
    QTest::newRow("another column") << 1;
}

void CheckListItemTest::spaceTurnsIt()
{
    QFETCH(int, column);
    const auto list = shownList();
    list->setCurrentItem(list->topLevelItem(2), column);
    const QSignalSpy changes(list.get(), &QTreeWidget::itemChanged);
    QTest::keyClick(list.get(), Qt::Key_Space);
    QVERIFY(list->checkRow(2)->isOn());
    QCOMPARE(changes.size(), 1);
    QTest::keyClick(list.get(), Qt::Key_Space);
    QVERIFY(!list->checkRow(2)->isOn());
}

void CheckListItemTest::disabledRowDoesNotTurn()
{
    const auto list = shownList();
    list->checkRow(1)->setDisabled(true);
    click(*list, boxOf(*list, 1));
    QVERIFY(!list->checkRow(1)->isOn());
    list->setCurrentItem(list->topLevelItem(1));
    QTest::keyClick(list.get(), Qt::Key_Space);
    QVERIFY(!list->checkRow(1)->isOn());
}

void CheckListItemTest::rowsAreAsHighAsTheBox()
{
    TextList list(2, true);
    QFont font("IPAGothic");
    font.setPixelSize(5);
    list.setFont(font);
    list.setAllDataNum(1);
    QCOMPARE(list.rowHeight(), list.style()->pixelMetric(QStyle::PM_IndicatorHeight) + 2);
}

void CheckListItemTest::rowsFollowTheBoxOfAStyleSheet()
{
    TextList list(2, true);
    list.setAllDataNum(1);
    list.setStyleSheet("QTreeView::indicator { width: 40px; height: 40px; }");
    QCOMPARE(list.rowHeight(), 42);
}

QTEST_MAIN(CheckListItemTest)
#include "checklistitemtest.moc"
