#ifndef KYCOLORSELECTORPOPUP_H
#define KYCOLORSELECTORPOPUP_H

#include "kyexport.h"
#include <memory>
#include <QMenu>
#include <QRgb>

class KyColorSelectorPopupPrivate;

/**
 * A KyColorSelector as a menu, which any choice closes. It opens with the keyboard focus in the table; Tab
 * goes to the button for transparency and back.
 *
 * The choice that the user made last is remembered for as long as the menu lives, whatever setCurrentColor()
 * marks meanwhile: to choose it once more closes the menu with no signal. An application that edits several
 * things therefore makes a menu for each of them.
 */
class KY_EXPORT KyColorSelectorPopup : public QMenu
{
    Q_OBJECT
public:
    /**
     * @param withTransparent with the button for transparency
     * @param flags window flags, on top of the menu's own
     */
    explicit KyColorSelectorPopup(bool withTransparent, QWidget *parent = nullptr, const char *name = nullptr,
                                  unsigned int flags = 0);
    ~KyColorSelectorPopup() override;

public slots:
    /** As KyColorSelector::setCurrentColor(). A menu that is shown closes when the button was on. */
    void setCurrentColor(QRgb color);
    /** As KyColorSelector::setCurrentColorTransparent(): when the button was off it gives
     * transparentSelected(), and a menu that is shown closes. */
    void setCurrentColorTransparent();

signals:
    void selected(QRgb color);  ///< a colour was chosen; the menu is closed
    void transparentSelected(); ///< transparency was chosen; the menu is closed

protected:
    bool focusNextPrevChild(bool next) override;

private:
    Q_DISABLE_COPY_MOVE(KyColorSelectorPopup)
    void slotSelected(QRgb color);
    void slotReSelected(QRgb color);
    void slotTransparentSelected();
    void slotTransparentReSelected();
    void closeMenu();

    const std::unique_ptr<KyColorSelectorPopupPrivate> d;
};

#endif
