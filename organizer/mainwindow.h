#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QMainWindow>

class CardsPage;
class CategoryTable;
class ContactsPage;
class MemosPage;
class QTabWidget;
class TasksPage;

/** The window of the Organizer: a page a box, reached by the tabs below, or by Ctrl and a digit. */
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow();

    [[nodiscard]] CategoryTable *categories() const { return m_categories; }
    [[nodiscard]] ContactsPage *contacts() const { return m_contacts; }
    [[nodiscard]] TasksPage *tasks() const { return m_tasks; }
    [[nodiscard]] MemosPage *memos() const { return m_memos; }
    /** Brings a page to the front. */
    void showPage(CardsPage *page);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void addPage(CardsPage *page, const char *icon, const QString &title);
    void askForBox();

    CategoryTable *m_categories;
    ContactsPage *m_contacts;
    TasksPage *m_tasks;
    MemosPage *m_memos;
    QTabWidget *m_pages;
};

#endif
