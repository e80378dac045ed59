#include "kycategorycombo.h"
#include "tablefixture.h"
#include <functional>
#include <QAbstractItemView>
#include <QSignalSpy>

namespace {

constexpr auto Application = "addressbook";

/** What happens once between the reading of the names and that of their ids: at the second opening. */
std::function<void()> betweenOpenings;
int openings = 0;

QStringList rowsOf(const QComboBox &combo)
{
    QStringList rows;
    for (int row = 0; row < combo.count(); ++row)
        rows.append(combo.itemText(row));
    return rows;
}

/** Chooses the next row as a user does. */
void pressDown(QComboBox &combo)
{
    QTest::keyClick(&combo, Qt::Key_Down);
}

} // namespace

uint32_t _BoxOpenRwMode(const char *path, uint8_t mode)
{
    static const auto next = nextDefinition<decltype(_BoxOpenRwMode)>("_BoxOpenRwMode");
    if (mode == 0 && betweenOpenings && qstrcmp(path, TableBox) == 0 && ++openings == 2)
        std::exchange(betweenOpenings, nullptr)();
    return next(path, mode);
}

class CategoryComboTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void plainBoxHasNothing();
    void takesName();
    void boxMayBeNarrowerThanItsRows();

    // filling
    void recordWithNoCategoryShowsTheUnfiledRow();
    void rowsAreInTextOrderWithTheirIds();
    void recordWithOneCategoryIsNotMarked();
    void recordWithTwoCategoriesMarksBothAndSelectsItsFirst();
    void unfiledRowIsNeverMarked();
    void unfiledAsTheFirstCategory();
    void unknownFirstCategoryLeavesTheFirstRow();
    void idsOutOfRange_data();
    void idsOutOfRange();
    void hugeList();
    void fillingAgainFollowsTheTable();
    void fillingAgainTakesForeignRowsAway();
    void withoutCategories();
    void withoutTable();
    void tableOfAllIds();
    void categoryRemovedBetweenNamesAndIds();

    // those that still exist
    void refindDropsWhatDoesNotExist();
    void refindKeepsOrderAndUnfiled();
    void refindSelectsTheFirstThatIsLeft();
    void refindWithNothingLeftShowsTheUnfiledRow();
    void refindMarksOnlyWhatIsLeft();
    void refindNamesEachCategoryOnce();
    void refindOfATableThatAnotherKeeps();
    void refindOfATableThatIsDamaged();

    // selection
    void rowBehindTheCategories();
    void setCurrentCategory();
    void setCurrentText();
    void userChoosesWithTheKeyboard();
    void fillingTwiceDoesNotDoubleTheSignal();
    void programIsSilent();

private:
    int m_work = 0, m_home = 0, m_club = 0; // ids; in the order of the rows: club, home, work
};

void CategoryComboTest::init()
{
    QVERIFY(makeTable({{"work", &m_work}, {"club", &m_club}, {"home", &m_home}}));
}

void CategoryComboTest::cleanup()
{
    betweenOpenings = nullptr;
    openings = 0;
}

void CategoryComboTest::plainBoxHasNothing()
{
    const KyCategoryCombo combo;
    QCOMPARE(combo.count(), 0);
    QCOMPARE(combo.categoryCount(), 0);
    QCOMPARE(combo.currentCategory(), -2);
}

void CategoryComboTest::takesName()
{
    QWidget parent;
    const KyCategoryCombo combo(&parent, "categories");
    QCOMPARE(combo.objectName(), "categories");
    QCOMPARE(combo.parentWidget(), &parent);
}

void CategoryComboTest::boxMayBeNarrowerThanItsRows()
{
    KyCategoryCombo combo;
    combo.initCombo({}, Application);
    const int width = combo.sizeHint().width();
    QVERIFY(KyCategories().addCategory(QString(48, 'W')));
    combo.initCombo({}, Application);
    QCOMPARE(combo.count(), 5);
    QCOMPARE(combo.sizeHint().width(), width);
    QVERIFY(width > combo.fontMetrics().horizontalAdvance(QString(8, 'x')));
    QCOMPARE(combo.view()->textElideMode(), Qt::ElideMiddle);
}

void CategoryComboTest::recordWithNoCategoryShowsTheUnfiledRow()
{
    KyCategoryCombo combo;
    combo.initCombo({}, Application);
    QCOMPARE(combo.currentIndex(), 3);
    QCOMPARE(combo.currentText(), "Unfiled");
    QCOMPARE(combo.currentCategory(), UnfiledCategoryId);
}

