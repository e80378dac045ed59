#ifndef KYDEVICEINFO_H
#define KYDEVICEINFO_H

#include "kyexport.h"
#include <QString>

/**
 * Which device this is, read from the small text files that the kernel of the device, or kyplatformd in its
 * place, keeps below /proc/deviceinfo. Nothing is kept: each call reads its file again. A file that is
 * missing or empty gives an empty text.
 */
class KY_EXPORT KyDeviceInfo
{
public:
    KyDeviceInfo() = delete;

    /** Version of the information format. */
    [[nodiscard]] static QString getFormatVersion();
    [[nodiscard]] static QString getVendorName();
    /** Name of the model. */
    [[nodiscard]] static QString getProductName();
    /** Number of the model, as the file has it. */
    [[nodiscard]] static QString getHandNumberStr();
    /** Locale of the device. */
    [[nodiscard]] static QString getLanguage();
    /** Checksum of the information, as text. */
    [[nodiscard]] static QString getCheckSum();
    /** The same as getProductName(). */
    [[nodiscard]] static QString modelName();

    /**
     * Number of the model: getHandNumberStr() when that is a decimal number, whatever its value; else that of
     * the product name, compared exactly: 1 "KY-3000D", 2 "KY-3500", 3 "KY-A100", 4 "KY-3600", 5 "KY-C100".
     * @return 0 for any other
     */
    [[nodiscard]] static int getProductNumber();
    /** By the first line of /proc/cpuinfo: 1 "StrongARM", 2 "XScale", 0 neither. */
    [[nodiscard]] static int getCpuNumber();

    /**
     * The first line of a device file, of which at most 511 bytes count, in UTF-8, blanks and all.
     * @param path as on the device; the device root is put in front
     * @return one text for all calls, which the next one overwrites; empty when the file can't be read
     */
    static QString &getDevInfo(const char *path);
};

#endif
