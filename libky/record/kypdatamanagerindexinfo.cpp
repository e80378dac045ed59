#include "kypdatamanagerindexinfo.h"
#include <cstring>
#include <QDebug>
#include <QSharedData>

namespace KyPDtm {

class KyPDataManagerIndexInfoPrivate : public QSharedData
{
public:
    QList<KyPDataManagerIndexEntry> entries;
};

KyPDataManagerIndexInfo::KyPDataManagerIndexInfo() : d(new KyPDataManagerIndexInfoPrivate) {}
KyPDataManagerIndexInfo::KyPDataManagerIndexInfo(const KyPDataManagerIndexInfo &other) = default;
KyPDataManagerIndexInfo &KyPDataManagerIndexInfo::operator=(const KyPDataManagerIndexInfo &other) = default;
KyPDataManagerIndexInfo::~KyPDataManagerIndexInfo() = default;

void KyPDataManagerIndexInfo::addIndexInfo(const char *indexFile, const char *searchExp,
                                           unsigned long searchLength, const char *sortExp,
                                           unsigned long sortLength)
{
    KyPDataManagerIndexEntry entry;
    const size_t nameLength = std::strlen(indexFile);
    if (nameLength >= sizeof entry.indexFile || searchLength > sizeof entry.searchExp ||
        sortLength > sizeof entry.sortExp) {
        qDebug("too long indexFname or searchExp or sortExp");
        return;
    }
    std::memcpy(entry.indexFile, indexFile, nameLength + 1);
    entry.searchLength = static_cast<quint32>(searchLength);
    entry.sortLength = static_cast<quint32>(sortLength);
    if (searchLength != 0)
        std::memcpy(entry.searchExp, searchExp, searchLength);
    if (sortLength != 0)
        std::memcpy(entry.sortExp, sortExp, sortLength);
    d->entries.append(entry);
}

QList<KyPDataManagerIndexEntry> KyPDataManagerIndexInfo::entries() const
{
    return d->entries;
}

} // namespace KyPDtm
