#include "kyipvalidator.h"
#include <QTest>
#include <QWidget>

class KYIPValidatorTest : public QObject
{
    Q_OBJECT
private slots:
    void belongsToItsParent();
    void str2ip_data();
    void str2ip();
    void hugeTextEnds();
    void everyGroupHasItsByte();
    void everyBeginningIsAtLeastIntermediate();
    void validateLeavesTheText();
};

static int number(quint32 address)
{
    return int(address);
}

void KYIPValidatorTest::belongsToItsParent()
{
    QWidget parent;
    const KYIPValidator *validator = new KYIPValidator(&parent, "address");
    QCOMPARE(validator->parent(), &parent);
    QCOMPARE(validator->objectName(), QString("address"));
    const KYIPValidator alone(nullptr);
    QVERIFY(alone.objectName().isEmpty());
}

void KYIPValidatorTest::str2ip_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QValidator::State>("state");
    QTest::addColumn<int>("address"); // of what is not Invalid

    const auto accepted = [](const char *text, quint32 address) {
        QTest::newRow(text) << QString::fromUtf8(text) << QValidator::Acceptable << number(address);
    };
    accepted("192.168.1.1", 0xc0a80101);
    accepted("0.0.0.0", 0);
    accepted("255.255.255.255", 0xffffffff);
    accepted("1.2.3.4", 0x01020304);
    accepted("224.0.0.1", 0xe0000001);
    accepted("000192.01.0000000000000001.00", 0xc0010100);

    const auto begun = [](const char *text, quint32 address) {
        QTest::newRow(*text ? text : "empty")
            << QString::fromUtf8(text) << QValidator::Intermediate << number(address);
    };
    begun("", 0);
    begun("1", 0x01000000);
    begun("1.", 0x01000000);
    begun("1.2", 0x01020000);
    begun("192.168.", 0xc0a80000);
    begun("1.2.3", 0x01020300);
    begun("1.2.3.", 0x01020300);
    begun("255.255.255.", 0xffffff00);

    const auto refused = [](const char *name, const QString &text) {
        QTest::newRow(name) << text << QValidator::Invalid << 0;
    };
    for (const char *text : {"256",  "1.256",    "1.2.256",  "1.2.3.256", "999",
                             "1..2", ".",        ".1",       "1.2.3.4.",  "1.2.3.4.5",
                             "-1",   "+1",       "a",        "1.2.3.x",   "1,2",
                             " ",    "1.2.3.4 ", " 1.2.3.4", "1.2.3.4\n", "0x10",
                             "1:2",  "/1",       "...",      "1.2.3..4",  "99999999999999999999"})
        refused(text, QString::fromUtf8(text));
    refused("full-width digits", QString::fromUtf8("１.2.3.4"));
    refused("Arabic digits", QString::fromUtf8("١"));
    refused("full-width point", QString::fromUtf8("1．2"));
    refused("zero character", QString(1, QChar::Null));
    refused("lone surrogate", QString(1, QChar(0xd800)));
    refused("character whose low byte is a digit", QString(1, QChar(0x0131)));
}

void KYIPValidatorTest::str2ip()
{
    QFETCH(QString, text);
    const KYIPValidator validator(nullptr);
    int address = -7;
    const QValidator::State state = validator.str2ip(text, address);
    QTEST(state, "state");
    if (state != QValidator::Invalid)
        QTEST(address, "address");
    int position = 0;
    QTEST(validator.validate(text, position), "state");
}

void KYIPValidatorTest::hugeTextEnds()
{
    const KYIPValidator validator(nullptr);
    int address = 0;
    const QString zeros(1000000, QLatin1Char('0'));
    QCOMPARE(validator.str2ip(zeros + "1.2.3.4", address), QValidator::Acceptable);
    QCOMPARE(address, 0x01020304);
    QCOMPARE(validator.str2ip(QString(1000000, QLatin1Char('9')), address), QValidator::Invalid);
    QCOMPARE(validator.str2ip(QString("1.").repeated(500000), address), QValidator::Invalid);
}

void KYIPValidatorTest::everyGroupHasItsByte()
{
    const KYIPValidator validator(nullptr);
    for (int group = 0; group < 4; ++group) {
        for (quint32 value = 0; value < 256; ++value) {
            QStringList groups(4, "0");
            groups[group] = QString::number(value);
            int address = 0;
            QCOMPARE(validator.str2ip(groups.join('.'), address), QValidator::Acceptable);
            QCOMPARE(quint32(address), value << (24 - 8 * group));
        }
    }
}

void KYIPValidatorTest::everyBeginningIsAtLeastIntermediate()
{
    const KYIPValidator validator(nullptr);
    for (quint32 i = 0; i < 600; ++i) {
        const quint32 bits = i * 2654435761U; // spreads over all of them
        const QString text =
            QString("%1.%2.%3.%4").arg(bits >> 24).arg(bits >> 16 & 255).arg(bits >> 8 & 255).arg(bits & 255);
        int address = 0;
        QCOMPARE(validator.str2ip(text, address), QValidator::Acceptable);
        QCOMPARE(quint32(address), bits);
        for (qsizetype length = 0; length < text.size(); ++length)
            QVERIFY2(validator.str2ip(text.left(length), address) != QValidator::Invalid,
                     qPrintable(text.left(length)));
    }
}

void KYIPValidatorTest::validateLeavesTheText()
{
    const KYIPValidator validator(nullptr);
    QString text = "001.2";
    int position = 3;
    QCOMPARE(validator.validate(text, position), QValidator::Intermediate);
    QCOMPARE(text, QString("001.2"));
    QCOMPARE(position, 3);
}

QTEST_MAIN(KYIPValidatorTest)
#include "kyipvalidatortest.moc"
