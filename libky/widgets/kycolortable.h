#ifndef KYCOLORTABLE_H
#define KYCOLORTABLE_H

#include "kyexport.h"
#include <memory>
#include <QAbstractScrollArea>
#include <QRgb>

class KyColorTablePrivate;

/**
 * A grid of colours, to be chosen from with the stylus or the keyboard.
 *
 * Two cells are told apart: the current one has a black rectangle around it, the selected one is that which
 * was confirmed last and looks like any other. Each of them may be none at all, which is (-1,-1); any place
 * outside the grid stands for that.
 *
 * Where the widget is smaller than its sizeHint() the grid scrolls.
 */
class KY_EXPORT KyColorTable : public QAbstractScrollArea
{
    Q_OBJECT
public:
    static const QRgb defColors[48]; ///< the default palette: 6 rows of 8 colours, all opaque

    /**
     * @param flags window flags, on top of the widget's own
     * @param rows,cols size of the grid, 1000 at most; with one of them 0 or less it has no cell
     * @param colors rows * cols colours, row by row, which have to outlive the table; they are read, opaque,
     * whenever one is needed. Null for defColors: cells that it has no colour for are white
     */
    KyColorTable(QWidget *parent, const char *name, unsigned int flags, int rows, int cols,
                 const QRgb *colors);
    ~KyColorTable() override;

    /** The size that shows all cells. */
    [[nodiscard]] QSize sizeHint() const override;

    void setCurrent(int row, int col); ///< marks a cell
    /** Confirms a cell. The one that is selected already gives reSelected(), another one selected(), and a
     * place outside the grid no signal: afterwards no cell is the selected one. */
    void setSelected(int row, int col);
    /** Colour of a cell; 0, which is transparent, outside the grid. */
    [[nodiscard]] QRgb getRgbInCell(int row, int col) const;

public slots:
    /** Marks the first cell of that colour, alpha included, and shows it; none when there is no such cell. */
    void setCurrentColor(QRgb color);

signals:
    void selected(QRgb color);   ///< a cell was confirmed
    void reSelected(QRgb color); ///< the selected cell was confirmed once more

protected:
    /** Paints a cell. @param painter has its origin at the upper left corner of the cell */
    virtual void paintCell(QPainter *painter, int row, int col);
    [[nodiscard]] int findRow(int y) const; ///< row at a height of the viewport, -1 where none is shown
    [[nodiscard]] int findCol(int x) const; ///< column at a place of the viewport, -1 where none is shown

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    Q_DISABLE_COPY_MOVE(KyColorTable)
    [[nodiscard]] bool isInGrid(int row, int col) const;
    [[nodiscard]] QRect cellRect(int row, int col) const;
    void updateCell(int row, int col);
    void updateScrollBars();
    void moveCurrent(int row, int col);
    void showCurrent();

    const std::unique_ptr<KyColorTablePrivate> d;
};

#endif
