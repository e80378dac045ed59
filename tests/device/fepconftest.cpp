#include "fepconf.h"
#include "childprocess.h"
#include <array>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <linux/capability.h>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace {

using Items = std::array<int, FepConf::Items>;
constexpr qsizetype FileSize = 64;

/** System calls of this thread that are to fail next. */
struct Fault
{
    int times = 0;
    int error = 0;

    /** True when the call is to fail, with errno set. */
    bool strikes()
    {
        if (times == 0)
            return false;
        --times;
        errno = error;
        return true;
    }
};

thread_local Fault readFault, writeFault, lockFault, ownerFault;
// Only the other applications wait for locks. The test itself would wait for ever for one that it has left
// behind.
bool waitsForLocks = false;

thread_local QList<QPair<uid_t, gid_t>> owners; // that fchown() was called with

thread_local std::function<void()> afterMissing; // called once, when open() has found no file

template <typename Function> Function *nextDefinition(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" Q_DECL_EXPORT int open(const char *path, int flags, ...)
{
    static const auto next = nextDefinition<int(const char *, int, ...)>("open");
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const int fd = next(path, flags, mode);
    if (fd < 0 && errno == ENOENT && afterMissing)
        std::exchange(afterMissing, nullptr)();
    return fd;
}

extern "C" Q_DECL_EXPORT ssize_t read(int fd, void *buffer, size_t size)
{
    static const auto next = nextDefinition<decltype(::read)>("read");
    return readFault.strikes() ? -1 : next(fd, buffer, size);
}

extern "C" Q_DECL_EXPORT ssize_t write(int fd, const void *buffer, size_t size)
{
    static const auto next = nextDefinition<decltype(::write)>("write");
    return writeFault.strikes() ? -1 : next(fd, buffer, size);
}

extern "C" Q_DECL_EXPORT int flock(int fd, int operation)
{
    static const auto next = nextDefinition<decltype(::flock)>("flock");
    return lockFault.strikes() ? -1 : next(fd, waitsForLocks ? operation : operation | LOCK_NB);
}

extern "C" Q_DECL_EXPORT int fchown(int fd, uid_t user, gid_t group)
{
    static const auto next = nextDefinition<decltype(::fchown)>("fchown");
    owners.append({user, group});
    return ownerFault.strikes() ? -1 : next(fd, user, group);
}

namespace {

/** Takes from root the right to open what its permissions forbid, while this lives. */
class WithoutOverride
{
public:
    WithoutOverride()
    {
        m_held = ::syscall(SYS_capget, &m_header, m_before) == 0;
        auto now = std::to_array(m_before);
        now[0].effective &= ~(1U << CAP_DAC_OVERRIDE | 1U << CAP_DAC_READ_SEARCH);
        m_held = m_held && ::syscall(SYS_capset, &m_header, now.data()) == 0;
    }
    ~WithoutOverride()
    {
        if (m_held)
            ::syscall(SYS_capset, &m_header, m_before);
    }
    Q_DISABLE_COPY_MOVE(WithoutOverride)
    [[nodiscard]] bool holds() const { return m_held; }

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_before[_LINUX_CAPABILITY_U32S_3]{};
    bool m_held;
};

QString path()
{
    return QDir::homePath() + "/Settings/fepmode.ja.conf";
}

Items defaults()
{
    Items items{};
    items[1] = items[3] = 130;
    return items;
}

/** Different numbers, each of four different bytes. */
Items numbers()
{
    Items items{};
    for (int i = 0; i < FepConf::Items; ++i)
        items[size_t(i)] = 0x10203040 + i * 0x01010101;
    return items;
}

Items with(Items items, int item, int value)
{
    items[size_t(item)] = value;
    return items;
}

QByteArray bytesOf(const Items &items)
{
    return QByteArray(reinterpret_cast<const char *>(items.data()), FileSize);
}

/** What is in the file; null when there is none. */
QByteArray contents()
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool fill(const QByteArray &bytes)
{
    QFile file(path());
    return QDir().mkpath(QFileInfo(path()).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

/** The items of @p rest, with the first bytes of those of the file in front. */
Items overlaid(const Items &rest, const QByteArray &file)
{
    Items items = rest;
    std::memcpy(items.data(), file.constData(), size_t(qMin(file.size(), FileSize)));
    return items;
}

bool isOpen(int fd)
{
    return ::fcntl(fd, F_GETFD) != -1;
}

/** True while a process waits for a lock. */
bool isWaiting(qint64 pid)
{
    QFile locks("/proc/locks");
    if (!locks.open(QIODevice::ReadOnly))
        return false;
    for (const QByteArray &line : locks.readAll().split('\n')) {
        if (line.contains("-> FLOCK") && line.contains(' ' + QByteArray::number(pid) + ' '))
            return true;
    }
    return false;
}

QByteArray answer(bool result, const Items &items)
{
    QByteArray text = result ? "true" : "false";
    for (const int item : items)
        text += ' ' + QByteArray::number(item);
    return text;
}

/** Another application: does what each line of its input says, and tells the result. */
class Application
{
public:
    void handle(const QByteArray &line)
    {
        const QByteArrayList words = line.split(' ');
        const QByteArray command = words[0];
        const int item = words.value(1).toInt();
        const int value = words.value(2).toInt();
        if (command == "lock")
            lock();
        else if (command == "set")
            m_items[size_t(item)] = value;
        else if (command == "finish")
            say(FepConf::writeUnLockCloseFepModeConfigFile(m_fd, m_items.data()));
        else if (command == "giveUp")
            FepConf::unlockCloseFepModeConfigFile(m_fd);
        else if (command == "share")
            share();
        else if (command == "read")
            readItem(item);
        else if (command == "readAll")
            readAll();
        else if (command == "write")
            say(FepConf::writeFepModeConfigFileItem(item, value));
        else if (command == "writeAll")
            say(FepConf::writeFepModeConfigFile(numbers().data()));
        else if (command == "toggle")
            say(FepConf::toggleFepModeConfigFileItem(item));
    }

private:
    static void say(bool result) { ChildProcess::say(result ? "true" : "false"); }

    void lock()
    {
        m_fd = FepConf::readLockOpenFepModeConfigFile(m_items.data());
        ChildProcess::say(answer(m_fd >= 0, m_items));
    }

    /** Holds the file as a reader does. */
    void share()
    {
        m_fd = ::open(QFile::encodeName(path()).constData(), O_RDONLY | O_CLOEXEC);
        say(::flock(m_fd, LOCK_SH) == 0);
    }

    static void readItem(int item)
    {
        int value = -1;
        const bool result = FepConf::readFepModeConfigFileItem(item, &value);
        ChildProcess::say((result ? "true " : "false ") + QByteArray::number(value));
    }

    static void readAll()
    {
        Items items{};
        const bool result = FepConf::readFepModeConfigFile(items.data());
        ChildProcess::say(answer(result, items));
    }

    int m_fd = -1;
    Items m_items{};
};

int childMain(int argc, char **argv)
{
    const QCoreApplication coreApplication(argc, argv);
    waitsForLocks = true;
    Application application;
    const ChildInput input([&](const QByteArray &line) { application.handle(line); });
    return QCoreApplication::exec();
}

QByteArray ask(ChildProcess &child, const QByteArray &command)
{
    child.write(command);
    return child.readLine();
}

bool waits(const ChildProcess &child)
{
    return QTest::qWaitFor([&] { return isWaiting(child.pid()); }, 10000);
}

} // namespace

class FepConfTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void pathIsInTheSettings();
    void defaultsOfANewFile();

    void absentFileIsNotRead();
    void readingAnItemMakesAnAbsentFile();
    void writingMakesAnAbsentFile();
    void writingAnItemMakesAnAbsentFile();
    void toggleMakesAnAbsentFile();
    void transactionMakesAnAbsentFile();
    void fileOfAnotherProcessStays_data();
    void fileOfAnotherProcessStays();
    void newFileIsForAll();
    void withoutHomeNothingIsMade();

    void shortFile_data();
    void shortFile();
    void writingAnItemOfAShortFile();
    void longFileKeepsItsEnd();
    void eachItemHasItsPlace();
    void toggle_data();
    void toggle();
    void otherItemsAreRefused_data();
    void otherItemsAreRefused();

    void transactionWrites();
    void transactionGivenUpWritesNothing();
    void transactionIsNotInherited();
    void noDescriptor();
    void descriptorThatIsNotOpen();
    void descriptorThatCannotBeWritten();

    void unreadableFile();
    void forbiddenFile();
    void readOnlyFile();
    void folderInItsPlace();
    void pipeInItsPlaceIsNotWaitedFor();
    void failingRead();
    void failingWrite();
    void failingLock();
    void interruptedCallsAreRepeated();
    void fileIsTakenOver();
    void fileThatCannotBeTakenOverIsUsed();
    void nothingStaysOpen();

    void othersWaitForATransaction_data();
    void othersWaitForATransaction();
    void writersWaitForReaders_data();
    void writersWaitForReaders();
    void readersDontWaitForReaders();
    void transactionGivenUpLetsOthersOn();
    void transactionEndsWithItsProcess();
};

void FepConfTest::init()
{
    QDir(path()).removeRecursively();
    QFile::remove(path());
    owners.clear();
}

void FepConfTest::cleanup()
{
    readFault = writeFault = lockFault = ownerFault = Fault{};
    afterMissing = nullptr;
}

void FepConfTest::pathIsInTheSettings()
{
    QCOMPARE(FepConf::getConfigPathName(), path());
}

void FepConfTest::defaultsOfANewFile()
{
    Items items = numbers();
    FepConf::setConfigDefault(items.data());
    QCOMPARE(items, defaults());
}

void FepConfTest::absentFileIsNotRead()
{
    Items items = numbers();
    QVERIFY(!FepConf::readFepModeConfigFile(items.data()));
    QCOMPARE(items, numbers());
    QVERIFY(!QFileInfo::exists(path()));
}

void FepConfTest::readingAnItemMakesAnAbsentFile()
{
    int value = 7;
    QVERIFY(!FepConf::readFepModeConfigFileItem(1, &value));
    QCOMPARE(value, 0);
    QCOMPARE(contents(), bytesOf(defaults()));
    QVERIFY(FepConf::readFepModeConfigFileItem(1, &value));
    QCOMPARE(value, 130);
}

void FepConfTest::writingMakesAnAbsentFile()
{
    QDir(QDir::homePath() + "/Settings").removeRecursively();
    Items items = numbers();
    QVERIFY(FepConf::writeFepModeConfigFile(items.data()));
    QCOMPARE(contents(), bytesOf(numbers()));
}

void FepConfTest::writingAnItemMakesAnAbsentFile()
{
    QVERIFY(FepConf::writeFepModeConfigFileItem(2, -5));
    QCOMPARE(contents(), bytesOf(with(defaults(), 2, -5)));
}

void FepConfTest::toggleMakesAnAbsentFile()
{
    QVERIFY(FepConf::toggleFepModeConfigFileItem(0));
    QCOMPARE(contents(), bytesOf(with(defaults(), 0, 1)));
}

void FepConfTest::transactionMakesAnAbsentFile()
{
    Items items = numbers();
    const int fd = FepConf::readLockOpenFepModeConfigFile(items.data());
    QVERIFY(fd >= 0);
    QCOMPARE(items, defaults());
    QVERIFY(FepConf::writeUnLockCloseFepModeConfigFile(fd, items.data()));
    QCOMPARE(contents(), bytesOf(defaults()));
}

void FepConfTest::fileOfAnotherProcessStays_data()
{
    QTest::addColumn<bool>("writes");
    QTest::newRow("reading an item") << false;
    QTest::newRow("writing an item") << true;
}

/** The file comes right after it was found to be missing. */
void FepConfTest::fileOfAnotherProcessStays()
{
    QFETCH(bool, writes);
    afterMissing = [] { fill(bytesOf(numbers())); };
    int value = 7;
    if (writes)
        QVERIFY(FepConf::writeFepModeConfigFileItem(2, 5));
    else
        QVERIFY(!FepConf::readFepModeConfigFileItem(2, &value));
    QVERIFY(!afterMissing);
    QCOMPARE(contents(), bytesOf(writes ? with(numbers(), 2, 5) : numbers()));
}

void FepConfTest::newFileIsForAll()
{
    const mode_t mask = ::umask(0);
    Items items = numbers();
    FepConf::writeFepModeConfigFile(items.data());
    ::umask(mask);
    struct stat status;
    QCOMPARE(::stat(QFile::encodeName(path()).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0666));
}

void FepConfTest::withoutHomeNothingIsMade()
{
    const QByteArray home = qgetenv("HOME");
    QVERIFY(!QFileInfo::exists("/Settings"));
    qunsetenv("HOME");
    Items items = numbers();
    int value = 7;
    const bool done = FepConf::writeFepModeConfigFile(items.data()) ||
                      FepConf::readFepModeConfigFileItem(1, &value) ||
                      FepConf::writeFepModeConfigFileItem(1, 1) || FepConf::toggleFepModeConfigFileItem(1) ||
                      FepConf::readLockOpenFepModeConfigFile(items.data()) >= 0;
    qputenv("HOME", home);
    QVERIFY(!done);
    QVERIFY(!QFileInfo::exists("/Settings"));
}

void FepConfTest::shortFile_data()
{
    QTest::addColumn<int>("length");
    for (int length = 0; length <= FileSize; ++length)
        QTest::addRow("%d bytes", length) << length;
}

void FepConfTest::shortFile()
{
    QFETCH(int, length);
    const QByteArray file = bytesOf(numbers()).left(length);
    QVERIFY(fill(file));

    Items items;
    items.fill(-2);
    const Items before = items;
    QVERIFY(FepConf::readFepModeConfigFile(items.data()));
    QCOMPARE(items, overlaid(before, file));

    const Items completed = overlaid(defaults(), file);
    for (int item = 0; item < FepConf::Items; ++item) {
        int value = -2;
        QVERIFY(FepConf::readFepModeConfigFileItem(item, &value));
        QCOMPARE(value, completed[size_t(item)]);
    }
    const int fd = FepConf::readLockOpenFepModeConfigFile(items.data());
    QVERIFY(fd >= 0);
    FepConf::unlockCloseFepModeConfigFile(fd);
    QCOMPARE(items, completed);
    QCOMPARE(contents(), file); // reading leaves it short

    QVERIFY(FepConf::toggleFepModeConfigFileItem(15));
    QCOMPARE(contents(), bytesOf(with(completed, 15, completed[15] == 0)));
}

void FepConfTest::writingAnItemOfAShortFile()
{
    const QByteArray file = bytesOf(numbers()).left(6);
    QVERIFY(fill(file));
    QVERIFY(FepConf::writeFepModeConfigFileItem(4, 9));
    const Items expected = with(overlaid(Items{}, file), 4, 9); // what lies between is 0, also item 3
    QCOMPARE(contents(), bytesOf(expected).left(5 * 4));
}

void FepConfTest::longFileKeepsItsEnd()
{
    const QByteArray end = "what comes behind";
    QVERIFY(fill(bytesOf(numbers()) + end));
    Items items{};
    QVERIFY(FepConf::readFepModeConfigFile(items.data()));
    QCOMPARE(items, numbers());
    QVERIFY(FepConf::writeFepModeConfigFileItem(15, 1));
    QVERIFY(FepConf::toggleFepModeConfigFileItem(14));
    QCOMPARE(contents(), bytesOf(with(with(numbers(), 15, 1), 14, 0)) + end);
    QVERIFY(FepConf::writeFepModeConfigFile(items.data()));
    QCOMPARE(contents(), bytesOf(numbers()) + end);
}

void FepConfTest::eachItemHasItsPlace()
{
    for (int item = 0; item < FepConf::Items; ++item) {
        QVERIFY(fill(bytesOf(numbers())));
        QVERIFY(FepConf::writeFepModeConfigFileItem(item, INT_MIN + item));
        QCOMPARE(contents(), bytesOf(with(numbers(), item, INT_MIN + item)));
        int value = 0;
        QVERIFY(FepConf::readFepModeConfigFileItem(item, &value));
        QCOMPARE(value, INT_MIN + item);
    }
}

void FepConfTest::toggle_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("0 gives 1") << 0 << 1;
    QTest::newRow("1 gives 0") << 1 << 0;
    QTest::newRow("130 gives 0") << 130 << 0;
    QTest::newRow("negative gives 0") << -1 << 0;
    QTest::newRow("high byte alone gives 0") << 0x01000000 << 0;
}

void FepConfTest::toggle()
{
    QFETCH(int, before);
    QFETCH(int, after);
    for (int item = 0; item < FepConf::Items; ++item) {
        QVERIFY(fill(bytesOf(with(numbers(), item, before))));
        QVERIFY(FepConf::toggleFepModeConfigFileItem(item));
        QCOMPARE(contents(), bytesOf(with(numbers(), item, after)));
    }
}

void FepConfTest::otherItemsAreRefused_data()
{
    QTest::addColumn<int>("item");
    QTest::newRow("before the first") << -1;
    QTest::newRow("behind the last") << 16;
    QTest::newRow("lowest") << INT_MIN;
    QTest::newRow("highest") << INT_MAX;
}

void FepConfTest::otherItemsAreRefused()
{
    QFETCH(int, item);
    const auto isRefused = [item] {
        int value = 7;
        return !FepConf::readFepModeConfigFileItem(item, &value) && value == 7 &&
               !FepConf::writeFepModeConfigFileItem(item, 1) && !FepConf::toggleFepModeConfigFileItem(item);
    };
    QVERIFY(isRefused());
    QVERIFY(!QFileInfo::exists(path()));
    QVERIFY(fill(bytesOf(numbers())));
    QVERIFY(isRefused());
    QCOMPARE(contents(), bytesOf(numbers()));
}

void FepConfTest::transactionWrites()
{
    QVERIFY(fill(bytesOf(numbers())));
    Items items{};
    const int fd = FepConf::readLockOpenFepModeConfigFile(items.data());
    QVERIFY(fd >= 0);
    QCOMPARE(items, numbers());
    items[5] = 5;
    items[6] = 6;
    QVERIFY(FepConf::writeUnLockCloseFepModeConfigFile(fd, items.data()));
    QVERIFY(!isOpen(fd));
    QCOMPARE(contents(), bytesOf(with(with(numbers(), 5, 5), 6, 6)));
}

void FepConfTest::transactionGivenUpWritesNothing()
{
    QVERIFY(fill(bytesOf(numbers())));
    Items items{};
    const int fd = FepConf::readLockOpenFepModeConfigFile(items.data());
    QVERIFY(fd >= 0);
    FepConf::unlockCloseFepModeConfigFile(fd);
    QVERIFY(!isOpen(fd));
    QCOMPARE(contents(), bytesOf(numbers()));
}

void FepConfTest::transactionIsNotInherited()
{
    Items items{};
    const int fd = FepConf::readLockOpenFepModeConfigFile(items.data());
    QVERIFY(fd >= 0);
    const int flags = ::fcntl(fd, F_GETFD);
    FepConf::unlockCloseFepModeConfigFile(fd);
    QCOMPARE(flags, FD_CLOEXEC);
}

void FepConfTest::noDescriptor()
{
    Items items = numbers();
    QVERIFY(!FepConf::writeUnLockCloseFepModeConfigFile(-1, items.data()));
    FepConf::unlockCloseFepModeConfigFile(-1);
    QVERIFY(!QFileInfo::exists(path()));
}

void FepConfTest::descriptorThatIsNotOpen()
{
    const int fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(fd);
    Items items = numbers();
    QVERIFY(!FepConf::writeUnLockCloseFepModeConfigFile(fd, items.data()));
}

void FepConfTest::descriptorThatCannotBeWritten()
{
    const int fd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    Items items = numbers();
    QVERIFY(!FepConf::writeUnLockCloseFepModeConfigFile(fd, items.data()));
    QVERIFY(!isOpen(fd));
}

/** True when no call can change the file, and those that would say so. */
static bool cannotBeChanged()
{
    Items items = numbers();
    return !FepConf::writeFepModeConfigFile(items.data()) && !FepConf::writeFepModeConfigFileItem(3, 1) &&
           !FepConf::toggleFepModeConfigFileItem(3) &&
           FepConf::readLockOpenFepModeConfigFile(items.data()) == -1 && items == defaults();
}

void FepConfTest::unreadableFile()
{
    QVERIFY(fill(bytesOf(numbers())));
    QVERIFY(QFile::setPermissions(path(), QFile::WriteOwner));
    Items items{};
    int value = 7;
    {
        const WithoutOverride limited;
        QVERIFY(limited.holds());
        QVERIFY(!FepConf::readFepModeConfigFile(items.data()));
        QCOMPARE(items, Items{});
        QVERIFY(!FepConf::readFepModeConfigFileItem(3, &value));
    }
    QCOMPARE(value, 0);
    QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner);
    QCOMPARE(contents(), bytesOf(defaults()));
}

