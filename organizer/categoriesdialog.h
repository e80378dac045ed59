#ifndef CATEGORIESDIALOG_H
#define CATEGORIESDIALOG_H

#include <QDialog>

class CategoryTable;
class QLineEdit;
class QListWidget;
class QPushButton;

/** Makes, renames and removes the categories of the device. */
class CategoriesDialog : public QDialog
{
    Q_OBJECT
public:
    explicit CategoriesDialog(CategoryTable *table, QWidget *parent = nullptr);

private:
    void fill();
    void updateButtons();
    void add();
    void rename();
    void remove();
    void tell(const QString &objection);
    [[nodiscard]] QString selected() const;

    CategoryTable *m_table;
    QListWidget *m_list;
    QLineEdit *m_name;
    QPushButton *m_add;
    QPushButton *m_rename;
    QPushButton *m_remove;
};

#endif
