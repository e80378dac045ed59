#include "powersupplies.h"
#include <cstdio>
#include <QtTest>

namespace {

/** The files of a power supply: type, status, capacity, ... */
using Supply = QMap<QString, QByteArray>;
using Supplies = QList<Supply>;

constexpr int Offline = 0, Online = 1, Backup = 2;
constexpr int High = 0, Low = 1, Critical = 2, Charging = 3, NotPresent = 4, VeryLow = 127;

void writeFile(const QString &path, const QByteArray &contents)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents + '\n');
}

struct ApmLine
{
    int fields = 0;
    unsigned ac = 0xee, status = 0xee, flag = 0xee;
    int percent = -2, seconds = -2;
    char unit = 0;
};

/** Reads the line as its readers do. */
ApmLine parse(const QByteArray &line)
{
    ApmLine apm;
    apm.fields = std::sscanf(line.constData(), "%*[^ ] %*d.%*d 0x%*x 0x%x 0x%x 0x%x %d%% %i %c", &apm.ac,
                             &apm.status, &apm.flag, &apm.percent, &apm.seconds, &apm.unit);
    return apm;
}

Supply supply(const char *type, const char *online)
{
    return {{"type", type}, {"online", online}};
}

Supply battery(const char *status, const char *capacity, const Supply &more = {})
{
    Supply battery{{"type", "Battery"}, {"status", status}, {"capacity", capacity}};
    battery.insert(more);
    return battery;
}

/** A battery that tells of energy, in Wh and W. */
Supply energyBattery(const char *status, int now, int full, int rate = -1)
{
    const auto micro = [](int value) { return QByteArray::number(value * 1000000LL); };
    Supply battery{
        {"type", "Battery"}, {"status", status}, {"energy_now", micro(now)}, {"energy_full", micro(full)}};
    if (rate >= 0)
        battery.insert("power_now", micro(rate));
    return battery;
}

void row(const char *name, const Supplies &supplies, int ac, int status, int percent, int seconds = -1)
{
    QTest::newRow(name) << supplies << ac << status << percent << seconds;
}

void addColumns()
{
    QTest::addColumn<Supplies>("supplies");
    QTest::addColumn<int>("ac");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("seconds");
}

void checkLine()
{
    QFETCH(Supplies, supplies);
    QTemporaryDir folder;
    for (int i = 0; i < supplies.size(); ++i) {
        for (auto file = supplies[i].cbegin(); file != supplies[i].cend(); ++file)
            writeFile(folder.filePath(QString("supply%1/%2").arg(i).arg(file.key())), file.value());
    }
    const ApmLine apm = parse(apmLine(folder.path()));
    QCOMPARE(apm.fields, 6);
    QTEST(int(apm.ac), "ac");
    QTEST(int(apm.status), "status");
    QTEST(apm.percent, "percent");
    QTEST(apm.seconds, "seconds");
    QCOMPARE(apm.unit, apm.seconds < 0 ? '?' : 's');
    QCOMPARE(apm.flag, 0xffU);
}

} // namespace

class PowerSuppliesTest : public QObject
{
    Q_OBJECT
private slots:
    void machineWithoutFolder();
    void oneBattery_data();
    void oneBattery() { checkLine(); }
    void mains_data();
    void mains() { checkLine(); }
    void others_data();
    void others() { checkLine(); }
    void amounts_data();
    void amounts() { checkLine(); }
    void twoBatteries_data();
    void twoBatteries() { checkLine(); }
};

void PowerSuppliesTest::machineWithoutFolder()
{
    QCOMPARE(apmLine("/nonexistent"), QByteArray("1.16 1.2 0x02 0x01 0x04 0xff -1% -1 ?\n"));
}

