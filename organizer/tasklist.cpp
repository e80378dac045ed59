#include "tasklist.h"

#include "kychecklistitem.h"

namespace {

/** Its box is that of the card. */
class TaskItem : public KyCheckListItem
{
public:
    [[nodiscard]] bool isOn() const override
    {
        const auto *list = qobject_cast<const TaskList *>(treeWidget());
        return list && list->isTicked(lineNo());
    }

    /* The tick follows the card, which is not to be had while the box is lent. */
    void setOn(bool on) override
    {
        auto *list = qobject_cast<TaskList *>(treeWidget());
        const unsigned long card = list ? list->currentCardId(this) : 0;
        if (card != 0)
            emit list->ticked(card, on);
    }
};

} // namespace

QTreeWidgetItem *TaskList::newItem()
{
    return new TaskItem;
}

QString TaskList::itemText(int line, int column) const
{
    return column == 0 ? QString() : CardList::itemText(line, column);
}

bool TaskList::isTicked(int line) const
{
    return !CardList::itemText(line, 0).isEmpty();
}
