#include "qlistvalidator.h"
#include "kyhostvalidator.h"
#include "logcapture.h"
#include <QIntValidator>
#include <QLineEdit>
#include <QTest>
#include <QWidget>

namespace {

/** "a" is Acceptable, the empty text and "i" are Intermediate, "m" is made an "a"; keeps what it was asked.
 */
class LetterValidator : public QValidator
{
public:
    State validate(QString &text, int &position) const override
    {
        asked.append(text);
        inRange = inRange && position >= 0 && position <= text.size();
        if (text == "m")
            text = "a";
        if (text == "a")
            return Acceptable;
        return text.isEmpty() || text == "i" ? Intermediate : Invalid;
    }
    mutable QStringList asked;
    mutable bool inRange = true;
};

} // namespace

class QListValidatorTest : public QObject
{
    Q_OBJECT
private slots:
    void ownsNeither();
    void stateOfLists_data();
    void stateOfLists();
    void piecesThatAreAsked_data();
    void piecesThatAreAsked();
    void itemMayBeGone();
    void separatorThatIsNoExpression_data();
    void separatorThatIsNoExpression();
    void textStays();
    void hostsAreTypedIntoAnEdit();
    void blanksBeforeASeparatorCannotBeTyped();
};

void QListValidatorTest::ownsNeither()
{
    QWidget parent;
    LetterValidator item;
    const QListValidator *list = new QListValidator(&parent, &item, ",", "list");
    QCOMPARE(list->parent(), &parent);
    QCOMPARE(list->objectName(), QString("list"));
    delete list;
    QString text = "a";
    int position = 0;
    QCOMPARE(item.validate(text, position), QValidator::Acceptable);
}

void QListValidatorTest::stateOfLists_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QValidator::State>("state");
    QTest::newRow("one") << "a" << QValidator::Acceptable;
    QTest::newRow("several") << "a,a,a" << QValidator::Acceptable;
    QTest::newRow("blanks around") << "a ,\t a" << QValidator::Acceptable;
    QTest::newRow("empty") << "" << QValidator::Intermediate;
    QTest::newRow("last begun") << "a,i" << QValidator::Intermediate;
    QTest::newRow("last empty") << "a," << QValidator::Intermediate;
    QTest::newRow("last empty behind blanks") << "a,  " << QValidator::Intermediate;
    QTest::newRow("first begun") << "i,a" << QValidator::Invalid;
    QTest::newRow("first empty") << ",a" << QValidator::Invalid;
    QTest::newRow("middle empty") << "a,,a" << QValidator::Invalid;
    QTest::newRow("middle blank") << "a, ,a" << QValidator::Invalid;
    QTest::newRow("all begun") << "i,i" << QValidator::Invalid;
    QTest::newRow("last wrong") << "a,x" << QValidator::Invalid;
    QTest::newRow("first wrong") << "x,a" << QValidator::Invalid;
    QTest::newRow("only wrong") << "x" << QValidator::Invalid;
    QTest::newRow("blank at the start") << " a" << QValidator::Invalid;
    QTest::newRow("blank at the end") << "a " << QValidator::Invalid;
}

void QListValidatorTest::stateOfLists()
{
    QFETCH(QString, text);
    LetterValidator item;
    const QListValidator list(nullptr, &item, ",");
    int position = 0;
    QTEST(list.validate(text, position), "state");
    QVERIFY(item.inRange);
}

