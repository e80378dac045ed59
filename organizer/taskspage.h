#ifndef TASKSPAGE_H
#define TASKSPAGE_H

#include "cardspage.h"

/** The tasks, by due date at first. A tick, or the space key, completes one. */
class TasksPage : public CardsPage
{
    Q_OBJECT
public:
    explicit TasksPage(CategoryTable *table, QWidget *parent = nullptr);

protected:
    [[nodiscard]] CardDetails detailsOf(unsigned long card) const override;

private:
    void setDone(unsigned long card, bool isDone);
    [[nodiscard]] bool isDone(unsigned long card) const;
    [[nodiscard]] QString dateText(unsigned long card, int field) const;
};

#endif
