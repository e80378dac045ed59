#ifndef BENCHMARKS_BOXLIST_H
#define BENCHMARKS_BOXLIST_H

#include "kydblistview.h"
#include "kypdatamanager.h"
#include "listside.h"
#include "storeside.h"

/** Our list, on a box. */
class BoxList : public ListSide
{
public:
    /** @param name of a box that nobody has open, with an index by reading */
    explicit BoxList(const std::string &name);

    void readAll() override;
    void fill() override;
    void empty() override;
    void finishOrder() override {} // the rows ask for their texts by themselves
    [[nodiscard]] unsigned long lastContact() override;
    void select(unsigned long contact) override;
    [[nodiscard]] QString text(int row, int column) override;
    [[nodiscard]] QTreeView &view() override { return m_list; }

    /** Opens the box again, with nothing but the order by reading. The list is empty then. */
    void forgetOrders();
    /** Takes a row out, and with it all that the others know of their places. */
    void deleteFirstRow();
    /** Asks each row for its number; the sum of them. */
    [[nodiscard]] qint64 sumOfLineNumbers();

private:
    void open();

    StoreSide m_store;
    std::unique_ptr<KyPDataManager> m_manager;
    KyDbListView m_list;
};

#endif
