#include "powersupplies.h"
#include "filecontents.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <QDir>
#include <QFileInfo>

namespace {

// Values of the line status in /proc/apm.
enum LineStatus { Offline = 0, Online = 1, Backup = 2 };

// Values of the battery status there.
enum BatteryStatus { High = 0, Low = 1, Critical = 2, Charging = 3, NotPresent = 4, VeryLow = 127 };

/** The highest charge in percent that still counts as a status. */
struct ChargeLimit
{
    int percent;
    BatteryStatus status;
};
constexpr ChargeLimit ChargeLimits[] = {{5, Critical}, {10, VeryLow}, {30, Low}, {100, High}};

/** What a battery holds and gives away, in µWh and µW or in µAh and µA; below zero where it isn't told. */
struct Amount
{
    double now = -1, full = -1, rate = -1;
};

struct Battery
{
    QByteArray state;
    int percent = -1;
    int seconds = -1;
    Amount energy, charge;
};
using Batteries = QList<Battery>;

/** The units in which batteries can be added up, the better one first. */
constexpr Amount Battery::*Units[] = {&Battery::energy, &Battery::charge};

struct Supplies
{
    Batteries batteries; ///< the machine's own
    Batteries backups;   ///< uninterruptible power supplies
    bool plugged = false;
    bool unplugged = false; ///< there is a mains adapter, without current
};

/** A number that may have a sign and is told in micro units; -1 when there is none. */
double amountIn(const QString &path)
{
    bool valid = false;
    const qlonglong number = fileContents(path).toLongLong(&valid);
    return valid ? std::abs(double(number)) : -1;
}

/** A number of percent or seconds; -1 when there is none. */
int numberIn(const QString &path)
{
    bool valid = false;
    const int number = fileContents(path).toInt(&valid);
    return valid ? std::max(number, -1) : -1;
}

Amount readAmount(const QString &supply, const QString &unit, const QString &rate)
{
    const QString path = supply + '/' + unit;
    return {amountIn(path + "_now"), amountIn(path + "_full"), amountIn(supply + '/' + rate)};
}

Battery readBattery(const QString &supply)
{
    Battery battery;
    battery.state = fileContents(supply + "/status");
    battery.percent = std::min(numberIn(supply + "/capacity"), 100);
    battery.seconds = numberIn(supply + "/time_to_empty_now");
    battery.energy = readAmount(supply, "energy", "power_now");
    battery.charge = readAmount(supply, "charge", "current_now");
    return battery;
}

void addSupply(Supplies &supplies, const QString &supply)
{
    const QByteArray type = fileContents(supply + "/type");
    const bool ofDevice = fileContents(supply + "/scope") == "Device"; // a mouse, a headset
    if (ofDevice || fileContents(supply + "/present") == "0")
        return;
    if (type == "Battery")
        supplies.batteries.append(readBattery(supply));
    else if (type == "UPS")
        supplies.backups.append(readBattery(supply));
    else if (type == "Mains" || type == "Wireless" || type.startsWith("USB"))
        supplies.plugged = supplies.plugged || numberIn(supply + "/online") > 0;
    if (type == "Mains" && numberIn(supply + "/online") == 0)
        supplies.unplugged = true;
}

Supplies readSupplies(const QString &folder)
{
    Supplies supplies;
    for (const QFileInfo &entry : QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot))
        addSupply(supplies, entry.filePath());
    return supplies;
}

bool anyIs(const Batteries &batteries, const char *state)
{
    return std::any_of(batteries.cbegin(), batteries.cend(),
                       [state](const Battery &battery) { return battery.state == state; });
}

/** Sum over all batteries; nothing is known of all when it isn't known of one. */
Amount sumOf(const Batteries &batteries, Amount Battery::*unit)
{
    Amount sum{0, 0, 0};
    for (const Battery &battery : batteries) {
        const Amount &amount = battery.*unit;
        if (amount.now < 0 || amount.full <= 0)
            return {};
        sum.now += amount.now;
        sum.full += amount.full;
        if (battery.state == "Discharging" && amount.rate > 0)
            sum.rate += amount.rate;
    }
    return sum;
}

int meanPercent(const Batteries &batteries)
{
    int sum = 0;
    for (const Battery &battery : batteries) {
        if (battery.percent < 0)
            return -1;
        sum += battery.percent;
    }
    return batteries.isEmpty() ? -1 : sum / int(batteries.size());
}

int percentOf(const Batteries &batteries)
{
    if (batteries.size() == 1 && batteries[0].percent >= 0)
        return batteries[0].percent;
    for (Amount Battery::*unit : Units) {
        const Amount sum = sumOf(batteries, unit);
        if (sum.full > 0)
            return int(std::lround(100 * std::min(sum.now / sum.full, 1.0)));
    }
    return meanPercent(batteries);
}

/** Time until all are empty; only while one empties. */
int secondsOf(const Batteries &batteries)
{
    if (!anyIs(batteries, "Discharging"))
        return -1;
    if (batteries.size() == 1 && batteries[0].seconds >= 0)
        return batteries[0].seconds;
    for (Amount Battery::*unit : Units) {
        const Amount sum = sumOf(batteries, unit);
        const double seconds = sum.rate > 0 ? sum.now / sum.rate * 3600 : -1;
        if (seconds >= 0 && seconds <= std::numeric_limits<int>::max())
            return int(seconds);
    }
    return -1;
}

BatteryStatus statusOf(const Batteries &batteries, int percent)
{
    if (batteries.isEmpty())
        return NotPresent;
    if (anyIs(batteries, "Charging"))
        return Charging;
    if (percent < 0)
        return High; // nobody is to be refused anything for a charge that nobody knows
    for (const ChargeLimit &limit : ChargeLimits) {
        if (percent <= limit.percent)
            return limit.status;
    }
    return High;
}

bool isOnline(const Supplies &supplies)
{
    const Batteries &batteries = supplies.batteries;
    if (supplies.plugged || batteries.isEmpty() || anyIs(batteries, "Charging"))
        return true;
    return !supplies.unplugged && !anyIs(batteries, "Discharging");
}

LineStatus lineOf(const Supplies &supplies)
{
    if (!isOnline(supplies))
        return Offline;
    return anyIs(supplies.backups, "Discharging") ? Backup : Online;
}

} // namespace

QByteArray apmLine(const QString &powerSupplies)
{
    const Supplies supplies = readSupplies(powerSupplies);
    const Batteries &batteries = supplies.batteries.isEmpty() ? supplies.backups : supplies.batteries;
    const int percent = percentOf(batteries), seconds = secondsOf(batteries);
    const char unit = seconds < 0 ? '?' : 's';
    const QString line =
        QString::asprintf("1.16 1.2 0x02 0x%02x 0x%02x 0xff %d%% %d %c\n", unsigned(lineOf(supplies)),
                          unsigned(statusOf(batteries, percent)), percent, seconds, unit);
    return line.toLatin1();
}
