#ifndef MEMOFORM_H
#define MEMOFORM_H

#include "cardform.h"

class QLineEdit;
class QPlainTextEdit;

/** The form of a memo. One without a title takes its first line for it. */
class MemoForm : public CardForm
{
    Q_OBJECT
public:
    MemoForm(Book *book, CategoryTable *table, QWidget *parent = nullptr);

protected:
    void show(const CardValues &values) override;
    [[nodiscard]] CardValues shown() const override;
    bool complete(CardValues &changed, const CardValues &original) const override;

private:
    QLineEdit *m_title;
    QPlainTextEdit *m_contents;
};

#endif
