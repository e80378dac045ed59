#ifndef BENCHMARKS_SQLLIST_H
#define BENCHMARKS_SQLLIST_H

#include "listside.h"
#include <QSqlDatabase>
#include <QSqlTableModel>
#include <QStyledItemDelegate>
#include <string>

/** Paints as Qt does, in rows of a certain height. */
class RowsOfHeight : public QStyledItemDelegate
{
public:
    explicit RowsOfHeight(int height) : m_height(height) {}
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    const int m_height;
};

/** A QSqlTableModel with all its rows, in a QTreeView. */
class SqlList : public ListSide
{
public:
    /** @param path of a database that SqliteSide has made */
    explicit SqlList(const std::string &path);
    ~SqlList() override;

    void readAll() override;
    void fill() override;
    void empty() override;
    void finishOrder() override;
    [[nodiscard]] unsigned long lastContact() override;
    void select(unsigned long contact) override;
    [[nodiscard]] QString text(int row, int column) override;
    [[nodiscard]] QTreeView &view() override { return m_view; }

    /** Makes the rows that the model fetches by itself. */
    void fillFirstRows();
    /** @param height in pixels */
    void setRowHeight(int height);

private:
    static QSqlDatabase connection(const QString &path);
    void requireNoError(const char *what) const;

    std::unique_ptr<QSqlTableModel> m_model;
    std::unique_ptr<RowsOfHeight> m_delegate;
    QTreeView m_view;
};

#endif
