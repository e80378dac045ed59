#include "childprocess.h"
#include "logcapture.h"
#include "mounts.h"
#include "viewfixture.h"
#include <QDir>

namespace {

bool canMount = false;

QByteArray boxPath()
{
    return QFile::encodeName(QDir::homePath()) + "/volume/RO.BOX";
}

bool addRecord(KyPDataManager &manager, const QString &title, unsigned char number, const char *categories)
{
    unsigned long card = 0;
    return manager.editNewCard() && manager.writeItem("TITL", title) && manager.writeItem("NUMB", number) &&
           manager.writeItem("CTGR", categories, strlen(categories)) && manager.finishEditCard(&card);
}

/** Makes a box of three cards with an index by number and one of category 5, and ends, so that nothing of it
 * is in the memory of the test. */
int childMain(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    KyPDataManagerItemInfo items;
    items.addTextItem("TITL", QStringLiteral("title"));
    items.addUcharItem("NUMB", QStringLiteral("number"));
    items.addUcharItem("RANK", QStringLiteral("rank"));
    items.addCategoryItem();
    KyPDataManagerSortKey order;
    order.addSortKey("TITL", true, true);
    KyPDataManager::createFile(boxPath().constData(), boxPath().replace(".BOX", ".IDX").constData(),
                               TestBox::ApplicationId, false, items, order, KyPDataManagerIndexInfo());
    KyPDataManager manager(boxPath().constData(), nullptr, false);
    const bool isMade = addRecord(manager, "a", 3, "\5") && addRecord(manager, "b", 2, "") &&
                        addRecord(manager, "c", 1, "\5") && manager.sort("NUMB", true) &&
                        manager.sort("TITL", true) && manager.enableFilter(5);
    return isMade ? 0 : 1;
}

/** The folder of the box as a volume that nobody may write to. */
class ReadOnlyVolume
{
public:
    ReadOnlyVolume()
        : m_folder(QFile::encodeName(QDir::homePath()) + "/volume"),
          m_isMounted(
              mount(m_folder.constData(), m_folder.constData(), nullptr, MS_BIND, nullptr) == 0 &&
              mount(nullptr, m_folder.constData(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0)
    {
    }
    ~ReadOnlyVolume() { umount2(m_folder.constData(), MNT_DETACH); }
    Q_DISABLE_COPY_MOVE(ReadOnlyVolume)

    [[nodiscard]] bool isMounted() const { return m_isMounted; }

private:
    const QByteArray m_folder;
    const bool m_isMounted;
};

QString titlesOf(const KyPDataManager &manager)
{
    QString titles;
    for (unsigned long card = manager.firstCard(); card; card = manager.nextCard(card))
        titles += manager.readItem("TITL", card);
    return titles;
}

int rowsOf(KyPDataManager &manager)
{
    const auto &rows = privateOf(manager).indexes;
    return int(std::count_if(std::begin(rows), std::end(rows), [](const auto &row) { return row.inUse; }));
}

} // namespace

class ReadOnlyVolumeTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void boxIsShown();
    void ordersThatAreThereAreShown();
    void newOrderIsRefused();
    void categoryThatIsThereIsShown();
    void categoryKeepsItsOrder();
    void newViewIsRefused();
    void nothingIsChanged();
    void writingIsRefused();

private:
    std::unique_ptr<ReadOnlyVolume> m_volume;
    std::unique_ptr<KyPDataManager> m_manager;
};

void ReadOnlyVolumeTest::initTestCase()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    QVERIFY(QDir::home().mkpath("volume"));
    ChildProcess maker(QStringList{});
    QCOMPARE(maker.finish(), 0);
    m_volume = std::make_unique<ReadOnlyVolume>();
    QVERIFY(m_volume->isMounted());
    QVERIFY(!QFile(QDir::homePath() + "/volume/new").open(QIODevice::WriteOnly));
}

void ReadOnlyVolumeTest::init()
{
    m_manager.reset();
    m_manager = std::make_unique<KyPDataManager>(boxPath().constData(), nullptr, true);
    QVERIFY(m_manager->isOpened());
    QCOMPARE(rowsOf(*m_manager), 3);
}

void ReadOnlyVolumeTest::boxIsShown()
{
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("abc"));
    m_manager->sort(false);
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("cba"));
    unsigned long card = 0;
    QVERIFY(m_manager->search(&card, QStringLiteral("b"), "TITL", 0x92, true));
    QCOMPARE(m_manager->readItem("TITL", card), QStringLiteral("b"));
}

