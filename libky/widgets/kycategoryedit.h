#ifndef KYCATEGORYEDIT_H
#define KYCATEGORYEDIT_H

#include "kycategoryeditbase.h"
#include <memory>
#include <QList>
#include <QString>

class KyCategoryEditPrivate;

/**
 * All categories of the device with a check box for each, which says whether a record has it. Categories are
 * added, renamed and removed at once, for all applications; which ones are checked is known by
 * newCategories().
 */
class KY_EXPORT KyCategoryEdit : public KyCategoryEditBase
{
    Q_OBJECT
public:
    /** An empty list, see setCategories(). */
    explicit KyCategoryEdit(QWidget *parent = nullptr, const char *name = nullptr);
    /** As with setCategories(), and shows itself maximized. */
    KyCategoryEdit(const QList<int> &ids, const QString &appName, const QString &visibleName,
                   QWidget *parent = nullptr, const char *name = nullptr);
    ~KyCategoryEdit() override;

    /** Lists all categories. @param ids those that are checked @param appName of the application, which
     * messages carry @param visibleName of the application, for people */
    void setCategories(const QList<int> &ids, const QString &appName, const QString &visibleName);
    /** The ids of those that are checked and still exist, in the order of the list. Where the table can't be
     * read, all that are checked count as existing; behind them come those of the record that could not be
     * listed. Sends the message `categoryChange(QString)` with the application's name on "QPE/System". Empty,
     * with no message, before setCategories(). */
    QList<int> newCategories();

public slots:
    /** Sends the message `categoryChange(QString)` with the application's name as a C string in Latin-1.
     * Nothing happens before setCategories(). */
    void accept();
    /** Keeps the list low: 130 pixels at most, times KyMisc::getResolutionScale(). */
    void kludge();

    void slotAdd() override;    ///< asks for a name and adds a category
    void slotRemove() override; ///< asks, then removes the selected category from all cards of all boxes
    void slotRename() override; ///< asks for another name of the selected category
    void slotSetText(QTreeWidgetItem *item) override;

private:
    Q_DISABLE_COPY_MOVE(KyCategoryEdit)
    QTreeWidgetItem *appendItem(const QString &name, int id, Qt::CheckState state);
    [[nodiscard]] QTreeWidgetItem *itemOf(const QString &name) const;
    void selectItem(QTreeWidgetItem *item);
    [[nodiscard]] bool isRemovalWanted();
    void removeItem(const QString &name);

    std::unique_ptr<KyCategoryEditPrivate> d; ///< null before setCategories()
    QString currentText;
};

#endif
