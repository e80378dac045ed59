#include "mainwindow.h"

#include "categorytable.h"
#include "contactspage.h"
#include "memospage.h"
#include "postalpage.h"
#include "resource.h"
#include "settingspage.h"
#include "statusline.h"
#include "taskspage.h"

#include <QCloseEvent>
#include <QShortcut>
#include <QTabWidget>
#include <QVBoxLayout>

MainWindow::MainWindow()
    : m_categories(new CategoryTable(this)), m_contacts(new ContactsPage(m_categories)),
      m_tasks(new TasksPage(m_categories)), m_memos(new MemosPage(m_categories)), m_postal(new PostalPage),
      m_settings(new SettingsPage), m_statusLine(new StatusLine), m_pages(new QTabWidget)
{
    setWindowTitle(tr("Organizer"));
    setWindowIcon(QIcon(Resource::loadPixmap(QStringLiteral("contacts"))));
    m_pages->setTabPosition(QTabWidget::South);
    m_pages->setDocumentMode(true);
    auto *contents = new QWidget;
    auto *layout = new QVBoxLayout(contents);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_statusLine);
    layout->addWidget(m_pages, 1);
    setCentralWidget(contents);
    addPage(m_contacts, "contacts", tr("Contacts"));
    addPage(m_tasks, "tasks", tr("Tasks"));
    addPage(m_memos, "memos", tr("Memos"));
    addPage(m_postal, "postal", tr("Postal codes"));
    addPage(m_settings, "settings", tr("Settings"));
    for (CardsPage *page : findChildren<CardsPage *>())
        page->focusList(); // where the keys go when it comes to the front
    connect(m_pages, &QTabWidget::currentChanged, this, &MainWindow::askForBox);
    m_contacts->focusList();
}

void MainWindow::addPage(QWidget *page, const char *icon, const QString &title)
{
    const int index = m_pages->addTab(page, QIcon(Resource::loadPixmap(QLatin1String(icon))), title);
    auto *shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_1 + index)), this);
    connect(shortcut, &QShortcut::activated, this, [=, this] { showPage(page); });
}

/* A list whose box was lent could not take the keys when its page came to the front. */
void MainWindow::showPage(QWidget *page)
{
    m_pages->setCurrentWidget(page);
    if (QWidget *focused = page->focusWidget())
        focused->setFocus();
}

/* The page that the user sees asks for its box; the others may stay lent. */
void MainWindow::askForBox()
{
    if (auto *page = qobject_cast<CardsPage *>(m_pages->currentWidget()))
        page->book()->ask();
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
