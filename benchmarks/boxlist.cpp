#include "boxlist.h"

#include "kylistviewitem.h"
#include "report.h"
#include <cstring>

BoxList::BoxList(const std::string &name) : m_store(name)
{
    QList<KyDbListViewColumn> columns;
    for (const ListColumn &column : ListColumns) {
        KyDbListViewColumn shown;
        std::memcpy(shown.code, column.code, sizeof shown.code);
        shown.title = QString::fromLatin1(column.title);
        columns.append(shown);
    }
    m_list.setColumns(columns);
    open();
    showWindow();
}

void BoxList::open()
{
    m_manager = std::make_unique<KyPDataManager>(m_store.boxPath().c_str(), nullptr, false);
    require(m_manager->isOpened(), "opening the box");
}

void BoxList::readAll()
{
    for (bool found = m_manager->first(); found; found = m_manager->next())
        for (const ListColumn &column : ListColumns)
            require(!m_manager->readItem(column.code).isNull(), "reading an item");
}

void BoxList::fill()
{
    m_list.setDb(m_manager.get());
}

void BoxList::empty()
{
    m_list.setDb(nullptr);
}

unsigned long BoxList::lastContact()
{
    return m_manager->lastCard();
}

void BoxList::select(unsigned long contact)
{
    m_list.setCurrentCardId(contact);
}

QString BoxList::text(int row, int column)
{
    return m_list.itemText(row + 1, column);
}

void BoxList::forgetOrders()
{
    empty();
    m_manager.reset();
    m_store.deleteTemporaryIndexes();
    open();
}

void BoxList::deleteFirstRow()
{
    m_list.KyListView::deleteItem(m_list.topLevelItem(0));
}

qint64 BoxList::sumOfLineNumbers()
{
    qint64 sum = 0;
    for (int row = 0; row < m_list.topLevelItemCount(); ++row)
        sum += static_cast<KyListViewItem *>(m_list.topLevelItem(row))->lineNo();
    return sum;
}
