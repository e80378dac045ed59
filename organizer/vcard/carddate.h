#ifndef CARDDATE_H
#define CARDDATE_H

#include <QString>

namespace VCard {

/**
 * A date of any version of the format as the address book writes it: `YYYY-MM-DD`, or `--MM-DD` without a
 * year.
 *
 * A time behind it is dropped. Empty when @p text is no whole date or one that no calendar has.
 */
[[nodiscard]] QString toBookDate(const QString &text);

/** @p date without its year. */
[[nodiscard]] QString withoutYear(const QString &date);

} // namespace VCard

#endif
