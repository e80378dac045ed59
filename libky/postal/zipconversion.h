#ifndef ZIPCONVERSION_H
#define ZIPCONVERSION_H

/**
 * @file zipconversion.h
 * The postal dictionary for applications: its text as QString, its results as lists.
 */

#include "kyaddresslistbox.h"
#include "kyexport.h"
#include "ydic.h"

/** A typed address in the characters that the dictionary knows: half-width letters, digits, signs and kana
 * become full-width ones, and blanks go. */
[[nodiscard]] KY_EXPORT QString FullWidthAdrStr(const QString &text);

/** An address as Adr2ZipSearch() takes it: UnicodeToYDicJis(). What users type goes through FullWidthAdrStr()
 * first. */
[[nodiscard]] KY_EXPORT QString EncodeAdrStr(const QString &text);

/** The digits of @p text, half-width, with zeros behind them up to the seventh. More than seven stay as they
 * are. @return null without a digit */
[[nodiscard]] KY_EXPORT QString EncodeZipStr(const QString &text);

/** The code of EncodeZipStr() for the eye: full-width, with a hyphen behind the third digit. */
[[nodiscard]] KY_EXPORT QString EncodeZipLabel(const QString &text);

/** Text of the dictionary. Half a character at its end, or what is no character, becomes U+FFFD.
 * @param text null gives null */
[[nodiscard]] KY_EXPORT QString YDicJisToUnicode(const char *text);

/** Text for the dictionary: each character of the result is a byte, two make a character. What JIS X 0208
 * hasn't, half-width characters among it, becomes the geta mark.
 * @return null when not one character is of JIS X 0208 */
[[nodiscard]] KY_EXPORT QString UnicodeToYDicJis(const QString &text);

/** The places of a code, and the codes of an address, that the lists below have at most. */
constexpr int KyAddressListMaximum = 20;

/** Values of the parameter mode below. */
enum KyAddressListMode {
    KyAddressListNext = 0,      ///< the nearest code above
    KyAddressListFind = 1,      ///< the code itself
    KyAddressListPrevious = 255 ///< the nearest code below
};

/**
 * The addresses of a code, KyAddressListMaximum at most.
 *
 * KyAddressListFind leads from a code that doesn't exist to the next one that begins with the same three
 * digits, else to the first that does, or that follows these.
 *
 * @param info open; null gives an empty list
 * @param foundZip receives the code whose addresses these are, seven digits; null when there are none. May
 *        be null
 * @param mode of KyAddressListMode; another gives an empty list
 * @return empty also when the dictionary can't be read
 */
[[nodiscard]] KY_EXPORT QList<KYAddressItem> GetKyAddressListFromZip(ydic_info *info, const QString &zip,
                                                                     QString *foundZip, int mode);

/**
 * The addresses, KyAddressListMaximum of each at most, of as many codes at most, that fit an address best.
 *
 * @param info open; null gives an empty list
 * @param address of EncodeAdrStr()
 * @param multi receives true when there are addresses of several codes. May be null
 * @param mode KyAddressListFind; another gives an empty list
 * @return empty also when the dictionary can't be read
 */
[[nodiscard]] KY_EXPORT QList<KYAddressItem> GetKyAddressListFromAdr(ydic_info *info, const QString &address,
                                                                     bool *multi, int mode);

#endif
