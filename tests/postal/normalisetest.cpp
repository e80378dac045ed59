#include "querytext.h"

#include <QTest>

/** What the search by address makes of an address as typed. */
class NormaliseTest : public QObject
{
    Q_OBJECT
private slots:
    void sectionsAreDropped_data();
    void sectionsAreDropped();
    void numbersOfTwoDigits_data();
    void numbersOfTwoDigits();
    void onlyTheLastNumberIsRemembered();
    void tenAtTheStartKeepsItsPlainInfo();
    void insertedTenNeedsRoom_data();
    void insertedTenNeedsRoom();
    void noMoreTensWhenThereIsNoRoom();
    void lastTooriCounts_data();
    void lastTooriCounts();
    void matchMayNotEndInsideNumber_data();
    void matchMayNotEndInsideNumber();
    void separators_data();
    void separators();
    void municipalities_data();
    void municipalities();
    void longestAddressStaysWhole();
    void everythingBehindTheEndIsZero();
    void oldStateDoesNotShow();
    void flagsOfTheCallerStay();
    void halfACharacterIsLeftOut();
    void anyBytesAreSafe();
};

void NormaliseTest::sectionsAreDropped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("isRemoved");
    QTest::newRow("banchi") << "山村五番地"
                            << "山村五番" << true;
    QTest::newRow("banchi twice") << "一番地二番地"
                                  << "一番二番" << true;
    QTest::newRow("banchi at the start") << "番地川"
                                         << "番川" << true;
    QTest::newRow("one chi goes with a ban") << "番地地"
                                             << "番地" << true;
    QTest::newRow("banchi in the last of forty characters")
        << QString(38, u'山') + "番地" << QString(38, u'山') + "番" << true;
    QTest::newRow("ban alone stays") << "五番町"
                                     << "五番町" << false;
    QTest::newRow("chi alone stays") << "地番"
                                     << "地番" << false;
    QTest::newRow("oaza") << "山村大字川"
                          << "山村川" << true;
    QTest::newRow("oaza at the start") << "大字川"
                                       << "川" << true;
    QTest::newRow("koaza") << "山村小字川"
                           << "山村川" << true;
    QTest::newRow("koaza at the start") << "小字川"
                                        << "川" << true;
    QTest::newRow("oaza and aza") << "大字山田字川"
                                  << "山田川" << true;
    QTest::newRow("oaza twice") << "大字大字川"
                                << "川" << true;
    QTest::newRow("oaza twice behind a word") << "山大字大字川"
                                              << "山川" << true;
    QTest::newRow("oaza alone") << "大字"
                                << "" << true;
    QTest::newRow("aza") << "山田字川"
                         << "山田川" << true;
    QTest::newRow("aza at the end") << "山田字"
                                    << "山田" << true;
    QTest::newRow("aza twice") << "山田字字川"
                               << "山田川" << true;
    QTest::newRow("aza at the start stays") << "字川"
                                            << "字川" << false;
    QTest::newRow("writing") << "山田文字"
                             << "山田文字" << false;
    QTest::newRow("ten thousand") << "山田万字"
                                  << "山田万字" << false;
    QTest::newRow("ten") << "山田十字川"
                         << "山田十字川" << false;
    QTest::newRow("aza behind writing") << "文字字川"
                                        << "文字川" << true;
    QTest::newRow("great alone stays") << "大川"
                                       << "大川" << false;
    QTest::newRow("a ten of digits is no ten yet") << "山１０字川"
                                                   << "山十川" << true;
}

void NormaliseTest::sectionsAreDropped()
{
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    QFETCH(bool, isRemoved);
    const ydic_search search = normalisedSearch(typed);
    QCOMPARE(queryText(search), expected);
    QCOMPARE(search.queryLen, expected.size());
    QCOMPARE((search.flags & YDIC_REMOVED) != 0, isRemoved);
}

