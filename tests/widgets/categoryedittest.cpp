#include "categoryfixture.h"
#include "categoryrobot.h"
#include "channellistener.h"
#include "childprocess.h"
#include "kycategoryedit.h"
#include "logcapture.h"
#include "messagerobot.h"
#include "resource.h"
#include "tablefixture.h"
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QtTest>
#include <QVBoxLayout>

namespace {

using Names = QStringList;

bool isStoreFailing = false; ///< changes of cards, with the work card's

/** What there is to see of a form. */
struct Form
{
    explicit Form(const KyCategoryEditBase &edit) : list(edit.findChild<QTreeWidget *>())
    {
        for (QPushButton *button : edit.findChildren<QPushButton *>()) {
            if (button->text().isEmpty())
                remove = button;
            else
                (button->text() == "Add" ? add : rename) = button;
        }
    }

    [[nodiscard]] Names names() const
    {
        Names all;
        for (int row = 0; row < list->topLevelItemCount(); ++row)
            all.append(list->topLevelItem(row)->text(0));
        return all;
    }
    [[nodiscard]] Names checked() const
    {
        Names all;
        for (int row = 0; row < list->topLevelItemCount(); ++row) {
            if (list->topLevelItem(row)->checkState(0) == Qt::Checked)
                all.append(list->topLevelItem(row)->text(0));
        }
        return all;
    }
    /** The selected row; null for none. */
    [[nodiscard]] QString selected() const
    {
        const QList<QTreeWidgetItem *> items = list->selectedItems();
        return items.isEmpty() ? QString() : items.first()->text(0);
    }
    void select(int row) const { list->setCurrentItem(list->topLevelItem(row)); }
    [[nodiscard]] QList<bool> enabled() const
    {
        return {add->isEnabled(), rename->isEnabled(), remove->isEnabled()};
    }

    QTreeWidget *list;
    QPushButton *add = nullptr;
    QPushButton *rename = nullptr;
    QPushButton *remove = nullptr;
};

const QList<bool> All = {true, true, true};
const QList<bool> OnlyAdd = {true, false, false};

/** A table of these categories alone, with the ids 1, 2, ... */
bool makeCategories(const Names &names)
{
    bool isMade = makeTable();
    KyCategories categories;
    for (const QString &name : names)
        isMade = isMade && categories.addCategory(name);
    return isMade;
}

/** An edit of the categories as they are, with those checked that have the ids. */
struct Editing
{
    explicit Editing(const QList<int> &ids = {}) { edit.setCategories(ids, "addressbook", "Address Book"); }
    Q_DISABLE_COPY_MOVE(Editing)

    /** Puts it on the screen, with the keyboard in the list. */
    void show()
    {
        edit.show();
        form.list->setFocus();
        activate();
    }
    /** Gives it the keyboard, which without a window manager doesn't come back from a dialog. */
    void activate()
    {
        edit.activateWindow();
        if (!QTest::qWaitForWindowActive(&edit))
            qFatal("the form isn't active");
    }
    void press(Qt::Key key) { QTest::keyClick(edit.windowHandle(), key); }

    KyCategoryEdit edit;
    Form form{edit};
};

QList<ChannelListener::Message> changes(ChannelListener &listener)
{
    QList<ChannelListener::Message> found;
    for (const ChannelListener::Message &message : listener.take()) {
        if (message.first == "categoryChange(QString)")
            found.append(message);
    }
    return found;
}

template <typename Value> QByteArray streamed(const Value &value)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << value;
    return bytes;
}

/** What a KyCategoryEditBase has for subclasses. */
class BareForm : public KyCategoryEditBase
{
public:
    using KyCategoryEditBase::cmdAdd;
    using KyCategoryEditBase::cmdDel;
    using KyCategoryEditBase::cmdRename;
    using KyCategoryEditBase::lvView;
};

/** Another application that keeps the table until the end of input. */
int keepTable()
{
    const uint32_t handle = _BoxOpenRwMode(TableBox, 0);
    ChildProcess::say(handle ? "kept" : "failed");
    const ChildInput input([](const QByteArray &) {});
    const int code = QCoreApplication::exec();
    return _BoxCloseEx(handle, 1) == PdtmOk ? code : 1;
}

/** "keep", or RENAMED NEW REMOVED: another application that renames one category and removes another. */
int childMain(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc > 1 && qstrcmp(argv[1], "keep") == 0)
        return keepTable();
    if (argc < 4)
        return 2;
    KyCategories categories;
    return categories.renameCategory(argv[1], argv[2]) && categories.removeCategory(argv[3]) ? 0 : 1;
}

} // namespace

