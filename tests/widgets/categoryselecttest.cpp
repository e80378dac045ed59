#include "channellistener.h"
#include "editdialogrobot.h"
#include "kycategorycombo.h"
#include "kycategoryselect.h"
#include "messagerobot.h"
#include "qcopenvelope.h"
#include "resource.h"
#include "tablefixture.h"
#include <memory>
#include <QAbstractItemView>
#include <QLayout>
#include <QSignalSpy>
#include <QToolButton>

namespace {

constexpr auto Application = "addressbook";

KyCategoryCombo *comboOf(const QWidget &select)
{
    return select.findChild<KyCategoryCombo *>();
}

QToolButton *buttonOf(const QWidget &select)
{
    return select.findChild<QToolButton *>();
}

QStringList rowsOf(const QWidget &select)
{
    const KyCategoryCombo *combo = comboOf(select);
    QStringList rows;
    for (int row = 0; row < combo->count(); ++row)
        rows.append(combo->itemText(row));
    return rows;
}

/** Chooses a row as a user does, who goes there from the first one. */
void choose(const QWidget &select, int row)
{
    KyCategoryCombo *combo = comboOf(select);
    combo->setCurrentIndex(row ? row - 1 : 1);
    QTest::keyClick(combo, row ? Qt::Key_Down : Qt::Key_Up);
}

bool isMarked()
{
    return QFile::exists(categoryEdittingFileName());
}

/** The applications that `categoryChange(QString)` has named. */
QStringList changesIn(ChannelListener &listener)
{
    QStringList applications;
    for (const auto &[message, data] : listener.take()) {
        if (message != "categoryChange(QString)")
            continue;
        QString application;
        QCopArguments arguments(data);
        arguments >> application;
        applications.append(application);
    }
    return applications;
}

QImage pixels(const QPixmap &picture)
{
    return picture.toImage().convertToFormat(QImage::Format_ARGB32);
}

} // namespace

class CategorySelectTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void plainSelectHasNothing();
    void takesName();
    void formsWithCategories();

    // layout
    void buttonLooks_data();
    void buttonLooks();
    void comboAndButtonFillTheWidget();
    void setFixedWidth_data() { buttonLooks_data(); }
    void setFixedWidth();
    void setFixedWidthOfNothing();
    void removedButton();

    // categories
    void setCategoriesTellsThoseThatExist();
    void setCategoriesOfNothing();
    void setCategoriesOfAHugeList();
    void currentCategory();
    void categoryOfTheRecordKeepsItsList();
    void otherCategoryReplacesTheList();
    void unfiledIsAListOfItsOwn();
    void choiceIsTold();
    void sameRowAgain();
    void programIsSilent();

    // "All"
    void allGivesMinusOne();
    void allTwiceIsOneRow();
    void allChosenEmptiesTheList();
    void allStaysWithEachFilling();
    void allWithoutCategories();
    void allOffRemovesOnlyThatRow();
    void allOffSelectsTheRecordsCategory();
    void allOffKeepsAnotherSelection();

    // the dialog
    void markerFile();
    void dialogShowsTheRecord();
    void dialogIsMaximized();
    void markerIsThereDuringTheDialog_data();
    void markerIsThereDuringTheDialog();
    void acceptedListIsTaken();
    void acceptedWithNothingChecked();
    void acceptedWhileTheTableIsKept();
    void acceptedWithoutChangeIsSilent();
    void acceptedWithAnotherListOfTheSameFirst();
    void acceptedKeepsAllWhereNothingIsChecked();
    void acceptedLeavesAllWhereSomethingIsChecked();
    void cancelledKeepsTheList();
    void cancelledShowsNewNames();
    void cancelledTellsOthersOfNewNames();
    void cancelledWithoutChangeTellsNobody();
    void cancelledWithTheSelectedCategoryGone();
    void cancelledWithAnotherCategoryGone();
    void cancelledKeepsAll();
    void cancelledKeepsUnfiled();
    void markerIsGoneWhenTheChangeIsTold();
    void markerOfAnotherIsTold();
    void markerThatCannotBeMade();
    void selectDeletedDuringTheDialog();
    void selectDeletedByTheChange();
    void dialogAgain();

    // mouse and keyboard
    void buttonByTabAndSpace();
    void buttonByMouse();
    void escapeClosesTheDialog();
    void rowByKeyboard();

