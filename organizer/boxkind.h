#ifndef BOXKIND_H
#define BOXKIND_H

#include "kypdatabase.h"

/** The field numbers of the to-do box. */
namespace TaskField {

enum Number : int {
    StartDate = 1,
    DueDate = 2,
    FinishDate = 3,
    State = 4, ///< a TaskState
    Priority = 5,
    Description = 6,
    Notes = 7,
    Last = Notes
};

} // namespace TaskField

/** What TaskField::State holds. */
namespace TaskState {

inline constexpr int Done = 0;
inline constexpr int Open = 1;

} // namespace TaskState

/** The most and the least urgent priority of a task, and that of a new one. */
namespace TaskPriority {

inline constexpr int Highest = 1;
inline constexpr int Usual = 3;
inline constexpr int Lowest = 5;

} // namespace TaskPriority

/** The field numbers that the Organizer gives the items of the memo box. */
namespace MemoField {

enum Number : int { Title = 1, Contents = 2, ChangeTime = 3, Last = ChangeTime };

} // namespace MemoField

/** A standard box: how it is made, and what its fields are. */
struct BoxKind
{
    bool (*make)(const KyPDtm::KyPDataManagerIndexInfo &);
    QByteArray file;
    QByteArray index; ///< its master
    KyPDataBaseItemInfo fields;
    int lastField; ///< the first one is 1

    [[nodiscard]] static BoxKind contacts(); ///< fields: AddressField
    [[nodiscard]] static BoxKind tasks();    ///< fields: TaskField
    [[nodiscard]] static BoxKind memos();    ///< fields: MemoField
};

#endif
