// What the finder of links makes of texts. The widget has tests of its own.
#include "kyhypertextbrowser.h"
#include "linkfinder_p.h"
#include "linksteps.h"
#include <QRandomGenerator>
#include <QTest>
#include <QTextDocument>

class LinkFindingTest : public QObject
{
    Q_OBJECT
private slots:
    void table_data();
    void table();
    void addressAtTheEndIsClosedByAppending();
    void addressInAngleBracketsGetsABlankInFront();
    void addressStopsBeforeEscapedBracket();
    void urlStopsAtABlank();
    void httpsBeforeHttpStaysPlain();
    void textWithNoBoundaryInFrontLosesNothing();
    void boundaryAtTheFirstCharacterCounts();
    void equalsTheSteps_data();
    void equalsTheSteps();
    void loneSurrogatesEndAddresses();
    void linksInsideOneAnotherAreLimited();
    void longTexts_data();
    void longTexts();
    void escapedTextYieldsNothingButLinks_data();
    void escapedTextYieldsNothingButLinks();
    void insertedAttributesStayClosed_data();
    void insertedAttributesStayClosed();
    void closingBracketsGoWithTheOpeningOnes_data();
    void closingBracketsGoWithTheOpeningOnes();
    void linksOfAnotherKindKeepTheirBrackets();
    void decodesWhatIsEncoded();
};

namespace {

constexpr int ChangeText = KyHyperTextBrowser::ChangeText;
constexpr int Texts = 20000;

using Finder = QString (*)(const QString &);

QString emailLinks(QString text)
{
    KyHyperTextBrowser().setEmailtoLink(text);
    return text;
}

QString urlLinks(QString text)
{
    KyHyperTextBrowser().setURLtoLink(text);
    return text;
}

/** \n, \t, \r, \\ and \uXXXX as what they stand for. */
QString unescaped(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'\\') {
            result += text[i];
            continue;
        }
        const QChar code = text.at(++i);
        if (code == u'u') {
            result += QChar(text.mid(i + 1, 4).toUShort(nullptr, 16));
            i += 4;
        } else {
            result += code == u'n' ? u'\n' : code == u't' ? u'\t' : code == u'r' ? u'\r' : code.unicode();
        }
    }
    return result;
}

QString piecesInARow(const QStringList &pieces, int most, QRandomGenerator &random)
{
    QString text;
    for (int i = random.bounded(most + 1); i > 0; --i)
        text += pieces[random.bounded(int(pieces.size()))];
    return text;
}

const QStringList AnyPieces{
    "@",    "@",  "a",  "b.c",  "http://", "https://", "HTTP://", "ht",   "tp://",       "<br>",
    "<BR>", "<b", "r>", "&lt;", "&gt;",    "&amp;",    "&quot;",  "&GT;", "&",           ";",
    "<",    ">",  "\"", " ",    "\n",      "\\",       ",",       ":",    "(",           ")",
    "東",   "😀",  "\t", "'",    "%22",     "mailto:",  "</a>",    "&lt",  QString(u'\0')};

/** Pieces of a text before it is escaped. White space in rows isn't shown as it stands. */
const QStringList RawPieces{"@",           "@",    "a",   "b.c", "<", ">",   "\"",    "&",      ";",
                            "'",           "(",    ",",   ":",   "x", "東",  "&#34;", "&quot;", "<b>",
                            "<img src=x>", "</a>", "lt;", "\\",  "%", "?y=", "#"};

struct Shown
{
    QString text;
    QStringList hrefs;
};

Shown shown(const QString &html)
{
    QTextDocument document;
    document.setHtml("<pre>" + html + "</pre>");
    Shown result{document.toPlainText(), {}};
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            if (it.fragment().charFormat().isAnchor())
                result.hrefs.append(it.fragment().charFormat().anchorHref());
        }
    }
    return result;
}

} // namespace

void LinkFindingTest::table_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QFile file(QStringLiteral(TEST_DATA "/links.tsv"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    int rows = 0;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].isEmpty() || lines[i].startsWith(u'#'))
            continue;
        const QStringList columns = lines[i].split(u'\t');
        QVERIFY2(columns.size() == 3, qUtf8Printable(lines[i]));
        QTest::addRow("line %d: %s", int(i + 1), qUtf8Printable(columns[1]))
            << columns[0].toInt() << unescaped(columns[1]) << unescaped(columns[2]);
        ++rows;
    }
    QVERIFY(rows >= 200);
}

void LinkFindingTest::table()
{
    QFETCH(const int, flags);
    QFETCH(const QString, text);
    QFETCH(const QString, expected);
    KyHyperTextBrowser browser;
    QString result = text;
    browser.setHyperText(result, flags | ChangeText);
    QCOMPARE(result, expected);
}

void LinkFindingTest::addressAtTheEndIsClosedByAppending()
{
    QCOMPARE(emailLinks("to user@host"), "to <a href=\"mailto:user@host\">user@host</a>");
    QCOMPARE(urlLinks("at http://host"), "at <a href=\"http://host\">http://host</a>");
}

