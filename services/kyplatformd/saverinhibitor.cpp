#include "saverinhibitor.h"
#include <limits>
#include <QDBusMessage>
#include <QDBusPendingReply>

namespace {

constexpr auto Service = "org.freedesktop.ScreenSaver";
constexpr int NoLimit = std::numeric_limits<int>::max();

/** A call to the screen saver, which isn't started for it. */
QDBusMessage saverCall(const QString &method)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(Service, "/org/freedesktop/ScreenSaver", Service, method);
    call.setAutoStartService(false);
    return call;
}

} // namespace

SaverInhibitor::SaverInhibitor(const QDBusConnection &bus, QObject *parent)
    : QObject(parent), m_bus(bus), m_watcher(Service, bus)
{
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) { changeOwner(newOwner); });
}

SaverInhibitor::~SaverInhibitor()
{
    giveBack();
}

void SaverInhibitor::demand(bool wanted)
{
    if (wanted == m_wanted)
        return;
    m_wanted = wanted;
    settle();
}

void SaverInhibitor::settle()
{
    if (!m_wanted)
        giveBack();
    else if (!m_number && !m_call)
        ask();
}

void SaverInhibitor::ask()
{
    QDBusMessage call = saverCall(QStringLiteral("Inhibit"));
    call << "libky"
         << "An application keeps the screen lit";
    // With a limit, the number in a late answer would be lost, and the screen saver held off for good.
    m_call = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(call, NoLimit));
    connect(m_call.get(), &QDBusPendingCallWatcher::finished, this, &SaverInhibitor::takeAnswer);
}

void SaverInhibitor::takeAnswer()
{
    const QDBusPendingReply<quint32> reply = *m_call;
    m_call.release()->deleteLater();
    if (reply.isError()) {
        qDebug("kyplatformd: no screen saver is held off: %s", qUtf8Printable(reply.error().message()));
        return;
    }
    m_number = reply.value();
    settle();
}

void SaverInhibitor::giveBack()
{
    if (!m_number)
        return;
    QDBusMessage call = saverCall(QStringLiteral("UnInhibit"));
    call << *m_number;
    m_bus.send(call);
    m_number.reset();
}

void SaverInhibitor::changeOwner(const QString &newOwner)
{
    m_number.reset(); // it meant something to the earlier owner only
    if (!newOwner.isEmpty())
        settle();
}
