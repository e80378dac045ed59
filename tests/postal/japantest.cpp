#include "japan.h"

#include "dictionarycheck.h"
#include "dictionarywriter.h"
#include "place.h"
#include "source.h"

#include <map>
#include <QFile>
#include <QTest>
#include <set>

using namespace ZipDict;

namespace {

QString codeText(uint32_t code)
{
    return QStringLiteral("%1").arg(code, 7, 10, QLatin1Char('0'));
}

/* "大通西（１〜１９丁目）" is asked for as 大通西. */
std::u16string withoutBrackets(std::u16string_view town)
{
    std::u16string result;
    int depth = 0;
    for (const char16_t character : town) {
        if (character == u'（')
            ++depth;
        if (depth == 0)
            result += character;
        if (character == u'）')
            --depth;
    }
    return result;
}

/* What the operator prints where there is no town. */
bool isRemark(std::u16string_view municipality, std::u16string_view town)
{
    const bool isAllOfIt =
        town.size() > 2 && town.ends_with(u"一円") && municipality.ends_with(town.substr(0, town.size() - 2));
    return town == u"以下に掲載がない場合" || isAllOfIt || town.find(u"がくる場合") != town.npos;
}

/* The part of the address behind the prefecture, as printed. */
std::u16string placeAsPrinted(const SourceRow &row)
{
    return row.municipality + (isRemark(row.municipality, row.town) ? u"" : withoutBrackets(row.town));
}

} // namespace

/** All postal codes of Japan, through the dictionary that is made of them. */
class JapanTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void municipalitiesWithoutRoomAreDocumented();
    void dictionaryIsGood();
    void everyCodeGivesExactlyItsPlaces();
    void nextVisitsEveryCodeOnce();
    void previousVisitsEveryCodeOnce();
    void placesLeadToTheirCodes_data();
    void placesLeadToTheirCodes();

private:
    QList<uint32_t> walk(const char *from, uint8_t direction);
    void listMiss(QFile &list, const SourceRow &row, std::u16string_view address, const QStringList &found,
                  QMap<QString, int> &causes);

    Japan m_japan;
    std::vector<SourceRow> m_rows;
    std::map<uint32_t, QStringList> m_placesByCode;
    std::map<std::u16string, int> m_municipalities; ///< how many prefectures have one of the name
};

void JapanTest::initTestCase()
{
    QVERIFY(m_japan.isOpen());
    Source source = readSource(KY_POSTAL_TABLE, nullptr);
    QVERIFY(source.problems.empty());
    for (const Place &place : placesOf(source.rows)) {
        QStringList &places = m_placesByCode[place.code];
        const QString shown = QString::fromStdU16String(shownAddress(place));
        if (!places.contains(shown))
            places.append(shown);
    }
    m_rows = std::move(source.rows);
    QCOMPARE(m_rows.size(), size_t{126431});
    QCOMPARE(m_placesByCode.size(), size_t{120484});
    std::map<std::u16string, std::set<std::u16string>> prefectures;
    for (const SourceRow &row : m_rows)
        prefectures[row.municipality].insert(row.prefecture);
    for (const auto &[municipality, names] : prefectures)
        m_municipalities[municipality] = static_cast<int>(names.size());
}

