#include "vcardreader.h"

#include <QBuffer>
#include <QFile>
#include <QObject>
#include <QTest>

namespace {

struct Import
{
    QList<ContactFields> contacts;
    VCardReport report;
};

Import read(const QByteArray &bytes)
{
    VCardReader reader(bytes);
    Import result;
    while (const std::optional<ContactFields> contact = reader.next())
        result.contacts.append(*contact);
    result.report = reader.report();
    return result;
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray data(const char *name)
{
    return fileBytes(QStringLiteral(TEST_DATA "/") + QLatin1String(name));
}

/** A card of version 3.0 with a name and @p lines. */
QByteArray card(const QByteArray &lines, const QByteArray &version = "3.0")
{
    return "BEGIN:VCARD\r\nVERSION:" + version + "\r\n" + lines + "\r\nEND:VCARD\r\n";
}

using Values = QMap<int, QString>;

} // namespace

class VCardReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void readsFiles_data();
    void readsFiles();
    void fillsField_data();
    void fillsField();
    void keepsValuesWithoutFieldInNotes();
    void groupsLabelsAndCategories();
    void leavesOutFieldsThatAreEmpty();
    void skipsBrokenCards_data();
    void skipsBrokenCards();
    void reportsInASentence_data();
    void reportsInASentence();
    void reportStaysSmallOnHostileFiles();
    void limitsLinesAndCards();
    void everyTruncation_data();
    void everyTruncation();
    void fiveThousandCards();
    void countsCards();
    void sampleIsWhole();
    void sampleSpreadsOverTheKanaTable();
};

