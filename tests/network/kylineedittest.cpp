#include "kylineedit.h"
#include "kylineedit_p.h"

#include "channellistener.h"
#include "fepservice.h"
#include <QApplication>
#include <QIntValidator>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using Messages = QList<ChannelListener::Message>;

namespace {

template <auto Member> struct Reveal
{
    friend const KYLineEditPrivate &privateOf(const KYLineEdit &edit) { return *(edit.*Member); }
};
const KYLineEditPrivate &privateOf(const KYLineEdit &edit);
template struct Reveal<&KYLineEdit::d>;

const ChannelListener::Message ShowMessage{"showInputMethod()", ""};
const ChannelListener::Message OnMessage{"inputFepOnReq", ""};
const ChannelListener::Message OffMessage{"inputFepOffReq", ""};

ChannelListener::Message modeMessage(qint32 mode)
{
    QByteArray data;
    QDataStream(&data, QIODevice::WriteOnly) << mode;
    return {"inputFepModeChangedReq()", data};
}

ChannelListener::Message changeMessage(const char *name)
{
    QByteArray data;
    QDataStream(&data, QIODevice::WriteOnly) << name;
    return {"changeInputMethod()", data};
}

/** A window with an edit, and a widget that has the focus before. */
class Form : public QWidget
{
public:
    Form() : other(new QLineEdit), edit(new KYLineEdit(this))
    {
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(other);
        layout->addWidget(edit);
    }

    /** True when the window is active and the focus is outside the edit. */
    bool begin()
    {
        show();
        activateWindow();
        other->setFocus();
        return QTest::qWaitForWindowActive(this, 10000) && other->hasFocus();
    }

    QLineEdit *const other;
    KYLineEdit *const edit;
};

/** A form whose edits may choose input methods, a front-end processor, and what is asked of the task bar. */
struct Desk
{
    explicit Desk(bool isOn = false) : service(isOn, true) { KYLineEdit::setPadControl(true); }

    bool begin() { return service.isReady() && form.begin(); }

    const FepService service;
    ChannelListener taskBar{"QPE/TaskBar"};
    Form form;
};

} // namespace

class KYLineEditTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void startsWithoutInputMethod();
    void editorMode_data();
    void editorMode();
    void anyTextKeepsTheSwitch();
    void modesBeyondTheTable_data();
    void modesBeyondTheTable();
    void editorModeSetsValidator();
    void editorModeSetsLargestLength();
    void setPadMode();
    void setPassword();
    void emptyPasswordLeavesTheEcho();

    void focusBringsTheInputMethod();
    void focusSwitchesOff();
    void tabAndMouseGiveTheFocusToo();
    void nothingWithoutControl();
    void nothingWithoutName();
    void emptyNameShowsThePresentOne();
    void onADeviceWithAKeyboardOnlyTheMode();
    void changeAtOnce();
    void changeAtOnceWithEmptyName();
    void numberPadIsNoted();
    void numberPadIsNotNoted_data();
    void numberPadIsNotNoted();
    void numberPadIsForgottenByChangeAtOnce();
    void editStillWorks();
};

void KYLineEditTest::init()
{
    qputenv("KY_SCREEN", "480x640");
}

void KYLineEditTest::cleanup()
{
    KYLineEdit::setPadControl(false);
    KYLineEdit::setNumLockControl(false);
}

void KYLineEditTest::startsWithoutInputMethod()
{
    QWidget parent;
    const KYLineEdit edit(&parent, "address");
    QCOMPARE(edit.parent(), &parent);
    QCOMPARE(edit.objectName(), QString("address"));
    QVERIFY(edit.padName().isNull());
    QCOMPARE(privateOf(edit).padMode, 0);
    QVERIFY(!privateOf(edit).padFlag);
    QVERIFY(!privateOf(edit).changeAtOnce);
    QVERIFY(!privateOf(edit).numLockUsed);
    QVERIFY(KYLineEdit(nullptr).objectName().isEmpty());
}

