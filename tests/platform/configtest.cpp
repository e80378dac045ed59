#include "config.h"

#include "mounts.h"
#include <atomic>
#include <cstring>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>
#include <thread>

static bool canMount = false;

static void put(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

static QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

/** Shows what subclasses may reach. */
class OpenConfig : public Config
{
public:
    using Config::Config;
    using Config::filename;
    using Config::git;
    using Config::groups;
    using Config::read;
};

class ConfigTest : public QObject
{
    Q_OBJECT
private slots:
    void init();

    void readsTolerantly_data();
    void readsTolerantly();
    void damagedUtf8KeepsTheRest();
    void hugeLinesAreRead();
    void missingFileIsInvalidAndEmpty();
    void readsNumbers_data();
    void readsNumbers();
    void readsTruth_data();
    void readsTruth();
    void listsKeepTheirItems_data();
    void listsKeepTheirItems();
    void writesTheFormat();
    void textsKeepTheirBytes_data();
    void textsKeepTheirBytes();
    void lineBreaksDontForgeEntries();
    void refusesKeysThatDontReadBack_data();
    void refusesKeysThatDontReadBack();
    void removesEntriesAndClearsGroups();
    void namelessGroupComesFirst();
    void userDomainMakesTheFolder();
    void withoutHomeNothingIsMade();
    void readingWritesNothing();
    void sameValueWritesNothing();
    void otherNameIsWrittenAndKept();
    void subclassMayLoseTheCurrentGroup();
    void readingAgainForgetsChanges();
    void keepsPermissions();
    void keepsSymbolicLinks();
    void staleTemporaryIsReplaced();
    void unreadableFileIsNotReplaced();
    void missingFolderIsAnError();
    void fullDiskKeepsTheFile();
    void lastWriterWinsWhole();

private:
    QString path(const char *name = "test.conf") const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ConfigTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void ConfigTest::readsTolerantly_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("expected");
    QTest::newRow("as written") << QByteArray("[G]\nkey = value\n") << "value";
    QTest::newRow("no blanks") << QByteArray("[G]\nkey=value\n") << "value";
    QTest::newRow("many blanks") << QByteArray("  [G] \n \tkey \t =  value \t\n") << "value";
    QTest::newRow("CRLF") << QByteArray("[G]\r\nkey = value\r\n") << "value";
    QTest::newRow("no last line feed") << QByteArray("[G]\nkey = value") << "value";
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF[G]\nkey = value\n") << "value";
    QTest::newRow("blank lines") << QByteArray("\n\n[G]\n\n\nkey = value\n") << "value";
    QTest::newRow("junk lines") << QByteArray("junk\n[G]\njunk\n= x\n[half\nkey = value\n]\n") << "value";
    QTest::newRow("comment") << QByteArray("[G]\nkey = value\n# key = other\n#key = other\n") << "value";
    QTest::newRow("equals in the value") << QByteArray("[G]\nkey = a = b=c\n") << "a = b=c";
    QTest::newRow("empty value") << QByteArray("[G]\nkey =\n") << "";
    QTest::newRow("the last counts") << QByteArray("[G]\nkey = a\nkey = b\n") << "b";
    QTest::newRow("group in two places") << QByteArray("[G]\nkey = a\n[H]\nkey = h\n[G]\nx = y\n") << "a";
    QTest::newRow("another group") << QByteArray("[g]\nkey = a\n") << "missing";
    QTest::newRow("nameless group") << QByteArray("key = a\n[G]\n") << "missing";
    QTest::newRow("wide blank") << QByteArray("[G]\nkey = \xE3\x80\x80\n") << QString(QChar(0x3000));
    QTest::newRow("zero byte") << QByteArray("[G]\n\0\nkey = value\n", 17) << "value";
    QTest::newRow("only a mark") << QByteArray("\xEF\xBB\xBF") << "missing";
    QTest::newRow("empty") << QByteArray() << "missing";
}

void ConfigTest::readsTolerantly()
{
    QFETCH(QByteArray, contents);
    put(path(), contents);
    Config config(path(), Config::File);
    QVERIFY(config.isValid());
    config.setGroup("G");
    QTEST(config.readEntry("key", "missing"), "expected");
}

void ConfigTest::damagedUtf8KeepsTheRest()
{
    put(path(), "[G]\na = x\xFFy\nb = z\n");
    Config config(path(), Config::File);
    config.setGroup("G");
    QCOMPARE(config.readEntry("a"), QString("x") + QChar(0xFFFD) + "y");
    QCOMPARE(config.readEntry("b"), QString("z"));
}

void ConfigTest::hugeLinesAreRead()
{
    const QByteArray huge(5'000'000, 'x');
    put(path(), huge + "\n[G]\nkey = " + huge + "\nlast = 1\n");
    Config config(path(), Config::File);
    config.setGroup("G");
    QCOMPARE(config.readEntry("key").size(), huge.size());
    QCOMPARE(config.readNumEntry("last"), 1);
}

void ConfigTest::missingFileIsInvalidAndEmpty()
{
    const Config config(path("none.conf"), Config::File);
    QVERIFY(!config.isValid());
    QVERIFY(config.groupList().isEmpty());
    QVERIFY(!config.hasKey("key"));
    QCOMPARE(config.readEntry("key", "default"), QString("default"));
}

void ConfigTest::readsNumbers_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("number") << "42" << 42;
    QTest::newRow("negative") << "-7" << -7;
    QTest::newRow("largest") << "2147483647" << 2147483647;
    QTest::newRow("too large") << "2147483648" << 99;
    QTest::newRow("word") << "abc" << 99;
    QTest::newRow("number and more") << "12 px" << 99;
    QTest::newRow("empty") << "" << 99;
}

