#ifndef KY_YDIC_H
#define KY_YDIC_H

/**
 * @file ydic.h
 * The postal dictionary: Japanese seven-digit postal codes to addresses and back, from one read-only file.
 *
 * Plain functions over open files. All text is 7-bit JIS X 0208: two bytes of 0x21 to 0x7E a character,
 * without escapes. Nothing is kept between two calls, every call frees what it allocates, and a damaged file
 * gives an error or an empty answer.
 */

#include <stdint.h>
#include <stdio.h>

#ifndef KY_EXPORT
#define KY_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The places where a dictionary or a patch is looked for. */
enum { YDIC_SLOTS = 5 };

/** Bytes of the longest address, without its terminator. */
enum { YDIC_ADDRESS_LENGTH = 80 };

/** An open dictionary, perhaps with a patch. ZipInit() makes it, ZipFin() ends it. */
typedef struct ydic_info
{
    FILE *dictFile;                 /**< the chosen dictionary, null when there is none */
    FILE *patchFile;                /**< the chosen patch, null when there is none */
    uint8_t hasPatch;               /**< 1 when patchFile is in use */
    uint8_t fileStatus[YDIC_SLOTS]; /**< what the test of each slot's file found */
    uint8_t
        opened[YDIC_SLOTS]; /**< 1: this slot's file was chosen; 255: a good patch that fits no dictionary */
    uint8_t fileHead[YDIC_SLOTS][16]; /**< the first bytes of each slot's file */
} ydic_info;

/** Results of ZipInit(). */
enum {
    ZIP_INIT_PATCHED = 2,       /**< a dictionary and a patch are in use */
    ZIP_INIT_DICTIONARY = 1,    /**< a dictionary is in use; there is no patch */
    ZIP_INIT_USELESS_PATCH = 0, /**< a dictionary is in use; a patch is there that fits no dictionary */
    ZIP_INIT_NO_FILE = -2,      /**< there is no dictionary */
    ZIP_INIT_NO_MEMORY = -3,    /**< and no handle */
    ZIP_INIT_NO_GOOD_FILE = -4  /**< there are dictionaries, and none is good */
};

/** Failures of the searches. */
enum {
    YDIC_NO_MEMORY = -1,
    YDIC_NOT_READ = -2, /**< the file can't be read, or is damaged */
    YDIC_BAD_INPUT = -3 /**< the code or the address isn't one */
};

/** Directions of Zip2AdrSearchNP(). */
enum { YDIC_NEXT = 0, YDIC_PREVIOUS = 1 };

/**
 * Opens the newest good dictionary of the SD card, the CF card and the internal storage, with the patch that
 * makes it newer still, if there is one.
 *
 * @param info receives the handle, also when the result is negative; null when there is no memory for it. The
 *        caller owns it and ends it with ZipFin()
 * @return one of ZIP_INIT_...; negative: nothing is open
 */
KY_EXPORT int ZipInit(ydic_info **info);

/**
 * Closes what is open and frees the handle, which may be null.
 * @return 1; -1 when closing the dictionary failed, else -2 when closing the patch failed
 */
KY_EXPORT int ZipFin(ydic_info *info);

/**
 * The addresses of a code.
 *
 * Each result is prefecture, solidus (0x21 0x3F), place: at most YDIC_ADDRESS_LENGTH bytes of text, cut there
 * even inside a character, and a NUL. A result follows the one before it at once.
 *
 * @param code seven ASCII digits, perhaps with a hyphen behind the third
 * @param max how many results are wanted at most; there are never more than 809, all that 16 bits can count
 * @param result room for @p max times (YDIC_ADDRESS_LENGTH + 1) bytes; begins with a NUL when there is no
 * result
 * @return number of results, different from each other, in the order of the file; 0 when there is no such
 * code; negative: YDIC_NO_MEMORY, YDIC_NOT_READ, YDIC_BAD_INPUT
 */
KY_EXPORT int Zip2AdrSearch(const char *code, uint32_t max, char *result, ydic_info *info);

/**
 * The nearest code that exists above or below @p code, which itself need not exist, and its addresses.
 *
 * @param direction YDIC_NEXT or YDIC_PREVIOUS
 * @param near receives seven ASCII digits and a NUL: 8 bytes; empty when there is no such code
 * @return as Zip2AdrSearch(); 0 when there is no neighbour
 */
KY_EXPORT int Zip2AdrSearchNP(const char *code, uint32_t max, uint8_t direction, char *near, char *result,
                              ydic_info *info);

/**
 * The codes whose place fits an address best, in the many ways in which people write addresses.
 *
 * @param address JIS text, terminated; its high bits are ignored
 * @param max how many codes are wanted at most
 * @param result room for @p max times 8 bytes; each code is seven ASCII digits and a NUL. Begins with a NUL
 * when there is none
 * @return number of codes; negative: YDIC_NO_MEMORY, YDIC_NOT_READ, YDIC_BAD_INPUT (an odd number of bytes)
 */
KY_EXPORT int Adr2ZipSearch(const char *address, uint32_t max, char *result, ydic_info *info);

/**
 * Reads bytes of a file of the handle.
 * @param fileSel 0: the dictionary, else the patch
 * @return 0, or YDIC_NOT_READ when there are fewer bytes at @p offset
 */
KY_EXPORT int ReadDic(uint32_t offset, uint32_t count, void *buffer, uint8_t fileSel, ydic_info *info);

/** Does nothing. @return 0 */
KY_EXPORT int Zip7Hook(void);

#ifdef __cplusplus
}
#endif

#endif
