#ifndef CARDFORM_H
#define CARDFORM_H

#include "book.h"

#include <QWidget>

class CategoryTable;
class KyCategorySelect;
class QPlainTextEdit;
class QVBoxLayout;

/** The texts of a form that depend on what it is for. */
struct FormWords
{
    QString title;   ///< of message boxes
    QString nothing; ///< why an empty card isn't saved
    QString unsaved; ///< when the box doesn't take it
    QString isLent;  ///< when another application has the box
};

/** A form in which a card is made or changed. Nothing is written before Save. */
class CardForm : public QWidget
{
    Q_OBJECT
public:
    CardForm(Book *book, CategoryTable *table, FormWords words, QWidget *parent = nullptr);

    /** Shows a card for editing; 0 for a new one, with @p category as a beginning, 0 for none. */
    void edit(unsigned long card, int category = 0);
    /** True when something was changed that isn't saved. */
    [[nodiscard]] bool isModified() const;

public slots:
    void save();
    /** Asks before it drops what was typed. */
    void cancel();

signals:
    void saved(unsigned long card);
    void cancelled();

protected:
    /** Where a form puts its editors, above the categories and the buttons. */
    [[nodiscard]] QVBoxLayout *body() const { return m_body; }
    /** Adds the categories and the buttons, once the editors are there: the tabulator goes in this order. */
    void addEnd();

    /** An editor of many lines, which the tabulator leaves. */
    [[nodiscard]] static QPlainTextEdit *makeTextEditor();

    /** Puts values into the editors, those of a new card for an empty map, and begins at the first one. */
    virtual void show(const CardValues &values) = 0;
    /** What the editors hold now, for every field that has one. */
    [[nodiscard]] virtual CardValues shown() const = 0;
    /** Adds to what changed whatever follows from it. @return false when there is nothing to save in it */
    virtual bool complete(CardValues &changed, const CardValues &original) const = 0;

    using QWidget::show;

private:
    [[nodiscard]] CardValues changedValues() const;
    [[nodiscard]] bool isGone() const;
    [[nodiscard]] QList<int> filed() const;
    [[nodiscard]] bool isFiledAnew() const;
    void showCategories(const QList<int> &ids);
    unsigned long write(CardValues changed);

    Book *m_book;
    CategoryTable *m_table;
    FormWords m_words;
    QVBoxLayout *m_body;
    KyCategorySelect *m_categories;
    unsigned long m_card = 0;
    CardValues m_original;
    CardValues m_shownAtFirst;
    QList<int> m_categoriesAtFirst;
};

#endif
