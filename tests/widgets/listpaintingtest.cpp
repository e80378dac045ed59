#include "elidedtext_p.h"
#include "textlist.h"
#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTextBoundaryFinder>
#include <QtTest>

namespace {

constexpr int Width = 100;

const QColor Unpainted(255, 0, 255);
const QColor Base(255, 255, 240), OtherBase(200, 220, 200), Marked(0, 0, 160), MarkedText(255, 255, 0);
const QColor InactiveMarked(90, 90, 160), DisabledText(150, 150, 150), DisabledBase(230, 230, 230);

/** One colour for each use. */
QPalette testPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Base, Base);
    palette.setColor(QPalette::AlternateBase, OtherBase);
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::Highlight, Marked);
    palette.setColor(QPalette::HighlightedText, MarkedText);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, InactiveMarked);
    palette.setColor(QPalette::Disabled, QPalette::Text, DisabledText);
    palette.setColor(QPalette::Disabled, QPalette::Base, DisabledBase);
    return palette;
}

QFont testFont()
{
    QFont font("IPAGothic");
    font.setPixelSize(12);
    font.setStyleStrategy(QFont::NoAntialias);
    return font;
}

/** A list of three rows in the test's font and colours. */
class PaintedList : public TextList
{
public:
    explicit PaintedList(bool checked = false) : TextList(2, checked)
    {
        setFont(testFont());
        setPalette(testPalette());
        setFrameShape(QFrame::NoFrame);
        setAllDataNum(3);
    }

    /** A cell as its row paints it. */
    [[nodiscard]] QImage painted(int column, int width, Qt::Alignment align = Qt::AlignLeft, int row = 0)
    {
        QImage image(width, rowHeight(), QImage::Format_RGB32);
        image.fill(Unpainted);
        QPainter painter(&image);
        painter.setFont(font());
        this->row(row)->paintCell(&painter, palette(), column, width, align);
        return image;
    }

    /** The cell of the first row in the second column, and what drawText() makes of its text. */
    [[nodiscard]] std::pair<QImage, QImage> besidePlainText(Qt::LayoutDirection direction,
                                                            Qt::Alignment align)
    {
        QImage image(Width, rowHeight(), QImage::Format_RGB32);
        QImage plain = image;
        plain.fill(Base);
        QPainter painter(&image), plainPainter(&plain);
        for (QPainter *each : {&painter, &plainPainter}) {
            each->setFont(font());
            each->setLayoutDirection(direction);
        }
        row(0)->paintCell(&painter, palette(), 1, Width, align);
        const QString text = elidedText(itemText(1, 1), painter.fontMetrics(), Width, itemMargin());
        plainPainter.drawText(QRect(itemMargin(), 0, Width - itemMargin(), plain.height()),
                              int(align) | Qt::TextSingleLine, text);
        return {image, plain};
    }
};

/** A picture of a cell, put together by hand. */
class Picture
{
public:
    Picture(const PaintedList &list, int width) : m_image(width, list.rowHeight(), QImage::Format_RGB32)
    {
        m_image.fill(Base);
    }
    Picture &fill(int left, const QColor &color)
    {
        QPainter(&m_image).fillRect(left, 0, m_image.width() - left, m_image.height(), color);
        return *this;
    }
    Picture &draw(int left, const QString &text, const QColor &color = Qt::black)
    {
        const QFontMetrics metrics(testFont());
        return drawAt(left, (m_image.height() - metrics.height()) / 2, text, color);
    }
    Picture &drawAt(int left, int top, const QString &text, const QColor &color = Qt::black)
    {
        QPainter painter(&m_image);
        painter.setFont(testFont());
        painter.setPen(color);
        painter.drawText(left, top + painter.fontMetrics().ascent(), text);
        return *this;
    }
    Picture &draw(int left, const QPixmap &pixmap)
    {
        QPainter(&m_image).drawPixmap(left, (m_image.height() - pixmap.height()) / 2, pixmap);
        return *this;
    }
    [[nodiscard]] QImage image() const { return m_image; }

private:
    QImage m_image;
};

