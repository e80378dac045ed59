#ifndef KY_JAPANESETEXT_H
#define KY_JAPANESETEXT_H

#include "kyexport.h"
#include <QByteArray>
#include <QString>

/**
 * Japanese text in the two encodings of the device: Shift-JIS (code page 932) and 7-bit JIS X 0208.
 *
 * Both spellings of the doubtful characters (wave dash, minus, ...) are accepted on encoding. What the target
 * encoding lacks becomes '?'; what can't be decoded becomes U+FFFD.
 */
namespace JapaneseText {

/** Text to Shift-JIS. */
[[nodiscard]] KY_EXPORT QByteArray toSjis(const QString &text);
/** Shift-JIS to text. */
[[nodiscard]] KY_EXPORT QString fromSjis(const QByteArray &bytes);

/** Text to 7-bit JIS, with the escapes ESC $ B, ESC ( I and a closing ESC ( B at the end when the text ends
 * outside ASCII. */
[[nodiscard]] KY_EXPORT QByteArray toJis7(const QString &text);
/** 7-bit JIS to text. */
[[nodiscard]] KY_EXPORT QString fromJis7(const QByteArray &bytes);

/** True when every character of @p text has a code in Shift-JIS. */
[[nodiscard]] KY_EXPORT bool canEncodeSjis(const QString &text);

} // namespace JapaneseText

#endif
