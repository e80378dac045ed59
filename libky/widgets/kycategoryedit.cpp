#include "kycategoryedit.h"
#include "categoryrows_p.h"
#include "kycategorydialog.h"
#include "kycategoryedit_p.h"
#include "kymisc.h"
#include "qcopenvelope.h"
#include "warning_p.h"
#include <QPointer>
#include <QPushButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace {

constexpr char SystemChannel[] = "QPE/System";
constexpr char CategoryChange[] = "categoryChange(QString)";
constexpr int LowHeight = 130; // times the scale
constexpr int IdRole = Qt::UserRole;

/** Asks the user for the name of a category. What happens meanwhile may delete the parent. @return an empty
 * text when there is none */
QString askForName(const QString &caption, const QString &prompt, const QString &name,
                   KyCategoryEditPrivate *categories, QWidget *parent)
{
    const QPointer<KyCategoryDialog> dialog = new KyCategoryDialog(parent, caption, prompt, name, categories);
    const bool isAccepted = dialog->exec() == QDialog::Accepted;
    const QString answer = dialog && isAccepted ? dialog->text() : QString();
    delete dialog;
    return answer;
}

} // namespace

void tellCategoryChange(const QString &application)
{
    QCopEnvelope message(SystemChannel, CategoryChange);
    message << application;
}

KyCategoryEdit::KyCategoryEdit(QWidget *parent, const char *name) : KyCategoryEditBase(parent, name) {}

KyCategoryEdit::KyCategoryEdit(const QList<int> &ids, const QString &appName, const QString &visibleName,
                               QWidget *parent, const char *name)
    : KyCategoryEditBase(parent, name)
{
    const int height = cmdDel->sizeHint().height();
    cmdAdd->setFixedHeight(height);
    cmdRename->setFixedHeight(height);
    setCategories(ids, appName, visibleName);
    showMaximized();
}

KyCategoryEdit::~KyCategoryEdit() = default;

void KyCategoryEdit::setCategories(const QList<int> &ids, const QString &appName,
                                   const QString & /*visibleName*/)
{
    if (!d)
        d = std::make_unique<KyCategoryEditPrivate>();
    d->appName = appName;
    const CategoryRows rows(*d->categories);
    d->unlisted.clear();
    for (const int id : ids) {
        if (!rows.areAll && !rows.ids.contains(id))
            d->unlisted.append(id);
    }
    lvView->clear();
    lvView->setSortingEnabled(false);
    for (int row = 0; row < rows.names.size(); ++row) {
        const int id = rows.ids.at(row);
        appendItem(rows.names.at(row), id, ids.contains(id) ? Qt::Checked : Qt::Unchecked);
    }
    selectItem(lvView->topLevelItem(0));
}

QTreeWidgetItem *KyCategoryEdit::appendItem(const QString &name, int id, Qt::CheckState state)
{
    auto *item = new QTreeWidgetItem(lvView, {name});
    item->setData(0, IdRole, id);
    item->setCheckState(0, state);
    return item;
}

/** The row of a category. It is looked up anew after each wait for the user or for the table, in which events
 * are handled. */
QTreeWidgetItem *KyCategoryEdit::itemOf(const QString &name) const
{
    return lvView->findItems(name, Qt::MatchExactly).value(0);
}

void KyCategoryEdit::selectItem(QTreeWidgetItem *item)
{
    if (!item)
        return slotSetText(nullptr);
    lvView->scrollToItem(item);
    lvView->setCurrentItem(item); // may wait for the table, and the item be gone
}

void KyCategoryEdit::slotSetText(QTreeWidgetItem *item)
{
    if (!d)
        return;
    d->selected = item;
    currentText = item ? item->text(0) : QString();
    const bool mayChange = item && !d->categories->isSystemCategory(currentText);
    if (d->selected != item) // another one while the table was waited for
        return;
    cmdRename->setEnabled(mayChange);
    cmdDel->setEnabled(mayChange);
}

void KyCategoryEdit::slotAdd()
{
    if (!d)
        return;
    const QString name = askForName(tr("Add"), tr("Type new category name"), QString(), d.get(), this);
    const int id = name.isEmpty() ? 0 : d->categories->addCategory(name);
    if (id)
        selectItem(appendItem(name, id, Qt::Unchecked));
}

void KyCategoryEdit::slotRename()
{
    if (!d || !d->selected)
        return;
    const QString old = currentText;
    const QString name = askForName(tr("Rename"), tr("Type category name"), old, d.get(), this);
    if (name.isEmpty() || name == old || !d->categories->renameCategory(old, name))
        return;
    QTreeWidgetItem *item = itemOf(old);
    if (!item)
        return;
    item->setText(0, name);
    if (item == d->selected)
        currentText = name;
    lvView->scrollToItem(item);
}

void KyCategoryEdit::slotRemove()
{
    if (!d || !d->selected)
        return;
    const QString name = currentText;
    if (isRemovalWanted() && d->categories->removeCategory(name))
        removeItem(name);
}

/** Selects the next row, else the one above, and that before the row goes: a selection may wait for the
 * table, and events must not come in the middle of a removal. */
void KyCategoryEdit::removeItem(const QString &name)
{
    const QTreeWidgetItem *item = itemOf(name);
    if (!item)
        return;
    QTreeWidgetItem *below = lvView->itemBelow(item);
    QTreeWidgetItem *neighbour = below ? below : lvView->itemAbove(item);
    if (neighbour)
        selectItem(neighbour);
    delete itemOf(name);
}

bool KyCategoryEdit::isRemovalWanted()
{
    if (d->categories->isSystemCategory(currentText)) {
        showWarning(this, tr("Error"), tr("You can't delete this category"));
        return false;
    }
    return showWarning(this, tr("Delete category"), tr("Are you sure you want to delete\n this category?"),
                       QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

QList<int> KyCategoryEdit::newCategories()
{
    if (!d)
        return {};
    QStringList names;
    QList<int> idsOfRows;
    for (QTreeWidgetItemIterator item(lvView, QTreeWidgetItemIterator::Checked); *item; ++item) {
        names.append((*item)->text(0));
        idsOfRows.append((*item)->data(0, IdRole).toInt());
    }
    const QList<int> ids = d->categories->ids(names);
    const QList<int> checked = d->categories->isReachable() ? ids : idsOfRows;
    tellCategoryChange(d->appName);
    return checked + d->unlisted;
}

void KyCategoryEdit::accept()
{
    if (!d)
        return;
    QCopEnvelope message(SystemChannel, CategoryChange);
    message << d->appName.toLatin1().constData();
}

void KyCategoryEdit::kludge()
{
    lvView->setMaximumHeight(LowHeight * KyMisc::getResolutionScale());
}