/** The longest beginning with the dots in front that stays under the width, character by character. */
QString cutByHand(const QString &text, int width, int margin)
{
    const QFontMetrics metrics(testFont());
    if (metrics.horizontalAdvance(text) + margin <= width)
        return text;
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = characters.toNextBoundary();
    qsizetype longest = end;
    while (end > 0 && metrics.horizontalAdvance("..." + text.left(end)) + margin < width) {
        longest = end;
        end = characters.toNextBoundary();
    }
    return text.left(longest) + "...";
}

/** Colour of a cell where nothing is drawn: above its text, at its left or right end. */
QColor leftColor(const QImage &image, const QRect &cell)
{
    return image.pixelColor(cell.left(), cell.top());
}
QColor rightColor(const QImage &image, const QRect &cell)
{
    return image.pixelColor(cell.right() - 1, cell.top());
}

/** True when some pixel of a rectangle has the colour. */
bool hasColor(const QImage &image, const QRect &area, const QColor &color)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (image.pixelColor(x, y) == color)
                return true;
        }
    }
    return false;
}

void showList(PaintedList &list)
{
    list.resize(300, 150);
    list.setColumnWidth(0, 120);
    list.show();
    list.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&list));
    list.setFocus();
    list.selectionModel()->clearCurrentIndex(); // whose frame would be in the picture
}

QImage grabbed(PaintedList &list)
{
    return list.viewport()->grab().toImage();
}

} // namespace

/** What the rows of a KyListView look like. */
class ListPaintingTest : public QObject
{
    Q_OBJECT
private slots:
    // a cell
    void cellIsFilledWithTheBase();
    void textStartsBehindTheMargin_data();
    void textStartsBehindTheMargin();
    void textHasItsVerticalPlace_data();
    void textHasItsVerticalPlace();
    void textOnTheRight();
    void textInTheMiddle();
    void textIsDrawnAsPlainText_data();
    void textIsDrawnAsPlainText();
    void pixmapStandsInFrontOfTheText();
    void pixmapWithoutText();
    void selectionFillsTheFirstColumn();
    void selectionOfOtherColumns();
    void selectionOnTheRight();
    void selectionIsUnderThePixmap();
    void breaksInATextAreBlanks();
    void noPainterPaintsNothing();
    void rowInNoViewIsEmpty();

    // texts that are too wide
    void textThatFitsExactlyIsWhole();
    void textOnePixelTooWideIsCut();
    void cutTextOfEachWidth_data();
    void cutTextOfEachWidth();
    void firstCharacterStaysWhateverTheWidth_data();
    void firstCharacterStaysWhateverTheWidth();
    void charactersAreNotSplit_data();
    void charactersAreNotSplit();
    void cutTextIsDrawnWithDots();
    void pixmapLeavesLessRoom();
    void longTextIsLookedAtInPart_data();
    void longTextIsLookedAtInPart();
    void longTextIsAskedForOnce();

    // the view
    void everyOtherRowHasAnotherBase();
    void selectionInTheView();
    void selectionOfAllColumnsInTheView();
    void coloursOfADisabledList();
    void coloursOfADisabledRow();
    void coloursOfAnInactiveWindow();
    void focusIsFramed();
    void alignmentOfAColumn();
    void rowsOfOtherClassesArePaintedAsUsual();
    void subclassPaintsItsCellsAlone();

    // check boxes
    void checkBoxIsInFrontOfTheFirstColumn();
    void checkBoxShowsItsState();
    void otherColumnsOfACheckedRow();
    void selectionOfACheckedRow();
    void textBesideACheckBoxIsCut();
    void pixmapBesideACheckBox();
};

void ListPaintingTest::cellIsFilledWithTheBase()
{
    PaintedList list;
    list.texts[{1, 0}] = "";
    QCOMPARE(list.painted(0, Width), Picture(list, Width).image());
}

