#include "childprocess.h"
#include "logcapture.h"
#include "qcopchannel.h"
#include "qcopenvelope.h"
#include "qpeapplication.h"
#include "recordfixture.h"
#include <QPointer>
#include <QTimer>
#include <sys/resource.h>

namespace {

constexpr auto CloseFile = "closeFile(QString,QString)";
constexpr auto OpenFile = "openFile(QString,QString)";

int openAttempts = 0;
bool refuseOpen = false;
bool refuseClose = false;

QByteArray argumentsOf(const QByteArray &path, const QByteArray &sender)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setVersion(QCopEnvelope::StreamVersion);
    stream << QString::fromUtf8(path) << QString::fromUtf8(sender);
    return data;
}

/** A message from another application, as the channel gives it to the manager. */
void tell(KyPDataManager &manager, const char *message, const QByteArray &path,
          const QByteArray &sender = "other")
{
    manager.systemMessage(message, argumentsOf(path, sender));
}

/** What goes out on "QPE/System", one text a message. */
class Traffic
{
public:
    Traffic()
    {
        QObject::connect(&m_channel, &QCopChannel::received, &m_channel,
                         [this](const QByteArray &message, const QByteArray &data) { note(message, data); });
        settle();
        m_messages.clear();
    }

    /** The messages so far, behind everything that was sent before this call. */
    QByteArrayList messages()
    {
        settle();
        return m_messages;
    }
    void clear()
    {
        settle();
        m_messages.clear();
    }

private:
    void settle()
    {
        m_isSettled = false;
        QCopChannel::send("QPE/System", "marker()");
        QVERIFY(QTest::qWaitFor([this] { return m_isSettled; }, 10000));
    }

    void note(const QByteArray &message, const QByteArray &data)
    {
        if (message == "marker()") {
            m_isSettled = true;
            return;
        }
        QString path, sender;
        QCopArguments arguments(data);
        arguments >> path >> sender;
        m_messages.append(message.left(message.indexOf('(')) + ' ' + path.toUtf8() + ' ' + sender.toUtf8());
    }

    QCopChannel m_channel{"QPE/System"};
    QByteArrayList m_messages;
    bool m_isSettled = false;
};

/** How often this thread has gone to sleep. */
int sleepsOfThisThread()
{
    struct rusage usage
    {
    };
    return ::getrusage(RUSAGE_THREAD, &usage) == 0 ? int(usage.ru_nvcsw) : -1;
}

QByteArray ownName()
{
    return QPEApplication::applicationNameOf(qApp).toUtf8();
}

} // namespace

uint32_t _BoxOpenRwMode(const char *path, uint8_t mode)
{
    static const auto next = nextDefinition<decltype(_BoxOpenRwMode)>("_BoxOpenRwMode");
    ++openAttempts;
    return refuseOpen ? 0 : next(path, mode);
}

PdtmStatus _BoxCloseEx(uint32_t handle, int flag)
{
    static const auto next = nextDefinition<decltype(_BoxCloseEx)>("_BoxCloseEx");
    return refuseClose ? PdtmStatus(PdtmIoError) : next(handle, flag);
}

class CloseProtocolTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    // what goes out
    void openAnnouncesAfterTheAttempts();
    void readOnlyOpenIsSilent();
    void failedOpenAnnouncesToo();
    void eventsRunBetweenTheAttempts();
    void attemptsDoNotWait();
    void closeAnnouncesOnce();
    void boxThatCannotBeClosedStaysOpen();
    void readOnlyCloseAnnounces();
    void destructionAnnounces();

    // what comes in
    void closeFileIsObeyed();
    void closeFileOverTheChannel();
    void ignoredCloseFiles_data();
    void ignoredCloseFiles();
    void waitingManagerRefusesToOpen();
    void waitingManagerFailsItsCalls();
    void openFileReopens();
    void ignoredOpenFiles_data();
    void ignoredOpenFiles();
    void closeForAllEndsWithAnEmptyOpenFileOnly();
    void closeForAllByPathThenEmptyOpenFile();
    void openFileForAClosedManagerIsIgnored();
    void readOnlyIgnoresCloseFile();
    void closedManagerIgnoresCloseFile();
    void reopenThatFailsLeavesTheManagerUnopened();
    void boxThatCannotBeLetGo();
    void destructionWhileWaitingIsSilent();
    void requestInsideAnEdit();

    // re-entry
    void deletionDuringTheAttempts();
    void deletionDuringTheReopen();
    void openInsideOpen();
    void messagesDuringTheAttempts();

    // one process, several managers
    void managersOfOneBox();
    void editsInTwoBoxesAtOnce();
    void editsOfTwoManagersOfOneBox();
    void abandonedEditLeavesNothing();
    void cancelWhileClosedLeavesNothing();
    void editOutlastsACloseAndAFailedOne();
    void editOutlastsAReopenThatFails();
    void onlyOneOfTwoWaitingManagersReopens();
    void stormOfMessages();
    void messagesCutShort();

    // two processes
    void boxPassesBetweenProcesses();
    void editOutlastsTheLoan();
    void processOfTheSameNameKeepsTheBox();
    void managerWithoutAnApplication();
};

