#include "kyiphostvalidator.h"
#include <algorithm>
#include <iterator>
#include <QWidget>

namespace {

constexpr quint32 NoHost = 0xe0000000; // these bits are set in addresses that are not of a host
constexpr quint32 AllOnes = 0xffffffff;

enum Fault {
    Fine = 0,
    BadAddress = 1,
    UnknownClass = 2,
    Broadcast = 3,
    NetworkAddress = 4,
    BadMask = 5,
    ShortMask = 6,
    BadGateway = 7,
    UnreachableGateway = 8
};

struct AddressClass
{
    quint32 bits;    ///< that tell the class
    quint32 value;   ///< of these bits
    quint32 netmask; ///< of the class
    const char *name;
};

constexpr AddressClass Classes[] = {
    {0x80000000, 0x00000000, 0xff000000, QT_TRANSLATE_NOOP("KYIPhostValidator", "Class A")},
    {0xc0000000, 0x80000000, 0xffff0000, QT_TRANSLATE_NOOP("KYIPhostValidator", "Class B")},
    {0xe0000000, 0xc0000000, 0xffffff00, QT_TRANSLATE_NOOP("KYIPhostValidator", "Class C")},
};

/** Null for an address that is not of a host. */
const AddressClass *classOf(quint32 address)
{
    const auto *const found =
        std::find_if(std::begin(Classes), std::end(Classes),
                     [&](const AddressClass &c) { return (address & c.bits) == c.value; });
    return found == std::end(Classes) ? nullptr : found;
}

} // namespace

KYIPhostValidator::KYIPhostValidator(QWidget *parent, const char *name) : KYIPValidator(parent, name) {}

QValidator::State KYIPhostValidator::validate(QString &text, int & /*pos*/) const
{
    int address = 0;
    const State state = str2ip(text, address);
    return (quint32(address) & NoHost) == NoHost ? Invalid : state;
}

int KYIPhostValidator::ipsetValidate(const QString &ip, const QString &mask, const QString &gateway,
                                     QString &message) const
{
    int ipAddress = 0;
    int maskAddress = 0;
    int gatewayAddress = 0;
    if (str2ip(ip, ipAddress) != Acceptable) {
        message = tr("Invalid IP address.");
        return BadAddress;
    }
    if (!mask.isEmpty() && str2ip(mask, maskAddress) != Acceptable) {
        message = tr("Invalid subnet mask.");
        return BadMask;
    }
    if (!gateway.isEmpty() && str2ip(gateway, gatewayAddress) != Acceptable) {
        message = tr("Invalid Gateway address.");
        return BadGateway;
    }
    return ipsetValidate(&ipAddress, mask.isEmpty() ? nullptr : &maskAddress,
                         gateway.isEmpty() ? nullptr : &gatewayAddress, message);
}

int KYIPhostValidator::ipsetValidate(const int *ip, const int *mask, const int *gateway,
                                     QString &message) const
{
    message.clear();
    const auto address = quint32(*ip);
    const AddressClass *const addressClass = classOf(address);
    if (!addressClass)
        return UnknownClass;
    message = tr(addressClass->name);
    const quint32 netmask = mask ? quint32(*mask) : addressClass->netmask;
    if ((netmask & addressClass->netmask) != addressClass->netmask) {
        message = tr("Invalid subnet mask,\nit must be into %1.").arg(message);
        return ShortMask;
    }
    if ((address | netmask) == AllOnes) {
        message = tr("Invalid IP address,\nthat's broadcast address.");
        return Broadcast;
    }
    if ((address | netmask) == netmask) {
        message = tr("Invalid IP address\nthat's network address.");
        return NetworkAddress;
    }
    if (gateway && (address & netmask) != (quint32(*gateway) & netmask)) {
        message = tr("Gateway is unreachable.");
        return UnreachableGateway;
    }
    return Fine;
}
