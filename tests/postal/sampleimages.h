#ifndef KY_TEST_SAMPLEIMAGES_H
#define KY_TEST_SAMPLEIMAGES_H

#include "imagebuilder.h"

#include <vector>

/**
 * @file sampleimages.h
 * A small dictionary and a patch for it that have something of everything, for tests that damage them.
 */

namespace imagebuilder {

/** A record that is a whole address. */
inline Bytes completeRecord(uint8_t last2, uint32_t code, std::u16string_view prefecture,
                            std::u16string_view rest)
{
    return record(last2, u8(YDIC_MARK_COMPLETE) + u24(code) + stored(prefecture) + "\xA1\xBF" + stored(rest));
}

/** Text between two marks. */
inline Bytes between(char mark, std::u16string_view text)
{
    return mark + stored(text) + mark;
}

/** One-byte text codes of the samples: the first is 109. */
inline Bytes sampleCharacters()
{
    return jis(u"町丁目一二三");
}

inline Bytes sampleTokyo()
{
    const Bytes chome = "\x70\x6E\x6F"; // 一丁目
    return stored(u"千代田区") + record(0, "h") + record(1, stored(u"千代田")) +
           record(3, stored(std::u16string(50, u'長'))) + record(4, stored(u"大手") + "\x6D") +
           record(5, stored(u"丸") + between('e', u"の") + stored(u"内") + between('g', u"ビル") + "f") +
           record(5, stored(u"丸の内") + chome) + record(5, stored(u"丸の内") + chome) +
           record(6, "d" + stored(u"大丸")) + completeRecord(7, 1001701, u"東京都", u"青ヶ島村中原");
}

/** @return the reference of the chunk that was added */
inline Bytes addReferencedChunk(Image &image, uint32_t firstFive, uint8_t smallest, const Bytes &records)
{
    const uint32_t offset = image.nextReference();
    return reference(offset, image.addChunk(firstFive, smallest, records));
}

inline Image sampleDictionary()
{
    Image image{.ask1ji = sampleCharacters()};
    image.prefectures = {{6, 1}, {31, 8}, {60, 26}, {84, 41}};
    const Bytes sapporo = addReferencedChunk(image, 6000, 0,
                                             stored(u"札幌市中央区") + record(0, "h") +
                                                 record(42, stored(u"大通西") + "\x70\x6E\x6F") +
                                                 record(61, stored(u"南") + "\x70" + stored(u"条西")));
    const uint32_t tokyoStart = image.nextReference();
    const Bytes tokyo = addReferencedChunk(image, 10000, 0, sampleTokyo());
    const Bytes island = completeRecord(7, 1001701, u"東京都", u"青ヶ島村中原");
    const auto islandStart = tokyoStart + 3 + static_cast<uint32_t>(sampleTokyo().size() - island.size());
    const Bytes kashima =
        addReferencedChunk(image, 31400, 0, stored(u"鹿嶋市") + record(7, stored(u"神向寺")));
    const Bytes kyoto = addReferencedChunk(image, 60481, 1,
                                           stored(u"京都市中京区") + record(32, stored(u"場之") + "\x6D") +
                                               record(33, stored(u"亀屋")));
    const Bytes saga = addReferencedChunk(image, 84913, 0, stored(u"鹿島市") + record(12, stored(u"納富分")));
    image.addRun(600000, 1);
    image.addRun(600042, 1);
    image.addRun(1000000, 8);
    image.addRun(3140007, 1);
    image.addRun(6048132, 2);
    image.addRun(8491312, 1);
    image.addAddressKey(u"京都", group(26, jis(u"市中京"), 2, kyoto));
    image.addAddressKey(u"札幌", group(1, jis(u"市中央"), 2, sapporo));
    image.addAddressKey(u"鹿嶋", group(8, Bytes(), 1, kashima));
    image.addAddressKey(u"青ケ", group(13, reference(islandStart, uint32_t(island.size()), true)));
    image.addAddressKey(u"千代", group(13, jis(u"田"), 2, tokyo));
    image.secondStart = static_cast<uint16_t>(image.address2.size());
    image.address2 += group(41, Bytes(), 1, saga);
    image.secondEnd = static_cast<uint16_t>(image.address2.size());
    return image;
}

/** Takes 場之町 away, replaces what 100-0005 is, and adds 100-0009. */
inline Image samplePatch()
{
    Image image{.type = YDIC_PATCH, .corrects = 1, .edition = 2, .serial = 1, .ask1ji = sampleCharacters()};
    image.prefectures = {{60, 26}};
    const Bytes tokyo =
        addReferencedChunk(image, 10000, 5,
                           stored(u"千代田区") + record(5, "j" + stored(u"丸の内") + "\x70\x6E\x6F") +
                               record(5, stored(u"丸ノ内")) + record(9, stored(u"平河") + "\x6D"));
    const Bytes kyoto = addReferencedChunk(
        image, 60481, 32, stored(u"京都市中京区") + record(32, "j" + stored(u"場之") + "\x6D"));
    image.addRun(1000005, 1);
    image.addRun(1000009, 1);
    image.addChange(1000005, 0);
    image.addChange(1000009, 1);
    image.addChange(6048132, 2);
    image.addAddressKey(u"京都", group(26, jis(u"市中京"), 2, kyoto));
    image.addAddressKey(u"千代", group(13, jis(u"田"), 2, tokyo));
    return image;
}

/** Codes whose search goes through every part of the samples. */
inline const std::vector<const char *> &sampleCodes()
{
    static const std::vector<const char *> codes{"0000000",  "0600042", "1000001", "1000003",
                                                 "100-0005", "1000006", "1000007", "1000009",
                                                 "3140007",  "6048132", "8491312", "9999999"};
    return codes;
}

/** Addresses whose search goes through every part of the samples. */
inline const std::vector<std::u16string> &sampleAddresses()
{
    static const std::vector<std::u16string> addresses{u"東京都千代田区丸の内一丁目",
                                                       u"千代田区丸内",
                                                       u"京都市中京区烏丸通三条上ル場之町",
                                                       u"札幌市中央区大通西１丁目",
                                                       u"札幌市中央区南１西",
                                                       u"札幌市中央区大通西１−１０",
                                                       u"青ケ島村中原",
                                                       u"鹿島市納富分",
                                                       u"佐賀県鹿嶋市神向寺２３",
                                                       u"千代"};
    return addresses;
}

} // namespace imagebuilder

#endif
