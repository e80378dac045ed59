#ifndef KY_DESCRIPTOR_H
#define KY_DESCRIPTOR_H

#include <QtGlobal>
#include <unistd.h>

/** A file descriptor that is closed with its owner; negative for none. */
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
    operator int() const { return m_fd; }

private:
    const int m_fd;
};

#endif
