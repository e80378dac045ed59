#include "dictionarycheck.h"

#include "dictionarywriter.h"
#include "imagebuilder.h"
#include <functional>
#include <QTest>

using namespace imagebuilder;
using namespace ZipDict;

namespace {

constexpr unsigned Tokyo = 13;
constexpr unsigned Nagano = 20;
constexpr unsigned Mie = 24;

uint32_t lengthOf(const Bytes &bytes)
{
    return static_cast<uint32_t>(bytes.size());
}

/** The parts of a good file, small enough to know where everything stands. A test breaks one of them. */
struct Parts
{
    Bytes common = stored(u"千代田区");
    Bytes whole = "\x68";
    Bytes chiyoda = stored(u"千代田");
    Bytes first = record(0, whole) + record(1, chiyoda) + record(3, stored(u"一ツ橋"));
    Bytes complete = "\x69" + u24(1000105) + stored(u"三重県／桑名市町");
    Bytes second = record(4, stored(u"大手町")) + record(5, complete);
    Bytes third = record(60, stored(u"町"));
    Bytes ueda = stored(u"上田市") + record(10, "\x68");
    Bytes own = stored(u"桑名市") + record(5, stored(u"町")); // only addresses lead there
    uint8_t thirdSmallest = 60;
    Bytes moreReferences; // of 千代田区
    bool reachesThird = true;
    Bytes moreGroups;
    Bytes runs = u24(1000000) + u8(2) + u24(1000003) + u8(1) + u24(1000104) + u8(2) + u24(1000160) + u8(1) +
                 u24(2000010) + u8(1);
    Image image;

    Parts()
    {
        for (int i = 0; i < YDIC_ASK1JI_LENGTH / 2; ++i)
            image.ask1ji += jis(u"町");
        image.prefectures[20] = Nagano;
    }

    static Bytes chunk(uint32_t fiveDigits, const Bytes &records) { return u24(fiveDigits) + records; }