void CloseProtocolTest::init()
{
    refuseOpen = refuseClose = false;
    openAttempts = 0;
}

void CloseProtocolTest::openAnnouncesAfterTheAttempts()
{
    const TestBox box;
    Traffic traffic;
    const KyPDataManager manager(box.path().constData(), nullptr, false);
    QCOMPARE(openAttempts, 1);
    QCOMPARE(traffic.messages(), QByteArrayList{"closeFile " + box.path() + ' ' + ownName()});
    QVERIFY(manager.isOpened()); // its own message comes back to it
}

void CloseProtocolTest::readOnlyOpenIsSilent()
{
    const TestBox box;
    Traffic traffic;
    const KyPDataManager manager(box.path().constData(), nullptr, true);
    QVERIFY(manager.isOpened());
    QVERIFY(traffic.messages().isEmpty());
    refuseOpen = true;
    openAttempts = 0;
    const KyPDataManager refused(box.path().constData(), nullptr, true);
    QVERIFY(!refused.isOpened());
    QCOMPARE(openAttempts, 1);
    QVERIFY(traffic.messages().isEmpty());
}

void CloseProtocolTest::failedOpenAnnouncesToo()
{
    const TestBox box;
    Traffic traffic;
    refuseOpen = true;
    const KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(!manager.isOpened());
    QCOMPARE(openAttempts, 9);
    QCOMPARE(traffic.messages(), QByteArrayList{"closeFile " + box.path() + ' ' + ownName()});
}

void CloseProtocolTest::eventsRunBetweenTheAttempts()
{
    const TestBox box;
    Traffic traffic;
    int attemptsSeen = 0;
    QTimer::singleShot(0, this, [&attemptsSeen] {
        attemptsSeen = openAttempts;
        refuseOpen = false;
    });
    refuseOpen = true;
    const KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.isOpened());
    QVERIFY(attemptsSeen >= 1);
    QCOMPARE(openAttempts, attemptsSeen + 1);
    QCOMPARE(traffic.messages().size(), 1);
}

void CloseProtocolTest::attemptsDoNotWait()
{
    const TestBox box;
    const KyPDataManager holder(box.path().constData(), nullptr, false);
    KyPDataManager manager(box.path().constData(), nullptr, false);
    Traffic().messages(); // nothing is pending
    openAttempts = 0;
    const int before = sleepsOfThisThread();
    QVERIFY(!manager.open(false));
    const int sleeps = sleepsOfThisThread() - before;
    QCOMPARE(openAttempts, 9);
    QVERIFY2(sleeps < 8, QByteArray::number(sleeps)); // one between each two attempts
}

void CloseProtocolTest::closeAnnouncesOnce()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    Traffic traffic;
    QVERIFY(manager.close());
    QCOMPARE(traffic.messages(), QByteArrayList{"openFile " + box.path() + ' ' + ownName()});
    traffic.clear();
    QVERIFY(!manager.close());
    QVERIFY(traffic.messages().isEmpty());
}

void CloseProtocolTest::boxThatCannotBeClosedStaysOpen()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const quint32 handle = manager.boxHandle();
    Traffic traffic;
    refuseClose = true;
    QVERIFY(!manager.close());
    QCOMPARE(manager.boxHandle(), handle);
    QVERIFY(traffic.messages().isEmpty());
    refuseClose = false;
}

void CloseProtocolTest::readOnlyCloseAnnounces()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, true);
    Traffic traffic;
    QVERIFY(manager.close());
    QCOMPARE(traffic.messages(), QByteArrayList{"openFile " + box.path() + ' ' + ownName()});
}

