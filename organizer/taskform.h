#ifndef TASKFORM_H
#define TASKFORM_H

#include "cardform.h"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLineEdit;
class QPlainTextEdit;

/** The form of a task. */
class TaskForm : public CardForm
{
    Q_OBJECT
public:
    TaskForm(Book *book, CategoryTable *table, QWidget *parent = nullptr);

    /** A priority with its meaning. */
    [[nodiscard]] static QString priorityText(int priority);
    /** The values that make a task done, or open again. */
    [[nodiscard]] static CardValues stateValues(bool isDone);

protected:
    void show(const CardValues &values) override;
    [[nodiscard]] CardValues shown() const override;
    bool complete(CardValues &changed, const CardValues &original) const override;

private:
    QLineEdit *m_description;
    QCheckBox *m_done;
    QComboBox *m_priority;
    QCheckBox *m_hasDue;
    QDateEdit *m_due;
    QPlainTextEdit *m_notes;
};

#endif
