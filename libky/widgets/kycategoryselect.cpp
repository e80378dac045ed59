#include "kycategoryselect.h"
#include "kycategorycombo.h"
#include "kycategoryedit_p.h"
#include "kycategorywidget.h"
#include "kymisc.h"
#include "kypdatamanager.h"
#include "resource.h"
#include "warning_p.h"
#include <optional>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFile>
#include <QHBoxLayout>
#include <QPointer>
#include <QToolButton>
#include <utility>

namespace {

constexpr int ButtonSide = 20; // in units of the scale

QString idsToString(const QList<int> &ids)
{
    QStringList texts;
    for (const int id : ids)
        texts.append(QString::number(id));
    return texts.join(QLatin1Char(';'));
}

QStringList rowsOf(const QComboBox &combo)
{
    QStringList rows;
    for (int row = 0; row < combo.count(); ++row)
        rows.append(combo.itemText(row));
    return rows;
}

/** Tells all processes that this one has the dialog of categories open. */
class EditingMarker
{
public:
    EditingMarker() : m_isMine(QFile(m_path).open(QIODevice::WriteOnly | QIODevice::NewOnly)) {}
    ~EditingMarker() { remove(); }
    Q_DISABLE_COPY_MOVE(EditingMarker)

    /** False when another process has the dialog open, or the file can't be made. */
    [[nodiscard]] bool isMine() const { return m_isMine; }
    [[nodiscard]] bool exists() const { return QFile::exists(m_path); }
    void remove()
    {
        if (std::exchange(m_isMine, false))
            QFile::remove(m_path);
    }

private:
    const QString m_path = categoryEdittingFileName();
    bool m_isMine;
};

/** The dialog around a KyCategoryWidget. */
class EditDialog : public QDialog
{
public:
    EditDialog(KyCategoryWidget *widget, const QString &caption, QWidget *parent) : QDialog(parent)
    {
        setWindowTitle(caption);
        setModal(true);
        setWindowState(Qt::WindowMaximized);
        auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        auto *column = new QVBoxLayout(this);
        column->addWidget(widget);
        column->addWidget(buttons);
    }
};

} // namespace

QString categoryEdittingFileName()
{
    return qEnvironmentVariable("HOME") + QStringLiteral("/.cateditting");
}

class KyCategorySelectPrivate
{
public:
    QList<int> currentIds;
    bool allShown = false;
    QString visibleName;
};

KyCategorySelect::KyCategorySelect(QWidget *parent, const char *name)
    : QWidget(parent), combo(new KyCategoryCombo(this)), button(new QToolButton(this)),
      d(new KyCategorySelectPrivate)
{
    setObjectName(QString::fromUtf8(name));
    init();
}

KyCategorySelect::KyCategorySelect(const QList<int> &ids, const QString &application, QWidget *parent,
                                   const char *name)
    : KyCategorySelect(parent, name)
{
    setCategories(ids, application);
}

KyCategorySelect::KyCategorySelect(const QList<int> &ids, const QString &application,
                                   const QString &visibleName, QWidget *parent, const char *name)
    : KyCategorySelect(parent, name)
{
    setCategories(ids, application, visibleName);
}

KyCategorySelect::~KyCategorySelect() = default;

void KyCategorySelect::init()
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(combo);
    row->addWidget(button);
    connect(combo, &KyCategoryCombo::sigCatChanged, this, &KyCategorySelect::slotNewCat);

    const QPixmap picture = Resource::loadPixmap(QStringLiteral("category"));
    const int side = ButtonSide * KyMisc::getResolutionScale();
    button->setIcon(picture);
    button->setIconSize(picture.size());
    button->setAutoRaise(false);
    button->setFixedSize(side, side);
    button->setToolTip(tr("Edit Categories"));
    button->setAccessibleName(tr("Edit Categories"));
    connect(button, &QToolButton::clicked, this, &KyCategorySelect::slotDialog);
}

QString KyCategorySelect::setCategories(const QList<int> &ids, const QString &application)
{
    return setCategories(ids, application, application);
}

QString KyCategorySelect::setCategories(const QList<int> &ids, const QString &application,
                                        const QString &visibleName)
{
    appName = application;
    d->visibleName = visibleName;
    d->currentIds = combo->initComboWithRefind(ids, appName);
    addAllRow();
    return idsToString(d->currentIds);
}

