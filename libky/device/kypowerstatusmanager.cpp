#include "kypowerstatusmanager.h"
#include "apmline_p.h"
#include "devicepath.h"
#include "kypowerstatus_p.h"
#include <algorithm>
#include <optional>
#include <QFile>

KyPowerStatusManager *KyPowerStatusManager::kyPowerManager = nullptr;
KyPowerStatus *KyPowerStatusManager::kyPs = nullptr;

namespace {

constexpr qint64 LineLimit = 4096; // bytes

struct BatteryState
{
    int value; // in the file
    KyPowerStatus::BatteryStatus status;
    std::optional<int> percent; // when the file doesn't tell it; without, it stays as it was
};

constexpr BatteryState BatteryStates[] = {
    {0, KyPowerStatus::High, 100},    {1, KyPowerStatus::Low, 30},        {2, KyPowerStatus::Critical, 5},
    {3, KyPowerStatus::Charging, -1}, {4, KyPowerStatus::NotPresent, {}}, {127, KyPowerStatus::VeryLow, 10},
};

const BatteryState *batteryStateOf(int value)
{
    const auto row = std::find_if(std::begin(BatteryStates), std::end(BatteryStates),
                                  [value](const BatteryState &state) { return state.value == value; });
    return row == std::end(BatteryStates) ? nullptr : row;
}

void setMains(int value, KyPowerStatus::ACStatus *ac)
{
    if (value >= KyPowerStatus::Offline && value <= KyPowerStatus::Backup)
        *ac = KyPowerStatus::ACStatus(value);
}

void setPercent(int value, const BatteryState *state, int *percent)
{
    if (value >= 0 && value <= 100)
        *percent = value;
    else if (state && state->percent)
        *percent = *state->percent;
}

std::optional<ApmLine> readLine()
{
    QFile file(devicePath(QStringLiteral("/proc/apm")));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    return ApmLine::parse(file.read(LineLimit));
}

} // namespace

const KyPowerStatus &KyPowerStatusManager::readStatus()
{
    if (!kyPowerManager) {
        kyPowerManager = new KyPowerStatusManager;
        kyPs = new KyPowerStatus;
    }
    kyPowerManager->getStatusExt();
    return *kyPs;
}

void KyPowerStatusManager::getStatusExt()
{
    KyPowerStatusPrivate &status = *kyPs->d;
    for (size_t type = 0; type < KyPowerStatusPrivate::Types; ++type) {
        if (status.available[type])
            getProcApmStatusExt(KyPowerStatus::BatteryType(type), status.ac[type], status.battery[type],
                                status.percent[type], status.seconds[type], status.accurate[type],
                                status.exists[type]);
    }
}

bool KyPowerStatusManager::getProcApmStatusExt(KyPowerStatus::BatteryType type, KyPowerStatus::ACStatus &ac,
                                               KyPowerStatus::BatteryStatus &battery, int &percent,
                                               int &seconds, bool &accurate, bool &exists)
{
    if (type > KyPowerStatus::BatteryBios)
        return false;
    exists = type != KyPowerStatus::BatteryPack;
    if (!exists)
        return true;
    if (type == KyPowerStatus::BatteryBios)
        return false;
    const std::optional<ApmLine> line = readLine();
    if (!line)
        return false;
    const BatteryState *state = batteryStateOf(line->batteryState);
    if (state)
        battery = state->status;
    setMains(line->mainsState, &ac);
    setPercent(line->percent, state, &percent);
    accurate = false; // also of a percentage that the file tells
    seconds = line->seconds();
    return true;
}
