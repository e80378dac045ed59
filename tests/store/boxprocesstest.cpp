#include "boxfixture.h"

#include <csignal>
#include <fcntl.h>
#include <QProcess>
#include <QtTest>
#include <sys/wait.h>
#include <unistd.h>

using namespace boxfixture;

namespace {

/** Adds and overwrites cards until the process is killed; names each change on a line when it is saved. */
void fill(uint32_t handle, QFile &output)
{
    for (int i = 0;; ++i) {
        const QByteArray name = "name-" + QByteArray::number(i) + QByteArray(i % 50 * 20, 'x');
        const uint16_t card = addCard(handle, name);
        output.write(QByteArray::number(card) + ' ' + name + '\n');
        if (i % 3 == 2 && write(handle, 1, "ADRS", name) == PdtmOk)
            output.write("1a " + name + '\n');
        output.flush();
    }
}

/**
 * The other process: does what its standard input says, a line at a time, and answers each with a line.
 * Commands: open MODE PATH, close, add NAME, read CARD CODE, write CARD CODE VALUE, begin, end, count,
 * collect PATH, append PATH CODE.
 */
int serve()
{
    QFile input;
    QFile output;
    if (!input.open(stdin, QIODevice::ReadOnly) || !output.open(stdout, QIODevice::WriteOnly))
        return 1;
    uint32_t handle = 0;
    for (QByteArray line = input.readLine(); !line.isEmpty(); line = input.readLine()) {
        const QList<QByteArray> words = line.trimmed().split(' ');
        QByteArray answer = "?";
        if (words[0] == "open") {
            handle = _BoxOpenRwMode(words[2].constData(), uint8_t(words[1].toInt()));
            answer = handle ? "open" : "failed";
        } else if (words[0] == "close") {
            answer = QByteArray::number(_BoxClose(handle));
        } else if (words[0] == "add") {
            answer = QByteArray::number(addCard(handle, words[1]));
        } else if (words[0] == "read") {
            answer = read(handle, words[1].toUShort(), words[2].constData());
        } else if (words[0] == "write") {
            answer = QByteArray::number(write(handle, words[1].toUShort(), words[2].constData(), words[3]));
        } else if (words[0] == "begin") {
            answer = QByteArray::number(DtmBeginAction(handle));
        } else if (words[0] == "end") {
            answer = QByteArray::number(DtmEndAction(handle));
        } else if (words[0] == "fill") {
            fill(handle, output);
        } else if (words[0] == "collect") {
            answer = QByteArray::number(_BoxGarbageCollect(words[1].constData()));
        } else if (words[0] == "append") {
            const ITEMDATA item = itemData(ItemUshort, KindUshort, words[2].constData(), "");
            answer = QByteArray::number(_BoxItemAppend(words[1].constData(), &item, 1, nullptr));
        }
        output.write(answer + '\n');
        output.flush();
    }
    return 0;
}

class OtherProcess
{
public:
    OtherProcess()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), {"serve"});
    }
    ~OtherProcess()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    QByteArray ask(const QByteArray &command)
    {
        m_process.write(command + '\n');
        while (!m_process.canReadLine() && m_process.waitForReadyRead(10000)) {
        }
        return m_process.readLine().trimmed();
    }
    /** Kills it after some time; all that it had still written. */
    QByteArray killAfter(unsigned long milliseconds)
    {
        m_process.waitForReadyRead(10000);
        QThread::msleep(milliseconds);
        kill();
        return m_process.readAll();
    }
    void tell(const QByteArray &command)
    {
        m_process.write(command + '\n');
        m_process.waitForBytesWritten();
    }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

} // namespace

/** Boxes between processes. */
class BoxProcessTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void holderExcludesAnother();
    void killedHolderLetsGo();
    void killedHolderLosesOnlyItsOpenAction();
    void savedCardsSurviveKills();
    void readerSeesTheNewestCommit();
    void holderSeesWhatAnotherWrote();
    void scratchCardOfAnotherProcess();
    void restingConnectionStopsNobody();
    void plainOpenAndCloseLetsNoWriterIn();
    void plainOpenAndCloseLosesNoLaterCommit();
    void forkedChildEndsNothing();
    void forkedChildKeepsNoLock();
    void itemsAddedByAnother();
    void collectionBesideAHolder();