void FepConfTest::forbiddenFile()
{
    QVERIFY(fill(bytesOf(numbers())));
    QVERIFY(QFile::setPermissions(path(), {}));
    int value = 7;
    {
        const WithoutOverride limited;
        QVERIFY(limited.holds());
        QVERIFY(!FepConf::readFepModeConfigFileItem(3, &value));
        QVERIFY(cannotBeChanged());
    }
    QCOMPARE(value, 0);
    QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner);
    QCOMPARE(contents(), bytesOf(numbers()));
}

void FepConfTest::readOnlyFile()
{
    QVERIFY(fill(bytesOf(numbers())));
    QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner));
    const WithoutOverride limited;
    QVERIFY(limited.holds());
    int value = 7;
    QVERIFY(FepConf::readFepModeConfigFileItem(3, &value));
    QCOMPARE(value, numbers()[3]);
    QVERIFY(cannotBeChanged());
    QCOMPARE(contents(), bytesOf(numbers()));
}

void FepConfTest::folderInItsPlace()
{
    QVERIFY(QDir().mkpath(path()));
    Items items = numbers();
    int value = 7;
    QVERIFY(!FepConf::readFepModeConfigFile(items.data()));
    QCOMPARE(items, numbers());
    QVERIFY(!FepConf::readFepModeConfigFileItem(3, &value));
    QCOMPARE(value, 0);
    QVERIFY(cannotBeChanged());
    QVERIFY(QFileInfo(path()).isDir());
}

