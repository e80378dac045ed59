#ifndef YDICTEXT_P_H
#define YDICTEXT_P_H

/**
 * @file ydictext_p.h
 * An address as characters while it is normalised, and the characters that mean something in it.
 */

#include "ydicbytes_p.h"
#include "ydicsearch.h"

/** Characters that an address is normalised by, in JIS X 0208. */
namespace Jis {

constexpr uint16_t Ban = 0x4856;         // 番
constexpr uint16_t Chi = 0x434F;         // 地
constexpr uint16_t Great = 0x4267;       // 大
constexpr uint16_t Small = 0x3E2E;       // 小
constexpr uint16_t Aza = 0x3B7A;         // 字
constexpr uint16_t Writing = 0x4A38;     // 文
constexpr uint16_t TenThousand = 0x4B7C; // 万
constexpr uint16_t Ten = 0x3D3D;         // 十
constexpr uint16_t Zero = 0x2330;        // ０
constexpr uint16_t One = 0x2331;         // １
constexpr uint16_t Nine = 0x2339;        // ９

constexpr uint16_t Ken = 0x3829; // 県
constexpr uint16_t To = 0x4554;  // 都
constexpr uint16_t Fu = 0x495C;  // 府
constexpr uint16_t Do = 0x463B;  // 道

constexpr uint16_t Kyo = 0x357E;   // 京
constexpr uint16_t Shi = 0x3B54;   // 市
constexpr uint16_t Ku = 0x3668;    // 区
constexpr uint16_t Machi = 0x442E; // 町
constexpr uint16_t Mura = 0x423C;  // 村
constexpr uint16_t Tsuji = 0x4454; // 辻
constexpr uint16_t Toori = 0x444C; // 通
constexpr uint16_t Cho = 0x437A;   // 丁
constexpr uint16_t Me = 0x4C5C;    // 目
constexpr uint16_t Jo = 0x3E72;    // 条
constexpr uint16_t Suji = 0x365A;  // 筋

constexpr uint16_t East = 0x456C;       // 東
constexpr uint16_t West = 0x403E;       // 西
constexpr uint16_t South = 0x466E;      // 南
constexpr uint16_t North = 0x4B4C;      // 北
constexpr uint16_t Up = 0x3E65;         // 上
constexpr uint16_t Down = 0x323C;       // 下
constexpr uint16_t In = 0x467E;         // 入
constexpr uint16_t Behind = 0x4E22;     // 裏
constexpr uint16_t Side = 0x4226;       // 側
constexpr uint16_t Right = 0x3126;      // 右
constexpr uint16_t Mountain = 0x3B33;   // 山
constexpr uint16_t Shina = 0x324A;      // 科
constexpr uint16_t Fushi = 0x497A;      // 伏
constexpr uint16_t Mi = 0x382B;         // 見
constexpr uint16_t HiraganaRu = 0x246B; // る
constexpr uint16_t KatakanaRu = 0x256B; // ル

constexpr uint16_t HiraganaRi = 0x246A; // り
constexpr uint16_t HiraganaNo = 0x244E; // の
constexpr uint16_t KatakanaNo = 0x254E; // ノ
constexpr uint16_t KanjiNo = 0x4737;    // 之
constexpr uint16_t Minus = 0x215D;      // −
constexpr uint16_t LongVowel = 0x213C;  // ー
constexpr uint16_t Dash = 0x213D;       // ―
constexpr uint16_t Hyphen = 0x213E;     // ‐

constexpr uint16_t KatakanaKe = 0x2531;  // ケ
constexpr uint16_t KatakanaTsu = 0x2544; // ツ
constexpr uint16_t Sword = 0x3775;       // 剣
constexpr uint16_t Rabbit = 0x4546;      // 兎

} // namespace Jis

/** An address as characters; everything behind its end is 0. */
struct ydic_text
{
    uint16_t at[YDIC_POSITIONS];
    int length;
};

/** Takes characters out. */
void ydic_remove(ydic_text *text, int position, int count);

/** Removes what stands between a ward of Kyoto and the name of the place: the street. @return true when there
 * was something to remove */
bool ydic_dropStreet(ydic_text *text);

/** Where a number was rewritten. */
struct ydic_ten
{
    int position;  /**< of the last 十 that was written; 0: nothing to remember */
    uint16_t info; /**< its charInfo */
};

/** Rewrites numbers of two digits with 十. @return the last place */
ydic_ten ydic_writeTens(ydic_text *text, uint8_t *flags);

/** The bytes of as many characters. */
static inline size_t ydic_bytes(int characters)
{
    return 2 * static_cast<size_t>(characters);
}

/** A character of a text of bytes. */
static inline uint16_t ydic_character(const char *text, int position)
{
    return ydic_u16(reinterpret_cast<const uint8_t *>(text) + ydic_bytes(position));
}

static inline void ydic_setCharacter(char *text, int position, uint16_t character)
{
    char *at = text + ydic_bytes(position);
    at[0] = static_cast<char>(character >> 8);
    at[1] = static_cast<char>(character & 0xFF);
}

/** What a charInfo says of a number. */
static inline bool ydic_isDigit(uint16_t info)
{
    return info >= 1 && info <= 9;
}

static inline bool ydic_isNumeral(uint16_t info)
{
    return info >= YDIC_STANDARD + 1 && info <= YDIC_STANDARD + 9;
}

#endif
