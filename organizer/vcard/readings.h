#ifndef READINGS_H
#define READINGS_H

#include <QString>

namespace VCard {

/** Half-width kana become full-width, marks joined to their letter; everything else stays as it is. */
[[nodiscard]] QString normalizedReading(const QString &reading);

/** True for a text with a Han character, kana or Hangul: its last name is written first. */
[[nodiscard]] bool isEastAsian(const QString &text);

/** The parts that aren't empty, with a blank between them. */
[[nodiscard]] QString joined(const QStringList &parts);

} // namespace VCard

#endif