void FepConfTest::pipeInItsPlaceIsNotWaitedFor()
{
    QVERIFY(QDir().mkpath(QFileInfo(path()).path()));
    QCOMPARE(::mkfifo(QFile::encodeName(path()).constData(), 0600), 0);
    ChildProcess other({"other"});
    QVERIFY(ask(other, "readAll").startsWith("true ")); // as of a file of no bytes
    QCOMPARE(ask(other, "read 1"), QByteArray("true 130"));
    QVERIFY(!ask(other, "write 3 7").isNull());
    QVERIFY(!ask(other, "toggle 3").isNull());
}

void FepConfTest::failingRead()
{
    QVERIFY(fill(bytesOf(numbers())));
    Items items{};
    readFault = {1, EIO};
    QVERIFY(!FepConf::readFepModeConfigFile(items.data()));
    readFault = {1, EIO};
    QCOMPARE(FepConf::readLockOpenFepModeConfigFile(items.data()), -1);
    QCOMPARE(items, defaults());
    QCOMPARE(contents(), bytesOf(numbers()));
    readFault = {1, EIO};
    QVERIFY(!FepConf::toggleFepModeConfigFileItem(3));
    QCOMPARE(contents(), bytesOf(defaults())); // not inverted
}

void FepConfTest::failingWrite()
{
    QVERIFY(fill(bytesOf(numbers())));
    Items items = defaults();
    writeFault = {1, ENOSPC};
    QVERIFY(!FepConf::writeFepModeConfigFile(items.data()));
    writeFault = {1, ENOSPC};
    QVERIFY(!FepConf::writeFepModeConfigFileItem(3, 1));
    writeFault = {1, ENOSPC};
    QVERIFY(!FepConf::toggleFepModeConfigFileItem(3));
    const int fd = FepConf::readLockOpenFepModeConfigFile(items.data());
    writeFault = {1, ENOSPC};
    QVERIFY(!FepConf::writeUnLockCloseFepModeConfigFile(fd, items.data()));
    QVERIFY(!isOpen(fd));
    QCOMPARE(contents(), bytesOf(numbers()));
}

