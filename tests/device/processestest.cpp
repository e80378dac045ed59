#include "kymisc.h"
#include "logcapture.h"
#include <algorithm>
#include <csignal>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <malloc.h>
#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/** Called with each file that this process is about to open, and has opened. */
std::function<void(const QByteArray &)> beforeOpen, afterOpen;
int allocatorReports = 0;

template <typename Function> Function *nextDefinition(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

/** A process that sleeps under a command line of our choice, until this goes. */
class Sleeper
{
public:
    /** @param name stands for the program file in the command line */
    explicit Sleeper(const QByteArray &name, const QByteArray &seconds = "1000")
    {
        QByteArray first = name, second = seconds;
        char *arguments[] = {first.data(), second.data(), nullptr};
        if (posix_spawn(&m_pid, "/bin/sleep", nullptr, nullptr, arguments, environ) != 0)
            m_pid = -1;
    }
    ~Sleeper() { end(); }
    Q_DISABLE_COPY_MOVE(Sleeper)

    /** Waits until it has its command line, which the kernel sets a little after the start. */
    [[nodiscard]] bool runs() const
    {
        const auto hasCommandLine = [this] {
            QFile file(QString::fromLatin1(commandLineFile()));
            return file.open(QIODevice::ReadOnly) && !file.readAll().isEmpty();
        };
        return m_pid > 0 && QTest::qWaitFor(hasCommandLine, 10000);
    }
    [[nodiscard]] QString pid() const { return QString::number(m_pid); }
    [[nodiscard]] QByteArray commandLineFile() const
    {
        return "/proc/" + QByteArray::number(m_pid) + "/cmdline";
    }
    void kill() const { ::kill(m_pid, SIGKILL); }
    /** Ends it and takes it from the table of processes. */
    void end()
    {
        if (m_pid < 0)
            return;
        kill();
        ::waitpid(m_pid, nullptr, 0);
        m_pid = -1;
    }

private:
    pid_t m_pid = -1;
};

/** The name of a sleeper that no process of another run has. */
QByteArray ownName(const char *name)
{
    return "kytest" + QByteArray::number(getpid()) + name;
}

QRegularExpression ownNames()
{
    return QRegularExpression(QString::fromLatin1(ownName("")));
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

const QRegularExpression Everything("");
const QRegularExpression EmptyText("^$");

} // namespace

extern "C" __attribute__((visibility("default"))) int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static auto *const next = nextDefinition<int(const char *, int, ...)>("open64");
    if (beforeOpen)
        beforeOpen(path);
    const int fd = next(path, flags, mode);
    if (afterOpen)
        afterOpen(path);
    return fd;
}

extern "C" __attribute__((visibility("default"))) void malloc_stats() noexcept
{
    ++allocatorReports;
}

class ProcessesTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();

    void entries_data();
    void entries();
    void matchMayStandAnywhere_data();
    void matchMayStandAnywhere();
    void argumentsEndInBlanks();
    void longCommandLineIsCut();
    void japaneseCommandLine();
    void processWithoutCommandLineIsEmpty();
    void everyProcessIsListedOnce();
    void walkStopsAfterTheSecondMatch();
    void countOfZeroIsNoLimit();
    void unknownTypeAddsNothingAndCounts();
    void processThatEndsMeanwhileIsSkipped_data();
    void processThatEndsMeanwhileIsSkipped();
    void invalidExpressionMatchesNothing();

    void memorySizesAreOneLine();
    void allocatorReportsOnRequest();
};

void ProcessesTest::cleanup()
{
    beforeOpen = nullptr;
    afterOpen = nullptr;
}

void ProcessesTest::entries_data()
{
    QTest::addColumn<KyMisc::ListType>("type");
    QTest::addColumn<QString>("expected");
    QTest::newRow("number") << KyMisc::ListPid << "%1";
    QTest::newRow("command line") << KyMisc::ListCmdline << "%2 1000 ";
    QTest::newRow("both") << KyMisc::ListPidCmdline << "%1 %2 1000 ";
}

