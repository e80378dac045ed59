#include "powerduty.h"
#include "qcopenvelope.h"

PowerDuty::PowerDuty(const QDBusConnection &system, const QDBusConnection &session, QObject *parent)
    : QObject(parent), m_channel("QPE/System"), m_senders(session), m_login(system), m_saver(session)
{
    connect(&m_channel, &QCopChannel::received, this, &PowerDuty::handleMessage);
    connect(&m_senders, &SenderWatch::ended, this, &PowerDuty::forget);
    connect(&m_login, &LoginInhibitor::answered, this, &PowerDuty::apply);
}

void PowerDuty::handleMessage(const QByteArray &message, const QByteArray &data)
{
    if (message != "setScreenSaverMode(int)")
        return;
    qint32 mode = 0;
    QCopArguments arguments(data);
    arguments >> mode;
    if (arguments.status() == QDataStream::Ok)
        setMode(m_channel.messageSource(), mode);
}

void PowerDuty::setMode(const QByteArray &sender, int mode)
{
    const Demand before = m_demands.value(sender);
    Demand demand = before;
    switch (mode) {
    case KeepRunning:
        demand = {true, false, false};
        break;
    case KeepLit:
        demand = {true, true, false};
        break;
    case Release:
        demand = {};
        break;
    case HoldSaver:
        demand.saver = true;
        break;
    default:
        return;
    }
    if (demand == before) // as of an application that repeats its wish all the time
        return;
    qDebug("kyplatformd: screen saver mode %d from %s", mode, sender.constData());
    m_demands.insert(sender, demand);
    m_senders.add(sender);
    apply();
}

void PowerDuty::forget(const QByteArray &sender)
{
    m_demands.remove(sender);
    apply();
}

PowerDuty::Demand PowerDuty::all() const
{
    Demand all;
    for (const Demand &demand : m_demands) {
        all.sleep = all.sleep || demand.sleep;
        all.idle = all.idle || demand.idle;
        all.saver = all.saver || demand.saver;
    }
    return all;
}

void PowerDuty::apply()
{
    const Demand demand = all();
    const char *const what = demand.idle ? "sleep:idle" : demand.sleep ? "sleep" : "";
    m_login.demand(QLatin1String(what));
    m_saver.demand(demand.saver || (demand.idle && m_login.isRefused()));
}
