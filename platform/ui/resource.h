#ifndef KY_RESOURCE_H
#define KY_RESOURCE_H

#include "kyexport.h"
#include <QImage>
#include <QPixmap>
#include <QString>

/**
 * The platform's pictures, by name. A file NAME.svg, .png, .xpm or .jpg in the folder "pics" of qpeDir(), or
 * in "picsDPI" for one resolution, stands before the icons of the library. All are scaled to the wanted
 * resolution: the size that a file gives is that at 72 dpi, except in a folder "picsDPI".
 *
 * A name may have a folder in front ("datebook/alarm") but never leads out of "pics".
 */
class KY_EXPORT Resource
{
public:
    Resource() = delete;

    /** The picture at qt_currentDpi(); null when there is none, which is warned of once a name. */
    [[nodiscard]] static QPixmap loadPixmap(const QString &name);
    /** The same, at another resolution. */
    [[nodiscard]] static QPixmap loadPixmapDpi(const QString &name, int dpi);
    /** As loadPixmap(), but never shared and in need of no screen. */
    [[nodiscard]] static QImage loadImage(const QString &name);

    /** Path of the file of a picture at qt_currentDpi(); begins with ":/" for those of the library, and is
     * empty when there is none. */
    [[nodiscard]] static QString findPixmap(const QString &name);
    /** Path of the file of a picture. With @p exact only one that is sharp at @p dpi: drawn for it, or
     * scalable. */
    [[nodiscard]] static QString findPixmapDpi(const QString &name, int dpi, bool exact = false);
};

#endif
