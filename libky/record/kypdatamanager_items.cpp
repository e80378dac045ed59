#include "japanesetext.h"
#include "kypdatamanager.h"
#include "kypdatamanager_p.h"
#include "kypdatamanageriteminfo.h"
#include "timeconversion.h"
#include <cstdlib>
#include <ctime>
#include <limits>

namespace KyPDtm {

namespace {

constexpr size_t PropertySize = 17;
constexpr int PropertyFlags = 1; // offset of the flag byte
constexpr quint8 StoredInUtc = 0x04;
constexpr int NoHour = 31; // these three mean a date with no time
constexpr int NoMinute = 63;
constexpr int NoSecond = 63;

/** A PTimeValue taken apart. */
struct TimeFields
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;

    explicit TimeFields(const PTimeValue &value)
    {
        ppgettime(&value, &year, &month, &day, &hour, &minute, &second, 0);
    }
    [[nodiscard]] QDate date() const { return QDate(year, month, day); }
    [[nodiscard]] QDateTime asTheyStand(Qt::TimeSpec timeSpec) const
    {
        return QDateTime(date(), QTime(hour, minute, second), timeSpec);
    }
};

bool isText(quint8 type)
{
    return type == ItemTextSjis || type == ItemTextSjis2 || type == ItemTextUtf8;
}

QString decoded(const QByteArray &bytes, quint8 type)
{
    return type == ItemTextUtf8 ? QString::fromUtf8(bytes) : JapaneseText::fromSjis(bytes);
}

QByteArray encoded(const QString &text, quint8 type)
{
    return type == ItemTextUtf8 ? text.toUtf8() : JapaneseText::toSjis(text);
}

QDateTime localToUtc(const TimeFields &fields)
{
    tzset();
    tm local = {};
    local.tm_year = fields.year - 1900;
    local.tm_mon = fields.month - 1;
    local.tm_mday = fields.day;
    local.tm_hour = fields.hour;
    local.tm_min = fields.minute;
    local.tm_sec = fields.second;
    local.tm_isdst = -1;
    return TimeConversion::fromRawUTC(mktime(&local));
}

QDateTime utcToLocal(const TimeFields &fields)
{
    return TimeConversion::fromUTC(TimeConversion::toRawUTC(fields.asTheyStand(Qt::UTC)));
}

bool packTime(PTimeValue *value, QDate date, QTime time)
{
    return ppsettime(value, date.year(), date.month(), date.day(), time.hour(), time.minute(),
                     time.second()) == PdtmOk;
}

const char *bytesOf(const void *value)
{
    return static_cast<const char *>(value);
}

} // namespace

ItemCode::ItemCode(const char *code)
{
    if (code)
        memcpy(text, code, strnlen(code, sizeof text - 1));
}

CardItemKey cardItemKey(unsigned long card, const ItemCode &code)
{
    CardItemKey key;
    key.card = quint16(card);
    memcpy(key.code, code.text, sizeof key.code);
    return key;
}

PTimeValue presentTime()
{
    const QDateTime now = TimeConversion::fromRawUTC(time(nullptr));
    PTimeValue value = {};
    packTime(&value, now.date(), now.time());
    return value;
}

// Description of the items

PioExtItem *KyPDataManagerPrivate::item(const ItemCode &code) const
{
    const auto number = extBoxInfo ? quint8(_PioExtGetItemNo(extBoxInfo, code.text)) : 0;
    return number ? &extBoxInfo->items[number - 1] : nullptr;
}

quint8 KyPDataManagerPrivate::openItemType(const ItemCode &code) const
{
    ITEMDATA description = {};
    quint16 size = sizeof description;
    _BoxItemReadHeap(boxHandle, code.text, &description, &size);
    return description.type;
}

bool KyPDataManagerPrivate::isStoredInUtc(const ItemCode &code) const
{
    const PioExtItem *described = item(code);
    return described && described->property && (described->property[PropertyFlags] & StoredInUtc);
}

int KyPDataManager::nameToItemId(const char *code) const
{
    return d->extBoxInfo ? quint8(_PioExtGetItemNo(d->extBoxInfo, ItemCode(code).text)) : 0;
}

int KyPDataManager::readItemType(const char *code) const
{
    const PioExtItem *described = d->item(ItemCode(code));
    return described ? described->type : 0;
}