void ListPaintingTest::textStartsBehindTheMargin_data()
{
    QTest::addColumn<int>("margin");
    for (const int margin : {0, 1, 7})
        QTest::addRow("%d", margin) << margin;
}

void ListPaintingTest::textStartsBehindTheMargin()
{
    QFETCH(int, margin);
    PaintedList list;
    list.setItemMargin(margin);
    QCOMPARE(list.painted(1, Width), Picture(list, Width).draw(margin, "1.1").image());
}

void ListPaintingTest::textHasItsVerticalPlace_data()
{
    QTest::addColumn<Qt::Alignment>("align");
    QTest::addColumn<double>("part"); // of the free height that is above the text
    QTest::newRow("none") << Qt::Alignment(Qt::AlignLeft) << 0.5;
    QTest::newRow("middle") << Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter) << 0.5;
    QTest::newRow("top") << Qt::Alignment(Qt::AlignLeft | Qt::AlignTop) << 0.0;
    QTest::newRow("bottom") << Qt::Alignment(Qt::AlignLeft | Qt::AlignBottom) << 1.0;
}

void ListPaintingTest::textHasItsVerticalPlace()
{
    QFETCH(Qt::Alignment, align);
    QFETCH(double, part);
    PaintedList list;
    list.pixmaps[{1, 1}] = plainPixmap(1, 40); // makes the rows high
    const int room = list.rowHeight() - QFontMetrics(testFont()).height();
    QVERIFY(room > 20);
    const QImage expected = Picture(list, Width).drawAt(1, int(room * part), "1.0").image();
    QCOMPARE(list.painted(0, Width, align), expected);
}

void ListPaintingTest::textOnTheRight()
{
    PaintedList list;
    const int left = Width - QFontMetrics(testFont()).horizontalAdvance("1.1");
    QCOMPARE(list.painted(1, Width, Qt::AlignRight), Picture(list, Width).draw(left, "1.1").image());
}

void ListPaintingTest::textInTheMiddle()
{
    PaintedList list;
    list.texts[{1, 1}] = "even";
    const int room = Width - 1 - QFontMetrics(testFont()).horizontalAdvance("even");
    QCOMPARE(list.painted(1, Width, Qt::AlignHCenter),
             Picture(list, Width).draw(1 + room / 2, "even").image());
}

void ListPaintingTest::textIsDrawnAsPlainText_data()
{
    QTest::addColumn<QString>("text");
    const QString hebrew = QStringLiteral("\u05D0\u05D1\u05D2 (12)");
    QTest::newRow("none") << "";
    QTest::newRow("letters") << "Ag fi";
    QTest::newRow("Japanese") << QStringLiteral("A\u6771 \uFF76\uFF9E");
    QTest::newRow("from right to left") << hebrew;
    QTest::newRow("from both sides") << QStringLiteral("a ") + hebrew + QStringLiteral(" b");
    QTest::newRow("blanks at both ends") << "  a  ";
    QTest::newRow("marks") << QStringLiteral("e\u0301\u304B\u3099");
    QTest::newRow("picture") << QString::fromUcs4(U"a\U0001F600b");
    QTest::newRow("too wide") << QStringLiteral("Ag W ").repeated(9);
    QTest::newRow("too wide and from right to left") << hebrew.repeated(5);
}

void ListPaintingTest::textIsDrawnAsPlainText()
{
    QFETCH(QString, text);
    PaintedList list;
    list.pixmaps[{1, 0}] = plainPixmap(4, 31);
    list.texts[{1, 1}] = text;
    for (const QFont &font : {testFont(), QFont("DejaVu Sans", 11), QFont("IPAPGothic", 17)}) {
        list.setFont(font);
        for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft}) {
            for (const int side : {Qt::AlignLeft, Qt::AlignRight, Qt::AlignHCenter, Qt::AlignJustify}) {
                for (const int height : {Qt::AlignTop, Qt::AlignVCenter, Qt::AlignBottom}) {
                    const auto [image, plain] = list.besidePlainText(direction, Qt::Alignment(side | height));
                    QCOMPARE(image, plain);
                }
            }
        }
    }
}

