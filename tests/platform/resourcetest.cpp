#include "resource.h"
#include "logcapture.h"
#include "qpeapplication.h"
#include <QPixmapCache>
#include <QtTest>

class ResourceTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void ownIcons_data();
    void ownIcons();
    void scalesWithTheScreen();
    void missingPictureWarnsOnce();
    void refusesNamesThatLeaveTheFolder_data();
    void refusesNamesThatLeaveTheFolder();
    void fileOverridesIcon();
    void fileInFolderOfName();
    void fileForOneResolution();
    void exactTakesOnlySharpFiles();
    void damagedFileIsNoPicture();

private:
    QTemporaryDir m_root;
};

namespace {

QString folder(const QString &name)
{
    const QString path = QPEApplication::qpeDir() + name + '/';
    QDir().mkpath(path);
    return path;
}

/** Writes a square picture of one colour. */
QString paint(const QString &file, int side, Qt::GlobalColor colour)
{
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(colour);
    return image.save(file) ? file : QString();
}

bool isUniform(const QImage &image, const QColor &colour)
{
    QImage expected(image.size(), QImage::Format_RGB32);
    expected.fill(colour);
    return image.convertToFormat(QImage::Format_RGB32) == expected;
}

} // namespace

void ResourceTest::init()
{
    QDir(m_root.path()).removeRecursively();
    QDir().mkpath(m_root.path());
    qputenv("QPEDIR", m_root.path().toLocal8Bit());
    qputenv("KY_DPI", "72");
    QPixmapCache::clear();
}

void ResourceTest::ownIcons_data()
{
    QTest::addColumn<int>("size");
    for (const char *name : {"MainDeviceS", "SDDeviceS", "CFDeviceS", "kyfolder", "kyUnknown14", "myorvex"})
        QTest::newRow(name) << 14;
    for (const char *name :
         {"new", "delete", "edit", "import", "search", "contacts", "foldernew", "category"})
        QTest::newRow(name) << 16;
    for (const char *name : {"MainDevice", "SDDevice", "CFDevice", "kyfolder_l", "kyUnknown", "wait"})
        QTest::newRow(name) << 32;
}

void ResourceTest::ownIcons()
{
    QFETCH(int, size);
    const QString name = QTest::currentDataTag();
    for (const int dpi : {72, 100, 144, 288}) {
        const int side = qRound(size * dpi / 72.0);
        QCOMPARE(Resource::loadPixmapDpi(name, dpi).size(), QSize(side, side));
    }
    const QImage image = Resource::loadImage(name);
    QCOMPARE(image.size(), QSize(size, size));
    int painted = 0;
    for (int i = 0; i < size * size; ++i)
        painted += qAlpha(image.pixel(i % size, i / size)) > 128;
    QVERIFY2(painted > size * size / 8, "something is drawn");
    QVERIFY2(painted < size * size, "what isn't drawn is transparent");
}

void ResourceTest::scalesWithTheScreen()
{
    qputenv("KY_DPI", "144");
    QCOMPARE(Resource::loadPixmap("kyfolder").size(), QSize(28, 28));
    QCOMPARE(Resource::loadImage("kyfolder").size(), QSize(28, 28));
    QCOMPARE(Resource::findPixmap("kyfolder"), QString(":/ky/icons/kyfolder.svg"));
    qputenv("KY_DPI", "72");
    QCOMPARE(Resource::loadPixmap("kyfolder").size(), QSize(14, 14));
}

void ResourceTest::missingPictureWarnsOnce()
{
    LogCapture log;
    QVERIFY(Resource::loadPixmap("no-such-picture").isNull());
    QVERIFY(Resource::loadImage("no-such-picture").isNull());
    QVERIFY(Resource::findPixmap("no-such-picture").isEmpty());
    QCOMPARE(log.warnings(), QStringList{"Resource: no picture \"no-such-picture\""});
}

void ResourceTest::refusesNamesThatLeaveTheFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("parent") << "../secret";
    QTest::newRow("parent behind folder") << "a/../../secret";
    QTest::newRow("absolute") << m_root.filePath("secret");
    QTest::newRow("this folder") << "./secret";
    QTest::newRow("double slash") << "a//secret";
    QTest::newRow("slash at the end") << "a/";
    QTest::newRow("empty") << "";
    QTest::newRow("zero byte") << QString("kyfolder") + QChar::Null;
}

void ResourceTest::refusesNamesThatLeaveTheFolder()
{
    QFETCH(QString, name);
    folder("pics/a");
    QVERIFY(!paint(m_root.filePath("secret.png"), 8, Qt::red).isEmpty());
    QVERIFY(!paint(folder("pics") + "secret.png", 8, Qt::red).isEmpty());
    QVERIFY(!paint(folder("pics/a") + ".png", 8, Qt::red).isEmpty());
    QVERIFY(Resource::findPixmap(name).isEmpty());
    QVERIFY(Resource::loadPixmap(name).isNull());
}

void ResourceTest::fileOverridesIcon()
{
    const QString file = paint(folder("pics") + "kyfolder.png", 10, Qt::red);
    QCOMPARE(Resource::findPixmap("kyfolder"), file);
    QVERIFY(isUniform(Resource::loadPixmap("kyfolder").toImage(), Qt::red));
    QCOMPARE(Resource::loadPixmap("kyfolder").size(), QSize(10, 10));
    QCOMPARE(Resource::loadPixmapDpi("kyfolder", 144).size(), QSize(20, 20));
}

void ResourceTest::fileInFolderOfName()
{
    QVERIFY(!paint(folder("pics/datebook") + "alarm.png", 12, Qt::blue).isEmpty());
    QVERIFY(isUniform(Resource::loadImage("datebook/alarm"), Qt::blue));
}

void ResourceTest::fileForOneResolution()
{
    QVERIFY(!paint(folder("pics") + "bell.png", 10, Qt::red).isEmpty());
    const QString sharp = paint(folder("pics144") + "bell.png", 22, Qt::green);
    QCOMPARE(Resource::findPixmapDpi("bell", 144), sharp);
    QCOMPARE(Resource::loadPixmapDpi("bell", 144).size(), QSize(22, 22)); // as drawn, not scaled
    QVERIFY(isUniform(Resource::loadPixmapDpi("bell", 72).toImage(), Qt::red));
}

void ResourceTest::exactTakesOnlySharpFiles()
{
    const QString general = paint(folder("pics") + "bell.png", 10, Qt::red);
    QCOMPARE(Resource::findPixmapDpi("bell", 72, true), general);
    QCOMPARE(Resource::findPixmapDpi("bell", 144, false), general);
    QVERIFY(Resource::findPixmapDpi("bell", 144, true).isEmpty());
    QCOMPARE(Resource::findPixmapDpi("SDDevice", 144, true), QString(":/ky/icons/SDDevice.svg"));
    QVERIFY(Resource::findPixmapDpi("SDDevice", 0, true).isEmpty());
}

void ResourceTest::damagedFileIsNoPicture()
{
    for (const char *name : {"broken.png", "broken2.svg"}) {
        QFile file(folder("pics") + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<svg this is no picture");
    }
    LogCapture log;
    QVERIFY(Resource::loadPixmap("broken").isNull());
    QVERIFY(Resource::loadPixmap("broken2").isNull());
    QCOMPARE(log.warnings().filter("Resource: no picture").size(), 2);
}

QTEST_MAIN(ResourceTest)
#include "resourcetest.moc"
