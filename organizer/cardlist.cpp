#include "cardlist.h"

#include "cardsmodel.h"

#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {

class RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(0, option.fontMetrics.height() / 2);
    }
};

} // namespace

CardList::CardList(CardsModel *model, QWidget *parent) : QTreeView(parent), m_model(model)
{
    setModel(model);
    setItemDelegate(new RowDelegate(this));
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    header()->setStretchLastSection(true);
    header()->setSectionsMovable(false);
    header()->setSectionsClickable(true);
    header()->setSortIndicatorShown(true);
    for (int column = 0; column < model->columnCount(); ++column) {
        if (model->columns()[column].orderField == 0)
            header()->setSortIndicator(column, Qt::AscendingOrder);
    }
    connect(header(), &QHeaderView::sectionClicked, this, &CardList::orderBy);
}

void CardList::setPlaceholder(const QString &text)
{
    m_placeholder = text;
    viewport()->update();
}

void CardList::sortBy(int column)
{
    const bool turns =
        header()->sortIndicatorSection() == column && header()->sortIndicatorOrder() == Qt::AscendingOrder;
    header()->setSortIndicator(column, turns ? Qt::DescendingOrder : Qt::AscendingOrder);
    orderBy(column);
}

/* The header has marked the column and turned its direction. */
void CardList::orderBy(int column)
{
    emit orderWanted(m_model->columns()[column].orderField,
                     header()->sortIndicatorOrder() == Qt::AscendingOrder);
}

/* The columns share the room by their letters. */
void CardList::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    int letters = 0;
    for (const CardColumn &column : m_model->columns())
        letters += column.letters;
    if (letters == 0)
        return;
    for (int column = 0; column < m_model->columnCount(); ++column)
        header()->resizeSection(column, viewport()->width() * m_model->columns()[column].letters / letters);
}

void CardList::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (m_model->rowCount() > 0 || m_placeholder.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, m_placeholder);
}
