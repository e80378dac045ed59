#include "taskspage.h"

#include "messagerobot.h"
#include "pagefixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QPlainTextEdit>
#include <QScrollBar>

namespace {

enum Column { Done, Description, Priority, Due };

unsigned long addTask(Book *book, const QString &description, const CardValues &more = {})
{
    CardValues values = more;
    values.insert(TaskField::Description, description);
    if (!values.contains(TaskField::State))
        values.insert(TaskField::State, TaskState::Open);
    return book->save(0, values);
}

QVariant day(int year, int month, int date)
{
    return QDate(year, month, date).startOfDay();
}

Qt::CheckState tick(const TasksPage &page, int row)
{
    const QAbstractItemModel *model = page.findChild<QTreeView *>()->model();
    return model->index(row, Done).data(Qt::CheckStateRole).value<Qt::CheckState>();
}

} // namespace

class TasksPageTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void tasksComeByDueDate();
    void everyColumnSorts_data();
    void everyColumnSorts();
    void clickOnTheTickCompletesAndOpensAgain();
    void spaceCompletesTheSelectedTask();
    void spaceInTheSearchIsALetter();
    void lettersFindADescription();
    void newTaskIsOpenAndOfUsualPriority();
    void formShowsAndSavesEveryField();
    void takingTheDueDateAwayClearsIt();
    void completingInTheFormKeepsTheDay();
    void unknownPriorityStays();
    void taskWithNothingIsRefused();
    void taskWithoutAStateCountsAsDone();
    void openedFormIsNotModified();
    void undoBringsBackAllFields();
    void tabulatorLeadsThroughTheForm();
    void tickLeavesTheListInItsPlace();

private:
    QCheckBox *box(const QString &text) const;
    std::unique_ptr<CategoryTable> m_table;
    std::unique_ptr<TasksPage> m_page;
};

void TasksPageTest::init()
{
    m_page.reset();
    m_table.reset();
    removeBoxes();
    m_table = std::make_unique<CategoryTable>();
    m_page = std::make_unique<TasksPage>(m_table.get());
    m_page->resize(480, 640);
    QVERIFY(showActive(*m_page));
}

/* A box to tick in the form. */
QCheckBox *TasksPageTest::box(const QString &text) const
{
    for (QCheckBox *candidate : m_page->findChildren<QCheckBox *>()) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

void TasksPageTest::tasksComeByDueDate()
{
    addTask(m_page->book(), "later", {{TaskField::DueDate, day(2030, 1, 2)}});
    addTask(m_page->book(), "never");
    addTask(m_page->book(), "soon", {{TaskField::DueDate, day(2026, 12, 31)}});
    QCOMPARE(texts(*m_page, Description), (QStringList{"never", "soon", "later"}));
    QCOMPARE(texts(*m_page, Due), (QStringList{"", "2026/12/31", "2030/01/02"}));
}

void TasksPageTest::everyColumnSorts_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QStringList>("once");
    QTest::addColumn<QStringList>("twice");
    QTest::newRow("done") << int(Done) << QStringList{"b", "a", "c"} << QStringList{"c", "a", "b"};
    QTest::newRow("description") << int(Description) << QStringList{"a", "b", "c"}
                                 << QStringList{"c", "b", "a"};
    QTest::newRow("priority") << int(Priority) << QStringList{"c", "a", "b"} << QStringList{"b", "a", "c"};
    QTest::newRow("due, which is marked at first")
        << int(Due) << QStringList{"c", "b", "a"} << QStringList{"a", "b", "c"};
}

void TasksPageTest::everyColumnSorts()
{
    QFETCH(int, column);
    QFETCH(QStringList, once);
    QFETCH(QStringList, twice);
    addTask(m_page->book(), "a", {{TaskField::Priority, 3}, {TaskField::DueDate, day(2026, 1, 1)}});
    addTask(m_page->book(), "b",
            {{TaskField::Priority, 5},
             {TaskField::DueDate, day(2026, 1, 2)},
             {TaskField::State, TaskState::Done}});
    addTask(m_page->book(), "c", {{TaskField::Priority, 1}, {TaskField::DueDate, day(2026, 1, 3)}});
    clickHeader(*m_page, column);
    QCOMPARE(texts(*m_page, Description), once);
    clickHeader(*m_page, column);
    QCOMPARE(texts(*m_page, Description), twice);
}

