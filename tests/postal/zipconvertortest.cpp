#include "fakedictionary.h"
#include "kyaddresslistbox.h"
#include "kymisc.h"
#include "kyzipconvertor.h"
#include "messagerobot.h"
#include <functional>
#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QtTest>

namespace {

const char *const CodeMistake = "There is a mistake\nin the input of the postal code.";
const char *const NoCode = "An applicable postal code \nisn't found.";
const char *const MayLeave = "Do you cancel focusing\nof the address?";

KyAddressListBox *listOf(const KyZIPConvertor &dialog)
{
    return dialog.findChild<KyAddressListBox *>();
}

QString labelOf(const KyZIPConvertor &dialog)
{
    const auto *label = dialog.findChild<QLabel *>();
    return label ? label->text() : QString();
}

QStringList rowsOf(const KyZIPConvertor &dialog)
{
    QStringList rows;
    for (int row = 0; row < listOf(dialog)->count(); ++row)
        rows.append(listOf(dialog)->item(row)->text());
    return rows;
}

QPushButton *buttonOf(const KyZIPConvertor &dialog, const QString &text)
{
    for (QPushButton *button : dialog.findChildren<QPushButton *>()) {
        if (button->text() == QString(text).replace("&", "&&")) // a single one would mark a shortcut
            return button;
    }
    return nullptr;
}

/** Opens the dialog and does something as the user would as soon as it can; closes it, should that not have
 * done so. */
int convert(KyZIPConvertor &dialog, const std::function<void()> &act)
{
    QTimer timer;
    bool hasActed = false;
    QObject::connect(&timer, &QTimer::timeout, &dialog, [&] {
        if (hasActed || !dialog.isVisible() || !dialog.isActiveWindow())
            return;
        hasActed = true;
        act();
        if (dialog.isVisible())
            dialog.reject();
    });
    QTimer::singleShot(20000, &dialog, &QDialog::reject);
    timer.start(5);
    const int result = dialog.convertor();
    return hasActed ? result : -1;
}

void setCode(KyZIPConvertor &dialog, const QString &zip)
{
    dialog.setSearchMode(KyZIPConvertor::ZipSearch);
    dialog.setZip(zip);
}

void setPlace(KyZIPConvertor &dialog, const QString &address)
{
    dialog.setSearchMode(KyZIPConvertor::AddressSearch);
    dialog.setAddress(address);
}

void clickRow(const KyZIPConvertor &dialog, int row)
{
    const KyAddressListBox *list = listOf(dialog);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
}

void press(const KyZIPConvertor &dialog, Qt::Key key)
{
    QTest::keyClick(listOf(dialog), key);
}

/** Whether the dialog keeps a key from another object. */
bool isKept(KyZIPConvertor &dialog, QObject *from, Qt::Key key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    return static_cast<QObject &>(dialog).eventFilter(from, &event);
}

} // namespace

class ZipConvertorTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void opensTheDictionaryOnceAndClosesIt();
    void noDictionaryIsToldOnRequest();
    void withoutADictionaryNothingHappens();
    void failedDictionaryWithoutAHandle();
    void looksAsDescribed();
    void widthGrowsWithTheSquareOfTheScale_data();
    void widthGrowsWithTheSquareOfTheScale();
    void tabGoesFromTheListToTheButtons();

    void listHasTheFocusEachTime();

    void badCodeIsTold_data();
    void badCodeIsTold();
    void badAddressIsTold_data();
    void badAddressIsTold();
    void listOfACode();
    void listOfAnAddress();
    void typedAddressIsAskedAsTheDictionaryWritesIt();
    void labelFollowsTheRow();

    void buttonsTake_data();
    void buttonsTake();
    void tappedRowTakesBoth();
    void activatedRowIsTakenOnce();
    void rowThatIsNoneTakesNothing();
    void returnTakesTheRowAndPressesNoButton();
    void escapeTakesNothing();
    void takingStaysInTheDialog();
    void stateIsTakenWithTheCheckBoxAlone();

    void keysGoToTheNeighbours();
    void keysStopAtBothEnds();
    void otherKeysStayWithTheList();
    void keysElsewhereAreNotTaken();
    void severalCodesAskFirst();
    void answerNoKeepsTheList();
    void escapeFromTheQuestionKeepsTheList();
    void oneCodeAsksNothing();
    void nextSearchAsksNothing();

    void listBoxHasNoCurrentItemAtFirst();
    void listBoxAppendsAndClears();
    void listBoxShowsTheWholeOfALongRow();
};

