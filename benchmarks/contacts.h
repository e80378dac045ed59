#ifndef BENCHMARKS_CONTACTS_H
#define BENCHMARKS_CONTACTS_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/** The text items of a contact, in the order of their declaration. */
inline constexpr std::array<const char *, 26> TextItems = {
    "NAPR", "FULL", "LNAM", "FNAM", "LNPR", "FNPR", "CMPN", "CMPR", "DEPT", "TITL", "TEL1", "TEL2", "TEL3",
    "FAX1", "EML1", "EML2", "ZIP1", "PRF1", "CTY1", "STR1", "ZIP2", "PRF2", "CTY2", "STR2", "URL1", "MEMO"};

/** Positions in TextItems. */
enum { ReadingItem = 0, NameItem = 1, CompanyItem = 6, PhoneItem = 10, MailItem = 14, MemoItem = 25 };

struct Contact
{
    std::array<std::string, TextItems.size()> texts;
    std::array<uint8_t, 5> modified{}; ///< a PTimeValue
    uint8_t category = 0;
};

/** Invented contacts of about 600 bytes, the same for the same number. */
[[nodiscard]] std::vector<Contact> makeContacts(int count);

#endif
