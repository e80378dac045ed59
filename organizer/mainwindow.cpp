#include "mainwindow.h"

#include "categorytable.h"
#include "contactspage.h"
#include "memospage.h"
#include "resource.h"
#include "taskspage.h"

#include <QCloseEvent>
#include <QShortcut>
#include <QTabWidget>

MainWindow::MainWindow()
    : m_categories(new CategoryTable(this)), m_contacts(new ContactsPage(m_categories)),
      m_tasks(new TasksPage(m_categories)), m_memos(new MemosPage(m_categories)), m_pages(new QTabWidget)
{
    setWindowTitle(tr("Organizer"));
    setWindowIcon(QIcon(Resource::loadPixmap(QStringLiteral("contacts"))));
    m_pages->setTabPosition(QTabWidget::South);
    m_pages->setDocumentMode(true);
    setCentralWidget(m_pages);
    addPage(m_contacts, "contacts", tr("Contacts"));
    addPage(m_tasks, "tasks", tr("Tasks"));
    addPage(m_memos, "memos", tr("Memos"));
    connect(m_pages, &QTabWidget::currentChanged, this, &MainWindow::askForBox);
    m_contacts->focusList();
}

void MainWindow::addPage(CardsPage *page, const char *icon, const QString &title)
{
    const int index = m_pages->addTab(page, QIcon(Resource::loadPixmap(QLatin1String(icon))), title);
    page->focusList(); // where the keys go when it comes to the front
    auto *shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + index)), this);
    connect(shortcut, &QShortcut::activated, this, [=, this] { showPage(page); });
}

void MainWindow::showPage(CardsPage *page)
{
    m_pages->setCurrentWidget(page);
}

/* The page that the user sees asks for its box; the others may stay lent. */
void MainWindow::askForBox()
{
    qobject_cast<CardsPage *>(m_pages->currentWidget())->book()->ask();
}

void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        askForBox();
    QMainWindow::changeEvent(event);
}

/* A form with something in it that isn't saved asks first. */
void MainWindow::closeEvent(QCloseEvent *event)
{
    for (CardsPage *page : {static_cast<CardsPage *>(m_contacts), static_cast<CardsPage *>(m_tasks),
                            static_cast<CardsPage *>(m_memos)}) {
        if (!page->isEditing())
            continue;
        showPage(page);
        page->showList();
        if (page->isEditing()) {
            event->ignore();
            return;
        }
    }
    QMainWindow::closeEvent(event);
}
