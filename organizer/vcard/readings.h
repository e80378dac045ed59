#ifndef READINGS_H
#define READINGS_H

#include <QString>

namespace VCard {

/** Half-width kana become full-width, marks joined to their letter; everything else stays as it is. */
[[nodiscard]] QString normalizedReading(const QString &reading);

/** The parts that aren't empty, with a blank between them. */
[[nodiscard]] QString joined(const QStringList &parts);

} // namespace VCard

#endif