private:
    QByteArray m_box;
    int m_number = 0;
};

void BoxProcessTest::init()
{
    m_box = "F0:P" + QByteArray::number(++m_number) + ".BOX";
    QCOMPARE(makeBox(m_box.constData()), PdtmStatus(PdtmOk));
}

void BoxProcessTest::holderExcludesAnother()
{
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(_BoxOpenRwMode(m_box.constData(), 0), 0U);
    QVERIFY(timer.elapsed() < 500);
    const uint32_t reader = _BoxOpenRwMode(m_box.constData(), 1);
    const uint32_t brief = _BoxOpen(m_box.constData());
    QVERIFY(reader && brief);
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmBusy));
    const ITEMDATA item = itemData(ItemTime, KindTime, "BRTH", "");
    QCOMPARE(_BoxItemAppend(m_box.constData(), &item, 1, nullptr), PdtmStatus(PdtmBusy));
    uint32_t added = 7;
    QCOMPARE(appendItems(m_box.constData(), &added), PdtmStatus(PdtmOk));
    QCOMPARE(other.ask("close"), QByteArray("0"));
    const uint32_t holder = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(holder);
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("failed"));
    QCOMPARE(other.ask("open 1 " + m_box), QByteArray("open"));
    for (const uint32_t handle : {holder, reader, brief})
        QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
}

void BoxProcessTest::killedHolderLetsGo()
{
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("add saved"), QByteArray("1"));
    other.kill();
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(handle);
    QCOMPARE(read(handle, 1, "NAPR"), QByteArray("saved"));
    QCOMPARE(addCard(handle, "next"), uint16_t(2));
    _BoxClose(handle);
}

void BoxProcessTest::killedHolderLosesOnlyItsOpenAction()
{
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("add saved"), QByteArray("1"));
    QCOMPARE(other.ask("begin"), QByteArray("0"));
    QCOMPARE(other.ask("add lost"), QByteArray("2"));
    QCOMPARE(other.ask("write 1 NAPR lost"), QByteArray("0"));
    other.kill();
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(read(handle, 1, "NAPR"), QByteArray("saved"));
    QCOMPARE(read(handle, 2, "NAPR"), QByteArray("status 65"));
    _BoxClose(handle);
}

void BoxProcessTest::savedCardsSurviveKills()
{
    QMap<uint16_t, QByteArray> saved;
    QByteArray address;
    for (int round = 0; round < 30; ++round) {
        OtherProcess other;
        QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
        other.tell("fill");
        const QByteArray output = other.killAfter(static_cast<unsigned long>(round * 7 % 40));
        const QList<QByteArray> lines = output.left(output.lastIndexOf('\n') + 1).split('\n');
        QVERIFY(lines.size() > 1);
        for (const QByteArray &line : lines) {
            const QList<QByteArray> words = line.split(' ');
            if (words[0] == "1a")
                address = words[1];
            else if (words.size() == 2)
                saved[words[0].toUShort()] = words[1];
        }
        const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
        QVERIFY(handle);
        for (auto card = saved.constBegin(); card != saved.constEnd(); ++card)
            QCOMPARE(read(handle, card.key(), "NAPR"), card.value());
        QVERIFY(read(handle, 1, "ADRS").startsWith(address.isEmpty() ? "" : "name-"));
        _BoxClose(handle);
        QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
    }
    QVERIFY2(saved.size() >= 30, QByteArray::number(saved.size()));
}

