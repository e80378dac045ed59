#include "cardsmodel.h"

#include "book.h"

CardsModel::CardsModel(Book *book, QList<CardColumn> columns, QObject *parent)
    : QAbstractTableModel(parent), m_book(book), m_columns(std::move(columns))
{
    connect(book, &Book::cardsChanged, this, &CardsModel::reset);
    reset();
}

void CardsModel::reset()
{
    beginResetModel();
    m_count = m_book->count();
    m_shown.clear();
    endResetModel();
}

int CardsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_count;
}

int CardsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QStringList CardsModel::read(int row) const
{
    const unsigned long card = m_book->cardAt(row);
    QStringList texts;
    for (const CardColumn &column : m_columns)
        texts.append(column.text(card));
    return texts;
}

QString CardsModel::text(const QModelIndex &index) const
{
    auto shown = m_shown.constFind(index.row());
    if (shown == m_shown.constEnd()) {
        if (!m_book->isAvailable())
            return {};
        shown = m_shown.insert(index.row(), read(index.row()));
    }
    return shown->at(index.column());
}

QVariant CardsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const bool isTick = m_columns[index.column()].isTick;
    if (role == Qt::DisplayRole && !isTick)
        return text(index);
    if (role == Qt::CheckStateRole && isTick)
        return text(index).isEmpty() ? Qt::Unchecked : Qt::Checked;
    return {};
}

Qt::ItemFlags CardsModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.isValid() && m_columns[index.column()].isTick ? flags | Qt::ItemIsUserCheckable : flags;
}

bool CardsModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || !m_columns[index.column()].isTick ||
        !m_book->isAvailable())
        return false;
    emit ticked(m_book->cardAt(index.row()), value.toInt() == Qt::Checked);
    return true;
}

QVariant CardsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return m_columns[section].title;
}