KyPDataManagerItemInfo KyPDataManager::items() const
{
    KyPDataManagerItemInfo all;
    const int count = d->extBoxInfo ? d->extBoxInfo->itemCount : 0;
    for (int i = 0; i < count; ++i) {
        const PioExtItem &described = d->extBoxInfo->items[i];
        KyPDataManagerItem item;
        memcpy(item.code, described.code, sizeof item.code);
        item.type = described.type;
        item.kind = described.kind;
        item.label = QString::fromUtf8(described.label);
        all.addItem(item);
    }
    return all;
}

bool KyPDataManager::setInternalUtc(const char *code)
{
    PioExtItem *described = d->item(ItemCode(code));
    if (!described || described->type != ItemTime)
        return false;
    if (!described->property)
        described->property = static_cast<uint8_t *>(calloc(PropertySize, 1)); // the store frees it
    if (!described->property)
        return false;
    described->property[PropertyFlags] = StoredInUtc;
    return true;
}

// Reading

PdtmStatus KyPDataManagerPrivate::read(const ItemCode &code, unsigned long card, void *value, quint32 room,
                                       quint32 *length) const
{
    const CardItemKey key = cardItemKey(cardOf(card), code);
    *length = room;
    return _CardRead(boxHandle, &key, value, length);
}

bool KyPDataManagerPrivate::readTime(const ItemCode &code, unsigned long card, PTimeValue *time) const
{
    quint32 length = 0;
    return openItemType(code) == ItemTime &&
           read(code, card, time->bytes, sizeof time->bytes, &length) == PdtmOk &&
           length == sizeof time->bytes;
}

QString KyPDataManager::readItem(const char *code, unsigned long card) const
{
    const ItemCode item(code);
    const quint8 type = d->openItemType(item);
    if (!isText(type))
        return QString();
    quint32 length = 0;
    const PdtmStatus status = d->read(item, card, nullptr, 0, &length);
    if (status == PdtmOk)
        return QLatin1String("");
    if (status != PdtmTooShort)
        return QString();
    QByteArray text(qsizetype(length), Qt::Uninitialized);
    if (d->read(item, card, text.data(), length, &length) != PdtmOk)
        return QString();
    text.truncate(qsizetype(length));
    return decoded(text, type);
}

int KyPDataManager::readUcharItem(const char *code, unsigned long card) const
{
    const ItemCode item(code);
    const quint8 type = d->openItemType(item);
    quint8 value = 0;
    quint32 length = 0;
    const bool isRead = (type == ItemUchar || type == ItemBit) &&
                        d->read(item, card, &value, sizeof value, &length) == PdtmOk &&
                        length == sizeof value;
    return isRead ? value : -1;
}

int KyPDataManager::readUshortItem(const char *code, unsigned long card) const
{
    const ItemCode item(code);
    const quint8 type = d->openItemType(item);
    if (type != ItemUshort && type != ItemUshortAlt)
        return -1;
    quint16 value = 0;
    quint32 length = 0;
    const PdtmStatus status = d->read(item, card, &value, sizeof value, &length);
    if (status != PdtmOk)
        qDebug("KyPDataManager::readUshortItem error in CardRead %d %x %d", int(d->cardOf(card)), status,
               int(length));
    return status == PdtmOk && length == sizeof value ? value : -1;
}

bool KyPDataManager::readUlongItem(const char *code, unsigned long *out, unsigned long card) const
{
    const ItemCode item(code);
    const quint8 type = d->openItemType(item);
    if (type != ItemUlong && type != ItemBinary)
        return false;
    quint32 value = 0;
    quint32 length = 0;
    const PdtmStatus status = d->read(item, card, &value, sizeof value, &length);
    if (status != PdtmOk)
        qDebug("KyPDataManager::readUlongItem error in CardRead %d %x %d", int(d->cardOf(card)), status,
               int(length));
    if (status != PdtmOk || length != sizeof value)
        return false;
    *out = value;
    return true;
}

QDate KyPDataManager::readDateItem(const char *code, unsigned long card) const
{
    PTimeValue value;
    return d->readTime(ItemCode(code), card, &value) ? TimeFields(value).date() : QDate();
}

