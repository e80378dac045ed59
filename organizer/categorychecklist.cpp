#include "categorychecklist.h"

#include "categorytable.h"

namespace {

constexpr int IdRole = Qt::UserRole;

} // namespace

CategoryChecklist::CategoryChecklist(CategoryTable *table, QWidget *parent)
    : QListWidget(parent), m_table(table)
{
    connect(table, &CategoryTable::changed, this, &CategoryChecklist::fill);
    setSpacing(2);
    fill();
}

void CategoryChecklist::fill()
{
    const QList<int> ids = checked();
    clear();
    for (const CategoryEntry &entry : m_table->entries()) {
        auto *item = new QListWidgetItem(entry.name, this);
        item->setData(IdRole, entry.id);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    }
    setChecked(ids);
}

void CategoryChecklist::setChecked(const QList<int> &ids)
{
    for (int row = 0; row < count(); ++row) {
        const bool isChecked = ids.contains(item(row)->data(IdRole).toInt());
        item(row)->setCheckState(isChecked ? Qt::Checked : Qt::Unchecked);
    }
}

QList<int> CategoryChecklist::checked() const
{
    QList<int> ids;
    for (int row = 0; row < count(); ++row) {
        if (item(row)->checkState() == Qt::Checked)
            ids.append(item(row)->data(IdRole).toInt());
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}