PdtmStatus _CardCopy(uint32_t handle, uint16_t source, uint16_t *destination)
{
    if (isStoreFailing)
        return PdtmIoError;
    return nextDefinition<decltype(_CardCopy)>("_CardCopy")(handle, source, destination);
}

PdtmStatus _CardDelete(uint32_t handle, uint16_t card)
{
    if (isStoreFailing)
        return PdtmIoError;
    return nextDefinition<decltype(_CardDelete)>("_CardDelete")(handle, card);
}

class CategoryEditTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void formHasItsTexts();
    void formHasItsSize_data();
    void formHasItsSize();
    void formMayBeSmaller();
    void formFillsADialog();
    void enterIsLeftToTheDialogAround();
    void slotsOfTheFormOnlyLog();

    void listsAllCategoriesWithoutTheUnfiled();
    void checksThoseOfTheRecord();
    void unknownIdsCheckNothing();
    void namesAreNoMarkup();
    void secondSetReplacesTheFirst();
    void firstRowIsSelected();
    void emptyTableAllowsOnlyToAdd();
    void beforeSetCategoriesNothingHappens();
    void constructorWithArgumentsShowsItselfMaximized();
    void kludgeLimitsTheHeightOfTheList_data() { formHasItsSize_data(); }
    void kludgeLimitsTheHeightOfTheList();
    void deletionIsSilent();

    void nothingSelectedAllowsOnlyToAdd();
    void selectionByKeyboardAndPointer();
    void systemCategoryCanBeNeitherRenamedNorRemoved();
    void deleteAttemptOfASystemCategoryIsRefused();
    void spaceTogglesTheCheckBox();

    void additionAsksForAName();
    void additionCreatesAnUncheckedSelectedRow();
    void additionAndRenamingScrollToTheRow();
    void additionWithoutAName_data();
    void additionWithoutAName();
    void additionOfATakenNameAsksAgain();
    void failingAdditionShowsNoRow();

    void renamingAsksWithTheOldName();
    void renamingKeepsRowAndCheck();
    void renamingWithoutAName_data() { additionWithoutAName_data(); }
    void renamingWithoutAName();
    void renamedCategoryCanBeRenamedAgain();
    void failingRenamingChangesNoText();
    void renamingWithoutASelectionDoesNothing();
    void functionKeyRenames();

    void removalAsksFirst();
    void removalNotConfirmed_data();
    void removalNotConfirmed();
    void removalSelectsTheNeighbour_data();
    void removalSelectsTheNeighbour();
    void removalOfTheLastItemAllowsOnlyToAdd();
    void listMayBeFilledAnewDuringARemoval();
    void removalReachesTheCards();
    void failingRemovalKeepsTheRow();
    void removalWithoutASelectionDoesNothing();
    void deleteKeyRemoves();

    void newCategoriesAreTheCheckedOnesInListOrder();
    void newCategoriesSendsTheNameAsAText();
    void acceptSendsTheNameAsACString();
    void categoriesOfAnotherApplicationsChangesAreDropped();
    void checkedOnesCountWhileAnotherKeepsTheTable();
    void recordKeepsItsCategoriesWhenTheTableIsKeptAtFirst();
};

void CategoryEditTest::init()
{
    const QMap<QString, int> usual = {{"Business", 1}, {"Friends", 2}, {"Travel", 3}};
    if (tableContents() != usual) // making the table takes its time
        QVERIFY(makeCategories(usual.keys()));
}

void CategoryEditTest::cleanup()
{
    isStoreFailing = false;
    qputenv("KY_DPI", "72");
}

void CategoryEditTest::formHasItsTexts()
{
    QWidget parent;
    const KyCategoryEditBase base(&parent, "editor");
    QCOMPARE(base.objectName(), "editor");
    QCOMPARE(base.parentWidget(), &parent);
    QCOMPARE(base.windowTitle(), "Category Edit");
    const Form form(base);
    QCOMPARE(form.list->columnCount(), 1);
    QCOMPARE(form.list->headerItem()->text(0), "Categories");
    QCOMPARE(form.names(), Names{"Categories Go Here"});
    QVERIFY(!form.list->rootIsDecorated());
    QVERIFY(!form.list->isSortingEnabled());
    QVERIFY(form.add && form.rename && form.remove);
    QCOMPARE(form.add->text(), "Add");
    QCOMPARE(form.rename->text(), "Rename");
    const QImage picture = Resource::loadPixmap("trash").toImage();
    QVERIFY(!picture.isNull());
    QCOMPARE(form.remove->icon().pixmap(form.remove->iconSize()).toImage(), picture);
}