void ConfigTest::readsNumbers()
{
    QFETCH(QString, value);
    Config config(path(), Config::File);
    config.writeEntry("key", value);
    QTEST(config.readNumEntry("key", 99), "expected");
    QCOMPARE(config.readNumEntry("other"), -1);
}

void ConfigTest::readsTruth_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("byFalse");
    QTest::addColumn<bool>("byTrue");
    QTest::newRow("1") << "1" << true << true;
    QTest::newRow("0") << "0" << false << false;
    QTest::newRow("2") << "2" << true << true;
    QTest::newRow("True") << "True" << true << true;
    QTest::newRow("yes") << "yes" << true << true;
    QTest::newRow("ON") << "ON" << true << true;
    QTest::newRow("false") << "false" << false << false;
    QTest::newRow("No") << "No" << false << false;
    QTest::newRow("off") << "off" << false << false;
    QTest::newRow("maybe") << "maybe" << false << true;
    QTest::newRow("empty") << "" << false << true;
}

void ConfigTest::readsTruth()
{
    QFETCH(QString, value);
    Config config(path(), Config::File);
    config.writeEntry("key", value);
    QTEST(config.readBoolEntry("key", false), "byFalse");
    QTEST(config.readBoolEntry("key", true), "byTrue");
}

void ConfigTest::listsKeepTheirItems_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("none") << QStringList{} << QByteArray("");
    QTest::newRow("one") << QStringList{"a"} << QByteArray("a");
    QTest::newRow("three") << QStringList{"a", "b c", "d"} << QByteArray("a;b c;d");
    QTest::newRow("empty ones") << QStringList{"", "b", ""} << QByteArray(";b;");
    QTest::newRow("separator inside") << QStringList{"a;b", "c"} << QByteArray("a\\;b;c");
    QTest::newRow("backslash at an end") << QStringList{"a\\", "b"} << QByteArray("a\\\\;b");
    QTest::newRow("backslash inside") << QStringList{"C:\\x"} << QByteArray("C:\\\\x");
}

void ConfigTest::listsKeepTheirItems()
{
    QFETCH(QStringList, list);
    QFETCH(QByteArray, value);
    {
        Config config(path(), Config::File);
        config.setGroup("G");
        config.writeEntry("key", list, ';');
    }
    QCOMPARE(contentsOf(path()), "[G]\nkey = " + value + "\n");
    Config config(path(), Config::File);
    config.setGroup("G");
    QCOMPARE(config.readListEntry("key", ';'), list);
}

