// The view of text with links: what it shows, what it starts, and what it never loads.
#include "config.h"
#include "global.h"
#include "kyhypertextbrowser.h"
#include "qpeapplication.h"
#include <dlfcn.h>
#include <QBuffer>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextFragment>

namespace {

QStringList &startedPrograms()
{
    static QStringList programs;
    return programs;
}

} // namespace

/** Notes what is really started: a program that comes late would not be seen by what it leaves behind. */
bool Global::execute(const QString &program, const QString &argument)
{
    static const auto next =
        reinterpret_cast<decltype(&Global::execute)>(dlsym(RTLD_NEXT, "_ZN6Global7executeERK7QStringS2_"));
    const bool isStarted = next(program, argument);
    if (isStarted)
        startedPrograms() += program;
    return isStarted;
}

class HyperTextTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void flags_data();
    void flags();
    void asksTheVirtualOperationsInOrder();
    void showsRichTextAlways();
    void addressInAngleBracketsShowsWithoutThem();
    void startsTheProgramOfALink_data();
    void startsTheProgramOfALink();
    void programsOfTheSettings();
    void refusesWhatIsNoArgument_data();
    void refusesWhatIsNoArgument();
    void missingProgramDoesNothing_data();
    void missingProgramDoesNothing();
    void clickGivesTheLinkAsItStands_data();
    void clickGivesTheLinkAsItStands();
    void clickInAViewWithoutFocus();
    void pressAndReleaseOnDifferentLinksFollowNeither();
    void keysFollowALink();
    void clickFollowsEachOfNeighbouringLinks();
    void sourceOfTheBaseClassEndsInTheProgram();
    void reloadingFollowsNoLink();
    void followingALinkLeavesTheView();
    void keysScrollByALine_data();
    void keysScrollByALine();
    void otherKeysGoToTheTextBrowser();
    void clearEmptiesTheView_data();
    void clearEmptiesTheView();
    void newTextStartsAtTheTop();
    void tablesInsideOneAnother_data();
    void tablesInsideOneAnother();
    void tooManyTablesAreShownAsTheyStand();
    void tablesBesideOneAnotherAreShown();
    void loadsNothing_data();
    void loadsNothing();
};

namespace {

constexpr int InTime = 10000; // ms

QString programFile(const QString &name)
{
    return QPEApplication::qpeDir() + "bin/" + name;
}

/** Where a program of writeProgram() tells its arguments, each followed by a zero byte, once they are whole.
 */
QString argumentsOf(const QString &name)
{
    return programFile(name) + ".arguments";
}

void writeProgram(const QString &name, bool executable = true)
{
    QVERIFY(QDir().mkpath(QPEApplication::qpeDir() + "bin"));
    QFile file(programFile(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("#!/bin/sh\nprintf '%s\\0' \"$@\" > \"$0.partial\"\nmv \"$0.partial\" \"$0.arguments\"\n");
    if (executable)
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/** Waits for the program's end, and forgets it. @return its arguments, each with a zero byte behind; null
 * when it wasn't started */
QByteArray startedWith(const QString &name)
{
    const QString path = argumentsOf(name);
    if (!QTest::qWaitFor([path] { return QFile::exists(path); }, InTime))
        return {};
    const QByteArray arguments = contents(path);
    QFile::remove(path);
    return arguments;
}

QByteArray asArgument(const QString &text)
{
    return text.toUtf8() + '\0';
}

/** A red picture as an address that holds it. */
QString redInText()
{
    QImage red(1, 1, QImage::Format_RGB32);
    red.fill(Qt::red);
    QBuffer buffer;
    red.save(&buffer, "PNG");
    return "data:image/png;base64," + QString::fromLatin1(buffer.data().toBase64());
}

/** Tells which operations it is asked for. */
class Browser : public KyHyperTextBrowser
{
public:
    void setEmailtoLink(QString &text) override
    {
        calls += "email(" + text + ")";
        text += "+email";
    }
    void setURLtoLink(QString &text) override
    {
        calls += "url(" + text + ")";
        text += "+url";
    }

    QStringList calls;
};

/** Tells which links it follows, and starts nothing. */
class LinkWatch : public KyHyperTextBrowser
{
public:
    LinkWatch() { resize(400, 160); }
    void setSource(const QString &link) override { links += link; }
    QStringList links;
};

void showActive(QWidget &widget)
{
    widget.show();
    widget.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&widget, InTime));
    widget.setFocus();
}

QPoint placeOf(const QTextBrowser &browser, int character)
{
    QTextCursor cursor(browser.document());
    cursor.setPosition(character);
    const QPoint before = browser.cursorRect(cursor).center();
    cursor.setPosition(character + 1);
    return (before + browser.cursorRect(cursor).center()) / 2;
}

void clickCharacter(const QTextBrowser &browser, int character)
{
    QTest::mouseClick(browser.viewport(), Qt::LeftButton, {}, placeOf(browser, character));
}

/** Any number of a key: QTest knows today's only. */
void press(QWidget &widget, int key, Qt::KeyboardModifiers modifiers)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QCoreApplication::sendEvent(&widget, &event);
}

QStringList shownLinks(const QTextBrowser &browser)
{
    QStringList links;
    for (QTextBlock block = browser.document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            if (it.fragment().charFormat().isAnchor())
                links += it.fragment().text();
        }
    }
    return links;
}

} // namespace

