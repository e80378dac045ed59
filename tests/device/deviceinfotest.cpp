#include "devicefile.h"
#include "kydeviceinfo.h"
#include <QTest>

namespace {

constexpr char Probe[] = "/proc/deviceinfo/probe";

/** The first line of a file with these contents. */
QString lineOf(const QByteArray &contents)
{
    return writeDeviceFile(QLatin1String(Probe), contents) ? KyDeviceInfo::getDevInfo(Probe)
                                                           : QStringLiteral("not written");
}

} // namespace

class DeviceInfoTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void eachReaderHasItsFile_data();
    void eachReaderHasItsFile();
    void modelNameIsTheProductName();
    void nothingIsKeptBetweenCalls();
    void missingFilesGiveEmptyTexts();
    void firstLine_data();
    void firstLine();
    void unreadablePathsAreEmpty();
    void oneTextForAllCalls();
    void productNumber_data();
    void productNumber();
    void cpuNumber_data();
    void cpuNumber();
};

void DeviceInfoTest::init()
{
    QDir(devicePath(QStringLiteral("/proc/deviceinfo"))).removeRecursively();
    removeDeviceFile(QStringLiteral("/proc/cpuinfo"));
}

void DeviceInfoTest::eachReaderHasItsFile_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("format version") << "filever";
    QTest::newRow("vendor") << "vendor";
    QTest::newRow("product") << "product";
    QTest::newRow("model number") << "hardno";
    QTest::newRow("locale") << "locale";
    QTest::newRow("checksum") << "checksum";
}

void DeviceInfoTest::eachReaderHasItsFile()
{
    QFETCH(QString, file);
    QVERIFY(writeDeviceFile("/proc/deviceinfo/" + file, "text of it\n"));
    const QMap<QString, QString> texts = {
        {"filever", KyDeviceInfo::getFormatVersion()}, {"vendor", KyDeviceInfo::getVendorName()},
        {"product", KyDeviceInfo::getProductName()},   {"hardno", KyDeviceInfo::getHandNumberStr()},
        {"locale", KyDeviceInfo::getLanguage()},       {"checksum", KyDeviceInfo::getCheckSum()}};
    for (auto text = texts.begin(); text != texts.end(); ++text)
        QCOMPARE(text.value(), text.key() == file ? QStringLiteral("text of it") : QString());
}

void DeviceInfoTest::modelNameIsTheProductName()
{
    QVERIFY(writeDeviceFile(QStringLiteral("/proc/deviceinfo/product"), "KY-3500\n"));
    QCOMPARE(KyDeviceInfo::modelName(), QStringLiteral("KY-3500"));
}

void DeviceInfoTest::nothingIsKeptBetweenCalls()
{
    QVERIFY(writeDeviceFile(QStringLiteral("/proc/deviceinfo/vendor"), "first\n"));
    QCOMPARE(KyDeviceInfo::getVendorName(), QStringLiteral("first"));
    QVERIFY(writeDeviceFile(QStringLiteral("/proc/deviceinfo/vendor"), "second\n"));
    QCOMPARE(KyDeviceInfo::getVendorName(), QStringLiteral("second"));
    QVERIFY(removeDeviceFile(QStringLiteral("/proc/deviceinfo/vendor")));
    QCOMPARE(KyDeviceInfo::getVendorName(), QString());
}

void DeviceInfoTest::missingFilesGiveEmptyTexts()
{
    QCOMPARE(KyDeviceInfo::getFormatVersion(), QString());
    QCOMPARE(KyDeviceInfo::modelName(), QString());
    QCOMPARE(KyDeviceInfo::getProductNumber(), 0);
    QCOMPARE(KyDeviceInfo::getCpuNumber(), 0);
}

void DeviceInfoTest::firstLine_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty file") << QByteArray() << QString();
    QTest::newRow("empty line") << QByteArray("\nsecond\n") << QString();
    QTest::newRow("trailing line feed") << QByteArray("KY-3500\n") << "KY-3500";
    QTest::newRow("no line feed") << QByteArray("KY-3500") << "KY-3500";
    QTest::newRow("second line") << QByteArray("first\nsecond\n") << "first";
    QTest::newRow("blanks stay") << QByteArray(" \ta  b \t\n") << " \ta  b \t";
    QTest::newRow("carriage return stays") << QByteArray("a\r\n") << "a\r";
    QTest::newRow("ends at a NUL") << QByteArray("a\0b\n", 4) << "a";
    QTest::newRow("510 bytes") << QByteArray(510, 'x') + '\n' << QString(510, 'x');
    QTest::newRow("511 bytes") << QByteArray(511, 'x') + '\n' << QString(511, 'x');
    QTest::newRow("512 bytes") << QByteArray(512, 'x') + '\n' << QString(511, 'x');
    QTest::newRow("600 bytes") << QByteArray(600, 'x') + '\n' << QString(511, 'x');
    QTest::newRow("a megabyte") << QByteArray(1 << 20, 'x') << QString(511, 'x');
    QTest::newRow("UTF-8") << QByteArray("\xe6\x9d\xb1\n") << QString::fromUtf8("東");
    QTest::newRow("other bytes") << QByteArray("a\xff\n")
                                 << QStringLiteral("a") + QChar::ReplacementCharacter;
}

