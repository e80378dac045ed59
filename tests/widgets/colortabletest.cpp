#include "kycolortable.h"
#include <climits>
#include <memory>
#include <QScrollBar>
#include <QtTest>

namespace {

constexpr int Rows = 6;
constexpr int Columns = 8;
constexpr int Width = 20;
constexpr int Height = 18;

using Cell = QPair<int, int>; // row, column
constexpr Cell None{-1, -1};

constexpr const char *Palette[Rows][Columns] = {
    {"ffffff", "eaeaea", "cccccc", "b3b3b3", "808080", "666666", "1a1a1a", "000000"},
    {"ff0000", "ffccff", "ff99ff", "ff66ff", "ff00ff", "cc00cc", "cc0099", "660066"},
    {"ffff00", "ffffcc", "ffff99", "ffff66", "ffff33", "ffcc00", "ff9900", "cc6600"},
    {"00ff00", "ccff99", "99ff66", "66ff33", "009900", "008000", "336600", "003300"},
    {"0000ff", "99ffcc", "66ffff", "33ccff", "0099ff", "0033cc", "000099", "000066"},
    {"ff8040", "ff0080", "8080ff", "80ffff", "00ff80", "ffff80", "ff33ff", "000033"},
};

QRgb paletteColor(int row, int col)
{
    return 0xff000000 | QByteArray(Palette[row][col]).toUInt(nullptr, 16);
}

/** A table of the default palette that is shown at its full size. */
std::unique_ptr<KyColorTable> shownTable(int rows = Rows, int cols = Columns, const QRgb *colors = nullptr)
{
    auto table = std::make_unique<KyColorTable>(nullptr, "table", 0, rows, cols, colors);
    table->resize(table->sizeHint());
    table->show();
    if (!QTest::qWaitForWindowExposed(table.get()))
        qFatal("the table isn't shown");
    return table;
}

QPoint cornerOf(const KyColorTable &table, int row, int col)
{
    return {col * Width - table.horizontalScrollBar()->value(),
            row * Height - table.verticalScrollBar()->value()};
}

QPoint middleOf(const KyColorTable &table, int row, int col)
{
    return cornerOf(table, row, col) + QPoint(Width / 2, Height / 2);
}

void tap(KyColorTable &table, int row, int col)
{
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, middleOf(table, row, col));
}

/** A mouse event of a kind that QTest doesn't give: it has no moves with a button held, and takes (0,0) for
 * the middle. */
void send(KyColorTable &table, QEvent::Type type, const QPoint &position, Qt::MouseButton button,
          Qt::MouseButtons held)
{
    QMouseEvent event(type, position, table.viewport()->mapToGlobal(position), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(table.viewport(), &event);
}

void press(KyColorTable &table, const QPoint &position)
{
    send(table, QEvent::MouseButtonPress, position, Qt::LeftButton, Qt::LeftButton);
}

void drag(KyColorTable &table, const QPoint &position, Qt::MouseButtons held = Qt::LeftButton)
{
    send(table, QEvent::MouseMove, position, Qt::NoButton, held);
}

QImage picture(KyColorTable &table)
{
    return table.viewport()->grab().toImage();
}

/** True when every pixel of the edge of a cell is black. */
bool isFramed(const QImage &image, const QRect &cell)
{
    for (int x = cell.left(); x <= cell.right(); ++x) {
        if (image.pixel(x, cell.top()) != 0xff000000 || image.pixel(x, cell.bottom()) != 0xff000000)
            return false;
    }
    for (int y = cell.top(); y <= cell.bottom(); ++y) {
        if (image.pixel(cell.left(), y) != 0xff000000 || image.pixel(cell.right(), y) != 0xff000000)
            return false;
    }
    return true;
}

/** The cells with a black rectangle, of those that are seen in full. */
QList<Cell> markedCells(KyColorTable &table, int rows = Rows, int cols = Columns)
{
    const QImage image = picture(table);
    QList<Cell> cells;
    for (int row = 0; row < rows; ++row) {
        for (int col = 0; col < cols; ++col) {
            const QRect cell(cornerOf(table, row, col), QSize(Width, Height));
            if (image.rect().contains(cell) && isFramed(image, cell))
                cells.append({row, col});
        }
    }
    return cells;
}

/** The cell with a black rectangle; more than one of them is none that any test expects. */
Cell markedCell(KyColorTable &table, int rows = Rows, int cols = Columns)
{
    const QList<Cell> cells = markedCells(table, rows, cols);
    if (cells.size() > 1)
        return {INT_MAX, INT_MAX};
    return cells.isEmpty() ? None : cells.first();
}

/** Collects what of a widget is painted. */
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget *widget) { widget->installEventFilter(this); }
    QRegion region;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }
};

