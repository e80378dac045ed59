#include "contact.h"
#include "recordfields_p.h"
#include "recordframe_p.h"
#include <algorithm>
#include <iterator>

namespace KyPDtm {

namespace {

constexpr QLatin1String Application("Address Book");

/** How the text of a field comes from a contact, and goes back to it. */
enum class Text {
    OneLine,      ///< read with blanks in the place of line breaks
    Lines,        ///< read as it is
    Emails,       ///< read by setEmails()
    Children,     ///< read by setChildren()
    WriteOnly,    ///< not read
    FullName,     ///< composed, not read
    Pronunciation ///< composed, not read
};

struct ContactField
{
    int field;
    int key = 0; ///< of the contact; 0 for what is composed
    Text text = Text::OneLine;
};

/** In the order of writing. */
constexpr ContactField ContactFields[] = {
    {AddressbookField::FullName, 0, Text::FullName},
    {2, Contact::Title},
    {4, Contact::FirstName},
    {5, Contact::MiddleName},
    {3, Contact::LastName},
    {6, Contact::Suffix},
    {7, Contact::FileAs},
    {11, Contact::Company},
    {AddressbookField::FullPronunciation, 0, Text::Pronunciation},
    {9, Contact::FirstNamePronunciation},
    {8, Contact::LastNamePronunciation},
    {12, Contact::CompanyPronunciation},
    {14, Contact::JobTitle},
    {13, Contact::Department},
    {39, Contact::Emails, Text::Emails},
    {38, Contact::DefaultEmail},
    {15, Contact::BusinessPhone},
    {16, Contact::BusinessFax},
    {17, Contact::BusinessMobile},
    {20, Contact::BusinessStreet},
    {19, Contact::BusinessCity},
    {18, Contact::BusinessState},
    {21, Contact::BusinessZip},
    {22, Contact::BusinessCountry},
    {28, Contact::BusinessPager},
    {23, Contact::BusinessWebPage, Text::Lines},
    {24, Contact::Office},
    {25, Contact::Profession},
    {26, Contact::Assistant},
    {27, Contact::Manager},
    {30, Contact::HomePhone},
    {31, Contact::HomeFax},
    {29, Contact::HomeMobile},
    {34, Contact::HomeStreet},
    {33, Contact::HomeCity},
    {32, Contact::HomeState},
    {35, Contact::HomeZip},
    {36, Contact::HomeCountry},
    {37, Contact::HomeWebPage},
    {40, Contact::Spouse},
    {41, Contact::Gender},
    {42, Contact::Birthday},
    {43, Contact::Anniversary},
    {44, Contact::Nickname},
    {45, Contact::Children, Text::Children},
    {46, Contact::Notes, Text::Lines},
    {47, Contact::Groups, Text::WriteOnly},
};

/** What the box is sorted by. */
QString fullPronunciation(const Contact &contact)
{
    const QString last = contact.find(Contact::LastNamePronunciation);
    const QString first = contact.find(Contact::FirstNamePronunciation);
    return last.isEmpty() ? first : last + u' ' + first;
}

QString textOf(const Contact &contact, const ContactField &field)
{
    if (field.text == Text::FullName)
        return contact.fullName();
    return field.text == Text::Pronunciation ? fullPronunciation(contact) : contact.find(field.key);
}

QString onOneLine(QString text)
{
    return text.replace(QLatin1String("\r\n"), QLatin1String(" ")).replace(u'\n', u' ');
}

void setText(Contact *contact, const ContactField &field, const QString &text)
{
    switch (field.text) {
    case Text::OneLine:
        return contact->replace(field.key, onOneLine(text));
    case Text::Lines:
        return contact->replace(field.key, text);
    case Text::Emails:
        return contact->setEmails(text);
    case Text::Children:
        return contact->setChildren(text);
    // Names are composed anew from their parts; groups are set anew by the application at each edit.
    case Text::WriteOnly:
    case Text::FullName:
    case Text::Pronunciation:
        return;
    }
}

bool writeFields(KyPDataBase &db, const Contact &contact)
{
    return std::all_of(std::cbegin(ContactFields), std::cend(ContactFields), [&](const ContactField &field) {
        return db.writeField(field.field, textOf(contact, field));
    });
}

} // namespace

bool KyPDataBase::addAddressbookEntry(KyPDataBase *db, unsigned long *card, const Contact &contact,
                                      CategoriesType type)
{
    *card = 0;
    return editAddressbookEntry(db, card, contact, type);
}

bool KyPDataBase::editAddressbookEntry(KyPDataBase *db, unsigned long *card, const Contact &contact,
                                       CategoriesType type)
{
    return editRecord(
        db, card, [&contact](KyPDataBase &box) { return writeFields(box, contact); },
        recordCategories(contact.categories(), type, Application));
}

Contact KyPDataBase::toContact(KyPDataBase *db, unsigned long card, CategoriesType type)
{
    Contact contact;
    if (!db)
        return contact;
    for (const ContactField &field : ContactFields)
        setText(&contact, field, db->readField(field.field, card));
    contact.setCategories(categoriesOfCard(*db, card, type, Application));
    return contact;
}

} // namespace KyPDtm
