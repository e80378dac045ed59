#include "taskspage.h"

#include "messages.h"
#include "taskform.h"
#include "tasklist.h"
#include "timestring.h"

namespace {

QString counted(int tasks)
{
    return tasks == 1 ? TasksPage::tr("1 task") : TasksPage::tr("%1 tasks").arg(tasks);
}

enum Column { DoneColumn, DescriptionColumn };

} // namespace

TasksPage::TasksPage(CategoryTable *table, QWidget *parent)
    : CardsPage(BoxKind::tasks(), table, {tr("Tasks"), tr("Nothing to do"), counted}, parent)
{
    const auto done = [this](unsigned long card) { return QString(isDone(card) ? "x" : ""); };
    const auto description = [this](unsigned long card) { return detailsOf(card).heading; };
    const auto priority = [this](unsigned long card) {
        return book()->value(card, TaskField::Priority).toString();
    };
    const auto due = [this](unsigned long card) { return dateText(card, TaskField::DueDate); };
    auto *list = new TaskList(book(),
                              {{tr("Done"), TaskField::State, 7, done},
                               {tr("Description"), TaskField::Description, 36, description},
                               {tr("Priority"), TaskField::Priority, 10, priority},
                               {tr("Due"), TaskField::DueDate, 12, due}},
                              DescriptionColumn);
    begin(list, new TaskForm(book(), table));
    // Later: the list is in the middle of a click, and the change makes it anew.
    connect(list, &TaskList::ticked, this, &TasksPage::setDone, Qt::QueuedConnection);
}

bool TasksPage::isDone(unsigned long card) const
{
    return book()->value(card, TaskField::State).toInt() != TaskState::Open;
}

QString TasksPage::dateText(unsigned long card, int field) const
{
    const QDate date = book()->value(card, field).toDate();
    return TimeString::numberDateString(date, TimeString::currentDateFormat());
}

CardDetails TasksPage::detailsOf(unsigned long card) const
{
    const QString notes = book()->text(card, TaskField::Notes);
    const QString description = book()->text(card, TaskField::Description);
    CardDetails details{description.isEmpty() ? notes.section(QLatin1Char('\n'), 0, 0) : description, {}, {}};
    const auto add = [&](int field, const QString &text) {
        if (!text.isEmpty())
            details.rows.append({book()->fields().itemInfo(field).label, text});
    };
    const QVariant priority = book()->value(card, TaskField::Priority);
    add(TaskField::DueDate, dateText(card, TaskField::DueDate));
    add(TaskField::Priority, priority.isNull() ? QString() : TaskForm::priorityText(priority.toInt()));
    add(TaskField::FinishDate, dateText(card, TaskField::FinishDate));
    add(TaskField::Notes, notes);
    return details;
}

void TasksPage::setDone(unsigned long card, bool isDone)
{
    if (book()->save(card, TaskForm::stateValues(isDone)) == 0)
        Messages::warn(this, tr("Tasks"), tr("The task could not be changed."));
}
