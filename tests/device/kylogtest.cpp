#include "kylog.h"
#include "childprocess.h"
#include <cerrno>
#include <fcntl.h>
#include <QDir>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace {

/** Sends a descriptor of this process to a file while it lives. */
class DescriptorCapture
{
public:
    explicit DescriptorCapture(int descriptor) : m_descriptor(descriptor)
    {
        std::fflush(stdout);
        m_saved = dup(descriptor);
        if (!m_file.open() || m_saved < 0 || dup2(m_file.handle(), descriptor) < 0)
            qFatal("a descriptor can't be sent to a file");
    }
    ~DescriptorCapture()
    {
        std::fflush(stdout);
        dup2(m_saved, m_descriptor);
        ::close(m_saved);
    }
    Q_DISABLE_COPY_MOVE(DescriptorCapture)

    [[nodiscard]] QByteArray contents() const
    {
        QFile file(m_file.fileName());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }

private:
    int m_descriptor;
    int m_saved = -1;
    QTemporaryFile m_file;
};

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

bool write(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

void printError(const char *line)
{
    std::fputs(line, stderr);
}

int openDescriptors()
{
    return int(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size());
}

/** What standard error is, as the kernel names it. */
QString errorTarget()
{
    char target[4096] = {};
    const ssize_t length = readlink("/proc/self/fd/2", target, sizeof target - 1);
    return length < 0 ? QStringLiteral("closed") : QString::fromLocal8Bit(target);
}

QStringList handledLines;

void handleLine(QtMsgType, const QMessageLogContext &, const QString &line)
{
    handledLines.append(line);
}

using Modes = QList<KyLog::LogMode>;

bool isAnotherUser = false;

} // namespace

/** The files of this process belong to somebody else when it runs as another user. */
extern "C" __attribute__((visibility("default"))) uid_t geteuid() noexcept
{
    const auto user = static_cast<uid_t>(syscall(SYS_geteuid));
    return isAnotherUser ? user + 1 : user;
}

Q_DECLARE_METATYPE(KyLog::LogMode)

class KyLogTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void startLevelPrintsNothing();
    void putfByLevel_data();
    void putfByLevel();
    void putfFormats();
    void levelAfterwards_data();
    void levelAfterwards();
    void levelMeanwhile_data();
    void levelMeanwhile();
    void otherNegativeNumberIsASet();
    void ringOverElevenRuns();
    void firstRunRemovesFileOne();
    void allTenPresentWritesNineAndRemovesZero();
    void nextRunFillsTheGap();
    void oldContentsAreReplaced();
    void modeOfTheFile();
    void relativeNameLandsInTmp();
    void nameWithSlashIsUsedAsItStands();
    void percentInANameIsNothingSpecial();
    void emptyNameIsUnknown();
    void nullNameIsThatOfTheProgram();
    void errorGoesBack();
    void fileThatCannotBeMade();
    void linkIsNotFollowed();
    void linkThatLeadsNowhereIsTaken();
    void pipeIsNotWaitedFor();
    void readPipeIsNotWrittenTo();
    void fileWithAnotherNameIsNotWrittenTo();
    void fileOfAnotherUserIsNotWrittenTo();
    void closedErrorMakesNoFile();
    void silence();
    void silenceWithClosedError();
    void silenceWithClosedInput();
    void otherModesLeaveErrorAlone();
    void outputFollowsError();
    void outputGoesToPresentErrorWithoutFile();
    void closedOutputStaysClosed();
    void handlerIsResetAndRestored();
    void handlerStaysInOtherModes();
    void nestedObjects();
    void nothingIsInherited();

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    /** Name of log files in the folder of the test. */
    [[nodiscard]] QByteArray name() const { return QFile::encodeName(m_folder->filePath("log")); }
    [[nodiscard]] QString file(int number) const
    {
        return m_folder->filePath(QStringLiteral("log-%1.txt").arg(number));
    }
    /** The numbers of the log files. */
    [[nodiscard]] QByteArray numbers() const
    {
        QByteArray present;
        for (int number = 0; number < 12; ++number) {
            if (QFileInfo(file(number)).isSymLink() || QFile::exists(file(number)))
                present += QByteArray::number(number);
        }
        return present;
    }
    /** What comes to standard error although the ring was asked for. */
    [[nodiscard]] QByteArray errorBesideTheRing() const
    {
        const DescriptorCapture error(STDERR_FILENO);
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1); // must come back
        printError("as ever");
        return error.contents();
    }
    [[nodiscard]] bool makeAllTen() const
    {
        bool isDone = true;
        for (int number = 0; number < 10; ++number)
            isDone = write(file(number), "old " + QByteArray::number(number)) && isDone;
        return isDone;
    }
};

