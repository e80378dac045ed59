#include "mappingfixture.h"
#include "timeconversion.h"
#include "writewatch.h"

namespace {

const QByteArrayList CommonCodes = {"DSRP", "PLCE", "MEM1", "ADAY", "ALSD", "ALED", "TIM1",
                                    "TIM2", "ARON", "ARMN", "ARSD", "MDAY", "RTYP"};
const QByteArrayList RepeatCodes = {"RFRQ", "RPOS", "RDYS", "REND", "REDT"};

/** Times in UTC. */
Event timedEvent(const QString &start, const QString &end)
{
    Event event;
    event.setDescription(QString::fromUtf8("会議"));
    event.setLocation("room 1");
    event.setNotes("line\r\nline\n");
    event.setStart(TimeConversion::toRawUTC(wall(start)));
    event.setEnd(TimeConversion::toRawUTC(wall(end)));
    return event;
}

Event timedEvent()
{
    return timedEvent("2026-11-21 01:02:03", "2026-11-21 04:05:06");
}

Event allDayEvent(QDate first, QDate last)
{
    Event event = timedEvent();
    event.setType(Event::AllDay);
    event.setStart(QDateTime(first, QTime(0, 0)));
    event.setEnd(QDateTime(last, QTime(23, 59, 59)));
    return event;
}

Event::RepeatPattern weekly()
{
    Event::RepeatPattern pattern;
    pattern.type = Event::Weekly;
    pattern.frequency = 2;
    pattern.position = 300;
    pattern.days = 0x55;
    pattern.setEndDate(QDate(2027, 1, 31));
    return pattern;
}

/** With something in every field. */
Event fullEvent()
{
    Event event = timedEvent();
    event.setAlarm(true, 300, Event::Loud);
    event.setRepeat(true, weekly());
    return event;
}

} // namespace

class EventMappingTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { WriteWatch::reset(); }

    void fieldsAreWrittenInOrder_data();
    void fieldsAreWrittenInOrder();
    void firstFailingWriteCancels_data();
    void firstFailingWriteCancels();
    void fieldsHaveTheirValues();
    void readingTellsTheCard();
    void timedEventsAreStoredInUtc();
    void utcFlagStaysClear();
    void allDayEventsAreStoredInLocalTime();
    void allDayEventsAreReadFromTheirDates();
    void becomingTimedClearsTheDates();
    void swappedTimesAreStoredInOrder();
    void swappedDaysStayAsTheyAre();
    void longEventsAreMarked_data();
    void longEventsAreMarked();
    void longDaysAreMarked_data();
    void longDaysAreMarked();
    void alarms_data();
    void alarms();
    void missingAlarmIsNone();
    void noRepeatLeavesTheFieldsAlone();
    void noRepeatEndIsFarAway();
    void repeatEndIsALocalDate();
    void repeatEndsUnlessItsFlagIsZero_data();
    void repeatEndsUnlessItsFlagIsZero();
    void repeatTypes_data();
    void repeatTypes();
    void otherRepeatTypesAreRefused_data();
    void otherRepeatTypesAreRefused();
    void unknownRepeatTypeReadsAsNone_data();
    void unknownRepeatTypeReadsAsNone();
    void numbersAreCutToTheirWidth();
    void eventWithoutTimesIsRefused_data();
    void eventWithoutTimesIsRefused();
    void missingTimesReadAsNone();
    void roundTripInTheTable_data();
    void roundTripInTheTable();
    void roundTripInTheFile();
    void categoriesAreSpeltInTwoWays();

private:
    unsigned long add(const Event &event)
    {
        unsigned long card = 7; // not looked at
        return KyPDataBase::addDatebookEntry(db.get(), &card, event, KyPDataBase::CategoriesNone) ? card : 0;
    }
    Event read(unsigned long card)
    {
        return KyPDataBase::toEvent(db.get(), card, KyPDataBase::CategoriesNone);
    }
    bool edit(unsigned long card, const Event &event)
    {
        return KyPDataBase::editDatebookEntry(db.get(), &card, event, KyPDataBase::CategoriesNone);
    }

    std::unique_ptr<KyPDataBase> db;
};

void EventMappingTest::init()
{
    db.reset();
    db = openDatebook();
    QVERIFY(db->isOpened());
}

