#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QMainWindow>

class CardsPage;
class CategoryTable;
class ContactsPage;
class MemosPage;
class PostalPage;
class QTabWidget;
class SettingsPage;
class StatusLine;
class TasksPage;

/** The window of the Organizer: the status line, and below it a page a box, one for postal codes and one for
 * the settings, reached by the tabs below, or by Ctrl and a digit. */
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow();

    [[nodiscard]] CategoryTable *categories() const { return m_categories; }
    [[nodiscard]] ContactsPage *contacts() const { return m_contacts; }
    [[nodiscard]] TasksPage *tasks() const { return m_tasks; }
    [[nodiscard]] MemosPage *memos() const { return m_memos; }
    [[nodiscard]] PostalPage *postal() const { return m_postal; }
    [[nodiscard]] SettingsPage *settings() const { return m_settings; }
    [[nodiscard]] StatusLine *statusLine() const { return m_statusLine; }
    /** Brings a page to the front. */
    void showPage(QWidget *page);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void addPage(QWidget *page, const char *icon, const QString &title);
    void askForBox();

    CategoryTable *m_categories;
    ContactsPage *m_contacts;
    TasksPage *m_tasks;
    MemosPage *m_memos;
    PostalPage *m_postal;
    SettingsPage *m_settings;
    StatusLine *m_statusLine;
    QTabWidget *m_pages;
};

#endif
