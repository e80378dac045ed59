#include "kycolorselectorpopup.h"
#include "kycolorselector.h"
#include <QWidgetAction>

class KyColorSelectorPopupPrivate
{
public:
    KyColorSelector *selector = nullptr; ///< owned by the item of the menu
};

KyColorSelectorPopup::KyColorSelectorPopup(bool withTransparent, QWidget *parent, const char *name,
                                           unsigned int flags)
    : QMenu(parent), d(new KyColorSelectorPopupPrivate)
{
    setObjectName(QLatin1String(name));
    setWindowFlags(windowFlags() | static_cast<Qt::WindowFlags>(flags));
    d->selector = new KyColorSelector(withTransparent, this);
    auto *item = new QWidgetAction(this);
    item->setDefaultWidget(d->selector);
    addAction(item);
    connect(d->selector, &KyColorSelector::selected, this, &KyColorSelectorPopup::slotSelected);
    connect(d->selector, &KyColorSelector::reSelected, this, &KyColorSelectorPopup::slotReSelected);
    connect(d->selector, &KyColorSelector::transparentSelected, this,
            &KyColorSelectorPopup::slotTransparentSelected);
    connect(d->selector, &KyColorSelector::transparentReSelected, this,
            &KyColorSelectorPopup::slotTransparentReSelected);
    connect(this, &QMenu::aboutToShow, d->selector, [this] { d->selector->setFocus(Qt::PopupFocusReason); });
}

KyColorSelectorPopup::~KyColorSelectorPopup() = default;

void KyColorSelectorPopup::setCurrentColor(QRgb color)
{
    d->selector->setCurrentColor(color);
}

void KyColorSelectorPopup::setCurrentColorTransparent()
{
    d->selector->setCurrentColorTransparent();
}

/** A menu takes Tab for a move to its next item; here it moves inside the only one. */
bool KyColorSelectorPopup::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call)
}

/** Leaves a menu alone that isn't open: closing would delete one that is to go when it closes. */
void KyColorSelectorPopup::closeMenu()
{
    if (isVisible())
        close();
}

void KyColorSelectorPopup::slotSelected(QRgb color)
{
    closeMenu();
    emit selected(color);
}

void KyColorSelectorPopup::slotTransparentSelected()
{
    closeMenu();
    emit transparentSelected();
}

// To choose what is chosen already is only a way out of the menu: no signal.

void KyColorSelectorPopup::slotReSelected(QRgb)
{
    closeMenu();
}

void KyColorSelectorPopup::slotTransparentReSelected()
{
    closeMenu();
}
