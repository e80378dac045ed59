#include "kycategories.h"
#include "recordfields_p.h"
#include "recordframe_p.h"
#include <algorithm>
#include <span>

namespace KyPDtm {

namespace {

/** How a field is carried over. A number that the source lacks is left out in the copy, too. */
enum class Kind {
    Text,
    Byte,
    Short,
    Day,   ///< midnight of a date, or nothing
    Date,  ///< a date with no time
    Moment ///< a time, which must be there
};

struct CopiedField
{
    int field;
    Kind kind;
};

constexpr CopiedField TodolistFields[] = {
    {TodolistField::Mark, Kind::Byte},        {TodolistField::Priority, Kind::Byte},
    {TodolistField::Description, Kind::Text}, {TodolistField::Notes, Kind::Text},
    {TodolistField::DueDate, Kind::Day},      {TodolistField::StartDate, Kind::Day},
    {TodolistField::FinishDate, Kind::Day},
};
constexpr CopiedField EventTexts[] = {
    {DatebookField::Description, Kind::Text},
    {DatebookField::Location, Kind::Text},
    {DatebookField::Notes, Kind::Text},
    {DatebookField::AllDay, Kind::Byte},
};
constexpr CopiedField EventDays[] = {
    {DatebookField::AllDayStart, Kind::Date},
    {DatebookField::AllDayEnd, Kind::Date},
};
constexpr CopiedField EventTimes[] = {
    {DatebookField::Start, Kind::Moment},    {DatebookField::End, Kind::Moment},
    {DatebookField::Alarm, Kind::Byte},      {DatebookField::AlarmTime, Kind::Short},
    {DatebookField::AlarmSound, Kind::Byte}, {DatebookField::MultiDay, Kind::Byte},
    {DatebookField::RepeatType, Kind::Byte},
};
constexpr CopiedField EventRepeat[] = {
    {DatebookField::RepeatFrequency, Kind::Short}, {DatebookField::RepeatPosition, Kind::Short},
    {DatebookField::RepeatDays, Kind::Byte},       {DatebookField::RepeatHasEnd, Kind::Byte},
    {DatebookField::RepeatEnd, Kind::Moment},
};

/** A card of another box, and the box that its copy goes to. */
struct CardCopy
{
    KyPDataBase &db;
    const KyPDataManager &source;
    unsigned long card;

    [[nodiscard]] QByteArray code(int field) const { return db.itemName(field); }
    [[nodiscard]] int byte(int field) const { return source.readUcharItem(code(field).constData(), card); }
    [[nodiscard]] QDate date(int field) const { return source.readDateItem(code(field).constData(), card); }
    [[nodiscard]] QDateTime time(int field) const
    {
        return source.readTimeItem(code(field).constData(), card, false);
    }
};

bool copyText(const CardCopy &copy, int field)
{
    return copy.db.writeField(field, copy.source.readItem(copy.code(field).constData(), copy.card));
}

bool copyByte(const CardCopy &copy, int field)
{
    const int value = copy.byte(field);
    return value < 0 || copy.db.writeField(field, static_cast<unsigned char>(value));
}

bool copyShort(const CardCopy &copy, int field)
{
    const int value = copy.source.readUshortItem(copy.code(field).constData(), copy.card);
    return value < 0 || copy.db.writeField(field, static_cast<unsigned short>(value));
}

bool copyDay(const CardCopy &copy, int field)
{
    const QDate date = copy.time(field).date();
    return date.isValid() ? copy.db.writeField(field, midnight(date)) : copy.db.clearField(field);
}

bool copyField(const CardCopy &copy, const CopiedField &field)
{
    switch (field.kind) {
    case Kind::Text:
        return copyText(copy, field.field);
    case Kind::Byte:
        return copyByte(copy, field.field);
    case Kind::Short:
        return copyShort(copy, field.field);
    case Kind::Day:
        return copyDay(copy, field.field);
    case Kind::Date:
        return copy.db.writeField(field.field, copy.date(field.field));
    case Kind::Moment:
        return copy.db.writeField(field.field, copy.time(field.field));
    }
    return false;
}

bool copyFields(const CardCopy &copy, std::span<const CopiedField> fields)
{
    return std::all_of(fields.begin(), fields.end(),
                       [&copy](const CopiedField &field) { return copyField(copy, field); });
}

bool copyContact(const CardCopy &copy)
{
    for (int field = AddressbookField::First; field <= AddressbookField::Last; ++field) {
        if (!copyText(copy, field))
            return false;
    }
    return true;
}

bool copyTask(const CardCopy &copy)
{
    return copyFields(copy, TodolistFields);
}

bool copyEventDays(const CardCopy &copy)
{
    if (copy.byte(DatebookField::AllDay) == 1)
        return copyFields(copy, EventDays);
    return copy.db.clearField(DatebookField::AllDayStart) && copy.db.clearField(DatebookField::AllDayEnd);
}

bool copyEventRepeat(const CardCopy &copy)
{
    const int type = copy.byte(DatebookField::RepeatType);
    return type < 0 || type == NoRepetition || copyFields(copy, EventRepeat);
}

bool copyEvent(const CardCopy &copy)
{
    return copyFields(copy, EventTexts) && copyEventDays(copy) && copyFields(copy, EventTimes) &&
           copyEventRepeat(copy);
}

/** Whoever moves a card deletes it after its copy, so a card that can't be read must not pass for an empty
 * one. */
bool isReadable(const KyPDataManager *source, unsigned long card)
{
    return source && source->readUcharItem("ATTR", card) >= 0;
}

bool copyRecord(KyPDataBase *db, unsigned long *card, const KyPDataManager *source, unsigned long sourceCard,
                KyCategories *sourceCategories, bool (*copyAll)(const CardCopy &))
{
    *card = 0;
    if (!isReadable(source, sourceCard))
        return false;
    const auto categories = [=]() -> std::optional<QList<int>> {
        const QList<int> ids = source->readCategories(sourceCard);
        return sourceCategories ? convCategoriesBoxToPdtm(ids, sourceCategories) : ids;
    };
    return writeRecord(
        db, 0, card,
        [=](KyPDataBase &box) {
            return copyAll({box, *source, sourceCard});
        },
        categories);
}

} // namespace

bool KyPDataBase::addAddressbookEntry(KyPDataBase *db, unsigned long *card, KyPDataManager *source,
                                      unsigned long sourceCard, KyCategory::KyCategories *sourceCategories)
{
    return copyRecord(db, card, source, sourceCard, sourceCategories, copyContact);
}

bool KyPDataBase::addTodolistEntry(KyPDataBase *db, unsigned long *card, KyPDataManager *source,
                                   unsigned long sourceCard, KyCategory::KyCategories *sourceCategories)
{
    return copyRecord(db, card, source, sourceCard, sourceCategories, copyTask);
}

bool KyPDataBase::addDatebookEntry(KyPDataBase *db, unsigned long *card, KyPDataManager *source,
                                   unsigned long sourceCard, KyCategory::KyCategories *sourceCategories)
{
    return copyRecord(db, card, source, sourceCard, sourceCategories, copyEvent);
}

} // namespace KyPDtm