void PowerSuppliesTest::oneBattery_data()
{
    addColumns();
    row("high", {battery("Discharging", "80"), supply("Mains", "0")}, Offline, High, 80);
    row("just high", {battery("Discharging", "31")}, Offline, High, 31);
    row("low", {battery("Discharging", "30")}, Offline, Low, 30);
    row("just low", {battery("Discharging", "11")}, Offline, Low, 11);
    row("very low", {battery("Discharging", "10")}, Offline, VeryLow, 10);
    row("just very low", {battery("Discharging", "6")}, Offline, VeryLow, 6);
    row("critical", {battery("Discharging", "5")}, Offline, Critical, 5);
    row("empty", {battery("Discharging", "0")}, Offline, Critical, 0);
    row("charging", {battery("Charging", "42"), supply("Mains", "1")}, Online, Charging, 42);
    row("above 100", {battery("Discharging", "104")}, Offline, High, 100);
    row("below 0", {battery("Discharging", "-5")}, Offline, High, -1);
    row("unknown charge", {battery("Discharging", "?")}, Offline, High, -1);
    row("time left", {battery("Discharging", "50", {{"time_to_empty_now", "5400"}})}, Offline, High, 50,
        5400);
    row("time while charging", {battery("Charging", "50", {{"time_to_empty_now", "5400"}})}, Online, Charging,
        50);
}

void PowerSuppliesTest::mains_data()
{
    addColumns();
    const Supply plugged = supply("Mains", "1"), unplugged = supply("Mains", "0");
    row("no supply", {}, Online, NotPresent, -1);
    row("desktop", {plugged}, Online, NotPresent, -1);
    row("desktop whose adapter says nothing", {unplugged}, Online, NotPresent, -1);
    row("full", {battery("Full", "100"), plugged}, Online, High, 100);
    row("full and just unplugged", {battery("Full", "100"), unplugged}, Offline, High, 100);
    row("not charging", {battery("Not charging", "79"), plugged}, Online, High, 79);
    row("not charging, no adapter listed", {battery("Not charging", "79")}, Online, High, 79);
    row("unknown, unplugged", {battery("Unknown", "79"), unplugged}, Offline, High, 79);
    row("discharging on the mains", {battery("Discharging", "50"), plugged}, Online, High, 50);
    row("charging from what isn't listed", {battery("Charging", "50"), unplugged}, Online, Charging, 50);
    row("USB supply", {battery("Discharging", "50"), supply("USB", "1")}, Online, High, 50);
    row("USB C supply", {unplugged, battery("Full", "99"), supply("USB_C", "1")}, Online, High, 99);
    row("programmable USB supply", {battery("Discharging", "50"), supply("USB", "2")}, Online, High, 50);
    row("wireless supply", {battery("Discharging", "50"), supply("Wireless", "1")}, Online, High, 50);
    row("empty USB socket", {battery("Discharging", "50"), supply("USB", "0")}, Offline, High, 50);
}

void PowerSuppliesTest::others_data()
{
    addColumns();
    const Supply device{{"scope", "Device"}}, absent{{"present", "0"}};
    const auto backup = [](const char *status, const char *capacity) {
        Supply supply = battery(status, capacity);
        supply["type"] = "UPS";
        return supply;
    };
    row("battery of a mouse", {battery("Discharging", "3", device)}, Online, NotPresent, -1);
    row("headset beside a battery", {battery("Discharging", "3", device), battery("Discharging", "60")},
        Offline, High, 60);
    Supply pad = supply("Mains", "1");
    pad.insert(device);
    row("charger of a mouse", {pad, battery("Discharging", "60")}, Offline, High, 60);
    row("battery taken out", {battery("Unknown", "0", absent), supply("Mains", "1")}, Online, NotPresent, -1);
    row("UPS on the mains", {backup("Full", "100")}, Online, High, 100);
    row("UPS that charges", {backup("Charging", "20")}, Online, Charging, 20);
    row("UPS in a power cut", {backup("Discharging", "8")}, Backup, VeryLow, 8);
    row("laptop at a UPS in a power cut",
        {backup("Discharging", "8"), battery("Full", "90"), supply("Mains", "1")}, Backup, High, 90);
    row("laptop beside a UPS",
        {backup("Discharging", "8"), battery("Discharging", "90"), supply("Mains", "0")}, Offline, High, 90);
    row("nothing but a type", {{{"type", "Battery"}}}, Online, High, -1);
    row("no type", {{{"status", "Discharging"}, {"capacity", "2"}}}, Online, NotPresent, -1);
}

