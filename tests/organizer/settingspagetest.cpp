#include "settingspage.h"
#include "mainwindow.h"
#include "powerstate.h"
#include "preferences.h"
#include "statusline.h"

#include "devicefile.h"
#include "fepservice.h"
#include "kycolortable.h"
#include "kymisc.h"
#include "kypowerstatusmanager.h"
#include "messagerobot.h"
#include "pagefixture.h"
#include "qcopchannel.h"
#include "timestring.h"

#include <QCheckBox>
#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QToolButton>

namespace {

/* What /proc/apm says of mains, state, charge and time. */
QByteArray apmLine(int mains, int state, const char *rest)
{
    return QString::asprintf("1.16 1.2 0x02 0x%02x 0x%02x 0xff %s\n", mains, state, rest).toLatin1();
}

/* The page's line for a value. */
QString valueOf(const SettingsPage &page, const QString &name)
{
    const QString start = name + QLatin1String(": ");
    for (const QString &line : page.summary()) {
        if (line.startsWith(start))
            return line.mid(start.size());
    }
    return {};
}

void choose(QComboBox &box, const QString &text)
{
    const int index = box.findText(text);
    QVERIFY2(index >= 0, qPrintable(text));
    box.setCurrentIndex(index);
    emit box.activated(index);
    emit box.textActivated(text);
}

void chooseFont(const SettingsPage &page, const QString &text)
{
    for (QAction *action : page.findChild<QToolButton *>("fontSize")->menu()->actions()) {
        if (action->text() == text)
            action->trigger();
    }
}

QMenu *openColours(const SettingsPage &page)
{
    QMenu *menu = page.findChild<QToolButton *>("colour")->menu();
    menu->popup(page.mapToGlobal(QPoint(0, 0)));
    return QTest::qWaitForWindowExposed(menu) ? menu : nullptr;
}

/* Waits for the menu of the next use. */
void expectAnotherMenu(const SettingsPage &page, const QMenu *menu)
{
    QTRY_VERIFY_WITH_TIMEOUT(page.findChild<QToolButton *>("colour")->menu() != menu, Patience);
}

void chooseColour(const SettingsPage &page, const QColor &colour)
{
    QMenu *menu = openColours(page);
    QVERIFY(menu);
    auto *table = menu->findChild<KyColorTable *>();
    table->setCurrentColor(colour.rgb());
    QTest::keyClick(table, Qt::Key_Return);
    QVERIFY(!menu->isVisible());
    expectAnotherMenu(page, menu);
}

void chooseDesktopColour(const SettingsPage &page)
{
    QMenu *menu = openColours(page);
    QVERIFY(menu);
    QTest::mouseClick(menu->findChild<QPushButton *>(), Qt::LeftButton);
    QVERIFY(!menu->isVisible());
    expectAnotherMenu(page, menu);
}

QString settingsFolder()
{
    return QDir::homePath() + QLatin1String("/Settings");
}

} // namespace

class SettingsPageTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void powerState_data();
    void powerState();
    void valuesFollowTheDevice();
    void missingFilesReadAsUnknown();
    void statusLineFollowsThePower();
    void statusLineShowsTheTime();
    void volumesShowFreeSpace();
    void fontSizeHoldsAtOnceAndIsKept();
    void fontSizeOutOfRangeIsTheNearest();
    void colourHoldsAtOnceAndIsKept();
    void coloursAndTheDesktopsTakeTurns();
    void desktopColourComesBack();
    void logGoesToTheNextFileAndBack();
    void languageIsKept();
    void sameLanguageIsNotKept();
    void failureToSaveIsTold();
    void inputMethodOfNobodyIsDisabled();
    void inputMethodIsAskedAndShown();
    void keyReachesThePage();
    void fitsASmallScreen();
};

void SettingsPageTest::initTestCase()
{
    QVERIFY(writeDeviceFile("/proc/apm", apmLine(1, 4, "-1% -1 ?")));
}

void SettingsPageTest::init()
{
    QDir(settingsFolder()).removeRecursively();
    QFile::remove(settingsFolder());
    Preferences().apply();
}