QDateTime KyPDataManager::readTimeItem(const char *code, unsigned long card, bool utc) const
{
    const ItemCode item(code);
    PTimeValue value;
    if (!d->readTime(item, card, &value))
        return QDateTime();
    const TimeFields fields(value);
    if (!fields.date().isValid())
        return QDateTime();
    if (utc == d->isStoredInUtc(item))
        return fields.asTheyStand(utc ? Qt::UTC : Qt::LocalTime);
    return utc ? localToUtc(fields) : utcToLocal(fields);
}

// Writing

bool KyPDataManager::writeItem(const char *code, const char *data, unsigned long size)
{
    if (!d->editing || size > std::numeric_limits<quint32>::max())
        return false;
    const ItemCode item(code);
    const CardItemKey key = cardItemKey(d->workCard, item);
    d->lastError = _CardWrite(d->boxHandle, &key, data ? data : "", data ? quint32(size) : 0);
    if (d->lastError != PdtmOk) {
        qDebug("KyPDataManager::writeItem error in writing %s.", item.text);
        return false;
    }
    if (strcmp(item.text, "ATTR") != 0)
        d->editModified = true;
    return true;
}

bool KyPDataManager::writeItem(const char *code, const QString &text)
{
    if (!d->editing)
        return false;
    const ItemCode item(code);
    const quint8 type = d->openItemType(item);
    if (!isText(type)) {
        qDebug("KyPDataManager::writeItem error in writing %s.", item.text);
        return false;
    }
    const QByteArray bytes = encoded(text, type);
    return writeItem(code, bytes.constData(), static_cast<unsigned long>(bytes.size()));
}

bool KyPDataManager::writeItem(const char *code, const QDateTime &time)
{
    PTimeValue value;
    const bool isValid = time.date().isValid() && time.time().isValid();
    return isValid && packTime(&value, time.date(), time.time()) &&
           writeItem(code, bytesOf(value.bytes), sizeof value.bytes);
}

bool KyPDataManager::writeItem(const char *code, const QDate &date)
{
    PTimeValue value;
    return date.isValid() &&
           ppsettime(&value, date.year(), date.month(), date.day(), NoHour, NoMinute, NoSecond) == PdtmOk &&
           writeItem(code, bytesOf(value.bytes), sizeof value.bytes);
}

bool KyPDataManager::writeItem(const char *code, unsigned char value)
{
    return writeItem(code, bytesOf(&value), sizeof value);
}

bool KyPDataManager::writeItem(const char *code, unsigned short value)
{
    return writeItem(code, bytesOf(&value), sizeof value);
}

bool KyPDataManager::writeItem(const char *code, unsigned long value)
{
    const auto stored = quint32(value);
    return writeItem(code, bytesOf(&stored), sizeof stored);
}

bool KyPDataManager::clearItem(const char *code)
{
    return writeItem(code, bytesOf(nullptr), 0);
}

bool KyPDataManager::writeCurrentTime(const char *code, bool)
{
    if (!d->editing)
        return false;
    const ItemCode item(code);
    if (d->openItemType(item) != ItemTime) {
        qDebug("KyPDataManager::writeCurrentItem it isn't time item %s.", item.text);
        return false;
    }
    const PTimeValue now = presentTime();
    return writeItem(code, bytesOf(now.bytes), sizeof now.bytes);
}

bool KyPDataManager::writeAttribute(unsigned long card, unsigned char bits, bool set)
{
    quint8 attribute = 0;
    quint32 length = 0;
    if (d->read(ItemCode("ATTR"), card, &attribute, sizeof attribute, &length) != PdtmOk)
        return false;
    attribute = quint8(set ? attribute | bits : attribute & ~bits);
    d->editing = true;
    d->workCard = d->cardOf(card);
    const bool isWritten = writeItem("ATTR", attribute);
    d->editing = false;
    d->workCard = 0;
    return isWritten;
}

// Formats of the store

bool KyPDataManager::createPTime(void *destination, int year, int month, int day, int hour, int minute,
                                 int second)
{
    ppsettime(destination, year, month, day, hour, minute, second);
    return true;
}

void KyPDataManager::createPTime(void *destination, const QDateTime &time)
{
    const QDate date = time.date();
    const QTime clock = time.time();
    createPTime(destination, date.year(), date.month(), date.day(), clock.hour(), clock.minute(),
                clock.second());
}

} // namespace KyPDtm