void HyperTextTest::init()
{
    QDir(QPEApplication::qpeDir() + "bin").removeRecursively();
    QDir(QDir::homePath() + "/Settings").removeRecursively();
    startedPrograms().clear();
}

void HyperTextTest::flags_data()
{
    QTest::addColumn<int>("flags");
    QTest::addColumn<QStringList>("links");
    QTest::addColumn<bool>("changesText");
    QTest::newRow("none") << 0 << QStringList{} << false;
    QTest::newRow("web") << 1 << QStringList{"http://b"} << false;
    QTest::newRow("e-mail") << 2 << QStringList{"a@host"} << false;
    QTest::newRow("both") << 3 << QStringList{"a@host", "http://b"} << false;
    QTest::newRow("in place, none") << 16 << QStringList{} << false;
    QTest::newRow("in place, web") << 17 << QStringList{"http://b"} << true;
    QTest::newRow("in place, e-mail") << 18 << QStringList{"a@host"} << true;
    QTest::newRow("in place, both") << 19 << QStringList{"a@host", "http://b"} << true;
    QTest::newRow("other bits") << 4 + 8 + 32 << QStringList{} << false;
}

void HyperTextTest::flags()
{
    QFETCH(const int, flags);
    QFETCH(const QStringList, links);
    QFETCH(const bool, changesText);
    const QString given = "to a@host at http://b now";
    QString text = given;
    KyHyperTextBrowser browser(nullptr, "view");
    browser.setHyperText(text, flags);
    QCOMPARE(shownLinks(browser), links);
    QCOMPARE(browser.toPlainText(), given);
    QCOMPARE(text != given, changesText);
    QCOMPARE(text.contains("<a href=\"mailto:a@host\">a@host</a>"), (flags & 18) == 18);
    QCOMPARE(text.contains("<a href=\"http://b\">http://b</a>"), (flags & 17) == 17);
    QCOMPARE(browser.objectName(), "view");
}

void HyperTextTest::asksTheVirtualOperationsInOrder()
{
    Browser browser;
    QString text = "text";
    browser.setHyperText(text, 19);
    QCOMPARE(browser.calls, (QStringList{"email(text)", "url(text+email)"}));
    QCOMPARE(text, "text+email+url");
    QCOMPARE(browser.toPlainText(), "text+email+url");
}

void HyperTextTest::showsRichTextAlways()
{
    KyHyperTextBrowser browser;
    QString text = "plain\nand &amp; more";
    browser.setHyperText(text, 0);
    QCOMPARE(browser.toPlainText(), "plain and & more");
    browser.setPlainText("<b>");
    text = "<b>bold</b>";
    browser.setHyperText(text, 0);
    QCOMPARE(browser.toPlainText(), "bold");
}

