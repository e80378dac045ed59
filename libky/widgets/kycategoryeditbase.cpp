#include "kycategoryeditbase.h"
#include "kymisc.h"
#include "resource.h"
#include <QHBoxLayout>
#include <QPushButton>
#include <QShortcut>
#include <QTreeWidget>

namespace {

void addIcon(QPushButton *button, const QString &name)
{
    const QPixmap picture = Resource::loadPixmap(name);
    button->setIcon(picture);
    button->setIconSize(picture.size());
}

} // namespace

KyCategoryEditBase::KyCategoryEditBase(QWidget *parent, const char *name)
    : QWidget(parent), lvView(new QTreeWidget(this)), cmdAdd(new QPushButton(tr("Add"), this)),
      cmdRename(new QPushButton(tr("Rename"), this)), cmdDel(new QPushButton(this))
{
    setObjectName(QString::fromUtf8(name));
    setWindowTitle(tr("Category Edit"));
    setUpList();
    setUpButtons();
    auto *column = new QVBoxLayout(this);
    auto *row = new QHBoxLayout;
    column->addWidget(lvView);
    column->addLayout(row);
    for (QPushButton *button : {cmdAdd, cmdRename, cmdDel})
        row->addWidget(button);
    resize(sizeHint());
}

void KyCategoryEditBase::setUpList()
{
    lvView->setHeaderLabel(tr("Categories"));
    lvView->setRootIsDecorated(false);
    new QTreeWidgetItem(lvView, {tr("Categories Go Here")});
    connect(lvView, &QTreeWidget::itemSelectionChanged, this,
            [this] { slotSetText(lvView->selectedItems().value(0)); });
}

void KyCategoryEditBase::setUpButtons()
{
    addIcon(cmdDel, QStringLiteral("trash"));
    cmdDel->setAccessibleName(tr("Delete"));
    connect(cmdAdd, &QPushButton::clicked, this, &KyCategoryEditBase::slotAdd);
    connect(cmdRename, &QPushButton::clicked, this, &KyCategoryEditBase::slotRename);
    connect(cmdDel, &QPushButton::clicked, this, &KyCategoryEditBase::slotRemove);
    for (QPushButton *button : {cmdAdd, cmdRename, cmdDel})
        button->setAutoDefault(false); // Enter belongs to the dialog around the form
    // As clicks, which a disabled button ignores.
    new QShortcut(Qt::Key_F2, lvView, cmdRename, &QPushButton::click, Qt::WidgetShortcut);
    new QShortcut(Qt::Key_Delete, lvView, cmdDel, &QPushButton::click, Qt::WidgetShortcut);
}

QSize KyCategoryEditBase::sizeHint() const
{
    return QSize(345, 419) * KyMisc::getResolutionScale();
}

void KyCategoryEditBase::slotSetGlobal(bool /*global*/)
{
    qWarning("CategoryEditBase::slotSetGlobal(bool): Not implemented yet!");
}

void KyCategoryEditBase::slotAdd()
{
    qWarning("CategoryEditBase::slotAdd(): Not implemented yet!");
}

void KyCategoryEditBase::slotRemove()
{
    qWarning("CategoryEditBase::slotRemove(): Not implemented yet!");
}

void KyCategoryEditBase::slotRename()
{
    qWarning("CategoryEditBase::slotRename(): Not implemented yet!");
}

void KyCategoryEditBase::slotSetText(QTreeWidgetItem * /*item*/)
{
    qWarning("CategoryEditBase::slotSetText(QListViewItem*): Not implemented yet!");
}
