#include "lookup.h"

#include "dictionarywriter.h"
#include "imagebuilder.h"
#include "lookuptext.h"
#include "opendictionary.h"
#include "patchwriter.h"
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace ZipDict;
using imagebuilder::Bytes;
using imagebuilder::OpenImages;

namespace {

std::vector<Place> places()
{
    return {
        {1000000, 13, u"千代田区", u"", u"", {}, false},
        {1000001, 13, u"千代田区", u"千代田", u"千代田", {}, false},
        {1000004, 13, u"千代田区", u"大手町", u"大手町", {}, false},
        {1000004, 13, u"千代田区", u"ガーデン", u"ガーデン", {}, false},
        {1000005, 13, u"千代田区", u"丸の内", u"丸の内", {}, false},
        {1000006, 13, u"千代田区", u"丸の内", u"丸の内", {}, false},
    };
}

Bytes dictionary()
{
    const WrittenFile file = writeDictionary(3, places());
    return {file.bytes.begin(), file.bytes.end()};
}

/** What a look-up prints. */
struct Printed
{
    bool isFound = false;
    QString out;
    QString errors;
};

class Stream
{
public:
    Stream() : m_file(open_memstream(&m_text, &m_length)) {}
    ~Stream()
    {
        fclose(m_file);
        free(m_text);
    }
    Q_DISABLE_COPY_MOVE(Stream)

    FILE *file() { return m_file; }
    QString text()
    {
        fflush(m_file);
        return QString::fromUtf8(m_text, qsizetype(m_length));
    }

private:
    char *m_text = nullptr;
    size_t m_length = 0;
    FILE *m_file;
};

Printed lookedUp(const std::vector<std::string> &words, ydic_info *info, unsigned max = 100)
{
    Stream out;
    Stream errors;
    const bool isFound = lookUp(words, max, info, out.file(), errors.file());
    return {isFound, out.text(), errors.text()};
}

Printed lookedUp(const std::vector<std::string> &words, unsigned max = 100)
{
    OpenImages images(dictionary());
    return lookedUp(words, images.info(), max);
}

void write(const QString &path, const Bytes &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes.data(), qint64(bytes.size())), qint64(bytes.size()));
}

Bytes patchOf(uint8_t corrects, uint8_t makes)
{
    std::vector<Place> newer = places();
    newer[1].town = u"新千代田";
    const WrittenFile file = writePatch({makes, true, corrects, 0}, places(), newer);
    return {file.bytes.begin(), file.bytes.end()};
}

} // namespace

/** Codes and addresses asked for in a shell. */
class LookupTest : public QObject
{
    Q_OBJECT
private slots:
    void codesAreRecognised_data();
    void codesAreRecognised();
    void addressesBecomeFullWidth_data();
    void addressesBecomeFullWidth();
    void codeGivesItsAddresses();
    void severalCodesAreLookedUpInTurn();
    void addressGivesItsCodes();
    void wordsOfAnAddressAreJoined();
    void codeAndAddressAreBothLookedUp();
    void maximumIsKept();
    void missingCodeShowsTheNext();
    void missingCodeBehindTheLastShowsNone();
    void unknownAddressIsTold();
    void codeOfTwoWordsIsOne();
    void nothingToLookUpIsTold();
    void numberThatIsNoCodeIsTold_data();
    void numberThatIsNoCodeIsTold();
    void characterOutsideJisIsTold();
    void badTextIsTold();
    void longAddressIsCutAtACharacter();
    void halfACharacterIsLeftOut();
    void damagedDictionaryIsTold();
    void namedFileIsOpened();
    void namedPatchIsUsed();
    void unusableFilesAreRefused_data();
    void unusableFilesAreRefused();
    void deviceDictionaryIsUsed();
    void dictionaryBesideTheProgramIsUsed();
    void damagedDeviceDictionaryIsTold();
};