void FepConfTest::failingLock()
{
    QVERIFY(fill(bytesOf(numbers())));
    lockFault = {100, ENOLCK};
    Items items{};
    QVERIFY(!FepConf::readFepModeConfigFile(items.data()));
    QCOMPARE(items, Items{});
    QVERIFY(cannotBeChanged());
    QCOMPARE(contents(), bytesOf(numbers()));
}

void FepConfTest::interruptedCallsAreRepeated()
{
    QVERIFY(fill(bytesOf(numbers())));
    readFault = writeFault = lockFault = {2, EINTR};
    QVERIFY(FepConf::toggleFepModeConfigFileItem(3));
    QCOMPARE(readFault.times + writeFault.times + lockFault.times, 0);
    QCOMPARE(contents(), bytesOf(with(numbers(), 3, 0)));
}

void FepConfTest::fileIsTakenOver()
{
    const QPair<uid_t, gid_t> self(::getuid(), ::getgid());
    Items items = numbers();
    int value = 0;
    QVERIFY(FepConf::writeFepModeConfigFile(items.data()));
    QVERIFY(FepConf::readFepModeConfigFile(items.data()));
    QVERIFY(FepConf::readFepModeConfigFileItem(0, &value));
    QVERIFY(FepConf::writeFepModeConfigFileItem(0, 1));
    QVERIFY(FepConf::toggleFepModeConfigFileItem(0));
    FepConf::unlockCloseFepModeConfigFile(FepConf::readLockOpenFepModeConfigFile(items.data()));
    QCOMPARE(owners, (QList<QPair<uid_t, gid_t>>(6, self)));
}