void TasksPageTest::clickOnTheTickCompletesAndOpensAgain()
{
    const unsigned long task = addTask(m_page->book(), "a");
    auto *list = m_page->findChild<QTreeView *>();
    const auto click = [&] {
        const QRect row = list->visualRect(list->model()->index(0, Done));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, {row.left() + 10, row.center().y()});
    };
    QCOMPARE(tick(*m_page, 0), Qt::Unchecked);
    click();
    QTRY_COMPARE_WITH_TIMEOUT(tick(*m_page, 0), Qt::Checked, Patience);
    QCOMPARE(m_page->book()->value(task, TaskField::State).toInt(), TaskState::Done);
    QCOMPARE(m_page->book()->value(task, TaskField::FinishDate).toDate(), QDate::currentDate());
    click();
    QTRY_COMPARE_WITH_TIMEOUT(tick(*m_page, 0), Qt::Unchecked, Patience);
    QCOMPARE(m_page->book()->value(task, TaskField::State).toInt(), TaskState::Open);
    QVERIFY(m_page->book()->value(task, TaskField::FinishDate).isNull());
}

void TasksPageTest::spaceCompletesTheSelectedTask()
{
    addTask(m_page->book(), "a");
    addTask(m_page->book(), "b");
    auto *list = m_page->findChild<QTreeView *>();
    m_page->selectRow(1);
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Space);
    QTRY_COMPARE_WITH_TIMEOUT(tick(*m_page, 1), Qt::Checked, Patience);
    QCOMPARE(tick(*m_page, 0), Qt::Unchecked);
    QTest::keyClick(list, Qt::Key_Space);
    QTRY_COMPARE_WITH_TIMEOUT(tick(*m_page, 1), Qt::Unchecked, Patience);
}

void TasksPageTest::spaceInTheSearchIsALetter()
{
    addTask(m_page->book(), "a b");
    QTest::keyClicks(m_page->findChild<QLineEdit *>("search"), "a b");
    QCOMPARE(m_page->findChild<QLineEdit *>("search")->text(), QString("a b"));
    QCOMPARE(tick(*m_page, 0), Qt::Unchecked);
}

void TasksPageTest::lettersFindADescription()
{
    addTask(m_page->book(), "ask");
    addTask(m_page->book(), "build");
    addTask(m_page->book(), "call");
    auto *list = m_page->findChild<QTreeView *>();
    list->setFocus();
    QTest::keyClick(list, Qt::Key_C);
    QCOMPARE(list->currentIndex().row(), 2);
    QCOMPARE(tick(*m_page, 2), Qt::Unchecked);
}

void TasksPageTest::newTaskIsOpenAndOfUsualPriority()
{
    m_page->newCard();
    QVERIFY(!m_page->findChild<CardForm *>()->isModified());
    type(*m_page, "Description", "a");
    m_page->findChild<CardForm *>()->save();
    QCOMPARE(texts(*m_page, Description), QStringList{"a"});
    const CardValues expected = {{TaskField::State, TaskState::Open},
                                 {TaskField::Priority, TaskPriority::Usual},
                                 {TaskField::Description, "a"}};
    QCOMPARE(m_page->book()->values(m_page->book()->cardAt(0)), expected);
}

void TasksPageTest::formShowsAndSavesEveryField()
{
    const unsigned long task = addTask(
        m_page->book(), "a",
        {{TaskField::Priority, 2}, {TaskField::Notes, "one\ntwo"}, {TaskField::DueDate, day(2026, 5, 6)}});
    m_page->editCard();
    QCOMPARE(editor(*m_page, "Description")->text(), QString("a"));
    QCOMPARE(editor<QPlainTextEdit>(*m_page, "Notes")->toPlainText(), QString("one\ntwo"));
    QCOMPARE(editor<QComboBox>(*m_page, "Priority")->currentText(), QString("2 (high)"));
    auto *due = m_page->findChild<QDateEdit *>();
    QCOMPARE(due->date(), QDate(2026, 5, 6));

    type(*m_page, "Description", "b");
    editor<QPlainTextEdit>(*m_page, "Notes")->setPlainText("three");
    editor<QComboBox>(*m_page, "Priority")->setCurrentIndex(4);
    due->setDate(QDate(2027, 1, 2));
    m_page->findChild<CardForm *>()->save();
    const CardValues expected = {{TaskField::State, TaskState::Open},
                                 {TaskField::Priority, 5},
                                 {TaskField::Description, "b"},
                                 {TaskField::Notes, "three"},
                                 {TaskField::DueDate, day(2027, 1, 2)}};
    QCOMPARE(m_page->book()->values(task), expected);
}

