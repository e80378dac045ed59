#include "global.h"
#include "channellistener.h"
#include "qpeapplication.h"
#include <QDir>
#include <QProcess>
#include <QTest>

using Messages = QList<ChannelListener::Message>;

static const QString GivenText = QStringLiteral("$(touch hacked) `id` ; \"a\" 'b' \\ & | < > * \n Ä日本");

class GlobalTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();

    void inputMethodIsShownAndHidden();
    void executePassesOneArgument_data();
    void executePassesOneArgument();
    void programGoesOnByItself();
    void executeRefuses_data();
    void executeRefuses();
    void executeRefusesArgumentWithZero();

private:
    [[nodiscard]] QByteArray heard() const;
    QString bin;
};

static void writeProgram(const QString &path, const QByteArray &text, QFile::Permissions permissions)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
    QVERIFY(file.setPermissions(permissions));
}

/** What the program wrote; null until it has written all. */
QByteArray GlobalTest::heard() const
{
    QFile file(bin + "heard");
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void GlobalTest::initTestCase()
{
    bin = QPEApplication::qpeDir() + "bin/";
    QVERIFY(QDir().mkpath(bin));
    const QByteArray script = "#!/bin/sh\n"
                              "cd \"${0%/*}\"\n"
                              "{ echo $#; for a in \"$@\"; do printf '%s|' \"$a\"; done; } > new\n"
                              "mv new heard\n";
    const QFile::Permissions all = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    writeProgram(bin + "talk", script, all);
    writeProgram(bin + "two words;", script, all);
    writeProgram(bin + "plain", script, QFile::ReadOwner | QFile::WriteOwner);
    writeProgram(bin + "../outside", script, all);
    writeProgram(bin + "notaprogram",
                 "\x7f"
                 "ELF is cut short",
                 all);
    QVERIFY(QDir().mkpath(bin + "folder"));
    writeProgram(bin + "folder/inner", script, all);
}

void GlobalTest::init()
{
    QFile::remove(bin + "heard");
}

void GlobalTest::inputMethodIsShownAndHidden()
{
    ChannelListener taskBar("QPE/TaskBar");
    Global::showInputMethod();
    Global::hideInputMethod();
    QCOMPARE(taskBar.take(), (Messages{{"showInputMethod()", ""}, {"hideInputMethod()", ""}}));
}

void GlobalTest::executePassesOneArgument_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("none") << "talk" << QString() << QByteArray("0\n");
    QTest::newRow("empty") << "talk"
                           << "" << QByteArray("1\n|");
    QTest::newRow("blanks") << "talk"
                            << " a  b " << QByteArray("1\n a  b |");
    QTest::newRow("option") << "talk"
                            << "--help" << QByteArray("1\n--help|");
    QTest::newRow("shell") << "talk" << GivenText << "1\n" + GivenText.toUtf8() + '|';
    QTest::newRow("name of a shell's liking") << "two words;"
                                              << "x" << QByteArray("1\nx|");
}

void GlobalTest::executePassesOneArgument()
{
    QFETCH(QString, program);
    QFETCH(QString, argument);
    QFETCH(QByteArray, expected);
    QVERIFY(Global::execute(program, argument));
    QTRY_VERIFY_WITH_TIMEOUT(!heard().isNull(), 10000);
    QCOMPARE(heard(), expected);
    QVERIFY(!QFileInfo::exists(bin + "hacked"));
}

void GlobalTest::programGoesOnByItself()
{
    writeProgram(bin + "wait",
                 "#!/bin/sh\ncd \"${0%/*}\"\nread line < gate\necho $line > new\nmv new heard\n",
                 QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(QProcess::execute("mkfifo", {bin + "gate"}), 0);
    QVERIFY(Global::execute("wait")); // and doesn't wait
    QFile gate(bin + "gate");
    QVERIFY(gate.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    gate.write("done\n");
    gate.close();
    QTRY_COMPARE_WITH_TIMEOUT(heard(), QByteArray("done\n"), 10000);
}

void GlobalTest::executeRefuses_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("empty") << QString();
    QTest::newRow("missing") << "nothing";
    QTest::newRow("not executable") << "plain";
    QTest::newRow("folder") << "folder";
    QTest::newRow("folder itself") << ".";
    QTest::newRow("folder above") << "..";
    QTest::newRow("outside") << "../outside";
    QTest::newRow("further inside") << "folder/inner";
    QTest::newRow("absolute") << "/bin/true";
    QTest::newRow("in PATH") << "true";
    QTest::newRow("no program's contents") << "notaprogram";
    QTest::newRow("with arguments") << "talk --help";
    QTest::newRow("zero character") << QString::fromUtf8("talk\0", 5);
}

void GlobalTest::executeRefuses()
{
    QFETCH(QString, program);
    QVERIFY(!Global::execute(program, "x"));
    QTest::qWait(50);
    QVERIFY(heard().isNull());
}

void GlobalTest::executeRefusesArgumentWithZero()
{
    QVERIFY(!Global::execute("talk", QString::fromUtf8("a\0b", 3)));
    QTest::qWait(50);
    QVERIFY(heard().isNull());
}

QTEST_MAIN(GlobalTest)
#include "globaltest.moc"
