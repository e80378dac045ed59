#ifndef KYDBLISTVIEW_H
#define KYDBLISTVIEW_H

#include "kylistview.h"
#include <QByteArray>
#include <QList>

class KyDbListViewPrivate;

namespace KyPDtm {
class KyPDataManager;
}

/** A column of a KyDbListView. */
struct KyDbListViewColumn
{
    char code[4] = {}; ///< of the item that it shows; a shorter code ends in 0
    QString title;     ///< of its header
};

/**
 * The cards of a box as rows, in the manager's current view, with a column for each of a few items. A click
 * on a header has the manager sort by the item, a second one turns the order round.
 *
 * Rows are bound to places in the view and not to cards: call update() after anything that changes the view,
 * its order included. sort() alone leaves the selection where it stands, on what is another card then.
 *
 * The manager is not owned; when it is deleted, the list shows empty rows. No text is kept: each cell is read
 * when it is painted.
 */
class KY_EXPORT KyDbListView : public KyListView
{
    Q_OBJECT
public:
    explicit KyDbListView(QWidget *parent = nullptr, const char *name = nullptr);
    ~KyDbListView() override;

    /** Shows the view of @p db, nothing for null. */
    void setDb(KyPDtm::KyPDataManager *db);
    /** What setDb() was given, null when that has been deleted. */
    [[nodiscard]] KyPDtm::KyPDataManager *db() const;
    /** Replaces the columns. One with an empty title can be sorted by and isn't shown; it counts in column
     * numbers, so those stand behind the others. A list without a titled column shows and selects nothing. */
    void setColumns(const QList<KyDbListViewColumn> &list);
    [[nodiscard]] const QList<KyDbListViewColumn> &columns() const;

    using KyListView::update;
    /** Makes the rows anew from the view as it is now. @param card to be selected, see setCurrentCardId() */
    void update(unsigned long card);
    /** Selects a card and brings it into sight; 0 for the first row. A card that is not in the view changes
     * nothing. */
    void setCurrentCardId(unsigned long card);
    /** The card of a row. @param item null for the selected one @return 0 when there is none */
    [[nodiscard]] unsigned long currentCardId(QTreeWidgetItem *item = nullptr) const;
    /** The row of a card, null when it is not in the view or the list. @param card 0 for the manager's
     * current one */
    [[nodiscard]] QTreeWidgetItem *findCard(unsigned long card) const;
    /** Has the manager sort by the item of a column. Nothing happens for a column below 0 or beyond the last
     * one, or with no manager. */
    virtual void sort(int column, bool ascending);
    /** Deletes a card from the box, in one step, with its row, and selects its neighbour. @param card 0 for
     * the selected one @return false, with nothing changed, when it isn't shown or can't be deleted */
    bool deleteItem(unsigned long card);

    /** The first column that shows the item which the view is sorted by, -1 for none. */
    [[nodiscard]] int sortColumn() const;
    /** Direction of the view, as it was when the indicator in the header was last set. */
    [[nodiscard]] bool ascending() const;
    /** Shows the order of the view in the header. */
    void updateSortIndicator();

    /**
     * Text of a cell: the first line of a text item; date and time of a time item as the user wants to see
     * them, see TimeString. Null, with a line of diagnosis, for an item of another type or one that the box
     * doesn't have, and with no manager.
     */
    [[nodiscard]] QString itemText(int line, int column) const override;

public slots:
    /** What a click on a header does: sorts by the column, upwards first, and turns the order of the column
     * that the view is sorted by. */
    void headerClicked(int column);
    /** Obeys `clockChange(bool)`: true for twelve hours. */
    void systemMessage(const QByteArray &message, const QByteArray &arguments);

private:
    Q_DISABLE_COPY_MOVE(KyDbListView)
    void setSortInfo();

    const std::unique_ptr<KyDbListViewPrivate> d;
};

#endif