void KYLineEditTest::editorMode_data()
{
    QTest::addColumn<KYLineEdit::inputMode>("mode");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("padName");
    QTest::addColumn<int>("padMode");
    QTest::addColumn<bool>("padFlag");
    QTest::newRow("any text") << KYLineEdit::AutoPad << 0 << "AutoPad" << 0 << false;
    QTest::newRow("letters") << KYLineEdit::Keyboard << 1 << "Keyboard" << 0x48 << false;
    QTest::newRow("numbers") << KYLineEdit::JpnNumPad << 2 << "JpnNumPad" << 0x48 << false;
    QTest::newRow("Japanese") << KYLineEdit::Crim << 3 << "CRIM" << 0x82 << true;
}

void KYLineEditTest::editorMode()
{
    QFETCH(KYLineEdit::inputMode, mode);
    QTEST(int(mode), "number");
    KYLineEdit edit(nullptr);
    if (mode != KYLineEdit::AutoPad)
        edit.setPadMode("Before", -1, mode != KYLineEdit::Crim);
    edit.editorMode(mode, nullptr);
    QTEST(edit.padName(), "padName");
    QTEST(privateOf(edit).padMode, "padMode");
    QTEST(privateOf(edit).padFlag, "padFlag");
}

void KYLineEditTest::anyTextKeepsTheSwitch()
{
    KYLineEdit edit(nullptr);
    edit.editorMode(KYLineEdit::Crim, nullptr);
    edit.editorMode(KYLineEdit::AutoPad, nullptr);
    QCOMPARE(edit.padName(), QString("AutoPad"));
    QCOMPARE(privateOf(edit).padMode, 0);
    QVERIFY(privateOf(edit).padFlag);
}

void KYLineEditTest::modesBeyondTheTable_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("4") << 4;
    QTest::newRow("negative") << -1;
    QTest::newRow("highest") << INT_MAX;
    QTest::newRow("lowest") << INT_MIN;
}

void KYLineEditTest::modesBeyondTheTable()
{
    QFETCH(int, mode);
    KYLineEdit edit(nullptr);
    const QIntValidator validator;
    edit.setPadMode("Before", 7, true);
    edit.editorMode(KYLineEdit::inputMode(mode), 5, const_cast<QIntValidator *>(&validator));
    QCOMPARE(edit.padName(), QString("Before"));
    QCOMPARE(privateOf(edit).padMode, 7);
    QVERIFY(privateOf(edit).padFlag);
    QCOMPARE(edit.validator(), &validator);
    QCOMPARE(edit.maxLength(), 5);
}

void KYLineEditTest::editorModeSetsValidator()
{
    KYLineEdit edit(nullptr);
    QIntValidator validator;
    const int length = edit.maxLength();
    edit.editorMode(KYLineEdit::Keyboard, &validator);
    QCOMPARE(edit.validator(), &validator);
    edit.editorMode(KYLineEdit::Keyboard, nullptr);
    QCOMPARE(edit.validator(), &validator);
    QCOMPARE(edit.maxLength(), length);
}

void KYLineEditTest::editorModeSetsLargestLength()
{
    KYLineEdit edit(nullptr);
    QIntValidator validator;
    edit.editorMode(KYLineEdit::JpnNumPad, 15, &validator);
    QCOMPARE(edit.validator(), &validator);
    QCOMPARE(edit.maxLength(), 15);
    QCOMPARE(edit.padName(), QString("JpnNumPad"));
}

void KYLineEditTest::setPadMode()
{
    KYLineEdit edit(nullptr);
    edit.setPadMode("CRIM", 9, true);
    QCOMPARE(edit.padName(), QString("CRIM"));
    QCOMPARE(privateOf(edit).padMode, 9);
    QVERIFY(privateOf(edit).padFlag);
    edit.setPadName("");
    QVERIFY(edit.padName().isEmpty() && !edit.padName().isNull());
    QCOMPARE(privateOf(edit).padMode, 9);
    edit.setPadName(QString());
    QVERIFY(edit.padName().isNull());
}

void KYLineEditTest::setPassword()
{
    KYLineEdit edit(nullptr);
    edit.setPassword("secret");
    QCOMPARE(edit.text(), QString("secret"));
    QCOMPARE(edit.echoMode(), QLineEdit::Password);
}

