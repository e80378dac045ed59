// kyplatformd stands in for the device's other processes, one a session and HOME.

#include "boxwatch.h"
#include "devicetree.h"
#include "fileserver.h"
#include "powerduty.h"
#include "sessionbus_p.h"
#include "taskbar.h"
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <unistd.h>

namespace {

int signalPipe[2]; // from the signal handler to the event loop

void noteSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

/** Makes SIGTERM, SIGINT and SIGHUP end the event loop. */
bool quitOnSignals(QSocketNotifier &notifier)
{
    QObject::connect(&notifier, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    struct sigaction action
    {
    };
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    return ::sigaction(SIGTERM, &action, nullptr) == 0 && ::sigaction(SIGINT, &action, nullptr) == 0 &&
           ::sigaction(SIGHUP, &action, nullptr) == 0;
}

/** Ends the event loop when the session's bus has gone, and with it the session. */
void quitWithBus()
{
    SessionBus::connection().connect(QString(), "/org/freedesktop/DBus/Local", "org.freedesktop.DBus.Local",
                                     "Disconnected", qApp, SLOT(quit()));
}

int fail(const char *reason)
{
    std::fprintf(stderr, "kyplatformd: %s\n", reason);
    return 1;
}

/** Empty when there is none that belongs to this user alone. */
QString runtimeFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
}

/** The device tree of this profile; null on a device, whose root is the machine's own. */
std::unique_ptr<DeviceTree> makeTree()
{
    const QString root = qEnvironmentVariable("KY_DEVICE_ROOT");
    if (root.isEmpty() || QDir(root).isRoot())
        return nullptr;
    return std::make_unique<DeviceTree>(root, runtimeFolder() + "/ky-" + SessionBus::profile() + "/proc");
}

/** The bus of the whole machine; not connected where there is none. */
QDBusConnection systemBus()
{
    const QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
    const QByteArray usual = "unix:path=/var/run/dbus/system_bus_socket";
    return SessionBus::open(address.isEmpty() ? usual : address, QStringLiteral("ky-system"));
}

/** @return true when the bus has started this process */
bool readOptions(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Stands in for the device's other processes: keeps the files of the device "
        "root, watches over lent boxes and sees to what "
        "applications ask of the device.");
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption activated("activated", "Tells that the session bus has started the service.");
    parser.addOption(activated);
    parser.process(application);
    if (!parser.positionalArguments().isEmpty()) {
        std::fprintf(stderr, "kyplatformd: it takes no arguments but options\n");
        std::exit(1);
    }
    return parser.isSet(activated);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("kyplatformd");
    QCoreApplication::setApplicationVersion(KY_VERSION);
    const bool activated = readOptions(application);
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return fail("no pipe");
    QSocketNotifier signalNotifier(signalPipe[0], QSocketNotifier::Read);
    if (!quitOnSignals(signalNotifier))
        return fail("cannot handle signals");

    if (runtimeFolder().isEmpty()) // its files would lie in the root of the machine
        return fail("there is no runtime folder");
    if (!SessionBus::isAvailable())
        return fail("there is no session bus");
    if (!SessionBus::requestName(SessionBus::serviceName("service"), false))
        return fail("already running for this HOME");
    quitWithBus();
    QFile::remove(QDir::homePath() + "/.cateditting");
    const std::unique_ptr<DeviceTree> tree = makeTree();
    if (tree && !tree->create())
        return 1;
    const BoxWatch watch;
    const QDBusConnection session = SessionBus::connection(), system = systemBus();
    const PowerDuty power(system, session);
    const FileServer fileServer(system, session);
    const TaskBar taskBar(session);
    // The bus starts nobody while the name is taken. A service of another HOME, started by hand, would keep
    // it from starting that of the session's own.
    if (activated)
        SessionBus::requestName("org.ky.Platform", true);
    SessionBus::requestName(SessionBus::serviceName("platform"), false); // tells that all is ready
    return QCoreApplication::exec();
}