void CloseProtocolTest::destructionAnnounces()
{
    const TestBox box;
    auto manager = std::make_unique<KyPDataManager>(box.path().constData(), nullptr, false);
    Traffic traffic;
    manager.reset();
    QCOMPARE(traffic.messages(), QByteArrayList{"openFile " + box.path() + ' ' + ownName()});
}

void CloseProtocolTest::closeFileIsObeyed()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    Traffic traffic;
    tell(manager, CloseFile, box.path());
    QVERIFY(!manager.isOpened());
    QVERIFY(privateOf(manager).waitingOpenAgain);
    QVERIFY(!privateOf(manager).closedForAll);
    QVERIFY(traffic.messages().isEmpty()); // no openFile
    const KyPDataManager other(box.path().constData(), nullptr, false);
    QVERIFY(other.isOpened());
}

void CloseProtocolTest::closeFileOverTheChannel()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QCopChannel::send("QPE/System", CloseFile, argumentsOf(box.path(), "other"));
    QVERIFY(manager.isOpened());
    QTRY_VERIFY_WITH_TIMEOUT(!manager.isOpened(), 10000);
    QCopChannel::send("QPE/System", OpenFile, argumentsOf(box.path(), "other"));
    QTRY_VERIFY_WITH_TIMEOUT(manager.isOpened(), 10000);
}

void CloseProtocolTest::ignoredCloseFiles_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("path"); // "%" stands for the box
    QTest::addColumn<QByteArray>("sender");
    QTest::addColumn<int>("cut");

    const QByteArray own = ownName();
    QTest::newRow("own name") << QByteArray(CloseFile) << QByteArray("%") << own << 0;
    QTest::newRow("own name, all boxes") << QByteArray(CloseFile) << QByteArray() << own << 0;
    QTest::newRow("another box") << QByteArray(CloseFile) << QByteArray("F0:OTHER.BOX") << QByteArray("other")
                                 << 0;
    QTest::newRow("base name only") << QByteArray(CloseFile) << QByteArray("F0:") << QByteArray("other") << 0;
    QTest::newRow("another message") << QByteArray("closeFile(QString)") << QByteArray("%")
                                     << QByteArray("other") << 0;
    QTest::newRow("openFile while open")
        << QByteArray(OpenFile) << QByteArray("%") << QByteArray("other") << 0;
    QTest::newRow("sender cut off") << QByteArray(CloseFile) << QByteArray("%") << QByteArray("other") << 3;
    QTest::newRow("nothing in it") << QByteArray(CloseFile) << QByteArray("%") << QByteArray("other") << 1000;
}

void CloseProtocolTest::ignoredCloseFiles()
{
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, sender);
    QFETCH(int, cut);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const quint32 handle = manager.boxHandle();
    path.replace("%", box.path());
    QByteArray data = argumentsOf(path, sender);
    data.chop(cut);
    manager.systemMessage(message, data);
    QCOMPARE(manager.boxHandle(), handle);
    QVERIFY(!privateOf(manager).waitingOpenAgain);
}

void CloseProtocolTest::waitingManagerRefusesToOpen()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    tell(manager, CloseFile, box.path());
    LogCapture log;
    QVERIFY(!manager.open(false));
    QVERIFY(!manager.open(true));
    const QString line = QString::fromLatin1(box.path()) + " is waiting for open again.";
    QCOMPARE(log.lines(), (QStringList{line, line}));
    QVERIFY(!privateOf(manager).readOnly); // the mode to reopen in
    QVERIFY(!manager.close());
}

void CloseProtocolTest::waitingManagerFailsItsCalls()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    tell(manager, CloseFile, box.path());
    QVERIFY(manager.readItem("TITL", card).isNull());
    QVERIFY(!manager.startEditCard(card));
    QVERIFY(!manager.writeAttribute(card, 1, true));
    QVERIFY(!manager.deleteCard(&card, KyPDataManager::DeleteSingle));
    QCOMPARE(manager.nameToItemId("TITL"), 1);
    QCOMPARE(manager.firstCard(), card); // indexes are reached by path
    tell(manager, OpenFile, box.path());
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
}