void KYLineEditTest::emptyPasswordLeavesTheEcho()
{
    KYLineEdit edit(nullptr);
    edit.setText("before");
    edit.setPassword("");
    QCOMPARE(edit.text(), QString());
    QCOMPARE(edit.echoMode(), QLineEdit::Normal);
    edit.setPassword("secret");
    edit.setPassword(QString());
    QCOMPARE(edit.text(), QString());
    QCOMPARE(edit.echoMode(), QLineEdit::Password);
}

void KYLineEditTest::focusBringsTheInputMethod()
{
    Desk desk;
    desk.form.edit->editorMode(KYLineEdit::Crim, nullptr);
    QVERIFY(desk.begin());
    QCOMPARE(desk.taskBar.take(), Messages());
    desk.form.edit->setFocus();
    QVERIFY(desk.form.edit->hasFocus());
    QCOMPARE(desk.taskBar.take(), (Messages{changeMessage("CRIM"), OnMessage, modeMessage(0x82)}));
    desk.form.other->setFocus();
    QCOMPARE(desk.taskBar.take(), Messages());
    desk.form.edit->setFocus(); // each time anew
    QCOMPARE(desk.taskBar.take(), (Messages{changeMessage("CRIM"), OnMessage, modeMessage(0x82)}));
}

void KYLineEditTest::focusSwitchesOff()
{
    Desk desk(true);
    desk.form.edit->editorMode(KYLineEdit::Keyboard, nullptr);
    QVERIFY(desk.begin());
    desk.form.edit->setFocus();
    QCOMPARE(desk.taskBar.take(), (Messages{changeMessage("Keyboard"), OffMessage, modeMessage(0x48)}));
}

