#include "kychecklistitem.h"

#include "elidedtext_p.h"
#include "kylistview.h"
#include <QPainter>
#include <QStyle>
#include <QStyleOptionViewItem>

namespace {

/** The colours of a palette's current group, as a style is told of them. */
QStyle::State stateOf(const QPalette &palette)
{
    switch (palette.currentColorGroup()) {
    case QPalette::Disabled:
        return QStyle::State_None;
    case QPalette::Inactive:
        return QStyle::State_Enabled;
    default:
        return QStyle::State_Enabled | QStyle::State_Active;
    }
}

/** Room for the text of a cell, without what the style leaves free at either end. */
int textWidth(const QStyle &style, const QStyleOptionViewItem &option)
{
    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    return style.subElementRect(QStyle::SE_ItemViewItemText, &option, option.widget).width() - 2 * margin;
}

} // namespace

KyCheckListItem::KyCheckListItem() = default;

bool KyCheckListItem::isOn() const
{
    return m_on;
}

void KyCheckListItem::setOn(bool on)
{
    if (m_on == on)
        return;
    m_on = on;
    emitDataChanged();
}

QVariant KyCheckListItem::data(int column, int role) const
{
    if (role != Qt::CheckStateRole)
        return KyListViewItem::data(column, role);
    return column == 0 ? QVariant(isOn() ? Qt::Checked : Qt::Unchecked) : QVariant();
}

void KyCheckListItem::setData(int column, int role, const QVariant &value)
{
    if (role != Qt::CheckStateRole)
        KyListViewItem::setData(column, role, value);
    else if (column == 0)
        setOn(value.toInt() != Qt::Unchecked);
}

void KyCheckListItem::paintCell(QPainter *painter, const QPalette &palette, int column, int width,
                                Qt::Alignment align)
{
    if (column == 0 && painter && view())
        paintCheckCell(painter, palette, width, align);
    else
        paintTextCell(painter, palette, column, width, align);
}

/** As the style paints a cell with a check box, but with the text cut as in the other columns. */
void KyCheckListItem::paintCheckCell(QPainter *painter, const QPalette &palette, int width,
                                     Qt::Alignment align)
{
    const KyListView *list = view();
    const QPixmap pixmap = itemPixmap(0);
    QStyleOptionViewItem option;
    option.initFrom(list);
    option.widget = list;
    option.rect = QRect(0, 0, width, height(*painter));
    option.palette = palette;
    option.font = painter->font();
    option.fontMetrics = painter->fontMetrics();
    const bool on = isOn();
    option.state = stateOf(palette) | (on ? QStyle::State_On : QStyle::State_Off);
    if (isSelected())
        option.state |= QStyle::State_Selected;
    option.features = QStyleOptionViewItem::HasCheckIndicator;
    option.checkState = on ? Qt::Checked : Qt::Unchecked;
    option.showDecorationSelected = true;
    option.displayAlignment = align & Qt::AlignVertical_Mask ? align : align | Qt::AlignVCenter;
    if (!pixmap.isNull()) {
        option.features |= QStyleOptionViewItem::HasDecoration;
        option.icon = QIcon(pixmap);
        option.decorationSize = pixmap.size();
    }
    option.features |= QStyleOptionViewItem::HasDisplay;
    const QStyle *style = list->style();
    option.text = elidedText(itemText(0), option.fontMetrics, textWidth(*style, option), 0);
    painter->fillRect(option.rect, palette.base());
    style->drawControl(QStyle::CE_ItemViewItem, &option, painter, list);
}