void CategoryEditTest::formHasItsSize_data()
{
    QTest::addColumn<QByteArray>("dpi");
    QTest::addColumn<int>("scale");
    QTest::newRow("scale 1") << QByteArray("72") << 1;
    QTest::newRow("scale 2") << QByteArray("144") << 2;
}

void CategoryEditTest::formHasItsSize()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    const KyCategoryEditBase base;
    QCOMPARE(base.size(), QSize(345, 419) * scale);
    QCOMPARE(base.sizeHint(), QSize(345, 419) * scale);
}

void CategoryEditTest::formMayBeSmaller()
{
    KyCategoryEdit edit;
    edit.setCategories({}, {}, {});
    const QSize screen(240, 320);
    edit.resize(screen);
    edit.show();
    QVERIFY(QTest::qWaitForWindowExposed(&edit));
    QCOMPARE(edit.minimumSizeHint().boundedTo(screen), edit.minimumSizeHint());
    const Form form(edit);
    for (const QPushButton *button : {form.add, form.rename, form.remove})
        QVERIFY(button->width() >= button->minimumSizeHint().width());
    QVERIFY(form.list->y() + form.list->height() <= form.add->y());
    QVERIFY(form.list->height() > 200);
    QVERIFY(form.add->x() < form.rename->x() && form.rename->x() < form.remove->x());
}

void CategoryEditTest::formFillsADialog()
{
    QDialog dialog;
    auto *column = new QVBoxLayout(&dialog);
    column->setContentsMargins({});
    auto *edit = new KyCategoryEdit({}, "addressbook", "Address Book", &dialog);
    column->addWidget(edit);
    dialog.resize(480, 600);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(edit->geometry(), dialog.rect());
}

void CategoryEditTest::enterIsLeftToTheDialogAround()
{
    const CategoryRobot robot;
    QDialog dialog;
    auto *edit = new KyCategoryEdit({}, "addressbook", "Address Book", &dialog);
    auto *accept = new QPushButton("OK", &dialog);
    auto *column = new QVBoxLayout(&dialog);
    column->addWidget(edit);
    column->addWidget(accept);
    connect(accept, &QPushButton::clicked, &dialog, &QDialog::accept);
    accept->setDefault(true);
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    const Form form(*edit);
    form.add->setFocus();
    QTest::keyClick(dialog.windowHandle(), Qt::Key_Return);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(robot.dialogs().isEmpty());
}

void CategoryEditTest::slotsOfTheFormOnlyLog()
{
    BareForm base;
    const LogCapture log;
    base.slotSetGlobal(true);
    base.cmdAdd->click();
    base.cmdDel->click();
    base.cmdRename->click();
    base.lvView->setCurrentItem(base.lvView->topLevelItem(0));
    QCOMPARE(log.lines(), (Names{"CategoryEditBase::slotSetGlobal(bool): Not implemented yet!",
                                 "CategoryEditBase::slotAdd(): Not implemented yet!",
                                 "CategoryEditBase::slotRemove(): Not implemented yet!",
                                 "CategoryEditBase::slotRename(): Not implemented yet!",
                                 "CategoryEditBase::slotSetText(QListViewItem*): Not implemented yet!"}));
}

void CategoryEditTest::listsAllCategoriesWithoutTheUnfiled()
{
    QVERIFY(KyCategories().addCategory("Clubs"));
    const Editing editing;
    QCOMPARE(editing.form.names(), (Names{"Business", "Clubs", "Friends", "Travel"}));
    QCOMPARE(editing.form.checked(), Names());
    QVERIFY(!editing.form.list->isSortingEnabled());
}

void CategoryEditTest::checksThoseOfTheRecord()
{
    const Editing editing({3, 1});
    QCOMPARE(editing.form.checked(), (Names{"Business", "Travel"}));
}

void CategoryEditTest::unknownIdsCheckNothing()
{
    const Editing editing({99, 2, UnfiledCategoryId, 0, -1, 257});
    QCOMPARE(editing.form.checked(), Names{"Friends"});
}

