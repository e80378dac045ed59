#ifndef YDICBYTES_P_H
#define YDICBYTES_P_H

/**
 * @file ydicbytes_p.h
 * The numbers of a dictionary file, which are big-endian, and its layout.
 */

#include <stddef.h>
#include <stdint.h>

static inline uint16_t ydic_u16(const uint8_t *at)
{
    return (uint16_t)(at[0] << 8 | at[1]);
}

static inline uint32_t ydic_u24(const uint8_t *at)
{
    return (uint32_t)at[0] << 16 | (uint32_t)at[1] << 8 | at[2];
}

static inline uint32_t ydic_u32(const uint8_t *at)
{
    return (uint32_t)at[0] << 24 | ydic_u24(at + 1);
}

/** Kinds of files, header byte 3. */
enum { YDIC_DICTIONARY = 2, YDIC_PATCH = 3 };

/** Offsets of the header. */
enum {
    YDIC_AT_TYPE = 3,
    YDIC_AT_CORRECTS = 4,
    YDIC_AT_EDITION = 5,
    YDIC_AT_SERIAL = 15,
    YDIC_AT_CODE_INDEX1 = 16,
    YDIC_AT_BASE_A = 24,
    YDIC_AT_BASE_B = 32,
    YDIC_AT_ADDRESS_INDEX1 = 40,
    YDIC_AT_ADDRESS_INDEX2 = 48,
    YDIC_AT_NUMBER_INDEX = 56,
    YDIC_AT_NUMBER_RUNS = 64,
    YDIC_AT_CHANGES = 72,
    YDIC_AT_SLICE_LIMIT = 80,
    YDIC_AT_SECOND_START = 86,
    YDIC_AT_SECOND_END = 90,
    YDIC_AT_FILE_SIZE = 96,
    YDIC_HEADER_LENGTH = 128
};

/** Sizes of the sections that have one, and of their entries. */
enum {
    YDIC_ASK1JI_LENGTH = 104,
    YDIC_ASK1JI_FIRST = 109, /**< the first one-byte text code */
    YDIC_PREFIXES = 100,
    YDIC_LEVEL1_ENTRY = 3,
    YDIC_LEVEL1_LENGTH = 303,
    YDIC_LEVEL2_ENTRY = 6,
    YDIC_CHUNK_LENGTH = 5120, /**< a range of chunks is shorter than this */
    YDIC_CHUNK_HEADER = 3,
    YDIC_ADDRESS1_ENTRY = 6,
    YDIC_REFERENCE = 5,
    YDIC_RUN = 4,
    YDIC_CHANGE = 4
};

/** Marks in the text of a record. */
enum {
    YDIC_MARK_SILENT = 0x64,   /**< d */
    YDIC_MARK_SHOWN = 0x65,    /**< e: a pair encloses what an address need not say */
    YDIC_MARK_END = 0x66,      /**< f: ends what is shown */
    YDIC_MARK_HIDDEN = 0x67,   /**< g: a pair encloses what isn't shown */
    YDIC_MARK_WHOLE = 0x68,    /**< h: the whole area */
    YDIC_MARK_COMPLETE = 0x69, /**< i: a whole address, its code in three bytes before it */
    YDIC_MARK_CANCELS = 0x6A   /**< j: takes an entry away */
};

#endif
