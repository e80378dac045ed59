#include "childprocess.h"
#include "devicefile.h"
#include "kypowerstatusmanager.h"
#include <climits>
#include <memory>

using Power = KyPowerStatus;

namespace {

constexpr Power::BatteryStatus Before = Power::BatteryStatus(63); // no line gives it

/** What the reader fills, with start values that no line of these tests gives. */
struct Fields
{
    Power::ACStatus ac = Power::Backup;
    Power::BatteryStatus battery = Before;
    int percent = 77;
    int seconds = 55;
    bool accurate = true;
    bool exists = false;

    bool read(Power::BatteryType type)
    {
        static_cast<void>(KyPowerStatusManager::readStatus()); // the manager is made at the first call
        return KyPowerStatusManager::kyPowerManager->getProcApmStatusExt(type, ac, battery, percent, seconds,
                                                                         accurate, exists);
    }
};

bool writeApm(const QByteArray &contents)
{
    return writeDeviceFile(QStringLiteral("/proc/apm"), contents);
}

/** Fills the manager's status from a file with these contents. */
const Power &reading(const QByteArray &line)
{
    if (!writeApm(line))
        qFatal("/proc/apm can't be written");
    return KyPowerStatusManager::readStatus();
}

constexpr char FullLine[] = "1.16 1.2 0x02 0x01 0x00 0xff 98% 45 m\n";

} // namespace

class PowerStatusTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void nothingIsKnownAtFirst();
    void chargingOnMains();
    void states_data();
    void states();
    void mainsStates_data();
    void mainsStates();
    void percent_data();
    void percent();
    void seconds_data();
    void seconds();
    void partialLines_data();
    void partialLines();
    void forms_data();
    void forms();
    void hugeAndBinaryFiles_data();
    void hugeAndBinaryFiles();
    void packIsNeverRead();
    void biosEntryExistsAndIsNotRead();
    void typesBeyondAreRefused();
    void missingFileChangesNothing();
    void readingIsNeverAccurate();
    void existence();
    void mainsStateIsOneForAll();
    void largerTypesHaveDefaults();
    void percentIsHiddenWhileCharging();
    void sameObjectAtEveryReading();
    void copiesAreIndependent();
    void differences_data();
    void differences();
    void existenceIsNoDifference();
    void filesThatAppearLaterAreNotRead();
    void managerIsMadeAtTheFirstReading();
};

/** All three files are there before the manager looks for them. */
void PowerStatusTest::initTestCase()
{
    QVERIFY(writeApm(FullLine));
    QVERIFY(writeDeviceFile(QStringLiteral("/proc/apm_bp"), "1.16 1.2 0x02 0x01 0x02 0xff 7% 45 m\n"));
    QVERIFY(writeDeviceFile(QStringLiteral("/proc/apm_bios"), "1.16 1.2 0x02 0x01 0x02 0xff 7% 45 m\n"));
}

void PowerStatusTest::nothingIsKnownAtFirst()
{
    const Power status;
    for (const auto type : {Power::BatteryMain, Power::BatteryPack, Power::BatteryBios}) {
        QCOMPARE(status.acStatusExt(type), Power::Offline);
        QCOMPARE(status.batteryStatusExt(type), Power::NotPresent);
        QCOMPARE(status.batteryPercentAccurateExt(type), false);
        QCOMPARE(status.batteryPercentRemainingExt(type), -1);
        QCOMPARE(status.batteryTimeRemainingExt(type), -1);
        QCOMPARE(status.exists(type), false);
    }
}

void PowerStatusTest::chargingOnMains()
{
    Fields fields;
    QVERIFY(writeApm("1.16 1.2 0x02 0x01 0x03 0xff 98% -1 ?\n"));
    QVERIFY(fields.read(Power::BatteryMain));
    QCOMPARE(fields.percent, 98);
    const Power &status = KyPowerStatusManager::readStatus();
    QCOMPARE(status.acStatus(), Power::Online);
    QCOMPARE(status.batteryStatus(), Power::Charging);
    QCOMPARE(status.batteryTimeRemaining(), -1);
    QCOMPARE(status.batteryPercentRemaining(), -1);
}