void CategoryComboTest::rowsAreInTextOrderWithTheirIds()
{
    KyCategoryCombo combo;
    combo.initCombo({}, Application, "Addresses");
    QCOMPARE(rowsOf(combo), (QStringList{"club", "home", "work", "Unfiled"}));
    QCOMPARE(combo.categoryCount(), 4);
    const QList<int> ids = {m_club, m_home, m_work, UnfiledCategoryId};
    for (int row = 0; row < combo.count(); ++row) {
        combo.setCurrentIndex(row);
        QCOMPARE(combo.currentCategory(), ids.at(row));
    }
}

void CategoryComboTest::recordWithOneCategoryIsNotMarked()
{
    KyCategoryCombo combo;
    combo.initCombo({m_home}, Application);
    QCOMPARE(rowsOf(combo), (QStringList{"club", "home", "work", "Unfiled"}));
    QCOMPARE(combo.currentCategory(), m_home);
}

void CategoryComboTest::recordWithTwoCategoriesMarksBothAndSelectsItsFirst()
{
    KyCategoryCombo combo;
    combo.initCombo({m_work, m_club}, Application);
    QCOMPARE(rowsOf(combo), (QStringList{"club (Multi.)", "home", "work (Multi.)", "Unfiled"}));
    QCOMPARE(combo.currentText(), "work (Multi.)");
    QCOMPARE(combo.currentCategory(), m_work);
}

void CategoryComboTest::unfiledRowIsNeverMarked()
{
    KyCategoryCombo combo;
    combo.initCombo({m_club, UnfiledCategoryId}, Application);
    QCOMPARE(rowsOf(combo), (QStringList{"club (Multi.)", "home", "work", "Unfiled"}));
    QCOMPARE(combo.currentCategory(), m_club);
}

void CategoryComboTest::unfiledAsTheFirstCategory()
{
    KyCategoryCombo combo;
    combo.initCombo({UnfiledCategoryId}, Application);
    QCOMPARE(combo.currentIndex(), 3);
    QCOMPARE(combo.currentCategory(), UnfiledCategoryId);
}

void CategoryComboTest::unknownFirstCategoryLeavesTheFirstRow()
{
    KyCategoryCombo combo;
    combo.initCombo({99, m_work}, Application);
    QCOMPARE(rowsOf(combo), (QStringList{"club", "home", "work (Multi.)", "Unfiled"}));
    QCOMPARE(combo.currentIndex(), 0);
    QCOMPARE(combo.currentCategory(), m_club);
}

void CategoryComboTest::idsOutOfRange_data()
{
    QTest::addColumn<int>("id");
    QTest::newRow("zero") << 0;
    QTest::newRow("minus one") << -1;
    QTest::newRow("behind the last") << 246;
    QTest::newRow("a byte more than one that exists") << 256 + 1;
    QTest::newRow("a byte more than the unfiled") << 256 + UnfiledCategoryId;
    QTest::newRow("largest") << std::numeric_limits<int>::max();
    QTest::newRow("smallest") << std::numeric_limits<int>::min();
}

void CategoryComboTest::idsOutOfRange()
{
    QFETCH(int, id);
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind({id, m_work}, Application), QList<int>{m_work});
    combo.initCombo({id}, Application);
    QCOMPARE(rowsOf(combo), (QStringList{"club", "home", "work", "Unfiled"}));
    QCOMPARE(combo.currentIndex(), 0);
    combo.setCurrentIndex(1);
    combo.setCurrentCategory(id);
    QCOMPARE(combo.currentIndex(), 1);
}

void CategoryComboTest::hugeList()
{
    QList<int> ids;
    for (int id = 1000; id < 200000; ++id)
        ids.append(id);
    ids.append({m_home, m_club});
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind(ids, Application), (QList<int>{m_home, m_club}));
    QCOMPARE(combo.currentCategory(), m_home);
    combo.initCombo(ids, Application);
    QCOMPARE(rowsOf(combo), (QStringList{"club (Multi.)", "home (Multi.)", "work", "Unfiled"}));
}

