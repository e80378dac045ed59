#ifndef CONTACTFORM_H
#define CONTACTFORM_H

#include "cardform.h"

#include <QHash>

class QFormLayout;
class QLineEdit;
class QPlainTextEdit;
class QTabWidget;

/** The form of a contact. */
class ContactForm : public CardForm
{
    Q_OBJECT
public:
    ContactForm(Book *book, CategoryTable *table, QWidget *parent = nullptr);

protected:
    void show(const CardValues &values) override;
    [[nodiscard]] CardValues shown() const override;
    bool complete(CardValues &changed, const CardValues &original) const override;

private:
    void addTab(int tab);
    void addLookup(QFormLayout *form, int field);

    QTabWidget *m_tabs;
    QHash<int, QLineEdit *> m_lines;
    QPlainTextEdit *m_notes = nullptr;
};

#endif