void CategoryEditTest::namesAreNoMarkup()
{
    const Names names = {"&A <b>", "<i>B</i>"};
    QVERIFY(makeCategories(names));
    Editing editing({1});
    QCOMPARE(editing.form.names(), names);
    QCOMPARE(editing.edit.newCategories(), QList<int>{1});
    const CategoryRobot robot({"&<u>C"});
    editing.form.rename->click();
    QCOMPARE(robot.dialogs().value(0).text, "&A <b>");
    QCOMPARE(tableContents().keys(), (Names{"&<u>C", "<i>B</i>"}));
    QCOMPARE(editing.form.names(), (Names{"&<u>C", "<i>B</i>"}));
}

void CategoryEditTest::secondSetReplacesTheFirst()
{
    Editing editing({1});
    editing.form.select(2);
    QVERIFY(KyCategories().addCategory("Clubs"));
    ChannelListener listener("QPE/System");
    editing.edit.setCategories({2}, "todolist", "Todo List");
    QCOMPARE(editing.form.names(), (Names{"Business", "Clubs", "Friends", "Travel"}));
    QCOMPARE(editing.form.checked(), Names{"Friends"});
    QCOMPARE(editing.form.selected(), "Business");
    QCOMPARE(editing.edit.newCategories(), QList<int>{2});
    QCOMPARE(changes(listener).value(0).second, streamed(QString("todolist")));
}

void CategoryEditTest::firstRowIsSelected()
{
    const Editing editing;
    QCOMPARE(editing.form.selected(), "Business");
    QCOMPARE(editing.form.enabled(), All);
}

void CategoryEditTest::emptyTableAllowsOnlyToAdd()
{
    QVERIFY(makeTable());
    Editing editing({1});
    QCOMPARE(editing.form.names(), Names());
    QCOMPARE(editing.form.enabled(), OnlyAdd);
    QCOMPARE(editing.edit.newCategories(), QList<int>());
}

void CategoryEditTest::beforeSetCategoriesNothingHappens()
{
    ChannelListener listener("QPE/System");
    const CategoryRobot dialogs;
    const MessageRobot boxes;
    const LogCapture log;
    KyCategoryEdit edit;
    const Form form(edit);
    form.select(0);
    form.add->click();
    form.rename->click();
    form.remove->click();
    edit.accept();
    QCOMPARE(edit.newCategories(), QList<int>());
    QVERIFY(dialogs.dialogs().isEmpty() && boxes.boxes().isEmpty());
    QCOMPARE(log.lines(), Names());
    QCOMPARE(changes(listener).size(), 0);
}

void CategoryEditTest::constructorWithArgumentsShowsItselfMaximized()
{
    QWidget parent;
    const KyCategoryEdit inside({2}, "addressbook", "Address Book", &parent, "categories");
    QCOMPARE(inside.objectName(), "categories");
    QCOMPARE(inside.parentWidget(), &parent);
    QVERIFY(inside.isMaximized() && !inside.isHidden());
    const Form form(inside);
    QCOMPARE(form.checked(), Names{"Friends"});
    for (const QPushButton *button : {form.add, form.rename}) {
        QCOMPARE(button->minimumHeight(), form.remove->sizeHint().height());
        QCOMPARE(button->maximumHeight(), form.remove->sizeHint().height());
    }
    const KyCategoryEdit window({}, {}, {});
    QVERIFY(window.isVisible() && window.isMaximized());
    QVERIFY(!KyCategoryEdit().isVisible());
}

void CategoryEditTest::kludgeLimitsTheHeightOfTheList()
{
    QFETCH(QByteArray, dpi);
    QFETCH(int, scale);
    qputenv("KY_DPI", dpi);
    const Editing editing;
    QVERIFY(editing.form.list->maximumHeight() > 1000);
    const_cast<KyCategoryEdit &>(editing.edit).kludge();
    QCOMPARE(editing.form.list->maximumHeight(), 130 * scale);
}

void CategoryEditTest::deletionIsSilent()
{
    auto edit = std::make_unique<KyCategoryEdit>(QList<int>{1}, "addressbook", "Address Book");
    const LogCapture log;
    edit.reset();
    QCOMPARE(log.lines(), Names());
}

void CategoryEditTest::nothingSelectedAllowsOnlyToAdd()
{
    Editing editing;
    editing.edit.slotSetText(nullptr);
    QCOMPARE(editing.form.enabled(), OnlyAdd);
    editing.edit.slotSetText(editing.form.list->topLevelItem(1));
    QCOMPARE(editing.form.enabled(), All);
    editing.form.list->clearSelection();
    QCOMPARE(editing.form.enabled(), OnlyAdd);
}

