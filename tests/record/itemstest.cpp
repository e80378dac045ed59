#include "logcapture.h"
#include "recordfixture.h"
#include "timeconversion.h"

namespace {

// No number of another width becomes an item by accident.
template <typename T>
concept Writable = requires(KyPDataManager &manager, T value)
{
    manager.writeItem("NUMB", value);
};
template <typename T>
concept Readable = requires(KyPDataManager &manager, T card)
{
    manager.readTimeItem("TIME", card, true);
};
template <typename T>
concept TakesTwo = requires(KyPDataManager &manager, T value)
{
    manager.readTimeItem("TIME", value);
};

static_assert(Writable<unsigned char> && Writable<unsigned short> && Writable<unsigned long>);
static_assert(Writable<QString> && Writable<QDate> && Writable<QDateTime> && Writable<const char *>);
static_assert(!Writable<int> && !Writable<unsigned> && !Writable<bool> && !Writable<char>);
static_assert(!Writable<long> && !Writable<qint64> && !Writable<double> && !Writable<std::nullptr_t>);
static_assert(Readable<unsigned long> && TakesTwo<unsigned long> && !TakesTwo<bool>);

} // namespace

/** Reading and writing of items. */
class ItemsTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void numbersRoundTrip();
    void textRoundTrips_data();
    void textRoundTrips();
    void unwrittenItems();
    void readersRefuseOtherTypes_data();
    void readersRefuseOtherTypes();
    void readersTakeTheCurrentCard();
    void storeFailuresOfNumbersAreLogged();
    void unsignedLongReadsBinary();
    void colourIsWrittenRaw();
    void writingNeedsAnEdit();
    void textWriterRefusesOtherTypes();
    void rawWriterIgnoresTheType();
    void failedWriteIsLogged();
    void nullAndClearEmptyAnItem();
    void datesHaveNoTime();
    void invalidTimesAreRefused();
    void timesInUtcAndLocal_data();
    void timesInUtcAndLocal();
    void timesThatCannotBeRead();
    void setInternalUtcIsForTimeItems();
    void currentTimeIsUtc();
    void writeAttributeWorksInPlace();
    void createPTimeForms();
    void shortAndNullCodes();
};

void ItemsTest::init()
{
    qputenv("TZ", "Asia/Tokyo");
    tzset();
}

void ItemsTest::numbersRoundTrip()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("NUMB", static_cast<unsigned char>(0xF1)));
    QVERIFY(manager.writeItem("FLAG", static_cast<unsigned char>(0x81)));
    QVERIFY(manager.writeItem("SHRT", static_cast<unsigned short>(0xF102)));
    QVERIFY(manager.writeItem("SALT", static_cast<unsigned short>(0x0304)));
    QVERIFY(manager.writeItem("LONG", 0xF1020304UL));
    QVERIFY(manager.finishEditCard(&card));

    QCOMPARE(manager.readUcharItem("NUMB", card), 0xF1);
    QCOMPARE(manager.readUcharItem("FLAG", card), 0x81);
    QCOMPARE(manager.readUshortItem("SHRT", card), 0xF102);
    QCOMPARE(manager.readUshortItem("SALT", card), 0x0304);
    unsigned long value = 0;
    QVERIFY(manager.readUlongItem("LONG", &value, card));
    QCOMPARE(value, 0xF1020304UL);
    QCOMPARE(storedBytes(manager, card, "NUMB").size(), 1);
    QCOMPARE(storedBytes(manager, card, "SHRT").size(), 2);
    QCOMPARE(storedBytes(manager, card, "LONG").size(), 4);
}

void ItemsTest::textRoundTrips_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("stored");

    const QString japanese = QString::fromUtf8("山田 ｶﾅ A");
    QTest::newRow("utf8") << QByteArray("TITL") << japanese << japanese.toUtf8();
    QTest::newRow("sjis") << QByteArray("SJIS") << japanese << QByteArray("\x8E\x52\x93\x63 \xB6\xC5 A");
    QTest::newRow("sjis 2") << QByteArray("SJI2") << japanese << QByteArray("\x8E\x52\x93\x63 \xB6\xC5 A");
    QTest::newRow("zero inside") << QByteArray("TITL") << QString(QChar(0)) + QLatin1Char('x')
                                 << QByteArray("\0x", 2);
    QTest::newRow("empty") << QByteArray("TITL") << QStringLiteral("") << QByteArray("");
}

