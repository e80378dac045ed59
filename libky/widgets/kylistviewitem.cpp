#include "kylistviewitem.h"

#include "elidedtext_p.h"
#include "kylistview.h"
#include <QPainter>

KyListViewItem::KyListViewItem() : QTreeWidgetItem(Type) {}

KyListView *KyListViewItem::view() const
{
    return qobject_cast<KyListView *>(treeWidget());
}

int KyListViewItem::lineNo() const
{
    const KyListView *list = view();
    if (!list || parent())
        return 0;
    if (list->topLevelItem(m_line - 1) != this)
        list->numberLines();
    return m_line;
}

QString KyListViewItem::itemText(int column) const
{
    const int line = lineNo();
    return line > 0 ? view()->askForText(line, column) : QString();
}

QPixmap KyListViewItem::itemPixmap(int column) const
{
    const int line = lineNo();
    return line > 0 ? view()->askForPixmap(line, column) : QPixmap();
}

int KyListViewItem::height(const QPainter &painter) const
{
    const KyListView *list = view();
    return list ? list->heightOf(*this) : painter.fontMetrics().height();
}

QVariant KyListViewItem::data(int column, int role) const
{
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return itemText(column);
    case Qt::DecorationRole: {
        const QPixmap pixmap = itemPixmap(column);
        return pixmap.isNull() ? QVariant() : QVariant(pixmap);
    }
    default:
        return QTreeWidgetItem::data(column, role);
    }
}

void KyListViewItem::paintCell(QPainter *painter, const QPalette &palette, int column, int width,
                               Qt::Alignment align)
{
    paintTextCell(painter, palette, column, width, align);
}

void KyListViewItem::paintTextCell(QPainter *painter, const QPalette &palette, int column, int width,
                                   Qt::Alignment align)
{
    if (!painter)
        return;
    const KyListView *list = view();
    const QFontMetrics metrics = painter->fontMetrics();
    const int height = this->height(*painter);
    const int margin = list ? list->itemMargin() : 1;
    const QPixmap pixmap = itemPixmap(column);
    const int leftMargin = pixmap.isNull() ? margin : pixmap.width() + margin;
    const QString text = elidedText(itemText(column), metrics, width, leftMargin);

    painter->fillRect(0, 0, width, height, palette.base());
    const bool isMarked = isSelected() && (column == 0 || (list && list->allColumnsShowFocus()));
    if (isMarked) {
        const int start = margin - (align == Qt::AlignLeft ? margin : metrics.minRightBearing());
        painter->fillRect(start, 0, width - start, height, palette.highlight());
    }
    painter->setPen(isMarked ? palette.highlightedText().color() : palette.text().color());

    int left = margin;
    if (!pixmap.isNull()) {
        painter->drawPixmap(left, (height - pixmap.height()) / 2, pixmap);
        left += pixmap.width() + margin;
    }
    const Qt::Alignment place = align & Qt::AlignVertical_Mask ? align : align | Qt::AlignVCenter;
    painter->drawText(QRect(left, 0, width - left, height), int(place) | Qt::TextSingleLine, text);
}