void FepConfTest::fileThatCannotBeTakenOverIsUsed()
{
    QVERIFY(fill(bytesOf(numbers())));
    ownerFault = {100, EPERM};
    Items items{};
    QVERIFY(FepConf::readFepModeConfigFile(items.data()));
    QCOMPARE(items, numbers());
    QVERIFY(FepConf::writeFepModeConfigFileItem(3, 1));
    QCOMPARE(contents(), bytesOf(with(numbers(), 3, 1)));
}

void FepConfTest::nothingStaysOpen()
{
    const auto openFiles = [] { return QDir("/proc/self/fd").count(); };
    Items items{};
    int value = 0;
    const auto useAll = [&] {
        FepConf::readFepModeConfigFile(items.data());
        FepConf::readFepModeConfigFileItem(0, &value);
        FepConf::writeFepModeConfigFile(items.data());
        FepConf::writeFepModeConfigFileItem(0, 1);
        FepConf::toggleFepModeConfigFileItem(0);
        FepConf::unlockCloseFepModeConfigFile(FepConf::readLockOpenFepModeConfigFile(items.data()));
    };
    const auto before = openFiles();
    useAll();
    lockFault = {100, ENOLCK};
    useAll();
    lockFault = {};
    readFault = {1, EIO};
    QCOMPARE(FepConf::readLockOpenFepModeConfigFile(items.data()), -1);
    QCOMPARE(openFiles(), before);
}