void HyperTextTest::addressInAngleBracketsShowsWithoutThem()
{
    KyHyperTextBrowser browser;
    for (const int flags : {2, 3, 18, 19}) {
        QString text = "a@b> Name<user@host>";
        browser.setHyperText(text, flags);
        QCOMPARE(browser.toPlainText(), "a@b> Name user@host");
        QCOMPARE(shownLinks(browser), (QStringList{"a@b", "user@host"}));
    }
}

void HyperTextTest::startsTheProgramOfALink_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("argument");
    QTest::newRow("address") << "mailto:user@host"
                             << "kliomu"
                             << "user@host";
    QTest::newRow("no address") << "mailto:"
                                << "kliomu"
                                << "";
    QTest::newRow("address of shell words") << "mailto:$(x) `y`;z|\"'*\\@host"
                                            << "kliomu"
                                            << "$(x) `y`;z|\"'*\\@host";
    QTest::newRow("mailto within a link") << "http://h/?to=mailto:a@b"
                                          << "kliomu"
                                          << "a@b";
    QTest::newRow("first mailto counts") << "mailto:mailto:a@b"
                                         << "kliomu"
                                         << "mailto:a@b";
    QTest::newRow("other case") << "MAILTO:a@b"
                                << "opera"
                                << "MAILTO:a@b";
    QTest::newRow("web") << "http://host/a?b=c&d=e#f"
                         << "opera"
                         << "http://host/a?b=c&d=e#f";
    QTest::newRow("encoded") << "http://h/%22%3c+%E6%9D%B1%zz"
                             << "opera"
                             << "http://h/%22%3c+%E6%9D%B1%zz";
    QTest::newRow("Japanese") << "http://東京/😀"
                              << "opera"
                              << "http://東京/😀";
    QTest::newRow("shell words") << "http://h/'\"; $(x) & `y` |>z\\"
                                 << "opera"
                                 << "http://h/'\"; $(x) & `y` |>z\\";
    QTest::newRow("file") << "file:///etc/passwd"
                          << "opera"
                          << "file:///etc/passwd";
    QTest::newRow("script") << "javascript:alert(1)"
                            << "opera"
                            << "javascript:alert(1)";
    QTest::newRow("place") << "#top"
                           << "opera"
                           << "#top";
}

void HyperTextTest::startsTheProgramOfALink()
{
    QFETCH(const QString, link);
    QFETCH(const QString, program);
    QFETCH(const QString, argument);
    writeProgram("kliomu");
    writeProgram("opera");
    KyHyperTextBrowser browser;
    browser.setSource(link);
    QCOMPARE(startedWith(program), asArgument(argument));
    QCOMPARE(startedPrograms(), QStringList{program});
    QVERIFY(!QFile::exists(QDir::homePath() + "/Settings/haldenqpe.conf"));
}

void HyperTextTest::programsOfTheSettings()
{
    {
        Config config("haldenqpe");
        config.setGroup("Helpers");
        config.writeEntry("mailer", "my mailer");
        config.writeEntry("browser", "pages");
    }
    for (const char *name : {"my mailer", "pages", "kliomu", "opera"})
        writeProgram(name);
    KyHyperTextBrowser browser;
    browser.setSource("mailto:a@b");
    QCOMPARE(startedWith("my mailer"), asArgument("a@b"));
    browser.setSource("http://a");
    QCOMPARE(startedWith("pages"), asArgument("http://a"));
    QCOMPARE(startedPrograms(), (QStringList{"my mailer", "pages"}));
}

void HyperTextTest::refusesWhatIsNoArgument_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("option of the mailer") << "mailto:-x@host";
    QTest::newRow("long option of the mailer") << "mailto:--attach=/etc/passwd";
    QTest::newRow("option of the browser") << "-remote";
    QTest::newRow("zero") << QString("http://a") + QChar(0) + "b";
    QTest::newRow("zero in an address") << QString("mailto:a@b") + QChar(0);
    QTest::newRow("line break") << "mailto:a@b\nBcc: c@d";
    QTest::newRow("escape") << "http://a\x1b[2J";
    QTest::newRow("delete") << "http://a\x7f";
}

