#ifndef KYLISTVIEWITEM_H
#define KYLISTVIEWITEM_H

#include "kyexport.h"
#include <QPixmap>
#include <QString>
#include <QTreeWidget>

class KyListView;

/**
 * A row of a KyListView. It holds no data: it knows its place, and asks the view for what stands there
 * whenever it is shown.
 *
 * Only rows of the first level have a line number.
 */
class KY_EXPORT KyListViewItem : public QTreeWidgetItem
{
public:
    /** What type() gives, for the rows with a check box as well. */
    static constexpr int Type = QTreeWidgetItem::UserType + 1;

    /** A row in no view; KyListView::newItem() makes the rows of a view. */
    KyListViewItem();

    /** Place in the view, from 1; 0 in no view. Takes constant time, but for the first call after rows were
     * put in or taken out, which counts them all. */
    [[nodiscard]] int lineNo() const;
    /** What the view has for this line. Empty in no view. */
    [[nodiscard]] QString itemText(int column) const;
    /** What the view has for this line. Null in no view. */
    [[nodiscard]] QPixmap itemPixmap(int column) const;

    /**
     * Paints a cell with its upper left corner at the painter's origin; its height is that of the rows of the
     * view. A text that is too wide ends in "...".
     * @param painter with the font of the view; nothing happens for null
     * @param palette with the group of colours that is to be used as its current one
     * @param width of the cell, in pixels
     * @param align of the column; centred vertically unless it says otherwise
     */
    virtual void paintCell(QPainter *painter, const QPalette &palette, int column, int width,
                           Qt::Alignment align);

    /** The text and the pixmap of the view, for whoever asks by role; nothing is stored. */
    [[nodiscard]] QVariant data(int column, int role) const override;

protected:
    /** Paints background, selection, pixmap and text. */
    void paintTextCell(QPainter *painter, const QPalette &palette, int column, int width,
                       Qt::Alignment align);
    /** The view, null in none. */
    [[nodiscard]] KyListView *view() const;
    /** Height of the rows of the view, in pixels; in no view that of a line of text. */
    [[nodiscard]] int height(const QPainter &painter) const;

private:
    friend class KyListView;
    mutable int m_line = 0; ///< right when the view has this row there, see lineNo()
};

#endif
