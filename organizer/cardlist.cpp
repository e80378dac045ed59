#include "cardlist.h"

#include "book.h"

#include <algorithm>
#include <QHeaderView>
#include <QPainter>

namespace {

constexpr int MostShown = 2000; // cells, more than any screen has

} // namespace

CardList::CardList(Book *book, QList<CardColumn> columns, int nameColumn)
    : m_book(book), m_columns(std::move(columns)), m_nameColumn(nameColumn), m_shown(MostShown)
{
    QList<KyDbListViewColumn> items;
    for (const CardColumn &column : m_columns) {
        KyDbListViewColumn item;
        std::copy_n(book->codeOf(column.field).constData(), sizeof item.code, item.code);
        item.title = column.title;
        items.append(item);
    }
    setColumns(items);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setItemMargin(fontMetrics().height() / 4);
    header()->setStretchLastSection(true);
    header()->setSectionsMovable(false);
}

void CardList::showView(unsigned long card)
{
    if (!m_book->isAvailable())
        return;
    m_shown.clear();
    setDb(m_book->box());
    setCurrentCardId(card);
}

void CardList::setPlaceholder(const QString &text)
{
    m_placeholder = text;
    viewport()->update();
}

QString CardList::read(int line, int column) const
{
    const CardColumn &wanted = m_columns[column];
    if (!wanted.text)
        return KyDbListView::itemText(line, column);
    const unsigned long card = m_book->cardAt(line - 1);
    return card == 0 ? QString() : wanted.text(card);
}

QString CardList::itemText(int line, int column) const
{
    const QPair<int, int> cell(line, column);
    if (!m_book->isAvailable()) {
        const QString *shown = m_shown.object(cell);
        return shown ? *shown : QString();
    }
    const QString text = read(line, column);
    m_shown.insert(cell, new QString(text));
    return text;
}

/* The search reads so many rows that those in sight may have to be read again, to be there when the box is
 * lent. */
void CardList::keyboardSearch(const QString &search)
{
    selectionModel()->setCurrentIndex(currentIndex().siblingAtColumn(m_nameColumn),
                                      QItemSelectionModel::NoUpdate);
    KyDbListView::keyboardSearch(search);
    viewport()->repaint(); // now: the box may be lent by the next event
}

/* The book tells of its new view, or keeps its order for later. */
void CardList::sort(int column, bool ascending)
{
    m_book->setOrder(m_columns[column].field, ascending);
}

/* The columns share the room by their letters. */
void CardList::resizeEvent(QResizeEvent *event)
{
    KyDbListView::resizeEvent(event);
    int letters = 0;
    for (const CardColumn &column : m_columns)
        letters += column.letters;
    if (letters == 0)
        return;
    for (int column = 0; column < m_columns.size(); ++column)
        header()->resizeSection(column, viewport()->width() * m_columns[column].letters / letters);
}

void CardList::paintEvent(QPaintEvent *event)
{
    KyDbListView::paintEvent(event);
    if (topLevelItemCount() > 0 || m_placeholder.isEmpty())
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, m_placeholder);
}