void CategoryEditTest::selectionByKeyboardAndPointer()
{
    Editing editing;
    editing.show();
    editing.press(Qt::Key_Down);
    const CategoryRobot robot;
    editing.edit.slotRename();
    QCOMPARE(robot.dialogs().value(0).text, "Friends");

    const QRect row = editing.form.list->visualItemRect(editing.form.list->topLevelItem(2));
    QTest::mouseClick(editing.form.list->viewport(), Qt::LeftButton, {}, row.center());
    editing.edit.slotRename();
    QCOMPARE(robot.dialogs().value(1).text, "Travel");
}

void CategoryEditTest::systemCategoryCanBeNeitherRenamedNorRemoved()
{
    QVERIFY(KyCategories().addSystemCategory("Fixed"));
    Editing editing;
    QCOMPARE(editing.form.names().value(1), "Fixed");
    editing.form.select(1);
    QCOMPARE(editing.form.enabled(), OnlyAdd);
    editing.form.select(2);
    QCOMPARE(editing.form.enabled(), All);

    editing.form.select(1);
    const CategoryRobot robot({"Other"}); // asked for all the same, it isn't renamed
    editing.edit.slotRename();
    QCOMPARE(editing.form.names().value(1), "Fixed");
    QVERIFY(tableContents().contains("Fixed"));
}

void CategoryEditTest::deleteAttemptOfASystemCategoryIsRefused()
{
    QVERIFY(KyCategories().addSystemCategory("Fixed"));
    Editing editing;
    editing.form.select(1);
    const MessageRobot robot({QMessageBox::Ok});
    editing.edit.slotRemove();
    QCOMPARE(robot.boxes().size(), 1);
    const MessageRobot::Box box = robot.boxes().first();
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.caption, "Error");
    QCOMPARE(box.text, "You can't delete this category");
    QCOMPARE(box.buttons, QMessageBox::Ok);
    QVERIFY(box.hasParent && box.hadAnswer);
    QVERIFY(tableContents().contains("Fixed"));
    QCOMPARE(editing.form.selected(), "Fixed");
}

void CategoryEditTest::spaceTogglesTheCheckBox()
{
    Editing editing({2});
    editing.show();
    editing.press(Qt::Key_Space);
    QCOMPARE(editing.form.checked(), (Names{"Business", "Friends"}));
    QCOMPARE(editing.edit.newCategories(), (QList<int>{1, 2}));
    editing.press(Qt::Key_Space);
    QCOMPARE(editing.form.checked(), Names{"Friends"});
}

void CategoryEditTest::additionAsksForAName()
{
    Editing editing;
    const CategoryRobot robot;
    editing.form.add->click();
    QCOMPARE(robot.dialogs().size(), 1);
    const CategoryRobot::Dialog dialog = robot.dialogs().first();
    QCOMPARE(dialog.caption, "Add");
    QCOMPARE(dialog.prompt, "Type new category name");
    QCOMPARE(dialog.text, QString(""));
    QVERIFY(dialog.hasFocus && dialog.isModal && dialog.hasParent);
}

void CategoryEditTest::additionCreatesAnUncheckedSelectedRow()
{
    Editing editing({1});
    const CategoryRobot robot({" Clubs "});
    editing.form.add->click();
    QCOMPARE(tableContents(),
             (QMap<QString, int>{{"Business", 1}, {"Friends", 2}, {"Travel", 3}, {"Clubs", 4}}));
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel", "Clubs"}));
    QCOMPARE(editing.form.checked(), Names{"Business"});
    QCOMPARE(editing.form.list->topLevelItem(3)->data(0, Qt::CheckStateRole), QVariant(Qt::Unchecked));
    QCOMPARE(editing.form.selected(), "Clubs");
    QCOMPARE(editing.form.enabled(), All);
}

void CategoryEditTest::additionAndRenamingScrollToTheRow()
{
    QVERIFY(makeTable() && fillTable(1, 100));
    Editing editing;
    editing.show();
    const CategoryRobot robot({"new", "newer"});
    editing.form.add->click();
    const QTreeWidgetItem *item = editing.form.list->topLevelItem(100);
    QVERIFY(item);
    QCOMPARE(item->text(0), "new");
    const auto isInSight = [&] {
        return editing.form.list->viewport()->rect().contains(editing.form.list->visualItemRect(item));
    };
    QVERIFY(isInSight());
    editing.form.list->scrollToTop();
    QVERIFY(!isInSight());
    editing.form.rename->click();
    QCOMPARE(item->text(0), "newer");
    QVERIFY(isInSight());
}

