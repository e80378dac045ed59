#ifndef CATEGORYCHECKLIST_H
#define CATEGORYCHECKLIST_H

#include <QListWidget>

class CategoryTable;

/** The categories of the device with a box to tick for each. */
class CategoryChecklist : public QListWidget
{
    Q_OBJECT
public:
    explicit CategoryChecklist(CategoryTable *table, QWidget *parent = nullptr);

    /** Ticks these and no others. */
    void setChecked(const QList<int> &ids);
    /** What is ticked, by rising id. */
    [[nodiscard]] QList<int> checked() const;

private:
    void fill();

    CategoryTable *m_table;
};

#endif
