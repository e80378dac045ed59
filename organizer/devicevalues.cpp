#include "devicevalues.h"

#include "fepconf.h"
#include "fepinterface.h"
#include "kydeviceinfo.h"
#include "kymisc.h"
#include "kypowerstatusmanager.h"
#include "powerstate.h"
#include "qpeapplication.h"

#include <QCoreApplication>
#include <QLocale>

namespace {

constexpr int InputModeItem = 1; // of the input method's mode settings

QString tr(const char *text)
{
    return QCoreApplication::translate("DeviceValues", text);
}

QString orUnknown(const QString &text)
{
    return text.simplified().isEmpty() ? tr("unknown") : text;
}

QString model()
{
    return orUnknown(KyDeviceInfo::modelName());
}

QString vendor()
{
    return orUnknown(KyDeviceInfo::getVendorName());
}

QString modelNumber()
{
    const int number = KyDeviceInfo::getProductNumber();
    return number == 0 ? tr("unknown") : QString::number(number);
}

QString processor()
{
    constexpr const char *names[] = {QT_TRANSLATE_NOOP("DeviceValues", "other"), "StrongARM", "XScale"};
    return tr(names[KyDeviceInfo::getCpuNumber()]);
}

QString locale()
{
    return orUnknown(KyDeviceInfo::getLanguage());
}

QString formatVersion()
{
    return orUnknown(KyDeviceInfo::getFormatVersion());
}

QString powerText()
{
    return PowerState::text(KyPowerStatusManager::readStatus());
}

QString timeLeft()
{
    return orUnknown(PowerState::timeLeft(KyPowerStatusManager::readStatus()));
}

QString freeMemory()
{
    return QLocale().formattedDataSize(qint64(KyMisc::availableMemory()) * 1024);
}

QString desktop()
{
    const QSize size = QPEApplication::desktopSize();
    return tr("%1 x %2 pixels, %3")
        .arg(size.width())
        .arg(size.height())
        .arg(KyMisc::isLandscape() ? tr("landscape") : tr("portrait"));
}

QString resolution()
{
    return tr("%1 dpi, scale %2").arg(KyMisc::getDpi()).arg(KyMisc::getResolutionScale());
}

QString inputDevice()
{
    return KyMisc::defaultInputDevice() == 2 ? tr("stylus") : tr("keyboard");
}

QString frontEndProcessor()
{
    const FepInterface *fep = QPEApplication::qwsGetFepIF();
    if (!fep)
        return tr("none runs");
    return fep->isOn() ? tr("on") : tr("off");
}

QString keptMode()
{
    int items[FepConf::Items];
    FepConf::setConfigDefault(items);
    const bool kept = FepConf::readFepModeConfigFile(items);
    const QString mode = QString::number(items[InputModeItem]);
    return kept ? mode : tr("%1, not kept yet").arg(mode);
}

} // namespace

const QList<DeviceValue> &DeviceValues::identity()
{
    static const QList<DeviceValue> values{{QT_TRANSLATE_NOOP("DeviceValues", "Model"), model},
                                           {QT_TRANSLATE_NOOP("DeviceValues", "Maker"), vendor},
                                           {QT_TRANSLATE_NOOP("DeviceValues", "Model number"), modelNumber},
                                           {QT_TRANSLATE_NOOP("DeviceValues", "Processor"), processor},
                                           {QT_TRANSLATE_NOOP("DeviceValues", "Locale"), locale},
                                           {QT_TRANSLATE_NOOP("DeviceValues", "Format"), formatVersion}};
    return values;
}

const QList<DeviceValue> &DeviceValues::power()
{
    static const QList<DeviceValue> values{{QT_TRANSLATE_NOOP("DeviceValues", "State"), powerText},
                                           {QT_TRANSLATE_NOOP("DeviceValues", "Time left"), timeLeft}};
    return values;
}

const QList<DeviceValue> &DeviceValues::memory()
{
    static const QList<DeviceValue> values{{QT_TRANSLATE_NOOP("DeviceValues", "Free memory"), freeMemory}};
    return values;
}

const QList<DeviceValue> &DeviceValues::screen()
{
    static const QList<DeviceValue> values{{QT_TRANSLATE_NOOP("DeviceValues", "Desktop"), desktop},
                                           {QT_TRANSLATE_NOOP("DeviceValues", "Resolution"), resolution}};
    return values;
}

const QList<DeviceValue> &DeviceValues::inputMethod()
{
    static const QList<DeviceValue> values{
        {QT_TRANSLATE_NOOP("DeviceValues", "Input device"), inputDevice},
        {QT_TRANSLATE_NOOP("DeviceValues", "Front-end processor"), frontEndProcessor},
        {QT_TRANSLATE_NOOP("DeviceValues", "Mode"), keptMode}};
    return values;
}

QString DeviceValues::nameOf(const DeviceValue &value)
{
    return tr(value.name);
}