void ListPaintingTest::pixmapStandsInFrontOfTheText()
{
    PaintedList list;
    const QPixmap pixmap = plainPixmap(8, 6);
    list.pixmaps[{1, 0}] = pixmap;
    list.setItemMargin(3);
    QCOMPARE(list.painted(0, Width), Picture(list, Width).draw(3, pixmap).draw(3 + 8 + 3, "1.0").image());
}

void ListPaintingTest::pixmapWithoutText()
{
    PaintedList list;
    const QPixmap pixmap = plainPixmap(8, 6);
    list.pixmaps[{1, 1}] = pixmap;
    list.texts[{1, 1}] = "";
    QCOMPARE(list.painted(1, Width), Picture(list, Width).draw(1, pixmap).image());
}

void ListPaintingTest::selectionFillsTheFirstColumn()
{
    PaintedList list;
    list.setItemMargin(4);
    list.topLevelItem(0)->setSelected(true);
    QCOMPARE(list.painted(0, Width), Picture(list, Width).fill(0, Marked).draw(4, "1.0", MarkedText).image());
    QCOMPARE(list.painted(0, Width, Qt::AlignLeft, 1), Picture(list, Width).draw(4, "2.0").image());
}

void ListPaintingTest::selectionOfOtherColumns()
{
    PaintedList list;
    list.topLevelItem(0)->setSelected(true);
    QCOMPARE(list.painted(1, Width), Picture(list, Width).draw(1, "1.1").image());
    list.setAllColumnsShowFocus(true);
    QCOMPARE(list.painted(1, Width), Picture(list, Width).fill(0, Marked).draw(1, "1.1", MarkedText).image());
}

void ListPaintingTest::selectionOnTheRight()
{
    PaintedList list;
    list.setItemMargin(9);
    list.topLevelItem(0)->setSelected(true);
    const QFontMetrics metrics(testFont());
    const int start = 9 - metrics.minRightBearing();
    QVERIFY(start > 0);
    const int left = Width - metrics.horizontalAdvance("1.0");
    QCOMPARE(list.painted(0, Width, Qt::AlignRight),
             Picture(list, Width).fill(start, Marked).draw(left, "1.0", MarkedText).image());
}

void ListPaintingTest::selectionIsUnderThePixmap()
{
    PaintedList list;
    const QPixmap pixmap = plainPixmap(8, 6);
    list.pixmaps[{1, 0}] = pixmap;
    list.topLevelItem(0)->setSelected(true);
    QCOMPARE(list.painted(0, Width),
             Picture(list, Width).fill(0, Marked).draw(1, pixmap).draw(10, "1.0", MarkedText).image());
}

void ListPaintingTest::breaksInATextAreBlanks()
{
    PaintedList list;
    list.texts[{1, 0}] = QStringLiteral("a\nb\tc") + QChar(QChar::LineSeparator) + QStringLiteral("d\u009Ce");
    QCOMPARE(list.painted(0, Width), Picture(list, Width).draw(1, "a b c d e").image());
}

void ListPaintingTest::noPainterPaintsNothing()
{
    PaintedList list, checked(true);
    list.row(0)->paintCell(nullptr, list.palette(), 0, Width, Qt::AlignLeft);
    checked.row(0)->paintCell(nullptr, list.palette(), 0, Width, Qt::AlignLeft);
    checked.row(0)->paintCell(nullptr, list.palette(), 1, Width, Qt::AlignLeft);
}