void ProcessesTest::entries()
{
    const Sleeper sleeper(ownName("one"));
    QVERIFY(sleeper.runs());
    QFETCH(KyMisc::ListType, type);
    QFETCH(QString, expected);
    if (expected.contains("%2"))
        expected.replace("%2", ownName("one"));
    QCOMPARE(KyMisc::procList(ownNames(), 0, type), QStringList(expected.replace("%1", sleeper.pid())));
}

void ProcessesTest::matchMayStandAnywhere_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("matches");
    const QString name = ownName("one");
    QTest::newRow("start") << "^" + name << true;
    QTest::newRow("middle") << name.mid(2, name.size() - 4) << true;
    QTest::newRow("over a blank") << name.mid(3) + " 10" << true;
    QTest::newRow("end") << name + " 1000 $" << true;
    QTest::newRow("not at the start") << "^" + name.mid(1) << false;
    QTest::newRow("other case") << name.toUpper() << false;
}

void ProcessesTest::matchMayStandAnywhere()
{
    const Sleeper sleeper(ownName("one"));
    QVERIFY(sleeper.runs());
    QFETCH(QString, pattern);
    QFETCH(bool, matches);
    QCOMPARE(KyMisc::procList(QRegularExpression(pattern), 0, KyMisc::ListPid),
             matches ? QStringList(sleeper.pid()) : QStringList());
}

void ProcessesTest::argumentsEndInBlanks()
{
    const Sleeper sleeper(ownName(" a  b "), "999");
    QVERIFY(sleeper.runs());
    QCOMPARE(KyMisc::procList(ownNames(), 0, KyMisc::ListCmdline),
             QStringList(QString::fromLatin1(ownName(" a  b ") + " 999 ")));
}

void ProcessesTest::longCommandLineIsCut()
{
    const QByteArray name = ownName("long") + QByteArray(3000, 'x');
    const Sleeper sleeper(name);
    QVERIFY(sleeper.runs());
    QCOMPARE(KyMisc::procList(ownNames(), 0, KyMisc::ListCmdline),
             QStringList(QString::fromLatin1(name.first(1023))));
}

void ProcessesTest::japaneseCommandLine()
{
    const Sleeper sleeper(ownName("予定表"));
    QVERIFY(sleeper.runs());
    QCOMPARE(
        KyMisc::procList(QRegularExpression(QString::fromUtf8(ownName("予.表"))), 0, KyMisc::ListCmdline),
        QStringList(QString::fromUtf8(ownName("予定表 1000 "))));
}

void ProcessesTest::processWithoutCommandLineIsEmpty()
{
    const Sleeper sleeper(ownName("one"));
    QVERIFY(sleeper.runs());
    QVERIFY(!KyMisc::procList(EmptyText, 0, KyMisc::ListPid).contains(sleeper.pid()));
    sleeper.kill(); // it stays in the table, like a thread of the kernel with nothing to tell
    QTRY_VERIFY_WITH_TIMEOUT(KyMisc::procList(EmptyText, 0, KyMisc::ListPid).contains(sleeper.pid()), 10000);
    QVERIFY(KyMisc::procList(EmptyText, 0, KyMisc::ListPidCmdline).contains(sleeper.pid() + " "));
}

void ProcessesTest::everyProcessIsListedOnce()
{
    const Sleeper first(ownName("one")), second(ownName("two"));
    QVERIFY(first.runs() && second.runs());
    QStringList all = KyMisc::procList(Everything, 0, KyMisc::ListPid);
    for (const QString &pid : {QString::number(getpid()), first.pid(), second.pid()})
        QCOMPARE(all.count(pid), 1);
    for (const QString &pid : all)
        QVERIFY2(pid.toInt() > 0, qPrintable(pid));
    QCOMPARE(all.removeDuplicates(), 0);
}