void TasksPageTest::takingTheDueDateAwayClearsIt()
{
    const unsigned long task = addTask(m_page->book(), "a", {{TaskField::DueDate, day(2026, 5, 6)}});
    m_page->editCard();
    box("On")->setChecked(false);
    m_page->findChild<CardForm *>()->save();
    QVERIFY(m_page->book()->value(task, TaskField::DueDate).isNull());
}

void TasksPageTest::completingInTheFormKeepsTheDay()
{
    const unsigned long task = addTask(m_page->book(), "a");
    m_page->editCard();
    box("Completed")->setChecked(true);
    m_page->findChild<CardForm *>()->save();
    QCOMPARE(m_page->book()->value(task, TaskField::State).toInt(), TaskState::Done);
    QCOMPARE(m_page->book()->value(task, TaskField::FinishDate).toDate(), QDate::currentDate());
}

void TasksPageTest::unknownPriorityStays()
{
    const unsigned long task = addTask(m_page->book(), "a", {{TaskField::Priority, 9}});
    m_page->editCard();
    type(*m_page, "Description", "b");
    m_page->findChild<CardForm *>()->save();
    QCOMPARE(m_page->book()->value(task, TaskField::Priority).toInt(), 9);
}

void TasksPageTest::taskWithNothingIsRefused()
{
    m_page->newCard();
    MessageRobot robot({QMessageBox::Ok});
    m_page->findChild<CardForm *>()->save();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(m_page->book()->count(), 0);
}

void TasksPageTest::taskWithoutAStateCountsAsDone()
{
    m_page->book()->save(0, {{TaskField::Description, "a"}});
    QCOMPARE(tick(*m_page, 0), Qt::Checked);
}

void TasksPageTest::openedFormIsNotModified()
{
    addTask(m_page->book(), "a", {{TaskField::Priority, 2}, {TaskField::DueDate, day(2026, 5, 6)}});
    m_page->editCard();
    QVERIFY(!m_page->findChild<CardForm *>()->isModified());
    editor<QComboBox>(*m_page, "Priority")->setCurrentIndex(0);
    QVERIFY(m_page->findChild<CardForm *>()->isModified());
}

void TasksPageTest::undoBringsBackAllFields()
{
    const unsigned long task = addTask(m_page->book(), "a",
                                       {{TaskField::Priority, 2},
                                        {TaskField::Notes, "one\ntwo"},
                                        {TaskField::StartDate, day(2026, 5, 1)},
                                        {TaskField::FinishDate, day(2026, 5, 7)},
                                        {TaskField::DueDate, day(2026, 5, 6)}});
    const CardValues before = m_page->book()->values(task);
    QCOMPARE(before.size(), 7);
    MessageRobot robot({QMessageBox::Yes});
    m_page->deleteCard();
    QCOMPARE(m_page->book()->count(), 0);
    m_page->undoDelete();
    QCOMPARE(m_page->book()->values(m_page->book()->cardAt(0)), before);
}

void TasksPageTest::tabulatorLeadsThroughTheForm()
{
    m_page->newCard();
    auto *notes = m_page->findChild<QPlainTextEdit *>();
    notes->setFocus();
    QTest::keyClick(notes, Qt::Key_Tab);
    QCOMPARE(m_page->focusWidget(), filing(*m_page).findChild<QComboBox *>());
    QCOMPARE(notes->toPlainText(), QString());
}

void TasksPageTest::tickLeavesTheListInItsPlace()
{
    QList<Card> cards;
    for (int i = 100; i < 200; ++i)
        cards.append(
            {{{TaskField::Description, QString::number(i)}, {TaskField::State, TaskState::Open}}, {}});
    QVERIFY(m_page->book()->addAll(cards) != 0);
    auto *list = m_page->findChild<QTreeView *>();
    m_page->selectRow(50);
    const QModelIndex bottom = list->indexAt({5, list->viewport()->height() - 5});
    const QPoint spot = list->visualRect(bottom.siblingAtColumn(Description)).center();
    const int row = bottom.row() - 1; // the last one may be cut
    QVERIFY(row > 50);
    list->setFocus();
    list->setCurrentIndex(list->model()->index(row, Description));
    const int place = list->verticalScrollBar()->value();
    QTest::keyClick(list, Qt::Key_Space);
    QTRY_COMPARE_WITH_TIMEOUT(tick(*m_page, row), Qt::Checked, Patience);
    QCOMPARE(list->currentIndex().row(), row);
    QCOMPARE(list->verticalScrollBar()->value(), place);
    QCOMPARE(list->indexAt(spot).row(), row + 1);
}

QTEST_MAIN(TasksPageTest)
#include "taskspagetest.moc"
