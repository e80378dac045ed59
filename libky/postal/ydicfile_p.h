#ifndef YDICFILE_P_H
#define YDICFILE_P_H

/**
 * @file ydicfile_p.h
 * Which file is used, and its header.
 */

#include "ydic.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The card paths hold a dictionary or a patch: each is tested as both. */
extern const char Path_cfsh_dic[];
extern const char Path_cfsh_pch[];
extern const char Path_hfsh_dic[];
extern const char Path_hfsh_pch[];
extern const char Path_hrom_dic[];

/** Values of ydic_info::fileStatus. */
enum {
    YDIC_FILE_ABSENT = 0,
    YDIC_FILE_GOOD = 1,
    YDIC_FILE_NOT_CLOSED = 252,
    YDIC_FILE_WRONG_SIZE = 253,
    YDIC_FILE_WRONG_KIND = 254,
    YDIC_FILE_NOT_READ = 255
};

/** ydic_info::opened of a good patch that fits no dictionary. */
enum { YDIC_PATCH_USELESS = 255 };

/** Combinations of a dictionary and a patch: three dictionaries, each alone, with the SD patch, with the CF
 * patch. */
enum { YDIC_COMBINATIONS = 9 };

/** Header fields of the code search, in the order of the file, 32 bits each. */
typedef struct ydic_fields
{
    uint32_t codeIndex1; /**< level 1 of the code index */
    uint32_t codeIndex1Size;
    uint32_t baseA; /**< of level 2 of the code index */
    uint32_t baseASize;
    uint32_t baseB; /**< of the chunks */
    uint32_t baseBSize;
    uint32_t numberIndex;
    uint32_t numberIndexSize; /**< bytes */
    uint32_t numberRuns;
    uint32_t numberRunsSize;
    uint32_t changes;     /**< of a patch */
    uint32_t changesSize; /**< bytes; 0: there is no table */
    uint32_t sliceLimit;  /**< a slice of level 2 and the entry behind it are shorter than this */
} ydic_fields;

enum { YDIC_SCRATCH_LENGTH = 256 };

/**
 * Tests the file of a slot: fills fileStatus and fileHead of it. A slot above 4 does nothing.
 * @param path path of the device
 * @return 0
 */
int check_fileStatus(uint8_t slot, ydic_info *info, const char *path);

/**
 * Puts the patches into the tables of combinations, and marks those that fit no dictionary.
 * @param editions YDIC_COMBINATIONS editions, 0: not a candidate
 * @param priorities their order at the same edition, the greatest first
 * @return 1
 */
int verchk_withPatch(ydic_info *info, uint8_t *editions, uint8_t *priorities);

/** The best of YDIC_COMBINATIONS. @return 0 to 8, -1 when there is none */
int latestVersion(const uint8_t *editions, const uint8_t *priorities);

/** Reads the fields of the header. @param scratch YDIC_SCRATCH_LENGTH bytes @return 1, or -1 */
int header_Read(FILE *file, ydic_fields *fields, uint8_t *scratch);

/** Reads the characters of the one-byte text codes. @param ask1ji 104 bytes @return 1, or -1 */
int ask1ji_tblRead(FILE *file, char *ask1ji);

/** Reads @p count bytes at @p offset. @return true when all were there */
int ydic_readAt(FILE *file, uint32_t offset, uint32_t count, void *buffer);

#ifdef __cplusplus
}
#endif

#endif