void ConfigTest::writesTheFormat()
{
    {
        Config config(path(), Config::File);
        config.setGroup("Z");
        config.writeEntry("b", 5);
        config.writeEntry("a", "text");
        config.writeEntry("c", true);
        config.setGroup("Empty");
        config.setGroup("日本");
        config.writeEntry("d", QString());
    }
    QCOMPARE(contentsOf(path()), QByteArray("[Empty]\n[Z]\na = text\nb = 5\nc = 1\n[日本]\nd = \n"));
    QVERIFY(!QFile::exists(path() + ".new"));
}

void ConfigTest::textsKeepTheirBytes_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("Japanese") << QString::fromUtf8("東京都千代田区");
    QTest::newRow("beyond the basic plane") << QString::fromUtf8("𠮷野家 😀");
    QTest::newRow("brackets") << "[G]";
    QTest::newRow("comment") << "# no comment";
    QTest::newRow("equals") << "= a = b";
    QTest::newRow("backslashes") << "\\n\\\\";
    QTest::newRow("byte order mark in front") << QString(QChar(0xFEFF)) + "a";
}

void ConfigTest::textsKeepTheirBytes()
{
    QFETCH(QString, text);
    {
        Config config(path(), Config::File);
        config.setGroup(text);
        config.writeEntry("key", text);
    }
    Config config(path(), Config::File);
    QVERIFY(config.hasGroup(text));
    config.setGroup(text);
    QCOMPARE(config.readEntry("key"), text);
}

void ConfigTest::lineBreaksDontForgeEntries()
{
    {
        Config config(path(), Config::File);
        config.setGroup("G\n[H]");
        config.writeEntry("key", "a\nforged = 1\r\n[Forged]");
    }
    QCOMPARE(contentsOf(path()), QByteArray("[G [H]]\nkey = a forged = 1  [Forged]\n"));
}

void ConfigTest::refusesKeysThatDontReadBack_data()
{
    QTest::addColumn<QString>("key");
    for (const char *key : {"", " a", "a ", "a=b", "a\nb", "a\rb", "[a", "#a"})
        QTest::addRow("'%s'", key) << QString(key);
    QTest::addRow("byte order mark in front") << QString(QChar(0xFEFF)) + "a";
}

void ConfigTest::refusesKeysThatDontReadBack()
{
    QFETCH(QString, key);
    {
        Config config(path(), Config::File);
        const QString printed = QString(key).remove(QChar(0xFEFF)); // a message shows no byte order mark
        QTest::ignoreMessage(QtWarningMsg,
                             qPrintable("a settings file can't hold the key \"" + printed + "\""));
        config.writeEntry(key, "x");
        QVERIFY(!config.hasKey(key));
    }
    QVERIFY(!QFile::exists(path()));
}

void ConfigTest::removesEntriesAndClearsGroups()
{
    put(path(), "[A]\nx = 1\ny = 2\n[B]\nz = 3\n");
    {
        Config config(path(), Config::File);
        config.setGroup("A");
        config.removeEntry("x");
        config.removeEntry("nothing");
        QVERIFY(!config.hasKey("x"));
        config.setGroup("B");
        config.clearGroup();
    }
    QCOMPARE(contentsOf(path()), QByteArray("[A]\ny = 2\n[B]\n"));
}

void ConfigTest::namelessGroupComesFirst()
{
    put(path(), "Language = ja\n[ A]\nx = 1\n");
    {
        Config config(path(), Config::File);
        QCOMPARE(config.readEntry("Language"), QString("ja"));
        QCOMPARE(config.groupList(), QStringList({"", " A"}));
        config.writeEntry("More", "1");
    }
    QCOMPARE(contentsOf(path()), QByteArray("Language = ja\nMore = 1\n[ A]\nx = 1\n"));
    put(path(), "[]\nLanguage = en\n");
    QCOMPARE(Config(path(), Config::File).readEntry("Language"), QString("en"));
}

