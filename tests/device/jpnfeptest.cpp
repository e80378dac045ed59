#include "jpnfep.h"
#include "jpnfeputil.h"

#include "channellistener.h"
#include "fepservice.h"
#include "qcopenvelope.h"
#include <QApplication>
#include <QTest>

using Messages = QList<ChannelListener::Message>;

namespace {

ChannelListener::Message modeMessage(int mode)
{
    QByteArray data;
    QDataStream(&data, QIODevice::WriteOnly) << qint32(mode);
    return {"inputFepModeChangedReq()", data};
}

/** As it is on the wire: length of the name with its zero byte, the name, the zero byte. */
ChannelListener::Message changeMessage(const QByteArray &name)
{
    const auto length = char(name.size() + 1);
    return {"changeInputMethod()", QByteArray("\0\0\0", 3) + length + name + '\0'};
}

const ChannelListener::Message ShowMessage{"showInputMethod()", ""};
const ChannelListener::Message HideMessage{"hideInputMethod()", ""};

} // namespace

class JpnFepTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void nothingWithoutInterface();
    void setInputMode_data();
    void setInputMode();
    void showAndHide();
    void changeInputMethod_data();
    void changeInputMethod();
    void nameIsReadAsText();
    void automaticOnADeviceWrittenOn();
    void automaticOnADeviceWithAKeyboard();
    void utilitySendsTheSame();
};

void JpnFepTest::cleanup()
{
    qunsetenv("KY_SCREEN");
}

void JpnFepTest::nothingWithoutInterface()
{
    ChannelListener taskBar("QPE/TaskBar");
    JpnFep::setInputMode(1, true);
    JpnFep::setInputMode(1, false);
    QCOMPARE(taskBar.take(), Messages());
}

void JpnFepTest::setInputMode_data()
{
    QTest::addColumn<bool>("isOn");
    QTest::addColumn<bool>("switchable");
    QTest::addColumn<bool>("wanted");
    QTest::addColumn<QByteArray>("request");
    const QByteArray none, on = "inputFepOnReq", off = "inputFepOffReq";
    QTest::newRow("off, to on, can't") << false << false << true << none;
    QTest::newRow("off, to on") << false << true << true << on;
    QTest::newRow("off, to off, can't") << false << false << false << none;
    QTest::newRow("off, to off") << false << true << false << none;
    QTest::newRow("on, to on, can't") << true << false << true << none;
    QTest::newRow("on, to on") << true << true << true << none;
    QTest::newRow("on, to off, can't be switched on") << true << false << false << off;
    QTest::newRow("on, to off") << true << true << false << off;
}

void JpnFepTest::setInputMode()
{
    QFETCH(bool, isOn);
    QFETCH(bool, switchable);
    QFETCH(bool, wanted);
    QFETCH(QByteArray, request);
    const FepService service(isOn, switchable);
    QVERIFY(service.isReady());
    ChannelListener taskBar("QPE/TaskBar");
    for (const int mode : {0, 0x48, 0x82, -1}) {
        JpnFep::setInputMode(mode, wanted);
        Messages expected;
        if (!request.isNull())
            expected.append({request, ""});
        expected.append(modeMessage(mode));
        QCOMPARE(taskBar.take(), expected);
    }
}

void JpnFepTest::showAndHide()
{
    ChannelListener taskBar("QPE/TaskBar");
    JpnFep::showInputMethod();
    JpnFep::hideInputMethod();
    QCOMPARE(taskBar.take(), (Messages{ShowMessage, HideMessage}));
}

void JpnFepTest::changeInputMethod_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("ASCII") << "Keyboard" << QByteArray("Keyboard");
    QTest::newRow("Japanese") << QString::fromUtf8("手書き") << QByteArray("手書き");
    QTest::newRow("empty") << "" << QByteArray();
    QTest::newRow("null") << QString() << QByteArray();
    QTest::newRow("zero character ends it") << QString::fromUtf8("ab\0c", 4) << QByteArray("ab");
}

void JpnFepTest::changeInputMethod()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    ChannelListener taskBar("QPE/TaskBar");
    JpnFep::changeInputMethod(name);
    QCOMPARE(taskBar.take(), Messages{changeMessage(bytes)});
}

void JpnFepTest::nameIsReadAsText()
{
    ChannelListener taskBar("QPE/TaskBar");
    JpnFep::changeInputMethod("Keyboard");
    const Messages messages = taskBar.take();
    QCOMPARE(messages.size(), 1);
    QCopArguments arguments(messages[0].second);
    char *name = nullptr;
    arguments >> name;
    const std::unique_ptr<char[]> owned(name);
    QCOMPARE(name, "Keyboard");
    QVERIFY(arguments.atEnd());
}

void JpnFepTest::automaticOnADeviceWrittenOn()
{
    qputenv("KY_SCREEN", "480x640");
    ChannelListener taskBar("QPE/TaskBar");
    JpnFep::autoShowInputMethod();
    JpnFep::autoChangeInputMethod("CRIM");
    JpnFep::autoHideInputMethod();
    QCOMPARE(taskBar.take(), (Messages{ShowMessage, changeMessage("CRIM"), HideMessage}));
}

void JpnFepTest::automaticOnADeviceWithAKeyboard()
{
    qputenv("KY_SCREEN", "640x480");
    ChannelListener taskBar("QPE/TaskBar");
    JpnFep::autoShowInputMethod();
    JpnFep::autoChangeInputMethod("CRIM");
    JpnFep::autoHideInputMethod();
    QCOMPARE(taskBar.take(), Messages{HideMessage});
}

void JpnFepTest::utilitySendsTheSame()
{
    qputenv("KY_SCREEN", "480x640");
    const FepService service(false, true);
    QVERIFY(service.isReady());
    ChannelListener taskBar("QPE/TaskBar");
    JpnFepUtil utility;
    utility.setInputMode(0x82, true);
    utility.showInputMethod();
    utility.hideInputMethod();
    utility.changeInputMethod("Keyboard");
    utility.autoShowInputMethod();
    utility.autoChangeInputMethod("CRIM");
    utility.autoHideInputMethod();
    QCOMPARE(taskBar.take(), (Messages{{"inputFepOnReq", ""},
                                       modeMessage(0x82),
                                       ShowMessage,
                                       HideMessage,
                                       changeMessage("Keyboard"),
                                       ShowMessage,
                                       changeMessage("CRIM"),
                                       HideMessage}));
    qputenv("KY_SCREEN", "640x480");
    utility.autoShowInputMethod();
    utility.autoChangeInputMethod("CRIM");
    QCOMPARE(taskBar.take(), Messages());
}

QTEST_MAIN(JpnFepTest)
#include "jpnfeptest.moc"
