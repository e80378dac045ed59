#include "powerstate.h"

#include "kypowerstatus.h"

#include <iterator>
#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PowerState", text);
}

struct BatteryLook
{
    KyPowerStatus::BatteryStatus status;
    const char *icon;
    const char *words;
};
constexpr BatteryLook Looks[] = {
    {KyPowerStatus::High, "battery-high", QT_TRANSLATE_NOOP("PowerState", "Battery high")},
    {KyPowerStatus::Low, "battery-low", QT_TRANSLATE_NOOP("PowerState", "Battery low")},
    {KyPowerStatus::VeryLow, "battery-critical", QT_TRANSLATE_NOOP("PowerState", "Battery very low")},
    {KyPowerStatus::Critical, "battery-critical", QT_TRANSLATE_NOOP("PowerState", "Battery critical")},
    {KyPowerStatus::Charging, "battery-charging", QT_TRANSLATE_NOOP("PowerState", "Charging")},
};

bool isOnMains(const KyPowerStatus &status)
{
    return status.acStatus() == KyPowerStatus::Online;
}

const BatteryLook *lookOf(const KyPowerStatus &status)
{
    const auto fits = [&](const BatteryLook &look) { return look.status == status.batteryStatus(); };
    const auto *look = std::find_if(std::begin(Looks), std::end(Looks), fits);
    return look == std::end(Looks) ? nullptr : look;
}

QString charge(const KyPowerStatus &status)
{
    const int percent = status.batteryPercentRemaining();
    return percent < 0 ? QString() : tr("%1 %").arg(percent);
}

} // namespace

QString PowerState::icon(const KyPowerStatus &status)
{
    const BatteryLook *look = lookOf(status);
    if (look)
        return QString::fromLatin1(look->icon);
    return isOnMains(status) ? QStringLiteral("mains") : QStringLiteral("battery-unknown");
}

QString PowerState::brief(const KyPowerStatus &status)
{
    const QString percent = charge(status);
    if (!percent.isEmpty())
        return percent;
    const BatteryLook *look = lookOf(status);
    if (look)
        return tr(look->words);
    return isOnMains(status) ? tr("Mains") : tr("?");
}

QString PowerState::text(const KyPowerStatus &status)
{
    const BatteryLook *look = lookOf(status);
    if (!look)
        return isOnMains(status) ? tr("On mains, no battery") : tr("Unknown");
    const QString percent = charge(status);
    const QString battery = percent.isEmpty() ? tr(look->words) : tr("%1, %2").arg(tr(look->words), percent);
    const bool alsoMains = isOnMains(status) && status.batteryStatus() != KyPowerStatus::Charging;
    return alsoMains ? tr("%1, on mains").arg(battery) : battery;
}

QString PowerState::timeLeft(const KyPowerStatus &status)
{
    const int minutes = status.batteryTimeRemaining() / 60;
    if (status.batteryTimeRemaining() < 0)
        return {};
    return tr("%1:%2 h").arg(minutes / 60).arg(minutes % 60, 2, 10, QLatin1Char('0'));
}
