#include "event.h"
#include "recordfields_p.h"
#include "recordframe_p.h"
#include "timeconversion.h"
#include <algorithm>

namespace KyPDtm {

namespace {

// The two spellings are two groups of the category file, which other applications know by these names.
constexpr QLatin1String WrittenFrom("Calendar");
constexpr QLatin1String ReadFor("Calender");

// In seconds. An event of exactly 24 hours is not one of several days: calendars look for those elsewhere.
constexpr qint64 LongestSingleDay = 86400;

/** The repeat end of an event that repeats for ever: a view by repeat end finds it at any date. */
QDate noRepeatEnd()
{
    return QDate(2099, 12, 31);
}

struct CardTimes
{
    QDateTime start;
    QDateTime end;
};

/** Start and end as they stand on the card; invalid when one of them is missing. */
CardTimes cardTimes(const Event &event)
{
    const QDate firstDay = event.start(false).date();
    const QDate lastDay = event.end(false).date();
    if (!firstDay.isValid() || !lastDay.isValid())
        return {};
    if (event.type() == Event::AllDay)
        return {midnight(firstDay), lastSecond(lastDay)};
    // Views by start and by end rely on their order.
    const auto [start, end] = std::minmax({event.startUTC(), event.endUTC()});
    return {TimeConversion::fromRawUTC(start), TimeConversion::fromRawUTC(end)};
}

bool writeByte(KyPDataBase &db, int field, int value)
{
    return db.writeField(field, static_cast<unsigned char>(value));
}

bool writeShort(KyPDataBase &db, int field, int value)
{
    return db.writeField(field, static_cast<unsigned short>(value));
}

bool writeTexts(KyPDataBase &db, const Event &event)
{
    using namespace DatebookField;
    return db.writeField(Description, event.description()) && db.writeField(Location, event.location()) &&
           db.writeField(Notes, event.notes());
}

bool writeDays(KyPDataBase &db, const Event &event)
{
    using namespace DatebookField;
    if (event.type() != Event::AllDay)
        return writeByte(db, AllDay, 0) && db.clearField(AllDayStart) && db.clearField(AllDayEnd);
    return writeByte(db, AllDay, 1) && db.writeField(AllDayStart, event.start(false).date()) &&
           db.writeField(AllDayEnd, event.end(false).date());
}

bool writeAlarm(KyPDataBase &db, const Event &event)
{
    using namespace DatebookField;
    return writeByte(db, Alarm, event.hasAlarm() ? AlarmOn : AlarmOff) &&
           writeShort(db, AlarmTime, event.hasAlarm() ? event.alarmTime() : 0) &&
           writeByte(db, AlarmSound, event.alarmSound() == Event::Loud ? 1 : 0);
}

bool isRepeatType(int type)
{
    return type >= Event::Daily && type <= Event::Yearly;
}

/** The other fields stay as they are when nothing repeats. */
bool writeRepeat(KyPDataBase &db, const Event::RepeatPattern &pattern)
{
    using namespace DatebookField;
    if (pattern.type == Event::NoRepeat)
        return writeByte(db, RepeatType, NoRepetition);
    const QDate lastDay = pattern.hasEndDate ? pattern.endDate() : noRepeatEnd();
    return isRepeatType(pattern.type) && writeByte(db, RepeatType, pattern.type) &&
           writeShort(db, RepeatFrequency, pattern.frequency) &&
           writeShort(db, RepeatPosition, pattern.position) && writeByte(db, RepeatDays, pattern.days) &&
           writeByte(db, RepeatHasEnd, pattern.hasEndDate ? 1 : 0) &&
           db.writeField(RepeatEnd, midnight(lastDay));
}

bool writeFields(KyPDataBase &db, const Event &event)
{
    using namespace DatebookField;
    const CardTimes times = cardTimes(event);
    const bool isLong = times.start.secsTo(times.end) > LongestSingleDay;
    return writeTexts(db, event) && writeDays(db, event) && db.writeField(Start, times.start) &&
           db.writeField(End, times.end) && writeAlarm(db, event) &&
           writeByte(db, MultiDay, isLong ? 1 : 0) && writeRepeat(db, event.repeatPattern());
}

FieldWriter fieldsOf(const Event &event)
{
    return [event](KyPDataBase &db) { return writeFields(db, event); };
}

void readTimes(Event *event, const KyPDataBase &db, unsigned long card)
{
    using namespace DatebookField;
    if (db.readUcharField(AllDay, card) == 1) {
        event->setType(Event::AllDay);
        event->setStart(midnight(db.readDateField(AllDayStart, card)));
        event->setEnd(lastSecond(db.readDateField(AllDayEnd, card)));
        return;
    }
    event->setType(Event::Timed);
    event->setStart(TimeConversion::toRawUTC(db.readTimeField(Start, card, false)));
    event->setEnd(TimeConversion::toRawUTC(db.readTimeField(End, card, false)));
}

void readAlarm(Event *event, const KyPDataBase &db, unsigned long card)
{
    using namespace DatebookField;
    const bool isLoud = db.readUcharField(AlarmSound, card) == 1;
    event->setAlarm(db.readUcharField(Alarm, card) == AlarmOn, db.readUshortField(AlarmTime, card),
                    isLoud ? Event::Loud : Event::Silent);
}

void readRepeat(Event *event, const KyPDataBase &db, unsigned long card)
{
    using namespace DatebookField;
    Event::RepeatPattern pattern;
    const int type = db.readUcharField(RepeatType, card);
    if (!isRepeatType(type))
        return event->setRepeat(false, pattern);
    pattern.type = type;
    pattern.frequency = db.readUshortField(RepeatFrequency, card);
    pattern.position = db.readUshortField(RepeatPosition, card);
    pattern.days = db.readUcharField(RepeatDays, card);
    pattern.hasEndDate = db.readUcharField(RepeatHasEnd, card) != 0;
    pattern.endDateUTC = TimeConversion::toUTC(midnight(db.readTimeField(RepeatEnd, card, false).date()));
    event->setRepeat(true, pattern);
}

} // namespace

bool writeEvent(KyPDataBase *db, unsigned long source, unsigned long *destination, const Event &event,
                KyPDataBase::CategoriesType type)
{
    return writeRecord(db, source, destination, fieldsOf(event),
                       recordCategories(event.categories(), type, WrittenFrom));
}

bool KyPDataBase::addDatebookEntry(KyPDataBase *db, unsigned long *card, const Event &event,
                                   CategoriesType type)
{
    *card = 0;
    return editDatebookEntry(db, card, event, type);
}

bool KyPDataBase::editDatebookEntry(KyPDataBase *db, unsigned long *card, const Event &event,
                                    CategoriesType type)
{
    return editRecord(db, card, fieldsOf(event), recordCategories(event.categories(), type, WrittenFrom));
}

Event KyPDataBase::toEvent(KyPDataBase *db, unsigned long card, CategoriesType type)
{
    using namespace DatebookField;
    Event event;
    if (!db)
        return event;
    event.setRid(card);
    event.setDescription(db->readField(Description, card));
    event.setLocation(db->readField(Location, card));
    event.setNotes(db->readField(Notes, card));
    readTimes(&event, *db, card);
    readAlarm(&event, *db, card);
    readRepeat(&event, *db, card);
    event.setCategories(categoriesOfCard(*db, card, type, ReadFor));
    return event;
}

} // namespace KyPDtm
