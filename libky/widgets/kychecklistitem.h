#ifndef KYCHECKLISTITEM_H
#define KYCHECKLISTITEM_H

#include "kylistviewitem.h"

/** A row of a KyListView with a check box in front of its first column. It holds nothing but the state of the
 * box; a subclass that has it elsewhere overrides isOn() and setOn(). When the user turns it, the view emits
 * itemChanged(). */
class KY_EXPORT KyCheckListItem : public KyListViewItem
{
public:
    /** A row in no view whose box is off. */
    KyCheckListItem();

    /** True while the box is on. */
    [[nodiscard]] virtual bool isOn() const;
    /** Turns the box on or off; what a click on it does, too. */
    virtual void setOn(bool on);

    /** The first column is painted with the check box, the others as in any row. */
    void paintCell(QPainter *painter, const QPalette &palette, int column, int width,
                   Qt::Alignment align) override;
    [[nodiscard]] QVariant data(int column, int role) const override;
    void setData(int column, int role, const QVariant &value) override;

private:
    void paintCheckCell(QPainter *painter, const QPalette &palette, int width, Qt::Alignment align);

    bool m_on = false;
};

#endif
