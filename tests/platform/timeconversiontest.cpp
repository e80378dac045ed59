#include "timeconversion.h"

#include <QTest>

/** Sets TZ; the next conversion has to see it without further help. */
static void setZone(const QString &zone)
{
    qputenv("TZ", zone.toUtf8());
}

static QDateTime wall(const QString &text)
{
    const QDateTime parsed = QDateTime::fromString(text, "yyyy-MM-dd hh:mm:ss");
    return QDateTime(parsed.date(), parsed.time(), Qt::UTC);
}

static QDateTime fields(const QDateTime &dateTime)
{
    return QDateTime(dateTime.date(), dateTime.time(), Qt::UTC);
}

class TimeConversionTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { setZone("Asia/Tokyo"); }

    void convertsBothWays_data();
    void convertsBothWays();
    void movesSkippedTimesForward_data();
    void movesSkippedTimesForward();
    void takesTheFirstOfDoubledTimes_data();
    void takesTheFirstOfDoubledTimes();
    void showsBothHoursOfADoubledOne();
    void roundTripsEveryYear_data();
    void roundTripsEveryYear();
    void rawFieldsAreThoseOfUtc_data();
    void rawFieldsAreThoseOfUtc();
    void invalidTimesGiveMinusOne();
    void momentsBeyondTheCalendarAreInvalid();
    void doesNotLookAtTheTimeSpecification();
};

void TimeConversionTest::convertsBothWays_data()
{
    QTest::addColumn<QString>("zone");
    QTest::addColumn<QString>("local");
    QTest::addColumn<qint64>("moment");
    const auto row = [](const char *zone, const char *local, qint64 moment) {
        QTest::addRow("%s %s", zone, local) << QString(zone) << QString(local) << moment;
    };
    row("UTC", "1970-01-01 00:00:00", 0);
    row("UTC", "2000-02-29 12:34:56", 951827696);
    row("UTC", "2038-01-19 03:14:08", 2147483648);
    row("UTC", "1900-01-01 00:00:00", -2208988800);
    row("UTC", "2100-03-01 00:00:00", 4107542400);
    row("Asia/Tokyo", "1970-01-01 09:00:00", 0);
    row("Asia/Tokyo", "2000-01-01 00:00:00", 946652400);
    row("Asia/Tokyo", "2024-02-29 23:59:59", 1709218799);
    row("America/New_York", "1969-12-31 19:00:00", 0);
    row("America/New_York", "2024-03-10 01:59:59", 1710053999);
    row("America/New_York", "2024-03-10 03:00:00", 1710054000);
    row("America/New_York", "2024-11-03 00:59:59", 1730609999);
    row("America/New_York", "2024-11-03 02:00:00", 1730617200);
    row("Asia/Kathmandu", "2024-01-01 05:45:00", 1704067200);
    row("Asia/Kathmandu", "1980-01-01 05:30:00", 315532800);
}

void TimeConversionTest::convertsBothWays()
{
    QFETCH(QString, zone);
    QFETCH(QString, local);
    QFETCH(qint64, moment);
    setZone(zone);
    QCOMPARE(qint64(TimeConversion::toUTC(wall(local))), moment);
    QCOMPARE(fields(TimeConversion::fromUTC(moment)), wall(local));
}

void TimeConversionTest::movesSkippedTimesForward_data()
{
    QTest::addColumn<QString>("zone");
    QTest::addColumn<QString>("skipped");
    QTest::addColumn<QString>("moved");
    QTest::newRow("first second") << "America/New_York"
                                  << "2024-03-10 02:00:00"
                                  << "2024-03-10 03:00:00";
    QTest::newRow("middle") << "America/New_York"
                            << "2024-03-10 02:30:00"
                            << "2024-03-10 03:30:00";
    QTest::newRow("last second") << "America/New_York"
                                 << "2024-03-10 02:59:59"
                                 << "2024-03-10 03:59:59";
    QTest::newRow("half an hour") << "Australia/Lord_Howe"
                                  << "2024-10-06 02:10:00"
                                  << "2024-10-06 02:40:00";
    QTest::newRow("midnight") << "Asia/Beirut"
                              << "2024-03-31 00:15:00"
                              << "2024-03-31 01:15:00";
    QTest::newRow("15 minutes") << "Asia/Kathmandu"
                                << "1986-01-01 00:07:00"
                                << "1986-01-01 00:22:00";
    QTest::newRow("a whole day") << "Pacific/Apia"
                                 << "2011-12-30 12:00:00"
                                 << "2011-12-31 12:00:00";
}

void TimeConversionTest::movesSkippedTimesForward()
{
    QFETCH(QString, zone);
    QFETCH(QString, skipped);
    QFETCH(QString, moved);
    setZone(zone);
    QCOMPARE(fields(TimeConversion::fromUTC(TimeConversion::toUTC(wall(skipped)))), wall(moved));
}