private:
    int m_work = 0, m_home = 0, m_club = 0; // ids; in the order of the rows: club, home, work
    QByteArray m_folder;
};

void CategorySelectTest::initTestCase()
{
    m_folder = qgetenv("HOME");
}

void CategorySelectTest::init()
{
    QVERIFY(makeTable({{"work", &m_work}, {"club", &m_club}, {"home", &m_home}}));
}

void CategorySelectTest::cleanup()
{
    qputenv("HOME", m_folder);
    qputenv("KY_DPI", "72");
    QFile::remove(categoryEdittingFileName());
}

void CategorySelectTest::plainSelectHasNothing()
{
    const KyCategorySelect select;
    QCOMPARE(comboOf(select)->count(), 0);
    QCOMPARE(select.currentCategory(), -2);
    QCOMPARE(select.currentCategories(), QList<int>());
}

void CategorySelectTest::takesName()
{
    QWidget parent;
    const KyCategorySelect plain(&parent, "plain");
    const KyCategorySelect two({}, Application, &parent, "two");
    const KyCategorySelect three({}, Application, "Addresses", &parent, "three");
    QCOMPARE(plain.objectName(), "plain");
    QCOMPARE(two.objectName(), "two");
    QCOMPARE(three.objectName(), "three");
    for (const KyCategorySelect *select : {&plain, &two, &three})
        QCOMPARE(select->parentWidget(), &parent);
}

void CategorySelectTest::formsWithCategories()
{
    const KyCategorySelect two({m_home, 99}, Application);
    const KyCategorySelect three({m_home, 99}, Application, "Addresses");
    for (const KyCategorySelect *select : {&two, &three}) {
        QCOMPARE(rowsOf(*select), (QStringList{"club", "home", "work", "Unfiled"}));
        QCOMPARE(select->currentCategory(), m_home);
        QCOMPARE(select->currentCategories(), QList<int>{m_home});
    }
}

void CategorySelectTest::buttonLooks_data()
{
    QTest::addColumn<QByteArray>("dpi");
    QTest::addColumn<int>("scale");
    QTest::newRow("scale 1") << QByteArray("72") << 1;
    QTest::newRow("scale 2") << QByteArray("144") << 2;
}

void CategorySelectTest::buttonLooks()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    const KyCategorySelect select;
    const QToolButton *button = buttonOf(select);
    QCOMPARE(button->minimumSize(), QSize(20, 20) * scale);
    QCOMPARE(button->maximumSize(), QSize(20, 20) * scale);
    QVERIFY(!button->autoRaise());
    const QPixmap picture = Resource::loadPixmap("category");
    QVERIFY(!picture.isNull());
    QCOMPARE(button->iconSize(), picture.size());
    QCOMPARE(pixels(button->icon().pixmap(picture.size())), pixels(picture));
    QCOMPARE(button->toolTip(), "Edit Categories");
    QCOMPARE(button->accessibleName(), "Edit Categories");
}

void CategorySelectTest::comboAndButtonFillTheWidget()
{
    KyCategorySelect select({}, Application);
    select.resize(200, 30);
    select.layout()->activate();
    QCOMPARE(comboOf(select)->x(), 0);
    QCOMPARE(comboOf(select)->width(), 180);
    QCOMPARE(buttonOf(select)->x(), 180);
    QCOMPARE(select.minimumSizeHint().width(), comboOf(select)->minimumSizeHint().width() + 20);
}

void CategorySelectTest::setFixedWidth()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    KyCategorySelect select({}, Application);
    select.setFixedWidth(150);
    QCOMPARE(comboOf(select)->minimumWidth(), 150 - 20 * scale);
    QCOMPARE(comboOf(select)->maximumWidth(), 150 - 20 * scale);
    select.setRemoveCategoryEdit(true);
    select.setFixedWidth(100);
    QCOMPARE(comboOf(select)->maximumWidth(), 100 - 20 * scale);
}