void PowerSuppliesTest::amounts_data()
{
    addColumns();
    row("percent by energy", {energyBattery("Discharging", 30, 40)}, Offline, High, 75);
    row("rounded", {energyBattery("Discharging", 2, 3)}, Offline, High, 67);
    row("more than full", {energyBattery("Full", 41, 40)}, Online, High, 100);
    row("full at nothing", {energyBattery("Discharging", 5, 0, 10)}, Offline, High, -1);
    row("time by energy", {energyBattery("Discharging", 30, 40, 20)}, Offline, High, 75, 5400);
    row("no rate", {energyBattery("Discharging", 30, 40, 0)}, Offline, High, 75);
    row("rate while charging", {energyBattery("Charging", 30, 40, 20)}, Online, Charging, 75);
    const Supply charge{{"charge_now", "1500000"}, {"charge_full", "3000000"}, {"current_now", "-500000"}};
    row("time by charge, the current with its sign", {battery("Discharging", "48", charge)}, Offline, High,
        48, 10800);
    Supply given = energyBattery("Discharging", 30, 40, 20);
    given.insert("time_to_empty_now", "60");
    row("the kernel's own time counts", {given}, Offline, High, 75, 60);
    const Supply endless{
        {"energy_now", "9223372036854775807"}, {"energy_full", "9223372036854775807"}, {"power_now", "1"}};
    row("time beyond all bounds", {battery("Discharging", "50", endless)}, Offline, High, 50);
    const Supply smallest{{"energy_now", "-9223372036854775808"}, {"energy_full", "1"}, {"power_now", "x"}};
    row("lowest number", {battery("Discharging", "50", smallest)}, Offline, High, 50);
}

void PowerSuppliesTest::twoBatteries_data()
{
    addColumns();
    row("by energy", {energyBattery("Discharging", 10, 20, 15), energyBattery("Not charging", 50, 60)},
        Offline, High, 75, 14400);
    row("what rests gives nothing",
        {energyBattery("Discharging", 10, 20, 15), energyBattery("Unknown", 50, 60, 5)}, Offline, High, 75,
        14400);
    row("both discharge",
        {energyBattery("Discharging", 10, 20, 15), energyBattery("Discharging", 50, 60, 15)}, Offline, High,
        75, 7200);
    row("the full one rests", {energyBattery("Charging", 10, 20, 15), energyBattery("Full", 60, 60)}, Online,
        Charging, 88);
    row("one is nearly empty", {energyBattery("Discharging", 0, 20), energyBattery("Unknown", 5, 80)},
        Offline, Critical, 5);
    const Supply small{{"charge_now", "1000"}, {"charge_full", "2000"}, {"current_now", "500"}};
    const Supply large{{"charge_now", "8000"}, {"charge_full", "8000"}};
    row("by charge", {battery("Discharging", "50", small), battery("Unknown", "100", large)}, Offline, High,
        90, 64800);
    row("by percent", {battery("Discharging", "20"), battery("Unknown", "60")}, Offline, High, 40);
    row("units that can't be added up",
        {battery("Discharging", "20", small), energyBattery("Unknown", 60, 60)}, Offline, High, -1);
    row("one unknown", {battery("Discharging", "20"), battery("Unknown", "?")}, Offline, High, -1);
    row("one taken out", {battery("Discharging", "20"), battery("Unknown", "0", {{"present", "0"}})}, Offline,
        Low, 20);
}

QTEST_GUILESS_MAIN(PowerSuppliesTest)
#include "powersuppliestest.moc"
