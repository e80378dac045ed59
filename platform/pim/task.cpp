#include "task.h"

#include <QSharedData>

class TaskPrivate : public QSharedData
{
public:
    bool operator==(const TaskPrivate &other) const
    {
        return description == other.description && notes == other.notes && priority == other.priority &&
               isCompleted == other.isCompleted && startDate == other.startDate &&
               completedDate == other.completedDate && dueDate == other.dueDate &&
               categories == other.categories;
    }

    QString description;
    QString notes;
    int priority = Task::Normal;
    bool isCompleted = false;
    QDate startDate;
    QDate completedDate;
    QDate dueDate;
    QList<int> categories;
};

Task::Task() : d(new TaskPrivate) {}
Task::Task(const Task &other) = default;
Task &Task::operator=(const Task &other) = default;
Task::~Task() = default;

bool Task::operator==(const Task &other) const
{
    return d == other.d || *d == *other.d;
}

QString Task::description() const
{
    return d->description;
}

void Task::setDescription(const QString &description)
{
    d->description = description;
}

QString Task::notes() const
{
    return d->notes;
}

void Task::setNotes(const QString &notes)
{
    d->notes = notes;
}

int Task::priority() const
{
    return d->priority;
}

void Task::setPriority(int priority)
{
    d->priority = priority;
}

bool Task::isCompleted() const
{
    return d->isCompleted;
}

void Task::setCompleted(bool completed)
{
    d->isCompleted = completed;
}

QDate Task::startDate() const
{
    return d->startDate;
}

void Task::setStartDate(QDate date)
{
    d->startDate = date;
}

QDate Task::completedDate() const
{
    return d->completedDate;
}

void Task::setCompletedDate(QDate date)
{
    d->completedDate = date;
}

bool Task::hasDueDate() const
{
    return d->dueDate.isValid();
}

QDate Task::dueDate() const
{
    return d->dueDate;
}

void Task::setDueDate(QDate date)
{
    d->dueDate = date;
}

QList<int> Task::categories() const
{
    return d->categories;
}

void Task::setCategories(const QList<int> &categories)
{
    d->categories = categories;
}
