#include "boxfixture.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace boxfixture;

/** Paths, names and language. */
class EnvironmentTest : public QObject
{
    Q_OBJECT
private slots:
    void baseName_data();
    void baseName();
    void realPath();
    void storageFolders();
    void newFileName();
    void newFileNameInInternalStorage();
    void newFileNameRefusesBadFields_data();
    void newFileNameRefusesBadFields();
    void language();
    void globalDataIsInOrder() { QCOMPARE(CheckFINFO(), PdtmStatus(PdtmOk)); }
};

void EnvironmentTest::baseName_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("name"); // null: invalid
    QTest::newRow("internal drive") << QByteArray("F0:KYADRS.BOX") << QByteArray("KYADRS.BOX");
    QTest::newRow("absolute") << QByteArray("/a/b/KYADRS.BOX") << QByteArray("KYADRS.BOX");
    QTest::newRow("relative") << QByteArray("KYADRS.BOX") << QByteArray("KYADRS.BOX");
    QTest::newRow("folder below the drive") << QByteArray("F0:x/y.box") << QByteArray("y.box");
    QTest::newRow("255 bytes") << "/" + QByteArray(254, 'a') << QByteArray(254, 'a');
    QTest::newRow("256 bytes") << "/" + QByteArray(255, 'a') << QByteArray();
    QTest::newRow("empty") << QByteArray("") << QByteArray();
    QTest::newRow("drive alone") << QByteArray("F0:") << QByteArray();
    QTest::newRow("other drive") << QByteArray("S1:KYADRS.BOX") << QByteArray();
    QTest::newRow("other drive, small letter") << QByteArray("f0:KYADRS.BOX") << QByteArray();
    QTest::newRow("folder") << QByteArray("/a/b/") << QByteArray();
    QTest::newRow("dots") << QByteArray("/a/..") << QByteArray();
}

void EnvironmentTest::baseName()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, name);
    const char *found = DtmGetBaseNamePtr(path.constData());
    QCOMPARE(QByteArray(found), name);
    if (found)
        QCOMPARE(found - path.constData(), path.size() - name.size());
    char real[4096];
    QCOMPARE(FileGetRealPath(real, path.constData()) == PdtmOk, !name.isNull());
    QCOMPARE(_BoxOpen(path.constData()), 0U);
    if (name.isNull())
        QCOMPARE(_BoxCreate(path.constData(), ApplicationId), PdtmStatus(PdtmBadArgument));
}

void EnvironmentTest::realPath()
{
    char real[4096];
    QCOMPARE(FileGetRealPath(real, "F0:A.BOX"), PdtmStatus(PdtmOk));
    QCOMPARE(QString(real), internalPath("A.BOX"));
    QCOMPARE(FileGetRealPath(real, "/mnt/card/A.BOX"), PdtmStatus(PdtmOk));
    QCOMPARE(QByteArray(real), QByteArray("/mnt/card/A.BOX"));
    QCOMPARE(FileGetRealPath(nullptr, "/mnt/card/A.BOX"), PdtmStatus(PdtmBadArgument));
    QCOMPARE(FileGetRealPath(real, nullptr), PdtmStatus(PdtmBadArgument));
}

void EnvironmentTest::storageFolders()
{
    char folder[4096];
    QCOMPARE(GetBuiltinStorageDtmPath(folder), PdtmStatus(PdtmOk));
    QCOMPARE(QString(folder), QDir::homePath() + "/Applications/dtm");
    QVERIFY(QFileInfo(folder).isDir());
    const auto owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    QCOMPARE(QFileInfo(folder).permissions() & owner, QFile::Permissions(owner));
    QCOMPARE(QFileInfo(folder).permissions() & others, QFile::Permissions());
    QCOMPARE(GetBuiltinStorageDtmPath(nullptr), PdtmStatus(PdtmBadArgument));

    char external[64];
    QCOMPARE(GetExternalStorageDtmPath(external), PdtmStatus(PdtmOk));
    QCOMPARE(QByteArray(external), QByteArray("/Applications/dtm"));
}

void EnvironmentTest::newFileName()
{
    const QTemporaryDir folder;
    const QByteArray directory = folder.path().toUtf8() + "/";
    for (int number = 0; number < 10; ++number) {
        char name[256] = "ppinKYA0.";
        QCOMPARE(GetNewFileName(directory.constData(), name, "tdx", 7, 1), 1);
        QCOMPARE(QByteArray(name), "ppinKYA" + QByteArray::number(number) + ".tdx");
        QVERIFY(writeFile(directory + name, "x"));
    }
    char name[256] = "ppinKYA0.";
    QCOMPARE(GetNewFileName(directory.constData(), name, "tdx", 7, 1), 0);
    QCOMPARE(QByteArray(name), QByteArray("ppinKYA0."));
    QCOMPARE(GetNewFileName(directory.constData(), name, "idx", 7, 1), 1);
}

void EnvironmentTest::newFileNameInInternalStorage()
{
    QVERIFY(QDir().mkpath(internalPath("")));
    QVERIFY(writeFile(internalPath("ppinX00.tdx"), "x"));
    char name[256] = "ppinX00.";
    QCOMPARE(GetNewFileName("F0:", name, "tdx", 5, 2), 1);
    QCOMPARE(QByteArray(name), QByteArray("ppinX01.tdx"));
}

void EnvironmentTest::newFileNameRefusesBadFields_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("digits");
    QTest::newRow("no digit") << 7 << 0;
    QTest::newRow("negative position") << -1 << 1;
    QTest::newRow("behind the name") << 9 << 1;
    QTest::newRow("reaches behind the name") << 7 << 3;
    QTest::newRow("absurd width") << 0 << 2000000000;
}

void EnvironmentTest::newFileNameRefusesBadFields()
{
    QFETCH(int, position);
    QFETCH(int, digits);
    char name[256] = "ppinKYA0.";
    QCOMPARE(GetNewFileName("/tmp/", name, "tdx", position, digits), 0);
    QCOMPARE(QByteArray(name), QByteArray("ppinKYA0."));
}

void EnvironmentTest::language()
{
    QCOMPARE(makeBox("F0:LANG.BOX"), PdtmStatus(PdtmOk)); // Japanese before it is set
    QCOMPARE(DtmSetLanguage("ja"), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel("F0:LANG.BOX", 3), PdtmStatus(PdtmOk));
    QCOMPARE(DtmSetLanguage("en"), PdtmStatus(PdtmOk));
    QCOMPARE(_DTMFileCheckLevel("F0:LANG.BOX", 3), PdtmStatus(PdtmOtherLanguage));
    QCOMPARE(_DTMFileCheckLevel("F0:LANG.BOX", 255), PdtmStatus(PdtmOtherLanguage));
    QCOMPARE(_DTMFileCheckAppliID("F0:LANG.BOX", 3, ApplicationId), PdtmStatus(PdtmOk));
    QCOMPARE(DtmSetLanguage(nullptr), PdtmStatus(PdtmBadArgument));
    QCOMPARE(DtmSetLanguage(""), PdtmStatus(PdtmBadArgument));
    QCOMPARE(DtmSetLanguage("ja"), PdtmStatus(PdtmOk));
}

QTEST_GUILESS_MAIN(EnvironmentTest)
#include "environmenttest.moc"
