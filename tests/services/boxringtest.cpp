#include "boxuser.h"
#include "platformservice.h"
#include <QSet>
#include <vector>

/** One box that many processes want, each for an edit of its own. */
class BoxRingTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { QVERIFY(m_service.isReady()); }
    void ring_data();
    void ring();
    void rivalsAllGetTheirEditsDone_data();
    void rivalsAllGetTheirEditsDone();

private:
    PlatformService m_service;
};

namespace {

constexpr int RingSize = 10;
constexpr int QuickRounds = 50;          // of the whole ring
constexpr int LongRounds = 1000;         // with the argument "long"
constexpr int RetryTime = 50;            // ms, as in the applications
constexpr unsigned long CounterCard = 1; // the first card of a box

int rounds = QuickRounds;

/** The cards of a box: the number that the first one holds and the titles of the others. */
struct Content
{
    unsigned long counter = 0;
    QStringList titles;
};

Content contentOf(const TestBox &box)
{
    const KyPDataManager manager(box.path().constData(), nullptr, true);
    Content content;
    for (unsigned long card = manager.firstCard(); card != 0; card = manager.nextCard(card)) {
        const QString title = manager.readItem("TITL", card);
        if (!manager.readUlongItem("LONG", &content.counter, card)) // only the counter has a number
            content.titles.append(title);
    }
    content.titles.sort();
    return content;
}

void makeCounter(const TestBox &box)
{
    KyPDataManager maker(box.path().constData(), nullptr, false);
    unsigned long card = 0;
    QVERIFY(maker.editNewCard() && maker.writeItem("TITL", "counter") && maker.writeItem("LONG", 0UL));
    QVERIFY(maker.finishEditCard(&card));
    QCOMPARE(card, CounterCard);
}

} // namespace

void BoxRingTest::ring_data()
{
    QTest::addColumn<bool>("closes");
    QTest::addColumn<int>("rounds");
    QTest::newRow("each keeps the box until the next one asks") << false << rounds;
    QTest::newRow("each closes the box, and all that wait wake up") << true << rounds / 10;
}

void BoxRingTest::ring()
{
    QFETCH(bool, closes);
    QFETCH(int, rounds);
    const TestBox box;
    makeCounter(box);
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (int i = 0; i < RingSize; ++i) {
        const QString name = "ring" + QString::number(i);
        processes.push_back(std::make_unique<ChildProcess>(QStringList{"pass", box.path(), name}));
    }
    QStringList expected;
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < RingSize; ++i) {
            const QByteArray title = QByteArray::number(i) + '-' + QByteArray::number(round);
            processes[size_t(i)]->write((closes ? "close " : "keep ") + title);
            QCOMPARE(processes[size_t(i)]->readLine(60000), title);
            expected.append(QString::fromLatin1(title));
        }
    }
    processes.clear();
    const Content content = contentOf(box);
    QCOMPARE(content.counter, static_cast<unsigned long>(expected.size()));
    expected.sort();
    QCOMPARE(content.titles, expected);
}

void BoxRingTest::rivalsAllGetTheirEditsDone_data()
{
    QTest::addColumn<int>("processes");
    QTest::addColumn<int>("edits");
    QTest::newRow("two processes") << 2 << 20;
    QTest::newRow("three processes") << 3 << 20;
    QTest::newRow("eight processes") << 8 << 5;
}

void BoxRingTest::rivalsAllGetTheirEditsDone()
{
    QFETCH(int, processes);
    QFETCH(int, edits);
    const TestBox box;
    makeCounter(box);
    std::vector<std::unique_ptr<ChildProcess>> rivals;
    for (int i = 0; i < processes; ++i) {
        const QString name = "rival" + QString::number(i);
        rivals.push_back(std::make_unique<ChildProcess>(QStringList{"rival", box.path(), name}));
    }
    for (const auto &rival : rivals)
        QCOMPARE(rival->readLine(), "ready");
    for (const auto &rival : rivals)
        rival->write(QByteArray::number(edits));
    for (const auto &rival : rivals)
        QCOMPARE(rival->readLine(60000), "done");
    rivals.clear();
    const Content content = contentOf(box);
    QCOMPARE(content.counter, static_cast<unsigned long>(processes * edits));
    QCOMPARE(content.titles.size(), processes * edits);
    QCOMPARE(QSet<QString>(content.titles.cbegin(), content.titles.cend()).size(), processes * edits);
}

