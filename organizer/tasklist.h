#ifndef TASKLIST_H
#define TASKLIST_H

#include "cardlist.h"

/** A list of cards whose first column is a box to tick: it is ticked where the column has a text, which isn't
 * shown. */
class TaskList : public CardList
{
    Q_OBJECT
public:
    using CardList::CardList;

    [[nodiscard]] QTreeWidgetItem *newItem() override;
    [[nodiscard]] QString itemText(int line, int column) const override;
    [[nodiscard]] bool isTicked(int line) const;

signals:
    /** The user ticked the box of a card, or took the tick away; the card is as it was. */
    void ticked(unsigned long card, bool on);
};

#endif
