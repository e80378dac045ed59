#include "displayfixture.h"
#include "kymisc.h"
#include <climits>
#include <QtTest>

class LayoutTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void marginsAndSpacingAreMultiplied();
    void twiceDoublesTwice();
    void factorOneChangesNothing();
    void styleDefaultsAreMultiplied();
    void gridAndFormHaveTwoSpacings();
    void layoutsOfChildWidgetsAreVisited();
    void layoutsInLayoutsStay();
    void layoutItselfCanBeGiven();
    void hostileFactors_data();
    void hostileFactors();
    void layoutSpaceArrangeGoesByTheScale();
    void nothingIsNoObject();

    void fontOfTextWidgets_data();
    void fontOfTextWidgets();
    void otherSizesStay();
    void headerGetsTheFontOfItsList();
    void headerFollowsItsListAlone();
    void comboBoxKeepsItsLine();
    void derivedComboBoxIsEntered();
    void childrenOfChildrenAreVisited();
    void restOfTheFontStays();
    void fontArrangeOfTheForm_data();
    void fontArrangeOfTheForm();
};

namespace {

struct Form
{
    QWidget widget;
    QBoxLayout *layout = new QVBoxLayout(&widget);

    Form()
    {
        layout->setContentsMargins(1, 2, 3, 4);
        layout->setSpacing(5);
    }
};

QFont fontOf(int points)
{
    return QFont(QStringLiteral("lcfont"), points);
}

/** A widget with a font of its own. */
template <typename Widget> Widget *widgetWithFont(int points, QWidget *parent = nullptr)
{
    auto *widget = new Widget(parent);
    widget->setFont(fontOf(points));
    return widget;
}

/** A combo box by another name. */
class DerivedComboBox : public QComboBox
{
    Q_OBJECT
};

} // namespace

void LayoutTest::initTestCase()
{
    QApplication::setStyle(new NarrowScrollBars);
}

void LayoutTest::init()
{
    setDisplay(72, "480x640");
}

void LayoutTest::marginsAndSpacingAreMultiplied()
{
    Form form;
    scaleArrange(&form.widget, 3);
    QCOMPARE(form.layout->contentsMargins(), QMargins(3, 6, 9, 12));
    QCOMPARE(form.layout->spacing(), 15);
}

void LayoutTest::twiceDoublesTwice()
{
    Form form;
    scaleArrange(&form.widget, 2);
    scaleArrange(&form.widget, 2);
    QCOMPARE(form.layout->contentsMargins(), QMargins(4, 8, 12, 16));
    QCOMPARE(form.layout->spacing(), 20);
}

void LayoutTest::factorOneChangesNothing()
{
    Form form;
    scaleArrange(&form.widget, 1);
    QCOMPARE(form.layout->contentsMargins(), QMargins(1, 2, 3, 4));
    QCOMPARE(form.layout->spacing(), 5);
}

void LayoutTest::styleDefaultsAreMultiplied()
{
    QWidget widget;
    QVBoxLayout layout(&widget);
    const QMargins margins = layout.contentsMargins();
    const int spacing = layout.spacing();
    QVERIFY(margins.left() > 0 && spacing > 0);
    scaleArrange(&widget, 2);
    QCOMPARE(layout.contentsMargins(), margins * 2);
    QCOMPARE(layout.spacing(), 2 * spacing);
}

void LayoutTest::gridAndFormHaveTwoSpacings()
{
    QWidget gridWidget, formWidget;
    QGridLayout grid(&gridWidget);
    grid.setHorizontalSpacing(3);
    grid.setVerticalSpacing(7);
    QFormLayout form(&formWidget);
    form.setHorizontalSpacing(4);
    form.setVerticalSpacing(9);
    scaleArrange(&gridWidget, 2);
    scaleArrange(&formWidget, 2);
    QCOMPARE(grid.horizontalSpacing(), 6);
    QCOMPARE(grid.verticalSpacing(), 14);
    QCOMPARE(form.horizontalSpacing(), 8);
    QCOMPARE(form.verticalSpacing(), 18);
}

void LayoutTest::layoutsOfChildWidgetsAreVisited()
{
    Form form;
    auto *plain = new QWidget;
    auto *inner = new QWidget(plain); // two steps down
    auto *layout = new QHBoxLayout(inner);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(6);
    form.layout->addWidget(plain);
    scaleArrange(&form.widget, 2);
    QCOMPARE(layout->contentsMargins(), QMargins(20, 20, 20, 20));
    QCOMPARE(layout->spacing(), 12);
    QCOMPARE(form.layout->spacing(), 10);
}

