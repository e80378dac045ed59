#include "kycolorselector.h"
#include "kycolortable.h"
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {

constexpr int Rows = 6;
constexpr int Columns = 8;

} // namespace

class KyColorSelectorPrivate
{
public:
    KyColorTable *table = nullptr;
    QPushButton *transparentButton = nullptr; ///< null when there is none
};

KyColorSelector::KyColorSelector(bool withTransparent, QWidget *parent, const char *name, unsigned int flags)
    : QWidget(parent, static_cast<Qt::WindowFlags>(flags)), d(new KyColorSelectorPrivate)
{
    setObjectName(QLatin1String(name));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (withTransparent)
        addTransparentButton();
    d->table = new KyColorTable(this, nullptr, 0, Rows, Columns, KyColorTable::defColors);
    layout->addWidget(d->table);
    setFocusProxy(d->table);
    // The button first, so that whoever hears of the colour finds it off.
    connect(d->table, &KyColorTable::selected, this, &KyColorSelector::releaseTransparentButton);
    connect(d->table, &KyColorTable::reSelected, this, &KyColorSelector::releaseTransparentButton);
    connect(d->table, &KyColorTable::selected, this, &KyColorSelector::selected);
    connect(d->table, &KyColorTable::reSelected, this, &KyColorSelector::reSelected);
}

KyColorSelector::~KyColorSelector() = default;

void KyColorSelector::addTransparentButton()
{
    d->transparentButton = new QPushButton(tr("Transparent"), this);
    d->transparentButton->setCheckable(true);
    d->transparentButton->setAutoDefault(true); // Return presses it outside dialogs too
    layout()->addWidget(d->transparentButton);
    connect(d->transparentButton, &QPushButton::toggled, this, &KyColorSelector::slotTransparentToggled);
}

void KyColorSelector::slotTransparentToggled(bool on)
{
    if (on)
        emit transparentSelected();
    else
        emit transparentReSelected();
}

/** Takes the button back when a colour is chosen, as only one choice holds; without a signal, since nobody
 * has touched it. */
void KyColorSelector::releaseTransparentButton()
{
    if (!d->transparentButton)
        return;
    const QSignalBlocker blocker(d->transparentButton);
    d->transparentButton->setChecked(false);
}

// The two that follow give the signals of the button although the application calls them: applications take
// their own state from the signals alone.

void KyColorSelector::setCurrentColor(QRgb color)
{
    if (d->transparentButton)
        d->transparentButton->setChecked(false);
    d->table->setCurrentColor(color);
}

void KyColorSelector::setCurrentColorTransparent()
{
    if (!d->transparentButton) {
        qDebug("GOD");
        return;
    }
    d->transparentButton->setChecked(true);
}
