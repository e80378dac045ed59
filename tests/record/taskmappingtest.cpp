#include "mappingfixture.h"
#include "writewatch.h"

namespace {

const QByteArrayList FieldCodes = {"MARK", "PRTY", "TITL", "MEM1", "ETDY", "FNDY", "LTDY"};

Task fullTask()
{
    Task task;
    task.setDescription(QString::fromUtf8("書く\n今日"));
    task.setNotes("line\r\nline\n");
    task.setPriority(5);
    task.setCompleted(true);
    task.setStartDate(QDate(2026, 11, 1));
    task.setCompletedDate(QDate(2026, 11, 20));
    task.setDueDate(QDate(2026, 11, 30));
    return task;
}

} // namespace

class TaskMappingTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { WriteWatch::reset(); }

    void fieldsAreWrittenInOrder();
    void firstFailingWriteCancels_data();
    void firstFailingWriteCancels();
    void fieldsHaveTheirValues();
    void markIsInverted();
    void missingMarkReadsAsCompleted();
    void otherMarkReadsAsCompleted();
    void noDueDateClearsItsField();
    void datesAreClearedOneByOne_data();
    void datesAreClearedOneByOne();
    void priorityIsOneByte_data();
    void priorityIsOneByte();
    void roundTripInTheTable();
    void roundTripInTheFile();
    void categoriesAreThoseOfTheTodoList();

private:
    unsigned long add(const Task &task)
    {
        unsigned long card = 7; // not looked at
        return KyPDataBase::addTodolistEntry(db.get(), &card, task, KyPDataBase::CategoriesNone) ? card : 0;
    }
    Task read(unsigned long card) { return KyPDataBase::toTask(db.get(), card, KyPDataBase::CategoriesNone); }

    std::unique_ptr<KyPDataBase> db;
};

void TaskMappingTest::init()
{
    db.reset();
    db = openTodolist();
    QVERIFY(db->isOpened());
}

void TaskMappingTest::fieldsAreWrittenInOrder()
{
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addTodolistEntry(db.get(), &card, fullTask(), KyPDataBase::CategoriesPdtm));
    const QByteArrayList expected =
        QByteArrayList{"ATTR"} + FieldCodes + QByteArrayList{"CTTM", "SYID", "MDTM", "CTGR", "MDTM"};
    QCOMPARE(WriteWatch::codes(), expected);
}

void TaskMappingTest::firstFailingWriteCancels_data()
{
    QTest::addColumn<bool>("isFull");
    QTest::addColumn<int>("place");
    for (int place = 0; place < FieldCodes.size(); ++place) {
        QTest::addRow("%s of a full task", FieldCodes[place].constData()) << true << place;
        QTest::addRow("%s of an empty task", FieldCodes[place].constData()) << false << place;
    }
}

void TaskMappingTest::firstFailingWriteCancels()
{
    QFETCH(bool, isFull);
    QFETCH(int, place);
    const int before = db->count();
    WriteWatch::fail(FieldCodes[place]);
    unsigned long card = 0;
    const Task task = isFull ? fullTask() : Task();
    QVERIFY(!KyPDataBase::addTodolistEntry(db.get(), &card, task, KyPDataBase::CategoriesPdtm));
    QCOMPARE(WriteWatch::codes(), QByteArrayList{"ATTR"} + FieldCodes.first(place + 1));
    QCOMPARE(card, 0ul);
    QCOMPARE(db->count(), before);
    WriteWatch::reset();
    QVERIFY(db->editNewCard()); // the edit is over
    db->cancelEditCard();
}

void TaskMappingTest::fieldsHaveTheirValues()
{
    const unsigned long card = add(fullTask());
    QCOMPARE(db->readUcharField(4, card), 0);
    QCOMPARE(db->readUcharField(5, card), 5);
    QCOMPARE(db->readField(6, card), QString::fromUtf8("書く\n今日"));
    QCOMPARE(db->readField(7, card), QString("line\r\nline\n"));
    QCOMPARE(storedBytes(*db, card, "ETDY"), ptime(2026, 11, 1, 0, 0, 0));
    QCOMPARE(storedBytes(*db, card, "FNDY"), ptime(2026, 11, 20, 0, 0, 0));
    QCOMPARE(storedBytes(*db, card, "LTDY"), ptime(2026, 11, 30, 0, 0, 0));
}

void TaskMappingTest::markIsInverted()
{
    Task task;
    QCOMPARE(db->readUcharField(4, add(task)), 1);
    QVERIFY(!read(add(task)).isCompleted());
    task.setCompleted(true);
    QCOMPARE(db->readUcharField(4, add(task)), 0);
    QVERIFY(read(add(task)).isCompleted());
}