void NormaliseTest::numbersOfTwoDigits_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("info");
    QTest::addColumn<int>("flags");
    QTest::newRow("10") << "北１０川"
                        << "北十川" << 1 << 0xEC00 << 1 + 4 + 8;
    QTest::newRow("12") << "北１２川"
                        << "北十二川" << 1 << 0xEF00 << 1 + 4;
    QTest::newRow("11") << "北１１川"
                        << "北十一川" << 1 << 0xEF00 << 1 + 4;
    QTest::newRow("20") << "北２０川"
                        << "北二十川" << 2 << 0xEE00 << 1 + 4;
    QTest::newRow("23") << "北２３川"
                        << "北二十三川" << 2 << 0xED00 << 1 + 4 + 16;
    QTest::newRow("99") << "北９９川"
                        << "北九十九川" << 2 << 0xED00 << 1 + 4 + 16;
    QTest::newRow("23 alone") << "２３"
                              << "二十三" << 1 << 0xED00 << 1 + 4 + 16;
    QTest::newRow("10 at the end") << "北１０"
                                   << "北十" << 1 << 0xEC00 << 1 + 4 + 8;
    QTest::newRow("ten as written") << "北十川"
                                    << "北十川" << 1 << 0xEB00 << 1 + 4;
    QTest::newRow("one digit") << "北１川"
                               << "北一川" << 1 << 1 << 1;
    QTest::newRow("three digits") << "北１２３"
                                  << "北一二三" << 1 << 1 << 1;
    QTest::newRow("three digits, the end") << "北１２３"
                                           << "北一二三" << 3 << 3 << 1;
    QTest::newRow("four digits") << "北１２３４"
                                 << "北一二三四" << 3 << 3 << 1;
    QTest::newRow("five digits") << "北１２３４５"
                                 << "北一二三四五" << 4 << 4 << 1;
    QTest::newRow("hundred") << "北１００"
                             << "北一００" << 3 << 0xEA00 << 1;
    QTest::newRow("zero in front") << "北０９"
                                   << "北０九" << 1 << 0xEA00 << 1;
    QTest::newRow("zero and two digits") << "北０２３"
                                         << "北０二十三" << 3 << 0xED00 << 1 + 4 + 16;
    QTest::newRow("zero alone") << "北０川"
                                << "北０川" << 1 << 0xEA00 << 0;
    QTest::newRow("numerals stay") << "北一二川"
                                   << "北一二川" << 1 << 0x8001 << 1;
    QTest::newRow("nine as written") << "北九川"
                                     << "北九川" << 1 << 0x8009 << 1;
}

void NormaliseTest::numbersOfTwoDigits()
{
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    QFETCH(int, position);
    QFETCH(int, info);
    QFETCH(int, flags);
    const ydic_search search = normalisedSearch(typed);
    QCOMPARE(queryText(search), expected);
    QCOMPARE(search.queryLen, expected.size());
    QCOMPARE(int{search.charInfo[position]}, info);
    QCOMPARE(int{search.flags}, flags);
}

void NormaliseTest::onlyTheLastNumberIsRemembered()
{
    const ydic_search search = normalisedSearch("北２３川１０山１２森");
    QCOMPARE(queryText(search), QString("北二十三川十山十二森"));
    QCOMPARE(int{search.charInfo[2]}, 0xEB00);
    QCOMPARE(int{search.charInfo[5]}, 0xEB00);
    QCOMPARE(int{search.charInfo[7]}, 0xEF00);
    QCOMPARE(int{search.flags}, 1 + 4 + 8 + 16);
}

void NormaliseTest::tenAtTheStartKeepsItsPlainInfo()
{
    QCOMPARE(int{normalisedSearch("１０川").charInfo[0]}, 0xEB00);
    QCOMPARE(int{normalisedSearch("１２川").charInfo[0]}, 0xEB00);
    QCOMPARE(int{normalisedSearch("２０川").charInfo[1]}, 0xEE00);
    // The last number counts, even where it leaves nothing to remember
    const ydic_search search = normalisedSearch("１０川１２");
    QCOMPARE(int{search.charInfo[2]}, 0xEF00);
}

