#include "kydeviceinfo.h"
#include "devicepath.h"
#include <algorithm>
#include <QFile>

namespace {

constexpr qint64 LineLimit = 511; // bytes

struct Model
{
    int number;
    const char *productName;
};

constexpr Model Models[] = {{1, "KY-3000D"}, {2, "KY-3500"}, {3, "KY-A100"}, {4, "KY-3600"}, {5, "KY-C100"}};

struct Processor
{
    int number;
    const char *mark;
};

constexpr Processor Processors[] = {{1, "StrongARM"}, {2, "XScale"}};

QByteArray firstLine(const QByteArray &bytes)
{
    const auto end = std::find_if(bytes.begin(), bytes.end(), [](char c) { return c == '\n' || c == '\0'; });
    return bytes.left(end - bytes.begin());
}

} // namespace

QString &KyDeviceInfo::getDevInfo(const char *path)
{
    static QString tmp_str;
    QFile file(devicePath(QFile::decodeName(path)));
    tmp_str = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(firstLine(file.read(LineLimit))) : QString();
    return tmp_str;
}

QString KyDeviceInfo::getFormatVersion()
{
    return getDevInfo("/proc/deviceinfo/filever");
}

QString KyDeviceInfo::getVendorName()
{
    return getDevInfo("/proc/deviceinfo/vendor");
}

QString KyDeviceInfo::getProductName()
{
    return getDevInfo("/proc/deviceinfo/product");
}

QString KyDeviceInfo::getHandNumberStr()
{
    return getDevInfo("/proc/deviceinfo/hardno");
}

QString KyDeviceInfo::getLanguage()
{
    return getDevInfo("/proc/deviceinfo/locale");
}

QString KyDeviceInfo::getCheckSum()
{
    return getDevInfo("/proc/deviceinfo/checksum");
}

QString KyDeviceInfo::modelName()
{
    return getProductName();
}

int KyDeviceInfo::getProductNumber()
{
    bool isNumber = false;
    const int number = getHandNumberStr().toInt(&isNumber, 10);
    if (isNumber)
        return number;
    const QString name = getProductName();
    for (const Model &model : Models) {
        if (name == QLatin1String(model.productName))
            return model.number;
    }
    return 0;
}

int KyDeviceInfo::getCpuNumber()
{
    const QString line = getDevInfo("/proc/cpuinfo");
    for (const Processor &processor : Processors) {
        if (line.contains(QLatin1String(processor.mark)))
            return processor.number;
    }
    return 0;
}
