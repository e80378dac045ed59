#include "task.h"

#include <QTest>

class TaskTest : public QObject
{
    Q_OBJECT
private slots:
    void newTaskIsOpen();
    void keepsWhatIsSet();
    void invalidDueDateIsNone();
    void copiesAreIndependent();
    void equalityLooksAtEverything();
};

void TaskTest::newTaskIsOpen()
{
    const Task task;
    QVERIFY(task.description().isEmpty());
    QVERIFY(task.notes().isEmpty());
    QCOMPARE(task.priority(), int(Task::Normal));
    QCOMPARE(task.priority(), 3);
    QVERIFY(!task.isCompleted());
    QVERIFY(!task.startDate().isValid());
    QVERIFY(!task.completedDate().isValid());
    QVERIFY(!task.hasDueDate());
    QVERIFY(!task.dueDate().isValid());
    QVERIFY(task.categories().isEmpty());
}

void TaskTest::keepsWhatIsSet()
{
    Task task;
    task.setDescription("write");
    task.setNotes("line\nline");
    task.setPriority(Task::VeryLow);
    task.setCompleted(true);
    task.setStartDate(QDate(2026, 1, 2));
    task.setCompletedDate(QDate(2026, 3, 4));
    task.setDueDate(QDate(2026, 5, 6));
    task.setCategories({7, 8});
    QCOMPARE(task.description(), QString("write"));
    QCOMPARE(task.notes(), QString("line\nline"));
    QCOMPARE(task.priority(), 5);
    QVERIFY(task.isCompleted());
    QCOMPARE(task.startDate(), QDate(2026, 1, 2));
    QCOMPARE(task.completedDate(), QDate(2026, 3, 4));
    QVERIFY(task.hasDueDate());
    QCOMPARE(task.dueDate(), QDate(2026, 5, 6));
    QCOMPARE(task.categories(), (QList<int>{7, 8}));
}

void TaskTest::invalidDueDateIsNone()
{
    Task task;
    task.setDueDate(QDate(2026, 2, 28));
    QVERIFY(task.hasDueDate());
    task.setDueDate(QDate(2026, 2, 30));
    QVERIFY(!task.hasDueDate());
    QCOMPARE(task, Task());
}

void TaskTest::copiesAreIndependent()
{
    Task task;
    task.setDescription("before");
    Task copy = task;
    copy.setDescription("after");
    QCOMPARE(task.description(), QString("before"));
    task = copy;
    copy.setDescription("later");
    QCOMPARE(task.description(), QString("after"));
}

void TaskTest::equalityLooksAtEverything()
{
    const std::function<void(Task &)> changes[] = {
        [](Task &task) { task.setDescription("x"); },
        [](Task &task) { task.setNotes("x"); },
        [](Task &task) { task.setPriority(1); },
        [](Task &task) { task.setCompleted(true); },
        [](Task &task) { task.setStartDate(QDate(2026, 1, 1)); },
        [](Task &task) { task.setCompletedDate(QDate(2026, 1, 1)); },
        [](Task &task) { task.setDueDate(QDate(2026, 1, 1)); },
        [](Task &task) { task.setCategories({1}); },
    };
    for (const auto &change : changes) {
        Task changed;
        change(changed);
        QVERIFY(!(changed == Task()));
        Task same;
        change(same);
        QVERIFY(changed == same);
    }
}

QTEST_GUILESS_MAIN(TaskTest)
#include "tasktest.moc"