void NormaliseTest::insertedTenNeedsRoom_data()
{
    QTest::addColumn<int>("characters");
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("expected");
    QTest::newRow("78 bytes afterwards") << 38 << "２３"
                                         << "二十三";
    QTest::newRow("80 bytes afterwards") << 39 << "２３"
                                         << "二三";
    QTest::newRow("82 bytes afterwards") << 40 << "２３"
                                         << "二三";
    QTest::newRow("nothing is added to 12") << 40 << "１２"
                                            << "十二";
    QTest::newRow("nothing is added to 20") << 40 << "２０"
                                            << "二十";
    QTest::newRow("10 becomes shorter") << 40 << "１０"
                                        << "十";
}

void NormaliseTest::insertedTenNeedsRoom()
{
    QFETCH(int, characters);
    QFETCH(QString, number);
    QFETCH(QString, expected);
    const QString rest(characters - 2, u'山');
    QCOMPARE(normalised(rest + number), rest + expected);
    QCOMPARE(normalised("川" + number + rest.mid(1)), "川" + expected + rest.mid(1));
}

void NormaliseTest::noMoreTensWhenThereIsNoRoom()
{
    const QString rest(34, u'山');
    const ydic_search search = normalisedSearch("２３" + rest + "１０");
    QCOMPARE(queryText(search), "二十三" + rest + "十");
    QCOMPARE(normalised("２３" + rest + "山１０"), "二三" + rest + "山一０");
}

void NormaliseTest::lastTooriCounts_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("afterToori");
    QTest::addColumn<int>("flags");
    QTest::newRow("none") << "山川" << 0 << 0;
    QTest::newRow("in the middle") << "山通川" << 2 << 1;
    QTest::newRow("at the end") << "山川通" << 3 << 1;
    QTest::newRow("the last one") << "山通川通森" << 4 << 1;
    QTest::newRow("at the start") << "通山" << 0 << 0;
    QTest::newRow("at the start and later") << "通山通" << 3 << 1;
    QTest::newRow("behind what is dropped") << "大字山通" << 2 << 1 + 2;
    QTest::newRow("behind an added ten") << "２３通" << 4 << 1 + 4 + 16;
}

void NormaliseTest::lastTooriCounts()
{
    QFETCH(QString, typed);
    QFETCH(int, afterToori);
    QFETCH(int, flags);
    const ydic_search search = normalisedSearch(typed);
    QCOMPARE(int{search.afterToori}, afterToori);
    QCOMPARE(int{search.flags}, flags);
}

void NormaliseTest::matchMayNotEndInsideNumber_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QList<int>>("places");
    const auto row = [](const char *name, const char *typed, const QList<int> &places) {
        QTest::newRow(name) << QString(typed) << places;
    };
    row("no number", "山川", {});
    row("one digit", "山１川", {});
    row("digits", "１２３", {1, 2});
    row("digit and zeros", "１００", {1, 2});
    row("digit and ten as written", "２十", {1});
    row("digit and numeral", "１一", {});
    row("two numerals at the end", "一二", {1});
    row("two numerals and a block", "一二丁", {1});
    row("two numerals and a number of a house", "一二番", {1});
    row("two numerals and another character", "一二川", {});
    row("three numerals", "一二三川", {1});
    row("three numerals at the end", "一二三", {1, 2});
    row("numeral and ten", "二十", {1});
    row("numeral and zero", "二０川", {1});
    row("numeral and digit", "一１", {});
    row("ten and numeral", "山十二", {2});
    row("ten and digit", "山十２", {2});
    row("ten and ten", "山十十", {});
    row("ten and another character", "山十川", {});
    row("12", "山１２川", {2});
    row("10", "山１０川", {});
    row("10 and a numeral", "山１０一川", {});
    row("20", "山２０川", {2});
    row("20 and a numeral", "山２０一川", {2});
    row("23", "山２３川", {2, 3});
    row("zero and digit", "山０１", {2});
    row("zero and zero", "山００", {2});
    row("zero and numeral", "山０一", {});
    row("zero and ten", "山０十", {});
}

