#ifndef KYCATEGORYSELECT_H
#define KYCATEGORYSELECT_H

#include "kyexport.h"
#include <memory>
#include <optional>
#include <QList>
#include <QString>
#include <QWidget>

class KyCategoryCombo;
class KyCategorySelectPrivate;
class QToolButton;

/**
 * Path of the file whose existence means that some process has the dialog of categories open: ".cateditting"
 * in HOME. It is empty. One that a dead process left behind keeps everybody from that dialog, until it is
 * removed; `kyplatformd` does that when it starts.
 */
[[nodiscard]] KY_EXPORT QString categoryEdittingFileName();

/**
 * A combo box with the categories and a small button, which opens the dialog "Edit Categories": check boxes
 * for the categories of the record, and the addition, renaming and removal of categories.
 *
 * The categories of the device are edited by one application at a time.
 */
class KY_EXPORT KyCategorySelect : public QWidget
{
    Q_OBJECT
public:
    /** No rows yet, see setCategories(). */
    explicit KyCategorySelect(QWidget *parent = nullptr, const char *name = nullptr);
    /** As with setCategories(). */
    KyCategorySelect(const QList<int> &ids, const QString &appName, QWidget *parent = nullptr,
                     const char *name = nullptr);
    /** As with setCategories(). */
    KyCategorySelect(const QList<int> &ids, const QString &appName, const QString &visibleName,
                     QWidget *parent = nullptr, const char *name = nullptr);
    ~KyCategorySelect() override;

    /** As the form with three arguments, with the application's name as the visible one, too. */
    QString setCategories(const QList<int> &ids, const QString &appName);
    /**
     * Shows the categories of a record. A row "All" stays the last one, see setAllCategories().
     * @param ids the categories of the record; those that don't exist any more are dropped
     * @return those that are left, decimal, with ";" between them
     */
    QString setCategories(const QList<int> &ids, const QString &appName, const QString &visibleName);

    /** See KyCategoryCombo::currentCategory(): KyCategoryCombo::AllCategories for the row "All". */
    [[nodiscard]] int currentCategory() const;
    /** See KyCategoryCombo::setCurrentCategory(). */
    void setCurrentCategory(int id);
    /** The categories of the record. When the user chooses one of them in the combo box, the list stays;
     * another one replaces it, and "All" empties it. The unfiled row gives a list of UnfiledCategoryId alone,
     * which means the same as an empty one. */
    [[nodiscard]] const QList<int> &currentCategories() const;

    /** True hides the button of the dialog and disables it. */
    void setRemoveCategoryEdit(bool remove);
    /** True adds the row tr("All") behind the others, if it isn't there, and selects it; false removes it.
     * Each filling leaves it there. The categories of the record stay. */
    void setAllCategories(bool on);
    /** Gives combo box and button together a width, in pixels; the combo box has its share, too, when the
     * button is hidden. */
    void setFixedWidth(int width);

signals:
    /** The user chose a row, or changed the categories in the dialog. @param id currentCategory() */
    void signalSelected(int id);

public slots:
    /** Opens the dialog, unless another application has it open: that is told to the user. Returns when it is
     * closed. What is changed in the list of categories is so at once, for a dialog that is cancelled, too;
     * `categoryChange(QString)` tells others of it in either case. In a HOME that can't be written nothing
     * happens. */
    void slotDialog();

private slots:
    void slotNewCat(int id);

private:
    Q_DISABLE_COPY_MOVE(KyCategorySelect)
    void init();
    void addAllRow();
    void removeAllRow();
    void selectAllRow();
    std::optional<QList<int>> askForCategories();
    bool takeOver(const QList<int> &ids);
    bool refresh();

    KyCategoryCombo *combo;
    QToolButton *button;
    QString appName;
    const std::unique_ptr<KyCategorySelectPrivate> d;
};

#endif
