#ifndef KY_TEST_MOUNTS_H
#define KY_TEST_MOUNTS_H

#include <cstdio>
#include <QByteArray>
#include <QFile>
#include <QString>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

/**
 * Gives this process mounts of its own, that nobody else sees and that end with it. Call it first in main(),
 * as long as there is one thread.
 *
 * @return false where the machine forbids it; tests that mount are skipped then
 */
[[nodiscard]] inline bool enterMountNamespace()
{
    const auto write = [](const char *path, const QByteArray &text) {
        QFile file(QString::fromLatin1(path));
        return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size();
    };
    const QByteArray user = QByteArray::number(geteuid());
    const QByteArray group = QByteArray::number(getegid());
    if (geteuid() == 0 && unshare(CLONE_NEWNS) == 0)
        return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && write("/proc/self/setgroups", "deny") &&
           write("/proc/self/uid_map", "0 " + user + " 1") &&
           write("/proc/self/gid_map", "0 " + group + " 1") &&
           mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/** A tmpfs in a folder that exists, for as long as this lives. */
class TmpfsMount
{
public:
    /** @param options such as "size=64k" */
    explicit TmpfsMount(const QString &folder, const char *options = "size=1m", unsigned long flags = 0)
        : m_folder(QFile::encodeName(folder)),
          m_mounted(mount("kytest", m_folder.constData(), "tmpfs", flags, options) == 0)
    {
        if (!m_mounted)
            std::perror("mount");
    }
    ~TmpfsMount() { unmount(); }
    Q_DISABLE_COPY_MOVE(TmpfsMount)

    [[nodiscard]] bool isMounted() const { return m_mounted; }

    bool makeReadOnly()
    {
        return mount(nullptr, m_folder.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

    void unmount()
    {
        if (m_mounted)
            m_mounted = umount2(m_folder.constData(), MNT_DETACH) != 0;
    }

private:
    const QByteArray m_folder;
    bool m_mounted;
};

#endif
