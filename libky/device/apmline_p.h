#ifndef APMLINE_P_H
#define APMLINE_P_H

#include <QByteArrayView>

/**
 * The line of /proc/apm: driver version, BIOS version, flags, mains state, battery state, battery flag,
 * charge in percent, time left and its unit, as in
 *
 *     1.16 1.2 0x02 0x01 0x03 0xff 98% 45 m
 *
 * It is read as scanf() reads it with "%*[^ ] %*d.%*d 0x%*x 0x%x 0x%x 0x%x %d%% %i %c": up to the first field
 * that doesn't fit, and what stands in front of that counts. Numbers that are too big are the biggest.
 */
struct ApmLine
{
    int mainsState = 0xff;
    int batteryState = 0xff;
    int percent = -1;
    int time = -1;
    char unit = '\0'; ///< of the time: 'm', 's' or another; 0 when there is none

    /** What could not be read keeps its start value. */
    [[nodiscard]] static ApmLine parse(QByteArrayView bytes);
    /** The time in seconds, -1 for one without a unit that is known. */
    [[nodiscard]] int seconds() const;
};

#endif
