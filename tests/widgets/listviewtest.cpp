#include "textlist.h"
#include <QAccessible>
#include <QHeaderView>
#include <QScrollBar>
#include <QtTest>

namespace {

/** Wants five rows as soon as it is asked for something. */
class ReplacingList : public TextList
{
public:
    [[nodiscard]] QString itemText(int line, int column) const override
    {
        if (std::exchange(replaceForText, false))
            const_cast<ReplacingList *>(this)->setAllDataNum(5);
        return TextList::itemText(line, column);
    }
    [[nodiscard]] QPixmap itemPixmap(int line, int column) const override
    {
        if (std::exchange(replaceForPixmap, false))
            const_cast<ReplacingList *>(this)->setAllDataNum(5);
        return TextList::itemPixmap(line, column);
    }
    mutable bool replaceForText = false;
    mutable bool replaceForPixmap = false;
};

QList<int> linesOf(const TextList &list)
{
    QList<int> lines;
    for (int row = 0; row < list.topLevelItemCount(); ++row)
        lines.append(list.row(row) ? list.row(row)->lineNo() : -1);
    return lines;
}

} // namespace

/** The rows of a KyListView and what stands in them. */
class ListViewTest : public QObject
{
    Q_OBJECT
private slots:
    void takesName();
    void newListIsPlain();

    // rows
    void numberOfRows_data();
    void numberOfRows();
    void newRowsReplaceTheOldOnes();
    void rowsAreMadeByNewItem();
    void rowsThatAreNotMadeAreLeftOut();
    void rowsComeInOneGo();
    void newRowsLeaveTheColumns();
    void newRowsClearTheSelection();
    void newRowsWaitWhileATextIsAskedFor_data();
    void newRowsWaitWhileATextIsAskedFor();
    void lastNumberOfRowsCounts();

    // lines
    void linesCountFromOne();
    void linesFollowARowThatGoes();
    void linesFollowARowThatComes();
    void rowsOfOtherClassesCount();
    void hiddenRowsCount();
    void rowInNoView();
    void rowBelowAnother();
    void rowOfAnotherKindOfTree();
    void rowThatChangesItsView();

    // contents
    void viewIsAskedForTextAndPixmap();
    void listItselfIsEmpty();
    void contentsByRole();
    void otherRolesAreStored();
    void textIsNotStored();
    void typingFindsARow();
    void keysMoveThroughTheRows();
    void cellsAreNamedForAccessibility();

    // deletion
    void deletionOfARow();
    void deletionOfTheCurrentRow();
    void deletionOfTheFirstRow();
    void deletionOfNothing();

    // measures
    void fontSetsTheLineStep();
    void fontLeavesTheLineStep();
    void rowsFollowTheFont();
    void lineStepOutlastsNewRows();
    void marginIsPartOfTheRow();
    void rowsAreAsHighAsAPixmap();
    void rowsAreAsHighAsTheFirst();
    void heightOfARowCanBeSet();
    void longTextIsMeasuredInPart();
    void updateIsTriggered();
};

void ListViewTest::takesName()
{
    QWidget parent;
    const KyListView list(&parent, "rows");
    QCOMPARE(list.objectName(), "rows");
    QCOMPARE(list.parentWidget(), &parent);
    QCOMPARE(KyListView().objectName(), QString());
}

void ListViewTest::newListIsPlain()
{
    const KyListView list;
    QCOMPARE(list.topLevelItemCount(), 0);
    QVERIFY(!list.isSortingEnabled());
    QVERIFY(!list.rootIsDecorated());
    QVERIFY(list.uniformRowHeights());
    QCOMPARE(list.editTriggers(), QAbstractItemView::NoEditTriggers);
    QCOMPARE(list.itemMargin(), 1);
}

void ListViewTest::numberOfRows_data()
{
    QTest::addColumn<int>("wanted");
    QTest::addColumn<int>("rows");
    QTest::newRow("some") << 3 << 3;
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("none") << 0 << 0;
    QTest::newRow("below none") << -1 << 0;
    QTest::newRow("lowest") << INT_MIN << 0;
    QTest::newRow("many") << 50000 << 50000;
    QTest::newRow("too many") << INT_MAX << 1000000;
}

void ListViewTest::numberOfRows()
{
    QFETCH(int, wanted);
    TextList list;
    list.setAllDataNum(7);
    list.setAllDataNum(wanted);
    QTEST(list.topLevelItemCount(), "rows");
}

