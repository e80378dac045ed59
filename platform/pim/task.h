#ifndef KY_TASK_H
#define KY_TASK_H

#include "kyexport.h"
#include <QDate>
#include <QList>
#include <QSharedDataPointer>
#include <QString>

class TaskPrivate;

/**
 * An entry of the to-do list. Implicitly shared: a copy costs a reference, and a change touches no other
 * copy. An invalid date is none.
 */
class KY_EXPORT Task
{
public:
    /** Usual values of a priority. */
    enum Priority { VeryHigh = 1, High = 2, Normal = 3, Low = 4, VeryLow = 5 };

    Task();                             ///< not completed, of normal priority, with neither text nor dates
    Task(const Task &other);            ///< shares the content
    Task &operator=(const Task &other); ///< shares the content
    ~Task();

    [[nodiscard]] bool operator==(const Task &other) const; ///< true for the same content

    [[nodiscard]] QString description() const;        ///< one line
    void setDescription(const QString &description);  ///< see description()
    [[nodiscard]] QString notes() const;              ///< any text
    void setNotes(const QString &notes);              ///< see notes()
    [[nodiscard]] int priority() const;               ///< 1 comes first; a card without one gives -1
    void setPriority(int priority);                   ///< a card keeps the low byte
    [[nodiscard]] bool isCompleted() const;           ///< independent of completedDate()
    void setCompleted(bool completed);                ///< see isCompleted()
    [[nodiscard]] QDate startDate() const;            ///< invalid when there is none
    void setStartDate(QDate date);                    ///< see startDate()
    [[nodiscard]] QDate completedDate() const;        ///< invalid when there is none
    void setCompletedDate(QDate date);                ///< see completedDate()
    [[nodiscard]] bool hasDueDate() const;            ///< whether dueDate() is valid
    [[nodiscard]] QDate dueDate() const;              ///< invalid when there is none
    void setDueDate(QDate date);                      ///< an invalid date takes it away
    [[nodiscard]] QList<int> categories() const;      ///< ids, in the order given
    void setCategories(const QList<int> &categories); ///< replaces all ids

private:
    QSharedDataPointer<TaskPrivate> d;
};

#endif