void KyLogTest::initTestCase()
{
    QCOMPARE(KyLog::Level, -1);
}

void KyLogTest::init()
{
    KyLog::Level = -1;
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    handledLines.clear();
}

void KyLogTest::startLevelPrintsNothing()
{
    const DescriptorCapture error(STDERR_FILENO);
    KyLog::putf(0, "not seen");
    QCOMPARE(error.contents(), QByteArray());
}

void KyLogTest::putfByLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("highest");
    QTest::addColumn<bool>("printed");

    QTest::newRow("0 at -1") << 0 << -1 << false;
    QTest::newRow("-1 at -1") << -1 << -1 << true;
    QTest::newRow("0 at 0") << 0 << 0 << true;
    QTest::newRow("1 at 0") << 1 << 0 << false;
    QTest::newRow("3 at 3") << 3 << 3 << true;
    QTest::newRow("4 at 3") << 4 << 3 << false;
    QTest::newRow("2 at 3") << 2 << 3 << true;
}

void KyLogTest::putfByLevel()
{
    QFETCH(int, level);
    QFETCH(int, highest);
    QFETCH(bool, printed);
    KyLog::Level = highest;
    const DescriptorCapture error(STDERR_FILENO);
    KyLog::putf(level, "line");
    QCOMPARE(error.contents(), QByteArray(printed ? "line\n" : ""));
}

void KyLogTest::putfFormats()
{
    KyLog::Level = 1;
    const DescriptorCapture error(STDERR_FILENO);
    KyLog::putf(1, "%s has %d%% of %5.2f", "it", 7, 1.5);
    QCOMPARE(error.contents(), QByteArray("it has 7% of  1.50\n"));
}

void KyLogTest::levelAfterwards_data()
{
    QTest::addColumn<KyLog::LogMode>("mode");
    for (const auto mode : Modes{KyLog::Silence, KyLog::NoteOnly, KyLog::SetLevel, KyLog::ErrorToFile,
                                 KyLog::DefaultHandler, KyLog::OutputToError})
        QTest::addRow("mode %d", int(mode)) << mode;
}

void KyLogTest::levelAfterwards()
{
    QFETCH(KyLog::LogMode, mode);
    const QMap<int, int> after = {{-1, 1}, {0, 0}, {1, 1}, {5, 1}};
    for (auto level = after.begin(); level != after.end(); ++level) {
        KyLog::Level = level.key();
        {
            const KyLog log(mode, name().constData(), 3);
        }
        QCOMPARE(KyLog::Level, level.value());
    }
}

void KyLogTest::levelMeanwhile_data()
{
    QTest::addColumn<KyLog::LogMode>("mode");
    QTest::addColumn<int>("argument");
    QTest::addColumn<int>("meanwhile"); // 2 before

    QTest::newRow("silence") << KyLog::Silence << 3 << -1;
    QTest::newRow("note only") << KyLog::NoteOnly << 3 << 2;
    QTest::newRow("set") << KyLog::SetLevel << 3 << 3;
    QTest::newRow("set to 0") << KyLog::SetLevel << 0 << 0;
    QTest::newRow("set to the present one") << KyLog::SetLevel << -1 << 2;
    QTest::newRow("file") << KyLog::ErrorToFile << 3 << 2;
    QTest::newRow("handler") << KyLog::DefaultHandler << 3 << 2;
    QTest::newRow("output") << KyLog::OutputToError << 3 << 2;
    QTest::newRow("all bits") << (KyLog::ErrorToFile | KyLog::DefaultHandler | KyLog::OutputToError) << 3
                              << 2;
}

