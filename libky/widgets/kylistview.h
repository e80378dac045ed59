#ifndef KYLISTVIEW_H
#define KYLISTVIEW_H

#include "kyexport.h"
#include <memory>
#include <QPixmap>
#include <QString>
#include <QTreeWidget>

class KyListViewItem;
class KyListViewPrivate;

/**
 * A list of many rows that hold no text: what a row shows is asked for by its line number when it is painted.
 * A subclass overrides itemText() and itemPixmap().
 *
 *     class Numbers : public KyListView
 *     {
 *         QString itemText(int line, int) const override { return QString::number(line); }
 *     };
 *     list->setAllDataNum(50000);
 *
 * All rows have the height of the first one.
 */
class KY_EXPORT KyListView : public QTreeWidget
{
    Q_OBJECT
public:
    explicit KyListView(QWidget *parent = nullptr, const char *name = nullptr);
    ~KyListView() override;

    /** Replaces all rows by @p n new ones: by none when it is below 1, by a million when it is more. Called
     * from itemText() or itemPixmap(), it waits for the event loop. */
    void setAllDataNum(int n);
    /** Takes a row out and deletes it. @param item null for the current row, else the first; nothing happens
     * when there is none */
    void deleteItem(QTreeWidgetItem *item);

    /** Text of a cell. @param line from 1. Empty here; to be overridden. No row may be deleted in it. */
    [[nodiscard]] virtual QString itemText(int line, int column) const;
    /** Pixmap in front of the text of a cell. @param line from 1. Null here; to be overridden */
    [[nodiscard]] virtual QPixmap itemPixmap(int line, int column) const;

    /** Makes a new row, which the view puts at its end and owns; null for none. A KyListViewItem here; a
     * subclass may give KyCheckListItem or a class of its own. */
    [[nodiscard]] virtual QTreeWidgetItem *newItem();

    /** How far a step of the horizontal scroll bar goes. @param on whether setFont() sets it @param step in
     * widths of the widest character of the font. On, with 3, at the start */
    void setAutoLineStep(bool on, int step);
    /** Sets the font and, see setAutoLineStep(), the step of the horizontal scroll bar. */
    void setFont(const QFont &font);

    /** Room at either side of a cell's contents, in pixels; 1 at the start. */
    [[nodiscard]] int itemMargin() const;
    /** @param margin in pixels */
    void setItemMargin(int margin);

public slots:
    /** Paints all that is visible anew, once the event loop runs. */
    void triggerUpdate();

private:
    friend class KyListViewDelegate;
    friend class KyListViewItem;
    Q_DISABLE_COPY_MOVE(KyListView)
    void setRows(int n);
    void setRowsLater(int n);
    [[nodiscard]] QString askForText(int line, int column) const;
    [[nodiscard]] QPixmap askForPixmap(int line, int column) const;
    void numberLines() const;
    [[nodiscard]] int heightOf(const KyListViewItem &item) const;

    const std::unique_ptr<KyListViewPrivate> d;
};

#endif
