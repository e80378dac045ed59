#ifndef POWERSUPPLIES_H
#define POWERSUPPLIES_H

#include <QByteArray>
#include <QString>

/**
 * The line of /proc/apm for the power supplies in a folder such as /sys/class/power_supply.
 *
 * All batteries of the machine count as one: its charge and time are those of their energy together, or of
 * their charge where no energy is told, else the mean of their percentages. A UPS stands in for a battery
 * where there is none, and while it discharges, the line is on backup power. Batteries and chargers of what
 * is connected to the machine don't count.
 */
[[nodiscard]] QByteArray apmLine(const QString &powerSupplies);

#endif
