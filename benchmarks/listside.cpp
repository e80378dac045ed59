#include "listside.h"

#include "report.h"
#include <QEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QTest>

namespace {

constexpr QSize WindowSize(480, 640);
// Hardly a text is so wide that it fits with the margins of one side and not with those of the other.
constexpr std::array ColumnWidths = {80, 130, 120, 150};

} // namespace

bool PaintCounter::eventFilter(QObject *, QEvent *event)
{
    m_paints += event->type() == QEvent::Paint ? 1 : 0;
    return false;
}

void ListSide::showWindow()
{
    QTreeView &list = view();
    list.setRootIsDecorated(false);
    list.setUniformRowHeights(true);
    for (int column = 0; column < static_cast<int>(ListColumns.size()); ++column)
        list.header()->resizeSection(column, ColumnWidths[static_cast<size_t>(column)]);
    list.resize(WindowSize);
    list.show();
    require(QTest::qWaitForWindowExposed(&list), "showing a window");
    list.viewport()->installEventFilter(&m_counter);
}

void ListSide::click(int column)
{
    QHeaderView *header = view().header();
    const QPoint middle(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, middle);
    finishOrder();
    require(header->sortIndicatorSection() == column, "sorting");
}

void ListSide::repaint()
{
    const int paints = m_counter.paints();
    view().header()->viewport()->repaint();
    view().viewport()->repaint();
    require(m_counter.paints() > paints, "painting");
}

void ListSide::goToFirst()
{
    view().setCurrentIndex(view().model()->index(0, 0));
    view().verticalScrollBar()->triggerAction(QScrollBar::SliderToMinimum);
}

void ListSide::goToEnd()
{
    view().verticalScrollBar()->triggerAction(QScrollBar::SliderToMaximum);
}

void ListSide::scrollPage()
{
    view().verticalScrollBar()->triggerAction(QScrollBar::SliderPageStepAdd);
}

bool ListSide::isAtEnd()
{
    return view().verticalScrollBar()->value() == view().verticalScrollBar()->maximum();
}

bool ListSide::isLastCurrent()
{
    return view().currentIndex().row() == rows() - 1;
}

int ListSide::rowHeight()
{
    return view().visualRect(view().model()->index(0, 0)).height();
}

int ListSide::rows()
{
    return view().model()->rowCount();
}

qint64 ListSide::sizeOfTexts()
{
    qint64 size = 0;
    for (int row = 0; row < rows(); ++row)
        for (int column = 0; column < static_cast<int>(ListColumns.size()); ++column)
            size += text(row, column).size();
    return size;
}