void CloseProtocolTest::openFileReopens()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    addCard(manager, QStringLiteral("a"));
    const unsigned long second = addCard(manager, QStringLiteral("b"));
    addCard(manager, QStringLiteral("c"));
    QVERIFY(manager.first() && manager.next());
    privateOf(manager).ascendent = false;
    const auto *index = privateOf(manager).currentIndex;
    Traffic traffic;
    tell(manager, CloseFile, box.path());
    tell(manager, OpenFile, box.path());
    QVERIFY(manager.isOpened());
    QVERIFY(!privateOf(manager).waitingOpenAgain);
    QCOMPARE(traffic.messages(), QByteArrayList{"closeFile " + box.path() + ' ' + ownName()});
    QCOMPARE(manager.cardId(), second);
    QVERIFY(!manager.ascendent());
    QCOMPARE(privateOf(manager).currentIndex, index);
    QCOMPARE(manager.readItem("TITL"), QStringLiteral("b"));
    QVERIFY(manager.next());
    QCOMPARE(manager.readItem("TITL"), QStringLiteral("a"));
}

void CloseProtocolTest::ignoredOpenFiles_data()
{
    QTest::addColumn<QByteArray>("closed");
    QTest::addColumn<QByteArray>("opened");
    QTest::addColumn<QByteArray>("sender");
    QTest::newRow("own name") << QByteArray("%") << QByteArray("%") << ownName();
    QTest::newRow("own name, all boxes") << QByteArray("%") << QByteArray() << ownName();
    QTest::newRow("another box") << QByteArray("%") << QByteArray("F0:OTHER.BOX") << QByteArray("other");
    QTest::newRow("this box after all") << QByteArray() << QByteArray("%") << QByteArray("other");
    QTest::newRow("another box after all")
        << QByteArray() << QByteArray("F0:OTHER.BOX") << QByteArray("other");
}

void CloseProtocolTest::ignoredOpenFiles()
{
    QFETCH(QByteArray, closed);
    QFETCH(QByteArray, opened);
    QFETCH(QByteArray, sender);
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    tell(manager, CloseFile, closed.replace("%", box.path()));
    QVERIFY(!manager.isOpened());
    tell(manager, OpenFile, opened.replace("%", box.path()), sender);
    QVERIFY(!manager.isOpened());
    QVERIFY(privateOf(manager).waitingOpenAgain);
}

void CloseProtocolTest::closeForAllEndsWithAnEmptyOpenFileOnly()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    tell(manager, CloseFile, "");
    QVERIFY(!manager.isOpened());
    QVERIFY(privateOf(manager).closedForAll);
    tell(manager, OpenFile, box.path());
    QVERIFY(!manager.isOpened());
    tell(manager, OpenFile, "");
    QVERIFY(manager.isOpened());
    QVERIFY(!privateOf(manager).closedForAll);
    tell(manager, CloseFile, box.path()); // and the next round is an ordinary one
    tell(manager, OpenFile, box.path());
    QVERIFY(manager.isOpened());
}

void CloseProtocolTest::closeForAllByPathThenEmptyOpenFile()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    tell(manager, CloseFile, box.path());
    tell(manager, OpenFile, "");
    QVERIFY(manager.isOpened());
}

void CloseProtocolTest::openFileForAClosedManagerIsIgnored()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.close());
    tell(manager, OpenFile, box.path());
    tell(manager, OpenFile, "");
    QVERIFY(!manager.isOpened());
}

void CloseProtocolTest::readOnlyIgnoresCloseFile()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, true);
    tell(manager, CloseFile, box.path());
    tell(manager, CloseFile, "");
    QVERIFY(manager.isOpened());
    QVERIFY(!privateOf(manager).waitingOpenAgain);
}

void CloseProtocolTest::closedManagerIgnoresCloseFile()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.close());
    tell(manager, CloseFile, box.path());
    QVERIFY(!privateOf(manager).waitingOpenAgain);
    QVERIFY(manager.open(false));
}

void CloseProtocolTest::reopenThatFailsLeavesTheManagerUnopened()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    tell(manager, CloseFile, box.path());
    Traffic traffic;
    refuseOpen = true;
    openAttempts = 0;
    tell(manager, OpenFile, box.path());
    QVERIFY(!manager.isOpened());
    QCOMPARE(openAttempts, 9);
    QVERIFY(!privateOf(manager).waitingOpenAgain);
    QCOMPARE(traffic.messages(), QByteArrayList{"closeFile " + box.path() + ' ' + ownName()});
    refuseOpen = false;
    QVERIFY(manager.open(false));
}