void HyperTextTest::refusesWhatIsNoArgument()
{
    QFETCH(const QString, link);
    writeProgram("kliomu");
    writeProgram("opera");
    KyHyperTextBrowser browser;
    browser.setSource(link);
    QCOMPARE(startedPrograms(), QStringList());
}

void HyperTextTest::missingProgramDoesNothing_data()
{
    QTest::addColumn<QString>("configured");
    QTest::addColumn<bool>("present");
    QTest::newRow("missing") << "nosuch" << false;
    QTest::newRow("not executable") << "plain" << true;
    QTest::newRow("a folder") << "." << false;
    QTest::newRow("empty name") << "" << false;
    QTest::newRow("elsewhere") << "../elsewhere" << false;
}

void HyperTextTest::missingProgramDoesNothing()
{
    QFETCH(const QString, configured);
    QFETCH(const bool, present);
    {
        Config config("haldenqpe");
        config.setGroup("Helpers");
        config.writeEntry("mailer", configured);
        config.writeEntry("browser", configured);
    }
    writeProgram("kliomu");
    writeProgram("opera");
    if (present)
        writeProgram(configured, false);
    KyHyperTextBrowser browser;
    browser.setSource("mailto:a@b");
    browser.setSource("http://a");
    QCOMPARE(startedPrograms(), QStringList());
}

void HyperTextTest::clickGivesTheLinkAsItStands_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("link");
    QTest::newRow("address") << "user@host"
                             << "mailto:user@host";
    QTest::newRow("plus and percent") << "a+b%41%zz@host"
                                      << "mailto:a+b%41%zz@host";
    QTest::newRow("address with fields") << "a@b?subject=x%20y&amp=z"
                                         << "mailto:a@b?subject=x%20y&amp=z";
    QTest::newRow("hash and slash") << "#a/../b@c"
                                    << "mailto:#a/../b@c";
    QTest::newRow("web") << "http://host/a?b=c&d=e#f"
                         << "http://host/a?b=c&d=e#f";
    QTest::newRow("entity") << "http://h/?a=1&amp;b=2"
                            << "http://h/?a=1&b=2";
    QTest::newRow("case and dots") << "HTTP://HOST:80/a/../b//c"
                                   << "HTTP://HOST:80/a/../b//c";
    QTest::newRow("encoded") << "http://h/%41%20%E6%9D%B1+%zz%"
                             << "http://h/%41%20%E6%9D%B1+%zz%";
    QTest::newRow("quotation marks") << "http://h/\"a\""
                                     << "http://h/\"a\"";
    QTest::newRow("brackets of an entity") << "http://h/&lt;a&gt;"
                                           << "http://h/<a>";
    QTest::newRow("invalid host") << "http://[::"
                                  << "http://[::";
    QTest::newRow("not normal") << "http://h/a|b^c`d{e}\\f"
                                << "http://h/a|b^c`d{e}\\f";
    QTest::newRow("Japanese link of the text") << "<a href=\"http://東京/日 本?ｑ=語\">x</a>"
                                               << "http://東京/日 本?ｑ=語";
    QTest::newRow("relative link of the text") << "<a href=\"../etc/passwd\">x</a>"
                                               << "../etc/passwd";
    QTest::newRow("file link of the text") << "<a href=\"file:///etc/passwd\">x</a>"
                                           << "file:///etc/passwd";
    QTest::newRow("script link of the text") << "<a href=\"javascript:x()\">x</a>"
                                             << "javascript:x()";
    QTest::newRow("place in the text") << "<a href=\"#end\">x</a>"
                                       << "#end";
}

