#ifndef KY_TEST_TEXTLIST_H
#define KY_TEST_TEXTLIST_H

#include "kychecklistitem.h"
#include "kylistview.h"
#include "kylistviewitem.h"

/** A list with texts and pixmaps that a test sets; a text that isn't set tells line and column. */
class TextList : public KyListView
{
public:
    explicit TextList(int columns = 2, bool checked = false) : m_checked(checked) { setColumnCount(columns); }

    [[nodiscard]] QString itemText(int line, int column) const override
    {
        return texts.value({line, column}, QStringLiteral("%1.%2").arg(line).arg(column));
    }
    [[nodiscard]] QPixmap itemPixmap(int line, int column) const override
    {
        return pixmaps.value({line, column});
    }
    [[nodiscard]] QTreeWidgetItem *newItem() override
    {
        return m_checked ? new KyCheckListItem : KyListView::newItem();
    }

    [[nodiscard]] KyListViewItem *row(int index) const
    {
        return dynamic_cast<KyListViewItem *>(topLevelItem(index));
    }
    [[nodiscard]] KyCheckListItem *checkRow(int index) const
    {
        return dynamic_cast<KyCheckListItem *>(topLevelItem(index));
    }
    [[nodiscard]] int rowHeight(int index = 0) const { return visualItemRect(topLevelItem(index)).height(); }
    [[nodiscard]] QRect cell(int index, int column) const
    {
        return visualRect(model()->index(index, column));
    }

    QMap<QPair<int, int>, QString> texts;   ///< by line and column
    QMap<QPair<int, int>, QPixmap> pixmaps; ///< by line and column

private:
    const bool m_checked;
};

inline QPixmap plainPixmap(int width, int height, const QColor &color = Qt::red)
{
    QPixmap pixmap(width, height);
    pixmap.fill(color);
    return pixmap;
}

#endif