void LinkFindingTest::addressInAngleBracketsGetsABlankInFront()
{
    QCOMPARE(emailLinks("<user@host>"), " <a href=\"mailto:user@host\">user@host</a>>");
    QCOMPARE(emailLinks("x,<user@host>"), "x, <a href=\"mailto:user@host\">user@host</a>>");
}

void LinkFindingTest::addressStopsBeforeEscapedBracket()
{
    QCOMPARE(emailLinks("&lt;user@host&gt;"), "&lt;<a href=\"mailto:user@host\">user@host</a>&gt;");
}

void LinkFindingTest::urlStopsAtABlank()
{
    QCOMPARE(urlLinks("http://a b"), "<a href=\"http://a\">http://a</a> b");
}

void LinkFindingTest::httpsBeforeHttpStaysPlain()
{
    QCOMPARE(urlLinks("https://x http://y"), "https://x <a href=\"http://y\">http://y</a>");
}

void LinkFindingTest::textWithNoBoundaryInFrontLosesNothing()
{
    QCOMPARE(emailLinks("user@host, x"), "<a href=\"mailto:user@host\">user@host</a>, x");
}

void LinkFindingTest::boundaryAtTheFirstCharacterCounts()
{
    QCOMPARE(emailLinks("(user@host"), "(<a href=\"mailto:user@host\">user@host</a>");
}

void LinkFindingTest::equalsTheSteps_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 4; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void LinkFindingTest::equalsTheSteps()
{
    QFETCH(const quint32, seed);
    QRandomGenerator random(seed);
    for (int i = 0; i < Texts; ++i) {
        const QString text = piecesInARow(AnyPieces, 24, random);
        QString expected = text;
        LinkSteps::emailLinks(expected);
        const QString found = LinkFinder::withEmailLinks(text);
        QVERIFY2(found == expected, qUtf8Printable(text + " -> " + found + " instead of " + expected));
        LinkSteps::urlLinks(expected);
        const QString both = LinkFinder::withUrlLinks(found);
        QVERIFY2(both == expected, qUtf8Printable(text + " -> " + both + " instead of " + expected));
    }
}

void LinkFindingTest::loneSurrogatesEndAddresses()
{
    const QString half(QChar(0xd800));
    QCOMPARE(emailLinks(half + "a@b" + half), half + "<a href=\"mailto:a@b\">a@b</a>" + half);
    QCOMPARE(urlLinks("http://a" + half), "<a href=\"http://a\">http://a</a>" + half);
}

void LinkFindingTest::linksInsideOneAnotherAreLimited()
{
    for (const int addresses : {15, 16, 17, 100}) {
        const QString text = QString("http://a/").repeated(addresses) + " http://b ";
        const QString result = urlLinks(text);
        QCOMPARE(result.count("<a href=\""), std::min(addresses, LinkFinder::MaxNestedLinks) + 1);
        QCOMPARE(result.count("</a>"), result.count("<a href=\""));
        QVERIFY(result.endsWith("</a> <a href=\"http://b\">http://b</a> "));
        QCOMPARE(shown(result).text, text);
    }
}

void LinkFindingTest::longTexts_data()
{
    QTest::addColumn<QString>("piece");
    QTest::addColumn<QString>("end");
    for (const char *piece : {"@",
                              "@ ",
                              "a@",
                              "<@",
                              "@;",
                              "@&gt;",
                              "<@>",
                              " @>",
                              "x",
                              "http://",
                              "http://a ",
                              "https://a ",
                              "http",
                              "<br",
                              "http://a<br>",
                              "&",
                              "<a href=\"mailto:",
                              " <a href=\"mailto:a\">",
                              "\"",
                              "<",
                              "東"}) {
        for (const char *end : {"", "@", " ", " http://a "})
            QTest::addRow("%s...%s", piece, end) << QString::fromUtf8(piece) << QString::fromUtf8(end);
    }
}

/** Whatever takes time by the square of the length would run into the limit of the whole test. */
void LinkFindingTest::longTexts()
{
    QFETCH(const QString, piece);
    QFETCH(const QString, end);
    const QString text = piece.repeated(500000 / piece.size()) + end;
    const QString withEmail = LinkFinder::withEmailLinks(text);
    QCOMPARE(withEmail.count("<a href=\"mailto:") > text.count("<a href=\"mailto:"), text.contains(u'@'));
    const QString withUrl = LinkFinder::withUrlLinks(text);
    QCOMPARE(withUrl.contains("<a href=\"http"), text.contains("http://") || text.contains("https://"));
    QCOMPARE(withEmail.size() - LinkFinder::withoutClosingBrackets(withEmail, text).size(),
             text.count("<@>"));
}

void LinkFindingTest::escapedTextYieldsNothingButLinks_data()
{
    QTest::addColumn<QString>("piece");
    QTest::addColumn<QString>("linkPattern");
    QTest::addColumn<Finder>("links");
    QTest::newRow("e-mail") << "@"
                            << "mailto:.*@.*" << &LinkFinder::withEmailLinks;
    QTest::newRow("web") << "http://"
                         << "http://.*" << &LinkFinder::withUrlLinks;
}