void PowerStatusTest::states_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("estimate");

    QTest::newRow("high") << QByteArray("0x00") << int(Power::High) << 100;
    QTest::newRow("low") << QByteArray("0x01") << int(Power::Low) << 30;
    QTest::newRow("critical") << QByteArray("0x02") << int(Power::Critical) << 5;
    QTest::newRow("charging") << QByteArray("0x03") << int(Power::Charging) << -1;
    QTest::newRow("not present") << QByteArray("0x04") << int(Power::NotPresent) << 77;
    QTest::newRow("very low") << QByteArray("0x7f") << int(Power::VeryLow) << 10;
    QTest::newRow("without a meaning") << QByteArray("0x05") << int(Before) << 77;
    QTest::newRow("decimal of very low") << QByteArray("0x127") << int(Before) << 77;
    QTest::newRow("unknown") << QByteArray("0xff") << int(Before) << 77;
}

void PowerStatusTest::states()
{
    QFETCH(QByteArray, value);
    for (const QByteArray percent : {"-1", "101", "2147483647", "99999999999"}) {
        Fields fields;
        QVERIFY(writeApm("1.16 1.2 0x02 0x01 " + value + " 0xff " + percent + "% -1 ?\n"));
        QVERIFY(fields.read(Power::BatteryMain));
        QTEST(int(fields.battery), "status");
        QTEST(fields.percent, "estimate");
    }
}

void PowerStatusTest::mainsStates_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");

    QTest::newRow("offline") << QByteArray("0x00") << int(Power::Backup) << int(Power::Offline);
    QTest::newRow("online") << QByteArray("0x01") << int(Power::Backup) << int(Power::Online);
    QTest::newRow("backup") << QByteArray("0x02") << int(Power::Offline) << int(Power::Backup);
    QTest::newRow("unknown") << QByteArray("0xff") << int(Power::Backup) << int(Power::Backup);
    QTest::newRow("without a meaning") << QByteArray("0x03") << int(Power::Online) << int(Power::Online);
    QTest::newRow("negative") << QByteArray("0x-1") << int(Power::Backup) << int(Power::Backup);
}

void PowerStatusTest::mainsStates()
{
    QFETCH(QByteArray, value);
    QFETCH(int, before);
    Fields fields;
    fields.ac = Power::ACStatus(before);
    QVERIFY(writeApm("1.16 1.2 0x02 " + value + " 0x00 0xff 50% -1 ?\n"));
    QVERIFY(fields.read(Power::BatteryMain));
    QTEST(int(fields.ac), "after");
    QCOMPARE(fields.battery, Power::High); // the rest of the line was read
}

void PowerStatusTest::percent_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("percent"); // 30 is the estimate

    QTest::newRow("0") << QByteArray("0") << 0;
    QTest::newRow("1") << QByteArray("1") << 1;
    QTest::newRow("100") << QByteArray("100") << 100;
    QTest::newRow("101 is unknown") << QByteArray("101") << 30;
    QTest::newRow("-1 is unknown") << QByteArray("-1") << 30;
    QTest::newRow("with a plus") << QByteArray("+7") << 7;
    QTest::newRow("decimal despite the zero") << QByteArray("010") << 10;
    QTest::newRow("no overflow") << QByteArray("4294967346") << 30;
    QTest::newRow("no underflow") << QByteArray("-4294967246") << 30;
}

void PowerStatusTest::percent()
{
    QFETCH(QByteArray, value);
    Fields fields;
    QVERIFY(writeApm("1.16 1.2 0x02 0x01 0x01 0xff " + value + "% 20 s\n"));
    QVERIFY(fields.read(Power::BatteryMain));
    QTEST(fields.percent, "percent");
    QCOMPARE(fields.seconds, 20);
}