void ListPaintingTest::rowInNoViewIsEmpty()
{
    QImage image(20, 10, QImage::Format_RGB32);
    image.fill(Unpainted);
    QPainter painter(&image);
    painter.setFont(testFont());
    KyListViewItem().paintCell(&painter, testPalette(), 0, 20, Qt::AlignLeft);
    QCOMPARE(image.pixelColor(0, 0), Base);
    QCOMPARE(image.pixelColor(19, 9), Base);
    image.fill(Unpainted);
    KyCheckListItem().paintCell(&painter, testPalette(), 0, 20, Qt::AlignLeft);
    QCOMPARE(image.pixelColor(19, 9), Base);
}

void ListPaintingTest::textThatFitsExactlyIsWhole()
{
    PaintedList list;
    const QString text = "some words here";
    list.texts[{1, 0}] = text;
    const int width = QFontMetrics(testFont()).horizontalAdvance(text) + 1;
    QCOMPARE(list.painted(0, width), Picture(list, width).draw(1, text).image());
}

void ListPaintingTest::textOnePixelTooWideIsCut()
{
    PaintedList list;
    const QString text = "some words here";
    list.texts[{1, 0}] = text;
    const int width = QFontMetrics(testFont()).horizontalAdvance(text);
    const QString cut = cutByHand(text, width, 1);
    QVERIFY(cut.endsWith("...") && cut.size() < text.size());
    QCOMPARE(list.painted(0, width), Picture(list, width).draw(1, cut).image());
}

void ListPaintingTest::cutTextOfEachWidth_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("margin");
    const QString words = QStringLiteral("Some words, WIDE and illi, to be cut. ").repeated(3);
    QTest::newRow("words") << words << 1;
    QTest::newRow("words behind a pixmap") << words << 17;
    QTest::newRow("one character") << "W" << 1;
    QTest::newRow("Japanese") << QStringLiteral("\u5C71\u7530 \u592A\u90CE \uFF76\uFF85").repeated(4) << 1;
    QTest::newRow("empty") << "" << 1;
    QTest::newRow("empty behind a pixmap") << "" << 50;
}

void ListPaintingTest::cutTextOfEachWidth()
{
    QFETCH(QString, text);
    QFETCH(int, margin);
    const QFontMetrics metrics(testFont());
    for (int width = -5; width < 400; ++width) {
        const QString cut = text.isEmpty() ? QString() : cutByHand(text, width, margin);
        QCOMPARE(elidedText(text, metrics, width, margin), cut);
    }
}

void ListPaintingTest::firstCharacterStaysWhateverTheWidth_data()
{
    QTest::addColumn<int>("width");
    for (const int width : {-1, 0, 1, 5, 18})
        QTest::addRow("%d", width) << width;
}

void ListPaintingTest::firstCharacterStaysWhateverTheWidth()
{
    QFETCH(int, width);
    const QFontMetrics metrics(testFont());
    QVERIFY(metrics.horizontalAdvance("...") >= 18);
    QCOMPARE(elidedText("Words", metrics, width, 1), "W...");
    PaintedList list;
    list.texts[{1, 0}] = "Words";
    if (width > 0)
        QCOMPARE(list.painted(0, width), Picture(list, width).draw(1, "W...").image());
}

void ListPaintingTest::charactersAreNotSplit_data()
{
    QTest::addColumn<QString>("character");
    QTest::newRow("surrogate pair") << QString::fromUcs4(U"\U00020B9F");
    QTest::newRow("combining mark") << QStringLiteral("e\u0301");
    QTest::newRow("voiced kana in two parts") << QStringLiteral("\u304B\u3099");
    QTest::newRow("flag") << QString::fromUcs4(U"\U0001F1EF\U0001F1F5");
}

void ListPaintingTest::charactersAreNotSplit()
{
    QFETCH(QString, character);
    const QFontMetrics metrics(testFont());
    const QString text = character.repeated(40);
    for (int width = 0; width < 200; ++width) {
        QString cut = elidedText(text, metrics, width, 1);
        if (cut == text)
            continue;
        QVERIFY(cut.endsWith("..."));
        cut.chop(3);
        QVERIFY(!cut.isEmpty());
        QCOMPARE(cut, character.repeated(cut.size() / character.size()));
    }
}