void HyperTextTest::clickGivesTheLinkAsItStands()
{
    QFETCH(QString, text);
    QFETCH(const QString, link);
    LinkWatch browser;
    showActive(browser);
    const bool isWeb = text.contains("http", Qt::CaseInsensitive);
    browser.setHyperText(text, text.startsWith(u'<') ? 0 : isWeb ? 1 : 2);
    clickCharacter(browser, 0);
    QCOMPARE(browser.links, QStringList{link});
}

void HyperTextTest::clickInAViewWithoutFocus()
{
    LinkWatch browser;
    browser.setFocusPolicy(Qt::NoFocus);
    showActive(browser);
    browser.clearFocus();
    QString text = "<a href=\"x:1\">one</a><a href=\"x:2\">two</a>";
    browser.setHyperText(text, 0);
    clickCharacter(browser, 0);
    clickCharacter(browser, 5);
    QCOMPARE(browser.links, (QStringList{"x:1", "x:2"}));
}

void HyperTextTest::pressAndReleaseOnDifferentLinksFollowNeither()
{
    LinkWatch browser;
    showActive(browser);
    QString text = "<a href=\"x:1\">one</a><a href=\"x:2\">two</a><a href=\"x:3\">three</a>";
    browser.setHyperText(text, 0);
    // So near to each other that no text is selected between them.
    const int y = placeOf(browser, 6).y();
    int x = placeOf(browser, 5).x();
    while (browser.anchorAt({x + 1, y}) == "x:2")
        ++x;
    QCOMPARE(browser.anchorAt({x, y}), "x:2");
    QCOMPARE(browser.anchorAt({x + 1, y}), "x:3");
    for (const int offset : {0, 1}) {
        QTest::mousePress(browser.viewport(), Qt::LeftButton, {}, {x + offset, y});
        QTest::mouseRelease(browser.viewport(), Qt::LeftButton, {}, {x + 1 - offset, y});
        QCOMPARE(browser.links, QStringList());
    }
}

void HyperTextTest::keysFollowALink()
{
    LinkWatch browser;
    showActive(browser);
    QString text = "to one+x@host and http://two?%41 <a href=\"x:y z\">a<b>b</b>c</a> end";
    browser.setHyperText(text, 3);
    for (int i = 0; i < 3; ++i) {
        QTest::keyClick(&browser, Qt::Key_Tab);
        QTest::keyClick(&browser, Qt::Key_Return);
    }
    QCOMPARE(browser.links, (QStringList{"mailto:one+x@host", "http://two?%41", "x:y z"}));
    QTest::keyClick(&browser, Qt::Key_Tab, Qt::ShiftModifier);
    QTest::keyClick(&browser, Qt::Key_Enter);
    QCOMPARE(browser.links.last(), "http://two?%41");
}

void HyperTextTest::clickFollowsEachOfNeighbouringLinks()
{
    LinkWatch browser;
    showActive(browser);
    QString text = "<a href=\"x:1\">one</a><a href=\"x:2\">two</a> and text";
    browser.setHyperText(text, 0);
    for (const int character : {0, 2, 3, 5})
        clickCharacter(browser, character);
    clickCharacter(browser, 9);
    QCOMPARE(browser.links, (QStringList{"x:1", "x:1", "x:2", "x:2"}));
}

void HyperTextTest::sourceOfTheBaseClassEndsInTheProgram()
{
    writeProgram("opera");
    KyHyperTextBrowser browser;
    browser.setHtml("text");
    static_cast<QTextBrowser &>(browser).setSource(QUrl("http://host/a?b=c"));
    QCOMPARE(startedWith("opera"), asArgument("http://host/a?b=c"));
    QVERIFY(QMetaObject::invokeMethod(&browser, "setSource", Q_ARG(QString, "http://slot")));
    QCOMPARE(startedWith("opera"), asArgument("http://slot"));
    QCOMPARE(browser.toPlainText(), "text");
}

void HyperTextTest::reloadingFollowsNoLink()
{
    LinkWatch browser;
    browser.reload();
    browser.home();
    browser.backward();
    QCOMPARE(browser.links, QStringList());
}