void VCardReaderTest::readsFiles_data()
{
    using namespace AddressField;
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<Values>("expected");

    QTest::newRow("2.1, Shift-JIS, quoted-printable")
        << data("v21-sjis-qp.vcf")
        << Values{{FullName, "表 翔太"},
                  {LastName, "表"},
                  {FirstName, "翔太"},
                  {FileAs, "表 翔太"},
                  {LastPronunciation, "オモテ"},
                  {FirstPronunciation, "ショウダ"},
                  {FullPronunciation, "オモテ ショウダ"},
                  {MobilePhone, "090-0000-0001"},
                  {HomeStreet, "見本町1-2-3"},
                  {HomeCity, "千代田区"},
                  {HomeState, "東京都"},
                  {HomeZip, "100-0001"},
                  {HomeCountry, "日本"},
                  {Notes, "会議で会いました。次は表参道の店で。\n二行目"}};
    QTest::newRow("2.1, Shift-JIS as it is") << data("v21-sjis-raw.vcf")
                                             << Values{{FullName, "ソ能 太郎"},
                                                       {LastName, "ソ能"},
                                                       {FirstName, "太郎"},
                                                       {FileAs, "ソ能 太郎"},
                                                       {LastPronunciation, "ソノウ"},
                                                       {FirstPronunciation, "タロウ"},
                                                       {FullPronunciation, "ソノウ タロウ"},
                                                       {Company, "表計算株式会社"},
                                                       {Department, "十部"},
                                                       {BusinessPhone, "03-0000-0002"},
                                                       {DefaultEmail, "sono@example.jp"},
                                                       {Emails, "sono@example.jp"}};
    QTest::newRow("UTF-16, little end first, with a mark") << data("utf16le.vcf")
                                                           << Values{{FullName, "渡辺 さくら"},
                                                                     {LastName, "渡辺"},
                                                                     {FirstName, "さくら"},
                                                                     {FileAs, "渡辺 さくら"},
                                                                     {LastPronunciation, "わたなべ"},
                                                                     {FirstPronunciation, "さくら"},
                                                                     {FullPronunciation, "わたなべ さくら"},
                                                                     {Notes, "𠮷野家の前"}};
    QTest::newRow("UTF-16, big end first, no mark, a CHARSET that isn't true any more")
        << data("utf16be-nomark.vcf")
        << Values{{FullName, "渡辺 葵"},
                  {LastName, "渡辺"},
                  {FirstName, "葵"},
                  {FileAs, "渡辺 葵"},
                  {FullPronunciation, "渡辺 葵"}};
    QTest::newRow("3.0 with everything")
        << data("v30.vcf")
        << Values{
               {FullName, "Dr. Zoé Anne Marie O;Neil Jr."},
               {FileAs, "Dr. Zoé Anne Marie O;Neil Jr."},
               {LastName, "O;Neil"},
               {FirstName, "Zoé, Anne"},
               {MiddleName, "Marie"},
               {Title, "Dr."},
               {Suffix, "Jr."},
               {LastPronunciation, "Neil"},
               {FullPronunciation, "Neil"},
               {Company, "Example, Ltd."},
               {Department, "Sales North"},
               {JobTitle, "Buyer"},
               {Profession, "Trade"},
               {MobilePhone, "+1 202-555-0101"},
               {BusinessMobile, "+1 202-555-0102"},
               {BusinessPhone, "+1 202-555-0103"},
               {HomeFax, "+1 202-555-0104"},
               {BusinessFax, "+1 202-555-0105"},
               {BusinessPager, "+1 202-555-0106"},
               {HomePhone, "+1 202-555-0107"},
               {DefaultEmail, "best@example.org"},
               {Emails, "best@example.org first@example.com"},
               {BusinessStreet, "12 Example, Street Suite 4 PO 7"},
               {BusinessCity, "Springfield"},
               {BusinessState, "IL"},
               {BusinessZip, "60601"},
               {BusinessCountry, "USA"},
               {HomeStreet, "1 Home Road"},
               {HomeCity, "Bath"},
               {HomeZip, "BA1 1AA"},
               {HomeCountry, "UK"},
               {BusinessWebpage, "https://www.example.com/"},
               {HomeWebpage, "https://www.example.org/"},
               {Birthday, "1970-02-28"},
               {Anniversary, "1999-12-31"},
               {Nickname, "Zo"},
               {Spouse, "Jo"},
               {Children, "Al, Bo"},
               {Assistant, "Kim"},
               {Manager, "Lee"},
               {Notes,
                "One\nTwo \\ three and a long text that is folded in the middle\nTEL HOME: +1 202-555-0108"}};
    QTest::newRow("4.0 with groups") << data("v40.vcf")
                                     << Values{{FullName, "本田 結衣"},
                                               {LastName, "本田"},
                                               {FirstName, "結衣"},
                                               {FileAs, "本田 結衣"},
                                               {LastPronunciation, "ほんだ"},
                                               {FirstPronunciation, "ゆい"},
                                               {FullPronunciation, "ほんだ ゆい"},
                                               {MobilePhone, "+81-90-0000-0003"},
                                               {BusinessPhone, "03-0000-0009"},
                                               {DefaultEmail, "yui.honda@example.org"},
                                               {Emails, "yui.honda@example.org yui@example.jp"},
                                               {Birthday, "--02-29"},
                                               {Anniversary, "2010-05-05"},
                                               {AddressField::Gender, "female"},
                                               {Spouse, "本田 誠"},
                                               {Children, "本田 蓮"},
                                               {Notes, "IMPP: xmpp:yui@example.jp"}};
    QTest::newRow("a nested card gives the assistant") << data("agent.vcf")
                                                       << Values{{FullName, "Big Boss"},
                                                                 {LastName, "Boss"},
                                                                 {FirstName, "Big"},
                                                                 {FileAs, "Big Boss"},
                                                                 {FullPronunciation, "Boss Big"},
                                                                 {Assistant, "Handy Helper"},
                                                                 {BusinessPhone, "555-0199"}};
    QTest::newRow("lines that end in CR")
        << data("carriage-return.vcf")
        << Values{{FullName, "Old Style"}, {FileAs, "Old Style"}, {FullPronunciation, "Old Style"}};
}

void VCardReaderTest::readsFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(Values, expected);
    const Import import = read(file);
    QVERIFY(!import.contacts.isEmpty());
    QCOMPARE(import.report.skippedCount, 0);
    QCOMPARE(import.contacts.first().values, expected);
}