void ListPaintingTest::cutTextIsDrawnWithDots()
{
    PaintedList list;
    const QString text = "words that are too many for the cell";
    list.texts[{1, 0}] = text;
    const QString cut = cutByHand(text, Width, 1);
    QCOMPARE(list.painted(0, Width), Picture(list, Width).draw(1, cut).image());
    list.topLevelItem(0)->setSelected(true);
    QCOMPARE(list.painted(0, Width), Picture(list, Width).fill(0, Marked).draw(1, cut, MarkedText).image());
}

void ListPaintingTest::pixmapLeavesLessRoom()
{
    PaintedList list;
    const QString text = "words that are too many for the cell";
    const QPixmap pixmap = plainPixmap(30, 6);
    list.texts[{1, 0}] = text;
    list.pixmaps[{1, 0}] = pixmap;
    const QString cut = cutByHand(text, Width, 31);
    QVERIFY(cut.size() < cutByHand(text, Width, 1).size());
    QCOMPARE(list.painted(0, Width), Picture(list, Width).draw(1, pixmap).draw(32, cut).image());
}

void ListPaintingTest::longTextIsLookedAtInPart_data()
{
    QTest::addColumn<QString>("part");
    QTest::newRow("letters") << "x";
    QTest::newRow("characters without a width") << QString(QChar(0x200B));
    QTest::newRow("one character of many marks") << QString(QChar(0x0301));
}

void ListPaintingTest::longTextIsLookedAtInPart()
{
    QFETCH(QString, part);
    const QFontMetrics metrics(testFont());
    const QString cut = elidedText(part.repeated(1000000), metrics, Width, 1);
    QVERIFY(cut.endsWith("..."));
    QVERIFY(cut.size() <= 4 * Width + 3);
    // Beyond that nothing counts: another end makes no difference.
    QCOMPARE(elidedText(part.repeated(4 * Width) + "W", metrics, Width, 1), cut);
}

void ListPaintingTest::longTextIsAskedForOnce()
{
    struct Counted : PaintedList
    {
        QString itemText(int line, int column) const override
        {
            ++calls;
            return TextList::itemText(line, column);
        }
        mutable int calls = 0;
    } list;
    list.texts[{1, 0}] = QString(100000, 'x');
    (void)list.rowHeight();
    list.calls = 0;
    (void)list.painted(0, Width);
    QCOMPARE(list.calls, 1);
}

void ListPaintingTest::everyOtherRowHasAnotherBase()
{
    PaintedList list;
    list.setAlternatingRowColors(true);
    showList(list);
    const QImage image = grabbed(list);
    for (const int column : {0, 1}) {
        QCOMPARE(leftColor(image, list.cell(0, column)), Base);
        QCOMPARE(leftColor(image, list.cell(1, column)), OtherBase);
        QCOMPARE(rightColor(image, list.cell(1, column)), OtherBase);
        QCOMPARE(leftColor(image, list.cell(2, column)), Base);
    }
    list.setAlternatingRowColors(false);
    QCOMPARE(leftColor(grabbed(list), list.cell(1, 0)), Base);
}

void ListPaintingTest::selectionInTheView()
{
    PaintedList list;
    showList(list);
    list.topLevelItem(1)->setSelected(true);
    const QImage image = grabbed(list);
    QCOMPARE(leftColor(image, list.cell(1, 0)), Marked);
    QCOMPARE(rightColor(image, list.cell(1, 0)), Marked);
    QCOMPARE(leftColor(image, list.cell(1, 1)), Base);
    QCOMPARE(leftColor(image, list.cell(0, 0)), Base);
    QVERIFY(hasColor(image, list.cell(1, 0), MarkedText));
}