void ZipConvertorTest::init()
{
    qputenv("KY_DPI", "72");
    qunsetenv("KY_SCREEN");
    dictionary = FakeDictionary();
    dictionary.places = {{"1000001", {"東京都／千代田区千代田", "東京都／千代田区皇居外苑"}},
                         {"1500002", {"東京都／渋谷区渋谷"}},
                         {"5300001", {"大阪府／大阪市北区梅田"}}};
    dictionary.codes = {{jis("千代田区"), {"1000001"}}, {jis("区"), {"1500002", "5300001"}}};
}

void ZipConvertorTest::opensTheDictionaryOnceAndClosesIt()
{
    {
        const KyZIPConvertor dialog(nullptr, true, "zip", false);
        QVERIFY(dialog.isExecute());
        QCOMPARE(dialog.objectName(), "zip");
        QVERIFY(!dialog.isModal());
        QCOMPARE(dictionary.opened, 1);
        QCOMPARE(dictionary.closed, 0);
    }
    QCOMPARE(dictionary.closed, 1);
    QVERIFY(KyZIPConvertor(nullptr, true, nullptr, true).isModal());
}

void ZipConvertorTest::noDictionaryIsToldOnRequest()
{
    dictionary.initResult = ZIP_INIT_NO_FILE;
    MessageRobot robot({QMessageBox::Ok});
    {
        const KyZIPConvertor dialog(nullptr, true);
        QVERIFY(!dialog.isExecute());
        QCOMPARE(dictionary.closed, 1);
    }
    QCOMPARE(dictionary.closed, 1);
    QCOMPARE(robot.boxes().size(), 1);
    const MessageRobot::Box box = robot.boxes().constFirst();
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.caption, "ZIP convertor");
    QCOMPARE(box.text, "A postal code dictionary\nisn't found.");
    QCOMPARE(box.buttonTexts, QStringList{"OK"});
    const KyZIPConvertor silent(nullptr, false);
    QCOMPARE(robot.boxes().size(), 1);
}

void ZipConvertorTest::withoutADictionaryNothingHappens()
{
    dictionary.initResult = ZIP_INIT_NO_GOOD_FILE;
    KyZIPConvertor dialog(nullptr, false);
    QVERIFY(dialog.findChildren<QWidget *>().isEmpty());
    MessageRobot robot;
    setCode(dialog, "1000001");
    dialog.setStateAdoption(true);
    QCOMPARE(dialog.convertor(), 0);
    QVERIFY(dialog.selectedZip().isNull());
    QVERIFY(dialog.selectedCity().isNull());
    QVERIFY(dialog.selectedState().isNull());
    QTest::keyClick(&dialog, Qt::Key_Left);
    QVERIFY(dictionary.asked.isEmpty());
    QVERIFY(robot.boxes().isEmpty());
}

void ZipConvertorTest::failedDictionaryWithoutAHandle()
{
    dictionary.initResult = ZIP_INIT_NO_MEMORY;
    dictionary.hasHandle = false;
    QVERIFY(!KyZIPConvertor(nullptr, false).isExecute());
    QCOMPARE(dictionary.closed + dictionary.closedNothing, 0);
}

