#ifndef TESTS_GUARDEDBYTES_H
#define TESTS_GUARDEDBYTES_H

#include "record.h"

#include <cstring>
#include <QByteArray>
#include <sys/mman.h>

/** Bytes with an unreadable page right behind them: reading one too many ends the test. */
class GuardedBytes
{
public:
    explicit GuardedBytes(const QByteArray &bytes)
        : m_pages(static_cast<char *>(
              mmap(nullptr, 8192, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          m_start(m_pages + 4096 - bytes.size()), m_size(static_cast<size_t>(bytes.size()))
    {
        std::memcpy(m_start, bytes.constData(), m_size);
        mprotect(m_pages + 4096, 4096, PROT_NONE);
    }
    ~GuardedBytes() { munmap(m_pages, 8192); }
    Q_DISABLE_COPY_MOVE(GuardedBytes)
    [[nodiscard]] const uint8_t *data() const { return reinterpret_cast<const uint8_t *>(m_start); }
    [[nodiscard]] pdtm::Bytes bytes() const { return {data(), m_size}; }

private:
    char *m_pages;
    char *m_start;
    size_t m_size;
};

#endif
