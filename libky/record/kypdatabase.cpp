#include "kypdatabase.h"
#include "kypdatamanager_p.h"

namespace KyPDtm {

namespace {

ItemCode codeOf(const KyPDataBaseItemInfo &fields, int field)
{
    return ItemCode(fields.itemInfo(field).code);
}

} // namespace

KyPDataBase::KyPDataBase(const char *boxFile, const KyPDataBaseItemInfo &items, QWidget *parent,
                         bool readOnly)
    : KyPDataManager(boxFile, parent, readOnly), fields(std::make_unique<const KyPDataBaseItemInfo>(items))
{
}

KyPDataBase::~KyPDataBase() = default;

QString KyPDataBase::readField(int field, unsigned long card) const
{
    return readItem(codeOf(*fields, field).text, card);
}

QDateTime KyPDataBase::readTimeField(int field, unsigned long card, bool utc) const
{
    return readTimeItem(codeOf(*fields, field).text, card, utc);
}

QDate KyPDataBase::readDateField(int field, unsigned long card) const
{
    return readDateItem(codeOf(*fields, field).text, card);
}

int KyPDataBase::readUcharField(int field, unsigned long card) const
{
    return readUcharItem(codeOf(*fields, field).text, card);
}

int KyPDataBase::readUshortField(int field, unsigned long card) const
{
    return readUshortItem(codeOf(*fields, field).text, card);
}

unsigned long KyPDataBase::readUlongField(int field, unsigned long card) const
{
    unsigned long value = 0;
    return readUlongItem(codeOf(*fields, field).text, &value, card) ? value : 0;
}

bool KyPDataBase::clearField(int field)
{
    return clearItem(codeOf(*fields, field).text);
}

bool KyPDataBase::writeField(int field, const char *data, unsigned long size)
{
    return writeItem(codeOf(*fields, field).text, data, size);
}

bool KyPDataBase::writeField(int field, const QDateTime &time)
{
    return writeItem(codeOf(*fields, field).text, time);
}

bool KyPDataBase::writeField(int field, const QDate &date)
{
    return writeItem(codeOf(*fields, field).text, date);
}

bool KyPDataBase::writeField(int field, const QString &text)
{
    return writeItem(codeOf(*fields, field).text, text);
}

bool KyPDataBase::writeField(int field, unsigned char value)
{
    return writeItem(codeOf(*fields, field).text, value);
}

bool KyPDataBase::writeField(int field, unsigned short value)
{
    return writeItem(codeOf(*fields, field).text, value);
}

bool KyPDataBase::writeField(int field, unsigned long value)
{
    return writeItem(codeOf(*fields, field).text, value);
}

bool KyPDataBase::sortField(int field, bool ascending)
{
    return sort(codeOf(*fields, field).text, ascending);
}

bool KyPDataBase::searchField(unsigned long *card, const QString &text, int field, unsigned char op,
                              bool forward)
{
    // An empty code would mean the item that the box names, or any.
    const ItemCode code = codeOf(*fields, field);
    return code.text[0] && search(card, text, code.text, op, forward);
}

int KyPDataBase::readFieldType(int field) const
{
    return readItemType(codeOf(*fields, field).text);
}

int KyPDataBase::nameToFieldId(int field) const
{
    return nameToItemId(codeOf(*fields, field).text);
}

QByteArray KyPDataBase::itemName(int field) const
{
    const KyPdbItemInfo info = fields->itemInfo(field);
    return QByteArray(info.code, sizeof info.code);
}

} // namespace KyPDtm