void CategorySelectTest::setFixedWidthOfNothing()
{
    KyCategorySelect select({}, Application);
    for (const int width : {20, 5, 0, -100}) {
        select.setFixedWidth(width);
        QCOMPARE(comboOf(select)->maximumWidth(), 0);
    }
}

void CategorySelectTest::removedButton()
{
    KyCategorySelect select({}, Application);
    select.show();
    QVERIFY(buttonOf(select)->isVisible());
    select.setRemoveCategoryEdit(true);
    QVERIFY(!buttonOf(select)->isVisible());
    QVERIFY(!buttonOf(select)->isEnabled());
    select.setRemoveCategoryEdit(false);
    QVERIFY(buttonOf(select)->isVisible());
    QVERIFY(buttonOf(select)->isEnabled());
}

void CategorySelectTest::setCategoriesTellsThoseThatExist()
{
    KyCategorySelect select;
    QVERIFY(KyCategories().removeCategory("home"));
    const QString expected = QString("%1;%2").arg(m_work).arg(m_club);
    QCOMPARE(select.setCategories({m_work, m_home, m_club, 99}, Application), expected);
    QCOMPARE(select.currentCategories(), (QList<int>{m_work, m_club}));
    QCOMPARE(rowsOf(select), (QStringList{"club (Multi.)", "work (Multi.)", "Unfiled"}));
    QCOMPARE(select.currentCategory(), m_work);
    QCOMPARE(select.setCategories({m_club}, Application, "Addresses"), QString::number(m_club));
}

void CategorySelectTest::setCategoriesOfNothing()
{
    KyCategorySelect select({m_work}, Application);
    QCOMPARE(select.setCategories({}, Application), QString());
    QCOMPARE(select.currentCategories(), QList<int>());
    QCOMPARE(select.currentCategory(), UnfiledCategoryId);
    QCOMPARE(select.setCategories({0, -1, 256 + m_work, 255}, Application), QString());
    QCOMPARE(select.currentCategory(), UnfiledCategoryId);
}

void CategorySelectTest::setCategoriesOfAHugeList()
{
    QList<int> ids(100000, 300);
    ids += QList<int>(100000, m_home);
    KyCategorySelect select;
    QCOMPARE(select.setCategories(ids, Application), QString::number(m_home));
    QCOMPARE(select.currentCategory(), m_home);
}

void CategorySelectTest::currentCategory()
{
    KyCategorySelect select({m_work, m_club}, Application);
    select.setCurrentCategory(m_club);
    QCOMPARE(select.currentCategory(), m_club);
    select.setCurrentCategory(99);
    QCOMPARE(select.currentCategory(), m_club);
    QCOMPARE(select.currentCategories(), (QList<int>{m_work, m_club}));
}

void CategorySelectTest::categoryOfTheRecordKeepsItsList()
{
    KyCategorySelect select({m_work, m_club}, Application);
    choose(select, 0);
    QCOMPARE(select.currentCategory(), m_club);
    QCOMPARE(select.currentCategories(), (QList<int>{m_work, m_club}));
}

void CategorySelectTest::otherCategoryReplacesTheList()
{
    KyCategorySelect select({m_work, m_club}, Application);
    choose(select, 1);
    QCOMPARE(select.currentCategories(), QList<int>{m_home});
    choose(select, 2);
    QCOMPARE(select.currentCategories(), QList<int>{m_work});
}

/** Callers take it for none. */
void CategorySelectTest::unfiledIsAListOfItsOwn()
{
    KyCategorySelect select({m_work, m_club}, Application);
    choose(select, 3);
    QCOMPARE(select.currentCategory(), UnfiledCategoryId);
    QCOMPARE(select.currentCategories(), QList<int>{UnfiledCategoryId});
    QCOMPARE(select.setCategories(select.currentCategories(), Application), "254");
    QCOMPARE(select.currentCategory(), UnfiledCategoryId);
}

