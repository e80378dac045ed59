#include "timestring.h"

#include "config.h"
#include <QTest>

class TimeStringTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup() { QFile::remove(QDir::homePath() + "/Settings/qpe.conf"); }

    void defaultsToYearMonthDay();
    void readsTheFormat_data();
    void readsTheFormat();
    void readsTheClock();
    void writesDatesInNumbers_data();
    void writesDatesInNumbers();
    void writesTimes_data();
    void writesTimes();
    void writesLongDates();
    void invalidValuesAreEmpty();
};

void TimeStringTest::defaultsToYearMonthDay()
{
    const QString text = TimeString::numberDateString(QDate(2000, 12, 30), TimeString::currentDateFormat());
    QCOMPARE(text, QString("2000/12/30"));
}

void TimeStringTest::readsTheFormat_data()
{
    QTest::addColumn<QString>("order");
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("expected");
    QTest::newRow("year first") << "YMD"
                                << "-"
                                << "2000-12-30";
    QTest::newRow("month first") << "MDY"
                                 << "/"
                                 << "12/30/2000";
    QTest::newRow("day first") << "DMY"
                               << "."
                               << "30.12.2000";
    QTest::newRow("unknown order") << "XYZ"
                                   << "."
                                   << "2000.12.30";
    QTest::newRow("no separator") << "DMY"
                                  << ""
                                  << "30/12/2000";
    QTest::newRow("long separator") << "DMY"
                                    << "..."
                                    << "30.12.2000";
}

void TimeStringTest::readsTheFormat()
{
    QFETCH(QString, order);
    QFETCH(QString, separator);
    {
        Config settings("qpe");
        settings.setGroup("Date");
        settings.writeEntry("Order", order);
        settings.writeEntry("Separator", separator);
    }
    QTEST(TimeString::numberDateString(QDate(2000, 12, 30), TimeString::currentDateFormat()), "expected");
}

void TimeStringTest::readsTheClock()
{
    QVERIFY(TimeString::currentAmPm());
    for (const bool wanted : {false, true}) {
        {
            Config settings("qpe");
            settings.setGroup("Time");
            settings.writeEntry("AMPM", wanted);
        }
        QCOMPARE(TimeString::currentAmPm(), wanted);
    }
}

void TimeStringTest::writesDatesInNumbers_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<int>("order");
    QTest::addColumn<QString>("full");
    QTest::addColumn<QString>("brief");
    const QDate early(987, 1, 2);
    QTest::newRow("year first") << early << int(DateFormat::YearMonthDay) << "0987/01/02"
                                << "01/02";
    QTest::newRow("month first") << early << int(DateFormat::MonthDayYear) << "01/02/0987"
                                 << "01/02";
    QTest::newRow("day first") << early << int(DateFormat::DayMonthYear) << "02/01/0987"
                               << "02/01";
    QTest::newRow("leap day") << QDate(2024, 2, 29) << 0 << "2024/02/29"
                              << "02/29";
    QTest::newRow("five digits") << QDate(12345, 6, 7) << 0 << "12345/06/07"
                                 << "06/07";
}

void TimeStringTest::writesDatesInNumbers()
{
    QFETCH(QDate, date);
    QFETCH(int, order);
    DateFormat format;
    format.order = static_cast<DateFormat::Order>(order);
    QTEST(TimeString::numberDateString(date, format), "full");
    QTEST(TimeString::shortDate(date, format), "brief");
}

void TimeStringTest::writesTimes_data()
{
    QTest::addColumn<QTime>("time");
    QTest::addColumn<bool>("ampm");
    QTest::addColumn<bool>("seconds");
    QTest::addColumn<QString>("expected");
    QTest::newRow("24 hours") << QTime(17, 5, 9) << false << false << "17:05";
    QTest::newRow("24 hours, early") << QTime(7, 5, 9) << false << true << "07:05:09";
    QTest::newRow("midnight, 24") << QTime(0, 0) << false << false << "00:00";
    QTest::newRow("midnight") << QTime(0, 0) << true << false << "12:00 AM";
    QTest::newRow("before noon") << QTime(11, 59, 59) << true << true << "11:59:59 AM";
    QTest::newRow("noon") << QTime(12, 0) << true << false << "12:00 PM";
    QTest::newRow("afternoon") << QTime(13, 1, 2) << true << true << "1:01:02 PM";
    QTest::newRow("last minute") << QTime(23, 59) << true << false << "11:59 PM";
}

void TimeStringTest::writesTimes()
{
    QFETCH(QTime, time);
    QFETCH(bool, ampm);
    QFETCH(bool, seconds);
    QTEST(TimeString::timeString(time, ampm, seconds), "expected");
}

void TimeStringTest::writesLongDates()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    QCOMPARE(TimeString::longDateString(QDate(2000, 12, 30)), QString("Saturday, 30 December 2000"));
    QLocale::setDefault(QLocale(QLocale::Japanese));
    QCOMPARE(TimeString::longDateString(QDate(2000, 12, 30)), QString::fromUtf8("2000年12月30日土曜日"));
    QLocale::setDefault(QLocale::c());
}

void TimeStringTest::invalidValuesAreEmpty()
{
    QCOMPARE(TimeString::numberDateString(QDate(), DateFormat()), QString());
    QCOMPARE(TimeString::shortDate(QDate(), DateFormat()), QString());
    QCOMPARE(TimeString::longDateString(QDate()), QString());
    QCOMPARE(TimeString::timeString(QTime(), true), QString());
}

QTEST_GUILESS_MAIN(TimeStringTest)
#include "timestringtest.moc"