void ConfigTest::userDomainMakesTheFolder()
{
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", m_folder->path().toUtf8());
    {
        Config config("name");
        config.writeEntry("key", "value");
    }
    qputenv("HOME", home);
    QCOMPARE(contentsOf(path("Settings/name.conf")), QByteArray("key = value\n"));
}

void ConfigTest::withoutHomeNothingIsMade()
{
    const QByteArray home = qgetenv("HOME");
    QVERIFY(!QFile::exists("/Settings"));
    qunsetenv("HOME");
    {
        Config config("name");
        QVERIFY(!config.isValid());
        QCOMPARE(config.readEntry("key", "default"), QString("default"));
        config.writeEntry("key", "value");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("could not write /Settings/name.conf: .*"));
        QVERIFY(!config.write());
        config.removeEntry("key");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("could not write /Settings/name.conf: .*"));
    }
    qputenv("HOME", home);
    QVERIFY(!QFile::exists("/Settings"));
}

void ConfigTest::readingWritesNothing()
{
    put(path(), "[A]\nx=1\n");
    {
        Config config(path(), Config::File);
        config.setGroup("A");
        QCOMPARE(config.readNumEntry("x"), 1);
        config.setGroup("New");
        QVERIFY(config.hasGroup("New"));
    }
    QCOMPARE(contentsOf(path()), QByteArray("[A]\nx=1\n"));
}

void ConfigTest::sameValueWritesNothing()
{
    put(path(), "[A]\nx=1\n");
    {
        Config config(path(), Config::File);
        config.setGroup("A");
        config.writeEntry("x", 1);
        config.removeEntry("y");
        config.setGroup("B");
        config.clearGroup();
    }
    QCOMPARE(contentsOf(path()), QByteArray("[A]\nx=1\n"));
}

void ConfigTest::otherNameIsWrittenAndKept()
{
    put(path(), "[A]\nx = 1\n");
    {
        Config config(path(), Config::File);
        QVERIFY(config.write(path("other.conf")));
        QCOMPARE(contentsOf(path("other.conf")), QByteArray("[A]\nx = 1\n"));
        config.setGroup("A");
        config.writeEntry("x", 2);
    }
    QCOMPARE(contentsOf(path("other.conf")), QByteArray("[A]\nx = 2\n"));
    QCOMPARE(contentsOf(path()), QByteArray("[A]\nx = 1\n"));
}

void ConfigTest::subclassMayLoseTheCurrentGroup()
{
    put(path(), "[A]\nx = 1\n");
    {
        OpenConfig config(path(), Config::File);
        QCOMPARE(config.filename, path());
        config.setGroup("A");
        QCOMPARE(config.git.value().value("x"), QString("1"));
        config.git = config.groups.end();
        QVERIFY(!config.hasKey("x"));
        QCOMPARE(config.readEntry("x", "none"), QString("none"));
        config.removeEntry("x");
        config.clearGroup();
        config.writeEntry("y", "2");
    }
    QCOMPARE(contentsOf(path()), QByteArray("y = 2\n[A]\nx = 1\n"));
}

void ConfigTest::readingAgainForgetsChanges()
{
    put(path(), "[A]\nx = 1\n");
    OpenConfig config(path(), Config::File);
    config.setGroup("B");
    config.writeEntry("y", 1);
    config.read();
    QCOMPARE(config.groupList(), QStringList("A"));
    QVERIFY(!config.hasKey("y"));
}

void ConfigTest::keepsPermissions()
{
    put(path(), "");
    QVERIFY(::chmod(qPrintable(path()), 0600) == 0);
    Config(path(), Config::File).writeEntry("secret", "1");
    struct stat status;
    QCOMPARE(::stat(qPrintable(path()), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0600));
    QCOMPARE(contentsOf(path()), QByteArray("secret = 1\n"));
}

void ConfigTest::keepsSymbolicLinks()
{
    put(path("real.conf"), "");
    QVERIFY(QFile::link(path("real.conf"), path()));
    Config(path(), Config::File).writeEntry("key", "1");
    QVERIFY(QFileInfo(path()).isSymLink());
    QCOMPARE(contentsOf(path("real.conf")), QByteArray("key = 1\n"));
}

