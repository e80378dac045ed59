#include "kypdatabaseiteminfo.h"
#include "kypdatamanageriteminfo.h"
#include <cstring>
#include <locale>
#include <QMap>
#include <QSharedData>

namespace KyPDtm {

class KyPDataBaseItemInfoPrivate : public QSharedData
{
public:
    QMap<int, KyPdbItemInfo> fields;
};

namespace {

/** The field as the box declares it. */
KyPdbItemInfo declared(KyPdbItemInfo field)
{
    if (!field.flag)
        field.code[0] = std::tolower(field.code[0], std::locale::classic());
    return field;
}

void declare(const KyPdbItemInfo &field, KyPDataManagerItemInfo *out)
{
    switch (field.type) {
    case KyPDataBaseItemInfo::Text:
        return out->addTextItem(field.code, field.label);
    case KyPDataBaseItemInfo::UnsignedChar:
        return out->addUcharItem(field.code, field.label);
    case KyPDataBaseItemInfo::UnsignedShort:
        return out->addUshortItem(field.code, field.label, false);
    case KyPDataBaseItemInfo::UnsignedLong:
        return out->addUlongItem(field.code, field.label);
    case KyPDataBaseItemInfo::Color:
        return out->addColorItem(field.code, field.label);
    case KyPDataBaseItemInfo::Time:
        return out->addTimeItem(field.code, field.label);
    case KyPDataBaseItemInfo::Binary:
        return out->addBinaryItem(field.code, field.label);
    case KyPDataBaseItemInfo::Category:
        return out->addCategoryItem();
    }
}

} // namespace

KyPDataBaseItemInfo::KyPDataBaseItemInfo() : d(new KyPDataBaseItemInfoPrivate) {}
KyPDataBaseItemInfo::KyPDataBaseItemInfo(const KyPDataBaseItemInfo &other) = default;
KyPDataBaseItemInfo &KyPDataBaseItemInfo::operator=(const KyPDataBaseItemInfo &other) = default;
KyPDataBaseItemInfo::~KyPDataBaseItemInfo() = default;

void KyPDataBaseItemInfo::addItemInfo(int field, const char *code, ItemType type, const QString &label,
                                      bool flag)
{
    KyPdbItemInfo info;
    std::memcpy(info.code, code, sizeof info.code);
    info.type = type;
    info.label = label;
    info.flag = flag;
    d->fields.insert(field, info);
}

KyPdbItemInfo KyPDataBaseItemInfo::itemInfo(int field) const
{
    return d->fields.value(field);
}

void KyPDataBaseItemInfo::toKyPdtmItemInfo(KyPDataManagerItemInfo *out) const
{
    for (const KyPdbItemInfo &field : d->fields)
        declare(declared(field), out);
}

} // namespace KyPDtm
