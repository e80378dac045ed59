#include "japan.h"
#include "lookuptext.h"

#include <QFile>
#include <QTest>

namespace {

constexpr qsizetype MostOfSeveral = 6;

/* As kyzipdict gets it ready: without blanks, all characters of full width. */
std::u16string typed(const QString &address)
{
    std::u16string text;
    for (const std::u16string &word : ZipDict::wordsOf(address.toStdU16String()))
        text += ZipDict::fullWidth(word);
    return text;
}

} // namespace

/** Addresses as people write them (data/spelling.tsv), through the dictionary of all Japan. */
class SpellingTest : public QObject
{
    Q_OBJECT
private slots:
    void addressLeadsToItsCode_data();
    void addressLeadsToItsCode();

private:
    Japan m_japan;
};

void SpellingTest::addressLeadsToItsCode_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("hasNamesakes"); // that the address doesn't tell from the place
    QFile table(QStringLiteral(TEST_DATA "/spelling.tsv"));
    QVERIFY(table.open(QIODevice::ReadOnly));
    int rows = 0;
    while (!table.atEnd()) {
        const QStringList columns = QString::fromUtf8(table.readLine()).trimmed().split(QLatin1Char('\t'));
        QCOMPARE(columns.size(), 3); // address, code, kind
        const QString name = QStringLiteral("%1: %2").arg(columns[2], columns[0]);
        QTest::newRow(name.toUtf8().constData()) << columns[0] << QString(columns[1]).remove(QLatin1Char('-'))
                                                 << (columns[2] == QLatin1String("several"));
        ++rows;
    }
    QVERIFY(rows >= 900);
}

void SpellingTest::addressLeadsToItsCode()
{
    QFETCH(QString, address);
    QFETCH(QString, code);
    QFETCH(bool, hasNamesakes);
    QVERIFY(m_japan.isOpen());
    const QStringList codes = m_japan.codesOf(typed(address));
    const bool isRight = hasNamesakes
                             ? codes.contains(code) && codes.size() > 1 && codes.size() <= MostOfSeveral
                             : codes == QStringList(code);
    QVERIFY2(isRight, qUtf8Printable(codes.join(QLatin1Char(' '))));
}

QTEST_GUILESS_MAIN(SpellingTest)
#include "spellingtest.moc"
