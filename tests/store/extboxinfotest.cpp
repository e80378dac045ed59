#include "boxfixture.h"

#include <QtTest>

using namespace boxfixture;

class ExtBoxInfoTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void items();
    void nothingMoreIsSet();
    void itemNumbers_data();
    void itemNumbers();
    void noPronunciationPairs();
    void sortKeys_data();
    void sortKeys();
    void sortKeyRefusals();
    void failures();

private:
    uint32_t m_handle = 0;
    PioExtBoxInfo *m_info = nullptr;
};

void ExtBoxInfoTest::initTestCase()
{
    QCOMPARE(makeBox("F0:INFO.BOX"), PdtmStatus(PdtmOk));
    m_handle = _BoxOpenRwMode("F0:INFO.BOX", 0);
    QVERIFY(m_handle);
}

void ExtBoxInfoTest::init()
{
    m_info = _PioNewExtBoxInfo("F0:INFO.BOX", m_handle);
    QVERIFY(m_info);
}

void ExtBoxInfoTest::cleanup()
{
    _PioDisposeExtBoxInfo(m_info);
}

void ExtBoxInfoTest::cleanupTestCase()
{
    _BoxClose(m_handle);
}

void ExtBoxInfoTest::items()
{
    struct Expected
    {
        const char *code;
        int type, kind;
        const char *label;
    };
    const Expected expected[] = {
        {"NAPR", ItemTextUtf8, KindText, "Name"},    {"aDRS", ItemTextUtf8, KindText, "Address"},
        {"CTGR", ItemCategory, KindCategory, ""},    {"AGEU", ItemUshort, KindUshort, "Age"},
        {"ATTR", ItemUchar, KindUchar, "Attribute"}, {"CTTM", ItemTime, KindTime, "Created"},
        {"MDTM", ItemTime, KindTime, "Modified"},    {"SYID", ItemUlong, KindUlong, "Sync id"},
    };
    QCOMPARE(size_t(m_info->itemCount), std::size(expected));
    for (size_t i = 0; i < std::size(expected); ++i) {
        const PioExtItem &item = m_info->items[i];
        QCOMPARE(QByteArray(item.code, 4), QByteArray(expected[i].code));
        QCOMPARE(int(item.type), expected[i].type);
        QCOMPARE(int(item.kind), expected[i].kind);
        QCOMPARE(item.label, expected[i].label);
    }
}

void ExtBoxInfoTest::nothingMoreIsSet()
{
    QCOMPARE(int(m_info->secondSortItem[0]), 0);
    QCOMPARE(int(m_info->defaultSearchItem[0]), 0);
    for (int i = 0; i < m_info->itemCount; ++i) {
        QCOMPARE(m_info->items[i].propertyKind, 0U);
        QCOMPARE(m_info->items[i].property, nullptr);
    }
}

void ExtBoxInfoTest::itemNumbers_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<uint>("number");
    QTest::newRow("declared") << QByteArray("NAPR") << 1U;
    QTest::newRow("declared with a lower-case letter") << QByteArray("ADRS") << 2U;
    QTest::newRow("its own spelling") << QByteArray("aDRS") << 2U;
    QTest::newRow("asked with a lower-case letter") << QByteArray("cTGR") << 3U;
    QTest::newRow("implicit") << QByteArray("SYID") << 8U;
    QTest::newRow("only four bytes count") << QByteArray("CTGR and more") << 3U;
    QTest::newRow("unknown") << QByteArray("ZZZZ") << 0U;
    QTest::newRow("other case behind the first letter") << QByteArray("Napr") << 0U;
}

void ExtBoxInfoTest::itemNumbers()
{
    QFETCH(QByteArray, code);
    QFETCH(uint, number);
    QCOMPARE(_PioExtGetItemNo(m_info, code.constData()), number);
}

void ExtBoxInfoTest::noPronunciationPairs()
{
    for (uint32_t number = 0; number <= 9; ++number)
        QCOMPARE(_PioExtGetYomiPairItemNo(m_info, number), 0U);
}

void ExtBoxInfoTest::sortKeys_data()
{
    QTest::addColumn<uint>("number");
    QTest::addColumn<int>("ascending");
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("text up") << 1U << 1 << QByteArray("NAPR\xFE\x80");
    QTest::newRow("text down") << 1U << 0 << QByteArray("NAPR\xFE\x81");
    QTest::newRow("the declared spelling") << 2U << 1 << QByteArray("aDRS\xFE\x80");
    QTest::newRow("categories") << 3U << 1 << QByteArray("CTGR\xFE\x82");
    QTest::newRow("number up, any true") << 4U << 0x100 << QByteArray("AGEU\xFE\x82");
    QTest::newRow("number down") << 4U << 0 << QByteArray("AGEU\xFE\x83");
    QTest::newRow("time, implicit") << 7U << 0 << QByteArray("MDTM\xFE\x83");
}

void ExtBoxInfoTest::sortKeys()
{
    QFETCH(uint, number);
    QFETCH(int, ascending);
    QFETCH(QByteArray, key);
    QByteArray written("....... untouched");
    QCOMPARE(PioSetSortCond(written.data(), m_info, number, ascending), 6);
    QCOMPARE(written, key + ". untouched");
}

void ExtBoxInfoTest::sortKeyRefusals()
{
    QByteArray written("......");
    QCOMPARE(PioSetSortCond(written.data(), m_info, 0, 1), 0);
    QCOMPARE(PioSetSortCond(written.data(), m_info, 9, 1), 0);
    QCOMPARE(PioSetSortCond(written.data(), nullptr, 1, 1), 0);
    QCOMPARE(PioSetSortCond(nullptr, m_info, 1, 1), 0);
    QCOMPARE(written, QByteArray("......"));
}

void ExtBoxInfoTest::failures()
{
    QCOMPARE(_PioNewExtBoxInfo("F0:INFO.BOX", 0), nullptr);
    QCOMPARE(_PioNewExtBoxInfo("F0:INFO.BOX", 4711), nullptr);
    QCOMPARE(_PioNewExtBoxInfo(nullptr, m_handle), nullptr);
    QCOMPARE(_PioExtGetItemNo(nullptr, "NAPR"), 0U);
    QCOMPARE(_PioExtGetItemNo(m_info, nullptr), 0U);
    _PioDisposeExtBoxInfo(nullptr);
}

QTEST_GUILESS_MAIN(ExtBoxInfoTest)
#include "extboxinfotest.moc"
