#include "childprocess.h"
#include "editdialogrobot.h"
#include "kycategorycombo.h"
#include "kycategoryselect.h"
#include "platformservice.h"
#include "tablefixture.h"
#include <array>
#include <cstdarg>
#include <fcntl.h>
#include <QDateTime>
#include <QMessageBox>
#include <QSignalSpy>
#include <QToolButton>

// The dialog of categories in two applications, each of them a process.

namespace {

constexpr auto Refusal = "refused: Now, other application is|editing categories.";
constexpr int Rounds = 40;
constexpr int Lead = 30;          // ms, until both applications are ready to press
constexpr int SlowStorage = 5000; // µs, to make a marker

bool isMarked()
{
    return QFile::exists(categoryEdittingFileName());
}

/**
 * An application with a KyCategorySelect, which does what the test tells it in lines:
 * "press" the button, "press TIME" at a time, "check NAME", "ok", "cancel", "state".
 * It tells "open" for a dialog, "refused: TEXT" for a message, "pressed" when the button is done with, and
 * "chosen LIST SELECTED", "rows ROWS".
 */
class Application
{
public:
    explicit Application(const QList<int> &ids)
        : m_select(ids, QCoreApplication::applicationName()),
          m_input([this](const QByteArray &line) { obey(line); })
    {
        QObject::connect(&m_look, &QTimer::timeout, &m_look, [this] { look(); });
        QObject::connect(&m_select, &KyCategorySelect::signalSelected, &m_select,
                         [](int id) { ChildProcess::say("selected " + QByteArray::number(id)); });
        m_select.show();
        m_look.start(1);
    }

private:
    void obey(const QByteArray &line)
    {
        const QByteArray argument = line.mid(line.indexOf(' ') + 1);
        if (line.startsWith("press"))
            QTimer::singleShot(0, &m_select, [this, argument] { press(argument.toLongLong()); });
        else if (line.startsWith("check "))
            SeenDialog(m_seen).check(QString::fromUtf8(argument));
        else if (line == "ok")
            SeenDialog(m_seen).accept();
        else if (line == "cancel")
            SeenDialog(m_seen).cancel();
        else
            tellState();
    }

    /** Waits actively: processes that sleep wake up one after the other. */
    void press(qint64 time)
    {
        while (QDateTime::currentMSecsSinceEpoch() < time) {
        }
        m_select.findChild<QToolButton *>()->click();
        ChildProcess::say("pressed");
    }

    void tellState()
    {
        QByteArrayList ids, rows;
        for (const int id : m_select.currentCategories())
            ids.append(QByteArray::number(id));
        const auto *combo = m_select.findChild<KyCategoryCombo *>();
        for (int row = 0; row < combo->count(); ++row)
            rows.append(combo->itemText(row).toUtf8());
        ChildProcess::say("chosen " + ids.join(';') + ' ' + QByteArray::number(m_select.currentCategory()));
        ChildProcess::say("rows " + rows.join(','));
    }

    void look()
    {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            if (!box->isVisible())
                return;
            ChildProcess::say("refused: " + box->text().replace('\n', '|').toUtf8());
            box->accept();
        } else if (QDialog *dialog = EditDialogRobot::current(); dialog && dialog != m_seen) {
            m_seen = dialog;
            ChildProcess::say("open");
        }
    }

    KyCategorySelect m_select;
    ChildInput m_input;
    QTimer m_look;
    QPointer<QDialog> m_seen;
};

int childMain(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName("app" + QString::number(QCoreApplication::applicationPid()));
    QList<int> ids;
    for (int i = 1; i < argc; ++i)
        ids.append(QByteArray(argv[i]).toInt());
    const Application child(ids);
    ChildProcess::say("ready");
    return QApplication::exec();
}

/** A second application's process. */
class OtherApplication : public ChildProcess
{
public:
    explicit OtherApplication(const QStringList &ids = {}) : ChildProcess(ids) {}

    [[nodiscard]] bool isReady() { return readLine(30000) == "ready"; }
    /** Writes a line. @return the line that comes back */
    QByteArray ask(const QByteArray &line)
    {
        write(line);
        return readLine();
    }
    /** @return true when the dialog opened and was closed */
    bool opensAndCancels() { return ask("press") == "open" && ask("cancel") == "pressed"; }
    bool isRefused() { return ask("press") == Refusal && readLine() == "pressed"; }
};

} // namespace

/** Takes its time over a marker, so that all that press at the same moment come as far as this. */
extern "C" int open64(const char *path, int flags, ...)
{
    static const auto next = nextDefinition<int(const char *, int, ...)>("open64");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (QByteArrayView(path).endsWith(".cateditting"))
        ::usleep(SlowStorage);
    return next(path, flags, mode);
}

class CategoryMarkerTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void secondApplicationIsRefusedUntilTheFirstIsDone();
    void killedApplicationLeavesTheMarkerToTheService();
    void endedApplicationTakesTheMarkerAlong();
    void pressedAtTheSameMoment();
    void changesOfAnotherApplicationAreTaken();
    void changesOfAnotherApplicationAreShownAfterCancel();