    Bytes bytes()
    {
        image.chunks = chunk(10001, own);
        const Bytes ownReference = reference(image.chunkDistance, lengthOf(image.chunks));
        Bytes references;
        const auto add = [&](uint32_t fiveDigits, uint8_t smallest, const Bytes &records) {
            const uint32_t at = image.nextReference();
            return reference(at, image.addChunk(fiveDigits, smallest, records));
        };
        references += add(10000, 0, common + first);
        const uint32_t completeAt = image.nextReference() + 3 + lengthOf(common) + 7;
        references += add(10001, 4, common + second);
        const Bytes thirdReference = add(10001, thirdSmallest, common + third);
        if (reachesThird)
            references += thirdReference;
        const Bytes uedaReference = add(20000, 10, ueda);
        image.runs = runs;
        if (image.address1.empty()) {
            const Bytes direct = reference(completeAt, 1 + lengthOf(complete), true);
            image.addAddressKey(u"桑名", group(Mie, Bytes(), 1, ownReference + direct));
            image.addAddressKey(u"上田", group(Nagano, Bytes(), 1, uedaReference));
            image.addAddressKey(u"千代",
                                group(Tokyo, jis(u"田"), 2, references + moreReferences) + moreGroups);
        }
        return image.bytes();
    }
};

/** A way to break a file, and what is found of it. */
struct Case
{
    const char *name;
    std::function<void(Parts &)> change; ///< before the file is put together
    std::function<void(Bytes &)> damage; ///< behind that
    unsigned section;    ///< the field of the header that says where the section is; 0: the file
    unsigned offset;     ///< in the section
    const char *finding; ///< its beginning
};

void none(Parts &) {}
void whole(Bytes &) {}

uint32_t startOf(const Bytes &file, unsigned field)
{
    return field == 0 ? 0 : ydic_u32(reinterpret_cast<const uint8_t *>(file.data()) + field);
}

std::function<void(Bytes &)> put(unsigned section, unsigned offset, const Bytes &bytes)
{
    return [=](Bytes &file) { file.replace(startOf(file, section) + offset, bytes.size(), bytes); };
}

std::function<void(Parts &)> patch(uint8_t corrects, uint8_t makes)
{
    return [=](Parts &parts) {
        parts.image.type = YDIC_PATCH;
        parts.image.corrects = corrects;
        parts.image.edition = makes;
    };
}

std::function<void(Parts &)> changes(const Bytes &table)
{
    return [=](Parts &parts) {
        patch(1, 2)(parts);
        parts.image.changes = table;
    };
}

std::function<void(Parts &)> runs(const Bytes &table)
{
    return [=](Parts &parts) { parts.runs = table; };
}

Bytes run(uint32_t first, unsigned length)
{
    return u24(first) + u8(length);
}

Bytes repeated(const Bytes &bytes, int times)
{
    Bytes all;
    for (int i = 0; i < times; ++i)
        all += bytes;
    return all;
}

// Where things stand behind base B.
constexpr unsigned FirstChunk = 12;
constexpr unsigned SecondChunk = FirstChunk + 27;
constexpr unsigned ThirdChunk = SecondChunk + 39;
constexpr unsigned UedaChunk = ThirdChunk + 14;
constexpr unsigned Header = 3;
constexpr unsigned Common = 8;
// Groups of level 2 of the address index.
constexpr unsigned UedaGroup = 2 + 1 + 2 * 5;
constexpr unsigned ChiyodaGroup = UedaGroup + 2 + 1 + 5;
constexpr unsigned ChiyodaReferences = ChiyodaGroup + 2 + 3;

const std::vector<Case> &headerCases()
{
    static const std::vector<Case> cases = {
        {"magic", none, put(0, 1, "\x01"), 0, 0, "the file doesn't begin with FF 00 28"},
        {"type", none, put(0, YDIC_AT_TYPE, "\x04"), 0, YDIC_AT_TYPE, "type 4 is neither"},
        {"too short", none, [](Bytes &file) { file.resize(231); }, 0, 0, "the file has 231 bytes"},
        {"too long", none, [](Bytes &file) { file.resize(0x1000001); }, 0, 0, "the file has 16777217 bytes"},
        {"edition", [](Parts &parts) { parts.image.edition = 0; }, whole, 0, YDIC_AT_EDITION,
         "edition 0 is never used"},
        {"stored size", none, [](Bytes &file) { file += '\0'; }, 0, YDIC_AT_FILE_SIZE,
         "the file says it has"},
        {"patch of no edition", patch(0, 2), whole, 0, YDIC_AT_CORRECTS, "the patch corrects edition 0"},
        {"patch that makes an older edition", patch(3, 2), whole, 0, YDIC_AT_CORRECTS,
         "the patch makes edition 2 of edition 3"},
        {"patch that makes the same edition", patch(3, 3), whole, 0, YDIC_AT_CORRECTS,
         "the patch makes edition 3 of edition 3"},
        {"offset above 24 bits", none, put(0, YDIC_AT_BASE_B, u32(0x1000000)), 0, YDIC_AT_BASE_B,
         "offset 16777216 of base B is above 24 bits"},
        {"code index outside", none, put(0, YDIC_AT_CODE_INDEX1, u32(0x10000)), 0, YDIC_AT_CODE_INDEX1,
         "level 1 of the code index (303 bytes at 65536) lies outside the file"},
        {"base A outside", none, put(0, YDIC_AT_BASE_A, u32(0x10000)), 0, YDIC_AT_BASE_A, "base A"},
        {"base B outside", none, put(0, YDIC_AT_BASE_B, u32(0x10000)), 0, YDIC_AT_BASE_B, "base B"},
        {"address level 1 outside", none, put(0, YDIC_AT_ADDRESS_INDEX1, u32(0x10000)), 0,
         YDIC_AT_ADDRESS_INDEX1, "level 1 of the address index"},
        {"address level 2 outside", none, put(0, YDIC_AT_ADDRESS_INDEX2, u32(0x10000)), 0,
         YDIC_AT_ADDRESS_INDEX2, "level 2 of the address index"},
        {"address level 2 ends outside", none, put(YDIC_AT_ADDRESS_INDEX1, 22, u16(0xFFFF)), 0,
         YDIC_AT_ADDRESS_INDEX2, "the end of level 2 of the address index"},
        {"number index outside", none, put(0, YDIC_AT_NUMBER_INDEX, u32(0x10000)), 0, YDIC_AT_NUMBER_INDEX,
         "the number index"},
        {"number index too large", none, put(0, YDIC_AT_NUMBER_INDEX + 4, u32(0xFFFFFFFF)), 0,
         YDIC_AT_NUMBER_INDEX, "the number index (4294967295 bytes"},
        {"number index too short", none, put(0, YDIC_AT_NUMBER_INDEX + 4, u32(201)), 0,
         YDIC_AT_NUMBER_INDEX + 4, "the number index has 201 bytes, and needs 202"},
        {"runs outside", none, put(0, YDIC_AT_NUMBER_RUNS, u32(0x10000)), 0, YDIC_AT_NUMBER_RUNS,
         "the number runs"},
        {"last run outside", none, put(YDIC_AT_NUMBER_INDEX, 200, u16(0xFFFF)), 0, YDIC_AT_NUMBER_RUNS,
         "the last number run"},
        {"changes outside", changes(u24(1000001) + u8(1)), put(0, YDIC_AT_CHANGES + 4, u32(0x10000)), 0,
         YDIC_AT_CHANGES, "the change table"},
        {"one-byte character", none, put(0, YDIC_HEADER_LENGTH + 2, "\x29\x21"), 0, YDIC_HEADER_LENGTH + 2,
         "one-byte code 110 stands for 2921, which is no character"},
        {"changes of a dictionary", [](Parts &parts) { parts.image.addChange(1000001, 1); }, whole, 0,
         YDIC_AT_CHANGES + 4, "a dictionary has no change table"},
        {"changes cut", changes(u24(1000001) + u8(1) + u8(0)), whole, 0, YDIC_AT_CHANGES + 4,
         "the change table has 5 bytes"},
        {"changes out of order", changes(u24(1000001) + u8(1) + u24(1000000) + u8(1)), whole, YDIC_AT_CHANGES,
         4, "change of 1000000: not ascending"},
        {"change twice", changes(u24(1000001) + u8(1) + u24(1000001) + u8(2)), whole, YDIC_AT_CHANGES, 4,
         "change of 1000001: not ascending"},
        {"change of no code", changes(u24(10000000) + u8(1)), whole, YDIC_AT_CHANGES, 0,
         "change of 10000000"},
        {"kind of change", changes(u24(1000001) + u8(3)), whole, YDIC_AT_CHANGES, 3,
         "change of 1000001 is of kind 3"},
    };
    return cases;
}

const std::vector<Case> &indexCases()
{
    static const std::vector<Case> cases = {
        {"slice turned round", none, put(YDIC_AT_CODE_INDEX1, 99 * 3 + 1, u16(30)), YDIC_AT_CODE_INDEX1,
         99 * 3, "the slice of prefix 99 ends at 24, before its start 30"},
        {"slice of half an entry", none, put(YDIC_AT_CODE_INDEX1, 100 * 3 + 1, u16(27)), YDIC_AT_CODE_INDEX1,
         99 * 3, "the slice of prefix 99 has 3 bytes"},
        {"slice outside", none, put(YDIC_AT_CODE_INDEX1, 100 * 3 + 1, u16(65532)), YDIC_AT_CODE_INDEX1,
         99 * 3, "the slice of prefix 99 and the entry behind it lie outside the file"},
        {"slice limit", [](Parts &parts) { parts.image.sliceLimit = 24; }, whole, YDIC_AT_CODE_INDEX1, 10 * 3,
         "the slice of prefix 10 and the entry behind it have 24 bytes, the limit is 24"},
        {"prefecture", [](Parts &parts) { parts.image.prefectures[10] = 48; }, whole, YDIC_AT_CODE_INDEX1,
         10 * 3, "prefix 10 is of prefecture 48"},
        {"no prefecture", [](Parts &parts) { parts.image.prefectures[10] = 0; }, whole, YDIC_AT_CODE_INDEX1,
         10 * 3, "prefix 10 is of prefecture 0"},
        {"middle digits", none, put(YDIC_AT_BASE_A, 12, u16(1000)), YDIC_AT_BASE_A, 12,
         "entry of middle 1000"},
        {"last digits", none, put(YDIC_AT_BASE_A, 17, u8(100)), YDIC_AT_BASE_A, 12,
         "entry of middle 1, last digits 100"},
        {"middles out of order", none, put(YDIC_AT_BASE_A, 0, u16(2)), YDIC_AT_BASE_A, 6,
         "entry 10001-04 stands behind 10002-00"},
        {"last digits out of order", none, put(YDIC_AT_BASE_A, 11, u8(61)), YDIC_AT_BASE_A, 12,
         "entry 10001-60 stands behind 10001-61"},
        {"chunk without bytes", none, put(YDIC_AT_BASE_A, 14, u24(SecondChunk)), YDIC_AT_BASE_A, 6,
         "the chunk of 10001 doesn't end behind its start"},
        {"chunk outside, by the entry behind the last", none, put(YDIC_AT_BASE_A, 26, u24(0xFFFFFF)),
         YDIC_AT_BASE_A, 18, "the chunk of 20000 lies outside the file"},
        {"range of a search",
         [](Parts &parts) { parts.second += repeated(record(5, "\x64" + stored(u"大手町")), 635) + "\x66"; },
         whole, YDIC_AT_BASE_A, 6, "a search for 10001-04 reads 5120 bytes, 5119 at most fit"},
        {"chunk of others", none, put(YDIC_AT_BASE_B, ThirdChunk, u24(10002)), YDIC_AT_BASE_B, ThirdChunk,
         "the chunk says that it is of 10002, its entry 10001"},
        {"smallest digits", [](Parts &parts) { parts.thirdSmallest = 59; }, whole, YDIC_AT_BASE_A, 12,
         "the smallest digits of 10001 are 60, its entry says 59"},
        {"code in two ranges", [](Parts &parts) { parts.second += record(60, stored(u"町")); }, whole,
         YDIC_AT_BASE_B, ThirdChunk + 3, "records of 10001-60 aren't found, 60 stands before them"},
        {"code behind a greater one of its range",
         [](Parts &parts) {
             parts.thirdSmallest = 4;
             parts.third = record(4, stored(u"町"));
             parts.runs = run(1000000, 2) + run(1000003, 1) + run(1000104, 2) + run(2000010, 1);
         },
         whole, YDIC_AT_BASE_B, ThirdChunk, "records of 10001-04 aren't found, 05 stands before them"},
        {"runs of a prefix", none, put(YDIC_AT_NUMBER_INDEX, 60, u16(0)), YDIC_AT_NUMBER_INDEX, 60,
         "the runs of prefix 30 begin at 0, those before it at 5"},
        {"empty run", runs(run(1000000, 0)), whole, YDIC_AT_NUMBER_RUNS, 0, "the run of 1000000 is empty"},
        {"runs out of order", runs(run(1000003, 1) + run(1000000, 2)), whole, YDIC_AT_NUMBER_RUNS, 4,
         "the run of 1000000 stands behind 1000003"},
        {"runs that overlap", runs(run(1000000, 2) + run(1000001, 2)), whole, YDIC_AT_NUMBER_RUNS, 4,
         "the run of 1000001 stands behind 1000001"},
        {"run across prefixes", runs(run(1099999, 2)), whole, YDIC_AT_NUMBER_RUNS, 0,
         "the run of 1099999 to 1100000 isn't in prefix 10"},
        {"code in no run", runs(run(1000000, 2) + run(1000104, 2) + run(1000160, 1) + run(2000010, 1)), whole,
         YDIC_AT_NUMBER_RUNS, 0, "code 1000003 is in no run"},
        {"run without a code",
         runs(run(1000000, 2) + run(1000003, 2) + run(1000104, 2) + run(1000160, 1) + run(2000010, 1)), whole,
         YDIC_AT_NUMBER_RUNS, 0, "code 1000004 of a run has no address"},
    };
    return cases;
}

const std::vector<Case> &recordCases()
{
    const auto third = [](const Bytes &body) {
        return [body](Parts &parts) { parts.third = record(60, body); };
    };
    const auto behindSecond = [](const Bytes &body) {
        return [body](Parts &parts) { parts.second += record(5, body); };
    };
    constexpr unsigned ThirdText = ThirdChunk + Header + Common + 1;
    constexpr unsigned BehindSecond = SecondChunk + 39;
    static const std::vector<Case> cases = {
        {"records out of order",
         [](Parts &parts) {
             parts.first = record(0, "\x68") + record(3, parts.chiyoda) + record(1, parts.chiyoda);
         },
         whole, YDIC_AT_BASE_B, FirstChunk + Header + Common + 2 + 7, "record 01 of 10000 stands behind 03"},
        {"no record",
         [](Parts &parts) {
             parts.ueda = stored(u"上田市");
             parts.runs.resize(parts.runs.size() - 4);
         },
         whole, YDIC_AT_BASE_B, UedaChunk, "the chunk of 20000 has no record"},
        {"mark in a text", third(stored(u"町") + "\x68" + stored(u"町")), whole, YDIC_AT_BASE_B,
         ThirdText + 2, "byte 104 has no meaning in a text"},
        {"mark in a common text", [](Parts &parts) { parts.ueda = "\x67" + parts.ueda; }, whole,
         YDIC_AT_BASE_B, UedaChunk + 3, "byte 103 has no meaning in a text"},
        {"cell without a character", third("\xA9\xA1"), whole, YDIC_AT_BASE_B, ThirdText,
         "a9 a1 is no character"},
        {"half a character", third(stored(u"町") + "\xC4"), whole, YDIC_AT_BASE_B, ThirdText + 2,
         "c4 00 is no character"},
        {"half a character before a one-byte code", third("\xC4\x6D" + stored(u"町")), whole, YDIC_AT_BASE_B,
         ThirdText, "c4 6d is no character"},
        {"one mark e", third("\x65" + stored(u"町")), whole, YDIC_AT_BASE_B, ThirdText,
         "mark 65 has no partner"},
        {"one mark g", third(stored(u"町") + "\x67"), whole, YDIC_AT_BASE_B, ThirdText,
         "mark 67 has no partner"},
        {"two marks f", third(stored(u"町") + "\x66\x66"), whole, YDIC_AT_BASE_B, ThirdText,
         "the text ends more than once"},
        {"long result", [](Parts &parts) { parts.third = record(60, repeated(stored(u"町"), 33)); }, whole,
         YDIC_AT_BASE_B, ThirdText - 1, "record of 1000160 shows 82 bytes, 80 at most are seen"},
        {"number of a complete record",
         [](Parts &parts) {
             parts.complete = "\x69" + u24(1000106) + stored(u"三重県／桑名市町");
             parts.second = record(4, stored(u"大手町")) + record(5, parts.complete);
         },
         whole, YDIC_AT_BASE_B, SecondChunk + Header + Common + 7,
         "record of 1000105 says that it is 1000106"},
        {"complete record without solidus", behindSecond("\x69" + u24(1000105) + stored(u"桑名市")), whole,
         YDIC_AT_BASE_B, BehindSecond, "complete record of 1000105 has no solidus"},
        {"silence before a number", behindSecond("\x64\x69" + u24(1000105) + stored(u"三重県／桑名市")),
         whole, YDIC_AT_BASE_B, BehindSecond,
         "record of 1000105: its number stands behind the mark of silence"},
        {"whole area with a text", third("\x68" + stored(u"町")), whole, YDIC_AT_BASE_B, ThirdText - 1,
         "record of 1000160 is the whole area, and has a text"},
        {"cancel in a dictionary", behindSecond("\x6A" + stored(u"町")), whole, YDIC_AT_BASE_B, BehindSecond,
         "record of 1000105 cancels, in a dictionary"},
    };
    return cases;
}

const std::vector<Case> &addressCases()
{
    const auto more = [](unsigned chunk, unsigned length, bool isComplete) {
        return [=](Parts &parts) {
            parts.moreReferences = reference(parts.image.chunkDistance + chunk, length, isComplete);
        };
    };
    constexpr unsigned MoreReferences = ChiyodaReferences + 3 * 5;
    const auto key = [](unsigned number) { return number * unsigned{YDIC_ADDRESS1_ENTRY}; };
    static const std::vector<Case> cases = {
        {"too many keys",
         [](Parts &parts) {
             for (int i = 0; i < 1706; ++i)
                 parts.image.address1 += jis(u"桑名") + u16(0);
         },
         whole, 0, YDIC_AT_ADDRESS_INDEX1 + 4,
         "level 1 of the address index has 1706 keys, 1705 at most fit"},
        {"half a key", none, put(0, YDIC_AT_ADDRESS_INDEX1 + 4, u32(19)), 0, YDIC_AT_ADDRESS_INDEX1 + 4,
         "level 1 of the address index has 19 bytes"},
        {"keys out of order", none, put(YDIC_AT_ADDRESS_INDEX1, key(0), jis(u"千葉")), YDIC_AT_ADDRESS_INDEX1,
         key(1), "key 上田 doesn't stand behind the keys before it"},
        {"key twice", none, put(YDIC_AT_ADDRESS_INDEX1, key(1), jis(u"桑名")), YDIC_AT_ADDRESS_INDEX1, key(1),
         "key 桑名 doesn't stand behind the keys before it"},
        {"key that is no text", none, put(YDIC_AT_ADDRESS_INDEX1, key(2) + 2, "\x7E\x7E"),
         YDIC_AT_ADDRESS_INDEX1, key(2), "key 40697e7e is no text"},
        {"slices out of order", none, put(YDIC_AT_ADDRESS_INDEX1, key(2) + 4, u16(0)), YDIC_AT_ADDRESS_INDEX1,
         key(1), "the slice of key 上田 ends at 0, before its start 13"},
        {"group longer than its slice", [](Parts &parts) { parts.moreGroups = u16(Tokyo << 10 | 1); }, whole,
         YDIC_AT_ADDRESS_INDEX2, MoreReferences, "a group doesn't end in its slice"},
        {"slice with a byte too many", [](Parts &parts) { parts.moreGroups = u8(0); }, whole,
         YDIC_AT_ADDRESS_INDEX2, MoreReferences, "a group doesn't end in its slice"},
        {"prefecture of a group", none, put(YDIC_AT_ADDRESS_INDEX2, UedaGroup, u8(48 << 2)),
         YDIC_AT_ADDRESS_INDEX2, UedaGroup, "a group is of prefecture 48"},
        {"group of no prefecture", none, put(YDIC_AT_ADDRESS_INDEX2, UedaGroup, u8(0)),
         YDIC_AT_ADDRESS_INDEX2, UedaGroup, "a group is of prefecture 0"},
        {"suffix 5", none, put(YDIC_AT_ADDRESS_INDEX2, UedaGroup + 2, u8(5)), YDIC_AT_ADDRESS_INDEX2,
         UedaGroup, "the key of a group ends in class 5"},
        {"suffix 0", none, put(YDIC_AT_ADDRESS_INDEX2, UedaGroup + 2, u8(0)), YDIC_AT_ADDRESS_INDEX2,
         UedaGroup, "the key of a group ends in class 0"},
        {"key of a group", none, put(YDIC_AT_ADDRESS_INDEX2, ChiyodaGroup + 2, "\x7E\x7E"),
         YDIC_AT_ADDRESS_INDEX2, ChiyodaGroup, "the key of a group is no text"},
        {"reference outside", more(0x10000, 9, false), whole, YDIC_AT_ADDRESS_INDEX2, MoreReferences,
         "a reference lies outside the file"},
        {"long reference",
         [](Parts &parts) { parts.own += repeated(record(5, "\x64" + stored(u"町")), 2557) + "\x66"; }, whole,
         YDIC_AT_ADDRESS_INDEX2, 3, "a reference has 10241 bytes, 10240 at most are read"},
        {"reference behind a chunk's start", more(FirstChunk + 1, 26, false), whole, YDIC_AT_ADDRESS_INDEX2,
         MoreReferences, "a reference isn't a chunk from its start to its end"},
        {"reference before a chunk's end", more(FirstChunk, 26, false), whole, YDIC_AT_ADDRESS_INDEX2,
         MoreReferences, "a reference isn't a chunk from its start to its end"},
        {"direct reference to another record", more(SecondChunk + Header + Common, 7, true), whole,
         YDIC_AT_ADDRESS_INDEX2, MoreReferences, "a direct reference isn't a complete record"},
        {"direct reference to another record apart", more(Header + 6, 5, true), whole, YDIC_AT_ADDRESS_INDEX2,
         MoreReferences, "a direct reference isn't a complete record"},
        {"address of a code without one",
         [](Parts &parts) { parts.own = stored(u"桑名市") + record(7, stored(u"町町")); }, whole,
         YDIC_AT_BASE_B, Header + 6, "an address leads to code 1000107, which has none"},
        {"chunk without an address", [](Parts &parts) { parts.reachesThird = false; }, whole, YDIC_AT_BASE_B,
         ThirdChunk, "no address leads to the chunk of 10001"},
        {"empty second range", none, put(0, YDIC_AT_SECOND_START, u16(UedaGroup) + u16(0) + u16(UedaGroup)),
         0, YDIC_AT_SECOND_START, "the second range of the address index goes from 13 to 13"},
        {"second range without a start", none, put(0, YDIC_AT_SECOND_END, u16(UedaGroup)), 0,
         YDIC_AT_SECOND_START, "the second range of the address index goes from 0 to 13"},
        {"second range in the middle of a group", none,
         put(0, YDIC_AT_SECOND_START, u16(UedaGroup) + u16(0) + u16(ChiyodaGroup - 1)),
         YDIC_AT_ADDRESS_INDEX2, UedaGroup, "a group doesn't end in its slice"},
    };
    return cases;
}

std::vector<std::string> check(const Bytes &file)
{
    return checkDictionary({reinterpret_cast<const uint8_t *>(file.data()), file.size()});
}

QStringList lines(const std::vector<std::string> &findings)
{
    QStringList list;
    for (const std::string &finding : findings)
        list << QString::fromStdString(finding);
    return list;
}

void addRows(const std::vector<Case> &cases)
{
    QTest::addColumn<const Case *>("testCase");
    for (const Case &testCase : cases)
        QTest::newRow(testCase.name) << &testCase;
}

void checkRow()
{
    QFETCH(const Case *, testCase);
    Parts parts;
    testCase->change(parts);
    Bytes file = parts.bytes();
    testCase->damage(file);
    const QStringList found = lines(check(file));
    const QString where =
        QString("0x%1: ").arg(startOf(file, testCase->section) + testCase->offset, 6, 16, QChar('0'));
    const QString expected = where + testCase->finding;
    QVERIFY2(found.size() == 1 && found.first().startsWith(expected),
             qPrintable("expected " + expected + "\nfound    " + found.join("\n         ")));
}

} // namespace