void ReadOnlyVolumeTest::ordersThatAreThereAreShown()
{
    QVERIFY(m_manager->sort("NUMB", true));
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("cba"));
    QVERIFY(m_manager->sort("NUMB", false));
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("abc"));
    QVERIFY(m_manager->sort("TITL", false));
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("cba"));
}

void ReadOnlyVolumeTest::newOrderIsRefused()
{
    LogCapture log;
    QVERIFY(!m_manager->sort("RANK", false));
    QCOMPARE(int(privateOf(*m_manager).lastError), int(PdtmReadOnly));
    const QByteArray expression = plainKey("RANK").chopped(1) + plainKey("NUMB");
    QVERIFY(!m_manager->sort(expression.constData(), int(expression.size()), false));
    QVERIFY(log.lines().isEmpty());
    QVERIFY(m_manager->ascendent());
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("abc"));
    QCOMPARE(rowsOf(*m_manager), 3);
}

void ReadOnlyVolumeTest::categoryThatIsThereIsShown()
{
    QVERIFY(m_manager->enableFilter(5));
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("ac"));
    QVERIFY(m_manager->sort("TITL", false));
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("ca"));
    QVERIFY(m_manager->disableFilter(false));
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("cba"));
}

void ReadOnlyVolumeTest::categoryKeepsItsOrder()
{
    QVERIFY(m_manager->enableFilter(5));
    LogCapture log;
    QVERIFY(!m_manager->sort("NUMB", true));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("index infowrite error 49")});
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("ac"));
    QCOMPARE(m_manager->sortItem(), m_manager->nameToItemId("TITL"));
    QVERIFY(m_manager->disableFilter(false));
    QVERIFY(m_manager->sort("NUMB", true));
    QVERIFY(!m_manager->enableFilter(5)); // its cards can't be brought into that order
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("cba"));
    QCOMPARE(rowsOf(*m_manager), 3);
}

void ReadOnlyVolumeTest::newViewIsRefused()
{
    for (const int category : {9, UnfiledCategoryId})
        QVERIFY(!m_manager->enableFilter(category));
    const QByteArray search = containsText("TITL", "a");
    for (const auto parent : {KyPDataManager::FilterCurrent, KyPDataManager::FilterMaster})
        QVERIFY(!m_manager->filter(search.constData(), static_cast<unsigned long>(search.size()), nullptr, 0,
                                   parent, true));
    QVERIFY(!privateOf(*m_manager).resumeIndex);
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("abc"));
    QCOMPARE(rowsOf(*m_manager), 3);
}

void ReadOnlyVolumeTest::nothingIsChanged()
{
    const unsigned long first = m_manager->firstCard();
    for (const auto mode :
         {KyPDataManager::DeleteSingle, KyPDataManager::DeleteVisible, KyPDataManager::DeleteAll}) {
        unsigned long card = first;
        QVERIFY(!m_manager->deleteCard(&card, mode));
        QCOMPARE(card, first);
    }
    QVERIFY(!m_manager->addCardToCtgr(first, 9, KyPDataManager::DeleteSingle, false));
    QVERIFY(!m_manager->removeCardFromCtgr(first, 5, KyPDataManager::DeleteSingle, false));
    QVERIFY(!m_manager->updateCategories(first, {9}, KyPDataManager::DeleteSingle, false));
    QVERIFY(!m_manager->startEditCard(first));
    QVERIFY(!m_manager->categoryRemoved(9));
    QCOMPARE(m_manager->readCategories(first), QList<int>{5});
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("abc"));
    QVERIFY(m_manager->enableFilter(5));
    QCOMPARE(titlesOf(*m_manager), QStringLiteral("ac"));
}

void ReadOnlyVolumeTest::writingIsRefused()
{
    m_manager.reset();
    const KyPDataManager manager(boxPath().constData(), nullptr, false);
    QVERIFY(!manager.isOpened());
}

int main(int argc, char **argv)
{
    if (argc > 1 && qstrcmp(argv[1], "--child") == 0)
        return childMain(argc, argv);
    canMount = enterMountNamespace();
    QApplication application(argc, argv);
    ReadOnlyVolumeTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "readonlyvolumetest.moc"
