#include "childprocess.h"
#include "mappingfixture.h"
#include "timeconversion.h"

namespace {

constexpr time_t SpringChange = 1710054000; // of New York, 2024-03-10 02:00 to 03:00
constexpr time_t AutumnChange = 1730613600; // 2024-11-03 02:00 to 01:00
constexpr time_t HalfHour = 1800;
constexpr int HalfHoursAround = 60;

QByteArray zone()
{
    return qgetenv("TZ");
}

QByteArray utcFields(time_t moment)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(moment, Qt::UTC);
    return ptime(time.date().year(), time.date().month(), time.date().day(), time.time().hour(),
                 time.time().minute(), time.time().second());
}

QByteArray midnightOf(QDate date)
{
    return ptime(date.year(), date.month(), date.day(), 0, 0, 0);
}

Event eventFrom(time_t start, time_t end)
{
    Event event;
    event.setDescription("an event");
    event.setStart(start);
    event.setEnd(end);
    return event;
}

Event allDayFrom(QDate first, QDate last)
{
    Event event;
    event.setDescription("a day");
    event.setType(Event::AllDay);
    event.setStart(QDateTime(first, QTime(0, 0)));
    event.setEnd(QDateTime(last, QTime(23, 59, 59)));
    return event;
}

Event::RepeatPattern dailyUntil(QDate last)
{
    Event::RepeatPattern pattern;
    pattern.type = Event::Daily;
    pattern.frequency = 1;
    pattern.setEndDate(last);
    return pattern;
}

/** Another process tells what it reads: an event, an event of all day that repeats, and a task. */
int childMain(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    const auto datebook = openDatebook();
    const Event event =
        KyPDataBase::toEvent(datebook.get(), arguments[1].toULong(), KyPDataBase::CategoriesNone);
    const Event day =
        KyPDataBase::toEvent(datebook.get(), arguments[2].toULong(), KyPDataBase::CategoriesNone);
    const auto todolist = openTodolist();
    const Task task =
        KyPDataBase::toTask(todolist.get(), arguments[3].toULong(), KyPDataBase::CategoriesNone);
    ChildProcess::say(QByteArray::number(qint64(event.startUTC())) + ' ' +
                      QByteArray::number(qint64(event.endUTC())));
    const QDate dates[] = {day.start(true).date(), day.end(true).date(), day.repeatPattern().endDate(),
                           task.dueDate()};
    for (const QDate date : dates)
        ChildProcess::say(date.toString(Qt::ISODate).toLatin1());
    return 0;
}

} // namespace

/** Runs in one zone, that of TZ; the zones are in CMakeLists.txt. */
class RecordZonesTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void zoneIsTheOneAskedFor();
    void wallClockTimesAreStoredInUtc_data();
    void wallClockTimesAreStoredInUtc();
    void momentsSurviveBothChangesOfClock_data();
    void momentsSurviveBothChangesOfClock();
    void everyDayOfAYear();
    void everyRecordInBothCategorySpaces();
    void anotherZoneReadsTheSame_data();
    void anotherZoneReadsTheSame();

private:
    std::unique_ptr<KyPDataBase> datebook;
    std::unique_ptr<KyPDataBase> todolist;
};

void RecordZonesTest::init()
{
    datebook.reset();
    todolist.reset();
    datebook = openDatebook();
    todolist = openTodolist();
}

void RecordZonesTest::zoneIsTheOneAskedFor()
{
    QCOMPARE(zone(), qEnvironmentVariable("KY_TEST_TZ", "Asia/Tokyo").toLatin1());
    QCOMPARE(QTimeZone::systemTimeZoneId(), zone());
}

void RecordZonesTest::wallClockTimesAreStoredInUtc_data()
{
    QTest::addColumn<QString>("local");
    QTest::addColumn<QString>("stored");
    const auto row = [](const char *where, const char *local, const char *stored) {
        if (zone() == where)
            QTest::newRow(local) << QString(local) << QString(stored);
    };
    row("UTC", "2024-03-10 02:30:00", "2024-03-10 02:30:00");
    row("Asia/Tokyo", "2024-03-10 02:30:00", "2024-03-09 17:30:00");
    row("Asia/Kathmandu", "2024-03-10 05:44:59", "2024-03-09 23:59:59");
    row("America/New_York", "2024-03-10 01:59:59", "2024-03-10 06:59:59");
    row("America/New_York", "2024-03-10 02:30:00", "2024-03-10 07:30:00"); // skipped: moves forward
    row("America/New_York", "2024-03-10 03:00:00", "2024-03-10 07:00:00");
    row("America/New_York", "2024-11-03 01:30:00", "2024-11-03 05:30:00"); // twice: the first
    row("America/New_York", "2024-11-03 02:00:00", "2024-11-03 07:00:00");
    row("Asia/Beirut", "2024-03-31 00:15:00", "2024-03-30 22:15:00"); // skipped: moves forward
}