/** Collects the panels that it is asked for. */
class PanelWatch : public QProxyStyle
{
public:
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        if (const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
            element == PE_Frame && frame)
            panels.append(*frame);
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
    mutable QList<QStyleOptionFrame> panels;
};

/** Collects the keys that a child left alone. */
class KeyWatch : public QWidget
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
};

/** The two signals of a table. */
struct Signals
{
    explicit Signals(KyColorTable *table)
        : selected(table, &KyColorTable::selected), reSelected(table, &KyColorTable::reSelected)
    {
    }
    QSignalSpy selected;
    QSignalSpy reSelected;

    /** What came since the last call, such as "selected ff0000". */
    [[nodiscard]] QStringList taken()
    {
        QStringList list;
        for (const QVariantList &arguments : selected)
            list.append("selected " + QString::number(arguments[0].toUInt(), 16));
        for (const QVariantList &arguments : reSelected)
            list.append("reSelected " + QString::number(arguments[0].toUInt(), 16));
        selected.clear();
        reSelected.clear();
        return list;
    }
};

QStringList signalOf(const char *name, QRgb color)
{
    return {QString("%1 %2").arg(QLatin1String(name)).arg(color, 0, 16)};
}

} // namespace

class ColorTableTest : public QObject
{
    Q_OBJECT
private slots:
    void defaultPaletteHasItsColours();
    void takesNameAndWindowFlags();
    void sizeHintIsGridAndFrame();
    void takesFocusByTabAndTap();
    void showsAllCellsAtItsSizeHint();
    void cellIsSunkenPanelInItsColour();
    void styleDrawsThePanel();
    void oddStylesPaintTheColourToo_data();
    void oddStylesPaintTheColourToo();
    void currentCellHasBlackRectangle();
    void movingTheMarkPaintsTwoCells();
    void markingTheCurrentCellPaintsNothing();
    void markOutsideTheGridIsNone_data();
    void markOutsideTheGridIsNone();
    void tapOnEveryCellSelectsIt();
    void edgePixelsBelongToTheirCell();
    void tapOnSelectedCellReselects();
    void selectingAnotherCellAndBackSelects();
    void quickSecondTapCounts();
    void stylusDragsTheMark();
    void stylusThatLeavesTheGridChoosesNothing();
    void otherButtonsDoNothing();
    void moveWithoutButtonDoesNothing();
    void otherButtonsStayWithTheTable();
    void selectionOutsideTheGridIsForgottenSilently();
    void everyKeyAtEveryCell_data();
    void everyKeyAtEveryCell();
    void returnAndEnterSelectTheCurrentCell_data();
    void returnAndEnterSelectTheCurrentCell();
    void otherKeysGoToTheParent_data();
    void otherKeysGoToTheParent();
    void ownKeysStayAtTheEdges();
    void colourOfThePaletteBecomesCurrent();
    void firstOfEqualColoursBecomesCurrent();
    void colourNotInThePaletteLeavesNoCellMarked();
    void colourOutsideTheGridIsTransparent();
    void givenColoursAreReadWhereTheyLie();
    void givenColoursArePaintedOpaque();
    void cellsBeyondTheDefaultPaletteAreWhite();
    void emptyGridIsHarmless_data();
    void emptyGridIsHarmless();
    void enormousGridIsCut();
    void smallTableScrollsToTheMark();
    void everyCellOfASmallTableCanBeTapped();
    void stylusBesideASmallTableIsOutside();
    void growingTableLosesItsScrollBars();
    void colourSetBeforeShowingIsInView();
};

void ColorTableTest::defaultPaletteHasItsColours()
{
    const KyColorTable table(nullptr, nullptr, 0, Rows, Columns, nullptr);
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col) {
            QCOMPARE(KyColorTable::defColors[row * Columns + col], paletteColor(row, col));
            QCOMPARE(table.getRgbInCell(row, col), paletteColor(row, col));
        }
    }
}