void CategoryComboTest::fillingAgainFollowsTheTable()
{
    KyCategoryCombo combo;
    combo.initCombo({m_home}, Application);
    KyCategories categories;
    QVERIFY(categories.renameCategory("home", "zoo"));
    QVERIFY(categories.removeCategory("club"));
    combo.initCombo({m_home}, Application);
    QCOMPARE(rowsOf(combo), (QStringList{"work", "zoo", "Unfiled"}));
    QCOMPARE(combo.currentCategory(), m_home);
    QCOMPARE(combo.currentText(), "zoo");
}

void CategoryComboTest::fillingAgainTakesForeignRowsAway()
{
    KyCategoryCombo combo;
    combo.initCombo({}, Application);
    combo.addItem("All");
    combo.initCombo({}, Application);
    QCOMPARE(combo.count(), 4);
}

void CategoryComboTest::withoutCategories()
{
    QVERIFY(makeTable());
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind({1, 2}, Application), QList<int>());
    QCOMPARE(rowsOf(combo), QStringList{"Unfiled"});
    QCOMPARE(combo.currentCategory(), UnfiledCategoryId);
}

void CategoryComboTest::withoutTable()
{
    QVERIFY(removeTable());
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind({1, UnfiledCategoryId}, Application), QList<int>{UnfiledCategoryId});
    QCOMPARE(rowsOf(combo), QStringList{"Unfiled"});
    QCOMPARE(combo.currentCategory(), UnfiledCategoryId);
}

void CategoryComboTest::tableOfAllIds()
{
    QVERIFY(makeTable());
    QVERIFY(fillTable(1, 245));
    KyCategoryCombo combo;
    combo.initCombo({245, 100}, Application);
    QCOMPARE(combo.categoryCount(), 246);
    QCOMPARE(combo.currentText(), "245 (Multi.)");
    for (int row = 0; row < 245; ++row) {
        combo.setCurrentIndex(row);
        QCOMPARE(combo.currentText().remove(" (Multi.)"), QString::number(combo.currentCategory()));
    }
}

/** Rows and ids stay together. */
void CategoryComboTest::categoryRemovedBetweenNamesAndIds()
{
    KyCategoryCombo combo;
    KyCategories other;
    bool isRemoved = false;
    betweenOpenings = [&] { isRemoved = other.removeCategory("club"); };
    combo.initCombo({m_work}, Application);
    QVERIFY(isRemoved);
    QCOMPARE(rowsOf(combo), (QStringList{"home", "work", "Unfiled"}));
    QCOMPARE(combo.currentText(), "work");
    QCOMPARE(combo.currentCategory(), m_work);
    combo.setCurrentCategory(UnfiledCategoryId);
    QCOMPARE(combo.currentText(), "Unfiled");
}

void CategoryComboTest::refindDropsWhatDoesNotExist()
{
    KyCategoryCombo combo;
    QVERIFY(KyCategories().removeCategory("home"));
    QCOMPARE(combo.initComboWithRefind({m_work, m_home, m_club}, Application), (QList<int>{m_work, m_club}));
    QCOMPARE(rowsOf(combo), (QStringList{"club (Multi.)", "work (Multi.)", "Unfiled"}));
    QCOMPARE(combo.currentCategory(), m_work);
}

void CategoryComboTest::refindKeepsOrderAndUnfiled()
{
    KyCategoryCombo combo;
    const QList<int> ids = {m_work, UnfiledCategoryId, m_club, m_home};
    QCOMPARE(combo.initComboWithRefind(ids, Application), ids);
    QCOMPARE(combo.initComboWithRefind({}, Application), QList<int>());
    QCOMPARE(combo.currentCategory(), UnfiledCategoryId);
}

void CategoryComboTest::refindSelectsTheFirstThatIsLeft()
{
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind({99, m_work, m_home}, Application), (QList<int>{m_work, m_home}));
    QCOMPARE(combo.currentCategory(), m_work);
}

void CategoryComboTest::refindWithNothingLeftShowsTheUnfiledRow()
{
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind({99, 98}, Application), QList<int>());
    QCOMPARE(combo.currentCategory(), UnfiledCategoryId);
}

void CategoryComboTest::refindMarksOnlyWhatIsLeft()
{
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind({99, m_work}, Application), QList<int>{m_work});
    QCOMPARE(rowsOf(combo), (QStringList{"club", "home", "work", "Unfiled"}));
}

