#include "event.h"

#include <QTest>

static void setZone(const char *zone)
{
    qputenv("TZ", zone);
}

static QDateTime wall(const QString &text)
{
    const QDateTime parsed = QDateTime::fromString(text, "yyyy-MM-dd hh:mm:ss");
    return QDateTime(parsed.date(), parsed.time(), Qt::UTC);
}

static QString shown(const QDateTime &time)
{
    return time.date().toString("yyyy-MM-dd ") + time.time().toString("hh:mm:ss");
}

class EventTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { setZone("Asia/Tokyo"); }

    void numbersOfTheTypes();
    void newEventIsEmpty();
    void keepsWhatIsSet();
    void localTimesBecomeMoments_data();
    void localTimesBecomeMoments();
    void momentsAreShownInLocalTime_data();
    void momentsAreShownInLocalTime();
    void secondOfADoubledHourIsKept();
    void invalidTimesAreNone();
    void allDayIsShownInWholeDays();
    void allDayShiftsWithTheZone();
    void typeLeavesTheTimesAlone();
    void alarmThatIsOffHasNoTime();
    void newPatternRepeatsNothing();
    void repeatThatIsOffHasNoPattern();
    void patternWithoutTypeIsNoRepeat();
    void endDateOfAPattern_data();
    void endDateOfAPattern();
    void patternsAreEqual();
    void copiesAreIndependent();
    void equalityLooksAtEverything();
};

void EventTest::numbersOfTheTypes()
{
    QCOMPARE(int(Event::Timed), 0);
    QCOMPARE(int(Event::AllDay), 1);
    QCOMPARE(int(Event::Silent), 0);
    QCOMPARE(int(Event::Loud), 1);
    QCOMPARE(int(Event::NoRepeat), -1);
    QCOMPARE(int(Event::Daily), 0);
    QCOMPARE(int(Event::Weekly), 1);
    QCOMPARE(int(Event::MonthlyDay), 2);
    QCOMPARE(int(Event::MonthlyDate), 3);
    QCOMPARE(int(Event::Yearly), 4);
}

void EventTest::newEventIsEmpty()
{
    const Event event;
    QCOMPARE(event.uid(), 0ul);
    QVERIFY(event.description().isEmpty());
    QVERIFY(event.location().isEmpty());
    QVERIFY(event.notes().isEmpty());
    QCOMPARE(event.type(), Event::Timed);
    for (const bool actual : {false, true}) {
        QVERIFY(!event.start(actual).isValid());
        QVERIFY(!event.end(actual).isValid());
    }
    QCOMPARE(event.startUTC(), time_t(-1));
    QCOMPARE(event.endUTC(), time_t(-1));
    QVERIFY(!event.hasAlarm());
    QCOMPARE(event.alarmTime(), 0);
    QCOMPARE(event.alarmSound(), Event::Silent);
    QVERIFY(!event.hasRepeat());
    QVERIFY(event.categories().isEmpty());
}

void EventTest::keepsWhatIsSet()
{
    Event event;
    event.setRid(17);
    event.setDescription("party");
    event.setLocation("garden");
    event.setNotes("line\nline");
    event.setType(Event::AllDay);
    event.setAlarm(true, 90, Event::Loud);
    event.setCategories({3, 4});
    Event::RepeatPattern pattern;
    pattern.type = Event::Weekly;
    pattern.frequency = 2;
    pattern.position = 3;
    pattern.days = 0x41;
    pattern.createTime = 12345;
    event.setRepeat(true, pattern);
    QCOMPARE(event.uid(), 17ul);
    QCOMPARE(event.description(), QString("party"));
    QCOMPARE(event.location(), QString("garden"));
    QCOMPARE(event.notes(), QString("line\nline"));
    QCOMPARE(event.type(), Event::AllDay);
    QVERIFY(event.hasAlarm());
    QCOMPARE(event.alarmTime(), 90);
    QCOMPARE(event.alarmSound(), Event::Loud);
    QVERIFY(event.hasRepeat());
    QVERIFY(event.repeatPattern() == pattern);
    QCOMPARE(event.categories(), (QList<int>{3, 4}));
}

void EventTest::localTimesBecomeMoments_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("local");
    QTest::addColumn<qint64>("moment");
    const auto row = [](const char *zone, const char *local, qint64 moment) {
        QTest::addRow("%s %s", zone, local) << QByteArray(zone) << QString(local) << moment;
    };
    row("UTC", "2000-02-29 12:34:56", 951827696);
    row("Asia/Tokyo", "2000-01-01 00:00:00", 946652400);
    row("Asia/Kathmandu", "2024-01-01 05:45:00", 1704067200);
    row("America/New_York", "2024-03-10 01:59:59", 1710053999);
    row("America/New_York", "2024-03-10 02:30:00", 1710055800); // skipped: moves to 03:30
    row("America/New_York", "2024-11-03 01:30:00", 1730611800); // comes twice: the first
}