void KyLogTest::levelMeanwhile()
{
    QFETCH(KyLog::LogMode, mode);
    QFETCH(int, argument);
    KyLog::Level = 2;
    int level = 0;
    {
        const KyLog log(mode, name().constData(), argument);
        level = KyLog::Level;
    }
    QTEST(level, "meanwhile");
}

void KyLogTest::otherNegativeNumberIsASet()
{
    const QtMessageHandler before = qInstallMessageHandler(&handleLine);
    KyLog::Level = 2;
    int level = 0;
    {
        const KyLog log(KyLog::LogMode(-3), name().constData(), 3); // all but the message handler
        printError("error,");
        std::printf("output");
        qWarning("handled");
        level = KyLog::Level;
    }
    qInstallMessageHandler(before);
    QCOMPARE(contentsOf(file(0)), QByteArray("error,output"));
    QCOMPARE(handledLines, QStringList("handled"));
    QCOMPARE(level, 2);
}

void KyLogTest::ringOverElevenRuns()
{
    const QByteArrayList expected = {"0",       "01",       "012",       "0123",      "01234",    "012345",
                                     "0123456", "01234567", "012345678", "123456789", "023456789"};
    for (qsizetype run = 0; run < expected.size(); ++run) {
        ChildProcess child({"write", QFile::decodeName(name()), QStringLiteral("run %1").arg(run)});
        QCOMPARE(child.finish(), 0);
        QCOMPARE(numbers(), expected[run]);
        QCOMPARE(contentsOf(file(int(run % 10))), "run " + QByteArray::number(run));
    }
}

void KyLogTest::firstRunRemovesFileOne()
{
    QVERIFY(write(file(1), "old"));
    QVERIFY(write(file(2), "old"));
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
    }
    QCOMPARE(numbers(), QByteArray("02"));
}

void KyLogTest::allTenPresentWritesNineAndRemovesZero()
{
    QVERIFY(makeAllTen());
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
        printError("new");
    }
    QCOMPARE(numbers(), QByteArray("123456789"));
    QCOMPARE(contentsOf(file(9)), QByteArray("new"));
    QCOMPARE(contentsOf(file(8)), QByteArray("old 8"));
}

void KyLogTest::nextRunFillsTheGap()
{
    QVERIFY(makeAllTen());
    QVERIFY(QFile::remove(file(4)));
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
        printError("new");
    }
    QCOMPARE(numbers(), QByteArray("012346789"));
    QCOMPARE(contentsOf(file(4)), QByteArray("new"));
}

void KyLogTest::oldContentsAreReplaced()
{
    QVERIFY(makeAllTen());
    QVERIFY(write(file(9), "long contents of an earlier run"));
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
    }
    QCOMPARE(contentsOf(file(9)), QByteArray());
}

void KyLogTest::modeOfTheFile()
{
    const mode_t mask = umask(0);
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
    }
    umask(mask);
    struct stat status = {};
    QCOMPARE(stat(QFile::encodeName(file(0)).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0644));
}

void KyLogTest::relativeNameLandsInTmp()
{
    const QString unique = QStringLiteral("kylogtest-%1").arg(getpid());
    QString target;
    {
        const KyLog log(KyLog::ErrorToFile, qPrintable(unique), -1);
        target = errorTarget();
    }
    QCOMPARE(target, "/tmp/" + unique + "-0.txt");
    QVERIFY(QFile::remove(target));
}

void KyLogTest::nameWithSlashIsUsedAsItStands()
{
    QString target;
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
        target = errorTarget();
    }
    QCOMPARE(target, file(0));
}

