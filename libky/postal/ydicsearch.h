#ifndef KY_YDICSEARCH_H
#define KY_YDICSEARCH_H

/**
 * @file ydicsearch.h
 * What one search by address knows while it runs. Lengths and positions count characters unless they say
 * bytes.
 */

#include "ydic.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    YDIC_CANDIDATES = 100,    /**< candidates behind the hundredth are lost */
    YDIC_QUERY_LENGTH = 80,   /**< bytes of the normalised address */
    YDIC_WORK_LENGTH = 89,    /**< bytes of a decoded text of the dictionary */
    YDIC_READ_LENGTH = 10240, /**< bytes of the read buffer */
    YDIC_POSITIONS = 64 /**< room of the arrays by character: all of a query, and some zeros behind it */
};

/** Bits of ydic_search::flags. */
enum {
    YDIC_HAS_VARIANT = 1,   /**< some character has a variant: a literal mismatch is worth a second look */
    YDIC_REMOVED = 2,       /**< a 番地 or 字 was removed */
    YDIC_TWO_DIGITS = 4,    /**< a number of two digits was rewritten with 十 */
    YDIC_TEN_SHORTENED = 8, /**< a 10 lost a character */
    YDIC_TEN_INSERTED = 16, /**< a 十 was inserted */
    YDIC_KYOTO_CUT = 32,    /**< the street of an address in Kyoto was removed */
    YDIC_SAYS_KASHIMA = 128 /**< the address says 鹿島市 */
};

/** Values of ydic_search::charInfo, beside rows of the table of variants. */
enum {
    YDIC_STANDARD = 0x8000,     /**< plus a row: a standard form, whose variant is that row */
    YDIC_ZERO = 0xEA00,         /**< ０ */
    YDIC_TEN = 0xEB00,          /**< 十 as written, or from a digit pair */
    YDIC_TEN_10 = 0xEC00,       /**< 十 from 10 */
    YDIC_TEN_23 = 0xED00,       /**< 十 inserted into a pair such as 23 */
    YDIC_TEN_20 = 0xEE00,       /**< 十 from a pair such as 20 */
    YDIC_TEN_12 = 0xEF00,       /**< 十 from a pair such as 12 */
    YDIC_CLASS_RABBIT = 0xFB00, /**< 兎 菟 莵 */
    YDIC_CLASS_SWORD = 0xFC00,  /**< 剣 劔 剱 */
    YDIC_CLASS_NO = 0xFD00,     /**< の ノ 之 */
    YDIC_CLASS_TSU = 0xFE00,    /**< つ ッ ツ */
    YDIC_CLASS_KE = 0xFF00      /**< が ガ ケ ヶ */
};

/** A group of the address index that fits the query. */
typedef struct ydic_group
{
    uint16_t count;      /**< references */
    uint16_t refOffset;  /**< of the first reference, from the start of the slice */
    uint16_t consumed;   /**< characters of the query that the group matched */
    uint16_t prefecture; /**< 0 to 47 */
} ydic_group;

/** Header fields of the address search, each its low 24 bits. */
typedef struct ydic_address_fields
{
    uint32_t baseA;
    uint32_t baseASize;
    uint32_t baseB;
    uint32_t baseBSize;
    uint32_t index1;
    uint32_t index1Size; /**< bytes */
    uint32_t index2;
    uint32_t index2Size;
    uint16_t secondStart; /**< of the fixed second range of level 2; 0: there is none */
    uint16_t secondEnd;
} ydic_address_fields;

typedef struct ydic_search
{
    int16_t queryLen;         /**< characters in query */
    uint16_t prefecture;      /**< named in the address, 0 if none */
    uint16_t groupPrefecture; /**< of the group that is being read */
    uint8_t flags;
    int16_t consumed; /**< characters of the query matched by the index */
    int16_t candCount;
    int16_t afterToori; /**< of the character behind the last 通, 0 if none */
    int16_t dropMark;   /**< 1 or 2 when the record in work lost its last character */
    uint16_t charInfo[YDIC_POSITIONS];
    ydic_group *groups; /**< room for every group of a slice; of one knsk_sub() */
    uint32_t candCode[YDIC_CANDIDATES];
    char query[YDIC_QUERY_LENGTH + 1];
    char work[YDIC_WORK_LENGTH + 3]; /**< and what rewriting a number may add before the text is too long */
    uint8_t candMatch[YDIC_CANDIDATES]; /**< matched characters; 0: removed */
    uint8_t candDrop[YDIC_CANDIDATES];
    uint8_t noEnd[YDIC_POSITIONS]; /**< 1: a match may not end just before this character */
    uint8_t sepPos1;               /**< of the first and second separator between numbers, 0 if none */
    uint8_t sepPos2;
    char *readBuf;   /**< YDIC_READ_LENGTH bytes */
    uint8_t fileSel; /**< 0 reads the dictionary, else the patch */
    ydic_address_fields fields;
    char ask1ji[104]; /**< the characters of the one-byte text codes, of the file in use */
} ydic_search;

/**
 * Reads the header of the file in use (fileSel) through readBuf, and its one-byte text codes.
 * @return 0, or YDIC_NOT_READ
 */
KY_EXPORT int InitDicData(ydic_search *search, ydic_info *info);

#ifdef __cplusplus
}
#endif

#endif