void BoxProcessTest::readerSeesTheNewestCommit()
{
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    const uint32_t reader = _BoxOpenRwMode(m_box.constData(), 1);
    QCOMPARE(read(reader, 1, "NAPR"), QByteArray("status 65"));
    QCOMPARE(other.ask("add first"), QByteArray("1"));
    QCOMPARE(read(reader, 1, "NAPR"), QByteArray("first"));
    QCOMPARE(other.ask("begin"), QByteArray("0"));
    QCOMPARE(other.ask("write 1 NAPR second"), QByteArray("0"));
    QCOMPARE(read(reader, 1, "NAPR"), QByteArray("first"));
    QCOMPARE(other.ask("end"), QByteArray("0"));
    QCOMPARE(read(reader, 1, "NAPR"), QByteArray("second"));
    uint16_t next = 0;
    QCOMPARE(_ExpectNewCardID(reader, &next), PdtmStatus(PdtmOk));
    QCOMPARE(next, uint16_t(2));
    QCOMPARE(other.ask("close"), QByteArray("0"));
    QCOMPARE(read(reader, 1, "NAPR"), QByteArray("second"));
    _BoxClose(reader);
}

void BoxProcessTest::holderSeesWhatAnotherWrote()
{
    OtherProcess other;
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    for (int i = 0; i < 100; ++i)
        QVERIFY(addCard(handle, "mine"));
    for (uint16_t card = 1; card <= 100; ++card)
        QCOMPARE(read(handle, card, "NAPR"), QByteArray("mine"));
    _BoxClose(handle);
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("write 50 NAPR theirs"), QByteArray("0"));
    QCOMPARE(other.ask("add theirs"), QByteArray("101"));
    QCOMPARE(other.ask("close"), QByteArray("0"));
    handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(read(handle, 50, "NAPR"), QByteArray("theirs"));
    QCOMPARE(read(handle, 49, "NAPR"), QByteArray("mine"));
    QCOMPARE(addCard(handle, "mine again"), uint16_t(102));
    _BoxClose(handle);
}

/** The file holds a copy of a scratch card, but only its own process works with it. */
void BoxProcessTest::scratchCardOfAnotherProcess()
{
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("add theirs"), QByteArray("1"));
    QCOMPARE(other.ask("close"), QByteArray("0"));
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(sql(internalPath(m_box.mid(3)), "SELECT count(*) FROM cards WHERE id = 65280"), QByteArray("1"));
    QCOMPARE(read(handle, PdtmWorkCard, "NAPR"), QByteArray("status 65"));
    uint16_t card = 0;
    QCOMPARE(_CardCopy(handle, PdtmWorkCard, &card), PdtmStatus(PdtmNoSuchCard));
    QCOMPARE(addCard(handle, "mine"), uint16_t(2));
    _BoxClose(handle);
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("read 65280 NAPR"), QByteArray("theirs"));
}

void BoxProcessTest::restingConnectionStopsNobody()
{
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    addCard(handle, "mine");
    _BoxClose(handle);
    OtherProcess other;
    QCOMPARE(other.ask("collect " + m_box), QByteArray("0"));
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("add theirs"), QByteArray("2"));
    QCOMPARE(other.ask("close"), QByteArray("0"));
    QCOMPARE(_BoxDelete(m_box.constData()), PdtmStatus(PdtmOk));
}

void BoxProcessTest::plainOpenAndCloseLetsNoWriterIn()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(handle, "first"), uint16_t(1));
    const QByteArray path = internalPath(m_box.mid(3)).toUtf8();
    for (const QByteArray &file : {path, path + "-lock"})
        ::close(::open(file.constData(), O_RDONLY | O_CLOEXEC));
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("failed"));
    QCOMPARE(other.ask("collect " + m_box), QByteArray("74"));
    QCOMPARE(addCard(handle, "second"), uint16_t(2));
    _BoxClose(handle);
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
}

/** A reader that comes and goes must not take itself for the last one and remove the write-ahead file. */
void BoxProcessTest::plainOpenAndCloseLosesNoLaterCommit()
{
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(handle, "first"), uint16_t(1));
    ::close(::open(internalPath(m_box.mid(3)).toUtf8().constData(), O_RDONLY | O_CLOEXEC));
    {
        OtherProcess other;
        QCOMPARE(other.ask("open 1 " + m_box), QByteArray("open"));
        QCOMPARE(other.ask("read 1 NAPR"), QByteArray("first"));
        QCOMPARE(other.ask("close"), QByteArray("0"));
    }
    QCOMPARE(addCard(handle, "second"), uint16_t(2));
    OtherProcess second;
    QCOMPARE(second.ask("open 1 " + m_box), QByteArray("open"));
    QCOMPARE(second.ask("read 2 NAPR"), QByteArray("second"));
    _BoxClose(handle);
}