void ListPaintingTest::selectionOfAllColumnsInTheView()
{
    PaintedList list;
    list.setAllColumnsShowFocus(true);
    showList(list);
    list.topLevelItem(1)->setSelected(true);
    const QImage image = grabbed(list);
    QCOMPARE(leftColor(image, list.cell(1, 0)), Marked);
    QCOMPARE(rightColor(image, list.cell(1, 1)), Marked);
    QCOMPARE(rightColor(image, list.cell(2, 1)), Base);
}

void ListPaintingTest::coloursOfADisabledList()
{
    PaintedList list;
    showList(list);
    list.setEnabled(false);
    const QImage image = grabbed(list);
    QCOMPARE(leftColor(image, list.cell(0, 1)), DisabledBase);
    QVERIFY(hasColor(image, list.cell(0, 1), DisabledText));
    QVERIFY(!hasColor(image, list.cell(0, 1), Qt::black));
}

void ListPaintingTest::coloursOfADisabledRow()
{
    PaintedList list;
    showList(list);
    list.topLevelItem(1)->setDisabled(true);
    const QImage image = grabbed(list);
    QVERIFY(hasColor(image, list.cell(1, 0), DisabledText));
    QVERIFY(!hasColor(image, list.cell(1, 0), Qt::black));
    QVERIFY(hasColor(image, list.cell(0, 0), Qt::black));
}

void ListPaintingTest::coloursOfAnInactiveWindow()
{
    PaintedList list;
    showList(list);
    list.topLevelItem(1)->setSelected(true);
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_COMPARE(leftColor(grabbed(list), list.cell(1, 0)), InactiveMarked);
}

void ListPaintingTest::focusIsFramed()
{
    PaintedList list;
    list.setSelectionMode(QAbstractItemView::NoSelection);
    showList(list);
    list.setCurrentItem(list.topLevelItem(1), 1);
    const QImage image = grabbed(list);
    list.setCurrentItem(list.topLevelItem(2), 1);
    const QImage other = grabbed(list);
    QVERIFY(image.copy(list.cell(1, 1)) != other.copy(list.cell(1, 1)));
    QCOMPARE(image.copy(list.cell(1, 0)), other.copy(list.cell(1, 0)));
    QCOMPARE(image.copy(list.cell(0, 1)), other.copy(list.cell(0, 1)));
}

void ListPaintingTest::alignmentOfAColumn()
{
    PaintedList list;
    showList(list);
    const QRect cell = list.cell(1, 0);
    const QRect leftHalf(cell.topLeft(), QSize(cell.width() / 2, cell.height()));
    QVERIFY(hasColor(grabbed(list), leftHalf, Qt::black));
    list.headerItem()->setTextAlignment(0, Qt::AlignRight | Qt::AlignVCenter);
    QVERIFY(!hasColor(grabbed(list), leftHalf, Qt::black));
    QVERIFY(hasColor(grabbed(list), cell, Qt::black));
    list.topLevelItem(1)->setTextAlignment(0, Qt::AlignLeft);
    QVERIFY(hasColor(grabbed(list), leftHalf, Qt::black));
    QVERIFY(!hasColor(grabbed(list), leftHalf.translated(0, -cell.height()), Qt::black));
}

void ListPaintingTest::rowsOfOtherClassesArePaintedAsUsual()
{
    PaintedList list;
    list.insertTopLevelItem(1, new QTreeWidgetItem(QStringList{"other", "row"}));
    list.topLevelItem(0)->setSizeHint(0, QSize(10, 20)); // of the rows with either delegate
    showList(list);
    const QImage image = grabbed(list);
    list.setItemDelegate(new QStyledItemDelegate(&list));
    QCOMPARE(image.copy(list.cell(1, 0)), grabbed(list).copy(list.cell(1, 0)));
    QVERIFY(hasColor(image, list.cell(1, 0), Qt::black));
}

