#ifndef KYPOWERSTATUS_H
#define KYPOWERSTATUS_H

#include "kyexport.h"
#include <memory>

class KyPowerStatusManager;
struct KyPowerStatusPrivate;

/**
 * State of the mains adapter and the batteries, as KyPowerStatusManager::readStatus() read it. A value:
 * copies are independent of each other and of later readings.
 */
class KY_EXPORT KyPowerStatus
{
public:
    /** A battery, and the file that tells of it. */
    enum BatteryType {
        BatteryMain = 0, ///< /proc/apm
        BatteryPack = 1, ///< /proc/apm_bp
        BatteryBios = 2  ///< /proc/apm_bios
    };
    enum ACStatus { Offline = 0, Online = 1, Backup = 2 };
    enum BatteryStatus { High = 1, Low = 2, VeryLow = 4, Critical = 8, Charging = 16, NotPresent = 32 };

    /** Nothing is known yet: offline, no battery. Looks which of the files can be opened. */
    KyPowerStatus();
    KyPowerStatus(const KyPowerStatus &other);
    KyPowerStatus &operator=(const KyPowerStatus &other);
    ~KyPowerStatus();

    /** There is one mains state, whichever battery is asked for. Offline for a type above 2. */
    [[nodiscard]] ACStatus acStatusExt(BatteryType type) const;
    /** NotPresent for a type above 2. */
    [[nodiscard]] BatteryStatus batteryStatusExt(BatteryType type) const;
    /** Whether the percentage is exact; the readings never are. */
    [[nodiscard]] bool batteryPercentAccurateExt(BatteryType type) const;
    /** Charge from 0 to 100; -1 when unknown, and while the battery is charged. */
    [[nodiscard]] int batteryPercentRemainingExt(BatteryType type) const;
    /** Time left in seconds; -1 when unknown. */
    [[nodiscard]] int batteryTimeRemainingExt(BatteryType type) const;
    /** Whether there is such a battery; false before the first reading, and always for BatteryPack. */
    [[nodiscard]] bool exists(BatteryType type) const;

    // Those of BatteryMain.
    [[nodiscard]] ACStatus acStatus() const;
    [[nodiscard]] BatteryStatus batteryStatus() const;
    [[nodiscard]] bool batteryPercentAccurate() const;
    [[nodiscard]] int batteryPercentRemaining() const;
    [[nodiscard]] int batteryTimeRemaining() const;

    /** True when mains state, battery state, charge or time of any battery differ; what else there is doesn't
     * count. */
    [[nodiscard]] bool operator!=(const KyPowerStatus &other) const;

private:
    friend class KyPowerStatusManager;
    std::unique_ptr<KyPowerStatusPrivate> d;
};

#endif
