#include "channellistener.h"
#include "kycategoryedit.h"
#include "kycategorywidget.h"
#include "qcopenvelope.h"
#include "tablefixture.h"
#include <QTreeWidget>
#include <QtTest>

namespace {

QStringList checked(const KyCategoryWidget &widget)
{
    const auto *list = widget.findChild<QTreeWidget *>();
    QStringList names;
    for (int row = 0; row < list->topLevelItemCount(); ++row) {
        const QTreeWidgetItem *item = list->topLevelItem(row);
        if (item->checkState(0) == Qt::Checked)
            names.append(item->text(0));
    }
    return names;
}

/** The application that the messages of a widget name, its categories beside it. */
QString applicationOf(KyCategoryWidget &widget, QList<int> *ids)
{
    ChannelListener listener("QPE/System");
    *ids = widget.newCategories();
    QString name = "no message";
    for (const ChannelListener::Message &message : listener.take()) {
        if (message.first != "categoryChange(QString)")
            continue;
        QCopArguments arguments(message.second);
        arguments >> name;
    }
    return name;
}

} // namespace

class CategoryWidgetTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void plainOneListsAllWithEmptyNames();
    void constructorsWithCategories();
    void setCategoriesReplacesThem();
    void editFillsIt();
    void showsNoWindowByItself();
    void kludgeIsForwarded();
};

void CategoryWidgetTest::initTestCase()
{
    QVERIFY(makeTable() && fillTable(1, 3));
}

void CategoryWidgetTest::plainOneListsAllWithEmptyNames()
{
    QWidget parent;
    KyCategoryWidget widget(&parent, "plain");
    QCOMPARE(widget.objectName(), "plain");
    QCOMPARE(widget.parentWidget(), &parent);
    QCOMPARE(widget.findChild<QTreeWidget *>()->topLevelItemCount(), 3);
    QList<int> ids;
    QCOMPARE(applicationOf(widget, &ids), QString());
    QCOMPARE(ids, QList<int>());
}

void CategoryWidgetTest::constructorsWithCategories()
{
    QWidget parent;
    KyCategoryWidget two({1, 3}, "addressbook", &parent, "two");
    KyCategoryWidget three({2}, "todolist", "Todo List", &parent, "three");
    QCOMPARE(two.objectName(), "two");
    QCOMPARE(three.objectName(), "three");
    QCOMPARE(two.parentWidget(), &parent);
    QCOMPARE(three.parentWidget(), &parent);
    QList<int> ids;
    QCOMPARE(applicationOf(two, &ids), "addressbook");
    QCOMPARE(ids, (QList<int>{1, 3}));
    QCOMPARE(applicationOf(three, &ids), "todolist");
    QCOMPARE(ids, QList<int>{2});
}

void CategoryWidgetTest::setCategoriesReplacesThem()
{
    KyCategoryWidget widget({1}, "addressbook");
    QList<int> ids;
    widget.setCategories({2}, "todolist");
    QCOMPARE(checked(widget), QStringList{"2"});
    QCOMPARE(applicationOf(widget, &ids), "todolist");
    QCOMPARE(ids, QList<int>{2});
    widget.setCategories({3, 1}, "calendar", "Calendar");
    QCOMPARE(checked(widget), (QStringList{"1", "3"}));
    QCOMPARE(applicationOf(widget, &ids), "calendar");
    QCOMPARE(ids, (QList<int>{1, 3}));
}

void CategoryWidgetTest::editFillsIt()
{
    KyCategoryWidget widget({1}, "addressbook");
    widget.resize(300, 280);
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    const auto *edit = widget.findChild<KyCategoryEdit *>();
    QVERIFY(edit->isVisible());
    QCOMPARE(edit->geometry(), widget.rect());
}

void CategoryWidgetTest::showsNoWindowByItself()
{
    const KyCategoryWidget widget({1}, "addressbook");
    QVERIFY(!widget.isVisible());
    QVERIFY(!widget.findChild<KyCategoryEdit *>()->isWindow());
    QVERIFY(!widget.findChild<KyCategoryEdit *>()->isVisible());
}

void CategoryWidgetTest::kludgeIsForwarded()
{
    KyCategoryWidget widget;
    widget.kludge();
    QCOMPARE(widget.findChild<QTreeWidget *>()->maximumHeight(), 130);
}

QTEST_MAIN(CategoryWidgetTest)
#include "categorywidgettest.moc"