void EventTest::localTimesBecomeMoments()
{
    QFETCH(QByteArray, zone);
    QFETCH(QString, local);
    QFETCH(qint64, moment);
    setZone(zone.constData());
    Event event;
    event.setStart(wall(local));
    event.setEnd(wall(local));
    QCOMPARE(qint64(event.startUTC()), moment);
    QCOMPARE(qint64(event.endUTC()), moment);
}

void EventTest::momentsAreShownInLocalTime_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<qint64>("moment");
    QTest::addColumn<QString>("local");
    const auto row = [](const char *zone, qint64 moment, const char *local) {
        QTest::addRow("%s %s", zone, local) << QByteArray(zone) << moment << QString(local);
    };
    row("UTC", 951827696, "2000-02-29 12:34:56");
    row("Asia/Tokyo", 946652400, "2000-01-01 00:00:00");
    row("Asia/Kathmandu", 1704067200, "2024-01-01 05:45:00");
    row("America/New_York", 1710054000, "2024-03-10 03:00:00");
    row("America/New_York", 1730615400, "2024-11-03 01:30:00");
}

void EventTest::momentsAreShownInLocalTime()
{
    QFETCH(QByteArray, zone);
    QFETCH(qint64, moment);
    QFETCH(QString, local);
    setZone(zone.constData());
    Event event;
    event.setStart(moment);
    event.setEnd(moment);
    for (const bool actual : {false, true}) {
        QCOMPARE(shown(event.start(actual)), local);
        QCOMPARE(shown(event.end(actual)), local);
    }
}

void EventTest::secondOfADoubledHourIsKept()
{
    setZone("America/New_York");
    Event event;
    event.setStart(time_t(1730615400));
    QCOMPARE(shown(event.start(false)), QString("2024-11-03 01:30:00"));
    QCOMPARE(event.startUTC(), time_t(1730615400));
}

void EventTest::invalidTimesAreNone()
{
    Event event;
    event.setStart(time_t(1000));
    event.setEnd(time_t(1000));
    event.setStart(QDateTime());
    event.setEnd(wall("2026-02-30 00:00:00"));
    QCOMPARE(event.startUTC(), time_t(-1));
    QCOMPARE(event.endUTC(), time_t(-1));
    QVERIFY(!event.start(false).isValid());
    QVERIFY(!event.end(false).isValid());
    event.setType(Event::AllDay);
    QVERIFY(!event.start(true).isValid());
    QVERIFY(!event.end(true).isValid());
}

void EventTest::allDayIsShownInWholeDays()
{
    Event event;
    event.setType(Event::AllDay);
    event.setStart(wall("2026-05-01 09:30:00"));
    event.setEnd(wall("2026-05-03 10:00:00"));
    QCOMPARE(shown(event.start(false)), QString("2026-05-01 09:30:00"));
    QCOMPARE(shown(event.end(false)), QString("2026-05-03 10:00:00"));
    QCOMPARE(shown(event.start(true)), QString("2026-05-01 00:00:00"));
    QCOMPARE(shown(event.end(true)), QString("2026-05-03 23:59:59"));
    event.setType(Event::Timed);
    QCOMPARE(shown(event.start(true)), QString("2026-05-01 09:30:00"));
    QCOMPARE(shown(event.end(true)), QString("2026-05-03 10:00:00"));
}

/** The moments stay what they are when the zone changes; calendars see the shift in start(false). */
void EventTest::allDayShiftsWithTheZone()
{
    Event event;
    event.setType(Event::AllDay);
    event.setStart(wall("2026-05-01 00:00:00"));
    event.setEnd(wall("2026-05-01 23:59:59"));
    setZone("Asia/Shanghai");
    QCOMPARE(shown(event.start(false)), QString("2026-04-30 23:00:00"));
    QCOMPARE(shown(event.end(false)), QString("2026-05-01 22:59:59"));
}

void EventTest::typeLeavesTheTimesAlone()
{
    Event event;
    event.setStart(time_t(1000));
    event.setEnd(time_t(2000));
    event.setType(Event::AllDay);
    QCOMPARE(event.startUTC(), time_t(1000));
    QCOMPARE(event.endUTC(), time_t(2000));
}

void EventTest::alarmThatIsOffHasNoTime()
{
    Event event;
    event.setAlarm(false, 30, Event::Loud);
    QVERIFY(!event.hasAlarm());
    QCOMPARE(event.alarmTime(), 0);
    QCOMPARE(event.alarmSound(), Event::Loud);
}