void CloseProtocolTest::boxThatCannotBeLetGo()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const quint32 handle = manager.boxHandle();
    refuseClose = true;
    tell(manager, CloseFile, box.path());
    QCOMPARE(manager.boxHandle(), handle);
    QVERIFY(privateOf(manager).waitingOpenAgain);
    refuseClose = false;
    tell(manager, OpenFile, box.path());
    QVERIFY(!privateOf(manager).waitingOpenAgain);
    QVERIFY(addCard(manager, QStringLiteral("a")) != 0);
    Traffic traffic;
    refuseClose = true;
    tell(manager, CloseFile, box.path());
    refuseClose = false;
    QVERIFY(manager.close());
    QVERIFY(traffic.messages().isEmpty()); // who asked for the box sends the openFile
}

void CloseProtocolTest::destructionWhileWaitingIsSilent()
{
    const TestBox box;
    auto manager = std::make_unique<KyPDataManager>(box.path().constData(), nullptr, false);
    tell(*manager, CloseFile, box.path());
    Traffic traffic;
    manager.reset();
    QVERIFY(traffic.messages().isEmpty());
}

void CloseProtocolTest::requestInsideAnEdit()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card));
    QVERIFY(manager.writeItem("TITL", "before"));
    tell(manager, CloseFile, box.path());
    QVERIFY(privateOf(manager).editing);
    QVERIFY(!manager.writeItem("NUMB", static_cast<unsigned char>(1)));
    {
        KyPDataManager other(box.path().constData(), nullptr, false);
        QVERIFY(other.isOpened());
        QCOMPARE(other.readItem("TITL", card), QStringLiteral("a"));
    }
    tell(manager, OpenFile, box.path());
    QVERIFY(manager.writeItem("NUMB", static_cast<unsigned char>(2)));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("before"));
    QCOMPARE(manager.readUcharItem("NUMB", card), 2);
    QCOMPARE(manager.count(), 1);
}

void CloseProtocolTest::deletionDuringTheAttempts()
{
    const TestBox box;
    const QPointer<KyPDataManager> manager = new KyPDataManager(box.path().constData(), nullptr, false);
    QVERIFY(manager->close());
    Traffic traffic;
    refuseOpen = true;
    QTimer::singleShot(0, this, [&manager] { delete manager; });
    QVERIFY(!manager->open(false));
    QVERIFY(!manager);
    QVERIFY(traffic.messages().isEmpty()); // nobody is there who would give the box back
}

void CloseProtocolTest::deletionDuringTheReopen()
{
    const TestBox box;
    const QPointer<KyPDataManager> manager = new KyPDataManager(box.path().constData(), nullptr, false);
    tell(*manager, CloseFile, box.path());
    refuseOpen = true;
    QCopChannel::send("QPE/System", OpenFile, argumentsOf(box.path(), "other"));
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&manager] {
        if (openAttempts > 1)
            delete manager;
    });
    openAttempts = 0;
    watch.start(0);
    QTRY_VERIFY_WITH_TIMEOUT(!manager, 10000);
    Traffic traffic; // the channel it came over is gone, others work
    QVERIFY(traffic.messages().isEmpty());
}

void CloseProtocolTest::openInsideOpen()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.close());
    Traffic traffic;
    refuseOpen = true;
    bool inner = false;
    QTimer::singleShot(0, this, [&] {
        refuseOpen = false;
        inner = manager.open(false);
    });
    QVERIFY(manager.open(false));
    QVERIFY(inner);
    QVERIFY(manager.isOpened());
    QCOMPARE(traffic.messages().size(), 1);
    QVERIFY(addCard(manager, QStringLiteral("a")) != 0);
}

void CloseProtocolTest::messagesDuringTheAttempts()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(manager.close());
    refuseOpen = true;
    QTimer::singleShot(0, this, [&] {
        tell(manager, CloseFile, box.path()); // it has nothing to let go of
        tell(manager, OpenFile, box.path());
        refuseOpen = false;
    });
    QVERIFY(manager.open(false));
    QVERIFY(!privateOf(manager).waitingOpenAgain);
}

void CloseProtocolTest::managersOfOneBox()
{
    const TestBox box;
    KyPDataManager first(box.path().constData(), nullptr, false);
    KyPDataManager second(box.path().constData(), nullptr, false);
    QVERIFY(!second.isOpened());
    Traffic().messages(); // its request is out, and comes from the same application
    QVERIFY(first.isOpened());
    QVERIFY(addCard(first, QStringLiteral("a")) != 0);
    QVERIFY(first.close());
    QVERIFY(second.open(false));
    QVERIFY(!first.open(false));
    QVERIFY(addCard(second, QStringLiteral("b")) != 0);
    QVERIFY(second.close());
    QVERIFY(first.open(false));
    QCOMPARE(first.count(), 2);
}

