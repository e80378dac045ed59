#include "tour.h"

#include "contactspage.h"
#include "mainwindow.h"

#include <cstdio>
#include <QApplication>
#include <QDir>
#include <QPixmap>

namespace {

bool show(MainWindow &window, const QString &folder, const QString &page, const QString &summary)
{
    QApplication::processEvents();
    const QString file = QDir(folder).filePath(page + QLatin1String(".png"));
    const bool written = window.grab().save(file);
    std::printf("%s: %s\n", qPrintable(page), qUtf8Printable(written ? summary : "can't write " + file));
    std::fflush(stdout);
    return written;
}

} // namespace

bool takeTour(MainWindow &window, const QString &folder)
{
    QDir().mkpath(folder);
    window.show();
    ContactsPage *contacts = window.contacts();
    contacts->selectRow(0);
    bool written = show(window, folder, QStringLiteral("contacts"), contacts->summary());
    contacts->selectRow(contacts->book()->count() / 2);
    written = show(window, folder, QStringLiteral("contacts-middle"), contacts->summary()) && written;
    contacts->editContact();
    written =
        show(window, folder, QStringLiteral("contact"), QStringLiteral("the form of the selected contact")) &&
        written;
    contacts->showList();
    return written;
}