void EventMappingTest::fieldsAreWrittenInOrder_data()
{
    QTest::addColumn<Event>("event");
    QTest::addColumn<QByteArrayList>("fields");
    QTest::newRow("timed") << timedEvent() << CommonCodes;
    QTest::newRow("all day") << allDayEvent(QDate(2026, 1, 1), QDate(2026, 1, 1)) << CommonCodes;
    QTest::newRow("repeating") << fullEvent() << CommonCodes + RepeatCodes;
}

void EventMappingTest::fieldsAreWrittenInOrder()
{
    QFETCH(Event, event);
    QFETCH(QByteArrayList, fields);
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addDatebookEntry(db.get(), &card, event, KyPDataBase::CategoriesPdtm));
    const QByteArrayList expected =
        QByteArrayList{"ATTR"} + fields + QByteArrayList{"CTTM", "SYID", "MDTM", "CTGR", "MDTM"};
    QCOMPARE(WriteWatch::codes(), expected);
}

void EventMappingTest::firstFailingWriteCancels_data()
{
    QTest::addColumn<Event>("event");
    QTest::addColumn<int>("place");
    const QByteArrayList all = CommonCodes + RepeatCodes;
    for (int place = 0; place < all.size(); ++place)
        QTest::newRow(all[place].constData()) << fullEvent() << place;
    const Event allDay = allDayEvent(QDate(2026, 1, 1), QDate(2026, 1, 1));
    for (const char *code : {"ADAY", "ALSD", "ALED", "RTYP"})
        QTest::addRow("%s of all day", code) << allDay << int(CommonCodes.indexOf(code));
}

void EventMappingTest::firstFailingWriteCancels()
{
    QFETCH(Event, event);
    QFETCH(int, place);
    const QByteArrayList all = CommonCodes + RepeatCodes;
    const int before = db->count();
    WriteWatch::fail(all[place]);
    unsigned long card = 0;
    QVERIFY(!KyPDataBase::addDatebookEntry(db.get(), &card, event, KyPDataBase::CategoriesPdtm));
    QCOMPARE(WriteWatch::codes(), QByteArrayList{"ATTR"} + all.first(place + 1));
    QCOMPARE(card, 0ul);
    QCOMPARE(db->count(), before);
    WriteWatch::reset();
    QVERIFY(db->editNewCard()); // the edit is over
    db->cancelEditCard();
}

void EventMappingTest::fieldsHaveTheirValues()
{
    const unsigned long card = add(fullEvent());
    QCOMPARE(db->readField(1, card), QString::fromUtf8("会議"));
    QCOMPARE(db->readField(2, card), QString("room 1"));
    QCOMPARE(db->readField(4, card), QString("line\r\nline\n"));
    QCOMPARE(db->readUcharField(7, card), 0);
    QCOMPARE(db->readUcharField(8, card), 0);
    QCOMPARE(db->readUshortField(9, card), 300);
    QCOMPARE(db->readUcharField(10, card), 1);
    QCOMPARE(db->readUcharField(11, card), 1);
    QCOMPARE(db->readUshortField(12, card), 2);
    QCOMPARE(db->readUshortField(13, card), 300);
    QCOMPARE(db->readUcharField(14, card), 0x55);
    QCOMPARE(db->readUcharField(15, card), 1);
    QCOMPARE(storedBytes(*db, card, "REDT"), ptime(2027, 1, 31, 0, 0, 0));
    QCOMPARE(db->readUcharField(19, card), 0);
}

void EventMappingTest::readingTellsTheCard()
{
    const unsigned long card = add(timedEvent());
    QCOMPARE(read(card).uid(), card);
}

void EventMappingTest::timedEventsAreStoredInUtc()
{
    const unsigned long card = add(timedEvent());
    QCOMPARE(storedBytes(*db, card, "TIM1"), ptime(2026, 11, 21, 1, 2, 3));
    QCOMPARE(storedBytes(*db, card, "TIM2"), ptime(2026, 11, 21, 4, 5, 6));
    QCOMPARE(storedBytes(*db, card, "ALSD"), QByteArray());
    QCOMPARE(storedBytes(*db, card, "ALED"), QByteArray());
    QCOMPARE(shown(read(card).start(false)), QString("2026-11-21 10:02:03")); // Tokyo
}