void TimeConversionTest::takesTheFirstOfDoubledTimes_data()
{
    QTest::addColumn<QString>("zone");
    QTest::addColumn<QString>("local");
    QTest::addColumn<qint64>("first");
    QTest::newRow("first second") << "America/New_York"
                                  << "2024-11-03 01:00:00" << qint64(1730610000);
    QTest::newRow("middle") << "America/New_York"
                            << "2024-11-03 01:30:00" << qint64(1730611800);
    QTest::newRow("last second") << "America/New_York"
                                 << "2024-11-03 01:59:59" << qint64(1730613599);
    QTest::newRow("half an hour") << "Australia/Lord_Howe"
                                  << "2024-04-07 01:45:00" << qint64(1712414700);
}

void TimeConversionTest::takesTheFirstOfDoubledTimes()
{
    QFETCH(QString, zone);
    QFETCH(QString, local);
    QFETCH(qint64, first);
    setZone(zone);
    QCOMPARE(qint64(TimeConversion::toUTC(wall(local))), first);
}

void TimeConversionTest::showsBothHoursOfADoubledOne()
{
    setZone("America/New_York");
    QCOMPARE(fields(TimeConversion::fromUTC(1730611800)), wall("2024-11-03 01:30:00"));
    QCOMPARE(fields(TimeConversion::fromUTC(1730615400)), wall("2024-11-03 01:30:00"));
}

void TimeConversionTest::roundTripsEveryYear_data()
{
    QTest::addColumn<QString>("zone");
    for (const char *zone : {"UTC", "Asia/Tokyo", "America/New_York", "Asia/Kathmandu"})
        QTest::newRow(zone) << QString(zone);
}

void TimeConversionTest::roundTripsEveryYear()
{
    QFETCH(QString, zone);
    setZone(zone);
    for (int year = 1900; year <= 2100; ++year) {
        for (int month = 1; month <= 12; ++month) {
            const QDateTime local(QDate(year, month, 15), QTime(12, 34, 56), Qt::UTC);
            const time_t moment = TimeConversion::toUTC(local);
            QCOMPARE(fields(TimeConversion::fromUTC(moment)), local);
            tm expected = {};
            expected.tm_year = year - 1900;
            expected.tm_mon = month - 1;
            expected.tm_mday = 15;
            expected.tm_hour = 12;
            expected.tm_min = 34;
            expected.tm_sec = 56;
            expected.tm_isdst = -1;
            QCOMPARE(qint64(moment), qint64(mktime(&expected)));
        }
    }
}

void TimeConversionTest::rawFieldsAreThoseOfUtc_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("moment");
    QTest::newRow("epoch") << "1970-01-01 00:00:00" << qint64(0);
    QTest::newRow("in a gap of local time") << "2024-03-10 02:30:00" << qint64(1710037800);
    QTest::newRow("before the epoch") << "1900-01-01 00:00:00" << qint64(-2208988800);
    QTest::newRow("behind 32 bits") << "2099-12-31 23:59:59" << qint64(4102444799);
}

void TimeConversionTest::rawFieldsAreThoseOfUtc()
{
    QFETCH(QString, text);
    QFETCH(qint64, moment);
    setZone("America/New_York");
    QCOMPARE(qint64(TimeConversion::toRawUTC(wall(text))), moment);
    QCOMPARE(fields(TimeConversion::fromRawUTC(moment)), wall(text));
}

void TimeConversionTest::invalidTimesGiveMinusOne()
{
    QCOMPARE(TimeConversion::toUTC(QDateTime()), time_t(-1));
    QCOMPARE(TimeConversion::toRawUTC(QDateTime()), time_t(-1));
    QCOMPARE(TimeConversion::toUTC(QDateTime(QDate(2024, 2, 30), QTime(1, 2))), time_t(-1));
    QCOMPARE(TimeConversion::toRawUTC(QDateTime(QDate(2024, 2, 30), QTime(1, 2))), time_t(-1));
}

void TimeConversionTest::momentsBeyondTheCalendarAreInvalid()
{
    const time_t far = std::numeric_limits<time_t>::max();
    QVERIFY(!TimeConversion::fromUTC(far).isValid());
    QVERIFY(!TimeConversion::fromRawUTC(far).isValid());
}

void TimeConversionTest::doesNotLookAtTheTimeSpecification()
{
    const QDate date(2024, 7, 1);
    const QTime time(8, 0);
    QCOMPARE(TimeConversion::toUTC(QDateTime(date, time, Qt::UTC)), time_t(1719788400));
    QCOMPARE(TimeConversion::toUTC(QDateTime(date, time)), time_t(1719788400));
    QCOMPARE(TimeConversion::toUTC(QDateTime(date, time, Qt::OffsetFromUTC, -18000)), time_t(1719788400));
    QCOMPARE(TimeConversion::toRawUTC(QDateTime(date, time)), time_t(1719820800));
}

QTEST_GUILESS_MAIN(TimeConversionTest)
#include "timeconversiontest.moc"