void QListValidatorTest::piecesThatAreAsked_data()
{
    QTest::addColumn<QString>("separator");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("pieces");
    QTest::newRow("stops at the first that is wrong") << ","
                                                      << "a,x,a" << QStringList{"a", "x"};
    QTest::newRow("stops at the first that is begun") << ","
                                                      << "a,i,a" << QStringList{"a", "i"};
    QTest::newRow("class") << "[,;]"
                           << "a;a , a" << QStringList{"a", "a", "a"};
    QTest::newRow("alternatives have blanks too") << ",|and"
                                                  << "a , a and a" << QStringList{"a", "a", "a"};
    QTest::newRow("blank") << "\\s"
                           << "a   a\ta" << QStringList{"a", "a", "a"};
    QTest::newRow("two blanks are needed") << "\\s\\s"
                                           << "a  a" << QStringList{"a", "a"};
    QTest::newRow("dollar") << "\\$"
                            << "a$a" << QStringList{"a", "a"};
    QTest::newRow("group of its own") << "(,)"
                                      << "a,a" << QStringList{"a", "a"};
    QTest::newRow("empty: blanks separate") << ""
                                            << "a a" << QStringList{"a", "a"};
    QTest::newRow("may be empty") << ",?"
                                  << "a,a" << QStringList{"a", "a"};
    QTest::newRow("may be empty, nothing to match") << "x*"
                                                    << "ab" << QStringList{"ab"};
    QTest::newRow("looks ahead") << "(?=a)"
                                 << "aa" << QStringList{"aa"};
    QTest::newRow("of a look ahead the blanks") << "(?=a)"
                                                << "a a" << QStringList{"a", "a"};
    QTest::newRow("start of the text") << "^"
                                       << "aa" << QStringList{"aa"};
    QTest::newRow("separator alone") << ","
                                     << "," << QStringList{""};
}

void QListValidatorTest::piecesThatAreAsked()
{
    QFETCH(QString, separator);
    QFETCH(QString, text);
    LetterValidator item;
    const QListValidator list(nullptr, &item, separator);
    int position = 0;
    (void)list.validate(text, position);
    QTEST(item.asked, "pieces");
}

void QListValidatorTest::itemMayBeGone()
{
    auto item = std::make_unique<LetterValidator>();
    const QListValidator list(nullptr, item.get(), ",");
    QString text = "a,x";
    int position = 0;
    QCOMPARE(list.validate(text, position), QValidator::Invalid);
    item.reset();
    QCOMPARE(list.validate(text, position), QValidator::Acceptable);
    QCOMPARE(QListValidator(nullptr, nullptr, ",").validate(text, position), QValidator::Acceptable);
}

void QListValidatorTest::separatorThatIsNoExpression_data()
{
    QTest::addColumn<QString>("separator");
    QTest::newRow("bracket") << "[";
    QTest::newRow("parenthesis") << "(";
    QTest::newRow("star") << "*";
    QTest::newRow("backslash") << "\\";
}

void QListValidatorTest::separatorThatIsNoExpression()
{
    QFETCH(QString, separator);
    LetterValidator item;
    LogCapture log;
    const QListValidator list(nullptr, &item, separator);
    QString text = "a[(*\\a";
    int position = 0;
    QCOMPARE(list.validate(text, position), QValidator::Invalid);
    QCOMPARE(item.asked, QStringList{text});
    QCOMPARE(log.warnings(), QStringList{"QListValidator: \"" + separator + "\" is no regular expression"});
}

void QListValidatorTest::textStays()
{
    LetterValidator item;
    const QListValidator list(nullptr, &item, ",");
    QString text = "m , m";
    int position = 2;
    QCOMPARE(list.validate(text, position), QValidator::Acceptable);
    QCOMPARE(text, QString("m , m"));
    QCOMPARE(position, 2);
}

void QListValidatorTest::hostsAreTypedIntoAnEdit()
{
    QLineEdit edit;
    KYIPhostValidator item(&edit);
    edit.setValidator(new QListValidator(&edit, &item, ","));
    QTest::keyClicks(&edit, "10.0.0.1,, 192.168..1.256,224");
    QCOMPARE(edit.text(), QString("10.0.0.1, 192.168.1.25,22"));
    QVERIFY(!edit.hasAcceptableInput());
    QTest::keyClicks(&edit, ".4.0.1");
    QCOMPARE(edit.text(), QString("10.0.0.1, 192.168.1.25,22.4.0.1"));
    QVERIFY(edit.hasAcceptableInput());
}

void QListValidatorTest::blanksBeforeASeparatorCannotBeTyped()
{
    QLineEdit edit;
    KYIPhostValidator item(&edit);
    edit.setValidator(new QListValidator(&edit, &item, ","));
    QTest::keyClicks(&edit, "10.0.0.1 ,10.0.0.2");
    QCOMPARE(edit.text(), QString("10.0.0.1,10.0.0.2"));
    edit.clear();
    edit.insert("10.0.0.1 , 10.0.0.2");
    QCOMPARE(edit.text(), QString("10.0.0.1 , 10.0.0.2"));
}

QTEST_MAIN(QListValidatorTest)
#include "qlistvalidatortest.moc"
