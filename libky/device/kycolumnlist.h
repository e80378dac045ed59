#ifndef KYCOLUMNLIST_H
#define KYCOLUMNLIST_H

#include "kyexport.h"

/** What a widget with columns offers, beside a QTreeWidget, so that the column operations of KyMisc can serve
 * it. A widget class derives from this as well. */
class KY_EXPORT KyColumnList
{
public:
    virtual ~KyColumnList() = default;

    /** Number of columns. */
    [[nodiscard]] virtual int columnCount() const = 0;
    /** Width of a column in pixels. */
    [[nodiscard]] virtual int columnWidth(int column) const = 0;
    /** @param width in pixels */
    virtual void setColumnWidth(int column, int width) = 0;
    /** The columns have changed with the screen: fits the contents to them. */
    virtual void adjustContentsSize() = 0;
};

#endif