void FepConfTest::othersWaitForATransaction_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("result");
    QTest::addColumn<QByteArray>("file");
    const Items changed = with(numbers(), 3, 55);
    QTest::newRow("read an item") << QByteArray("read 3") << QByteArray("true 55") << bytesOf(changed);
    QTest::newRow("read all") << QByteArray("readAll") << answer(true, changed) << bytesOf(changed);
    QTest::newRow("write an item") << QByteArray("write 4 7") << QByteArray("true")
                                   << bytesOf(with(changed, 4, 7));
    QTest::newRow("write all") << QByteArray("writeAll") << QByteArray("true") << bytesOf(numbers());
    QTest::newRow("toggle") << QByteArray("toggle 3") << QByteArray("true") << bytesOf(with(changed, 3, 0));
    QTest::newRow("transaction") << QByteArray("lock") << answer(true, changed) << bytesOf(changed);
}

void FepConfTest::othersWaitForATransaction()
{
    QFETCH(QByteArray, command);
    QVERIFY(fill(bytesOf(numbers())));
    ChildProcess holder({"holder"}), other({"other"});
    QCOMPARE(ask(holder, "lock"), answer(true, numbers()));
    other.write(command);
    QVERIFY(waits(other));
    holder.write("set 3 55");
    QCOMPARE(ask(holder, "finish"), QByteArray("true"));
    QTEST(other.readLine(), "result");
    QTEST(contents(), "file");
}

