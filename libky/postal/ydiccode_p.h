#ifndef YDICCODE_P_H
#define YDICCODE_P_H

/**
 * @file ydiccode_p.h
 * The steps of the search by code.
 */

#include "ydicfile_p.h"

#ifdef __cplusplus
extern "C" {
#endif

/** More results than these are never given: as many as the 16 bits of ydic_state::bytes can count. */
enum { YDIC_MOST_RESULTS = UINT16_MAX / (YDIC_ADDRESS_LENGTH + 1) };

/** Bytes of a code as text, with its terminator. */
enum { YDIC_CODE_LENGTH = 8 };

/** The greatest code as a number. */
enum { YDIC_LAST_CODE = 9999999 };

/** A code in the parts by which it is looked up. */
typedef struct ydic_key
{
    uint8_t first2; /**< digits 1 and 2 */
    uint16_t mid3;  /**< digits 3 to 5 */
    uint8_t last2;  /**< digits 6 and 7 */
} ydic_key;

/** Offsets in bytes; what is at end doesn't belong to it. */
typedef struct ydic_range
{
    uint32_t start;
    uint32_t end;
} ydic_range;

/** An entry of level 2 of the code index: a chunk. */
typedef struct ydic_entry
{
    uint16_t mid3;
    uint32_t offset; /**< of the chunk, from base B */
    uint8_t last2;   /**< the smallest in the chunk */
} ydic_entry;

/** How far a search has come. */
typedef struct ydic_state
{
    uint32_t max;   /**< results wanted, at most YDIC_MOST_RESULTS of them are given */
    uint16_t count; /**< results there are */
    uint16_t bytes; /**< what they take, with their terminators */
} ydic_state;

/* The code. */

/** Takes a code apart: seven digits, perhaps with a hyphen behind the third. @return 1, or -1 when it isn't
 * one
 */
int zipCode_Check(const char *code, ydic_key *key);

/** The code as a number. */
uint32_t ydic_number(const ydic_key *key);

/** Writes seven digits and a NUL. @param buffer YDIC_CODE_LENGTH bytes */
void int2ascii(uint32_t number, char *buffer);

/* The addresses of a code. */

/**
 * Zip2AdrSearch() in one file.
 * @param found receives 1 when the file has the code, also when nothing of it is shown, else 0
 */
int Zip2AdrSearchBody(const char *code, uint32_t max, char *result, FILE *file, uint8_t *found);

/** Reads at @p offset from @p base. @return true when all bytes were there; a sum beyond 32 bits is nowhere
 */
int ydic_readFrom(FILE *file, uint32_t base, uint32_t offset, uint32_t count, void *buffer);

/** Reads level 1 of the code index. @param level1 303 bytes @return 1, or -1 */
int ydic_1idxRead(FILE *file, const ydic_fields *fields, uint8_t *level1);

/**
 * Reads a slice of level 2, and the entry behind it.
 * @param range of the slice, from base A
 * @param slice room for fields->sliceLimit bytes, or for the longest slice there can be, its entry behind and
 * a NUL
 * @return 1; -1 when it can't be read, or isn't shorter than the limit
 */
int ydic_2idxRead(FILE *file, const ydic_range *range, const ydic_fields *fields, uint8_t *slice);

/** The entry of level 2 at byte @p offset of the slice. */
void ydic_2idxGet(uint32_t offset, ydic_entry *entry, const uint8_t *slice);

/**
 * Finds the entries whose chunks may have the code.
 * @param range in: of the slice, from base A; out: of the entries, from the start of the slice
 * @return 1, or 0 when there are none
 */
int ydic_2idxSch(ydic_range *range, const ydic_key *key, const uint8_t *slice);

/**
 * Reads chunks.
 * @param chunks offsets from base B
 * @param buffer YDIC_CHUNK_LENGTH bytes
 * @return 1; -1 when they can't be read, or are too long
 */
int ydic_read(FILE *file, const ydic_range *chunks, const ydic_fields *fields, uint8_t *buffer);

/**
 * Writes the addresses of the code.
 * @param chunks as of ydic_read(), entries as of ydic_2idxSch()
 * @param found becomes 1 when there is a record of the code
 * @return number of results; YDIC_NOT_READ when a chunk lies outside of what was read
 */
int ydic_sch(char *result, const ydic_range *chunks, const ydic_range *entries, const ydic_key *key,
             ydic_state *state, const char *ask1ji, const uint8_t *level1, const uint8_t *level2,
             const uint8_t *buffer, uint8_t *found);

/**
 * Writes the address of a record behind those that are there, if it shows one and there is room for it.
 * @param position of the record's code byte in the buffer
 * @param common the text that the records of the chunk share
 * @param end of the chunk
 * @param level2 not looked at: a record says all that is shown
 * @return position of the next record
 */
uint32_t ydic_output(char *result, uint32_t position, const ydic_range *common, const ydic_key *key,
                     uint32_t end, ydic_state *state, const char *ask1ji, const uint8_t *level1,
                     const uint8_t *level2, const uint8_t *buffer);

/** Position of the record behind that at @p position; @p end when it was the last. */
uint32_t ydic_dictSkip(uint32_t position, uint32_t end, const uint8_t *buffer);

/** Removes results that are there twice; the first one stays. @return how many are left */
int ydic_uniq(char *result, ydic_state *state);

/* The neighbour of a code. */

/** Results of the searches for a neighbour; -1 when the file can't be read. */
enum {
    YDIC_NEAR_NONE = 0,      /**< there is none, and the buffer is cleared */
    YDIC_NEAR_UNDECIDED = 1, /**< the patch leaves it to the dictionary */
    YDIC_NEAR_FOUND = 2      /**< the code is in the buffer */
};

/** Writes the code of a neighbour. @return YDIC_NEAR_FOUND, or -1 when it is greater than any code */
int ydic_nearAnswer(uint32_t number, char *near);

/** Clears the buffer. @return YDIC_NEAR_NONE */
int ydic_nearNone(char *near);

/** Reads the number index. @param index fields->numberIndexSize bytes @return 1, or -1 */
int numsch_1idxRead(FILE *file, const ydic_fields *fields, uint8_t *index);

/**
 * Finds the neighbour of a number in the table of runs.
 * @param first2 the number's first two digits
 * @param near YDIC_CODE_LENGTH bytes
 * @param index the number index, 101 entries
 * @return YDIC_NEAR_FOUND, YDIC_NEAR_NONE, or -1
 */
int near_numberSch(uint8_t first2, uint32_t number, char *near, uint8_t direction, FILE *file,
                   const ydic_fields *fields, const uint8_t *index);

/** The last code before those that begin with @p first2. @return as near_numberSch() */
int bottom_numSch(uint8_t first2, char *near, FILE *file, const ydic_fields *fields, const uint8_t *index);

/** The first code behind those that begin with @p first2. @return as near_numberSch() */
int top_numSch(uint8_t first2, char *near, FILE *file, const ydic_fields *fields, const uint8_t *index);

/** Finds the neighbour of a number in the changes of a patch. @return YDIC_NEAR_..., or -1 */
int near_numberSchPch(uint32_t number, char *near, uint8_t direction, FILE *file, const ydic_fields *fields);

#ifdef __cplusplus
}
#endif

#endif
