#ifndef KY_DESCRIPTOR_H
#define KY_DESCRIPTOR_H

#include <QtGlobal>
#include <unistd.h>

/** Owns a file descriptor and closes it; one below zero stands for none. */
class Descriptor
{
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Q_DISABLE_COPY_MOVE(Descriptor)
    [[nodiscard]] int get() const { return m_fd; }

private:
    int m_fd;
};

#endif
