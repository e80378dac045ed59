#ifndef KYPOWERSTATUSMANAGER_H
#define KYPOWERSTATUSMANAGER_H

#include "kyexport.h"
#include "kypowerstatus.h"

/** Reads the power status from /proc/apm, in the form of the kernel's APM interface. One a process. */
class KY_EXPORT KyPowerStatusManager
{
public:
    KyPowerStatusManager(const KyPowerStatusManager &) = delete;
    KyPowerStatusManager &operator=(const KyPowerStatusManager &) = delete;

    /** The state now. The result is the same object at every call, filled anew: who wants to compare two
     * readings copies the first. Which files there are is looked at once, at the first call. */
    [[nodiscard]] static const KyPowerStatus &readStatus();

    /** Reads the state of each battery whose file was there. */
    void getStatusExt();

    /**
     * Reads the state of one battery. What could not be read stays as it was.
     *
     * @param percent charge, estimated from the state when the file doesn't tell it
     * @param seconds time left, -1 when the file doesn't tell it
     * @param accurate becomes false
     * @param exists whether there is such a battery
     * @return false when nothing was read; true for BatteryPack, of which there is none
     */
    bool getProcApmStatusExt(KyPowerStatus::BatteryType type, KyPowerStatus::ACStatus &ac,
                             KyPowerStatus::BatteryStatus &battery, int &percent, int &seconds,
                             bool &accurate, bool &exists);

    /** The manager, and what it fills; both null before the first readStatus(). */
    static KyPowerStatusManager *kyPowerManager;
    static KyPowerStatus *kyPs;

private:
    KyPowerStatusManager() = default;
};

#endif