void ColorTableTest::takesNameAndWindowFlags()
{
    QWidget parent;
    const KyColorTable child(&parent, "colours", 0, Rows, Columns, nullptr);
    QCOMPARE(child.objectName(), "colours");
    QVERIFY(!child.isWindow());
    const KyColorTable window(&parent, nullptr, Qt::Tool, Rows, Columns, nullptr);
    QCOMPARE(window.windowType(), Qt::Tool);
}

void ColorTableTest::sizeHintIsGridAndFrame()
{
    KyColorTable table(nullptr, nullptr, 0, 3, 5, KyColorTable::defColors);
    QCOMPARE(table.sizeHint(), QSize(100, 54));
    table.setFrameStyle(QFrame::Box | QFrame::Plain);
    table.setLineWidth(4);
    QCOMPARE(table.frameWidth(), 4);
    QCOMPARE(table.sizeHint(), QSize(108, 62));
}

void ColorTableTest::takesFocusByTabAndTap()
{
    QWidget page;
    auto *table = new KyColorTable(&page, nullptr, 0, Rows, Columns, nullptr);
    QCOMPARE(table->focusPolicy(), Qt::StrongFocus);
    page.show();
    page.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&page));
    page.setFocus();
    QVERIFY(!table->hasFocus());
    tap(*table, 0, 0);
    QTRY_VERIFY_WITH_TIMEOUT(table->hasFocus(), 10000);
}

void ColorTableTest::showsAllCellsAtItsSizeHint()
{
    const auto table = shownTable();
    QCOMPARE(table->viewport()->size(), QSize(160, 108));
    QVERIFY(!table->horizontalScrollBar()->isVisible());
    QVERIFY(!table->verticalScrollBar()->isVisible());
    table->setFrameStyle(QFrame::Box | QFrame::Plain);
    table->setLineWidth(3);
    table->resize(table->sizeHint());
    QTRY_COMPARE_WITH_TIMEOUT(table->viewport()->size(), QSize(160, 108), 10000);
}

void ColorTableTest::cellIsSunkenPanelInItsColour()
{
    const auto table = shownTable();
    const QImage image = picture(*table);
    const QRgb ground = table->palette().color(QPalette::Window).rgb();
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col) {
            const QPoint corner = cornerOf(*table, row, col);
            const QRgb color = paletteColor(row, col);
            QCOMPARE(image.pixel(middleOf(*table, row, col)), color);
            QCOMPARE(image.pixel(corner + QPoint(2, 2)), color);
            QCOMPARE(image.pixel(corner + QPoint(Width - 3, Height - 3)), color);
            QCOMPARE(image.pixel(corner), ground);
            QCOMPARE(image.pixel(corner + QPoint(Width - 1, Height - 1)), ground);
            const QRgb edge = image.pixel(corner + QPoint(1, Height / 2));
            QVERIFY(edge != color);
            QVERIFY(edge != ground);
        }
    }
}

void ColorTableTest::styleDrawsThePanel()
{
    PanelWatch watch;
    const auto table = shownTable();
    table->setStyle(&watch);
    watch.panels.clear();
    (void)picture(*table);
    QCOMPARE(watch.panels.size(), Rows * Columns);
    for (const QStyleOptionFrame &panel : std::as_const(watch.panels)) {
        QCOMPARE(panel.rect, QRect(1, 1, Width - 2, Height - 2));
        QCOMPARE(panel.lineWidth, 1);
        QVERIFY(panel.state & QStyle::State_Sunken);
    }
}

void ColorTableTest::oddStylesPaintTheColourToo_data()
{
    QTest::addColumn<QString>("style");
    QTest::newRow("windows") << "Windows";
    QTest::newRow("fusion") << "Fusion";
}

void ColorTableTest::oddStylesPaintTheColourToo()
{
    QFETCH(QString, style);
    const std::unique_ptr<QStyle> other(QStyleFactory::create(style));
    QVERIFY(other);
    const auto table = shownTable();
    table->setStyle(other.get());
    table->setCurrent(4, 4);
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col)
            QCOMPARE(picture(*table).pixel(middleOf(*table, row, col)), paletteColor(row, col));
    }
    QCOMPARE(markedCell(*table), Cell(4, 4));
}