void HyperTextTest::followingALinkLeavesTheView()
{
    writeProgram("opera");
    QFile page(QDir::homePath() + "/page.html");
    QVERIFY(page.open(QIODevice::WriteOnly));
    page.write("another page");
    page.close();
    KyHyperTextBrowser browser;
    browser.resize(200, 100);
    showActive(browser);
    QString text =
        "<a href=\"#end\">end</a>" + QString("<p>line</p>").repeated(100) + "<a name=\"end\">here</a>";
    browser.setHyperText(text, 0);
    const QSignalSpy changed(&browser, &QTextBrowser::textChanged);
    clickCharacter(browser, 0);
    QCOMPARE(startedWith("opera"), asArgument("#end"));
    browser.setSource("file://" + page.fileName());
    QCOMPARE(startedWith("opera"), asArgument("file://" + page.fileName()));
    QCOMPARE(browser.verticalScrollBar()->value(), 0);
    QCOMPARE(changed.count(), 0);
    QVERIFY(browser.toPlainText().startsWith("end\nline"));
}

void HyperTextTest::keysScrollByALine_data()
{
    QTest::addColumn<int>("up");
    QTest::addColumn<int>("down");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("today's keys") << int(Qt::Key_Up) << int(Qt::Key_Down) << Qt::KeyboardModifiers();
    QTest::newRow("classic keys") << 0x1013 << 0x1015 << Qt::KeyboardModifiers();
    QTest::newRow("with Alt") << int(Qt::Key_Up) << int(Qt::Key_Down)
                              << Qt::KeyboardModifiers(Qt::AltModifier);
}

void HyperTextTest::keysScrollByALine()
{
    QFETCH(const int, up);
    QFETCH(const int, down);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    KyHyperTextBrowser browser;
    browser.resize(200, 100);
    QFont font = browser.font();
    font.setPixelSize(23);
    browser.setFont(font);
    showActive(browser);
    QString text = QString("<p>line</p>").repeated(100);
    browser.setHyperText(text, 0);
    const int line = browser.fontMetrics().lineSpacing();
    const auto position = [&browser] { return browser.verticalScrollBar()->value(); };
    press(browser, up, modifiers);
    QCOMPARE(position(), 0);
    press(browser, down, modifiers);
    QCOMPARE(position(), line);
    press(browser, down, modifiers);
    QCOMPARE(position(), 2 * line);
    press(browser, up, modifiers);
    QCOMPARE(position(), line);
}

void HyperTextTest::otherKeysGoToTheTextBrowser()
{
    KyHyperTextBrowser browser;
    browser.resize(200, 100);
    showActive(browser);
    QString text = QString("<p>line</p>").repeated(100);
    browser.setHyperText(text, 0);
    QTest::keyClick(&browser, Qt::Key_PageDown);
    QVERIFY(browser.verticalScrollBar()->value() > 2 * browser.fontMetrics().lineSpacing());
    QTest::keyClick(&browser, Qt::Key_PageUp);
    QCOMPARE(browser.verticalScrollBar()->value(), 0);
}

void HyperTextTest::clearEmptiesTheView_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << "";
    QTest::newRow("text") << "text with <a href=\"x\">a link</a>";
    QTest::newRow("rule") << "<hr>";
    QTest::newRow("picture") << "<img src=\"x\">";
}

void HyperTextTest::clearEmptiesTheView()
{
    QFETCH(QString, text);
    KyHyperTextBrowser browser;
    const QString empty = browser.toHtml();
    browser.setHyperText(text, 0);
    QVERIFY(QMetaObject::invokeMethod(&browser, "clear"));
    QCOMPARE(browser.toPlainText(), QString());
    QCOMPARE(browser.toHtml(), empty);
}

void HyperTextTest::newTextStartsAtTheTop()
{
    KyHyperTextBrowser browser;
    browser.resize(200, 100);
    showActive(browser);
    QString text = QString("<p>line</p>").repeated(100);
    browser.setHyperText(text, 0);
    browser.verticalScrollBar()->setValue(200);
    browser.setHyperText(text, 0);
    QCOMPARE(browser.verticalScrollBar()->value(), 0);
}