void ListViewTest::newRowsReplaceTheOldOnes()
{
    struct Counted : KyListViewItem
    {
        explicit Counted(int &alive) : m_alive(alive) { ++m_alive; }
        ~Counted() override { --m_alive; }
        Q_DISABLE_COPY_MOVE(Counted)
        int &m_alive;
    };
    struct List : KyListView
    {
        QTreeWidgetItem *newItem() override { return new Counted(alive); }
        int alive = 0;
    } list;
    list.setAllDataNum(5);
    QCOMPARE(list.alive, 5);
    list.setAllDataNum(2);
    QCOMPARE(list.alive, 2);
    list.setAllDataNum(0);
    QCOMPARE(list.alive, 0);
}

void ListViewTest::rowsAreMadeByNewItem()
{
    TextList plain(2, false), checked(2, true);
    plain.setAllDataNum(2);
    checked.setAllDataNum(2);
    QVERIFY(plain.row(1) && !plain.checkRow(1));
    QVERIFY(checked.checkRow(0) && checked.checkRow(1));
    QCOMPARE(checked.row(1)->type(), int(KyListViewItem::Type));
}

void ListViewTest::rowsThatAreNotMadeAreLeftOut()
{
    struct List : KyListView
    {
        QTreeWidgetItem *newItem() override { return nullptr; }
    } list;
    list.setAllDataNum(3);
    QCOMPARE(list.topLevelItemCount(), 0);
}

void ListViewTest::rowsComeInOneGo()
{
    TextList list;
    const QSignalSpy insertions(list.model(), &QAbstractItemModel::rowsInserted);
    list.setAllDataNum(1000);
    QCOMPARE(insertions.size(), 1);
}

void ListViewTest::newRowsLeaveTheColumns()
{
    TextList list(3);
    list.setHeaderLabels({"a", "b", "c"});
    list.setAllDataNum(5);
    list.header()->resizeSection(1, 77);
    list.header()->moveSection(1, 0);
    list.setColumnHidden(2, true);
    list.setAllDataNum(6);
    QCOMPARE(list.columnWidth(1), 77);
    QCOMPARE(list.header()->visualIndex(1), 0);
    QVERIFY(list.isColumnHidden(2));
    QCOMPARE(list.headerItem()->text(1), "b");
}

void ListViewTest::newRowsClearTheSelection()
{
    TextList list;
    list.setAllDataNum(5);
    list.setCurrentItem(list.topLevelItem(2));
    list.setAllDataNum(5);
    QCOMPARE(list.selectedItems().size(), 0);
    QCOMPARE(list.currentItem(), nullptr);
}

void ListViewTest::newRowsWaitWhileATextIsAskedFor_data()
{
    QTest::addColumn<bool>("forText");
    QTest::newRow("text") << true;
    QTest::newRow("pixmap") << false;
}

void ListViewTest::newRowsWaitWhileATextIsAskedFor()
{
    QFETCH(bool, forText);
    ReplacingList list;
    list.setAllDataNum(50);
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    list.replaceForText = forText;
    list.replaceForPixmap = !forText;
    const QTreeWidgetItem *first = list.topLevelItem(0);
    (void)list.grab();
    QVERIFY(!list.replaceForText && !list.replaceForPixmap);
    QCOMPARE(list.topLevelItem(0), first);
    QCOMPARE(list.topLevelItemCount(), 50);
    QTRY_COMPARE_WITH_TIMEOUT(list.topLevelItemCount(), 5, 10000);
}

void ListViewTest::lastNumberOfRowsCounts()
{
    ReplacingList list;
    list.setAllDataNum(50);
    list.replaceForText = true;
    QCOMPARE(list.topLevelItem(0)->text(0), "1.0");
    list.setAllDataNum(7);
    QCoreApplication::processEvents();
    QCOMPARE(list.topLevelItemCount(), 7);
}

void ListViewTest::linesCountFromOne()
{
    TextList list;
    list.setAllDataNum(4);
    QCOMPARE(list.row(2)->lineNo(), 3); // the first one that is asked
    QCOMPARE(linesOf(list), (QList<int>{1, 2, 3, 4}));
}

void ListViewTest::linesFollowARowThatGoes()
{
    TextList list;
    list.setAllDataNum(4);
    QCOMPARE(linesOf(list), (QList<int>{1, 2, 3, 4}));
    delete list.topLevelItem(1);
    QCOMPARE(list.row(2)->lineNo(), 3);
    QCOMPARE(linesOf(list), (QList<int>{1, 2, 3}));
}