void EventMappingTest::utcFlagStaysClear()
{
    const unsigned long card = add(timedEvent());
    QCOMPARE(shown(db->readTimeField(5, card, false)), QString("2026-11-21 01:02:03"));
    QCOMPARE(shown(db->readTimeField(5, card, true)), QString("2026-11-20 16:02:03"));
}

void EventMappingTest::allDayEventsAreStoredInLocalTime()
{
    const unsigned long card = add(allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 23)));
    QCOMPARE(db->readUcharField(7, card), 1);
    QCOMPARE(storedBytes(*db, card, "TIM1"), ptime(2026, 11, 21, 0, 0, 0));
    QCOMPARE(storedBytes(*db, card, "TIM2"), ptime(2026, 11, 23, 23, 59, 59));
    QCOMPARE(storedBytes(*db, card, "ALSD"), ptime(2026, 11, 21, 31, 63, 63));
    QCOMPARE(storedBytes(*db, card, "ALED"), ptime(2026, 11, 23, 31, 63, 63));
    Event event = allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 23));
    event.setStart(wall("2026-11-21 11:00:00"));
    event.setEnd(wall("2026-11-23 12:00:00"));
    const unsigned long other = add(event);
    for (const char *code : {"TIM1", "TIM2", "ALSD", "ALED"})
        QCOMPARE(storedBytes(*db, other, code), storedBytes(*db, card, code));
}

void EventMappingTest::allDayEventsAreReadFromTheirDates()
{
    const unsigned long card = add(allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 21)));
    QVERIFY(storeBytes(*db, card, "ALSD", ptime(2026, 12, 1, 31, 63, 63)));
    QVERIFY(storeBytes(*db, card, "ALED", ptime(2026, 12, 2, 31, 63, 63)));
    const Event event = read(card);
    QCOMPARE(event.type(), Event::AllDay);
    QCOMPARE(shown(event.start(false)), QString("2026-12-01 00:00:00"));
    QCOMPARE(shown(event.end(false)), QString("2026-12-02 23:59:59"));
}

void EventMappingTest::becomingTimedClearsTheDates()
{
    const unsigned long card = add(allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 21)));
    QVERIFY(edit(card, timedEvent()));
    QCOMPARE(storedBytes(*db, card, "ALSD"), QByteArray());
    QCOMPARE(storedBytes(*db, card, "ALED"), QByteArray());
    QCOMPARE(db->readUcharField(7, card), 0);
    QCOMPARE(read(card).type(), Event::Timed);
}

void EventMappingTest::swappedTimesAreStoredInOrder()
{
    const unsigned long card = add(timedEvent("2026-11-21 04:00:00", "2026-11-19 01:00:00"));
    QCOMPARE(storedBytes(*db, card, "TIM1"), ptime(2026, 11, 19, 1, 0, 0));
    QCOMPARE(storedBytes(*db, card, "TIM2"), ptime(2026, 11, 21, 4, 0, 0));
    QCOMPARE(db->readUcharField(19, card), 1);
    QVERIFY(read(card).start(false) < read(card).end(false));
}

void EventMappingTest::swappedDaysStayAsTheyAre()
{
    const unsigned long card = add(allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 19)));
    QCOMPARE(storedBytes(*db, card, "TIM1"), ptime(2026, 11, 21, 0, 0, 0));
    QCOMPARE(storedBytes(*db, card, "TIM2"), ptime(2026, 11, 19, 23, 59, 59));
    QCOMPARE(db->readDateField(17, card), QDate(2026, 11, 21));
    QCOMPARE(db->readDateField(18, card), QDate(2026, 11, 19));
}

void EventMappingTest::longEventsAreMarked_data()
{
    QTest::addColumn<QString>("end");
    QTest::addColumn<int>("mark");
    QTest::newRow("no time") << "2026-11-21 08:00:00" << 0;
    QTest::newRow("exactly 24 hours") << "2026-11-22 08:00:00" << 0;
    QTest::newRow("a second more") << "2026-11-22 08:00:01" << 1;
    QTest::newRow("swapped, exactly 24 hours") << "2026-11-20 08:00:00" << 0;
    QTest::newRow("swapped, a second more") << "2026-11-20 07:59:59" << 1;
}

