#ifndef CONTACTFORM_H
#define CONTACTFORM_H

#include "contactbook.h"

#include <QHash>
#include <QWidget>

class QLineEdit;
class QPlainTextEdit;
class QTabWidget;

/** The form in which a contact is made or changed. Nothing is written before Save. */
class ContactForm : public QWidget
{
    Q_OBJECT
public:
    explicit ContactForm(ContactBook *book, QWidget *parent = nullptr);

    /** Shows a contact for editing; 0 for a new one. */
    void edit(unsigned long card);
    /** True when something was typed that isn't saved. */
    [[nodiscard]] bool isModified() const;

public slots:
    void save();
    /** Asks before it drops what was typed. */
    void cancel();

signals:
    void saved(unsigned long card);
    void cancelled();

private:
    void addTab(QTabWidget *tabs, int tab);
    [[nodiscard]] QString shownText(int field) const;
    [[nodiscard]] ContactTexts changedTexts() const;

    ContactBook *m_book;
    QTabWidget *m_tabs = nullptr;
    QHash<int, QLineEdit *> m_lines;
    QPlainTextEdit *m_notes = nullptr;
    unsigned long m_card = 0;
    ContactTexts m_original;
};

#endif
