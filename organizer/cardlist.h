#ifndef CARDLIST_H
#define CARDLIST_H

#include <QTreeView>

class CardsModel;

/** A list of cards with rows that a finger can hit, sorted by a click on a header; a second click turns it
 * round. */
class CardList : public QTreeView
{
    Q_OBJECT
public:
    /** @param model its columns give the widths, the one that has the box's own order is marked */
    explicit CardList(CardsModel *model, QWidget *parent = nullptr);

    /** What stands in the place of the rows when there is none. */
    void setPlaceholder(const QString &text);
    [[nodiscard]] QString placeholder() const { return m_placeholder; }
    /** Does what a click on the header of a column does. */
    void sortBy(int column);

signals:
    /** The user wants the order of a column. */
    void orderWanted(int field, bool ascending);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void orderBy(int column);

    CardsModel *m_model;
    QString m_placeholder;
};

#endif