void EventMappingTest::longEventsAreMarked()
{
    QFETCH(QString, end);
    QFETCH(int, mark);
    QCOMPARE(db->readUcharField(19, add(timedEvent("2026-11-21 08:00:00", end))), mark);
}

void EventMappingTest::longDaysAreMarked_data()
{
    QTest::addColumn<QDate>("last");
    QTest::addColumn<int>("mark");
    QTest::newRow("one day") << QDate(2026, 11, 21) << 0;
    QTest::newRow("two days") << QDate(2026, 11, 22) << 1;
}

void EventMappingTest::longDaysAreMarked()
{
    QFETCH(QDate, last);
    QFETCH(int, mark);
    QCOMPARE(db->readUcharField(19, add(allDayEvent(QDate(2026, 11, 21), last))), mark);
}

void EventMappingTest::alarms_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<int>("minutes");
    QTest::addColumn<bool>("isLoud");
    QTest::addColumn<int>("storedOn");
    QTest::addColumn<int>("storedMinutes");
    QTest::newRow("loud") << true << 5 << true << 0 << 5;
    QTest::newRow("silent") << true << 10000 << false << 0 << 10000;
    QTest::newRow("at once") << true << 0 << true << 0 << 0;
    QTest::newRow("longest") << true << 65535 << true << 0 << 65535;
    QTest::newRow("off") << false << 5 << false << 1 << 0;
    QTest::newRow("off, with a sound") << false << 5 << true << 1 << 0;
}

void EventMappingTest::alarms()
{
    QFETCH(bool, on);
    QFETCH(int, minutes);
    QFETCH(bool, isLoud);
    QFETCH(int, storedOn);
    QFETCH(int, storedMinutes);
    Event event = timedEvent();
    event.setAlarm(on, minutes, isLoud ? Event::Loud : Event::Silent);
    const unsigned long card = add(event);
    QCOMPARE(db->readUcharField(8, card), storedOn);
    QCOMPARE(db->readUshortField(9, card), storedMinutes);
    QCOMPARE(db->readUcharField(10, card), isLoud ? 1 : 0);
    event.setRid(card);
    QCOMPARE(read(card), event);
}

void EventMappingTest::missingAlarmIsNone()
{
    const unsigned long card = add(fullEvent());
    QVERIFY(storeBytes(*db, card, "ARON", QByteArray()));
    QVERIFY(storeBytes(*db, card, "ARSD", "\x02"));
    QVERIFY(!read(card).hasAlarm());
    QCOMPARE(read(card).alarmSound(), Event::Silent);
}

void EventMappingTest::noRepeatLeavesTheFieldsAlone()
{
    const unsigned long card = add(fullEvent());
    QVERIFY(edit(card, timedEvent()));
    QCOMPARE(db->readUcharField(11, card), 0xFF);
    QCOMPARE(db->readUshortField(12, card), 2);
    QCOMPARE(db->readUshortField(13, card), 300);
    QCOMPARE(db->readUcharField(14, card), 0x55);
    QCOMPARE(db->readUcharField(15, card), 1);
    QCOMPARE(storedBytes(*db, card, "REDT"), ptime(2027, 1, 31, 0, 0, 0));
    QVERIFY(!read(card).hasRepeat());
    QCOMPARE(read(card).repeatPattern(), Event::RepeatPattern());
}

void EventMappingTest::noRepeatEndIsFarAway()
{
    Event event = timedEvent();
    Event::RepeatPattern pattern = weekly();
    pattern.setEndDate(QDate());
    event.setRepeat(true, pattern);
    const unsigned long card = add(event);
    QCOMPARE(db->readUcharField(15, card), 0);
    QCOMPARE(storedBytes(*db, card, "REDT"), ptime(2099, 12, 31, 0, 0, 0));
    QVERIFY(!read(card).repeatPattern().hasEndDate);
    QCOMPARE(read(card).repeatPattern(), pattern);
}