void PowerStatusTest::seconds_data()
{
    QTest::addColumn<QByteArray>("time");
    QTest::addColumn<int>("seconds");

    QTest::newRow("minutes") << QByteArray("45 m") << 2700;
    QTest::newRow("seconds") << QByteArray("45 s") << 45;
    QTest::newRow("no unit that is known") << QByteArray("45 ?") << -1;
    QTest::newRow("hours are no unit") << QByteArray("45 h") << -1;
    QTest::newRow("capital") << QByteArray("45 M") << -1;
    QTest::newRow("unit missing") << QByteArray("45\n") << -1;
    QTest::newRow("unit without a blank") << QByteArray("45m") << 2700;
    QTest::newRow("longer word") << QByteArray("45 min") << 2700;
    QTest::newRow("0") << QByteArray("0 s") << 0;
    QTest::newRow("hexadecimal") << QByteArray("0x1F s") << 31;
    QTest::newRow("octal") << QByteArray("017 s") << 15;
    QTest::newRow("octal ends at 8") << QByteArray("018 s") << -1;
    QTest::newRow("negative seconds") << QByteArray("-1 s") << -1;
    QTest::newRow("negative minutes") << QByteArray("-1 m") << -60;
    QTest::newRow("most seconds") << QByteArray("2147483647 s") << INT_MAX;
    QTest::newRow("too many seconds") << QByteArray("4294967297 s") << INT_MAX;
    QTest::newRow("most minutes") << QByteArray("35791394 m") << 2147483640;
    QTest::newRow("too many minutes") << QByteArray("35791395 m") << INT_MAX;
    QTest::newRow("far too many minutes") << QByteArray("99999999999999999999999 m") << INT_MAX;
    QTest::newRow("far too few minutes") << QByteArray("-99999999999999999999999 m") << -INT_MAX;
    QTest::newRow("no number") << QByteArray("? s") << -1;
}

void PowerStatusTest::seconds()
{
    QFETCH(QByteArray, time);
    Fields fields;
    QVERIFY(writeApm("1.16 1.2 0x02 0x01 0x01 0xff 98% " + time + '\n'));
    QVERIFY(fields.read(Power::BatteryMain));
    QTEST(fields.seconds, "seconds");
    QCOMPARE(fields.percent, 98);
}

void PowerStatusTest::partialLines_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("ac");      // Backup: not read
    QTest::addColumn<int>("battery"); // Before: not read
    QTest::addColumn<int>("percent"); // 77: not read; 30: estimated; the time is never read

    const auto row = [](const char *name, const char *line, Power::ACStatus ac, Power::BatteryStatus battery,
                        int percent) {
        QTest::newRow(name) << QByteArray(line) << int(ac) << int(battery) << percent;
    };
    row("empty", "", Power::Backup, Before, 77);
    row("blank in front", " 1.16 1.2 0x02 0x01 0x01 0xff 98% 45 m", Power::Backup, Before, 77);
    row("driver version alone", "1.16", Power::Backup, Before, 77);
    row("BIOS version without a point", "1.16 12 0x02 0x01 0x01 0xff 98% 45 m", Power::Backup, Before, 77);
    row("BIOS version without a fraction", "1.16 1. x02 0x01 0x01 0xff 98% 45 m", Power::Backup, Before, 77);
    row("flags without 0x", "1.16 1.2 02 0x01 0x01 0xff 98% 45 m", Power::Backup, Before, 77);
    row("flags with 0X", "1.16 1.2 0X02 0x01 0x01 0xff 98% 45 m", Power::Backup, Before, 77);
    row("ends before the mains state", "1.16 1.2 0x02", Power::Backup, Before, 77);
    row("mains state is a word", "1.16 1.2 0x02 on 0x01 0xff 98% 45 m", Power::Backup, Before, 77);
    row("mains state alone", "1.16 1.2 0x02 0x01", Power::Online, Before, 77);
    row("battery state without digits", "1.16 1.2 0x02 0x01 0xg", Power::Online, Before, 77);
    row("ends at the battery state", "1.16 1.2 0x02 0x01 0x01\n", Power::Online, Power::Low, 30);
    row("flag is missing", "1.16 1.2 0x02 0x01 0x01 98% 45 m", Power::Online, Power::Low, 30);
    row("ends at the flag", "1.16 1.2 0x02 0x01 0x01 0xff", Power::Online, Power::Low, 30);
    row("percent is a word", "1.16 1.2 0x02 0x01 0x01 0xff full", Power::Online, Power::Low, 30);
    row("percent without its sign", "1.16 1.2 0x02 0x01 0x01 0xff 98 45 m", Power::Online, Power::Low, 98);
    row("a sign and no digits", "1.16 1.2 0x02 0x01 0x01 0xff -% 45 m", Power::Online, Power::Low, 30);
    row("ends at the percent", "1.16 1.2 0x02 0x01 0x01 0xff 98%", Power::Online, Power::Low, 98);
}

