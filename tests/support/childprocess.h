#ifndef KY_TEST_CHILDPROCESS_H
#define KY_TEST_CHILDPROCESS_H

#include <cstdio>
#include <functional>
#include <QCoreApplication>
#include <QProcess>
#include <QSocketNotifier>
#include <QTest>
#include <unistd.h>

/**
 * This test program, run once more as another application. Both sides talk in lines: the test through write()
 * and readLine(), the child through say() and ChildInput.
 *
 * The program's main() comes from KY_TEST_MAIN_WITH_CHILD(TestClass, childMain), where
 * int childMain(int argc, char **argv) finds its role in argv[1] and further arguments behind it.
 */
class ChildProcess
{
public:
    explicit ChildProcess(const QStringList &arguments,
                          const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), QStringList{"--child"} + arguments);
    }
    /** Kills a child that still runs. */
    ~ChildProcess() { kill(); }
    Q_DISABLE_COPY_MOVE(ChildProcess)

    void write(const QByteArray &line)
    {
        m_process.write(line + '\n');
        m_process.waitForBytesWritten();
    }

    /** The child's next line without its end, while this process's events run; null when none comes in time.
     */
    QByteArray readLine(int timeout = 10000)
    {
        const auto hasLine = [this] { return m_process.canReadLine(); };
        return QTest::qWaitFor(hasLine, timeout) ? m_process.readLine().chopped(1) : QByteArray();
    }

    /** Closes the child's input, at which ChildInput ends it. @return its exit code, -1 when it crashed or
     * stays */
    int finish(int timeout = 10000)
    {
        m_process.closeWriteChannel();
        const auto ended = [this] { return m_process.state() == QProcess::NotRunning; };
        const bool inTime = QTest::qWaitFor(ended, timeout);
        return inTime && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    /** SIGKILL. */
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    [[nodiscard]] qint64 pid() const { return m_process.processId(); }
    [[nodiscard]] bool isRunning() const { return m_process.state() == QProcess::Running; }

    /** For the child: a line to the test. */
    static void say(const QByteArray &line)
    {
        std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    }

private:
    QProcess m_process;
};

/** For the child: hands each line of standard input to a function from the event loop, and ends the
 * application at the end of input. */
class ChildInput
{
public:
    explicit ChildInput(std::function<void(const QByteArray &)> handle)
        : m_handle(std::move(handle)), m_notifier(STDIN_FILENO, QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { readSome(); });
    }

private:
    void readSome()
    {
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        if (count <= 0) {
            m_notifier.setEnabled(false);
            QCoreApplication::quit();
            return;
        }
        m_pending.append(bytes, count);
        for (qsizetype end = m_pending.indexOf('\n'); end >= 0; end = m_pending.indexOf('\n')) {
            const QByteArray line = m_pending.left(end);
            m_pending.remove(0, end + 1);
            m_handle(line);
        }
    }

    std::function<void(const QByteArray &)> m_handle;
    QSocketNotifier m_notifier;
    QByteArray m_pending;
};

/** main() of a test program that is its own child; the test gets a QApplication. */
#define KY_TEST_MAIN_WITH_CHILD(TestClass, childMain)                                                        \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        if (argc > 1 && qstrcmp(argv[1], "--child") == 0) {                                                  \
            argv[1] = argv[0];                                                                               \
            return childMain(argc - 1, argv + 1);                                                            \
        }                                                                                                    \
        QApplication application(argc, argv);                                                                \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }

#endif
