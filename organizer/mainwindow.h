#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QMainWindow>

class ContactsPage;

/** The window of the Organizer. */
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    MainWindow();

    [[nodiscard]] ContactsPage *contacts() const { return m_contacts; }

protected:
    void changeEvent(QEvent *event) override;

private:
    ContactsPage *m_contacts;
};

#endif