void ColorTableTest::currentCellHasBlackRectangle()
{
    const auto table = shownTable();
    QCOMPARE(markedCell(*table), None);
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col) {
            table->setCurrent(row, col);
            QCOMPARE(markedCell(*table), Cell(row, col));
            QCOMPARE(picture(*table).pixel(middleOf(*table, row, col)), paletteColor(row, col));
        }
    }
}

void ColorTableTest::movingTheMarkPaintsTwoCells()
{
    const auto table = shownTable();
    table->setCurrent(1, 2);
    QTest::qWait(50);
    PaintWatch watch(table->viewport());
    table->setCurrent(4, 6);
    const QRegion expected = QRegion(QRect(cornerOf(*table, 1, 2), QSize(Width, Height))) +
                             QRect(cornerOf(*table, 4, 6), QSize(Width, Height));
    QTRY_COMPARE_WITH_TIMEOUT(watch.region, expected, 10000);
}

void ColorTableTest::markingTheCurrentCellPaintsNothing()
{
    const auto table = shownTable();
    table->setCurrent(1, 2);
    QTest::qWait(50);
    PaintWatch watch(table->viewport());
    table->setCurrent(1, 2);
    table->setCurrent(1, 3);
    QTRY_VERIFY_WITH_TIMEOUT(!watch.region.isEmpty(), 10000);
    watch.region = QRegion();
    table->setCurrent(1, 3);
    QTest::qWait(100);
    QVERIFY(watch.region.isEmpty());
}

void ColorTableTest::markOutsideTheGridIsNone_data()
{
    QTest::addColumn<Cell>("cell");
    QTest::newRow("none") << None;
    QTest::newRow("no row") << Cell(-1, 3);
    QTest::newRow("no column") << Cell(3, -1);
    QTest::newRow("below") << Cell(Rows, 0);
    QTest::newRow("on the right") << Cell(0, Columns);
    QTest::newRow("far away") << Cell(INT_MAX, INT_MAX);
    QTest::newRow("far on the other side") << Cell(INT_MIN, INT_MIN);
}

void ColorTableTest::markOutsideTheGridIsNone()
{
    QFETCH(Cell, cell);
    const auto table = shownTable();
    table->setCurrent(2, 2);
    table->setCurrent(cell.first, cell.second);
    QCOMPARE(markedCell(*table), None);
    QTest::keyClick(table.get(), Qt::Key_Right);
    QCOMPARE(markedCell(*table), Cell(0, 0));
}

void ColorTableTest::tapOnEveryCellSelectsIt()
{
    const auto table = shownTable();
    Signals heard(table.get());
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col) {
            tap(*table, row, col);
            QCOMPARE(markedCell(*table), Cell(row, col));
            QCOMPARE(heard.taken(), signalOf("selected", paletteColor(row, col)));
        }
    }
}

void ColorTableTest::edgePixelsBelongToTheirCell()
{
    const auto table = shownTable();
    for (const QPoint &inside :
         {QPoint(0, 0), QPoint(Width - 1, 0), QPoint(0, Height - 1), QPoint(Width - 1, Height - 1)}) {
        for (const Cell &cell : {Cell(0, 0), Cell(3, 4), Cell(Rows - 1, Columns - 1)}) {
            table->setCurrent(-1, -1);
            press(*table, cornerOf(*table, cell.first, cell.second) + inside);
            QCOMPARE(markedCell(*table), cell);
        }
    }
}

void ColorTableTest::tapOnSelectedCellReselects()
{
    const auto table = shownTable();
    Signals heard(table.get());
    tap(*table, 3, 4);
    QCOMPARE(heard.taken(), signalOf("selected", 0xff009900));
    tap(*table, 3, 4);
    QCOMPARE(heard.taken(), signalOf("reSelected", 0xff009900));
    tap(*table, 3, 4);
    QCOMPARE(heard.taken(), signalOf("reSelected", 0xff009900));
}

void ColorTableTest::selectingAnotherCellAndBackSelects()
{
    const auto table = shownTable();
    Signals heard(table.get());
    table->setSelected(0, 1);
    table->setSelected(0, 2);
    table->setSelected(0, 1);
    QCOMPARE(heard.taken(), (QStringList{"selected ffeaeaea", "selected ffcccccc", "selected ffeaeaea"}));
    QCOMPARE(markedCell(*table), None);
}

