#include "cardform.h"

#include "categorychecklist.h"
#include "categorytable.h"

#include <QDialogButtonBox>
#include <QMessageBox>
#include <QShortcut>
#include <QVBoxLayout>

CardForm::CardForm(Book *book, CategoryTable *table, FormWords words, QWidget *parent)
    : QWidget(parent), m_book(book), m_table(table), m_words(std::move(words)), m_body(new QVBoxLayout),
      m_categories(new CategoryChecklist(table, this))
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &CardForm::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &CardForm::cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(m_body, 1);
    layout->addWidget(buttons);

    auto addShortcut = [this](const QKeySequence &keys, void (CardForm::*slot)()) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    addShortcut(QKeySequence::Save, &CardForm::save);
    addShortcut(Qt::Key_Escape, &CardForm::cancel);
}

void CardForm::edit(unsigned long card, int category)
{
    m_card = card;
    m_original = card == 0 ? CardValues() : m_book->values(card);
    m_originalCategories = card == 0 ? QList<int>() : m_book->categories(card);
    m_categories->setChecked(card == 0 ? QList<int>{category} : m_originalCategories);
    show(m_original);
    m_shownAtFirst = shown();
    m_categoriesAtFirst = m_categories->checked();
}

bool CardForm::isModified() const
{
    return shown() != m_shownAtFirst || m_categories->checked() != m_categoriesAtFirst;
}

CardValues CardForm::changedValues() const
{
    const CardValues now = shown();
    CardValues changed;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (it->toString() != m_original.value(it.key()).toString())
            changed.insert(it.key(), it.value());
    }
    return changed;
}

/* Another application may have deleted the card meanwhile. */
bool CardForm::isGone() const
{
    return m_card != 0 && m_book->ask() && !m_book->exists(m_card);
}

unsigned long CardForm::write(CardValues changed)
{
    const QList<int> categories = m_categories->checked();
    if (!isGone()) {
        const bool isFiledAnew = m_card == 0 || categories != m_categoriesAtFirst;
        return m_book->save(m_card, changed, isFiledAnew ? std::optional(categories) : std::nullopt);
    }
    // What the user has before them is kept.
    for (auto it = m_original.cbegin(); it != m_original.cend(); ++it) {
        if (!changed.contains(it.key()))
            changed.insert(it.key(), it.value());
    }
    return m_book->save(0, changed, categories);
}

void CardForm::save()
{
    if (m_card != 0 && !isModified()) {
        emit saved(m_card);
        return;
    }
    CardValues changed = changedValues();
    if (!complete(changed, m_original)) {
        QMessageBox::information(this, m_words.title, m_words.nothing);
        return;
    }
    const unsigned long card = write(changed);
    if (card == 0) {
        QMessageBox::warning(this, m_words.title, m_book->isAvailable() ? m_words.unsaved : m_words.isLent);
        return;
    }
    emit saved(card);
}

void CardForm::cancel()
{
    if (isModified() && QMessageBox::question(this, m_words.title, tr("Discard what you changed?"),
                                              QMessageBox::Discard | QMessageBox::Cancel,
                                              QMessageBox::Cancel) != QMessageBox::Discard)
        return;
    emit cancelled();
}