void LayoutTest::layoutsInLayoutsStay()
{
    Form form;
    auto *nested = new QHBoxLayout;
    nested->setContentsMargins(10, 10, 10, 10);
    nested->setSpacing(6);
    form.layout->addLayout(nested);
    scaleArrange(&form.widget, 2);
    QCOMPARE(form.layout->spacing(), 10);
    QCOMPARE(nested->contentsMargins(), QMargins(10, 10, 10, 10));
    QCOMPARE(nested->spacing(), 6);
}

void LayoutTest::layoutItselfCanBeGiven()
{
    Form form;
    scaleArrange(form.layout, 2);
    QCOMPARE(form.layout->contentsMargins(), QMargins(2, 4, 6, 8));
}

void LayoutTest::hostileFactors_data()
{
    QTest::addColumn<long>("factor");
    QTest::addColumn<int>("spacing");
    QTest::newRow("zero") << 0L << 0;
    QTest::newRow("negative") << -2L << 0;
    QTest::newRow("smallest") << LONG_MIN << 0;
    QTest::newRow("largest of 32 bits") << long(INT_MAX) << QWIDGETSIZE_MAX;
    QTest::newRow("largest") << LONG_MAX << QWIDGETSIZE_MAX;
}

void LayoutTest::hostileFactors()
{
    QFETCH(long, factor);
    QFETCH(int, spacing);
    Form form;
    scaleArrange(&form.widget, factor);
    QCOMPARE(form.layout->spacing(), spacing);
    QCOMPARE(form.layout->contentsMargins(), QMargins(spacing, spacing, spacing, spacing));
}

void LayoutTest::layoutSpaceArrangeGoesByTheScale()
{
    for (const int scale : {1, 2, 3}) {
        setDisplay(72 * scale, "480x640");
        Form form;
        KyMisc::KyLayoutSpaceArrange(&form.widget);
        QCOMPARE(form.layout->contentsMargins(), QMargins(1, 2, 3, 4) * scale);
        QCOMPARE(form.layout->spacing(), 5 * scale);
    }
}

void LayoutTest::nothingIsNoObject()
{
    scaleArrange(nullptr, 2);
    fontArrange(nullptr, 10, 12);
    KyMisc::KyLayoutSpaceArrange(nullptr);
    KyMisc::KyFontArrange(nullptr);
    Form form;
    scaleArrange(&form.widget, 2); // the calls before left nothing behind
    QCOMPARE(form.layout->spacing(), 10);
}

using MakeWidget = QWidget *(*)();
Q_DECLARE_METATYPE(MakeWidget)

void LayoutTest::fontOfTextWidgets_data()
{
    QTest::addColumn<MakeWidget>("make");
    QTest::addColumn<bool>("grows");
    const auto row = [](const char *name, MakeWidget make, bool grows) {
        QTest::newRow(name) << make << grows;
    };
    row(
        "tree", [] { return static_cast<QWidget *>(new QTreeWidget); }, true);
    row(
        "list", [] { return static_cast<QWidget *>(new QListWidget); }, true);
    row(
        "line", [] { return static_cast<QWidget *>(new QLineEdit); }, true);
    row(
        "text of several lines", [] { return static_cast<QWidget *>(new QPlainTextEdit); }, true);
    row(
        "spin box", [] { return static_cast<QWidget *>(new QSpinBox); }, true);
    row(
        "label", [] { return static_cast<QWidget *>(new QLabel); }, false);
    row(
        "button", [] { return static_cast<QWidget *>(new QPushButton); }, false);
    row(
        "rich text", [] { return static_cast<QWidget *>(new QTextEdit); }, false);
    row(
        "table", [] { return static_cast<QWidget *>(new QTableWidget); }, false);
    row(
        "combo box", [] { return static_cast<QWidget *>(new QComboBox); }, false);
    row(
        "plain widget", [] { return new QWidget; }, false);
}

void LayoutTest::fontOfTextWidgets()
{
    QFETCH(MakeWidget, make);
    QFETCH(bool, grows);
    const std::unique_ptr<QWidget> widget(make());
    widget->setFont(fontOf(10));
    fontArrange(widget.get(), 10, 12);
    QCOMPARE(widget->font().pointSize(), grows ? 12 : 10);
}

