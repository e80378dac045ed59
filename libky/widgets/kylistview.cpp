#include "kylistview.h"

#include "kylistviewitem.h"
#include <algorithm>
#include <optional>
#include <QEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyledItemDelegate>

namespace {

constexpr int MostRows = 1000000; // some 200 MB
// Of a long text as much counts for the width that a column would like to have, in code units.
constexpr qsizetype MeasuredBeginning = 500;

} // namespace

class KyListViewPrivate
{
public:
    bool autoLineStep = true;
    int lineStep = 3; ///< widths of the widest character
    int itemMargin = 1;
    int paintedHeight = 0;         ///< of the row that is being painted, 0 at other times
    bool isAsked = false;          ///< for the contents of a cell
    std::optional<int> rowsToCome; ///< what setAllDataNum() was asked for meanwhile
};

/** Has the rows of a KyListView paint themselves. */
class KyListViewDelegate : public QStyledItemDelegate
{
public:
    explicit KyListViewDelegate(KyListView *view) : QStyledItemDelegate(view), m_view(view) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override;

private:
    [[nodiscard]] KyListViewItem *itemOf(const QModelIndex &index) const;
    void paintFocus(QPainter *painter, const QStyleOptionViewItem &option) const;
    [[nodiscard]] QPalette paletteFor(const QStyleOptionViewItem &option) const;
    [[nodiscard]] Qt::Alignment alignmentOf(const KyListViewItem &item, int column) const;

    KyListView *const m_view;
};

/** Null for a row of another class. */
KyListViewItem *KyListViewDelegate::itemOf(const QModelIndex &index) const
{
    return dynamic_cast<KyListViewItem *>(m_view->itemFromIndex(index));
}

void KyListViewDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    KyListViewItem *item = itemOf(index);
    if (!item) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    painter->save();
    painter->translate(option.rect.topLeft());
    painter->setClipRect(QRect(QPoint(), option.rect.size()), Qt::IntersectClip);
    painter->setFont(m_view->font());
    m_view->d->paintedHeight = option.rect.height();
    item->paintCell(painter, paletteFor(option), index.column(), option.rect.width(),
                    alignmentOf(*item, index.column()));
    m_view->d->paintedHeight = 0;
    painter->restore();
    paintFocus(painter, option);
}

/** As around the cells of any list. Where all columns show it, the view draws the frame round the row. */
void KyListViewDelegate::paintFocus(QPainter *painter, const QStyleOptionViewItem &option) const
{
    if (!(option.state & QStyle::State_HasFocus))
        return;
    QStyleOptionFocusRect frame;
    frame.QStyleOption::operator=(option);
    frame.state |= QStyle::State_KeyboardFocusChange | QStyle::State_Item;
    frame.backgroundColor =
        option.palette.color(option.state & QStyle::State_Selected ? QPalette::Highlight : QPalette::Base);
    m_view->style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, painter, m_view);
}

QPalette KyListViewDelegate::paletteFor(const QStyleOptionViewItem &option) const
{
    QPalette palette = option.palette;
    if (!(option.state & QStyle::State_Enabled))
        palette.setCurrentColorGroup(QPalette::Disabled);
    else
        palette.setCurrentColorGroup(option.state & QStyle::State_Active ? QPalette::Active
                                                                         : QPalette::Inactive);
    if (option.features & QStyleOptionViewItem::Alternate)
        palette.setBrush(QPalette::Base, palette.alternateBase());
    return palette;
}

/** That of the row, else that of the header. */
Qt::Alignment KyListViewDelegate::alignmentOf(const KyListViewItem &item, int column) const
{
    QVariant alignment = item.data(column, Qt::TextAlignmentRole);
    if (!alignment.isValid())
        alignment = m_view->headerItem()->data(column, Qt::TextAlignmentRole);
    return alignment.isValid() ? Qt::Alignment(alignment.toInt()) : Qt::AlignLeft;
}

void KyListViewDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (itemOf(index))
        option->text.truncate(MeasuredBeginning);
}