void CategorySelectTest::choiceIsTold()
{
    KyCategorySelect select({m_work, m_club}, Application);
    select.setAllCategories(true);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    choose(select, 0);
    choose(select, 3);
    choose(select, 4);
    QCOMPARE(selections, (QList<QVariantList>{{m_club}, {UnfiledCategoryId}, {-1}}));
}

void CategorySelectTest::sameRowAgain()
{
    KyCategorySelect select({m_work, m_club}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    emit comboOf(select)->activated(2); // as a choice in the list does
    QCOMPARE(selections, QList<QVariantList>{{m_work}});
    QCOMPARE(select.currentCategories(), (QList<int>{m_work, m_club}));
}

void CategorySelectTest::programIsSilent()
{
    KyCategorySelect select;
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    select.setCategories({m_work}, Application);
    select.setCurrentCategory(m_club);
    select.setAllCategories(true);
    select.setAllCategories(false);
    select.setRemoveCategoryEdit(true);
    select.setFixedWidth(100);
    QCOMPARE(selections.count(), 0);
}

void CategorySelectTest::allGivesMinusOne()
{
    KyCategorySelect select({m_work, m_club}, Application);
    select.setAllCategories(true);
    QCOMPARE(rowsOf(select).last(), "All");
    QCOMPARE(comboOf(select)->currentText(), "All");
    QCOMPARE(select.currentCategory(), -1);
    QCOMPARE(select.currentCategories(), (QList<int>{m_work, m_club}));
}

void CategorySelectTest::allTwiceIsOneRow()
{
    KyCategorySelect select({m_work}, Application);
    select.setAllCategories(true);
    select.setCurrentCategory(m_work);
    select.setAllCategories(true);
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled", "All"}));
    QCOMPARE(select.currentCategory(), -1);
    select.setAllCategories(false);
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled"}));
}

void CategorySelectTest::allChosenEmptiesTheList()
{
    KyCategorySelect select({m_work, m_club}, Application);
    select.setAllCategories(true);
    choose(select, 4);
    QCOMPARE(select.currentCategories(), QList<int>());
}

void CategorySelectTest::allStaysWithEachFilling()
{
    KyCategorySelect select({m_work}, Application);
    select.setAllCategories(true);
    select.setCategories({m_club}, Application);
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled", "All"}));
    QCOMPARE(select.currentCategory(), m_club);
    select.setAllCategories(false);
    select.setCategories({m_club}, Application);
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled"}));
}

void CategorySelectTest::allWithoutCategories()
{
    KyCategorySelect select;
    select.setAllCategories(true);
    QCOMPARE(rowsOf(select), QStringList{"All"});
    QCOMPARE(select.currentCategory(), -1);
    select.setAllCategories(false);
    QCOMPARE(rowsOf(select), QStringList());
    QCOMPARE(select.currentCategory(), -2);
}

void CategorySelectTest::allOffRemovesOnlyThatRow()
{
    KyCategorySelect select({m_work}, Application);
    select.setAllCategories(false);
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled"}));
    select.setAllCategories(true);
    select.setAllCategories(false);
    select.setAllCategories(false);
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled"}));
}

void CategorySelectTest::allOffSelectsTheRecordsCategory()
{
    KyCategorySelect select({m_work, m_club}, Application);
    select.setAllCategories(true);
    select.setAllCategories(false);
    QCOMPARE(select.currentCategory(), m_work);
    select.setCategories({}, Application);
    select.setAllCategories(true);
    select.setAllCategories(false);
    QCOMPARE(select.currentCategory(), UnfiledCategoryId);
}

void CategorySelectTest::allOffKeepsAnotherSelection()
{
    KyCategorySelect select({m_work}, Application);
    select.setAllCategories(true);
    select.setCurrentCategory(m_club);
    select.setAllCategories(false);
    QCOMPARE(select.currentCategory(), m_club);
}

void CategorySelectTest::markerFile()
{
    QCOMPARE(categoryEdittingFileName(), QString::fromLocal8Bit(m_folder) + "/.cateditting");
    qputenv("HOME", "/some/where");
    QCOMPARE(categoryEdittingFileName(), "/some/where/.cateditting");
}

void CategorySelectTest::dialogShowsTheRecord()
{
    KyCategorySelect select({m_work, m_club}, Application);
    QStringList names, checked;
    bool hasButtons = false, isModal = false;
    const QWidget *parent = nullptr;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        names = dialog.names();
        checked = dialog.checked();
        hasButtons = dialog.button(QDialogButtonBox::Ok) && dialog.button(QDialogButtonBox::Cancel);
        isModal = dialog.widget()->isModal();
        parent = dialog.widget()->parentWidget();
        dialog.cancel();
    });
    select.slotDialog();
    QCOMPARE(robot.dialogs(), 1);
    QCOMPARE(names, (QStringList{"club", "home", "work"}));
    QCOMPARE(checked, (QStringList{"club", "work"}));
    QVERIFY(hasButtons);
    QVERIFY(isModal);
    QCOMPARE(parent, &select);
}