/** The rules of the format, each broken alone in a file that keeps all others. */
class DictionaryCheckTest : public QObject
{
    Q_OBJECT
private slots:
    void goodFilesHaveNoFinding_data();
    void goodFilesHaveNoFinding();
    void writtenFilesHaveNoFinding();
    void headerAndTables_data() { addRows(headerCases()); }
    void headerAndTables() { checkRow(); }
    void codeIndexAndRuns_data() { addRows(indexCases()); }
    void codeIndexAndRuns() { checkRow(); }
    void records_data() { addRows(recordCases()); }
    void records() { checkRow(); }
    void addressIndex_data() { addRows(addressCases()); }
    void addressIndex() { checkRow(); }
    void recordMustBeginWithTwoDigits();
    void patchNeedsNoRuns();
    void chunkThatNoSearchReadsIsNotTakenApart();
    void hundredFindingsAreTold();
    void damagedFilesEnd();
};

void DictionaryCheckTest::goodFilesHaveNoFinding_data()
{
    static const std::vector<Case> cases = {
        {"dictionary", none, whole, 0, 0, ""},
        {"patch", changes(u24(1000000) + u8(0) + u24(1000001) + u8(1) + u24(1000002) + u8(2)), whole, 0, 0,
         ""},
        {"cancelling patch",
         [](Parts &parts) {
             patch(1, 2)(parts);
             parts.second += record(5, "\x6A" + stored(u"町")) + record(5, "\x6A\x69" + u24(1000105));
         },
         whole, 0, 0, ""},
        {"whole area that ends at once", [](Parts &parts) { parts.third = record(60, "\x68\x66"); }, whole, 0,
         0, ""},
        {"pairs of marks",
         [](Parts &parts) {
             parts.third = record(60, "\x65" + stored(u"字") + "\x65\x6D\x67" + stored(u"町") + "\x67\x66" +
                                          stored(u"町"));
         },
         whole, 0, 0, ""},
        {"result of 80 bytes", [](Parts &parts) { parts.third = record(60, repeated(stored(u"町"), 32)); },
         whole, 0, 0, ""},
        {"range of 5119 bytes",
         [](Parts &parts) { parts.second += repeated(record(5, "\x64" + stored(u"大手町")), 635); }, whole, 0,
         0, ""},
        {"reference of 10240 bytes",
         [](Parts &parts) { parts.own += repeated(record(5, "\x64" + stored(u"町")), 2557); }, whole, 0, 0,
         ""},
        {"several chunks of the same last digits",
         [](Parts &parts) {
             parts.thirdSmallest = 4;
             parts.third = record(4, stored(u"町"));
             parts.second =
                 record(4, parts.chiyoda) + record(4, "\x69" + u24(1000104) + stored(u"三重県／桑名市町"));
             parts.complete = "\x69" + u24(1000104) + stored(u"三重県／桑名市町");
             parts.own = stored(u"桑名市") + record(4, stored(u"町"));
             parts.runs = run(1000000, 2) + run(1000003, 1) + run(1000104, 1) + run(2000010, 1);
         },
         whole, 0, 0, ""},
        {"group without references", [](Parts &parts) { parts.moreGroups = u16(Tokyo << 10); }, whole, 0, 0,
         ""},
        {"second range", none, put(0, YDIC_AT_SECOND_START, u16(UedaGroup) + u16(0) + u16(ChiyodaGroup)), 0,
         0, ""},
    };
    addRows(cases);
}