void ColorTableTest::quickSecondTapCounts()
{
    const auto table = shownTable();
    Signals heard(table.get());
    const QPoint first = cornerOf(*table, 2, 2) + QPoint(Width - 1, 5);
    const QPoint second = cornerOf(*table, 2, 3) + QPoint(0, 5);
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, first);
    send(*table, QEvent::MouseButtonDblClick, second, Qt::LeftButton, Qt::LeftButton);
    QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, second);
    QCOMPARE(markedCell(*table), Cell(2, 3));
    QCOMPARE(heard.taken(), (QStringList{"selected ffffff99", "selected ffffff66"}));
}

void ColorTableTest::stylusDragsTheMark()
{
    const auto table = shownTable();
    Signals heard(table.get());
    QTest::mousePress(table->viewport(), Qt::LeftButton, {}, middleOf(*table, 1, 1));
    QCOMPARE(markedCell(*table), Cell(1, 1));
    for (int col = 2; col < Columns; ++col) {
        drag(*table, middleOf(*table, 2, col));
        QCOMPARE(markedCell(*table), Cell(2, col));
    }
    QCOMPARE(heard.taken(), QStringList());
    QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, middleOf(*table, 2, Columns - 1));
    QCOMPARE(heard.taken(), signalOf("selected", 0xffcc6600));
}

void ColorTableTest::stylusThatLeavesTheGridChoosesNothing()
{
    const auto table = shownTable();
    Signals heard(table.get());
    tap(*table, 1, 1);
    QCOMPARE(heard.taken(), signalOf("selected", 0xffffccff));
    const QList<QPoint> outside{{-1, 50}, {50, -1}, {160, 50}, {50, 108}, {-30, -30}, {500, 500}};
    for (const QPoint &position : outside) {
        QTest::mousePress(table->viewport(), Qt::LeftButton, {}, middleOf(*table, 3, 3));
        drag(*table, position);
        QCOMPARE(markedCell(*table), None);
        QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, position);
        QCOMPARE(heard.taken(), QStringList());
    }
    tap(*table, 1, 1); // no longer the cell confirmed last
    QCOMPARE(heard.taken(), signalOf("selected", 0xffffccff));
    QTest::mousePress(table->viewport(), Qt::LeftButton, {}, middleOf(*table, 3, 3));
    drag(*table, {-1, 50});
    drag(*table, middleOf(*table, 5, 5));
    QTest::mouseRelease(table->viewport(), Qt::LeftButton, {}, middleOf(*table, 5, 5));
    QCOMPARE(heard.taken(), signalOf("selected", 0xffffff80));
}

void ColorTableTest::otherButtonsDoNothing()
{
    const auto table = shownTable();
    Signals heard(table.get());
    table->setCurrent(0, 0);
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        QTest::mousePress(table->viewport(), button, {}, middleOf(*table, 2, 2));
        drag(*table, middleOf(*table, 3, 3), button);
        QTest::mouseRelease(table->viewport(), button, {}, middleOf(*table, 3, 3));
    }
    QCOMPARE(markedCell(*table), Cell(0, 0));
    QCOMPARE(heard.taken(), QStringList());
}

void ColorTableTest::moveWithoutButtonDoesNothing()
{
    const auto table = shownTable();
    drag(*table, middleOf(*table, 3, 3), Qt::NoButton);
    QCOMPARE(markedCell(*table), None);
}

void ColorTableTest::otherButtonsStayWithTheTable()
{
    const auto table = shownTable();
    const QPoint position = middleOf(*table, 2, 2);
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, position, table->viewport()->mapToGlobal(position), Qt::RightButton,
                          Qt::RightButton, Qt::NoModifier);
        QCoreApplication::sendEvent(table->viewport(), &event);
        QVERIFY(event.isAccepted());
    }
}

void ColorTableTest::selectionOutsideTheGridIsForgottenSilently()
{
    const auto table = shownTable();
    Signals heard(table.get());
    for (const Cell &cell : {None, Cell(-1, 0), Cell(0, -1), Cell(Rows, 0), Cell(0, Columns)}) {
        table->setSelected(1, 0);
        QCOMPARE(heard.taken(), signalOf("selected", 0xffff0000));
        table->setSelected(cell.first, cell.second);
        table->setSelected(cell.first, cell.second);
        QCOMPARE(heard.taken(), QStringList());
    }
}