void CategorySelectTest::dialogIsMaximized()
{
    KyCategorySelect select({}, Application);
    bool isMaximized = false;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        isMaximized = dialog.widget()->windowState().testFlag(Qt::WindowMaximized);
        dialog.cancel();
    });
    select.slotDialog();
    QVERIFY(isMaximized);
}

void CategorySelectTest::markerIsThereDuringTheDialog_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("OK") << 0;
    QTest::newRow("Cancel") << 1;
    QTest::newRow("Escape") << 2;
    QTest::newRow("closed") << 3;
    QTest::newRow("the folder of the user is another one at the end") << 4;
}

void CategorySelectTest::markerIsThereDuringTheDialog()
{
    QFETCH(int, way);
    KyCategorySelect select({m_work}, Application);
    qint64 size = -1;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        size = isMarked() ? QFileInfo(categoryEdittingFileName()).size() : -1;
        if (way == 0)
            dialog.accept();
        else if (way == 1)
            dialog.cancel();
        else if (way == 2)
            QTest::keyClick(dialog.widget(), Qt::Key_Escape);
        else if (way == 3)
            dialog.widget()->close();
        else {
            qputenv("HOME", m_folder + "/elsewhere");
            dialog.cancel();
        }
    });
    QVERIFY(!isMarked());
    select.slotDialog();
    qputenv("HOME", m_folder);
    QCOMPARE(robot.dialogs(), 1);
    QCOMPARE(size, 0);
    QVERIFY(!isMarked());
}

void CategorySelectTest::acceptedListIsTaken()
{
    KyCategorySelect select({m_work}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("work", false);
        dialog.check("home");
        dialog.check("club");
        dialog.accept();
    });
    select.slotDialog();
    QCOMPARE(select.currentCategories(), (QList<int>{m_club, m_home}));
    QCOMPARE(rowsOf(select), (QStringList{"club (Multi.)", "home (Multi.)", "work", "Unfiled"}));
    QCOMPARE(select.currentCategory(), m_club);
    QCOMPARE(selections, QList<QVariantList>{{m_club}});
}

void CategorySelectTest::acceptedWithNothingChecked()
{
    KyCategorySelect select({m_work}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("work", false);
        dialog.accept();
    });
    select.slotDialog();
    QCOMPARE(select.currentCategories(), QList<int>());
    QCOMPARE(select.currentCategory(), UnfiledCategoryId);
    QCOMPARE(selections, QList<QVariantList>{{UnfiledCategoryId}});
}

void CategorySelectTest::acceptedWhileTheTableIsKept()
{
    KyCategorySelect select({m_work, m_home}, Application);
    uint32_t handle = 0;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        dialog.check("club");
        handle = _BoxOpenRwMode(TableBox, 0);
        dialog.accept();
    });
    select.slotDialog();
    QVERIFY(handle);
    QCOMPARE(_BoxCloseEx(handle, 1), PdtmOk);
    QCOMPARE(select.currentCategories(), (QList<int>{m_club, m_home, m_work}));
}