void ListViewTest::linesFollowARowThatComes()
{
    TextList list;
    list.setAllDataNum(2);
    QCOMPARE(linesOf(list), (QList<int>{1, 2}));
    list.insertTopLevelItem(0, new KyListViewItem);
    QCOMPARE(linesOf(list), (QList<int>{1, 2, 3}));
    list.addTopLevelItem(list.takeTopLevelItem(0));
    QCOMPARE(linesOf(list), (QList<int>{1, 2, 3}));
}

void ListViewTest::rowsOfOtherClassesCount()
{
    TextList list;
    list.setAllDataNum(3);
    list.insertTopLevelItem(1, new QTreeWidgetItem(QStringList{"other"}));
    QCOMPARE(linesOf(list), (QList<int>{1, -1, 3, 4}));
    QCOMPARE(list.topLevelItem(1)->text(0), "other");
    QCOMPARE(list.topLevelItem(2)->text(0), "3.0");
}

void ListViewTest::hiddenRowsCount()
{
    TextList list;
    list.setAllDataNum(3);
    list.topLevelItem(0)->setHidden(true);
    QCOMPARE(list.row(0)->lineNo(), 1);
    QCOMPARE(list.row(2)->lineNo(), 3);
    QCOMPARE(list.rowHeight(1), list.fontMetrics().height() + 2);
}

void ListViewTest::rowInNoView()
{
    TextList list;
    list.setAllDataNum(2);
    QCOMPARE(list.row(1)->lineNo(), 2);
    const std::unique_ptr<QTreeWidgetItem> taken(list.takeTopLevelItem(1));
    QCOMPARE(static_cast<KyListViewItem *>(taken.get())->lineNo(), 0);
    const KyListViewItem item;
    QCOMPARE(item.lineNo(), 0);
    QCOMPARE(item.itemText(0), QString());
    QVERIFY(item.itemPixmap(0).isNull());
    QCOMPARE(item.text(0), QString());
}

void ListViewTest::rowBelowAnother()
{
    TextList list;
    list.setAllDataNum(2);
    auto *child = new KyListViewItem;
    list.topLevelItem(0)->addChild(child);
    QCOMPARE(child->lineNo(), 0);
    QCOMPARE(child->itemText(0), QString());
    QCOMPARE(list.row(1)->lineNo(), 2);
    list.topLevelItem(0)->addChild(list.takeTopLevelItem(1));
    QCOMPARE(static_cast<KyListViewItem *>(list.topLevelItem(0)->child(1))->lineNo(), 0);
}

void ListViewTest::rowOfAnotherKindOfTree()
{
    QTreeWidget tree;
    auto *item = new KyListViewItem;
    tree.addTopLevelItem(item);
    QCOMPARE(item->lineNo(), 0);
    QCOMPARE(item->text(0), QString());
    tree.show();
    (void)tree.grab();
}

void ListViewTest::rowThatChangesItsView()
{
    TextList first, second;
    first.setAllDataNum(3);
    second.setAllDataNum(1);
    QCOMPARE(first.row(2)->lineNo(), 3);
    second.addTopLevelItem(first.takeTopLevelItem(2));
    second.texts[{2, 0}] = "of the second";
    QCOMPARE(second.row(1)->lineNo(), 2);
    QCOMPARE(second.row(1)->itemText(0), "of the second");
}

void ListViewTest::viewIsAskedForTextAndPixmap()
{
    TextList list(3);
    list.setAllDataNum(3);
    list.pixmaps[{2, 1}] = plainPixmap(5, 6);
    QCOMPARE(list.row(2)->itemText(1), "3.1");
    QCOMPARE(list.row(1)->itemPixmap(1).size(), QSize(5, 6));
    QVERIFY(list.row(1)->itemPixmap(0).isNull());
}

void ListViewTest::listItselfIsEmpty()
{
    const KyListView list;
    QCOMPARE(list.itemText(1, 0), QString());
    QVERIFY(list.itemPixmap(1, 0).isNull());
}

