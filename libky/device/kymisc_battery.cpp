#include "devicepath.h"
#include "kymisc.h"
#include "kypowerstatusmanager.h"
#include <QCoreApplication>

namespace {

struct CardPath
{
    const char *prefix;
    const char *module;
};

constexpr CardPath CardPaths[] = {
    {"/mnt/cf", "CF"}, {"/usr/mnt.rom/cf", "CF"}, {"/mnt/card", "SD"}, {"/usr/mnt.rom/card", "SD"}};

} // namespace

QString KyMisc::moduleNameFromPath(const QString &path)
{
    for (const CardPath &card : CardPaths) {
        if (startsWithDevicePath(path, QLatin1String(card.prefix)))
            return QLatin1String(card.module);
    }
    return QStringLiteral("Int.");
}

bool KyMisc::checkBatteryError(const QString &module, bool force)
{
    if (!checkBatteryErrorWithoutDialog(module, force))
        return false;
    QMessageBox::critical(nullptr, QCoreApplication::translate("KyMisc", "Battery Status"),
                          QCoreApplication::translate("KyMisc",
                                                      "<p>Cannot execute the function due to low battery.\n"
                                                      "Please connect AC adapter.<p>"));
    return true;
}

// The module makes no difference: callers name what they are about to use, and the message is the same for
// all.
bool KyMisc::checkBatteryErrorWithoutDialog(const QString & /*module*/, bool force)
{
    if (force)
        return true;
    const KyPowerStatus::BatteryStatus status = KyPowerStatusManager::readStatus().batteryStatus();
    return status == KyPowerStatus::VeryLow || status == KyPowerStatus::Critical;
}
