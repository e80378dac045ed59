#include "kyiphostvalidator.h"
#include <QCoreApplication>
#include <QTest>
#include <QTranslator>
#include <QWidget>

class KYIPHostValidatorTest : public QObject
{
    Q_OBJECT
private slots:
    void isAnIPValidator();
    void validate_data();
    void validate();
    void everyBeginningIsAtLeastIntermediate();
    void ipset_data();
    void ipset();
    void ipsetWithNumbers_data();
    void ipsetWithNumbers();
    void messagesAreTranslated();
};

void KYIPHostValidatorTest::isAnIPValidator()
{
    QWidget parent;
    const KYIPhostValidator *validator = new KYIPhostValidator(&parent, "host");
    QCOMPARE(validator->parent(), &parent);
    QCOMPARE(validator->objectName(), QString("host"));
    QVERIFY(qobject_cast<const KYIPValidator *>(validator));
}

void KYIPHostValidatorTest::validate_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QValidator::State>("state");
    QTest::newRow("empty") << "" << QValidator::Intermediate;
    QTest::newRow("192.168.") << "192.168." << QValidator::Intermediate;
    QTest::newRow("192.168.1.1") << "192.168.1.1" << QValidator::Acceptable;
    QTest::newRow("0.0.0.0") << "0.0.0.0" << QValidator::Acceptable;
    QTest::newRow("223.255.255.255") << "223.255.255.255" << QValidator::Acceptable;
    QTest::newRow("multicast 224.0.0.1") << "224.0.0.1" << QValidator::Invalid;
    QTest::newRow("begun multicast 224") << "224" << QValidator::Invalid;
    QTest::newRow("begun multicast 239.") << "239." << QValidator::Invalid;
    QTest::newRow("reserved 240.0.0.1") << "240.0.0.1" << QValidator::Invalid;
    QTest::newRow("255.255.255.255") << "255.255.255.255" << QValidator::Invalid;
    QTest::newRow("256") << "256" << QValidator::Invalid;
    QTest::newRow("1..2") << "1..2" << QValidator::Invalid;
}

void KYIPHostValidatorTest::validate()
{
    QFETCH(QString, text);
    const KYIPhostValidator validator(nullptr);
    int position = 0;
    QTEST(validator.validate(text, position), "state");
}

void KYIPHostValidatorTest::everyBeginningIsAtLeastIntermediate()
{
    const KYIPhostValidator validator(nullptr);
    int position = 0;
    for (int first = 0; first < 256; ++first) {
        for (const char *rest : {".0.0.0", ".168.1.1", ".255.255.255", ".10.200.030"}) {
            QString text = QString::number(first) + rest;
            QCOMPARE(validator.validate(text, position),
                     first < 224 ? QValidator::Acceptable : QValidator::Invalid);
            for (qsizetype length = 0; first < 224 && length < text.size(); ++length) {
                QString beginning = text.left(length);
                QVERIFY2(validator.validate(beginning, position) != QValidator::Invalid,
                         qPrintable(beginning));
            }
        }
    }
}