void ColorTableTest::everyKeyAtEveryCell_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("step");   // in cells, row by row
    QTest::addColumn<Cell>("first"); // with no current cell
    QTest::addColumn<bool>("wraps"); // from the start of the grid to its end
    QTest::newRow("left") << Qt::Key_Left << -1 << Cell(Rows - 1, Columns - 1) << true;
    QTest::newRow("right") << Qt::Key_Right << 1 << Cell(0, 0) << false;
    QTest::newRow("up") << Qt::Key_Up << -Columns << Cell(Rows - 1, 0) << false;
    QTest::newRow("down") << Qt::Key_Down << Columns << Cell(0, 0) << false;
}

void ColorTableTest::everyKeyAtEveryCell()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, step);
    QFETCH(Cell, first);
    QFETCH(bool, wraps);
    const auto table = shownTable();
    Signals heard(table.get());
    QTest::keyClick(table.get(), key);
    QCOMPARE(markedCell(*table), first);
    constexpr int Cells = Rows * Columns;
    for (int cell = 0; cell < Cells; ++cell) {
        table->setCurrent(cell / Columns, cell % Columns);
        QTest::keyClick(table.get(), key);
        int expected = cell + step;
        if (expected < 0 || expected >= Cells)
            expected = wraps ? Cells - 1 : cell;
        QCOMPARE(markedCell(*table), Cell(expected / Columns, expected % Columns));
    }
    QCOMPARE(heard.taken(), QStringList());
}

void ColorTableTest::returnAndEnterSelectTheCurrentCell_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("return") << Qt::Key_Return;
    QTest::newRow("enter") << Qt::Key_Enter;
}

void ColorTableTest::returnAndEnterSelectTheCurrentCell()
{
    QFETCH(Qt::Key, key);
    const auto table = shownTable();
    Signals heard(table.get());
    QTest::keyClick(table.get(), key);
    QCOMPARE(heard.taken(), QStringList());
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col) {
            table->setCurrent(row, col);
            QTest::keyClick(table.get(), key);
            QCOMPARE(heard.taken(), signalOf("selected", paletteColor(row, col)));
            QTest::keyClick(table.get(), key);
            QCOMPARE(heard.taken(), signalOf("reSelected", paletteColor(row, col)));
        }
    }
}

void ColorTableTest::otherKeysGoToTheParent_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("escape") << Qt::Key_Escape;
    QTest::newRow("space") << Qt::Key_Space;
    QTest::newRow("page up") << Qt::Key_PageUp;
    QTest::newRow("page down") << Qt::Key_PageDown;
    QTest::newRow("home") << Qt::Key_Home;
    QTest::newRow("letter") << Qt::Key_A;
    QTest::newRow("function key") << Qt::Key_F5;
}

void ColorTableTest::otherKeysGoToTheParent()
{
    QFETCH(Qt::Key, key);
    KeyWatch parent;
    auto *table = new KyColorTable(&parent, nullptr, 0, Rows, Columns, nullptr);
    table->resize(table->sizeHint());
    parent.show();
    table->setCurrent(2, 2);
    QTest::keyClick(table, key);
    QCOMPARE(parent.keys, QList<int>{key});
    QCOMPARE(markedCell(*table), Cell(2, 2));
}

void ColorTableTest::ownKeysStayAtTheEdges()
{
    KeyWatch parent;
    auto *table = new KyColorTable(&parent, nullptr, 0, 1, 1, nullptr);
    table->resize(table->sizeHint());
    parent.show();
    for (const Qt::Key key :
         {Qt::Key_Return, Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Enter})
        QTest::keyClick(table, key);
    QCOMPARE(parent.keys, QList<int>());
}

void ColorTableTest::colourOfThePaletteBecomesCurrent()
{
    const auto table = shownTable();
    Signals heard(table.get());
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col) {
            table->setCurrentColor(paletteColor(row, col));
            QCOMPARE(markedCell(*table), Cell(row, col));
        }
    }
    QCOMPARE(heard.taken(), QStringList());
}