/** An application escapes what it shows: then every character is shown, and no tag but a link comes in. */
void LinkFindingTest::escapedTextYieldsNothingButLinks()
{
    QFETCH(const QString, piece);
    QFETCH(const QString, linkPattern);
    QFETCH(const Finder, links);
    const QRegularExpression pattern(QRegularExpression::anchoredPattern(linkPattern));
    QRandomGenerator random(7);
    int found = 0;
    for (int i = 0; i < 2000; ++i) {
        const QString text =
            "[" + piecesInARow(RawPieces + QStringList{piece, piece, piece, " x"}, 14, random) + "]";
        const Shown result = shown(links(text.toHtmlEscaped()));
        QCOMPARE(result.text, text);
        QCOMPARE(result.hrefs.isEmpty(), !text.contains(piece));
        for (const QString &href : result.hrefs)
            QVERIFY2(pattern.match(href).hasMatch(), qUtf8Printable(text + " -> " + href));
        found += int(result.hrefs.size());
    }
    QVERIFY(found > 1000);
}

void LinkFindingTest::insertedAttributesStayClosed_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("href");
    QTest::newRow("quotation mark") << "http://a\"b c"
                                    << "http://a%22b";
    QTest::newRow("tag") << "http://a\"><img> c"
                         << "http://a%22%3E%3Cimg%3E";
    QTest::newRow("attribute") << "http://a\"title=\"b c"
                               << "http://a%22title=%22b";
    QTest::newRow("named entity") << "http://a&quot;&gt;b c"
                                  << "http://a\">b";
    QTest::newRow("decimal entity") << "http://a&#34;&#62;b c"
                                    << "http://a\">b";
    QTest::newRow("hexadecimal entity") << "http://a&#x22;b c"
                                        << "http://a\"b";
    QTest::newRow("ampersand at the end") << "http://a& c"
                                          << "http://a&";
    QTest::newRow("entity cut short") << "http://a&#34 ;c"
                                      << "http://a&#34";
    QTest::newRow("entity across the end") << "http://a&l t;c"
                                           << "http://a&l";
    QTest::newRow("entity of a zero") << "http://a&#0;b c" << QString("http://a") + QChar(0) + "b";
    QTest::newRow("zero") << QString("http://a") + QChar(0) + "b"
                          << "http://a";
    QTest::newRow("line separator") << QString("http://a\u2028b") << "http://a";
    QTest::newRow("control character") << "http://a\x1b]b c"
                                       << "http://a";
}

void LinkFindingTest::insertedAttributesStayClosed()
{
    QFETCH(const QString, text);
    QFETCH(const QString, href);
    const QStringList hrefs = shown(LinkFinder::withUrlLinks(text)).hrefs;
    QVERIFY(!hrefs.isEmpty());
    for (const QString &found : hrefs)
        QCOMPARE(found, href);
}

void LinkFindingTest::closingBracketsGoWithTheOpeningOnes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("bracketed") << "x <a@b> y"
                               << "x  a@b y";
    QTest::newRow("several") << "x <a@b>,<c@d> y"
                             << "x  a@b, c@d y";
    QTest::newRow("two behind") << "x <a@b>> y"
                                << "x  a@b> y";
    QTest::newRow("at the ends") << "<a@b>"
                                 << " a@b";
    QTest::newRow("none in front") << "x,a@b> y"
                                   << "x,a@b> y";
    QTest::newRow("blank in front") << "x a@b> y"
                                    << "x a@b> y";
    QTest::newRow("with and without one in front") << "x a@b> <a@b> a@b> <a@b>"
                                                   << "x a@b>  a@b a@b>  a@b";
    QTest::newRow("apart") << "x <a@b > y"
                           << "x  a@b > y";
    QTest::newRow("escaped") << "x &lt;a@b&gt; y"
                             << "x <a@b> y";
    QTest::newRow("web address in front") << "http://x/ <a@b> http://y,<a@b> z"
                                          << "http://x/  a@b http://y, a@b z";
    QTest::newRow("web address across a link") << "http://x,a@b> <c@d>"
                                               << "http://x, href=\"mailto:a@b\">a@b>  c@d";
}

void LinkFindingTest::closingBracketsGoWithTheOpeningOnes()
{
    QFETCH(const QString, text);
    QFETCH(const QString, expected);
    const QString linked = LinkFinder::withUrlLinks(LinkFinder::withEmailLinks(text));
    QCOMPARE(shown(LinkFinder::withoutClosingBrackets(linked, text)).text, expected);
}

void LinkFindingTest::linksOfAnotherKindKeepTheirBrackets()
{
    QCOMPARE(LinkFinder::withoutClosingBrackets("x a@b> <a@b>>", "x <a@b>"), "x a@b> <a@b>>");
}

void LinkFindingTest::decodesWhatIsEncoded()
{
    QCOMPARE(LinkFinder::decodedLink("http://a%22%3C%3Eb%20%2522%3c+%"), "http://a\"<>b%20%2522%3c+%");
}

QTEST_MAIN(LinkFindingTest)
#include "linkfindingtest.moc"
