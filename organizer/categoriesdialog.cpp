#include "categoriesdialog.h"

#include "categorytable.h"
#include "messages.h"
#include "resource.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

CategoriesDialog::CategoriesDialog(CategoryTable *table, QWidget *parent)
    : QDialog(parent), m_table(table), m_list(new QListWidget), m_name(new QLineEdit),
      m_add(new QPushButton(tr("Add"))), m_rename(new QPushButton(tr("Rename"))),
      m_remove(new QPushButton(tr("Remove")))
{
    setWindowTitle(tr("Categories"));
    resize(fontMetrics().averageCharWidth() * 50, fontMetrics().height() * 28);
    m_name->setPlaceholderText(tr("Name of a category"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    auto *layout = new QGridLayout(this);
    layout->addWidget(m_list, 0, 0, 1, 3);
    layout->addWidget(m_name, 1, 0, 1, 3);
    layout->addWidget(m_add, 2, 0);
    layout->addWidget(m_rename, 2, 1);
    layout->addWidget(m_remove, 2, 2);
    layout->addWidget(buttons, 3, 0, 1, 3);
    for (QPushButton *button : {m_add, m_rename, m_remove})
        button->setAutoDefault(false);
    m_add->setDefault(true);

    connect(m_table, &CategoryTable::changed, this, &CategoriesDialog::fill);
    connect(m_list, &QListWidget::currentRowChanged, this, [this] { m_name->setText(selected()); });
    connect(m_list, &QListWidget::currentRowChanged, this, &CategoriesDialog::updateButtons);
    connect(m_name, &QLineEdit::textChanged, this, &CategoriesDialog::updateButtons);
    connect(m_add, &QPushButton::clicked, this, &CategoriesDialog::add);
    connect(m_rename, &QPushButton::clicked, this, &CategoriesDialog::rename);
    connect(m_remove, &QPushButton::clicked, this, &CategoriesDialog::remove);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    fill();
    m_name->setFocus();
}

/* Keeps what is being typed. */
void CategoriesDialog::fill()
{
    const QString wasSelected = selected();
    const QSignalBlocker blocker(m_list);
    m_list->clear();
    for (const CategoryEntry &entry : m_table->entries()) {
        auto *item = new QListWidgetItem(entry.name, m_list);
        item->setIcon(QIcon(Resource::loadPixmap(QStringLiteral("category"))));
        if (entry.isSystem)
            item->setToolTip(tr("Belongs to the system"));
        if (entry.name == wasSelected)
            m_list->setCurrentItem(item);
    }
    updateButtons();
}

QString CategoriesDialog::selected() const
{
    return m_list->currentItem() ? m_list->currentItem()->text() : QString();
}

void CategoriesDialog::updateButtons()
{
    bool isOwn = false;
    for (const CategoryEntry &entry : m_table->entries())
        isOwn |= entry.name == selected() && !entry.isSystem;
    const QString name = m_name->text().trimmed();
    m_add->setEnabled(!name.isEmpty());
    m_rename->setEnabled(isOwn && !name.isEmpty() && name != selected());
    m_remove->setEnabled(isOwn);
}

void CategoriesDialog::tell(const QString &objection)
{
    if (objection.isEmpty())
        m_name->clear();
    else
        Messages::warn(this, tr("Categories"), objection);
}

void CategoriesDialog::add()
{
    tell(m_table->add(m_name->text().trimmed()));
}

void CategoriesDialog::rename()
{
    tell(m_table->rename(selected(), m_name->text().trimmed()));
}

void CategoriesDialog::remove()
{
    const QString name = selected();
    const QString question =
        tr("Remove the category \"%1\"? What is filed under it stays, but is filed under it no more.")
            .arg(Messages::shortened(name));
    if (Messages::confirm(this, tr("Categories"), question))
        tell(m_table->remove(name));
}