void ColorTableTest::firstOfEqualColoursBecomesCurrent()
{
    constexpr QRgb Colors[] = {0xff111111, 0xff222222, 0xff333333, 0xff333333, 0xff222222, 0xff111111};
    const auto table = shownTable(3, 2, Colors);
    table->setCurrentColor(0xff222222);
    QCOMPARE(markedCell(*table, 3, 2), Cell(0, 1));
    table->setCurrentColor(0xff333333);
    QCOMPARE(markedCell(*table, 3, 2), Cell(1, 0));
}

void ColorTableTest::colourNotInThePaletteLeavesNoCellMarked()
{
    const auto table = shownTable();
    for (const QRgb color : {0xff123456U, 0x00ff0000U, 0U}) {
        table->setCurrent(2, 2);
        table->setCurrentColor(color);
        QCOMPARE(markedCell(*table), None);
    }
}

void ColorTableTest::colourOutsideTheGridIsTransparent()
{
    const KyColorTable table(nullptr, nullptr, 0, Rows, Columns, nullptr);
    for (const Cell &cell : {None, Cell(-1, 0), Cell(0, -1), Cell(Rows, 0), Cell(0, Columns),
                             Cell(INT_MAX, INT_MAX), Cell(INT_MIN, INT_MIN)})
        QCOMPARE(table.getRgbInCell(cell.first, cell.second), 0U);
}

void ColorTableTest::givenColoursAreReadWhereTheyLie()
{
    QRgb colors[] = {0xff010203, 0xff040506};
    const auto table = shownTable(1, 2, colors);
    QCOMPARE(table->getRgbInCell(0, 1), 0xff040506);
    colors[1] = 0xff778899;
    QCOMPARE(table->getRgbInCell(0, 1), 0xff778899);
    QCOMPARE(picture(*table).pixel(middleOf(*table, 0, 1)), 0xff778899);
}

void ColorTableTest::givenColoursArePaintedOpaque()
{
    constexpr QRgb Colors[] = {0x00ff8800};
    const auto table = shownTable(1, 1, Colors);
    QCOMPARE(picture(*table).pixel(middleOf(*table, 0, 0)), 0xffff8800);
}

void ColorTableTest::cellsBeyondTheDefaultPaletteAreWhite()
{
    const auto table = shownTable(7, 7);
    QCOMPARE(table->getRgbInCell(6, 5), 0xff000033);
    QCOMPARE(table->getRgbInCell(6, 6), 0xffffffff);
    QCOMPARE(picture(*table).pixel(middleOf(*table, 6, 6)), 0xffffffff);
}

void ColorTableTest::emptyGridIsHarmless_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("cols");
    QTest::newRow("no rows") << 0 << 8;
    QTest::newRow("no columns") << 6 << 0;
    QTest::newRow("nothing") << 0 << 0;
    QTest::newRow("less than nothing") << -1 << INT_MIN;
}

void ColorTableTest::emptyGridIsHarmless()
{
    QFETCH(int, rows);
    QFETCH(int, cols);
    KyColorTable table(nullptr, nullptr, 0, rows, cols, nullptr);
    QCOMPARE(table.sizeHint(), QSize(qMax(0, cols) * Width, qMax(0, rows) * Height));
    table.resize(50, 50);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    Signals heard(&table);
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Up, Qt::Key_Down, Qt::Key_Return})
        QTest::keyClick(&table, key);
    QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, {5, 5});
    table.setCurrentColor(0xffffffff);
    table.setCurrent(0, 0);
    table.setSelected(0, 0);
    QCOMPARE(table.getRgbInCell(0, 0), 0U);
    QCOMPARE(heard.taken(), QStringList());
    QCOMPARE(picture(table).pixel(5, 5), table.palette().color(QPalette::Window).rgb());
}

void ColorTableTest::enormousGridIsCut()
{
    KyColorTable table(nullptr, nullptr, 0, INT_MAX, INT_MAX, nullptr);
    QCOMPARE(table.sizeHint(), QSize(1000 * Width, 1000 * Height));
    table.resize(100, 100);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    table.setCurrentColor(0xff123456);
    QTest::keyClick(&table, Qt::Key_Left);
    QCOMPARE(table.getRgbInCell(999, 999), 0xffffffff);
    QCOMPARE(table.getRgbInCell(999, 1000), 0U);
    QCOMPARE(markedCells(table, 1000, 1000), QList<Cell>{Cell(999, 999)});
}

