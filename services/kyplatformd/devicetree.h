#ifndef DEVICETREE_H
#define DEVICETREE_H

#include <QHash>
#include <QObject>
#include <QTimer>

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
    DeviceTree(const QString &root, const QString &folder, QObject *parent = nullptr);
    /** Takes the files away; what leads to them stays. */
    ~DeviceTree() override;

    /** Writes all files, lets "proc" lead to them and keeps them up to date from then on. Does nothing when
     * the root has a "proc" folder of its own.
     * @return false, after a warning, when something could not be made */
    [[nodiscard]] bool create();

    /** The line of /proc/apm for the power supplies in a folder such as /sys/class/power_supply. */
    [[nodiscard]] static QByteArray apmLine(const QString &powerSupplies);
    /** The classic header of /proc/meminfo, bytes in two lines below their titles, for today's form in @p
     * meminfo. */
    [[nodiscard]] static QByteArray memoryHeader(const QByteArray &meminfo);

private:
    [[nodiscard]] bool refresh();
    [[nodiscard]] bool write(const QString &name, const QByteArray &contents);
    [[nodiscard]] bool writeIdentity();
    [[nodiscard]] bool linkProc() const;

    const QString m_root;
    const QString m_folder;
    QHash<QString, QByteArray> m_written;
    QTimer m_timer;
    bool m_complete = true; ///< the last writing of all files succeeded
};

#endif
