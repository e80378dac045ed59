#include "kypdatabase.h"
#include <array>
#include <cstring>

namespace KyPDtm {

namespace {

/** Code of a field with a terminator behind it. */
class FieldCode
{
public:
    FieldCode(const KyPDataBaseItemInfo &fields, int field)
    {
        const KyPdbItemInfo info = fields.itemInfo(field);
        std::memcpy(m_text.data(), info.code, sizeof info.code);
    }
    operator const char *() const { return m_text.data(); }

private:
    std::array<char, 5> m_text = {};
};

} // namespace

KyPDataBase::KyPDataBase(const char *boxFile, const KyPDataBaseItemInfo &items, QWidget *parent,
                         bool readOnly)
    : KyPDataManager(boxFile, parent, readOnly), fields(std::make_unique<const KyPDataBaseItemInfo>(items))
{
}

KyPDataBase::~KyPDataBase() = default;

QString KyPDataBase::readField(int field, unsigned long card) const
{
    return readItem(FieldCode(*fields, field), card);
}

QDateTime KyPDataBase::readTimeField(int field, unsigned long card, bool utc) const
{
    return readTimeItem(FieldCode(*fields, field), card, utc);
}

QDate KyPDataBase::readDateField(int field, unsigned long card) const
{
    return readDateItem(FieldCode(*fields, field), card);
}

int KyPDataBase::readUcharField(int field, unsigned long card) const
{
    return readUcharItem(FieldCode(*fields, field), card);
}

int KyPDataBase::readUshortField(int field, unsigned long card) const
{
    return readUshortItem(FieldCode(*fields, field), card);
}

unsigned long KyPDataBase::readUlongField(int field, unsigned long card) const
{
    unsigned long value = 0;
    return readUlongItem(FieldCode(*fields, field), &value, card) ? value : 0;
}

bool KyPDataBase::clearField(int field)
{
    return clearItem(FieldCode(*fields, field));
}

bool KyPDataBase::writeField(int field, const char *data, unsigned long size)
{
    return writeItem(FieldCode(*fields, field), data, size);
}

bool KyPDataBase::writeField(int field, const QDateTime &time)
{
    return writeItem(FieldCode(*fields, field), time);
}

bool KyPDataBase::writeField(int field, const QDate &date)
{
    return writeItem(FieldCode(*fields, field), date);
}

bool KyPDataBase::writeField(int field, const QString &text)
{
    return writeItem(FieldCode(*fields, field), text);
}

bool KyPDataBase::writeField(int field, unsigned char value)
{
    return writeItem(FieldCode(*fields, field), value);
}

bool KyPDataBase::writeField(int field, unsigned short value)
{
    return writeItem(FieldCode(*fields, field), value);
}

bool KyPDataBase::writeField(int field, unsigned long value)
{
    return writeItem(FieldCode(*fields, field), value);
}

int KyPDataBase::readFieldType(int field) const
{
    return readItemType(FieldCode(*fields, field));
}

int KyPDataBase::nameToFieldId(int field) const
{
    return nameToItemId(FieldCode(*fields, field));
}

QByteArray KyPDataBase::itemName(int field) const
{
    const KyPdbItemInfo info = fields->itemInfo(field);
    return QByteArray(info.code, sizeof info.code);
}

} // namespace KyPDtm