void PowerStatusTest::partialLines()
{
    QFETCH(QByteArray, line);
    Fields fields;
    QVERIFY(writeApm(line));
    QVERIFY(fields.read(Power::BatteryMain));
    QTEST(int(fields.ac), "ac");
    QTEST(int(fields.battery), "battery");
    QTEST(fields.percent, "percent");
    QCOMPARE(fields.accurate, false);
    QCOMPARE(fields.seconds, -1);
}

void PowerStatusTest::forms_data()
{
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("as the kernel writes it") << QByteArray("1.16 1.2 0x02 0x01 0x01 0xff 98% 45 m\n");
    QTest::newRow("without the line feed") << QByteArray("1.16 1.2 0x02 0x01 0x01 0xff 98% 45 m");
    QTest::newRow("many blanks") << QByteArray("1.16   1.2\t0x02  0x01 \v0x01\f 0xff\r 98 %   45   m");
    QTest::newRow("several lines") << QByteArray("1.16 1.2\n0x02\n0x01\n0x01\n0xff\n98%\n45\nm\n");
    QTest::newRow("any driver version") << QByteArray("a\nb\tc 1.2 0x02 0x01 0x01 0xff 98% 45 m");
    QTest::newRow("signs") << QByteArray("1.16 -1.+2 0x-2 0x+1 0x1 0x-ff +98% +45 m");
    QTest::newRow("0x twice") << QByteArray("1.16 1.2 0x0X02 0x0x01 0x0X01 0x0xFF 98% 45 m");
    QTest::newRow("long skipped numbers")
        << QByteArray("1.16 99999999999.99999999999 0xffffffffffffffffffff 0x1 0x1 0xfffffffffffff 98% 45 m");
    QTest::newRow("more behind") << QByteArray("1.16 1.2 0x02 0x01 0x01 0xff 98% 45 m 1.16 1.2 0x02 0x02");
}

void PowerStatusTest::forms()
{
    QFETCH(QByteArray, line);
    Fields fields;
    QVERIFY(writeApm(line));
    QVERIFY(fields.read(Power::BatteryMain));
    QCOMPARE(fields.ac, Power::Online);
    QCOMPARE(fields.battery, Power::Low);
    QCOMPARE(fields.percent, 98);
    QCOMPARE(fields.seconds, 2700);
}

void PowerStatusTest::hugeAndBinaryFiles_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<int>("percent"); // 77: not read

    constexpr qsizetype Megabyte = 1 << 20;
    const QByteArray line(FullLine);
    QByteArray bytes(Megabyte, '\0');
    for (qsizetype i = 0; i < bytes.size(); ++i)
        bytes[i] = char(i * 167 + (i >> 8));
    QTest::newRow("a megabyte without a blank") << QByteArray(Megabyte, 'x') << 77;
    QTest::newRow("a megabyte of driver version") << QByteArray(Megabyte, 'x') + ' ' + line << 77;
    QTest::newRow("a megabyte of digits") << "1.16 " + QByteArray(Megabyte, '9') << 77;
    QTest::newRow("a megabyte behind the line") << line + QByteArray(Megabyte, 'x') << 98;
    QTest::newRow("NULs") << QByteArray(Megabyte, '\0') << 77;
    QTest::newRow("all bytes") << bytes << 77;
    QTest::newRow("a NUL in the line") << QByteArray("1.16 1.2 0x02\0 0x01 0x01 0xff 98% 45 m", 39) << 77;
    QTest::newRow("bytes above 127 in a number") << QByteArray("1.16 1.2 0x02 0x\xff\xfe 0x01") << 77;
}

void PowerStatusTest::hugeAndBinaryFiles()
{
    QFETCH(QByteArray, contents);
    Fields fields;
    QVERIFY(writeApm(contents));
    QVERIFY(fields.read(Power::BatteryMain));
    QTEST(fields.percent, "percent");
}

void PowerStatusTest::packIsNeverRead()
{
    Fields fields;
    fields.exists = true;
    QVERIFY(fields.read(Power::BatteryPack));
    QCOMPARE(fields.exists, false);
    QCOMPARE(fields.ac, Power::Backup);
    QCOMPARE(fields.battery, Before);
    QCOMPARE(fields.percent, 77);
    QCOMPARE(fields.seconds, 55);
    QCOMPARE(fields.accurate, true);
}