void EventMappingTest::repeatEndIsALocalDate()
{
    Event event = timedEvent();
    Event::RepeatPattern pattern = weekly();
    pattern.endDateUTC = TimeConversion::toUTC(wall("2027-02-03 20:00:00"));
    event.setRepeat(true, pattern);
    const unsigned long card = add(event);
    QCOMPARE(storedBytes(*db, card, "REDT"), ptime(2027, 2, 3, 0, 0, 0));
    QCOMPARE(read(card).repeatPattern().endDate(), QDate(2027, 2, 3));
    const time_t midnight = TimeConversion::toUTC(wall("2027-02-03 00:00:00"));
    QCOMPARE(read(card).repeatPattern().endDateUTC, midnight);
    for (const QByteArray &stored : {ptime(2027, 2, 3, 20, 0, 0), ptime(2027, 2, 3, 31, 63, 63)}) {
        QVERIFY(storeBytes(*db, card, "REDT", stored));
        QCOMPARE(read(card).repeatPattern().endDateUTC, midnight);
    }
}

void EventMappingTest::repeatEndsUnlessItsFlagIsZero_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<bool>("hasEnd");
    QTest::newRow("0") << QByteArray(1, '\0') << false;
    QTest::newRow("1") << QByteArray("\x01") << true;
    QTest::newRow("255") << QByteArray("\xFF") << true;
    QTest::newRow("missing") << QByteArray() << true;
}

void EventMappingTest::repeatEndsUnlessItsFlagIsZero()
{
    QFETCH(QByteArray, stored);
    QFETCH(bool, hasEnd);
    const unsigned long card = add(fullEvent());
    QVERIFY(storeBytes(*db, card, "REND", stored));
    QCOMPARE(read(card).repeatPattern().endDate(), hasEnd ? QDate(2027, 1, 31) : QDate());
}

void EventMappingTest::repeatTypes_data()
{
    QTest::addColumn<int>("type");
    for (int type = Event::Daily; type <= Event::Yearly; ++type)
        QTest::addRow("%d", type) << type;
}

void EventMappingTest::repeatTypes()
{
    QFETCH(int, type);
    Event event = timedEvent();
    Event::RepeatPattern pattern = weekly();
    pattern.type = type;
    event.setRepeat(true, pattern);
    const unsigned long card = add(event);
    QCOMPARE(db->readUcharField(11, card), type);
    QVERIFY(read(card).hasRepeat());
    QCOMPARE(read(card).repeatPattern(), pattern);
}

void EventMappingTest::otherRepeatTypesAreRefused_data()
{
    QTest::addColumn<int>("type");
    for (const int type : {-2, 5, 255, 256})
        QTest::addRow("%d", type) << type;
}

void EventMappingTest::otherRepeatTypesAreRefused()
{
    QFETCH(int, type);
    Event event = timedEvent();
    Event::RepeatPattern pattern = weekly();
    pattern.type = type;
    event.setRepeat(true, pattern);
    const int before = db->count();
    QCOMPARE(add(event), 0ul);
    QCOMPARE(db->count(), before);
}

void EventMappingTest::unknownRepeatTypeReadsAsNone_data()
{
    QTest::addColumn<QByteArray>("stored");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("5") << QByteArray("\x05");
    QTest::newRow("254") << QByteArray("\xFE");
}

void EventMappingTest::unknownRepeatTypeReadsAsNone()
{
    QFETCH(QByteArray, stored);
    const unsigned long card = add(fullEvent());
    QVERIFY(storeBytes(*db, card, "RTYP", stored));
    QVERIFY(!read(card).hasRepeat());
    QCOMPARE(read(card).repeatPattern(), Event::RepeatPattern());
}

void EventMappingTest::numbersAreCutToTheirWidth()
{
    Event event = timedEvent();
    Event::RepeatPattern pattern = weekly();
    pattern.frequency = 0x12345;
    pattern.position = -1;
    pattern.days = 0x17F;
    event.setRepeat(true, pattern);
    event.setAlarm(true, 0x10002, Event::Loud);
    const Event back = read(add(event));
    QCOMPARE(back.repeatPattern().frequency, 0x2345);
    QCOMPARE(back.repeatPattern().position, 0xFFFF);
    QCOMPARE(back.repeatPattern().days, 0x7F);
    QCOMPARE(back.alarmTime(), 2);
}