void DictionaryCheckTest::goodFilesHaveNoFinding()
{
    QFETCH(const Case *, testCase);
    Parts parts;
    testCase->change(parts);
    Bytes file = parts.bytes();
    testCase->damage(file);
    QCOMPARE(lines(check(file)), QStringList());
}

void DictionaryCheckTest::writtenFilesHaveNoFinding()
{
    const std::vector<Place> places = {
        {1000000, 13, u"千代田区", u"", u"", {}, false},
        {1000003, 13, u"千代田区", u"一ツ橋１丁目", u"一ツ橋", {u"一ツ橋１丁目"}, false},
        {1000003, 24, u"桑名郡木曽岬町", u"雁ケ地", u"雁ケ地", {}, false},
        {1008701, 13, u"千代田区", u"大手町二丁目３－１　郵便局", u"", {}, true},
        {3140001, 8, u"鹿嶋市", u"", u"", {}, false},
        {8491300, 41, u"鹿島市", u"", u"", {}, false},
        {9999999, 47, u"那覇市", u"おもろまち", u"おもろまち", {}, false},
    };
    const WrittenFile file = writeDictionary(1, places);
    QCOMPARE(lines(file.errors), QStringList());
    QCOMPARE(lines(checkDictionary(file.bytes)), QStringList());
}

