#ifndef KERNELEVENTS_H
#define KERNELEVENTS_H

#include "descriptor_p.h"
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

/**
 * Tells when the kernel announces that a power supply has changed, or that something was mounted or taken
 * away. Many announcements in a row are told of once.
 */
class KernelEvents : public QObject
{
    Q_OBJECT
public:
    static constexpr int GatherTime = 80; // ms

    /** A socket for the announcements of devices; below zero, with a debug line, where that isn't allowed. */
    [[nodiscard]] static int openSocket();
    /** The kernel's table of mounts, on which a change shows as an exceptional condition. */
    [[nodiscard]] static int openMountTable();

    /** Takes both descriptors over; one below zero stands for none. */
    explicit KernelEvents(int socket = openSocket(), int mountTable = openMountTable(),
                          QObject *parent = nullptr);

    /** True for an announcement ("change@/devices/...", then KEY=VALUE, with a zero byte behind each) that is
     * about a power supply. */
    [[nodiscard]] static bool isOfPowerSupply(const QByteArray &announcement);

signals:
    /** Something changed, GatherTime ago or less. */
    void changed();

private:
    void readSocket();
    void changedSoon();

    const Descriptor m_socket;
    const Descriptor m_mountTable;
    QSocketNotifier m_socketNotifier;
    QSocketNotifier m_mountNotifier;
    QTimer m_timer;
};

#endif
