#include "contactimport.h"
#include "contactspage.h"
#include "mainwindow.h"
#include "qpeapplication.h"
#include "tour.h"

#include <cstdio>
#include <optional>
#include <QCommandLineParser>
#include <QTimer>

namespace {

struct Options
{
    QString name;
    QString import;
    QString tour;
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

Options parseOptions(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The Organizer: your contacts, held in a box of records."));
    parser.addHelpOption();
    parser.addOptions(
        {{QStringLiteral("name"), QStringLiteral("Run as an application of this name."),
          QStringLiteral("name"), QStringLiteral("kyorganizer")},
         {QStringLiteral("import"), QStringLiteral("Import a vCard file."), QStringLiteral("file")},
         {QStringLiteral("tour"), QStringLiteral("Write a picture of every page and end."),
          QStringLiteral("folder")},
         {QStringLiteral("screen"), QStringLiteral("Size of the screen."), QStringLiteral("WxH"),
          QStringLiteral("480x640")}});
    parser.process(application);
    const std::optional<QSize> screen = parseScreen(parser.value(QStringLiteral("screen")));
    if (!screen) {
        std::fprintf(stderr, "kyorganizer: --screen takes a size such as 480x640\n");
        std::exit(2);
    }
    return {parser.value(QStringLiteral("name")), parser.value(QStringLiteral("import")),
            parser.value(QStringLiteral("tour")), *screen};
}

} // namespace

int main(int argc, char **argv)
{
    QPEApplication application(argc, argv);
    const Options options = parseOptions(application);
    application.setName(options.name.toUtf8());

    MainWindow window;
    window.resize(options.screen);
    if (!options.tour.isEmpty()) {
        if (!options.import.isEmpty()) {
            const QString report = ContactImport(window.contacts()->book(), nullptr).run(options.import);
            std::printf("import: %s\n", qUtf8Printable(report));
        }
        return takeTour(window, options.tour) ? 0 : 1;
    }
    window.show();
    if (!options.import.isEmpty())
        QTimer::singleShot(0, &window, [&] { window.contacts()->importFrom(options.import); });
    return QPEApplication::exec();
}