void ConfigTest::staleTemporaryIsReplaced()
{
    put(path() + ".new", QByteArray(1000, 'x'));
    Config(path(), Config::File).writeEntry("key", "1");
    QCOMPARE(contentsOf(path()), QByteArray("key = 1\n"));
    QVERIFY(!QFile::exists(path() + ".new"));
}

void ConfigTest::unreadableFileIsNotReplaced()
{
    QCOMPARE(::mkfifo(qPrintable(path()), 0600), 0);
    Config config(path(), Config::File);
    QVERIFY(!config.isValid());
    config.writeEntry("key", "1");
    const QByteArray warning = "could not read " + path().toUtf8() + ", so it isn't replaced";
    QTest::ignoreMessage(QtWarningMsg, warning.constData());
    QVERIFY(!config.write());
    struct stat status;
    QCOMPARE(::stat(qPrintable(path()), &status), 0);
    QVERIFY(S_ISFIFO(status.st_mode));
    QVERIFY(config.write(path("other.conf")));
}

void ConfigTest::missingFolderIsAnError()
{
    Config config(path("no/folder.conf"), Config::File);
    config.writeEntry("key", "1");
    const QByteArray warning =
        "could not write " + path("no/folder.conf").toUtf8() + ": No such file or directory";
    QTest::ignoreMessage(QtWarningMsg, warning.constData());
    QVERIFY(!config.write());
    QVERIFY(QDir(m_folder->path()).mkdir("no"));
    QVERIFY(config.write());
    QCOMPARE(contentsOf(path("no/folder.conf")), QByteArray("key = 1\n"));
}

void ConfigTest::fullDiskKeepsTheFile()
{
    if (!canMount)
        QSKIP("this machine forbids mounts");
    const TmpfsMount disk(m_folder->path(), "size=64k");
    QVERIFY(disk.isMounted());
    put(path(), "[A]\nx = 1\n");
    Config config(path(), Config::File);
    config.setGroup("A");
    config.writeEntry("large", QString(80'000, 'x'));
    const QByteArray warning = "could not write " + path().toUtf8() + ": No space left on device";
    QTest::ignoreMessage(QtWarningMsg, warning.constData());
    QVERIFY(!config.write());
    QCOMPARE(contentsOf(path()), QByteArray("[A]\nx = 1\n"));
    QVERIFY(!QFile::exists(path() + ".new"));

    config.writeEntry("large", "small");
    QVERIFY(config.write());
    QCOMPARE(contentsOf(path()), QByteArray("[A]\nlarge = small\nx = 1\n"));
}

void ConfigTest::lastWriterWinsWhole()
{
    constexpr int keys = 300;
    std::atomic<int> failed = 0;
    const auto writeMany = [this, &failed](int writer) {
        for (int round = 0; round < 25; ++round) {
            Config config(path(), Config::File);
            for (int key = 0; key < keys; ++key)
                config.writeEntry(QString::number(key), QString::number(writer * 1000 + round));
            failed += config.write() ? 0 : 1;
        }
    };
    std::atomic<int> running = 3;
    std::vector<std::thread> writers;
    for (int writer = 1; writer <= 3; ++writer)
        writers.emplace_back([&, writer] {
            writeMany(writer);
            --running;
        });
    int mixed = 0;
    while (running > 0) {
        const Config config(path(), Config::File);
        for (int key = 0; config.isValid() && key < keys; ++key)
            mixed += config.readEntry(QString::number(key)) != config.readEntry("0") ? 1 : 0;
    }
    for (std::thread &writer : writers)
        writer.join();
    QCOMPARE(failed.load(), 0);
    QCOMPARE(mixed, 0);
    QVERIFY(Config(path(), Config::File).readNumEntry("0") % 1000 == 24);
    QVERIFY(!QFile::exists(path() + ".new"));
}

int main(int argc, char **argv)
{
    canMount = enterMountNamespace();
    QCoreApplication app(argc, argv);
    ConfigTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "configtest.moc"