void KYIPHostValidatorTest::ipset_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("mask");
    QTest::addColumn<QString>("gateway");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");

    const QString badMask = "Invalid subnet mask,\nit must be into %1.";
    const QString broadcast = "Invalid IP address,\nthat's broadcast address.";
    const QString network = "Invalid IP address\nthat's network address.";

    QTest::newRow("address alone, class A") << "10.0.0.1"
                                            << ""
                                            << "" << 0 << "Class A";
    QTest::newRow("highest of class A") << "127.255.255.254"
                                        << ""
                                        << "" << 0 << "Class A";
    QTest::newRow("lowest of class B") << "128.0.0.1"
                                       << ""
                                       << "" << 0 << "Class B";
    QTest::newRow("highest of class B") << "191.255.255.254"
                                        << ""
                                        << "" << 0 << "Class B";
    QTest::newRow("lowest of class C") << "192.0.0.1"
                                       << ""
                                       << "" << 0 << "Class C";
    QTest::newRow("highest of class C") << "223.255.255.254"
                                        << ""
                                        << "" << 0 << "Class C";
    QTest::newRow("all three") << "192.168.1.1"
                               << "255.255.255.0"
                               << "192.168.1.254" << 0 << "Class C";
    QTest::newRow("null mask and gateway") << "192.168.1.1" << QString() << QString() << 0 << "Class C";

    QTest::newRow("no address") << ""
                                << ""
                                << "" << 1 << "Invalid IP address.";
    QTest::newRow("half an address") << "10.0.0."
                                     << ""
                                     << "" << 1 << "Invalid IP address.";
    QTest::newRow("wrong address before wrong mask") << "10"
                                                     << "x"
                                                     << "x" << 1 << "Invalid IP address.";
    QTest::newRow("multicast") << "224.0.0.1"
                               << ""
                               << "" << 2 << "";
    QTest::newRow("reserved, mask and gateway don't count") << "240.0.0.1"
                                                            << "255.0.0.0"
                                                            << "1.1.1.1" << 2 << "";

    QTest::newRow("broadcast of class A") << "10.255.255.255"
                                          << ""
                                          << "" << 3 << broadcast;
    QTest::newRow("broadcast of class B") << "172.16.255.255"
                                          << ""
                                          << "" << 3 << broadcast;
    QTest::newRow("broadcast of class C") << "192.168.1.255"
                                          << ""
                                          << "" << 3 << broadcast;
    QTest::newRow("broadcast by the mask") << "10.1.255.255"
                                           << "255.255.0.0"
                                           << "" << 3 << broadcast;
    QTest::newRow("not with a longer mask") << "10.255.255.1"
                                            << "255.255.0.0"
                                            << "" << 0 << "Class A";
    QTest::newRow("not of the class any more") << "10.1.255.255"
                                               << ""
                                               << "" << 0 << "Class A";
    QTest::newRow("mask of all ones") << "10.0.0.1"
                                      << "255.255.255.255"
                                      << "" << 3 << broadcast;

    QTest::newRow("0.0.0.0 is a network of class A") << "0.0.0.0"
                                                     << ""
                                                     << "" << 4 << network;
    QTest::newRow("network of class A") << "10.0.0.0"
                                        << ""
                                        << "" << 4 << network;
    QTest::newRow("network of class B") << "172.16.0.0"
                                        << ""
                                        << "" << 4 << network;
    QTest::newRow("network of class C") << "192.168.1.0"
                                        << ""
                                        << "" << 4 << network;
    QTest::newRow("network by the mask") << "10.1.0.0"
                                         << "255.255.0.0"
                                         << "" << 4 << network;
    QTest::newRow("not the network any more") << "10.1.0.0"
                                              << ""
                                              << "" << 0 << "Class A";

    QTest::newRow("half a mask") << "10.0.0.1"
                                 << "255."
                                 << "" << 5 << "Invalid subnet mask.";
    QTest::newRow("wrong mask before wrong gateway") << "10.0.0.1"
                                                     << "x"
                                                     << "x" << 5 << "Invalid subnet mask.";
    QTest::newRow("wrong mask before unknown class") << "224.0.0.1"
                                                     << "x"
                                                     << "" << 5 << "Invalid subnet mask.";

    QTest::newRow("mask too short for class C") << "192.168.1.1"
                                                << "255.0.0.0"
                                                << "" << 6 << badMask.arg("Class C");
    QTest::newRow("mask too short for class B") << "172.16.0.1"
                                                << "255.0.0.0"
                                                << "" << 6 << badMask.arg("Class B");
    QTest::newRow("mask too short for class A") << "10.0.0.1"
                                                << "254.0.0.0"
                                                << "" << 6 << badMask.arg("Class A");
    QTest::newRow("mask of zeros") << "10.0.0.1"
                                   << "0.0.0.0"
                                   << "" << 6 << badMask.arg("Class A");
    QTest::newRow("mask with a gap") << "10.0.1.1"
                                     << "255.0.255.0"
                                     << "10.9.1.1" << 0 << "Class A";

    QTest::newRow("half a gateway") << "10.0.0.1"
                                    << ""
                                    << "10." << 7 << "Invalid Gateway address.";
    QTest::newRow("wrong gateway before short mask") << "192.168.1.1"
                                                     << "255.0.0.0"
                                                     << "x" << 7 << "Invalid Gateway address.";
    QTest::newRow("gateway outside") << "10.0.0.1"
                                     << "255.0.0.0"
                                     << "11.0.0.1" << 8 << "Gateway is unreachable.";
    QTest::newRow("gateway outside the class") << "192.168.1.1"
                                               << ""
                                               << "192.168.2.1" << 8 << "Gateway is unreachable.";
    QTest::newRow("gateway inside the class") << "10.0.0.1"
                                              << ""
                                              << "10.255.0.1" << 0 << "Class A";
    QTest::newRow("gateway outside the mask") << "10.0.0.1"
                                              << "255.255.0.0"
                                              << "10.255.0.1" << 8 << "Gateway is unreachable.";
    QTest::newRow("broadcast before gateway") << "10.255.255.255"
                                              << ""
                                              << "11.0.0.1" << 3 << broadcast;
    QTest::newRow("network before gateway") << "10.0.0.0"
                                            << ""
                                            << "11.0.0.1" << 4 << network;
}

