#include "kycolortable.h"
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QScrollBar>
#include <QStyleOptionFrame>

namespace {

// Pixels, the same at any resolution.
constexpr int CellWidth = 20;
constexpr int CellHeight = 18;

constexpr int LargestSide = 1000;
constexpr QRgb Unfilled = 0xffffffff; // a cell beyond the default palette

/** Length that is seen of a line of cells at a scroll position, in relation to one of them. */
int scrolledTo(int position, int cellStart, int cellLength, int room)
{
    return qMax(qMin(position, cellStart), cellStart + cellLength - room);
}

} // namespace

const QRgb KyColorTable::defColors[48] = {
    0xffffffff, 0xffeaeaea, 0xffcccccc, 0xffb3b3b3, 0xff808080, 0xff666666, 0xff1a1a1a, 0xff000000, //
    0xffff0000, 0xffffccff, 0xffff99ff, 0xffff66ff, 0xffff00ff, 0xffcc00cc, 0xffcc0099, 0xff660066, //
    0xffffff00, 0xffffffcc, 0xffffff99, 0xffffff66, 0xffffff33, 0xffffcc00, 0xffff9900, 0xffcc6600, //
    0xff00ff00, 0xffccff99, 0xff99ff66, 0xff66ff33, 0xff009900, 0xff008000, 0xff336600, 0xff003300, //
    0xff0000ff, 0xff99ffcc, 0xff66ffff, 0xff33ccff, 0xff0099ff, 0xff0033cc, 0xff000099, 0xff000066, //
    0xffff8040, 0xffff0080, 0xff8080ff, 0xff80ffff, 0xff00ff80, 0xffffff80, 0xffff33ff, 0xff000033, //
};

class KyColorTablePrivate
{
public:
    int cols;
    int rows;
    const QRgb *colors; ///< not owned
    int currentCol = -1;
    int currentRow = -1;
    int selectedCol = -1;
    int selectedRow = -1;
};