void ProcessesTest::walkStopsAfterTheSecondMatch()
{
    const Sleeper first(ownName("a")), second(ownName("b")), third(ownName("c"));
    QVERIFY(first.runs() && second.runs() && third.runs());
    const QStringList all = KyMisc::procList(ownNames(), 0, KyMisc::ListPid);
    QCOMPARE(sorted(all), sorted({first.pid(), second.pid(), third.pid()}));
    QCOMPARE(KyMisc::procList(ownNames(), 1, KyMisc::ListPid), all.first(1));
    QCOMPARE(KyMisc::procList(ownNames(), 2, KyMisc::ListPid), all.first(2));
    QCOMPARE(KyMisc::procList(ownNames(), 3, KyMisc::ListPid), all);
    QCOMPARE(KyMisc::procList(ownNames(), 4, KyMisc::ListPid), all);
}

void ProcessesTest::countOfZeroIsNoLimit()
{
    std::vector<std::unique_ptr<Sleeper>> sleepers;
    for (int i = 0; i < 20; ++i) {
        sleepers.push_back(std::make_unique<Sleeper>(ownName("many")));
        QVERIFY(sleepers.back()->runs());
    }
    QCOMPARE(KyMisc::procList(ownNames(), 0, KyMisc::ListPid).size(), 20);
}

void ProcessesTest::unknownTypeAddsNothingAndCounts()
{
    const Sleeper first(ownName("a")), second(ownName("b"));
    QVERIFY(first.runs() && second.runs());
    int opened = 0;
    beforeOpen = [&](const QByteArray &path) {
        opened += path == first.commandLineFile() || path == second.commandLineFile();
    };
    const auto unknown = static_cast<KyMisc::ListType>(3);
    QCOMPARE(KyMisc::procList(ownNames(), 0, unknown), QStringList());
    QCOMPARE(opened, 2);
    opened = 0;
    QCOMPARE(KyMisc::procList(ownNames(), 1, unknown), QStringList());
    QCOMPARE(opened, 1);
}

void ProcessesTest::processThatEndsMeanwhileIsSkipped_data()
{
    QTest::addColumn<bool>("isOpenBefore");
    QTest::newRow("before its file is opened") << false;
    QTest::newRow("before its file is read") << true;
}

void ProcessesTest::processThatEndsMeanwhileIsSkipped()
{
    QFETCH(bool, isOpenBefore);
    Sleeper leaving(ownName("leaving"));
    const Sleeper staying(ownName("staying"));
    QVERIFY(leaving.runs() && staying.runs());
    const QByteArray file = leaving.commandLineFile();
    bool wasOpened = false;
    (isOpenBefore ? afterOpen : beforeOpen) = [&](const QByteArray &path) {
        if (path == file) {
            wasOpened = true;
            leaving.end();
        }
    };
    const QString pid = leaving.pid();
    const QStringList all = KyMisc::procList(Everything, 0, KyMisc::ListPid);
    QVERIFY(wasOpened);
    QVERIFY(!all.contains(pid));
    QVERIFY(all.contains(staying.pid()));
}

void ProcessesTest::invalidExpressionMatchesNothing()
{
    const LogCapture log;
    QCOMPARE(KyMisc::procList(QRegularExpression("("), 0, KyMisc::ListPid), QStringList());
    QCOMPARE(log.warnings().size(), 1);
    QVERIFY(log.warnings()[0].startsWith("procList: "));
}

void ProcessesTest::memorySizesAreOneLine()
{
    allocatorReports = 0;
    const LogCapture log;
    KyMisc::dumpMemInfo(false);
    QCOMPARE(log.lines().size(), 1);
    const QRegularExpression form("^VmSize:\\s+([0-9]+) kB VmRSS:\\s+([0-9]+) kB VmData:\\s+([0-9]+) kB $");
    const QRegularExpressionMatch match = form.match(log.lines()[0]);
    QVERIFY2(match.hasMatch(), qPrintable(log.lines()[0]));
    QVERIFY(match.captured(1).toLongLong() >= match.captured(2).toLongLong());
    QVERIFY(match.captured(2).toLongLong() > 0);
    QCOMPARE(allocatorReports, 0);
}

void ProcessesTest::allocatorReportsOnRequest()
{
    allocatorReports = 0;
    const LogCapture log;
    KyMisc::dumpMemInfo(true);
    QCOMPARE(log.lines().size(), 1);
    QCOMPARE(allocatorReports, 1);
}

QTEST_GUILESS_MAIN(ProcessesTest)
#include "processestest.moc"