void CloseProtocolTest::editsInTwoBoxesAtOnce()
{
    const TestBox one, other;
    KyPDataManager first(one.path().constData(), nullptr, false);
    KyPDataManager second(other.path().constData(), nullptr, false);
    unsigned long firstCard = 0, secondCard = 0;
    QVERIFY(first.editNewCard() && second.editNewCard());
    QVERIFY(first.writeItem("TITL", "one") && second.writeItem("TITL", "other"));
    QVERIFY(first.finishEditCard(&firstCard) && second.finishEditCard(&secondCard));
    QCOMPARE(first.readItem("TITL", firstCard), QStringLiteral("one"));
    QCOMPARE(second.readItem("TITL", secondCard), QStringLiteral("other"));
}

void CloseProtocolTest::editsOfTwoManagersOfOneBox()
{
    const TestBox box;
    KyPDataManager first(box.path().constData(), nullptr, false);
    unsigned long one = addCard(first, QStringLiteral("a")), other = addCard(first, QStringLiteral("b"));
    QVERIFY(first.startEditCard(one) && first.writeItem("TITL", "a edited"));
    tell(first, CloseFile, box.path());
    KyPDataManager second(box.path().constData(), nullptr, false);
    QVERIFY(second.startEditCard(other) && second.writeItem("TITL", "b edited"));
    tell(second, CloseFile, box.path());
    tell(first, OpenFile, box.path());
    QVERIFY(first.finishEditCard(&one));
    QVERIFY(first.close());
    tell(second, OpenFile, box.path());
    QVERIFY(second.finishEditCard(&other));
    QCOMPARE(second.readItem("TITL", one), QStringLiteral("a edited"));
    QCOMPARE(second.readItem("TITL", other), QStringLiteral("b edited"));
    QCOMPARE(second.count(), 2);
}

void CloseProtocolTest::abandonedEditLeavesNothing()
{
    const TestBox box;
    KyPDataManager keeper(box.path().constData(), nullptr, false);
    unsigned long card = addCard(keeper, QStringLiteral("a"));
    QVERIFY(keeper.close());
    {
        KyPDataManager abandoned(box.path().constData(), nullptr, false);
        QVERIFY(abandoned.startEditCard(card) && abandoned.writeItem("TITL", "b"));
    }
    QVERIFY(keeper.open(false));
    QCOMPARE(keeper.readItem("TITL", card), QStringLiteral("a"));
    QVERIFY(keeper.readItem("TITL", WorkCardId).isNull()); // there is none
}

void CloseProtocolTest::cancelWhileClosedLeavesNothing()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card) && manager.writeItem("TITL", "b"));
    tell(manager, CloseFile, box.path());
    const quint16 kept = privateOf(manager).keptWorkCard;
    QVERIFY(kept != 0);
    QVERIFY(manager.cancelEditCard());
    tell(manager, OpenFile, box.path());
    QCOMPARE(privateOf(manager).keptWorkCard, quint16(0));
    QVERIFY(manager.readItem("TITL", kept).isNull());
    QCOMPARE(manager.count(), 1);
    QVERIFY(manager.startEditCard(card) && manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
}

void CloseProtocolTest::editOutlastsACloseAndAFailedOne()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = addCard(manager, QStringLiteral("a"));
    QVERIFY(manager.startEditCard(card) && manager.writeItem("TITL", "b"));
    refuseClose = true;
    QVERIFY(!manager.close());
    QCOMPARE(privateOf(manager).keptWorkCard, quint16(0));
    refuseClose = false;
    QVERIFY(manager.close());
    QVERIFY(!manager.finishEditCard(&card));
    QVERIFY(manager.open(false));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("b"));
}

void CloseProtocolTest::editOutlastsAReopenThatFails()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(manager.editNewCard() && manager.writeItem("TITL", "a"));
    tell(manager, CloseFile, box.path());
    refuseOpen = true;
    tell(manager, OpenFile, box.path());
    QVERIFY(!manager.isOpened());
    QVERIFY(!manager.finishEditCard(&card));
    refuseOpen = false;
    QVERIFY(manager.open(false));
    QVERIFY(manager.finishEditCard(&card));
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
    QCOMPARE(manager.count(), 1);
}

