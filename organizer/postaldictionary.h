#ifndef POSTALDICTIONARY_H
#define POSTALDICTIONARY_H

#include "ydic.h"

#include <QtGlobal>

/** The postal dictionary of the device, open while this lives. */
class PostalDictionary
{
public:
    PostalDictionary()
    {
        if (ZipInit(&m_info) < 0)
            close();
    }
    ~PostalDictionary() { close(); }
    Q_DISABLE_COPY_MOVE(PostalDictionary)

    /** Null when there is none. */
    [[nodiscard]] ydic_info *info() const { return m_info; }

private:
    void close()
    {
        if (m_info)
            ZipFin(m_info);
        m_info = nullptr;
    }

    ydic_info *m_info = nullptr;
};

#endif
