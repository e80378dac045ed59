#include "manycontacts.h"

#include "addressfields.h"
#include "categorytable.h"
#include "contactnames.h"
#include "vcardreader.h"

#include <QFile>

namespace {

/** People whose names go together: either all of them have a reading, or none. */
using People = QList<ContactFields>;

constexpr int OtherFields[] = {AddressField::FirstName, AddressField::FirstPronunciation,
                               AddressField::Company, AddressField::CompanyPronunciation};
constexpr int PhoneFields[] = {AddressField::MobilePhone, AddressField::HomePhone,
                               AddressField::BusinessPhone};

People samplePeople(bool withReading)
{
    QFile file(QStringLiteral(":/ky/samples/contacts.vcf"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    People people;
    VCardReader reader(&file);
    while (const std::optional<ContactFields> person = reader.next()) {
        if (person->values.contains(AddressField::LastPronunciation) == withReading)
            people.append(*person);
    }
    return people;
}

/* Its last four digits are the number's. */
QString withNumber(const QString &phone, qsizetype number)
{
    return phone.chopped(4) + QStringLiteral("%1").arg(number % 10000, 4, 10, QLatin1Char('0'));
}

/** The person of a number: the family and all else of one sample, first name and company of another. */
ContactFields person(const People &people, qsizetype number)
{
    const qsizetype size = people.size();
    ContactFields result = people[number % size];
    const ContactFields &other = people[(number + number / size) % size];
    for (int field : OtherFields)
        result.values[field] = other.values.value(field);
    for (int field : PhoneFields) {
        const QString phone = result.values.value(field);
        if (!phone.isEmpty())
            result.values[field] = withNumber(phone, number);
    }
    return result;
}

/* Of the names of the sample, which the person no longer has. */
bool isComposed(int field)
{
    return field == AddressField::FullName || field == AddressField::FullPronunciation ||
           field == AddressField::FileAs;
}

Card cardOf(const ContactFields &fields, CategoryTable &table)
{
    Card card;
    for (auto it = fields.values.cbegin(); it != fields.values.cend(); ++it) {
        if (!isComposed(it.key()))
            card.values.insert(it.key(), it.value());
    }
    ContactNames::completeNames(card.values, card.values);
    for (const QString &name : fields.categories) {
        const int category = table.idMade(name);
        if (category != 0)
            card.categories.append(category);
    }
    return card;
}

} // namespace

QList<Card> manyContacts(int count, CategoryTable &table)
{
    const People groups[] = {samplePeople(true), samplePeople(false)};
    QList<Card> cards;
    for (int i = 0; i < count; ++i)
        cards.append(cardOf(person(groups[i % 2], i / 2), table));
    return cards;
}
