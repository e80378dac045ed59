#include "tour.h"

#include "cardform.h"
#include "categorytable.h"
#include "contactspage.h"
#include "kyzipconvertor.h"
#include "mainwindow.h"
#include "memospage.h"
#include "postalpage.h"
#include "settingspage.h"
#include "statusline.h"
#include "taskspage.h"

#include <cstdio>
#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QScrollBar>
#include <QTimer>

namespace {

class Tour
{
public:
    Tour(MainWindow &window, const QString &folder) : m_window(window), m_folder(folder) {}

    [[nodiscard]] bool isComplete() const { return m_isComplete; }

    void take()
    {
        QDir().mkpath(m_folder);
        m_window.show();
        showContacts();
        showPage(m_window.tasks(), QStringLiteral("tasks"), QStringLiteral("task"));
        showPage(m_window.memos(), QStringLiteral("memos"), QStringLiteral("memo"));
        showCategories();
        showPostal();
        showSettings();
    }

private:
    void picture(QWidget &widget, const QString &name, const QString &summary)
    {
        QApplication::processEvents();
        const QString file = QDir(m_folder).filePath(name + QLatin1String(".png"));
        const bool written = widget.grab().save(file);
        std::printf("%s: %s\n", qPrintable(name), qUtf8Printable(written ? summary : "can't write " + file));
        std::fflush(stdout);
        m_isComplete = m_isComplete && written;
    }

    void showContacts()
    {
        ContactsPage *contacts = m_window.contacts();
        showPage(contacts, QStringLiteral("contacts"), QStringLiteral("contact"));
        contacts->selectRow(contacts->book()->count() / 2);
        picture(m_window, QStringLiteral("contacts-middle"), contacts->summary());
        contacts->search(QStringLiteral("example.jp"));
        picture(m_window, QStringLiteral("contacts-search"), contacts->summary());
        contacts->search(QString());
    }

    /* The list, the list of a category that has something in it, and the form. */
    void showPage(CardsPage *page, const QString &name, const QString &form)
    {
        m_window.showPage(page);
        page->selectRow(1);
        picture(m_window, name, page->summary());
        for (const CategoryEntry &entry : m_window.categories()->entries()) {
            page->showCategory(entry.id);
            if (page->book()->count() == 0)
                continue;
            picture(m_window, name + QLatin1String("-category"), entry.name + ": " + page->summary());
            break;
        }
        page->showCategory(0);
        page->editCard();
        picture(m_window, form, QStringLiteral("the form of the selected card"));
        page->showList();
    }

    /* The dialog in which categories are edited. */
    void showCategories()
    {
        m_window.showPage(m_window.contacts());
        QTimer::singleShot(0, &m_window, [this] {
            auto *shown = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            m_isComplete = m_isComplete && shown;
            if (!shown)
                return;
            shown->showNormal();
            shown->resize(m_window.size()); // the screen that the pages are shown on
            picture(*shown, QStringLiteral("categories"),
                    QStringLiteral("%1 categories").arg(m_window.categories()->entries().size()));
            shown->reject();
        });
        m_window.contacts()->showCategories();
    }

    /* A code, an address in Kyoto with its streets, a town that has several codes, and the dialog. */
    void showPostal()
    {
        PostalPage *postal = m_window.postal();
        m_window.showPage(postal);
        postal->search(QStringLiteral("100-0001"));
        picture(m_window, QStringLiteral("postal-code"), postal->summary());
        postal->search(QStringLiteral("京都市中京区烏丸通三条上ル場之町"));
        picture(m_window, QStringLiteral("postal-address"), postal->summary());
        postal->search(QStringLiteral("札幌市中央区大通西"));
        picture(m_window, QStringLiteral("postal-several"), postal->summary());
        postal->search(QString());
        showConvertor();
    }

    void showConvertor()
    {
        KyZIPConvertor convertor(&m_window, false, nullptr, true);
        if (!convertor.isExecute()) {
            std::puts("postal-dialog: there is no dictionary");
            return;
        }
        const QString address = QStringLiteral("札幌市中央区大通西");
        convertor.setSearchMode(KyZIPConvertor::AddressSearch);
        convertor.setAddress(address);
        QTimer::singleShot(0, &convertor, [&] {
            // Its warning, where the dictionary hasn't the address.
            auto *shown = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            picture(*shown, QStringLiteral("postal-dialog"), QStringLiteral("the codes of ") + address);
            shown->reject();
        });
        convertor.convertor();
    }

    /* The settings are longer than a small screen. */
    void showSettings()
    {
        SettingsPage *settings = m_window.settings();
        m_window.showPage(settings);
        picture(m_window, QStringLiteral("settings"), m_window.statusLine()->summary());
        for (const QString &line : settings->summary())
            std::printf("  %s\n", qUtf8Printable(line));
        settings->verticalScrollBar()->setValue(settings->verticalScrollBar()->maximum());
        picture(m_window, QStringLiteral("settings-end"), QStringLiteral("the rest of the settings"));
    }

    MainWindow &m_window;
    QString m_folder;
    bool m_isComplete = true;
};

} // namespace

bool takeTour(MainWindow &window, const QString &folder)
{
    Tour tour(window, folder);
    tour.take();
    return tour.isComplete();
}