void LookupTest::codesAreRecognised_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("code");
    QTest::newRow("digits") << "1000001"
                            << "1000001";
    QTest::newRow("hyphen") << "100-0001"
                            << "1000001";
    QTest::newRow("postal mark") << "〒100-0001"
                                 << "1000001";
    QTest::newRow("full width") << "１００－０００１"
                                << "1000001";
    QTest::newRow("full-width minus") << "１００−０００１"
                                      << "1000001";
    QTest::newRow("long vowel mark") << "１００ー０００１"
                                     << "1000001";
    QTest::newRow("en dash") << "100–0001"
                             << "1000001";
    QTest::newRow("leading zeros") << "001-0010"
                                   << "0010010";
    QTest::newRow("hyphen at the wrong place") << "1000-001"
                                               << "";
    QTest::newRow("two hyphens") << "100--0001"
                                 << "";
    QTest::newRow("six digits") << "100-001"
                                << "";
    QTest::newRow("eight digits") << "10000011"
                                  << "";
    QTest::newRow("letters") << "100-000a"
                             << "";
    QTest::newRow("address") << "千代田区"
                             << "";
    QTest::newRow("mark alone") << "〒"
                                << "";
    QTest::newRow("nothing") << ""
                             << "";
}

void LookupTest::codesAreRecognised()
{
    QFETCH(const QString, word);
    QFETCH(const QString, code);
    QCOMPARE(QString::fromStdString(codeOf(word.toStdU16String())), code);
}

void LookupTest::addressesBecomeFullWidth_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("full");
    QTest::newRow("digits and hyphens") << "丸の内1-2-3"
                                        << "丸の内１−２−３";
    QTest::newRow("letters") << "Aa~!"
                             << "Ａａ～！";
    QTest::newRow("other dashes") << "1‑2–3‒4"
                                  << "１−２−３−４";
    QTest::newRow("dashes of JIS stay") << "ー－−‐―"
                                        << "ー－−‐―";
    QTest::newRow("half-width kana") << "ｱｲｳﾔﾕﾖﾝｯｰ｡"
                                     << "アイウヤユヨンッー。";
    QTest::newRow("voiced kana") << "ｶﾞﾄﾞﾊﾞﾎﾞｳﾞﾂﾞ"
                                 << "ガドバボヴヅ";
    QTest::newRow("semivoiced kana") << "ﾊﾟﾎﾟ"
                                     << "パポ";
    QTest::newRow("marks that fit nothing") << "ﾞｱﾞｶﾟﾏﾞ"
                                            << "゛ア゛カ゜マ゛";
    QTest::newRow("postal mark") << "〒東京"
                                 << "東京";
    QTest::newRow("full width stays") << "千代田１ア"
                                      << "千代田１ア";
}

void LookupTest::addressesBecomeFullWidth()
{
    QFETCH(const QString, address);
    QFETCH(const QString, full);
    QCOMPARE(QString::fromStdU16String(fullWidth(address.toStdU16String())), full);
}

void LookupTest::codeGivesItsAddresses()
{
    const Printed printed = lookedUp({"100-0004"});
    QVERIFY(printed.isFound);
    QCOMPARE(printed.out, QString("100-0004 東京都千代田区大手町\n100-0004 東京都千代田区ガーデン\n"));
    QCOMPARE(printed.errors, QString());
}

void LookupTest::severalCodesAreLookedUpInTurn()
{
    const Printed printed = lookedUp({"1000005", "〒", "〒100-0001", "1000099"});
    QVERIFY(!printed.isFound);
    QCOMPARE(printed.out, QString("100-0005 東京都千代田区丸の内\n100-0001 東京都千代田区千代田\n"));
    QVERIFY(printed.errors.contains("100-0099"));
}

void LookupTest::addressGivesItsCodes()
{
    const Printed printed = lookedUp({"東京都千代田区丸の内1-2"});
    QVERIFY(printed.isFound);
    QCOMPARE(printed.out, QString("100-0005 東京都千代田区丸の内\n100-0006 東京都千代田区丸の内\n"));
    QCOMPARE(printed.errors, QString());
}

void LookupTest::wordsOfAnAddressAreJoined()
{
    QCOMPARE(lookedUp({"千代田区", "ｶﾞｰﾃﾞﾝ"}).out, lookedUp({"1000004"}).out);
    QCOMPARE(lookedUp({"東京都　千代田区 千代田"}).out, lookedUp({"1000001"}).out);
}

