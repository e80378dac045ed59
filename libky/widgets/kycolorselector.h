#ifndef KYCOLORSELECTOR_H
#define KYCOLORSELECTOR_H

#include "kyexport.h"
#include <memory>
#include <QRgb>
#include <QWidget>

class KyColorSelectorPrivate;

/**
 * A KyColorTable of the default palette, with a button for transparency above it if that is wanted.
 *
 * The keyboard focus that it is given goes to the table.
 */
class KY_EXPORT KyColorSelector : public QWidget
{
    Q_OBJECT
public:
    /**
     * @param withTransparent with the button tr("Transparent"), which is off
     * @param flags window flags, on top of the widget's own
     */
    explicit KyColorSelector(bool withTransparent, QWidget *parent = nullptr, const char *name = nullptr,
                             unsigned int flags = 0);
    ~KyColorSelector() override;

public slots:
    /** Marks the colour in the table, as KyColorTable::setCurrentColor() does. A button that is on goes off,
     * with transparentReSelected() as when it is tapped. */
    void setCurrentColor(QRgb color);
    /** Switches the button on, with transparentSelected() as when it is tapped. Only for a selector that has
     * the button; without one a debug line is all. */
    void setCurrentColorTransparent();

signals:
    void selected(QRgb color);    ///< a colour was chosen
    void reSelected(QRgb color);  ///< the colour that the table had as chosen was chosen once more
    void transparentSelected();   ///< the button went on
    void transparentReSelected(); ///< the button went off, but not when by the choice of a colour

private:
    Q_DISABLE_COPY_MOVE(KyColorSelector)
    void addTransparentButton();
    void slotTransparentToggled(bool on);
    void releaseTransparentButton();

    const std::unique_ptr<KyColorSelectorPrivate> d;
};

#endif
