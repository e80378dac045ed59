#include "kycategoryedit.h"
#include "kycategorydialog.h"
#include "kycategoryedit_p.h"
#include "kymisc.h"
#include "qcopenvelope.h"
#include <QMessageBox>
#include <QPushButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

namespace {

constexpr char SystemChannel[] = "QPE/System";
constexpr char CategoryChange[] = "categoryChange(QString)";
constexpr int LowHeight = 130; // times the scale

/** Asks the user for the name of a category. @return an empty text when there is none */
QString askForName(const QString &caption, const QString &prompt, const QString &name,
                   KyCategoryEditPrivate *categories, QWidget *parent)
{
    KyCategoryDialog dialog(parent, caption, prompt, name, categories);
    return dialog.exec() == QDialog::Accepted ? dialog.text() : QString();
}

/** The names of those ids that are known. Other applications change the table, so that the ids of all names,
 * read later than the names, might leave some out. */
QStringList namesOf(const QList<int> &ids, const KyCategories &categories)
{
    QStringList names;
    for (const int id : ids)
        names.append(categories.label(id));
    return names;
}

} // namespace

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
    const QStringList names = d->categories->labels(false);
    const QStringList checked = namesOf(ids, *d->categories);
    lvView->clear();
    lvView->setSortingEnabled(false);
    for (const QString &name : names)
        appendItem(name, checked.contains(name) ? Qt::Checked : Qt::Unchecked);
    selectItem(lvView->topLevelItem(0));
}

QTreeWidgetItem *KyCategoryEdit::appendItem(const QString &name, Qt::CheckState state)
{
    auto *item = new QTreeWidgetItem(lvView, {name});
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
    if (!name.isEmpty() && d->categories->addCategory(name))
        selectItem(appendItem(name, Qt::Unchecked));
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
        QMessageBox::warning(this, tr("Error"), tr("You can't delete this category"));
        return false;
    }
    QMessageBox box(QMessageBox::Warning, tr("Delete category"),
                    tr("Are you sure you want to delete\n this category?"),
                    QMessageBox::Yes | QMessageBox::No, this);
    box.setDefaultButton(QMessageBox::No);
    box.setEscapeButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

QList<int> KyCategoryEdit::newCategories()
{
    if (!d)
        return {};
    QStringList checked;
    for (QTreeWidgetItemIterator item(lvView, QTreeWidgetItemIterator::Checked); *item; ++item)
        checked.append((*item)->text(0));
    const QList<int> ids = d->categories->ids(checked);
    QCopEnvelope message(SystemChannel, CategoryChange);
    message << d->appName;
    return ids;
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