void NormaliseTest::matchMayNotEndInsideNumber()
{
    QFETCH(QString, typed);
    QFETCH(QList<int>, places);
    const ydic_search search = normalisedSearch(typed);
    QList<int> found;
    for (int i = 0; i < YDIC_POSITIONS; ++i) {
        if (search.noEnd[i] == 1)
            found += i;
        else
            QCOMPARE(int{search.noEnd[i]}, 0);
    }
    QCOMPARE(found, places);
}

void NormaliseTest::separators_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    const auto row = [](const char *name, const char *typed, const char *expected, int first, int second) {
        QTest::newRow(name) << QString(typed) << QString(expected) << first << second;
    };
    row("minus", "３−５", "三ノ五", 1, 0);
    row("long vowel", "３ー５", "三ノ五", 1, 0);
    row("dash", "３―５", "三ノ五", 1, 0);
    row("hyphen", "３‐５", "三ノ五", 1, 0);
    row("no in katakana", "３ノ５", "三ノ五", 1, 0);
    row("no in hiragana", "３の５", "三ノ五", 1, 0);
    row("no in kanji", "３之５", "三ノ五", 1, 0);
    row("wave is none", "３～５", "三～五", 0, 0);
    row("two", "山３−５−１", "山三ノ五ノ一", 2, 4);
    row("the third stays", "１−２−３−４", "一ノ二ノ三−四", 1, 3);
    row("numerals", "三−五", "三ノ五", 1, 0);
    row("ten in front", "山十−５", "山十ノ五", 2, 0);
    row("ten behind", "５−十", "五ノ十", 1, 0);
    row("10 in front", "山１０−５", "山十ノ五", 2, 0);
    row("10 behind", "５−１０", "五ノ十", 1, 0);
    row("20 in front", "山２０−５", "山二十ノ五", 3, 0);
    row("20 behind", "５−２０", "五ノ二十", 1, 0);
    row("12 in front", "山１２−５", "山十二ノ五", 3, 0);
    row("12 behind", "５−１２", "五ノ十二", 1, 0);
    row("23 in front", "山２３−５", "山二十三ノ五", 4, 0);
    row("zero in front", "１００−５", "一００−五", 0, 0);
    row("zero behind", "５−０５", "五−０五", 0, 0);
    row("at the start", "−５", "−五", 0, 0);
    row("at the end", "５−", "五−", 0, 0);
    row("no number in front", "川−５", "川−五", 0, 0);
    row("no number behind", "５−川", "五−川", 0, 0);
    row("no between words", "山の川", "山ノ川", 0, 0);
    row("twice", "５−−３", "五−−三", 0, 0);
    row("the first that fits", "山−５−３", "山−五ノ三", 3, 0);
}

void NormaliseTest::separators()
{
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    QFETCH(int, first);
    QFETCH(int, second);
    const ydic_search search = normalisedSearch(typed);
    QCOMPARE(queryText(search), jisText(jisBytes(expected)));
    QCOMPARE(int{search.sepPos1}, first);
    QCOMPARE(int{search.sepPos2}, second);
}

void NormaliseTest::municipalities_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::newRow("old cypress") << "檜原村"
                                 << "桧原村";
    QTest::newRow("small ke") << "龍ヶ崎市"
                              << "竜ケ崎市";
    QTest::newRow("ten") << "十日町市"
                         << "十日町市";
    QTest::newRow("four") << "四日市市"
                          << "四日市市";
    QTest::newRow("tsu") << "つくば市"
                         << "ツくば市";
    QTest::newRow("no") << "紀の川市"
                        << "紀ノ川市";
    QTest::newRow("island") << "鹿嶋市"
                            << "鹿島市";
    QTest::newRow("ward of Kyoto") << "京都市中京区"
                                   << "京都市中京区";
    QTest::newRow("ri") << "リ"
                        << "り";
    QTest::newRow("rabbit") << "菟田野町"
                            << "兎田野町";
    QTest::newRow("sword") << "劔川町"
                           << "剣川町";
}

