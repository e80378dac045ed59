#include "mainwindow.h"

#include "contactspage.h"
#include "resource.h"

#include <QEvent>

MainWindow::MainWindow() : m_contacts(new ContactsPage)
{
    setWindowTitle(tr("Organizer"));
    setWindowIcon(QIcon(Resource::loadPixmap(QStringLiteral("contacts"))));
    setCentralWidget(m_contacts);
}

/* The window that gets the focus asks for the boxes of its pages. */
void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_contacts->book()->ask();
    QMainWindow::changeEvent(event);
}
