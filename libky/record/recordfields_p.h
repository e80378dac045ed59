#ifndef RECORDFIELDS_P_H
#define RECORDFIELDS_P_H

#include <QDateTime>

/** Field numbers of the boxes and values of their fields, for the conversion between records and cards. */
namespace KyPDtm {

namespace AddressbookField {
constexpr int First = 1; ///< all fields from here on are text
constexpr int FullName = 1;
constexpr int FullPronunciation = 10;
constexpr int Last = 47;
} // namespace AddressbookField

namespace TodolistField {
enum Field {
    StartDate = 1,
    DueDate = 2,
    FinishDate = 3,
    Mark = 4, ///< UnfinishedMark, else the task is done
    Priority = 5,
    Description = 6,
    Notes = 7
};
}

namespace DatebookField {
enum Field {
    Description = 1,
    Location = 2,
    Notes = 4,
    Start = 5, ///< in UTC; local time for an event of all day
    End = 6,
    AllDay = 7,
    Alarm = 8, ///< AlarmOn, else there is none
    AlarmTime = 9,
    AlarmSound = 10,
    RepeatType = 11, ///< NoRepetition, or Event::RepeatType
    RepeatFrequency = 12,
    RepeatPosition = 13,
    RepeatDays = 14,
    RepeatHasEnd = 15,
    RepeatEnd = 16, ///< midnight, local time
    AllDayStart = 17,
    AllDayEnd = 18,
    MultiDay = 19
};
}

constexpr int UnfinishedMark = 1;
constexpr int FinishedMark = 0;
constexpr int AlarmOn = 0;
constexpr int AlarmOff = 1;
constexpr int NoRepetition = 0xFF;

/** Wall-clock times as a card has them, as Qt::UTC: local time may skip them. */
inline QDateTime midnight(QDate date)
{
    return QDateTime(date, QTime(0, 0), Qt::UTC);
}
inline QDateTime lastSecond(QDate date)
{
    return QDateTime(date, QTime(23, 59, 59), Qt::UTC);
}

} // namespace KyPDtm

#endif
