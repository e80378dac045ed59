#include "categorytable.h"
#include "contactimport.h"
#include "contactspage.h"
#include "mainwindow.h"
#include "preferences.h"
#include "qpeapplication.h"
#include "samples.h"
#include "tour.h"

#include <cstdio>
#include <optional>
#include <QCommandLineParser>
#include <QMessageBox>
#include <QTimer>

namespace {

struct Options
{
    QString name;
    QString import;
    QString tour;
    bool sample = false;
    int contacts = 0; ///< invented ones
    QSize screen{480, 640};
};

std::optional<QSize> parseScreen(const QString &text)
{
    const QStringList sides = text.split(QLatin1Char('x'));
    const QSize size = sides.size() == 2 ? QSize(sides[0].toInt(), sides[1].toInt()) : QSize();
    if (size.width() < 100 || size.height() < 100 || size.width() > 8000 || size.height() > 8000)
        return std::nullopt;
    return size;
}

[[noreturn]] void fail(const char *message)
{
    std::fprintf(stderr, "kyorganizer: %s\n", message);
    std::exit(2);
}

/* 0 for no number from 1 to the most. */
int parseContacts(const QString &text)
{
    bool isNumber = false;
    const int count = text.toInt(&isNumber);
    return isNumber && count >= 1 && count <= MostSampleContacts ? count : 0;
}

Options parseOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The Organizer: your contacts, tasks and memos, held in boxes of records."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("name"), QStringLiteral("Run as an application of this name."),
          QStringLiteral("name"), QStringLiteral("kyorganizer")},
         {QStringLiteral("import"), QStringLiteral("Import a vCard file."), QStringLiteral("file")},
         {QStringLiteral("tour"), QStringLiteral("Write a picture of every page and end."),
          QStringLiteral("folder")},
         {QStringLiteral("sample"), QStringLiteral("Fill empty boxes with samples.")},
         {QStringLiteral("contacts"), QStringLiteral("Fill an empty address book with invented contacts."),
          QStringLiteral("number")},
         {QStringLiteral("screen"), QStringLiteral("Size of the screen."), QStringLiteral("WxH"),
          qEnvironmentVariable("KY_SCREEN", QStringLiteral("480x640"))}});
    parser.process(arguments);
    const std::optional<QSize> screen = parseScreen(parser.value(QStringLiteral("screen")));
    if (!screen)
        fail("--screen and KY_SCREEN take a size such as 480x640");
    const int contacts = parseContacts(parser.value(QStringLiteral("contacts")));
    if (contacts == 0 && parser.isSet(QStringLiteral("contacts")))
        fail("--contacts takes a number from 1 to 50000");
    return {parser.value(QStringLiteral("name")),
            parser.value(QStringLiteral("import")),
            parser.value(QStringLiteral("tour")),
            parser.isSet(QStringLiteral("sample")),
            contacts,
            *screen};
}

/* The library and the programs started from here take the same screen for the desktop. */
void setDesktop(const QSize &screen)
{
    qputenv("KY_SCREEN", QByteArray::number(screen.width()) + 'x' + QByteArray::number(screen.height()));
}

/* What the options wish to have in empty boxes. */
bool fill(MainWindow &window, const Options &options)
{
    const bool hasContacts = options.contacts == 0 || addSampleContacts(window, options.contacts);
    return (!options.sample || addSamples(window)) && hasContacts;
}

/* The pages with what the options bring along, as pictures. */
int runTour(const Options &options)
{
    MainWindow window;
    window.resize(options.screen);
    if (!options.import.isEmpty()) {
        ContactImport import(window.contacts()->book(), window.categories(), nullptr);
        std::printf("import: %s\n", qUtf8Printable(import.run(options.import)));
    }
    const bool isFilled = fill(window, options);
    return takeTour(window, options.tour) && isFilled ? 0 : 1;
}

int run(const Options &options)
{
    MainWindow window;
    window.resize(options.screen);
    window.show();
    QTimer::singleShot(0, &window, [&] {
        if (!fill(window, options))
            QMessageBox::warning(&window, MainWindow::tr("Organizer"),
                                 MainWindow::tr("The samples could not be saved."));
        if (!options.import.isEmpty())
            window.contacts()->importFrom(options.import);
    });
    return QPEApplication::exec();
}

/* The first window does the user's work; what this start was to bring along needs telling. */
int raiseFirst(const Options &options)
{
    QPEApplication::raiseRunning(options.name.toUtf8());
    if (options.import.isEmpty() && !options.sample && options.contacts == 0)
        return 0;
    std::fprintf(stderr, "kyorganizer: it is running already; use Import in its window\n");
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    // Taken before the toolkit is: it has a --name of its own and removes it.
    const QStringList arguments(argv, argv + argc);
    QPEApplication application(argc, argv);
    const Options options = parseOptions(arguments);
    application.setName(options.name.toUtf8());
    setDesktop(options.screen);
    Preferences::load().apply();
    if (!options.tour.isEmpty())
        return runTour(options);
    return application.isFirst() ? run(options) : raiseFirst(options);
}
