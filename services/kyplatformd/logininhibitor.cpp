#include "logininhibitor.h"
#include <limits>
#include <QDBusMessage>
#include <QDBusPendingReply>

namespace {

constexpr auto Service = "org.freedesktop.login1";
constexpr int NoLimit = std::numeric_limits<int>::max();

QDBusMessage question(const QString &what)
{
    QDBusMessage call = QDBusMessage::createMethodCall(Service, "/org/freedesktop/login1",
                                                       "org.freedesktop.login1.Manager", "Inhibit");
    call << what << "libky"
         << "An application keeps the device awake"
         << "block";
    return call;
}

} // namespace

LoginInhibitor::LoginInhibitor(const QDBusConnection &bus, QObject *parent)
    : QObject(parent), m_bus(bus), m_watcher(Service, bus)
{
    m_limit.setSingleShot(true);
    m_limit.setInterval(AnswerTime);
    connect(&m_limit, &QTimer::timeout, this, [this] { noteRefusal(QStringLiteral("no answer")); });
    connect(&m_watcher, &QDBusServiceWatcher::serviceRegistered, this, &LoginInhibitor::askAgain);
}

void LoginInhibitor::demand(const QString &what)
{
    if (what == m_demanded)
        return;
    m_demanded = what;
    if (what.isEmpty())
        release();
    if (!m_call)
        ask();
}

void LoginInhibitor::ask()
{
    if (m_demanded.isEmpty() || m_demanded == m_held)
        return;
    if (!m_bus.isConnected()) {
        noteRefusal(QStringLiteral("there is no system bus"));
        return;
    }
    m_asked = m_demanded;
    // The bus itself answers when the login manager ends, so that a question never stays for good.
    m_call = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(question(m_asked), NoLimit));
    connect(m_call.get(), &QDBusPendingCallWatcher::finished, this, &LoginInhibitor::takeAnswer);
    m_limit.start();
}

void LoginInhibitor::askAgain()
{
    m_held.clear(); // what an earlier login manager gave is kept until this one answers
    if (!m_call)
        ask();
}

void LoginInhibitor::takeAnswer()
{
    m_limit.stop();
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *m_call;
    m_call.release()->deleteLater();
    if (m_asked != m_demanded)
        ask(); // the descriptor that came too late closes with its message
    else if (reply.isError())
        noteRefusal(reply.error().message());
    else
        hold(reply.value());
}

void LoginInhibitor::hold(const QDBusUnixFileDescriptor &descriptor)
{
    m_held = m_asked;
    m_descriptor = descriptor;
    m_refused = false;
    emit answered();
}

void LoginInhibitor::noteRefusal(const QString &reason)
{
    if (!m_refused)
        qDebug("kyplatformd: the login manager inhibits nothing: %s", qUtf8Printable(reason));
    m_refused = true;
    if (!m_demanded.startsWith(m_held)) // half of what is wanted is better than nothing, more is not
        release();
    emit answered();
}

void LoginInhibitor::release()
{
    m_held.clear();
    m_descriptor = QDBusUnixFileDescriptor();
}