void LookupTest::codeAndAddressAreBothLookedUp()
{
    const Printed printed = lookedUp({"〒100-0001 千代田区大手町"});
    QVERIFY(printed.isFound);
    QCOMPARE(printed.out, lookedUp({"1000001"}).out + lookedUp({"1000004"}).out);
}

void LookupTest::maximumIsKept()
{
    QCOMPARE(lookedUp({"1000004"}, 1).out, QString("100-0004 東京都千代田区大手町\n"));
    QCOMPARE(lookedUp({"千代田区丸の内"}, 1).out, QString("100-0005 東京都千代田区丸の内\n"));
    QCOMPARE(lookedUp({"1000004"}, MostResults).out.count('\n'), 2);
}

void LookupTest::missingCodeShowsTheNext()
{
    const Printed printed = lookedUp({"100-0002"});
    QVERIFY(!printed.isFound);
    QCOMPARE(printed.out, QString());
    QCOMPARE(printed.errors, QString("kyzipdict: there is no code 100-0002\n"
                                     "the next one is 100-0004 東京都千代田区大手町\n"));
}

void LookupTest::missingCodeBehindTheLastShowsNone()
{
    const Printed printed = lookedUp({"9999999"});
    QVERIFY(!printed.isFound);
    QCOMPARE(printed.errors, QString("kyzipdict: there is no code 999-9999\n"));
}

void LookupTest::unknownAddressIsTold()
{
    const Printed printed = lookedUp({"火星市"});
    QVERIFY(!printed.isFound);
    QCOMPARE(printed.out, QString());
    QCOMPARE(printed.errors, QString("kyzipdict: no code is found for 火星市\n"));
}

void LookupTest::codeOfTwoWordsIsOne()
{
    const QString expected = "100-0001 東京都千代田区千代田\n";
    QCOMPARE(lookedUp({"100", "0001"}).out, expected);
    QCOMPARE(lookedUp({"〒", "１００", "-０００１"}).out, expected);
}

void LookupTest::nothingToLookUpIsTold()
{
    for (const char *word : {"", " ", "　", "〒"}) {
        const Printed printed = lookedUp({word});
        QVERIFY(!printed.isFound);
        QCOMPARE(printed.errors, QString("kyzipdict: there is nothing to look up\n"));
    }
}

void LookupTest::numberThatIsNoCodeIsTold_data()
{
    QTest::addColumn<QString>("word");
    QTest::newRow("short") << "100-001";
    QTest::newRow("long") << "１００００００１";
    QTest::newRow("hyphen") << "10-00001";
}

void LookupTest::numberThatIsNoCodeIsTold()
{
    QFETCH(const QString, word);
    const Printed printed = lookedUp({word.toStdString()});
    QVERIFY(!printed.isFound);
    QCOMPARE(printed.errors, "kyzipdict: " + word + " is no postal code, which has seven digits\n");
}

void LookupTest::characterOutsideJisIsTold()
{
    const Printed printed = lookedUp({"千代田区髙"});
    QVERIFY(!printed.isFound);
    QCOMPARE(printed.errors, QString("kyzipdict: 髙 can't be looked for: it isn't in JIS X 0208\n"));
}

void LookupTest::badTextIsTold()
{
    QVERIFY(!lookedUp({"\xFF"}).isFound);
    QVERIFY(lookedUp({"\xFF"}).errors.contains("isn't UTF-8"));
    QVERIFY(lookedUp({"千代田区𠮷"}).errors.contains("isn't UTF-8, or has characters that no address has"));
}

/* The writer keeps its own addresses whole, so that these files are made by hand. */
static QString shownOf(const Bytes &text)
{
    imagebuilder::Image image;
    image.prefectures[10] = 13;
    image.addChunk(10000, 1, imagebuilder::record(1, text));
    OpenImages images(image.bytes());
    return lookedUp({"1000001"}, images.info()).out;
}

void LookupTest::longAddressIsCutAtACharacter()
{
    QCOMPARE(shownOf(imagebuilder::stored(std::u16string(50, u'町'))),
             "100-0001 東京都" + QString(36, u'町') + "\n");
}

void LookupTest::halfACharacterIsLeftOut()
{
    QCOMPARE(shownOf(imagebuilder::stored(u"町町") + "\xC4"), QString("100-0001 東京都町町\n"));
}