void KyLogTest::percentInANameIsNothingSpecial()
{
    QString target;
    {
        const KyLog log(KyLog::ErrorToFile, (name() + "%1%s%n").constData(), -1);
        target = errorTarget();
    }
    QCOMPARE(target, QFile::decodeName(name()) + "%1%s%n-0.txt");
}

void KyLogTest::emptyNameIsUnknown()
{
    QString target;
    {
        const KyLog log(KyLog::ErrorToFile, "", -1);
        target = errorTarget();
    }
    QVERIFY2(QRegularExpression("^/tmp/unknown-[0-9]\\.txt").match(target).hasMatch(), qPrintable(target));
    QFile::remove(target);
}

void KyLogTest::nullNameIsThatOfTheProgram()
{
    QByteArray program = name();
    char *const before = program_invocation_name;
    program_invocation_name = program.data();
    QString target;
    {
        const KyLog log(KyLog::ErrorToFile, nullptr, -1);
        target = errorTarget();
    }
    program_invocation_name = before;
    QCOMPARE(target, file(0));
}

void KyLogTest::errorGoesBack()
{
    const DescriptorCapture error(STDERR_FILENO);
    const int descriptors = openDescriptors();
    printError("before,");
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
        printError("meanwhile");
    }
    printError("after");
    QCOMPARE(error.contents(), QByteArray("before,after"));
    QCOMPARE(contentsOf(file(0)), QByteArray("meanwhile"));
    QCOMPARE(openDescriptors(), descriptors);
}

void KyLogTest::fileThatCannotBeMade()
{
    const DescriptorCapture error(STDERR_FILENO);
    const int descriptors = openDescriptors();
    {
        const KyLog log(KyLog::ErrorToFile, (name() + "/absent/log").constData(), -1);
        QCOMPARE(openDescriptors(), descriptors);
        printError("as ever");
    }
    QCOMPARE(error.contents(), QByteArray("as ever"));
    QCOMPARE(openDescriptors(), descriptors);
}

void KyLogTest::linkIsNotFollowed()
{
    QVERIFY(makeAllTen());
    const QString victim = m_folder->filePath(QStringLiteral("victim"));
    QVERIFY(write(victim, "precious"));
    QVERIFY(QFile::remove(file(9)) && QFile::link(victim, file(9)));
    QCOMPARE(errorBesideTheRing(), QByteArray("as ever"));
    QCOMPARE(contentsOf(victim), QByteArray("precious"));
    QCOMPARE(numbers(), QByteArray("0123456789")); // nothing is removed either
}

void KyLogTest::linkThatLeadsNowhereIsTaken()
{
    const QString target = m_folder->filePath(QStringLiteral("planted"));
    QVERIFY(QFile::link(target, file(0)));
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
        printError("new");
    }
    QVERIFY(!QFile::exists(target));
    QCOMPARE(contentsOf(file(1)), QByteArray("new"));
}

void KyLogTest::pipeIsNotWaitedFor()
{
    QVERIFY(makeAllTen());
    QVERIFY(QFile::remove(file(9)));
    QCOMPARE(mkfifo(QFile::encodeName(file(9)).constData(), 0644), 0);
    QCOMPARE(errorBesideTheRing(), QByteArray("as ever"));
}

