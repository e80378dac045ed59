#include "qpeapplication.h"
#include "qcopchannel.h"
#include "sessionbus_p.h"
#include "stylushold_p.h"
#include <algorithm>
#include <memory>
#include <QAbstractScrollArea>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QThread>

namespace {

constexpr auto RaiseMessage = "raise()";

QByteArray channelOf(const QByteArray &application)
{
    return "QPE/Application/" + application;
}

} // namespace

class QPEApplicationPrivate
{
public:
    void listen(QPEApplication *application);

    std::unique_ptr<QCopChannel> channel;
    std::unique_ptr<QCopChannel> systemChannel;
};

/** Opens the channel of the application's present name in place of the one before. */
void QPEApplicationPrivate::listen(QPEApplication *application)
{
    channel = std::make_unique<QCopChannel>(channelOf(application->name()));
    QObject::connect(channel.get(), &QCopChannel::received, application, &QPEApplication::appMessage);
}

namespace {

constexpr int PlatformWait = 2000; // ms
constexpr int PlatformPoll = 20;   // ms

/** Passes the argument count on, behind what must be set before there is an application object. */
int &withoutScaling(int &argc)
{
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    return argc;
}

/** True when the device tree is kyplatformd's: it leads into the runtime folder. A real folder is a device's
 * own, or that of a test, and needs nobody. */
bool deviceTreeIsKept()
{
    const QString root = qEnvironmentVariable("KY_DEVICE_ROOT");
    if (root.isEmpty())
        return false;
    const QFileInfo proc(root + QLatin1String("/proc"));
    return proc.isSymLink() || !proc.exists();
}

void waitFor(const QString &service)
{
    const QDeadlineTimer deadline(PlatformWait);
    while (!SessionBus::hasOwner(service) && !deadline.hasExpired())
        QThread::msleep(PlatformPoll);
}

/** Has kyplatformd started where none serves this HOME, and waits for it where its files are needed. */
void preparePlatform()
{
    const QString service = SessionBus::serviceName(QStringLiteral("platform"));
    if (!SessionBus::isAvailable() || SessionBus::hasOwner(service))
        return;
    SessionBus::startService(QStringLiteral("org.ky.Platform"));
    if (deviceTreeIsKept())
        waitFor(service);
}

QString withSlash(const QString &path)
{
    return path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}

QWidget *stylusTarget(QWidget *widget)
{
    const auto *area = qobject_cast<QAbstractScrollArea *>(widget);
    return area ? area->viewport() : widget;
}

/** A flag is an int or a bool on the wire. */
bool flagOf(const QByteArray &data)
{
    return data.count('\0') != data.size();
}

/** Brings a window to the front, out of its icon as well. */
void bringToFront(QWidget *window)
{
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->raise();
    window->activateWindow();
}

/** Dialogs come after the windows that they belong to, and so lie above them. */
void bringWindowsToFront()
{
    QWidgetList windows = QApplication::topLevelWidgets();
    windows.removeIf([](const QWidget *window) {
        const Qt::WindowType type = window->windowType();
        return !window->isVisible() || (type != Qt::Window && type != Qt::Dialog);
    });
    std::stable_partition(windows.begin(), windows.end(),
                          [](const QWidget *window) { return !window->parentWidget(); });
    for (QWidget *window : std::as_const(windows))
        bringToFront(window);
}

void handleApplicationMessage(QPEApplication *application, const QByteArray &message)
{
    if (message != RaiseMessage)
        return;
    bringWindowsToFront();
    emit application->raised();
}

void handleSystemMessage(QPEApplication *application, const QByteArray &message, const QByteArray &data)
{
    if (message == "volumeChange(bool)")
        emit application->volumeChanged(flagOf(data));
    else if (message == "clockChange(bool)")
        emit application->clockChanged(flagOf(data));
}

} // namespace

QPEApplication::QPEApplication(int &argc, char **argv, const QByteArray &name)
    : QApplication(withoutScaling(argc), argv), d(new QPEApplicationPrivate)
{
    preparePlatform();
    connect(this, &QObject::objectNameChanged, this, [this] { d->listen(this); });
    connect(this, &QPEApplication::appMessage, this,
            [this](const QByteArray &message) { handleApplicationMessage(this, message); });
    const QByteArray program = QFile::encodeName(QFileInfo(QFile::decodeName(argv[0])).fileName());
    setName(name.isEmpty() ? program : name);
    d->systemChannel = std::make_unique<QCopChannel>("QPE/System");
    connect(d->systemChannel.get(), &QCopChannel::received, this,
            [this](const QByteArray &message, const QByteArray &data) {
                handleSystemMessage(this, message, data);
            });
}

QPEApplication::~QPEApplication()
{
    delete d;
}

QByteArray QPEApplication::name() const
{
    return objectName().toUtf8();
}

void QPEApplication::setName(const QByteArray &name)
{
    if (!name.isEmpty())
        setObjectName(QString::fromUtf8(name));
}

bool QPEApplication::isFirst() const
{
    return QCopChannel::isFirstOn(channelOf(name()));
}

bool QPEApplication::isRunning(const QByteArray &name)
{
    return QCopChannel::isRegistered(channelOf(name));
}

bool QPEApplication::raiseRunning(const QByteArray &name)
{
    return isRunning(name) && QCopChannel::send(channelOf(name), RaiseMessage);
}

QString QPEApplication::applicationNameOf(const QCoreApplication *application)
{
    return application->objectName().isEmpty() ? application->applicationName() : application->objectName();
}

QString QPEApplication::qpeDir()
{
    const QString root = qEnvironmentVariable("QPEDIR");
    return withSlash(root.isEmpty() ? QStringLiteral("/home/QtPalmtop") : root);
}

QString QPEApplication::documentDir()
{
    const QString folder = withSlash(QDir::homePath()) + QLatin1String("Documents/");
    // Without a home it would be a folder in the root of the machine.
    if (qEnvironmentVariableIsEmpty("HOME") || !QDir().mkpath(folder))
        qWarning("QPEApplication: cannot make %s", qUtf8Printable(folder));
    return folder;
}

void QPEApplication::setStylusOperation(QWidget *widget, StylusMode mode)
{
    QWidget *target = stylusTarget(widget);
    StylusHold *present = StylusHold::of(target);
    if (mode == LeftOnly)
        delete present;
    else if (!present)
        new StylusHold(target);
}

QPEApplication::StylusMode QPEApplication::stylusOperation(QWidget *widget)
{
    return StylusHold::of(stylusTarget(widget)) ? RightOnHold : LeftOnly;
}