void VCardReaderTest::fillsField_data()
{
    using namespace AddressField;
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QByteArray &file, int field, const char *expected) {
        QTest::newRow(name) << file << field << QString::fromUtf8(expected);
    };

    row("Han name is composed last, first", card("N:山田;太郎;;;"), FullName, "山田 太郎");
    row("Western name is composed first, middle, last", card("N:Doe;John;Q.;Dr.;"), FullName, "John Q. Doe");
    row("company stands in for a name", card("ORG:Example Ltd."), FullName, "Example Ltd.");
    row("nickname stands in for a name", card("NICKNAME:Bo"), FullName, "Bo");
    row("address stands in for a name", card("EMAIL:bo@example.com"), FullName, "bo@example.com");
    row("name with a fold keeps no blank of 3.0", card("FN:Lo\r\n ng"), FullName, "Long");
    row("name with a fold keeps the blank of 2.1", card("FN:Lo\r\n ng", "2.1"), FullName, "Lo ng");
    row("fold with a tab", card("FN:Lo\r\n\tng"), FullName, "Long");
    row("fold inside a character", card("FN:\xE5\xB1\r\n \xB1\xE7\x94\xB0"), FullName, "山田");
    row("line break in a line field becomes a blank", card("FN:A\nTITLE:Head\\nof all"), JobTitle,
        "Head of all");

    row("half-width kana with marks", card("N:A;B\nX-PHONETIC-LAST-NAME:ｶﾞﾝﾊﾞ"), LastPronunciation, "ガンバ");
    row("hiragana stay", card("N:A;B\nX-PHONETIC-LAST-NAME:がんば"), LastPronunciation, "がんば");
    row("reading of the last name alone", card("N:A;B\nX-PHONETIC-LAST-NAME:あ"), FullPronunciation, "あ");
    row("reading of the first name alone", card("N:A;B\nX-PHONETIC-FIRST-NAME:い"), FullPronunciation, "い");
    row("no reading: last, first", card("N:Doe;John\nFN:John Doe"), FullPronunciation, "Doe John");
    row("no reading, no parts: the full name", card("FN:John Doe"), FullPronunciation, "John Doe");
    row("a company sorts by its reading", card("ORG:見本\nX-PHONETIC-ORG:ﾐﾎﾝ"), FullPronunciation, "ミホン");
    row("a company without one by its name", card("ORG:見本"), FullPronunciation, "見本");
    row("phonetic names before SOUND", card("N:A;B\nSOUND;X-IRMC-N:ｶ;ｷ\nX-PHONETIC-LAST-NAME:あ"),
        FullPronunciation, "あ");
    row("SOUND with TYPE", card("N:A;B\nSOUND;TYPE=X-IRMC-N:ｶ;ｷ"), FullPronunciation, "カ キ");
    row("sort string with a blank", card("N:山田;太郎\nSORT-STRING:やまだ たろう"), FirstPronunciation,
        "たろう");
    row("SORT-AS on the company", card("FN:A\nORG;SORT-AS=\"みほん\":見本", "4.0"), CompanyPronunciation,
        "みほん");

    row("phone without a type is at home", card("FN:A\nTEL:1"), HomePhone, "1");
    row("bare types of 2.1", card("FN:A\nTEL;WORK;FAX:1", "2.1"), BusinessFax, "1");
    row("work and cell", card("FN:A\nTEL;CELL;WORK:1", "2.1"), BusinessMobile, "1");
    row("types in lower case and quotes", card("FN:A\nTEL;TYPE=\"work,voice\":1", "4.0"), BusinessPhone, "1");
    row("preferred phone wins", card("FN:A\nTEL:1\nTEL;TYPE=pref:2"), HomePhone, "2");
    row("PREF by number", card("FN:A\nTEL;PREF=2:1\nTEL;PREF=1:2", "4.0"), HomePhone, "2");
    row("colon in a quoted parameter", card("FN:A\nTEL;X-A=\"b:c\":1"), HomePhone, "1");
    row("address in angle brackets", card("FN:A\nEMAIL:Bo <bo@example.com>"), DefaultEmail, "bo@example.com");
    row("escaped separator in an address", card("FN:A\nADR:;;A\\;B\\, C;D"), HomeStreet, "A;B, C");

    row("date of eight digits", card("FN:A\nBDAY:19900512"), Birthday, "1990-05-12");
    row("date without a year", card("FN:A\nBDAY:--0512", "4.0"), Birthday, "--05-12");
    row("date with an omitted year", card("FN:A\nBDAY;X-APPLE-OMIT-YEAR=1604:1604-05-12"), Birthday,
        "--05-12");
    row("date without a day isn't one", card("FN:A\nBDAY:1990-12"), Birthday, "");
    row("and is kept", card("FN:A\nBDAY:1990-12"), Notes, "BDAY: 1990-12");
    row("date that no calendar has", card("FN:A\nBDAY:1990-02-30"), Notes, "BDAY: 1990-02-30");
    row("male", card("FN:A\nGENDER:M", "4.0"), AddressField::Gender, "male");
    row("own words", card("FN:A\nGENDER:O;it's complicated", "4.0"), AddressField::Gender,
        "it's complicated");
    row("gender of another word is kept", card("FN:A\nX-GENDER:free"), Notes, "X-GENDER: free");
    row("gender that isn't told", card("FN:A\nGENDER:U", "4.0"), Notes, "");
    row("coded gender", card("FN:A\nX-WAB-GENDER:2"), AddressField::Gender, "male");

    row("backslash-n is text in 2.1", card("FN:A\nNOTE:C:\\new", "2.1"), Notes, "C:\\new");
    row("backslash-n is a break in 3.0", card("FN:A\nNOTE:a\\Nb"), Notes, "a\nb");
    row("two notes", card("FN:A\nNOTE:a\nNOTE:b"), Notes, "a\nb");
    row("broken quoted-printable stays", card("FN;ENCODING=QUOTED-PRINTABLE:A=ZZ=41=", "2.1"), FullName,
        "A=ZZA=");
    row("quoted-printable in EUC-JP", card("FN;CHARSET=EUC-JP;QUOTED-PRINTABLE:=BB=B3=C5=C4", "2.1"),
        FullName, "山田");
    row("ISO-2022-JP", card("FN;CHARSET=ISO-2022-JP:\x1b$B;3ED\x1b(B", "2.1"), FullName, "山田");
    row("base64 text", card("FN;ENCODING=BASE64:5bGx\r\n 55Sw\r\n", "2.1"), FullName, "山田");
    row("base64 that isn't indented", card("FN:A\nNOTE;BASE64:5bGx\r\n55Sw\r\n", "2.1"), Notes, "山田");
    row("Latin-1 in 2.1", card("FN:M\xFCller", "2.1"), FullName, "Müller");
    row("a nested card in one line",
        data("agent.vcf").mid(data("agent.vcf").lastIndexOf("BEGIN:VCARD\r\nVERSION:3.0")), Assistant,
        "Inner Helper");
}

