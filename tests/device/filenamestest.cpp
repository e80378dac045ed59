#include "kymisc.h"
#include "mounts.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

namespace {

bool canMount = false;

bool makeFile(const QString &path, const QByteArray &contents = QByteArray())
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

} // namespace

class FileNamesTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void temporaryFolder();
    void obexFolderIsNotMade();

    void forbiddenCharacters_data();
    void forbiddenCharacters();
    void allowedNames_data();
    void allowedNames();
    void eachForbiddenCharacterIsReplaced();

    void canonicalPath_data();
    void canonicalPath();
    void canonicalPathOfARelativeName();

    void freeNameCanBeCreated();
    void takenNameCannot_data();
    void takenNameCannot();
    void otherFailuresCountAsFree();
    void fullDiskCountsAsFree();
    void readOnlyVolumeCountsAsFree();

private:
    QString at(const char *name) const { return m_base + QLatin1Char('/') + QString::fromUtf8(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_base; ///< the folder's path without links
};

void FileNamesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_base = QDir(m_folder->path()).canonicalPath();
}

void FileNamesTest::temporaryFolder()
{
    QCOMPARE(KyMisc::getTmpPath(KyMisc::SmallSize), "/tmp");
    QCOMPARE(KyMisc::getTmpPath(KyMisc::LargeSize), "/tmp");
    QCOMPARE(KyMisc::getTmpPath(0ul), "/tmp");
    QCOMPARE(KyMisc::getTmpPath(~0ul), "/tmp");
}

void FileNamesTest::obexFolderIsNotMade()
{
    const bool existed = QFileInfo::exists("/tmp/obex");
    QCOMPARE(KyMisc::getObexTmpPath(), QString("/tmp/obex"));
    QCOMPARE(QFileInfo::exists("/tmp/obex"), existed);
}

void FileNamesTest::forbiddenCharacters_data()
{
    QTest::addColumn<QString>("character");
    QTest::newRow("full stop") << ".";
    QTest::newRow("asterisk") << "*";
    QTest::newRow("slash") << "/";
    QTest::newRow("vertical bar") << "|";
    QTest::newRow("apostrophe") << "'";
    QTest::newRow("question mark") << "?";
    QTest::newRow("semicolon") << ";";
    QTest::newRow("colon") << ":";
    QTest::newRow("double quote") << "\"";
    QTest::newRow("less-than") << "<";
    QTest::newRow("greater-than") << ">";
    QTest::newRow("backslash") << "\\";
    QTest::newRow("yen sign") << QString(QChar(0xa5));
    QTest::newRow("tab") << "\t";
}

void FileNamesTest::forbiddenCharacters()
{
    QFETCH(QString, character);
    for (const QString &name : {character, character + "ab", "a" + character + "b", "ab" + character}) {
        QVERIFY(KyMisc::invalidFileName(name));
        QCOMPARE(KyMisc::getValidFileName(name), QString(name).replace(character, "_"));
    }
}

void FileNamesTest::allowedNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("letters and digits") << "abcXYZ019";
    QTest::newRow("other marks") << " !#$%&()+,-=@[]^_`{}~";
    QTest::newRow("Japanese") << QString::fromUtf8("住所録 メモ");
    QTest::newRow("full-width forms") << QString::fromUtf8("．＊／｜？；：＜＞￥");
    QTest::newRow("line feed and zero") << QString::fromLatin1("a\n\0b", 4);
    QTest::newRow("letters of the yen sign's number") << "x00a5";
    QTest::newRow("beyond the first plane") << QString::fromUtf8("𠮷😀");
}

void FileNamesTest::allowedNames()
{
    QFETCH(QString, name);
    QVERIFY(!KyMisc::invalidFileName(name));
    QCOMPARE(KyMisc::getValidFileName(name), name);
}

void FileNamesTest::eachForbiddenCharacterIsReplaced()
{
    const QString name = QString::fromUtf8("a.b..c/日本¥|<>");
    QCOMPARE(KyMisc::getValidFileName(name), QString::fromUtf8("a_b__c_日本____"));
    QCOMPARE(name, QString::fromUtf8("a.b..c/日本¥|<>"));
}

void FileNamesTest::canonicalPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *path, const char *expected) {
        QTest::newRow(name) << QString::fromUtf8(path) << QString::fromUtf8(expected);
    };
    row("file", "real/file", "real/file");
    row("folder", "real", "real");
    row("folder with a slash behind it", "real/", "real");
    row("dots", "real/../real/./file", "real/file");
    row("file in a linked folder", "tofolder/file", "real/file");
    row("link to a folder", "tofolder", "real");
    row("folder in a linked folder", "tofolder/inner", "real/inner");
    row("link to a file", "tofile", "real/file");
    row("link with a relative target", "tofolder/relative", "real/inner/deep");
    row("link up out of a linked folder", "tofolder/up", "other/file");
    row("link to a link, followed once", "totofile", "tofile");
    row("link to a link to a folder", "totofolder", "real");
    row("dangling link", "dangling", "real/missing");
    row("new name", "tofolder/new", "real/new");
    row("Japanese name", "tofolder/日本", "real/日本");
    QTest::newRow("root") << "/.."
                          << "/";
    QTest::newRow("file in the root: two slashes") << "/new name"
                                                   << "//new name";
    row("missing folder: the name alone", "missing/new", "/new");
}

