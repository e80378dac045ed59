#include "event.h"

#include "timeconversion.h"
#include <QSharedData>

class EventPrivate : public QSharedData
{
public:
    bool operator==(const EventPrivate &other) const
    {
        return uid == other.uid && description == other.description && location == other.location &&
               notes == other.notes && type == other.type && start == other.start && end == other.end &&
               hasAlarm == other.hasAlarm && alarmTime == other.alarmTime && alarmSound == other.alarmSound &&
               pattern == other.pattern && categories == other.categories;
    }

    unsigned long uid = 0;
    QString description;
    QString location;
    QString notes;
    Event::Type type = Event::Timed;
    time_t start = -1;
    time_t end = -1;
    bool hasAlarm = false;
    int alarmTime = 0;
    Event::AlarmSound alarmSound = Event::Silent;
    Event::RepeatPattern pattern;
    QList<int> categories;
};

namespace {

QDateTime local(time_t moment)
{
    return moment == -1 ? QDateTime() : TimeConversion::fromUTC(moment);
}

/** A time of the day that a moment lies in. */
QDateTime local(time_t moment, QTime time)
{
    const QDate date = local(moment).date();
    return date.isValid() ? QDateTime(date, time) : QDateTime();
}

} // namespace

bool Event::RepeatPattern::operator==(const RepeatPattern &other) const
{
    return type == other.type && frequency == other.frequency && position == other.position &&
           days == other.days && hasEndDate == other.hasEndDate &&
           (!hasEndDate || endDateUTC == other.endDateUTC) && createTime == other.createTime;
}

QDate Event::RepeatPattern::endDate() const
{
    return hasEndDate ? local(endDateUTC).date() : QDate();
}

void Event::RepeatPattern::setEndDate(QDate date)
{
    hasEndDate = date.isValid();
    endDateUTC = hasEndDate ? TimeConversion::toUTC(QDateTime(date, QTime(0, 0))) : 0;
}

Event::Event() : d(new EventPrivate) {}
Event::Event(const Event &other) = default;
Event &Event::operator=(const Event &other) = default;
Event::~Event() = default;

bool Event::operator==(const Event &other) const
{
    return d == other.d || *d == *other.d;
}

unsigned long Event::uid() const
{
    return d->uid;
}

void Event::setRid(unsigned long card)
{
    d->uid = card;
}

QString Event::description() const
{
    return d->description;
}

void Event::setDescription(const QString &description)
{
    d->description = description;
}

QString Event::location() const
{
    return d->location;
}

void Event::setLocation(const QString &location)
{
    d->location = location;
}

QString Event::notes() const
{
    return d->notes;
}

void Event::setNotes(const QString &notes)
{
    d->notes = notes;
}

Event::Type Event::type() const
{
    return d->type;
}

void Event::setType(Type type)
{
    d->type = type;
}

QDateTime Event::start(bool actual) const
{
    return actual && d->type == AllDay ? local(d->start, QTime(0, 0)) : local(d->start);
}

QDateTime Event::end(bool actual) const
{
    return actual && d->type == AllDay ? local(d->end, QTime(23, 59, 59)) : local(d->end);
}

time_t Event::startUTC() const
{
    return d->start;
}

time_t Event::endUTC() const
{
    return d->end;
}

void Event::setStart(const QDateTime &local)
{
    d->start = TimeConversion::toUTC(local);
}

void Event::setStart(time_t moment)
{
    d->start = moment;
}

void Event::setEnd(const QDateTime &local)
{
    d->end = TimeConversion::toUTC(local);
}

void Event::setEnd(time_t moment)
{
    d->end = moment;
}

bool Event::hasAlarm() const
{
    return d->hasAlarm;
}

int Event::alarmTime() const
{
    return d->alarmTime;
}

Event::AlarmSound Event::alarmSound() const
{
    return d->alarmSound;
}

void Event::setAlarm(bool on, int minutes, AlarmSound sound)
{
    d->hasAlarm = on;
    d->alarmTime = on ? minutes : 0;
    d->alarmSound = sound;
}

bool Event::hasRepeat() const
{
    return d->pattern.type != NoRepeat;
}

Event::RepeatPattern Event::repeatPattern() const
{
    return d->pattern;
}

void Event::setRepeat(bool on, const RepeatPattern &pattern)
{
    d->pattern = on ? pattern : RepeatPattern();
}

QList<int> Event::categories() const
{
    return d->categories;
}

void Event::setCategories(const QList<int> &categories)
{
    d->categories = categories;
}
