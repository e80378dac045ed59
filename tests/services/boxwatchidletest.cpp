#include "boxholder.h"

class BoxWatchIdleTest : public QObject
{
    Q_OBJECT
private slots:
    void heldBoxCostsNoLooking();
};

namespace {

/** How often the main thread of a process has gone to sleep. */
int sleepsOf(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    static_cast<void>(status.open(QIODevice::ReadOnly));
    const QByteArray text = status.readAll(), key = "\nvoluntary_ctxt_switches:";
    return text.mid(text.indexOf(key) + key.size()).simplified().split(' ').value(0).toInt();
}

} // namespace

void BoxWatchIdleTest::heldBoxCostsNoLooking()
{
    // A profile of its own and with no device tree, whose files are refreshed now and then.
    const QTemporaryDir other;
    const QByteArray home = qgetenv("HOME"), root = qgetenv("KY_DEVICE_ROOT");
    qputenv("HOME", other.path().toLocal8Bit());
    qunsetenv("KY_DEVICE_ROOT");
    const auto restore = qScopeGuard([&] {
        qputenv("HOME", home);
        qputenv("KY_DEVICE_ROOT", root);
    });
    const QString box = other.filePath("L.BOX");
    PlatformService service;
    QVERIFY(service.isReady());
    OpenFiles opened({box});
    ChildProcess holder({"hold", BoxWatch::lockFile(box), box});
    QCOMPARE(holder.readLine(), QByteArray("held"));
    QTest::qWait(500); // until the message has been dealt with
    const int before = sleepsOf(service.pid());
    QTest::qWait(1500);
    const int sleeps = sleepsOf(service.pid()) - before;
    QVERIFY2(sleeps <= 2, QByteArray::number(sleeps));
    holder.kill();
    QTRY_COMPARE_WITH_TIMEOUT(opened.seen, QStringList{box + " kyplatformd"}, 1000);
}

KY_TEST_MAIN_WITH_CHILD(BoxWatchIdleTest, childMain)
#include "boxwatchidletest.moc"