void CategoryEditTest::additionWithoutAName_data()
{
    QTest::addColumn<CategoryRobot::Answer>("answer");
    QTest::newRow("cancelled") << CategoryRobot::Answer();
    QTest::newRow("empty") << CategoryRobot::Answer("");
    QTest::newRow("blanks") << CategoryRobot::Answer("  ");
}

void CategoryEditTest::additionWithoutAName()
{
    QFETCH(CategoryRobot::Answer, answer);
    Editing editing;
    const QMap<QString, int> before = tableContents();
    const CategoryRobot robot({answer});
    editing.form.add->click();
    QCOMPARE(robot.dialogs().size(), 1);
    QCOMPARE(tableContents(), before);
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
    QCOMPARE(editing.form.selected(), "Business");
}

void CategoryEditTest::additionOfATakenNameAsksAgain()
{
    Editing editing;
    const CategoryRobot robot({"Friends", "Clubs"});
    const MessageRobot boxes;
    editing.form.add->click();
    QCOMPARE(robot.dialogs().size(), 2);
    QCOMPARE(robot.dialogs().last().selectedText, "Friends");
    QCOMPARE(boxes.boxes().size(), 1);
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel", "Clubs"}));
}

void CategoryEditTest::failingAdditionShowsNoRow()
{
    Editing editing;
    const CategoryRobot robot({"Clubs"});
    const MessageRobot boxes;
    isStoreFailing = true;
    editing.form.add->click();
    QCOMPARE(robot.dialogs().size(), 1);
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
    QCOMPARE(editing.form.selected(), "Business");
    QVERIFY(boxes.boxes().isEmpty());
}

void CategoryEditTest::renamingAsksWithTheOldName()
{
    Editing editing;
    editing.form.select(1);
    const CategoryRobot robot;
    editing.form.rename->click();
    QCOMPARE(robot.dialogs().size(), 1);
    const CategoryRobot::Dialog dialog = robot.dialogs().first();
    QCOMPARE(dialog.caption, "Rename");
    QCOMPARE(dialog.prompt, "Type category name");
    QCOMPARE(dialog.text, "Friends");
    QCOMPARE(dialog.selectedText, "Friends");
    QVERIFY(dialog.hasFocus && dialog.isModal && dialog.hasParent);
}

void CategoryEditTest::renamingKeepsRowAndCheck()
{
    Editing editing({2});
    editing.form.select(1);
    const CategoryRobot robot({"Zoo"});
    editing.form.rename->click();
    QCOMPARE(tableContents(), (QMap<QString, int>{{"Business", 1}, {"Zoo", 2}, {"Travel", 3}}));
    QCOMPARE(editing.form.names(), (Names{"Business", "Zoo", "Travel"}));
    QCOMPARE(editing.form.checked(), Names{"Zoo"});
    QCOMPARE(editing.form.selected(), "Zoo");
    QCOMPARE(editing.edit.newCategories(), QList<int>{2});
}

void CategoryEditTest::renamingWithoutAName()
{
    QFETCH(CategoryRobot::Answer, answer);
    Editing editing;
    const QMap<QString, int> before = tableContents();
    const CategoryRobot robot({answer});
    editing.form.rename->click();
    QCOMPARE(robot.dialogs().size(), 1);
    QCOMPARE(tableContents(), before);
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
}

void CategoryEditTest::renamedCategoryCanBeRenamedAgain()
{
    Editing editing;
    const CategoryRobot robot({"Work", "Office"});
    editing.form.rename->click();
    editing.form.rename->click();
    QCOMPARE(robot.dialogs().value(1).text, "Work");
    QCOMPARE(editing.form.names(), (Names{"Office", "Friends", "Travel"}));
    QCOMPARE(tableContents().value("Office"), 1);
}

void CategoryEditTest::failingRenamingChangesNoText()
{
    Editing editing;
    const CategoryRobot robot({"Work"});
    const MessageRobot boxes;
    isStoreFailing = true;
    editing.form.rename->click();
    QCOMPARE(robot.dialogs().size(), 1);
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
    QVERIFY(boxes.boxes().isEmpty());
}

void CategoryEditTest::renamingWithoutASelectionDoesNothing()
{
    Editing editing;
    editing.form.list->clearSelection();
    const CategoryRobot robot({"Work"});
    editing.edit.slotRename();
    QVERIFY(robot.dialogs().isEmpty());
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
}

void CategoryEditTest::functionKeyRenames()
{
    QVERIFY(KyCategories().addSystemCategory("Fixed"));
    Editing editing;
    editing.show();
    const CategoryRobot robot;
    editing.press(Qt::Key_F2);
    QCOMPARE(robot.dialogs().value(0).text, "Business");
    editing.activate();
    editing.form.select(1);
    editing.press(Qt::Key_F2);
    QCOMPARE(robot.dialogs().size(), 1);
}

