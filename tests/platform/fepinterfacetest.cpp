#include "fepinterface.h"
#include "childprocess.h"
#include "fepstate_p.h"
#include "qpeapplication.h"
#include "sessionbus_p.h"
#include <QApplication>

/** The service that keeps the state, as far as the bus can tell. */
class Service
{
public:
    Service() : m_isThere(SessionBus::requestName(name(), false)) {}
    ~Service() { SessionBus::releaseName(name()); }
    Q_DISABLE_COPY_MOVE(Service)
    [[nodiscard]] bool isThere() const { return m_isThere; }

private:
    static QString name() { return SessionBus::serviceName("service"); }
    const bool m_isThere;
};

static bool keep(bool on, bool switchable)
{
    FepState state;
    state.on = on;
    state.switchable = switchable;
    return state.write();
}

/** Says what a process without a session bus sees. */
static int childMain(int argc, char **argv)
{
    const QApplication application(argc, argv);
    ChildProcess::say(QPEApplication::qwsGetFepIF() ? "interface" : "none");
    return 0;
}

class FepInterfaceTest : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void noneWithoutService();
    void noneWithoutState();
    void noneWithoutBus();
    void answersFromState_data();
    void answersFromState();
    void looksAnewAtEachQuestion();
    void offWhenTheStateHasGone();
    void stateComesBackAsWritten();
};

void FepInterfaceTest::cleanup()
{
    QFile::remove(FepState::file());
}

void FepInterfaceTest::noneWithoutService()
{
    QVERIFY(keep(true, true));
    QVERIFY(!QPEApplication::qwsGetFepIF());
    {
        const Service service;
        QVERIFY(service.isThere());
        QVERIFY(QPEApplication::qwsGetFepIF());
    }
    QVERIFY(!QPEApplication::qwsGetFepIF());
}

void FepInterfaceTest::noneWithoutState()
{
    const Service service;
    QVERIFY(service.isThere());
    QVERIFY(!QPEApplication::qwsGetFepIF());
}

void FepInterfaceTest::noneWithoutBus()
{
    const Service service;
    QVERIFY(service.isThere() && keep(true, true));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    ChildProcess with({}, environment);
    QCOMPARE(with.readLine(), QByteArray("interface"));
    environment.remove("DBUS_SESSION_BUS_ADDRESS");
    ChildProcess without({}, environment);
    QCOMPARE(without.readLine(), QByteArray("none"));
}

void FepInterfaceTest::answersFromState_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<bool>("switchable");
    QTest::newRow("off, can't") << false << false;
    QTest::newRow("off, can") << false << true;
    QTest::newRow("on, can't") << true << false;
    QTest::newRow("on, can") << true << true;
}

void FepInterfaceTest::answersFromState()
{
    QFETCH(bool, on);
    QFETCH(bool, switchable);
    const Service service;
    QVERIFY(service.isThere() && keep(on, switchable));
    const FepInterface *interface = QPEApplication::qwsGetFepIF();
    QVERIFY(interface);
    QCOMPARE(interface->isOn(), on);
    QCOMPARE(interface->canSwitchOn(), switchable);
}

void FepInterfaceTest::looksAnewAtEachQuestion()
{
    const Service service;
    QVERIFY(service.isThere() && keep(false, false));
    const FepInterface *interface = QPEApplication::qwsGetFepIF();
    QVERIFY(interface && !interface->isOn() && !interface->canSwitchOn());
    QVERIFY(keep(true, true));
    QVERIFY(interface->isOn());
    QVERIFY(interface->canSwitchOn());
}

void FepInterfaceTest::offWhenTheStateHasGone()
{
    const Service service;
    QVERIFY(service.isThere() && keep(true, true));
    const FepInterface *interface = QPEApplication::qwsGetFepIF();
    QVERIFY(interface && interface->isOn());
    QVERIFY(QFile::remove(FepState::file()));
    QVERIFY(!interface->isOn());
    QVERIFY(!interface->canSwitchOn());
}

void FepInterfaceTest::stateComesBackAsWritten()
{
    FepState state;
    state.on = true;
    state.switchable = false;
    state.visible = true;
    state.mode = -130;
    state.method = QString::fromUtf8("手書き = [x]");
    QVERIFY(!FepState::read());
    QVERIFY(state.write());
    QVERIFY(FepState::read() == state);
    QVERIFY(FepState().write());
    QVERIFY(FepState::read() == FepState());
}

KY_TEST_MAIN_WITH_CHILD(FepInterfaceTest, childMain)
#include "fepinterfacetest.moc"
