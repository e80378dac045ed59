#include "resource.h"
#include "currentdpi.h"
#include "qpeapplication.h"
#include <QFile>
#include <QPainter>
#include <QPixmapCache>
#include <QSet>
#include <QSvgRenderer>

namespace {

constexpr int BaseDpi = 72;
constexpr auto OwnIcons = ":/ky/icons/";
constexpr const char *Endings[] = {".svg", ".png", ".xpm", ".jpg"};
constexpr const char *Scalable = ".svg";

bool isAllowed(const QString &name)
{
    for (const QString &part : name.split(QLatin1Char('/'))) {
        if (part.isEmpty() || part == QLatin1String(".") || part == QLatin1String(".."))
            return false;
    }
    return !name.contains(QChar::Null);
}

bool isScalable(const QString &file)
{
    return file.endsWith(QLatin1String(Scalable));
}

/** Folder of the pictures that are drawn for one resolution. */
QString folderFor(int dpi)
{
    return QPEApplication::qpeDir() + QStringLiteral("pics%1/").arg(dpi);
}

/** Path of the picture in a folder, null when it isn't there. */
QString fileIn(const QString &folder, const QString &name)
{
    for (const char *ending : Endings) {
        const QString file = folder + name + QLatin1String(ending);
        if (QFile::exists(file))
            return file;
    }
    return {};
}

QSize scaled(const QSize &size, int dpi)
{
    return QSize(qRound(size.width() * qreal(dpi) / BaseDpi), qRound(size.height() * qreal(dpi) / BaseDpi));
}

QImage render(const QString &file, int dpi)
{
    QSvgRenderer renderer(file);
    if (!renderer.isValid())
        return {};
    QImage image(scaled(renderer.defaultSize(), dpi), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

QImage loadFile(const QString &file, int dpi)
{
    if (isScalable(file))
        return render(file, dpi);
    const QImage image(file);
    if (image.isNull() || dpi == BaseDpi || file.startsWith(folderFor(dpi)))
        return image;
    return image.scaled(scaled(image.size(), dpi), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void warnOnce(const QString &name)
{
    static QSet<QString> warned;
    if (!warned.contains(name))
        qWarning("Resource: no picture \"%s\"", qUtf8Printable(name));
    warned.insert(name);
}

QImage loadAt(const QString &name, int dpi)
{
    const QString file = Resource::findPixmapDpi(name, dpi);
    const QImage image = file.isEmpty() ? QImage() : loadFile(file, dpi);
    if (image.isNull())
        warnOnce(name);
    return image;
}

} // namespace

QPixmap Resource::loadPixmap(const QString &name)
{
    return loadPixmapDpi(name, qt_currentDpi());
}

QPixmap Resource::loadPixmapDpi(const QString &name, int dpi)
{
    const QString key = QStringLiteral("ky:%1:%2:%3").arg(dpi).arg(QPEApplication::qpeDir(), name);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = QPixmap::fromImage(loadAt(name, dpi));
    if (!pixmap.isNull())
        QPixmapCache::insert(key, pixmap);
    return pixmap;
}

QImage Resource::loadImage(const QString &name)
{
    return loadAt(name, qt_currentDpi());
}

QString Resource::findPixmap(const QString &name)
{
    return findPixmapDpi(name, qt_currentDpi());
}

QString Resource::findPixmapDpi(const QString &name, int dpi, bool exact)
{
    if (dpi <= 0 || !isAllowed(name))
        return {};
    const QString drawnForIt = fileIn(folderFor(dpi), name);
    if (!drawnForIt.isEmpty())
        return drawnForIt;
    const QString general = fileIn(QPEApplication::qpeDir() + QLatin1String("pics/"), name);
    const bool sharp = dpi == BaseDpi || isScalable(general);
    if (!general.isEmpty() && (sharp || !exact))
        return general;
    return fileIn(QLatin1String(OwnIcons), name);
}