int KyCategorySelect::currentCategory() const
{
    return combo->currentCategory();
}

void KyCategorySelect::setCurrentCategory(int id)
{
    combo->setCurrentCategory(id);
}

const QList<int> &KyCategorySelect::currentCategories() const
{
    return d->currentIds;
}

void KyCategorySelect::setRemoveCategoryEdit(bool remove)
{
    button->setDisabled(remove);
    button->setHidden(remove);
}

void KyCategorySelect::setAllCategories(bool on)
{
    const bool wasShown = std::exchange(d->allShown, on);
    if (on && !wasShown)
        addAllRow();
    if (on)
        selectAllRow();
    else if (wasShown)
        removeAllRow();
}

/** The row "All" goes with the others when the combo box is filled. */
void KyCategorySelect::addAllRow()
{
    if (d->allShown)
        combo->addItem(tr("All"));
}

/** Where that row was selected, the first category of the record takes its place, as after a filling. */
void KyCategorySelect::removeAllRow()
{
    const bool wasSelected = currentCategory() == KyCategoryCombo::AllCategories;
    combo->removeItem(combo->categoryCount());
    if (wasSelected)
        combo->setCurrentCategory(d->currentIds.value(0, UnfiledCategoryId));
}

void KyCategorySelect::selectAllRow()
{
    combo->setCurrentIndex(combo->categoryCount());
}

void KyCategorySelect::setFixedWidth(int width)
{
    combo->setFixedWidth(qMax(0, width - button->width()));
}

void KyCategorySelect::slotNewCat(int id)
{
    if (id == KyCategoryCombo::AllCategories)
        d->currentIds.clear();
    else if (!d->currentIds.contains(id)) // a record with several categories keeps them
        d->currentIds = {id};
    emit signalSelected(currentCategory());
}

void KyCategorySelect::slotDialog()
{
    EditingMarker marker;
    if (!marker.isMine()) {
        if (marker.exists())
            showWarning(this, tr("Error"), tr("Now, other application is\nediting categories."));
        return;
    }
    const QPointer<KyCategorySelect> self(this); // what happens during the dialog may delete it
    const std::optional<QList<int>> chosen = askForCategories();
    if (!self)
        return;
    const bool hasChanged = chosen ? takeOver(*chosen) : refresh();
    marker.remove(); // the receivers of the signal may take their time
    if (hasChanged)
        emit signalSelected(currentCategory());
}

/** Runs the dialog. @return the categories that are checked in it, nothing when it was cancelled */
std::optional<QList<int>> KyCategorySelect::askForCategories()
{
    auto *categories = new KyCategoryWidget(d->currentIds, appName, d->visibleName);
    const QPointer<QDialog> dialog = new EditDialog(categories, tr("Edit Categories"), this);
    const bool isAccepted = dialog->exec() == QDialog::Accepted;
    std::optional<QList<int>> chosen;
    if (dialog && isAccepted)
        chosen = categories->newCategories();
    delete dialog;
    return chosen;
}

/** Gives the record the categories of the dialog. @return false when all is as it was */
bool KyCategorySelect::takeOver(const QList<int> &ids)
{
    const int category = currentCategory();
    const QList<int> previous = std::exchange(d->currentIds, ids);
    combo->initCombo(ids, appName);
    addAllRow();
    if (category == KyCategoryCombo::AllCategories && ids.isEmpty())
        selectAllRow();
    return ids != previous || currentCategory() != category;
}

/** Shows the categories as they are after a dialog that was cancelled, which may have added, renamed or
 * removed some: then other applications are told as well. @return false when the selected one is the same */
bool KyCategorySelect::refresh()
{
    const int category = currentCategory();
    const QStringList previous = rowsOf(*combo);
    d->currentIds = combo->initComboWithRefind(d->currentIds, appName);
    addAllRow();
    if (rowsOf(*combo) != previous)
        tellCategoryChange(appName);
    if (category == KyCategoryCombo::AllCategories)
        selectAllRow();
    else
        combo->setCurrentCategory(category);
    return currentCategory() != category;
}
