#ifndef CARDSMODEL_H
#define CARDSMODEL_H

#include <functional>
#include <QAbstractTableModel>

class Book;

/** A column of a list of cards. */
struct CardColumn
{
    QString title;
    int orderField = 0; ///< what a click on its header sorts by; 0 for the box's own order
    int letters = 10;   ///< width
    /** What it shows of a card. Of a box to tick: empty when it isn't ticked. */
    std::function<QString(unsigned long card)> text;
    bool isTick = false; ///< a box to tick in place of a text
};

/** The cards of a book's view as rows; a row is read when it is shown. While the box is lent to another
 * application the model keeps its rows and the texts that it has shown. */
class CardsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    CardsModel(Book *book, QList<CardColumn> columns, QObject *parent = nullptr);

    [[nodiscard]] const QList<CardColumn> &columns() const { return m_columns; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;
    /** Changes nothing but tells of a tick, see ticked(). */
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    /** The user ticked the box of a card, or took the tick away. */
    void ticked(unsigned long card, bool on);

private:
    [[nodiscard]] QStringList read(int row) const;
    [[nodiscard]] QString text(const QModelIndex &index) const;
    void reset();

    Book *m_book;
    QList<CardColumn> m_columns;
    int m_count = 0;
    mutable QHash<int, QStringList> m_shown;
};

#endif
