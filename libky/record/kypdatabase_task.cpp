#include "recordfields_p.h"
#include "recordframe_p.h"
#include "task.h"

namespace KyPDtm {

namespace {

constexpr QLatin1String Application("Todo List");

bool writeDay(KyPDataBase &db, int field, QDate date)
{
    return date.isValid() ? db.writeField(field, midnight(date)) : db.clearField(field);
}

/** The day of a field, invalid when there is none. */
QDate readDay(const KyPDataBase &db, int field, unsigned long card)
{
    return db.readTimeField(field, card, false).date();
}

bool writeFields(KyPDataBase &db, const Task &task)
{
    using namespace TodolistField;
    const auto mark = static_cast<unsigned char>(task.isCompleted() ? FinishedMark : UnfinishedMark);
    return db.writeField(Mark, mark) &&
           db.writeField(Priority, static_cast<unsigned char>(task.priority())) &&
           db.writeField(Description, task.description()) && db.writeField(Notes, task.notes()) &&
           writeDay(db, StartDate, task.startDate()) && writeDay(db, FinishDate, task.completedDate()) &&
           writeDay(db, DueDate, task.dueDate());
}

} // namespace

bool KyPDataBase::addTodolistEntry(KyPDataBase *db, unsigned long *card, const Task &task,
                                   CategoriesType type)
{
    *card = 0;
    return editTodolistEntry(db, card, task, type);
}

bool KyPDataBase::editTodolistEntry(KyPDataBase *db, unsigned long *card, const Task &task,
                                    CategoriesType type)
{
    return editRecord(
        db, card, [&task](KyPDataBase &box) { return writeFields(box, task); },
        recordCategories(task.categories(), type, Application));
}

Task KyPDataBase::toTask(KyPDataBase *db, unsigned long card, CategoriesType type)
{
    using namespace TodolistField;
    Task task;
    if (!db)
        return task;
    // A card without a mark counts as completed: boxes keep 1 for what is still to be done.
    task.setCompleted(db->readUcharField(Mark, card) != UnfinishedMark);
    task.setPriority(db->readUcharField(Priority, card));
    task.setDescription(db->readField(Description, card));
    task.setNotes(db->readField(Notes, card));
    task.setStartDate(readDay(*db, StartDate, card));
    task.setCompletedDate(readDay(*db, FinishDate, card));
    task.setDueDate(readDay(*db, DueDate, card));
    task.setCategories(categoriesOfCard(*db, card, type, Application));
    return task;
}

} // namespace KyPDtm