void VCardReaderTest::fillsField()
{
    QFETCH(QByteArray, file);
    QFETCH(int, field);
    QFETCH(QString, expected);
    const Import import = read(file);
    QCOMPARE(import.contacts.size(), 1);
    QCOMPARE(import.contacts.first().values.value(field), expected);
}

void VCardReaderTest::keepsValuesWithoutFieldInNotes()
{
    const Import import = read(card("FN:A\nNOTE:first\nTEL;TYPE=CELL:1\nTEL;TYPE=CELL:2\nTEL;TYPE=CELL:1\n"
                                    "GEO:1;2\nADR:;;a;b\nADR:;;c;d\nURL:u\nURL:v\nFN:B"));
    QCOMPARE(import.contacts.first().values.value(AddressField::Notes),
             QStringLiteral("first\nTEL CELL: 2\nGEO: 1;2\nADR: c d\nURL: v\nFN: B"));
    QCOMPARE(import.report.movedToNotes, 5);
    QCOMPARE(import.contacts.first().warnings.size(), 5);
    QCOMPARE(import.contacts.first().warnings.first(), QStringLiteral("kept in the notes: TEL CELL: 2"));
}

void VCardReaderTest::groupsLabelsAndCategories()
{
    const Import import = read(data("v30.vcf"));
    QCOMPARE(import.contacts.first().categories, QStringList({"Friends", "Business, old"}));
    QCOMPARE(import.report.unknownProperties, (QMap<QString, int>{{"X-FOO", 2}}));
    QCOMPARE(import.report.leftOut, (QMap<QString, int>{{"PHOTO", 1}}));
}

void VCardReaderTest::leavesOutFieldsThatAreEmpty()
{
    const Import import =
        read(card("FN:A\nTEL:\nADR:;;;;;;\nNOTE:\nBDAY:\nCATEGORIES:,\nEMAIL: \nN:;;;;\nORG:;"));
    using namespace AddressField;
    QCOMPARE(import.contacts.first().values,
             (Values{{FullName, "A"}, {FileAs, "A"}, {FullPronunciation, "A"}}));
    QVERIFY(import.contacts.first().categories.isEmpty());
    QVERIFY(import.contacts.first().warnings.isEmpty());
}