void SettingsPageTest::powerState_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<QString>("brief");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("timeLeft");
    const auto row = [](const char *name, const QByteArray &line, const char *icon, const char *brief,
                        const char *text, const char *timeLeft) {
        QTest::newRow(name) << line << QString(icon) << QString(brief) << QString(text) << QString(timeLeft);
    };
    row("no battery", apmLine(1, 4, "-1% -1 ?"), "mains", "Mains", "On mains, no battery", "");
    row("nothing", apmLine(0, 4, "-1% -1 ?"), "battery-unknown", "?", "Unknown", "");
    row("high", apmLine(0, 0, "85% 65 m"), "battery-high", "85 %", "Battery high, 85 %", "1:05 h");
    row("high, plugged", apmLine(1, 0, "100% -1 ?"), "battery-high", "100 %", "Battery high, 100 %, on mains",
        "");
    row("low", apmLine(0, 1, "20% 600 s"), "battery-low", "20 %", "Battery low, 20 %", "0:10 h");
    row("very low", apmLine(0, 127, "9% 59 s"), "battery-critical", "9 %", "Battery very low, 9 %", "0:00 h");
    row("critical", apmLine(0, 2, "3% -1 ?"), "battery-critical", "3 %", "Battery critical, 3 %", "");
    row("charging", apmLine(1, 3, "40% -1 ?"), "battery-charging", "Charging", "Charging", "");
}

void SettingsPageTest::powerState()
{
    QFETCH(QByteArray, line);
    QVERIFY(writeDeviceFile("/proc/apm", line));
    const KyPowerStatus &status = KyPowerStatusManager::readStatus();
    QTEST(PowerState::icon(status), "icon");
    QTEST(PowerState::brief(status), "brief");
    QTEST(PowerState::text(status), "text");
    QTEST(PowerState::timeLeft(status), "timeLeft");
}

void SettingsPageTest::valuesFollowTheDevice()
{
    QVERIFY(writeDeviceFile("/proc/deviceinfo/product", "KY-3500\n"));
    QVERIFY(writeDeviceFile("/proc/meminfo", "title\nMem: 0 0 8388608 0 0 0\n"));
    SettingsPage page;
    QVERIFY(showActive(page));
    QCOMPARE(valueOf(page, "Model"), QString("KY-3500"));
    QCOMPARE(valueOf(page, "Model number"), QString("2"));
    QCOMPARE(valueOf(page, "Free memory"), QLocale().formattedDataSize(6 * 1024 * 1024));
    QVERIFY(writeDeviceFile("/proc/deviceinfo/product", "KY-C100\n"));
    QVERIFY(writeDeviceFile("/proc/apm", apmLine(0, 2, "3% -1 ?")));
    QTRY_COMPARE_WITH_TIMEOUT(valueOf(page, "Model"), QString("KY-C100"), Patience);
    QCOMPARE(valueOf(page, "State"), QString("Battery critical, 3 %"));
}

void SettingsPageTest::missingFilesReadAsUnknown()
{
    QDir(qEnvironmentVariable("KY_DEVICE_ROOT") + "/proc/deviceinfo").removeRecursively();
    const SettingsPage page;
    for (const char *name : {"Model", "Maker", "Model number", "Locale", "Format"})
        QCOMPARE(valueOf(page, name), QString("unknown"));
}

void SettingsPageTest::statusLineFollowsThePower()
{
    QVERIFY(writeDeviceFile("/proc/apm", apmLine(0, 0, "85% -1 ?")));
    StatusLine line;
    QVERIFY(showActive(line));
    const auto *icon = line.findChild<QLabel *>("powerIcon");
    const QImage high = icon->pixmap().toImage();
    QVERIFY(!high.isNull());
    QVERIFY2(line.summary().startsWith("85 %, "), qPrintable(line.summary()));
    QVERIFY(writeDeviceFile("/proc/apm", apmLine(0, 1, "20% -1 ?")));
    QTRY_VERIFY_WITH_TIMEOUT(line.summary().startsWith("20 %, "), Patience);
    QVERIFY(icon->pixmap().toImage() != high);
}

void SettingsPageTest::statusLineShowsTheTime()
{
    StatusLine line;
    const auto now = [] { return TimeString::timeString(QTime::currentTime(), true); };
    const auto shows = [&] { return line.findChild<QLabel *>("time")->text().endsWith(now()); };
    line.show(); // reads the clock, which may have gone on meanwhile
    QTRY_VERIFY_WITH_TIMEOUT(shows(), Patience);
    const QString date = QDate::currentDate().toString("yyyy/MM/dd");
    QVERIFY(line.findChild<QLabel *>("time")->text().contains(date));
}

