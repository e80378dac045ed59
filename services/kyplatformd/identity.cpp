#include "identity.h"
#include "config.h"
#include "filecontents.h"
#include <algorithm>
#include <QCryptographicHash>

namespace {

constexpr qsizetype LongestLine = 511; // bytes that readers of the files look at

/** The longest beginning that readers see whole, without a part of a character at its end. */
QByteArray shortened(const QByteArray &text)
{
    if (text.size() <= LongestLine)
        return text;
    qsizetype end = LongestLine;
    while (end > 0 && (uchar(text[end]) & 0xc0) == 0x80)
        --end;
    return text.left(end);
}

/** The text as one line: control characters, which would end it early, become blanks. */
QByteArray oneLine(QByteArray text)
{
    const auto isControl = [](char c) { return uchar(c) < 0x20 || c == 0x7f; };
    std::replace_if(text.begin(), text.end(), isControl, ' ');
    return shortened(text);
}

QByteArray machineLocale()
{
    const QByteArray locale = qgetenv("LANG");
    return locale.left(locale.indexOf('.'));
}

QByteArray checksumOf(const Identity &identity)
{
    const QByteArray all =
        identity.formatVersion + identity.vendor + identity.product + identity.number + identity.locale;
    return QCryptographicHash::hash(all, QCryptographicHash::Md5).toHex();
}

} // namespace

Identity readIdentity(const QString &settings, const QString &firmware)
{
    Config config(settings, Config::File);
    config.setGroup("Identity");
    const auto value = [&config](const char *key, const QByteArray &other) {
        return oneLine(config.hasKey(key) ? config.readEntry(key).toUtf8() : other);
    };
    Identity identity;
    identity.formatVersion = value("FormatVersion", "1.0");
    identity.vendor = value("Vendor", fileContents(firmware + "/sys_vendor"));
    identity.product = value("Product", fileContents(firmware + "/product_name"));
    identity.number = config.hasKey("Number") ? value("Number", "") : QByteArray();
    identity.locale = value("Locale", machineLocale());
    identity.checksum = value("CheckSum", checksumOf(identity));
    return identity;
}