void RecordZonesTest::wallClockTimesAreStoredInUtc()
{
    QFETCH(QString, local);
    QFETCH(QString, stored);
    Event event;
    event.setStart(wall(local));
    event.setEnd(wall(local));
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addDatebookEntry(datebook.get(), &card, event, KyPDataBase::CategoriesNone));
    QCOMPARE(storedBytes(*datebook, card, "TIM1"), utcFields(TimeConversion::toRawUTC(wall(stored))));
    QCOMPARE(storedBytes(*datebook, card, "TIM2"), storedBytes(*datebook, card, "TIM1"));
}

void RecordZonesTest::momentsSurviveBothChangesOfClock_data()
{
    QTest::addColumn<qint64>("change");
    QTest::newRow("spring") << qint64(SpringChange);
    QTest::newRow("autumn") << qint64(AutumnChange);
}

void RecordZonesTest::momentsSurviveBothChangesOfClock()
{
    QFETCH(qint64, change);
    QVERIFY(datebook->beginAction());
    for (int i = -HalfHoursAround; i <= HalfHoursAround; ++i) {
        Event event = eventFrom(change + i * HalfHour, change + i * HalfHour + 5400);
        unsigned long card = 0;
        QVERIFY(KyPDataBase::addDatebookEntry(datebook.get(), &card, event, KyPDataBase::CategoriesNone));
        QCOMPARE(storedBytes(*datebook, card, "TIM1"), utcFields(event.startUTC()));
        QCOMPARE(storedBytes(*datebook, card, "TIM2"), utcFields(event.endUTC()));
        event.setRid(card);
        QCOMPARE(KyPDataBase::toEvent(datebook.get(), card, KyPDataBase::CategoriesNone), event);
        unsigned long copy = 0;
        QVERIFY(KyPDataBase::addDatebookEntry(datebook.get(), &copy, datebook.get(), card, nullptr));
        event.setRid(copy);
        QCOMPARE(KyPDataBase::toEvent(datebook.get(), copy, KyPDataBase::CategoriesNone), event);
    }
    QVERIFY(datebook->endAction());
}

void RecordZonesTest::everyDayOfAYear()
{
    QVERIFY(datebook->beginAction());
    QVERIFY(todolist->beginAction());
    for (QDate day(2024, 1, 1); day.year() == 2024; day = day.addDays(1)) {
        Event event = allDayFrom(day, day.addDays(1));
        event.setRepeat(true, dailyUntil(day));
        unsigned long card = 0;
        QVERIFY(KyPDataBase::addDatebookEntry(datebook.get(), &card, event, KyPDataBase::CategoriesNone));
        event.setRid(card);
        const Event back = KyPDataBase::toEvent(datebook.get(), card, KyPDataBase::CategoriesNone);
        QCOMPARE(back, event);
        QCOMPARE(back.start(true).date(), day);
        QCOMPARE(back.end(true).date(), day.addDays(1));
        QCOMPARE(back.repeatPattern().endDate(), day);
        QCOMPARE(storedBytes(*datebook, card, "TIM1"), midnightOf(day));
        QCOMPARE(storedBytes(*datebook, card, "REDT"), midnightOf(day));
        Task task;
        task.setStartDate(day);
        task.setCompletedDate(day.addDays(1));
        task.setDueDate(day.addDays(2));
        QVERIFY(KyPDataBase::addTodolistEntry(todolist.get(), &card, task, KyPDataBase::CategoriesNone));
        QCOMPARE(KyPDataBase::toTask(todolist.get(), card, KyPDataBase::CategoriesNone), task);
        QCOMPARE(storedBytes(*todolist, card, "ETDY"), midnightOf(day));
        unsigned long copy = 0;
        QVERIFY(KyPDataBase::addTodolistEntry(todolist.get(), &copy, todolist.get(), card, nullptr));
        QCOMPARE(KyPDataBase::toTask(todolist.get(), copy, KyPDataBase::CategoriesNone), task);
    }
    QVERIFY(todolist->endAction());
    QVERIFY(datebook->endAction());
}

