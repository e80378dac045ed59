#include "dictionarywriter.h"
#include "searcheverything.h"

#include <QTest>

using namespace imagebuilder;

namespace {

/** Nulls, ones, and every flipped bit. */
std::vector<char> damagesOf(char byte)
{
    std::vector<char> damages{'\x00', '\xFF'};
    for (int bit = 0; bit < 8; ++bit)
        damages.push_back(static_cast<char>(byte ^ 1 << bit));
    return damages;
}

/** The samples' places, as the writer has them. */
Bytes writtenDictionary()
{
    const std::vector<ZipDict::Place> places{
        {600042, 1, u"札幌市中央区", u"大通西一丁目", u"大通西一丁目", {}, false},
        {1000000, 13, u"千代田区", {}, {}, {}, false},
        {1000005, 13, u"千代田区", u"丸の内", u"丸の内", {u"丸ノ内一丁目"}, false},
        {1000005, 13, u"千代田区", u"大丸", u"大丸", {}, false},
        {3140007, 8, u"鹿嶋市", u"神向寺", u"神向寺", {}, false},
        {6048132, 26, u"京都市中京区", u"場之町", u"場之町", {}, false},
        {8491312, 41, u"鹿島市", u"納富分", u"納富分", {}, false},
    };
    const ZipDict::WrittenFile file = ZipDict::writeDictionary(1, places);
    return {file.bytes.begin(), file.bytes.end()};
}

/** Codes that an address leads to. */
QList<QByteArray> codesOf(std::u16string_view address, ydic_info *info)
{
    QByteArray result(20 * 8, 'x');
    const int count = Adr2ZipSearch(jis(address).c_str(), 20, result.data(), info);
    QList<QByteArray> codes;
    for (int i = 0; i < count; ++i)
        codes.append(QByteArray(result.constData() + i * 8));
    return codes;
}

/** Addresses of a code. */
QStringList addressesOf(const char *code, ydic_info *info)
{
    QByteArray result(20 * (YDIC_ADDRESS_LENGTH + 1), 'x');
    const int count = Zip2AdrSearch(code, 20, result.data(), info);
    QStringList addresses;
    const char *at = result.constData();
    for (int i = 0; i < count; ++i, at += strlen(at) + 1)
        addresses.append(QString::fromStdU16String(ZipDict::fromJis(at)));
    return addresses;
}

} // namespace

/** Damaged files: every search ends, stays in its buffers, and gives an error or an answer that is one. */
class DamageTest : public QObject
{
    Q_OBJECT
private slots:
    void samplesAnswerWhenWhole();
    void patchedSampleAnswersWhenWhole();
    void writtenDictionaryAnswersWhenWhole();
    void everyByteOfTheDictionary_data();
    void everyByteOfTheDictionary();
    void everyByteOfThePatch();
    void truncations_data();
    void truncations();
    void truncationsOfThePatch();
};

void DamageTest::samplesAnswerWhenWhole()
{
    OpenImages files(sampleDictionary().bytes());
    ydic_info *info = files.info();
    QCOMPARE(addressesOf("1000000", info), QStringList{"東京都／千代田区"});
    QCOMPARE(addressesOf("1000005", info),
             (QStringList{"東京都／千代田区丸の内", "東京都／千代田区丸の内一丁目"}));
    QCOMPARE(addressesOf("1000006", info), QStringList());
    QCOMPARE(addressesOf("1000007", info), QStringList{"東京都／青ヶ島村中原"});
    QCOMPARE(addressesOf("0600042", info), QStringList{"北海道／札幌市中央区大通西一丁目"});
    QCOMPARE(codesOf(u"東京都千代田区丸の内一丁目", info), QList<QByteArray>{"1000005"});
    QCOMPARE(codesOf(u"千代田区大丸", info), QList<QByteArray>{"1000006"});
    QCOMPARE(codesOf(u"京都市中京区烏丸通三条上ル場之町", info), QList<QByteArray>{"6048132"});
    QCOMPARE(codesOf(u"札幌市中央区大通西１丁目", info), QList<QByteArray>{"0600042"});
    QCOMPARE(codesOf(u"青ケ島村中原", info), QList<QByteArray>{"1001701"});
    QCOMPARE(codesOf(u"佐賀県鹿島市納富分", info), QList<QByteArray>{"8491312"});
}