void FileNamesTest::canonicalPath()
{
    QVERIFY(QDir().mkpath(at("real/inner")) && QDir().mkpath(at("other")));
    QVERIFY(makeFile(at("real/file")) && makeFile(at("other/file")) && makeFile(at("real/inner/deep")));
    QVERIFY(QFile::link(at("real"), at("tofolder")));
    QVERIFY(QFile::link(at("real/file"), at("tofile")));
    QVERIFY(QFile::link(at("tofile"), at("totofile")));
    QVERIFY(QFile::link(at("tofolder"), at("totofolder")));
    QVERIFY(QFile::link("inner/deep", at("real/relative")));
    QVERIFY(QFile::link("../other/file", at("real/up")));
    QVERIFY(QFile::link(at("real/missing"), at("dangling")));

    QFETCH(QString, path);
    QFETCH(QString, expected);
    const auto absolute = [this](const QString &name) {
        return name.startsWith(QLatin1Char('/')) ? name : m_base + QLatin1Char('/') + name;
    };
    QCOMPARE(KyMisc::getCanonicalPath(absolute(path)), absolute(expected));
}

void FileNamesTest::canonicalPathOfARelativeName()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_base));
    QVERIFY(QDir().mkpath("real") && QFile::link(at("real"), "tofolder"));
    const QString file = KyMisc::getCanonicalPath("tofolder/new"), folder = KyMisc::getCanonicalPath(".");
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(file, at("real/new"));
    QCOMPARE(folder, m_base);
}

void FileNamesTest::freeNameCanBeCreated()
{
    QVERIFY(KyMisc::canCreateTheFile(at("日本 free")));
    QVERIFY(QDir(m_base).isEmpty());
}

void FileNamesTest::takenNameCannot_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"file", "日本", "folder", "link", "dangling"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void FileNamesTest::takenNameCannot()
{
    QVERIFY(makeFile(at("file"), "contents") && makeFile(at("日本")) && QDir().mkpath(at("folder")));
    QVERIFY(QFile::link(at("file"), at("link")) && QFile::link(at("missing"), at("dangling")));
    const QStringList before = QDir(m_base).entryList(QDir::AllEntries | QDir::System);

    QFETCH(QString, name);
    QVERIFY(!KyMisc::canCreateTheFile(m_base + QLatin1Char('/') + name));
    QCOMPARE(QDir(m_base).entryList(QDir::AllEntries | QDir::System), before);
    QCOMPARE(QFileInfo(at("file")).size(), 8);
}

void FileNamesTest::otherFailuresCountAsFree()
{
    QVERIFY(makeFile(at("file")));
    QVERIFY(KyMisc::canCreateTheFile(at("missing/new")));
    QVERIFY(KyMisc::canCreateTheFile(at("file/new")));
    QVERIFY(KyMisc::canCreateTheFile(m_base + QLatin1Char('/') + QString(300, QLatin1Char('x'))));
    QVERIFY(KyMisc::canCreateTheFile(QString()));
    QCOMPARE(QDir(m_base).entryList(QDir::Files), QStringList("file"));
}

void FileNamesTest::fullDiskCountsAsFree()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    const TmpfsMount disk(m_base, "size=64k,nr_inodes=2");
    QVERIFY(disk.isMounted());
    QVERIFY(makeFile(at("last"))); // the root folder is the other inode
    QVERIFY(!makeFile(at("another")));
    QVERIFY(KyMisc::canCreateTheFile(at("new")));
    QVERIFY(!KyMisc::canCreateTheFile(at("last")));
    QCOMPARE(QDir(m_base).entryList(QDir::Files), QStringList("last"));
}

void FileNamesTest::readOnlyVolumeCountsAsFree()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    TmpfsMount disk(m_base);
    QVERIFY(disk.isMounted() && makeFile(at("file")) && disk.makeReadOnly());
    QVERIFY(KyMisc::canCreateTheFile(at("new")));
    QVERIFY(!KyMisc::canCreateTheFile(at("file")));
}

int main(int argc, char **argv)
{
    canMount = enterMountNamespace();
    QCoreApplication application(argc, argv);
    FileNamesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "filenamestest.moc"
