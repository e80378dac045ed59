#ifndef KY_TEST_FEPSERVICE_H
#define KY_TEST_FEPSERVICE_H

#include "fepstate_p.h"
#include "sessionbus_p.h"
#include <QFile>

/** The service that keeps the input method's state, as far as the bus and its file can tell. */
class FepService
{
public:
    FepService(bool isOn, bool isSwitchable)
        : m_isReady(SessionBus::requestName(name(), false) && keep(isOn, isSwitchable))
    {
    }
    ~FepService()
    {
        QFile::remove(FepState::file());
        SessionBus::releaseName(name());
    }
    Q_DISABLE_COPY_MOVE(FepService)
    [[nodiscard]] bool isReady() const { return m_isReady; }

    /** Changes the state. */
    static bool keep(bool isOn, bool isSwitchable)
    {
        FepState state;
        state.on = isOn;
        state.switchable = isSwitchable;
        return state.write();
    }

    static QString name() { return SessionBus::serviceName(QStringLiteral("service")); }

private:
    const bool m_isReady;
};

#endif