void DamageTest::patchedSampleAnswersWhenWhole()
{
    OpenImages files(sampleDictionary().bytes(), samplePatch().bytes());
    ydic_info *info = files.info();
    QCOMPARE(addressesOf("1000005", info), QStringList{"東京都／千代田区丸ノ内"});
    QCOMPARE(addressesOf("1000009", info), QStringList{"東京都／千代田区平河町"});
    QCOMPARE(addressesOf("6048132", info), QStringList());
    QCOMPARE(codesOf(u"千代田区平河町", info), QList<QByteArray>{"1000009"});
    QCOMPARE(codesOf(u"京都市中京区場之町", info), QList<QByteArray>());
}

void DamageTest::writtenDictionaryAnswersWhenWhole()
{
    OpenImages files(writtenDictionary());
    ydic_info *info = files.info();
    QCOMPARE(addressesOf("1000005", info), (QStringList{"東京都／千代田区丸の内", "東京都／千代田区大丸"}));
    QCOMPARE(codesOf(u"札幌市中央区大通西１丁目", info), QList<QByteArray>{"0600042"});
    QCOMPARE(codesOf(u"佐賀県鹿島市納富分", info), QList<QByteArray>{"8491312"});
}

void DamageTest::everyByteOfTheDictionary_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("made by hand") << QByteArray::fromStdString(sampleDictionary().bytes());
    // So that a read that is longer than its buffer finds the bytes.
    QTest::newRow("with much behind it")
        << QByteArray::fromStdString(sampleDictionary().bytes() + Bytes(20000, '\xB0'));
    QTest::newRow("written") << QByteArray::fromStdString(writtenDictionary());
}

void DamageTest::everyByteOfTheDictionary()
{
    QFETCH(QByteArray, file);
    const Bytes whole = file.toStdString();
    QVERIFY(whole.size() > 512);
    const size_t damagedLength = std::min<size_t>(whole.size(), 2048);
    for (size_t offset = 0; offset < damagedLength; ++offset) {
        for (const char damage : damagesOf(whole[offset])) {
            Bytes damaged = whole;
            damaged[offset] = damage;
            OpenImages files(damaged);
            QCOMPARE(searchAllCodes(files.info()), static_cast<const char *>(nullptr));
            QVERIFY2(searchAllAddresses(files.info()), QByteArray::number(quint64(offset)));
        }
    }
}

void DamageTest::everyByteOfThePatch()
{
    const Bytes dictionary = sampleDictionary().bytes(), whole = samplePatch().bytes();
    for (size_t offset = 0; offset < whole.size(); ++offset) {
        for (const char damage : damagesOf(whole[offset])) {
            Bytes damaged = whole;
            damaged[offset] = damage;
            OpenImages files(dictionary, damaged);
            QCOMPARE(searchAllCodes(files.info()), static_cast<const char *>(nullptr));
            QVERIFY2(searchAllAddresses(files.info()), QByteArray::number(quint64(offset)));
        }
    }
}

void DamageTest::truncations_data()
{
    everyByteOfTheDictionary_data();
}

void DamageTest::truncations()
{
    QFETCH(QByteArray, file);
    const Bytes whole = file.toStdString();
    for (size_t i = 0; i < 200; ++i) {
        OpenImages files(whole.substr(0, i * whole.size() / 200));
        QCOMPARE(searchAllCodes(files.info()), static_cast<const char *>(nullptr));
        QVERIFY2(searchAllAddresses(files.info()), QByteArray::number(quint64(i)));
    }
}

void DamageTest::truncationsOfThePatch()
{
    const Bytes dictionary = sampleDictionary().bytes(), whole = samplePatch().bytes();
    for (size_t i = 0; i < 200; ++i) {
        OpenImages files(dictionary, whole.substr(0, i * whole.size() / 200));
        QCOMPARE(searchAllCodes(files.info()), static_cast<const char *>(nullptr));
        QVERIFY2(searchAllAddresses(files.info()), QByteArray::number(quint64(i)));
    }
}

QTEST_GUILESS_MAIN(DamageTest)
#include "damagetest.moc"