void PowerStatusTest::biosEntryExistsAndIsNotRead()
{
    Fields fields;
    QCOMPARE(fields.read(Power::BatteryBios), false);
    QCOMPARE(fields.exists, true);
    QCOMPARE(fields.ac, Power::Backup);
    QCOMPARE(fields.battery, Before);
    QCOMPARE(fields.percent, 77);
    QCOMPARE(fields.seconds, 55);
}

void PowerStatusTest::typesBeyondAreRefused()
{
    Fields fields;
    QCOMPARE(fields.read(Power::BatteryType(3)), false);
    QCOMPARE(fields.exists, false);
    QCOMPARE(fields.percent, 77);
}

void PowerStatusTest::missingFileChangesNothing()
{
    const Power before = reading(FullLine);
    QCOMPARE(before.batteryPercentRemaining(), 98);
    QVERIFY(removeDeviceFile(QStringLiteral("/proc/apm")));
    QVERIFY(!(KyPowerStatusManager::readStatus() != before));

    Fields fields;
    QCOMPARE(fields.read(Power::BatteryMain), false);
    QCOMPARE(fields.exists, true);
    QCOMPARE(fields.percent, 77);
    QCOMPARE(fields.seconds, 55);
    QCOMPARE(fields.accurate, true);
}

void PowerStatusTest::readingIsNeverAccurate()
{
    Fields fields;
    QVERIFY(writeApm(FullLine));
    QVERIFY(fields.read(Power::BatteryMain));
    QCOMPARE(fields.accurate, false);
    QCOMPARE(KyPowerStatusManager::readStatus().batteryPercentAccurate(), false);
}

void PowerStatusTest::existence()
{
    const Power &status = reading(FullLine);
    QCOMPARE(status.exists(Power::BatteryMain), true);
    QCOMPARE(status.exists(Power::BatteryPack), false);
    QCOMPARE(status.exists(Power::BatteryBios), true);
}

void PowerStatusTest::mainsStateIsOneForAll()
{
    const Power &status = reading(FullLine);
    for (const auto type : {Power::BatteryMain, Power::BatteryPack, Power::BatteryBios})
        QCOMPARE(status.acStatusExt(type), Power::Online);
    QCOMPARE(status.batteryStatusExt(Power::BatteryPack), Power::NotPresent);
    QCOMPARE(status.batteryStatusExt(Power::BatteryBios), Power::NotPresent);
    QCOMPARE(status.batteryPercentRemainingExt(Power::BatteryBios), -1);
    QCOMPARE(status.batteryTimeRemainingExt(Power::BatteryPack), -1);
}

void PowerStatusTest::largerTypesHaveDefaults()
{
    const Power &status = reading(FullLine);
    const auto beyond = Power::BatteryType(3);
    QCOMPARE(status.acStatusExt(beyond), Power::Offline);
    QCOMPARE(status.batteryStatusExt(beyond), Power::NotPresent);
    QCOMPARE(status.batteryPercentAccurateExt(beyond), false);
    QCOMPARE(status.batteryPercentRemainingExt(beyond), -1);
    QCOMPARE(status.batteryTimeRemainingExt(beyond), -1);
    QCOMPARE(status.exists(beyond), false);
}

void PowerStatusTest::percentIsHiddenWhileCharging()
{
    const Power &status = reading("1.16 1.2 0x02 0x01 0x03 0xff 98% 45 m\n");
    QCOMPARE(status.batteryPercentRemaining(), -1);
    QCOMPARE(status.batteryTimeRemaining(), 2700);
    const Power &later = reading("1.16 1.2 0x02 0x00 0xff 0xff -1% 45 m\n"); // state and charge stay
    QCOMPARE(later.batteryStatus(), Power::Charging);
    const Power &discharging = reading("1.16 1.2 0x02 0x00 0x04 0xff -1% 45 m\n"); // the charge stays
    QCOMPARE(discharging.batteryPercentRemaining(), 98);
}

void PowerStatusTest::sameObjectAtEveryReading()
{
    const Power &first = reading("1.16 1.2 0x02 0x01 0x00 0xff 98% 45 m\n");
    const Power &second = reading("1.16 1.2 0x02 0x01 0x00 0xff 97% 45 m\n");
    QCOMPARE(&first, &second);
    QCOMPARE(first.batteryPercentRemaining(), 97);
}