void ZipConvertorTest::looksAsDescribed()
{
    KyZIPConvertor dialog;
    QCOMPARE(dialog.windowTitle(), "ZIP convertor");
    QCOMPARE(labelOf(dialog), "");
    QCOMPARE(rowsOf(dialog), QStringList());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    const auto *address = buttonOf(dialog, "Address");
    const auto *zip = buttonOf(dialog, "ZIP");
    const auto *both = buttonOf(dialog, "Adr & ZIP");
    const auto *state = dialog.findChild<QCheckBox *>();
    const auto *label = dialog.findChild<QLabel *>();
    QVERIFY(address && zip && both);
    QCOMPARE(state->text(), "state");
    QVERIFY(!state->isChecked());
    QVERIFY(label->x() + label->width() + 40 <= state->x());
    QVERIFY(state->geometry().bottom() < listOf(dialog)->y());
    QVERIFY(listOf(dialog)->geometry().bottom() < address->y());
    QVERIFY(address->geometry().right() < zip->x() && zip->geometry().right() < both->x());
    QCOMPARE(dialog.layout()->spacing(), 5);
    QVERIFY(both->isDefault());
}

void ZipConvertorTest::widthGrowsWithTheSquareOfTheScale_data()
{
    QTest::addColumn<QByteArray>("dpi");
    QTest::addColumn<QByteArray>("screen");
    QTest::addColumn<int>("width");
    QTest::newRow("scale 1") << QByteArray("72") << QByteArray("1000x800") << 200;
    QTest::newRow("scale 2") << QByteArray("144") << QByteArray("1000x800") << 800;
    QTest::newRow("scale 2, narrow screen") << QByteArray("144") << QByteArray("480x640") << 480;
}

void ZipConvertorTest::widthGrowsWithTheSquareOfTheScale()
{
    QFETCH(QByteArray, dpi);
    QFETCH(QByteArray, screen);
    QFETCH(int, width);
    qputenv("KY_DPI", dpi);
    qputenv("KY_SCREEN", screen);
    const KyZIPConvertor dialog;
    QCOMPARE(dialog.width(), width);
    QCOMPARE(dialog.layout()->spacing(), 5 * KyMisc::getResolutionScale());
}

void ZipConvertorTest::tabGoesFromTheListToTheButtons()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1000001");
    QList<QWidget *> visited;
    convert(dialog, [&] {
        for (int i = 0; i < 5; ++i) {
            visited.append(dialog.focusWidget());
            QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
        }
    });
    const QList<QWidget *> order = {listOf(dialog), buttonOf(dialog, "Address"), buttonOf(dialog, "ZIP"),
                                    buttonOf(dialog, "Adr & ZIP"), dialog.findChild<QCheckBox *>()};
    QCOMPARE(visited, order);
}

void ZipConvertorTest::listHasTheFocusEachTime()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1000001");
    convert(dialog, [&] { buttonOf(dialog, "ZIP")->setFocus(); });
    convert(dialog, [&] { QVERIFY(listOf(dialog)->hasFocus()); });
}

void ZipConvertorTest::badCodeIsTold_data()
{
    QTest::addColumn<QString>("code");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("no digit") << "東京";
    QTest::newRow("behind the last code") << "9999999";
}

void ZipConvertorTest::badCodeIsTold()
{
    QFETCH(QString, code);
    KyZIPConvertor dialog;
    setCode(dialog, code);
    MessageRobot robot({QMessageBox::Ok});
    QCOMPARE(dialog.convertor(), 0);
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(robot.boxes().constFirst().caption, "ZIP convertor");
    QCOMPARE(robot.boxes().constFirst().text, CodeMistake);
    QCOMPARE(robot.boxes().constFirst().buttonTexts, QStringList{"OK"});
}

void ZipConvertorTest::badAddressIsTold_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("null") << QString();
    QTest::newRow("empty") << "";
    QTest::newRow("blanks") << " 　\t";
    QTest::newRow("fits nothing") << "沖縄";
    QTest::newRow("no Japanese") << "łódź";
}