void LayoutTest::otherSizesStay()
{
    for (const int points : {9, 11, 12, 20}) {
        const std::unique_ptr<QLineEdit> line(widgetWithFont<QLineEdit>(points));
        fontArrange(line.get(), 10, 24);
        QCOMPARE(line->font().pointSize(), points);
    }
}

void LayoutTest::headerGetsTheFontOfItsList()
{
    const std::unique_ptr<QTreeWidget> tree(widgetWithFont<QTreeWidget>(10));
    tree->header()->setFont(QFont(QStringLiteral("other"), 7));
    fontArrange(tree.get(), 10, 12);
    QCOMPARE(tree->header()->font().pointSize(), 12);
    QCOMPARE(tree->header()->font().family(), QString("lcfont"));
}

void LayoutTest::headerFollowsItsListAlone()
{
    const std::unique_ptr<QTreeWidget> tree(widgetWithFont<QTreeWidget>(14));
    tree->header()->setFont(fontOf(10));
    fontArrange(tree.get(), 10, 12);
    QCOMPARE(tree->font().pointSize(), 14);
    QCOMPARE(tree->header()->font().pointSize(), 10);
}

void LayoutTest::comboBoxKeepsItsLine()
{
    const std::unique_ptr<QComboBox> box(widgetWithFont<QComboBox>(10));
    box->setEditable(true);
    box->lineEdit()->setFont(fontOf(10));
    fontArrange(box.get(), 10, 12);
    QCOMPARE(box->lineEdit()->font().pointSize(), 10);
}

void LayoutTest::derivedComboBoxIsEntered()
{
    const std::unique_ptr<DerivedComboBox> box(widgetWithFont<DerivedComboBox>(10));
    box->setEditable(true);
    box->lineEdit()->setFont(fontOf(10));
    fontArrange(box.get(), 10, 12);
    QCOMPARE(box->font().pointSize(), 10);
    QCOMPARE(box->lineEdit()->font().pointSize(), 12);
}

void LayoutTest::childrenOfChildrenAreVisited()
{
    QObject root;
    QWidget window;
    auto *group = widgetWithFont<QGroupBox>(10, &window);
    auto *line = widgetWithFont<QLineEdit>(10, group);
    auto *inList = widgetWithFont<QLineEdit>(10, widgetWithFont<QListWidget>(10, group));
    fontArrange(&window, 10, 12);
    QCOMPARE(group->font().pointSize(), 10);
    QCOMPARE(line->font().pointSize(), 12);
    QCOMPARE(inList->font().pointSize(), 12);
}

void LayoutTest::restOfTheFontStays()
{
    QFont font = fontOf(10);
    font.setBold(true);
    QLineEdit line;
    line.setFont(font);
    fontArrange(&line, 10, 12);
    font.setPointSize(12);
    QCOMPARE(line.font(), font);
}

void LayoutTest::fontArrangeOfTheForm_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<int>("points");
    QTest::addColumn<QList<int>>("before");
    QTest::addColumn<QList<int>>("after");
    const QList<int> sizes{10, 12, 20};
    QTest::newRow("small") << "lcfont" << 10 << sizes << QList<int>{12, 12, 20};
    QTest::newRow("12 is small") << "lcfont" << 12 << sizes << QList<int>{12, 12, 20};
    QTest::newRow("13 is large") << "lcfont" << 13 << sizes << QList<int>{10, 12, 24};
    QTest::newRow("large") << "lcfont" << 20 << sizes << QList<int>{10, 12, 24};
    QTest::newRow("another font") << "dejavu" << 10 << sizes << sizes;
    QTest::newRow("longer name") << "lcfont2" << 10 << sizes << sizes;
    QTest::newRow("capital letters") << "LCFont" << 10 << sizes << sizes;
}

void LayoutTest::fontArrangeOfTheForm()
{
    QFETCH(QString, family);
    QFETCH(int, points);
    QFETCH(QList<int>, before);
    QWidget form;
    form.setFont(QFont(family, points));
    QList<QLineEdit *> lines;
    for (const int size : before)
        lines.append(widgetWithFont<QLineEdit>(size, &form));
    KyMisc::KyFontArrange(&form);
    QList<int> after;
    for (const QLineEdit *line : lines)
        after.append(line->font().pointSize());
    QTEST(after, "after");
}

QTEST_MAIN(LayoutTest)
#include "layouttest.moc"