void PowerStatusTest::copiesAreIndependent()
{
    const Power &status = reading("1.16 1.2 0x02 0x01 0x00 0xff 98% 45 m\n");
    const Power copy(status);
    Power assigned;
    assigned = status;
    reading("1.16 1.2 0x02 0x00 0x02 0xff 3% 1 m\n");
    for (const Power *earlier : {&copy, static_cast<const Power *>(&assigned)}) {
        QCOMPARE(earlier->acStatus(), Power::Online);
        QCOMPARE(earlier->batteryStatus(), Power::High);
        QCOMPARE(earlier->batteryPercentRemaining(), 98);
        QCOMPARE(earlier->batteryTimeRemaining(), 2700);
        QCOMPARE(earlier->exists(Power::BatteryMain), true);
    }
    const Power &itself = assigned;
    assigned = itself;
    QCOMPARE(assigned.batteryPercentRemaining(), 98);
}

void PowerStatusTest::differences_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("differs");

    QTest::newRow("none") << QByteArray(FullLine) << false;
    QTest::newRow("mains state") << QByteArray("1.16 1.2 0x02 0x00 0x00 0xff 98% 45 m\n") << true;
    QTest::newRow("battery state") << QByteArray("1.16 1.2 0x02 0x01 0x01 0xff 98% 45 m\n") << true;
    QTest::newRow("charge") << QByteArray("1.16 1.2 0x02 0x01 0x00 0xff 97% 45 m\n") << true;
    QTest::newRow("time") << QByteArray("1.16 1.2 0x02 0x01 0x00 0xff 98% 45 s\n") << true;
    QTest::newRow("what is not kept") << QByteArray("1.17 1.3 0x03 0x01 0x00 0x00 98% 2700 s\n") << false;
}

void PowerStatusTest::differences()
{
    QFETCH(QByteArray, line);
    const Power before = reading(FullLine);
    const Power &after = reading(line);
    QTEST(after != before, "differs");
    QTEST(before != after, "differs");
}

void PowerStatusTest::existenceIsNoDifference()
{
    const Power unread;
    reading("1.16 1.2 0x02 0x00 0x03 0xff -1% -1 ?\n"); // makes the charge unknown
    const Power &read = reading("1.16 1.2 0x02 0x00 0x04 0xff -1% -1 ?\n");
    QVERIFY(read.exists(Power::BatteryMain) && !unread.exists(Power::BatteryMain));
    QVERIFY(!(read != unread));
}

void PowerStatusTest::filesThatAppearLaterAreNotRead()
{
    QVERIFY(removeDeviceFile(QStringLiteral("/proc/apm")));
    ChildProcess child({QStringLiteral("lateFile")});
    QCOMPARE(child.readLine(), QByteArray("32 -1 0 1"));
    QCOMPARE(child.finish(), 0);
}

void PowerStatusTest::managerIsMadeAtTheFirstReading()
{
    QVERIFY(writeApm(FullLine));
    ChildProcess child({QStringLiteral("manager")});
    QCOMPARE(child.readLine(), QByteArray("0 0"));
    QCOMPARE(child.readLine(), QByteArray("1 1"));
    QCOMPARE(child.finish(), 0);
}

namespace {

/** Reads, and once more when /proc/apm has come. /proc/apm_bios is there all the time. */
void sayLateFile()
{
    static_cast<void>(KyPowerStatusManager::readStatus());
    const Power &status = reading(FullLine);
    ChildProcess::say(QByteArray::number(status.batteryStatus()) + ' ' +
                      QByteArray::number(status.batteryPercentRemaining()) + ' ' +
                      QByteArray::number(int(status.exists(Power::BatteryMain))) + ' ' +
                      QByteArray::number(int(status.exists(Power::BatteryBios))));
}

void sayManager()
{
    ChildProcess::say(KyPowerStatusManager::kyPowerManager || KyPowerStatusManager::kyPs ? "1 1" : "0 0");
    const bool isFilled = &KyPowerStatusManager::readStatus() == KyPowerStatusManager::kyPs;
    ChildProcess::say(isFilled && KyPowerStatusManager::kyPowerManager ? "1 1" : "0 0");
}

int childMain(int, char **argv)
{
    if (qstrcmp(argv[1], "lateFile") == 0)
        sayLateFile();
    else
        sayManager();
    return 0;
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(PowerStatusTest, childMain)
#include "powerstatustest.moc"