void ColorTableTest::smallTableScrollsToTheMark()
{
    KyColorTable table(nullptr, nullptr, 0, Rows, Columns, nullptr);
    table.resize(90, 76);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    QVERIFY(table.horizontalScrollBar()->maximum() > 0);
    QVERIFY(table.verticalScrollBar()->maximum() > 0);
    for (int cell = 0; cell < Rows * Columns; ++cell) {
        QTest::keyClick(&table, Qt::Key_Right);
        QCOMPARE(markedCell(table), Cell(cell / Columns, cell % Columns));
    }
    for (int cell = Rows * Columns - 2; cell >= 0; --cell) {
        QTest::keyClick(&table, Qt::Key_Left);
        QCOMPARE(markedCell(table), Cell(cell / Columns, cell % Columns));
    }
    QCOMPARE(table.verticalScrollBar()->value(), 0);
    QTest::keyClick(&table, Qt::Key_Down);
    QCOMPARE(table.verticalScrollBar()->value(), 0); // it was in view already
    table.setCurrentColor(0xff000033);
    QCOMPARE(markedCell(table), Cell(5, 7));
}

void ColorTableTest::everyCellOfASmallTableCanBeTapped()
{
    KyColorTable table(nullptr, nullptr, 0, Rows, Columns, nullptr);
    table.resize(90, 76);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    Signals heard(&table);
    for (int row = 0; row < Rows; ++row) {
        for (int col = 0; col < Columns; ++col) {
            table.horizontalScrollBar()->setValue(col * Width);
            table.verticalScrollBar()->setValue(row * Height);
            const QPoint position = middleOf(table, row, col);
            QVERIFY(table.viewport()->rect().contains(position));
            const QPoint scrolled(table.horizontalScrollBar()->value(), table.verticalScrollBar()->value());
            QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, position);
            QCOMPARE(heard.taken(), signalOf("selected", paletteColor(row, col)));
            QCOMPARE(picture(table).pixel(position), paletteColor(row, col));
            // The grid doesn't slide away beneath the stylus.
            QCOMPARE(QPoint(table.horizontalScrollBar()->value(), table.verticalScrollBar()->value()),
                     scrolled);
        }
    }
}

void ColorTableTest::stylusBesideASmallTableIsOutside()
{
    KyColorTable table(nullptr, nullptr, 0, Rows, Columns, nullptr);
    table.resize(90, 76);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    table.horizontalScrollBar()->setValue(Width);
    table.verticalScrollBar()->setValue(Height);
    const QSize room = table.viewport()->size();
    Signals heard(&table);
    for (const QPoint &position :
         {QPoint(-1, 5), QPoint(5, -1), QPoint(room.width(), 5), QPoint(5, room.height())}) {
        table.setCurrent(2, 2);
        press(table, position);
        QTest::mouseRelease(table.viewport(), Qt::LeftButton, {}, position);
        QCOMPARE(heard.taken(), QStringList()); // also of the cells that are out of view there
    }
}

void ColorTableTest::growingTableLosesItsScrollBars()
{
    KyColorTable table(nullptr, nullptr, 0, Rows, Columns, nullptr);
    table.resize(90, 76);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    QTRY_VERIFY_WITH_TIMEOUT(table.verticalScrollBar()->isVisible(), 10000);
    table.resize(table.sizeHint());
    QTRY_VERIFY_WITH_TIMEOUT(!table.verticalScrollBar()->isVisible(), 10000);
    QVERIFY(!table.horizontalScrollBar()->isVisible());
    QCOMPARE(table.viewport()->size(), QSize(160, 108));
}

void ColorTableTest::colourSetBeforeShowingIsInView()
{
    KyColorTable table(nullptr, nullptr, 0, Rows, Columns, nullptr);
    table.setCurrentColor(0xff000033);
    table.resize(90, 76);
    table.show();
    QVERIFY(QTest::qWaitForWindowExposed(&table));
    QTRY_COMPARE_WITH_TIMEOUT(markedCell(table), Cell(5, 7), 10000);
}

QTEST_MAIN(ColorTableTest)
#include "colortabletest.moc"