void EventTest::newPatternRepeatsNothing()
{
    const Event::RepeatPattern pattern;
    QCOMPARE(pattern.type, -1);
    QCOMPARE(pattern.frequency, -1);
    QCOMPARE(pattern.position, 0);
    QCOMPARE(pattern.days, 0);
    QVERIFY(!pattern.hasEndDate);
    QCOMPARE(pattern.endDateUTC, time_t(0));
    QCOMPARE(pattern.createTime, time_t(-1));
    QVERIFY(!pattern.endDate().isValid());
}

void EventTest::repeatThatIsOffHasNoPattern()
{
    Event::RepeatPattern daily;
    daily.type = Event::Daily;
    daily.frequency = 1;
    Event event;
    event.setRepeat(true, daily);
    QVERIFY(event.hasRepeat());
    event.setRepeat(false, daily);
    QVERIFY(!event.hasRepeat());
    QVERIFY(event.repeatPattern() == Event::RepeatPattern());
}

void EventTest::patternWithoutTypeIsNoRepeat()
{
    Event event;
    event.setRepeat(true, Event::RepeatPattern());
    QVERIFY(!event.hasRepeat());
}

void EventTest::endDateOfAPattern_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QDate>("date");
    QTest::addColumn<qint64>("moment");
    QTest::newRow("UTC") << QByteArray("UTC") << QDate(2024, 1, 1) << qint64(1704067200);
    QTest::newRow("Tokyo") << QByteArray("Asia/Tokyo") << QDate(2000, 1, 1) << qint64(946652400);
    QTest::newRow("New York") << QByteArray("America/New_York") << QDate(2024, 3, 11) << qint64(1710129600);
    // Midnight is skipped there.
    QTest::newRow("Beirut") << QByteArray("Asia/Beirut") << QDate(2024, 3, 31) << qint64(1711836000);
}

void EventTest::endDateOfAPattern()
{
    QFETCH(QByteArray, zone);
    QFETCH(QDate, date);
    QFETCH(qint64, moment);
    setZone(zone.constData());
    Event::RepeatPattern pattern;
    pattern.setEndDate(date);
    QVERIFY(pattern.hasEndDate);
    QCOMPARE(qint64(pattern.endDateUTC), moment);
    QCOMPARE(pattern.endDate(), date);
    pattern.setEndDate(QDate());
    QVERIFY(!pattern.hasEndDate);
    QVERIFY(!pattern.endDate().isValid());
}

void EventTest::patternsAreEqual()
{
    using Pattern = Event::RepeatPattern;
    const std::function<void(Pattern &)> changes[] = {
        [](Pattern &pattern) { pattern.type = 0; },          [](Pattern &pattern) { pattern.frequency = 1; },
        [](Pattern &pattern) { pattern.position = 1; },      [](Pattern &pattern) { pattern.days = 1; },
        [](Pattern &pattern) { pattern.hasEndDate = true; }, [](Pattern &pattern) { pattern.createTime = 1; },
    };
    for (const auto &change : changes) {
        Pattern changed;
        change(changed);
        QVERIFY(!(changed == Pattern()));
        Pattern same;
        change(same);
        QVERIFY(changed == same);
    }
    Pattern one;
    Pattern other;
    other.endDateUTC = 1; // doesn't count
    QVERIFY(one == other);
    one.hasEndDate = other.hasEndDate = true;
    QVERIFY(!(one == other));
}

void EventTest::copiesAreIndependent()
{
    Event event;
    event.setDescription("before");
    Event copy = event;
    copy.setDescription("after");
    QCOMPARE(event.description(), QString("before"));
    event = copy;
    copy.setDescription("later");
    QCOMPARE(event.description(), QString("after"));
}

void EventTest::equalityLooksAtEverything()
{
    const std::function<void(Event &)> changes[] = {
        [](Event &event) { event.setRid(1); },
        [](Event &event) { event.setDescription("x"); },
        [](Event &event) { event.setLocation("x"); },
        [](Event &event) { event.setNotes("x"); },
        [](Event &event) { event.setType(Event::AllDay); },
        [](Event &event) { event.setStart(time_t(1)); },
        [](Event &event) { event.setEnd(time_t(1)); },
        [](Event &event) { event.setAlarm(true, 0, Event::Silent); },
        [](Event &event) { event.setAlarm(false, 0, Event::Loud); },
        [](Event &event) {
            Event::RepeatPattern pattern;
            pattern.type = Event::Daily;
            event.setRepeat(true, pattern);
        },
        [](Event &event) { event.setCategories({1}); },
    };
    for (const auto &change : changes) {
        Event changed;
        change(changed);
        QVERIFY(!(changed == Event()));
        Event same;
        change(same);
        QVERIFY(changed == same);
    }
    Event one;
    Event other;
    one.setAlarm(true, 5, Event::Silent);
    other.setAlarm(true, 6, Event::Silent);
    QVERIFY(!(one == other));
}

QTEST_GUILESS_MAIN(EventTest)
#include "eventtest.moc"