void RecordZonesTest::everyRecordInBothCategorySpaces()
{
    const auto addressbook = openAddressbook();
    const QList<int> inTable = {tableCategory("one"), tableCategory("two")};
    const QList<int> inFile = {fileCategory(QString(), "two"), fileCategory(QString(), "three")};
    for (const auto type : {KyPDataBase::CategoriesPdtm, KyPDataBase::CategoriesXml}) {
        const QList<int> categories = type == KyPDataBase::CategoriesPdtm ? inTable : inFile;
        unsigned long card = 0;

        Contact contact;
        for (int key = Contact::Title; key < Contact::Groups; ++key)
            contact.replace(key, QString::number(key));
        contact.setCategories(categories);
        QVERIFY(KyPDataBase::addAddressbookEntry(addressbook.get(), &card, contact, type));
        QCOMPARE(KyPDataBase::toContact(addressbook.get(), card, type), contact);

        Task task;
        task.setDescription("a task");
        task.setNotes("line\nline");
        task.setPriority(1);
        task.setStartDate(QDate(2024, 3, 10));
        task.setDueDate(QDate(2024, 11, 3));
        task.setCategories(categories);
        QVERIFY(KyPDataBase::addTodolistEntry(todolist.get(), &card, task, type));
        QCOMPARE(KyPDataBase::toTask(todolist.get(), card, type), task);

        Event event = eventFrom(SpringChange - HalfHour, AutumnChange + HalfHour);
        event.setLocation("somewhere");
        event.setNotes("line\nline");
        event.setAlarm(true, 10, Event::Loud);
        event.setRepeat(true, dailyUntil(QDate(2024, 11, 3)));
        event.setCategories(categories);
        QVERIFY(KyPDataBase::addDatebookEntry(datebook.get(), &card, event, type));
        event.setRid(card);
        QCOMPARE(KyPDataBase::toEvent(datebook.get(), card, type), event);
    }
}

void RecordZonesTest::anotherZoneReadsTheSame_data()
{
    QTest::addColumn<QString>("there");
    for (const char *there : {"UTC", "Asia/Tokyo", "America/New_York", "Asia/Kathmandu", "Asia/Beirut"})
        QTest::newRow(there) << QString(there);
}

void RecordZonesTest::anotherZoneReadsTheSame()
{
    QFETCH(QString, there);
    const QDate skipped(2024, 3, 31); // its midnight, in Beirut
    const Event event = eventFrom(SpringChange - HalfHour, SpringChange + HalfHour);
    Event day = allDayFrom(skipped, QDate(2024, 4, 2));
    day.setRepeat(true, dailyUntil(skipped));
    Task task;
    task.setDueDate(skipped);
    unsigned long cards[3] = {};
    QVERIFY(KyPDataBase::addDatebookEntry(datebook.get(), &cards[0], event, KyPDataBase::CategoriesNone));
    QVERIFY(KyPDataBase::addDatebookEntry(datebook.get(), &cards[1], day, KyPDataBase::CategoriesNone));
    QVERIFY(KyPDataBase::addTodolistEntry(todolist.get(), &cards[2], task, KyPDataBase::CategoriesNone));
    datebook.reset();
    todolist.reset();

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("TZ", there);
    ChildProcess child({QString::number(cards[0]), QString::number(cards[1]), QString::number(cards[2])},
                       environment);
    QCOMPARE(child.readLine(), QByteArray::number(qint64(SpringChange - HalfHour)) + ' ' +
                                   QByteArray::number(qint64(SpringChange + HalfHour)));
    for (const char *date : {"2024-03-31", "2024-04-02", "2024-03-31", "2024-03-31"})
        QCOMPARE(child.readLine(), QByteArray(date));
    QCOMPARE(child.finish(), 0);
}

KY_TEST_MAIN_WITH_CHILD(RecordZonesTest, childMain)
#include "recordzonestest.moc"