void ItemsTest::textRoundTrips()
{
    QFETCH(QByteArray, code);
    QFETCH(QString, text);
    QFETCH(QByteArray, stored);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem(code.constData(), text));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem(code.constData(), card), text);
    QVERIFY(!manager.readItem(code.constData(), card).isNull());
    QCOMPARE(storedBytes(manager, card, code.constData()), stored);
}

void ItemsTest::unwrittenItems()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard() && manager.finishEditCard(&card));
    for (const char *code : {"TITL", "SJIS", "SJI2"}) {
        QVERIFY(manager.readItem(code, card).isEmpty());
        QVERIFY(!manager.readItem(code, card).isNull());
    }
    QVERIFY(manager.readItem("NUMB", card).isNull());
    QCOMPARE(manager.readUcharItem("NUMB", card), -1);
    QCOMPARE(manager.readUshortItem("SHRT", card), -1);
    unsigned long value = 5;
    QVERIFY(!manager.readUlongItem("LONG", &value, card));
    QCOMPARE(value, 5UL);
    QVERIFY(!manager.readDateItem("TIME", card).isValid());
    QVERIFY(!manager.readTimeItem("TIME", card).isValid());
}

void ItemsTest::readersRefuseOtherTypes_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QString>("accepting");
    QTest::newRow("text") << QByteArray("TITL") << "text";
    QTest::newRow("text sjis") << QByteArray("SJIS") << "text";
    QTest::newRow("uchar") << QByteArray("NUMB") << "uchar";
    QTest::newRow("bit") << QByteArray("FLAG") << "uchar";
    QTest::newRow("ushort") << QByteArray("SHRT") << "ushort";
    QTest::newRow("ushort alt") << QByteArray("SALT") << "ushort";
    QTest::newRow("ulong") << QByteArray("LONG") << "ulong";
    QTest::newRow("binary") << QByteArray("BINA") << "ulong";
    QTest::newRow("time") << QByteArray("TIME") << "time";
    QTest::newRow("colour") << QByteArray("COLR") << "";
    QTest::newRow("category") << QByteArray("CTGR") << "";
    QTest::newRow("unknown") << QByteArray("NONE") << "";
}

void ItemsTest::readersRefuseOtherTypes()
{
    QFETCH(QByteArray, code);
    QFETCH(QString, accepting);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    // A length that the accepting reader takes, so that each refusal is by the type.
    const QMap<QString, QByteArray> values = {{"text", "abc"},
                                              {"uchar", "a"},
                                              {"ushort", "ab"},
                                              {"ulong", "abcd"},
                                              {"time", ptime(2001, 2, 3, 4, 5, 6)},
                                              {"", "abcd"}};
    const QByteArray value = values.value(accepting);
    QCOMPARE(manager.writeItem(code.constData(), value.constData(), static_cast<unsigned long>(value.size())),
             code != "NONE");
    QVERIFY(manager.finishEditCard(&card));
    unsigned long number = 0;
    QCOMPARE(!manager.readItem(code.constData(), card).isNull(), accepting == "text");
    QCOMPARE(manager.readUcharItem(code.constData(), card) >= 0, accepting == "uchar");
    QCOMPARE(manager.readUshortItem(code.constData(), card) >= 0, accepting == "ushort");
    QCOMPARE(manager.readUlongItem(code.constData(), &number, card), accepting == "ulong");
    QCOMPARE(manager.readDateItem(code.constData(), card).isValid(), accepting == "time");
    QCOMPARE(manager.readTimeItem(code.constData(), card).isValid(), accepting == "time");
}

void ItemsTest::readersTakeTheCurrentCard()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long first = addCard(manager, QStringLiteral("a"));
    addCard(manager, QStringLiteral("b"));
    QVERIFY(manager.readItem("TITL").isNull()); // no current card yet
    QVERIFY(manager.last());
    QCOMPARE(manager.readItem("TITL"), QStringLiteral("b"));
    QCOMPARE(manager.readItem("TITL", 0), QStringLiteral("b"));
    QCOMPARE(manager.readItem("TITL", first), QStringLiteral("a"));
}