/** Whoever reads it is somebody else. */
void KyLogTest::readPipeIsNotWrittenTo()
{
    QVERIFY(makeAllTen());
    QVERIFY(QFile::remove(file(9)));
    QCOMPARE(mkfifo(QFile::encodeName(file(9)).constData(), 0644), 0);
    const int reader = open(QFile::encodeName(file(9)).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    QVERIFY(reader >= 0);
    const QByteArray seen = errorBesideTheRing();
    ::close(reader);
    QCOMPARE(seen, QByteArray("as ever"));
}

void KyLogTest::fileWithAnotherNameIsNotWrittenTo()
{
    QVERIFY(makeAllTen());
    const QString victim = m_folder->filePath(QStringLiteral("victim"));
    QVERIFY(write(victim, "precious"));
    QVERIFY(QFile::remove(file(9)));
    QCOMPARE(::link(QFile::encodeName(victim).constData(), QFile::encodeName(file(9)).constData()), 0);
    QCOMPARE(errorBesideTheRing(), QByteArray("as ever"));
    QCOMPARE(contentsOf(victim), QByteArray("precious"));
    QCOMPARE(numbers(), QByteArray("0123456789"));
}

void KyLogTest::fileOfAnotherUserIsNotWrittenTo()
{
    QVERIFY(makeAllTen());
    const int descriptors = openDescriptors();
    isAnotherUser = true;
    const QByteArray seen = errorBesideTheRing();
    isAnotherUser = false;
    QCOMPARE(seen, QByteArray("as ever"));
    QCOMPARE(openDescriptors(), descriptors);
    QCOMPARE(contentsOf(file(9)), QByteArray("old 9"));
}

void KyLogTest::closedErrorMakesNoFile()
{
    const DescriptorCapture error(STDERR_FILENO);
    ::close(STDERR_FILENO);
    QString meanwhile, after;
    {
        const KyLog log(KyLog::ErrorToFile, name().constData(), -1);
        meanwhile = errorTarget();
    }
    after = errorTarget();
    QCOMPARE(meanwhile, QStringLiteral("closed"));
    QCOMPARE(after, QStringLiteral("closed"));
    QCOMPARE(numbers(), QByteArray());
}

void KyLogTest::silence()
{
    const DescriptorCapture error(STDERR_FILENO);
    const int descriptors = openDescriptors();
    QString target;
    {
        const KyLog log(KyLog::Silence, name().constData(), 3);
        target = errorTarget();
        printError("not seen");
        KyLog::putf(-1, "nor this");
    }
    printError("seen");
    QCOMPARE(target, QStringLiteral("/dev/null"));
    QCOMPARE(error.contents(), QByteArray("seen"));
    QCOMPARE(openDescriptors(), descriptors);
    QCOMPARE(numbers(), QByteArray());
}

void KyLogTest::silenceWithClosedError()
{
    const DescriptorCapture error(STDERR_FILENO);
    ::close(STDERR_FILENO);
    {
        const KyLog log(KyLog::Silence, nullptr, -1);
        QCOMPARE(KyLog::Level, -1);
        QCOMPARE(errorTarget(), QStringLiteral("closed"));
    }
    QCOMPARE(errorTarget(), QStringLiteral("closed"));
    QCOMPARE(KyLog::Level, 1);
}

/** The copy of standard error is then descriptor 0, and a service without standard input keeps its error. */
void KyLogTest::silenceWithClosedInput()
{
    const int input = dup(STDIN_FILENO);
    const DescriptorCapture error(STDERR_FILENO);
    ::close(STDIN_FILENO);
    {
        const KyLog log(KyLog::Silence, nullptr, -1);
        printError("seen,");
    }
    printError("seen");
    const bool isInputClosed = fcntl(STDIN_FILENO, F_GETFD) < 0;
    dup2(input, STDIN_FILENO);
    ::close(input);
    QCOMPARE(error.contents(), QByteArray("seen,seen"));
    QVERIFY(isInputClosed);
}

void KyLogTest::otherModesLeaveErrorAlone()
{
    for (const auto mode : Modes{KyLog::NoteOnly, KyLog::SetLevel, KyLog::DefaultHandler}) {
        const DescriptorCapture error(STDERR_FILENO);
        {
            const KyLog log(mode, name().constData(), 1);
            printError("seen");
        }
        QCOMPARE(error.contents(), QByteArray("seen"));
        QCOMPARE(numbers(), QByteArray());
    }
}

void KyLogTest::outputFollowsError()
{
    const DescriptorCapture output(STDOUT_FILENO);
    const int descriptors = openDescriptors();
    std::printf("before,");
    {
        const KyLog log(KyLog::ErrorToFile | KyLog::OutputToError, name().constData(), -1);
        std::printf("output,");
        std::fflush(stdout);
        printError("error,");
        std::printf("last");
    }
    std::printf("after");
    std::fflush(stdout);
    QCOMPARE(output.contents(), QByteArray("before,after"));
    QCOMPARE(contentsOf(file(0)), QByteArray("output,error,last"));
    QCOMPARE(openDescriptors(), descriptors);
}

void KyLogTest::outputGoesToPresentErrorWithoutFile()
{
    const DescriptorCapture output(STDOUT_FILENO);
    const DescriptorCapture error(STDERR_FILENO);
    {
        const KyLog log(KyLog::OutputToError, name().constData(), -1);
        std::printf("line");
    }
    QCOMPARE(output.contents(), QByteArray());
    QCOMPARE(error.contents(), QByteArray("line"));
    QCOMPARE(numbers(), QByteArray());
}

void KyLogTest::closedOutputStaysClosed()
{
    const DescriptorCapture output(STDOUT_FILENO);
    ::close(STDOUT_FILENO);
    {
        const KyLog log(KyLog::OutputToError, name().constData(), -1);
    }
    QVERIFY(fcntl(STDOUT_FILENO, F_GETFD) < 0);
}

void KyLogTest::handlerIsResetAndRestored()
{
    const QtMessageHandler before = qInstallMessageHandler(&handleLine);
    const DescriptorCapture error(STDERR_FILENO);
    {
        const KyLog log(KyLog::DefaultHandler, name().constData(), -1);
        qWarning("in its own way");
    }
    qWarning("handled");
    qInstallMessageHandler(before);
    QCOMPARE(handledLines, QStringList("handled"));
    QVERIFY(error.contents().contains("in its own way"));
}

void KyLogTest::handlerStaysInOtherModes()
{
    const QtMessageHandler before = qInstallMessageHandler(&handleLine);
    for (const auto mode : Modes{KyLog::Silence, KyLog::NoteOnly, KyLog::SetLevel, KyLog::ErrorToFile,
                                 KyLog::OutputToError, KyLog::ErrorToFile | KyLog::OutputToError}) {
        const KyLog log(mode, name().constData(), -1);
        qWarning("handled");
    }
    qInstallMessageHandler(before);
    QCOMPARE(handledLines.size(), 6);
}

void KyLogTest::nestedObjects()
{
    const DescriptorCapture error(STDERR_FILENO);
    {
        const KyLog outer(KyLog::ErrorToFile, name().constData(), -1);
        printError("outer,");
        {
            const KyLog inner(KyLog::ErrorToFile, name().constData(), -1);
            printError("inner");
            {
                const KyLog silent(KyLog::Silence, nullptr, -1);
                printError("nothing");
            }
        }
        printError("outer");
    }
    printError("none");
    QCOMPARE(contentsOf(file(0)), QByteArray("outer,outer"));
    QCOMPARE(contentsOf(file(1)), QByteArray("inner"));
    QCOMPARE(error.contents(), QByteArray("none"));
    QCOMPARE(KyLog::Level, 1);
}

/** A program that is started meanwhile must not keep the terminal, or a pipe, of this one open. */
void KyLogTest::nothingIsInherited()
{
    const auto inheritable = [] {
        int count = 0;
        for (int descriptor = 3; descriptor < 256; ++descriptor) {
            const int flags = fcntl(descriptor, F_GETFD);
            count += flags >= 0 && !(flags & FD_CLOEXEC);
        }
        return count;
    };
    const int before = inheritable();
    int meanwhile = 0;
    {
        const KyLog log(KyLog::ErrorToFile | KyLog::OutputToError, name().constData(), -1);
        meanwhile = inheritable();
    }
    QCOMPARE(meanwhile, before);
}

namespace {

int childMain(int, char **argv)
{
    const KyLog log(KyLog::ErrorToFile, argv[2], -1);
    printError(argv[3]);
    return 0;
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(KyLogTest, childMain)
#include "kylogtest.moc"
