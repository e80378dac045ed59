#ifndef IDENTITY_H
#define IDENTITY_H

#include <QByteArray>
#include <QString>

/** Which device this is, as the files below /proc/deviceinfo tell it: one line each, of at most 511 bytes. */
struct Identity
{
    QByteArray formatVersion;
    QByteArray vendor;
    QByteArray product;
    QByteArray number; ///< of the model; null when none is set, and applications go by the product's name
    QByteArray locale;
    QByteArray checksum;
};

/**
 * The identity that the group [Identity] of a settings file gives: FormatVersion, Vendor, Product, Number,
 * Locale, CheckSum. What it doesn't name comes from the machine: the vendor and the product from its
 * firmware, the locale from LANG; the checksum is that of the other values.
 *
 * @param firmware a folder such as /sys/class/dmi/id
 */
[[nodiscard]] Identity readIdentity(const QString &settings, const QString &firmware);

#endif
