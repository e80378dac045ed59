#ifndef KY_EVENT_H
#define KY_EVENT_H

#include "kyexport.h"
#include <ctime>
#include <QDateTime>
#include <QList>
#include <QSharedDataPointer>
#include <QString>

class EventPrivate;

/**
 * An entry of the calendar. Implicitly shared: a copy costs a reference, and a change touches no other copy.
 *
 * Start and end are kept as moments. They are shown in local wall-clock time by the rules of the zone that
 * the process has at the call: see TimeConversion.
 */
class KY_EXPORT Event
{
public:
    /** Whether the hours count. */
    enum Type {
        Timed = 0, ///< from a moment to a moment
        AllDay = 1 ///< from a day to a day
    };

    /** How the alarm rings. */
    enum AlarmSound { Silent = 0, Loud = 1 };

    /** What an event repeats by. */
    enum RepeatType {
        NoRepeat = -1,
        Daily = 0,
        Weekly = 1,
        MonthlyDay = 2,  ///< the weekday and week of the month of the start
        MonthlyDate = 3, ///< the day of the month of the start
        Yearly = 4
    };

    /** A rule of repetition; it begins with the start of its event. */
    struct RepeatPattern
    {
        int type = NoRepeat;     ///< RepeatType
        int frequency = -1;      ///< every so many days, weeks, months or years
        int position = 0;        ///< week of the month, for applications
        int days = 0;            ///< weekdays of Weekly: bit 0 Monday to bit 6 Sunday
        bool hasEndDate = false; ///< endDateUTC counts
        time_t endDateUTC = 0;   ///< begin of the last day, local time, as a moment
        time_t createTime = -1;  ///< when the rule was made; not kept on cards

        /** True for the same rule; endDateUTC is looked at when both have one. */
        [[nodiscard]] KY_EXPORT bool operator==(const RepeatPattern &other) const;

        /** The last day, invalid when there is none. */
        [[nodiscard]] KY_EXPORT QDate endDate() const;
        /** Sets the last day; an invalid one takes it away. */
        KY_EXPORT void setEndDate(QDate date);
    };

    Event();                              ///< timed, with no times, no alarm and no repetition
    Event(const Event &other);            ///< shares the content
    Event &operator=(const Event &other); ///< shares the content
    ~Event();

    [[nodiscard]] bool operator==(const Event &other) const; ///< true for the same content and uid()

    [[nodiscard]] unsigned long uid() const; ///< the card of the event, 0 for one that has none
    void setRid(unsigned long card);         ///< sets uid()

    [[nodiscard]] QString description() const;       ///< one line
    void setDescription(const QString &description); ///< see description()
    [[nodiscard]] QString location() const;          ///< one line
    void setLocation(const QString &location);       ///< see location()
    [[nodiscard]] QString notes() const;             ///< any text
    void setNotes(const QString &notes);             ///< see notes()
    [[nodiscard]] Type type() const;                 ///< Timed at first
    void setType(Type type);                         ///< leaves the times as they are

    /**
     * The start in local time, invalid when there is none.
     * @param actual as it is to be shown: an event of all day begins at 00:00:00 of its first day
     */
    [[nodiscard]] QDateTime start(bool actual = false) const;
    /**
     * The end in local time, invalid when there is none. May lie before the start.
     * @param actual as it is to be shown: an event of all day ends at 23:59:59 of its last day
     */
    [[nodiscard]] QDateTime end(bool actual = false) const;
    [[nodiscard]] time_t startUTC() const; ///< the start as a moment, -1 for none
    [[nodiscard]] time_t endUTC() const;   ///< the end as a moment, -1 for none
    void setStart(const QDateTime &local); ///< local wall-clock time; an invalid one is none
    void setStart(time_t moment);          ///< a moment, -1 for none
    void setEnd(const QDateTime &local);   ///< local wall-clock time; an invalid one is none
    void setEnd(time_t moment);            ///< a moment, -1 for none

    [[nodiscard]] bool hasAlarm() const;         ///< whether there is an alarm
    [[nodiscard]] int alarmTime() const;         ///< minutes before the start, 0 without an alarm
    [[nodiscard]] AlarmSound alarmSound() const; ///< kept without an alarm, too
    /** @param minutes before the start; no meaning when @p on is false */
    void setAlarm(bool on, int minutes, AlarmSound sound);

    [[nodiscard]] bool hasRepeat() const;              ///< whether the pattern has a type
    [[nodiscard]] RepeatPattern repeatPattern() const; ///< that of a default object when nothing repeats
    /** @param pattern no meaning when @p on is false */
    void setRepeat(bool on, const RepeatPattern &pattern);

    [[nodiscard]] QList<int> categories() const;      ///< ids, in the order given
    void setCategories(const QList<int> &categories); ///< replaces all ids

private:
    QSharedDataPointer<EventPrivate> d;
};

#endif