void DeviceInfoTest::firstLine()
{
    QFETCH(QByteArray, contents);
    QTEST(lineOf(contents), "text");
}

void DeviceInfoTest::unreadablePathsAreEmpty()
{
    QCOMPARE(lineOf("something"), QStringLiteral("something"));
    QCOMPARE(KyDeviceInfo::getDevInfo("/proc/deviceinfo/absent"), QString());
    QCOMPARE(KyDeviceInfo::getDevInfo("/proc/deviceinfo"), QString()); // a folder
    QCOMPARE(KyDeviceInfo::getDevInfo(""), QString());
    QCOMPARE(KyDeviceInfo::getDevInfo(nullptr), QString());
}

void DeviceInfoTest::oneTextForAllCalls()
{
    QVERIFY(writeDeviceFile(QStringLiteral("/proc/deviceinfo/vendor"), "other"));
    lineOf("first");
    const QString &text = KyDeviceInfo::getDevInfo(Probe);
    QCOMPARE(&KyDeviceInfo::getDevInfo("/proc/deviceinfo/vendor"), &text);
    QCOMPARE(text, QStringLiteral("other"));
}

void DeviceInfoTest::productNumber_data()
{
    QTest::addColumn<QByteArray>("hardno"); // null: no such file
    QTest::addColumn<QByteArray>("product");
    QTest::addColumn<int>("number");

    const QByteArray none;
    QTest::newRow("neither file") << none << none << 0;
    QTest::newRow("KY-3000D") << none << QByteArray("KY-3000D\n") << 1;
    QTest::newRow("KY-3500") << none << QByteArray("KY-3500\n") << 2;
    QTest::newRow("KY-A100") << none << QByteArray("KY-A100\n") << 3;
    QTest::newRow("KY-3600") << none << QByteArray("KY-3600\n") << 4;
    QTest::newRow("KY-C100") << none << QByteArray("KY-C100\n") << 5;
    QTest::newRow("unknown name") << none << QByteArray("KY-9999\n") << 0;
    QTest::newRow("other case") << none << QByteArray("ky-3500\n") << 0;
    QTest::newRow("trailing blanks") << none << QByteArray("KY-3500 \n") << 0;
    QTest::newRow("leading blank") << none << QByteArray(" KY-3500\n") << 0;
    QTest::newRow("name that goes on") << none << QByteArray("KY-3500D\n") << 0;
    QTest::newRow("number wins") << QByteArray("3\n") << QByteArray("KY-3500\n") << 3;
    QTest::newRow("number without a row") << QByteArray("7\n") << QByteArray("KY-3500\n") << 7;
    QTest::newRow("zero is a number") << QByteArray("0\n") << QByteArray("KY-3500\n") << 0;
    QTest::newRow("negative number") << QByteArray("-2\n") << QByteArray("KY-3500\n") << -2;
    QTest::newRow("blanks around it") << QByteArray(" 4 \n") << QByteArray("KY-3500\n") << 4;
    QTest::newRow("number and more: name") << QByteArray("4 a\n") << QByteArray("KY-3500\n") << 2;
    QTest::newRow("base 10") << QByteArray("010\n") << none << 10;
    QTest::newRow("no number: name") << QByteArray("three\n") << QByteArray("KY-3500\n") << 2;
    QTest::newRow("hexadecimal: name") << QByteArray("0x3\n") << QByteArray("KY-3500\n") << 2;
    QTest::newRow("too big: name") << QByteArray("99999999999\n") << QByteArray("KY-3500\n") << 2;
    QTest::newRow("empty number: name") << QByteArray("\n") << QByteArray("KY-C100\n") << 5;
}

void DeviceInfoTest::productNumber()
{
    QFETCH(QByteArray, hardno);
    QFETCH(QByteArray, product);
    QVERIFY(hardno.isNull() || writeDeviceFile(QStringLiteral("/proc/deviceinfo/hardno"), hardno));
    QVERIFY(product.isNull() || writeDeviceFile(QStringLiteral("/proc/deviceinfo/product"), product));
    QTEST(KyDeviceInfo::getProductNumber(), "number");
}

void DeviceInfoTest::cpuNumber_data()
{
    QTest::addColumn<QByteArray>("cpuinfo");
    QTest::addColumn<int>("number");

    QTest::newRow("StrongARM") << QByteArray("Processor : StrongARM-1110 rev 9\nBogoMIPS : 137\n") << 1;
    QTest::newRow("XScale") << QByteArray("Processor : Intel XScale-PXA255 rev 6\n") << 2;
    QTest::newRow("both") << QByteArray("XScale StrongARM\n") << 1;
    QTest::newRow("neither") << QByteArray("processor : 0\n") << 0;
    QTest::newRow("other case") << QByteArray("strongarm xscale\n") << 0;
    QTest::newRow("second line") << QByteArray("processor : 0\nXScale\n") << 0;
    QTest::newRow("empty") << QByteArray() << 0;
}

void DeviceInfoTest::cpuNumber()
{
    QFETCH(QByteArray, cpuinfo);
    QVERIFY(writeDeviceFile(QStringLiteral("/proc/cpuinfo"), cpuinfo));
    QTEST(KyDeviceInfo::getCpuNumber(), "number");
}

QTEST_GUILESS_MAIN(DeviceInfoTest)
#include "deviceinfotest.moc"
