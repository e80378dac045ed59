#include "contactnames.h"

#include "addressfields.h"
#include "readings.h"

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

/* East Asian names have the last name first. */
QString fullName(const Text &text)
{
    const QString last = text(AddressField::LastName);
    const QString first = text(AddressField::FirstName);
    const QString middle = text(AddressField::MiddleName);
    const QString name =
        VCard::isEastAsian(last + first)
            ? VCard::joined({last, middle, first})
            : VCard::joined({text(AddressField::Title), first, middle, last, text(AddressField::Suffix)});
    return name.isEmpty() ? firstOf(text, {AddressField::Nickname, AddressField::Company,
                                           AddressField::DefaultEmail, AddressField::MobilePhone})
                          : name;
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

} // namespace

void ContactNames::completeNames(CardValues &changed, const CardValues &original)
{
    const Text after = [&changed, &original](int field) {
        return changed.contains(field) ? changed.value(field).toString() : original.value(field).toString();
    };
    const Text before = [&original](int field) { return original.value(field).toString(); };
    const auto complete = [&](int field, QString (*compose)(const Text &)) {
        const QString text = compose(after);
        const bool isStale = text != compose(before) || before(field).isEmpty();
        if (isStale && text != before(field))
            changed.insert(field, text);
    };
    complete(AddressField::FullName, fullName);
    complete(AddressField::FullPronunciation, fullReading);
}