void CategorySelectTest::acceptedWithoutChangeIsSilent()
{
    KyCategorySelect select({m_club, m_work}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) { dialog.accept(); });
    select.slotDialog();
    QCOMPARE(robot.dialogs(), 1);
    QCOMPARE(select.currentCategories(), (QList<int>{m_club, m_work}));
    QCOMPARE(selections.count(), 0);
}

void CategorySelectTest::acceptedWithAnotherListOfTheSameFirst()
{
    KyCategorySelect select({m_club}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("work");
        dialog.accept();
    });
    select.slotDialog();
    QCOMPARE(select.currentCategories(), (QList<int>{m_club, m_work}));
    QCOMPARE(selections, QList<QVariantList>{{m_club}});
}

void CategorySelectTest::acceptedKeepsAllWhereNothingIsChecked()
{
    KyCategorySelect select({}, Application);
    select.setAllCategories(true);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) { dialog.accept(); });
    select.slotDialog();
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled", "All"}));
    QCOMPARE(select.currentCategory(), -1);
    QCOMPARE(selections.count(), 0);
}

void CategorySelectTest::acceptedLeavesAllWhereSomethingIsChecked()
{
    KyCategorySelect select({}, Application);
    select.setAllCategories(true);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("home");
        dialog.accept();
    });
    select.slotDialog();
    QCOMPARE(rowsOf(select), (QStringList{"club", "home", "work", "Unfiled", "All"}));
    QCOMPARE(select.currentCategory(), m_home);
    QCOMPARE(selections, QList<QVariantList>{{m_home}});
}

void CategorySelectTest::cancelledKeepsTheList()
{
    KyCategorySelect select({m_work, m_club}, Application);
    select.setCurrentCategory(m_club);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("home");
        dialog.check("work", false);
        dialog.cancel();
    });
    select.slotDialog();
    QCOMPARE(robot.dialogs(), 1);
    QCOMPARE(select.currentCategories(), (QList<int>{m_work, m_club}));
    QCOMPARE(select.currentCategory(), m_club);
    QCOMPARE(rowsOf(select), (QStringList{"club (Multi.)", "home", "work (Multi.)", "Unfiled"}));
    QCOMPARE(selections.count(), 0);
}

/** What is done in the dialog is done at once. */
void CategorySelectTest::cancelledShowsNewNames()
{
    KyCategorySelect select({m_work}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    KyCategories categories;
    bool isDone = false;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        isDone = categories.renameCategory("work", "bureau") && categories.addCategory("zoo");
        dialog.cancel();
    });
    select.slotDialog();
    QVERIFY(isDone);
    QCOMPARE(rowsOf(select), (QStringList{"bureau", "club", "home", "zoo", "Unfiled"}));
    QCOMPARE(select.currentCategory(), m_work);
    QCOMPARE(select.currentCategories(), QList<int>{m_work});
    QCOMPARE(selections.count(), 0);
}

void CategorySelectTest::cancelledTellsOthersOfNewNames()
{
    KyCategorySelect select({m_work}, Application);
    KyCategories categories;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        categories.addCategory("zoo");
        dialog.cancel();
    });
    ChannelListener listener("QPE/System");
    select.slotDialog();
    QCOMPARE(changesIn(listener), QStringList{Application});
}

void CategorySelectTest::cancelledWithoutChangeTellsNobody()
{
    KyCategorySelect select({m_work}, Application);
    select.setAllCategories(true);
    const EditDialogRobot robot([](const SeenDialog &dialog) { dialog.cancel(); });
    ChannelListener listener("QPE/System");
    select.slotDialog();
    QCOMPARE(changesIn(listener), QStringList());
}

void CategorySelectTest::cancelledWithTheSelectedCategoryGone()
{
    KyCategorySelect select({m_work, m_club, m_home}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    KyCategories categories;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        categories.removeCategory("work");
        dialog.cancel();
    });
    select.slotDialog();
    QCOMPARE(select.currentCategories(), (QList<int>{m_club, m_home}));
    QCOMPARE(rowsOf(select), (QStringList{"club (Multi.)", "home (Multi.)", "Unfiled"}));
    QCOMPARE(select.currentCategory(), m_club);
    QCOMPARE(selections, QList<QVariantList>{{m_club}});
}

