#include "japan.h"

#include <QFile>
#include <QTest>

namespace {

/* As a program gets it ready: the dictionary has full-width characters only. */
std::u16string widened(const QString &address)
{
    std::u16string text;
    for (const QChar character : address) {
        if (character == QLatin1Char('-'))
            text += u'−';
        else if (character > QLatin1Char(' ') && character <= QLatin1Char('~'))
            text += static_cast<char16_t>(character.unicode() + 0xFEE0);
        else
            text += character.unicode();
    }
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
    QFile table(QStringLiteral(TEST_DATA "/spelling.tsv"));
    QVERIFY(table.open(QIODevice::ReadOnly));
    int rows = 0;
    while (!table.atEnd()) {
        const QStringList columns = QString::fromUtf8(table.readLine()).trimmed().split(QLatin1Char('\t'));
        QCOMPARE(columns.size(), 3); // address, code, what is odd about it
        const QString name = QStringLiteral("%1: %2").arg(columns[2], columns[0]);
        QTest::newRow(name.toUtf8().constData())
            << columns[0] << QString(columns[1]).remove(QLatin1Char('-'));
        ++rows;
    }
    QVERIFY(rows >= 400);
}

void SpellingTest::addressLeadsToItsCode()
{
    QFETCH(QString, address);
    QFETCH(QString, code);
    QVERIFY(m_japan.isOpen());
    const QStringList codes = m_japan.codesOf(widened(address));
    QVERIFY2(codes.contains(code), qUtf8Printable(codes.join(QLatin1Char(' '))));
    QVERIFY2(codes.size() <= 20, "more than a user sees");
}

QTEST_GUILESS_MAIN(SpellingTest)
#include "spellingtest.moc"