/** A child that leaves through exit() must not end the connections or the lock that it has copies of. */
void BoxProcessTest::forkedChildEndsNothing()
{
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QCOMPARE(addCard(handle, "first"), uint16_t(1));
    const pid_t child = fork();
    if (child == 0)
        std::exit(0);
    int status = -1;
    QCOMPARE(waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
    QVERIFY(QFile::exists(internalPath(m_box.mid(3)) + "-wal"));
    QCOMPARE(addCard(handle, "second"), uint16_t(2));
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("failed"));
    QCOMPARE(other.ask("open 1 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("read 2 NAPR"), QByteArray("second"));
    _BoxClose(handle);
}

void BoxProcessTest::forkedChildKeepsNoLock()
{
    uint32_t handle = _BoxOpenRwMode(m_box.constData(), 0);
    QVERIFY(handle);
    const pid_t child = fork();
    if (child == 0) {
        pause();
        _exit(0);
    }
    const auto tidy = qScopeGuard([child] {
        ::kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    });
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("close"), QByteArray("0"));
}

void BoxProcessTest::itemsAddedByAnother()
{
    const QByteArray index = m_box.chopped(3) + "IDX";
    const QByteArray isFour = QByteArray("LATE\xFE\x90\x08\4\0", 9) + '\0';
    const uint32_t handle = _BoxOpenRwMode(m_box.constData(), 1);
    QCOMPARE(_IndexCreate(index.constData(), 17), PdtmStatus(PdtmOk));
    QCOMPARE(_IndexUnGroup(index.constData(), handle), PdtmStatus(PdtmNothingToSort));
    OtherProcess other;
    QCOMPARE(other.ask("append " + m_box + " LATE"), QByteArray("0"));
    PioExtBoxInfo *info = _PioNewExtBoxInfo(m_box.constData(), handle);
    QVERIFY(info);
    QCOMPARE(_PioExtGetItemNo(info, "LATE"), 5U);
    _PioDisposeExtBoxInfo(info);
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("append " + m_box + " MORE"), QByteArray::number(PdtmBusy));
    QCOMPARE(other.ask("close"), QByteArray("0"));
    QCOMPARE(other.ask("append " + m_box + " MORE"), QByteArray("0"));
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(other.ask("add a"), QByteArray("1"));
    QCOMPARE(other.ask(QByteArray("write 1 MORE \4\1", 15)), QByteArray("0"));
    const QByteArray isSet = QByteArray("MORE\xFE\x98\x08\1\0", 9) + '\0';
    uint16_t count = 0;
    QCOMPARE(_IndexCount(index.constData(), handle, isSet.constData(), 0, 0, 0, 0, 0, nullptr, &count),
             PdtmStatus(PdtmOk));
    QCOMPARE(count, uint16_t(1));
    QCOMPARE(_IndexCount(index.constData(), handle, isFour.constData(), 0, 0, 0, 0, 0, nullptr, &count),
             PdtmStatus(PdtmNone));
    QCOMPARE(_BoxClose(handle), PdtmStatus(PdtmOk));
}

void BoxProcessTest::collectionBesideAHolder()
{
    OtherProcess other;
    QCOMPARE(other.ask("open 0 " + m_box), QByteArray("open"));
    QCOMPARE(_BoxGarbageCollect(m_box.constData()), PdtmStatus(PdtmBusy));
    uint32_t size = 7;
    QCOMPARE(_GetBoxGarbageSize(m_box.constData(), &size), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckAppliID(m_box.constData(), 3, ApplicationId), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel(m_box.constData(), 255), PdtmStatus(PdtmOk));
    QCOMPARE(other.ask("close"), QByteArray("0"));
    QCOMPARE(_BoxGarbageCollect(m_box.constData()), PdtmStatus(PdtmOk));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && QByteArray(argv[1]) == "serve")
        return serve();
    BoxProcessTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "boxprocesstest.moc"
