#ifndef KYCATEGORYCOMBO_H
#define KYCATEGORYCOMBO_H

#include "kyexport.h"
#include <memory>
#include <QComboBox>
#include <QList>

class KyCategoryComboPrivate;

/**
 * A combo box with the categories of the device, in text order, and tr("Unfiled") behind them.
 *
 * Where the record has several categories, their rows end in tr(" (Multi.)").
 */
class KY_EXPORT KyCategoryCombo : public QComboBox
{
    Q_OBJECT
public:
    /** What currentCategory() gives for a row that stands just behind the categories, such as "All". */
    static constexpr int AllCategories = -1;

    /** No rows yet, see initCombo(). */
    explicit KyCategoryCombo(QWidget *parent = nullptr, const char *name = nullptr);
    ~KyCategoryCombo() override;

    /** As the form with three arguments, with the application's name as the visible one, too. */
    void initCombo(const QList<int> &recordIds, const QString &appName);
    /**
     * Fills the box with the categories as they are now, and selects the first category of a record; with an
     * empty list the unfiled row, with an unknown first category the first row.
     * @param recordIds the categories of the record @param appName of the application @param visibleName of
     * the application, for people
     */
    void initCombo(const QList<int> &recordIds, const QString &appName, const QString &visibleName);
    /**
     * Fills the box with the categories as they are now, and with those of a record that still exist: the
     * first one of these is selected, the unfiled row when none is left.
     * @return those of @p recordIds that still exist, in their order and each once. All of them where the
     * device has categories but none can be read
     */
    QList<int> initComboWithRefind(const QList<int> &recordIds, const QString &appName);

    /** Id of the selected row; UnfiledCategoryId for the unfiled one, AllCategories for the row behind it, -2
     * beyond that and with no row. */
    [[nodiscard]] int currentCategory() const;
    /** Selects the row of a category, or that of UnfiledCategoryId; nothing happens when there is none. No
     * signal is emitted. */
    void setCurrentCategory(int id);
    /** Selects the first row with a text; nothing happens when there is none. No signal is emitted. */
    void setCurrentText(const QString &text);
    /** Number of the rows of categories, that of the unfiled included; further ones are the owner's. */
    [[nodiscard]] int categoryCount() const;

signals:
    /** The user chose a row. @param id currentCategory() */
    void sigCatChanged(int id);

private slots:
    void slotValueChanged(int row);

private:
    Q_DISABLE_COPY_MOVE(KyCategoryCombo)
    void showRows(const QStringList &names, const QList<int> &recordIds);

    const std::unique_ptr<KyCategoryComboPrivate> d;
};

#endif