void EventMappingTest::eventWithoutTimesIsRefused_data()
{
    QTest::addColumn<Event>("event");
    Event event;
    QTest::newRow("neither") << event;
    event.setStart(time_t(1000));
    QTest::newRow("no end") << event;
    event.setStart(time_t(-1));
    event.setEnd(time_t(1000));
    QTest::newRow("no start") << event;
    event.setType(Event::AllDay);
    QTest::newRow("no first day") << event;
    event = timedEvent();
    event.setEnd(std::numeric_limits<time_t>::max());
    QTest::newRow("beyond the calendar") << event;
    event = timedEvent("2026-11-21 01:00:00", "9999-12-31 23:59:59");
    event.setEnd(event.endUTC() + 1);
    QTest::newRow("beyond what a card can hold") << event;
}

void EventMappingTest::eventWithoutTimesIsRefused()
{
    QFETCH(Event, event);
    const int before = db->count();
    QCOMPARE(add(event), 0ul);
    QCOMPARE(db->count(), before);
    const unsigned long card = add(timedEvent());
    const Event kept = read(card);
    QVERIFY(!edit(card, event));
    QCOMPARE(read(card), kept);
}

void EventMappingTest::missingTimesReadAsNone()
{
    const unsigned long card = add(timedEvent());
    QVERIFY(storeBytes(*db, card, "TIM1", QByteArray()));
    QVERIFY(!read(card).start(false).isValid());
    QVERIFY(read(card).end(false).isValid());
    const unsigned long allDay = add(allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 21)));
    QVERIFY(storeBytes(*db, allDay, "ALED", QByteArray()));
    QVERIFY(read(allDay).start(true).isValid());
    QVERIFY(!read(allDay).end(true).isValid());
}

void EventMappingTest::roundTripInTheTable_data()
{
    QTest::addColumn<Event>("event");
    QTest::newRow("timed") << timedEvent();
    QTest::newRow("full") << fullEvent();
    QTest::newRow("a day") << allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 21));
    QTest::newRow("days") << allDayEvent(QDate(2026, 12, 31), QDate(2027, 1, 2));
    Event event = allDayEvent(QDate(2026, 11, 21), QDate(2026, 11, 21));
    event.setAlarm(true, 60, Event::Silent);
    event.setRepeat(true, weekly());
    QTest::newRow("repeating day") << event;
    QTest::newRow("before the epoch") << timedEvent("1950-01-01 00:00:00", "1950-01-01 00:00:01");
    QTest::newRow("at the epoch") << timedEvent("1970-01-01 00:00:00", "1970-01-01 00:00:01");
}

void EventMappingTest::roundTripInTheTable()
{
    QFETCH(Event, event);
    event.setCategories({tableCategory("beta"), tableCategory("alpha")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addDatebookEntry(db.get(), &card, event, KyPDataBase::CategoriesPdtm));
    event.setRid(card);
    QCOMPARE(KyPDataBase::toEvent(db.get(), card, KyPDataBase::CategoriesPdtm), event);
    QCOMPARE(categoryNames(*db, card), (QStringList{"beta", "alpha"}));
}

void EventMappingTest::roundTripInTheFile()
{
    Event event = fullEvent();
    event.setCategories({fileCategory(QString(), "delta"), fileCategory(QString(), "gamma")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addDatebookEntry(db.get(), &card, event, KyPDataBase::CategoriesXml));
    event.setRid(card);
    QCOMPARE(KyPDataBase::toEvent(db.get(), card, KyPDataBase::CategoriesXml), event);
    QCOMPARE(categoryNames(*db, card), (QStringList{"delta", "gamma"}));
}

void EventMappingTest::categoriesAreSpeltInTwoWays()
{
    const int written = fileCategory("Calendar", "party");
    const int read = fileCategory("Calender", "party");
    QVERIFY(written && read && written != read);
    Event event = timedEvent();
    event.setCategories({written, fileCategory("Calender", "only for reading")});
    unsigned long card = 0;
    QVERIFY(KyPDataBase::addDatebookEntry(db.get(), &card, event, KyPDataBase::CategoriesXml));
    QCOMPARE(categoryNames(*db, card), QStringList{"party"});
    QCOMPARE(KyPDataBase::toEvent(db.get(), card, KyPDataBase::CategoriesXml).categories(), QList<int>{read});
}

QTEST_MAIN(EventMappingTest)
#include "eventmappingtest.moc"
