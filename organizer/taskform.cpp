#include "taskform.h"

#include "timestring.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>

namespace {

constexpr const char *PriorityTexts[] = {
    QT_TRANSLATE_NOOP("TaskForm", "1 (very high)"), QT_TRANSLATE_NOOP("TaskForm", "2 (high)"),
    QT_TRANSLATE_NOOP("TaskForm", "3 (usual)"),     QT_TRANSLATE_NOOP("TaskForm", "4 (low)"),
    QT_TRANSLATE_NOOP("TaskForm", "5 (very low)"),
};

/* A card without a state, made elsewhere, counts as done: that is how the device takes it. */
bool isDone(const CardValues &values)
{
    return !values.isEmpty() && values.value(TaskField::State, TaskState::Done).toInt() != TaskState::Open;
}

/* The user's format of dates, as an editor takes it. */
QString editorFormat(const DateFormat &format)
{
    constexpr const char *Parts[][3] = {{"yyyy", "MM", "dd"}, {"MM", "dd", "yyyy"}, {"dd", "MM", "yyyy"}};
    const auto &[first, second, third] = Parts[format.order];
    const QString separator = format.separator;
    return first + separator + second + separator + third;
}

} // namespace

TaskForm::TaskForm(Book *book, CategoryTable *table, QWidget *parent)
    : CardForm(book, table,
               {tr("Tasks"), tr("Type a description before you save the task."),
                tr("The task could not be saved. The storage may be full."),
                tr("The tasks are in use by another application. Try again in a moment.")},
               parent),
      m_description(new QLineEdit), m_done(new QCheckBox(tr("Completed"))), m_priority(new QComboBox),
      m_hasDue(new QCheckBox(tr("On"))), m_due(new QDateEdit), m_notes(makeTextEditor())
{
    for (int priority = TaskPriority::Highest; priority <= TaskPriority::Lowest; ++priority)
        m_priority->addItem(priorityText(priority), priority);
    m_due->setCalendarPopup(true);
    connect(m_hasDue, &QCheckBox::toggled, m_due, &QWidget::setEnabled);
    auto *due = new QHBoxLayout;
    due->addWidget(m_hasDue);
    due->addWidget(m_due, 1);

    auto *form = new QFormLayout;
    form->addRow(tr("Description"), m_description);
    form->addRow(QString(), m_done);
    form->addRow(tr("Priority"), m_priority);
    form->addRow(tr("Due"), due);
    form->addRow(tr("Notes"), m_notes);
    body()->addLayout(form);
    addEnd();
}

QString TaskForm::priorityText(int priority)
{
    const bool isKnown = priority >= TaskPriority::Highest && priority <= TaskPriority::Lowest;
    return isKnown ? tr(PriorityTexts[priority - TaskPriority::Highest]) : QString::number(priority);
}

CardValues TaskForm::stateValues(bool isDone)
{
    return {{TaskField::State, isDone ? TaskState::Done : TaskState::Open},
            {TaskField::FinishDate, isDone ? QDate::currentDate().startOfDay() : QVariant()}};
}

void TaskForm::show(const CardValues &values)
{
    const QDate due = values.value(TaskField::DueDate).toDate();
    m_description->setText(values.value(TaskField::Description).toString());
    m_description->setCursorPosition(0);
    m_done->setChecked(isDone(values));
    const int priority = values.value(TaskField::Priority, TaskPriority::Usual).toInt();
    if (m_priority->findData(priority) < 0)
        m_priority->addItem(priorityText(priority), priority);
    m_priority->setCurrentIndex(m_priority->findData(priority));
    m_hasDue->setChecked(due.isValid());
    m_due->setDisplayFormat(editorFormat(TimeString::currentDateFormat()));
    m_due->setEnabled(due.isValid());
    m_due->setDate(due.isValid() ? due : QDate::currentDate());
    m_notes->setPlainText(values.value(TaskField::Notes).toString());
    m_description->setFocus();
}

CardValues TaskForm::shown() const
{
    const QVariant due = m_hasDue->isChecked() ? QVariant(m_due->date().startOfDay()) : QVariant();
    return {{TaskField::Description, m_description->text().trimmed()},
            {TaskField::State, m_done->isChecked() ? TaskState::Done : TaskState::Open},
            {TaskField::Priority, m_priority->currentData()},
            {TaskField::DueDate, due},
            {TaskField::Notes, m_notes->toPlainText()}};
}

bool TaskForm::complete(CardValues &changed, const CardValues &original) const
{
    if (changed.contains(TaskField::State) && (m_done->isChecked() || !original.isEmpty()))
        changed.insert(stateValues(m_done->isChecked()));
    return !m_description->text().trimmed().isEmpty() || !m_notes->toPlainText().trimmed().isEmpty();
}
