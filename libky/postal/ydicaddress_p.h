#ifndef YDICADDRESS_P_H
#define YDICADDRESS_P_H

/**
 * @file ydicaddress_p.h
 * The steps of the search by address.
 */

#include "ydicsearch.h"

#ifdef __cplusplus
extern "C" {
#endif

/** One pass over the dictionary or the patch (fileSel). Candidates are added to those that are there.
 * @return 0, or a negative failure */
int ydic_rev_knsk(const char *address, ydic_search *search, ydic_info *info);

/* The address as typed. */

/** Takes the prefecture off the address and fills query. @return 0, or YDIC_BAD_INPUT */
int set_moji(const char *address, ydic_search *search);

/** Kinds of prefecture names, by their ending. */
enum { TDFK_KEN_3 = 0, TDFK_KEN_4 = 1, TDFK_FU = 2, TDFK_DO = 3, TDFK_TO = 4 };

/** Looks a prefecture up. @param head the first 8 bytes of the address @return 1 and prefecture is set, else
 * 0 */
int check_tdfk(const char *head, int kind, ydic_search *search);

/** Normalises query, and finds out about its characters: charInfo, noEnd, afterToori, sepPos1, sepPos2,
 * queryLen. */
void yuragi_check(ydic_search *search);

/* The address index. */

/**
 * Looks the first two characters of query up in level 1.
 * @param start,end receive the slice of level 2
 * @param read not 0: level 1 is read into readBuf first; 0: it lies there
 * @return 1, 0 when it isn't there, or a negative failure
 */
int idx1_knsk(uint16_t *start, uint16_t *end, uint8_t read, ydic_search *search, ydic_info *info);

/** Collects the candidates of a slice of level 2. @return 0, or a negative failure */
int knsk_sub(uint16_t start, uint16_t end, ydic_search *search, ydic_info *info);

/**
 * Reads a slice of level 2 and records the groups that fit.
 * @param slice receives the slice: end - start bytes
 * @return number of groups, or a negative failure
 */
int idx2_knsk(uint16_t start, uint16_t end, uint8_t *slice, ydic_search *search, ydic_info *info);

/* The dictionary's text. */

/** Compares the records of a chunk, or one self-contained record. @param offset in readBuf
 * @param length as in the reference: bit 15 is the kind @return 1 when a candidate was stored or cancelled,
 * else 0 */
int dic_knsk(uint32_t offset, uint16_t length, ydic_search *search);

/**
 * Normalises a text of the dictionary towards the query.
 * @param text JIS text, in place, room for YDIC_WORK_LENGTH + 3 bytes
 * @param length characters, in and out
 * @param mode 1: work; 0: a key of the index
 * @return 0 when a match is possible, -1 when not
 */
int yuragi_conv(char *text, int16_t *length, uint8_t mode, ydic_search *search);

/* The candidates. */

/** Stores a candidate, or takes the first equal one away. */
void zip_store(uint32_t code, uint8_t match, ydic_search *search, uint8_t cancels);

/** Writes the codes of the best candidates. @return their number */
int set_kouho(uint32_t max, char *result, ydic_search *search);

/** 0 when @p count bytes are equal, else the difference of the first unequal ones, first minus second. */
int stncmp(const char *first, const char *second, int count);

/** Number of equal characters at the start of @p count bytes. */
int stncmp2(const char *first, const char *second, int count);

/** The value of a character's row in the table of variants. @param row receives the row @return 1 found, 0
 * not */
int ydic_variant(const char *character, uint16_t *row, uint16_t *value);

#ifdef __cplusplus
}
#endif

#endif
