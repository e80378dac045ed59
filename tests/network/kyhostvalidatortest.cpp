#include "kyhostvalidator.h"
#include <QTest>
#include <QWidget>

class KYHostValidatorTest : public QObject
{
    Q_OBJECT
private slots:
    void isAnIPHostValidator();
    void validate_data();
    void validate();
    void hugeTextEnds();
    void everyBeginningIsAtLeastIntermediate();
};

static QValidator::State stateOf(QString text)
{
    const KYHostValidator validator(nullptr);
    int position = 0;
    return validator.validate(text, position);
}

void KYHostValidatorTest::isAnIPHostValidator()
{
    QWidget parent;
    const KYHostValidator *validator = new KYHostValidator(&parent, "host");
    QCOMPARE(validator->parent(), &parent);
    QCOMPARE(validator->objectName(), QString("host"));
    QVERIFY(qobject_cast<const KYIPhostValidator *>(validator));
}

void KYHostValidatorTest::validate_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QValidator::State>("state");
    const auto rows = [](QValidator::State state, std::initializer_list<const char *> texts) {
        for (const char *text : texts)
            QTest::newRow(*text ? text : "empty") << QString::fromUtf8(text) << state;
    };
    rows(QValidator::Intermediate, {"", "1", "192.168.", "10.0.0"});
    rows(QValidator::Acceptable,
         {"192.168.1.1", "localhost", "a", "Z", "www.example.com", "www.example.com.", "a.b.c.d.e.f",
          "my-host", "a--b", "host-", "a.host-", "3com.com", "1-2", "1a"});
    // No addresses of a host, and so names.
    rows(QValidator::Acceptable, {"256", "1.2.3.4.5", "1.2.3.4.", "224.0.0.1", "999.999"});
    rows(QValidator::Invalid,
         {"-",   "-a", "a.-b", "a-.b", "a-.", "host.name-.", "a--.", ".",   ".a",     "a..",  "a..b", "1..2",
          "a b", " a", "a ",   "a\n",  "a_b", "a/b",         "a:80", "a@b", "ホスト", "hôte", "a。b"});
    QTest::newRow("zero character") << QString(1, QChar::Null) << QValidator::Invalid;
    QTest::newRow("zero character behind") << QString("a") + QChar(QChar::Null) << QValidator::Invalid;
    QTest::newRow("lone surrogate") << QString("a.") + QChar(0xd800) << QValidator::Invalid;
    QTest::newRow("full-width letter") << QString::fromUtf8("ａ") << QValidator::Invalid;
}

void KYHostValidatorTest::validate()
{
    QFETCH(QString, text);
    QTEST(stateOf(text), "state");
}

void KYHostValidatorTest::hugeTextEnds()
{
    QCOMPARE(stateOf(QString("a.").repeated(200000)), QValidator::Acceptable);
    QCOMPARE(stateOf(QString("a.").repeated(200000) + '.'), QValidator::Invalid);
    QCOMPARE(stateOf(QString(400000, QLatin1Char('-')).prepend('a')), QValidator::Acceptable);
}

void KYHostValidatorTest::everyBeginningIsAtLeastIntermediate()
{
    const QStringList labels{"a", "host", "x-y", "3com", "a--1", "255", "224", "0", "WWW", "b-c-d"};
    QStringList names;
    for (const QString &first : labels) {
        for (const QString &second : labels) {
            names += {first,
                      first + '.' + second,
                      first + '.' + second + '.',
                      second + ".1.2." + first,
                      first + '.' + second + "-end",
                      first + '-'};
        }
    }
    for (const QString &name : std::as_const(names)) {
        QVERIFY2(stateOf(name) == QValidator::Acceptable || stateOf(name) == QValidator::Intermediate,
                 qPrintable(name));
        for (qsizetype length = 0; length < name.size(); ++length)
            QVERIFY2(stateOf(name.left(length)) != QValidator::Invalid, qPrintable(name.left(length)));
    }
}

QTEST_MAIN(KYHostValidatorTest)
#include "kyhostvalidatortest.moc"
