#include "config.h"
#include "kymisc.h"
#include <QTest>

class LanguageTest : public QObject
{
    Q_OBJECT
private slots:
    void getLanguage_data();
    void getLanguage();
    void groupsDontCount();
};

void LanguageTest::getLanguage_data()
{
    QTest::addColumn<QByteArray>("environment"); // null: unset
    QTest::addColumn<QString>("key");            // null: absent
    QTest::addColumn<QString>("expected");

    QTest::newRow("neither set") << QByteArray() << QString() << "en";
    QTest::newRow("environment of two") << QByteArray("de") << QString() << "de";
    QTest::newRow("environment of five") << QByteArray("ja_JP") << QString() << "en";
    QTest::newRow("environment empty") << QByteArray("") << QString() << "en";
    QTest::newRow("environment of one") << QByteArray("j") << QString() << "en";
    QTest::newRow("key wins") << QByteArray("de") << "ja"
                              << "ja";
    QTest::newRow("key alone") << QByteArray() << "ja"
                               << "ja";
    QTest::newRow("key of five wins and is too long") << QByteArray("de") << "ja_JP"
                                                      << "en";
    QTest::newRow("key of one wins and is too short") << QByteArray("de") << "j"
                                                      << "en";
    QTest::newRow("characters, not bytes")
        << QByteArray() << QString::fromUtf8("日本") << QString::fromUtf8("日本");
}

void LanguageTest::getLanguage()
{
    QFETCH(QByteArray, environment);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    if (environment.isNull())
        qunsetenv("LANG");
    else
        qputenv("LANG", environment);
    {
        Config locale(QStringLiteral("locale"));
        if (key.isNull())
            locale.removeEntry(QStringLiteral("Language"));
        else
            locale.writeEntry(QStringLiteral("Language"), key);
    }
    QCOMPARE(KyMisc::getLanguage(), expected);
}

void LanguageTest::groupsDontCount()
{
    qputenv("LANG", "de");
    {
        Config locale(QStringLiteral("locale"));
        locale.removeEntry(QStringLiteral("Language"));
        locale.setGroup(QStringLiteral("Other"));
        locale.writeEntry(QStringLiteral("Language"), QStringLiteral("ja"));
    }
    QCOMPARE(KyMisc::getLanguage(), QStringLiteral("de"));
}

QTEST_GUILESS_MAIN(LanguageTest)
#include "languagetest.moc"