void JapanTest::municipalitiesWithoutRoomAreDocumented()
{
    QFile limits(TEST_DATA "/../../../docs/limits.md");
    QVERIFY(limits.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(limits.readAll());
    const std::vector<std::u16string> leftOut = writeDictionary(1, placesOf(m_rows)).keysLeftOut;
    QVERIFY(text.contains(QStringLiteral(" %1 find no room").arg(leftOut.size())));
    for (const std::u16string &name : leftOut)
        QVERIFY2(text.contains(QString::fromStdU16String(name)), qPrintable(QString::fromStdU16String(name)));
}

void JapanTest::dictionaryIsGood()
{
    QFile file(QStringLiteral(KY_POSTAL_DICTIONARY));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const auto *first = reinterpret_cast<const uint8_t *>(bytes.constData());
    QVERIFY(checkDictionary({first, static_cast<size_t>(bytes.size())}).empty());
}

void JapanTest::everyCodeGivesExactlyItsPlaces()
{
    for (const auto &[code, places] : m_placesByCode)
        QCOMPARE(m_japan.addressesOf(codeText(code)), places);
}

/* The codes from one end to the other. */
QList<uint32_t> JapanTest::walk(const char *from, uint8_t direction)
{
    static char results[Japan::Most * (YDIC_ADDRESS_LENGTH + 1)];
    char code[8] = {};
    qstrncpy(code, from, sizeof code);
    char near[8] = {};
    QList<uint32_t> codes;
    while (Zip2AdrSearchNP(code, Japan::Most, direction, near, results, m_japan.info()) > 0 &&
           static_cast<size_t>(codes.size()) <= m_placesByCode.size()) {
        codes.append(QByteArray(near).toUInt());
        qstrncpy(code, near, sizeof code);
    }
    return codes;
}

void JapanTest::nextVisitsEveryCodeOnce()
{
    QList<uint32_t> all;
    for (const auto &[code, places] : m_placesByCode)
        all.append(code);
    QVERIFY(walk("0000000", YDIC_NEXT) == all);
}

void JapanTest::previousVisitsEveryCodeOnce()
{
    QList<uint32_t> all;
    for (const auto &[code, places] : m_placesByCode)
        all.prepend(code);
    QVERIFY(walk("9999999", YDIC_PREVIOUS) == all);
}

void JapanTest::placesLeadToTheirCodes_data()
{
    QTest::addColumn<bool>("withPrefecture");
    QTest::addColumn<double>("wanted"); // percent
    QTest::addColumn<QString>("list");
    QTest::newRow("with prefecture") << true << 99.5 << QStringLiteral("misses.tsv");
    QTest::newRow("without prefecture") << false << 97.0 << QStringLiteral("misses-without-prefecture.tsv");
}

void JapanTest::placesLeadToTheirCodes()
{
    QFETCH(bool, withPrefecture);
    QFETCH(double, wanted);
    QFETCH(QString, list);
    QFile misses(QLatin1String(KY_POSTAL_MISSES "/") + list);
    QVERIFY(misses.open(QIODevice::WriteOnly));
    const auto addressOf = [withPrefecture](const SourceRow &row) {
        return (withPrefecture ? row.prefecture : std::u16string()) + placeAsPrinted(row);
    };
    std::map<std::u16string, std::set<QString>> codesByAddress;
    for (const SourceRow &row : m_rows)
        codesByAddress[addressOf(row)].insert(codeText(row.code));
    QMap<QString, int> causes;
    size_t found = 0;
    size_t alone = 0;
    size_t exact = 0;
    size_t all = 0;
    for (const SourceRow &row : m_rows) {
        const std::u16string address = addressOf(row);
        const QStringList codes = m_japan.codesOf(address);
        if (codes.contains(codeText(row.code)))
            ++found;
        else
            listMiss(misses, row, address, codes, causes);
        all += static_cast<size_t>(codes.size());
        alone += codes == QStringList(codeText(row.code)) ? 1U : 0U;
        exact += std::set<QString>(codes.cbegin(), codes.cend()) == codesByAddress[address] ? 1U : 0U;
    }
    const double rows = static_cast<double>(m_rows.size());
    const double share = 100.0 * static_cast<double>(found) / rows;
    const double exactShare = 100.0 * static_cast<double>(exact) / rows;
    qInfo("%zu of %zu places: %.3f %%", found, m_rows.size(), share);
    qInfo("%.2f codes an address; the right one alone %.3f %%; all that print the address, and no other, "
          "%.3f %%",
          static_cast<double>(all) / rows, 100.0 * static_cast<double>(alone) / rows, exactShare);
    for (auto cause = causes.cbegin(); cause != causes.cend(); ++cause)
        qInfo("%6d %s", cause.value(), qUtf8Printable(cause.key()));
    QVERIFY(share >= wanted);
    // Places that differ in a variant alone are found together, as 中町 and 仲町.
    QVERIFY(exactShare >= 99.9);
}

void JapanTest::listMiss(QFile &list, const SourceRow &row, std::u16string_view address,
                         const QStringList &found, QMap<QString, int> &causes)
{
    QString cause = QStringLiteral("other");
    if (found.size() == static_cast<qsizetype>(Japan::Most))
        cause = QStringLiteral("more than 100 codes");
    else if (row.municipality.starts_with(u"京都市"))
        cause = QStringLiteral("taken for a street of Kyoto");
    else if (address.size() > YDIC_ADDRESS_LENGTH / 2)
        cause = QStringLiteral("longer than 40 characters");
    else if (m_municipalities[row.municipality] > 1)
        cause = QStringLiteral("municipality of the same name in another prefecture");
    ++causes[cause];
    const QString line = QStringList({codeText(row.code), QString::fromStdU16String(std::u16string(address)),
                                      found.join(QLatin1Char(' ')), cause})
                             .join(QLatin1Char('\t'));
    list.write(line.toUtf8() + '\n');
}

QTEST_GUILESS_MAIN(JapanTest)
#include "japantest.moc"