namespace {

/**
 * An application that has one edit after the other to make, and uses the box as a page does: when it has not
 * got it, it tries again from a timer with a new manager, and what it edits, it edits at once.
 */
class EditingPage
{
public:
    EditingPage(const char *box, int retryTime) : m_box(box)
    {
        m_retry.setSingleShot(true);
        m_retry.setInterval(retryTime);
        QObject::connect(&m_retry, &QTimer::timeout, &m_retry, [this] { tryEdit(); });
    }

    /** Makes an edit as soon as the box can be had, and calls @p done. */
    void edit(const QByteArray &title, const std::function<void()> &done)
    {
        m_title = title;
        m_done = done;
        m_isCounted = false;
        tryEdit();
    }
    void close() { m_manager->close(); }

private:
    void tryEdit()
    {
        if (!m_manager || !m_manager->isOpened()) {
            m_manager.reset();
            m_manager = std::make_unique<KyPDataManager>(m_box.constData(), nullptr, false);
        }
        if (isWritten())
            m_done();
        else
            m_retry.start();
    }

    /** The two edits that belong together, each made once: the box may be lost in between. */
    [[nodiscard]] bool isWritten()
    {
        m_isCounted = m_isCounted || countUp();
        return m_isCounted && addCard(*m_manager, QString::fromLatin1(m_title)) != 0;
    }

    [[nodiscard]] bool countUp()
    {
        unsigned long card = CounterCard, number = 0;
        return m_manager->readUlongItem("LONG", &number, card) && m_manager->startEditCard(card) &&
               m_manager->writeItem("LONG", number + 1) && m_manager->finishEditCard(&card);
    }

    const QByteArray m_box;
    QTimer m_retry;
    QByteArray m_title;
    bool m_isCounted = false;
    std::function<void()> m_done;
    std::unique_ptr<KyPDataManager> m_manager;
};

/** "keep TITLE", "close TITLE": makes one edit and answers the title. */
int passOn(const QPEApplication &application, const char *box)
{
    EditingPage page(box, 2);
    const ChildInput input([&page](const QByteArray &line) {
        const QByteArray title = line.mid(line.indexOf(' ') + 1);
        page.edit(title, [&page, title, closes = line.startsWith("close ")] {
            if (closes)
                page.close();
            ChildProcess::say(title);
        });
    });
    return application.exec();
}

/** A number: makes so many edits, each in an event of its own. */
int compete(const QPEApplication &application, const char *box)
{
    EditingPage page(box, RetryTime);
    int left = 0;
    std::function<void()> next = [&] {
        if (left == 0) {
            ChildProcess::say("done");
            return;
        }
        const QByteArray title = application.name() + '-' + QByteArray::number(left);
        page.edit(title, [&] {
            --left;
            QTimer::singleShot(0, qApp, next);
        });
    };
    const ChildInput input([&](const QByteArray &line) {
        left = line.toInt();
        next();
    });
    ChildProcess::say("ready");
    return application.exec();
}

int childMain(int argc, char **argv)
{
    const QPEApplication application(argc, argv, argv[3]);
    return qstrcmp(argv[1], "pass") == 0 ? passOn(application, argv[2]) : compete(application, argv[2]);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--child") == 0) {
        argv[1] = argv[0];
        return childMain(argc - 1, argv + 1);
    }
    QApplication application(argc, argv);
    const bool isLong = argc > 1 && qstrcmp(argv[1], "long") == 0;
    if (isLong) {
        rounds = LongRounds;
        argv[1] = argv[0];
        --argc;
        ++argv;
    }
    BoxRingTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "boxringtest.moc"