/** As wide as the style would have it, and as high as text, pixmap or check box; a margin on every side. */
QSize KyListViewDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QSize size = QStyledItemDelegate::sizeHint(option, index);
    const KyListViewItem *item = itemOf(index);
    if (!item || index.data(Qt::SizeHintRole).isValid())
        return size;
    const bool hasBox = index.data(Qt::CheckStateRole).isValid();
    const int boxHeight =
        hasBox ? m_view->style()->pixelMetric(QStyle::PM_IndicatorHeight, &option, m_view) : 0;
    const int height =
        std::max({m_view->fontMetrics().height(), item->itemPixmap(index.column()).height(), boxHeight});
    const int margins = 2 * m_view->itemMargin();
    return {size.width() + margins, height + margins};
}

/** The space key turns the check box of a row whichever of its cells has the focus. */
bool KyListViewDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                                     const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const bool isKey = event->type() == QEvent::KeyPress;
    return QStyledItemDelegate::editorEvent(event, model, option, isKey ? index.siblingAtColumn(0) : index);
}

KyListView::KyListView(QWidget *parent, const char *name) : QTreeWidget(parent), d(new KyListViewPrivate)
{
    setObjectName(QString::fromUtf8(name));
    setItemDelegate(new KyListViewDelegate(this));
    setUniformRowHeights(true);
    setRootIsDecorated(false);
    setEditTriggers(NoEditTriggers);
}

KyListView::~KyListView() = default;

void KyListView::setAllDataNum(int n)
{
    if (d->isAsked)
        setRowsLater(n);
    else
        setRows(n);
}

/** Whoever asks for a text, in the middle of a painting maybe, goes on with the rows that there are. */
void KyListView::setRowsLater(int n)
{
    d->rowsToCome = n;
    const auto setThem = [this] {
        if (d->rowsToCome)
            setAllDataNum(*d->rowsToCome);
    };
    QMetaObject::invokeMethod(this, setThem, Qt::QueuedConnection);
}

void KyListView::setRows(int n)
{
    d->rowsToCome.reset();
    if (n > MostRows)
        qWarning("KyListView: %d rows are too many", n);
    const int count = std::clamp(n, 0, MostRows);
    if (topLevelItemCount() > 0)
        clear();
    QList<QTreeWidgetItem *> rows;
    rows.reserve(count);
    for (int i = 0; i < count; ++i) {
        if (QTreeWidgetItem *row = newItem())
            rows.append(row);
    }
    addTopLevelItems(rows);
}

QTreeWidgetItem *KyListView::newItem()
{
    return new KyListViewItem;
}

void KyListView::deleteItem(QTreeWidgetItem *item)
{
    if (!item)
        item = currentItem();
    if (!item)
        item = topLevelItem(0);
    delete item;
}

QString KyListView::itemText(int, int) const
{
    return QString();
}

QPixmap KyListView::itemPixmap(int, int) const
{
    return QPixmap();
}

QString KyListView::askForText(int line, int column) const
{
    const QScopedValueRollback asking(d->isAsked, true);
    return itemText(line, column);
}

QPixmap KyListView::askForPixmap(int line, int column) const
{
    const QScopedValueRollback asking(d->isAsked, true);
    return itemPixmap(line, column);
}

void KyListView::setAutoLineStep(bool on, int step)
{
    d->autoLineStep = on;
    d->lineStep = step;
}

void KyListView::setFont(const QFont &font)
{
    QTreeWidget::setFont(font);
    if (d->autoLineStep)
        horizontalScrollBar()->setSingleStep(fontMetrics().maxWidth() * d->lineStep);
}

int KyListView::itemMargin() const
{
    return d->itemMargin;
}

void KyListView::setItemMargin(int margin)
{
    d->itemMargin = margin;
    scheduleDelayedItemsLayout();
}

void KyListView::triggerUpdate()
{
    viewport()->update();
}

/** Tells each row its place, so that all of them know it until one is put in or taken out. */
void KyListView::numberLines() const
{
    const int count = topLevelItemCount();
    for (int i = 0; i < count; ++i) {
        if (auto *item = dynamic_cast<KyListViewItem *>(topLevelItem(i)))
            item->m_line = i + 1;
    }
}

/** The view knows it while it paints; at other times the row has to be looked for. */
int KyListView::heightOf(const KyListViewItem &item) const
{
    return d->paintedHeight > 0 ? d->paintedHeight : rowHeight(indexFromItem(&item));
}