void KYLineEditTest::tabAndMouseGiveTheFocusToo()
{
    ChannelListener taskBar("QPE/TaskBar");
    KYLineEdit::setPadControl(true);
    Form form;
    form.edit->setPadName("JpnNumPad");
    QVERIFY(form.begin());
    QTest::keyClick(form.other, Qt::Key_Tab);
    QTRY_VERIFY_WITH_TIMEOUT(form.edit->hasFocus(), 10000);
    QCOMPARE(taskBar.take(), Messages{changeMessage("JpnNumPad")});
    QTest::mouseClick(form.other, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(form.other->hasFocus(), 10000);
    QTest::mouseClick(form.edit, Qt::LeftButton);
    QTRY_VERIFY_WITH_TIMEOUT(form.edit->hasFocus(), 10000);
    QCOMPARE(taskBar.take(), Messages{changeMessage("JpnNumPad")});
}

void KYLineEditTest::nothingWithoutControl()
{
    Desk desk;
    KYLineEdit::setPadControl(false);
    desk.form.edit->editorMode(KYLineEdit::Crim, nullptr);
    desk.form.edit->setChangeAtOnce(true);
    QVERIFY(desk.begin());
    desk.form.edit->setFocus();
    QCOMPARE(desk.taskBar.take(), Messages());
    QCOMPARE(desk.form.edit->padName(), QString("CRIM"));
}

void KYLineEditTest::nothingWithoutName()
{
    Desk desk;
    desk.form.edit->setPadMode(QString(), 1, true);
    QVERIFY(desk.begin());
    desk.form.edit->setFocus();
    QCOMPARE(desk.taskBar.take(), Messages());
}

void KYLineEditTest::emptyNameShowsThePresentOne()
{
    Desk desk;
    desk.form.edit->setPadMode("", 1, true);
    QVERIFY(desk.begin());
    desk.form.edit->setFocus();
    QCOMPARE(desk.taskBar.take(), Messages{ShowMessage});
}

void KYLineEditTest::onADeviceWithAKeyboardOnlyTheMode()
{
    qputenv("KY_SCREEN", "640x480");
    Desk desk;
    desk.form.edit->editorMode(KYLineEdit::Crim, nullptr);
    QVERIFY(desk.begin());
    desk.form.edit->setFocus();
    QCOMPARE(desk.taskBar.take(), (Messages{OnMessage, modeMessage(0x82)}));
    desk.form.other->setFocus();
    desk.form.edit->setPadName("");
    desk.form.edit->setFocus();
    QCOMPARE(desk.taskBar.take(), Messages());
}

void KYLineEditTest::changeAtOnce()
{
    ChannelListener taskBar("QPE/TaskBar");
    KYLineEdit::setPadControl(true);
    Form form;
    form.edit->editorMode(KYLineEdit::Keyboard, nullptr);
    form.edit->setChangeAtOnce(true);
    QVERIFY(form.begin());
    form.edit->setFocus();
    QCOMPARE(taskBar.take(), Messages{changeMessage("Keyboard")});
    QVERIFY(form.edit->padName().isNull());
    form.other->setFocus();
    form.edit->setFocus();
    QCOMPARE(taskBar.take(), Messages());
}

void KYLineEditTest::changeAtOnceWithEmptyName()
{
    ChannelListener taskBar("QPE/TaskBar");
    KYLineEdit::setPadControl(true);
    Form form;
    form.edit->setPadName("");
    form.edit->setChangeAtOnce(true);
    QVERIFY(form.begin());
    for (int i = 0; i < 2; ++i) {
        form.edit->setFocus();
        QCOMPARE(taskBar.take(), Messages{ShowMessage});
        QVERIFY(!form.edit->padName().isNull());
        form.other->setFocus();
    }
}

void KYLineEditTest::numberPadIsNoted()
{
    KYLineEdit::setNumLockControl(true); // and no other
    Form form;
    form.edit->editorMode(KYLineEdit::JpnNumPad, nullptr);
    QVERIFY(form.begin());
    QVERIFY(!privateOf(*form.edit).numLockUsed);
    form.edit->setFocus();
    QVERIFY(privateOf(*form.edit).numLockUsed);
    form.other->setFocus();
    QVERIFY(!privateOf(*form.edit).numLockUsed);
}

void KYLineEditTest::numberPadIsNotNoted_data()
{
    QTest::addColumn<bool>("control");
    QTest::addColumn<QString>("name");
    QTest::newRow("not allowed") << false << "JpnNumPad";
    QTest::newRow("another method") << true << "Keyboard";
    QTest::newRow("other letters") << true << "jpnnumpad";
    QTest::newRow("null") << true << QString();
}

void KYLineEditTest::numberPadIsNotNoted()
{
    QFETCH(bool, control);
    QFETCH(QString, name);
    KYLineEdit::setNumLockControl(control);
    Form form;
    form.edit->setPadName(name);
    QVERIFY(form.begin());
    form.edit->setFocus();
    QVERIFY(!privateOf(*form.edit).numLockUsed);
}

void KYLineEditTest::numberPadIsForgottenByChangeAtOnce()
{
    KYLineEdit::setPadControl(true);
    KYLineEdit::setNumLockControl(true);
    Form form;
    form.edit->editorMode(KYLineEdit::JpnNumPad, nullptr);
    form.edit->setChangeAtOnce(true);
    QVERIFY(form.begin());
    form.edit->setFocus();
    QVERIFY(!privateOf(*form.edit).numLockUsed); // the name has gone before it is looked at
}

void KYLineEditTest::editStillWorks()
{
    KYLineEdit::setPadControl(true);
    Form form;
    form.edit->editorMode(KYLineEdit::AutoPad, nullptr);
    QVERIFY(form.begin());
    QTest::keyClick(form.other, Qt::Key_Tab);
    QTRY_VERIFY_WITH_TIMEOUT(form.edit->hasFocus(), 10000);
    QTest::keyClicks(form.edit, "10.0");
    QCOMPARE(form.edit->text(), QString("10.0"));
    form.edit->deselect();
    const QSignalSpy finished(form.edit, &QLineEdit::editingFinished);
    QTest::keyClick(form.edit, Qt::Key_Backtab);
    QTRY_VERIFY_WITH_TIMEOUT(form.other->hasFocus(), 10000);
    QCOMPARE(finished.size(), 1);
    QTest::keyClick(form.other, Qt::Key_Tab);
    QTRY_VERIFY_WITH_TIMEOUT(form.edit->hasFocus(), 10000);
    QCOMPARE(form.edit->selectedText(), QString("10.0")); // as any edit that the tab key reaches
}

QTEST_MAIN(KYLineEditTest)
#include "kylineedittest.moc"
