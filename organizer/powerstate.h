#ifndef POWERSTATE_H
#define POWERSTATE_H

#include <QString>

class KyPowerStatus;

/** The state of battery and mains, for people. */
namespace PowerState {

/** Name of the picture. */
[[nodiscard]] QString icon(const KyPowerStatus &status);
/** In a few characters: the charge, "Mains" or "?". */
[[nodiscard]] QString brief(const KyPowerStatus &status);
/** In a sentence. */
[[nodiscard]] QString text(const KyPowerStatus &status);
/** Time left, such as "1:05 h"; empty when it isn't known. */
[[nodiscard]] QString timeLeft(const KyPowerStatus &status);

} // namespace PowerState

#endif
