#include "cardform.h"

#include "categorytable.h"
#include "kycategoryselect.h"
#include "messages.h"
#include "qpeapplication.h"

#include <algorithm>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QShortcut>
#include <QVBoxLayout>

CardForm::CardForm(Book *book, CategoryTable *table, FormWords words, QWidget *parent)
    : QWidget(parent), m_book(book), m_table(table), m_words(std::move(words)), m_body(new QVBoxLayout),
      m_categories(new KyCategorySelect)
{
    (new QVBoxLayout(this))->addLayout(m_body, 1);
    connect(table, &CategoryTable::changed, this, [this] {
        if (!isHidden()) // edit() reads them anew
            showCategories(filed());
    });

    auto addShortcut = [this](const QKeySequence &keys, void (CardForm::*slot)()) {
        auto *shortcut = new QShortcut(keys, this);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    addShortcut(QKeySequence::Save, &CardForm::save);
    addShortcut(Qt::Key_Escape, &CardForm::cancel);
}

QPlainTextEdit *CardForm::makeTextEditor()
{
    auto *editor = new QPlainTextEdit;
    editor->setTabChangesFocus(true); // else the keyboard alone never gets behind it
    return editor;
}

void CardForm::addEnd()
{
    auto *line = new QFormLayout;
    line->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    line->addRow(tr("Categories"), m_categories);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &CardForm::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &CardForm::cancel);
    auto *end = static_cast<QVBoxLayout *>(layout());
    end->addLayout(line);
    end->addWidget(buttons);
}

void CardForm::showCategories(const QList<int> &ids)
{
    m_categories->setCategories(ids, QPEApplication::applicationNameOf(qApp));
}

/* By rising id, and none for the unfiled. */
QList<int> CardForm::filed() const
{
    QList<int> ids = m_categories->currentCategories();
    ids.removeAll(UnfiledCategoryId);
    std::sort(ids.begin(), ids.end());
    return ids;
}

void CardForm::edit(unsigned long card, int category)
{
    m_card = card;
    m_original = card == 0 ? CardValues() : m_book->values(card);
    const QList<int> chosen = category == 0 ? QList<int>() : QList<int>{category};
    showCategories(card == 0 ? chosen : m_book->categories(card));
    show(m_original);
    m_shownAtFirst = shown();
    m_categoriesAtFirst = filed();
}

/* A category that was removed meanwhile isn't a change of the user's. */
bool CardForm::isFiledAnew() const
{
    return filed() != m_table->known(m_categoriesAtFirst);
}

bool CardForm::isModified() const
{
    return shown() != m_shownAtFirst || isFiledAnew();
}

/* An editor may not show a value as it is, such as the end of a very long text: what the user hasn't touched
 * stays what it was. */
CardValues CardForm::changedValues() const
{
    const CardValues before = m_card == 0 ? CardValues() : m_shownAtFirst;
    const CardValues now = shown();
    CardValues changed;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (it->toString() != before.value(it.key()).toString())
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
    const QList<int> categories = filed();
    if (!isGone()) {
        const bool isFiling = m_card == 0 || isFiledAnew();
        return m_book->save(m_card, changed, isFiling ? std::optional(categories) : std::nullopt);
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
        Messages::inform(this, m_words.title, m_words.nothing);
        return;
    }
    const unsigned long card = write(changed);
    if (card == 0) {
        Messages::warn(this, m_words.title, m_book->isAvailable() ? m_words.unsaved : m_words.isLent);
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
