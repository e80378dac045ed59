#include "kypowerstatus.h"
#include "devicepath.h"
#include "kypowerstatus_p.h"
#include <QFile>

namespace {

constexpr const char *SourceFiles[KyPowerStatusPrivate::Types] = {"/proc/apm", "/proc/apm_bp",
                                                                  "/proc/apm_bios"};

bool canBeOpened(const char *path)
{
    return QFile(devicePath(QString::fromLatin1(path))).open(QIODevice::ReadOnly);
}

template <typename T>
T valueOf(const std::array<T, KyPowerStatusPrivate::Types> &values, KyPowerStatus::BatteryType type, T other)
{
    return size_t(type) < values.size() ? values[size_t(type)] : other;
}

} // namespace

KyPowerStatus::KyPowerStatus() : d(std::make_unique<KyPowerStatusPrivate>())
{
    for (size_t type = 0; type < KyPowerStatusPrivate::Types; ++type)
        d->available[type] = canBeOpened(SourceFiles[type]);
}

KyPowerStatus::KyPowerStatus(const KyPowerStatus &other) : d(std::make_unique<KyPowerStatusPrivate>(*other.d))
{
}

KyPowerStatus &KyPowerStatus::operator=(const KyPowerStatus &other)
{
    *d = *other.d;
    return *this;
}

KyPowerStatus::~KyPowerStatus() = default;

KyPowerStatus::ACStatus KyPowerStatus::acStatusExt(BatteryType type) const
{
    return size_t(type) < d->ac.size() ? d->ac[BatteryMain] : Offline;
}

KyPowerStatus::BatteryStatus KyPowerStatus::batteryStatusExt(BatteryType type) const
{
    return valueOf(d->battery, type, NotPresent);
}

bool KyPowerStatus::batteryPercentAccurateExt(BatteryType type) const
{
    return valueOf(d->accurate, type, false);
}

int KyPowerStatus::batteryPercentRemainingExt(BatteryType type) const
{
    return batteryStatusExt(type) == Charging ? -1 : valueOf(d->percent, type, -1);
}

int KyPowerStatus::batteryTimeRemainingExt(BatteryType type) const
{
    return valueOf(d->seconds, type, -1);
}

bool KyPowerStatus::exists(BatteryType type) const
{
    return valueOf(d->exists, type, false);
}

KyPowerStatus::ACStatus KyPowerStatus::acStatus() const
{
    return acStatusExt(BatteryMain);
}

KyPowerStatus::BatteryStatus KyPowerStatus::batteryStatus() const
{
    return batteryStatusExt(BatteryMain);
}

bool KyPowerStatus::batteryPercentAccurate() const
{
    return batteryPercentAccurateExt(BatteryMain);
}

int KyPowerStatus::batteryPercentRemaining() const
{
    return batteryPercentRemainingExt(BatteryMain);
}

int KyPowerStatus::batteryTimeRemaining() const
{
    return batteryTimeRemainingExt(BatteryMain);
}

bool KyPowerStatus::operator!=(const KyPowerStatus &other) const
{
    return d->ac != other.d->ac || d->battery != other.d->battery || d->percent != other.d->percent ||
           d->seconds != other.d->seconds;
}
