#ifndef ADDRESSFIELDS_H
#define ADDRESSFIELDS_H

/**
 * The field numbers of the address book, as all field calls of KyPDataBase take them.
 *
 * Every field but Category is text. A few have a form of their own:
 * - FullName is the name as shown, FullPronunciation (item NAPR) is what the book is sorted by: last, blank,
 * first.
 * - Emails holds all addresses, joined by one blank, the default address first; Children is a list with
 * commas.
 * - Birthday and Anniversary are `YYYY-MM-DD`, or `--MM-DD` where the year isn't known.
 * - Gender is one of the words of namespace Gender, or what the person calls it.
 * - Only Notes holds line breaks.
 */
namespace AddressField {

enum Number : int {
    Category = 0,
    FullName = 1,
    Title = 2,
    LastName = 3,
    FirstName = 4,
    MiddleName = 5,
    Suffix = 6,
    FileAs = 7,
    LastPronunciation = 8,
    FirstPronunciation = 9,
    FullPronunciation = 10,
    Company = 11,
    CompanyPronunciation = 12,
    Department = 13,
    JobTitle = 14,
    BusinessPhone = 15,
    BusinessFax = 16,
    BusinessMobile = 17,
    BusinessState = 18,
    BusinessCity = 19,
    BusinessStreet = 20,
    BusinessZip = 21,
    BusinessCountry = 22,
    BusinessWebpage = 23,
    Office = 24,
    Profession = 25,
    Assistant = 26,
    Manager = 27,
    BusinessPager = 28,
    MobilePhone = 29,
    HomePhone = 30,
    HomeFax = 31,
    HomeState = 32,
    HomeCity = 33,
    HomeStreet = 34,
    HomeZip = 35,
    HomeCountry = 36,
    HomeWebpage = 37,
    DefaultEmail = 38,
    Emails = 39,
    Spouse = 40,
    Gender = 41,
    Birthday = 42,
    Anniversary = 43,
    Nickname = 44,
    Children = 45,
    Notes = 46,
    Groups = 47,
    First = FullName,
    Last = Groups
};

} // namespace AddressField

/** The words that AddressField::Gender holds. */
namespace Gender {

inline constexpr char Male[] = "male";
inline constexpr char Female[] = "female";
inline constexpr char Other[] = "other";

} // namespace Gender

#endif
