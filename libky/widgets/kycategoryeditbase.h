#ifndef KYCATEGORYEDITBASE_H
#define KYCATEGORYEDITBASE_H

#include "kyexport.h"
#include <QWidget>

class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

/** The form of KyCategoryEdit: a list of categories above the buttons that add, rename and remove one. Its
 * slots do nothing but say so in the log. */
class KY_EXPORT KyCategoryEditBase : public QWidget
{
    Q_OBJECT
public:
    explicit KyCategoryEditBase(QWidget *parent = nullptr, const char *name = nullptr);

    /** 345 x 419, times KyMisc::getResolutionScale(). The form may be smaller. */
    [[nodiscard]] QSize sizeHint() const override;

public slots:
    virtual void slotSetGlobal(bool global);
    virtual void slotAdd();
    virtual void slotRemove();
    virtual void slotRename();
    /** @param item the row that was selected; null for none */
    virtual void slotSetText(QTreeWidgetItem *item);

protected:
    /** A row a category, with a check box. F2 renames the selected one, Delete removes it. */
    QTreeWidget *lvView;
    QPushButton *cmdAdd;
    QPushButton *cmdRename;
    QPushButton *cmdDel;

private:
    Q_DISABLE_COPY_MOVE(KyCategoryEditBase)
    void setUpList();
    void setUpButtons();
};

#endif