void ListViewTest::contentsByRole()
{
    TextList list(3);
    list.setAllDataNum(2);
    list.pixmaps[{2, 1}] = plainPixmap(5, 6);
    const KyListViewItem *item = list.row(1);
    QCOMPARE(item->data(1, Qt::DisplayRole), QVariant("2.1"));
    QCOMPARE(item->data(1, Qt::EditRole), QVariant("2.1"));
    QCOMPARE(item->data(1, Qt::DecorationRole).value<QPixmap>().size(), QSize(5, 6));
    QVERIFY(!item->data(0, Qt::DecorationRole).isValid());
    QVERIFY(!item->data(0, Qt::CheckStateRole).isValid());
    QCOMPARE(list.model()->index(1, 2).data().toString(), "2.2");
}

void ListViewTest::otherRolesAreStored()
{
    TextList list;
    list.setAllDataNum(1);
    list.row(0)->setToolTip(1, "tip");
    list.row(0)->setData(0, Qt::UserRole, 5);
    QCOMPARE(list.row(0)->toolTip(1), "tip");
    QCOMPARE(list.row(0)->data(0, Qt::UserRole).toInt(), 5);
}

void ListViewTest::textIsNotStored()
{
    TextList list;
    list.setAllDataNum(1);
    list.row(0)->setText(0, "kept?");
    QCOMPARE(list.row(0)->text(0), "1.0");
}

void ListViewTest::typingFindsARow()
{
    TextList list;
    list.setAllDataNum(20);
    list.texts[{15, 0}] = "wanted";
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    list.setCurrentItem(list.topLevelItem(0));
    QTest::keyClicks(&list, "wan");
    QCOMPARE(list.currentItem(), list.topLevelItem(14));
}

void ListViewTest::keysMoveThroughTheRows()
{
    TextList list;
    list.setAllDataNum(5000);
    list.resize(300, 200);
    list.show();
    list.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&list));
    const auto rowBehind = [&](Qt::Key key) {
        QTest::keyClick(&list, key);
        return list.indexOfTopLevelItem(list.currentItem());
    };
    list.setCurrentItem(list.topLevelItem(0));
    QCOMPARE(rowBehind(Qt::Key_Down), 1);
    const int nextPage = rowBehind(Qt::Key_PageDown);
    QVERIFY(nextPage > 5);
    QVERIFY(rowBehind(Qt::Key_PageUp) < nextPage - 4);
    QCOMPARE(rowBehind(Qt::Key_End), 4999);
    QCOMPARE(rowBehind(Qt::Key_Up), 4998);
    QCOMPARE(rowBehind(Qt::Key_Home), 0);
    QCOMPARE(list.selectedItems(), QList<QTreeWidgetItem *>{list.topLevelItem(0)});
}

void ListViewTest::cellsAreNamedForAccessibility()
{
    TextList list;
    list.setAllDataNum(3);
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&list);
    QVERIFY(accessible && accessible->tableInterface());
    QCOMPARE(accessible->tableInterface()->rowCount(), 3);
    QCOMPARE(accessible->tableInterface()->cellAt(2, 1)->text(QAccessible::Name), "3.1");
}

void ListViewTest::deletionOfARow()
{
    TextList list;
    list.setAllDataNum(3);
    QTreeWidgetItem *first = list.topLevelItem(0);
    list.setCurrentItem(first);
    list.deleteItem(list.topLevelItem(1));
    QCOMPARE(list.topLevelItemCount(), 2);
    QCOMPARE(list.topLevelItem(0), first);
}

void ListViewTest::deletionOfTheCurrentRow()
{
    TextList list;
    list.setAllDataNum(3);
    QTreeWidgetItem *first = list.topLevelItem(0), *last = list.topLevelItem(2);
    list.setCurrentItem(list.topLevelItem(1));
    list.deleteItem(nullptr);
    QCOMPARE(list.topLevelItemCount(), 2);
    QCOMPARE(list.topLevelItem(0), first);
    QCOMPARE(list.topLevelItem(1), last);
}

void ListViewTest::deletionOfTheFirstRow()
{
    TextList list;
    list.setAllDataNum(3);
    QTreeWidgetItem *second = list.topLevelItem(1);
    QCOMPARE(list.currentItem(), nullptr);
    list.deleteItem(nullptr);
    QCOMPARE(list.topLevelItemCount(), 2);
    QCOMPARE(list.topLevelItem(0), second);
}

void ListViewTest::deletionOfNothing()
{
    TextList list;
    list.deleteItem(nullptr);
    QCOMPARE(list.topLevelItemCount(), 0);
}

