#include "categoryrobot.h"
#include "kycategoryedit.h"
#include "kycategoryselect.h"
#include "tablefixture.h"
#include <functional>
#include <memory>
#include <QTreeWidget>

// Applications that delete their window, from a message say, while a dialog about categories is open in it.

namespace {

/** Does something once, as soon as a modal dialog of a class is shown. */
class OnceShown
{
public:
    OnceShown(const char *dialog, std::function<void()> act)
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this, dialog, act = std::move(act)] {
            const QWidget *shown = QApplication::activeModalWidget();
            if (!shown || !shown->isVisible() || !shown->inherits(dialog))
                return;
            m_timer.stop();
            act();
        });
        m_timer.start(1);
    }
    Q_DISABLE_COPY_MOVE(OnceShown)

private:
    QTimer m_timer;
};

/** A window with an edit of all categories, one of which is selected. */
struct Window
{
    explicit Window(const QString &selected = "Friends")
    {
        edit->setCategories({}, "addressbook", "Address Book");
        auto *list = edit->findChild<QTreeWidget *>();
        list->setCurrentItem(list->findItems(selected, Qt::MatchExactly).value(0));
    }

    std::unique_ptr<QWidget> widget = std::make_unique<QWidget>();
    KyCategoryEdit *edit = new KyCategoryEdit(widget.get());
};

} // namespace

class CategoryDeletionTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void duringANaming_data();
    void duringANaming();
    void duringTheRefusalOfAName();
    void duringAQuestion_data();
    void duringAQuestion();
    void duringTheRefusalOfTheDialog();
};

void CategoryDeletionTest::init()
{
    QVERIFY(makeTable());
    KyCategories categories;
    QVERIFY(categories.addCategory("Friends") && categories.addSystemCategory("Fixed"));
}

void CategoryDeletionTest::duringANaming_data()
{
    QTest::addColumn<bool>("isRenaming");
    QTest::newRow("addition") << false;
    QTest::newRow("renaming") << true;
}

void CategoryDeletionTest::duringANaming()
{
    QFETCH(bool, isRenaming);
    Window window;
    const OnceShown deletion("KyCategoryDialog", [&] { window.widget.reset(); });
    isRenaming ? window.edit->slotRename() : window.edit->slotAdd();
    QVERIFY(!window.widget);
    QVERIFY(!QApplication::activeModalWidget());
}

void CategoryDeletionTest::duringTheRefusalOfAName()
{
    Window window;
    const CategoryRobot robot({"Friends"});
    const OnceShown deletion("QMessageBox", [&] { window.widget.reset(); });
    window.edit->slotAdd();
    QVERIFY(!window.widget);
    QVERIFY(!QApplication::activeModalWidget());
}

void CategoryDeletionTest::duringAQuestion_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("removal") << "Friends";
    QTest::newRow("refusal of a system category") << "Fixed";
}

void CategoryDeletionTest::duringAQuestion()
{
    QFETCH(QString, name);
    Window window(name);
    const OnceShown deletion("QMessageBox", [&] { window.widget.reset(); });
    window.edit->slotRemove();
    QVERIFY(!window.widget);
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(tableContents().contains(name));
}

void CategoryDeletionTest::duringTheRefusalOfTheDialog()
{
    QFile marker(categoryEdittingFileName());
    QVERIFY(marker.open(QIODevice::WriteOnly));
    auto window = std::make_unique<QWidget>();
    auto *select = new KyCategorySelect(window.get());
    const OnceShown deletion("QMessageBox", [&] { window.reset(); });
    select->slotDialog();
    QVERIFY(!window);
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(marker.remove());
}

QTEST_MAIN(CategoryDeletionTest)
#include "categorydeletiontest.moc"
