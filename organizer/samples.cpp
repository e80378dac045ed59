#include "samples.h"

#include "categorytable.h"
#include "contactimport.h"
#include "contactspage.h"
#include "mainwindow.h"
#include "manycontacts.h"
#include "memospage.h"
#include "taskform.h"
#include "taskspage.h"

#include <cstdio>
#include <QApplication>

namespace {

struct SampleTask
{
    const char *description;
    const char *notes;
    int priority;
    std::optional<int> dueIn; ///< days from today
    bool isDone;
    const char *category; ///< null for none
};

struct SampleMemo
{
    const char *title;
    const char *contents;
    const char *category;
};

constexpr const char *Business = QT_TRANSLATE_NOOP("Samples", "Business");
constexpr const char *Family = QT_TRANSLATE_NOOP("Samples", "Family");
constexpr const char *Travel = QT_TRANSLATE_NOOP("Samples", "Travel");

constexpr SampleTask Tasks[] = {
    {QT_TRANSLATE_NOOP("Samples", "Send the quarterly report"),
     QT_TRANSLATE_NOOP("Samples", "Figures of June are still missing.\nAsk Mr. Satō."), 1, -1, false,
     Business},
    {QT_TRANSLATE_NOOP("Samples", "Book the train to Kyoto"),
     QT_TRANSLATE_NOOP("Samples", "Two seats, by the window."), 2, 1, false, Travel},
    {QT_TRANSLATE_NOOP("Samples", "Call the dentist"), "", 3, 2, false, nullptr},
    {QT_TRANSLATE_NOOP("Samples", "Buy a birthday present for Aoi"),
     QT_TRANSLATE_NOOP("Samples", "She likes books about the sea."), 1, 5, false, Family},
    {QT_TRANSLATE_NOOP("Samples", "Renew the passport"), "", 2, 30, false, Travel},
    {QT_TRANSLATE_NOOP("Samples", "Prepare slides for the meeting"), "", 2, 3, false, Business},
    {QT_TRANSLATE_NOOP("Samples", "Mend the bicycle"), "", 4, std::nullopt, false, nullptr},
    {QT_TRANSLATE_NOOP("Samples", "Return the library books"), "", 3, -4, true, Family},
    {QT_TRANSLATE_NOOP("Samples", "Order business cards"), "", 5, -10, true, Business},
};

constexpr SampleMemo Memos[] = {
    {QT_TRANSLATE_NOOP("Samples", "Packing list"),
     QT_TRANSLATE_NOOP("Samples", "Passport\nTickets\nCharger\nUmbrella\nA book"), Travel},
    {QT_TRANSLATE_NOOP("Samples", "Meeting notes"),
     QT_TRANSLATE_NOOP("Samples",
                       "The new model comes in spring.\nWho writes the manual?\nNext meeting on Thursday."),
     Business},
    {QT_TRANSLATE_NOOP("Samples", "Recipe: miso soup"),
     QT_TRANSLATE_NOOP("Samples",
                       "800 ml dashi\n3 spoons of miso\n200 g tofu\nSpring onions\nDon't let it boil."),
     Family},
    {QT_TRANSLATE_NOOP("Samples", "Books to read"),
     QT_TRANSLATE_NOOP("Samples", "Kokoro\nThe Makioka Sisters\nThe Sound of Waves"), nullptr},
    {QT_TRANSLATE_NOOP("Samples", "Hotel in Kyoto"),
     QT_TRANSLATE_NOOP("Samples", "Near Sanjō bridge, check-in from 15:00.\nBreakfast is until 9."), Travel},
};

QString translated(const char *text)
{
    return QCoreApplication::translate("Samples", text);
}

QList<int> categoriesOf(CategoryTable &table, const char *category)
{
    if (!category)
        return {};
    const int id = table.idMade(translated(category));
    return id == 0 ? QList<int>() : QList<int>{id};
}

Card cardOf(const SampleTask &task, CategoryTable &table)
{
    CardValues values = TaskForm::stateValues(task.isDone);
    values.insert(TaskField::Description, translated(task.description));
    values.insert(TaskField::Notes, *task.notes ? translated(task.notes) : QString());
    values.insert(TaskField::Priority, task.priority);
    if (task.dueIn)
        values.insert(TaskField::DueDate, QDate::currentDate().addDays(*task.dueIn).startOfDay());
    return {values, categoriesOf(table, task.category)};
}

Card cardOf(const SampleMemo &memo, CategoryTable &table)
{
    return {{{MemoField::Title, translated(memo.title)},
             {MemoField::Contents, translated(memo.contents)},
             {MemoField::ChangeTime, QDateTime::currentDateTime()}},
            categoriesOf(table, memo.category)};
}

template <typename Sample, size_t Count>
bool fill(Book *book, const Sample (&samples)[Count], CategoryTable &table)
{
    if (!book->ask())
        return false;
    if (!book->allCards().isEmpty())
        return true;
    QList<Card> cards;
    for (const Sample &sample : samples)
        cards.append(cardOf(sample, table));
    return book->addAll(cards) != 0;
}

} // namespace

bool addSamples(MainWindow &window)
{
    const bool hasTasks = fill(window.tasks()->book(), Tasks, *window.categories());
    const bool hasMemos = fill(window.memos()->book(), Memos, *window.categories());
    Book *contacts = window.contacts()->book();
    if (!contacts->ask())
        return false;
    if (contacts->allCards().isEmpty()) {
        ContactImport import(contacts, window.categories(), nullptr);
        std::printf("import: %s\n", qUtf8Printable(import.run(QStringLiteral(":/ky/samples/contacts.vcf"))));
    }
    return hasTasks && hasMemos && !contacts->allCards().isEmpty();
}

/* The categories come first, as making them handles events, and none may come into the transaction. */
bool addSampleContacts(MainWindow &window, int count)
{
    Book *contacts = window.contacts()->book();
    if (!contacts->ask())
        return false;
    if (!contacts->allCards().isEmpty()) {
        std::fputs("kyorganizer: there are contacts already; none were invented\n", stderr);
        return true;
    }
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const QList<Card> cards = manyContacts(count, *window.categories());
    const bool added = contacts->addAll(cards) != 0;
    QApplication::restoreOverrideCursor();
    return added;
}