void ZipConvertorTest::badAddressIsTold()
{
    QFETCH(QString, address);
    KyZIPConvertor dialog;
    setPlace(dialog, address);
    MessageRobot robot({QMessageBox::Ok});
    QCOMPARE(dialog.convertor(), 0);
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(robot.boxes().constFirst().text, NoCode);
}

void ZipConvertorTest::listOfACode()
{
    KyZIPConvertor dialog;
    setCode(dialog, "100");
    QCOMPARE(
        convert(dialog,
                [&] {
                    QCOMPARE(rowsOf(dialog), QStringList({"東京都千代田区千代田", "東京都千代田区皇居外苑"}));
                    QCOMPARE(listOf(dialog)->currentRow(), 0);
                    QCOMPARE(labelOf(dialog), "１００－０００１");
                    QVERIFY(listOf(dialog)->hasFocus());
                }),
        int(QDialog::Rejected));
    // A second search takes the place of the first.
    setCode(dialog, "5300001");
    convert(dialog, [&] { QCOMPARE(rowsOf(dialog), QStringList{"大阪府大阪市北区梅田"}); });
    QCOMPARE(labelOf(dialog), "５３０－０００１");
}

void ZipConvertorTest::listOfAnAddress()
{
    KyZIPConvertor dialog;
    setPlace(dialog, "区");
    convert(dialog, [&] {
        QCOMPARE(rowsOf(dialog), QStringList({"150-0002 東京都渋谷区渋谷", "530-0001 大阪府大阪市北区梅田"}));
    });
    setPlace(dialog, "千代田区");
    convert(dialog, [&] {
        QCOMPARE(rowsOf(dialog), QStringList({"東京都千代田区千代田", "東京都千代田区皇居外苑"}));
    });
    QCOMPARE(dialog.selectedZip(), "100-0001");
}

void ZipConvertorTest::typedAddressIsAskedAsTheDictionaryWritesIt()
{
    KyZIPConvertor dialog;
    setPlace(dialog, "東京都 外神田3-2 髙");
    MessageRobot robot({QMessageBox::Ok});
    QCOMPARE(dialog.convertor(), 0);
    QCOMPARE(dictionary.asked, QByteArrayList{"address " + jis("東京都外神田３－２〓")});
}

void ZipConvertorTest::labelFollowsTheRow()
{
    KyZIPConvertor dialog;
    setPlace(dialog, "区");
    QString label;
    const int result = convert(dialog, [&] {
        press(dialog, Qt::Key_Down);
        label = labelOf(dialog);
        buttonOf(dialog, "Adr & ZIP")->click();
    });
    QCOMPARE(result, int(QDialog::Accepted));
    QCOMPARE(label, "５３０－０００１");
    QCOMPARE(dialog.selectedZip(), "530-0001");
    QCOMPARE(dialog.selectedCity(), "大阪市北区梅田");
}

void ZipConvertorTest::buttonsTake_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("zip");
    QTest::addColumn<bool>("address");
    QTest::newRow("address") << "Address" << false << true;
    QTest::newRow("code") << "ZIP" << true << false;
    QTest::newRow("both") << "Adr & ZIP" << true << true;
}

void ZipConvertorTest::buttonsTake()
{
    QFETCH(QString, button);
    QFETCH(bool, zip);
    QFETCH(bool, address);
    KyZIPConvertor dialog;
    dialog.setStateAdoption(true);
    setCode(dialog, "1500002");
    QCOMPARE(convert(dialog, [&] { buttonOf(dialog, button)->click(); }), int(QDialog::Accepted));
    QCOMPARE(dialog.isSelectZip(), zip);
    QCOMPARE(dialog.isSelectAddress(), address);
    QCOMPARE(dialog.selectedZip(), zip ? QString("150-0002") : QString());
    QCOMPARE(dialog.selectedZip().isNull(), !zip);
    QCOMPARE(dialog.selectedCity(), address ? QString("渋谷区渋谷") : QString());
    QCOMPARE(dialog.selectedCity().isNull(), !address);
    QCOMPARE(dialog.selectedState(), address ? QString("東京都") : QString());
    QCOMPARE(dialog.selectedState().isNull(), !address);
}

