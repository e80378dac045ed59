#ifndef CONTACTSPAGE_H
#define CONTACTSPAGE_H

#include "contactbook.h"

#include <QWidget>

class ContactForm;
class ContactsModel;
class QAction;
class QLabel;
class QStackedWidget;
class QTextBrowser;
class QToolBar;
class QTreeView;

/** The contacts: a list in the order of their readings, what is known of the selected one, and the form. */
class ContactsPage : public QWidget
{
    Q_OBJECT
public:
    explicit ContactsPage(QWidget *parent = nullptr);

    [[nodiscard]] ContactBook *book() const { return m_book; }
    /** Selects a row of the list and shows it. */
    void selectRow(int row);
    /** What the list shows, in a line: how many contacts, and the names at the top of its window. */
    [[nodiscard]] QString summary() const;

public slots:
    void newContact();
    void editContact();
    /** Asks, then deletes; the deletion can be undone until the next one. */
    void deleteContact();
    void undoDelete();
    /** Asks for a vCard file and imports it. */
    void importFile();
    /** Imports a vCard file and tells what came of it. */
    void importFrom(const QString &path);
    /** Leaves the form, asking about what isn't saved. */
    void showList();

private:
    void addActions(QToolBar *bar);
    QWidget *makeList();
    void showSelected();
    void updateState();
    void showCard(unsigned long card);
    [[nodiscard]] unsigned long selectedCard() const;
    [[nodiscard]] QString detailsOf(unsigned long card) const;

    ContactBook *m_book;
    ContactsModel *m_model;
    QStackedWidget *m_stack;
    QTreeView *m_list = nullptr;
    QTextBrowser *m_details = nullptr;
    QLabel *m_state = nullptr;
    ContactForm *m_form = nullptr;
    QAction *m_edit = nullptr;
    QAction *m_delete = nullptr;
    QAction *m_undo = nullptr;
    ContactTexts m_deleted;
    unsigned long m_card = 0; ///< the selected card; survives a change of the list
};

#endif