void FepConfTest::writersWaitForReaders_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("write an item") << QByteArray("write 4 7");
    QTest::newRow("write all") << QByteArray("writeAll");
    QTest::newRow("toggle") << QByteArray("toggle 3");
    QTest::newRow("transaction") << QByteArray("lock");
}

void FepConfTest::writersWaitForReaders()
{
    QFETCH(QByteArray, command);
    QVERIFY(fill(bytesOf(defaults())));
    ChildProcess holder({"holder"}), other({"other"});
    QCOMPARE(ask(holder, "share"), QByteArray("true"));
    other.write(command);
    QVERIFY(waits(other));
    QCOMPARE(contents(), bytesOf(defaults()));
    holder.write("giveUp");
    QVERIFY(other.readLine().startsWith("true"));
}

void FepConfTest::readersDontWaitForReaders()
{
    QVERIFY(fill(bytesOf(numbers())));
    ChildProcess holder({"holder"}), other({"other"});
    QCOMPARE(ask(holder, "share"), QByteArray("true"));
    QCOMPARE(ask(other, "read 3"), "true " + QByteArray::number(numbers()[3]));
    QCOMPARE(ask(other, "readAll"), answer(true, numbers()));
}

void FepConfTest::transactionGivenUpLetsOthersOn()
{
    QVERIFY(fill(bytesOf(numbers())));
    ChildProcess holder({"holder"}), other({"other"});
    QCOMPARE(ask(holder, "lock"), answer(true, numbers()));
    other.write("toggle 3");
    QVERIFY(waits(other));
    holder.write("set 4 55");
    holder.write("giveUp");
    QCOMPARE(other.readLine(), QByteArray("true"));
    QCOMPARE(contents(), bytesOf(with(numbers(), 3, 0)));
}

void FepConfTest::transactionEndsWithItsProcess()
{
    QVERIFY(fill(bytesOf(numbers())));
    ChildProcess holder({"holder"}), other({"other"});
    QCOMPARE(ask(holder, "lock"), answer(true, numbers()));
    other.write("readAll");
    QVERIFY(waits(other));
    holder.kill();
    QCOMPARE(other.readLine(), answer(true, numbers()));
}

KY_TEST_MAIN_WITH_CHILD(FepConfTest, childMain)
#include "fepconftest.moc"