void ZipConvertorTest::tappedRowTakesBoth()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1000001");
    QCOMPARE(convert(dialog, [&] { clickRow(dialog, 1); }), int(QDialog::Accepted));
    QVERIFY(dialog.isSelectZip() && dialog.isSelectAddress());
    QCOMPARE(dialog.selectedZip(), "100-0001");
    QCOMPARE(dialog.selectedCity(), "千代田区皇居外苑");
}

void ZipConvertorTest::activatedRowIsTakenOnce()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1000001");
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    convert(dialog, [&] {
        QListWidgetItem *item = listOf(dialog)->item(1);
        emit listOf(dialog)->itemClicked(item);
        emit listOf(dialog)->itemActivated(item);
    });
    QCOMPARE(accepted.count(), 1);
    // And each time that it is open.
    convert(dialog, [&] { emit listOf(dialog)->itemActivated(listOf(dialog)->item(0)); });
    QCOMPARE(accepted.count(), 2);
}

void ZipConvertorTest::rowThatIsNoneTakesNothing()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1500002");
    QCOMPARE(convert(dialog,
                     [&] {
                         emit listOf(dialog)->itemClicked(nullptr);
                         const QRect last = listOf(dialog)->visualItemRect(listOf(dialog)->item(0));
                         QTest::mouseClick(listOf(dialog)->viewport(), Qt::LeftButton, {},
                                           last.bottomLeft() + QPoint(5, 20));
                         QVERIFY(dialog.isVisible());
                     }),
             int(QDialog::Rejected));
}

void ZipConvertorTest::returnTakesTheRowAndPressesNoButton()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1000001");
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    const int result = convert(dialog, [&] {
        press(dialog, Qt::Key_Down);
        press(dialog, Qt::Key_Return);
    });
    QCOMPARE(result, int(QDialog::Accepted));
    QCOMPARE(accepted.count(), 1);
    QVERIFY(dialog.isSelectZip() && dialog.isSelectAddress());
    QCOMPARE(dialog.selectedCity(), "千代田区皇居外苑");
}

void ZipConvertorTest::escapeTakesNothing()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1000001");
    bool isOpen = true;
    const int result = convert(dialog, [&] {
        press(dialog, Qt::Key_Escape);
        isOpen = dialog.isVisible();
    });
    QCOMPARE(result, int(QDialog::Rejected));
    QVERIFY(!isOpen);
}

void ZipConvertorTest::takingStaysInTheDialog()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1500002");
    convert(dialog, [&] { buttonOf(dialog, "ZIP")->click(); });
    QCOMPARE(convert(dialog, [&] { clickRow(dialog, 0); }), int(QDialog::Accepted));
    QVERIFY(!dialog.isSelectAddress());
}

void ZipConvertorTest::stateIsTakenWithTheCheckBoxAlone()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1500002");
    convert(dialog, [&] { clickRow(dialog, 0); });
    QVERIFY(dialog.selectedState().isNull());
    QCOMPARE(dialog.selectedCity(), "渋谷区渋谷");
    dialog.setStateAdoption(true);
    QVERIFY(dialog.findChild<QCheckBox *>()->isChecked());
    QCOMPARE(dialog.selectedState(), "東京都");
    dialog.setStateAdoption(false);
    QVERIFY(dialog.selectedState().isNull());
}