void TaskMappingTest::missingMarkReadsAsCompleted()
{
    const unsigned long card = add(Task());
    QVERIFY(storeBytes(*db, card, "MARK", QByteArray()));
    QCOMPARE(db->readUcharField(4, card), -1);
    QVERIFY(read(card).isCompleted());
    QVERIFY(read(0xFEFF).isCompleted()); // no such card
}

void TaskMappingTest::otherMarkReadsAsCompleted()
{
    const unsigned long card = add(Task());
    QVERIFY(storeBytes(*db, card, "MARK", "\x02"));
    QVERIFY(read(card).isCompleted());
}

void TaskMappingTest::noDueDateClearsItsField()
{
    unsigned long card = add(fullTask());
    Task task = read(card);
    task.setDueDate(QDate());
    QVERIFY(KyPDataBase::editTodolistEntry(db.get(), &card, task, KyPDataBase::CategoriesNone));
    QCOMPARE(storedBytes(*db, card, "LTDY"), QByteArray());
    QVERIFY(!read(card).hasDueDate());
    QCOMPARE(read(card), task);
}

void TaskMappingTest::datesAreClearedOneByOne_data()
{
    QTest::addColumn<QByteArray>("code");
    for (const char *code : {"ETDY", "FNDY", "LTDY"})
        QTest::newRow(code) << QByteArray(code);
}

void TaskMappingTest::datesAreClearedOneByOne()
{
    QFETCH(QByteArray, code);
    unsigned long card = add(fullTask());
    Task task = fullTask();
    if (code == "ETDY")
        task.setStartDate(QDate());
    else if (code == "FNDY")
        task.setCompletedDate(QDate());
    else
        task.setDueDate(QDate());
    QVERIFY(KyPDataBase::editTodolistEntry(db.get(), &card, task, KyPDataBase::CategoriesNone));
    for (const char *other : {"ETDY", "FNDY", "LTDY"})
        QCOMPARE(storedBytes(*db, card, other).isEmpty(), code == other);
    QCOMPARE(read(card), task);
}

void TaskMappingTest::priorityIsOneByte_data()
{
    QTest::addColumn<int>("priority");
    QTest::addColumn<int>("stored");
    QTest::newRow("first") << 1 << 1;
    QTest::newRow("zero") << 0 << 0;
    QTest::newRow("greatest") << 255 << 255;
    QTest::newRow("low byte") << 0x1203 << 3;
    QTest::newRow("none") << -1 << 255;
}

void TaskMappingTest::priorityIsOneByte()
{
    QFETCH(int, priority);
    QFETCH(int, stored);
    Task task;
    task.setPriority(priority);
    const unsigned long card = add(task);
    QCOMPARE(db->readUcharField(5, card), stored);
    QCOMPARE(read(card).priority(), stored);
    QVERIFY(storeBytes(*db, card, "PRTY", QByteArray()));
    QCOMPARE(read(card).priority(), -1);
}

void TaskMappingTest::roundTripInTheTable()
{
    Task task = fullTask();
    task.setCategories({tableCategory("beta"), tableCategory("alpha")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addTodolistEntry(db.get(), &card, task, KyPDataBase::CategoriesPdtm));
    QCOMPARE(KyPDataBase::toTask(db.get(), card, KyPDataBase::CategoriesPdtm), task);
    QCOMPARE(categoryNames(*db, card), (QStringList{"beta", "alpha"}));
}

void TaskMappingTest::roundTripInTheFile()
{
    Task task = fullTask();
    task.setCategories({fileCategory("Todo List", "delta"), fileCategory(QString(), "gamma")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addTodolistEntry(db.get(), &card, task, KyPDataBase::CategoriesXml));
    QCOMPARE(KyPDataBase::toTask(db.get(), card, KyPDataBase::CategoriesXml), task);
    QCOMPARE(categoryNames(*db, card), (QStringList{"delta", "gamma"}));
}

void TaskMappingTest::categoriesAreThoseOfTheTodoList()
{
    Task task;
    task.setCategories({fileCategory("Address Book", "theirs"), fileCategory("Todo List", "ours")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addTodolistEntry(db.get(), &card, task, KyPDataBase::CategoriesXml));
    QCOMPARE(categoryNames(*db, card), QStringList{"ours"});
}

QTEST_MAIN(TaskMappingTest)
#include "taskmappingtest.moc"
