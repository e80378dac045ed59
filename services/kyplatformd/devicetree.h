#ifndef DEVICETREE_H
#define DEVICETREE_H

#include "kernelevents.h"
#include <memory>
#include <QHash>
#include <QObject>
#include <QTimer>

/** Where the device tree gets its values from. */
struct DeviceSources
{
    /** The machine's own, and the settings of this HOME. */
    DeviceSources();

    QString powerSupplies; ///< a folder with one folder for each
    QString firmware;      ///< the folder of the machine's vendor and product
    QString settings;      ///< the settings file with the identity
    int refreshTime;       ///< ms between two looks at them
};

/**
 * The files that a device has below /proc, kept up to date on a machine that isn't one. The folder lies below
 * the runtime folder, so that it needs no disk, and "proc" of the device root leads to it.
 */
class DeviceTree : public QObject
{
    Q_OBJECT
public:
    static constexpr int RefreshTime = 3000; // ms

    /** @param root the device root @param folder where the files are kept; made if need be */
    DeviceTree(const QString &root, const QString &folder, const DeviceSources &sources = DeviceSources(),
               QObject *parent = nullptr);
    /** Takes the files away; what leads to them stays. */
    ~DeviceTree() override;

    /** Writes all files, lets "proc" lead to them and keeps them up to date from then on: every few seconds,
     * and at once when the kernel announces a change. Does nothing when the root has a "proc" folder of its
     * own.
     * @return false, after a warning, when something could not be made */
    [[nodiscard]] bool create();

    /** The classic header of /proc/meminfo, bytes in two lines below their titles, for today's form in @p
     * meminfo. */
    [[nodiscard]] static QByteArray memoryHeader(const QByteArray &meminfo);

private:
    bool refresh();
    void writeIdentity();
    void write(const QString &name, const QByteArray &contents);
    void writeLine(const QString &name, const QByteArray &line);
    void remove(const QString &name);
    void fail(const QString &path, const QString &reason);
    [[nodiscard]] bool linkProc() const;

    const QString m_root;
    const QString m_folder;
    const DeviceSources m_sources;
    QByteArray m_processor;
    QHash<QString, QByteArray> m_written;
    QTimer m_timer;
    std::unique_ptr<KernelEvents> m_events;
    bool m_complete = true; ///< all files are as they should be
    bool m_warned = false;  ///< that they aren't
};

#endif
