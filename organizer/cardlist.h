#ifndef CARDLIST_H
#define CARDLIST_H

#include "kydblistview.h"

#include <functional>
#include <QCache>

class Book;

/** A column of a list of cards. */
struct CardColumn
{
    QString title;
    int field = 0;    ///< what it shows and is sorted by
    int letters = 10; ///< width
    /** What it shows of a card in place of the field; none for the field itself. */
    std::function<QString(unsigned long card)> text = {};
};

/** The cards of a book's view, in rows that a finger can hit. While the box is lent to another application
 * the list keeps its rows, and the texts that it has shown. */
class CardList : public KyDbListView
{
    Q_OBJECT
public:
    /** @param columns of fields of the book @param nameColumn the one that tells the cards apart */
    CardList(Book *book, QList<CardColumn> columns, int nameColumn = 0);

    /** Makes the rows anew from the book's view, unless the box is lent. @param card to be selected, see
     * setCurrentCardId() */
    void showView(unsigned long card);

    /** What stands in the place of the rows when there is none. */
    void setPlaceholder(const QString &text);
    [[nodiscard]] QString placeholder() const { return m_placeholder; }

    [[nodiscard]] int nameColumn() const { return m_nameColumn; }

    [[nodiscard]] QString itemText(int line, int column) const override;
    /** Goes by the column of names, whichever cell is the current one. */
    void keyboardSearch(const QString &search) override;
    /** Sets the order of the book. */
    void sort(int column, bool ascending) override;

protected:
    [[nodiscard]] Book *book() const { return m_book; }

    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QString read(int line, int column) const;

    Book *m_book;
    QList<CardColumn> m_columns;
    int m_nameColumn;
    mutable QCache<QPair<int, int>, QString> m_shown; ///< by line and column
    QString m_placeholder;
};

#endif