void ItemsTest::storeFailuresOfNumbersAreLogged()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long value = 0;
    LogCapture log;
    QCOMPARE(manager.readUshortItem("SHRT", 77), -1);
    QVERIFY(!manager.readUlongItem("LONG", &value, 77));
    QCOMPARE(manager.readUcharItem("NUMB", 77), -1);
    QCOMPARE(log.lines().size(), 2);
    QVERIFY(log.lines()[0].startsWith("KyPDataManager::readUshortItem error in CardRead 77 41 "));
    QVERIFY(log.lines()[1].startsWith("KyPDataManager::readUlongItem error in CardRead 77 41 "));

    log.clear();
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(storeBytes(manager, card, "BINA", "123456"));
    QVERIFY(!manager.readUlongItem("BINA", &value, card));
    QCOMPARE(
        log.lines(),
        QStringList{QStringLiteral("KyPDataManager::readUlongItem error in CardRead %1 44 6").arg(card)});
}

void ItemsTest::unsignedLongReadsBinary()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    const quint32 stored = 0x80000001;
    QVERIFY(storeBytes(manager, card, "BINA",
                       QByteArray(reinterpret_cast<const char *>(&stored), sizeof stored)));
    unsigned long value = 0;
    QVERIFY(manager.readUlongItem("BINA", &value, card));
    QCOMPARE(value, 0x80000001UL);
    QVERIFY(storeBytes(manager, card, "BINA", "123"));
    QVERIFY(!manager.readUlongItem("BINA", &value, card));
    QCOMPARE(value, 0x80000001UL);
}

void ItemsTest::colourIsWrittenRaw()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("COLR", "\0\1\2\3", 4));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "COLR"), QByteArray("\0\1\2\3", 4));
}

void ItemsTest::writingNeedsAnEdit()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.first());
    LogCapture log;
    QVERIFY(!manager.writeItem("TITL", "x", 1));
    QVERIFY(!manager.writeItem("TITL", QStringLiteral("x")));
    QVERIFY(!manager.writeItem("NUMB", QStringLiteral("x")));
    QVERIFY(!manager.writeItem("TIME", QDateTime::currentDateTime()));
    QVERIFY(!manager.writeItem("TIME", QDate::currentDate()));
    QVERIFY(!manager.writeItem("NUMB", static_cast<unsigned char>(1)));
    QVERIFY(!manager.writeItem("SHRT", static_cast<unsigned short>(1)));
    QVERIFY(!manager.writeItem("LONG", 1UL));
    QVERIFY(!manager.clearItem("TITL"));
    QVERIFY(!manager.writeCurrentTime("TIME", true));
    QVERIFY(!manager.writeCurrentTime("NUMB", true));
    QVERIFY(log.lines().isEmpty());
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
}

void ItemsTest::textWriterRefusesOtherTypes()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.editNewCard());
    for (const char *code : {"NUMB", "TIME", "BINA", "CTGR", "NONE"}) {
        LogCapture log;
        QVERIFY(!manager.writeItem(code, QStringLiteral("x")));
        QCOMPARE(log.lines(),
                 QStringList{QStringLiteral("KyPDataManager::writeItem error in writing %1.").arg(code)});
    }
    QVERIFY(manager.writeItem("TITL", "a literal is text"));
    unsigned long card = 0;
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a literal is text"));
}

void ItemsTest::rawWriterIgnoresTheType()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("NUMB", "three", 5));
    QVERIFY(manager.writeItem("TITL", static_cast<unsigned char>('q')));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "NUMB"), "three");
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("q"));
    QCOMPARE(manager.readUcharItem("NUMB", card), -1);
}

void ItemsTest::failedWriteIsLogged()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.editNewCard());
    LogCapture log;
    QVERIFY(!manager.writeItem("NONE", "x", 1));
    QCOMPARE(log.lines(), QStringList{"KyPDataManager::writeItem error in writing NONE."});
    QCOMPARE(int(privateOf(manager).lastError), int(PdtmNoSuchItem));
    QVERIFY(!privateOf(manager).editModified);
    QVERIFY(!manager.writeItem("TITL", "x", 0x100000001UL));
}

void ItemsTest::nullAndClearEmptyAnItem()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", static_cast<const char *>(nullptr), 5));
    QVERIFY(manager.writeItem("BINA", "abc", 3));
    QVERIFY(manager.clearItem("BINA"));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(storedBytes(manager, card, "TITL"), "");
    QCOMPARE(storedBytes(manager, card, "BINA"), "");
}