void VCardReaderTest::skipsBrokenCards_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("skipped");
    const QByteArray good = card("FN:Good");
    QTest::newRow("a file of all kinds")
        << data("broken.vcf") << QStringList({"First Good", "Last Good"})
        << "5: the card has no end; 8: the card has no name; 15: the line is no property; "
           "22: the card has no end; 17: the line belongs to no card";
    QTest::newRow("no name") << card("TEL:1") + good << QStringList("Good") << "1: the card has no name";
    QTest::newRow("no colon") << card("FN:A\r\nrubbish") + good << QStringList("Good")
                              << "4: the line is no property";
    QTest::newRow("no property name")
        << card("FN:A\r\n;TYPE=x:1") + good << QStringList("Good") << "4: the line is no property";
    QTest::newRow("open quote") << card("FN:A\r\nTEL;X=\"a:1") + good << QStringList("Good")
                                << "4: the line is no property";
    QTest::newRow("end without a beginning")
        << "END:VCARD\r\n" + good << QStringList("Good") << "1: the line belongs to no card";
    QTest::newRow("nested card that isn't closed")
        << "BEGIN:VCARD\nFN:A\nAGENT:\nBEGIN:VCARD\nFN:B\nEND:VCARD\n" + good << QStringList("Good")
        << "1: the card has no end";
    QTest::newRow("no card at all") << QByteArray("hello\nworld\n") << QStringList()
                                    << "1: the line belongs to no card";
    QTest::newRow("nothing") << QByteArray() << QStringList() << "";
}

void VCardReaderTest::skipsBrokenCards()
{
    QFETCH(QByteArray, file);
    const Import import = read(file);
    QStringList names;
    for (const ContactFields &contact : import.contacts)
        names.append(contact.values.value(AddressField::FullName));
    QStringList skipped;
    for (const SkippedCard &entry : import.report.skipped)
        skipped.append(QStringLiteral("%1: %2").arg(entry.line).arg(entry.reason));
    QTEST(names, "names");
    QTEST(skipped.join("; "), "skipped");
    QCOMPARE(import.report.skippedCount, import.report.skipped.size());
}

void VCardReaderTest::reportsInASentence_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("sentence");
    const QByteArray good = card("FN:Good");
    QTest::newRow("nothing") << QByteArray() << "0 contacts imported";
    QTest::newRow("one") << good << "1 contact imported";
    QTest::newRow("skipped and unknown")
        << good + card("FN:B\nX-FOO:1\nX-FOO:2\nx-foo:3") + "BEGIN:VCARD\r\nFN:C\r\n"
        << "2 contacts imported, 1 skipped (line 12: the card has no end), unknown properties: X-FOO (3)";
    QTest::newRow("left out and kept")
        << card("FN:A\nPHOTO:x\nTEL:1\nTEL:2")
        << "1 contact imported, left out: PHOTO (1), 1 value without a field kept in the notes";
    QTest::newRow("many skipped") << card("TEL:1").repeated(12)
                                  << "0 contacts imported, 12 skipped (line 1: the card has no name; line 5: "
                                     "the card has no name; line 9: the card has no name; "
                                     "line 13: the card has no name; line 17: the card has no name; line 21: "
                                     "the card has no name; line 25: the card has no name; "
                                     "line 29: the card has no name; line 33: the card has no name; line 37: "
                                     "the card has no name; 2 more)";
}

void VCardReaderTest::reportsInASentence()
{
    QFETCH(QByteArray, file);
    QTEST(importReport(read(file).report), "sentence");
}

void VCardReaderTest::reportStaysSmallOnHostileFiles()
{
    QByteArray lines = "FN:A";
    for (int i = 0; i < 3000; ++i)
        lines += "\nX-" + QByteArray::number(i) + ":1";
    const Import import = read(card(lines) + card("TEL:1").repeated(3000));
    QCOMPARE(import.report.unknownProperties.size(), VCardReport::MaxDetails + 1);
    QCOMPARE(import.report.unknownProperties.value("..."), 3000 - VCardReport::MaxDetails);
    QCOMPARE(import.report.skipped.size(), VCardReport::MaxDetails);
    QCOMPARE(import.report.skippedCount, 3000);
}

void VCardReaderTest::limitsLinesAndCards()
{
    const QByteArray good = card("FN:Good");
    const Import longLine = read(card("FN:A\r\nNOTE:" + QByteArray(4 * 1024 * 1024, 'x')) + good);
    QCOMPARE(longLine.contacts.size(), 1);
    QCOMPARE(longLine.report.skipped.first().line, 4);
    QCOMPARE(longLine.report.skipped.first().reason, QStringLiteral("the line is too long"));
    const Import large =
        read(card("FN:A\r\n" + ("NOTE:" + QByteArray(1024 * 1024, 'x') + "\r\n").repeated(17)) + good);
    QCOMPARE(large.contacts.size(), 1);
    QCOMPARE(large.report.skipped.first().line, 1);
    QCOMPARE(large.report.skipped.first().reason, QStringLiteral("the card is too large"));
}