void ZipConvertorTest::keysGoToTheNeighbours()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1500002");
    convert(dialog, [&] {
        press(dialog, Qt::Key_Right);
        QCOMPARE(rowsOf(dialog), QStringList{"大阪府大阪市北区梅田"});
        QCOMPARE(labelOf(dialog), "５３０－０００１");
        QVERIFY(isKept(dialog, listOf(dialog), Qt::Key_Left));
        press(dialog, Qt::Key_Left);
        QCOMPARE(rowsOf(dialog), QStringList({"東京都千代田区千代田", "東京都千代田区皇居外苑"}));
        QCOMPARE(listOf(dialog)->currentRow(), 0);
    });
    QCOMPARE(dialog.selectedZip(), "100-0001");
    const QByteArrayList asked = {"search 1500002", "next 1500002", "previous 5300001", "previous 1500002"};
    QCOMPARE(dictionary.asked, asked);
}

void ZipConvertorTest::keysStopAtBothEnds()
{
    for (const auto &[code, key] :
         {std::pair("1000001", Qt::Key_Left), std::pair("5300001", Qt::Key_Right)}) {
        KyZIPConvertor dialog;
        setCode(dialog, code);
        convert(dialog, [&, pressed = key] {
            const QStringList rows = rowsOf(dialog);
            const QString label = labelOf(dialog);
            const QListWidgetItem *first = listOf(dialog)->item(0);
            press(dialog, pressed);
            QCOMPARE(rowsOf(dialog), rows);
            QCOMPARE(labelOf(dialog), label);
            QCOMPARE(listOf(dialog)->item(0), first);
        });
        QCOMPARE(dictionary.asked.size(), 2);
        dictionary.asked.clear();
    }
}

void ZipConvertorTest::otherKeysStayWithTheList()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1000001");
    convert(dialog, [&] {
        press(dialog, Qt::Key_End);
        QCOMPARE(listOf(dialog)->currentRow(), 1);
        press(dialog, Qt::Key_Up);
        QCOMPARE(listOf(dialog)->currentRow(), 0);
    });
    QCOMPARE(dictionary.asked.size(), 1);
}

void ZipConvertorTest::keysElsewhereAreNotTaken()
{
    KyZIPConvertor dialog;
    setCode(dialog, "1500002");
    convert(dialog, [&] {
        QTest::keyClick(buttonOf(dialog, "ZIP"), Qt::Key_Right);
        QTest::keyRelease(listOf(dialog), Qt::Key_Right);
        QVERIFY(!isKept(dialog, buttonOf(dialog, "ZIP"), Qt::Key_Right));
    });
    QCOMPARE(dictionary.asked, QByteArrayList{"search 1500002"});
}

void ZipConvertorTest::severalCodesAskFirst()
{
    KyZIPConvertor dialog;
    setPlace(dialog, "区");
    MessageRobot robot({QMessageBox::Yes});
    convert(dialog, [&] {
        press(dialog, Qt::Key_Left);
        QCOMPARE(rowsOf(dialog), QStringList({"東京都千代田区千代田", "東京都千代田区皇居外苑"}));
        press(dialog, Qt::Key_Right);
        QCOMPARE(rowsOf(dialog), QStringList{"東京都渋谷区渋谷"});
    });
    QCOMPARE(robot.boxes().size(), 1); // once
    const MessageRobot::Box box = robot.boxes().constFirst();
    QCOMPARE(box.icon, QMessageBox::Warning);
    QCOMPARE(box.caption, "ZIP convertor");
    QCOMPARE(box.text, MayLeave);
    QCOMPARE(QSet<QString>(box.buttonTexts.begin(), box.buttonTexts.end()), (QSet<QString>{"Yes", "No"}));
    QCOMPARE(box.defaultButton, QMessageBox::Yes);
}

void ZipConvertorTest::answerNoKeepsTheList()
{
    KyZIPConvertor dialog;
    setPlace(dialog, "区");
    MessageRobot robot({QMessageBox::No, QMessageBox::No});
    convert(dialog, [&] {
        const QStringList rows = rowsOf(dialog);
        press(dialog, Qt::Key_Left);
        QCOMPARE(rowsOf(dialog), rows);
        QVERIFY(!isKept(dialog, listOf(dialog), Qt::Key_Right));
        QCOMPARE(rowsOf(dialog), rows);
    });
    QCOMPARE(robot.boxes().size(), 2); // asked again
    QVERIFY(robot.boxes().constLast().hadAnswer);
    QCOMPARE(dictionary.asked.size(), 3); // of the address and its two codes
}

