#ifndef KY_CONTACT_H
#define KY_CONTACT_H

#include "kyexport.h"
#include <QList>
#include <QSharedDataPointer>
#include <QString>
#include <QStringList>

class ContactPrivate;

/**
 * A person or company of the address book: texts by key, and categories. Implicitly shared: a copy costs a
 * reference, and a change touches no other copy.
 *
 *     Contact contact;
 *     contact.replace(Contact::LastName, "Yamada");
 *     contact.setEmails("taro@example.jp hanako@example.jp");
 *
 * An empty text is the same as none.
 */
class KY_EXPORT Contact
{
public:
    /** What a text is. The numbers are part of file formats and never change. */
    enum Key {
        Title = 2,
        FirstName = 3,
        MiddleName = 4,
        LastName = 5,
        Suffix = 6,
        FileAs = 7, ///< the name to sort by
        JobTitle = 8,
        Department = 9,
        Company = 10,
        BusinessPhone = 11,
        BusinessFax = 12,
        BusinessMobile = 13,
        DefaultEmail = 14,
        Emails = 15, ///< all addresses, see emailList()
        HomePhone = 16,
        HomeFax = 17,
        HomeMobile = 18,
        BusinessStreet = 19,
        BusinessCity = 20,
        BusinessState = 21,
        BusinessZip = 22,
        BusinessCountry = 23,
        BusinessPager = 24,
        BusinessWebPage = 25,
        Office = 26,
        Profession = 27,
        Assistant = 28,
        Manager = 29,
        HomeStreet = 30,
        HomeCity = 31,
        HomeState = 32,
        HomeZip = 33,
        HomeCountry = 34,
        HomeWebPage = 35,
        Spouse = 36,
        Gender = 37,
        Birthday = 38,
        Anniversary = 39,
        Nickname = 40,
        Children = 41, ///< see childrenList()
        Notes = 42,
        Groups = 43,
        FirstNamePronunciation = 46,
        LastNamePronunciation = 47,
        CompanyPronunciation = 48
    };

    Contact();                                ///< empty
    Contact(const Contact &other);            ///< shares the content
    Contact &operator=(const Contact &other); ///< shares the content
    ~Contact();

    [[nodiscard]] bool operator==(const Contact &other) const; ///< true for the same texts and categories

    /** The text of a key, null when there is none. */
    [[nodiscard]] QString find(int key) const;
    /** Gives a key a text; an empty one takes the key away. */
    void replace(int key, const QString &text);

    void setEmails(const QString &addresses); ///< replace() of Emails, the text kept as it is
    /** The single addresses of Emails, which blanks, line breaks, commas and semicolons part. */
    [[nodiscard]] QStringList emailList() const;
    void setChildren(const QString &names); ///< replace() of Children, the text kept as it is
    /** The single names of Children, which line breaks, commas and semicolons part. */
    [[nodiscard]] QStringList childrenList() const;

    /** True for a name with a Han character, kana or Hangul: the last name is written first. */
    [[nodiscard]] static bool isLastNameFirst(const QString &name);
    /**
     * The name as it is shown, composed anew at each call: title, first, middle, last name and suffix; for a
     * name in East Asian script last, middle and first name. Without a name the first of nickname, company,
     * default address and mobile phone that says something.
     */
    [[nodiscard]] QString fullName() const;

    [[nodiscard]] QList<int> categories() const;      ///< ids, in the order given
    void setCategories(const QList<int> &categories); ///< replaces all ids

private:
    QSharedDataPointer<ContactPrivate> d;
};

#endif