void CloseProtocolTest::onlyOneOfTwoWaitingManagersReopens()
{
    const TestBox box;
    KyPDataManager first(box.path().constData(), nullptr, false);
    tell(first, CloseFile, box.path());
    KyPDataManager second(box.path().constData(), nullptr, false);
    tell(second, CloseFile, box.path());
    tell(first, OpenFile, box.path());
    tell(second, OpenFile, box.path());
    QVERIFY(first.isOpened());
    QVERIFY(!second.isOpened());
    QVERIFY(!privateOf(second).waitingOpenAgain);
}

void CloseProtocolTest::stormOfMessages()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, QStringLiteral("a"));
    for (int i = 0; i < 300; ++i) {
        QCopChannel::send("QPE/System", CloseFile, argumentsOf(box.path(), "other"));
        QCopChannel::send("QPE/System", "volumeChange(bool)", QByteArray(1, char(i)));
        QCopChannel::send("QPE/System", OpenFile, argumentsOf(i % 2 ? QByteArray() : box.path(), "other"));
    }
    Traffic().messages(); // all have been dealt with
    QVERIFY(manager.isOpened());
    QVERIFY(!privateOf(manager).waitingOpenAgain);
    QCOMPARE(manager.readItem("TITL", card), QStringLiteral("a"));
}

void CloseProtocolTest::messagesCutShort()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const QByteArray whole = argumentsOf(box.path(), "other"), forAll = argumentsOf("", "other");
    for (const QByteArray &data : {whole, forAll}) {
        for (qsizetype length = 0; length < data.size(); ++length)
            manager.systemMessage(CloseFile, data.first(length));
    }
    QVERIFY(manager.isOpened());
    manager.systemMessage(CloseFile, forAll);
    QVERIFY(!manager.isOpened());
    for (qsizetype length = 0; length < forAll.size(); ++length)
        manager.systemMessage(OpenFile, forAll.first(length));
    QVERIFY(privateOf(manager).waitingOpenAgain);
    manager.systemMessage(OpenFile, forAll);
    QVERIFY(manager.isOpened());
}

void CloseProtocolTest::boxPassesBetweenProcesses()
{
    const TestBox box;
    {
        KyPDataManager maker(box.path().constData(), nullptr, false);
        for (const char *title : {"a", "b", "c"})
            addCard(maker, QString::fromLatin1(title));
    }
    ChildProcess child({"hold", box.path(), "holder"});
    QCOMPARE(child.readLine(), "open");
    child.write("turn");
    QCOMPARE(child.readLine(), "b descending");

    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(!manager.isOpened()); // the request leaves only now
    child.write("await closed");
    QCOMPARE(child.readLine(), "closed");
    QVERIFY(manager.open(false));
    KyPDataManager mine(box.path().constData(), nullptr,
                        true); // has the index table that the first one lacks
    const unsigned long second = mine.nextCard(mine.firstCard());
    unsigned long card = second;
    QVERIFY(manager.startEditCard(second));
    QVERIFY(manager.writeItem("TITL", "b of another"));
    QVERIFY(manager.finishEditCard(&card));
    QVERIFY(addCard(manager, QStringLiteral("d")) != 0);
    QVERIFY(manager.close());

    child.write("await open");
    QCOMPARE(child.readLine(), "open");
    child.write("show");
    QCOMPARE(child.readLine(), "b of another descending 4 d");
    QCOMPARE(child.finish(), 0);
    QCOMPARE(mine.readItem("TITL", second), QStringLiteral("b of another"));
}

void CloseProtocolTest::editOutlastsTheLoan()
{
    const TestBox box;
    unsigned long edited = 0;
    {
        KyPDataManager maker(box.path().constData(), nullptr, false);
        addCard(maker, QStringLiteral("a"));
        edited = addCard(maker, QStringLiteral("b"));
    }
    ChildProcess child({"hold", box.path(), "holder"});
    QCOMPARE(child.readLine(), "open");
    child.write("turn");
    QCOMPARE(child.readLine(), "b descending");
    child.write("begin edit");
    QCOMPARE(child.readLine(), "begun");

    KyPDataManager manager(box.path().constData(), nullptr, false);
    child.write("await closed");
    QCOMPARE(child.readLine(), "closed");
    QVERIFY(manager.open(false));
    QCOMPARE(manager.readItem("TITL", edited), QStringLiteral("b"));
    QVERIFY(addCard(manager, QStringLiteral("c")) != 0); // with a work card of its own
    QVERIFY(manager.close());

    child.write("await open");
    QCOMPARE(child.readLine(), "open");
    child.write("end edit");
    QCOMPARE(child.readLine(), "ended");
    QCOMPARE(child.finish(), 0);
    const KyPDataManager mine(box.path().constData(), nullptr, true);
    QCOMPARE(mine.readItem("TITL", edited), QStringLiteral("edited by the holder"));
    QCOMPARE(mine.count(), 3);
}