void ListViewTest::fontSetsTheLineStep()
{
    TextList list;
    list.setAllDataNum(3);
    list.resize(100, 100);
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    const int page = list.horizontalScrollBar()->pageStep();
    QFont font("IPAGothic");
    for (const int size : {12, 24}) {
        font.setPixelSize(size);
        list.setFont(font);
        QCOMPARE(list.font().pixelSize(), size);
        QCOMPARE(list.horizontalScrollBar()->singleStep(), 3 * QFontMetrics(font).maxWidth());
        QCOMPARE(list.horizontalScrollBar()->pageStep(), page);
    }
    list.setAutoLineStep(true, 5);
    QCOMPARE(list.horizontalScrollBar()->singleStep(), 3 * QFontMetrics(font).maxWidth());
    list.setFont(font);
    QCOMPARE(list.horizontalScrollBar()->singleStep(), 5 * QFontMetrics(font).maxWidth());
}

void ListViewTest::fontLeavesTheLineStep()
{
    TextList list;
    list.horizontalScrollBar()->setSingleStep(7);
    list.setAutoLineStep(false, 3);
    QFont font("IPAGothic");
    font.setPixelSize(24);
    list.setFont(font);
    QCOMPARE(list.font().pixelSize(), 24);
    QCOMPARE(list.horizontalScrollBar()->singleStep(), 7);
}

void ListViewTest::rowsFollowTheFont()
{
    TextList list;
    list.setAllDataNum(2);
    const int before = list.rowHeight();
    QFont font("IPAGothic");
    font.setPixelSize(40);
    list.setFont(font);
    QVERIFY(list.rowHeight() > before);
    QCOMPARE(list.rowHeight(), QFontMetrics(font).height() + 2);
}

void ListViewTest::lineStepOutlastsNewRows()
{
    TextList list;
    list.setFont(QFont("IPAGothic"));
    const int step = list.horizontalScrollBar()->singleStep();
    list.resize(100, 100);
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    list.setColumnWidth(0, 500);
    list.setAllDataNum(30);
    (void)list.grab();
    QCOMPARE(list.horizontalScrollBar()->singleStep(), step);
}

void ListViewTest::marginIsPartOfTheRow()
{
    TextList list;
    list.setAllDataNum(3);
    const int height = list.rowHeight();
    QCOMPARE(height, list.fontMetrics().height() + 2);
    list.setItemMargin(5);
    QCOMPARE(list.itemMargin(), 5);
    QCOMPARE(list.rowHeight(), height + 8);
}

void ListViewTest::rowsAreAsHighAsAPixmap()
{
    TextList list;
    list.pixmaps[{1, 1}] = plainPixmap(4, 40);
    list.setAllDataNum(3);
    QCOMPARE(list.rowHeight(0), 42);
    QCOMPARE(list.rowHeight(2), 42);
}

void ListViewTest::rowsAreAsHighAsTheFirst()
{
    TextList list;
    list.pixmaps[{2, 0}] = plainPixmap(4, 40);
    list.setAllDataNum(3);
    QCOMPARE(list.rowHeight(1), list.rowHeight(0));
    QVERIFY(list.rowHeight(1) < 40);
}

void ListViewTest::heightOfARowCanBeSet()
{
    TextList list;
    list.setAllDataNum(2);
    list.topLevelItem(0)->setSizeHint(0, QSize(10, 77));
    QCOMPARE(list.rowHeight(1), 77);
}

void ListViewTest::longTextIsMeasuredInPart()
{
    TextList list;
    list.setAllDataNum(1);
    list.texts[{1, 0}] = QString(1000, 'x');
    list.resizeColumnToContents(0);
    const int width = list.columnWidth(0);
    QVERIFY(width > 1000);
    list.texts[{1, 0}] = QString(100000, 'x');
    list.resizeColumnToContents(0);
    QCOMPARE(list.columnWidth(0), width);
}

void ListViewTest::updateIsTriggered()
{
    TextList list;
    list.setAllDataNum(1);
    list.show();
    QVERIFY(QTest::qWaitForWindowExposed(&list));
    struct Paintings : QObject
    {
        bool eventFilter(QObject *, QEvent *event) override
        {
            count += event->type() == QEvent::Paint;
            return false;
        }
        int count = 0;
    } paintings;
    list.viewport()->installEventFilter(&paintings);
    QCoreApplication::processEvents();
    paintings.count = 0;
    list.triggerUpdate();
    QCOMPARE(paintings.count, 0);
    QTRY_VERIFY_WITH_TIMEOUT(paintings.count > 0, 10000);
}

QTEST_MAIN(ListViewTest)
#include "listviewtest.moc"
