#include "contactnames.h"

#include "addressfields.h"
#include "contact.h"
#include "readings.h"

#include <algorithm>

namespace {

using Text = std::function<QString(int)>;

/* The first of the fields that says something. */
QString firstOf(const Text &text, std::initializer_list<int> fields)
{
    for (int field : fields) {
        if (!text(field).isEmpty())
            return text(field);
    }
    return {};
}

/** A field of the box and the key of a contact. */
struct NamePart
{
    int field;
    Contact::Key key;
};

constexpr NamePart NameParts[] = {
    {AddressField::Title, Contact::Title},
    {AddressField::FirstName, Contact::FirstName},
    {AddressField::MiddleName, Contact::MiddleName},
    {AddressField::LastName, Contact::LastName},
    {AddressField::Suffix, Contact::Suffix},
    {AddressField::Nickname, Contact::Nickname},
    {AddressField::Company, Contact::Company},
    {AddressField::DefaultEmail, Contact::DefaultEmail},
    {AddressField::MobilePhone, Contact::HomeMobile},
};

QString fullName(const Text &text)
{
    Contact contact;
    for (const NamePart &part : NameParts)
        contact.replace(part.key, text(part.field));
    return contact.fullName();
}

QString fullReading(const Text &text)
{
    const QString reading =
        VCard::joined({firstOf(text, {AddressField::LastPronunciation, AddressField::LastName}),
                       firstOf(text, {AddressField::FirstPronunciation, AddressField::FirstName})});
    return reading.isEmpty()
               ? firstOf(text, {AddressField::Nickname, AddressField::CompanyPronunciation,
                                AddressField::Company, AddressField::DefaultEmail, AddressField::MobilePhone})
               : reading;
}

/* What the names go by where a contact has no name of a person. */
constexpr int Substitutes[] = {AddressField::Nickname, AddressField::Company,
                               AddressField::CompanyPronunciation, AddressField::DefaultEmail,
                               AddressField::MobilePhone};

Text withoutSubstitutes(const Text &text)
{
    return [text](int field) {
        return std::find(std::begin(Substitutes), std::end(Substitutes), field) == std::end(Substitutes)
                   ? text(field)
                   : QString();
    };
}

} // namespace

/* A name that was given to the contact, not composed, is replaced when the person's name changes only. */
void ContactNames::completeNames(CardValues &changed, const CardValues &original)
{
    const Text after = [&changed, &original](int field) {
        return changed.contains(field) ? changed.value(field).toString() : original.value(field).toString();
    };
    const Text before = [&original](int field) { return original.value(field).toString(); };
    const auto complete = [&](int field, QString (*compose)(const Text &)) {
        const QString text = compose(after);
        const bool isGiven = !before(field).isEmpty() && before(field) != compose(before);
        const bool isKept =
            isGiven && compose(withoutSubstitutes(after)) == compose(withoutSubstitutes(before));
        if (!isKept && text != before(field))
            changed.insert(field, text);
    };
    complete(AddressField::FullName, fullName);
    complete(AddressField::FullPronunciation, fullReading);
}