void LookupTest::damagedDictionaryIsTold()
{
    OpenImages images(dictionary().substr(0, 300));
    for (const char *word : {"1000001", "千代田区"}) {
        const Printed printed = lookedUp({word}, images.info());
        QVERIFY(!printed.isFound);
        QCOMPARE(printed.errors, QString("kyzipdict: the dictionary can't be read, or is damaged\n"));
    }
}

void LookupTest::namedFileIsOpened()
{
    const QTemporaryDir folder;
    write(folder.filePath("dictionary"), dictionary());
    const OpenDictionary info = openNamed(folder.filePath("dictionary").toStdString(), {});
    QVERIFY(info);
    QCOMPARE(lookedUp({"1000001"}, info.get()).out, QString("100-0001 東京都千代田区千代田\n"));
}

void LookupTest::namedPatchIsUsed()
{
    const QTemporaryDir folder;
    write(folder.filePath("dictionary"), dictionary());
    write(folder.filePath("patch"), patchOf(3, 4));
    const OpenDictionary info =
        openNamed(folder.filePath("dictionary").toStdString(), folder.filePath("patch").toStdString());
    QVERIFY(info);
    QCOMPARE(lookedUp({"1000001"}, info.get()).out, QString("100-0001 東京都千代田区新千代田\n"));
}

void LookupTest::unusableFilesAreRefused_data()
{
    QTest::addColumn<QByteArray>("dictionary");
    QTest::addColumn<QByteArray>("patch");
    const auto bytes = [](const Bytes &text) { return QByteArray(text.data(), qsizetype(text.size())); };
    const QByteArray good = bytes(dictionary());
    QTest::newRow("no file") << QByteArray() << QByteArray();
    QTest::newRow("text") << QByteArray(1000, 'a') << QByteArray();
    QTest::newRow("cut") << good.chopped(1) << QByteArray();
    QTest::newRow("longer") << good + '\0' << QByteArray();
    QTest::newRow("patch as dictionary") << bytes(patchOf(3, 4)) << QByteArray();
    QTest::newRow("dictionary as patch") << good << good;
    QTest::newRow("patch of another edition") << good << bytes(patchOf(2, 3));
    QTest::newRow("cut patch") << good << bytes(patchOf(3, 4)).chopped(1);
}

void LookupTest::unusableFilesAreRefused()
{
    QFETCH(const QByteArray, dictionary);
    QFETCH(const QByteArray, patch);
    const QTemporaryDir folder;
    if (!dictionary.isEmpty())
        write(folder.filePath("dictionary"), dictionary.toStdString());
    write(folder.filePath("patch"), patch.toStdString());
    const std::string patchPath = patch.isEmpty() ? std::string() : folder.filePath("patch").toStdString();
    QVERIFY(!openNamed(folder.filePath("dictionary").toStdString(), patchPath));
}

static QString devicePath()
{
    return qEnvironmentVariable("KY_DEVICE_ROOT") + "/home/QtPalmtop/etc/yubin02.dat";
}

/* Where the program itself would be installed beside. */
static QString ownPath()
{
    return QCoreApplication::applicationDirPath() + "/../share/libky/yubin02.dat";
}

void LookupTest::deviceDictionaryIsUsed()
{
    write(devicePath(), dictionary());
    const OpenDictionary info = openInstalled();
    QVERIFY(info);
    QCOMPARE(info->opened[4], uint8_t{1});
    QCOMPARE(lookedUp({"1000001"}, info.get()).out, QString("100-0001 東京都千代田区千代田\n"));
    QVERIFY(QFile::remove(devicePath()));
}

void LookupTest::dictionaryBesideTheProgramIsUsed()
{
    QVERIFY(!QFile::exists(devicePath()));
    const bool isThere = QFile::exists(ownPath());
    const OpenDictionary info = openInstalled();
    QCOMPARE(bool(info), isThere);
}

void LookupTest::damagedDeviceDictionaryIsTold()
{
    write(devicePath(), dictionary().substr(0, 400));
    const OpenDictionary info = openInstalled();
    QCOMPARE(bool(info), QFile::exists(ownPath()));
    QVERIFY(QFile::remove(devicePath()));
}

QTEST_MAIN(LookupTest)
#include "lookuptest.moc"