void ItemsTest::datesHaveNoTime()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("TIME", QDate(2026, 2, 28)));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(fieldsOf(storedBytes(manager, card, "TIME")), (QList<int>{2026, 2, 28, 31, 63, 63}));
    QCOMPARE(manager.readDateItem("TIME", card), QDate(2026, 2, 28));
    QCOMPARE(manager.readTimeItem("TIME", card), QDateTime(QDate(2026, 2, 28), QTime(0, 0)));
}

void ItemsTest::invalidTimesAreRefused()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.editNewCard());
    QVERIFY(!manager.writeItem("TIME", QDateTime()));
    QVERIFY(!manager.writeItem("TIME", QDateTime(QDate(), QTime(1, 2))));
    QVERIFY(!manager.writeItem("TIME", QDate()));
    QVERIFY(!manager.writeItem("TIME", QDate(2026, 2, 29)));
    QVERIFY(!manager.writeItem("TIME", QDate(10000, 1, 1)));
    QVERIFY(!manager.writeItem("TIME", QDateTime(QDate(10000, 1, 1), QTime(0, 0))));
    QVERIFY(!manager.writeItem("TIME", QDate(-1, 1, 1)));
    QVERIFY(!privateOf(manager).editModified);
}

void ItemsTest::timesInUtcAndLocal_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<bool>("stored");
    QTest::addColumn<bool>("wanted");
    QTest::addColumn<QDateTime>("expected");

    const QDate day(2026, 7, 1);
    const QByteArray tokyo("Asia/Tokyo"), berlin("Europe/Berlin");
    const QTime noon(12, 30, 15);
    QTest::newRow("local as it stands") << tokyo << false << false << QDateTime(day, noon);
    QTest::newRow("utc as it stands") << tokyo << true << true << QDateTime(day, noon, Qt::UTC);
    QTest::newRow("local to utc") << tokyo << false << true << QDateTime(day, QTime(3, 30, 15), Qt::UTC);
    QTest::newRow("utc to local") << tokyo << true << false << QDateTime(day, QTime(21, 30, 15));
    QTest::newRow("summer to utc") << berlin << false << true << QDateTime(day, QTime(10, 30, 15), Qt::UTC);
    QTest::newRow("utc to summer") << berlin << true << false << QDateTime(day, QTime(14, 30, 15));
}

void ItemsTest::timesInUtcAndLocal()
{
    QFETCH(QByteArray, zone);
    QFETCH(bool, stored);
    QFETCH(bool, wanted);
    QFETCH(QDateTime, expected);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    QVERIFY(manager.writeItem("TIME", QDateTime(QDate(2026, 7, 1), QTime(12, 30, 15))));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(fieldsOf(storedBytes(manager, card, "TIME")), (QList<int>{2026, 7, 1, 12, 30, 15}));
    if (stored)
        QVERIFY(manager.setInternalUtc("TIME"));
    qputenv("TZ", zone); // tzset() is up to the reader
    const QDateTime read = manager.readTimeItem("TIME", card, wanted);
    QCOMPARE(read.date(), expected.date());
    QCOMPARE(read.time(), expected.time());
    QCOMPARE(read.timeSpec(), expected.timeSpec());
    QCOMPARE(manager.readDateItem("TIME", card), QDate(2026, 7, 1));
}

void ItemsTest::timesThatCannotBeRead()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    for (const QByteArray &bytes :
         {QByteArray(""), QByteArray("abcd"), QByteArray("abcdef"), ptime(2026, 0, 0, 0, 0, 0)}) {
        QVERIFY(storeBytes(manager, card, "TIME", bytes));
        QVERIFY(!manager.readTimeItem("TIME", card, false).isValid());
        QVERIFY(!manager.readTimeItem("TIME", card, true).isValid());
        QVERIFY(!manager.readDateItem("TIME", card).isValid());
    }
    QVERIFY(!manager.readTimeItem("TIME", 77).isValid());
}

