#include "fileserver.h"
#include "config.h"
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QRegularExpression>
#include <utility>

namespace {

constexpr qsizetype LongestUnit = 255; // of the service manager
constexpr int AnswerTime = 10000;      // ms

} // namespace

FileServer::FileServer(const QDBusConnection &system, const QDBusConnection &session, QObject *parent)
    : QObject(parent), m_system(system), m_session(session), m_channel("QPE/System")
{
    connect(&m_channel, &QCopChannel::received, this, &FileServer::handleMessage);
}

bool FileServer::isServiceUnit(const QString &name)
{
    static const QRegularExpression unit(
        QRegularExpression::anchoredPattern(QStringLiteral(R"([A-Za-z0-9:_.\\@-]+\.service)")));
    return name.size() <= LongestUnit && unit.match(name).hasMatch();
}

void FileServer::handleMessage(const QByteArray &message)
{
    if (message == "stopSamba()")
        m_wanted = QStringLiteral("StopUnit");
    else if (message == "startSamba()")
        m_wanted = QStringLiteral("StartUnit");
    if (!m_call && !m_wanted.isEmpty())
        control(std::exchange(m_wanted, QString()));
}

void FileServer::control(const QString &method)
{
    Config settings(QStringLiteral("kyplatformd"));
    settings.setGroup(QStringLiteral("Samba"));
    const QString unit = settings.readEntry(QStringLiteral("Unit"));
    const QString bus = settings.readEntry(QStringLiteral("Bus"), QStringLiteral("system"));
    if (unit.isEmpty())
        return;
    if (!isServiceUnit(unit))
        qWarning("kyplatformd: \"%s\" is not the name of a service unit", qUtf8Printable(unit));
    else if (bus == QLatin1String("system"))
        call(m_system, method, unit);
    else if (bus == QLatin1String("user"))
        call(m_session, method, unit);
    else
        qWarning("kyplatformd: the bus of a unit is system or user, not \"%s\"", qUtf8Printable(bus));
}

void FileServer::call(const QDBusConnection &bus, const QString &method, const QString &unit)
{
    if (!bus.isConnected()) {
        qWarning("kyplatformd: %s %s: there is no such bus", qUtf8Printable(method), qUtf8Printable(unit));
        return;
    }
    qDebug("kyplatformd: %s %s", qUtf8Printable(method), qUtf8Printable(unit));
    QDBusMessage message = QDBusMessage::createMethodCall(
        "org.freedesktop.systemd1", "/org/freedesktop/systemd1", "org.freedesktop.systemd1.Manager", method);
    message << unit << "replace"; // of a stop and a start close together the later one counts
    m_call = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(message, AnswerTime));
    connect(m_call.get(), &QDBusPendingCallWatcher::finished, this,
            [this, method, unit] { takeAnswer(method, unit); });
}

void FileServer::takeAnswer(const QString &method, const QString &unit)
{
    const QDBusPendingReply<> reply = *m_call;
    m_call.release()->deleteLater();
    if (reply.isError())
        qWarning("kyplatformd: %s %s failed: %s", qUtf8Printable(method), qUtf8Printable(unit),
                 qUtf8Printable(reply.error().message()));
    if (!m_wanted.isEmpty())
        control(std::exchange(m_wanted, QString()));
}
