#include "kypdatamanageriteminfo.h"
#include "pdtm.h"
#include <cstring>
#include <QSharedData>

namespace KyPDtm {

class KyPDataManagerItemInfoPrivate : public QSharedData
{
public:
    QList<KyPDataManagerItem> entries;
};

KyPDataManagerItemInfo::KyPDataManagerItemInfo() : d(new KyPDataManagerItemInfoPrivate) {}
KyPDataManagerItemInfo::KyPDataManagerItemInfo(const KyPDataManagerItemInfo &other) = default;
KyPDataManagerItemInfo &KyPDataManagerItemInfo::operator=(const KyPDataManagerItemInfo &other) = default;
KyPDataManagerItemInfo::~KyPDataManagerItemInfo() = default;

void KyPDataManagerItemInfo::addTextItem(const char *code, const QString &label)
{
    add(code, ItemTextUtf8, KindText, label);
}

void KyPDataManagerItemInfo::addUcharItem(const char *code, const QString &label)
{
    add(code, ItemUchar, KindUchar, label);
}

void KyPDataManagerItemInfo::addBitItem(const char *code, const QString &label)
{
    add(code, ItemBit, KindUchar, label);
}

void KyPDataManagerItemInfo::addUshortItem(const char *code, const QString &label, bool alt)
{
    add(code, alt ? ItemUshortAlt : ItemUshort, KindUshort, label);
}

void KyPDataManagerItemInfo::addUlongItem(const char *code, const QString &label)
{
    add(code, ItemUlong, KindUlong, label);
}

void KyPDataManagerItemInfo::addCategoryItem()
{
    add("CTGR", ItemCategory, KindCategory, QString::fromLatin1(""));
}

void KyPDataManagerItemInfo::addColorItem(const char *code, const QString &label)
{
    add(code, ItemColor, KindColor, label);
}

void KyPDataManagerItemInfo::addTimeItem(const char *code, const QString &label)
{
    add(code, ItemTime, KindTime, label);
}

void KyPDataManagerItemInfo::addBinaryItem(const char *code, const QString &label)
{
    add(code, ItemBinary, KindBinary, label);
}

void KyPDataManagerItemInfo::addItem(const KyPDataManagerItem &item)
{
    d->entries.append(item);
}

QList<KyPDataManagerItem> KyPDataManagerItemInfo::entries() const
{
    return d->entries;
}

void KyPDataManagerItemInfo::add(const char *code, quint8 type, int kind, const QString &label)
{
    KyPDataManagerItem item;
    std::memcpy(item.code, code, sizeof item.code);
    item.type = type;
    item.kind = kind;
    item.label = label;
    d->entries.append(item);
}

} // namespace KyPDtm