void DictionaryCheckTest::recordMustBeginWithTwoDigits()
{
    Parts parts;
    parts.common.clear();
    parts.third = "\x64" + stored(u"町");
    Bytes file = parts.bytes();
    const QStringList found = lines(check(file)).filter("a record begins with byte 100");
    QCOMPARE(found.size(), 1);
}

void DictionaryCheckTest::patchNeedsNoRuns()
{
    Parts parts;
    patch(1, 2)(parts);
    parts.runs.clear();
    QCOMPARE(lines(check(parts.bytes())), QStringList());
}

/* Its records would take many times the memory of the file. */
void DictionaryCheckTest::chunkThatNoSearchReadsIsNotTakenApart()
{
    Parts parts;
    parts.second += repeated(Bytes("\x06\xFF\xFF"), 4000);
    const QStringList found = lines(check(parts.bytes()));
    QCOMPARE(found.filter("bytes, 5119 at most fit").size(), 1);
    QCOMPARE(found.filter("is no character"), QStringList());
}

void DictionaryCheckTest::hundredFindingsAreTold()
{
    Parts parts;
    parts.runs = run(3000000, 150);
    QStringList found = lines(check(parts.bytes()));
    QCOMPARE(found.size(), 101);
    QCOMPARE(found.last(), QString("and 57 more")); // 7 codes are in no run
}

void DictionaryCheckTest::damagedFilesEnd()
{
    const Bytes good = Parts().bytes();
    for (size_t length = 0; length < good.size(); ++length)
        QVERIFY(!check(good.substr(0, length)).empty());
    for (size_t at = 0; at < good.size(); ++at) {
        for (const char byte : {'\x00', '\x64', '\x69', '\xFF'}) {
            Bytes file = good;
            file[at] = byte;
            QVERIFY(check(file).size() <= 101);
        }
    }
}

QTEST_MAIN(DictionaryCheckTest)
#include "dictionarychecktest.moc"