void VCardReaderTest::everyTruncation_data()
{
    QTest::addColumn<QByteArray>("file");
    for (const char *name :
         {"v21-sjis-qp.vcf", "v21-sjis-raw.vcf", "utf16le.vcf", "v30.vcf", "v40.vcf", "agent.vcf"})
        QTest::newRow(name) << data(name);
}

void VCardReaderTest::everyTruncation()
{
    QFETCH(QByteArray, file);
    const QList<ContactFields> whole = read(file).contacts;
    QVERIFY(!whole.isEmpty());
    for (qsizetype size = 0; size < file.size(); ++size) {
        const Import import = read(file.left(size));
        const qsizetype lines = file.left(size).count('\n');
        const auto begun = std::count_if(whole.cbegin(), whole.cend(),
                                         [=](const ContactFields &contact) { return contact.line <= lines; });
        const QByteArray place = QByteArray::number(size);
        QVERIFY2(import.contacts.size() <= begun, place);
        QVERIFY2(import.contacts.size() + import.report.skippedCount >= begun, place);
        for (qsizetype i = 0; i < import.contacts.size(); ++i)
            QVERIFY2(import.contacts[i].values == whole[i].values, place);
    }
}

void VCardReaderTest::fiveThousandCards()
{
    QByteArray file;
    for (int i = 0; i < 5000; ++i)
        file += card("N:Name" + QByteArray::number(i) +
                     ";First\nTEL;TYPE=CELL:1\nEMAIL:a@example.com\nNOTE:some text");
    const Import import = read(file);
    QCOMPARE(import.contacts.size(), 5000);
    QCOMPARE(import.report.skippedCount, 0);
    QCOMPARE(import.contacts.last().values.value(AddressField::FullName), QStringLiteral("First Name4999"));
    QCOMPARE(import.contacts.last().line, 1 + 4999 * 7);
}

void VCardReaderTest::countsCards()
{
    QByteArray file = card("FN:A").repeated(250) + "BEGIN:VCARD\nFN:B";
    QBuffer device(&file);
    QVERIFY(device.open(QIODevice::ReadOnly));
    QCOMPARE(VCardReader::countCards(&device), 251);
    VCardReader reader(&device);
    int count = 0;
    while (reader.next())
        ++count;
    QCOMPARE(count, 250);
}

void VCardReaderTest::sampleIsWhole()
{
    const Import import = read(fileBytes(QStringLiteral(SAMPLE_FILE)));
    QCOMPARE(importReport(import.report), QStringLiteral("300 contacts imported"));
    QSet<QString> names;
    for (const ContactFields &contact : import.contacts) {
        names.insert(contact.values.value(AddressField::FullName));
        QVERIFY(contact.warnings.isEmpty());
        QVERIFY(contact.values.contains(AddressField::DefaultEmail));
        for (const QString &value : contact.values)
            QVERIFY(!value.contains(QChar::ReplacementCharacter));
    }
    QCOMPARE(names.size(), 300);
}

void VCardReaderTest::sampleSpreadsOverTheKanaTable()
{
    const Import import = read(fileBytes(QStringLiteral(SAMPLE_FILE)));
    QSet<QChar> initials;
    int withReading = 0;
    for (const ContactFields &contact : import.contacts) {
        const QString reading = contact.values.value(AddressField::LastPronunciation);
        if (reading.isEmpty())
            continue;
        ++withReading;
        const QChar first = reading.at(0);
        initials.insert(first >= u'ァ' ? QChar(first.unicode() - 0x60) : first);
        QVERIFY(contact.values.value(AddressField::FullPronunciation).contains(u' '));
    }
    QCOMPARE(withReading, 200);
    for (const QChar initial : QStringLiteral(
             "あいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめもやゆよらりれろわ"))
        QVERIFY2(initials.contains(initial) || initials.contains(QChar(initial.unicode() + 1)),
                 qPrintable(QString(initial)));
}

QTEST_GUILESS_MAIN(VCardReaderTest)
#include "vcardreadertest.moc"