KyColorTable::KyColorTable(QWidget *parent, const char *name, unsigned int flags, int rows, int cols,
                           const QRgb *colors)
    : QAbstractScrollArea(parent), d(new KyColorTablePrivate{.cols = qBound(0, cols, LargestSide),
                                                             .rows = qBound(0, rows, LargestSide),
                                                             .colors = colors ? colors : defColors})
{
    setObjectName(QLatin1String(name));
    setWindowFlags(windowFlags() | static_cast<Qt::WindowFlags>(flags));
    setFrameStyle(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setBackgroundRole(QPalette::Window);
}

KyColorTable::~KyColorTable() = default;

QSize KyColorTable::sizeHint() const
{
    return {d->cols * CellWidth + 2 * frameWidth(), d->rows * CellHeight + 2 * frameWidth()};
}

bool KyColorTable::isInGrid(int row, int col) const
{
    return row >= 0 && row < d->rows && col >= 0 && col < d->cols;
}

QRgb KyColorTable::getRgbInCell(int row, int col) const
{
    if (!isInGrid(row, col))
        return 0;
    const int index = row * d->cols + col;
    return d->colors == defColors && index >= int(std::size(defColors)) ? Unfilled : d->colors[index];
}

void KyColorTable::setCurrent(int row, int col)
{
    if (!isInGrid(row, col))
        row = col = -1;
    if (row == d->currentRow && col == d->currentCol)
        return;
    updateCell(d->currentRow, d->currentCol);
    d->currentRow = row;
    d->currentCol = col;
    updateCell(row, col);
}

void KyColorTable::setSelected(int row, int col)
{
    const bool isCell = isInGrid(row, col);
    if (!isCell)
        row = col = -1;
    if (isCell && row == d->selectedRow && col == d->selectedCol) {
        emit reSelected(getRgbInCell(row, col));
        return;
    }
    updateCell(d->selectedRow, d->selectedCol);
    d->selectedRow = row;
    d->selectedCol = col;
    updateCell(row, col);
    if (isCell)
        emit selected(getRgbInCell(row, col));
}

void KyColorTable::setCurrentColor(QRgb color)
{
    for (int row = 0; row < d->rows; ++row) {
        for (int col = 0; col < d->cols; ++col) {
            if (getRgbInCell(row, col) == color) {
                moveCurrent(row, col);
                return;
            }
        }
    }
    setCurrent(-1, -1);
}

int KyColorTable::findRow(int y) const
{
    const int row = (y + verticalScrollBar()->value()) / CellHeight;
    return y >= 0 && y < viewport()->height() && row < d->rows ? row : -1;
}

int KyColorTable::findCol(int x) const
{
    const int col = (x + horizontalScrollBar()->value()) / CellWidth;
    return x >= 0 && x < viewport()->width() && col < d->cols ? col : -1;
}

/** Where a cell lies in the viewport, also outside the part that is seen. */
QRect KyColorTable::cellRect(int row, int col) const
{
    return {col * CellWidth - horizontalScrollBar()->value(), row * CellHeight - verticalScrollBar()->value(),
            CellWidth, CellHeight};
}

void KyColorTable::updateCell(int row, int col)
{
    if (isInGrid(row, col))
        viewport()->update(cellRect(row, col));
}

void KyColorTable::paintCell(QPainter *painter, int row, int col)
{
    QStyleOptionFrame panel;
    panel.initFrom(this);
    panel.rect = QRect(1, 1, CellWidth - 2, CellHeight - 2);
    panel.state |= QStyle::State_Sunken;
    panel.frameShape = QFrame::StyledPanel;
    panel.lineWidth = 1;
    painter->fillRect(panel.rect, QColor(getRgbInCell(row, col)));
    style()->drawPrimitive(QStyle::PE_Frame, &panel, painter, this);
    if (row == d->currentRow && col == d->currentCol) {
        painter->setPen(Qt::black);
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(0, 0, CellWidth - 1, CellHeight - 1);
    }
}

void KyColorTable::paintEvent(QPaintEvent *event)
{
    const QRect touched =
        event->rect().translated(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const int lastRow = qMin(touched.bottom() / CellHeight, d->rows - 1);
    const int lastCol = qMin(touched.right() / CellWidth, d->cols - 1);
    QPainter painter(viewport());
    for (int row = touched.top() / CellHeight; row <= lastRow; ++row) {
        for (int col = touched.left() / CellWidth; col <= lastCol; ++col) {
            painter.save();
            painter.translate(cellRect(row, col).topLeft());
            paintCell(&painter, row, col);
            painter.restore();
        }
    }
}

void KyColorTable::resizeEvent(QResizeEvent *)
{
    updateScrollBars();
    showCurrent();
}

void KyColorTable::updateScrollBars()
{
    const QSize grid(d->cols * CellWidth, d->rows * CellHeight);
    const QSize whole = maximumViewportSize();
    // Where the grid fits without scroll bars, those that are still shown don't count.
    const bool fits = grid.width() <= whole.width() && grid.height() <= whole.height();
    const QSize room = fits ? whole : viewport()->size();
    horizontalScrollBar()->setRange(0, qMax(0, grid.width() - room.width()));
    horizontalScrollBar()->setPageStep(room.width());
    horizontalScrollBar()->setSingleStep(CellWidth);
    verticalScrollBar()->setRange(0, qMax(0, grid.height() - room.height()));
    verticalScrollBar()->setPageStep(room.height());
    verticalScrollBar()->setSingleStep(CellHeight);
}

void KyColorTable::showCurrent()
{
    if (!isInGrid(d->currentRow, d->currentCol))
        return;
    QScrollBar *across = horizontalScrollBar();
    QScrollBar *down = verticalScrollBar();
    across->setValue(scrolledTo(across->value(), d->currentCol * CellWidth, CellWidth, viewport()->width()));
    down->setValue(scrolledTo(down->value(), d->currentRow * CellHeight, CellHeight, viewport()->height()));
}

/** As setCurrent(), and brings the cell into view. The stylus can't use this: the grid would slide away
 * beneath it. */
void KyColorTable::moveCurrent(int row, int col)
{
    setCurrent(row, col);
    showCurrent();
}

// All buttons end here, so that a menu that the table stands in doesn't take one for a choice of its item;
// only the left one, which is the stylus, does something.

void KyColorTable::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setCurrent(findRow(event->position().toPoint().y()), findCol(event->position().toPoint().x()));
}

/** The second of two quick taps is a tap like the first. */
void KyColorTable::mouseDoubleClickEvent(QMouseEvent *event)
{
    mousePressEvent(event);
}

void KyColorTable::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        setCurrent(findRow(event->position().toPoint().y()), findCol(event->position().toPoint().x()));
}

void KyColorTable::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setSelected(d->currentRow, d->currentCol);
}

void KyColorTable::keyPressEvent(QKeyEvent *event)
{
    const int row = d->currentRow;
    const int col = d->currentCol;
    const bool hasCurrent = row >= 0;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        setSelected(row, col);
        break;
    case Qt::Key_Left:
        if (col > 0)
            moveCurrent(row, col - 1);
        else
            moveCurrent(row > 0 ? row - 1 : d->rows - 1, d->cols - 1);
        break;
    case Qt::Key_Right:
        if (!hasCurrent)
            moveCurrent(0, 0);
        else if (col < d->cols - 1)
            moveCurrent(row, col + 1);
        else if (row < d->rows - 1)
            moveCurrent(row + 1, 0);
        break;
    case Qt::Key_Up:
        if (!hasCurrent)
            moveCurrent(d->rows - 1, 0);
        else if (row > 0)
            moveCurrent(row - 1, col);
        break;
    case Qt::Key_Down:
        if (row < d->rows - 1)
            moveCurrent(row + 1, qMax(0, col));
        break;
    default:
        event->ignore();
    }
}