void SettingsPageTest::volumesShowFreeSpace()
{
    QVERIFY(writeDeviceFile("/proc/fs/jffs2/1f:03/reliable_free_size", "5242880\n"));
    SettingsPage page;
    const QString first = QLocale().formattedDataSize(5 * 1024 * 1024) + " free of ";
    const auto shows = [&](const QString &text) { return page.summary().join('\n').contains(text); };
    QVERIFY2(shows(first), qPrintable(page.summary().join('\n')));
    QVERIFY(showActive(page));
    QVERIFY(writeDeviceFile("/proc/fs/jffs2/1f:03/reliable_free_size", "3145728\n"));
    const QString second = QLocale().formattedDataSize(3 * 1024 * 1024) + " free of ";
    QTRY_VERIFY_WITH_TIMEOUT(shows(second), Patience);
}

void SettingsPageTest::fontSizeHoldsAtOnceAndIsKept()
{
    SettingsPage page;
    QCOMPARE(QApplication::font().pixelSize(), 12);
    chooseFont(page, "Large");
    QCOMPARE(QApplication::font().pixelSize(), 18);
    QCOMPARE(Preferences::load().fontSize, 1);
    QCOMPARE(page.findChild<QToolButton *>("fontSize")->text(), QString("18 points"));
    chooseFont(page, "Small");
    QCOMPARE(QApplication::font().pixelSize(), 10);
    QCOMPARE(Preferences::load().fontSize, -1);
}

void SettingsPageTest::fontSizeOutOfRangeIsTheNearest()
{
    Preferences preferences;
    preferences.fontSize = 7;
    preferences.apply();
    QCOMPARE(QApplication::font().pixelSize(), 18);
}

void SettingsPageTest::colourHoldsAtOnceAndIsKept()
{
    MainWindow window;
    window.showPage(window.settings());
    QVERIFY(showActive(window));
    chooseColour(*window.settings(), Qt::yellow);
    QCOMPARE(QApplication::palette().color(QPalette::Highlight), QColor(Qt::yellow));
    QCOMPARE(QApplication::palette().color(QPalette::HighlightedText), QColor(Qt::black));
    QCOMPARE(Preferences::load().highlight, QColor(Qt::yellow));
    QCOMPARE(window.settings()->findChild<QToolButton *>("colour")->text(), QString("#ffff00"));
}

void SettingsPageTest::coloursAndTheDesktopsTakeTurns()
{
    const QColor desktop = QApplication::palette().color(QPalette::Highlight);
    MainWindow window;
    window.showPage(window.settings());
    QVERIFY(showActive(window));
    for (int turn = 0; turn < 2; ++turn) {
        chooseColour(*window.settings(), Qt::yellow);
        QCOMPARE(QApplication::palette().color(QPalette::Highlight), QColor(Qt::yellow));
        for (int again = 0; again < 3; ++again) {
            chooseDesktopColour(*window.settings());
            QCOMPARE(QApplication::palette().color(QPalette::Highlight), desktop);
        }
    }
    QVERIFY(!Preferences::load().highlight.isValid());
}

void SettingsPageTest::desktopColourComesBack()
{
    const QColor desktop = QApplication::palette().color(QPalette::Highlight);
    Preferences preferences;
    preferences.highlight = QColor(0, 0, 0x66);
    preferences.apply();
    QVERIFY(QApplication::palette().color(QPalette::Highlight) != desktop);
    QCOMPARE(QApplication::palette().color(QPalette::HighlightedText), QColor(Qt::white));
    Preferences().apply();
    QCOMPARE(QApplication::palette().color(QPalette::Highlight), desktop);
}