void ItemsTest::setInternalUtcIsForTimeItems()
{
    const TestBox box;
    unsigned long card = 0;
    {
        KyPDataManager manager(box.path().constData(), nullptr, false);
        QVERIFY(!manager.setInternalUtc("TITL"));
        QVERIFY(!manager.setInternalUtc("NONE"));
        QVERIFY(manager.setInternalUtc("TIME"));
        QVERIFY(manager.setInternalUtc("TIME"));
        QVERIFY(manager.editNewCard());
        QVERIFY(manager.writeItem("TIME", QDateTime(QDate(2026, 7, 1), QTime(12, 0))));
        QVERIFY(manager.finishEditCard(&card));
        QCOMPARE(manager.readTimeItem("TIME", card).time(), QTime(21, 0));
    }
    const KyPDataManager other(box.path().constData(), nullptr, false);
    QCOMPARE(other.readTimeItem("TIME", card).time(), QTime(12, 0)); // nothing of it is in the box
}

void ItemsTest::currentTimeIsUtc()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard());
    LogCapture log;
    QVERIFY(!manager.writeCurrentTime("NUMB", true));
    QCOMPARE(log.lines(), QStringList{"KyPDataManager::writeCurrentItem it isn't time item NUMB."});
    for (const bool flag : {true, false}) {
        const time_t before = time(nullptr);
        QVERIFY(manager.writeCurrentTime("TIME", flag));
        const QDateTime written = manager.readTimeItem("TIME", WorkCardId, false); // as it stands
        const time_t moment = TimeConversion::toRawUTC(written);
        QVERIFY(moment >= before && moment <= time(nullptr));
    }
    QVERIFY(manager.finishEditCard(&card));
}

void ItemsTest::writeAttributeWorksInPlace()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    const QByteArray longAgo = ptime(2001, 1, 1, 1, 1, 1);
    QVERIFY(storeBytes(manager, card, "MDTM", longAgo));
    QVERIFY(manager.writeAttribute(card, 0x05, true));
    QCOMPARE(storedBytes(manager, card, "ATTR"), "\x05");
    QVERIFY(manager.writeAttribute(card, 0x04, false));
    QCOMPARE(storedBytes(manager, card, "ATTR"), "\x01");
    QCOMPARE(storedBytes(manager, card, "MDTM"), longAgo);
    QVERIFY(!privateOf(manager).editModified);
    QVERIFY(!privateOf(manager).editing);
    QCOMPARE(privateOf(manager).workCard, 0UL);
    QVERIFY(!manager.finishEditCard(&card));
    QVERIFY(!manager.writeAttribute(77, 0x01, true));
    QVERIFY(manager.first());
    QVERIFY(manager.writeAttribute(0, 0x40, true)); // the current card
    QCOMPARE(storedBytes(manager, card, "ATTR"), "\x41");
    QCOMPARE(manager.count(), 0);
}

void ItemsTest::createPTimeForms()
{
    PTimeValue value = {};
    QVERIFY(KyPDataManager::createPTime(&value, 1999, 12, 31, 31, 63, 63));
    const auto bytes = [&value] { return QByteArray(reinterpret_cast<const char *>(value.bytes), 5); };
    QCOMPARE(fieldsOf(bytes()), (QList<int>{1999, 12, 31, 31, 63, 63}));
    const QByteArray before = bytes();
    QVERIFY(KyPDataManager::createPTime(&value, 10000, 1, 1, 0, 0, 0)); // always true
    QCOMPARE(bytes(), before);
    KyPDataManager::createPTime(&value, QDateTime(QDate(2026, 7, 1), QTime(1, 2, 3), Qt::UTC));
    QCOMPARE(fieldsOf(bytes()), (QList<int>{2026, 7, 1, 1, 2, 3}));
}

void ItemsTest::shortAndNullCodes()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    const char unterminated[4] = {'T', 'I', 'T', 'L'};
    QCOMPARE(manager.readItem(unterminated, card), QStringLiteral("a"));
    QCOMPARE(manager.readItem("TITLE", card), QStringLiteral("a")); // four characters count
    for (const char *code : {static_cast<const char *>(nullptr), "", "TI"}) {
        QVERIFY(manager.readItem(code, card).isNull());
        QCOMPARE(manager.nameToItemId(code), 0);
        QCOMPARE(manager.readItemType(code), 0);
        QVERIFY(!manager.setInternalUtc(code));
        QVERIFY(manager.editNewCard());
        QVERIFY(!manager.writeItem(code, "x", 1));
        QVERIFY(manager.cancelEditCard());
    }
}

QTEST_MAIN(ItemsTest)
#include "itemstest.moc"
