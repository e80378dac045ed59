#ifndef YDICTABLES_P_H
#define YDICTABLES_P_H

/**
 * @file ydictables_p.h
 * The tables that are compiled in. They are made at build time from prefectures.txt and variants.txt.
 */

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    YDIC_PREFECTURES = 47,
    YDIC_TDFK_TBL_ROWS = 49,
    YDIC_TDFK_ROW = 9,
    YDIC_VARIANT_ROWS = 243,
    YDIC_VARIANT_ROW = 4
};

/** Names of the prefectures by their number, NUL-padded 7-bit JIS; rows 0 and 48 are empty. */
extern const char Tdfk_tbl[YDIC_TDFK_TBL_ROWS][YDIC_TDFK_ROW];

/** Names of the prefectures in the order in which they are looked up: 8 bytes NUL-padded JIS and the number.
 */
extern const uint8_t Tdfk_dat[YDIC_PREFECTURES][YDIC_TDFK_ROW];

/** Variants of characters, ascending: 2 bytes JIS, and a little-endian value of which ydic_variant() tells.
 */
extern const uint8_t Yuragi_dat[YDIC_VARIANT_ROWS][YDIC_VARIANT_ROW];

#ifdef __cplusplus
}
#endif

#endif