private:
    int m_work = 0, m_home = 0, m_club = 0; // ids; in the order of the rows: club, home, work
};

void CategoryMarkerTest::init()
{
    QFile::remove(categoryEdittingFileName());
    QVERIFY(makeTable({{"work", &m_work}, {"club", &m_club}, {"home", &m_home}}));
}

void CategoryMarkerTest::secondApplicationIsRefusedUntilTheFirstIsDone()
{
    OtherApplication first, second;
    QVERIFY(first.isReady() && second.isReady());
    QCOMPARE(first.ask("press"), "open");
    QVERIFY(isMarked());
    QVERIFY(second.isRefused());
    QVERIFY(second.isRefused());
    QVERIFY(isMarked());
    QCOMPARE(first.ask("cancel"), "pressed");
    QVERIFY(!isMarked());
    QCOMPARE(second.ask("press"), "open");
    QVERIFY(first.isRefused());
    QCOMPARE(second.ask("ok"), "pressed");
    QVERIFY(!isMarked());
    QVERIFY(first.opensAndCancels());
    QCOMPARE(first.finish(), 0);
    QCOMPARE(second.finish(), 0);
}

void CategoryMarkerTest::killedApplicationLeavesTheMarkerToTheService()
{
    OtherApplication first, second, third;
    QVERIFY(first.isReady() && second.isReady() && third.isReady());
    QCOMPARE(first.ask("press"), "open");
    first.kill();
    QVERIFY(isMarked());
    QVERIFY(second.isRefused());
    QVERIFY(third.isRefused());
    QVERIFY(isMarked());
    PlatformService service;
    QVERIFY(service.isReady());
    QVERIFY(!isMarked());
    QVERIFY(second.opensAndCancels());
    QVERIFY(third.opensAndCancels());
}

void CategoryMarkerTest::endedApplicationTakesTheMarkerAlong()
{
    OtherApplication first, second;
    QVERIFY(first.isReady() && second.isReady());
    QCOMPARE(first.ask("press"), "open");
    QCOMPARE(first.finish(), 0); // with the dialog open
    QVERIFY(!isMarked());
    QVERIFY(second.opensAndCancels());
}

void CategoryMarkerTest::pressedAtTheSameMoment()
{
    std::array<OtherApplication, 2> applications;
    QVERIFY(applications[0].isReady() && applications[1].isReady());
    for (int round = 0; round < Rounds; ++round) {
        const QByteArray time = QByteArray::number(QDateTime::currentMSecsSinceEpoch() + Lead);
        for (OtherApplication &application : applications)
            application.write("press " + time);
        const QByteArray first = applications[0].readLine(), second = applications[1].readLine();
        QVERIFY(isMarked());
        const bool isFirst = first == "open";
        QCOMPARE(isFirst ? second : first, Refusal);
        QCOMPARE(isFirst ? first : second, "open");
        QCOMPARE(applications[isFirst ? 1 : 0].readLine(), "pressed");
        QCOMPARE(applications[isFirst ? 0 : 1].ask("cancel"), "pressed");
        QVERIFY(!isMarked());
    }
}

/** This process is the other application. */
void CategoryMarkerTest::changesOfAnotherApplicationAreTaken()
{
    OtherApplication first({QString::number(m_work), QString::number(m_home)});
    QVERIFY(first.isReady());
    QCOMPARE(first.ask("press"), "open");
    KyCategories categories;
    QVERIFY(categories.removeCategory("work"));
    QVERIFY(categories.renameCategory("club", "party"));
    const int zoo = categories.addCategory("zoo");
    QVERIFY(zoo);
    QCOMPARE(first.ask("ok"), "selected " + QByteArray::number(m_home));
    QCOMPARE(first.readLine(), "pressed");
    const QByteArray home = QByteArray::number(m_home);
    QCOMPARE(first.ask("state"), "chosen " + home + ' ' + home);
    QCOMPARE(first.readLine(), "rows home,party,zoo,Unfiled");
    QCOMPARE(first.finish(), 0);
}

void CategoryMarkerTest::changesOfAnotherApplicationAreShownAfterCancel()
{
    OtherApplication first({QString::number(m_work), QString::number(m_home), QString::number(m_club)});
    QVERIFY(first.isReady());
    QCOMPARE(first.ask("press"), "open");
    KyCategories categories;
    QVERIFY(categories.removeCategory("club"));
    QVERIFY(categories.renameCategory("home", "away"));
    QCOMPARE(first.ask("cancel"), "pressed");
    const QByteArray work = QByteArray::number(m_work), home = QByteArray::number(m_home);
    QCOMPARE(first.ask("state"), "chosen " + work + ';' + home + ' ' + work);
    QCOMPARE(first.readLine(), "rows away (Multi.),work (Multi.),Unfiled");
    QCOMPARE(first.finish(), 0);
}

KY_TEST_MAIN_WITH_CHILD(CategoryMarkerTest, childMain)
#include "categorymarkertest.moc"