void NormaliseTest::municipalities()
{
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    QCOMPARE(normalised(typed), expected);
    QCOMPARE(normalised(expected), expected);
}

void NormaliseTest::longestAddressStaysWhole()
{
    const QString address = QString(39, u'山') + "檜";
    const ydic_search search = normalisedSearch(address);
    QCOMPARE(queryText(search), QString(39, u'山') + "桧");
    QCOMPARE(int{search.queryLen}, 40);
    QCOMPARE(int{search.query[80]}, 0);
}

void NormaliseTest::everythingBehindTheEndIsZero()
{
    const ydic_search search = normalisedSearch("京都市中京区川上る大字１番地２３番地");
    const int length = search.queryLen;
    QCOMPARE(queryText(search), QString("京都市中京区一番二十三番"));
    for (int i = 2 * length; i < int(sizeof search.query); ++i)
        QCOMPARE(int{search.query[i]}, 0);
    for (int i = length; i < YDIC_POSITIONS; ++i)
        QCOMPARE(int{search.charInfo[i]}, 0);
}

void NormaliseTest::oldStateDoesNotShow()
{
    ydic_search search = normalisedSearch("山通２３−５−１１一二三四五六七");
    set_moji(jisBytes("川").constData(), &search);
    yuragi_check(&search);
    QCOMPARE(queryText(search), QString("川"));
    QCOMPARE(int{search.queryLen}, 1);
    QCOMPARE(int{search.afterToori}, 0);
    QCOMPARE(int{search.sepPos1}, 0);
    QCOMPARE(int{search.sepPos2}, 0);
    for (int i = 0; i < YDIC_POSITIONS; ++i) {
        QCOMPARE(int{search.charInfo[i]}, 0);
        QCOMPARE(int{search.noEnd[i]}, 0);
    }
}

void NormaliseTest::flagsOfTheCallerStay()
{
    ydic_search search = searchOf("鹿嶋市");
    search.flags = YDIC_SAYS_KASHIMA;
    yuragi_check(&search);
    QCOMPARE(int{search.flags}, YDIC_SAYS_KASHIMA | YDIC_HAS_VARIANT);
}

void NormaliseTest::halfACharacterIsLeftOut()
{
    ydic_search search = {};
    qstrcpy(search.query, jisBytes("山川") + '\x30');
    yuragi_check(&search);
    QCOMPARE(queryText(search), QString("山川"));
    QCOMPARE(int{search.queryLen}, 2);
    QCOMPARE(int{search.query[4]}, 0);
}

void NormaliseTest::anyBytesAreSafe()
{
    quint32 state = 1;
    const auto next = [&state] { return state = state * 1664525 + 1013904223; };
    const QByteArray words = jisBytes("京都市区番地字大小上る東入側町丁目筋通１２３０十一二三−の北");
    for (int round = 0; round < 20000; ++round) {
        ydic_search search = {};
        const int length = int(next() >> 8) % 81;
        for (int i = 0; i < length; ++i) {
            const int word = int(next() >> 8) % int(words.size() / 2);
            const bool isOdd = round % 4 == 0;
            search.query[i] = isOdd ? char(1 + (next() >> 8) % 127) : words[2 * word + i % 2];
            if (!isOdd && i % 2 == 1)
                search.query[i - 1] = words[2 * word];
        }
        yuragi_check(&search);
        QVERIFY(search.queryLen >= 0 && search.queryLen <= 40);
        QCOMPARE(int(qstrlen(search.query)), 2 * search.queryLen);
        QVERIFY(search.afterToori <= search.queryLen);
        QVERIFY(search.sepPos1 < qMax<int>(1, search.queryLen));
        QCOMPARE(int{search.charInfo[search.queryLen]}, 0);
    }
}

QTEST_GUILESS_MAIN(NormaliseTest)
#include "normalisetest.moc"
