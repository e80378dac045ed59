#ifndef KYPOWERSTATUS_P_H
#define KYPOWERSTATUS_P_H

#include "kypowerstatus.h"
#include <array>

/** What is known, by KyPowerStatus::BatteryType. */
struct KyPowerStatusPrivate
{
    static constexpr size_t Types = 3;

    std::array<KyPowerStatus::ACStatus, Types> ac{};
    std::array<KyPowerStatus::BatteryStatus, Types> battery{
        KyPowerStatus::NotPresent, KyPowerStatus::NotPresent, KyPowerStatus::NotPresent};
    std::array<int, Types> percent{-1, -1, -1};
    std::array<int, Types> seconds{-1, -1, -1};
    std::array<bool, Types> accurate{};
    std::array<bool, Types> available{}; ///< the file could be opened when the object was built
    std::array<bool, Types> exists{};
};

#endif
