#include "kycategorycombo.h"
#include "categoryrows_p.h"
#include <QAbstractItemView>

namespace {

constexpr int NoCategory = -2;    // what currentCategory() gives for no row
constexpr int NarrowestWidth = 8; // characters

} // namespace

class KyCategoryComboPrivate
{
public:
    QList<int> ids; ///< of the rows
    QString appName;
    QString visibleName;
    KyCategories categories{nullptr};

    bool areAll = true; ///< false where the table was out of reach: there may be other categories

    /** Reads the categories and their ids. @return the names, with the unfiled one last */
    QStringList readCategories();
    /** Those of some ids that exist, each once. */
    [[nodiscard]] QList<int> existing(const QList<int> &someIds) const;
};

QStringList KyCategoryComboPrivate::readCategories()
{
    const CategoryRows rows(categories);
    areAll = rows.areAll;
    ids = rows.ids + QList<int>{UnfiledCategoryId};
    return rows.names + QStringList{categories.label(UnfiledCategoryId)};
}

QList<int> KyCategoryComboPrivate::existing(const QList<int> &someIds) const
{
    if (!areAll)
        return someIds;
    QList<int> found;
    for (const int id : someIds) {
        if (ids.contains(id) && !found.contains(id))
            found.append(id);
    }
    return found;
}

KyCategoryCombo::KyCategoryCombo(QWidget *parent, const char *name)
    : QComboBox(parent), d(new KyCategoryComboPrivate)
{
    setObjectName(QString::fromUtf8(name));
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(NarrowestWidth);
    view()->setTextElideMode(Qt::ElideMiddle); // " (Multi.)" stays to be seen
    connect(this, &QComboBox::activated, this, &KyCategoryCombo::slotValueChanged);
}

KyCategoryCombo::~KyCategoryCombo() = default;

void KyCategoryCombo::initCombo(const QList<int> &recordIds, const QString &appName)
{
    initCombo(recordIds, appName, appName);
}

void KyCategoryCombo::initCombo(const QList<int> &recordIds, const QString &appName,
                                const QString &visibleName)
{
    d->appName = appName;
    d->visibleName = visibleName;
    const QStringList names = d->readCategories();
    showRows(names, recordIds);
}

QList<int> KyCategoryCombo::initComboWithRefind(const QList<int> &recordIds, const QString &appName)
{
    d->appName = appName;
    d->visibleName = appName;
    const QStringList names = d->readCategories();
    const QList<int> left = d->existing(recordIds);
    showRows(names, left);
    return left;
}

void KyCategoryCombo::showRows(const QStringList &names, const QList<int> &recordIds)
{
    clear();
    for (int row = 0; row < names.size(); ++row) {
        const bool isUnfiled = row == names.size() - 1;
        const bool isMarked = recordIds.size() > 1 && !isUnfiled && recordIds.contains(d->ids.at(row));
        addItem(isMarked ? names.at(row) + tr(" (Multi.)") : names.at(row));
    }
    setCurrentCategory(recordIds.isEmpty() ? UnfiledCategoryId : recordIds.first());
}

int KyCategoryCombo::currentCategory() const
{
    const int row = currentIndex();
    if (row < 0 || row > categoryCount())
        return NoCategory;
    return row == categoryCount() ? AllCategories : d->ids.at(row);
}

void KyCategoryCombo::setCurrentCategory(int id)
{
    const auto row = d->ids.indexOf(id);
    if (row >= 0)
        setCurrentIndex(int(row));
}

void KyCategoryCombo::setCurrentText(const QString &text)
{
    const int row = findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (row >= 0)
        setCurrentIndex(row);
}

int KyCategoryCombo::categoryCount() const
{
    return int(d->ids.size());
}

void KyCategoryCombo::slotValueChanged(int /*row*/)
{
    emit sigCatChanged(currentCategory());
}
