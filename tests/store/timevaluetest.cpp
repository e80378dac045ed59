#include "recordbuilder.h"

#include <QtTest>

class TimeValueTest : public QObject
{
    Q_OBJECT
private slots:
    void roundTrip_data();
    void roundTrip();
    void bytesOrderAsTime();
    void refusesWhatItCannotHold_data();
    void refusesWhatItCannotHold();
    void nullPointers();
};

void TimeValueTest::roundTrip_data()
{
    QTest::addColumn<QList<int>>("parts");
    QTest::newRow("all zero") << QList<int>{0, 0, 0, 0, 0, 0};
    QTest::newRow("an afternoon") << QList<int>{2024, 2, 29, 13, 45, 59};
    QTest::newRow("a date with no time") << QList<int>{2003, 12, 31, 31, 63, 63};
    QTest::newRow("last year") << QList<int>{9999, 12, 31, 23, 59, 59};
    QTest::newRow("every field at its limit") << QList<int>{9999, 15, 31, 31, 63, 63};
}

void TimeValueTest::roundTrip()
{
    QFETCH(QList<int>, parts);
    char value[6] = {0, 0, 0, 0, 0, 'x'};
    QCOMPARE(int(ppsettime(value, parts[0], parts[1], parts[2], parts[3], parts[4], parts[5])), int(PdtmOk));
    QCOMPARE(value[5], 'x');
    QList<int> read(6, -1);
    QCOMPARE(int(ppgettime(value, &read[0], &read[1], &read[2], &read[3], &read[4], &read[5], 0)),
             int(PdtmOk));
    QCOMPARE(read, parts);
}

void TimeValueTest::bytesOrderAsTime()
{
    const QByteArray rising[] = {timeValue(0, 0, 0),
                                 timeValue(1, 12, 31, 31, 63, 63),
                                 timeValue(1999, 12, 31, 23, 59, 59),
                                 timeValue(2000, 1, 1),
                                 timeValue(2000, 1, 1, 0, 0, 1),
                                 timeValue(2000, 1, 1, 0, 1, 0),
                                 timeValue(2000, 1, 1, 1, 0, 0),
                                 timeValue(2000, 1, 1, 31, 63, 63),
                                 timeValue(2000, 1, 2),
                                 timeValue(2000, 2, 1),
                                 timeValue(2001, 1, 1),
                                 timeValue(9999, 15, 31, 31, 63, 63)};
    for (size_t i = 1; i < std::size(rising); ++i)
        QVERIFY2(std::memcmp(rising[i - 1].constData(), rising[i].constData(), 5) < 0,
                 qPrintable(QString::number(i)));
}

void TimeValueTest::refusesWhatItCannotHold_data()
{
    QTest::addColumn<QList<int>>("parts");
    QTest::newRow("year") << QList<int>{10000, 1, 1, 0, 0, 0};
    QTest::newRow("month") << QList<int>{2000, 16, 1, 0, 0, 0};
    QTest::newRow("day") << QList<int>{2000, 1, 32, 0, 0, 0};
    QTest::newRow("hour") << QList<int>{2000, 1, 1, 32, 0, 0};
    QTest::newRow("minute") << QList<int>{2000, 1, 1, 0, 64, 0};
    QTest::newRow("second") << QList<int>{2000, 1, 1, 0, 0, 64};
    QTest::newRow("negative") << QList<int>{-1, 1, 1, 0, 0, 0};
}

void TimeValueTest::refusesWhatItCannotHold()
{
    QFETCH(QList<int>, parts);
    QByteArray value("abcde");
    QCOMPARE(int(ppsettime(value.data(), parts[0], parts[1], parts[2], parts[3], parts[4], parts[5])),
             int(PdtmBadArgument));
    QCOMPARE(value, QByteArray("abcde"));
}

void TimeValueTest::nullPointers()
{
    int day = 0;
    QCOMPARE(int(ppsettime(nullptr, 2000, 1, 1, 0, 0, 0)), int(PdtmBadArgument));
    QCOMPARE(int(ppgettime(nullptr, &day, nullptr, nullptr, nullptr, nullptr, nullptr, 0)),
             int(PdtmBadArgument));
    QCOMPARE(day, 0);
    QCOMPARE(int(ppgettime(timeValue(2000, 1, 17).constData(), nullptr, nullptr, &day, nullptr, nullptr,
                           nullptr, 0)),
             int(PdtmOk));
    QCOMPARE(day, 17);
}

QTEST_GUILESS_MAIN(TimeValueTest)
#include "timevaluetest.moc"
