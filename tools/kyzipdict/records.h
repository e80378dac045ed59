#ifndef RECORDS_H
#define RECORDS_H

#include "dictionarywriter.h"
#include "textencoder.h"

/**
 * @file records.h
 * From places to the records of a file.
 */

namespace ZipDict {

/** Under which names of its municipality a record is found by address. */
enum class NameForm { Both, Full, WithoutCounty };

struct Municipality
{
    uint8_t prefecture = 0;
    std::u16string name;
    Text shown;
    Text normalised;    ///< as a search sees it
    Text withoutCounty; ///< the same without its 郡; empty when it has none
    size_t places = 0;
};

/** Of a record that is a complete address. */
constexpr size_t NoMunicipality = SIZE_MAX;

struct WrittenRecord
{
    uint32_t code = 0;
    size_t municipality = NoMunicipality;
    Text text; ///< with its code byte
    NameForm form = NameForm::Both;
};

/** The records of a file, by who reads them. */
struct Records
{
    std::vector<Municipality> municipalities;
    std::vector<WrittenRecord> byCode;       ///< the search by code shows them; sorted by code
    std::vector<WrittenRecord> byAddress;    ///< only the search by address reads them; sorted by code
    std::vector<WrittenRecord> direct;       ///< each is a reference of the address index
    std::vector<uint8_t> prefectureOfPrefix; ///< by the first two digits: that of most of their codes
};

/** The first two and the first five digits of a code, and the last two. */
constexpr uint32_t twoDigits(uint32_t code)
{
    return code / 100000;
}

constexpr uint32_t fiveDigits(uint32_t code)
{
    return code / 100;
}

constexpr uint32_t lastDigits(uint32_t code)
{
    return code % 100;
}

/** @param entries sorted by code, with characters of JIS X 0208 only */
[[nodiscard]] Records recordsOf(const std::vector<Entry> &entries);

} // namespace ZipDict

#endif