void ListPaintingTest::subclassPaintsItsCellsAlone()
{
    struct Row : KyListViewItem
    {
        void paintCell(QPainter *painter, const QPalette &, int, int, Qt::Alignment) override
        {
            painter->fillRect(-500, -500, 1000, 1000, Qt::green);
        }
    };
    PaintedList list;
    list.insertTopLevelItem(1, new Row);
    showList(list);
    const QImage image = grabbed(list);
    QCOMPARE(leftColor(image, list.cell(1, 1)), QColor(Qt::green));
    QCOMPARE(leftColor(image, list.cell(0, 0)), Base);
    QCOMPARE(leftColor(image, list.cell(2, 0)), Base);
}

void ListPaintingTest::checkBoxIsInFrontOfTheFirstColumn()
{
    PaintedList list(true);
    const QImage plain = PaintedList(false).painted(0, Width);
    const QImage image = list.painted(0, Width);
    QVERIFY(!hasColor(image, image.rect(), Unpainted));
    QVERIFY(image != plain);
    const int box = list.style()->pixelMetric(QStyle::PM_IndicatorWidth);
    QVERIFY(hasColor(image, QRect(box + 2, 0, Width - box - 2, image.height()), Qt::black)); // the text
    list.texts[{1, 0}] = "";
    QVERIFY(list.painted(0, Width) != Picture(list, Width).image());
}

void ListPaintingTest::checkBoxShowsItsState()
{
    PaintedList list(true);
    const QImage off = list.painted(0, Width);
    list.checkRow(0)->setOn(true);
    const QImage on = list.painted(0, Width);
    QVERIFY(on != off);
    const int box = list.style()->pixelMetric(QStyle::PM_IndicatorWidth) + 8;
    const QRect text(box, 0, Width - box, on.height());
    QCOMPARE(on.copy(text), off.copy(text));
}

void ListPaintingTest::otherColumnsOfACheckedRow()
{
    PaintedList list(true);
    list.checkRow(0)->setOn(true);
    QCOMPARE(list.painted(1, Width), Picture(list, Width).draw(1, "1.1").image());
}

void ListPaintingTest::selectionOfACheckedRow()
{
    PaintedList list(true);
    list.topLevelItem(0)->setSelected(true);
    const QImage image = list.painted(0, Width);
    QCOMPARE(leftColor(image, image.rect()), Marked);
    QCOMPARE(rightColor(image, image.rect()), Marked);
    QVERIFY(hasColor(image, image.rect(), MarkedText));
    QCOMPARE(list.painted(1, Width), Picture(list, Width).draw(1, "1.1").image());
    list.setAllColumnsShowFocus(true);
    QCOMPARE(list.painted(1, Width), Picture(list, Width).fill(0, Marked).draw(1, "1.1", MarkedText).image());
}

void ListPaintingTest::textBesideACheckBoxIsCut()
{
    PaintedList list(true);
    const QFontMetrics metrics(testFont());
    const QString text = "words that are too many for the cell";
    const auto pictureOf = [&](const QString &shown) {
        list.texts[{1, 0}] = shown;
        return list.painted(0, Width);
    };
    const QImage image = pictureOf(text);
    QString cut; // the shortest that looks so: longer ones are cut themselves
    for (qsizetype length = 1; length < text.size() && cut.isEmpty(); ++length) {
        const QString candidate = text.left(length) + "...";
        if (pictureOf(candidate) == image)
            cut = candidate;
    }
    QVERIFY(metrics.horizontalAdvance(cut) < Width - 20);
    QVERIFY(metrics.horizontalAdvance(cut) > Width - 45);
    QCOMPARE(pictureOf(text + QString(100000, 'x')), image);
}

void ListPaintingTest::pixmapBesideACheckBox()
{
    PaintedList list(true);
    list.pixmaps[{1, 0}] = plainPixmap(8, 6);
    const QImage image = list.painted(0, Width);
    QVERIFY(hasColor(image, QRect(10, 0, 30, image.height()), Qt::red));
}

QTEST_MAIN(ListPaintingTest)
#include "listpaintingtest.moc"