void CategorySelectTest::cancelledWithAnotherCategoryGone()
{
    KyCategorySelect select({m_work, m_club}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    KyCategories categories;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        categories.removeCategory("club");
        dialog.cancel();
    });
    select.slotDialog();
    QCOMPARE(select.currentCategories(), QList<int>{m_work});
    QCOMPARE(rowsOf(select), (QStringList{"home", "work", "Unfiled"}));
    QCOMPARE(select.currentCategory(), m_work);
    QCOMPARE(selections.count(), 0);
}

void CategorySelectTest::cancelledKeepsAll()
{
    KyCategorySelect select({m_work}, Application);
    select.setAllCategories(true);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    KyCategories categories;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        categories.removeCategory("club");
        dialog.cancel();
    });
    select.slotDialog();
    QCOMPARE(rowsOf(select), (QStringList{"home", "work", "Unfiled", "All"}));
    QCOMPARE(select.currentCategory(), -1);
    QCOMPARE(select.currentCategories(), QList<int>{m_work});
    QCOMPARE(selections.count(), 0);
}

void CategorySelectTest::cancelledKeepsUnfiled()
{
    KyCategorySelect select({m_work}, Application);
    choose(select, 3);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    const EditDialogRobot robot([](const SeenDialog &dialog) { dialog.cancel(); });
    select.slotDialog();
    QCOMPARE(select.currentCategory(), UnfiledCategoryId);
    QCOMPARE(select.currentCategories(), QList<int>{UnfiledCategoryId});
    QCOMPARE(selections.count(), 0);
}

/** Whoever hears of it may open the dialog in turn. */
void CategorySelectTest::markerIsGoneWhenTheChangeIsTold()
{
    KyCategorySelect select({m_work}, Application);
    int told = 0;
    bool wasMarked = false;
    connect(&select, &KyCategorySelect::signalSelected, this, [&] {
        ++told;
        wasMarked = isMarked();
    });
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("club");
        dialog.accept();
    });
    select.slotDialog();
    QCOMPARE(told, 1);
    QVERIFY(!wasMarked);
}

/** A process that died leaves the marker behind: nobody can tell that from one that edits. */
void CategorySelectTest::markerOfAnotherIsTold()
{
    KyCategorySelect select({m_work}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    QFile marker(categoryEdittingFileName());
    QVERIFY(marker.open(QIODevice::WriteOnly));
    marker.close();
    const EditDialogRobot robot([](const SeenDialog &) {});
    const MessageRobot answers({QMessageBox::Ok});
    buttonOf(select)->click();
    QCOMPARE(robot.dialogs(), 0);
    QCOMPARE(answers.boxes().size(), 1);
    const MessageRobot::Box box = answers.boxes().first();
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.caption, "Error");
    QCOMPARE(box.text, "Now, other application is\nediting categories.");
    QCOMPARE(box.buttons, QMessageBox::Ok);
    QVERIFY(box.hasParent);
    QVERIFY(isMarked());
    QCOMPARE(selections.count(), 0);
}

void CategorySelectTest::markerThatCannotBeMade()
{
    KyCategorySelect select({m_work}, Application);
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    qputenv("HOME", m_folder + "/no such folder");
    const EditDialogRobot robot([](const SeenDialog &) {});
    const MessageRobot answers;
    buttonOf(select)->click();
    QCOMPARE(robot.dialogs(), 0);
    QCOMPARE(answers.boxes().size(), 0);
    QCOMPARE(selections.count(), 0);
    QCOMPARE(select.currentCategories(), QList<int>{m_work});
}