void KYIPHostValidatorTest::ipset()
{
    QFETCH(QString, ip);
    QFETCH(QString, mask);
    QFETCH(QString, gateway);
    const KYIPhostValidator validator(nullptr);
    QString message = "from before";
    QTEST(validator.ipsetValidate(ip, mask, gateway, message), "code");
    QTEST(message, "message");
}

void KYIPHostValidatorTest::ipsetWithNumbers_data()
{
    ipset_data();
}

/** Those of the rows that are numbers give the same. */
void KYIPHostValidatorTest::ipsetWithNumbers()
{
    QFETCH(QString, ip);
    QFETCH(QString, mask);
    QFETCH(QString, gateway);
    QFETCH(int, code);
    if (code == 1 || code == 5 || code == 7)
        return;
    const KYIPhostValidator validator(nullptr);
    int ipAddress = 0;
    int maskAddress = 0;
    int gatewayAddress = 0;
    QCOMPARE(validator.str2ip(ip, ipAddress), QValidator::Acceptable);
    QVERIFY(mask.isEmpty() || validator.str2ip(mask, maskAddress) == QValidator::Acceptable);
    QVERIFY(gateway.isEmpty() || validator.str2ip(gateway, gatewayAddress) == QValidator::Acceptable);
    QString message = "from before";
    QCOMPARE(validator.ipsetValidate(&ipAddress, mask.isEmpty() ? nullptr : &maskAddress,
                                     gateway.isEmpty() ? nullptr : &gatewayAddress, message),
             code);
    QTEST(message, "message");
}

namespace {

/** Puts "<>" around every text of the validator. */
class Translator : public QTranslator
{
public:
    QString translate(const char *context, const char *text, const char *, int) const override
    {
        return qstrcmp(context, "KYIPhostValidator") == 0 ? '<' + QString::fromUtf8(text) + '>' : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

void KYIPHostValidatorTest::messagesAreTranslated()
{
    Translator translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    const KYIPhostValidator validator(nullptr);
    const auto messageOf = [&](const char *ip, const char *mask, const char *gateway) {
        QString message;
        validator.ipsetValidate(QString(ip), QString(mask), QString(gateway), message);
        return message;
    };
    QCOMPARE(messageOf("", "", ""), QString("<Invalid IP address.>"));
    QCOMPARE(messageOf("10.0.0.1", "x", ""), QString("<Invalid subnet mask.>"));
    QCOMPARE(messageOf("10.0.0.1", "", "x"), QString("<Invalid Gateway address.>"));
    QCOMPARE(messageOf("10.0.0.1", "0.0.0.0", ""),
             QString("<Invalid subnet mask,\nit must be into <Class A>.>"));
    QCOMPARE(messageOf("10.255.255.255", "", ""),
             QString("<Invalid IP address,\nthat's broadcast address.>"));
    QCOMPARE(messageOf("10.0.0.0", "", ""), QString("<Invalid IP address\nthat's network address.>"));
    QCOMPARE(messageOf("10.0.0.1", "", "11.0.0.1"), QString("<Gateway is unreachable.>"));
    QCOMPARE(messageOf("172.16.0.1", "", ""), QString("<Class B>"));
    QCOMPARE(messageOf("192.168.1.1", "", ""), QString("<Class C>"));
}

QTEST_MAIN(KYIPHostValidatorTest)
#include "kyiphostvalidatortest.moc"