void HyperTextTest::tablesInsideOneAnother_data()
{
    QTest::addColumn<int>("tables");
    QTest::addColumn<bool>("areTables");
    QTest::newRow("ten") << 10 << true;
    QTest::newRow("eleven") << 11 << false;
    QTest::newRow("more than could ever be laid out") << 40 << false;
    QTest::newRow("all that are read") << 500 << false;
}

void HyperTextTest::tablesInsideOneAnother()
{
    QFETCH(const int, tables);
    QFETCH(const bool, areTables);
    KyHyperTextBrowser browser;
    QString text = "<b>a</b> &lt;" + QString("<TABLE><tr><td>").repeated(tables) + "b  c" +
                   QString("</td></tr></table>").repeated(tables);
    browser.setHyperText(text, 3);
    QCOMPARE(!browser.document()->rootFrame()->childFrames().isEmpty(), areTables);
    QCOMPARE(browser.toPlainText().simplified(), "a < b c");
}

void HyperTextTest::tooManyTablesAreShownAsTheyStand()
{
    KyHyperTextBrowser browser;
    QString text = QString("<table>").repeated(20000);
    browser.setHyperText(text, 0);
    QCOMPARE(browser.toPlainText(), text);
}

void HyperTextTest::tablesBesideOneAnotherAreShown()
{
    KyHyperTextBrowser browser;
    QString text = QString("<table><tr><td>x</td></tr></table>").repeated(400);
    browser.setHyperText(text, 0);
    QCOMPARE(browser.document()->rootFrame()->childFrames().size(), 400);
}

void HyperTextTest::loadsNothing_data()
{
    QTest::addColumn<QString>("text");
    const QString picture = QDir::homePath() + "/red.png";
    QTest::newRow("picture by path") << "<img src=\"" + picture + "\">";
    QTest::newRow("picture by address") << "<img src=\"file://" + picture + "\">";
    QTest::newRow("picture of a size") << "<img src=\"" + picture + "\" width=100 height=100>";
    QTest::newRow("picture in a tag of ours") << "<a href=\"x\"><img src=\"" + picture + "\"></a>";
    QTest::newRow("picture in the text") << "<img width=60 height=60 src=\"" + redInText() + "\">";
    QTest::newRow("background") << "<table background=\"" + picture +
                                       "\"><tr><td>&nbsp;<br>&nbsp;</td></tr></table>";
    QTest::newRow("background by style")
        << "<p style=\"background-image: url('" + picture + "')\">&nbsp;</p>";
    QTest::newRow("style sheet") << "<html><head><link rel=\"stylesheet\" type=\"text/css\" href=\"" +
                                        QDir::homePath() +
                                        "/red.css\"></head><body>&nbsp;<p>&nbsp;</p></body></html>";
    QTest::newRow("imported style sheet")
        << "<html><head><style>@import url('" + QDir::homePath() +
               "/red.css');</style></head><body><p>&nbsp;</p></body></html>";
}

void HyperTextTest::loadsNothing()
{
    QFETCH(QString, text);
    QImage red(60, 60, QImage::Format_RGB32);
    red.fill(Qt::red);
    QVERIFY(red.save(QDir::homePath() + "/red.png"));
    QFile sheet(QDir::homePath() + "/red.css");
    QVERIFY(sheet.open(QIODevice::WriteOnly));
    sheet.write("p { background-color: red }");
    sheet.close();
    const auto reddens = [&text](QTextBrowser &browser) {
        browser.resize(300, 200);
        browser.setHtml(text);
        const QImage shown = browser.grab().toImage();
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                if (shown.pixelColor(x, y) == QColor(Qt::red))
                    return true;
            }
        }
        return false;
    };
    QTextBrowser loading;
    QVERIFY(reddens(loading));
    KyHyperTextBrowser browser;
    QVERIFY(!reddens(browser));
}

QTEST_MAIN(HyperTextTest)
#include "hypertexttest.moc"