void CategoryEditTest::removalAsksFirst()
{
    Editing editing;
    const MessageRobot robot({QMessageBox::No});
    editing.form.remove->click();
    QCOMPARE(robot.boxes().size(), 1);
    const MessageRobot::Box box = robot.boxes().first();
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.caption, "Delete category");
    QCOMPARE(box.text, "Are you sure you want to delete\n this category?");
    QCOMPARE(box.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box.defaultButton, QMessageBox::No);
    QCOMPARE(box.escapeButton, QMessageBox::No);
    QVERIFY(box.hasParent && box.hadAnswer);
}

void CategoryEditTest::removalNotConfirmed_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    QTest::newRow("no") << QMessageBox::No;
    QTest::newRow("escape") << QMessageBox::NoButton;
}

void CategoryEditTest::removalNotConfirmed()
{
    QFETCH(QMessageBox::StandardButton, answer);
    Editing editing;
    const QMap<QString, int> before = tableContents();
    const MessageRobot robot({answer});
    editing.form.remove->click();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(tableContents(), before);
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
    QCOMPARE(editing.form.selected(), "Business");
}

void CategoryEditTest::removalSelectsTheNeighbour_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("selected");
    QTest::newRow("first") << 0 << "Friends";
    QTest::newRow("middle") << 1 << "Travel";
    QTest::newRow("last") << 2 << "Friends";
}

void CategoryEditTest::removalSelectsTheNeighbour()
{
    QFETCH(int, row);
    Editing editing;
    editing.form.select(row);
    QMap<QString, int> expected = tableContents();
    expected.remove(editing.form.selected());
    const MessageRobot robot({QMessageBox::Yes});
    editing.form.remove->click();
    QCOMPARE(tableContents(), expected);
    QCOMPARE(editing.form.names(), Names(expected.keys()));
    QTEST(editing.form.selected(), "selected");
    QCOMPARE(editing.form.enabled(), All);
    const CategoryRobot dialogs;
    editing.edit.slotRename(); // what the buttons work on follows
    QTEST(dialogs.dialogs().value(0).text, "selected");
}

void CategoryEditTest::removalOfTheLastItemAllowsOnlyToAdd()
{
    QVERIFY(makeCategories({"Business"}));
    Editing editing({1});
    const MessageRobot robot({QMessageBox::Yes});
    editing.form.remove->click();
    QCOMPARE(editing.form.names(), Names());
    QCOMPARE(editing.form.enabled(), OnlyAdd);
    QCOMPARE(editing.edit.newCategories(), QList<int>());
    editing.edit.slotRemove();
    QCOMPARE(robot.boxes().size(), 1);
    const CategoryRobot dialogs({"Clubs"});
    editing.form.add->click();
    QCOMPARE(editing.form.selected(), "Clubs");
    QCOMPARE(editing.form.enabled(), All);
}

/** A selection may wait for the table, and what happens meanwhile may fill the list. */
void CategoryEditTest::listMayBeFilledAnewDuringARemoval()
{
    Editing editing;
    bool isFilled = false;
    connect(editing.form.list, &QTreeWidget::itemSelectionChanged, &editing.edit, [&] {
        if (!std::exchange(isFilled, true))
            editing.edit.setCategories({3}, "addressbook", "Address Book");
    });
    const MessageRobot robot({QMessageBox::Yes});
    editing.form.remove->click();
    QVERIFY(isFilled);
    QCOMPARE(editing.form.names(), (Names{"Friends", "Travel"}));
    QCOMPARE(editing.form.checked(), Names{"Travel"});
    QCOMPARE(editing.form.selected(), "Friends");
    QCOMPARE(editing.form.enabled(), All);
}

void CategoryEditTest::removalReachesTheCards()
{
    const TestBox box;
    KyPDataManager manager(box.path().constData(), nullptr, false);
    const unsigned long card = addCard(manager, "card");
    QVERIFY(card && storeBytes(manager, card, "CTGR", QByteArray("\2\3")));
    QVERIFY(manager.close());

    Editing editing;
    editing.form.select(1);
    const MessageRobot robot({QMessageBox::Yes});
    editing.form.remove->click();
    QVERIFY(manager.open(true));
    QCOMPARE(listOf(manager, card).toHex(), QByteArray("03"));
}