void ZipConvertorTest::escapeFromTheQuestionKeepsTheList()
{
    KyZIPConvertor dialog;
    setPlace(dialog, "区");
    MessageRobot robot;
    convert(dialog, [&] {
        press(dialog, Qt::Key_Left);
        QCOMPARE(listOf(dialog)->count(), 2);
        QVERIFY(dialog.isVisible());
    });
    QCOMPARE(robot.boxes().size(), 1);
    QCOMPARE(dictionary.asked.size(), 3);
}

void ZipConvertorTest::oneCodeAsksNothing()
{
    KyZIPConvertor dialog;
    setPlace(dialog, "千代田区");
    MessageRobot robot;
    convert(dialog, [&] { press(dialog, Qt::Key_Right); });
    QVERIFY(robot.boxes().isEmpty());
    QCOMPARE(labelOf(dialog), "１５０－０００２");
}

void ZipConvertorTest::nextSearchAsksNothing()
{
    KyZIPConvertor dialog;
    MessageRobot robot;
    setPlace(dialog, "区");
    convert(dialog, [] {});
    setCode(dialog, "1500002");
    convert(dialog, [&] { press(dialog, Qt::Key_Right); });
    QVERIFY(robot.boxes().isEmpty());
    QCOMPARE(labelOf(dialog), "５３０－０００１");
}

void ZipConvertorTest::listBoxHasNoCurrentItemAtFirst()
{
    KyAddressListBox box(nullptr, "addresses");
    QCOMPARE(box.objectName(), "addresses");
    QVERIFY(!box.currentAdrItem());
    box.insertAdrsList({{"東京都", "渋谷区", "1500002", false}});
    QVERIFY(!box.currentAdrItem());
    box.setCurrentRow(0);
    QVERIFY(box.currentAdrItem());
}

void ZipConvertorTest::listBoxAppendsAndClears()
{
    KyAddressListBox box;
    box.insertAdrsList({{"東京都", "渋谷区", "1500002", false}});
    box.insertAdrsList({{"大阪府", "大阪市", "530-0001", true}});
    QCOMPARE(box.count(), 2);
    QCOMPARE(box.item(1)->text(), "530-0001 大阪府大阪市");
    box.setCurrentRow(1);
    QCOMPARE(box.currentAdrItem()->state, "大阪府");
    QCOMPARE(box.currentAdrItem()->zip, "530-0001");
    box.clear();
    QCOMPARE(box.count(), 0);
    QVERIFY(!box.currentAdrItem());
    box.insertAdrsList({{"北海道", "札幌市", "0600000", false}});
    box.setCurrentRow(0);
    QCOMPARE(box.currentAdrItem()->state, "北海道");
}

void ZipConvertorTest::listBoxShowsTheWholeOfALongRow()
{
    KyAddressListBox box;
    box.insertAdrsList(
        {{"東京都", "区", "", false}, {"東京都", QString(37, QChar(0x5927)), "1000001", true}});
    box.resize(200, 200);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    const QRect shortRow = box.visualItemRect(box.item(0));
    const QRect longRow = box.visualItemRect(box.item(1));
    QVERIFY(box.fontMetrics().horizontalAdvance(box.item(1)->text()) > box.viewport()->width());
    QVERIFY(longRow.height() >= 2 * box.fontMetrics().height());
    QVERIFY(shortRow.height() < longRow.height());
    QVERIFY(longRow.width() <= box.viewport()->width());
}

QTEST_MAIN(ZipConvertorTest)
#include "zipconvertortest.moc"