void CategoryComboTest::refindNamesEachCategoryOnce()
{
    KyCategoryCombo combo;
    QCOMPARE(combo.initComboWithRefind({m_work, m_club, m_work}, Application), (QList<int>{m_work, m_club}));
    QCOMPARE(combo.initComboWithRefind({m_work, m_work}, Application), QList<int>{m_work});
    QCOMPARE(combo.currentText(), "work");
}

/** Saving the record must not take its categories away only because the table was busy. */
void CategoryComboTest::refindOfATableThatAnotherKeeps()
{
    KyCategoryCombo combo;
    const uint32_t handle = _BoxOpenRwMode(TableBox, 0);
    QVERIFY(handle);
    QCOMPARE(combo.initComboWithRefind({m_work, m_home}, Application), (QList<int>{m_work, m_home}));
    QCOMPARE(rowsOf(combo), QStringList{"Unfiled"});
    QCOMPARE(combo.currentCategory(), UnfiledCategoryId);
    QCOMPARE(_BoxCloseEx(handle, 1), PdtmOk);
    QCOMPARE(combo.initComboWithRefind({m_work, 99}, Application), QList<int>{m_work});
}

void CategoryComboTest::refindOfATableThatIsDamaged()
{
    KyCategoryCombo combo;
    QVERIFY(removeTable());
    QFile box(KyCategories::boxFileName());
    QVERIFY(box.open(QIODevice::WriteOnly));
    QVERIFY(box.write(QByteArray(5000, 'x')) > 0);
    box.close();
    QCOMPARE(combo.initComboWithRefind({m_work, m_home}, Application), (QList<int>{m_work, m_home}));
    QCOMPARE(rowsOf(combo), QStringList{"Unfiled"});
    QVERIFY(box.remove());
}

void CategoryComboTest::rowBehindTheCategories()
{
    KyCategoryCombo combo;
    combo.initCombo({m_work}, Application);
    combo.addItems({"All", "more"});
    combo.setCurrentIndex(4);
    QCOMPARE(combo.currentCategory(), -1);
    combo.setCurrentIndex(5);
    QCOMPARE(combo.currentCategory(), -2);
    combo.setCurrentIndex(-1);
    QCOMPARE(combo.currentCategory(), -2);
}

void CategoryComboTest::setCurrentCategory()
{
    KyCategoryCombo combo;
    combo.initCombo({}, Application);
    combo.setCurrentCategory(m_home);
    QCOMPARE(combo.currentText(), "home");
    combo.setCurrentCategory(99);
    QCOMPARE(combo.currentText(), "home");
    combo.setCurrentCategory(UnfiledCategoryId);
    QCOMPARE(combo.currentText(), "Unfiled");
}

void CategoryComboTest::setCurrentText()
{
    KyCategoryCombo combo;
    combo.initCombo({}, Application);
    combo.addItem("club");
    combo.setCurrentText("home");
    QCOMPARE(combo.currentCategory(), m_home);
    for (const QString unknown : {"hom", "HOME", "ome", ""}) {
        combo.setCurrentText(unknown);
        QCOMPARE(combo.currentCategory(), m_home);
    }
    combo.setCurrentText("club");
    QCOMPARE(combo.currentIndex(), 0);
}

void CategoryComboTest::userChoosesWithTheKeyboard()
{
    KyCategoryCombo combo;
    combo.initCombo({m_club}, Application);
    const QSignalSpy changes(&combo, &KyCategoryCombo::sigCatChanged);
    pressDown(combo);
    QCOMPARE(changes, QList<QVariantList>{{m_home}});
}

void CategoryComboTest::fillingTwiceDoesNotDoubleTheSignal()
{
    KyCategoryCombo combo;
    combo.initCombo({m_club}, Application);
    combo.initCombo({m_club}, Application);
    combo.initComboWithRefind({m_club}, Application);
    const QSignalSpy changes(&combo, &KyCategoryCombo::sigCatChanged);
    pressDown(combo);
    QCOMPARE(changes, QList<QVariantList>{{m_home}});
}

void CategoryComboTest::programIsSilent()
{
    KyCategoryCombo combo;
    const QSignalSpy changes(&combo, &KyCategoryCombo::sigCatChanged);
    combo.initCombo({m_club}, Application);
    combo.initComboWithRefind({m_home}, Application);
    combo.setCurrentCategory(m_work);
    combo.setCurrentText("club");
    QCOMPARE(combo.currentCategory(), m_club);
    QCOMPARE(changes.count(), 0);
}

QTEST_MAIN(CategoryComboTest)
#include "categorycombotest.moc"