void CategoryEditTest::failingRemovalKeepsTheRow()
{
    Editing editing;
    const MessageRobot robot({QMessageBox::Yes});
    isStoreFailing = true;
    editing.form.remove->click();
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
    QCOMPARE(editing.form.selected(), "Business");
    QCOMPARE(editing.form.enabled(), All);
}

void CategoryEditTest::removalWithoutASelectionDoesNothing()
{
    Editing editing;
    editing.form.list->clearSelection();
    const MessageRobot robot({QMessageBox::Yes});
    editing.edit.slotRemove();
    QVERIFY(robot.boxes().isEmpty());
    QCOMPARE(editing.form.names(), (Names{"Business", "Friends", "Travel"}));
}

void CategoryEditTest::deleteKeyRemoves()
{
    QVERIFY(KyCategories().addSystemCategory("Fixed"));
    Editing editing;
    editing.show();
    const MessageRobot robot({QMessageBox::Yes});
    editing.press(Qt::Key_Delete);
    QCOMPARE(editing.form.names(), (Names{"Fixed", "Friends", "Travel"}));
    editing.activate();
    editing.press(Qt::Key_Delete);
    QCOMPARE(robot.boxes().size(), 1);
}

void CategoryEditTest::newCategoriesAreTheCheckedOnesInListOrder()
{
    Editing editing({3, 2});
    QCOMPARE(editing.edit.newCategories(), (QList<int>{2, 3}));
    const CategoryRobot robot({"Arts"});
    editing.form.add->click();
    editing.form.list->topLevelItem(0)->setCheckState(0, Qt::Checked);
    editing.form.list->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
    editing.form.list->topLevelItem(3)->setCheckState(0, Qt::Checked);
    QCOMPARE(editing.edit.newCategories(), (QList<int>{1, 3, 4}));
}

void CategoryEditTest::newCategoriesSendsTheNameAsAText()
{
    ChannelListener listener("QPE/System");
    KyCategoryEdit edit;
    const QString application = QString::fromUtf8("b\u00fccher \u6771");
    edit.setCategories({1}, application, "visible");
    QCOMPARE(edit.newCategories(), QList<int>{1});
    const QList<ChannelListener::Message> messages = changes(listener);
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().second, streamed(application));
}

void CategoryEditTest::acceptSendsTheNameAsACString()
{
    ChannelListener listener("QPE/System");
    KyCategoryEdit edit;
    edit.setCategories({1}, QString::fromUtf8("b\u00fccher"), "visible");
    edit.accept();
    const QList<ChannelListener::Message> messages = changes(listener);
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().second, QByteArray("\0\0\0\7b\xFC"
                                                 "cher",
                                                 10) +
                                          '\0');
}

void CategoryEditTest::categoriesOfAnotherApplicationsChangesAreDropped()
{
    Editing editing({1, 2, 3});
    ChildProcess other({"Business", "Office", "Friends"});
    QCOMPARE(other.finish(), 0);
    QCOMPARE(editing.form.checked(), (Names{"Business", "Friends", "Travel"}));
    QCOMPARE(editing.edit.newCategories(), QList<int>{3});
}

void CategoryEditTest::checkedOnesCountWhileAnotherKeepsTheTable()
{
    Editing editing({1, 3});
    const CategoryRobot robot({"Clubs"});
    editing.form.add->click();
    editing.form.list->topLevelItem(3)->setCheckState(0, Qt::Checked);
    editing.form.list->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    ChildProcess other({"keep"});
    QCOMPARE(other.readLine(), "kept");
    QCOMPARE(editing.edit.newCategories(), (QList<int>{3, 4}));
    QCOMPARE(other.finish(), 0);
    QVERIFY(KyCategories().removeCategory("Travel"));
    QCOMPARE(editing.edit.newCategories(), QList<int>{4});
}

void CategoryEditTest::recordKeepsItsCategoriesWhenTheTableIsKeptAtFirst()
{
    ChildProcess other({"keep"});
    QCOMPARE(other.readLine(), "kept");
    Editing editing({3, 1});
    QCOMPARE(editing.form.names(), Names());
    QCOMPARE(editing.edit.newCategories(), (QList<int>{3, 1}));
    QCOMPARE(other.finish(), 0);
    QCOMPARE(editing.edit.newCategories(), (QList<int>{3, 1}));
    editing.edit.setCategories({3, 1, 99}, "addressbook", "Address Book");
    QCOMPARE(editing.edit.newCategories(), (QList<int>{1, 3}));
}

KY_TEST_MAIN_WITH_CHILD(CategoryEditTest, childMain)
#include "categoryedittest.moc"