void CategorySelectTest::selectDeletedDuringTheDialog()
{
    auto window = std::make_unique<QWidget>();
    auto *select = new KyCategorySelect({m_work}, Application, window.get());
    bool wasMarked = false;
    const EditDialogRobot robot([&](const SeenDialog &) {
        wasMarked = isMarked();
        window.reset();
    });
    select->slotDialog();
    QCOMPARE(robot.dialogs(), 1);
    QVERIFY(wasMarked);
    QVERIFY(!window);
    QVERIFY(!isMarked());
    QVERIFY(!QApplication::activeModalWidget());
}

void CategorySelectTest::selectDeletedByTheChange()
{
    auto window = std::make_unique<QWidget>();
    auto *select = new KyCategorySelect({m_work}, Application, window.get());
    connect(select, &KyCategorySelect::signalSelected, this, [&] { window.reset(); });
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("club");
        dialog.accept();
    });
    select->slotDialog();
    QVERIFY(!window);
    QVERIFY(!isMarked());
}

void CategorySelectTest::dialogAgain()
{
    KyCategorySelect select({m_work}, Application);
    const EditDialogRobot robot([](const SeenDialog &dialog) {
        dialog.check("club");
        dialog.accept();
    });
    const MessageRobot answers;
    select.slotDialog();
    QCOMPARE(select.findChildren<QDialog *>().size(), 0);
    select.slotDialog();
    QCOMPARE(robot.dialogs(), 2);
    QCOMPARE(answers.boxes().size(), 0);
    QCOMPARE(select.currentCategories(), (QList<int>{m_club, m_work}));
}

void CategorySelectTest::buttonByTabAndSpace()
{
    KyCategorySelect select({m_work}, Application);
    select.show();
    select.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&select));
    comboOf(select)->setFocus();
    QTRY_VERIFY_WITH_TIMEOUT(comboOf(select)->hasFocus(), 10000);
    QTest::keyClick(comboOf(select), Qt::Key_Tab);
    QTRY_VERIFY_WITH_TIMEOUT(buttonOf(select)->hasFocus(), 10000);
    const EditDialogRobot robot([](const SeenDialog &dialog) { dialog.cancel(); });
    QTest::keyClick(buttonOf(select), Qt::Key_Space);
    QTRY_COMPARE_WITH_TIMEOUT(robot.dialogs(), 1, 10000);
}

void CategorySelectTest::buttonByMouse()
{
    KyCategorySelect select({m_work}, Application);
    select.show();
    QVERIFY(QTest::qWaitForWindowExposed(&select));
    const EditDialogRobot robot([](const SeenDialog &dialog) { dialog.cancel(); });
    QTest::mouseClick(buttonOf(select), Qt::LeftButton);
    QTRY_COMPARE_WITH_TIMEOUT(robot.dialogs(), 1, 10000);
    QVERIFY(!isMarked());
}

/** Also from the list, which has the focus as a rule. */
void CategorySelectTest::escapeClosesTheDialog()
{
    KyCategorySelect select({m_work}, Application);
    bool hasClosed = false;
    const EditDialogRobot robot([&](const SeenDialog &dialog) {
        auto *list = dialog.widget()->findChild<QTreeWidget *>();
        list->setFocus();
        dialog.check("club");
        QTest::keyClick(list, Qt::Key_Escape);
        hasClosed = !dialog.widget()->isVisible();
    });
    select.slotDialog();
    QVERIFY(hasClosed);
    QCOMPARE(select.currentCategories(), QList<int>{m_work});
}

void CategorySelectTest::rowByKeyboard()
{
    KyCategorySelect select({m_club}, Application);
    select.show();
    select.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&select));
    const QSignalSpy selections(&select, &KyCategorySelect::signalSelected);
    KyCategoryCombo *combo = comboOf(select);
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Down, Qt::AltModifier);
    QTRY_VERIFY_WITH_TIMEOUT(combo->view()->isVisible(), 10000);
    QTest::keyClick(combo->view(), Qt::Key_Down);
    QTest::keyClick(combo->view(), Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(selections.count(), 1, 10000);
    QCOMPARE(selections.first(), QVariantList{m_home});
    QCOMPARE(select.currentCategories(), QList<int>{m_home});
}

QTEST_MAIN(CategorySelectTest)
#include "categoryselecttest.moc"