void CloseProtocolTest::processOfTheSameNameKeepsTheBox()
{
    const TestBox box;
    ChildProcess child({"hold", box.path(), ownName()});
    QCOMPARE(child.readLine(), "open");
    KyPDataManager manager(box.path().constData(), nullptr, false);
    QVERIFY(!manager.isOpened());
    Traffic().messages(); // the request is out
    child.write("ask");
    QCOMPARE(child.readLine(), "open");
    QVERIFY(!manager.open(false));
    QCOMPARE(child.finish(), 0);
    QVERIFY(manager.open(false));
}

void CloseProtocolTest::managerWithoutAnApplication()
{
    const TestBox box;
    Traffic traffic;
    ChildProcess child({"alone", box.path()});
    QCOMPARE(child.readLine(), "opened 1 added 1 edited 1 closed 1");
    QCOMPARE(child.finish(), 0);
    QVERIFY(traffic.messages().isEmpty());
}

namespace {

/** Opens the box and obeys lines of the test. */
int holdBox(int argc, char **argv)
{
    QPEApplication application(argc, argv, argv[3]);
    KyPDataManager manager(argv[2], nullptr, false);
    const auto state = [&manager] { return QByteArray(manager.isOpened() ? "open" : "closed"); };
    const auto view = [&manager] {
        return manager.readItem("TITL").toUtf8() + (manager.ascendent() ? " ascending" : " descending");
    };
    const ChildInput input([&](const QByteArray &line) {
        if (line == "turn") {
            manager.first();
            manager.next();
            privateOf(manager).ascendent = false;
            ChildProcess::say(view());
        } else if (line.startsWith("await ")) {
            (void)QTest::qWaitFor([&] { return state() == line.mid(6); });
            ChildProcess::say(state());
        } else if (line == "show") {
            ChildProcess::say(view() + ' ' + QByteArray::number(manager.count()) + ' ' +
                              manager.readItem("TITL", manager.firstCard()).toUtf8());
        } else if (line == "begin edit") {
            const bool begun =
                manager.startEditCard(manager.cardId()) && manager.writeItem("TITL", "edited by the holder");
            ChildProcess::say(begun ? "begun" : "refused");
        } else if (line == "end edit") {
            unsigned long card = manager.cardId();
            ChildProcess::say(manager.finishEditCard(&card) ? "ended" : "refused");
        } else {
            QTest::qWait(200);
            ChildProcess::say(state());
        }
    });
    ChildProcess::say(state());
    return application.exec();
}

/** An edit that goes on behind a close, in which another manager has its own. */
bool editAcrossClose(KyPDataManager &manager, const char *box)
{
    bool works = manager.editNewCard() && manager.writeItem("TITL", "b") && manager.close();
    works = works && addCard(*std::make_unique<KyPDataManager>(box, nullptr, false), "c") != 0;
    unsigned long card = 0;
    return works && manager.open(false) && manager.finishEditCard(&card) &&
           manager.readItem("TITL", card) == "b";
}

int useBoxAlone(const char *box)
{
    KyPDataManager manager(box, nullptr, false);
    const bool opened = manager.isOpened();
    const bool added = addCard(manager, QStringLiteral("a")) != 0;
    const bool edited = editAcrossClose(manager, box);
    manager.systemMessage(CloseFile, argumentsOf(box, "other"));
    const bool closed = manager.close();
    ChildProcess::say(QStringLiteral("opened %1 added %2 edited %3 closed %4")
                          .arg(opened)
                          .arg(added)
                          .arg(edited)
                          .arg(closed)
                          .toLatin1());
    return 0;
}

int childMain(int argc, char **argv)
{
    return qstrcmp(argv[1], "hold") == 0 ? holdBox(argc, argv) : useBoxAlone(argv[2]);
}

} // namespace

KY_TEST_MAIN_WITH_CHILD(CloseProtocolTest, childMain)
#include "closeprotocoltest.moc"