void SettingsPageTest::logGoesToTheNextFileAndBack()
{
    SettingsPage page;
    auto *targets = page.findChild<QComboBox *>("log");
    choose(*targets, "To files, ten in turn");
    const QString file = Preferences::logFile();
    QVERIFY2(file.startsWith("/tmp/kyorganizer-"), qPrintable(file));
    QCOMPARE(Preferences::load().log, Preferences::LogToFile);
    const auto labels = page.findChildren<QLabel *>();
    QVERIFY(std::any_of(labels.begin(), labels.end(),
                        [&](const QLabel *label) { return label->text() == file; }));
    choose(*targets, "Nothing");
    QVERIFY(Preferences::logFile().isEmpty());
    QCOMPARE(QFile::symLinkTarget("/proc/self/fd/2"), QString("/dev/null"));
    choose(*targets, "To where it was started");
    QVERIFY(QFile::symLinkTarget("/proc/self/fd/2") != QString("/dev/null"));
    QFile::remove(file);
}

void SettingsPageTest::languageIsKept()
{
    SettingsPage page;
    MessageRobot robot({QMessageBox::Ok});
    choose(*page.findChild<QComboBox *>("language"), QString::fromUtf8("日本語"));
    QCOMPARE(KyMisc::getLanguage(), QString("ja"));
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(SettingsPage().findChild<QComboBox *>("language")->currentData().toString(), QString("ja"));
}

void SettingsPageTest::sameLanguageIsNotKept()
{
    SettingsPage page;
    choose(*page.findChild<QComboBox *>("language"), "English");
    QVERIFY(!QFile::exists(settingsFolder() + "/locale.conf"));
}

void SettingsPageTest::failureToSaveIsTold()
{
    SettingsPage page;
    QFile inTheWay(settingsFolder());
    QDir(settingsFolder()).removeRecursively();
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    MessageRobot robot({QMessageBox::Ok, QMessageBox::Ok});
    chooseFont(page, "Large");
    QCOMPARE(QApplication::font().pixelSize(), 18);
    choose(*page.findChild<QComboBox *>("language"), QString::fromUtf8("日本語"));
    QCOMPARE(robot.boxes().size(), 2);
    QVERIFY(robot.boxes()[0].text.contains("could not be saved"));
    QVERIFY(robot.boxes()[1].text.contains("could not be saved"));
}

void SettingsPageTest::inputMethodOfNobodyIsDisabled()
{
    const SettingsPage page;
    QVERIFY(!page.findChild<QComboBox *>("inputMethod")->isEnabled());
    QVERIFY(!page.findChild<QCheckBox *>("fepOn")->isEnabled());
    QCOMPARE(valueOf(page, "Front-end processor"), QString("none runs"));
}

void SettingsPageTest::inputMethodIsAskedAndShown()
{
    const FepService service(false, true);
    QVERIFY(service.isReady());
    const QCopChannel taskBar("QPE/TaskBar");
    QSignalSpy asked(&taskBar, &QCopChannel::received);
    SettingsPage page;
    page.show();
    auto *on = page.findChild<QCheckBox *>("fepOn");
    QVERIFY(on->isEnabled() && !on->isChecked());
    on->click();
    QTRY_COMPARE_WITH_TIMEOUT(asked.size(), 2, Patience);
    QCOMPARE(asked[0][0].toByteArray(), QByteArray("inputFepOnReq"));
    QCOMPARE(asked[1][0].toByteArray(), QByteArray("inputFepModeChangedReq()"));
    QVERIFY(FepService::keep(true, true));
    QTRY_COMPARE_WITH_TIMEOUT(valueOf(page, "Front-end processor"), QString("on"), Patience);
    QVERIFY(on->isChecked());
    choose(*page.findChild<QComboBox *>("inputMethod"), "Keyboard");
    QTRY_COMPARE_WITH_TIMEOUT(asked.size(), 3, Patience);
    QCOMPARE(asked[2][0].toByteArray(), QByteArray("changeInputMethod()"));
}

void SettingsPageTest::keyReachesThePage()
{
    MainWindow window;
    QVERIFY(showActive(window));
    QTest::keyClick(&window, Qt::Key_5, Qt::ControlModifier);
    QVERIFY(window.settings()->isVisible());
    QTest::keyClick(&window, Qt::Key_1, Qt::ControlModifier);
    QVERIFY(!window.settings()->isVisible());
}

void SettingsPageTest::fitsASmallScreen()
{
    SettingsPage page;
    page.resize(240, 280);
    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    QVERIFY(page.verticalScrollBar()->maximum() > 0);
    QCOMPARE(page.horizontalScrollBar()->maximum(), 0);
}

QTEST_MAIN(SettingsPageTest)
#include "settingspagetest.moc"
